/**
 * @file accumulate.h
 * Running sums over frames, plain and under a mask, and the fast arctangent.
 *
 * The accumulator srcDst is a Nox32f image that is read and written in place. All arithmetic is single precision, each
 * operation rounded once; 8-bit and 16-bit pixels and the products of 8-bit pixels are exact. Functions run on the
 * calling thread. A source may be the accumulator itself; otherwise they must not overlap.
 *
 * Status of all accumulators: noxStsNullPointer, noxStsBadSize, then the steps: noxStsBadStep for each image in
 * argument order, then noxStsOddStep for Nox32f images. A 16u source is tested for noxStsOddStep straight after its own
 * size, before the next image. Masks have one byte a pixel and no such test.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_ACCUMULATE_H
#define NOXCV_ACCUMULATE_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Sum
 * srcDst += src. Under a mask byte of zero an integer pixel counts as 0; a Nox32f pixel is multiplied by 0, so that an
 * infinity or a not-a-number there gives a not-a-number.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep for each image in argument order,
 * noxStsOddStep for the steps of Nox32f images. A 16u source's noxStsOddStep comes straight after its own
 * noxStsBadStep.
 * @{
 */
/** srcDst += src: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAdd_8u32f_C1IR(const Nox8u *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src: 8-bit signed to single precision, one channel. */
NOX_API NoxStatus noxiAdd_8s32f_C1IR(const Nox8s *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAdd_16u32f_C1IR(const Nox16u *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src: 8-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAdd_8u32f_C1IMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,
                                      int srcDstStep, NoxiSize roi);
/** srcDst += src: 8-bit signed to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAdd_8s32f_C1IMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,
                                      int srcDstStep, NoxiSize roi);
/** srcDst += src: 16-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAdd_16u32f_C1IMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,
                                       int srcDstStep, NoxiSize roi);
/** srcDst += src: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAdd_32f_C1IMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, Nox32f *srcDst,
                                    int srcDstStep, NoxiSize roi);
/** @} */

/**
 * @name Sum of squares
 * srcDst += src * src, the square rounded to single precision. Under a mask byte of zero an integer square counts as 0;
 * a Nox32f square is multiplied by 0, so that one that is not finite gives a not-a-number.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep for each image in argument order,
 * noxStsOddStep for the steps of Nox32f images. A 16u source's noxStsOddStep comes straight after its own
 * noxStsBadStep.
 * @{
 */
/** srcDst += src * src: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddSquare_8u32f_C1IR(const Nox8u *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: 8-bit signed to single precision, one channel. */
NOX_API NoxStatus noxiAddSquare_8s32f_C1IR(const Nox8s *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddSquare_16u32f_C1IR(const Nox16u *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                            NoxiSize roi);
/** srcDst += src * src: single precision, one channel. */
NOX_API NoxStatus noxiAddSquare_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: 8-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddSquare_8u32f_C1IMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep,
                                            Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: 8-bit signed to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddSquare_8s32f_C1IMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep,
                                            Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: 16-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddSquare_16u32f_C1IMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep,
                                             Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src * src: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddSquare_32f_C1IMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep,
                                          Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** @} */

/**
 * @name Sum of products
 * srcDst += src1 * src2, the product rounded to single precision. Under a mask byte of zero an integer product counts
 * as 0; a Nox32f product is multiplied by 0, so that one that is not finite gives a not-a-number.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep for each image in argument order,
 * noxStsOddStep for the steps of Nox32f images. A 16u source's noxStsOddStep comes straight after its own
 * noxStsBadStep.
 * @{
 */
/** srcDst += src1 * src2: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddProduct_8u32f_C1IR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                            Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src1 * src2: 8-bit signed to single precision, one channel. */
NOX_API NoxStatus noxiAddProduct_8s32f_C1IR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                            Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src1 * src2: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddProduct_16u32f_C1IR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                             Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src1 * src2: single precision, one channel. */
NOX_API NoxStatus noxiAddProduct_32f_C1IR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                          Nox32f *srcDst, int srcDstStep, NoxiSize roi);
/** srcDst += src1 * src2: 8-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddProduct_8u32f_C1IMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                             const Nox8u *mask, int maskStep, Nox32f *srcDst, int srcDstStep,
                                             NoxiSize roi);
/** srcDst += src1 * src2: 8-bit signed to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddProduct_8s32f_C1IMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                             const Nox8u *mask, int maskStep, Nox32f *srcDst, int srcDstStep,
                                             NoxiSize roi);
/** srcDst += src1 * src2: 16-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddProduct_16u32f_C1IMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                              const Nox8u *mask, int maskStep, Nox32f *srcDst, int srcDstStep,
                                              NoxiSize roi);
/** srcDst += src1 * src2: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddProduct_32f_C1IMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, Nox32f *srcDst, int srcDstStep,
                                           NoxiSize roi);
/** @} */

/**
 * @name Running average
 * srcDst += (src - srcDst) * alpha. Under a mask byte of zero alpha is 0, for all types: a difference that is not
 * finite gives a not-a-number there too.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep for each image in argument order,
 * noxStsOddStep for the steps of Nox32f images. A 16u source's noxStsOddStep comes straight after its own
 * noxStsBadStep.
 * @{
 */
/** srcDst += (src - srcDst) * alpha: 8-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddWeighted_8u32f_C1IR(const Nox8u *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                             NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: 8-bit signed to single precision, one channel. */
NOX_API NoxStatus noxiAddWeighted_8s32f_C1IR(const Nox8s *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                             NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: 16-bit unsigned to single precision, one channel. */
NOX_API NoxStatus noxiAddWeighted_16u32f_C1IR(const Nox16u *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                              NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: single precision, one channel. */
NOX_API NoxStatus noxiAddWeighted_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi,
                                           Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: 8-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddWeighted_8u32f_C1IMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep,
                                              Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: 8-bit signed to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddWeighted_8s32f_C1IMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep,
                                              Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: 16-bit unsigned to single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddWeighted_16u32f_C1IMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep,
                                               Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha);
/** srcDst += (src - srcDst) * alpha: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiAddWeighted_32f_C1IMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep,
                                            Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f alpha);
/** @} */

/**
 * Angles of vectors in degrees, from -0.1405 up to 360.1405: dst[i] is the angle of (x[i], y[i]), within 0.1405 degrees
 * (and the error of the processor's estimate).
 *
 * With z = min(|x|, |y|) / max(|x|, |y|, 1e-8), by the processor's reciprocal estimate and one Newton step, the angle
 * in the first octant is -15.813190 z^2 + 61.094196 z - 0.14050041; it is reflected at 45, 90 and 180 degrees as the
 * lengths and signs ask, minus zero counting as not negative. The constant term shows: (1, 0) and (0, 0) give -0.1405,
 * (-1, 0) gives 180.1405. dst may be x or y.
 *
 * @param[in] length  number of elements, at least 1.
 * @return noxStsNoError, or noxStsNullPointer, noxStsBadSize in this order.
 */
NOX_API NoxStatus noxibFastArctan_32f(const Nox32f *y, const Nox32f *x, Nox32f *dst, int length);

NOX_END_DECLS

#endif
