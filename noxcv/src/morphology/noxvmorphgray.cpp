// Grey dilation and erosion: a kernel of values that are added to the pixels before the largest or smallest is taken.
//
// Bytes stay bytes: a sum that stops at 0 and 255 compares as the exact one does, as far as a result of 0 to 255 can
// tell, and a kernel value beyond 255 moves every byte to the same end as 255 does. Single-precision sums are the
// rounded exact ones, and rounding keeps the order, so the largest rounded sum is the largest sum rounded.
#include <algorithm>
#include <cfloat>
#include <climits>
#include <cstring>
#include <type_traits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/morphology.h"
#include "noxcv/primitives.h"
#include "rows.h"

namespace nox {
/// A kernel value as the kernels take it: as what is added and what is subtracted, or as it is.
template <class T>
struct GrayValue {
    Nox8u more, less;
};
template <>
struct GrayValue<Nox32f> {
    Nox32f value;
};
} // namespace nox

#define NOX_KERNELS "morphology/noxvmorphgray.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

GrayValue<Nox8u> grayValue(Nox32s value) {
    return {static_cast<Nox8u>(std::clamp(value, 0, 255)), static_cast<Nox8u>(-std::clamp(value, -255, 0))};
}
GrayValue<Nox32f> grayValue(Nox32f value) { return {value}; }

/// A kernel's element type by the image's.
template <class T>
using KernelOf = std::conditional_t<std::is_same_v<T, Nox8u>, Nox32s, Nox32f>;

/// One call.
template <class T, bool largest>
struct Gray {
    /// Cells that are joined at a time; the result so far lies in dst between them.
    static constexpr int most = 256;
    static constexpr T start = std::is_same_v<T, Nox8u> ? T(largest ? 0 : 255) : T(largest ? -FLT_MAX : FLT_MAX);

    Rows<const T> src;
    Rows<T> dst;
    NoxiSize roi;
    const NoxiMorphGrayState &state;

    const T *sourceRow(int y, int r) const {
        return src[static_cast<std::ptrdiff_t>(std::clamp<long long>(0LL + y + r - state.anchorY, 0, roi.height - 1))];
    }
    /// Pixels x0 to x1 of row y, where the kernel does not reach beyond the image at the sides.
    void inside(int y, int x0, int x1) const {
        const T *from[most];
        GrayValue<T> values[most];
        const Element<KernelOf<T>> *const kernel = static_cast<const KernelOf<T> *>(state.kernel);
        const int cells = state.maskWidth * state.maskHeight;
        for (int cell = 0, r = 0, c = 0; cell < cells;) {
            const bool more = cell > 0;
            int n = 0;
            for (; n < most && cell < cells; ++n, ++cell) {
                from[n] = sourceRow(y, r) + (x0 - state.anchorX + c);
                values[n] = grayValue(KernelOf<T>(kernel[cell]));
                if (++c == state.maskWidth) {
                    c = 0;
                    ++r;
                }
            }
            T *const to = dst[y] + x0;
            NOX_ON_TIER(joinGray<T, largest>(from, values, n, more, start, to, x1 - x0));
        }
    }
    /// Pixel x of row y, anywhere.
    void atSide(int y, int x) const {
        const Element<KernelOf<T>> *const kernel = static_cast<const KernelOf<T> *>(state.kernel);
        T best = start;
        for (int r = 0; r < state.maskHeight; ++r) {
            const Element<T> *const row = sourceRow(y, r);
            for (int c = 0; c < state.maskWidth; ++c) {
                const int at = static_cast<int>(std::clamp<long long>(0LL + x + c - state.anchorX, 0, roi.width - 1));
                const auto value = grayValue(KernelOf<T>(kernel[static_cast<std::ptrdiff_t>(r) * state.maskWidth + c]));
                const T sum = baseline::movedOne<T>(row[at], value);
                best = (largest ? sum > best : sum < best) ? sum : best;
            }
        }
        dst[y][x] = best;
    }
    void run() const {
        const int left = std::min(state.anchorX, roi.width);
        const int right = std::max(left, roi.width - (state.maskWidth - 1 - state.anchorX));
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < left; ++x)
                atSide(y, x);
            if (left < right)
                inside(y, left, right);
            for (int x = right; x < roi.width; ++x)
                atSide(y, x);
        }
    }
};

/// The kernel values follow the record.
NoxStatus measure(const void *mask, NoxiSize roi, NoxiSize maskSize, int *size) {
    const NoxStatus status = firstFailure(checkPointers(mask, size), checkSize(roi), checkSize(maskSize));
    if (status != noxStsNoError)
        return status;
    const long long cells = area(maskSize), header = sizeof(NoxiMorphGrayState);
    return cells > INT_MAX / 4 ? noxStsBadSize : storeSize(4 * cells + header, size);
}

