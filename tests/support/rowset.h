// Rows given by pointers, as the row and column pipelines take them.
#pragma once

#include <vector>

#include "support/image.h"

namespace test {

/// The rows of an image in an order of their own: row y of the set is row (y * stride) modulo the height of the image.
template <class T>
std::vector<T *> shuffledRows(const Image<T> &image, int stride = 1) {
    std::vector<T *> rows;
    for (int y = 0; y < image.height(); ++y)
        rows.push_back(image.row(int((long long)y * stride % image.height())));
    return rows;
}

/// Turns zeros of either sign into +0: filters may give either.
inline Image<Nox32f> &unsignZeros(Image<Nox32f> &image) {
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width() * image.channels(); ++x)
            image.row(y)[x] += 0.0F;
    return image;
}
template <class T>
Image<T> &unsignZeros(Image<T> &image) {
    return image;
}

} // namespace test
