// Shift of an image by a fraction of a pixel.
#include <immintrin.h>

#include "checks.h"
#include "noxcv/sampling.h"
#include "noxvbilinear.h"
#include "rows.h"

using namespace nox;

namespace {

// ---- integer results ----

template <class S, class D>
void shiftFixed(Rows<const S> src, Rows<D> dst, NoxiSize roi, const FixedBilinear<S, D> &bilinear) {
    const FixedBlock<S, D> block{FixedConstants(bilinear)};
    for (int y = 0; y < roi.height; ++y)
        interpolateRow(src[y], src[y + 1], dst[y], roi.width, bilinear, block);
}

#ifdef NOX_WIDE_TIER
#define NOX_INLINE_WIDE NOX_INLINE NOX_WIDE_TIER

/// FixedBlock for sixteen pixels: the same steps, in each half of a wide vector.
template <class S, class D>
class WideFixedBlock {
public:
    NOX_INLINE_WIDE explicit WideFixedBlock(const FixedConstants &c)
        : upper_(_mm256_set1_epi32(c.upper)), lower_(_mm256_set1_epi32(c.lower)),
          rounding_(_mm256_set1_epi32(c.rounding)), flip_(_mm256_set1_epi16(c.flip)),
          shift_(_mm_cvtsi32_si128(c.shift)) {}

    NOX_INLINE_WIDE void operator()(const S *p, const S *q, D *d) const {
        const __m256i even = sum(p, q), odd = sum(p + 1, q + 1);
        if constexpr (sizeof(D) == 1) {
            const __m256i words = _mm256_or_si256(even, _mm256_slli_epi32(odd, 16));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(d),
                             _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1)));
        } else {
            const __m256i parted = _mm256_packs_epi32(even, odd);
            const __m256i words = _mm256_unpacklo_epi16(parted, _mm256_srli_si256(parted, 8));
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(d), _mm256_xor_si256(words, flip_));
        }
    }

private:
    NOX_INLINE_WIDE static __m256i load(const S *p) {
        if constexpr (sizeof(S) == 1)
            return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
        else
            return _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)),
                                    _mm256_set1_epi16(-32768));
    }
    NOX_INLINE_WIDE __m256i sum(const S *p, const S *q) const {
        const __m256i rows = _mm256_add_epi32(_mm256_madd_epi16(load(p), upper_), _mm256_madd_epi16(load(q), lower_));
        const __m256i rounded = _mm256_add_epi32(rows, rounding_);
        if constexpr (std::is_same_v<S, D>)
            return _mm256_srai_epi32(rounded, weightBits<S>);
        else
            return _mm256_sra_epi32(rounded, shift_);
    }

    __m256i upper_, lower_, rounding_, flip_;
    __m128i shift_;
};

/// For rows of sixteen pixels and more, and weights below a whole 1.
template <class S, class D>
NOX_WIDE_TIER void shiftFixedWide(Rows<const S> src, Rows<D> dst, NoxiSize roi, const FixedBilinear<S, D> &bilinear) {
    const WideFixedBlock<S, D> block{FixedConstants(bilinear)};
    const int last = roi.width - 16;
    for (int y = 0; y < roi.height; ++y) {
        const S *p = src[y], *q = src[y + 1];
        D *d = dst[y];
        for (int x = 0; x < last; x += 16)
            block(p + x, q + x, d + x);
        block(p + last, q + last, d + last); // some of them once more
    }
}
#endif

template <class S, class D>
void shiftImage(Rows<const S> src, Rows<D> dst, NoxiSize roi, float fx, float fy, FixedScale scale) {
    const FixedBilinear<S, D> bilinear(fixedAxis<S>(fx), fixedAxis<S>(fy), scale);
#ifdef NOX_WIDE_TIER
    if (wideTier() && roi.width >= 16 && (sizeof(S) == 1 || bilinear.copied(src.base, src.base) == nullptr))
        return shiftFixedWide(src, dst, roi, bilinear);
#endif
    shiftFixed(src, dst, roi, bilinear);
}

// ---- float results ----

/// The float form hands the share of a column on to the next pixel: what the column gives the pixel before, times
/// (1 - ax) / ax, is what it gives its own pixel. So ax may not be 0.
struct FloatShift {
    float w00, w01, upper, lower, ratio;

    explicit FloatShift(AxisWeights<float> x, AxisWeights<float> y)
        : w00(x.near * y.near), w01(x.near * y.far), upper(x.far * y.near), lower(x.far * y.far),
          ratio(x.near / x.far) {}

    NOX_INLINE float share(float p, float q) const { return p * upper + q * lower; }
};

