/**
 * @file statistics.h
 * Image statistics: masked norms, means, deviations and extrema.
 *
 * Conventions of this header:
 * - A mask is a Nox8u image of the region's size with its own step; a pixel takes part where its byte is not zero. What
 *   lies under a zero byte does not count, not-a-numbers and infinities included.
 * - C3C functions read the channel coi, 1 to 3, of an image of three interleaved channels; the mask has one byte a
 *   pixel.
 * - Results of integer images are exact and the same for every thread count. Nox32f images are summed in four
 *   single-precision lanes a row (pixel x in lane x modulo 4), which join the running sums in extended precision when
 *   the row ends; each thread sums its rows, and the threads' sums are joined in row order.
 * - Large regions are divided among threads. With more than 32 threads the shares need a block of memory:
 *   noxStsNoMemory, with nothing written, when it cannot be had.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_STATISTICS_H
#define NOXCV_STATISTICS_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Norm of an image under a mask
 * With M the pixels under the mask and a the image:
 * - Inf: the maximum of |a| over M;
 * - L1: the sum of |a| over M; of 8-bit images each thread's sum is a signed 32-bit number that wraps, which only
 * images of more than 2^31 / 255 pixels can reach;
 * - L2: the square root of the sum of a^2 over M.
 *
 * value receives the result, 0 where M is empty. The maximum of a Nox32f image passes over not-a-numbers.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory. Threads: from 131072 pixels a thread on; the C1 members of Inf for
 * integers from 524288.
 * @{
 */
/** Largest magnitude of src: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_Inf_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Largest magnitude of src: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_Inf_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** Largest magnitude of src: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNorm_Inf_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Largest magnitude of src: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNorm_Inf_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** Largest magnitude of src: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_Inf_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        Nox64f *value);
/** Largest magnitude of src: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_Inf_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                         int coi, Nox64f *value);
/** Largest magnitude of src: single precision, one channel. */
NOX_API NoxStatus noxiNorm_Inf_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        Nox64f *value);
/** Largest magnitude of src: single precision, channel coi of three. */
NOX_API NoxStatus noxiNorm_Inf_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                         int coi, Nox64f *value);
/** Sum of magnitudes of src: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_L1_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                      Nox64f *value);
/** Sum of magnitudes of src: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_L1_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       int coi, Nox64f *value);
/** Sum of magnitudes of src: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNorm_L1_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                      Nox64f *value);
/** Sum of magnitudes of src: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNorm_L1_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       int coi, Nox64f *value);
/** Sum of magnitudes of src: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_L1_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Sum of magnitudes of src: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_L1_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** Sum of magnitudes of src: single precision, one channel. */
NOX_API NoxStatus noxiNorm_L1_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Sum of magnitudes of src: single precision, channel coi of three. */
NOX_API NoxStatus noxiNorm_L1_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** Root of the sum of squares of src: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_L2_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                      Nox64f *value);
/** Root of the sum of squares of src: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_L2_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       int coi, Nox64f *value);
/** Root of the sum of squares of src: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNorm_L2_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                      Nox64f *value);
/** Root of the sum of squares of src: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNorm_L2_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       int coi, Nox64f *value);
/** Root of the sum of squares of src: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNorm_L2_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Root of the sum of squares of src: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNorm_L2_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** Root of the sum of squares of src: single precision, one channel. */
NOX_API NoxStatus noxiNorm_L2_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                       Nox64f *value);
/** Root of the sum of squares of src: single precision, channel coi of three. */
NOX_API NoxStatus noxiNorm_L2_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                        int coi, Nox64f *value);
/** @} */

/**
 * @name Norm of the difference of two images under a mask
 * value receives the norm, under the mask, of a - b, with a = src1 and b = src2: Inf the maximum of |a - b|, L1 the sum
 * of |a - b|, L2 the root of the sum of (a - b)^2. Integer differences are exact, Nox32f ones are rounded to single
 * precision; the rest is as in the norms of one image.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory. Threads: from 131072 pixels a thread on; the Inf and 32f members run on
 * the calling thread.
 * @{
 */
/** Largest magnitude of src1 - src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_Inf_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_Inf_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormDiff_Inf_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_Inf_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_Inf_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_Inf_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                             const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2: single precision, one channel. */
NOX_API NoxStatus noxiNormDiff_Inf_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_Inf_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                             const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_L1_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L1_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormDiff_L1_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L1_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_L1_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L1_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: single precision, one channel. */
NOX_API NoxStatus noxiNormDiff_L1_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L1_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_L2_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L2_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormDiff_L2_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L2_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormDiff_L2_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L2_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: single precision, one channel. */
NOX_API NoxStatus noxiNormDiff_L2_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormDiff_L2_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** @} */

