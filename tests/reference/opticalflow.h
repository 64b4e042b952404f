// The point tracker, plain: patches cell by cell, one point after the other, one level after the other.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "noxcv/pyramid.h"
#include "noxtypes.h"
#include "support/element.h"

namespace reference::opticalflow {

/// A patch of n by n cells, and which of them have four neighbours in the image.
template <class Cell>
struct FlowPatch {
    int n = 0;
    NoxiPoint min{}, max{};
    std::vector<Cell> cells;

    FlowPatch() = default;
    explicit FlowPatch(int size) : n(size), cells(std::size_t(size) * size) {}
    Cell &at(int x, int y) { return cells[std::size_t(y) * n + x]; }
    const Cell &at(int x, int y) const { return cells[std::size_t(y) * n + x]; }
};

/// One axis of a patch: the sample of cell 0, the cells with two neighbours, the fraction.
struct FlowAxis {
    int start, min, max;
    float fraction;

    FlowAxis(float centre, int n, int samples) {
        const float left = centre - float(n - 1) * 0.5F;
        fraction = std::isfinite(left) ? left - std::floor(left) : 0;
        if (std::isnan(left) || left >= float(samples)) {
            start = samples - 1, min = 0, max = -1;
        } else if (left < -float(n)) {
            start = -n, min = n, max = n - 1;
        } else {
            start = int(std::floor(left));
            min = std::max(0, -start);
            max = std::min(n - 1, samples - 2 - start);
        }
    }
    /// The sample at or next to a cell.
    int sample(int cell, int samples) const { return cell < min ? 0 : cell > max ? samples - 1 : start + cell; }
    bool between(int cell) const { return cell >= min && cell <= max; }
};

template <class T>
test::Run<const T> flowRow(const NoxiPyramid &pyramid, int level, int y) {
    return reinterpret_cast<const T *>(pyramid.images[level] + std::ptrdiff_t(y) * pyramid.steps[level]);
}

/// The weights of a patch, and one cell from up to four neighbours: Q14 and 7 fractional bits for bytes.
template <class T>
struct FlowWeights {
    float ax, ay, bx, by, w00, w10, w01, w11;
    FlowWeights(float fx, float fy)
        : ax(fx), ay(fy), bx(1 - fx), by(1 - fy), w00(bx * by), w10(ax * by), w01(bx * ay), w11(ax * ay) {}
    Nox32f cell(test::Run<const T> p, test::Run<const T> q, bool alongX, bool alongY) const {
        return alongX && alongY ? float(p[0]) * w00 + float(p[1]) * w10 + float(q[0]) * w01 + float(q[1]) * w11
               : alongY         ? float(p[0]) * (w00 + w10) + float(q[0]) * (w01 + w11)
               : alongX         ? float(p[0]) * bx + float(p[1]) * ax
                                : float(p[0]) * (ax + bx);
    }
};
template <>
struct FlowWeights<Nox8u> {
    int ax, ay, bx, by, w00, w10, w01, w11;
    FlowWeights(float fx, float fy)
        : ax(int(fx * 16384.0F + 0.5F)), ay(int(fy * 16384.0F + 0.5F)), bx(16384 - ax), by(16384 - ay),
          w00((bx * by + 16384) >> 14), w10((ax * by + 16384) >> 14), w01((bx * ay + 16384) >> 14),
          w11((ax * ay + 16384) >> 14) {}
    Nox16s cell(const Nox8u *p, const Nox8u *q, bool alongX, bool alongY) const {
        const int sum = alongX && alongY ? p[0] * w00 + p[1] * w10 + q[0] * w01 + q[1] * w11
                        : alongY         ? p[0] * (w00 + w10) + q[0] * (w01 + w11)
                        : alongX         ? p[0] * bx + p[1] * ax
                                         : p[0] * (ax + bx);
        return static_cast<Nox16s>((sum + 64) >> 7);
    }
};

template <class T, class Cell>
FlowPatch<Cell> flowCut(const NoxiPyramid &pyramid, int level, NoxiPoint32f at, int n) {
    const NoxiSize size = pyramid.sizes[level];
    const FlowAxis x(at.x, n, size.width), y(at.y, n, size.height);
    const FlowWeights<T> weights(x.fraction, y.fraction);
    FlowPatch<Cell> patch(n);
    patch.min = {x.min, y.min};
    patch.max = {x.max, y.max};
    for (int v = 0; v < n; ++v) {
        const int row = y.sample(v, size.height);
        const auto p = flowRow<T>(pyramid, level, row), q = flowRow<T>(pyramid, level, row + y.between(v));
        for (int u = 0; u < n; ++u) {
            const int column = x.sample(u, size.width);
            patch.at(u, v) = weights.cell(p + column, q + column, x.between(u), y.between(v));
        }
    }
    return patch;
}

inline Nox16s flowSaturate(int value) { return static_cast<Nox16s>(std::clamp(value, -32768, 32767)); }

/// The derivatives of a 3 x 3 neighbourhood, on the scale of the patches.
inline void flowDerivatives(const FlowPatch<Nox16s> &s, int x, int y, Nox16s &ix, Nox16s &iy) {
    const auto d = [&](int row) { return s.at(x + 2, row) - s.at(x, row); };
    const auto m = [&](int row) { return 3 * s.at(x, row) + 10 * s.at(x + 1, row) + 3 * s.at(x + 2, row); };
    ix = flowSaturate((3 * d(y) + 10 * d(y + 1) + 3 * d(y + 2) + 16) >> 5);
    iy = flowSaturate((m(y + 2) - m(y) + 16) >> 5);
}
inline void flowDerivatives(const FlowPatch<Nox32f> &s, int x, int y, Nox32f &ix, Nox32f &iy) {
    const auto d = [&](int row) { return s.at(x + 2, row) - s.at(x, row); };
    const auto m = [&](int row) {
        return 0.09375F * s.at(x, row) + 0.3125F * s.at(x + 1, row) + 0.09375F * s.at(x + 2, row);
    };
    ix = 0.09375F * d(y) + 0.3125F * d(y + 1) + 0.09375F * d(y + 2);
    iy = m(y + 2) - m(y);
}

/// Derivatives of a whole level with repeated edges.
template <class Cell>
struct FlowPlane {
    int width = 0;
    std::vector<Cell> cells;
    Cell at(int x, int y) const { return cells[std::size_t(y) * width + x]; }
};

template <class T, class Cell>
void flowPlanes(const NoxiPyramid &pyramid, int level, FlowPlane<Cell> &dx, FlowPlane<Cell> &dy) {
    // Bytes are exact in integers; float rows and columns are extended sums that are rounded once each.
    using Row = std::conditional_t<std::is_same_v<T, Nox8u>, int, Nox32f>;
    using Sum = std::conditional_t<std::is_same_v<T, Nox8u>, int, long double>;
    const auto [width, height] = pyramid.sizes[level];
    dx.width = dy.width = width;
    dx.cells.clear();
    dy.cells.clear();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Row d[3], m[3];
            for (int j = 0; j < 3; ++j) {
                const auto row = flowRow<T>(pyramid, level, std::clamp(y + j - 1, 0, height - 1));
                const Sum l = static_cast<Row>(row[std::max(x - 1, 0)]), c = static_cast<Row>(row[x]),
                          r = static_cast<Row>(row[std::min(x + 1, width - 1)]);
                d[j] = static_cast<Row>(r - l);
                m[j] = static_cast<Row>(3 * l + 10 * c + 3 * r);
            }
            const auto ix = static_cast<Row>(Sum(3) * d[0] + Sum(10) * d[1] + Sum(3) * d[2]);
            const auto iy = static_cast<Row>(Sum(m[2]) - Sum(m[0]));
            if constexpr (std::is_same_v<T, Nox8u>) {
                dx.cells.push_back(static_cast<Cell>(4 * ix));
                dy.cells.push_back(static_cast<Cell>(4 * iy));
            } else {
                dx.cells.push_back(0.03125F * ix);
                dy.cells.push_back(0.03125F * iy);
            }
        }
}

