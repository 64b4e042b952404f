// Kernels of the point tracker. Patches of 8-bit images are 16-bit integers with 7 fractional bits, all others floats.
#include "noxvopticalflowpatch.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <tuple>

#include <emmintrin.h>

#include "numerics.h"

using namespace nox;

namespace {

// ---- planes of derivatives ----

/// The fraction of a place in a patch, in 0 to 1.
long double placeFraction(Nox32f centre, int length) {
    const long double place = static_cast<long double>(centre) - (static_cast<long double>(length) - 1) / 2;
    const long double fraction = place - std::trunc(place);
    return fraction < 0 ? fraction + 1 : fraction;
}

/// Weights of the four samples around a place. Those of integers are Q15; where one is a whole 1 the others are 0.
template <class W>
struct Corners {
    W w00, w10, w01, w11;
};

Corners<int> integerCorners(long double fx, long double fy) {
    const int ax = static_cast<int>(32768 * fx + 0.5L), ay = static_cast<int>(32768 * fy + 0.5L);
    const int bx = 32768 - ax, by = 32768 - ay;
    const auto product = [](int a, int b) { // 2^30 + 2^14 at most
        return (a * b + 16384) >> 15;
    };
    return {product(bx, by), product(ax, by), product(bx, ay), product(ax, ay)};
}

Corners<Nox32f> floatCorners(Nox32f ax, Nox32f ay) {
    const Nox32f bx = 1.0F - ax, by = 1.0F - ay;
    return {bx * by, ax * by, bx * ay, ax * ay};
}

NOX_INLINE __m128i load(const Nox16s *p) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)); }
NOX_INLINE void store(Nox16s *p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }

/// Both as the 16-bit halves of every element.
NOX_INLINE __m128i pairOf(int low, int high) {
    return _mm_set1_epi32(static_cast<int>(static_cast<unsigned>(low) & 0xFFFFU) |
                          static_cast<int>(static_cast<unsigned>(high) << 16));
}

/// Eight sums (a low + b high + more) >> shift, saturated, of 16-bit elements and a pair of factors.
struct Weighted {
    __m128i low, high;

    NOX_INLINE Weighted(__m128i a, __m128i b, __m128i factors)
        : low(_mm_madd_epi16(_mm_unpacklo_epi16(a, b), factors)),
          high(_mm_madd_epi16(_mm_unpackhi_epi16(a, b), factors)) {}
    NOX_INLINE Weighted(__m128i l, __m128i h) : low(l), high(h) {}
    NOX_INLINE friend Weighted operator+(const Weighted &p, const Weighted &q) {
        return {_mm_add_epi32(p.low, q.low), _mm_add_epi32(p.high, q.high)};
    }
    NOX_INLINE friend Weighted operator-(const Weighted &p, const Weighted &q) {
        return {_mm_sub_epi32(p.low, q.low), _mm_sub_epi32(p.high, q.high)};
    }
    template <int Shift>
    NOX_INLINE __m128i rounded() const {
        const __m128i half = _mm_set1_epi32(1 << (Shift - 1));
        return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(low, half), Shift),
                               _mm_srai_epi32(_mm_add_epi32(high, half), Shift));
    }
};

NOX_TIERS void interpolatePlane(Rows<const Nox16s> src, Rows<Nox16s> dst, NoxiSize rect, const Corners<int> &w) {
    const __m128i upper = pairOf(w.w00, w.w10), lower = pairOf(w.w01, w.w11);
    for (int y = 0; y < rect.height; ++y) {
        const Nox16s *p = src[y], *q = src[y + 1];
        Nox16s *d = dst[y];
        if (rect.width < 8) {
            for (int x = 0; x < rect.width; ++x)
                d[x] = saturate<Nox16s>(
                    shiftRightHalfUp(p[x] * w.w00 + p[x + 1] * w.w10 + q[x] * w.w01 + q[x + 1] * w.w11, 15));
            continue;
        }
        for (int next = 0; next < rect.width; next += 8) {
            const int x = std::min(next, rect.width - 8); // the last eight, some of them once more
            store(d + x, (Weighted(load(p + x), load(p + x + 1), upper) + Weighted(load(q + x), load(q + x + 1), lower))
                             .rounded<15>());
        }
    }
}

