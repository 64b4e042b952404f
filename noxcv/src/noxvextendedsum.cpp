// The spread of a row of floats.
#include "noxvextendedsum.h"

namespace nox {

namespace {

/// The bits of the largest magnitude, and of the smallest last bit less one unit.
struct Extremes {
    Nox32s largest = 0;
    Nox32u smallest = 0xffffffffU;
};

NOX_INLINE Extremes include(Extremes extremes, const Nox32f *elements, int count) {
    Nox32s large = extremes.largest;
    Nox32u small = extremes.smallest;
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
    return {large, small};
}

NOX_TIERS void findExtremes(const Nox32f *elements, int count, Extremes &extremes) {
    extremes = include(extremes, elements, count);
}

/// Run by run, so that each is read from memory once.
NOX_TIERS void widenWithExtremes(const Nox32f *elements, int count, Nox64f *__restrict wide, Extremes &extremes) {
    constexpr int runLength = 128;
    for (int first = 0; first < count; first += runLength) {
        const int length = count - first < runLength ? count - first : runLength;
        extremes = include(extremes, elements + first, length);
        for (int x = first; x < first + length; ++x)
            wide[x] = elements[x];
    }
}

Spread spreadOf(const Extremes &extremes) {
    constexpr Nox32s infinity = 0x7f800000;
    if (extremes.largest >= infinity)
        return {std::numeric_limits<double>::infinity(), 0};
    if (extremes.largest == 0)
        return {};
    const double last = __builtin_bit_cast(Nox32f, extremes.smallest + 1);
    constexpr std::uint64_t exponent = 0x7ff0000000000000U;
    return {__builtin_bit_cast(Nox32f, extremes.largest),
            __builtin_bit_cast(double, __builtin_bit_cast(std::uint64_t, last) & exponent)};
}

} // namespace

Spread spreadOf(const Nox32f *elements, int count) {
    Extremes extremes;
    findExtremes(elements, count, extremes);
    return spreadOf(extremes);
}

Spread widen(const Nox32f *elements, int count, Nox64f *wide) {
    Extremes extremes;
    widenWithExtremes(elements, count, wide, extremes);
    return spreadOf(extremes);
}

} // namespace nox
