// Minimum and maximum over windows of a row.
//
// Windows of 2 to 7 cells are formed from unaligned loads at once, where the caller chose the routine for their width.
// Others grow by four: windows of 4, 16 and 64 cells in a short line on the stack, of which the last step joins what
// the width asks for. So a row costs a number of passes that is the logarithm of the width, each a few instructions a
// vector. At the ends of the row windows are cut.
//
// Of a pair with a not-a-number the second operand is taken, so in rows of floats that hold one the order of operands
// shows. Windows of 3, and those that the routine for any width forms, have an order of their own there, by pairs and
// by blocks, and such rows are done pixel by pixel.
#include <algorithm>
#include <cfloat>
#include <cstring>
#include <type_traits>

#include "noxvminmax.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// Windows up to this width have routines of their own.
constexpr int shortWindow = 7;

/// The outputs whose window is cut at an end of the row, by running winners: all of them when the row is no longer than
/// the window.
template <class Op, class T, int channels>
void cutWindows(const Element<T> *src, Element<T> *dst, int width, int left, int right) {
    for (int c = 0; c < channels; ++c) {
        const auto at = [=](int x) NOX_INLINE_LAMBDA { return static_cast<std::ptrdiff_t>(x) * channels + c; };
        const int head = std::min(left, width), tail = std::max(head, width - right);
        T best = src[at(0)];
        for (int x = 1; x < std::min(right, width); ++x)
            best = baseline::pick<Op, T>(src[at(x)], best);
        for (int x = 0; x < head; ++x) {
            if (x + right < width)
                best = baseline::pick<Op, T>(src[at(x + right)], best);
            dst[at(x)] = best;
        }
        best = src[at(width - 1)];
        for (int x = width - 2; x > width - 1 - left && x >= 0; --x)
            best = baseline::pick<Op, T>(src[at(x)], best);
        for (int x = width - 1; x >= tail; --x) {
            if (x - left >= 0)
                best = baseline::pick<Op, T>(src[at(x - left)], best);
            dst[at(x)] = best;
        }
    }
}

/// Windows of `left` + 1 + `right` cells, at most longestWindow, in any row.
template <class Op, class T, int channels>
void wholeWindows(const T *src, T *dst, int width, int left, int right) {
    const int window = left + right + 1;
    if (width < window || window <= 4)
        cutWindows<Op, T, channels>(src, dst, width, left, right);
    if (width < window)
        return;
    const std::ptrdiff_t inside = static_cast<std::ptrdiff_t>(width - window + 1) * channels;
    T *const first = dst + static_cast<std::ptrdiff_t>(left) * channels;
    if (window == 2) {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), fixedWindows<Op, T, channels, 2>(src, first, inside));
    } else if (window == 3) {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), fixedWindows<Op, T, channels, 3>(src, first, inside));
    } else if (window == 4) {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), fixedWindows<Op, T, channels, 4>(src, first, inside));
    } else {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), growWindows<Op, T, channels>(src, dst, width, left, right));
    }
}

/// The same for a width that the routine is written for, if that is what is asked for.
template <class Op, class T, int channels, int fixed>
void fewCells(const T *src, T *dst, int width, int left, int right) {
    const int window = left + right + 1;
    if constexpr (fixed == 0) {
        wholeWindows<Op, T, channels>(src, dst, width, left, right);
    } else {
        if (window != fixed || width < window) {
            wholeWindows<Op, T, channels>(src, dst, width, left, right);
            return;
        }
        cutWindows<Op, T, channels>(src, dst, width, left, right);
        const std::ptrdiff_t inside = static_cast<std::ptrdiff_t>(width - window + 1) * channels;
        T *const first = dst + static_cast<std::ptrdiff_t>(left) * channels;
        NOX_ON_TIER_FOR(tierBytes<T>(inside), fixedWindows<Op, T, channels, fixed>(src, first, inside));
    }
}

