// The spread of a row of floats.
#include "noxvextendedsum.h"

namespace nox {

namespace {

/// The bits of the largest magnitude, and of the smallest last bit less one unit.
NOX_TIERS void spreadBits(const Nox32f *elements, int count, Nox32s &largest, Nox32u &smallest) {
    Nox32s large = 0;
    Nox32u small = 0xffffffffU;
    for (int x = 0; x < count; ++x) {
        const auto bits = std::bit_cast<Nox32s>(elements[x]);
        const Nox32s magnitude = bits & 0x7fffffff;
        large = large < magnitude ? magnitude : large;
        // What goes with the lowest bit that is set: the last significant bit, or, of a power of two, at least half.
        const Nox32f last = elements[x] - std::bit_cast<Nox32f>(bits & (bits - 1));
        // Zeros become the largest of all.
        const Nox32u less = (std::bit_cast<Nox32u>(last) & 0x7fffffffU) - 1;
        small = small > less ? less : small;
    }
    largest = large;
    smallest = small;
}

} // namespace

Spread spreadOf(const Nox32f *elements, int count) {
    constexpr Nox32s infinity = 0x7f800000;
    Nox32s largest = 0;
    Nox32u smallest = 0;
    spreadBits(elements, count, largest, smallest);
    if (largest >= infinity)
        return {std::numeric_limits<double>::infinity(), 0};
    if (largest == 0)
        return {};
    const auto last = std::bit_cast<std::uint64_t>(static_cast<double>(std::bit_cast<Nox32f>(smallest + 1)));
    return {std::bit_cast<Nox32f>(largest), std::bit_cast<double>(last & 0x7ff0000000000000U)};
}

} // namespace nox
