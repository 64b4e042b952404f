/**
 * @file sampling.h
 * Sampling and geometry: sub-pixel copies, line samples, radial undistortion.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
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
 * - Nox8u and Nox8u to Nox16u: ax and ay are rounded to multiples of 2^-14, each product w of two weights
 *   becomes floor(16384 w + 1) / 16384, and so at fraction 0 the weights are 16385, 1, 1 and 1 over 16384. The sum is
 *   rounded half up.
 * - Nox16u: ax, ay and the products are rounded half up to multiples of 2^-15, and so is the result; it saturates.
 * - 8u16u: the result is the sum times 2^-scaleFactor, rounded half up and saturated. scaleFactor is taken modulo 32,
 *   from -13 to 17; one of 18 (or -14) gives 0 everywhere.
 * - Nox32f results: in single precision, with ax at least 1e-06, which gives the values along a row by a recurrence:
 *   with g(x) = src(x + 1, y) (ax (1 - ay)) + src(x + 1, y + 1) (ax ay), dst(x, y) is g(x - 1) ((1 - ax) / ax) + g(x),
 *   and dst(0, y) is src(0, y) ((1 - ax) (1 - ay)) + src(0, y + 1) ((1 - ax) ay) + g(0).
 *
 * Status, in this order: noxStsNullPointer (src, dst), noxStsBadSize, noxStsBadStep (each image by its own width in
 * bytes; the column beyond roi is not counted), noxStsOddStep (images of 16u and 32f).
 * @{
 */
/** Image shifted by a fraction of a pixel: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopySubpix_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, Nox32f dx,
                                        Nox32f dy);
/** Image shifted by a fraction of a pixel: 8-bit to 16-bit unsigned, one channel, scaled by 2^-scaleFactor. */
NOX_API NoxStatus noxiCopySubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                               Nox32f dx, Nox32f dy, int scaleFactor);
/** Image shifted by a fraction of a pixel: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopySubpix_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                         Nox32f dx, Nox32f dy);
/** Image shifted by a fraction of a pixel: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiCopySubpix_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                           Nox32f dx, Nox32f dy);
/** Image shifted by a fraction of a pixel: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiCopySubpix_16u32f_C1R(const Nox16u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                            Nox32f dx, Nox32f dy);
/** Image shifted by a fraction of a pixel: single precision, one channel. */
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
 *   weights are those of the two-row or two-column sum: the sums of two weights, or the axis' own.
 * - Nox32f results: single precision, weights (1 - ax) (1 - ay) and so on with the plain fraction, summed in the order
 *   of the shift's formula; fraction 0 copies.
 *
 * Status, in this order: noxStsNullPointer (src, dst, min, max), noxStsBadSize (either size), noxStsBadStep (src by
 * srcRoi, dst by dstRoi), noxStsOddStep (images of 16u and 32f).
 * @{
 */
/** Patch around a point: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopySubpixIntersect_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst,
                                                 int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                 NoxiPoint *max);
/** Patch around a point: 8-bit to 16-bit unsigned, one channel, scaled by 2^-scaleFactor. */
NOX_API NoxStatus noxiCopySubpixIntersect_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                                        int dstStep, NoxiSize dstRoi, NoxiPoint32f point,
                                                        NoxiPoint *min, NoxiPoint *max, int scaleFactor);
/** Patch around a point: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopySubpixIntersect_16u_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                                  int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                  NoxiPoint *max);
/** Patch around a point: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiCopySubpixIntersect_8u32f_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                    int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                    NoxiPoint *max);
/** Patch around a point: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiCopySubpixIntersect_16u32f_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                     int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                     NoxiPoint *max);
/** Patch around a point: single precision, one channel. */
NOX_API NoxStatus noxiCopySubpixIntersect_32f_C1R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                                  int dstStep, NoxiSize dstRoi, NoxiPoint32f point, NoxiPoint *min,
                                                  NoxiPoint *max);
/** @} */

/**
 * @name Pixels along a line
 * Copies the pixels of a straight segment from pt1 to pt2, both included, to dst, one after the other (J. Bresenham,
 * "Algorithm for computer control of a digital plotter", 1965). There are max(|pt2.x - pt1.x|, |pt2.y - pt1.y|) + 1 of
 * them, and dst must hold as many, of one or three elements each. The walk takes one step along its main axis for each
 * pixel; that is the axis of the greater distance, y if both are the same.
 *
 * Status, in this order: noxStsNullPointer (src, dst), noxStsBadSize, noxStsBadStep, noxStsOddStep (16u, 32f),
 * noxStsOutOfRange (an end point outside roi).
 * @{
 */
