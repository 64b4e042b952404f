// The one-dimensional operators of the fixed border filters, on integers and on floats of any precision.
#pragma once

#include <type_traits>

#include "numerics.h"
#include "rows.h"
#include "tiers.h"

namespace nox {

// Each operator has its number of taps; the weight, which its taps' magnitudes add up to; and the formula, in the order
// in which it is evaluated. R is int, float, double, long double, or a vector of 16-bit or of float lanes.

struct DxOperator3 {
    static constexpr int taps = 3, weight = 2;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R, R c) {
        return c - a;
    }
};
struct DxNegOperator3 {
    static constexpr int taps = 3, weight = 2;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R, R c) {
        return a - c;
    }
};
struct Dx2Operator3 {
    static constexpr int taps = 3, weight = 4;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c) {
        return a - 2 * b + c;
    }
};
struct SobelOperator3 {
    static constexpr int taps = 3, weight = 4;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c) {
        return a + 2 * b + c;
    }
};
struct ScharrOperator {
    static constexpr int taps = 3, weight = 16;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c) {
        return 3 * (a + c) + 10 * b;
    }
};
struct MeanOperator3 {
    static constexpr int taps = 3, weight = 3;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c) {
        return a + b + c;
    }
};
/// The outer and the middle share of the 3x3 Laplacian's rows, and its columns: b of the middle, a and c of the outer.
struct LaplacianOuterOperator {
    static constexpr int taps = 3, weight = 2;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R, R c) {
        return a + c;
    }
};
struct LaplacianMiddleOperator {
    static constexpr int taps = 3, weight = 8;
    template <class R>
    NOX_INLINE static constexpr R of(R, R b, R) {
        return 8 * b;
    }
};
struct LaplacianColumnOperator {
    static constexpr int taps = 3, weight = 5;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c) {
        return 2 * (a + c) - b;
    }
};

struct DxOperator5 {
    static constexpr int taps = 5, weight = 6;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R, R d, R e) {
        return e - a + 2 * (d - b);
    }
};
struct DxNegOperator5 {
    static constexpr int taps = 5, weight = 6;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R, R d, R e) {
        return a + 2 * b - 2 * d - e;
    }
};
struct Dx2Operator5 {
    static constexpr int taps = 5, weight = 4;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R, R c, R, R e) {
        return a - 2 * c + e;
    }
};
struct SobelOperator5 {
    static constexpr int taps = 5, weight = 16;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c, R d, R e) {
        return a + 4 * b + 6 * c + 4 * d + e;
    }
};
struct MeanOperator5 {
    static constexpr int taps = 5, weight = 5;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c, R d, R e) {
        return a + b + c + d + e;
    }
};
/// The Sobel smoothing of the second half of the 5x5 Laplacian, added to the first half, which is the last line.
struct LaplacianAddOperator {
    static constexpr int taps = 6, weight = 17;
    template <class R>
    NOX_INLINE static constexpr R of(R a, R b, R c, R d, R e, R first) {
        return SobelOperator5::of(a, b, c, d, e) + first;
    }
};

/// The negative of an operator. Integers, which end up in 16 bits, wrap before they are negated: otherwise the compiler
/// takes lanes of 32 bits.
template <class Operator>
struct Negative {
    using Positive = Operator;
    static constexpr int taps = Operator::taps, weight = Operator::weight;
    template <class R, class... Rest>
    NOX_INLINE static constexpr R of(R a, R b, R c, Rest... rest) {
        const R value = Operator::of(a, b, c, rest...);
        if constexpr (std::is_same_v<R, int>)
            return -wrap<Nox16s>(value);
        else
            return -value;
    }
};

/// An operator on what load(j) gives for line j.
template <class Operator, class Load>
NOX_INLINE constexpr auto operateOn(const Load &load) {
    if constexpr (Operator::taps == 3)
        return Operator::of(load(0), load(1), load(2));
    else if constexpr (Operator::taps == 5)
        return Operator::of(load(0), load(1), load(2), load(3), load(4));
    else
        return Operator::of(load(0), load(1), load(2), load(3), load(4), load(5));
}

/// The taps of an operator that are not zero.
struct TapList {
    int count = 0;
    int place[6] = {}, weight[6] = {};
};
template <class Operator>
constexpr TapList tapsOf = [] {
    TapList taps;
    for (int j = 0; j < Operator::taps; ++j) {
        const int weight = operateOn<Operator>([&](int i) { return i == j ? 1 : 0; });
        if (weight != 0) {
            taps.place[taps.count] = j;
            taps.weight[taps.count++] = weight;
        }
    }
    return taps;
}();

/// Output x of an operator over lines, in the arithmetic R.
template <class Operator, class R, class Lines>
NOX_INLINE R operate(const Lines &lines, int x) {
    return operateOn<Operator>([&](int j) __attribute__((always_inline)) { return static_cast<R>(lines[j][x]); });
}

/// Taps pointers to lines of a column operator, in a form that the compiler keeps in registers.
template <class T, int Taps>
struct Lines {
    const T *line[Taps];

    NOX_INLINE const Element<T> *operator[](int j) const { return line[j]; }
    NOX_INLINE Lines from(int x) const {
        Lines result;
        for (int j = 0; j < Taps; ++j)
            result.line[j] = line[j] + x;
        return result;
    }
};

template <int Taps, class T>
NOX_INLINE Lines<T, Taps> linesOf(const T *const *rows) {
    Lines<T, Taps> result;
    for (int j = 0; j < Taps; ++j)
        result.line[j] = rows[j];
    return result;
}

} // namespace nox
