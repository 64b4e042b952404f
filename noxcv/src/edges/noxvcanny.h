// The edge detector's second stage: edges grow from strong pixels over the thinned candidates.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// Pops `count` (row, column) pairs from the stack and marks every candidate that is 8-connected to one of them: 255 in
/// dst. `map` points to the first byte of the candidate map with its border of one pixel (pitch width + 2); a candidate
/// has its top bit set. The stack needs room for one pair a candidate.
NOX_GLOBAL void ownHysteresisThresholding_16u(const Nox8u *map, Nox16u *stack, int count, int width, int height,
                                              Nox8u *dst, int dstStep);
/// The same with wide pairs, for images of 65533 rows or columns and more.
NOX_GLOBAL void ownHysteresisThresholding_32s(const Nox8u *map, Nox32s *stack, int count, int width, int height,
                                              Nox8u *dst, int dstStep);
}
