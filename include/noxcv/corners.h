/**
 * @file corners.h
 * Corners: eigenvalues and eigenvectors of the gradient's covariance, and the peaks of a response.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_CORNERS_H
#define NOXCV_CORNERS_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Eigenvalues of the local gradient covariance
 * dx and dy are a Sobel (kernelType 0, apertureSize 3 or 5) or Scharr derivative (kernelType 1, apertureSize 3) with
 * the nearest edge pixel outside the image; a, b and c are dx * dx, dx * dy and dy * dy, averaged over avgWindow x
 * avgWindow pixels (3 or 5). The scale is s = 1 / (255 * 2^(2 * apertureSize - 2)), times 0.6125 for Scharr, for float
 * images too. All in single precision.
 *
 * The smaller eigenvalue is (a + c - sqrt(4 b^2 + (a - c)^2)) * (s / 2) (J. Shi, C. Tomasi, "Good features to track",
 * 1994); the root is the correctly rounded one.
 *
 * The members with eigenvectors write six floats a pixel: the larger and the smaller eigenvalue, x and y of the vector
 * of the larger, x and y of that of the smaller. With a, b and c multiplied by s, r = sqrt(4 b^2 + (a - c)^2), the
 * eigenvalues (a + c + r) / 2 and (a + c - r) / 2, and t = max(a, c) * 0.01:
 * - all six are 0 unless min(a, c) >= t and a * c - b^2 >= t;
 * - else, where t > |b|, the vectors are (1, 0) and (0, 1), whichever of a and c is larger;
 * - else each vector is (b, l - a) over its length, with b negated for Sobel and no length below 2^-23.
 *
 * buffer has the size that the query tells for the same image under the same thread count; any address.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (one or six floats a pixel in dst),
 * noxStsOddStep (dstStep; srcStep of floats), noxStsBadArgument for another kernelType, noxStsBadSize for another
 * apertureSize or avgWindow or an image whose buffer no int tells. The filters used may go parallel.
 * @{
 */
/** The smaller eigenvalue at each pixel of an 8-bit image. */
NOX_API NoxStatus noxiMinEigenVal_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                            int kernelType, int apertureSize, int avgWindow, Nox8u *buffer);
/** The smaller eigenvalue at each pixel of a single-precision image. */
NOX_API NoxStatus noxiMinEigenVal_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                          int kernelType, int apertureSize, int avgWindow, Nox8u *buffer);
/** Eigenvalues and eigenvectors at each pixel of an 8-bit image. */
NOX_API NoxStatus noxiEigenValsVecs_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              int kernelType, int apertureSize, int avgWindow, Nox8u *buffer);
/** Eigenvalues and eigenvectors at each pixel of a single-precision image. */
NOX_API NoxStatus noxiEigenValsVecs_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                            int kernelType, int apertureSize, int avgWindow, Nox8u *buffer);
/** @} */

/**
 * @name Sizes of the work buffers for eigenvalues, in bytes
 * Writes to bufferSize, with P the width rounded up to a multiple of 16 and F the largest work size of the filters
 * used: (P * height * 4 + 32) * K + F + 64, K being 5 with one thread and 8 with more. 8-bit images have K = 3 or 6,
 * and width * height * 4 bytes more.
 *
 * Status: noxStsNullPointer, noxStsBadSize (the size, apertureSize or avgWindow other than 3 and 5, a size that no int
 * tells), in this order.
 * @{
 */
/** Bytes of the work buffer of noxiMinEigenVal_8u32f_C1R. */
NOX_API NoxStatus noxiMinEigenValGetBufferSize_8u32f_C1R(NoxiSize roi, int apertureSize, int avgWindow,
                                                         int *bufferSize);
/** Bytes of the work buffer of noxiMinEigenVal_32f_C1R. */
NOX_API NoxStatus noxiMinEigenValGetBufferSize_32f_C1R(NoxiSize roi, int apertureSize, int avgWindow, int *bufferSize);
/** Bytes of the work buffer of noxiEigenValsVecs_8u32f_C1R. */
NOX_API NoxStatus noxiEigenValsVecsGetBufferSize_8u32f_C1R(NoxiSize roi, int apertureSize, int avgWindow,
                                                           int *bufferSize);
/** Bytes of the work buffer of noxiEigenValsVecs_32f_C1R. */
NOX_API NoxStatus noxiEigenValsVecsGetBufferSize_32f_C1R(NoxiSize roi, int apertureSize, int avgWindow,
                                                         int *bufferSize);
/** @} */

/**
 * @name Peaks of a response
 * Writes to peaks the positions (x, y), two numbers each, and to peakCount their number: in scan order, where |v| is
 * greater than threshold and v is the largest (v above 0) or smallest (else) of its 3 x 3 block (norm 0) or of itself
 * and its four neighbours (norm 1); floats may lie 2^-126 off. All pixels of a plateau are peaks. Rows and columns
 * nearer to an edge than border are left out. The search ends with the maxPeakCount-th peak. Where a neighbour is not a
 * number, it is not told whether there is a peak.
 *
 * The step's lowest two bits are ignored, and the rest must be a multiple of 16.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (height, width, maxPeakCount, border below 1; border above
 * half the width or height), noxStsBadStep (srcStep / 4, as an unsigned number, below the width), noxStsOddStep
 * (srcStep / 4 is no multiple of 4), noxStsBadArgument (norm). On the calling thread.
 * @{
 */
/** Peaks of a single-precision response. */
NOX_API NoxStatus noxiFindPeaks3x3_32f_C1R(const Nox32f *src, int srcStep, NoxiSize roi, Nox32f threshold,
                                           Nox32s *peaks, int maxPeakCount, int *peakCount, int norm, int border,
                                           Nox8u *buffer);
/** Peaks of a response in 32-bit integers. */
NOX_API NoxStatus noxiFindPeaks3x3_32s_C1R(const Nox32s *src, int srcStep, NoxiSize roi, Nox32s threshold,
                                           Nox32s *peaks, int maxPeakCount, int *peakCount, int norm, int border,
                                           Nox8u *buffer);
/**
 * Bytes of the work buffer of noxiFindPeaks3x3_32f_C1R, written to bufferSize: (width + 5) / 4, rounded down, times
 * 128, plus 32.
 *
 * Status, in this order: noxStsNullPointer (bufferSize), noxStsBadSize (width below 1); noxStsBadSize, and nothing
 * stored, when the size exceeds 2147483647.
 */
NOX_API NoxStatus noxiFindPeaks3x3GetBufferSize_32f_C1R(int width, int *bufferSize);
/**
 * Bytes of the work buffer of noxiFindPeaks3x3_32s_C1R, written to bufferSize: those of noxiFindPeaks3x3_32f_C1R.
 *
 * Status, in this order: noxStsNullPointer (bufferSize), noxStsBadSize (width below 1); noxStsBadSize, and nothing
 * stored, when the size exceeds 2147483647.
 */
NOX_API NoxStatus noxiFindPeaks3x3GetBufferSize_32s_C1R(int width, int *bufferSize);
/** @} */

NOX_END_DECLS

#endif
