// Erosion and dilation: the way of each kind of mask.
//
// A general mask is joined from pieces, each of which is a pixel or a short window of a source row: a run of 15 set
// cells is two windows of 8. The windows of the two widths that suit the mask are made once for each source row and
// kept for as many rows as the mask is high. A piece is then one load for each vector of an output row. In the columns
// at both sides, where the mask reaches beyond the image, strips of the image are copied to the state's scratch with
// their border first, and joined pixel by pixel.
#include <algorithm>
#include <cfloat>
#include <type_traits>

#include "ahead.h"
#include "checks.h"
#include "noxcv/primitives.h"
#include "noxvminmax.h"
#include "noxvmorphology.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// What a type and layout brings along.
template <class T, int channels>
struct Member;

/// The widths of the windows that pieces may be, beside single pixels; 0 for none. The second is 2 or 4 times the
/// first.
struct Levels {
    int width[2] = {0, 0};
};

/// A part of a mask: a window of the level's width, or a pixel for level -1.
struct Piece {
    int row, column, level;
};

/// Some pieces of a mask. A long list is made again for every row, a part at a time.
struct Pieces {
    static constexpr int most = 512;
    Piece list[most];
    int count = 0;

    /// Covers the set cells from cell `from` on, as many as there is room for; returns the first cell that is left.
    template <class IsSet>
    int collect(const IsSet &isSet, NoxiSize mask, const Levels &levels, int from) {
        const int cells = mask.width * mask.height;
        count = 0;
        while (from < cells && count < most) {
            if (!isSet(from)) {
                ++from;
                continue;
            }
            const int row = from / mask.width, column = from % mask.width;
            // The run that the cell is in, as far as a window could cover it.
            int ahead = 1, before = 0;
            while (ahead < levels.width[1] + levels.width[0] && column + ahead < mask.width && isSet(from + ahead))
                ++ahead;
            while (before < levels.width[1] + levels.width[0] && before < column && isSet(from - before - 1))
                ++before;
            Piece piece{row, column, -1};
            int covered = 1;
            for (int level = 1; level >= 0 && piece.level < 0; --level) {
                const int width = levels.width[level];
                if (width == 0 || width > before + ahead)
                    continue;
                piece.level = level;
                covered = std::min(ahead, width);
                piece.column = column + covered - width; // reaches back where the run ends too soon
            }
            list[count++] = piece;
            from += covered;
        }
        return from;
    }
};

/// The number of pieces of a whole mask.
template <class IsSet>
int countPieces(const IsSet &isSet, NoxiSize mask, const Levels &levels) {
    Pieces part;
    int pieces = 0;
    for (int cell = 0; cell < mask.width * mask.height;) {
        cell = part.collect(isSet, mask, levels, cell);
        pieces += part.count;
    }
    return pieces;
}

/// The widths that make a mask the cheapest: a load for each piece, and those that the windows are made with.
template <class IsSet>
Levels cheapestLevels(const IsSet &isSet, NoxiSize mask) {
    Levels best;
    int bestCost = countPieces(isSet, mask, best);
    if (bestCost > 65536 || bestCost < 8) // not worth the search, which walks the mask again
        return bestCost < 8 ? best : Levels{{4, 16}};
    for (const Levels &levels : {Levels{{2, 0}}, Levels{{4, 0}}, Levels{{2, 4}}, Levels{{4, 8}}, Levels{{4, 16}}}) {
        const int made = levels.width[0] + (levels.width[1] == 0 ? 0 : levels.width[1] / levels.width[0] + 1) + 1;
        const int cost = made + countPieces(isSet, mask, levels);
        if (cost < bestCost) {
            bestCost = cost;
            best = levels;
        }
    }
    return best;
}

/// Joins the pieces of a mask for rows of outputs. at(y, piece) tells where the pixels of a piece are for output row y.
/// With a srcStep that is not 0 they are so many bytes further on in each row. ahead(y) tells what comes after output
/// row y.
template <class Op, class T, class IsSet, class At, class Coming>
void joinPieces(const IsSet &isSet, NoxiSize mask, const Levels &levels, Rows<T> dst, int height, std::ptrdiff_t count,
                std::ptrdiff_t srcStep, const At &at, const Coming &ahead) {
    const int cells = mask.width * mask.height;
    Pieces part;
    const T *from[Pieces::most];
    const auto join = [&](int y, bool more, bool placed) {
        for (int i = 0; i < part.count; ++i)
            from[i] = placed ? Rows<const T>{from[i], srcStep}[1] : at(y, part.list[i]);
        asking(ahead(y), [&](const auto &next) {
            NOX_ON_TIER_FOR(tierBytes<T>(count), joinLimited<Op, T>(from, part.count, more, dst[y], count, next));
        });
    };
    const int first = part.collect(isSet, mask, levels, 0);
    for (int y = 0; y < height; ++y) {
        if (y > 0 && first < cells)
            part.collect(isSet, mask, levels, 0);
        join(y, false, y > 0 && first == cells && srcStep != 0);
        for (int next = first; next < cells;) {
            next = part.collect(isSet, mask, levels, next);
            join(y, true, false);
        }
    }
}

