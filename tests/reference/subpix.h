// Plain sub-pixel sampling.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::subpix {

template <class T>
auto subpixAt(T *base, int step, int x, int y) {
    return test::rowAt(base, step, y)[x];
}

inline float subpixFraction(float value) {
    if (!std::isfinite(value))
        return 0;
    const float fraction = value - std::trunc(value);
    return fraction < 0 ? fraction + 1 : fraction;
}

/// Weights and rounding of integer results; 8-bit sources have Q14, 16-bit ones Q15. Sums of 16-bit pixels can pass
/// 2^31 and are unsigned; a rounding term of 2^31, which only 8-bit pixels meet, makes the result negative.
struct SubpixFixed {
    int bits;
    unsigned ax, ay, bx, by, w00, w10, w01, w11, rounding;
    int shift;

    SubpixFixed(int fractionBits, float fx, float fy) : bits(fractionBits), shift(fractionBits) {
        const unsigned one = 1U << bits;
        ax = static_cast<unsigned>(fx * static_cast<float>(one) + 0.5F);
        ay = static_cast<unsigned>(fy * static_cast<float>(one) + 0.5F);
        bx = one - ax;
        by = one - ay;
        w00 = (bx * by + 16384) >> bits;
        w10 = (ax * by + 16384) >> bits;
        w01 = (bx * ay + 16384) >> bits;
        w11 = (ax * ay + 16384) >> bits;
        rounding = 1U << (bits - 1);
    }
    void scaleBy(int factor) {
        rounding = 1U << ((13U + unsigned(factor)) & 31);
        shift = int((14U + unsigned(factor)) & 31);
    }
    template <class D>
    D round(unsigned sum) const {
        if (rounding == 1U << 31)
            return 0;
        return static_cast<D>(std::min((sum + rounding) >> shift, unsigned(std::numeric_limits<D>::max())));
    }
};

template <class S>
constexpr int subpixBits = sizeof(S) == 1 ? 14 : 15;

template <class S, class D>
void copySubpixFixed(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, const SubpixFixed &f) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            subpixAt(dst, dstStep, x, y) =
                f.round<D>(subpixAt(src, srcStep, x, y) * f.w00 + subpixAt(src, srcStep, x + 1, y) * f.w10 +
                           subpixAt(src, srcStep, x, y + 1) * f.w01 + subpixAt(src, srcStep, x + 1, y + 1) * f.w11);
        }
}

template <class S>
void copySubpixFloat(const S *src, int srcStep, float *dst, int dstStep, NoxiSize roi, float dx, float dy) {
    const float ax = std::max(subpixFraction(dx), 1e-06F), ay = subpixFraction(dy);
    const float w00 = (1 - ax) * (1 - ay), w01 = ay * (1 - ax), w10 = (1 - ay) * ax, w11 = ay * ax;
    const float ratio = (1 - ax) / ax;
    for (int y = 0; y < roi.height; ++y) {
        float carried = float(subpixAt(src, srcStep, 0, y)) * w00 + float(subpixAt(src, srcStep, 0, y + 1)) * w01;
        for (int x = 0; x < roi.width; ++x) {
            const float g =
                float(subpixAt(src, srcStep, x + 1, y)) * w10 + float(subpixAt(src, srcStep, x + 1, y + 1)) * w11;
            subpixAt(dst, dstStep, x, y) = carried + g;
            carried = g * ratio;
        }
    }
}

template <class S, class D>
void copySubpix(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float dx, float dy, int scaleFactor = 0) {
    if constexpr (std::is_floating_point_v<D>) {
        copySubpixFloat(src, srcStep, dst, dstStep, roi, dx, dy);
    } else {
        SubpixFixed f(subpixBits<S>, subpixFraction(dx), subpixFraction(dy));
        if (sizeof(S) != sizeof(D))
            f.scaleBy(scaleFactor);
        copySubpixFixed(src, srcStep, dst, dstStep, roi, f);
    }
}

/// Geometry of a patch along one axis.
struct SubpixAxis {
    int start, min, max; ///< start: sample of cell 0, may be negative
    float fraction;
};

inline SubpixAxis subpixAxis(float centre, int n, int s) {
    const float left = centre - float(n - 1) * 0.5F;
    const float fraction = subpixFraction(left);
    if (std::isnan(left) || double(left) >= s)
        return {s - 1, 0, -1, fraction};
    if (double(left) < -double(n))
        return {-n, n, n - 1, fraction};
    const int i = int(std::floor(double(left)));
    return {i, i < 0 ? std::min(-i, n) : 0, i + n - 1 <= s - 2 ? n - 1 : s - (i + n - 1) + n - 3, fraction};
}

/// One cell of a patch. px and py tell whether the cell has two neighbours along that axis.
template <class S, class D>
D subpixCell(S p00, S p10, S p01, S p11, bool px, bool py, const SubpixFixed &f) {
    if (py)
        return f.round<D>(px ? p00 * f.w00 + p10 * f.w10 + p01 * f.w01 + p11 * f.w11
                             : p00 * (f.w00 + f.w10) + p01 * (f.w01 + f.w11));
    return f.round<D>(px ? p00 * f.bx + p10 * f.ax : p00 * (f.ax + f.bx));
}

struct SubpixFloat {
    float ax, ay;
};

template <class S, class D>
D subpixCell(S p00, S p10, S p01, S p11, bool px, bool py, const SubpixFloat &f) {
    const float ax = f.ax, ay = f.ay, bx = 1 - ax, by = 1 - ay;
    const float w00 = bx * by, w10 = ax * by, w01 = bx * ay, w11 = ax * ay;
    if (py)
        return px ? float(p00) * w00 + float(p10) * w10 + float(p01) * w01 + float(p11) * w11
                  : float(p00) * (w00 + w10) + float(p01) * (w01 + w11);
    return px ? float(p00) * bx + float(p10) * ax : float(p00) * (ax + bx);
}

/// innerOnly: leaves all but the four-point cells.
template <class S, class D>
void cutSubpix(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
               NoxiPoint *min, NoxiPoint *max, int scaleFactor = 0, bool innerOnly = false) {
    const SubpixAxis x = subpixAxis(point.x, dstRoi.width, srcRoi.width),
                     y = subpixAxis(point.y, dstRoi.height, srcRoi.height);
    const auto weights = [&] {
        if constexpr (std::is_floating_point_v<D>) {
            return SubpixFloat{x.fraction, y.fraction};
        } else {
            SubpixFixed f(subpixBits<S>, x.fraction, y.fraction);
            if (sizeof(S) != sizeof(D))
                f.scaleBy(scaleFactor);
            return f;
        }
    }();
    *min = {x.min, y.min};
    *max = {x.max, y.max};
    for (int v = 0; v < dstRoi.height; ++v)
        for (int u = 0; u < dstRoi.width; ++u) {
            const bool px = u >= x.min && u <= x.max, py = v >= y.min && v <= y.max;
            if (innerOnly && !(px && py))
                continue;
            const int x0 = u < x.min ? 0
                           : px      ? x.start + u
                                     : srcRoi.width - 1,
                      y0 = v < y.min ? 0
                           : py      ? y.start + v
                                     : srcRoi.height - 1,
                      x1 = x0 + px, y1 = y0 + py;
            subpixAt(dst, dstStep, u, v) =
                subpixCell<S, D>(subpixAt(src, srcStep, x0, y0), subpixAt(src, srcStep, x1, y0),
                                 subpixAt(src, srcStep, x0, y1), subpixAt(src, srcStep, x1, y1), px, py, weights);
        }
}

} // namespace reference::subpix
