// Sums of single-precision products in extended precision (64 bits), rounded once to single, without extended
// precision.
//
// A product of two floats is exact in double. If all products are multiples of one power of two, and no sum of their
// magnitudes exceeds 2^53 times that, every sum is exact in double and in extended precision, in any order: both round
// to the same float. Likewise with 2^24 in single precision. What is known of the elements, their Spread, tells which
// holds; most pictures come from integers and pass one of the two.
//
// Otherwise the sum is formed in double, and lies within a known bound of the extended one. Both round to the same
// float unless a midpoint between two floats lies within that bound; the few sums for which that may be so are formed
// again in long double.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// What is known of some floats: no magnitude is above `largest`, and all are multiples of the power of two `quantum`.
/// Zeros alone have an infinite quantum. An infinite `largest` tells that not all are finite.
struct Spread {
    double largest = 0, quantum = std::numeric_limits<double>::infinity();
};

/// A spread of count floats: the coarsest quantum where that may matter, and else one that is fine enough.
Spread spreadOf(const Nox32f *elements, int count);

/// The spread of floats of full 24-bit mantissas, by the bits of the largest magnitude and of the smallest one above
/// zero, less one.
Spread spreadOfMagnitudes(Nox32u largest, Nox32u smallestLess);

inline Spread join(const Spread &a, const Spread &b) {
    return {std::max(a.largest, b.largest), std::min(a.quantum, b.quantum)};
}

/// The spread of sums of elements, weighted by taps that are multiples of 1, whose magnitudes add up to `weight`: the
/// rounding of a multiple of a power of two is a multiple of it.
inline Spread spreadOfSums(const Spread &elements, double weight) {
    const double largest = elements.largest * weight * (1 + 0x1p-20);
    if (largest <= std::numeric_limits<float>::max())
        return {largest, elements.quantum};
    return {std::numeric_limits<double>::infinity(), 0};
}

/// Whether sums of taps times elements, formed in any order, are exact in a format of `bits` bits; the magnitudes of
/// the taps add up to `weight`, and all are multiples of `tapQuantum`. One bit is kept in reserve for this test's
/// rounding.
inline bool sumsFit(int bits, const Spread &elements, double weight, double tapQuantum = 1) {
    return elements.largest * weight <= elements.quantum * tapQuantum * static_cast<double>(1LL << (bits - 1));
}

/// Exact in double.
inline bool exactInDouble(const Spread &elements, double weight, double tapQuantum = 1) {
    return sumsFit(53, elements, weight, tapQuantum);
}

/// Exact in single precision, products and range included.
inline bool exactInFloat(const Spread &elements, double weight, double tapQuantum = 1) {
    return sumsFit(24, elements, weight, tapQuantum) &&
           elements.largest * weight <= std::numeric_limits<float>::max() &&
           elements.quantum * tapQuantum >= std::numeric_limits<float>::denorm_min();
}

/// Half the width of the zone around a midpoint, in units in the last place of the double sum.
constexpr Nox32u midpointZone = 1U << 14;

/// The magnitude from which the error of a double sum stays within the zone: `terms` roundings of sums whose magnitude
/// is at most `bound`, 2^-53 of it each. (The extended sum's own error, 2^11 times smaller, is within the term more.)
/// Nearer to zero, and where single precision has denormals, a double sum tells nothing. Infinite where the bound is.
inline Nox32f certainFrom(double terms, double bound) {
    const double certain = (terms + 1) * bound / midpointZone * (1 + 0x1p-22);
    if (certain <= 0x1p-125)
        return 0x1p-125F;
    return certain <= 0x1p127 ? static_cast<Nox32f>(certain) : std::numeric_limits<Nox32f>::infinity();
}

/// What is added to the low word of a double sum, and which of its bits are then zero, where the sum is that near to a
/// midpoint: the 29 bits that rounding discards are, at a midpoint, 1 and 28 zeros.
constexpr Nox32u midpointBias = (1U << 28) + midpointZone, midpointMask = ((1U << 29) - 1) & ~(2 * midpointZone - 1);

/// Whether a double sum, rounded to single, may differ from the extended sum rounded to single.
NOX_INLINE bool roundsDoubtfully(double sum, Nox32f rounded, Nox32f certain) {
    const Nox32u low = static_cast<Nox32u>(__builtin_bit_cast(std::uint64_t, sum));
    const bool atMidpoint = ((low + midpointBias) & midpointMask) == 0;
    return atMidpoint | ((__builtin_bit_cast(Nox32s, rounded) & 0x7fffffff) < __builtin_bit_cast(Nox32s, certain));
}

} // namespace nox
