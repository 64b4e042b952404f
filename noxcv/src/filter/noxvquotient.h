// Sums over a divisor: the truncated product of an integer with the divisor's 80-bit reciprocal, without 80-bit
// arithmetic.
//
// Let r be 1/d rounded to 64 bits and p = a * r rounded to 64 bits. Where d does not divide a, a/d lies at least 1/|d|
// from any integer, which is at least 1/|a| of its size; an error far below that cannot carry it across. So p truncates
// as a/d does, and so does the product with any reciprocal whose error is below 1/|a|.
//
// Where a = q d, p is q or lies one step of the 64-bit format below it. The second happens when r = (1 - e)/d lies
// below 1/d by so much that q e exceeds half a step below q. With q = m 2^k, 1 <= m < 2, half a step is 2^(k-64), or
// 2^(k-65) below a power of two: q comes out lower by one when m > 1/(2^64 e), and for m = 1 when 2^64 e > 1/2. As 2^64
// e < 1 and m < 2, a divisor whose own quotient (q = 1) does not fall has none that does; of the others, quotients fall
// by their mantissa m alone: 1, and those above a limit.
//
// So: multiply by a reciprocal just above 1/d (multiples never fall then), truncate, and for the divisors of the second
// kind take back the multiples that must fall.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "noxtypes.h"
#include "numerics.h"
#include "tiers.h"

namespace nox {

/// A divisor prepared for sums held in Real: float for |a| up to 2^21, double for |a| up to 2^47 (larger ones are
/// larger than any result that is not clamped).
template <class Real>
struct Quotient {
    Real reciprocal; ///< above 1/divisor in magnitude by at most 3/2 units in the last place
    Real divisor;    ///< as a float it may be inexact, but then every quotient is 0
    Real limit;      ///< multiples whose quotient has a mantissa of 1, or above this, fall
    bool falls;      ///< whether there are any

    static constexpr long long largestSum = 1LL << (std::is_same_v<Real, float> ? 21 : 47);
    /// Quotients that fall have fewer bits than this: such a divisor is above 32, and where quotients are not clamped
    /// to 16 bits the sums have 32.
    static constexpr int quotientBits = std::is_same_v<Real, float> ? 22 : 26;
};

/// Whether q * divisor comes out below q.
inline bool quotientFalls(long long q, int divisor) {
    const long double reciprocal = 1.0L / static_cast<long double>(divisor);
    return static_cast<long long>(static_cast<long double>(q * divisor) * reciprocal) != q;
}

/// The largest mantissa above 1 that does not fall, of a divisor whose quotient 1 does, among quotients from 2^bits to
/// 2^(bits + 1). The limit serves quotients of fewer bits as well.
inline double fallLimit(int divisor, int bits) {
    const long long base = 1LL << bits;
    long long stays = base, falls = 2 * base;
    while (falls - stays > 1) {
        const long long middle = (stays + falls) / 2;
        (quotientFalls(middle, divisor) ? falls : stays) = middle;
    }
    return static_cast<double>(stays) / static_cast<double>(base);
}

template <class Real>
Quotient<Real> makeQuotient(int divisor) {
    const Real nearest = static_cast<Real>(1.0 / divisor), infinity = std::numeric_limits<Real>::infinity();
    const bool falls = quotientFalls(1, divisor);
    return {std::nextafter(nearest, divisor > 0 ? infinity : -infinity), static_cast<Real>(divisor),
            static_cast<Real>(falls ? fallLimit(divisor, Quotient<Real>::quotientBits) : 2), falls};
}

/// The mantissa of a number that is neither 0 nor denormal.
template <class Real>
NOX_INLINE Real mantissa(Real value) {
    using Bits = std::conditional_t<std::is_same_v<Real, float>, std::uint32_t, std::uint64_t>;
    constexpr Bits fraction = (Bits(1) << (std::numeric_limits<Real>::digits - 1)) - 1;
    return __builtin_bit_cast(Real, (__builtin_bit_cast(Bits, value) & fraction) | __builtin_bit_cast(Bits, Real(1)));
}

/// The quotient of an integer sum, truncated toward zero and clamped to the range of T. It must fit 32 bits. Falls:
/// by.falls.
template <class T, bool Falls, class Real>
NOX_INLINE T truncatedQuotient(Real sum, const Quotient<Real> &by) {
    const int quotient = static_cast<int>(sum * by.reciprocal);
    if constexpr (!Falls)
        return saturate<T>(quotient);
    const Real q = static_cast<Real>(quotient), m = mantissa(q);
    const bool falls = (q * by.divisor == sum) & ((m == Real(1)) | (m > by.limit));
    const int sign = (quotient > 0) - (quotient < 0);
    return saturate<T>(quotient - (falls ? sign : 0));
}

/// The quotient by its definition.
template <class T, class Sum>
T exactQuotient(Sum sum, int divisor) {
    return truncateSaturated<T>(static_cast<long double>(sum) * (1.0L / static_cast<long double>(divisor)));
}

} // namespace nox
