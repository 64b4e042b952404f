// Fast arctangent: a quadratic in min / max of the two lengths, turned into the right octant.
#include <bit>
#include <cstdint>

#include <emmintrin.h>

#include "checks.h"
#include "noxcv/accumulate.h"
#include "rows.h"
#include "tiers.h"

namespace {

constexpr int group = 4;

NOX_INLINE __m128 constant(std::uint32_t bits) { return _mm_set1_ps(std::bit_cast<float>(bits)); }

/// Lanes of a where the mask is set, of b elsewhere.
NOX_INLINE __m128 select(__m128 mask, __m128 a, __m128 b) {
    return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b));
}

/// Degrees, 0 up to 360, of four vectors (x, y).
NOX_INLINE __m128 degrees(__m128 y, __m128 x) {
    const __m128 sign = _mm_set1_ps(-0.0F), zero = _mm_setzero_ps();
    const __m128 a = _mm_andnot_ps(sign, x), b = _mm_andnot_ps(sign, y);
    const __m128 shorter = _mm_min_ps(a, b), longer = _mm_max_ps(_mm_max_ps(a, b), constant(0x322BCC77)); // 1e-8
    const __m128 estimate = _mm_rcp_ps(longer);
    const __m128 reciprocal =
        _mm_sub_ps(_mm_add_ps(estimate, estimate), _mm_mul_ps(_mm_mul_ps(longer, estimate), estimate));
    const __m128 z = _mm_mul_ps(shorter, reciprocal);
    // -15.813190, 61.094196, -0.14050041
    __m128 angle = _mm_add_ps(_mm_mul_ps(constant(0xC17D02D3), z), constant(0x42746075));
    angle = _mm_add_ps(_mm_mul_ps(angle, z), constant(0xBE0FDF57));
    angle = select(_mm_cmplt_ps(a, b), _mm_sub_ps(_mm_set1_ps(90.0F), angle), angle);
    angle = select(_mm_cmplt_ps(x, zero), _mm_sub_ps(_mm_set1_ps(180.0F), angle), angle);
    return select(_mm_cmplt_ps(y, zero), _mm_sub_ps(_mm_set1_ps(360.0F), angle), angle);
}

NOX_TIERS void arctan(const Nox32f *y, const Nox32f *x, Nox32f *dst, int length) {
    int i = 0;
    for (; i <= length - group; i += group)
        _mm_storeu_ps(dst + i, degrees(_mm_loadu_ps(y + i), _mm_loadu_ps(x + i)));
    if (i == length)
        return;
    alignas(16) Nox32f lastY[group] = {1, 1, 1, 1}, lastX[group] = {1, 1, 1, 1}, last[group];
    for (int j = i; j < length; ++j) {
        lastY[j - i] = nox::elements(y)[j];
        lastX[j - i] = nox::elements(x)[j];
    }
    _mm_store_ps(last, degrees(_mm_load_ps(lastY), _mm_load_ps(lastX)));
    for (int j = i; j < length; ++j)
        nox::elements(dst)[j] = last[j - i];
}

} // namespace

NoxStatus noxibFastArctan_32f(const Nox32f *y, const Nox32f *x, Nox32f *dst, int length) {
    const NoxStatus status = nox::firstFailure(nox::checkPointers(y, x, dst), nox::checkLength(length));
    if (status == noxStsNoError)
        arctan(y, x, dst, length);
    return status;
}
