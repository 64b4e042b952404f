// What a row of floats is found to be while it is loaded for its sums, so that it need not be looked at before.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "noxtypes.h"
#include "noxvextendedsum.h"

namespace nox {

/// Multiples of a power of two q, less than 2^bits q in magnitude: sums of such numbers are exact in single precision
/// while the taps' weight leaves room. A float is one of them exactly when q (2^23 + 2^22 + 2^bits) can be added and
/// taken away again without a change, and the sum in between differs from q (2^23 + 2^22) in the last bits + 1 bits
/// alone: in the sum's binade the format's steps are q.
struct Grid {
    Nox32f shift = 0;             ///< q (2^23 + 2^22 + 2^bits); 0 where there is no grid
    Nox32u base = 0, outside = 0; ///< q (2^23 + 2^22), and the bits in which no sum may differ from it
    Spread spread;

    Grid() = default;
    Grid(int exponent, int bits) {
        const auto unit = static_cast<Nox32f>(std::ldexp(1.0, exponent));
        const Nox32f middle = unit * 0x1.8p23F;
        shift = middle + unit * static_cast<Nox32f>(1 << bits);
        base = __builtin_bit_cast(Nox32u, middle);
        outside = ~((2U << bits) - 1U);
        spread = {std::ldexp(1.0, exponent + bits), unit};
    }

    /// That of a quantum; none where there is no such grid.
    static Grid of(double quantum, int bits) {
        return quantum >= 0x1p-100 && quantum <= 0x1p100 ? Grid(std::ilogb(quantum), bits) : Grid();
    }

    /// A grid that holds these elements with room on both sides, of which sums with this weight are exact; none where
    /// there is none.
    static Grid around(const Spread &elements, double weight) {
        const int bits = std::min(21, 22 - std::ilogb(weight * (1 + 0x1p-18))); // as sumsFit() asks, with its reserve
        constexpr int ordinary = 10;                                            // of rows of zeros
        if (!std::isfinite(elements.largest))
            return {};
        const bool zeros = elements.largest == 0;
        const int low = (zeros ? ordinary : std::ilogb(elements.largest) + 1) - bits;
        const int high = zeros ? low : std::ilogb(elements.quantum);
        return low > high ? Grid() : of(std::ldexp(1.0, low + (high - low) / 2), bits);
    }

    explicit operator bool() const { return shift != 0; }
};

/// What the rows so far let the next one be taken for. The border value, where it counts, is always part of it.
struct RowGuess {
    enum class Kind { unknown, grid, wide }; ///< wide: sums are exact in double, and no grid is known

    Spread border;    ///< of the border value, or of nothing
    int columnWeight; ///< of the column kernel that follows
    Kind kind = Kind::unknown;
    Grid grid;
    int rowsToLook = 0; ///< wide: after so many rows one is looked at for a grid

    RowGuess(const Spread &border, int columnWeight) : border(border), columnWeight(columnWeight) {}
};

} // namespace nox
