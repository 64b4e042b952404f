// Foreground models, pixel by pixel from their definitions.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>
#include <vector>

#include "noxtypes.h"

namespace reference::foreground {

/// Frames of 1 or 3 channels with packed rows.
struct GaussianModel {
    struct Gaussian {
        int count = 0;
        double weight = 0;
        std::array<double, 3> variance{12.5, 12.5, 12.5}, mean{};
    };
    NoxiSize size;
    int channels, frames = 0, window = 200;
    double newVariance = 900, share = 0.7, sigmas = 2.5;
    std::vector<std::array<Gaussian, 5>> mixtures;
    std::vector<Nox8u> background;

    GaussianModel(const Nox8u *src, int step, NoxiSize roi, int channelCount)
        : size(roi), channels(channelCount), mixtures(std::size_t(roi.width) * roi.height),
          background(mixtures.size() * channelCount) {
        for (std::size_t i = 0; i < mixtures.size(); ++i) {
            Gaussian &first = mixtures[i][0];
            first.count = 1;
            first.weight = 1;
            for (int c = 0; c < channels; ++c)
                first.mean[c] = pixel(src, step, i)[c];
        }
    }
    const Nox8u *pixel(const Nox8u *src, int step, std::size_t i) const {
        return src + std::ptrdiff_t(i / size.width) * step + std::ptrdiff_t(i % size.width) * channels;
    }
    double varianceOf(const Gaussian &g) const {
        double sum = g.variance[0];
        for (int c = 1; c < channels; ++c)
            sum += g.variance[c];
        return sum;
    }

    void detect(const Nox8u *src, int step, std::vector<Nox8u> &mask) {
        ++frames;
        mask.resize(mixtures.size());
        for (std::size_t i = 0; i < mixtures.size(); ++i)
            mask[i] = detectPixel(mixtures[i], pixel(src, step, i), &background[i * channels]);
    }
    Nox8u detectPixel(std::array<Gaussian, 5> &g, const Nox8u *x, Nox8u *back) const {
        int match[5] = {};
        bool found = false;
        for (int k = 0; k < 5 && !found; ++k) {
            long double distance = 0, variance = 0;
            for (int c = 0; c < channels; ++c) {
                const long double d = (long double)g[k].mean[c] - x[c];
                distance += d * d;
                variance += g[k].variance[c];
            }
            found = distance <= variance * ((long double)sigmas * sigmas);
            match[k] = found;
        }
        const auto sum = [&] {
            double total = 0;
            for (const Gaussian &one : g)
                total += one.count;
            return total;
        };
        const bool end = frames == window;
        const double rate = end ? 1.0 / window : 1.0 / (sum() + 1);
        for (int k = 0; k < 5; ++k) {
            if (!end)
                g[k].count += match[k];
            g[k].weight += (match[k] - g[k].weight) * rate;
            if (!match[k] || (!end && g[k].count < 1))
                continue;
            const double rho = end ? 1.0 / (window * g[k].weight) : 1.0 / g[k].count;
            for (int c = 0; c < channels; ++c) {
                const double d = x[c] - g[k].mean[c];
                g[k].mean[c] += d * rho;
                g[k].variance[c] += rho * (d * d - g[k].variance[c]);
            }
        }
        if (!found) {
            g[4].count = 1;
            for (int c = 0; c < channels; ++c) {
                g[4].variance[c] = newVariance;
                g[4].mean[c] = x[c];
            }
            const double total = sum();
            for (int k = 0; k < 5; ++k)
                g[k].weight = !end ? g[k].count / total : k == 4 ? 1 / total : g[k].weight * (1 - rate);
        }
        double fitness[5];
        for (int k = 0; k < 5; ++k)
            fitness[k] = g[k].count > 0 ? g[k].weight / std::sqrt(varianceOf(g[k])) : 0;
        for (int k = 1; k < 5; ++k)
            for (int j = k; j > 0 && fitness[j] > fitness[j - 1]; --j) {
                std::swap(fitness[j], fitness[j - 1]);
                std::swap(g[j], g[j - 1]);
            }
        for (int c = 0; c < channels; ++c)
            back[c] = Nox8u(int(g[0].mean[c] + 0.5));
        double total = 0;
        for (int k = 0; k < 5; ++k) {
            total += g[k].weight;
            if (match[k])
                return 0;
            if (total >= share)
                break;
        }
        return 255;
    }
};

} // namespace reference::foreground
