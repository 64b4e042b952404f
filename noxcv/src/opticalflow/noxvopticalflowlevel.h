// What the point tracker reads: levels of pyramids.
#pragma once

#include <type_traits>

#include "checks.h"
#include "noxcv/opticalflow.h"

namespace nox {

/// Patches of 8-bit images are integers with 7 fractional bits, all others floats.
template <class T>
using FlowCell = std::conditional_t<std::is_same_v<T, Nox8u>, Nox16s, Nox32f>;

/// One level of a pyramid. It is usable when the caller has put an image of sound steps there.
template <class T>
struct FlowLevel {
    const T *image;
    int step;
    NoxiSize size;

    FlowLevel(const NoxiPyramid &pyramid, int level)
        : image(reinterpret_cast<const T *>(pyramid.images[level])), step(pyramid.steps[level]),
          size(pyramid.sizes[level]) {}
    bool usable() const {
        return firstFailure(checkPointers(image), checkSize(size), checkStep<T>(step, size.width),
                            checkEvenSteps<T>(step)) == noxStsNoError;
    }
};

} // namespace nox