/// Widens the windows of a row in place from `left` and `right` cells beside the pixel to `allLeft` and `allRight`. A
/// step joins two windows that touch or overlap, so it doubles the width at most.
template <class Op, class T, int channels>
void widenWindows(T *row, int width, int left, int right, int allLeft, int allRight) {
    const auto at = [](int x) NOX_INLINE_LAMBDA { return static_cast<std::ptrdiff_t>(x) * channels; };
    Element<T> *const dst = row;
    while (left < allLeft) {
        const int step = static_cast<int>(std::min<long long>(allLeft - left, 1LL + left + right));
        NOX_ON_TIER(joinLeft<Op, T>(row, at(width), at(step)));
        for (int x = step - 1; x > 0; --x)
            for (int c = 0; c < channels; ++c)
                dst[at(x) + c] = baseline::pick<Op, T>(dst[c], dst[at(x) + c]);
        left += step;
    }
    while (right < allRight) {
        const int step = static_cast<int>(std::min<long long>(allRight - right, 1LL + left + right));
        NOX_ON_TIER(joinRight<Op, T>(row, at(width - step), at(step)));
        for (int x = width - step; x < width - 1; ++x)
            for (int c = 0; c < channels; ++c)
                dst[at(x) + c] = baseline::pick<Op, T>(dst[at(width - 1) + c], dst[at(x) + c]);
        right += step;
    }
}

/// Two outputs at a time share what both their windows hold.
template <class Op, int channels>
void pairsOfThree(const Element<Nox32f> *src, Element<Nox32f> *dst, int width) {
    for (int i = 0; i < (width - 2) * channels; ++i) {
        const bool second = i / channels % 2 != 0;
        const Element<Nox32f> *const pair = src + i + (second ? 0 : channels);
        const Nox32f shared = baseline::pick<Op, Nox32f>(pair[0], pair[channels]);
        dst[i] = baseline::pick<Op, Nox32f>(src[i + (second ? 2 * channels : 0)], shared);
    }
}

/// The widest window that is formed by blocks; wider ones are joined from those.
constexpr int longestBlock = 63;

/// Windows of n cells, by blocks of n + 1 outputs (M. van Herk, 1992): backward winners inside a block, and a running
/// winner of what lies behind it.
template <class Op, int channels>
void blocksOfWindows(const Element<Nox32f> *src, Element<Nox32f> *dst, int width, int n) {
    const auto winner = [](Nox32f a, Nox32f b) NOX_INLINE_LAMBDA { return baseline::pick<Op, Nox32f>(a, b); };
    for (int c = 0; c < channels; ++c) {
        const auto at = [=](int x) NOX_INLINE_LAMBDA { return static_cast<std::ptrdiff_t>(x) * channels + c; };
        for (int b = 0; b + n <= width; b += n + 1) {
            Nox32f backward[longestBlock];
            backward[n - 1] = src[at(b + n - 1)];
            for (int i = n - 2; i > 0; --i)
                backward[i] = winner(backward[i + 1], src[at(b + i)]);
            dst[at(b)] = winner(backward[1], src[at(b)]);
            Nox32f running = 0;
            for (int i = 1; i <= n && b + n + i <= width; ++i) {
                const Nox32f next = src[at(b + n + i - 1)];
                running = i == 1 ? next : winner(running, next);
                dst[at(b + i)] = i == n ? running : winner(backward[i], running);
            }
        }
    }
}

/// A row with a not-a-number, by a routine that keeps its order of operands; false for other rows and routines.
template <class Op, int channels, bool blocks, int fixed>
bool inKeptOrder(const Nox32f *src, Nox32f *dst, int width, int left, int right) {
    const int window = left + right + 1;
    if (!(blocks || (fixed == 3 && window == 3 && width >= 3)) ||
        !NOX_ON_TIER_FOR(tierBytes<Nox32f>(std::ptrdiff_t{width} * channels),
                         holdsNotANumber(src, std::ptrdiff_t{width} * channels)))
        return false;
    const int someLeft = std::min(left, longestBlock - 1), someRight = std::min(right, longestBlock - 1 - someLeft);
    cutWindows<Op, Nox32f, channels>(src, dst, width, someLeft, someRight);
    Nox32f *const inside = dst + std::ptrdiff_t{someLeft} * channels;
    if (blocks)
        blocksOfWindows<Op, channels>(src, inside, width, someLeft + someRight + 1);
    else
        pairsOfThree<Op, channels>(src, inside, width);
    widenWindows<Op, Nox32f, channels>(dst, width, someLeft, someRight, left, right);
    return true;
}