/// The fractions of a place in a plane, and a cell of the plane there.
inline long double flowPlaceFraction(float centre, int n) {
    const long double u = static_cast<long double>(centre) - (n - 1) / 2.0L;
    const long double fraction = u - std::trunc(u);
    return fraction < 0 ? fraction + 1 : fraction;
}
inline Nox16s flowPlaneCell(const FlowPlane<Nox16s> &p, int x, int y, long double fx, long double fy) {
    const std::int64_t ax = std::int64_t(32768 * fx + 0.5L), ay = std::int64_t(32768 * fy + 0.5L), bx = 32768 - ax,
                       by = 32768 - ay;
    const auto w = [](std::int64_t a, std::int64_t b) { return (a * b + 16384) >> 15; };
    const std::int64_t sum = w(bx, by) * p.at(x, y) + w(ax, by) * (w(ax, by) ? p.at(x + 1, y) : 0) +
                             w(bx, ay) * (w(bx, ay) ? p.at(x, y + 1) : 0) +
                             w(ax, ay) * (w(ax, ay) ? p.at(x + 1, y + 1) : 0);
    return flowSaturate(int((sum + 16384) >> 15));
}
inline Nox32f flowPlaneCell(const FlowPlane<Nox32f> &p, int x, int y, long double fx, long double fy) {
    const float ax = float(fx), ay = float(fy), bx = 1 - ax, by = 1 - ay;
    return p.at(x, y) * (bx * by) + p.at(x + 1, y) * (ax * by) + p.at(x, y + 1) * (bx * ay) +
           p.at(x + 1, y + 1) * (ax * ay);
}