/**
 * @name Relative difference of two images under a mask
 * value receives the norm of a - b divided by the norm of b, with a = src1 and b = src2: one division, and for L2 one
 * root of the quotient of the sums, in extended precision, rounded to Nox64f. A denominator of 0 gives not-a-number
 * when the numerator is 0 too, infinity when it is positive and negative infinity otherwise (a not-a-number, or a sum
 * that has wrapped), with the warning noxStsDivideByZero.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory; noxStsDivideByZero with the result written. Threads: from 131072 pixels a
 * thread on; the 32f members of L1 and L2 and the 8u C1 member of L1 run on the calling thread.
 * @{
 */
/** Largest magnitude of src1 - src2 over that of src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_Inf_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_Inf_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormRel_Inf_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormRel_Inf_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_Inf_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_Inf_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: single precision, one channel. */
NOX_API NoxStatus noxiNormRel_Inf_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Largest magnitude of src1 - src2 over that of src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormRel_Inf_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                            const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_L1_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                         const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L1_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormRel_L1_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                         const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L1_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_L1_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L1_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: single precision, one channel. */
NOX_API NoxStatus noxiNormRel_L1_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Sum of magnitudes of src1 - src2 over that of src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L1_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_L2_8u_C1MR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                         const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L2_8u_C3CMR(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 8-bit signed, one channel. */
NOX_API NoxStatus noxiNormRel_L2_8s_C1MR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                         const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L2_8s_C3CMR(const Nox8s *src1, int src1Step, const Nox8s *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiNormRel_L2_16u_C1MR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L2_16u_C3CMR(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: single precision, one channel. */
NOX_API NoxStatus noxiNormRel_L2_32f_C1MR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                          const Nox8u *mask, int maskStep, NoxiSize roi, Nox64f *value);
/** Root of the sum of squares of src1 - src2 over that of src2: single precision, channel coi of three. */
NOX_API NoxStatus noxiNormRel_L2_32f_C3CMR(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step,
                                           const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *value);
/** @} */

/**
 * @name Mean of the pixels under a mask
 * mean receives sum / count of the pixels under the mask, divided in extended precision and rounded to Nox64f; 0 where
 * the mask is empty.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory. Threads: from 131072 pixels a thread on.
 * @{
 */
/** Mean: 8-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMean_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                   Nox64f *mean);
/** Mean: 8-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                    int coi, Nox64f *mean);
/** Mean: 8-bit signed, one channel, under a mask. */
NOX_API NoxStatus noxiMean_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                   Nox64f *mean);
/** Mean: 8-bit signed, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                    int coi, Nox64f *mean);
/** Mean: 16-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMean_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                    Nox64f *mean);
/** Mean: 16-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                     int coi, Nox64f *mean);
/** Mean: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiMean_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                    Nox64f *mean);
/** Mean: single precision, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                     int coi, Nox64f *mean);
/** @} */

/**
 * @name Mean and standard deviation
 * mean receives the mean and stdDev the standard deviation. With n pixels, m = sum / n and q = (sum of squares) / n,
 * the deviation is the root of |q - m m|, all of it in extended precision and rounded to Nox64f at the end: a flat
 * integer image has a deviation of exactly 0. Where this variance of a Nox32f image is below 0.05 m m, a second pass
 * takes the root of (sum of (pixel - m)^2) / n instead, with m rounded to single precision. Both are 0 where the mask
 * is empty. mean and stdDev may each be null: that result is not stored.
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory. Threads: from 131072 pixels a thread on; noxiMean_StdDev_32f_C1R from
 * 65536, noxiMean_StdDev_32f_C3CR never.
 * @{
 */
/** Mean and deviation: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiMean_StdDev_8u_C1R(const Nox8u *src, int srcStep, NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiMean_StdDev_8u_C3CR(const Nox8u *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean,
                                          Nox64f *stdDev);
/** Mean and deviation: 8-bit signed, one channel. */
NOX_API NoxStatus noxiMean_StdDev_8s_C1R(const Nox8s *src, int srcStep, NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiMean_StdDev_8s_C3CR(const Nox8s *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean,
                                          Nox64f *stdDev);
/** Mean and deviation: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiMean_StdDev_16u_C1R(const Nox16u *src, int srcStep, NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiMean_StdDev_16u_C3CR(const Nox16u *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean,
                                           Nox64f *stdDev);
/** Mean and deviation: single precision, one channel. */
NOX_API NoxStatus noxiMean_StdDev_32f_C1R(const Nox32f *src, int srcStep, NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: single precision, channel coi of three. */
NOX_API NoxStatus noxiMean_StdDev_32f_C3CR(const Nox32f *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean,
                                           Nox64f *stdDev);
/** Mean and deviation: 8-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 8-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                           int coi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 8-bit signed, one channel, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 8-bit signed, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                           int coi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 16-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep,
                                           NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: 16-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep,
                                            NoxiSize roi, int coi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep,
                                           NoxiSize roi, Nox64f *mean, Nox64f *stdDev);
/** Mean and deviation: single precision, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMean_StdDev_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep,
                                            NoxiSize roi, int coi, Nox64f *mean, Nox64f *stdDev);
/** @} */

/**
 * @name Minimum and maximum with their positions
 * minValue and maxValue are the extremes, as Nox32f; minIndex and maxIndex the first pixels in raster order (lowest y,
 * then lowest x) that hold them. The search begins with the ends of the element's range (for Nox32f its largest finite
 * numbers), so that not-a-numbers are passed over, and an image of infinities alone has one of these ends for its other
 * extreme; an extreme that no pixel holds is placed at (0, 0). Where the mask is empty, both values are 0 and both
 * positions (0, 0).
 *
 * Status: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (16u and 32f images),
 * noxStsBadChannelOfInterest, noxStsNoMemory. Threads: from 16384 pixels on.
 * @{
 */
/** Extremes and where they are: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiMinMaxIndx_8u_C1R(const Nox8u *src, int srcStep, NoxiSize roi, Nox32f *minValue, Nox32f *maxValue,
                                        NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiMinMaxIndx_8u_C3CR(const Nox8u *src, int srcStep, NoxiSize roi, int coi, Nox32f *minValue,
                                         Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit signed, one channel. */
NOX_API NoxStatus noxiMinMaxIndx_8s_C1R(const Nox8s *src, int srcStep, NoxiSize roi, Nox32f *minValue, Nox32f *maxValue,
                                        NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit signed, channel coi of three. */
NOX_API NoxStatus noxiMinMaxIndx_8s_C3CR(const Nox8s *src, int srcStep, NoxiSize roi, int coi, Nox32f *minValue,
                                         Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiMinMaxIndx_16u_C1R(const Nox16u *src, int srcStep, NoxiSize roi, Nox32f *minValue,
                                         Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 16-bit unsigned, channel coi of three. */
NOX_API NoxStatus noxiMinMaxIndx_16u_C3CR(const Nox16u *src, int srcStep, NoxiSize roi, int coi, Nox32f *minValue,
                                          Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: single precision, one channel. */
NOX_API NoxStatus noxiMinMaxIndx_32f_C1R(const Nox32f *src, int srcStep, NoxiSize roi, Nox32f *minValue,
                                         Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: single precision, channel coi of three. */
NOX_API NoxStatus noxiMinMaxIndx_32f_C3CR(const Nox32f *src, int srcStep, NoxiSize roi, int coi, Nox32f *minValue,
                                          Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_8u_C1MR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                         Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_8u_C3CMR(const Nox8u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          int coi, Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex,
                                          NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit signed, one channel, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_8s_C1MR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                         Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 8-bit signed, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_8s_C3CMR(const Nox8s *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          int coi, Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex,
                                          NoxiPoint *maxIndex);
/** Extremes and where they are: 16-bit unsigned, one channel, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_16u_C1MR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: 16-bit unsigned, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_16u_C3CMR(const Nox16u *src, int srcStep, const Nox8u *mask, int maskStep,
                                           NoxiSize roi, int coi, Nox32f *minValue, Nox32f *maxValue,
                                           NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: single precision, one channel, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_32f_C1MR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,
                                          Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** Extremes and where they are: single precision, channel coi of three, under a mask. */
NOX_API NoxStatus noxiMinMaxIndx_32f_C3CMR(const Nox32f *src, int srcStep, const Nox8u *mask, int maskStep,
                                           NoxiSize roi, int coi, Nox32f *minValue, Nox32f *maxValue,
                                           NoxiPoint *minIndex, NoxiPoint *maxIndex);
/** @} */

NOX_END_DECLS

#endif
