/**
 * @file frame.h
 * The library frame: version, memory, one-dimensional primitives, copies, borders, differences, thresholds.
 *
 * Conventions of every image function:
 * - Arguments are checked in a fixed order before anything is written: null pointers in argument order
 *   (noxStsNullPointer), width or height below 1 (noxStsBadSize), each step against the bytes of one row
 *   (noxStsBadStep; the comparison is signed), then steps of images with 2-byte or wider elements that are not a
 *   multiple of the element size (noxStsOddStep), then what is particular to the function. Functions that depart
 *   from this order say so.
 * - Steps are in bytes. Pixels and steps need no alignment beyond the element rule.
 * - Functions run on the calling thread unless they say otherwise.
 */
#ifndef NOXCV_FRAME_H
#define NOXCV_FRAME_H

#include <stddef.h>

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * Returns the library's version record: constant, owned by the library, never null.
 */
NOX_API const NoxLibraryVersion *noxcvGetLibVersion(void);

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
NOX_API Nox8u *noxsMalloc_8u(int length);
NOX_API Nox8s *noxsMalloc_8s(int length);
NOX_API Nox16u *noxsMalloc_16u(int length);
NOX_API Nox32s *noxsMalloc_32s(int length);
NOX_API Nox32f *noxsMalloc_32f(int length);
NOX_API Nox64f *noxsMalloc_64f(int length);
/** Releases a block of the functions above through nox_free; null is allowed. */
NOX_API void noxsFree(void *block);
/** @} */

/**
 * @name Absolute difference of two images
 * dst = |src1 - src2|, exact for integers; for Nox32f one single-precision subtraction with the sign bit cleared
 * (a not-a-number stays one, with a cleared sign). One channel; dst may be one of the sources.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f), in this order.
 * @{
 */
NOX_API NoxStatus noxiAbsDiff_8u_C1R(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                     int dstStep, NoxiSize roi);
NOX_API NoxStatus noxiAbsDiff_16u_C1R(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step, Nox16u *dst,
                                      int dstStep, NoxiSize roi);
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
NOX_API NoxStatus noxiAbsDiffC_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, int value);
NOX_API NoxStatus noxiAbsDiffC_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                       int value);
NOX_API NoxStatus noxiAbsDiffC_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                       Nox32f value);
/** @} */

NOX_END_DECLS

#endif
