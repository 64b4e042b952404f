// Inpainting, pixel by pixel from the definition. Gradients come from the library's helpers, which have a test of their
// own.
#pragma once

#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "edges/noxvmaskedgradient.h"
#include "noxtypes.h"

namespace reference::inpaint {

/// A packed image.
template <class T>
struct Plane {
    int width = 0, height = 0, channels = 1;
    std::vector<T> pixels;

    Plane() = default;
    Plane(int w, int h, int c = 1) : width(w), height(h), channels(c), pixels(std::size_t(w) * h * c) {}
    T &at(int x, int y, int c = 0) { return pixels[(std::size_t(y) * width + x) * channels + c]; }
    const T &at(int x, int y, int c = 0) const { return pixels[(std::size_t(y) * width + x) * channels + c]; }
    int step() const { return width * channels * int(sizeof(T)); }
    T *data() { return pixels.data(); }
};

/// The maximum over positions from -before to after along one axis; what lies outside is the nearest pixel.
inline Plane<Nox8u> widen(const Plane<Nox8u> &image, int before, int after, bool alongX) {
    Plane<Nox8u> result(image.width, image.height);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            for (int i = -before; i <= after; ++i)
                result.at(x, y) =
                    std::max(result.at(x, y), alongX ? image.at(std::clamp(x + i, 0, image.width - 1), y)
                                                     : image.at(x, std::clamp(y + i, 0, image.height - 1)));
    return result;
}

/// The pixels about the holes: those of a square, or the four direct neighbours.
inline Plane<Nox8u> ring(const Plane<Nox8u> &holes, int before, int after, bool crossOnly) {
    const Plane<Nox8u> across = widen(holes, before, after, true);
    Plane<Nox8u> result = widen(crossOnly ? holes : across, before, after, false);
    for (std::size_t i = 0; i < result.pixels.size(); ++i)
        result.pixels[i] = Nox8u(std::max(result.pixels[i], across.pixels[i]) - holes.pixels[i]);
    return result;
}

inline float fastReciprocalRoot(float x) {
    const float e = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
    return e * (x * e * e - 3.0F) * -0.5F;
}

/// Fills `image`, of 1 or 3 channels.
class Inpainter {
public:
    Inpainter(const Plane<float> &map, const Plane<Nox8u> &mask, float radius, int method)
        : radius_(radius), r_(int(radius)), method_(method) {
        for (int i = 0; i <= 2 * r_ * r_; ++i) {
            const float d2 = float(i), d = std::sqrt(d2);
            nearness_[0].push_back(method == 0 ? 1.0F / (d2 * d) : 1.0F / ((d2 * d2 + 1.0F) * d));
            nearness_[1].push_back(method == 0 ? 1.0F / (d2 * d) : 1.0F / (d2 * d2 + 1.0F));
        }
        int left = mask.width, right = -1, top = mask.height, bottom = -1, count = 0;
        for (int y = 0; y < mask.height; ++y)
            for (int x = 0; x < mask.width; ++x)
                if (mask.at(x, y) != 0) {
                    ++count;
                    left = std::min(left, x), right = std::max(right, x);
                    top = std::min(top, y), bottom = std::max(bottom, y);
                }
        if (count == 0)
            return;
        workX_ = std::max(left - r_ - 1, 0), workY_ = std::max(top - r_ - 1, 0);
        const int endX = std::min(right + r_ + 2, mask.width), endY = std::min(bottom + r_ + 2, mask.height);
        holes_ = Plane<Nox8u>(endX - workX_, endY - workY_);
        map_ = Plane<float>(holes_.width, holes_.height);
        for (int y = 0; y < holes_.height; ++y)
            for (int x = 0; x < holes_.width; ++x) {
                holes_.at(x, y) = mask.at(workX_ + x, workY_ + y) != 0 ? 255 : 0;
                map_.at(x, y) = map.at(workX_ + x, workY_ + y);
                if (map_.at(x, y) > 0 && int(order_.size()) < count)
                    order_.push_back({map_.at(x, y), x, y});
            }
        std::stable_sort(order_.begin(), order_.end(),
                         [](const Entry &a, const Entry &b) { return a.distance < b.distance; });
    }

