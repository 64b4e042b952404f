// Watersheds and growth along gradients, with queues from the standard library and costs relaxed until none changes.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <deque>
#include <queue>
#include <utility>
#include <vector>

#include "noxtypes.h"

namespace reference::watershed {

constexpr int dx[] = {-1, 1, 0, 0, -1, 1, -1, 1}, dy[] = {0, 0, -1, 1, -1, -1, 1, 1};

/// Grey levels and labels of an image; labels outside are 255.
struct Picture {
    const Nox8u *src;
    int srcStep, channels;
    Nox8u *markers;
    int markerStep;
    NoxiSize roi;

    bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < roi.width && y < roi.height; }
    int grey(int x, int y) const { return src[std::ptrdiff_t(y) * srcStep + x]; }
    Nox8u &label(int x, int y) const { return markers[std::ptrdiff_t(y) * markerStep + x]; }
    int labelOr255(int x, int y) const { return inside(x, y) ? label(x, y) : 255; }
    int difference(int ax, int ay, int bx, int by) const {
        int largest = 0;
        for (int c = 0; c < channels; ++c)
            largest = std::max(largest, std::abs(src[std::ptrdiff_t(ay) * srcStep + ax * channels + c] -
                                                 src[std::ptrdiff_t(by) * srcStep + bx * channels + c]));
        return largest;
    }
};

inline int boundaryNeighbours(int flag) { return (flag & 64) != 0 ? 4 : (flag & 128) != 0 ? 8 : 0; }

inline void byQueue(const Picture &p, int norm, int flag) {
    const int growth = norm == 1 ? 4 : 8, bounds = boundaryNeighbours(flag);
    std::vector<std::deque<std::pair<int, int>>> queues(256);
    for (int y = 0; y < p.roi.height; ++y)
        for (int x = 0; x < p.roi.width; ++x) {
            const int label = p.label(x, y);
            if (label == 0 || label == 255)
                continue;
            bool room = false, meets = false;
            for (int i = 0; i < growth; ++i)
                room = room || p.labelOr255(x + dx[i], y + dy[i]) == 0;
            if (room)
                queues[p.grey(x, y)].emplace_back(x, y);
            for (int i = 0; i < bounds; ++i) {
                const int other = p.labelOr255(x + dx[i], y + dy[i]);
                meets = meets || (other > 0 && other < 255 && other != label);
            }
            if (meets)
                p.label(x, y) = 255;
        }
    for (int level = 0; level < 256; ++level)
        while (!queues[level].empty()) {
            const auto [x, y] = queues[level].front();
            queues[level].pop_front();
            for (int i = 0; i < growth; ++i) {
                const int nx = x + dx[i], ny = y + dy[i];
                if (p.labelOr255(nx, ny) != 0)
                    continue;
                int m = p.label(x, y);
                for (int j = 0; j < bounds; ++j) {
                    const int ox = nx + dx[j], oy = ny + dy[j];
                    if (ox == x && oy == y)
                        continue;
                    const int other = p.labelOr255(ox, oy);
                    if (other == 0 || other == 255 || other == m)
                        continue;
                    if (m != 255) {
                        m = 255;
                        break;
                    }
                    m = other;
                }
                p.label(nx, ny) = Nox8u(m);
                queues[std::max(level, p.grey(nx, ny))].emplace_back(nx, ny);
            }
        }
}

/// A plain flood with one heap, for speed comparisons: level first, then age.
inline void byHeap(const Picture &p, int norm) {
    using Entry = std::pair<long long, std::pair<int, int>>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> heap;
    const int growth = norm == 1 ? 4 : 8;
    long long age = 0;
    for (int y = 0; y < p.roi.height; ++y)
        for (int x = 0; x < p.roi.width; ++x)
            if (p.label(x, y) != 0 && p.label(x, y) != 255)
                heap.push({(long long)p.grey(x, y) << 40 | age++, {x, y}});
    while (!heap.empty()) {
        const auto [key, at] = heap.top();
        heap.pop();
        for (int i = 0; i < growth; ++i) {
            const int nx = at.first + dx[i], ny = at.second + dy[i];
            if (p.labelOr255(nx, ny) != 0)
                continue;
            p.label(nx, ny) = p.label(at.first, at.second);
            heap.push({std::max(key >> 40, (long long)p.grey(nx, ny)) << 40 | age++, {nx, ny}});
        }
    }
}

constexpr long long unreached = 0x7fc00000;

/// What two fronts at a right angle save.
inline int saving(int k) { return int(std::floor(64 - (k + std::sqrt(8192.0 - k * k)) / 2 + 0.5)); }

