// Kernels of the point tracker. Patches of 8-bit images are 16-bit integers with 7 fractional bits, all others floats.
#include "noxvopticalflowpatch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
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
        const Element<Nox16s> *p = src[y], *q = src[y + 1];
        Element<Nox16s> *d = dst[y];
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

// ---- derivatives of a level under a patch ----

/// d and m of eight pixels of a row, from the pixel before the first one on; m is 3, 10, 3 of them.
struct PixelTerms {
    __m128i d, m;

    NOX_INLINE explicit PixelTerms(const Nox8u *p) {
        const auto words = [](const Nox8u *from) NOX_INLINE_LAMBDA {
            return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from)), _mm_setzero_si128());
        };
        const __m128i left = words(p), right = words(p + 2);
        d = _mm_sub_epi16(right, left);
        m = weighted(_mm_add_epi16(left, right), words(p + 1));
    }
    /// 3 sides + 10 middle.
    NOX_INLINE static __m128i weighted(__m128i sides, __m128i middle) {
        return _mm_add_epi16(_mm_mullo_epi16(sides, _mm_set1_epi16(3)), _mm_mullo_epi16(middle, _mm_set1_epi16(10)));
    }
};

/// From pixels that all lie in the image: src begins one row and one column before the first cell. Eight cells at
/// least; all numbers fit 16 bits.
NOX_TIERS void pixelDerivatives(Rows<const Nox8u> src, Rows<Nox16s> dx, Rows<Nox16s> dy, NoxiSize size) {
    for (int next = 0; next < size.width; next += 8) {
        const int x = std::min(next, size.width - 8); // the last eight, some of them once more
        PixelTerms above(src[0] + x), here(src[1] + x);
        for (int y = 0; y < size.height; ++y) {
            const PixelTerms below(src[y + 2] + x);
            const __m128i across = PixelTerms::weighted(_mm_add_epi16(above.d, below.d), here.d);
            store(dx[y] + x, _mm_slli_epi16(across, 2));
            store(dy[y] + x, _mm_slli_epi16(_mm_sub_epi16(below.m, above.m), 2));
            above = here;
            here = below;
        }
    }
}

/// Copies pixels from (x, y) on, some of them outside the image; outside, its edge is repeated.
void copyWithEdges(Rows<const Nox8u> level, NoxiSize levelSize, NoxiPoint at, Rows<Nox8u> dst, NoxiSize size) {
    const int before = std::clamp(-at.x, 0, size.width), end = std::clamp(levelSize.width - at.x, before, size.width);
    for (int y = 0; y < size.height; ++y) {
        const Nox8u *from = level[std::clamp(at.y + y, 0, levelSize.height - 1)];
        Nox8u *to = dst[y];
        std::fill(to, to + before, from[0]);
        std::copy(from + at.x + before, from + at.x + end, to + before);
        std::fill(to + end, to + size.width, from[levelSize.width - 1]);
    }
}

} // namespace

void nox::levelDerivatives(Rows<const Nox8u> level, NoxiSize levelSize, NoxiPoint at, NoxiSize size, Rows<Nox16s> dx,
                           Rows<Nox16s> dy, Nox8u *scratch) {
    const bool inside = at.x > 0 && at.y > 0 && at.x + size.width < levelSize.width &&
                        at.y + size.height < levelSize.height && size.width >= 8;
    if (inside)
        return pixelDerivatives({level[at.y - 1] + at.x - 1, level.step}, dx, dy, size);
    const Rows<Nox8u> copy = {scratch, size.width + 2};
    copyWithEdges(level, levelSize, {at.x - 1, at.y - 1}, copy, {size.width + 2, size.height + 2});
    pixelDerivatives({copy.base, copy.step}, dx, dy, {std::max(size.width, 8), size.height});
}

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
                std::memmove(Rows<Nox16s>{dst, dstStep}[row], rows[row + down] + right,
                             sizeof(Nox16s) * static_cast<std::size_t>(rect.width));
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