template <class Op, class T, int channels, bool blocks, int fixed>
NOX_INLINE void filterRow(const T *src, T *dst, int width, int window, int anchor) {
    // What the row holds of the window.
    const int left = std::min(anchor, width - 1), right = std::min(window - 1 - anchor, width - 1);
    if (left == 0 && right == 0) {
        std::memcpy(dst, src, static_cast<std::size_t>(width) * channels * sizeof(T));
        return;
    }
    if constexpr (std::is_same_v<T, Nox32f>)
        if (inKeptOrder<Op, channels, blocks, fixed>(src, dst, width, left, right))
            return;
    if (left <= longestWindow - 1 - right) {
        fewCells<Op, T, channels, fixed>(src, dst, width, left, right);
    } else {
        const int someLeft = std::min(left, longestWindow - 1),
                  someRight = std::min(right, longestWindow - 1 - someLeft);
        wholeWindows<Op, T, channels>(src, dst, width, someLeft, someRight);
        widenWindows<Op, T, channels>(dst, width, someLeft, someRight, left, right);
    }
}

/// Routines for more than 7 cells grow their windows as the one for any width does.
constexpr int written(int window) { return window >= 2 && window <= shortWindow ? window : 0; }

} // namespace

#define NOX_ROW_ROUTINE(NAME, TYPE, CHANNELS, OP, WINDOW)                                                              \
    void NAME(const TYPE *src, TYPE *dst, int width, int window, int anchor) {                                         \
        filterRow<OP, TYPE, CHANNELS, WINDOW == 0, written(WINDOW)>(src, dst, width, window, anchor);                  \
    }
#include "noxvminmaxrows.inc"
#undef NOX_ROW_ROUTINE

#define NOX_ROW(OP, TAG, WINDOW) ownFilter##OP##Row##WINDOW##_##TAG##R
#define NOX_ROW_TABLE(OP, TAG, AT8, AT10, AT12, AT14)                                                                  \
    {                                                                                                                  \
        NOX_ROW(OP, TAG, VH), NOX_ROW(OP, TAG, 01), NOX_ROW(OP, TAG, 02), NOX_ROW(OP, TAG, 03), NOX_ROW(OP, TAG, 04),  \
            NOX_ROW(OP, TAG, 05), NOX_ROW(OP, TAG, 06), NOX_ROW(OP, TAG, 07), NOX_ROW(OP, TAG, AT8),                   \
            NOX_ROW(OP, TAG, 09), NOX_ROW(OP, TAG, AT10), NOX_ROW(OP, TAG, 11), NOX_ROW(OP, TAG, AT12),                \
            NOX_ROW(OP, TAG, 13), NOX_ROW(OP, TAG, AT14), NOX_ROW(OP, TAG, 15)                                         \
    }

const RowRoutine<Nox8u> owntablFilterMinRow_8u_C1[16] = NOX_ROW_TABLE(Min, 8u_C1, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMinRow_8u_C3[16] = NOX_ROW_TABLE(Min, 8u_C3, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMinRow_8u_C4[16] = NOX_ROW_TABLE(Min, 8u_C4, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMinRow_8u_C4_Small[16] = NOX_ROW_TABLE(Min, 8u_C4, 07, 09, 11, 13);
const RowRoutine<Nox32f> owntablFilterMinRow_32f_C1[16] = NOX_ROW_TABLE(Min, 32f_C1, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMinRow_32f_C3[16] = NOX_ROW_TABLE(Min, 32f_C3, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMinRow_32f_C4[16] = NOX_ROW_TABLE(Min, 32f_C4, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMinRow_32f_C1_Small[16] = NOX_ROW_TABLE(Min, 32f_C1, 07, 09, 11, 13);
const RowRoutine<Nox8u> owntablFilterMaxRow_8u_C1[16] = NOX_ROW_TABLE(Max, 8u_C1, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMaxRow_8u_C3[16] = NOX_ROW_TABLE(Max, 8u_C3, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMaxRow_8u_C4[16] = NOX_ROW_TABLE(Max, 8u_C4, VH, VH, VH, VH);
const RowRoutine<Nox8u> owntablFilterMaxRow_8u_C4_Small[16] = NOX_ROW_TABLE(Max, 8u_C4, 07, 09, 11, 13);
const RowRoutine<Nox32f> owntablFilterMaxRow_32f_C1[16] = NOX_ROW_TABLE(Max, 32f_C1, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMaxRow_32f_C3[16] = NOX_ROW_TABLE(Max, 32f_C3, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMaxRow_32f_C4[16] = NOX_ROW_TABLE(Max, 32f_C4, VH, VH, VH, VH);
const RowRoutine<Nox32f> owntablFilterMaxRow_32f_C1_Small[16] = NOX_ROW_TABLE(Max, 32f_C1, 07, 09, 11, 13);
