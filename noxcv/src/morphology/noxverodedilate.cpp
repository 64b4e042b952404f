// Erosion and dilation: the way of each kind of mask.
//
// A general mask is done cell by cell: a kernel joins the pixels under the set cells for one output row, from a source
// in which the whole mask can be placed. That is the image itself where the mask does not reach beyond it; elsewhere
// strips of the image are copied to the state's scratch, with their border, first.
#include <algorithm>
#include <cfloat>
#include <type_traits>

#include "checks.h"
#include "noxcv/primitives.h"
#include "noxvminmax.h"
#include "noxvmorphology.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "frame/noxveachtier.h"

using namespace nox;

namespace {

/// What a type and layout brings along.
template <class T, int channels>
struct Member;

/// Byte offsets of the set cells of a mask, a part of them at a time.
struct Cells {
    static constexpr int most = 512;
    std::ptrdiff_t offsets[most];
    int count = 0;

    /// Collects set cells from cell `from` on, and returns the first cell that is left.
    template <class Op, class T>
    int collect(const T *table, int from, NoxiSize mask, std::ptrdiff_t srcStep, int pixelBytes) {
        constexpr int entry = sizeof(T) == 1 ? 8 : 4;
        constexpr T setCell = std::is_same_v<T, Nox32f> ? -baseline::neutralElement<Op, T>()
                                                        : static_cast<T>(~baseline::neutralElement<Op, Nox8u>());
        const int cells = mask.width * mask.height;
        int cell = from, r = from / mask.width, c = from % mask.width;
        for (count = 0; cell < cells && count < most; ++cell) {
            if (table[static_cast<std::ptrdiff_t>(cell) * entry] == setCell)
                offsets[count++] = r * srcStep + static_cast<std::ptrdiff_t>(c) * pixelBytes;
            if (++c == mask.width) {
                c = 0;
                ++r;
            }
        }
        return cell;
    }
};

/// The winners of the set cells for a region of output rows; src is the pixel under the mask's top left cell.
template <class Op, class T, int channels>
void joinMask(Rows<const T> src, Rows<T> dst, NoxiSize roi, const T *table, NoxiSize mask) {
    constexpr int pixelBytes = channels * static_cast<int>(sizeof(T));
    const int cells = mask.width * mask.height;
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(roi.width) * channels;
    const int bytes = static_cast<int>(std::min<std::ptrdiff_t>(count, 64) * sizeof(T));
    Cells part;
    const auto collect = [&](int from) { return part.collect<Op, T>(table, from, mask, src.step, pixelBytes); };
    const auto join = [&](int y, bool more) {
        NOX_ON_TIER_FOR(bytes, joinCells<Op, T>(src[y], part.offsets, part.count, more, dst[y], count));
    };
    const int first = collect(0);
    for (int y = 0; y < roi.height; ++y) {
        if (y > 0 && first < cells)
            collect(0);
        join(y, false);
        for (int next = first; next < cells;) {
            next = collect(next);
            join(y, true);
        }
    }
}

#define NOX_MASK_ROUTINES(TYPE, TAG, CHANNELS)                                                                         \
    template <>                                                                                                        \
    struct Member<TYPE, CHANNELS> {                                                                                    \
        static constexpr auto smallest = noxiFilterMinBorderReplicate_##TAG##R;                                        \
        static constexpr auto largest = noxiFilterMaxBorderReplicate_##TAG##R;                                         \
        static constexpr auto erodeRuns = ownErodeEllipseBorderReplicate_##TAG##R;                                     \
        static constexpr auto dilateRuns = ownDilateEllipseBorderReplicate_##TAG##R;                                   \
        static constexpr auto copy = noxiCopy_##TAG##R;                                                                \
    };
NOX_MASK_ROUTINES(Nox8u, 8u_C1, 1)
NOX_MASK_ROUTINES(Nox8u, 8u_C3, 3)
NOX_MASK_ROUTINES(Nox8u, 8u_C4, 4)
NOX_MASK_ROUTINES(Nox32f, 32f_C1, 1)
NOX_MASK_ROUTINES(Nox32f, 32f_C3, 3)
NOX_MASK_ROUTINES(Nox32f, 32f_C4, 4)

/// Border copies move bit patterns, so those of 32-bit integers serve floats.
template <int channels>
void copyWithBorder(const Nox8u *src, int srcStep, NoxiSize size, Nox8u *dst, int dstStep, NoxiSize all, int top,
                    int left) {
    constexpr auto copy = channels == 1   ? noxiCopyReplicateBorder_8u_C1R
                          : channels == 3 ? noxiCopyReplicateBorder_8u_C3R
                                          : noxiCopyReplicateBorder_8u_C4R;
    copy(src, srcStep, size, dst, dstStep, all, top, left);
}
template <int channels>
void copyWithBorder(const Nox32f *src, int srcStep, NoxiSize size, Nox32f *dst, int dstStep, NoxiSize all, int top,
                    int left) {
    constexpr auto copy = channels == 1   ? noxiCopyReplicateBorder_32s_C1R
                          : channels == 3 ? noxiCopyReplicateBorder_32s_C3R
                                          : noxiCopyReplicateBorder_32s_C4R;
    copy(reinterpret_cast<const Nox32s *>(src), srcStep, size, reinterpret_cast<Nox32s *>(dst), dstStep, all, top,
         left);
}
template <int channels>
void addBorder(Nox8u *image, int step, NoxiSize size, NoxiSize all, int top, int left) {
    constexpr auto add = channels == 1   ? noxiCopyReplicateBorder_8u_C1IR
                         : channels == 3 ? noxiCopyReplicateBorder_8u_C3IR
                                         : noxiCopyReplicateBorder_8u_C4IR;
    add(image, step, size, all, top, left);
}
template <int channels>
void addBorder(Nox32f *image, int step, NoxiSize size, NoxiSize all, int top, int left) {
    constexpr auto add = channels == 1   ? noxiCopyReplicateBorder_32s_C1IR
                         : channels == 3 ? noxiCopyReplicateBorder_32s_C3IR
                                         : noxiCopyReplicateBorder_32s_C4IR;
    add(reinterpret_cast<Nox32s *>(image), step, size, all, top, left);
}

/// One call with a general mask.
template <class Op, class T, int channels>
struct GeneralMask {
    Rows<const T> src;
    Rows<T> dst;
    NoxiSize roi;
    const NoxiMorphState &state;
    NoxiSize mask{state.maskWidth, state.maskHeight};
    const T *table = static_cast<const T *>(std::is_same_v<Op, Smallest> ? state.erodeTable : state.dilateTable);