NoxStatus checkBuild(const void *state, NoxiSize roi, const void *mask, NoxiSize maskSize, NoxiPoint anchor) {
    return firstFailure(
        checkPointers(mask, state), checkSize(roi), checkSize(maskSize),
        require(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                noxStsBadAnchor));
}

NoxStatus build(NoxiMorphGrayState *state, NoxiSize roi, const void *mask, NoxiSize maskSize, NoxiPoint anchor) {
    NoxStatus status = checkBuild(state, roi, mask, maskSize, anchor);
    int size = 0;
    if (status == noxStsNoError)
        status = measure(mask, roi, maskSize, &size);
    if (status != noxStsNoError)
        return status;
    auto *const block = reinterpret_cast<Nox8u *>(state);
    const NoxiMorphGrayState built{
        block + sizeof(built), maskSize.width, maskSize.height, anchor.x, anchor.y, roi.width, roi.height};
    std::memcpy(block, &built, sizeof(built));
    std::memcpy(block + sizeof(built), mask, static_cast<std::size_t>(size) - sizeof(built));
    return noxStsNoError;
}

NoxStatus allocate(NoxiMorphGrayState **state, NoxiSize roi, const void *mask, NoxiSize maskSize, NoxiPoint anchor) {
    NoxStatus status = checkBuild(state, roi, mask, maskSize, anchor);
    int size = 0;
    if (status == noxStsNoError)
        status = measure(mask, roi, maskSize, &size);
    if (status != noxStsNoError)
        return status;
    auto *const block = reinterpret_cast<NoxiMorphGrayState *>(noxsMalloc_8u(size));
    if (block == nullptr)
        return noxStsNoMemory;
    *state = block;
    return build(block, roi, mask, maskSize, anchor);
}

NoxStatus release(NoxiMorphGrayState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}

template <class T, bool largest>
NoxStatus gray(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int borderType,
               const NoxiMorphGrayState *state) {
    NoxStatus status = firstFailure(checkPointers(src, dst, state), checkSize(roi), checkStep<T>(srcStep, roi.width),
                                    checkStep<T>(dstStep, roi.width), checkEvenSteps<T>(srcStep, dstStep),
                                    require(borderType == noxBorderReplicate, noxStsBadArgument));
    if (status == noxStsNoError)
        status = require(roi.width <= state->roiWidth && roi.height <= state->roiHeight, noxStsBadSize);
    if (status == noxStsNoError)
        Gray<T, largest>{{src, srcStep}, {dst, dstStep}, roi, *state}.run();
    return status;
}

} // namespace

#define NOX_GRAY_STATE(QUERY, INIT, INIT_ALLOC, FREE, TYPE)                                                            \
    NoxStatus QUERY(NoxiSize roi, const TYPE *mask, NoxiSize maskSize, int *size) {                                    \
        return measure(mask, roi, maskSize, size);                                                                     \
    }                                                                                                                  \
    NoxStatus INIT(NoxiMorphGrayState *state, NoxiSize roi, const TYPE *mask, NoxiSize maskSize, NoxiPoint anchor) {   \
        return build(state, roi, mask, maskSize, anchor);                                                              \
    }                                                                                                                  \
    NoxStatus INIT_ALLOC(NoxiMorphGrayState **state, NoxiSize roi, const TYPE *mask, NoxiSize maskSize,                \
                         NoxiPoint anchor) {                                                                           \
        return allocate(state, roi, mask, maskSize, anchor);                                                           \
    }                                                                                                                  \
    NoxStatus FREE(NoxiMorphGrayState *state) { return release(state); }
NOX_GRAY_STATE(noxiMorphGrayGetSize_8u_C1R, noxiMorphGrayInit_8u_C1R, noxiMorphGrayInitAlloc_8u_C1R,
               noxiMorphGrayFree_8u_C1R, Nox32s)
NOX_GRAY_STATE(noxiMorphGrayGetSize_32f_C1R, noxiMorphGrayInit_32f_C1R, noxiMorphGrayInitAlloc_32f_C1R,
               noxiMorphGrayFree_32f_C1R, Nox32f)

#define NOX_GRAY(NAME, TYPE, LARGEST)                                                                                  \
    NoxStatus NAME(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int borderType,                 \
                   const NoxiMorphGrayState *state) {                                                                  \
        return gray<TYPE, LARGEST>(src, srcStep, dst, dstStep, roi, borderType, state);                                \
    }
NOX_GRAY(noxiGrayDilateBorder_8u_C1R, Nox8u, true)
NOX_GRAY(noxiGrayDilateBorder_32f_C1R, Nox32f, true)
NOX_GRAY(noxiGrayErodeBorder_8u_C1R, Nox8u, false)
NOX_GRAY(noxiGrayErodeBorder_32f_C1R, Nox32f, false)
