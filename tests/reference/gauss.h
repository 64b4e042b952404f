// A plain Gaussian filter in single precision: rows to an image, then columns.
#pragma once

#include <algorithm>
#include <vector>

#include "reference/separable.h"

namespace reference::gauss {

using namespace separable;

/// Correlation of a line whose ends are repeated, product by product.
inline Nox32f correlate(const std::vector<Nox32f> &line, int i, const std::vector<Nox32f> &taps) {
    const int reach = int(taps.size()) / 2;
    Nox32f sum = 0;
    for (int j = 0; j < int(taps.size()); ++j) {
        const Nox32f product =
            line[std::size_t(std::clamp(i + j - reach, 0, int(line.size()) - 1))] * taps[std::size_t(j)];
        sum = j == 0 ? product : sum + product;
    }
    return sum;
}

inline void gauss(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                  const std::vector<Nox32f> &taps) {
    std::vector<Nox32f> line;
    for (int y = 0; y < roi.height; ++y) {
        line.resize(std::size_t(roi.width));
        for (int x = 0; x < roi.width; ++x)
            line[std::size_t(x)] = rowOf(src, srcStep, y)[x];
        for (int x = 0; x < roi.width; ++x)
            rowOf(dst, dstStep, y)[x] = correlate(line, x, taps);
    }
    line.resize(std::size_t(roi.height));
    for (int x = 0; x < roi.width; ++x) {
        for (int y = 0; y < roi.height; ++y)
            line[std::size_t(y)] = rowOf(dst, dstStep, y)[x];
        for (int y = 0; y < roi.height; ++y)
            rowOf(dst, dstStep, y)[x] = correlate(line, y, taps);
    }
}

} // namespace reference::gauss
