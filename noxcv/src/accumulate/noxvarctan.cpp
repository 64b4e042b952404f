// Fast arctangent: a quadratic in min / max of the two lengths, turned into the right octant.
#include <bit>

#include "checks.h"
#include "noxcv/accumulate.h"

#define NOX_KERNELS "accumulate/noxvarctan.inc"
#include "noxveachtier.h"

NoxStatus noxibFastArctan_32f(const Nox32f *y, const Nox32f *x, Nox32f *dst, int length) {
    const NoxStatus status = nox::firstFailure(nox::checkPointers(y, x, dst), nox::checkLength(length));
    if (status == noxStsNoError)
        NOX_ON_TIER(arctan(y, x, dst, length));
    return status;
}
