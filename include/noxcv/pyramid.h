/**
 * @file pyramid.h
 * Pyramids and tracking: Gaussian resampling, pyramid layers, pyramidal optical flow.
 */
#ifndef NOXCV_PYRAMID_H
#define NOXCV_PYRAMID_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Gaussian down sampling by two
 * Smooths with the 5 x 5 binomial kernel (1, 4, 6, 4, 1 in each direction, weights summing to 256) and keeps every
 * other row and column, from the first on (P. Burt and E. Adelson, "The Laplacian pyramid as a compact image code",
 * 1983). roi is the size of the source; the destination is (width + 1) / 2 by (height + 1) / 2. Outside the image
 * samples are reflected about the edge sample without repeating it, as often as a short image needs.
 *
 * Integers round half up, (sum + 128) >> 8; nothing can leave the range. Nox32f: the row filter
 * s(x - 2) + 4 (s(x - 1) + s(x + 1)) + 6 s(x) + s(x + 2), in the first column 6 s(0) + 8 s(1) + 2 s(2), in the last
 * column of an odd width 6 s(x) + 8 s(x - 1) + 2 s(x - 2) and of an even one s(x - 2) + 4 (s(x - 1) + s(x + 1)) + 7
 * s(x); then over rows 6 R(y) + 4 (R(y - 1) + R(y + 1)) + R(y - 2) + R(y + 2), times 0.00390625: in single precision,
 * from left to right. Images of one or two rows give (R(first) + R(last)) * 8 * 0.00390625, others of one or two
 * columns the same with rows and columns exchanged.
 *
 * @param buffer  of the size that noxiPyrDownGetBufSize_Gauss5x5 tells for the source's width; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep (each image by its own
 * width), noxStsOddStep (32f).
 * @{
 */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8s_C1R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
NOX_API NoxStatus noxiPyrDown_Gauss5x5_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               Nox8u *buffer);
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8s_C3R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
NOX_API NoxStatus noxiPyrDown_Gauss5x5_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               Nox8u *buffer);
/** @} */

/**
 * @name Gaussian up sampling by two
 * Doubles an image with the same kernel: the source stands at the even rows and columns of a signal of zeros, which is
 * smoothed with four times the kernel. roi is the size of the source; the destination is 2 width by 2 height. Before
 * the first sample the image is reflected without repeating the edge; behind the last one the last sample is repeated.
 *
 * Per source row, even places s(i - 1) + 6 s(i) + s(i + 1), in the first column 2 (3 s(0) + s(1)) and in the last
 * s(i - 1) + 7 s(i); odd places 4 (s(i) + s(i + 1)), in the last column 8 s(i). Then destination row 2y is
 * R(y - 1) + 6 R(y) + R(y + 1) and row 2y + 1 is 4 (R(y) + R(y + 1)). Integers round half up, (sum + 32) >> 6; Nox32f
 * is multiplied by 0.015625, in single precision from left to right. An image of one column (row) gives two equal
 * columns (rows).
 *
 * @param buffer  of the size that noxiPyrUpGetBufSize_Gauss5x5 tells for the source's width; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep (each image by its own
 * width), noxStsOddStep (32f).
 * @{
 */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8s_C1R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
NOX_API NoxStatus noxiPyrUp_Gauss5x5_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                             Nox8u *buffer);
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8s_C3R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
NOX_API NoxStatus noxiPyrUp_Gauss5x5_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                             Nox8u *buffer);
/** @} */

/**
 * @name Buffer sizes of the Gaussian sampling
 * Writes the bytes of the work buffer for a source of this width: six rows of (width * channels * 4 + 15) & ~15 bytes
 * for down sampling, three of (2 * width * channels * 4 + 15) & ~15 for up sampling, and 32.
 *
 * @param dataType  1 for 8u, 3 for 8s, 13 for 32f; the size does not depend on it.
 * @param channels  1 or 3.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadChannelCount, noxStsBadDataType.
 * @{
 */
NOX_API NoxStatus noxiPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize);
NOX_API NoxStatus noxiPyrUpGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize);
/** @} */

NOX_END_DECLS

#endif
