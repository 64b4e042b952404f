// Plain border filters: whole images of row results, with the rows above and below the image, then columns.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "reference/separable.h"

namespace reference::filterborder {

using namespace separable;

/// A fixed filter by the taps of its rows and columns. Row taps serve the constant border, too.
struct FilterTaps {
    std::vector<int> row, column;
};

enum class Filter {
    sobelHoriz,
    sobelVert,
    sobelNegVert,
    sobelHorizSecond,
    sobelVertSecond,
    sobelCross,
    scharrHoriz,
    scharrVert,
    lowpass,
    laplacian
};

inline FilterTaps tapsOf(Filter filter, int size) {
    const bool three = size == 3;
    const std::vector<int> smooth = three ? std::vector{1, 2, 1} : std::vector{1, 4, 6, 4, 1};
    const std::vector<int> dx = three ? std::vector{-1, 0, 1} : std::vector{-1, -2, 0, 2, 1};
    const std::vector<int> negative = three ? std::vector{1, 0, -1} : std::vector{1, 2, 0, -2, -1};
    const std::vector<int> second = three ? std::vector{1, -2, 1} : std::vector{1, 0, -2, 0, 1};
    const std::vector<int> minus = three ? std::vector{-1, -2, -1} : std::vector{-1, -4, -6, -4, -1};
    switch (filter) {
    case Filter::sobelHoriz:
        return {smooth, dx};
    case Filter::sobelVert:
        return {negative, smooth};
    case Filter::sobelNegVert:
        return {negative, minus};
    case Filter::sobelHorizSecond:
        return {smooth, second};
    case Filter::sobelVertSecond:
        return {second, smooth};
    case Filter::sobelCross:
        return {negative, dx};
    case Filter::scharrHoriz:
        return {{3, 10, 3}, {-1, 0, 1}};
    case Filter::scharrVert:
        return {{-1, 0, 1}, {3, 10, 3}};
    default:
        return {std::vector<int>(std::size_t(size), 1), std::vector<int>(std::size_t(size), 1)};
    }
}

/// Row results of an image, for rows -size/2 to height - 1 + size/2, one behind the other. Mid is int or Nox32f, whose
/// sums are formed in extended precision and rounded once.
template <class Mid, class T>
std::vector<Mid> filteredRows(const T *src, int srcStep, NoxiSize roi, const std::vector<int> &taps, int borderType,
                              T value) {
    using Sum = std::conditional_t<std::is_floating_point_v<T>, long double, int>;
    const int size = int(taps.size()), reach = size / 2;
    std::vector<Mid> rows(std::size_t(roi.width) * std::size_t(roi.height + 2 * reach));
    std::vector<T> line;
    Mid *to = rows.data();
    for (int y = -reach; y < roi.height + reach; ++y) {
        const int index = walk(y, roi.height, borderType);
        if (index < 0) {
            int weight = 0;
            for (const int tap : taps)
                weight += tap;
            to = std::fill_n(to, roi.width, static_cast<Mid>(weight * value));
            continue;
        }
        extendRow(rowOf(src, srcStep, index), roi.width, 1, reach, reach, borderType, &value, line);
        for (int x = 0; x < roi.width; ++x) {
            Sum sum = 0;
            // A tap of 0 reads nothing.
            for (int j = 0; j < size; ++j)
                if (taps[std::size_t(j)] != 0)
                    sum += static_cast<Sum>(line[std::size_t(x + j)]) * taps[std::size_t(j)];
            *to++ = static_cast<Mid>(sum);
        }
    }
    return rows;
}

/// out(x, y, sum) for the column sums of those rows.
template <class Sum, class Mid, class Output>
void filteredColumns(const std::vector<Mid> &rows, NoxiSize roi, const std::vector<int> &taps, const Output &out) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            Sum sum = 0;
            for (std::size_t j = 0; j < taps.size(); ++j)
                if (taps[j] != 0)
                    sum += static_cast<Sum>(rows[(y + j) * std::size_t(roi.width) + std::size_t(x)]) * taps[j];
            out(x, y, sum);
        }
}

/// The value of an 8-bit filter before any division: all filters but the low-pass one.
template <class Output>
void filter8u(Filter filter, int size, const Nox8u *src, int srcStep, NoxiSize roi, int borderType, Nox8u value,
              const Output &out) {
    if (filter == Filter::laplacian) {
        // Size 3: 2 (up and down of the outer pixels) - 8 of the middle. Size 5: two second derivatives.
        std::vector<int> image(std::size_t(roi.width) * roi.height);
        const auto add = [&](const std::vector<int> &row, const std::vector<int> &column) {
            filteredColumns<int>(filteredRows<int>(src, srcStep, roi, row, borderType, value), roi, column,
                                 [&](int x, int y, int sum) { image[std::size_t(y) * roi.width + x] += sum; });
        };
        if (size == 3) {
            add({1, 0, 1}, {2, 0, 2});
            add({0, 8, 0}, {0, -1, 0});
        } else {
            add(tapsOf(Filter::sobelHorizSecond, 5).row, tapsOf(Filter::sobelHorizSecond, 5).column);
            add(tapsOf(Filter::sobelVertSecond, 5).row, tapsOf(Filter::sobelVertSecond, 5).column);
        }
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                out(x, y, image[std::size_t(y) * roi.width + x]);
        return;
    }
    const FilterTaps taps = tapsOf(filter, size);
    filteredColumns<int>(filteredRows<int>(src, srcStep, roi, taps.row, borderType, value), roi, taps.column, out);
}

