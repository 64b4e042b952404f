// Eigenvalues of symmetric 2 x 2 matrices, given by planes of their elements.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// dst = (a + c - sqrt(4 b^2 + (a - c)^2)) * (scale / 2); steps are in bytes.
NOX_GLOBAL void calcMinValues(const Nox32f *a, const Nox32f *c, const Nox32f *b, int planeStep, Nox32f *dst,
                              int dstStep, int width, int height, Nox32f scale);
/// Both eigenvalues and their vectors, six floats a pixel; sign is -1 or 1, the sign of b in the vectors.
NOX_GLOBAL void calcValues(const Nox32f *a, const Nox32f *c, const Nox32f *b, int planeStep, Nox32f *dst, int dstStep,
                           int width, int height, Nox32f scale, int sign);
}
