// Minimum and maximum over windows of a row.
//
// Windows of 2 to 7 cells are formed from unaligned loads at once. Wider ones grow by four: windows of 4, 16 and 64
// cells in a short line on the stack, of which the last step joins what the width asks for. So a row costs a number of
// passes that is the logarithm of the width, each a few instructions a vector. At the ends of the row windows are cut.
#include <algorithm>
#include <cfloat>
#include <cstring>
#include <type_traits>

#include "noxvminmax.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "frame/noxveachtier.h"

using namespace nox;

namespace {

/// Windows up to this width have their cut ends done pixel by pixel.
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

/// Copies pixel `from` n times.
template <class T, int channels>
NOX_INLINE void repeatPixel(const Element<T> *from, Element<T> *to, int n) {
    if constexpr (sizeof(T) * channels == 1) {
        std::memset(to, *from, n);
    } else {
        for (int i = 0; i < n; ++i)
            for (int c = 0; c < channels; ++c)
                to[i * channels + c] = from[c];
    }
}

/// Windows of `left` + 1 + `right` cells, at most longestWindow. The row is src, and dst is another.
template <class Op, class T, int channels, int fixed>
void wholeWindows(const T *src, T *dst, int width, int left, int right) {
    const int window = left + right + 1;
    if (window <= shortWindow || width < window)
        cutWindows<Op, T, channels>(src, dst, width, left, right);
    const std::ptrdiff_t inside = static_cast<std::ptrdiff_t>(width - window + 1) * channels;
    if (inside <= 0)
        return;
    T *const first = dst + static_cast<std::ptrdiff_t>(left) * channels;
    if (window == fixed) {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), windows<Op, T, channels, fixed>(src, first, inside, window));
    } else {
        NOX_ON_TIER_FOR(tierBytes<T>(inside), windows<Op, T, channels, 0>(src, first, inside, window));
    }
    if (window <= shortWindow)
        return;
    // The ends, as whole windows of a line in which the end pixel is repeated.
    T line[2 * longestWindow * channels];
    const std::ptrdiff_t shared = static_cast<std::ptrdiff_t>(window - 1) * channels;
    const auto elements = [](int pixels) NOX_INLINE_LAMBDA { return static_cast<std::ptrdiff_t>(pixels) * channels; };
    if (left > 0) {
        repeatPixel<T, channels>(src, line, left);
        std::memcpy(line + elements(left), src, shared * sizeof(T));
        NOX_ON_TIER(windows<Op, T, channels, 0>(line, dst, elements(left), window));
    }
    if (right > 0) {
        std::memcpy(line, src + elements(width) - shared, shared * sizeof(T));
        repeatPixel<T, channels>(src + elements(width - 1), line + shared, right);
        NOX_ON_TIER(windows<Op, T, channels, 0>(line, dst + elements(width - right), elements(right), window));
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

template <class Op, class T, int channels, int fixed>
NOX_INLINE void filterRow(const T *src, T *dst, int width, int window, int anchor) {
    // What the row holds of the window.
    const int left = std::min(anchor, width - 1), right = std::min(window - 1 - anchor, width - 1);
    if (left == 0 && right == 0) {
        std::memcpy(dst, src, static_cast<std::size_t>(width) * channels * sizeof(T));
    } else if (left <= longestWindow - 1 - right) {
        wholeWindows<Op, T, channels, fixed>(src, dst, width, left, right);
    } else {
        const int someLeft = std::min(left, longestWindow - 1),
                  someRight = std::min(right, longestWindow - 1 - someLeft);
        wholeWindows<Op, T, channels, 0>(src, dst, width, someLeft, someRight);
        widenWindows<Op, T, channels>(dst, width, someLeft, someRight, left, right);
    }
}

/// Routines for more than 7 cells grow their windows as the one for any width does.
constexpr int written(int window) { return window >= 2 && window <= shortWindow ? window : 0; }

} // namespace

#define NOX_ROW_ROUTINE(NAME, TYPE, CHANNELS, OP, WINDOW)                                                              \
    void NAME(const TYPE *src, TYPE *dst, int width, int window, int anchor) {                                         \
        filterRow<OP, TYPE, CHANNELS, written(WINDOW)>(src, dst, width, window, anchor);                               \
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
