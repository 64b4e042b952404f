// Bilinear interpolation between the four pixels around a position: p00 p10 in one row, p01 p11 in the row below.
//
// Integer results come from fixed-point weights, Q14 for 8-bit sources and Q15 for 16-bit ones; float results from
// float weights, in single precision and in the order p00, p10, p01, p11.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "noxtypes.h"
#include "numerics.h"
#include "rows.h"
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
    bool small; ///< no result needs more than 15 bits

    template <class S, class D>
    NOX_INLINE explicit FixedConstants(const FixedBilinear<S, D> &b)
        : upper(static_cast<int>(b.w00 | b.w10 << 16)), lower(static_cast<int>(b.w01 | b.w11 << 16)),
          shift(b.scale.shift), small(sizeof(D) == 1 || (sizeof(S) == 1 && shift >= 7)) {
        const unsigned source = sizeof(S) == 2 ? (b.w00 + b.w10 + b.w01 + b.w11) << 15 : 0U,
                       result = small ? 0U : 32768U << shift;
        rounding = static_cast<int>(b.scale.rounding + source - result);
        flip = static_cast<short>(small ? 0 : -32768);
    }
};

/// Whole rows of results, `size` of them: reads one column and one row more. In the order of memory, for images.
template <class S, class D>
void interpolateImage(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear);
/// The same for the few rows of a patch.
template <class S, class D>
void interpolatePatch(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear);

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

/// The rows of a patch, as those of integers.
template <class S>
void interpolatePatch(Rows<const S> src, Rows<Nox32f> dst, NoxiSize size, const FloatBilinear &bilinear);

} // namespace nox
