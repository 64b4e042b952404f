/**
 * @file primitives.h
 * Memory, one-dimensional primitives, and copies, borders, differences and thresholds of images.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_PRIMITIVES_H
#define NOXCV_PRIMITIVES_H

#include <stddef.h>

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Allocator entries
 * A program may replace these before its first call into the library; every allocation and release of the library
 * then goes through them, from whichever thread needs memory. Only nox_malloc and nox_free are called.
 * @{
 */
NOX_API extern void *(*nox_malloc)(size_t size);               /**< At first the system's malloc. */
NOX_API extern void *(*nox_calloc)(size_t count, size_t size); /**< At first the system's calloc. */
NOX_API extern void *(*nox_realloc)(void *block, size_t size); /**< At first the system's realloc. */
NOX_API extern void (*nox_free)(void *block);                  /**< At first the system's free. */
NOX_API extern int nox_version;                                /**< 1: version of this set of entries. */
NOX_API extern int nox_min_version;                            /**< 0: oldest version it is compatible with. */
/** @} */

/**
 * @name Aligned memory
 * A block of `length` elements at an address that is a multiple of 32, taken from nox_malloc; null when length is
 * below 1 (nothing is called then), when the size does not fit the address space, or when nox_malloc returns null.
 * Release it with noxsFree.
 * @{
 */
/** Elements of one unsigned byte. */
NOX_API Nox8u *noxsMalloc_8u(int length);
/** Elements of one signed byte. */
NOX_API Nox8s *noxsMalloc_8s(int length);
/** Elements of two bytes. */
NOX_API Nox16u *noxsMalloc_16u(int length);
/** Elements of four bytes. */
NOX_API Nox32s *noxsMalloc_32s(int length);
/** Elements of four bytes, single precision. */
NOX_API Nox32f *noxsMalloc_32f(int length);
/** Elements of eight bytes, double precision. */
NOX_API Nox64f *noxsMalloc_64f(int length);
/** Releases a block of the functions above through nox_free; null is allowed. */
NOX_API void noxsFree(void *block);
/** @} */

/**
 * @name Copy, set and zero of vectors
 * dst[i] = src[i], value or 0 for `length` elements. The ranges of a copy may not overlap. Bit patterns are kept, also
 * those of floats. Elements need no alignment.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 * @{
 */
/** dst = src: 8-bit unsigned. */
NOX_API NoxStatus noxsCopy_8u(const Nox8u *src, Nox8u *dst, int length);
/** dst = src: single precision. */
NOX_API NoxStatus noxsCopy_32f(const Nox32f *src, Nox32f *dst, int length);
/** dst = value: 8-bit unsigned. */
NOX_API NoxStatus noxsSet_8u(Nox8u value, Nox8u *dst, int length);
/** dst = value: single precision. */
NOX_API NoxStatus noxsSet_32f(Nox32f value, Nox32f *dst, int length);
/** dst = 0: 8-bit unsigned. */
NOX_API NoxStatus noxsZero_8u(Nox8u *dst, int length);
/** dst = 0: 16-bit signed. */
NOX_API NoxStatus noxsZero_16s(Nox16s *dst, int length);
/** dst = 0: 32-bit integers. */
NOX_API NoxStatus noxsZero_32s(Nox32s *dst, int length);
/** dst = 0: single precision. */
NOX_API NoxStatus noxsZero_32f(Nox32f *dst, int length);
/** @} */

/**
 * @name Minimum and maximum of vectors
 * srcDst[i] becomes the lesser (greater) of src[i] and srcDst[i]. For Nox32f src[i] is taken only if it compares less
 * (greater): a not-a-number in srcDst stays, one in src loses, and of two zeros that in srcDst stays. Elements are done
 * in ascending order, so where the ranges overlap later elements see what earlier ones have become.
 *
 * The forms without _I make dst from two sources, src2 in the part of srcDst. They test nothing, do nothing for a
 * length below 1, and always return noxStsNoError.
 *
 * Status of the others: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 * @{
 */
