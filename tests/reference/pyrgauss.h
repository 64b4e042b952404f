// Gaussian sampling by two, straight from the definition: every filtered value is formed anew.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::pyrgauss {

/// Sums: exact integers, or single precision from left to right.
template <class T>
using PyrSum = std::conditional_t<std::is_floating_point_v<T>, float, int>;

/// Reflection that does not repeat the edge.
inline int mirrored(int i, int n) {
    if (n == 1)
        return 0;
    while (i < 0 || i >= n)
        i = i < 0 ? -i : 2 * (n - 1) - i;
    return i;
}

template <class T>
test::Run<T> pixel(T *image, int step, int x, int y, int channels) {
    return test::rowAt(image, step, y) + x * channels;
}

/// The down filter at position 2i of a line of n samples given by s(k).
template <class S, class Sample>
S downFilter(const Sample &sample, int i, int n) {
    const auto s = [&](int k) { return S(sample(mirrored(k, n))); };
    const int x = 2 * i;
    if (x == 0)
        return 6 * s(0) + 8 * s(1) + 2 * s(2);
    if (x == n - 1)
        return 6 * s(x) + 8 * s(x - 1) + 2 * s(x - 2);
    if (x == n - 2)
        return s(x - 2) + 4 * (s(x - 1) + s(x + 1)) + 7 * s(x);
    return s(x - 2) + 4 * (s(x - 1) + s(x + 1)) + 6 * s(x) + s(x + 2);
}

template <class T>
void pyrDown(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels) {
    using S = PyrSum<T>;
    const int w = roi.width, h = roi.height;
    for (int j = 0; j < (h + 1) / 2; ++j)
        for (int i = 0; i < (w + 1) / 2; ++i)
            for (int c = 0; c < channels; ++c) {
                const auto row = [&](int y) {
                    return downFilter<S>([&](int x) { return pixel(src, srcStep, x, mirrored(y, h), channels)[c]; }, i,
                                         w);
                };
                const auto column = [&](int x) {
                    return downFilter<S>([&](int y) { return pixel(src, srcStep, x, y, channels)[c]; }, j, h);
                };
                S sum;
                if (h < 3)
                    sum = (row(0) + row(h - 1)) * 8;
                else if (w <= 2)
                    sum = (column(0) + column(w - 1)) * 8;
                else
                    sum = 6 * row(2 * j) + 4 * (row(2 * j - 1) + row(2 * j + 1)) + row(2 * j - 2) + row(2 * j + 2);
                const auto out = pixel(dst, dstStep, i, j, channels)[c];
                if constexpr (std::is_floating_point_v<T>)
                    out = sum * 0.00390625F;
                else
                    out = static_cast<T>((sum + 128) >> 8);
            }
}

/// The up filter at place x of 2n places.
template <class S, class Sample>
S upFilter(const Sample &sample, int x, int n) {
    const auto s = [&](int k) { return S(sample(k)); };
    const int i = x / 2;
    if (n == 1)
        return 8 * s(0);
    if (x % 2 == 0) {
        if (i == 0)
            return 2 * (3 * s(0) + s(1));
        return i == n - 1 ? s(i - 1) + 7 * s(i) : s(i - 1) + 6 * s(i) + s(i + 1);
    }
    return i == n - 1 ? 8 * s(i) : 4 * (s(i) + s(i + 1));
}

template <class T>
void pyrUp(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels) {
    using S = PyrSum<T>;
    const int w = roi.width, h = roi.height;
    for (int y = 0; y < 2 * h; ++y)
        for (int x = 0; x < 2 * w; ++x)
            for (int c = 0; c < channels; ++c) {
                const auto row = [&](int k) {
                    const int from = k == -1 ? (h > 1 ? 1 : 0) : k == h ? h - 1 : k;
                    return upFilter<S>([&](int i) { return pixel(src, srcStep, i, from, channels)[c]; }, x, w);
                };
                const int i = y / 2;
                S sum;
                if (h == 1)
                    sum = 8 * row(0);
                else if (y % 2 == 0)
                    sum = row(i - 1) + 6 * row(i) + row(i + 1);
                else
                    sum = 4 * (row(i) + row(i + 1));
                const auto out = pixel(dst, dstStep, x, y, channels)[c];
                if constexpr (std::is_floating_point_v<T>)
                    out = sum * 0.015625F;
                else
                    out = static_cast<T>((sum + 32) >> 6);
            }
}

} // namespace reference::pyrgauss
