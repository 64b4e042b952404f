/**
 * @file edges.h
 * Edges: differences of images, Canny's edge detector and the colour gradient.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_EDGES_H
#define NOXCV_EDGES_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Absolute difference of two images
 * dst = |src1 - src2|, exact for integers; for Nox32f one single-precision subtraction with the sign bit cleared
 * (a not-a-number stays one, with a cleared sign). One channel; dst may be one of the sources.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f), in this order.
 * @{
 */
/** |src1 - src2|: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiAbsDiff_8u_C1R(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                     int dstStep, NoxiSize roi);
/** |src1 - src2|: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiAbsDiff_16u_C1R(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step, Nox16u *dst,
                                      int dstStep, NoxiSize roi);
/** |src1 - src2|: single precision, one channel. */
NOX_API NoxStatus noxiAbsDiff_32f_C1R(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst,
                                      int dstStep, NoxiSize roi);
/** @} */

/**
 * @name Absolute difference of an image and a constant
 * dst = |src - value|. The integer forms first clamp value to the element's range (0 to 255, 0 to 65535); the
 * Nox32f form takes it as it is and clears the sign bit of the single-precision difference. One channel; dst may be
 * src.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f), in this order.
 * @{
 */
/** |src - value|: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiAbsDiffC_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, int value);
/** |src - value|: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiAbsDiffC_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                       int value);
/** |src - value|: single precision, one channel. */
NOX_API NoxStatus noxiAbsDiffC_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                       Nox32f value);
/** @} */

/**
 * @name Canny's edge detector
 * Edges from given derivatives (J. Canny, "A computational approach to edge detection", 1986).
 *
 * The magnitude of a pixel is |dx| + |dy|, and 0 unless it is greater than lowThreshold (noxiCanny_16s8u_C1R first
 * truncates lowThreshold to an integer). A pixel survives thinning when its magnitude is greater than the neighbour
 * before it along the gradient direction and greater than the one after it, or equal to the latter in the horizontal
 * and vertical classes. The class comes from |dy| against |dx| tan 67.5 (vertical when greater) and |dx| tan 22.5
 * (diagonal when at least that, rising when dx and dy differ in sign), the products rounded to single precision; the
 * sign is the top bit, so a float minus zero counts as negative. Outside the image magnitudes are 0. Survivors above
 * highThreshold are edges, and so is each survivor that is 8-connected to an edge through survivors.
 *
 * dst gets 255 at edges and 0 elsewhere, and 0 in the bytes between the rows too: all of roi.height whole steps must
 * be writable.
 *
 * @param buffer  of the size that noxiCannyGetSize tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (srcDx, srcDy, dst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep
 * (srcDxStep, srcDyStep), noxStsBadArgument unless 0 <= lowThreshold <= highThreshold (a not-a-number fails too).
 * @{
 */
/** Edges from 16-bit derivatives, with thresholds truncated as told above. */
NOX_API NoxStatus noxiCanny_16s8u_C1R(const Nox16s *srcDx, int srcDxStep, const Nox16s *srcDy, int srcDyStep,
                                      Nox8u *dst, int dstStep, NoxiSize roi, Nox32f lowThreshold, Nox32f highThreshold,
                                      Nox8u *buffer);
/** Edges from single-precision derivatives. */
NOX_API NoxStatus noxiCanny_32f8u_C1R(const Nox32f *srcDx, int srcDxStep, const Nox32f *srcDy, int srcDyStep,
                                      Nox8u *dst, int dstStep, NoxiSize roi, Nox32f lowThreshold, Nox32f highThreshold,
                                      Nox8u *buffer);
/**
 * Writes to bufferSize the bytes of the detector's work buffer for images of this size, for both members: with w and h
 * its sides, (5 * h + 10) * (w + 2) + (4 * w + 24) * 4 + 64, and from a side of 65533 on 9 * (h + 2) * (w + 2) in place
 * of the first term. Of a size beyond 2147483647 the low 32 bits are written, and the detector refuses the image with
 * noxStsBadSize.
 *
 * Status, in this order: noxStsNullPointer (bufferSize), noxStsBadSize (a side below 1).
 */
NOX_API NoxStatus noxiCannyGetSize(NoxiSize roi, int *bufferSize);
/** @} */

/**
 * @name Colour gradient to gray
 * Folds a three-channel image (a, b, c interleaved) into one channel. By norm:
 * - 0, maximum: max(a, b, c), of absolute values for Nox32f;
 * - 1, L1: the mean for integers, ((a + b + c) * 1365 + 2048) >> 12 for 8u and ((a + b + c) * 5461 + 8192) >> 14 for
 *   16u; the plain sum |a| + |b| + |c| in single precision for Nox32f;
 * - 2, L2: floor(sqrt((a^2 + b^2 + c^2) / 3) + 0.5) for integers; sqrt(a^2 + b^2 + c^2) in single precision for Nox32f.
 *
 * In the 16u L2 form b^2 and c^2 are signed 32-bit products, so they wrap for values of 46341 and above; a negative
 * sum gives 0, and may raise the flag of an invalid operation.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (3 elements a pixel in src, one in dst),
 * noxStsOddStep (16u, 32f), noxStsBadArgument for another norm.
 * @{
 */
/** Norm of the three channels of a pixel: 8-bit unsigned. */
NOX_API NoxStatus noxiGradientColorToGray_8u_C3C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   int norm);
/** Norm of the three channels of a pixel: 16-bit unsigned. */
NOX_API NoxStatus noxiGradientColorToGray_16u_C3C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep,
                                                    NoxiSize roi, int norm);
/** Norm of the three channels of a pixel: single precision. */
NOX_API NoxStatus noxiGradientColorToGray_32f_C3C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int norm);
/** @} */

NOX_END_DECLS

#endif
