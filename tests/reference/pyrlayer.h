// Pyramid layers, straight from their definitions: kernel normalisation, smoothing of the whole plane, resampling in
// two passes over it, and the spread of an up layer pixel by pixel.
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <type_traits>
#include <vector>

#include "noxtypes.h"
#include "reference/pyrgauss.h"

namespace reference::pyrlayer {

using namespace pyrgauss;

template <class T>
using LayerTap = std::conditional_t<std::is_floating_point_v<T>, Nox32f, Nox16s>;

/// Normalised taps; one more than the kernel has, for the layout of zero-sum kernels. `unwritten` is what the tap that
/// such a layout leaves out holds.
inline std::vector<Nox16s> normalised(const std::vector<Nox16s> &k, bool down, Nox16s unwritten) {
    const int n = int(k.size()), c = n / 2;
    std::vector<Nox16s> out(n + 1, unwritten);
    int left = 0;
    for (int i = 0; i < c; ++i)
        left += k[i];
    const int sum = k[c] + 2 * left;
    if (sum == 0) {
        out[c] = k[c];
        for (int i = 0; i < c; ++i)
            out[i] = out[n - i] = k[i];
        return out;
    }
    const float s2 = float(4 * k[c] + 8 * left) * 0.5F;
    for (int i = 0; i <= c; ++i) {
        const int tap =
            down ? ((k[i] * 16384) / sum) >> 1 : Nox16s(std::int64_t(4.0F * float(k[i]) / s2 * 8192.0F + 0.5F)) >> 1;
        out[i] = out[n - 1 - i] = Nox16s(tap);
    }
    return out;
}

inline std::vector<Nox32f> normalised(const std::vector<Nox32f> &k, bool /*down*/, Nox32f unwritten) {
    const int n = int(k.size()), c = n / 2;
    std::vector<Nox32f> out(n + 1, unwritten);
    float left = 0;
    for (int i = 0; i < c; ++i)
        left += k[i];
    const float sum = k[c] + 2 * left;
    if (std::fabs(sum) > FLT_MIN) {
        for (int i = 0; i <= c; ++i)
            out[i] = out[n - 1 - i] = k[i] / sum;
    } else {
        for (int i = 0; i < c; ++i)
            out[i] = out[n - i] = k[i];
        out[c] = float(reinterpret_cast<const unsigned char *>(k.data())[c]);
    }
    return out;
}

/// The smoothed plane: 64-bit integers throughout, or single precision.
template <class T>
auto smoothed(const T *src, int srcStep, NoxiSize roi, int channels, const std::vector<LayerTap<T>> &taps, int n) {
    constexpr bool floating = std::is_floating_point_v<T>;
    using S = std::conditional_t<floating, float, long long>;
    const int w = roi.width, h = roi.height, half = n / 2;
    const bool small = n >= w || n >= h;
    constexpr int rowShift = sizeof(T) == 1 ? 8 : 10, columnShift = sizeof(T) == 1 ? 15 : 13;
    std::vector<S> plane(std::size_t(w) * h * channels), filtered(n);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < channels; ++c) {
                for (int r = 0; r < n; ++r) {
                    S sum = 0;
                    for (int k = 0; k < n; ++k) {
                        const S product = S(taps[k]) * S(pixel(src, srcStep, mirrored(x + k - half, w),
                                                               mirrored(y + r - half, h), channels)[c]);
                        if constexpr (floating)
                            sum = k == 0 ? product : sum + product;
                        else
                            sum += small ? product >> rowShift : product;
                    }
                    if constexpr (!floating)
                        sum = small ? sum : sum >> rowShift;
                    filtered[r] = sum;
                }
                S sum = S(taps[0]) * filtered[0];
                for (int r = 1; r < n; ++r)
                    sum += S(taps[r]) * filtered[r];
                if constexpr (!floating) {
                    sum = (sum + (1 << (columnShift - 1))) >> columnShift;
                    if (sizeof(T) == 1)
                        sum = std::clamp(sum, S(-32768), S(32767));
                }
                plane[(std::size_t(y) * w + x) * channels + c] = sum;
            }
    return plane;
}

