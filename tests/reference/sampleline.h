// Plain line walk.
#pragma once

#include <cstdlib>
#include <vector>

#include "noxtypes.h"

namespace reference::sampleline {

/// Places of a segment's pixels. Along the main axis they are whole steps; along the other one the ideal line is
/// rounded, halves toward the start.
inline std::vector<NoxiPoint> linePixels(NoxiPoint from, NoxiPoint to) {
    const long long dx = to.x - from.x, dy = to.y - from.y, width = std::llabs(dx), height = std::llabs(dy);
    const bool alongY = width <= height;
    const long long length = alongY ? height : width, other = alongY ? width : height;
    const int xSign = dx < 0 ? -1 : 1, ySign = dy < 0 ? -1 : 1;
    std::vector<NoxiPoint> pixels;
    for (long long i = 0; i <= length; ++i) {
        // ceil(i * other / length - 1 / 2)
        const long long aside = length == 0 ? 0 : (2 * i * other + length - 1) / (2 * length);
        pixels.push_back(alongY ? NoxiPoint{int(from.x + xSign * aside), int(from.y + ySign * i)}
                                : NoxiPoint{int(from.x + xSign * i), int(from.y + ySign * aside)});
    }
    return pixels;
}

} // namespace reference::sampleline
