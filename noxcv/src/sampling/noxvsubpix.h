// Patches around a real-valued point.
#pragma once

#include "noxcv/sampling.h"
#include "noxtypes.h"
#include "tiers.h"

extern "C" {

/// @name The inner part of a patch
/// As noxiCopySubpixIntersect of the same types, but only the cells from min to max are written, and nothing is
/// checked. Cells whose neighbours lie outside the source are left as they are; if min is above max in either direction
/// that is all of them. Always noxStsNoError.
/// @{
NOX_GLOBAL NoxStatus ownGetRectSubpix_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                             NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max);
NOX_GLOBAL NoxStatus ownGetRectSubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                                    int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                    NoxiPoint *max, int scaleFactor);
NOX_GLOBAL NoxStatus ownGetRectSubpix_16u_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst, int dstStep,
                                              NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max);
NOX_GLOBAL NoxStatus ownGetRectSubpix_16u32f_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                 int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                 NoxiPoint *max);
NOX_GLOBAL NoxStatus ownGetRectSubpix_32f_C1R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst, int dstStep,
                                              NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max);
/// @}
}

namespace nox {

/// Where a patch lies along one axis. Cells min to max have two neighbours in the source; cell min is sample start.
struct PatchAxis {
    int length, min, max, start;
    float fraction;

    int inner() const { return max - min + 1; }
    /// The sample of a cell from min to max.
    int sample(int cell) const { return start + cell - min; }
};

/// n cells around `centre` over s samples. The first cell's place is single precision, its floor is exact.
PatchAxis placeAxis(float centre, int n, int s);

} // namespace nox
