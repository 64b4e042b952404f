// Square roots of vectors.
#include <cmath>
#include <cstdint>
#include <limits>

#include <immintrin.h>

#include "checks.h"
#include "noxcv/primitives.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace {

/// The root from the processor's estimate r and one Newton step: 0.5 * x * r * (3 - x * r * r), from left to right.
NOX_INLINE __m128 newtonRoot(__m128 x, __m128 r, __m128 xr) {
    return _mm_mul_ps(_mm_mul_ps(_mm_mul_ps(_mm_set1_ps(0.5F), x), r),
                      _mm_sub_ps(_mm_set1_ps(3.0F), _mm_mul_ps(xr, r)));
}

/// Roots of a group of 8. One element that is negative, zero, denormal, infinite or not a number makes the whole group
/// exact. Returns whether an element was negative.
NOX_INLINE bool rootsOfGroup(Nox32f *group) {
    const __m128 x0 = _mm_loadu_ps(group), x1 = _mm_loadu_ps(group + 4);
    const __m128 r0 = _mm_rsqrt_ps(x0), r1 = _mm_rsqrt_ps(x1);
    const __m128 xr0 = _mm_mul_ps(x0, r0), xr1 = _mm_mul_ps(x1, r1);
    const __m128 normal = _mm_set1_ps(std::numeric_limits<Nox32f>::min());
    const __m128 special =
        _mm_or_ps(_mm_or_ps(_mm_cmplt_ps(x0, normal), _mm_cmplt_ps(x1, normal)), _mm_cmpunord_ps(xr0, xr1));
    if (_mm_movemask_ps(special) == 0) {
        _mm_storeu_ps(group, newtonRoot(x0, r0, xr0));
        _mm_storeu_ps(group + 4, newtonRoot(x1, r1, xr1));
        return false;
    }
    _mm_storeu_ps(group, _mm_sqrt_ps(x0));
    _mm_storeu_ps(group + 4, _mm_sqrt_ps(x1));
    const __m128 zero = _mm_setzero_ps();
    return _mm_movemask_ps(_mm_or_ps(_mm_cmplt_ps(x0, zero), _mm_cmplt_ps(x1, zero))) != 0;
}

/// Roots of single elements, exact.
NOX_INLINE bool rootsOfSingles(Element<Nox32f> *srcDst, int count) {
    bool negative = false;
    for (int i = 0; i < count; ++i) {
        negative |= srcDst[i] < 0.0F;
        srcDst[i] = __builtin_sqrtf(srcDst[i]);
    }
    return negative;
}

/// Elements before the first 16-byte boundary; none when the vector never meets one.
int leadIn(const Nox32f *srcDst, int length) {
    const auto address = reinterpret_cast<std::uintptr_t>(srcDst);
    if (address % sizeof(Nox32f) != 0)
        return 0;
    const int count = static_cast<int>((16 - address % 16) % 16 / sizeof(Nox32f));
    return count < length ? count : length;
}

/// Whether an element was negative. Not inlined, so that all arithmetic stays between the two accesses to the control
/// state in the entry.
[[gnu::noinline]] NOX_TIERS bool ownnoxsSqrt_32f_I(Nox32f *srcDst, int lead, int length) {
    bool negative = rootsOfSingles(srcDst, lead);
    int i = lead;
    for (; i + 8 <= length; i += 8)
        negative |= rootsOfGroup(srcDst + i);
    negative |= rootsOfSingles(srcDst + i, length - i);
    return negative;
}

/// The floating-point control state of a call: invalid operations are masked and their flag is clear; at the end the
/// caller's state is back.
class QuietInvalid {
public:
    QuietInvalid() : before_(_mm_getcsr()) { _mm_setcsr((before_ | _MM_MASK_INVALID) & ~_MM_EXCEPT_INVALID); }
    QuietInvalid(const QuietInvalid &) = delete;
    QuietInvalid &operator=(const QuietInvalid &) = delete;
    ~QuietInvalid() { _mm_setcsr(before_); }

private:
    unsigned before_;
};

constexpr int largest = 32767;

