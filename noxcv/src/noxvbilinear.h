// Bilinear interpolation between the four pixels around a position: p00 p10 in one row, p01 p11 in the row below.
//
// Integer results come from fixed-point weights, Q14 for 8-bit sources and Q15 for 16-bit ones; float results from
// float weights, in single precision and in the order p00, p10, p01, p11.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include <emmintrin.h>

#include "noxtypes.h"
#include "numerics.h"
#include "tiers.h"

namespace nox {

/// Fractional bits of the weights of integer results.
template <class S>
inline constexpr int weightBits = sizeof(S) == 1 ? 14 : 15;

/// value - floor(value) in 0 to 1, 1 included when the difference rounds up to it; 0 when value is not finite.
inline float fractionOf(float value) {
    const float fraction = value - std::trunc(value); // exact; not a number for infinities
    return fraction < 0 ? fraction + 1.0F : fraction >= 0 ? fraction : 0.0F;
}

/// The weights of the nearer and the farther of two samples along one axis.
template <class W>
struct AxisWeights {
    W near, far;
};

template <class S>
NOX_INLINE AxisWeights<int> fixedAxis(float fraction) {
    constexpr int one = 1 << weightBits<S>;
    const int far = static_cast<int>(fraction * static_cast<float>(one) + 0.5F);
    return {one - far, far};
}

NOX_INLINE AxisWeights<float> floatAxis(float fraction) { return {1.0F - fraction, fraction}; }

// ---- integer results ----

/// How a sum of weighted pixels becomes a result: (sum + rounding) >> shift, saturated.
struct FixedScale {
    unsigned rounding;
    int shift;
};

template <class S>
inline constexpr FixedScale plainScale = {1U << (weightBits<S> - 1), weightBits<S>};

/// The scale of a Q14 sum times 2^-scaleFactor. Shift counts are taken modulo 32, so a shift of 0 comes with a rounding
/// term of 2^31, which makes every sum negative and every result 0; shifting the bare sum by 31 says the same.
NOX_INLINE FixedScale scaleOf(int scaleFactor) {
    const auto factor = static_cast<unsigned>(scaleFactor);
    const auto shift = static_cast<int>((14 + factor) & 31);
    return shift == 0 ? FixedScale{0, 31} : FixedScale{1U << (shift - 1), shift};
}

/// Weights of four pixels with the scale of their sum.
template <class S, class D>
struct FixedBilinear {
    unsigned w00, w10, w01, w11;
    FixedScale scale;

    /// Each weight is a product in Q14 or Q15 that is rounded with 16384, which is a whole unit in Q14: there, the
    /// weights of fraction 0 are 16385, 1, 1 and 1.
    NOX_INLINE FixedBilinear(AxisWeights<int> x, AxisWeights<int> y, FixedScale sumScale)
        : w00(product(x.near, y.near)), w10(product(x.far, y.near)), w01(product(x.near, y.far)),
          w11(product(x.far, y.far)), scale(sumScale) {}
    /// Two pixels of one row.
    NOX_INLINE FixedBilinear(AxisWeights<int> x, FixedScale sumScale)
        : w00(static_cast<unsigned>(x.near)), w10(static_cast<unsigned>(x.far)), w01(0), w11(0), scale(sumScale) {}

    /// Unsigned, because a sum of 16-bit pixels can pass 2^31.
    NOX_INLINE D round(unsigned sum) const { return saturate<D>((sum + scale.rounding) >> scale.shift); }
    NOX_INLINE D operator()(S p00, S p10, S p01, S p11) const {
        return round(p00 * w00 + p10 * w10 + p01 * w01 + p11 * w11);
    }
    /// p stands for both pixels of its row.
    NOX_INLINE D repeated(S p0, S p1) const { return round(p0 * (w00 + w10) + p1 * (w01 + w11)); }
    NOX_INLINE D repeated(S p) const { return round(p * (w00 + w10)); }
    /// The pixels that results copy where one weight of 16-bit pixels is a whole 1 (the others are 0 then), or null.
    NOX_INLINE const S *copied(const S *p, const S *q) const {
        constexpr unsigned one = 1U << 15;
        return w00 == one ? p : w10 == one ? p + 1 : w01 == one ? q : w11 == one ? q + 1 : nullptr;
    }

private:
    NOX_INLINE static unsigned product(int a, int b) {
        return (static_cast<unsigned>(a) * static_cast<unsigned>(b) + 16384U) >> weightBits<S>;
    }
};

/// What sums by products of signed 16-bit pairs need; no weight may be a whole 1 of Q15. 16-bit pixels are moved by
/// -32768 to be signed, and so are results that may need 16 bits; the constant that rounds makes up for both.
struct FixedConstants {
    int upper, lower, rounding, shift;
    short flip; ///< moves results back

    template <class S, class D>
    NOX_INLINE explicit FixedConstants(const FixedBilinear<S, D> &b)
        : upper(static_cast<int>(b.w00 | b.w10 << 16)), lower(static_cast<int>(b.w01 | b.w11 << 16)),
          shift(b.scale.shift) {
        const bool wide = sizeof(D) == 2 && shift <= 15;
        const unsigned source = sizeof(S) == 2 ? (b.w00 + b.w10 + b.w01 + b.w11) << 15 : 0U,
                       result = wide ? 32768U << shift : 0U;
        rounding = static_cast<int>(b.scale.rounding + source - result);
        flip = static_cast<short>(wide ? -32768 : 0);
    }
};

/// Eight pixels at a time.
template <class S, class D>
class FixedBlock {
public:
    NOX_INLINE explicit FixedBlock(const FixedConstants &c)
        : upper_(_mm_set1_epi32(c.upper)), lower_(_mm_set1_epi32(c.lower)), rounding_(_mm_set1_epi32(c.rounding)),
          flip_(_mm_set1_epi16(c.flip)), shift_(_mm_cvtsi32_si128(c.shift)) {}

