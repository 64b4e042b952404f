/**
 * @file distance.h
 * Distance maps: chamfer transforms, the true distance, and fast marching.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_DISTANCE_H
#define NOXCV_DISTANCE_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Weights of chamfer transforms
 * Fills metrics with the weights of a norm: straight and diagonal step for a kernel of 3, and the knight's step (two
 * pixels along one axis, one along the other) for a kernel of 5. norm 0 is the chessboard distance, 1 the city-block
 * distance, 2 comes near the Euclidean one.
 *
 * | kernelSize | norm | integers | floats         |
 * |------------|------|----------|----------------|
 * | 3          | 0    | 1, 1     | 1, 1           |
 * | 3          | 1    | 1, 2     | 1, 2           |
 * | 3          | 2    | 2, 3     | 0.955, 1.3693  |
 * | 5          | 0    | 1, 1, 2  | 1, 1, 2        |
 * | 5          | 1    | 1, 2, 3  | 1, 2, 3        |
 * | 5          | 2    | 5, 7, 11 | 1, 1.4, 2.1969 |
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (kernelSize is neither 3 nor 5), noxStsBadArgument (norm
 * outside 0 to 2). noxiGetDistanceTransformMask tests the norm first.
 * @{
 */
/** Integer weights of a chamfer transform. */
NOX_API NoxStatus noxiGetDistanceTransformMask_32s(int kernelSize, int norm, Nox32s *metrics);
/** Single-precision weights of a chamfer transform. */
NOX_API NoxStatus noxiGetDistanceTransformMask_32f(int kernelSize, int norm, Nox32f *metrics);
/** Single-precision weights for maskType = 10 kernelSize + norm. */
NOX_API NoxStatus noxiGetDistanceTransformMask(int maskType, Nox32f *metrics);
/** @} */

/**
 * @name Chamfer distance transforms
 * Each pixel of dst becomes the least sum of weights over the ways of steps to a pixel of src that is 0, as two passes
 * over the image find it (G. Borgefors, "Distance transformations in digital images", 1986). Where no zero is reached,
 * and in place of greater sums, it is the largest value of the type: 255, 65535, or the largest finite float. Float
 * sums are formed step by step in single precision, each rounded.
 *
 * metrics holds the straight weight a, the diagonal one b, and in 5x5 transforms the knight's c.
 *
 * 3x3: with b >= 2 a, and in images of one column, straight steps alone. With a > b, in images of at least two rows and
 * columns, the last row also has two steps to the side for 2 b, since a way of diagonal steps along it would need a row
 * below; the first row has not.
 *
 * 5x5, with b' = min(2 a, b): when c >= a + b' the 3x3 transform of the same type with a and b. When b' > a, c > 2 a
 * and 2 c > 3 b' the weights are ordered, and two passes with the mask of straight, diagonal and knight's steps are
 * made; floats compare with a relative tolerance of 1e-7. Other weights take the whole half of the 5x5 mask, with the
 * weights min(a, 3 c) and min(b', 2 c) and the shortest ways of two steps. Images of fewer than four rows or columns
 * see all 24 neighbours; when the weights are not ordered, sweeps are repeated until nothing changes.
 *
 * The in-place forms take the zeros from the image that they overwrite; dst of the 8u forms may be src.
 *
 * Threads: with more than one thread, images of at least 64 rows and 65 columns (3x3 8u: 257) go to two threads, 3x3
 * transforms for a <= b and 5x5 ones for ordered weights; 32f forms on more than one core only. Integer results do not
 * depend on that. Float sums may, in their last bits, since ways are added up from the other end.
 *
 * Status, in this order: noxStsNullPointer (src, dst, metrics), noxStsBadSize, noxStsBadStep, noxStsOddStep (dstStep of
 * 16u and 32f), noxStsBadMetric (a weight that is not greater than 0).
 * @{
 */
/** 3x3 chamfer distances: bytes to bytes. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   const Nox32s *metrics);
/** 5x5 chamfer distances: bytes to bytes. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   const Nox32s *metrics);
/** 3x3 chamfer distances: bytes to 16-bit distances. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u16u_C1R(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep,
                                                      NoxiSize roi, const Nox32s *metrics);
/** 5x5 chamfer distances: bytes to 16-bit distances. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u16u_C1R(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep,
                                                      NoxiSize roi, const Nox32s *metrics);
/** 3x3 chamfer distances: bytes to single-precision distances. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep,
                                                      NoxiSize roi, const Nox32f *metrics);
/** 5x5 chamfer distances: bytes to single-precision distances. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep,
                                                      NoxiSize roi, const Nox32f *metrics);
/** 3x3 chamfer distances: bytes, in place. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, const Nox32s *metrics);
/** 5x5 chamfer distances: bytes, in place. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, const Nox32s *metrics);
/** @} */

/**
 * @name Parallel forms of the chamfer transforms
 * What the functions above run on two threads: the halves above and below row height / 2 are swept towards it, that row
 * is repaired, and the halves are swept away from it. metrics holds the weights as above. They test no argument, and
 * are right for weights that the functions above would take them for: a <= b in 3x3 and ordered weights in 5x5
 * transforms. Any team gives the same result.
 *
 * Status: always noxStsNoError.
 * @{
 */
