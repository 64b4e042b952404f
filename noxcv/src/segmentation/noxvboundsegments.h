// Boundaries between labels where a cost decides which side gets them.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {

/// Marks, in place, one pixel of each pair of neighbours with different labels, neither of which is `value`: the one of
/// larger cost, of equal costs the later one. Pairs are taken pixel by pixel in raster order (with the pixel above, the
/// one on the right and, for norm 0, the ones above left and above right; in the first row with the right one only),
/// and each sees what earlier ones have marked. Norm 1: 4 neighbours, otherwise 8. Always noxStsNoError.
NOX_GLOBAL NoxStatus ownBoundSegments_8u_C1IR(Nox8u *markers, int markerStep, const Nox32s *cost, int costStep,
                                              int width, int height, Nox8u value, int norm);
}
