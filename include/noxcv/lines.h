/**
 * @file lines.h
 * Straight lines in binary images.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_LINES_H
#define NOXCV_LINES_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Hough line transform
 * Lines rho = x cos(theta) + y sin(theta) through the pixels that are not zero (R. O. Duda, P. E. Hart, "Use of the
 * Hough transformation to detect lines and curves in pictures", 1972). delta holds the steps of rho, in pixels (x), and
 * of theta, in radians (y).
 *
 * Theta runs over 0 to pi / delta.y steps. For each, every pixel votes for one of numRho = (2 * (width + height) + 1) /
 * delta.x cells of rho, rounded half away from zero; rho 0 is cell (numRho - 1) / 2. A cell is a line when its votes
 * are more than threshold, more than in the cell before it and at the angle before, and no fewer than in the cell after
 * it and at the angle after. Votes for a cell outside are lost.
 *
 * lines receives the maxLineCount lines of most votes, most votes first, as (rho, theta), and lineCount their number;
 * of equal ones those of the smaller theta, then of the smaller rho, come first. buffer lies at any address.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadStep (below 1), noxStsBadSize (width, height or maxLineCount below
 * 1), noxStsBadArgument (delta.x not above 0 or above width + height, delta.y not above 0 or above pi, threshold below
 * 1), noxStsBadSize for a buffer that no int tells. On the calling thread.
 * @{
 */
/** Lines through the pixels that are not zero, those of most votes first: 8-bit unsigned to single precision. */
NOX_API NoxStatus noxiHoughLine_8u32f_C1R(const Nox8u *src, int srcStep, NoxiSize roi, NoxiPoint32f delta,
                                          int threshold, NoxiPoint32f *lines, int maxLineCount, int *lineCount,
                                          Nox8u *buffer);
/**
 * Writes to bufferSize the bytes of the work buffer: (4 * width + 32) * height + 16 * maxLineCount + 8 * N + 16 *
 * (numRho + 1) + 176 with N the number of steps of theta.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadArgument (a step that is not above 0), in this order;
 * noxStsBufferSizeWarning for a size beyond 2147483647, whose low 32 bits are stored.
 */
NOX_API NoxStatus noxiHoughLineGetSize_8u_C1R(NoxiSize roi, NoxiPoint32f delta, int maxLineCount, int *bufferSize);
/** @} */

NOX_END_DECLS

#endif
