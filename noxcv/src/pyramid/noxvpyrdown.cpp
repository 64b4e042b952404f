// The down layer: smoothing with the state's kernel, then resampling by its rate.
//
// The image passes through row by row: source rows are filtered into a ring, rows of the smoothed plane are combined
// from the ring only where the resampler needs them, and the resampler keeps two rows.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "borders.h"
#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxvpyrlayer.h"
#include "numerics.h"

using namespace nox;

namespace {

/// Elements that a general kernel accumulates at a time.
constexpr int blockLength = 64;

// ---- arithmetic of a type: how a row sum and a column sum are brought to the plane's scale of 3 fractional bits

// An arithmetic that folds adds mirrored pixels and cells before it multiplies; integers give the same bits so.

/// Symmetric integer taps whose sums fit 32 bits.
template <class T>
struct Narrow;

template <>
struct Narrow<Nox8u> {
    using Tap = Nox16s;
    using Cell = Nox16s; ///< of the ring
    using Sum = Nox32s;
    using Plane = Nox32s;
    static constexpr bool folds = true;
    static constexpr int rowShift = 8;
    /// Two pixels, and two cells, fit 16 bits: products of 16 bits vectorise best.
    NOX_INLINE static Nox16s pair(int a, int b) { return static_cast<Nox16s>(a + b); }
    NOX_INLINE static Sum rowProduct(Tap tap, Nox16s pixels) { return tap * pixels; }
    NOX_INLINE static Cell row(Sum sum) { return static_cast<Cell>(sum >> rowShift); }
    struct ColumnSum {
        Sum sum;
    };
    NOX_INLINE static ColumnSum product(Tap tap, Nox16s cells) { return {tap * cells}; }
    NOX_INLINE static ColumnSum add(ColumnSum a, ColumnSum b) { return {a.sum + b.sum}; }
    NOX_INLINE static Plane column(ColumnSum s) { return saturate<Nox16s>((s.sum + (1 << 14)) >> 15); }
};

/// Sums of tap * cell reach 2^32, so the cell's low six bits are summed apart: with S = 64 H + L,
/// (S + 4096) >> 13 = (H + ((L + 4096) >> 6)) >> 7.
template <>
struct Narrow<Nox16u> {
    using Tap = Nox16s;
    using Cell = Nox32s;
    using Sum = Nox32s;
    using Plane = Nox32s;
    static constexpr bool folds = true;
    static constexpr int rowShift = 10;
    NOX_INLINE static Nox32s pair(Nox32s a, Nox32s b) { return a + b; }
    NOX_INLINE static Sum rowProduct(Tap tap, Nox32s pixels) { return tap * pixels; }
    NOX_INLINE static Cell row(Sum sum) { return sum >> rowShift; }
    struct ColumnSum {
        Sum high, low;
    };
    NOX_INLINE static ColumnSum product(Tap tap, Nox32s cells) { return {tap * (cells >> 6), tap * (cells & 63)}; }
    NOX_INLINE static ColumnSum add(ColumnSum a, ColumnSum b) { return {a.high + b.high, a.low + b.low}; }
    NOX_INLINE static Plane column(ColumnSum s) { return (s.high + ((s.low + 4096) >> 6)) >> 7; }
};

/// Floats, tap by tap in ascending order.
template <>
struct Narrow<Nox32f> {
    using Tap = Nox32f;
    using Cell = Nox32f;
    using Sum = Nox32f;
    using Plane = Nox32f;
    static constexpr bool folds = false;
    NOX_INLINE static Sum rowProduct(Tap tap, Nox32f pixel) { return tap * pixel; }
    NOX_INLINE static Cell row(Sum sum) { return sum; }
    struct ColumnSum {
        Sum sum;
    };
    NOX_INLINE static ColumnSum product(Tap tap, Cell cell) { return {tap * cell}; }
    NOX_INLINE static ColumnSum add(ColumnSum a, ColumnSum b) { return {a.sum + b.sum}; }
    NOX_INLINE static Plane column(ColumnSum s) { return s.sum; }
};

/// Integers with any taps, in 64 bits. ShiftEach: the form for small images, which shifts each product by itself.
template <class T, bool ShiftEach>
struct Wide {
    using Tap = Nox16s;
    using Cell = Nox32s;
    using Sum = std::int64_t;
    using Plane = Nox32s;
    static constexpr bool folds = false;
    static constexpr int rowShift = Narrow<T>::rowShift;
    NOX_INLINE static Sum rowProduct(Sum tap, T pixel) { return ShiftEach ? tap * pixel >> rowShift : tap * pixel; }
    NOX_INLINE static Cell row(Sum sum) { return static_cast<Cell>(ShiftEach ? sum : sum >> rowShift); }
    struct ColumnSum {
        Sum sum;
    };
    NOX_INLINE static ColumnSum product(Sum tap, Cell cell) { return {tap * cell}; }
    NOX_INLINE static ColumnSum add(ColumnSum a, ColumnSum b) { return {a.sum + b.sum}; }
    NOX_INLINE static Plane column(ColumnSum s) {
        if constexpr (std::is_same_v<T, Nox8u>)
            return saturate<Nox16s>((s.sum + (1 << 14)) >> 15);
        else
            return static_cast<Plane>((s.sum + (1 << 12)) >> 13);
    }
};

// ---- the two passes; Taps is the kernel's size where it is fixed, 0 where it is not

/// The sum over a kernel of `size` taps, value(k) being what tap k is multiplied with.
template <class A, class Product, class Add, class Value, class Tap>
NOX_INLINE auto sumOver(const Tap *kernel, int size, const Product &product, const Add &add, const Value &value) {
    if constexpr (A::folds) {
        const int centre = size / 2;
        auto sum = product(kernel[centre], value(centre));
        for (int d = 1; d <= centre; ++d)
            sum = add(sum, product(kernel[centre - d], A::pair(value(centre - d), value(centre + d))));
        return sum;
    } else {
        auto sum = product(kernel[0], value(0));
        for (int k = 1; k < size; ++k)
            sum = add(sum, product(kernel[k], value(k)));
        return sum;
    }
}

/// The sums of `count` elements into `store(i, sum)`. With a kernel of any size a block of sums is kept while the taps
/// go by, so that the inner loop runs along the row; value(k, i) is element i under tap k.
template <class A, int Taps, class Sum, class Product, class Add, class Value, class Tap, class Store>
NOX_INLINE void sumRow(const Tap *kernel, int size, int count, const Product &product, const Add &add,
                       const Value &value, const Store &store) {
    if constexpr (Taps != 0) {
        for (int i = 0; i < count; ++i)
            store(i,
                  sumOver<A>(kernel, Taps, product, add, [&value, i](int k) NOX_INLINE_LAMBDA { return value(k, i); }));
        return;
    }
    const int centre = size / 2, first = A::folds ? centre : 0, last = A::folds ? 2 * centre : size - 1;
    for (int begin = 0; begin < count; begin += blockLength) {
        Sum sums[blockLength];
        const int length = std::min(blockLength, count - begin);
        for (int i = 0; i < length; ++i)
            sums[i] = product(kernel[first], value(first, begin + i));
        for (int k = first + 1; k <= last; ++k)
            for (int i = 0; i < length; ++i) {
                if constexpr (A::folds)
                    sums[i] = add(sums[i],
                                  product(kernel[k], A::pair(value(k, begin + i), value(2 * centre - k, begin + i))));
                else
                    sums[i] = add(sums[i], product(kernel[k], value(k, begin + i)));
            }
        for (int i = 0; i < length; ++i)
            store(begin + i, sums[i]);
    }
}

template <class A, int Taps, class T>
NOX_TIERS void filterRow(const T *padded, typename A::Cell *cells, int count, const typename A::Tap *kernel, int size,
                         int channels) {
    using Sum = typename A::Sum;
    sumRow<A, Taps, Sum>(
        kernel, size, count, [](auto tap, auto pixel) NOX_INLINE_LAMBDA { return A::rowProduct(tap, pixel); },
        [](Sum a, Sum b) NOX_INLINE_LAMBDA { return static_cast<Sum>(a + b); },
        [=](int k, int i) NOX_INLINE_LAMBDA { return padded[i + k * channels]; },
        [=](int i, Sum sum) NOX_INLINE_LAMBDA { cells[i] = A::row(sum); });
}

template <class A, int Taps>
NOX_TIERS void combineRows(const typename A::Cell *const *rows, typename A::Plane *plane, int count,
                           const typename A::Tap *kernel, int size) {
    using Sum = typename A::ColumnSum;
    sumRow<A, Taps, Sum>(
        kernel, size, count, [](auto tap, auto cell) NOX_INLINE_LAMBDA { return A::product(tap, cell); },
        [](Sum a, Sum b) NOX_INLINE_LAMBDA { return A::add(a, b); },
        [=](int k, int i) NOX_INLINE_LAMBDA { return rows[k][i]; },
        [=](int i, Sum sum) NOX_INLINE_LAMBDA { plane[i] = A::column(sum); });
}

// ---- resampling

/// Between two values of the plane, on the plane's scale.
NOX_INLINE Nox32s between(Nox32s first, Nox32s second, Nox32f f) {
    return static_cast<Nox32s>(static_cast<Nox32f>(second) * f + 0.5F + static_cast<Nox32f>(first) * (1.0F - f));
}
NOX_INLINE Nox32f between(Nox32f first, Nox32f second, Nox32f f) { return second * f + first * (1.0F - f); }

/// The plane's 3 fractional bits rounded away.
template <class T>
NOX_INLINE T finish(Nox32s value) {
    return saturate<T>((value + 4) >> 3);
}
template <class T>
NOX_INLINE T finish(Nox32f value) {
    return value;
}

/// Output position i lies at i * rate: between the whole position and the next one.
struct Position {
    int whole;
    Nox32f fraction;
    NOX_INLINE Position(int i, Nox32f rate) {
        const Nox32f p = static_cast<Nox32f>(i) * rate;
        whole = static_cast<int>(p);
        fraction = p - static_cast<Nox32f>(whole);
    }
};

template <int Channels, class P>
NOX_TIERS void resampleRow(const P *plane, int width, P *out, int outWidth, Nox32f rate) {
    // The last position may have no neighbour to its right.
    const int inner = Position(outWidth - 1, rate).whole + 1 < width ? outWidth : outWidth - 1;
    for (int c = 0; c < Channels; ++c) {
        for (int x = 0; x < inner; ++x) {
            const Position at(x, rate);
            const P *v = plane + at.whole * Channels + c;
            out[x * Channels + c] = between(v[0], v[Channels], at.fraction);
        }
        if (inner < outWidth)
            out[inner * Channels + c] = plane[(width - 1) * Channels + c];
    }
}

template <class T, class P>
NOX_TIERS void resampleColumn(const P *first, const P *second, Nox32f fraction, T *dst, int count) {
    for (int i = 0; i < count; ++i)
        elements(dst)[i] = finish<T>(between(first[i], second[i], fraction));
}

template <class T, class P>
NOX_TIERS void storeRow(const P *row, T *dst, int count) {
    for (int i = 0; i < count; ++i)
        elements(dst)[i] = finish<T>(row[i]);
}

template <int Channels, class T, class P>
NOX_TIERS void storeEverySecond(const P *plane, T *dst, int pixels) {
    for (int x = 0; x < pixels; ++x)
        for (int c = 0; c < Channels; ++c)
            elements(dst)[x * Channels + c] = finish<T>(plane[2 * x * Channels + c]);
}

// ---- one call

/// Smooths rows on demand.
template <class A, class T, int Channels>
class Smoother {
    using Cell = typename A::Cell;
    using Plane = typename A::Plane;
    using Tap = typename A::Tap;

public:
    Smoother(Rows<const T> src, NoxiSize roi, const NoxiPyramidLayerState &state, WorkBuffer &scratch)
        : src_(src), roi_(roi), kernel_(static_cast<const Tap *>(state.kernel)), size_(state.kernelSize),
          slots_(std::min(size_, roi.height)), count_(static_cast<std::ptrdiff_t>(roi.width) * Channels),
          window_(scratch.take<const Cell *>(size_)), held_(scratch.take<int>(slots_)),
          ring_(scratch.take<Cell>(slots_ * count_), slots_, count_),
          plane_(scratch.aligned(alignof(Plane)).take<Plane>(count_)),
          padded_(scratch.take<T>(count_ + (size_ - 1) * Channels)) {
        std::fill_n(held_, slots_, -1);
    }