/** srcDst = min(src, srcDst): 8-bit unsigned. */
NOX_API NoxStatus noxsMinEvery_8u_I(const Nox8u *src, Nox8u *srcDst, int length);
/** srcDst = max(src, srcDst): 8-bit unsigned. */
NOX_API NoxStatus noxsMaxEvery_8u_I(const Nox8u *src, Nox8u *srcDst, int length);
/** srcDst = min(src, srcDst): single precision. */
NOX_API NoxStatus noxsMinEvery_32f_I(const Nox32f *src, Nox32f *srcDst, int length);
/** srcDst = max(src, srcDst): single precision. */
NOX_API NoxStatus noxsMaxEvery_32f_I(const Nox32f *src, Nox32f *srcDst, int length);
/** dst = min(src1, src2): 8-bit unsigned. */
NOX_API NoxStatus noxsMinEvery_8u(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length);
/** dst = max(src1, src2): 8-bit unsigned. */
NOX_API NoxStatus noxsMaxEvery_8u(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length);
/** dst = min(src1, src2): single precision. */
NOX_API NoxStatus noxsMinEvery_32f(const Nox32f *src1, const Nox32f *src2, Nox32f *dst, int length);
/** dst = max(src1, src2): single precision. */
NOX_API NoxStatus noxsMaxEvery_32f(const Nox32f *src1, const Nox32f *src2, Nox32f *dst, int length);
/** @} */

/**
 * Multiplies a vector by value * 2^-scaleFactor.
 *
 * scaleFactor above 0 rounds the exact product to nearest, ties to even, and clamps it to -32768 to 32767; above 30 the
 * result is 0. scaleFactor 0 clamps the product. Below 0 the product is clamped first, then shifted, then clamped
 * again; below -15 elements that are not 0 become 32767 where their sign is that of value, otherwise -32768. A value
 * of 0 gives 0 throughout.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 */
NOX_API NoxStatus noxsMulC_16s_ISfs(Nox16s value, Nox16s *srcDst, int length, int scaleFactor);

/**
 * Multiplies a vector by value, in single precision. A value of 0 makes every element 0, infinities and
 * not-a-numbers included; a value of 1 and a value that is not a number leave the vector untouched.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 */
NOX_API NoxStatus noxsMulC_32f_I(Nox32f value, Nox32f *srcDst, int length);

/**
 * dst[i] = src[i], exact. The ranges may not overlap.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 */
NOX_API NoxStatus noxsConvert_16u32f(const Nox16u *src, Nox32f *dst, int length);

/**
 * Square roots in place, for speed: whole groups of eight elements, counted from the first element on a 16-byte
 * boundary (from the first element when it is not 4-byte aligned), take the processor's estimate r of the reciprocal
 * root and one Newton step, 0.5 * x * r * (3 - x * r * r) with single-precision products from left to right. The
 * elements before and after the groups get the exactly rounded root, and so do all eight of a group in which one
 * is negative, zero, denormal, infinite or not a number. A negative element gives a not-a-number, either zero itself.
 *
 * The processor's floating-point control state is the caller's again on return, its flags included; invalid operations
 * are masked meanwhile.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order; noxStsSqrtOfNegative (warning) when an
 * element was less than 0.
 */
NOX_API NoxStatus noxsSqrt_32f_I(Nox32f *srcDst, int length);

/**
 * dst[i] = sqrt(src[i]) * 2^-scaleFactor, rounded to the nearest integer, ties to even, and at most 32767; 0 for a
 * negative element.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order; noxStsSqrtOfNegative (warning) when an
 * element was negative.
 */
NOX_API NoxStatus noxsSqrt_32s16s_Sfs(const Nox32s *src, Nox16s *dst, int length, int scaleFactor);

/**
 * Sorts a vector in ascending order, in place, with no memory but a small stack. Not-a-numbers end up anywhere, and
 * around them the order is not promised; no element is lost. Equal elements, zeros of both signs among them, keep no
 * order.
 *
 * Method: quicksort with a pivot from three (C. A. R. Hoare, 1961) and a heap sort (J. W. J. Williams, 1964) for ranges
 * that divide badly, so the time is of the order of length * log(length) on any input.
 *
 * Status: noxStsNullPointer, noxStsBadSize (length below 1), in this order.
 */
NOX_API NoxStatus noxsSortAscend_64f_I(Nox64f *srcDst, int length);

/**
 * @name Copy of an image region
 * dst = src, row by row from the first row on. Steps are not tested and are taken as given: zero, negative or smaller
 * than a row, in which case rows overlap. One, three or four interleaved channels. Bit patterns are kept.
 *
 * Status: noxStsNullPointer, noxStsBadSize, in this order.
 * @{
 */
/** dst = src: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopy_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi);
/** dst = src: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiCopy_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi);
/** dst = src: 8-bit unsigned, four channels. */
NOX_API NoxStatus noxiCopy_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi);
/** dst = src: single precision, one channel. */
NOX_API NoxStatus noxiCopy_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi);
/** dst = src: single precision, three channels. */
NOX_API NoxStatus noxiCopy_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi);
/** dst = src: single precision, four channels. */
NOX_API NoxStatus noxiCopy_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi);
/** @} */

