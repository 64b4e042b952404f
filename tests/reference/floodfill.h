// Flood fills, pixel by pixel and by the spans of their definition.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "noxcv/segmentation.h"

namespace reference::floodfill {

template <class T>
using Color = std::array<T, 3>;

/// Pixels at any address, with `channels` elements each; the other elements of a color are 0.
template <class T>
struct View {
    T *data;
    int step, channels;

    unsigned char *at(int x, int y) const {
        return reinterpret_cast<unsigned char *>(data) + std::ptrdiff_t(y) * step +
               std::ptrdiff_t(x) * channels * int(sizeof(T));
    }
    Color<T> get(int x, int y) const {
        Color<T> color{};
        std::memcpy(color.data(), at(x, y), channels * sizeof(T));
        return color;
    }
    void set(int x, int y, const Color<T> &color) const { std::memcpy(at(x, y), color.data(), channels * sizeof(T)); }
};

template <class T>
bool equalTo(const Color<T> &n, const Color<T> &s, int channels) {
    for (int c = 0; c < channels; ++c)
        if (n[c] < s[c] || n[c] > s[c])
            return false;
    return true;
}

template <class T>
bool inRange(const Color<T> &n, const Color<T> &s, const Color<T> &minDelta, const Color<T> &maxDelta, int channels) {
    for (int c = 0; c < channels; ++c) {
        if constexpr (std::is_floating_point_v<T>) {
            const float low = s[c] - minDelta[c], high = maxDelta[c] + s[c];
            if (low > n[c] || n[c] > high)
                return false;
        } else if (n[c] < std::max(s[c] - minDelta[c], 0) || n[c] > std::min(s[c] + maxDelta[c], 255)) {
            return false;
        }
    }
    return true;
}

template <class T>
bool follows(const Color<T> &n, const Color<T> &c, const Color<T> &minDelta, const Color<T> &maxDelta, int channels) {
    for (int i = 0; i < channels; ++i) {
        if constexpr (std::is_floating_point_v<T>) {
            const float m = (minDelta[i] - maxDelta[i]) * 0.5F, h = (minDelta[i] + maxDelta[i]) * 0.5F;
            const float sum = n[i] + m;
            if (!(std::fabs(sum - c[i]) <= h))
                return false;
        } else if (n[i] < c[i] - minDelta[i] || n[i] > c[i] + maxDelta[i]) {
            return false;
        }
    }
    return true;
}

/// Paints all marked pixels and describes them.
template <class T>
NoxiConnectedRegion paint(View<T> image, NoxiSize roi, const std::vector<char> &marked, const Color<T> &newValue) {
    NoxiConnectedRegion region{};
    int left = roi.width, right = -1, top = roi.height, bottom = -1;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            if (marked[std::size_t(y) * roi.width + x]) {
                image.set(x, y, newValue);
                region.area += 1;
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    for (int c = 0; c < image.channels; ++c)
        region.value[c] = newValue[c];
    region.rect = {left, top, right - left + 1, bottom - top + 1};
    return region;
}

/// All pixels that are reached from the seed by steps to a neighbour for which joins(neighbour, pixel) holds.
template <class T, class Joins>
NoxiConnectedRegion fill(View<T> image, NoxiSize roi, NoxiPoint seed, bool diagonal, const Color<T> &newValue,
                         const Joins &joins) {
    std::vector<char> marked(std::size_t(roi.width) * roi.height, 0);
    std::vector<NoxiPoint> pending{seed};
    marked[std::size_t(seed.y) * roi.width + seed.x] = 1;
    while (!pending.empty()) {
        const NoxiPoint p = pending.back();
        pending.pop_back();
        for (int y = std::max(p.y - 1, 0); y <= std::min(p.y + 1, roi.height - 1); ++y)
            for (int x = std::max(p.x - 1, 0); x <= std::min(p.x + 1, roi.width - 1); ++x) {
                char &mark = marked[std::size_t(y) * roi.width + x];
                if (mark || (!diagonal && x != p.x && y != p.y) || !joins(image.get(x, y), image.get(p.x, p.y)))
                    continue;
                mark = 1;
                pending.push_back({x, y});
            }
    }
    return paint(image, roi, marked, newValue);
}

enum class Kind { Plain, Range, Gradient };

/// Any member; false when there is nothing to do.
template <class T>
bool fill(Kind kind, View<T> image, NoxiSize roi, NoxiPoint seed, bool diagonal, const Color<T> &newValue,
          const Color<T> &minDelta, const Color<T> &maxDelta, NoxiConnectedRegion &region) {
    const Color<T> s = image.get(seed.x, seed.y);
    if (kind != Kind::Gradient && equalTo(s, newValue, image.channels))
        return false;
    region = fill(image, roi, seed, diagonal, newValue, [&](const Color<T> &n, const Color<T> &c) {
        return kind == Kind::Plain   ? equalTo(n, s, image.channels)
               : kind == Kind::Range ? inRange(n, s, minDelta, maxDelta, image.channels)
                                     : follows(n, c, minDelta, maxDelta, image.channels);
    });
    return true;
}

/// The fill along gradients by its spans, with the second chance that only an extension to the right has.
template <class T>
NoxiConnectedRegion fillBySpans(View<T> image, NoxiSize roi, NoxiPoint seed, bool diagonal, const Color<T> &newValue,
                                const Color<T> &minDelta, const Color<T> &maxDelta) {
    struct Record {
        int y, left, right, parentLeft, parentRight, dir;
    };
    const int pitch = roi.width + 2;
    std::vector<char> map(std::size_t(pitch) * (roi.height + 2), 1);
    const auto visited = [&](int x, int y) -> char & { return map[std::size_t(y + 1) * pitch + x + 1]; };
    std::vector<char> marked(std::size_t(roi.width) * roi.height, 0);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            visited(x, y) = 0;
    const auto rule = [&](int nx, int ny, int cx, int cy) {
        return follows(image.get(nx, ny), image.get(cx, cy), minDelta, maxDelta, image.channels);
    };
    int left = seed.x, right = seed.x;
    visited(seed.x, seed.y) = 1;
    while (!visited(right + 1, seed.y) && rule(right + 1, seed.y, right, seed.y))
        visited(++right, seed.y) = 1;
    while (!visited(left - 1, seed.y) && rule(left - 1, seed.y, left, seed.y))
        visited(--left, seed.y) = 1;
    std::vector<Record> stack{{seed.y, left, right, right + 1, right, 1}};
    const int reach = diagonal ? 1 : 0;
    while (!stack.empty()) {
        const Record s = stack.back();
        stack.pop_back();
        const auto scan = [&](int y, int from, int to, int dir) {
            const auto near = [&](int x) {
                for (int k = std::max(x - reach, s.left); k <= std::min(x + reach, s.right); ++k)
                    if (rule(x, y, k, s.y))
                        return true;
                return false;
            };
            for (int x = from; x <= to; ++x) {
                if (visited(x, y) || !near(x))
                    continue;
                int l = x, r = x;
                visited(x, y) = 1;
                while (!visited(l - 1, y) && rule(l - 1, y, l, y))
                    visited(--l, y) = 1;
                while (!visited(r + 1, y) &&
                       (rule(r + 1, y, r, y) || (diagonal ? near(r + 1) : r < s.right && rule(r + 1, y, r + 1, s.y))))
                    visited(++r, y) = 1;
                stack.push_back({y, l, r, s.left, s.right, dir});
                x = r + 1;
            }
        };
        scan(s.y - s.dir, s.left - reach, s.right + reach, s.dir);
        scan(s.y + s.dir, s.left - reach, s.parentLeft - 1, -s.dir);
        scan(s.y + s.dir, s.parentRight + 1, s.right + reach, -s.dir);
        for (int x = s.left; x <= s.right; ++x)
            marked[std::size_t(s.y) * roi.width + x] = 1;
    }
    return paint(image, roi, marked, newValue);
}

} // namespace reference::floodfill