    /// Row y of the smoothed plane; valid until the next call.
    const Plane *row(int y) {
        for (int k = 0; k < size_; ++k)
            window_[k] = filtered(borderIndex(y + k - size_ / 2, roi_.height, noxBorderMirror));
        const int count = static_cast<int>(count_);
        if (size_ == 3)
            combineRows<A, 3>(window_, plane_, count, kernel_, size_);
        else if (size_ == 5)
            combineRows<A, 5>(window_, plane_, count, kernel_, size_);
        else if (size_ == 7)
            combineRows<A, 7>(window_, plane_, count, kernel_, size_);
        else
            combineRows<A, 0>(window_, plane_, count, kernel_, size_);
        return plane_;
    }

private:
    /// Source row y, filtered along the row; at most as many as the kernel has taps are held.
    const Cell *filtered(int y) {
        const int slot = y % slots_;
        Cell *cells = ring_[y];
        if (held_[slot] == y)
            return cells;
        held_[slot] = y;
        pad(src_[y]);
        const int count = static_cast<int>(count_);
        if (size_ == 3)
            filterRow<A, 3>(padded_, cells, count, kernel_, size_, Channels);
        else if (size_ == 5)
            filterRow<A, 5>(padded_, cells, count, kernel_, size_, Channels);
        else if (size_ == 7)
            filterRow<A, 7>(padded_, cells, count, kernel_, size_, Channels);
        else
            filterRow<A, 0>(padded_, cells, count, kernel_, size_, Channels);
        return cells;
    }