/// The least costs, row by row over and over; then labels in ascending order of cost.
inline std::vector<long long> byCost(const Picture &p, int norm) {
    const int w = p.roi.width, h = p.roi.height;
    std::vector<long long> cost(std::size_t(w) * h, unreached);
    const auto at = [&](int x, int y) { return p.inside(x, y) ? cost[std::size_t(y) * w + x] : unreached; };
    const int orderX[] = {-1, -1, 0, 1, 1, -1, 0, 1}, orderY[] = {0, -1, -1, -1, 0, 1, 1, 1};
    const auto length = [&](int i) {
        const bool diagonal = orderX[i] != 0 && orderY[i] != 0;
        return norm == 2 ? (diagonal ? 15 : 11) : diagonal && norm != 0 ? -1 : norm == 3 ? 64 : 1;
    };
    const auto best = [&](int x, int y) {
        long long least = unreached;
        if (norm == 3) {
            const long long a = std::min(at(x - 1, y), at(x + 1, y)), b = std::min(at(x, y - 1), at(x, y + 1));
            const long long d = std::llabs(a - b);
            return std::min(a, b) + 64 - (d < 64 ? saving(int(d)) : 0);
        }
        for (int i = 0; i < 8; ++i)
            if (length(i) > 0)
                least = std::min(least, at(x + orderX[i], y + orderY[i]) + length(i));
        return least;
    };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (p.label(x, y) != 0 && p.label(x, y) != 255)
                cost[std::size_t(y) * w + x] = (long long)p.grey(x, y) << 23;
    for (bool changed = true; changed;) {
        changed = false;
        const auto relax = [&](int x, int y) {
            if (p.label(x, y) != 0)
                return;
            const long long c = std::max((long long)p.grey(x, y) << 23, best(x, y));
            if (c < cost[std::size_t(y) * w + x]) {
                cost[std::size_t(y) * w + x] = c;
                changed = true;
            }
        };
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x)
                relax(x, y);
            for (int x = w - 1; x >= 0; --x)
                relax(x, y);
        }
        for (int y = h - 1; y >= 0; --y) {
            for (int x = 0; x < w; ++x)
                relax(x, y);
            for (int x = w - 1; x >= 0; --x)
                relax(x, y);
        }
    }
    std::vector<std::pair<long long, int>> order;
    for (int i = 0; i < w * h; ++i)
        if (p.label(i % w, i / w) == 0 && cost[i] < unreached)
            order.emplace_back(cost[i], i);
    std::sort(order.begin(), order.end());
    std::vector<int> fronts = {0, 4, 2, 6}; // left, right, up, down
    std::vector<int> all = {0, 1, 2, 3, 4, 5, 6, 7};
    for (const auto &[c, i] : order) {
        const int x = i % w, y = i / w;
        long long least = unreached * 2;
        int label = 0;
        for (const int k : norm == 3 ? fronts : all) {
            const int other = p.labelOr255(x + orderX[k], y + orderY[k]);
            if (length(k) < 0 || other == 0 || other == 255 || at(x + orderX[k], y + orderY[k]) + length(k) >= least)
                continue;
            least = at(x + orderX[k], y + orderY[k]) + length(k);
            label = other;
        }
        p.label(x, y) = Nox8u(label);
    }
    return cost;
}

inline void byGradient(const Picture &p, int norm, int flag) {
    const int growth = norm == 1 ? 4 : 8, bounds = boundaryNeighbours(flag), w = p.roi.width, h = p.roi.height;
    const auto isLabel = [](int value) { return value > 0 && value < 255; };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (x == 0 || y == 0 || x == w - 1 || y == h - 1)
                p.label(x, y) = 255;
    std::vector<std::deque<std::pair<int, int>>> queues(256);
    for (int y = 1; y < h - 1; ++y)
        for (int x = 1; x < w - 1; ++x) {
            int least = 256;
            for (int i = 0; i < growth && p.label(x, y) == 0; ++i)
                if (isLabel(p.label(x + dx[i], y + dy[i])))
                    least = std::min(least, p.difference(x, y, x + dx[i], y + dy[i]));
            if (least < 256) {
                queues[least].emplace_back(x, y);
                p.label(x, y) = 255;
            }
        }
    for (int current = 0; current < 256;) {
        if (queues[current].empty()) {
            ++current;
            continue;
        }
        const auto [x, y] = queues[current].front();
        queues[current].pop_front();
        int least = 256, label = 0;
        for (int i = 0; i < growth; ++i) {
            const int other = p.label(x + dx[i], y + dy[i]);
            if (!isLabel(other))
                continue;
            const int d = p.difference(x, y, x + dx[i], y + dy[i]);
            if (d < least || (d == least && other < 254)) {
                least = d;
                label = other;
            }
        }
        for (int i = 0; i < bounds; ++i) {
            const int other = p.label(x + dx[i], y + dy[i]);
            if (other >= 1 && other <= 253 && other != label) {
                label = 254;
                break;
            }
        }
        p.label(x, y) = Nox8u(label);
        for (int i = 0; i < growth; ++i)
            if (p.label(x + dx[i], y + dy[i]) == 0) {
                const int d = p.difference(x, y, x + dx[i], y + dy[i]);
                queues[d].emplace_back(x + dx[i], y + dy[i]);
                p.label(x + dx[i], y + dy[i]) = 255;
                current = std::min(current, d);
            }
    }
}

} // namespace reference::watershed