/// The root of x in single precision, truncated. It may be one too large just below a square, where the nearest
/// integer is that larger one.
NOX_INLINE int truncatedRoot(Nox32f x) { return static_cast<int>(__builtin_sqrtf(x)); }

/// t or t + 1. A root of an integer is never halfway between integers.
NOX_INLINE int nearestRoot(int x) {
    const int root = truncatedRoot(static_cast<Nox32f>(x)), t = root < largest ? root : largest;
    const int nearest = t + (x > t * t + t ? 1 : 0);
    return nearest < largest ? nearest : largest;
}

/// The nearest integer to sqrt(x) / 2^scale, ties to even, for scale from 1 to 16. It compares x with the square of
/// t + 1/2, times 4^scale; the shifts are split because the last one may be by 32 bits.
NOX_INLINE int nearestScaledRoot(int x, Nox32f factor, int half) {
    const auto t = static_cast<unsigned>(truncatedRoot(static_cast<Nox32f>(x) * factor));
    const auto above = static_cast<int>(static_cast<unsigned>(x) - (t * t << half << 2));
    const auto middle = static_cast<int>((t << half << 2) - (t & 1U) + (1U << half));
    return static_cast<int>(t) + (above > middle ? 1 : 0);
}

/// dst = the root that `root` makes of an element, 0 for a negative one. Returns whether there was one.
template <class Root>
NOX_INLINE bool rootsOfIntegers(const Element<Nox32s> *src, Element<Nox16s> *dst, int length, const Root &root) {
    Nox32s signs = 0;
    for (int i = 0; i < length; ++i) {
        const Nox32s x = src[i];
        signs |= x;
        dst[i] = static_cast<Nox16s>(root(x > 0 ? x : 0));
    }
    return signs < 0;
}

NOX_TIERS bool ownnoxsSqrt_32s16s(const Nox32s *src, Nox16s *dst, int length, int scaleFactor) {
    if (scaleFactor > 0) {
        const auto factor = static_cast<Nox32f>(std::ldexp(1.0, -2 * scaleFactor));
        const int half = 2 * scaleFactor - 2;
        return rootsOfIntegers(src, dst, length,
                               [=](int x) NOX_INLINE_LAMBDA { return nearestScaledRoot(x, factor, half); });
    }
    // Beyond `limit` the root exceeds the largest result; 0x3fff0000 stands for all of these.
    const int shift = -2 * scaleFactor, limit = 0x7fffffff >> shift;
    return rootsOfIntegers(src, dst, length, [=](int x) NOX_INLINE_LAMBDA {
        const auto shifted = static_cast<int>(static_cast<unsigned>(x) << shift);
        return nearestRoot(x > limit ? 0x3fff0000 : shifted);
    });
}

/// Scales so small that any positive element gives the largest result.
NOX_TIERS bool saturatedRoots(const Nox32s *src, Nox16s *dst, int length) {
    return rootsOfIntegers(src, dst, length, [](int x) NOX_INLINE_LAMBDA { return x > 0 ? largest : 0; });
}

/// Scales so large that any element gives 0.
NOX_TIERS bool zeroRoots(const Nox32s *src, Nox16s *dst, int length) {
    return rootsOfIntegers(src, dst, length, [](int) NOX_INLINE_LAMBDA { return 0; });
}

} // namespace

NoxStatus noxsSqrt_32f_I(Nox32f *srcDst, int length) {
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    if (status != noxStsNoError)
        return status;
    const QuietInvalid quiet;
    return ownnoxsSqrt_32f_I(srcDst, leadIn(srcDst, length), length) ? noxStsSqrtOfNegative : noxStsNoError;
}

NoxStatus noxsSqrt_32s16s_Sfs(const Nox32s *src, Nox16s *dst, int length, int scaleFactor) {
    constexpr int smallestScale = -14, largestScale = 16;
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkLength(length));
    if (status != noxStsNoError)
        return status;
    const bool negative = scaleFactor < smallestScale  ? saturatedRoots(src, dst, length)
                          : scaleFactor > largestScale ? zeroRoots(src, dst, length)
                                                       : ownnoxsSqrt_32s16s(src, dst, length, scaleFactor);
    return negative ? noxStsSqrtOfNegative : noxStsNoError;
}