/// The winners of the set cells for a region of output rows, pixel by pixel; src is the pixel under the mask's top left
/// cell.
template <class Op, class T, int channels>
void joinMask(Rows<const T> src, Rows<T> dst, NoxiSize roi, const T *table, NoxiSize mask) {
    constexpr int entry = sizeof(T) == 1 ? 8 : 4;
    constexpr T setCell = std::is_same_v<T, Nox32f> ? -baseline::neutralElement<Op, T>()
                                                    : static_cast<T>(~baseline::neutralElement<Op, Nox8u>());
    joinPieces<Op, T>([table](int cell) { return table[static_cast<std::ptrdiff_t>(cell) * entry] == setCell; }, mask,
                      Levels{}, dst, roi.height, static_cast<std::ptrdiff_t>(roi.width) * channels, src.step,
                      [src](int y, const Piece &piece) {
                          return src[y + piece.row] + static_cast<std::ptrdiff_t>(piece.column) * channels;
                      },
                      [](int) { return NothingAhead(); });
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
    /// Output pixels x0 to x1 of all rows, where the mask does not reach beyond the image at the sides.
    void inside(int x0, int x1) const {
        const Nox8u *const cells = state.maskCopy;
        const auto isSet = [cells](int cell) { return cells[cell] != 0; };
        const Levels levels = cheapestLevels(isSet, mask);
        const auto ring = [&](int y, int level) {
            return reinterpret_cast<T *>(state.workBuffer +
                                         (static_cast<std::ptrdiff_t>(y % mask.height) * 2 + level) * state.rowStride);
        };
        int made = 0;
        const int lastRow = roi.height - 1;
        // Where the pixels and windows of the last row are that was asked for: pieces come row by row.
        int lastY = -1, lastPieceRow = -1;
        const T *from[3] = {};
        const auto at = [&](int y, const Piece &piece) {
            if (y != lastY || piece.row != lastPieceRow) {
                lastY = y;
                lastPieceRow = piece.row;
                const int row =
                    static_cast<int>(std::clamp<long long>(0LL + y + piece.row - state.anchorY, 0, lastRow));
                for (; levels.width[0] != 0 && made <= row; ++made)
                    makeWindows(levels, src[made], ring(made, 0), ring(made, 1));
                from[0] = src[row];
                from[1] = ring(row, 0);
                from[2] = ring(row, 1);
            }
            return from[piece.level + 1] + elements(x0 - state.anchorX + piece.column);
        };
        const Rows<T> inner = {dst[0] + elements(x0), dst.step};
        const bool asks = leavesCaches(2LL * static_cast<int>(sizeof(T)) * elements(roi.width) * roi.height);
        const auto ahead = [&](int y) {
            const auto next = static_cast<int>(std::min<long long>(1LL + y + state.bottomExtent, lastRow));
            return asks ? AheadRows<1>(src, next, inner, y + 1) : AheadRows<1>();
        };
        joinPieces<Op, T>(isSet, mask, levels, inner, roi.height, elements(x1 - x0), 0, at, ahead);
    }
    /// The windows of one source row, as far as whole ones fit.
    void makeWindows(const Levels &levels, const T *from, T *first, T *second) const {
        const int width = levels.width[0], wider = levels.width[1];
        const std::ptrdiff_t count = elements(roi.width - width + 1);
        if (width == 2)
            NOX_ON_TIER(limitedWindows<Op, T, channels, 2>(from, first, count));
        else
            NOX_ON_TIER(limitedWindows<Op, T, channels, 4>(from, first, count));
        const std::ptrdiff_t widerCount = elements(roi.width - wider + 1);
        if (wider == 0 || widerCount <= 0)
            return;
        if (wider == 2 * width)
            NOX_ON_TIER(joinWindows<Op, T, 2>(first, second, widerCount, elements(width)));
        else
            NOX_ON_TIER(joinWindows<Op, T, 4>(first, second, widerCount, elements(width)));
    }
    void run() const {
        // Columns at the sides are done some more at a time than need be, to fill a vector.
        constexpr int few = 16 / (channels * static_cast<int>(sizeof(T))) + 1;
        const long long left = state.anchorX == 0 ? 0 : std::max(state.anchorX, few),
                        right = state.rightExtent == 0 ? 0 : std::max(state.rightExtent, few);
        if (left + right >= roi.width) {
            strips(0, roi.width, 0, roi.height);
            return;
        }
        const int leftEnd = static_cast<int>(left), rightEnd = static_cast<int>(roi.width - right);
        strips(0, leftEnd, 0, roi.height);
        strips(rightEnd, roi.width, 0, roi.height);
        inside(leftEnd, rightEnd);
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