/// The first pixel of a row has no column before it.
template <class S>
NOX_INLINE float firstOfRow(const S *p, const S *q, const FloatShift &shift) {
    return asFloat(p[0]) * shift.w00 + asFloat(q[0]) * shift.w01 + shift.share(asFloat(p[1]), asFloat(q[1]));
}

template <class S>
void shiftFloat(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, const FloatShift &shift) {
    for (int y = 0; y < roi.height; ++y) {
        const S *p = src[y], *q = src[y + 1];
        float *__restrict d = dst[y];
        const auto share = [&](int column) NOX_INLINE_LAMBDA {
            return shift.share(static_cast<float>(p[column]), static_cast<float>(q[column]));
        };
        d[0] = firstOfRow(p, q, shift);
        for (int x = 1; x < roi.width; ++x)
            d[x] = share(x) * shift.ratio + share(x + 1);
    }
}

#ifdef NOX_WIDE_TIER
NOX_INLINE_WIDE __m256 loadFloats(const Nox32f *p) { return _mm256_loadu_ps(p); }
NOX_INLINE_WIDE __m256 loadFloats(const Nox8u *p) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(p))));
}
NOX_INLINE_WIDE __m256 loadFloats(const Nox16u *p) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p))));
}

/// For rows of nine pixels and more.
template <class S>
NOX_WIDE_TIER void shiftFloatWide(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, const FloatShift &shift) {
    const __m256 upper = _mm256_set1_ps(shift.upper), lower = _mm256_set1_ps(shift.lower),
                 ratio = _mm256_set1_ps(shift.ratio);
    const auto shares = [=](const S *p, const S *q) NOX_INLINE_LAMBDA NOX_WIDE_TIER {
        return _mm256_add_ps(_mm256_mul_ps(loadFloats(p), upper), _mm256_mul_ps(loadFloats(q), lower));
    };
    for (int y = 0; y < roi.height; ++y) {
        const S *p = src[y], *q = src[y + 1];
        float *d = dst[y];
        __m256i before = _mm256_setzero_si256();
        for (int x = 0; x <= roi.width - 8; x += 8) {
            const __m256 next = shares(p + x + 1, q + x + 1);
            const __m256i bits = _mm256_castps_si256(next);
            const __m256i middle = _mm256_permute2x128_si256(before, bits, 0x21);
            const __m256 own = _mm256_castsi256_ps(_mm256_alignr_epi8(bits, middle, 12)); // next, one pixel later
            _mm256_storeu_ps(d + x, _mm256_add_ps(_mm256_mul_ps(own, ratio), next));
            before = bits;
        }
        const int x = roi.width - 8; // the last eight, some of them once more
        _mm256_storeu_ps(d + x,
                         _mm256_add_ps(_mm256_mul_ps(shares(p + x, q + x), ratio), shares(p + x + 1, q + x + 1)));
        d[0] = firstOfRow(p, q, shift);
    }
}
#endif

template <class S>
void shiftImage(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, float fx, float fy, FixedScale) {
    const FloatShift shift(floatAxis(std::max(fx, 1e-06F)), floatAxis(fy));
#ifdef NOX_WIDE_TIER
    if (wideTier() && roi.width >= 9)
        return shiftFloatWide(src, dst, roi, shift);
#endif
    shiftFloat(src, dst, roi, shift);
}

template <class S, class D>
NoxStatus shift(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float dx, float dy,
                FixedScale scale = plainScale<S>) {
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<S>(srcStep, roi.width),
                     checkStep<D>(dstStep, roi.width), checkEvenSteps<S>(srcStep), checkEvenSteps<D>(dstStep));
    if (status == noxStsNoError)
        shiftImage(Rows<const S>{src, srcStep}, Rows<D>{dst, dstStep}, roi, fractionOf(dx), fractionOf(dy), scale);
    return status;
}

} // namespace

#define NOX_SHIFT(SOURCE, DESTINATION, TAG)                                                                            \
    NoxStatus noxiCopySubpix_##TAG##_C1R(const SOURCE *src, int srcStep, DESTINATION *dst, int dstStep, NoxiSize roi,  \
                                         Nox32f dx, Nox32f dy) {                                                       \
        return shift(src, srcStep, dst, dstStep, roi, dx, dy);                                                         \
    }

NOX_SHIFT(Nox8u, Nox8u, 8u)
NOX_SHIFT(Nox16u, Nox16u, 16u)
NOX_SHIFT(Nox8u, Nox32f, 8u32f)
NOX_SHIFT(Nox16u, Nox32f, 16u32f)
NOX_SHIFT(Nox32f, Nox32f, 32f)

NoxStatus noxiCopySubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi, Nox32f dx,
                                       Nox32f dy, int scaleFactor) {
    return shift(src, srcStep, dst, dstStep, roi, dx, dy, scaleOf(scaleFactor));
}
