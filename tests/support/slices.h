// Images whose sums show how they were divided into slices and joined.
#pragma once

#include <cmath>
#include <type_traits>

#include "support/image.h"

namespace test {

/// Multiplies the rows of floats by powers of two from 2^0 to 2^28 each: a sum of such rows rounds, again and again,
/// and shows where the slices begin and in which order they were joined.
template <class T>
void scaleRows(Image<T> &image, unsigned seed) {
    if constexpr (std::is_floating_point_v<T>) {
        Random random(seed);
        for (int y = 0; y < image.height(); ++y) {
            const T scale = static_cast<T>(std::ldexp(1.0, static_cast<int>(random() % 29)));
            for (int x = 0; x < image.width() * image.channels(); ++x)
                image.row(y)[x] = image.row(y)[x] * scale;
        }
    }
}

} // namespace test
