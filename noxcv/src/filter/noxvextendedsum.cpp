// The spread of a row of floats.
#include "noxvextendedsum.h"

#include <algorithm>
#include <cstdint>

#include "rows.h"

namespace nox {

namespace {

/// The bits of the largest magnitude, and of the smallest last bit less one unit.
struct Extremes {
    Nox32s largest = 0;
    Nox32u smallest = 0xffffffffU;
};

NOX_TIERS void findExtremes(const Element<Nox32f> *elements, int count, Extremes &extremes) {
    Nox32s large = 0;
    Nox32u small = 0xffffffffU;
    for (int x = 0; x < count; ++x) {
        const auto bits = __builtin_bit_cast(Nox32u, elements[x]);
        const auto magnitude = static_cast<Nox32s>(bits & 0x7fffffffU);
        // What goes with the lowest bit that is set: the last significant bit, or, of a power of two, at least half.
        const Nox32f last = elements[x] - __builtin_bit_cast(Nox32f, bits & (bits - 1U));
        // Zeros become the largest of all.
        const Nox32u less = (__builtin_bit_cast(Nox32u, last) & 0x7fffffffU) - 1;
        large = large < magnitude ? magnitude : large;
        small = small > less ? less : small;
    }
    extremes = {large, small};
}

/// The same with the smallest magnitude instead of the smallest last bit, in half the operations.
NOX_TIERS void findMagnitudes(const Element<Nox32f> *elements, int count, Extremes &extremes) {
    Nox32s large = 0;
    Nox32u small = 0xffffffffU;
    for (int x = 0; x < count; ++x) {
        const Nox32u magnitude = __builtin_bit_cast(Nox32u, elements[x]) & 0x7fffffffU;
        const Nox32u less = magnitude - 1;
        large = large < static_cast<Nox32s>(magnitude) ? static_cast<Nox32s>(magnitude) : large;
        small = small > less ? less : small;
    }
    extremes = {large, small};
}

/// `unit`: the quantum of a float whose last bit, or whose magnitude, is 1.
Spread spreadOf(const Extremes &extremes, double unit) {
    constexpr Nox32s infinity = 0x7f800000;
    if (extremes.largest >= infinity)
        return {std::numeric_limits<double>::infinity(), 0};
    if (extremes.largest == 0)
        return {};
    const double smallest = __builtin_bit_cast(Nox32f, extremes.smallest + 1);
    constexpr std::uint64_t exponent = 0x7ff0000000000000U;
    const double power = __builtin_bit_cast(double, __builtin_bit_cast(std::uint64_t, smallest) & exponent);
    constexpr double finest = std::numeric_limits<Nox32f>::denorm_min();
    return {__builtin_bit_cast(Nox32f, extremes.largest), std::max(power * unit, finest)};
}

Spread fineSpread(const Nox32f *elements, int count) {
    Extremes extremes;
    findExtremes(elements, count, extremes);
    return spreadOf(extremes, 1);
}

/// Its quantum is that of full 24-bit mantissas.
Spread roughSpread(const Nox32f *elements, int count) {
    Extremes extremes;
    findMagnitudes(elements, count, extremes);
    return spreadOf(extremes, 0x1p-23);
}

} // namespace

Spread spreadOfMagnitudes(Nox32u largest, Nox32u smallestLess) {
    return spreadOf({static_cast<Nox32s>(largest), smallestLess}, 0x1p-23);
}

Spread spreadOf(const Nox32f *elements, int count) {
    // Where the first few elements are too fine for single precision already, it is enough to know that all are
    // multiples of something that suits double precision, with room for the taps.
    constexpr int sample = 16, bitsForTaps = 12;
    if (count >= 4 * sample && !sumsFit(24, fineSpread(elements, sample), 1)) {
        const Spread rough = roughSpread(elements, count);
        if (sumsFit(53 - bitsForTaps, rough, 1))
            return rough;
    }
    return fineSpread(elements, count);
}

} // namespace nox