NOX_TIERS void interpolatePlane(Rows<const Nox32f> src, Rows<Nox32f> dst, NoxiSize rect, const Corners<Nox32f> &w) {
    for (int y = 0; y < rect.height; ++y) {
        const Nox32f *p = src[y], *q = src[y + 1];
        Nox32f *__restrict d = dst[y];
        for (int x = 0; x < rect.width; ++x)
            d[x] = p[x] * w.w00 + p[x + 1] * w.w10 + q[x] * w.w01 + q[x + 1] * w.w11;
    }
}

// ---- derivatives of a patch ----

/// d and m of eight columns of a row.
struct RowTerms {
    __m128i d;
    Weighted m;

    NOX_INLINE explicit RowTerms(const Nox16s *s)
        : d(_mm_sub_epi16(load(s + 2), load(s))),
          m(Weighted(load(s), load(s + 1), pairOf(3, 10)) + Weighted(load(s + 2), _mm_setzero_si128(), pairOf(3, 0))) {}
};

/// Elements before `count`, from 0 to 8, all ones.
NOX_INLINE __m128i firstElements(int count) {
    return _mm_cmplt_epi16(_mm_set_epi16(7, 6, 5, 4, 3, 2, 1, 0), _mm_set1_epi16(static_cast<short>(count)));
}

NOX_TIERS void patchDerivatives(Rows<const Nox16s> src, Rows<Nox16s> ix, Rows<Nox16s> iy, int size) {
    for (int x = 0; x < size; x += 8) {
        const __m128i inside = firstElements(std::min(size - x, 8));
        RowTerms above(src[0] + x), here(src[1] + x);
        for (int y = 0; y < size; ++y) {
            const RowTerms below(src[y + 2] + x);
            const __m128i dx =
                (Weighted(above.d, here.d, pairOf(3, 10)) + Weighted(below.d, _mm_setzero_si128(), pairOf(3, 0)))
                    .rounded<5>();
            store(ix[y] + x, _mm_and_si128(dx, inside));
            store(iy[y] + x, _mm_and_si128((below.m - above.m).rounded<5>(), inside));
            above = here;
            here = below;
        }
    }
}

NOX_TIERS void patchDerivatives(Rows<const Nox32f> src, Rows<Nox32f> ix, Rows<Nox32f> iy, int size) {
    constexpr Nox32f side = 0.09375F, middle = 0.3125F;
    for (int y = 0; y < size; ++y) {
        const Nox32f *a = src[y], *b = src[y + 1], *c = src[y + 2];
        Nox32f *__restrict dx = ix[y], *__restrict dy = iy[y];
        for (int x = 0; x < size; ++x) {
            dx[x] = side * (a[x + 2] - a[x]) + middle * (b[x + 2] - b[x]) + side * (c[x + 2] - c[x]);
            dy[x] = (side * c[x] + middle * c[x + 1] + side * c[x + 2]) -
                    (side * a[x] + middle * a[x + 1] + side * a[x + 2]);
        }
    }
}

// ---- sums ----

/// The rows that a sum runs over: the derivatives, and r = a, or a - b.
template <class Cell>
struct Terms {
    Rows<const Cell> ix, iy, a, b;
    int columns, rows;
};

template <class Cell>
NOX_INLINE Terms<Cell> termsOf(const Patches<Cell> &patches, const Window &window, Factor factor, int columns) {
    const Rows<const Cell> none = {nullptr, 0};
    const auto from = [&](Rows<const Cell> rows) NOX_INLINE_LAMBDA {
        return Rows<const Cell>{rows[window.min.y] + window.min.x, rows.step};
    };
    const Rows<const Cell> ix = from(patches.ixRows()), iy = from(patches.iyRows());
    const bool residual = factor == Factor::residual;
    return {ix,
            iy,
            residual               ? from(patches.firstRows())
            : factor == Factor::ix ? ix
                                   : iy,
            residual ? from(patches.secondRows()) : none,
            columns,
            window.size().height};
}