/**
 * Sets all pixels of a one-channel region to value. The step is not tested and is taken as given, as in the copies.
 *
 * Status: noxStsNullPointer, noxStsBadSize, in this order.
 */
NOX_API NoxStatus noxiSet_8u_C1R(Nox8u value, Nox8u *dst, int dstStep, NoxiSize roi);

/**
 * Copies a region of size srcRoi into a larger one of size dstRoi and sets the rest to value.
 *
 * The first pixel of src lands in row topBorderHeight, column leftBorderWidth of dst; the borders below and to the
 * right are what dstRoi leaves. One channel; src and dst may not overlap.
 *
 * Status: noxStsNullPointer; noxStsBadStep when a step is below 1 (steps are not compared with the width);
 * noxStsBadSize when a width or height is below 1, when topBorderHeight or leftBorderWidth is negative, or when the
 * source does not fit at its place; in this order.
 */
NOX_API NoxStatus noxiCopyConstBorder_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                             NoxiSize dstRoi, int topBorderHeight, int leftBorderWidth, Nox8u value);

/**
 * @name Copy with replicated border
 * Copies a region of size srcRoi into a larger one of size dstRoi, to row topBorderHeight and column leftBorderWidth;
 * each pixel of the border is the nearest pixel of the source. Placement and checks are those of
 * noxiCopyConstBorder_8u_C1R. One, three or four interleaved channels. The 32s forms move
 * bit patterns, so they serve Nox32f images too; their steps may be any positive numbers of bytes.
 *
 * Status: noxStsNullPointer; noxStsBadStep when a step is below 1; noxStsBadSize when a width or height is below 1,
 * when topBorderHeight or leftBorderWidth is negative, or when the source does not fit at its place; in this order.
 * @{
 */
/** Nearest edge pixel around a copy: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst,
                                                 int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                 int leftBorderWidth);
/** Nearest edge pixel around a copy: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C3R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst,
                                                 int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                 int leftBorderWidth);
/** Nearest edge pixel around a copy: 8-bit unsigned, four channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C4R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst,
                                                 int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                 int leftBorderWidth);
/** Nearest edge pixel around a copy: 32-bit integers, one channel. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C1R(const Nox32s *src, int srcStep, NoxiSize srcRoi, Nox32s *dst,
                                                  int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                  int leftBorderWidth);
/** Nearest edge pixel around a copy: 32-bit integers, three channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C3R(const Nox32s *src, int srcStep, NoxiSize srcRoi, Nox32s *dst,
                                                  int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                  int leftBorderWidth);
/** Nearest edge pixel around a copy: 32-bit integers, four channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C4R(const Nox32s *src, int srcStep, NoxiSize srcRoi, Nox32s *dst,
                                                  int dstStep, NoxiSize dstRoi, int topBorderHeight,
                                                  int leftBorderWidth);
/** @} */

/**
 * @name Replicated border around a region in place
 * As the copies above for a source that already stands at its place: srcDst is the first pixel of the source region, of
 * size srcRoi, inside a larger image of the caller's, of size dstRoi. The border is written around it, topBorderHeight
 * rows and leftBorderWidth columns of it at negative offsets above and to the left.
 *
 * Status: noxStsNullPointer; noxStsBadStep when the step is below 1; noxStsBadSize when a width or height is below 1,
 * when topBorderHeight or leftBorderWidth is negative, or when the source does not fit at its place; in this order.
 * @{
 */
/** Nearest edge pixel around the region itself: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                  int topBorderHeight, int leftBorderWidth);
/** Nearest edge pixel around the region itself: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C3IR(Nox8u *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                  int topBorderHeight, int leftBorderWidth);
/** Nearest edge pixel around the region itself: 8-bit unsigned, four channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_8u_C4IR(Nox8u *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                  int topBorderHeight, int leftBorderWidth);
/** Nearest edge pixel around the region itself: 32-bit integers, one channel. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C1IR(Nox32s *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                   int topBorderHeight, int leftBorderWidth);
/** Nearest edge pixel around the region itself: 32-bit integers, three channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C3IR(Nox32s *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                   int topBorderHeight, int leftBorderWidth);
/** Nearest edge pixel around the region itself: 32-bit integers, four channels. */
NOX_API NoxStatus noxiCopyReplicateBorder_32s_C4IR(Nox32s *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi,
                                                   int topBorderHeight, int leftBorderWidth);
/** @} */

