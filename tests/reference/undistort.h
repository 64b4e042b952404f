// Plain lens correction.
#pragma once

#include <type_traits>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::undistort {

struct Lens {
    float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

/// Place of pixel (x, y) by the radial model.
inline NoxiPoint32f radialPlace(int x, int y, const Lens &lens) {
    const float perFx2 = 1 / (lens.fx * lens.fx), perFy2 = 1 / (lens.fy * lens.fy);
    const float xc = float(x) - lens.cx, yc = float(y) - lens.cy, u = xc * xc * perFx2, v = yc * yc * perFy2;
    const float s = u * (lens.k1 + lens.k2 * u) + v * (lens.k1 + lens.k2 * v) + u * (2 * lens.k2 * v);
    return {float(x) + xc * s, float(y) + yc * s};
}

/// Place of pixel (x, y) by the model with tangential terms.
inline NoxiPoint32f tangentialPlace(int x, int y, const Lens &lens) {
    const float perFx = 1 / lens.fx, perFy = 1 / lens.fy;
    const float xc = float(x) - lens.cx, yc = float(y) - lens.cy, x1 = xc * perFx, y1 = yc * perFy;
    const float r2 = x1 * x1 + y1 * y1;
    const float t = x1 * (2 * lens.p2) + y1 * (2 * lens.p1) + (lens.k2 * r2 + lens.k1) * r2;
    return {float(x) + lens.fx * lens.p2 * r2 + xc * t, r2 * (lens.fy * lens.p1) + float(y) + t * yc};
}

template <class T>
test::Run<T> undistortRow(T *base, int step, int y) {
    return test::rowAt(base, step, y);
}

template <class T>
void undistortRadial(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels, const Lens &lens) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const NoxiPoint32f place = radialPlace(x, y, lens);
            if (!(place.x >= 0 && place.y >= 0 && place.x < float(roi.width - 1) && place.y < float(roi.height - 1)))
                continue;
            const int ix = int(place.x), iy = int(place.y);
            const float a = place.x - float(ix), b = place.y - float(iy);
            const auto p = undistortRow(src, srcStep, iy) + ix * channels,
                       q = undistortRow(src, srcStep, iy + 1) + ix * channels;
            for (int c = 0; c < channels; ++c) {
                const float sum = a * b * float(q[channels + c]) + b * (1 - a) * float(q[c]) +
                                  (1 - a) * (1 - b) * float(p[c]) + a * (1 - b) * float(p[channels + c]);
                const auto d = undistortRow(dst, dstStep, y)[x * channels + c];
                if constexpr (std::is_floating_point_v<T>)
                    d = sum;
                else
                    d = static_cast<T>(static_cast<int>(sum + 0.5F));
            }
        }
}

inline void createMaps(float *xMap, int xMapStep, float *yMap, int yMapStep, NoxiSize roi, const Lens &lens) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const NoxiPoint32f place =
                lens.p1 == 0 && lens.p2 == 0 ? radialPlace(x, y, lens) : tangentialPlace(x, y, lens);
            undistortRow(xMap, xMapStep, y)[x] = place.x;
            undistortRow(yMap, yMapStep, y)[x] = place.y;
        }
}

} // namespace reference::undistort