/// Adds the 32-bit sums of four lanes of x and of y to two 64-bit totals. The lanes wrap as one sum would.
NOX_INLINE __m128i addRow(__m128i totals, __m128i x, __m128i y, unsigned tailX, unsigned tailY) {
    const __m128i halves = _mm_add_epi32(_mm_unpacklo_epi32(x, y), _mm_unpackhi_epi32(x, y));
    const __m128i tails = _mm_set_epi32(0, 0, static_cast<int>(tailY), static_cast<int>(tailX));
    const __m128i row = _mm_add_epi32(_mm_add_epi32(halves, _mm_srli_si128(halves, 8)), tails);
    return _mm_add_epi64(totals, _mm_unpacklo_epi32(row, _mm_srai_epi32(row, 31)));
}

template <bool Residual>
NOX_TIERS __m128i integerSums(const Terms<Nox16s> &terms) {
    __m128i totals = _mm_setzero_si128();
    for (int row = 0; row < terms.rows; ++row) {
        const Nox16s *ix = terms.ix[row], *iy = terms.iy[row], *a = terms.a[row], *b = terms.b[row];
        __m128i x = _mm_setzero_si128(), y = x;
        int column = 0;
        for (; column <= terms.columns - 8; column += 8) {
            const __m128i r = Residual ? _mm_sub_epi16(load(a + column), load(b + column)) : load(a + column);
            x = _mm_add_epi32(x, _mm_madd_epi16(load(ix + column), r));
            y = _mm_add_epi32(y, _mm_madd_epi16(load(iy + column), r));
        }
        unsigned tailX = 0, tailY = 0;
        for (; column < terms.columns; ++column) {
            const int r = Residual ? a[column] - b[column] : a[column];
            tailX += static_cast<unsigned>(ix[column] * r);
            tailY += static_cast<unsigned>(iy[column] * r);
        }
        totals = addRow(totals, x, y, tailX, tailY);
    }
    return totals;
}

template <bool Residual>
NOX_TIERS Projection floatSums(const Terms<Nox32f> &terms) {
    Projection totals = {0, 0};
    for (int row = 0; row < terms.rows; ++row) {
        const Nox32f *ix = terms.ix[row], *iy = terms.iy[row], *a = terms.a[row], *b = terms.b[row];
        double x[4] = {}, y[4] = {};
        const auto add = [&](int column, int lane) NOX_INLINE_LAMBDA {
            const Nox32f r = Residual ? a[column] - b[column] : a[column];
            x[lane] += static_cast<double>(ix[column]) * static_cast<double>(r);
            y[lane] += static_cast<double>(iy[column]) * static_cast<double>(r);
        };
        int column = 0;
        for (; column <= terms.columns - 4; column += 4)
            for (int lane = 0; lane < 4; ++lane)
                add(column + lane, lane);
        for (int lane = 0; column < terms.columns; ++lane, ++column)
            add(column, lane);
        totals.x += (x[0] + x[2]) + (x[1] + x[3]);
        totals.y += (y[0] + y[2]) + (y[1] + y[3]);
    }
    return totals;
}

/// Exact sums of squares of the rows, without their last column.
NOX_TIERS std::uint64_t integerSquares(const Terms<Nox16s> &terms) {
    std::uint64_t total = 0;
    for (int row = 0; row < terms.rows - 1; ++row) {
        const Nox16s *a = terms.a[row], *b = terms.b[row];
        for (int column = 0; column < terms.columns - 1; ++column) {
            const int r = a[column] - b[column];
            total += static_cast<std::uint32_t>(r * r);
        }
    }
    return total;
}