/** Pixels along a line: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiSampleLine_8u_C1R(const Nox8u *src, int srcStep, NoxiSize roi, Nox8u *dst, NoxiPoint pt1,
                                        NoxiPoint pt2);
/** Pixels along a line: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiSampleLine_8u_C3R(const Nox8u *src, int srcStep, NoxiSize roi, Nox8u *dst, NoxiPoint pt1,
                                        NoxiPoint pt2);
/** Pixels along a line: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiSampleLine_16u_C1R(const Nox16u *src, int srcStep, NoxiSize roi, Nox16u *dst, NoxiPoint pt1,
                                         NoxiPoint pt2);
/** Pixels along a line: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiSampleLine_16u_C3R(const Nox16u *src, int srcStep, NoxiSize roi, Nox16u *dst, NoxiPoint pt1,
                                         NoxiPoint pt2);
/** Pixels along a line: single precision, one channel. */
NOX_API NoxStatus noxiSampleLine_32f_C1R(const Nox32f *src, int srcStep, NoxiSize roi, Nox32f *dst, NoxiPoint pt1,
                                         NoxiPoint pt2);
/** Pixels along a line: single precision, three channels. */
NOX_API NoxStatus noxiSampleLine_32f_C3R(const Nox32f *src, int srcStep, NoxiSize roi, Nox32f *dst, NoxiPoint pt1,
                                         NoxiPoint pt2);
/** @} */

/**
 * @name Radial undistortion
 * Corrects the radial lens distortion of a camera image (D. Brown, "Close-range camera calibration", 1971). fx and fy
 * are the focal lengths and (cx, cy) the principal point, in pixels; k1 and k2 are the radial coefficients. Pixel (x,
 * y) of dst is the source at
 *
 *     (x + (x - cx) s, y + (y - cy) s)   with u = (x - cx)^2 / fx^2, v = (y - cy)^2 / fy^2,
 *                                        s = k1 (u + v) + k2 (u + v)^2
 *
 * in single precision, interpolated bilinearly; integer results are rounded half up. Where the place is not within 0 to
 * width - 1 and 0 to height - 1, the upper ends excluded, **dst keeps what it had**; so does the last row and column of
 * an undistorted image. The channels of a pixel are written or kept together. src and dst may not overlap.
 *
 * buffer may be null, and is scratch for one call otherwise, of the size that noxiUndistortGetSize tells; the result is
 * the same, bit for bit.
 *
 * Status, in this order: noxStsNullPointer (src, dst), noxStsBadSize, noxStsBadStep, noxStsOddStep (16u, 32f),
 * noxStsBadArgument (fx or fy is 0 or not a number).
 * @{
 */
/** Picture without radial distortion: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiUndistortRadial_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                             Nox8u *buffer);
/** Picture without radial distortion: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiUndistortRadial_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                              Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                              Nox8u *buffer);
/** Picture without radial distortion: single precision, one channel. */
NOX_API NoxStatus noxiUndistortRadial_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                              Nox8u *buffer);
/** Picture without radial distortion: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiUndistortRadial_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                             Nox8u *buffer);
/** Picture without radial distortion: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiUndistortRadial_16u_C3R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                              Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                              Nox8u *buffer);
/** Picture without radial distortion: single precision, three channels. */
NOX_API NoxStatus noxiUndistortRadial_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                              Nox8u *buffer);
/** @} */

/**
 * Makes the coordinate maps of an undistortion, for a remap elsewhere: pixel (x, y) of the corrected image is the
 * source at (xMap(x, y), yMap(x, y)). Parameters are those of the radial undistortion, and p1 and p2 the tangential
 * coefficients. If both are 0 the place is that of the radial undistortion; otherwise, in single precision,
 *
 *     x1 = (x - cx) / fx, y1 = (y - cy) / fy, r2 = x1^2 + y1^2, t = 2 p2 x1 + 2 p1 y1 + (k2 r2 + k1) r2,
 *     xMap = x + fx p2 r2 + (x - cx) t,   yMap = y + fy p1 r2 + (y - cy) t
 *
 * This model has no terms in 2 x1^2 and 2 y1^2 beside r2. buffer is as above.
 *
 * Status, in this order: noxStsNullPointer (xMap, yMap), noxStsBadSize, noxStsBadStep, noxStsOddStep, noxStsBadArgument
 * (fx or fy is 0 or not a number).
 */
NOX_API NoxStatus noxiCreateMapCameraUndistort_32f_C1R(Nox32f *xMap, int xMapStep, Nox32f *yMap, int yMapStep,
                                                       NoxiSize roi, Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy,
                                                       Nox32f k1, Nox32f k2, Nox32f p1, Nox32f p2, Nox8u *buffer);

/**
 * Tells the bytes of the buffer of the functions above: width rounded up to a multiple of 4, times 24, plus 32.
 *
 * Status, in this order: noxStsNullPointer (bufferSize), noxStsBadSize (a side below 1, or a size beyond 2147483647).
 */
NOX_API NoxStatus noxiUndistortGetSize(NoxiSize roi, int *bufferSize);

NOX_END_DECLS

#endif