/**
 * @name Subtraction of images
 * dst = src2 - src1: the second source is the minuend. The in-place forms make srcDst = srcDst - src. dst may be one of
 * the sources. Steps are not tested and are taken as given. With three or four interleaved channels the channels
 * are more columns.
 *
 * Nox32f: one single-precision subtraction. Nox8u: with d the difference floored at 0, the result is d * 2^-scaleFactor
 * rounded to nearest, ties to even, and at most 255. A scaleFactor above 8 gives 0 everywhere; one below -7 gives 255
 * where d is not 0.
 *
 * Status: noxStsNullPointer, noxStsBadSize, in this order; the forms of three and four channels test for a width below
 * 1 (noxStsBadSize) before the pointers.
 * @{
 */
/** dst = src2 - src1: single precision, one channel. */
NOX_API NoxStatus noxiSub_32f_C1R(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst,
                                  int dstStep, NoxiSize roi);
/** dst = src2 - src1: single precision, three channels. */
NOX_API NoxStatus noxiSub_32f_C3R(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst,
                                  int dstStep, NoxiSize roi);
/** dst = src2 - src1: single precision, four channels. */
NOX_API NoxStatus noxiSub_32f_C4R(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst,
                                  int dstStep, NoxiSize roi);
/** srcDst = srcDst - src: single precision, one channel. */
NOX_API NoxStatus noxiSub_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst = srcDst - src: single precision, three channels. */
NOX_API NoxStatus noxiSub_32f_C3IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst = srcDst - src: single precision, four channels. */
NOX_API NoxStatus noxiSub_32f_C4IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** dst = src2 - src1, from 0 up and scaled: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiSub_8u_C1RSfs(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                    int dstStep, NoxiSize roi, int scaleFactor);
/** dst = src2 - src1, from 0 up and scaled: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiSub_8u_C3RSfs(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                    int dstStep, NoxiSize roi, int scaleFactor);
/** dst = src2 - src1, from 0 up and scaled: 8-bit unsigned, four channels. */
NOX_API NoxStatus noxiSub_8u_C4RSfs(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                    int dstStep, NoxiSize roi, int scaleFactor);
/** srcDst = srcDst - src, from 0 up and scaled: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiSub_8u_C1IRSfs(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,
                                     int scaleFactor);
/** srcDst = srcDst - src, from 0 up and scaled: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiSub_8u_C3IRSfs(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,
                                     int scaleFactor);
/** srcDst = srcDst - src, from 0 up and scaled: 8-bit unsigned, four channels. */
NOX_API NoxStatus noxiSub_8u_C4IRSfs(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,
                                     int scaleFactor);
/** @} */

/**
 * @name Threshold with a value
 * dst = value where the pixel of src is less (compare is noxCmpLess) or greater (noxCmpGreater) than threshold,
 * otherwise the pixel. A pixel equal to threshold is kept. The GTVal forms are those for noxCmpGreater. One channel;
 * dst may be src.
 *
 * Status: noxStsUnsupportedMode for any other compare, before all else; noxStsNullPointer; noxStsBadSize; noxStsBadStep
 * when a step is below 1 (steps are not compared with the width); in this order.
 * @{
 */
/** Pixels that compare so with the threshold become value: 8-bit unsigned. */
NOX_API NoxStatus noxiThreshold_Val_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                           Nox8u threshold, Nox8u value, int compare);
/** Pixels above the threshold become value: 8-bit unsigned. */
NOX_API NoxStatus noxiThreshold_GTVal_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             Nox8u threshold, Nox8u value);
/** Pixels above the threshold become value: 8-bit unsigned, in place. */
NOX_API NoxStatus noxiThreshold_GTVal_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, Nox8u threshold,
                                              Nox8u value);
/** @} */

/**
 * @name Threshold
 * dst = threshold where the pixel of src is less (compare is noxCmpLess) or greater (noxCmpGreater) than threshold,
 * otherwise the pixel. A pixel that is not a number becomes threshold, and so does a zero that meets a zero of the
 * other sign. The LT forms are those for noxCmpLess. One channel; dst may be src. Steps may be any positive numbers of
 * bytes.
 *
 * Status: noxStsNullPointer; noxStsBadSize; noxStsBadStep when a step is below 1; noxStsUnsupportedMode for any
 * other compare; in this order.
 * @{
 */
/** Pixels that compare so with the threshold become the threshold: single precision. */
NOX_API NoxStatus noxiThreshold_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                        Nox32f threshold, int compare);
/** Pixels below the threshold become the threshold: single precision. */
NOX_API NoxStatus noxiThreshold_LT_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                           Nox32f threshold);
/** Pixels below the threshold become the threshold: single precision, in place. */
NOX_API NoxStatus noxiThreshold_LT_32f_C1IR(Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f threshold);
/** @} */

NOX_END_DECLS

#endif