template <class Cell>
Nox32f squaresInOrder(const Terms<Cell> &terms) {
    Nox32f total = 0;
    for (int row = 0; row < terms.rows - 1; ++row) {
        const Cell *a = terms.a[row], *b = terms.b[row];
        for (int column = 0; column < terms.columns - 1; ++column) {
            const auto r = static_cast<Nox32f>(a[column] - b[column]);
            total += r * r;
        }
    }
    return total;
}

} // namespace

extern "C" {

void ownModifiedConvolution_16s_C1R(const Nox16s *src, int srcStep, Nox16s *dst, int dstStep, NoxiSize /*plane*/,
                                    NoxiSize patch, NoxiSize rect, Nox32f x, Nox32f y, int /*scale*/) {
    if (rect.width < 1 || rect.height < 1)
        return;
    const Corners<int> corners = integerCorners(placeFraction(x, patch.width), placeFraction(y, patch.height));
    const Rows<const Nox16s> rows = {src, srcStep};
    // A weight of a whole 1 is no signed 16-bit factor: the derivatives are copied.
    for (const auto &[weight, right, down] :
         {std::tuple(corners.w00, 0, 0), {corners.w10, 1, 0}, {corners.w01, 0, 1}, {corners.w11, 1, 1}})
        if (weight == 32768) {
            for (int row = 0; row < rect.height; ++row)
                std::copy_n(rows[row + down] + right, rect.width, Rows<Nox16s>{dst, dstStep}[row]);
            return;
        }
    interpolatePlane(rows, {dst, dstStep}, rect, corners);
}

void ownModifiedConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize /*plane*/,
                                    NoxiSize patch, NoxiSize rect, Nox32f x, Nox32f y, int /*scale*/) {
    if (rect.width < 1 || rect.height < 1)
        return;
    const auto fx = static_cast<Nox32f>(placeFraction(x, patch.width)),
               fy = static_cast<Nox32f>(placeFraction(y, patch.height));
    interpolatePlane({src, srcStep}, {dst, dstStep}, rect, floatCorners(fx, fy));
}

void ownOptConvolution_16s_C1R(const Nox16s *src, int srcStep, Nox16s *ix, Nox16s *iy, int dstStep, int size) {
    patchDerivatives({src, srcStep}, {ix, dstStep}, {iy, dstStep}, size);
}

void ownOptConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *ix, Nox32f *iy, int dstStep, int size) {
    patchDerivatives({src, srcStep}, {ix, dstStep}, {iy, dstStep}, size);
}
}

namespace nox {

Projection project(const Patches<Nox16s> &patches, const Window &window, Factor factor) {
    // Where the window reaches from side to side the zeros behind it join in.
    const int width = window.size().width;
    const int columns = width == patches.size ? roundUp(width, 8) : width;
    const Terms<Nox16s> terms = termsOf(patches, window, factor, columns);
    const __m128i sums = factor == Factor::residual ? integerSums<true>(terms) : integerSums<false>(terms);
    std::int64_t totals[2];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(totals), sums);
    return {static_cast<long double>(totals[0]), static_cast<long double>(totals[1])};
}

Projection project(const Patches<Nox32f> &patches, const Window &window, Factor factor) {
    const Terms<Nox32f> terms = termsOf(patches, window, factor, window.size().width);
    return factor == Factor::residual ? floatSums<true>(terms) : floatSums<false>(terms);
}

Nox32f squaredResidual(const Patches<Nox16s> &patches, const Window &window) {
    const Terms<Nox16s> terms = termsOf(patches, window, Factor::residual, window.size().width);
    // Below 2^24 each partial sum is an integer that single precision holds, so any order gives the same bits.
    const std::uint64_t exact = integerSquares(terms);
    return exact < (1U << 24) ? static_cast<Nox32f>(exact) : squaresInOrder(terms);
}

Nox32f squaredResidual(const Patches<Nox32f> &patches, const Window &window) {
    return squaresInOrder(termsOf(patches, window, Factor::residual, window.size().width));
}

} // namespace nox