    void paint(Plane<Nox8u> &image) {
        if (holes_.pixels.empty())
            return;
        channels_ = image.channels;
        work_ = Plane<Nox8u>(holes_.width, holes_.height, channels_);
        for (int y = 0; y < holes_.height; ++y)
            for (int x = 0; x < holes_.width; ++x)
                for (int c = 0; c < channels_; ++c)
                    work_.at(x, y, c) = image.at(workX_ + x, workY_ + y, c);
        prepare();
        for (const Entry &e : order_) {
            method_ == 0 ? alongDistance(e.x, e.y) : alongIsophote(e.x, e.y);
            for (int c = 0; c < channels_; ++c)
                work_.at(e.x, e.y, c) = image.at(workX_ + e.x, workY_ + e.y, c) = value_[c];
            unknown_.at(e.x, e.y) = 0;
            const auto update =
                method_ == 0     ? channels_ == 1 ? owncvModGradientPoint_8u16s_C1MR : owncvModGradientPoint_8u16s_C3MR
                : channels_ == 1 ? owncvModAbsGradientPoint_8u16s_C1MR
                                 : owncvModAbsGradientPoint_8u16s_C3MR;
            update(work_.data(), work_.step(), gradient_.data(), gradient_.step(), unknown_.data(), unknown_.step(),
                   holes_.width, holes_.height, e.y, e.x);
        }
    }

private:
    struct Entry {
        float distance;
        int x, y;
    };
    struct Neighbour {
        int x, y, dx, dy;
        float d2, nearness;
    };

    void prepare() {
        const int w = holes_.width, h = holes_.height;
        gradient_ = Plane<Nox16s>(w, h, 2 * channels_);
        distanceGradient_ = Plane<Nox16s>(w, h, 2);
        const bool one = channels_ == 1, plain = method_ == 0;
        Plane<Nox8u> band = ring(holes_, r_, int(1.0F + 2.0F * radius_) - r_ - 1, false),
                     rim = ring(holes_, 1, 1, true);
        (plain ? one ? owncvGradient_8u16s_C1MR : owncvGradient_8u16s_C3MR
         : one ? owncvAbsGradient_8u16s_C1MR
               : owncvAbsGradient_8u16s_C3MR)(work_.data(), work_.step(), gradient_.data(), gradient_.step(),
                                              band.data(), band.step(), w, h);
        (plain ? one ? owncvModGradient_8u16s_C1MR : owncvModGradient_8u16s_C3MR
         : one ? owncvModAbsGradient_8u16s_C1MR
               : owncvModAbsGradient_8u16s_C3MR)(work_.data(), work_.step(), gradient_.data(), gradient_.step(),
                                                 rim.data(), rim.step(), holes_.data(), holes_.step(), w, h);
        owncvGradient_32f16s_C1MR_Sfs(map_.data(), map_.step(), distanceGradient_.data(), distanceGradient_.step(),
                                      holes_.data(), holes_.step(), w, h, -12);
        unknown_ = holes_;
    }

