// Plain formulas of the element-wise primitives.
#pragma once

#include <algorithm>
#include <cmath>

#include "noxtypes.h"

namespace reference::elementwise {

template <class T>
T lesser(T src, T srcDst) {
    return src < srcDst ? src : srcDst;
}

template <class T>
T greater(T src, T srcDst) {
    return src > srcDst ? src : srcDst;
}

/// value * 2^-scale, ties to even, in extended precision.
inline long double scaled(long double value, int scale) { return std::nearbyint(std::ldexp(value, -scale)); }

inline Nox16s mulC(Nox16s value, Nox16s element, int scaleFactor) {
    const auto clamp = [](long double v) { return std::clamp(v, -32768.0L, 32767.0L); };
    const long double product = static_cast<long double>(value) * element;
    if (scaleFactor > 30)
        return 0;
    if (scaleFactor >= 0)
        return static_cast<Nox16s>(clamp(scaled(product, scaleFactor)));
    if (scaleFactor < -15)
        return static_cast<Nox16s>(product > 0 ? 32767 : product < 0 ? -32768 : 0);
    return static_cast<Nox16s>(clamp(scaled(clamp(product), scaleFactor)));
}

inline Nox8u subtract(Nox8u src1, Nox8u src2, int scaleFactor) {
    const int difference = std::max(int(src2) - int(src1), 0);
    if (scaleFactor > 8)
        return 0;
    if (scaleFactor < -7)
        return difference > 0 ? 255 : 0;
    return static_cast<Nox8u>(std::min(scaled(difference, scaleFactor), 255.0L));
}

inline Nox8u thresholdValue(Nox8u pixel, Nox8u threshold, Nox8u value, int compare) {
    return (compare == noxCmpGreater ? pixel > threshold : pixel < threshold) ? value : pixel;
}

inline Nox32f threshold(Nox32f pixel, Nox32f limit, int compare) {
    return (compare == noxCmpGreater ? pixel < limit : pixel > limit) ? pixel : limit;
}

/// The nearest integer to sqrt(x) * 2^-scaleFactor, ties to even, at most 32767; 0 for a negative x. The extended
/// root is exact in a tie, and nowhere else so close to one that it could become one.
inline Nox16s root(Nox32s x, int scaleFactor) {
    if (x < 0)
        return 0;
    return static_cast<Nox16s>(std::min(scaled(std::sqrt(static_cast<long double>(x)), scaleFactor), 32767.0L));
}

} // namespace reference::elementwise
