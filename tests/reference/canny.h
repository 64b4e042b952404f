// Canny's edge detector and the colour gradient, straight from their definitions.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::canny {

/// Whole-image magnitudes with a border of zeros, then thinning pixel by pixel, then growth from strong pixels.
template <class T>
void canny(const T *srcDx, int srcDxStep, const T *srcDy, int srcDyStep, Nox8u *dst, int dstStep, NoxiSize roi,
           Nox32f low, Nox32f high) {
    using M = std::conditional_t<std::is_same_v<T, Nox16s>, int, float>;
    const int w = roi.width, h = roi.height, pitch = w + 2;
    const auto dx = [&](int x, int y) { return T(test::rowAt(srcDx, srcDxStep, y)[x]); };
    const auto dy = [&](int x, int y) { return T(test::rowAt(srcDy, srcDyStep, y)[x]); };
    const auto lowest = static_cast<M>(std::min(double(low), 2e9));
    std::vector<M> magnitudes(std::size_t(pitch) * (h + 2), M(0));
    const auto magnitude = [&](int x, int y) -> M & { return magnitudes[std::size_t(y + 1) * pitch + x + 1]; };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const M sum = static_cast<M>(std::abs(M(dx(x, y))) + std::abs(M(dy(x, y))));
            magnitude(x, y) = sum > lowest ? sum : M(0);
        }
    std::vector<unsigned char> survivor(std::size_t(w) * h, 0);
    std::vector<std::pair<int, int>> pending;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            dst[std::ptrdiff_t(y) * dstStep + x] = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const M m = magnitude(x, y);
            if (m == M(0))
                continue;
            const float ax = std::fabs(float(dx(x, y))), ay = std::fabs(float(dy(x, y)));
            const bool differ = std::signbit(double(dx(x, y))) != std::signbit(double(dy(x, y)));
            int bx = 0, by = 0;
            bool axial = true;
            if (ay > static_cast<float>(static_cast<long double>(ax) * 2.414213562373095)) {
                by = -1;
            } else if (ay >= static_cast<float>(static_cast<long double>(ax) * 0.41421356237309503)) {
                by = -1;
                bx = differ ? 1 : -1;
                axial = false;
            } else {
                bx = -1;
            }
            const M before = magnitude(x + bx, y + by), after = magnitude(x - bx, y - by);
            if (!(m > before && (m > after || (axial && m == after))))
                continue;
            survivor[std::size_t(y) * w + x] = 1;
            if (float(m) > high) {
                pending.emplace_back(x, y);
                dst[std::ptrdiff_t(y) * dstStep + x] = 255;
            }
        }
    while (!pending.empty()) {
        const auto [x, y] = pending.back();
        pending.pop_back();
        for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, h - 1); ++ny)
            for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, w - 1); ++nx)
                if (survivor[std::size_t(ny) * w + nx] && dst[std::ptrdiff_t(ny) * dstStep + nx] == 0) {
                    dst[std::ptrdiff_t(ny) * dstStep + nx] = 255;
                    pending.emplace_back(nx, ny);
                }
    }
}

inline Nox8u colorToGray(Nox8u a, Nox8u b, Nox8u c, int norm) {
    if (norm == 0)
        return std::max({a, b, c});
    if (norm == 1)
        return static_cast<Nox8u>(((a + b + c) * 1365 + 2048) >> 12);
    const float third = static_cast<float>(a * a + b * b + c * c) / 3.0F;
    return static_cast<Nox8u>(std::floor(std::sqrt(static_cast<long double>(third)) + 0.5L));
}

inline Nox16u colorToGray(Nox16u a, Nox16u b, Nox16u c, int norm) {
    if (norm == 0)
        return std::max({a, b, c});
    if (norm == 1)
        return static_cast<Nox16u>(((a + b + c) * 5461 + 8192) >> 14);
    const auto wrapped = [](Nox16u v) {
        return static_cast<long double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(v) * v));
    };
    const long double sum = static_cast<long double>(a) * a + wrapped(b) + wrapped(c);
    return sum < 0 ? Nox16u(0) : static_cast<Nox16u>(std::floor(std::sqrt(sum / 3.0L) + 0.5L));
}

inline Nox32f colorToGray(Nox32f a, Nox32f b, Nox32f c, int norm) {
    if (norm == 0)
        return std::max({std::fabs(a), std::fabs(b), std::fabs(c)});
    if (norm == 1) {
        const float first = std::fabs(a) + std::fabs(b);
        return first + std::fabs(c);
    }
    return std::sqrt(a * a + b * b + c * c);
}

} // namespace reference::canny