    bool inside(int x, int y) const {
        return x - r_ >= 0 && y - r_ >= 0 && x + r_ <= holes_.width - 1 && y + r_ <= holes_.height - 1;
    }
    bool known(int x, int y) const {
        return x >= 0 && y >= 0 && x < holes_.width && y < holes_.height && unknown_.at(x, y) == 0;
    }
    /// Calls visit with all known neighbours, row by row.
    template <class Visit>
    void eachKnown(int x, int y, Visit visit) const {
        const bool in = inside(x, y);
        const float limit = in ? radius_ * radius_ : float(r_ * r_);
        for (int oy = -r_; oy <= r_; ++oy)
            for (int ox = -r_; ox <= r_; ++ox) {
                const int d2 = ox * ox + oy * oy;
                if (d2 != 0 && float(d2) <= limit && known(x + ox, y + oy))
                    visit(Neighbour{x + ox, y + oy, -ox, -oy, float(d2), nearness_[in ? 0 : 1][std::size_t(d2)]});
            }
    }
    /// The direct neighbours' part, where weights are missing.
    void fallBack(int x, int y, int c, float &sum, float &weights) const {
        static constexpr int around[4][2] = {{0, -1}, {-1, 0}, {1, 0}, {0, 1}};
        const bool in = inside(x, y);
        int values = 0, count = 0;
        for (const auto &[ox, oy] : around)
            if (known(x + ox, y + oy)) {
                ++count;
                values += work_.at(x + ox, y + oy, c);
                if (!in)
                    sum += float(work_.at(x + ox, y + oy, c));
            }
        if (in)
            sum = 255.0F * float(values);
        weights += float(in ? 255 * count : count);
    }

    void alongDistance(int x, int y) {
        float weights = 1e-30F, sum[3] = {}, sx[3] = {}, sy[3] = {};
        eachKnown(x, y, [&](const Neighbour &n) {
            float t = float(distanceGradient_.at(x, y, 0) * n.dx + distanceGradient_.at(x, y, 1) * n.dy);
            if (std::fabs(t) < 2.5e-25F)
                t = 2.5e-25F;
            const float share = (1.0F / 4096) / (std::fabs(map_.at(n.x, n.y) - map_.at(x, y)) + 1.0F);
            const float weight = std::fabs(share * n.nearness * t);
            weights += weight;
            for (int c = 0; c < channels_; ++c) {
                sum[c] += float(work_.at(n.x, n.y, c)) * weight;
                sx[c] -= float(gradient_.at(n.x, n.y, 2 * c)) * weight * float(n.dx);
                sy[c] -= float(gradient_.at(n.x, n.y, 2 * c + 1)) * weight * float(n.dy);
            }
        });
        for (int c = 0; c < channels_; ++c) {
            float all = weights;
            if (all < 0.0001F) {
                fallBack(x, y, c, sum[c], all);
                sx[c] = sy[c] = 0;
            }
            const long double lx = sx[c], ly = sy[c];
            const long double value =
                (long double)(sum[c]) / all + 0.5L + (lx + ly) / (std::sqrt(ly * ly + lx * lx) + 1e-20L);
            value_[c] = value > 0 ? Nox8u(int(std::min(value, 255.0L))) : Nox8u(0);
        }
    }

    void alongIsophote(int x, int y) {
        const bool in = inside(x, y);
        float weights[3] = {1e-30F, 1e-30F, 1e-30F}, sum[3] = {};
        eachKnown(x, y, [&](const Neighbour &n) {
            for (int c = 0; c < channels_; ++c) {
                const int g0 = gradient_.at(n.x, n.y, 2 * c), g1 = gradient_.at(n.x, n.y, 2 * c + 1);
                const int u = std::abs(n.dx * -g1 + n.dy * g0);
                const float square = float(g0 * g0 + g1 * g1);
                const float t = u == 0 ? 1e-6F : float(u) * fastReciprocalRoot(in ? square : n.d2 * square);
                const float weight = n.nearness * t;
                sum[c] += float(work_.at(n.x, n.y, c)) * weight;
                weights[c] += weight;
            }
        });
        for (int c = 0; c < channels_; ++c) {
            if (weights[c] < 0.0001F)
                fallBack(x, y, c, sum[c], weights[c]);
            value_[c] = Nox8u(int((long double)(sum[c]) / weights[c] + 0.5L));
        }
    }

    float radius_;
    int r_, method_, channels_ = 1, workX_ = 0, workY_ = 0;
    std::vector<float> nearness_[2]; ///< by squared distance: inside, and near the edges of the work area
    std::vector<Entry> order_;
    Plane<Nox8u> holes_, unknown_, work_;
    Plane<float> map_;
    Plane<Nox16s> gradient_, distanceGradient_;
    Nox8u value_[3] = {};
};

} // namespace reference::inpaint