/// A row of products, added up.
struct FlowSumInteger {
    std::uint32_t row = 0;
    long double total = 0;
    void add(int, Nox16s a, int b) { row += static_cast<std::uint32_t>(a * b); }
    void endRow() {
        total += static_cast<std::int32_t>(row);
        row = 0;
    }
};
struct FlowSumFloat {
    double row[4] = {};
    long double total = 0;
    void add(int column, Nox32f a, Nox32f b) { row[column % 4] += double(a) * double(b); }
    void endRow() {
        total += (row[0] + row[2]) + (row[1] + row[3]);
        std::fill_n(row, 4, 0.0);
    }
};

template <class T>
struct FlowTracker {
    using Cell = std::conditional_t<std::is_same_v<T, Nox8u>, Nox16s, Nox32f>;
    using Sum = std::conditional_t<std::is_same_v<T, Nox8u>, FlowSumInteger, FlowSumFloat>;

    const NoxiPyramid &first, &second;
    const NoxiPoint32f *prevPts;
    NoxiPoint32f *nextPts;
    Nox8s *status;
    Nox32f *error;
    int winSize, maxIter;
    float threshold;
    FlowPlane<Cell> planeX, planeY;

    static bool usable(const NoxiPyramid &pyramid, int level) {
        return pyramid.images[level] != nullptr &&
               pyramid.steps[level] >= pyramid.sizes[level].width * std::int64_t(sizeof(T)) &&
               pyramid.steps[level] % int(sizeof(T)) == 0;
    }
    static NoxiPoint32f scaled(NoxiPoint32f p, double by) { return {float(p.x * by), float(p.y * by)}; }
    static NoxiPoint32f divided(NoxiPoint32f p, double by) { return {float(p.x / by), float(p.y / by)}; }

    /// sum of a b over a rectangle, both bounds included.
    template <class A, class B>
    static long double sumOf(NoxiPoint min, NoxiPoint max, const A &a, const B &b) {
        Sum sum;
        for (int y = min.y; y <= max.y; ++y) {
            for (int x = min.x; x <= max.x; ++x)
                sum.add(x - min.x, a(x, y), b(x, y));
            sum.endRow();
        }
        return sum.total;
    }

