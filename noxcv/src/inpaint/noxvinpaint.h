// What an inpainting state holds beside its public record.
#pragma once

#include <cmath>
#include <cstddef>

#include "noxcv/inpaint.h"

namespace nox {

/// A pixel of the disc about the pixel that is being filled. Offsets lead from that pixel to the neighbour.
struct InpaintNeighbour {
    Nox32s dx, dy; ///< the way from the neighbour to the pixel
    Nox32f weight;
    Nox32s maskOffset;        ///< bytes
    Nox32s distanceOffset;    ///< elements
    Nox32s gradientOffset;    ///< elements, for the channels of the state
    std::ptrdiff_t dstOffset; ///< bytes in the caller's image, set by each call
};
static_assert(sizeof(void *) != 4 || (sizeof(InpaintNeighbour) == 28 && sizeof(NoxiInpaintState) == 104));

/// The two ways to weigh neighbours.
enum InpaintMethod { alongDistanceGradient = 0, alongIsophote = 1 };

/// How much a neighbour counts for its distance alone.
inline Nox32f nearness(int method, Nox32f squaredDistance) {
    const Nox32f d = std::sqrt(squaredDistance);
    return method == alongDistanceGradient ? 1.0F / (squaredDistance * d)
                                           : 1.0F / ((squaredDistance * squaredDistance + 1.0F) * d);
}

} // namespace nox
