// Corner measures from averaged products, and peaks, straight from their definitions.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <type_traits>
#include <vector>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::corners {

inline Nox32f scaleOf(int kernelType, int apertureSize) {
    const Nox32f s = 1.0F / (255.0F * Nox32f(1 << (2 * apertureSize - 2)));
    return kernelType == 1 ? s * 0.6125F : s;
}

inline Nox32f smallerValue(Nox32f a, Nox32f b, Nox32f c, Nox32f scale) {
    return (a + c - std::sqrt(4.0F * (b * b) + (a - c) * (a - c))) * (0.5F * scale);
}

/// The six numbers of a pixel.
inline void valuesAndVectors(Nox32f a, Nox32f b, Nox32f c, Nox32f scale, Nox32f sign, Nox32f out[6]) {
    a *= scale, b *= scale, c *= scale;
    const Nox32f r = std::sqrt(4.0F * (b * b) + (a - c) * (a - c));
    const Nox32f l2 = (a + c - r) * 0.5F, l1 = (a + c + r) * 0.5F, t = std::max(a, c) * 0.01F;
    std::fill_n(out, 6, 0.0F);
    if (!(std::min(a, c) >= t) || !(a * c - b * b >= t))
        return;
    out[0] = l1, out[1] = l2;
    if (t > std::fabs(b)) {
        out[2] = out[5] = 1;
        return;
    }
    const Nox32f s = b * sign, e1 = 0 - (a - l1), e2 = 0 - (a - l2), q = s * s;
    const Nox32f n1 = 1 / std::max(std::sqrt(e1 * e1 + q), 1.1920929e-7F);
    const Nox32f n2 = 1 / std::max(std::sqrt(q + e2 * e2), 1.1920929e-7F);
    out[2] = s * n1, out[3] = e1 * n1, out[4] = s * n2, out[5] = e2 * n2;
}

/// Peaks one by one.
template <class T>
std::vector<NoxiPoint> peaks(const T *src, int step, NoxiSize roi, T threshold, int most, int norm, int border) {
    std::vector<NoxiPoint> found;
    for (int y = border; y <= roi.height - border - 1; ++y)
        for (int x = border; x <= roi.width - border - 1; ++x) {
            const T v = test::rowAt(src, step, y)[x];
            T largest = v, smallest = v;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    if (norm == 0 || dx == 0 || dy == 0) {
                        const T other = test::rowAt(src, step, y + dy)[x + dx];
                        largest = std::max(largest, other);
                        smallest = std::min(smallest, other);
                    }
            bool isPeak;
            if constexpr (std::is_same_v<T, Nox32f>)
                isPeak = std::fabs(v) > threshold && !(std::fabs(v - (v > 0 ? largest : smallest)) > 1.1754944e-38F);
            else
                isPeak = std::llabs(v) > threshold && v == (v >= 1 ? largest : smallest);
            if (!isPeak)
                continue;
            found.push_back({x, y});
            if (int(found.size()) == most)
                return found;
        }
    return found;
}

} // namespace reference::corners
