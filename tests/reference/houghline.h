// The Hough transform for lines, straight from its definition: the whole plane, in extended precision.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::houghline {

inline Nox32f tangent(Nox32f angle) {
    const long double x = angle, q = x * x;
    return Nox32f(x / (1 - q / (3 - q / (5 - q / (7 - q / (9 - q / (11 - q / (13 - q / (15 - q)))))))));
}

inline int rounded(Nox32f v) { return int(static_cast<long double>(v) + (v > 0 ? 0.5L : -0.5L)); }

struct Plane {
    int cells, angles, middle;
    /// Votes of each angle from -1 to angles + 1; a cell more at each end.
    std::vector<std::vector<int>> votes;
};

inline Plane transform(const Nox8u *src, int step, NoxiSize roi, NoxiPoint32f delta) {
    Plane plane;
    plane.cells = int(Nox32f((roi.width + roi.height) * 2 + 1) / delta.x);
    plane.angles = int(static_cast<long double>(3.14159265358979323846) / delta.y);
    plane.middle = (plane.cells - 1) >> 1;
    plane.votes.assign(std::size_t(plane.angles) + 3, std::vector<int>(std::size_t(plane.cells) + 2, 0));
    Nox32f angle = 0;
    for (int i = 0; i <= plane.angles; ++i, angle += delta.y) {
        const Nox32f t = tangent(angle * 0.5F), scale = 1 / delta.x;
        const Nox32f sine = 2 * t / (1 + t * t) * scale, cosine = (1 - t * t) / (1 + t * t) * scale;
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                if (test::rowAt(src, step, y)[x] != 0) {
                    const auto value =
                        Nox32f(x * static_cast<long double>(cosine) + y * static_cast<long double>(sine));
                    const int cell = rounded(value) + plane.middle;
                    if (cell >= -1 && cell < plane.cells)
                        ++plane.votes[std::size_t(i) + 1][std::size_t(cell) + 1];
                }
    }
    return plane;
}

/// The lines, best first.
inline std::vector<NoxiPoint32f> lines(const Nox8u *src, int step, NoxiSize roi, NoxiPoint32f delta, int threshold,
                                       int most) {
    const Plane plane = transform(src, step, roi, delta);
    struct Line {
        int rho, theta, votes;
    };
    std::vector<Line> found;
    for (int i = 0; i <= plane.angles; ++i)
        for (int c = 0; c < plane.cells; ++c) {
            const std::size_t row = std::size_t(i) + 1, at = std::size_t(c) + 1;
            const int v = plane.votes[row][at];
            if (!(v > threshold && v > plane.votes[row][at - 1] && v >= plane.votes[row][at + 1] &&
                  v > plane.votes[row - 1][at] && v >= plane.votes[row + 1][at]))
                continue;
            std::size_t place = 0;
            while (place < found.size() && found[place].votes >= v)
                ++place;
            found.insert(found.begin() + std::ptrdiff_t(place), {c, i, v});
            if (int(found.size()) > most)
                found.pop_back();
        }
    std::vector<NoxiPoint32f> result;
    for (const Line &line : found)
        result.push_back({Nox32f(line.rho - plane.middle) * delta.x, Nox32f(line.theta) * delta.y});
    return result;
}

} // namespace reference::houghline