/// A line of n values resampled to m, in the plane's type.
template <class S>
std::vector<S> resampledLine(const std::vector<S> &v, int m, float rate) {
    std::vector<S> out(m);
    for (int i = 0; i < m; ++i) {
        const float p = float(i) * rate;
        const int q = int(p);
        const float f = p - float(q);
        if (q + 1 >= int(v.size()))
            out[i] = v[q];
        else if constexpr (std::is_floating_point_v<S>)
            out[i] = v[q + 1] * f + v[q] * (1.0F - f);
        else
            out[i] = S(float(v[q + 1]) * f + 0.5F + float(v[q]) * (1.0F - f));
    }
    return out;
}

template <class T>
void layerDown(const T *src, int srcStep, NoxiSize roi, T *dst, int dstStep, NoxiSize dstRoi, int channels,
               const std::vector<LayerTap<T>> &taps, int n, float rate) {
    auto plane = smoothed(src, srcStep, roi, channels, taps, n);
    using S = typename decltype(plane)::value_type;
    const int w = roi.width, h = roi.height;
    const auto at = [&](int x, int y, int c) -> S & { return plane[(std::size_t(y) * w + x) * channels + c]; };
    const bool two = rate >= 1.99998F && rate <= 2.00002F;
    for (int c = 0; c < channels; ++c) {
        std::vector<std::vector<S>> rows;
        for (int y = 0; y < h && !two; ++y) {
            std::vector<S> line(w);
            for (int x = 0; x < w; ++x)
                line[x] = at(x, y, c);
            rows.push_back(resampledLine(line, dstRoi.width, rate));
        }
        for (int x = 0; x < dstRoi.width; ++x) {
            std::vector<S> column(h);
            if (!two) {
                for (int y = 0; y < h; ++y)
                    column[y] = rows[y][x];
                column = resampledLine(column, dstRoi.height, rate);
            }
            for (int y = 0; y < dstRoi.height; ++y) {
                const S value = two ? at(std::min(2 * x, w - 1), std::min(2 * y, h - 1), c) : column[y];
                const auto out = pixel(dst, dstStep, x, y, channels)[c];
                if constexpr (std::is_floating_point_v<T>)
                    out = value;
                else
                    out = T(std::clamp((value + 4) >> 3, S(0), S(std::numeric_limits<T>::max())));
            }
        }
    }
}

/// What sample i adds to the places around it.
struct Spread {
    int whole;
    float fraction;
    Spread(int i, float rate) {
        const float p = float(i) * rate;
        whole = int(p + 100.0F) - 100;
        fraction = p - float(whole);
    }
    bool between() const { return std::fabs(fraction) > FLT_MIN; }
};

/// Calls add(place, t) for every place that a sample reaches, t from the first to the last tap offset.
template <class Tap, class Add>
void forEachPlace(const Spread &s, const std::vector<Tap> &taps, int n, const Add &add) {
    const int half = n / 2;
    int first = s.between() ? -half + 1 : -half, last = half;
    if (!s.between() && taps[0] == Tap(0)) {
        ++first;
        --last;
    }
    for (int t = first; t <= last; ++t)
        add(s.whole + t, t);
}

template <class Tap>
float spreadWeight(const Spread &s, const std::vector<Tap> &taps, int n, int t) {
    const int half = n / 2;
    return float(taps[t - 1 + half]) * s.fraction + float(taps[t + half]) * (1.0F - s.fraction);
}

