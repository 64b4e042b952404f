// Vectors times a constant, and conversion of elements.
#include <cmath>
#include <cstring>

#include <emmintrin.h>

#include "checks.h"
#include "noxcv/primitives.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace {

/// The low or high four of eight 16-bit elements, in 32 bits.
NOX_INLINE __m128i widenLow(__m128i v) { return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16); }
NOX_INLINE __m128i widenHigh(__m128i v) { return _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16); }

/// Eight elements times value: the exact products, low four and high four, through scale, clamped to 16 bits.
template <class Scale>
NOX_INLINE __m128i multiplyGroup(__m128i elements, __m128i value, const Scale &scale) {
    const __m128i low = _mm_mullo_epi16(elements, value), high = _mm_mulhi_epi16(elements, value);
    return scale(_mm_unpacklo_epi16(low, high), _mm_unpackhi_epi16(low, high));
}

template <class Scale>
NOX_INLINE void multiply(Nox16s value, Nox16s *srcDst, int length, const Scale &scale) {
    const __m128i values = _mm_set1_epi16(value);
    int i = 0;
    for (; i + 8 <= length; i += 8) {
        auto *group = reinterpret_cast<__m128i *>(srcDst + i);
        _mm_storeu_si128(group, multiplyGroup(_mm_loadu_si128(group), values, scale));
    }
    if (i < length) {
        __m128i rest = _mm_setzero_si128();
        std::memcpy(&rest, srcDst + i, sizeof(Nox16s) * (length - i));
        rest = multiplyGroup(rest, values, scale);
        std::memcpy(srcDst + i, &rest, sizeof(Nox16s) * (length - i));
    }
}

NOX_TIERS void ownsMulC_16s_I(Nox16s value, Nox16s *srcDst, int length) {
    multiply(value, srcDst, length,
             [](__m128i low, __m128i high) NOX_INLINE_LAMBDA { return _mm_packs_epi32(low, high); });
}

/// Products times 2^-shift to nearest, ties to even.
NOX_TIERS void ownsMulC_16s_I_PosSfs(Nox16s value, Nox16s *srcDst, int length, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift), one = _mm_set1_epi32(1);
    const __m128i below = _mm_set1_epi32((1 << (shift - 1)) - 1);
    const auto divide = [=](__m128i product) NOX_INLINE_LAMBDA {
        const __m128i odd = _mm_and_si128(_mm_srl_epi32(product, count), one);
        return _mm_sra_epi32(_mm_add_epi32(_mm_add_epi32(product, below), odd), count);
    };
    multiply(value, srcDst, length,
             [=](__m128i low, __m128i high) NOX_INLINE_LAMBDA { return _mm_packs_epi32(divide(low), divide(high)); });
}

/// Products times 2^shift, clamped before the shift as well as after it: one above 32767 counts as 32767.
NOX_TIERS void ownsMulC_16s_I_NegSfs(Nox16s value, Nox16s *srcDst, int length, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift);
    multiply(value, srcDst, length, [=](__m128i low, __m128i high) NOX_INLINE_LAMBDA {
        const __m128i clamped = _mm_packs_epi32(low, high);
        return _mm_packs_epi32(_mm_sll_epi32(widenLow(clamped), count), _mm_sll_epi32(widenHigh(clamped), count));
    });
}

/// The limit of ever larger factors: the extreme of the product's sign, or 0.
NOX_TIERS void ownsMulC_16s_I_Bound(Nox16s value, Nox16s *srcDst, int length) {
    Element<Nox16s> *element = srcDst;
    for (int i = 0; i < length; ++i) {
        const auto extreme = static_cast<Nox16s>(((element[i] ^ value) >> 15) ^ 32767);
        element[i] = element[i] == 0 ? Nox16s(0) : extreme;
    }
}

NOX_TIERS void ownsMulC_32f_I(Nox32f value, Nox32f *srcDst, int length) {
    Element<Nox32f> *element = srcDst;
    for (int i = 0; i < length; ++i)
        element[i] = element[i] * value;
}

NOX_TIERS void convert(const Nox16u *src, Nox32f *dst, int length) {
    for (int i = 0; i < length; ++i)
        elements(dst)[i] = static_cast<Nox32f>(elements(src)[i]);
}

} // namespace

NoxStatus noxsMulC_16s_ISfs(Nox16s value, Nox16s *srcDst, int length, int scaleFactor) {
    constexpr int largestRightShift = 30, largestLeftShift = 15;
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    if (status != noxStsNoError)
        return status;
    if (value == 0 || scaleFactor > largestRightShift)
        return noxsZero_16s(srcDst, length);
    if (scaleFactor > 0)
        ownsMulC_16s_I_PosSfs(value, srcDst, length, scaleFactor);
    else if (scaleFactor < -largestLeftShift)
        ownsMulC_16s_I_Bound(value, srcDst, length);
    else if (scaleFactor < 0)
        ownsMulC_16s_I_NegSfs(value, srcDst, length, -scaleFactor);
    else if (value != 1)
        ownsMulC_16s_I(value, srcDst, length);
    return noxStsNoError;
}

NoxStatus noxsMulC_32f_I(Nox32f value, Nox32f *srcDst, int length) {
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    // A not-a-number counts as 1 and leaves the vector as it is; 0 makes all of it 0, whatever stood there.
    if (status != noxStsNoError || value == 1.0F || std::isnan(value))
        return status;
    if (value == 0.0F)
        return noxsZero_32f(srcDst, length);
    ownsMulC_32f_I(value, srcDst, length);
    return noxStsNoError;
}

NoxStatus noxsConvert_16u32f(const Nox16u *src, Nox32f *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkLength(length));
    if (status == noxStsNoError)
        convert(src, dst, length);
    return status;
}
