// Sources of distance maps.
#pragma once

#include "reference/distance.h"
#include "support/image.h"

namespace test {

/// One pixel in `rarity` is zero; none if that is 0.
inline reference::distance::Plane<Nox8u> randomSource(NoxiSize size, int rarity, Random &random) {
    reference::distance::Plane<Nox8u> plane(size.width, size.height);
    for (Nox8u &pixel : plane.pixels)
        pixel = rarity != 0 && random() % unsigned(rarity) == 0 ? Nox8u(0) : Nox8u(1 + random() % 255);
    return plane;
}

} // namespace test