    static std::ptrdiff_t elements(int pixels) { return static_cast<std::ptrdiff_t>(pixels) * channels; }

    /// Output pixels x0 to x1 of rows y0 to y1, as strips that fit the scratch with their border.
    void strips(int x0, int x1, int y0, int y1) const {
        T *const scratch = reinterpret_cast<T *>(state.workBuffer);
        const int sourceX0 = std::max(x0 - state.anchorX, 0),
                  sourceX1 = static_cast<int>(std::min<long long>(roi.width, 0LL + x1 + state.rightExtent));
        for (int y = y0, n = 0; x0 < x1 && y < y1; y += n) {
            n = std::min(mask.height, y1 - y);
            const int sourceY0 = std::max(y - state.anchorY, 0),
                      sourceY1 = static_cast<int>(std::min<long long>(roi.height, 0LL + y + n + state.bottomExtent));
            copyWithBorder<channels>(src[sourceY0] + elements(sourceX0), static_cast<int>(src.step),
                                     {sourceX1 - sourceX0, sourceY1 - sourceY0}, scratch, state.rowStride,
                                     {x1 - x0 + mask.width - 1, n + mask.height - 1}, sourceY0 - (y - state.anchorY),
                                     sourceX0 - (x0 - state.anchorX));
            joinMask<Op, T, channels>({scratch, state.rowStride}, {dst[y] + elements(x0), dst.step}, {x1 - x0, n},
                                      table, mask);
        }
    }
    void run() const {
        if (roi.width < mask.width || roi.height < mask.height) {
            strips(0, roi.width, 0, roi.height);
            return;
        }
        const int left = state.anchorX, right = roi.width - state.rightExtent;
        const int top = state.anchorY, bottom = roi.height - state.bottomExtent;
        strips(0, roi.width, 0, top);
        strips(0, left, top, bottom);
        joinMask<Op, T, channels>(src, {dst[top] + elements(left), dst.step}, {right - left, bottom - top}, table,
                                  mask);
        strips(right, roi.width, top, bottom);
        strips(0, roi.width, bottom, roi.height);
    }
};

/// How a window whose anchor lies beside it is placed along one side of the image: the filter runs on fewer pixels, and
/// the others repeat the nearest of them.
struct Placed {
    int side;       ///< pixels that the filter makes
    int source = 0; ///< first source pixel
    int before = 0; ///< result pixels before the first one that is made
    int anchor;     ///< inside the window