    /// One level of one point. True when it is still tracked; est is its place then.
    bool level(int i, int l, bool coarse, NoxiPoint32f &est) {
        status[i] = Nox8s(l);
        if (!usable(first, l))
            return false;
        const double r = first.rates[l];
        const NoxiPoint32f p = scaled(prevPts[i], r);
        const FlowPatch<Cell> a = flowCut<T, Cell>(first, l, p, winSize + 2);
        NoxiPoint low = {a.min.x > 0 ? a.min.x - 1 : 0, a.min.y > 0 ? a.min.y - 1 : 0};
        NoxiPoint high = {a.max.x - (a.max.x > winSize ? 2 : 1), a.max.y - (a.max.y > winSize ? 2 : 1)};
        FlowPatch<Cell> ix(winSize), iy(winSize);
        if (!coarse) {
            for (int y = 0; y < winSize; ++y)
                for (int x = 0; x < winSize; ++x)
                    flowDerivatives(a, x, y, ix.at(x, y), iy.at(x, y));
        } else if (low.x <= high.x && low.y <= high.y) {
            const float left = p.x - float(winSize + 1) * 0.5F, top = p.y - float(winSize + 1) * 0.5F;
            const int x0 = left < 0 ? 0 : int(left) + 1, y0 = top < 0 ? 0 : int(top) + 1;
            const long double fx = flowPlaceFraction(p.x, winSize), fy = flowPlaceFraction(p.y, winSize);
            for (int y = low.y; y <= high.y; ++y)
                for (int x = low.x; x <= high.x; ++x) {
                    ix.at(x, y) = flowPlaneCell(planeX, x0 + x - low.x, y0 + y - low.y, fx, fy);
                    iy.at(x, y) = flowPlaneCell(planeY, x0 + x - low.x, y0 + y - low.y, fx, fy);
                }
        }

        FlowPatch<Cell> b;
        NoxiPoint min = {0, 0}, max = {-1, -1};
        const auto valueX = [&](int x, int y) { return ix.at(x, y); };
        const auto valueY = [&](int x, int y) { return iy.at(x, y); };
        const auto difference = [&](int x, int y) { return a.at(x + 1, y + 1) - b.at(x, y); };
        const auto finish = [&](bool tracked) {
            error[i] = 0;
            float sum = 0;
            for (int y = min.y; y < max.y; ++y)
                for (int x = min.x; x < max.x; ++x)
                    sum += float(difference(x, y)) * float(difference(x, y));
            if (sum > 0) {
                error[i] = std::sqrt(sum / float((max.x - min.x) * (max.y - min.y)));
                if (std::is_same_v<T, Nox8u>)
                    error[i] *= 0.0078125F;
            }
            if (!tracked)
                status[i] = Nox8s(l + 1);
            return tracked;
        };
        if (!usable(second, l))
            return finish(false);

        long double xx = 0, xy = 0, yy = 0;
        long double dxp = static_cast<long double>(first.sizes[l].width) + first.sizes[l].height, dyp = dxp;
        for (int iter = 0; iter < maxIter; ++iter) {
            b = flowCut<T, Cell>(second, l, est, winSize);
            const NoxiPoint oldMin = min, oldMax = max;
            min = {std::max(low.x, b.min.x), std::max(low.y, b.min.y)};
            max = {std::min(high.x, b.max.x), std::min(high.y, b.max.y)};
            if (min.x > max.x || min.y > max.y) {
                min = {0, 0}, max = {-1, -1};
                nextPts[i] = divided(est, r);
                return finish(false);
            }
            if (iter == 0 || min.x != oldMin.x || min.y != oldMin.y || max.x != oldMax.x || max.y != oldMax.y) {
                xx = sumOf(min, max, valueX, valueX);
                xy = sumOf(min, max, valueX, valueY);
                yy = sumOf(min, max, valueY, valueY);
            }
            const long double bx = sumOf(min, max, valueX, difference), by = sumOf(min, max, valueY, difference);
            const long double det = xx * yy - xy * xy;
            if (!(det >= 2.220446049250313e-16))
                return finish(false);
            const long double dx = (yy * bx - xy * by) / det, dy = (by * xx - bx * xy) / det;
            const long double x = est.x + dx, y = est.y + dy;
            est = {float(x), float(y)};
            if (dx * dx + dy * dy < threshold * threshold)
                break;
            if (std::fabs(dxp + dx) < 0.0003452669770922512 && std::fabs(dyp + dy) < 0.0003452669770922512) {
                est = {float(x - 0.5L * dx), float(y - 0.5L * dy)};
                break;
            }
            dxp = dx, dyp = dy;
        }
        return finish(true);
    }
};

/// roi is the largest size of the tracker's state.
template <class T>
void opticalFlow(const NoxiPyramid &first, const NoxiPyramid &second, const NoxiPoint32f *prevPts,
                 NoxiPoint32f *nextPts, Nox8s *status, Nox32f *error, int numPoints, int winSize, int maxLevel,
                 int maxIter, float threshold, NoxiSize roi) {
    FlowTracker<T> tracker{first, second, prevPts, nextPts, status, error, winSize, maxIter, threshold, {}, {}};
    const double downScale = maxLevel > 1 ? 1 / first.rates[1] : 1;
    int coarsest = maxLevel;
    while (coarsest >= 0 && first.sizes[coarsest].width < roi.width && first.sizes[coarsest].height < roi.height)
        --coarsest;
    ++coarsest;
    for (int i = 0; i < numPoints; ++i) {
        status[i] = Nox8s(maxLevel + 1);
        error[i] = 0;
    }
    for (int l = maxLevel; l >= coarsest; --l) {
        if (FlowTracker<T>::usable(first, l))
            flowPlanes<T>(first, l, tracker.planeX, tracker.planeY);
        for (int i = 0; i < numPoints; ++i) {
            if (status[i] != Nox8s(l + 1))
                continue;
            NoxiPoint32f est = FlowTracker<T>::scaled(nextPts[i], first.rates[l]);
            if (tracker.level(i, l, true, est))
                nextPts[i] = l == 0 ? est : FlowTracker<T>::divided(est, first.rates[l]);
            else if (status[i] == Nox8s(l))
                break; // nothing to read: the level is over
        }
    }
    for (int i = 0; coarsest > 0 && i < numPoints; ++i) {
        if (status[i] != Nox8s(coarsest))
            continue;
        NoxiPoint32f est = FlowTracker<T>::scaled(nextPts[i], first.rates[coarsest - 1]);
        int l = coarsest - 1;
        for (; l >= 0 && tracker.level(i, l, false, est); --l)
            if (l > 0)
                est = FlowTracker<T>::scaled(est, downScale);
        if (l < 0)
            nextPts[i] = est;
    }
}

} // namespace reference::opticalflow
