// Labels and boundaries, pixel by pixel.
#pragma once

#include <cstddef>
#include <vector>

#include "noxtypes.h"
#include "reference/floodfill.h"

namespace reference::segments {

/// Numbers components; returns how many there are.
inline int label(Nox8u *markers, int step, NoxiSize roi, int minLabel, int maxLabel, int norm) {
    const floodfill::View<Nox8u> view{markers, step, 1};
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            if (*view.at(x, y) != 0)
                *view.at(x, y) = 255;
    int count = 0;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            if (*view.at(x, y) != 255)
                continue;
            // Depth first, pixel by pixel.
            const auto label = Nox8u(minLabel + count++ % (maxLabel - minLabel + 1));
            std::vector<NoxiPoint> pending{{x, y}};
            while (!pending.empty()) {
                const NoxiPoint p = pending.back();
                pending.pop_back();
                *view.at(p.x, p.y) = label;
                for (int ny = p.y - 1; ny <= p.y + 1; ++ny)
                    for (int nx = p.x - 1; nx <= p.x + 1; ++nx)
                        if (nx >= 0 && ny >= 0 && nx < roi.width && ny < roi.height &&
                            (norm == 0 || nx == p.x || ny == p.y) && *view.at(nx, ny) == 255)
                            pending.push_back({nx, ny});
            }
        }
    return count;
}

inline void bound(Nox8u *markers, int step, NoxiSize roi, Nox8u value, int norm) {
    const floodfill::View<Nox8u> view{markers, step, 1};
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const int dx[] = {-1, 0, 1, -1}, dy[] = {-1, -1, -1, 0};
            for (int i = 0; i < 4; ++i) {
                const int nx = x + dx[i], ny = y + dy[i];
                if ((norm == 1 && dx[i] != 0 && dy[i] != 0) || nx < 0 || nx >= roi.width || ny < 0)
                    continue;
                if (*view.at(nx, ny) != value && *view.at(nx, ny) != *view.at(x, y)) {
                    *view.at(x, y) = value;
                    break;
                }
            }
        }
}

/// With a cost for each pixel, packed.
inline void boundByCost(Nox8u *markers, int step, const std::vector<int> &cost, NoxiSize roi, Nox8u value, int norm) {
    const floodfill::View<Nox8u> view{markers, step, 1};
    const auto pair = [&](int ax, int ay, int bx, int by) { // a is the earlier one
        if (ax < 0 || ax >= roi.width || ay < 0 || bx >= roi.width)
            return;
        Nox8u &a = *view.at(ax, ay), &b = *view.at(bx, by);
        if (a == value || b == value || a == b)
            return;
        if (cost[std::size_t(ay) * roi.width + ax] > cost[std::size_t(by) * roi.width + bx])
            a = value;
        else
            b = value;
    };
    for (int x = 0; x < roi.width; ++x)
        pair(x, 0, x + 1, 0);
    for (int y = 1; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            pair(x, y - 1, x, y);
            pair(x, y, x + 1, y);
            if (norm == 0) {
                pair(x - 1, y - 1, x, y);
                pair(x + 1, y - 1, x, y);
            }
        }
}

} // namespace reference::segments
