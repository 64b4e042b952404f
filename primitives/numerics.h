// Each rounding of the library under one name. Families call these and never round on their own.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// Clamps to the range of T.
template <class T, class Int>
NOX_INLINE T saturate(Int value) {
    constexpr Int low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
    // Two steps, which become one instruction each; in one expression with the cast they do not.
    const Int raised = value < low ? low : value;
    const Int clamped = raised > high ? high : raised;
    return static_cast<T>(clamped);
}

/// Clamps to the range of T, then truncates toward zero. Real is float, double or long double.
template <class T, class Real>
NOX_INLINE T truncateSaturated(Real value) {
    constexpr Real low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
    return static_cast<T>(static_cast<int>(value < low ? low : value > high ? high : value));
}

/// value / 2^shift rounded to nearest, ties to even; shift from 1 to 30.
NOX_INLINE int shiftRightNearestEven(int value, int shift) {
    const unsigned wrapped =
        static_cast<unsigned>(value) + ((1U << (shift - 1)) - 1U) + ((static_cast<unsigned>(value) >> shift) & 1U);
    return static_cast<int>(wrapped) >> shift;
}

/// value / 2^shift rounded to nearest, ties up; shift from 1 to 30.
NOX_INLINE int shiftRightHalfUp(int value, int shift) { return (value + (1 << (shift - 1))) >> shift; }

/// Truncation toward zero as the processor's conversion does it: a value outside the range gives the lowest integer.
NOX_INLINE int truncateToInt(float value) {
    return value >= -2147483648.0F && value < 2147483648.0F ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

/// The low bits of a sum that is stored without a clamp.
template <class T>
NOX_INLINE T wrap(int value) {
    return static_cast<T>(static_cast<std::make_unsigned_t<T>>(static_cast<unsigned>(value)));
}

/// |a - b| of unsigned integers. The larger less the smaller is what compilers turn into three vector operations.
template <class T>
NOX_INLINE T absoluteDifference(T a, T b) {
    static_assert(std::is_unsigned_v<T>);
    const T larger = a > b ? a : b, smaller = a > b ? b : a;
    return static_cast<T>(larger - smaller);
}

/// The value with its sign bit cleared, not-a-numbers included.
NOX_INLINE float clearSign(float value) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) & 0x7fffffffU);
}

/// |value| in a type that holds it.
template <class To, class T>
NOX_INLINE To absolute(T value) {
    if constexpr (std::is_floating_point_v<T>)
        return clearSign(value);
    else
        return static_cast<To>(value < 0 ? -static_cast<int>(value) : static_cast<int>(value));
}

/// |a - b| of floats: one subtraction, sign bit cleared.
NOX_INLINE float absoluteDifference(float a, float b) { return clearSign(a - b); }

} // namespace nox
