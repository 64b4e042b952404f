// Distance maps straight from their definitions: images as vectors, a value a pixel.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "noxtypes.h"

namespace reference::distance {

/// A plain image.
template <class T>
struct Plane {
    int width, height;
    std::vector<T> pixels;

    Plane(int w, int h, T value = T(0)) : width(w), height(h), pixels(std::size_t(w) * h, value) {}
    T &at(int x, int y) { return pixels[std::size_t(y) * width + x]; }
    const T &at(int x, int y) const { return pixels[std::size_t(y) * width + x]; }
    bool inside(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

/// Sums of weights: exact for integers, single precision for floats.
template <class T>
struct Sum {
    using Type = long long;
};
template <>
struct Sum<Nox32f> {
    using Type = Nox32f;
};

struct Step {
    int dx, dy, weight; ///< weight: index into the list of weights
};

/// A pass of a chamfer over given rows: candidates from the listed neighbours, all of which the pass has reached
/// before.
template <class T, class S>
void pass(Plane<T> &d, const Plane<Nox8u> *src, int firstRow, int endRow, bool backward, const std::vector<Step> &steps,
          const std::vector<S> &weights, const std::vector<Step> &inLastRow = {}) {
    const int down = firstRow < endRow ? 1 : -1;
    for (int y = firstRow; y != endRow; y += down)
        for (int i = 0; i < d.width; ++i) {
            const int x = backward ? d.width - 1 - i : i;
            if (src != nullptr)
                d.at(x, y) = std::numeric_limits<T>::max();
            const auto take = [&](const Step &step) {
                if (!d.inside(x + step.dx, y + step.dy))
                    return;
                const S candidate = S(d.at(x + step.dx, y + step.dy)) + weights[step.weight];
                if (candidate < S(d.at(x, y)))
                    d.at(x, y) = T(candidate);
            };
            for (const Step &step : steps)
                take(step);
            if (y == d.height - 1)
                for (const Step &step : inLastRow)
                    take(step);
            if (src != nullptr && src->at(x, y) == 0)
                d.at(x, y) = T(0);
        }
}

/// The same steps seen from the opposite corner.
inline std::vector<Step> mirrored(std::vector<Step> steps) {
    for (Step &step : steps)
        step = {-step.dx, -step.dy, step.weight};
    return steps;
}

inline const std::vector<Step> fourSteps = {{-1, 0, 0}, {0, -1, 0}};
inline const std::vector<Step> eightSteps = {{-1, 0, 0}, {-1, -1, 1}, {0, -1, 0}, {1, -1, 1}};
inline const std::vector<Step> orderedSteps = {{-1, 0, 0}, {-2, -1, 2}, {-1, -1, 1}, {0, -1, 0},
                                               {1, -1, 1}, {2, -1, 2},  {-1, -2, 2}, {1, -2, 2}};
/// Weights: straight, diagonal, knight, two straight, two diagonal.
inline const std::vector<Step> extendedSteps = {{-2, 0, 3},  {-1, 0, 0}, {-2, -1, 2}, {-1, -1, 1},
                                                {0, -1, 0},  {1, -1, 1}, {2, -1, 2},  {-2, -2, 4},
                                                {-1, -2, 2}, {0, -2, 3}, {1, -2, 2},  {2, -2, 4}};

template <class T, class S>
Plane<T> twoPasses(const Plane<Nox8u> &src, const std::vector<Step> &steps, const std::vector<S> &weights,
                   const std::vector<Step> &inLastRow = {}) {
    Plane<T> d(src.width, src.height);
    pass(d, &src, 0, src.height, false, steps, weights, inLastRow);
    pass<T, S>(d, nullptr, src.height - 1, -1, true, mirrored(steps), weights, mirrored(inLastRow));
    return d;
}

/// The 3x3 transform.
template <class T, class Weight>
Plane<T> chamfer3x3(const Plane<Nox8u> &src, const Weight *metrics) {
    using S = typename Sum<T>::Type;
    const S a = metrics[0], b = metrics[1];
    const std::vector<S> weights = {a, b, 2 * b};
    if (src.width == 1 || b >= 2 * a)
        return twoPasses<T>(src, fourSteps, weights);
    if (a > b && std::min(src.width, src.height) >= 2)
        return twoPasses<T>(src, eightSteps, weights, {{-2, 0, 2}});
    return twoPasses<T>(src, eightSteps, weights);
}

template <class S>
bool knightIsUseless(S a, S b, S c) {
    if constexpr (std::is_floating_point_v<S>)
        return static_cast<long double>((c - a) - b) > static_cast<long double>(-1e-07) * std::fabs(a + b);
    else
        return c >= a + b;
}
template <class S>
bool ordered(S a, S b, S c) {
    if constexpr (std::is_floating_point_v<S>) {
        const auto below = [](S difference, S of) {
            return static_cast<long double>(difference) <= static_cast<long double>(-1e-07) * std::fabs(of);
        };
        return below(a - b, b) && below(2 * a - c, c) && below(1.5F * b - c, c);
    } else {
        return b > a && c > 2 * a && 2 * c > 3 * b;
    }
}

/// Small images: all 24 neighbours, until nothing changes or once there and back.
template <class T, class S>
Plane<T> smallImage(const Plane<Nox8u> &src, S a, S b, S c, bool once) {
    Plane<T> d(src.width, src.height);
    for (std::size_t i = 0; i < d.pixels.size(); ++i)
        d.pixels[i] = src.pixels[i] == 0 ? T(0) : std::numeric_limits<T>::max();
    const std::vector<S> weights = {a, b, c, 2 * a, 2 * b};
    const auto sweep = [&](const std::vector<Step> &steps, bool back) {
        const Plane<T> before = d;
        pass<T, S>(d, nullptr, back ? d.height - 1 : 0, back ? -1 : d.height, back, steps, weights);
        return before.pixels != d.pixels;
    };
    bool changed = true;
    while (changed) {
        changed = sweep(extendedSteps, false);
        changed |= sweep(mirrored(extendedSteps), true);
        if (once)
            break;
    }
    return d;
}

template <class T, class Weight>
Plane<T> chamfer5x5(const Plane<Nox8u> &src, const Weight *metrics) {
    using S = typename Sum<T>::Type;
    const S a = metrics[0], b = std::min<S>(2 * a, metrics[1]), c = metrics[2];
    if (knightIsUseless<S>(a, b, c))
        return chamfer3x3<T>(src, metrics);
    const bool inOrder = ordered<S>(a, b, c);
    if (src.width < 4 || src.height < 4)
        return smallImage<T, S>(src, a, b, c, inOrder);
    if (inOrder)
        return twoPasses<T>(src, orderedSteps, std::vector<S>{a, b, c});
    const S a2 = std::min<S>(a, 3 * c), b2 = std::min<S>(b, 2 * c);
    return twoPasses<T>(src, extendedSteps,
                        std::vector<S>{a2, b2, c, std::min({2 * a2, 2 * b2, 2 * c}), std::min<S>(c + a2, 2 * b2)});
}

/// The two-thread form: halves swept towards the seam, the seam repaired, halves swept away from it.
template <class T, class Weight>
Plane<T> chamferInHalves(const Plane<Nox8u> &src, const Weight *metrics, bool five) {
    using S = typename Sum<T>::Type;
    const S a = metrics[0], b = five ? std::min<S>(2 * a, metrics[1]) : S(metrics[1]);
    const std::vector<S> weights = {a, b, five ? S(metrics[2]) : S(0)};
    const bool four = !five && 2 * a <= b;
    const std::vector<Step> forward = five ? orderedSteps : four ? fourSteps : eightSteps, back = mirrored(forward);
    std::vector<Step> fromAboveToLeft = forward; // the right neighbour and the rows above
    fromAboveToLeft[0] = {1, 0, 0};
    const int h = src.height, s = h / 2;
    Plane<T> d(src.width, h);
    pass(d, &src, 0, s, false, forward, weights);
    pass(d, &src, h - 1, s - 1, true, back, weights);
    const auto seam = [&](const std::vector<Step> &steps, bool backward) {
        pass<T, S>(d, nullptr, s, s + 1, backward, steps, weights);
    };
    if (five || four) {
        seam(back, true);
        seam(forward, false);
        seam(fromAboveToLeft, true);
    } else {
        seam(forward, false);
        seam(back, true);
    }
    // The row above the seam before the one below it, where they read each other.
    pass<T, S>(d, nullptr, s - 1, s - 2, true, back, weights);
    pass<T, S>(d, nullptr, s + 1, h, false, forward, weights);
    pass<T, S>(d, nullptr, s - 2, -1, true, back, weights);
    return d;
}

/// Squared distance to the nearest zero by looking at all of them, a column without a zero being 1000 away.
inline Plane<double> squaredDistances(const Plane<Nox8u> &src) {
    Plane<double> vertical(src.width, src.height, 1e6), d(src.width, src.height);
    for (int x = 0; x < src.width; ++x)
        for (int y = 0; y < src.height; ++y) {
            double best = -1;
            for (int z = 0; z < src.height; ++z)
                if (src.at(x, z) == 0 && (best < 0 || double(y - z) * (y - z) < best))
                    best = double(y - z) * (y - z);
            if (best >= 0)
                vertical.at(x, y) = best;
        }
    for (int y = 0; y < src.height; ++y)
        for (int x = 0; x < src.width; ++x) {
            double best = std::numeric_limits<double>::infinity();
            for (int z = 0; z < src.width; ++z)
                best = std::min(best, vertical.at(z, y) + double(x - z) * (x - z));
            d.at(x, y) = best;
        }
    return d;
}

/// Fast marching by the stated sweeps over plain planes; a value of `half` rows each side of a split is not modelled.
class FastMarching {
public:
    FastMarching(const Plane<Nox8u> &src, float radius)
        : src_(src), d_(src.width, src.height), flags_(src.width, src.height + 2), rows_(src.height + 2, 0),
          band_(radius > 0), reach_(radius + 1e-5F) {}

    Plane<float> serial() {
        const int h = src_.height;
        first();
        row(h - 1) = 0;
        if (!sweep(h - 2, -1, false))
            return d_;
        for (;;) {
            row(0) = 0;
            if (!sweep(1, h, true))
                break;
            row(h - 1) = 0;
            if (!sweep(h - 2, -1, true))
                break;
        }
        return d_;
    }

    static float arrival(float p, float q) {
        const float difference = p - q;
        if (std::fabs(difference) >= 1)
            return std::min(p, q) + 1;
        const float square = difference * difference;
        return (p + q + std::sqrt(2 - square)) * 0.5F;
    }

private:
    int &row(int y) { return rows_[std::size_t(y + 1)]; }
    int &flag(int x, int y) { return flags_.at(x, y + 1); }
    float from(float v) const { return band_ ? std::max(v, 0.0F) : v; }

    /// A zero pixel of the band from u and v; tells whether it changed.
    bool bandPixel(float &pixel, float u, float v) const {
        if (!band_)
            return false;
        if (u > 0 || v > 0) {
            const bool changed = pixel != -1e-10F;
            pixel = -1e-10F;
            return changed;
        }
        if (u == 0 && v == 0)
            return false;
        float g = 0;
        if (u == 0 || v == 0)
            g = std::min(u, v) - 1;
        else if (std::fabs(u - v) < 1)
            g = (u + v - std::sqrt(2 - (u - v) * (u - v))) * 0.5F;
        else
            g = std::max(u, v) - 1;
        if (g >= -reach_ && (pixel == 0 || pixel < g)) {
            pixel = g;
            return true;
        }
        return false;
    }

    void first() {
        const int w = src_.width, h = src_.height;
        for (int x = 0; x < w; ++x) {
            if (src_.at(x, 0) != 0)
                d_.at(x, 0) = x == 0 ? 999999.0F : from(d_.at(x - 1, 0)) + 1;
            else if (x > 0)
                bandPixel(d_.at(x, 0), 0, d_.at(x - 1, 0));
        }
        for (int x = w - 2; x >= 0; --x) {
            if (src_.at(x, 0) != 0)
                d_.at(x, 0) = std::min(d_.at(x, 0), from(d_.at(x + 1, 0)) + 1);
            else
                bandPixel(d_.at(x, 0), 0, d_.at(x + 1, 0));
        }
        row(0) = 1;
        for (int y = 1; y < h; ++y) {
            bool changed = false;
            for (int x = 0; x < w; ++x) {
                const float u = d_.at(x, y - 1), v = x > 0 ? d_.at(x - 1, y) : 0;
                if (src_.at(x, y) != 0) {
                    d_.at(x, y) = x == 0 ? from(u) + 1 : arrival(from(u), from(v));
                    changed = true;
                } else {
                    changed |= bandPixel(d_.at(x, y), u, v);
                }
            }
            for (int x = w - 2; x >= 0; --x)
                changed |= visit(x, y, d_.at(x, y - 1), d_.at(x + 1, y), true);
            for (int near = y - 1; near <= y + 1; ++near)
                row(near) |= changed;
        }
    }
    bool visit(int x, int y, float u, float v, bool sided) {
        if (src_.at(x, y) == 0)
            return bandPixel(d_.at(x, y), u, sided ? v : 0);
        const float value = sided ? arrival(from(u), from(v)) : from(u) + 1;
        if (!(value < d_.at(x, y)))
            return false;
        d_.at(x, y) = value;
        return true;
    }
    bool sweep(int firstRow, int endRow, bool flagged) {
        const int ahead = firstRow < endRow ? 1 : -1, w = src_.width;
        bool any = false, carry = false;
        for (int y = firstRow; y != endRow; y += ahead) {
            if (row(y) == 0)
                continue;
            bool changed = false;
            for (const bool back : {false, true})
                for (int i = back ? 1 : 0; i < w; ++i) {
                    const int x = back ? w - 1 - i : i, before = back ? x + 1 : x - 1;
                    const int bit = ahead > 0 ? (back ? 2 : 1) : (back ? 8 : 4);
                    if (flagged) {
                        if (!carry && (flag(x, y) & bit) == 0)
                            continue;
                        flag(x, y) &= ~bit;
                    }
                    const bool sided = before >= 0;
                    carry = visit(x, y, d_.at(x, y - ahead), sided ? d_.at(before, y) : 0, sided);
                    if (!carry)
                        continue;
                    changed = true;
                    const int left = ahead > 0 ? 8 : 2, right = ahead > 0 ? 4 : 1;
                    if (x > 0)
                        flag(x - 1, y) |= left;
                    if (x + 1 < w)
                        flag(x + 1, y) |= right;
                    flag(x, y - ahead) |= ahead > 0 ? 12 : 3;
                    if (flagged)
                        flag(x, y + ahead) |= ahead > 0 ? 3 : 12;
                }
            row(y) = changed;
            row(y - 1) |= changed;
            row(y + 1) |= changed;
            any |= changed;
        }
        return any;
    }

    const Plane<Nox8u> &src_;
    Plane<float> d_;
    Plane<int> flags_;
    std::vector<int> rows_;
    bool band_;
    float reach_;
};

} // namespace reference::distance