    Placed(int whole, int window, int anchorAt) : side(whole), anchor(anchorAt) {
        if (anchorAt < 0) {
            source = std::min(whole - 1, -anchorAt);
            side = whole - source;
            anchor = 0;
        } else if (anchorAt >= window) {
            before = std::min(anchorAt - window + 1, whole - 1);
            side = whole - before;
            anchor = window - 1;
        }
    }
};

template <class Op, class T, int channels>
void overRectangle(Rows<const T> src, Rows<T> dst, NoxiSize roi, const NoxiMorphState &state) {
    constexpr auto filter = std::is_same_v<Op, Smallest> ? Member<T, channels>::smallest : Member<T, channels>::largest;
    const Placed x(roi.width, state.maskWidth, state.anchorX), y(roi.height, state.maskHeight, state.anchorY);
    T *const first = dst[y.before] + static_cast<std::ptrdiff_t>(x.before) * channels;
    const NoxiSize made{x.side, y.side};
    const int dstStep = static_cast<int>(dst.step);
    filter(src[y.source] + static_cast<std::ptrdiff_t>(x.source) * channels, static_cast<int>(src.step), first, dstStep,
           made, {state.maskWidth, state.maskHeight}, {x.anchor, y.anchor}, state.workBuffer);
    if (made.width < roi.width || made.height < roi.height)
        addBorder<channels>(first, dstStep, made, roi, y.before, x.before);
}

template <class Op, class T, int channels>
NoxStatus morphology(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int borderType,
                     const NoxiMorphState *state) {
    const long long elements = static_cast<long long>(roi.width) * channels;
    NoxStatus status = firstFailure(checkPointers(src, dst, state), checkSize(roi), checkStep<T>(srcStep, elements),
                                    checkStep<T>(dstStep, elements), checkEvenSteps<T>(srcStep, dstStep),
                                    require(borderType == noxBorderReplicate, noxStsBadArgument));
    if (status == noxStsNoError)
        status = require(roi.width <= state->roiWidth, noxStsBadSize);
    if (status != noxStsNoError)
        return status;
    using Routines = Member<T, channels>;
    switch (state->kernelKind) {
    case rectangleKernel:
        overRectangle<Op, T, channels>({src, srcStep}, {dst, dstStep}, roi, *state);
        break;
    case ellipseKernel: {
        constexpr auto runs = std::is_same_v<Op, Smallest> ? Routines::erodeRuns : Routines::dilateRuns;
        runs(src, srcStep, dst, dstStep, roi, static_cast<const KernelInfo *>(state->kernelInfo), state->workBuffer);
        break;
    }
    case emptyKernel:
        Routines::copy(src, srcStep, dst, dstStep, roi);
        break;
    default:
        GeneralMask<Op, T, channels>{{src, srcStep}, {dst, dstStep}, roi, *state}.run();
        break;
    }
    return noxStsNoError;
}

} // namespace

#define NOX_ROW_KERNEL(NAME, OP, TYPE, CHANNELS)                                                                       \
    void NAME(const TYPE *src, int srcStep, TYPE *dst, int width, const TYPE *table, int maskWidth, int maskHeight) {  \
        joinMask<OP, TYPE, CHANNELS>({src, srcStep}, {dst, 0}, {width, 1}, table, {maskWidth, maskHeight});            \
    }
NOX_ROW_KERNEL(Erode_8u_C1S, Smallest, Nox8u, 1)
NOX_ROW_KERNEL(Erode_8u_C3S, Smallest, Nox8u, 3)
NOX_ROW_KERNEL(Erode_8u_C4S, Smallest, Nox8u, 4)
NOX_ROW_KERNEL(Erode_32f_C1S, Smallest, Nox32f, 1)
NOX_ROW_KERNEL(Erode_32f_C3S, Smallest, Nox32f, 3)
NOX_ROW_KERNEL(Erode_32f_C4S, Smallest, Nox32f, 4)
NOX_ROW_KERNEL(Dilate_8u_C1S, Largest, Nox8u, 1)
NOX_ROW_KERNEL(Dilate_8u_C3S, Largest, Nox8u, 3)
NOX_ROW_KERNEL(Dilate_8u_C4S, Largest, Nox8u, 4)
NOX_ROW_KERNEL(Dilate_32f_C1S, Largest, Nox32f, 1)
NOX_ROW_KERNEL(Dilate_32f_C3S, Largest, Nox32f, 3)
NOX_ROW_KERNEL(Dilate_32f_C4S, Largest, Nox32f, 4)

#define NOX_MORPHOLOGY(NAME, OP, TYPE, CHANNELS)                                                                       \
    NoxStatus NAME(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int borderType,                 \
                   const NoxiMorphState *state) {                                                                      \
        return morphology<OP, TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, borderType, state);                     \
    }
NOX_MORPHOLOGY(noxiErodeBorderReplicate_8u_C1R, Smallest, Nox8u, 1)
NOX_MORPHOLOGY(noxiErodeBorderReplicate_8u_C3R, Smallest, Nox8u, 3)
NOX_MORPHOLOGY(noxiErodeBorderReplicate_8u_C4R, Smallest, Nox8u, 4)
NOX_MORPHOLOGY(noxiErodeBorderReplicate_32f_C1R, Smallest, Nox32f, 1)
NOX_MORPHOLOGY(noxiErodeBorderReplicate_32f_C3R, Smallest, Nox32f, 3)
NOX_MORPHOLOGY(noxiErodeBorderReplicate_32f_C4R, Smallest, Nox32f, 4)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_8u_C1R, Largest, Nox8u, 1)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_8u_C3R, Largest, Nox8u, 3)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_8u_C4R, Largest, Nox8u, 4)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_32f_C1R, Largest, Nox32f, 1)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_32f_C3R, Largest, Nox32f, 3)
NOX_MORPHOLOGY(noxiDilateBorderReplicate_32f_C4R, Largest, Nox32f, 4)