    /// The results at d of the pixels from p in the upper row and q in the lower one; reads nine pixels of each.
    NOX_INLINE void operator()(const S *p, const S *q, D *d) const {
        const __m128i even = sum(p, q), odd = sum(p + 1, q + 1);
        if constexpr (sizeof(D) == 1) {
            const __m128i words = _mm_or_si128(even, _mm_slli_epi32(odd, 16));
            _mm_storel_epi64(reinterpret_cast<__m128i *>(d), _mm_packus_epi16(words, words));
        } else {
            const __m128i parted = _mm_packs_epi32(even, odd);
            const __m128i words = _mm_unpacklo_epi16(parted, _mm_srli_si128(parted, 8));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(d), _mm_xor_si128(words, flip_));
        }
    }

private:
    NOX_INLINE static __m128i load(const S *p) {
        const auto *group = reinterpret_cast<const __m128i *>(p);
        if constexpr (sizeof(S) == 1)
            return _mm_unpacklo_epi8(_mm_loadl_epi64(group), _mm_setzero_si128());
        else
            return _mm_xor_si128(_mm_loadu_si128(group), _mm_set1_epi16(-32768));
    }
    /// Four results, of every second pixel.
    NOX_INLINE __m128i sum(const S *p, const S *q) const {
        const __m128i rows = _mm_add_epi32(_mm_madd_epi16(load(p), upper_), _mm_madd_epi16(load(q), lower_));
        const __m128i rounded = _mm_add_epi32(rows, rounding_);
        if constexpr (std::is_same_v<S, D>)
            return _mm_srai_epi32(rounded, weightBits<S>);
        else
            return _mm_sra_epi32(rounded, shift_);
    }

    __m128i upper_, lower_, rounding_, flip_, shift_;
};

/// n results at d from the rows p and q, of which n + 1 pixels are read.
template <class S, class D>
NOX_INLINE void interpolateRow(const S *p, const S *q, D *d, int n, const FixedBilinear<S, D> &bilinear,
                               const FixedBlock<S, D> &block) {
    if constexpr (sizeof(S) == 2)
        if (const S *copied = bilinear.copied(p, q)) {
            std::copy_n(copied, n, d);
            return;
        }
    if (n < 8) {
        for (int x = 0; x < n; ++x)
            d[x] = bilinear(p[x], p[x + 1], q[x], q[x + 1]);
        return;
    }
    for (int x = 0; x <= n - 8; x += 8)
        block(p + x, q + x, d + x);
    if (n % 8 != 0) // the last eight, some of them once more
        block(p + n - 8, q + n - 8, d + n - 8);
}

// ---- float results ----

} // namespace nox

/// The numbers 0 to 255: entry i holds i.
extern "C" const std::array<Nox32f, 256> own8u32fTab;

namespace nox {

/// A single pixel as a float; a byte by lookup, which is shorter than a conversion. Vectors convert.
NOX_INLINE float asFloat(Nox8u pixel) { return own8u32fTab[pixel]; }
NOX_INLINE float asFloat(Nox16u pixel) { return static_cast<float>(pixel); }
NOX_INLINE float asFloat(Nox32f pixel) { return pixel; }

/// Weights of four float pixels.
struct FloatBilinear {
    float w00, w10, w01, w11;

    NOX_INLINE FloatBilinear(AxisWeights<float> x, AxisWeights<float> y)
        : w00(x.near * y.near), w10(x.far * y.near), w01(x.near * y.far), w11(x.far * y.far) {}

    NOX_INLINE float operator()(float p00, float p10, float p01, float p11) const {
        return p00 * w00 + p10 * w10 + p01 * w01 + p11 * w11;
    }
    /// p0 and p1 stand for both pixels of their rows.
    NOX_INLINE float repeated(float p0, float p1) const { return p0 * (w00 + w10) + p1 * (w01 + w11); }
};

// Four pixels as floats.
NOX_INLINE __m128 loadFour(const Nox8u *p) {
    int bytes;
    std::memcpy(&bytes, p, sizeof(bytes));
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), _mm_setzero_si128());
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, _mm_setzero_si128()));
}
NOX_INLINE __m128 loadFour(const Nox16u *p) {
    const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, _mm_setzero_si128()));
}
NOX_INLINE __m128 loadFour(const Nox32f *p) { return _mm_loadu_ps(p); }

/// Four pixels at a time.
class FloatBlock {
public:
    NOX_INLINE explicit FloatBlock(const FloatBilinear &b)
        : w00_(_mm_set1_ps(b.w00)), w10_(_mm_set1_ps(b.w10)), w01_(_mm_set1_ps(b.w01)), w11_(_mm_set1_ps(b.w11)) {}

    NOX_INLINE __m128 operator()(__m128 p00, __m128 p10, __m128 p01, __m128 p11) const {
        const __m128 upper = _mm_add_ps(_mm_mul_ps(p00, w00_), _mm_mul_ps(p10, w10_));
        return _mm_add_ps(_mm_add_ps(upper, _mm_mul_ps(p01, w01_)), _mm_mul_ps(p11, w11_));
    }

private:
    __m128 w00_, w10_, w01_, w11_;
};

} // namespace nox