inline void filter8u16s(Filter filter, int size, const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, NoxiSize roi,
                        int borderType, Nox8u value) {
    filter8u(filter, size, src, srcStep, roi, borderType, value, [&](int x, int y, int sum) {
        rowOf(dst, dstStep, y)[x] = static_cast<Nox16s>(static_cast<std::uint16_t>(sum));
    });
}

inline void filter8u8s(Filter filter, int size, const Nox8u *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                       int borderType, Nox8u value, int divisor) {
    const ClampedQuotient<Nox8s> quotient(divisor);
    const Nox32f factor = 1.0F / Nox32f(divisor);
    filter8u(filter, size, src, srcStep, roi, borderType, value, [&](int x, int y, int sum) {
        const auto result = rowOf(dst, dstStep, y)[x];
        if (filter == Filter::laplacian && size == 5) {
            const Nox32f scaled = Nox32f(sum) * factor;
            result = static_cast<Nox8s>(scaled < -128 ? -128 : scaled > 127 ? 127 : static_cast<int>(scaled));
        } else {
            result = quotient(sum);
        }
    });
}

inline void lowpass8u(int size, const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, int borderType,
                      Nox8u value) {
    filter8u(Filter::lowpass, size, src, srcStep, roi, borderType, value, [&](int x, int y, int sum) {
        const int mean = size == 3 ? (sum * 7280 + 36400) >> 16 : (sum * 2621) >> 16;
        rowOf(dst, dstStep, y)[x] = static_cast<Nox8u>(mean < 0 ? 0 : mean > 255 ? 255 : mean);
    });
}

/// The column formulas of single precision, in the order in which they are evaluated.
inline long double column32f(Filter filter, int size, const long double *r) {
    switch (filter) {
    case Filter::scharrHoriz:
        return r[2] - r[0];
    case Filter::sobelHoriz:
    case Filter::sobelCross:
        return size == 3 ? r[2] - r[0] : r[4] - r[0] + 2 * (r[3] - r[1]);
    case Filter::sobelHorizSecond:
        return size == 3 ? r[0] - 2 * r[1] + r[2] : r[0] - 2 * r[2] + r[4];
    case Filter::scharrVert:
        return 3 * (r[0] + r[2]) + 10 * r[1];
    case Filter::lowpass:
        return size == 3 ? (r[0] + r[1] + r[2]) * 0.11111111F : (r[0] + r[1] + r[2] + r[3] + r[4]) * 0.04F;
    default: {
        const long double smooth = size == 3 ? r[0] + 2 * r[1] + r[2] : r[0] + 4 * r[1] + 6 * r[2] + 4 * r[3] + r[4];
        return filter == Filter::sobelNegVert ? -smooth : smooth;
    }
    }
}

inline void columns32f(Filter filter, int size, const std::vector<Nox32f> &rows, Nox32f *dst, int dstStep, NoxiSize roi,
                       bool adds) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            long double r[5] = {};
            for (int j = 0; j < size; ++j)
                r[j] = rows[std::size_t(y + j) * roi.width + x];
            const auto result = rowOf(dst, dstStep, y)[x];
            const long double sum = column32f(filter, size, r);
            result = static_cast<Nox32f>(adds ? sum + result : sum);
        }
}

inline void filter32f(Filter filter, int size, const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                      int borderType, Nox32f value) {
    const auto rows = [&](const std::vector<int> &taps) {
        return filteredRows<Nox32f>(src, srcStep, roi, taps, borderType, value);
    };
    if (filter == Filter::scharrHoriz) {
        // The row's sum is 3 (a + c) + 10 b.
        std::vector<Nox32f> sums;
        std::vector<Nox32f> line;
        for (int y = -1; y <= roi.height; ++y) {
            const int index = walk(y, roi.height, borderType);
            if (index < 0) {
                sums.insert(sums.end(), std::size_t(roi.width), 16 * value);
                continue;
            }
            extendRow(rowOf(src, srcStep, index), roi.width, 1, 1, 1, borderType, &value, line);
            for (int x = 0; x < roi.width; ++x)
                sums.push_back(static_cast<Nox32f>(3 * (static_cast<long double>(line[x]) + line[x + 2]) +
                                                   10 * static_cast<long double>(line[x + 1])));
        }
        columns32f(filter, size, sums, dst, dstStep, roi, false);
    } else if (filter == Filter::laplacian && size == 3) {
        const auto outer = rows({1, 0, 1}), middle = rows({0, 8, 0});
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                const auto at = [&](const std::vector<Nox32f> &image, int row) -> long double {
                    return image[std::size_t(row) * roi.width + x];
                };
                rowOf(dst, dstStep, y)[x] =
                    static_cast<Nox32f>(2 * (at(outer, y) + at(outer, y + 2)) - at(middle, y + 1));
            }
    } else if (filter == Filter::laplacian) {
        columns32f(Filter::sobelHorizSecond, 5, rows(tapsOf(Filter::sobelHorizSecond, 5).row), dst, dstStep, roi,
                   false);
        columns32f(Filter::sobelVertSecond, 5, rows(tapsOf(Filter::sobelVertSecond, 5).row), dst, dstStep, roi, true);
    } else {
        columns32f(filter, size, rows(tapsOf(filter, size).row), dst, dstStep, roi, false);
    }
}

} // namespace reference::filterborder
