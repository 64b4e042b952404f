// Sums over the patches of the point tracker: the normal equations and the residual.
#pragma once

#include "noxvopticalflowpatch.h"
#include "sampling/noxvbilinear.h"

namespace nox {

// Integers: row sums are 32-bit and wrap, the total is exact. Floats: a row has four sums in double, of every fourth
// column from the window's first on, joined as (s0 + s2) + (s1 + s3); totals are extended.

/// The sums over a window of ix r and of iy r, where r is the first patch minus the second.
struct Projection {
    long double x, y;
};
/// The second patch of integers is interpolated from its samples on the way.
Projection weightedResiduals(const Patches<Nox16s> &patches, const Window &window, const FixedConstants &weights);
Projection weightedResiduals(const Patches<Nox32f> &patches, const Window &window);

/// The sums over a window of ix ix, ix iy and iy iy.
struct GradientMatrix {
    long double xx = 0, xy = 0, yy = 0;
};
GradientMatrix squaredGradients(const Patches<Nox16s> &patches, const Window &window);
GradientMatrix squaredGradients(const Patches<Nox32f> &patches, const Window &window);

/// The samples of a window: pixels from `image` on, one column and one row more than `size`.
void keepSamples(Rows<const Nox8u> image, const Patches<Nox16s> &patches, NoxiSize size);
/// The window of the second patch, from the samples.
void storeSecond(const Patches<Nox16s> &patches, const Window &window, const FixedConstants &weights);

/// The sum of r r over a window without its last column and row, in single precision, row by row.
Nox32f squaredResidual(const Patches<Nox16s> &patches, const Window &window);
Nox32f squaredResidual(const Patches<Nox32f> &patches, const Window &window);

} // namespace nox
