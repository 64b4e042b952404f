/**
 * @file sampling.h
 * Sampling and geometry: sub-pixel copies, line samples, radial undistortion.
 */
#ifndef NOXCV_SAMPLING_H
#define NOXCV_SAMPLING_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Sub-pixel shift
 * Shifts a one-channel image by a fraction of a pixel with bilinear interpolation:
 *
 *     dst(x, y) = (1 - ax) (1 - ay) src(x, y)     + ax (1 - ay) src(x + 1, y)
 *               + (1 - ax) ay       src(x, y + 1) + ax ay       src(x + 1, y + 1)
 *
 * ax and ay are the fractional parts of dx and dy, in 0 to 1 (dx -0.25 acts as 0.75; a value that is not finite acts as
 * 0); the whole part is the caller's to put into src. **One column to the right of roi and one row below it are read**,
 * for every dx and dy. dst and the pixels read may not overlap.
 *
 * - Nox8u and Nox8u to Nox16u: ax and ay are rounded to multiples of 2^-14, each product of two weights is floor(16384
 * w
 *   + 1) / 16384, and so at fraction 0 the weights are 16385, 1, 1 and 1 over 16384. The sum is rounded half up.
 * - Nox16u: ax, ay and the products are rounded half up to multiples of 2^-15, and so is the result; it saturates.
 * - 8u16u: the result is the sum times 2^-scaleFactor, rounded half up and saturated. scaleFactor is taken modulo 32,
 *   from -13 to 17; one of 18 (or -14) gives 0 everywhere.
 * - Nox32f results: in single precision, with ax at least 1e-06, which gives the values along a row by a recurrence:
 * with g(x) = src(x + 1, y) (ax (1 - ay)) + src(x + 1, y + 1) (ax ay), dst(x, y) is g(x - 1) ((1 - ax) / ax) + g(x),
 * and dst(0, y) is src(0, y) ((1 - ax) (1 - ay)) + src(0, y + 1) ((1 - ax) ay) + g(0).
 *
 * Status, in this order: noxStsNullPointer (src, dst), noxStsBadSize, noxStsBadStep (each image by its own width in
 * bytes; the column beyond roi is not counted), noxStsOddStep (images of 16u and 32f).
 * @{
 */
NOX_API NoxStatus noxiCopySubpix_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, Nox32f dx,
                                        Nox32f dy);
NOX_API NoxStatus noxiCopySubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                               Nox32f dx, Nox32f dy, int scaleFactor);
NOX_API NoxStatus noxiCopySubpix_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                         Nox32f dx, Nox32f dy);
NOX_API NoxStatus noxiCopySubpix_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                           Nox32f dx, Nox32f dy);
NOX_API NoxStatus noxiCopySubpix_16u32f_C1R(const Nox16u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                            Nox32f dx, Nox32f dy);
NOX_API NoxStatus noxiCopySubpix_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                         Nox32f dx, Nox32f dy);
/** @} */

/**
 * @name Patch around a point
 * Cuts a patch of dstRoi cells, centred on a real-valued point of the source, with bilinear interpolation; the source's
 * edge pixels are repeated outside. Cell (u, v) is the sample at
 *
 *     (point.x - (dstRoi.width - 1) / 2 + u, point.y - (dstRoi.height - 1) / 2 + v)
 *
 * All cells of a patch have the same fraction, and with it the same weights. Cells from min to max, both included, have
 * all four neighbours inside the source. Beside them the fraction stays in force along the other axis: left and right
 * of them the first or last column is interpolated between two rows, above and below the first or last row between two
 * columns. Nothing outside srcRoi is read.
 *
 * Per axis, with n cells and s source samples: a patch that begins before the source by m samples has min m, at most n;
 * max is n - 1, or where the source ends before, the last cell with two neighbours, which is min - 1 if there is none.
 * A patch that begins at or beyond the source's end, and one whose coordinate is not a number, has min 0 and max -1 and
 * repeats the last sample. A coordinate that is not finite has fraction 0.
 *
 * - Nox8u, 8u16u and Nox16u: weights, rounding and scaleFactor as in the shift above. Outside the four-point cells
 * weights are those of the two-row or two-column sum: the sums of two weights, or the axis' own.
 * - Nox32f results: single precision, weights (1 - ax) (1 - ay) and so on with the plain fraction, summed in the order
 * of the shift's formula; fraction 0 copies.
 *
 * Status, in this order: noxStsNullPointer (src, dst, min, max), noxStsBadSize (either size), noxStsBadStep (src by
 * srcRoi, dst by dstRoi), noxStsOddStep (images of 16u and 32f).
 * @{
 */
NOX_API NoxStatus noxiCopySubpixIntersect_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst,
                                                 int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                 NoxiPoint *max);
NOX_API NoxStatus noxiCopySubpixIntersect_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                                        int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                                                        NoxiPoint *min, NoxiPoint *max, int scaleFactor);
NOX_API NoxStatus noxiCopySubpixIntersect_16u_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                                  int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                  NoxiPoint *max);
NOX_API NoxStatus noxiCopySubpixIntersect_8u32f_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                    int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                    NoxiPoint *max);
NOX_API NoxStatus noxiCopySubpixIntersect_16u32f_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                     int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                     NoxiPoint *max);
NOX_API NoxStatus noxiCopySubpixIntersect_32f_C1R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                  int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                  NoxiPoint *max);
/** @} */

NOX_END_DECLS

#endif
