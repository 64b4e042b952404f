// Masks for tests.
#pragma once

#include "support/image.h"

namespace test {

/// Zero in about a third of the pixels, any other byte elsewhere.
inline Image<Nox8u> randomMask(NoxiSize size, Random &random, int padding = 0) {
    Image<Nox8u> mask(size.width, size.height, 1, padding);
    mask.generate([&](int, int, int) { return random() % 3 == 0 ? 0 : 1 + random() % 255; });
    return mask;
}

/// A mask of one byte value.
inline Image<Nox8u> flatMask(NoxiSize size, Nox8u value) {
    Image<Nox8u> mask(size.width, size.height);
    mask.fill(value);
    return mask;
}

} // namespace test
