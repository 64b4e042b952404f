// Subtraction of vectors: the second source is the minuend.
#include <emmintrin.h>

#include "elementwise.h"
#include "numerics.h"
#include "ownprimitives.h"

using namespace nox;

namespace {

/// a - b with a floor at 0.
NOX_INLINE Nox8u floored(Nox8u a, Nox8u b) { return static_cast<Nox8u>((a > b ? a : b) - b); }

/// Sixteen bytes times 2^-shift, ties to even: the quotient goes up when the remainder, plus one for an odd quotient,
/// is above one half. Bytes have no shift of their own, so bits that come over from the next byte are masked away.
class Divide16 {
public:
    NOX_INLINE explicit Divide16(int shift)
        : count_(_mm_cvtsi32_si128(shift)), quotient_(_mm_set1_epi8(static_cast<char>(255 >> shift))),
          remainder_(_mm_set1_epi8(static_cast<char>((1 << shift) - 1))),
          aboveHalf_(_mm_set1_epi8(static_cast<char>((1 << (shift - 1)) + 1))) {}
    NOX_INLINE __m128i operator()(__m128i value) const {
        const __m128i quotient = _mm_and_si128(_mm_srl_epi16(value, count_), quotient_);
        const __m128i odd = _mm_and_si128(quotient, _mm_set1_epi8(1));
        const __m128i remainder = _mm_add_epi8(_mm_and_si128(value, remainder_), odd);
        const __m128i up = _mm_cmpeq_epi8(_mm_max_epu8(remainder, aboveHalf_), remainder);
        return _mm_sub_epi8(quotient, up);
    }

private:
    __m128i count_, quotient_, remainder_, aboveHalf_;
};

/// value * 2^shift for bytes, capped at 255; shift up to 7, so that 16-bit lanes hold the product.
class Multiply {
public:
    NOX_INLINE explicit Multiply(int shift) : factor_(static_cast<Nox16s>(1 << shift)) {}
    NOX_INLINE Nox8u operator()(Nox8u value) const {
        const auto product = static_cast<Nox16s>(value * factor_);
        return static_cast<Nox8u>(product < 255 ? product : 255);
    }

private:
    Nox16s factor_;
};

} // namespace

// One line a kernel: its name, that of its in-place twin, and the element made of subtrahend s and minuend m.
#define NOX_SUB(NAME, TWIN, TYPE, FORMULA)                                                                             \
    NOX_TIERS void NAME(const TYPE *src1, const TYPE *src2, TYPE *dst, int length) {                                   \
        makeElements([](TYPE s, TYPE m) NOX_INLINE_LAMBDA -> TYPE { return FORMULA; }, length, dst, src1, src2);       \
    }                                                                                                                  \
    void TWIN(const TYPE *src, TYPE *srcDst, int length) { NAME(src, srcDst, srcDst, length); }

NOX_SUB(ownsSub_8u, ownsSub_8u_I, Nox8u, floored(m, s))
NOX_SUB(ownsSub_8u_1Sfs, ownsSub_8u_I_1Sfs, Nox8u, shiftRightNearestEven(floored(m, s), 1))
NOX_SUB(ownsSub_8u_Bound, ownsSub_8u_I_Bound, Nox8u, m > s ? 255 : 0)
NOX_SUB(ownsSub_32f, ownsSub_32f_I, Nox32f, m - s)

NOX_TIERS void ownsSub_8u_PosSfs(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length, int shift) {
    const Divide16 divide(shift);
    int i = 0;
    if (inAnyOrder(src1, dst, length) && inAnyOrder(src2, dst, length))
        for (; i + 16 <= length; i += 16) {
            const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src1 + i));
            const __m128i m = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src2 + i));
            _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i), divide(_mm_subs_epu8(m, s)));
        }
    for (; i < length; ++i)
        dst[i] = static_cast<Nox8u>(shiftRightNearestEven(floored(src2[i], src1[i]), shift));
}

NOX_TIERS void ownsSub_8u_NegSfs(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length, int shift) {
    const Multiply multiply(shift);
    makeElements([=](Nox8u s, Nox8u m) NOX_INLINE_LAMBDA { return multiply(floored(m, s)); }, length, dst, src1, src2);
}

void ownsSub_8u_I_PosSfs(const Nox8u *src, Nox8u *srcDst, int length, int shift) {
    ownsSub_8u_PosSfs(src, srcDst, srcDst, length, shift);
}

void ownsSub_8u_I_NegSfs(const Nox8u *src, Nox8u *srcDst, int length, int shift) {
    ownsSub_8u_NegSfs(src, srcDst, srcDst, length, shift);
}
