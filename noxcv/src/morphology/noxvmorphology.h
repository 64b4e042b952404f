// States of erosion and dilation: how a mask is classified, and the routine that all builders are.
#pragma once

#include "noxcv/morphology.h"
#include "tiers.h"

namespace nox {

/// What a mask is, and so which way it is eroded.
enum KernelKind { generalKernel = 0, rectangleKernel = 1, ellipseKernel = 2, emptyKernel = 3 };

/// Data types of states.
enum { type8u = 1, type32f = 13 };

/// What ownMorphologyInitAlloc does.
enum MorphologyMode {
    measureState = 0,  ///< output: int, gets the size
    buildInPlace = 1,  ///< output: memory of the caller's
    allocateState = 2, ///< output: NoxiMorphState *, gets a block from noxsMalloc_8u
};

/// As ownMorphologyInitAlloc; with anchorOutside every mask but a rectangle goes the general way.
NoxStatus buildMorphology(int dataType, int channels, int roiWidth, const Nox8u *mask, NoxiSize maskSize,
                          NoxiPoint anchor, void *output, int mode, bool anchorOutside);

} // namespace nox

extern "C" {

/// Classifies a mask and measures, builds or allocates and builds its state. All members come here.
NOX_GLOBAL NoxStatus ownMorphologyInitAlloc(int dataType, int channels, int roiWidth, const Nox8u *mask,
                                            NoxiSize maskSize, NoxiPoint anchor, void *output, int mode);

/// @name Row kernels of general masks
/// One output row: the winner of the set cells of a mask, whose top left cell lies on src. `table` is a state's
/// erodeTable or dilateTable. For 32f the cells' values are first limited by the table's: minus infinity and a
/// not-a-number become the lowest finite number in erosion, infinity and a not-a-number the highest in dilation.
/// @{
NOX_GLOBAL void Erode_8u_C1S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                             int maskHeight);
NOX_GLOBAL void Erode_8u_C3S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                             int maskHeight);
NOX_GLOBAL void Erode_8u_C4S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                             int maskHeight);
NOX_GLOBAL void Erode_32f_C1S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                              int maskWidth, int maskHeight);
NOX_GLOBAL void Erode_32f_C3S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                              int maskWidth, int maskHeight);
NOX_GLOBAL void Erode_32f_C4S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                              int maskWidth, int maskHeight);
NOX_GLOBAL void Dilate_8u_C1S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                              int maskHeight);
NOX_GLOBAL void Dilate_8u_C3S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                              int maskHeight);
NOX_GLOBAL void Dilate_8u_C4S(const Nox8u *src, int srcStep, Nox8u *dst, int width, const Nox8u *table, int maskWidth,
                              int maskHeight);
NOX_GLOBAL void Dilate_32f_C1S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                               int maskWidth, int maskHeight);
NOX_GLOBAL void Dilate_32f_C3S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                               int maskWidth, int maskHeight);
NOX_GLOBAL void Dilate_32f_C4S(const Nox32f *src, int srcStep, Nox32f *dst, int width, const Nox32f *table,
                               int maskWidth, int maskHeight);
/// @}
}
