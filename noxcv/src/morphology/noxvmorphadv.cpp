// Opening, closing, top hat, black hat and gradient: erosion and dilation through a temporary image in the state.
#include <algorithm>
#include <climits>
#include <cstring>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/morphology.h"
#include "noxcv/primitives.h"
#include "noxvmorphology.h"
#include "rows.h"

using namespace nox;

namespace {

/// Bytes of a row of the temporary image.
long long tempRowBytes(int width, int pixelBytes) { return roundUp(static_cast<long long>(width) * pixelBytes, 32LL); }

/// Where the parts of a state lie. Everything but a rectangle and an empty mask goes the general way, whatever the
/// anchor, so the size does not depend on it.
struct Layout {
    static constexpr long long header = sizeof(NoxiMorphAdvState), slack = 64; ///< slack: two areas are aligned to 32

    long long bytes = LLONG_MAX;
    int stateBytes = 0;
    NoxStatus status;

    Layout(int dataType, int channels, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize) {
        const NoxiPoint anchor{maskSize.width >> 1, maskSize.height >> 1};
        status =
            buildMorphology(dataType, channels, roi.width, mask, maskSize, anchor, &stateBytes, measureState, true);
        if (status == noxStsNoError)
            bytes = allBytes(dataType, channels, roi, stateBytes);
    }
    static long long allBytes(int dataType, int channels, NoxiSize roi, int stateBytes) {
        long long image = 0;
        if (__builtin_mul_overflow(tempRowBytes(roi.width, channels * (dataType == type32f ? 4 : 1)), roi.height,
                                   &image) ||
            image > LLONG_MAX / 2)
            return LLONG_MAX;
        return image + header + slack + 2LL * stateBytes;
    }
};

/// The size is what both states need at least; where the mask is a stack of runs, it also covers states of that kind.
NoxStatus stateSize(int dataType, int channels, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size) {
    NoxStatus status = firstFailure(checkLength(roi.height), checkPointers(size));
    if (status != noxStsNoError)
        return status;
    int asClassified = 0;
    status = buildMorphology(dataType, channels, roi.width, mask, maskSize, {maskSize.width >> 1, maskSize.height >> 1},
                             &asClassified, measureState, false);
    if (status != noxStsNoError)
        return status;
    const Layout layout(dataType, channels, roi, mask, maskSize);
    if (layout.status != noxStsNoError)
        return layout.status;
    return storeSize(std::max(layout.bytes, Layout::allBytes(dataType, channels, roi, asClassified)), size);
}

NoxStatus buildState(int dataType, int channels, NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask,
                     NoxiSize maskSize, NoxiPoint anchor) {
    NoxStatus status = firstFailure(checkLength(roi.height), checkPointers(state));
    if (status != noxStsNoError)
        return status;
    auto *const block = reinterpret_cast<Nox8u *>(state);
    // The anchor is tested here, and the size before anything is written.
    int measured = 0;
    status = buildMorphology(dataType, channels, roi.width, mask, maskSize, anchor, &measured, measureState, true);
    if (status != noxStsNoError)
        return status;
    const Layout layout(dataType, channels, roi, mask, maskSize);
    status = firstFailure(layout.status, require(layout.bytes <= INT_MAX, noxStsBadSize));
    if (status != noxStsNoError)
        return status;
    Nox8u *const forward = block + Layout::header;
    Nox8u *const reflected = alignUp(forward + layout.stateBytes, 32);
    buildMorphology(dataType, channels, roi.width, mask, maskSize, anchor, forward, buildInPlace, true);
    NoxiMorphAdvState built{};
    built.forwardState = reinterpret_cast<NoxiMorphState *>(forward);
    built.reflectedState = reinterpret_cast<NoxiMorphState *>(reflected);
    // The mask turned about, in the first state's copy for the while.
    Nox8u *const copy = built.forwardState->maskCopy;
    const std::ptrdiff_t cells = static_cast<std::ptrdiff_t>(area(maskSize));
    std::reverse(copy, copy + cells);
    buildMorphology(dataType, channels, roi.width, copy, maskSize,
                    {maskSize.width - anchor.x - 1, maskSize.height - anchor.y - 1}, reflected, buildInPlace, true);
    std::reverse(copy, copy + cells);
    built.tempImage = alignUp(reflected + layout.stateBytes, 32);
    built.tempSize =
        static_cast<Nox32s>(tempRowBytes(roi.width, channels * (dataType == type32f ? 4 : 1)) * roi.height);
    std::memcpy(block, &built, sizeof(built));
    return noxStsNoError;
}

NoxStatus allocateBoth(int dataType, int channels, NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                       NoxiSize maskSize, NoxiPoint anchor) {
    if (state == nullptr)
        return noxStsNullPointer;
    int size = static_cast<int>(Layout::header); // enough for a build that its checks will refuse
    stateSize(dataType, channels, roi, mask, maskSize, &size);
    auto *const block = reinterpret_cast<NoxiMorphAdvState *>(noxsMalloc_8u(size));
    if (block == nullptr)
        return noxStsNoMemory;
    const NoxStatus status = buildState(dataType, channels, block, roi, mask, maskSize, anchor);
    if (status == noxStsNoError)
        *state = block;
    else
        noxsFree(block);
    return status;
}

/// The functions of a type and layout that the operations are made of.
template <class T, int channels>
struct Member;
#define NOX_ADV_ROUTINES_8U(CHANNELS)                                                                                  \
    template <>                                                                                                        \
    struct Member<Nox8u, CHANNELS> {                                                                                   \
        static constexpr auto erode = noxiErodeBorderReplicate_8u_C##CHANNELS##R;                                      \
        static constexpr auto dilate = noxiDilateBorderReplicate_8u_C##CHANNELS##R;                                    \
        static void subtract(const Nox8u *less, int lessStep, const Nox8u *from, int fromStep, Nox8u *dst,             \
                             int dstStep, NoxiSize roi) {                                                              \
            noxiSub_8u_C##CHANNELS##RSfs(less, lessStep, from, fromStep, dst, dstStep, roi, 0);                        \
        }                                                                                                              \
        static void subtract(const Nox8u *less, int lessStep, Nox8u *dst, int dstStep, NoxiSize roi) {                 \
            noxiSub_8u_C##CHANNELS##IRSfs(less, lessStep, dst, dstStep, roi, 0);                                       \
        }                                                                                                              \
    };
#define NOX_ADV_ROUTINES_32F(CHANNELS)                                                                                 \
    template <>                                                                                                        \
    struct Member<Nox32f, CHANNELS> {                                                                                  \
        static constexpr auto erode = noxiErodeBorderReplicate_32f_C##CHANNELS##R;                                     \
        static constexpr auto dilate = noxiDilateBorderReplicate_32f_C##CHANNELS##R;                                   \
        static void subtract(const Nox32f *less, int lessStep, const Nox32f *from, int fromStep, Nox32f *dst,          \
                             int dstStep, NoxiSize roi) {                                                              \
            noxiSub_32f_C##CHANNELS##R(less, lessStep, from, fromStep, dst, dstStep, roi);                             \
            noxiThreshold_LT_32f_C1IR(dst, dstStep, {roi.width * (CHANNELS), roi.height}, 0);                          \
        }                                                                                                              \
        static void subtract(const Nox32f *less, int lessStep, Nox32f *dst, int dstStep, NoxiSize roi) {               \
            noxiSub_32f_C##CHANNELS##IR(less, lessStep, dst, dstStep, roi);                                            \
            noxiThreshold_LT_32f_C1IR(dst, dstStep, {roi.width * (CHANNELS), roi.height}, 0);                          \
        }                                                                                                              \
    };
NOX_ADV_ROUTINES_8U(1)
NOX_ADV_ROUTINES_8U(3)
NOX_ADV_ROUTINES_8U(4)
NOX_ADV_ROUTINES_32F(1)
NOX_ADV_ROUTINES_32F(3)
NOX_ADV_ROUTINES_32F(4)

enum class Operation { open, close, tophat, blackhat, gradient };

template <class T, int channels>
NoxStatus checkOperation(const T *src, int srcStep, const T *dst, int dstStep, NoxiSize roi, int borderType,
                         const NoxiMorphAdvState *state) {
    const long long elements = static_cast<long long>(roi.width) * channels;
    const NoxStatus status =
        firstFailure(checkPointers(src, dst, state), checkSize(roi), checkStep<T>(srcStep, elements),
                     checkStep<T>(dstStep, elements), checkEvenSteps<T>(srcStep, dstStep),
                     require(borderType == noxBorderReplicate, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    const bool served = roi.width <= state->forwardState->roiWidth &&
                        tempRowBytes(roi.width, channels * static_cast<int>(sizeof(T))) * roi.height >= state->tempSize;
    return require(served, noxStsBadSize);
}

template <Operation operation, class T, int channels>
NoxStatus compound(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int borderType,
                   const NoxiMorphAdvState *state) {
    using Routines = Member<T, channels>;
    constexpr bool erodeFirst = operation == Operation::open || operation == Operation::tophat;
    constexpr auto first = erodeFirst ? Routines::erode : Routines::dilate;
    constexpr auto second = erodeFirst ? Routines::dilate : Routines::erode;
    const NoxStatus status = checkOperation<T, channels>(src, srcStep, dst, dstStep, roi, borderType, state);
    if (status != noxStsNoError)
        return status;
    T *const temp = reinterpret_cast<T *>(state->tempImage);
    const int tempStep = static_cast<int>(tempRowBytes(roi.width, channels * static_cast<int>(sizeof(T))));
    const NoxiMorphState *const forward = state->forwardState, *const reflected = state->reflectedState;
    if constexpr (operation == Operation::open || operation == Operation::close) {
        const NoxStatus done = first(src, srcStep, temp, tempStep, roi, borderType, forward);
        return done != noxStsNoError ? done : second(temp, tempStep, dst, dstStep, roi, borderType, reflected);
    } else if constexpr (operation == Operation::tophat) {
        const NoxStatus done = first(src, srcStep, dst, dstStep, roi, borderType, forward);
        if (done != noxStsNoError)
            return done;
        const NoxStatus again = second(dst, dstStep, temp, tempStep, roi, borderType, reflected);
        if (again == noxStsNoError)
            Routines::subtract(temp, tempStep, src, srcStep, dst, dstStep, roi);
        return again;
    } else if constexpr (operation == Operation::blackhat) {
        const NoxStatus done = first(src, srcStep, temp, tempStep, roi, borderType, forward);
        if (done != noxStsNoError)
            return done;
        const NoxStatus again = second(temp, tempStep, dst, dstStep, roi, borderType, reflected);
        if (again == noxStsNoError)
            Routines::subtract(src, srcStep, dst, dstStep, roi);
        return again;
    } else {
        // The mask is the same in both steps.
        const NoxStatus done = first(src, srcStep, dst, dstStep, roi, borderType, forward);
        if (done != noxStsNoError)
            return done;
        const NoxStatus again = second(src, srcStep, temp, tempStep, roi, borderType, forward);
        if (again == noxStsNoError)
            Routines::subtract(temp, tempStep, dst, dstStep, roi);
        return again;
    }
}

} // namespace

#define NOX_ADV_STATE(QUERY, INIT, INIT_ALLOC, TYPE, CHANNELS)                                                         \
    NoxStatus QUERY(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size) {                                   \
        return stateSize(TYPE, CHANNELS, roi, mask, maskSize, size);                                                   \
    }                                                                                                                  \
    NoxStatus INIT(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor) {   \
        return buildState(TYPE, CHANNELS, state, roi, mask, maskSize, anchor);                                         \
    }                                                                                                                  \
    NoxStatus INIT_ALLOC(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,                \
                         NoxiPoint anchor) {                                                                           \
        return allocateBoth(TYPE, CHANNELS, state, roi, mask, maskSize, anchor);                                       \
    }
NOX_ADV_STATE(noxiMorphAdvGetSize_8u_C1R, noxiMorphAdvInit_8u_C1R, noxiMorphAdvInitAlloc_8u_C1R, type8u, 1)
NOX_ADV_STATE(noxiMorphAdvGetSize_8u_C3R, noxiMorphAdvInit_8u_C3R, noxiMorphAdvInitAlloc_8u_C3R, type8u, 3)
NOX_ADV_STATE(noxiMorphAdvGetSize_8u_C4R, noxiMorphAdvInit_8u_C4R, noxiMorphAdvInitAlloc_8u_C4R, type8u, 4)
NOX_ADV_STATE(noxiMorphAdvGetSize_32f_C1R, noxiMorphAdvInit_32f_C1R, noxiMorphAdvInitAlloc_32f_C1R, type32f, 1)
NOX_ADV_STATE(noxiMorphAdvGetSize_32f_C3R, noxiMorphAdvInit_32f_C3R, noxiMorphAdvInitAlloc_32f_C3R, type32f, 3)
NOX_ADV_STATE(noxiMorphAdvGetSize_32f_C4R, noxiMorphAdvInit_32f_C4R, noxiMorphAdvInitAlloc_32f_C4R, type32f, 4)

NoxStatus noxiMorphAdvFree(NoxiMorphAdvState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}

#define NOX_ADV(NAME, OPERATION, TYPE, CHANNELS)                                                                       \
    NoxStatus NAME(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int borderType,                 \
                   const NoxiMorphAdvState *state) {                                                                   \
        return compound<Operation::OPERATION, TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, borderType, state);     \
    }
NOX_ADV(noxiMorphOpenBorder_8u_C1R, open, Nox8u, 1)
NOX_ADV(noxiMorphOpenBorder_8u_C3R, open, Nox8u, 3)
NOX_ADV(noxiMorphOpenBorder_8u_C4R, open, Nox8u, 4)
NOX_ADV(noxiMorphOpenBorder_32f_C1R, open, Nox32f, 1)
NOX_ADV(noxiMorphOpenBorder_32f_C3R, open, Nox32f, 3)
NOX_ADV(noxiMorphOpenBorder_32f_C4R, open, Nox32f, 4)
NOX_ADV(noxiMorphCloseBorder_8u_C1R, close, Nox8u, 1)
NOX_ADV(noxiMorphCloseBorder_8u_C3R, close, Nox8u, 3)
NOX_ADV(noxiMorphCloseBorder_8u_C4R, close, Nox8u, 4)
NOX_ADV(noxiMorphCloseBorder_32f_C1R, close, Nox32f, 1)
NOX_ADV(noxiMorphCloseBorder_32f_C3R, close, Nox32f, 3)
NOX_ADV(noxiMorphCloseBorder_32f_C4R, close, Nox32f, 4)
NOX_ADV(noxiMorphTophatBorder_8u_C1R, tophat, Nox8u, 1)
NOX_ADV(noxiMorphTophatBorder_8u_C3R, tophat, Nox8u, 3)
NOX_ADV(noxiMorphTophatBorder_8u_C4R, tophat, Nox8u, 4)
NOX_ADV(noxiMorphTophatBorder_32f_C1R, tophat, Nox32f, 1)
NOX_ADV(noxiMorphTophatBorder_32f_C3R, tophat, Nox32f, 3)
NOX_ADV(noxiMorphTophatBorder_32f_C4R, tophat, Nox32f, 4)
NOX_ADV(noxiMorphBlackhatBorder_8u_C1R, blackhat, Nox8u, 1)
NOX_ADV(noxiMorphBlackhatBorder_8u_C3R, blackhat, Nox8u, 3)
NOX_ADV(noxiMorphBlackhatBorder_8u_C4R, blackhat, Nox8u, 4)
NOX_ADV(noxiMorphBlackhatBorder_32f_C1R, blackhat, Nox32f, 1)
NOX_ADV(noxiMorphBlackhatBorder_32f_C3R, blackhat, Nox32f, 3)
NOX_ADV(noxiMorphBlackhatBorder_32f_C4R, blackhat, Nox32f, 4)
NOX_ADV(noxiMorphGradientBorder_8u_C1R, gradient, Nox8u, 1)
NOX_ADV(noxiMorphGradientBorder_8u_C3R, gradient, Nox8u, 3)
NOX_ADV(noxiMorphGradientBorder_8u_C4R, gradient, Nox8u, 4)
NOX_ADV(noxiMorphGradientBorder_32f_C1R, gradient, Nox32f, 1)
NOX_ADV(noxiMorphGradientBorder_32f_C3R, gradient, Nox32f, 3)
NOX_ADV(noxiMorphGradientBorder_32f_C4R, gradient, Nox32f, 4)
