// What a row of floats is found to be while it is loaded for its sums, so that it need not be looked at before.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "noxtypes.h"
#include "noxvextendedsum.h"

namespace nox {

/// 2^exponent, and the exponent of the power of two at or below a number, of normal doubles.
constexpr double powerOfTwo(int exponent) {
    return __builtin_bit_cast(double, static_cast<std::uint64_t>(exponent + 1023) << 52);
}
constexpr int exponentOf(double positive) {
    return static_cast<int>(__builtin_bit_cast(std::uint64_t, positive) >> 52) - 1023;
}

/// Multiples of a power of two q, less than 2^bits q in magnitude: sums of such numbers are exact in single precision
/// while the taps' weight leaves room. A float is one of them exactly when q (2^23 + 2^22 + 2^bits) can be added and
/// taken away again without a change, and the sum in between differs from q (2^23 + 2^22) in the last bits + 1 bits
/// alone: in the sum's binade the format's steps are q.
struct Grid {
    Nox32f shift = 0;             ///< q (2^23 + 2^22 + 2^bits); 0 where there is no grid
    Nox32u base = 0, outside = 0; ///< q (2^23 + 2^22), and the bits in which no sum may differ from it
    Spread spread;

    Grid() = default;

    /// That of a quantum 2^exponent, for bits up to 21; none where sums might leave the format's range.
    Grid(int exponent, int bits) {
        if (exponent < -100 || exponent > 100)
            return;
        const auto unit = static_cast<Nox32f>(powerOfTwo(exponent));
        const Nox32f middle = unit * 0x1.8p23F;
        shift = middle + unit * static_cast<Nox32f>(1 << bits);
        base = __builtin_bit_cast(Nox32u, middle);
        outside = ~((2U << bits) - 1U);
        spread = {powerOfTwo(exponent + bits), unit};
    }

    /// A grid that holds these elements with room on both sides, of which sums with this weight are exact; none where
    /// there is none.
    static Grid around(const Spread &elements, double weight) {
        const int bits = std::min(21, 22 - exponentOf(weight * (1 + 0x1p-18))); // as sumsFit() asks, with its reserve
        constexpr int ordinary = 10;                                            // of zeros
        if (elements.largest > std::numeric_limits<Nox32f>::max())
            return {};
        if (elements.largest == 0)
            return {ordinary - bits, bits};
        const int low = exponentOf(elements.largest) + 1 - bits, high = exponentOf(elements.quantum);
        return low > high ? Grid() : Grid((low + high) >> 1, bits);
    }

    explicit operator bool() const { return shift != 0; }
};

/// What the rows so far let the next one be taken for.
struct RowGuess {
    /// On a grid; none is known, but sums are exact in double; not even that.
    enum class Kind { unknown, grid, wide, tested };

    Spread border;    ///< of the border value, where it counts: it is always part of the row
    int columnWeight; ///< of the column kernel that follows
    Kind kind = Kind::unknown;
    Grid grid;
    int rowsLeft = 0; ///< wide and tested: after so many rows nothing is known again

    RowGuess(const Spread &border, int columnWeight) : border(border), columnWeight(columnWeight) {}

    /// By some of a row's elements.
    void sample(const Nox32f *row, int width, double weight) {
        constexpr int enough = 16, later = 16;
        grid = Grid::around(join(spreadOf(row, std::min(width, enough)), border), weight * columnWeight);
        kind = grid ? Kind::grid : Kind::wide;
        rowsLeft = later;
    }
    /// By all elements of a row for which the guess was wrong.
    void correct(const Spread &elements, double weight) {
        grid = Grid::around(elements, weight * columnWeight);
        kind = grid ? Kind::grid : exactInDouble(elements, weight) ? Kind::wide : Kind::tested;
    }
    /// Before each row.
    void next(const Nox32f *row, int width, double weight) {
        if (kind == Kind::unknown || (kind != Kind::grid && --rowsLeft == 0))
            sample(row, width, weight);
    }
};

} // namespace nox
