// Square roots of vectors.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

#include "checks.h"
#include "noxcv/primitives.h"
#include "rows.h"

#define NOX_KERNELS "noxssqrt.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// Elements before the first 16-byte boundary; none when the vector never meets one.
int leadIn(const Nox32f *srcDst, int length) {
    const auto address = reinterpret_cast<std::uintptr_t>(srcDst);
    if (address % sizeof(Nox32f) != 0)
        return 0;
    const int count = static_cast<int>((16 - address % 16) % 16 / sizeof(Nox32f));
    return count < length ? count : length;
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
    return NOX_ON_TIER(roots(srcDst, leadIn(srcDst, length), length)) ? noxStsSqrtOfNegative : noxStsNoError;
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
