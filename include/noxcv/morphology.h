/**
 * @file morphology.h
 * Morphology: minimum and maximum filters, erosion and dilation, compound and grey operations, reconstruction.
 */
#ifndef NOXCV_MORPHOLOGY_H
#define NOXCV_MORPHOLOGY_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Minimum and maximum over a rectangle
 * dst(x, y) = the minimum (maximum) of src over the window of maskSize pixels whose cell `anchor` lies on (x, y),
 * channel by channel. A pixel outside the image is the nearest edge pixel. Rows and columns are done one after the
 * other; long windows by running minima of blocks (M. van Herk, "A fast algorithm for local minimum and maximum filters
 * on rectangular and octagonal kernels", 1992), so the time does not grow with the window.
 *
 * Nox32f: the ordinary comparison. It does not tell zeros of different signs apart, and of a pair with a not-a-number
 * it takes the second; which that is depends on the window's size and place, so where a window holds a not-a-number the
 * result is that or one of the window's numbers.
 *
 * dst may be src itself (with the same step), and may not overlap it otherwise. Runs on the calling thread.
 *
 * @param buffer  of the size that the query below tells for this roi.width and maskSize; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadMaskSize when a side of maskSize
 * is below 1, noxStsBadAnchor when the anchor is no cell of the mask, noxStsBadStep (srcStep), noxStsOddStep (srcStep
 * of Nox32f), noxStsBadStep (dstStep), noxStsOddStep (dstStep of Nox32f).
 * @{
 */
/** Minima of 8-bit, one channel. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of 8-bit, three channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of 8-bit, four channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of single-precision, one channel. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Minima of single-precision, three channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Minima of single-precision, four channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of 8-bit, one channel. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of 8-bit, three channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of 8-bit, four channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of single-precision, one channel. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of single-precision, three channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of single-precision, four channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** @} */

/**
 * @name Buffer of the minimum and maximum filters
 * Writes the bytes that a filter of the same type and layout needs for rows of up to roiWidth pixels and a window of
 * maskSize: 16 n + 2 n (L + 32) + 32, with n the window's height and L the bytes of a row (16 more for each n in a
 * 64-bit build, whose pointers are wider).
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize when roiWidth is below 1, noxStsBadMaskSize; noxStsBadSize,
 * and nothing stored, when the size exceeds the largest int.
 * @{
 */
/** Bytes for minima of 8-bit, one channel. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of 8-bit, three channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of 8-bit, four channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision, one channel. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision, three channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision, four channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit, one channel. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit, three channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit, four channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision, one channel. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision, three channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision, four channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** @} */

NOX_END_DECLS

#endif