/** 3x3 chamfer distances on two threads: bytes to bytes. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u_C1R_omp(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                       NoxiSize roi, const Nox32s *metrics);
/** 5x5 chamfer distances on two threads: bytes to bytes. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u_C1R_omp(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                       NoxiSize roi, const Nox32s *metrics);
/** 3x3 chamfer distances on two threads: bytes to 16-bit distances. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u16u_C1R_omp(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep,
                                                          NoxiSize roi, const Nox32s *metrics);
/** 5x5 chamfer distances on two threads: bytes to 16-bit distances. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u16u_C1R_omp(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep,
                                                          NoxiSize roi, const Nox32s *metrics);
/** 3x3 chamfer distances on two threads: bytes to single-precision distances. */
NOX_API NoxStatus noxiDistanceTransform_3x3_8u32f_C1R_omp(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep,
                                                          NoxiSize roi, const Nox32f *metrics);
/** 5x5 chamfer distances on two threads: bytes to single-precision distances. */
NOX_API NoxStatus noxiDistanceTransform_5x5_8u32f_C1R_omp(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep,
                                                          NoxiSize roi, const Nox32f *metrics);
/** @} */

/**
 * @name Buffer sizes of the true distance transforms
 * Writes to size, with T the thread count: 8u32f (24 max(w4, h4) + 56) T bytes, w4 and h4 the sides rounded up to
 * multiples of 4; 8u16u (6 max(w8, h8) + 6) 4 T + 4 w8 height + 32 bytes, w8 and h8 rounded up to multiples of 8. To be
 * asked again when the thread count grows.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (a side below 1, or a size beyond 2147483647).
 * @{
 */
/** Bytes of the work buffer of noxiTrueDistanceTransform_8u32f_C1R. */
NOX_API NoxStatus noxiTrueDistanceTransformGetBufferSize_8u32f_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiTrueDistanceTransform_8u16u_C1RSfs. */
NOX_API NoxStatus noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(NoxiSize roi, int *size);
/** @} */

/**
 * @name True distance transforms
 * The Euclidean distance of each pixel to the nearest pixel of src that is 0: down the columns first, then along each
 * row the lower envelope of the parabolas that the columns' distances make (P. Felzenszwalb and D. Huttenlocher,
 * "Distance transforms of sampled functions", 2004), in single precision, then the root. A column without a zero counts
 * as 1000 pixels away, so an image without one has the distance 1000 everywhere.
 *
 * The root is that of noxsSqrt_32f_I (8u32f, which says how exact it is) or of noxsSqrt_32s16s_Sfs (8u16u, which
 * rounds, scales by 2^-scaleFactor and stops at 32767). Squares beyond 32 bits count as 2147483647 in the 8u16u form.
 *
 * @param buffer  of the size that the query tells for this roi and thread count.
 *
 * Threads: rows go parallel with at least two threads on more than one core, or from 256 columns and 256 rows times
 * threads on. Results do not depend on that.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep (dstStep).
 * @{
 */
/** Euclidean distances: bytes to single-precision distances. */
NOX_API NoxStatus noxiTrueDistanceTransform_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep,
                                                      NoxiSize roi, Nox8u *buffer);
/** Euclidean distances: bytes to rounded and scaled 16-bit distances. */
NOX_API NoxStatus noxiTrueDistanceTransform_8u16u_C1RSfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep,
                                                         NoxiSize roi, int scaleFactor, Nox8u *buffer);
/** @} */

/**
 * Writes to size the bytes of noxiFastMarching_8u32f_C1R's buffer: 5 height + 50 + (height + 2) S, S the width rounded
 * up to a multiple of 32.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (a side below 1, or a size beyond 2147483647).
 */
NOX_API NoxStatus noxiFastMarchingGetBufferSize_8u32f_C1R(NoxiSize roi, int *size);

/**
 * Arrival times of a front that starts at the pixels of src that are 0 and moves at unit speed: the first-order upwind
 * solution of the eikonal equation (J. Sethian, "A fast marching level set method for monotonically advancing fronts",
 * 1996), found by sweeps up and down the rows (H. Zhao, "A fast sweeping method for eikonal equations", 2005), of which
 * the later ones visit what the last change can reach.
 *
 * A pixel whose byte is not 0 gets (p + q + sqrt(2 - (p - q)^2)) / 2 from its smaller neighbours p above or below and q
 * to the side, or min(p, q) + 1 where they differ by 1 or more; in single precision. Pixels whose byte is 0 get 0. With
 * a positive radius those within radius of a pixel that is not 0 get a negative distance, counted from -1e-10 at the
 * boundary, so that the map is a signed band around it; those farther away get 0. A mask without a zero gives
 * values from 999999 on.
 *
 * @param radius  0, or the width of the band.
 * @param buffer  of the size that the query tells for this roi.
 *
 * Threads: images of more than 12 rows and columns go to two threads; the halves have about as many pixels that are not
 * 0. Sweeps then come in another order, so the last bits may differ from those of one thread. Any team gives the same
 * result.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep (dstStep),
 * noxStsBadArgument unless radius >= 0.
 */
NOX_API NoxStatus noxiFastMarching_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                             Nox32f radius, Nox8u *buffer);

NOX_END_DECLS

#endif
