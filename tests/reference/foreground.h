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

/// Tables of colours and changes, moved as a whole.
struct HistogramModel {
    struct Entry {
        float p = 0, pb = 0;
        std::array<Nox8u, 6> value{};
    };
    struct Table {
        std::vector<Entry> entries;
        int used = 0, tolerance = 0, keyBytes = 0;
        float prior = 0;
        bool trusted = false;
    };
    struct Pixel {
        Table color, change;
    };
    NoxiSize size;
    int channels;
    std::vector<Pixel> pixels;
    std::vector<Nox8u> background, previous, frameChange, backgroundChange;
    float slowRate = 0.005F, fastRate = 0.1F;

    HistogramModel(const Nox8u *src, int step, NoxiSize roi, int channelCount)
        : size(roi), channels(channelCount), pixels(std::size_t(roi.width) * roi.height),
          background(pixels.size() * channelCount), previous(background.size()), frameChange(pixels.size()),
          backgroundChange(pixels.size()) {
        for (Pixel &one : pixels) {
            one.color = {std::vector<Entry>(25), 15, 4, channels, 0, false};
            one.change = {std::vector<Entry>(40), 25, 8, 2 * channels, 0, false};
        }
        for (std::size_t i = 0; i < pixels.size(); ++i)
            for (int c = 0; c < channels; ++c)
                background[i * channels + c] = previous[i * channels + c] = pixel(src, step, i)[c];
    }
    const Nox8u *pixel(const Nox8u *src, int step, std::size_t i) const {
        return src + std::ptrdiff_t(i / size.width) * step + std::ptrdiff_t(i % size.width) * channels;
    }

    void markChanges(const Nox8u *src, int step, const std::vector<Nox8u> &other, std::vector<Nox8u> &mask) const {
        std::fill(mask.begin(), mask.end(), Nox8u(0));
        for (int c = 0; c < channels; ++c) {
            const auto difference = [&](std::size_t i) {
                return std::abs(int(pixel(src, step, i)[c]) - int(other[i * channels + c]));
            };
            std::vector<double> bins(256, 0);
            for (std::size_t i = 0; i < pixels.size(); ++i)
                ++bins[difference(i)];
            float threshold = 10;
            for (int k = 254; k >= 0; --k) {
                double count = 0, sum = 0, squares = 0;
                for (int i = k; i < 256; ++i) {
                    count += bins[i];
                    sum += bins[i] * i;
                    squares += bins[i] * i * i;
                }
                const auto n = float(count == 0 ? 1 : count);
                const float mean = float(sum) / n, square = float(squares) / n;
                threshold = std::max(threshold, std::sqrt(square - mean * mean));
            }
            for (std::size_t i = 0; i < pixels.size(); ++i)
                if (float(difference(i)) > threshold)
                    mask[i] = 255;
        }
    }

    void detect(const Nox8u *src, int step, std::vector<Nox8u> &mask) {
        markChanges(src, step, previous, frameChange);
        markChanges(src, step, background, backgroundChange);
        mask.assign(pixels.size(), 0);
        const std::ptrdiff_t end = std::ptrdiff_t(size.height - 1) * step + size.width * channels;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            if (!frameChange[i] && !backgroundChange[i])
                continue;
            Nox8u bytes[3];
            for (int c = 0; c < 3; ++c)
                bytes[c] = pixel(src, step, i) + c < src + end ? pixel(src, step, i)[c] : 0;
            const Table &table = frameChange[i] ? pixels[i].change : pixels[i].color;
            if (!table.trusted) {
                mask[i] = frameChange[i] ? 255 : 0;
                continue;
            }
            float p = 0, pb = 0;
            for (int k = 0; k < table.used && table.entries[k].p > slowRate; ++k) {
                bool near = true;
                for (int c = 0; c < 3; ++c)
                    near = near && std::abs(table.entries[k].value[c] - bytes[c]) <= table.tolerance;
                if (near) {
                    p += table.entries[k].p;
                    pb += table.entries[k].pb;
                }
            }
            mask[i] = 2 * pb * table.prior <= p ? 255 : 0;
        }
    }

    bool learn(Table &table, const std::array<Nox8u, 6> &key, bool isBackground) const {
        const float rate = table.trusted ? slowRate : fastRate, keep = 1 - rate;
        std::vector<Entry> &e = table.entries;
        table.prior = table.prior * keep;
        if (isBackground)
            table.prior += rate;
        int match = -1, least = 10000;
        for (std::size_t i = 0; i < e.size() && e[i].p != 0; ++i) {
            e[i].p *= keep;
            e[i].pb *= keep;
            if (!(e[i].p > 1e-10F)) {
                e[i].p = e[i].pb = 0;
                continue;
            }
            int sum = 0;
            bool near = true;
            for (int c = 0; c < table.keyBytes; ++c) {
                sum += std::abs(e[i].value[c] - key[c]);
                near = near && std::abs(e[i].value[c] - key[c]) <= table.tolerance;
            }
            if (channels == 1 && !near)
                break;
            if (channels == 3 && near && sum < least) {
                least = sum;
                match = int(i);
            }
        }
        if (match >= 0) {
            e[match].p += rate;
            if (isBackground)
                e[match].pb += rate;
        } else {
            match = int(e.size()) - 1;
            e[match] = {rate, rate, {}};
            std::copy_n(key.begin(), table.keyBytes, e[match].value.begin());
        }
        int place = 0;
        while (place < match && e[place].p > e[match].p)
            ++place;
        std::rotate(e.begin() + place, e.begin() + match, e.begin() + match + 1);
        float p = 0, pb = 0;
        int live = 0;
        for (; live < table.used && e[live].p != 0; ++live) {
            p += e[live].p;
            pb += e[live].pb;
        }
        if (p > 0.9F)
            table.trusted = true;
        if (!(p - pb * table.prior > 0.9F))
            return false;
        for (int i = 0; i < live; ++i)
            e[i].pb = (e[i].p - e[i].pb * table.prior) / (1 - table.prior);
        return true;
    }

    void update(const Nox8u *src, int step, const Nox8u *foreground, int foregroundStep) {
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const Nox8u *cur = pixel(src, step, i), *prev = &previous[i * channels];
            const bool isBackground =
                foreground[std::ptrdiff_t(i / size.width) * foregroundStep + std::ptrdiff_t(i % size.width)] == 0;
            Pixel &one = pixels[i];
            std::array<Nox8u, 6> key{};
            if (frameChange[i] || !one.change.trusted) {
                std::copy_n(prev, channels, key.begin());
                std::copy_n(cur, channels, key.begin() + channels);
                learn(one.change, key, isBackground);
            }
            if (!frameChange[i]) {
                std::copy_n(cur, channels, key.begin());
                if (learn(one.color, key, isBackground))
                    one.color.prior = 1 - one.color.prior;
            }
            if (!isBackground)
                continue;
            for (int c = 0; c < channels; ++c) {
                Nox8u &b = background[i * channels + c];
                const float kept = float(b) * (1 - 0.1F), taken = 0.1F * float(cur[c]);
                b = frameChange[i] || backgroundChange[i] ? cur[c] : Nox8u(int(kept + taken));
            }
        }
        for (std::size_t i = 0; i < pixels.size(); ++i)
            std::copy_n(pixel(src, step, i), channels, &previous[i * channels]);
    }
};

} // namespace reference::foreground