    void pad(const T *row) {
        const int half = size_ / 2;
        std::memcpy(padded_ + half * Channels, row, sizeof(T) * static_cast<std::size_t>(count_));
        for (int x = 1; x <= half; ++x) {
            copyPixel(row, -x);
            copyPixel(row, roi_.width - 1 + x);
        }
    }
    void copyPixel(const T *row, int x) {
        const T *from = row + borderIndex(x, roi_.width, noxBorderMirror) * Channels;
        std::memcpy(padded_ + static_cast<std::ptrdiff_t>(x + size_ / 2) * Channels, from, sizeof(T) * Channels);
    }

    Rows<const T> src_;
    NoxiSize roi_;
    const Tap *kernel_;
    int size_, slots_;
    std::ptrdiff_t count_;
    const Cell **window_;
    int *held_;
    RowRing<Cell> ring_;
    Plane *plane_;
    T *padded_;
};

/// At this rate the resampler takes every second row and column.
bool isTwo(Nox32f rate) { return rate >= 1.99998F && rate <= 2.00002F; }

template <class A, class T, int Channels>
void subsample(Smoother<A, T, Channels> &smoother, NoxiSize roi, Rows<T> dst, NoxiSize dstRoi) {
    // Just below rate 2 the last position may lie one behind the plane: the last column or row stands for it.
    const bool beyond = 2 * (dstRoi.width - 1) >= roi.width;
    for (int y = 0; y < dstRoi.height; ++y) {
        const auto *plane = smoother.row(std::min(2 * y, roi.height - 1));
        const int inner = dstRoi.width - (beyond ? 1 : 0);
        storeEverySecond<Channels>(plane, dst[y], inner);
        if (beyond)
            storeRow(plane + (roi.width - 1) * Channels, dst[y] + inner * Channels, Channels);
    }
}

template <class A, class T, int Channels>
void resample(Smoother<A, T, Channels> &smoother, NoxiSize roi, Rows<T> dst, NoxiSize dstRoi, Nox32f rate,
              WorkBuffer &scratch) {
    using Plane = typename A::Plane;
    const int count = dstRoi.width * Channels;
    Plane *const places = scratch.aligned(alignof(Plane)).take<Plane>(2LL * count);
    Plane *const rows[2] = {places, places + count};
    int held[2] = {-1, -1};
    const auto resampled = [&](int y) {
        if (held[y % 2] != y) {
            held[y % 2] = y;
            resampleRow<Channels>(smoother.row(y), roi.width, rows[y % 2], dstRoi.width, rate);
        }
        return rows[y % 2];
    };
    for (int y = 0; y < dstRoi.height; ++y) {
        const Position at(y, rate);
        const Plane *first = resampled(at.whole);
        if (at.whole + 1 < roi.height)
            resampleColumn(first, resampled(at.whole + 1), at.fraction, dst[y], count);
        else
            storeRow(first, dst[y], count);
    }
}

template <class A, class T, int Channels>
void layerDown(Rows<const T> src, NoxiSize srcRoi, Rows<T> dst, NoxiSize dstRoi, const NoxiPyramidLayerState &state) {
    WorkBuffer scratch(state.work, alignof(Nox64f));
    Smoother<A, T, Channels> smoother(src, srcRoi, state, scratch);
    if (isTwo(state.rate))
        subsample(smoother, srcRoi, dst, dstRoi);
    else
        resample(smoother, srcRoi, dst, dstRoi, state.rate, scratch);
}

/// Sums of products, and of two cells, stay within their types when the taps' magnitudes add up to less than this
/// (normalised taps without negative ones: 8192).
constexpr long long narrowTaps = 16000;

bool fitsNarrow(const Nox16s *kernel, int size) {
    long long magnitudes = 0;
    for (int i = 0; i < size; ++i) {
        if (kernel[i] != kernel[size - 1 - i])
            return false;
        magnitudes += std::abs(static_cast<int>(kernel[i]));
    }
    return magnitudes < narrowTaps;
}

template <class T, int Channels>
NoxStatus down(const T *src, int srcStep, NoxiSize srcRoi, T *dst, int dstStep, NoxiSize dstRoi,
               const NoxiPyramidLayerState *state) {
    NoxStatus status = checkLayer(src, srcStep, srcRoi, dst, dstStep, dstRoi, state, Channels);
    if (status == noxStsNoError)
        status = checkRate(state->rate);
    if (status != noxStsNoError)
        return status;
    NoxiSize expected;
    noxiGetPyramidDownROI(srcRoi, &expected, state->rate);
    if (dstRoi.width != expected.width || dstRoi.height != expected.height || srcRoi.width > state->width ||
        srcRoi.height > state->height)
        return noxStsBadSize;

    const Rows<const T> from{src, srcStep};
    const Rows<T> to{dst, dstStep};
    if constexpr (std::is_integral_v<T>) {
        const int n = state->kernelSize;
        if (n >= srcRoi.width || n >= srcRoi.height)
            layerDown<Wide<T, true>, T, Channels>(from, srcRoi, to, dstRoi, *state);
        else if (!fitsNarrow(static_cast<const Nox16s *>(state->kernel), n))
            layerDown<Wide<T, false>, T, Channels>(from, srcRoi, to, dstRoi, *state);
        else
            layerDown<Narrow<T>, T, Channels>(from, srcRoi, to, dstRoi, *state);
    } else {
        layerDown<Narrow<T>, T, Channels>(from, srcRoi, to, dstRoi, *state);
    }
    return noxStsNoError;
}

} // namespace

#define NOX_LAYER_DOWN(FUNCTION, TYPE, CHANNELS)                                                                       \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, NoxiSize srcRoi, TYPE *dst, int dstStep, NoxiSize dstRoi,         \
                       NoxiPyramidLayerState *state) {                                                                 \
        return down<TYPE, CHANNELS>(src, srcStep, srcRoi, dst, dstStep, dstRoi, state);                                \
    }
NOX_LAYER_DOWN(noxiPyramidLayerDown_8u_C1R, Nox8u, 1)
NOX_LAYER_DOWN(noxiPyramidLayerDown_8u_C3R, Nox8u, 3)
NOX_LAYER_DOWN(noxiPyramidLayerDown_16u_C1R, Nox16u, 1)
NOX_LAYER_DOWN(noxiPyramidLayerDown_16u_C3R, Nox16u, 3)
NOX_LAYER_DOWN(noxiPyramidLayerDown_32f_C1R, Nox32f, 1)
NOX_LAYER_DOWN(noxiPyramidLayerDown_32f_C3R, Nox32f, 3)
