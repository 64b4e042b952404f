// The walk along a straight segment.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {

/// State of the walk (J. Bresenham, 1965). A step goes by minusStep along the main axis, and by plusStep along the
/// other one when the error turns negative. The deltas are twice the lengths, which takes all 32 bits of them for a
/// segment of 2^30 pixels and more.
typedef struct {
    Nox8u *ptr;     ///< current pixel
    int err;        ///< error before the step
    int plusDelta;  ///< twice the length along the main axis
    int minusDelta; ///< twice the length along the other one
    int plusStep;   ///< bytes to the next pixel along the other axis
    int minusStep;  ///< bytes to the next pixel along the main axis
} NoxvLineIterator;

/// Sets out from (x1, y1) to (x2, y2), both included, and returns the number of pixels. The main axis is that of the
/// greater distance, y if both are the same. step and pixelSize are in bytes.
NOX_GLOBAL int _noxvInitLineIterator(const void *image, int step, int pixelSize, int x1, int y1, int x2, int y2,
                                     NoxvLineIterator *iterator);
}