/// One line of `length` samples (sample(i) for any i) spread over `places`, before the division by the weights.
template <class Sum, class Tap, class Sample>
std::vector<Sum> spreadLine(const Sample &sample, int length, int places, const std::vector<Tap> &taps, int n,
                            float rate) {
    constexpr bool floating = std::is_floating_point_v<Tap>;
    const int reach = int(0.5F + float(n / 2) / rate);
    std::vector<Sum> sums(places, Sum(0));
    for (int i = -reach; i <= length + reach; ++i) {
        const Spread s(i, rate);
        forEachPlace(s, taps, n, [&](int place, int t) {
            if (place < 0 || place >= places)
                return;
            const auto value = sample(i);
            if constexpr (floating) {
                sums[place] += (s.between() ? spreadWeight(s, taps, n, t) : taps[t + n / 2]) * value;
            } else if (s.between()) {
                sums[place] += Sum(std::trunc(spreadWeight(s, taps, n, t) * float(value) + 0.5F));
            } else {
                sums[place] += Sum(taps[t + n / 2]) * Sum(value);
            }
        });
    }
    return sums;
}

/// Scale / weight of every place.
template <class Tap>
std::vector<float> placeWeights(int places, const std::vector<Tap> &taps, int n, float rate, float scale) {
    const int reach = int(0.5F + float(n / 2) / rate);
    std::vector<float> weights(places, 0.0F);
    for (int i = -reach; i <= places + reach; ++i) {
        const Spread s(i, rate);
        forEachPlace(s, taps, n, [&](int place, int t) {
            if (place >= 0 && place < places)
                weights[place] += s.between() ? spreadWeight(s, taps, n, t) : float(taps[t + n / 2]);
        });
    }
    for (float &w : weights)
        if (std::fabs(w) > FLT_MIN)
            w = scale / w;
    return weights;
}

template <class T>
void layerUp(const T *src, int srcStep, NoxiSize roi, T *dst, int dstStep, NoxiSize dstRoi, int channels,
             const std::vector<LayerTap<T>> &taps, int n, float rate) {
    constexpr bool floating = std::is_floating_point_v<T>, byte = sizeof(T) == 1;
    using Sum = std::conditional_t<floating, float, long long>;
    const int places = std::max(dstRoi.width, dstRoi.height), half = n / 2, h = roi.height;
    const auto weights = placeWeights(places, taps, n, rate, floating ? 1.0F : byte ? 32768.0F : 8192.0F);
    for (int c = 0; c < channels; ++c) {
        // Rows of the bordered source, spread and scaled.
        std::vector<std::vector<Sum>> rows;
        for (int y = -half; y < h + half; ++y) {
            const auto sample = [&](int i) {
                return pixel(src, srcStep, mirrored(i, roi.width), mirrored(y, h), channels)[c];
            };
            auto row = spreadLine<Sum>(sample, roi.width, dstRoi.width, taps, n, rate);
            for (int x = 0; x < dstRoi.width; ++x) {
                if constexpr (floating)
                    row[x] = row[x] * weights[x];
                else if (byte)
                    row[x] = (long long)(float(row[x]) * weights[x] + 128.0F) >> 8;
                else
                    row[x] = (long long)(float(row[x]) * weights[x] + 32.0F) >> 6;
            }
            rows.push_back(row);
        }
        for (int x = 0; x < dstRoi.width; ++x) {
            // Samples beyond the bordered copy reach no place of the destination.
            const auto sample = [&](int i) { return rows[std::clamp(i + half, 0, h + 2 * half - 1)][x]; };
            const auto column = spreadLine<Sum>(sample, h, dstRoi.height, taps, n, rate);
            for (int y = 0; y < dstRoi.height; ++y) {
                const auto out = pixel(dst, dstStep, x, y, channels)[c];
                const auto scaled = float(column[y]) * weights[y];
                if constexpr (floating)
                    out = column[y] * weights[y];
                else if (byte)
                    out = T(std::clamp((long long)(scaled + 2097152.0F) >> 22, 0LL, 255LL));
                else
                    out = T(std::clamp(((long long)scaled + 524288) >> 20, 0LL, 65535LL));
            }
        }
    }
}

} // namespace reference::pyrlayer
