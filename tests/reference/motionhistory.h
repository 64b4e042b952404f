// Motion history, pixel by pixel.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "noxtypes.h"

namespace reference::motionhistory {

/// Below, in the order of floats that puts minus zero before zero and not-a-numbers outside the infinities.
inline bool below(float a, float b) {
    const bool negativeA = std::signbit(a), negativeB = std::signbit(b);
    if (negativeA != negativeB)
        return negativeA;
    const float sizeA = std::fabs(a), sizeB = std::fabs(b);
    unsigned bitsA = 0, bitsB = 0;
    std::memcpy(&bitsA, &sizeA, sizeof(bitsA));
    std::memcpy(&bitsB, &sizeB, sizeof(bitsB));
    return negativeA ? bitsA > bitsB : bitsA < bitsB;
}

template <class T>
void update(const T *silhouette, int silhouetteStep, Nox32f *mhi, int mhiStep, NoxiSize roi, float timestamp,
            float duration) {
    const float limit = timestamp - duration;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            T s;
            float m = 0;
            unsigned char *entry = reinterpret_cast<unsigned char *>(mhi) + std::ptrdiff_t(y) * mhiStep + 4 * x;
            std::memcpy(&s,
                        reinterpret_cast<const unsigned char *>(silhouette) + std::ptrdiff_t(y) * silhouetteStep +
                            std::ptrdiff_t(x) * sizeof(T),
                        sizeof(T));
            std::memcpy(&m, entry, sizeof(m));
            bool moved = s != 0, keeps = !below(m, limit);
            if constexpr (std::is_floating_point_v<T>) {
                moved = s < 0 || s > 0;
                keeps = m >= limit;
            }
            const float zero = 0;
            if (moved)
                std::memcpy(entry, &timestamp, sizeof(timestamp));
            else if (!keeps)
                std::memcpy(entry, &zero, sizeof(zero));
        }
}

} // namespace reference::motionhistory
