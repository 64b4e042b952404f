/**
 * @file filter.h
 * Separable filtering: row and column pipelines, border derivative and smoothing filters.
 *
 * Conventions of this header, beyond those of frame.h:
 * - Kernels are applied as correlations: the taps are not mirrored.
 * - borderType is one of noxBorderConstant to noxBorderMirrorEdge and tells what stands for pixels outside the image.
 *   A reflection goes back and forth however small the image is; in a line of one pixel noxBorderMirror acts like
 *   noxBorderMirrorEdge.
 * - Work buffers are the caller's. Their sizes depend on the thread count, so query a size under the thread count that
 *   will use the buffer. A buffer needs no alignment and holds nothing between calls; calls that run at the same time
 *   need a buffer each.
 */
#ifndef NOXCV_FILTER_H
#define NOXCV_FILTER_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Sizes of the pipelines' work buffers, in bytes
 * Writes to size n * 32 + n * (height + kernelSize) * sizeof(void *) + n * S, with n the thread count and S the scratch
 * of one thread:
 * for K = kernelSize, rows 8u16s: 4K + 32 (C3: 12K + 32); 16s: 48K + 80 (C3: 28K + 32); Low: 24K + 64 (C3: 208K + 64);
 * 32f: 16K + 32 (C3: 192K + 32). Columns 16s, 16s8u, 16s8s: 4K + 32; Low: 32; 32f: 0.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize (width, height or kernelSize below 1); noxStsBadSize,
 * and nothing stored, when the size exceeds 2147483647.
 * @{
 */
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_8u16s_C1R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_8u16s_C3R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_16s_C1R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_16s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_16s_C3R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_16s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_Low_16s_C1R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_Low_16s_C3R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_32f_C1R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_32f_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterRowBorderPipeline_32f_C3R. */
NOX_API NoxStatus noxiFilterRowBorderPipelineGetBufferSize_32f_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s_C1R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s_C3R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s8u_C1R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s8u_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s8u_C3R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s8u_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s8s_C1R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s8s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_16s8s_C3R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_16s8s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_Low_16s_C1R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_Low_16s_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_Low_16s_C3R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_Low_16s_C3R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_32f_C1R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_32f_C1R(NoxiSize roi, int kernelSize, int *size);
/** Bytes of the work buffer of noxiFilterColumnPipeline_32f_C3R. */
NOX_API NoxStatus noxiFilterColumnPipelineGetBufferSize_32f_C3R(NoxiSize roi, int kernelSize, int *size);
/** @} */

/**
 * @name Row filters into separate rows
 * Filters each row of src with a kernel of kernelSize taps and writes row y to rows[y], an array of its own of width
 * times channels elements: element i is the sum over j of kernel[j] times pixel i + j - xAnchor of the row, channel by
 * channel; borderType rules pixels outside the row (noxBorderConstant: borderValue, for three channels one value each).
 * The result is the first stage of a separable filter whose second stage is a column filter: the rows need not lie in
 * order or side by side, so a ring of rows will do.
 *
 * With a the sum of products:
 * - 8u16s: a in 32 bits with wrap, times the reciprocal of the divisor, clamped to 16 bits, truncated toward zero.
 * - 16s: the same with an exact sum. The C1 form with a kernelSize other than 3 and 5 first multiplies each tap by the
 *   reciprocal and rounds the product to single precision; the sum with those taps is clamped and truncated.
 * - Low_16s: a in 32 bits with wrap, times m with wrap, shifted right by 14, the low 16 bits stored without a clamp;
 *   m = 16384 / divisor, truncated (0 for a divisor above 16384). The C1 form with kernelSize 5 truncates a times the
 *   reciprocal instead and stores the low 16 bits.
 * - 32f: the sum in extended precision, j ascending, rounded once to single. No divisor.
 *
 * The reciprocal is 1 / divisor in extended precision (64 bits) and the product is rounded to that precision before
 * truncation. It differs from an exact division in exact multiples of some divisors only (41 is the first), whose
 * quotients come out nearer to zero by one.
 *
 * Status: noxStsNullPointer (src, rows, kernel, buffer), noxStsBadSize (roi, kernelSize below 1), noxStsBadAnchor
 * (xAnchor outside 0 to kernelSize - 1), noxStsBadStep, noxStsOddStep (16s and 32f), noxStsBadArgument (borderType),
 * noxStsNullPointer (C3: noxBorderConstant without borderValue), noxStsBadArgument (divisor 0), in this order. A null
 * pointer in rows ends the call with noxStsNullPointer when it is reached, with earlier rows written.
 *
 * Threads: areas of at least 32768 pixels a thread go parallel; 32f_C1R with kernelSize 3 or 5 only where there are
 * several cores, 16s_C1R only with kernelSize above 3.
 * @{
 */
/** Rows filtered: 8-bit unsigned to 16-bit signed, one channel. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                        const Nox16s *kernel, int kernelSize, int xAnchor,
                                                        int borderType, Nox8u borderValue, int divisor, Nox8u *buffer);
/** Rows filtered: 8-bit unsigned to 16-bit signed, three channels. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_8u16s_C3R(const Nox8u *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                        const Nox16s *kernel, int kernelSize, int xAnchor,
                                                        int borderType, const Nox8u *borderValue, int divisor,
                                                        Nox8u *buffer);
/** Rows filtered: 16-bit signed, one channel. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_16s_C1R(const Nox16s *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                      const Nox16s *kernel, int kernelSize, int xAnchor, int borderType,
                                                      Nox16s borderValue, int divisor, Nox8u *buffer);
/** Rows filtered: 16-bit signed, three channels. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_16s_C3R(const Nox16s *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                      const Nox16s *kernel, int kernelSize, int xAnchor, int borderType,
                                                      const Nox16s *borderValue, int divisor, Nox8u *buffer);
/** Rows filtered in wrapping sums, scaled by a 14-bit reciprocal and cut to 16 bits: 16-bit signed, one channel. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_Low_16s_C1R(const Nox16s *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                          const Nox16s *kernel, int kernelSize, int xAnchor,
                                                          int borderType, Nox16s borderValue, int divisor,
                                                          Nox8u *buffer);
/** Rows filtered in wrapping sums, scaled by a 14-bit reciprocal and cut to 16 bits: 16-bit signed, three channels. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_Low_16s_C3R(const Nox16s *src, int srcStep, Nox16s **rows, NoxiSize roi,
                                                          const Nox16s *kernel, int kernelSize, int xAnchor,
                                                          int borderType, const Nox16s *borderValue, int divisor,
                                                          Nox8u *buffer);
/** Rows filtered: single precision, one channel. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_32f_C1R(const Nox32f *src, int srcStep, Nox32f **rows, NoxiSize roi,
                                                      const Nox32f *kernel, int kernelSize, int xAnchor, int borderType,
                                                      Nox32f borderValue, Nox8u *buffer);
/** Rows filtered: single precision, three channels. */
NOX_API NoxStatus noxiFilterRowBorderPipeline_32f_C3R(const Nox32f *src, int srcStep, Nox32f **rows, NoxiSize roi,
                                                      const Nox32f *kernel, int kernelSize, int xAnchor, int borderType,
                                                      const Nox32f *borderValue, Nox8u *buffer);
/** @} */

/**
 * @name Column filters from separate rows
 * Filters down the columns of height + kernelSize - 1 rows given by their pointers: row y of dst is the sum over j of
 * kernel[j] times rows[y + j], element by element. There is no border: the caller repeats pointers.
 *
 * With a the sum of products and the reciprocal as in the row filters:
 * - 16s, 16s8u, 16s8s: the exact a times the reciprocal of the divisor, clamped to the range of dst, truncated.
 * - Low_16s: a in 32 bits with wrap, times the reciprocal, truncated, the low 16 bits stored without a clamp.
 * - 32f: the sum in extended precision, j ascending, rounded once to single. No divisor.
 *
 * Status: noxStsNullPointer (rows, dst, kernel), noxStsBadSize (roi, kernelSize below 1), noxStsBadStep, noxStsOddStep
 * (2-byte and wider elements of dst), noxStsNullPointer (buffer), noxStsBadArgument (divisor 0), noxStsNullPointer (one
 * of the row pointers), in this order.
 *
 * Threads: areas of at least 32768 pixels a thread go parallel; integer forms with kernelSize 3 or 5 only where there
 * are several cores.
 * @{
 */
/** Columns filtered: 16-bit signed, one channel. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s_C1R(const Nox16s **rows, Nox16s *dst, int dstStep, NoxiSize roi,
                                                   const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered: 16-bit signed, three channels. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s_C3R(const Nox16s **rows, Nox16s *dst, int dstStep, NoxiSize roi,
                                                   const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered: 16-bit signed to 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s8u_C1R(const Nox16s **rows, Nox8u *dst, int dstStep, NoxiSize roi,
                                                     const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered: 16-bit signed to 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s8u_C3R(const Nox16s **rows, Nox8u *dst, int dstStep, NoxiSize roi,
                                                     const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered: 16-bit signed to 8-bit signed, one channel. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s8s_C1R(const Nox16s **rows, Nox8s *dst, int dstStep, NoxiSize roi,
                                                     const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered: 16-bit signed to 8-bit signed, three channels. */
NOX_API NoxStatus noxiFilterColumnPipeline_16s8s_C3R(const Nox16s **rows, Nox8s *dst, int dstStep, NoxiSize roi,
                                                     const Nox16s *kernel, int kernelSize, int divisor, Nox8u *buffer);
/** Columns filtered in wrapping sums, divided and cut to 16 bits: 16-bit signed, one channel. */
NOX_API NoxStatus noxiFilterColumnPipeline_Low_16s_C1R(const Nox16s **rows, Nox16s *dst, int dstStep, NoxiSize roi,
                                                       const Nox16s *kernel, int kernelSize, int divisor,
                                                       Nox8u *buffer);
/** Columns filtered in wrapping sums, divided and cut to 16 bits: 16-bit signed, three channels. */
NOX_API NoxStatus noxiFilterColumnPipeline_Low_16s_C3R(const Nox16s **rows, Nox16s *dst, int dstStep, NoxiSize roi,
                                                       const Nox16s *kernel, int kernelSize, int divisor,
                                                       Nox8u *buffer);
/** Columns filtered: single precision, one channel. */
NOX_API NoxStatus noxiFilterColumnPipeline_32f_C1R(const Nox32f **rows, Nox32f *dst, int dstStep, NoxiSize roi,
                                                   const Nox32f *kernel, int kernelSize, Nox8u *buffer);
/** Columns filtered: single precision, three channels. */
NOX_API NoxStatus noxiFilterColumnPipeline_32f_C3R(const Nox32f **rows, Nox32f *dst, int dstStep, NoxiSize roi,
                                                   const Nox32f *kernel, int kernelSize, Nox8u *buffer);
/** @} */

/**
 * @name Sizes of the border filters' work buffers, in bytes
 * mask is noxMskSize3x3 or noxMskSize5x5; the Scharr filters are 3x3. Each function writes to size what the filter of
 * its name needs for images of size roi, for n threads:
 *
 *     n * ((2 * K + 15) * R + L * ((3 * K + 30) * P) + A + 32 + n * (2 * (32 + (height + K) * P) + S) + M)
 *
 * K is 3 or 5, and P the bytes of a pointer. With w16 and w4 the width rounded up to multiples of 16 and 4: R, a row,
 * is 2 * w16 for 8-bit images and 4 * w4 for 32f; S is 8 * K + 64, for 32f 16 * K + 32; L is 1, A is 64, and M is 0.
 * The Laplacian has R = 4 * w16, for 32f 8 * w16, L = 2 and A = 96; and the 8u8s one of 5x5 M = 2 * w16 * height + 32.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize, noxStsBadMaskSize; noxStsBadSize, and nothing stored,
 * when the size exceeds 2147483647.
 * @{
 */
/** Bytes of the work buffer of noxiFilterSobelHorizBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelHorizBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelHorizBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelVertGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelVertGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelVertGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelNegVertBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelNegVertGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelNegVertBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelNegVertGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelNegVertBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelNegVertGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelHorizSecondBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelHorizSecondBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelHorizSecondBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelHorizSecondGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertSecondBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelVertSecondGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertSecondBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelVertSecondGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelVertSecondBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelVertSecondGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelCrossBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterSobelCrossGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelCrossBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterSobelCrossGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterSobelCrossBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterSobelCrossGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterLaplacianBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterLaplacianGetBufferSize_8u16s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterLaplacianBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterLaplacianGetBufferSize_8u8s_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterLaplacianBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterLaplacianGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterScharrHorizBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterScharrHorizGetBufferSize_8u16s_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterScharrHorizBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterScharrHorizGetBufferSize_8u8s_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterScharrHorizBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterScharrHorizGetBufferSize_32f_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterScharrVertBorder_8u16s_C1R. */
NOX_API NoxStatus noxiFilterScharrVertGetBufferSize_8u16s_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterScharrVertBorder_8u8s_C1R. */
NOX_API NoxStatus noxiFilterScharrVertGetBufferSize_8u8s_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterScharrVertBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterScharrVertGetBufferSize_32f_C1R(NoxiSize roi, int *size);
/** Bytes of the work buffer of noxiFilterLowpassBorder_8u_C1R. */
NOX_API NoxStatus noxiFilterLowpassGetBufferSize_8u_C1R(NoxiSize roi, int mask, int *size);
/** Bytes of the work buffer of noxiFilterLowpassBorder_32f_C1R. */
NOX_API NoxStatus noxiFilterLowpassGetBufferSize_32f_C1R(NoxiSize roi, int mask, int *size);
/** @} */

/**
 * @name Sobel, Scharr and Laplacian filters
 * One channel; mask is noxMskSize3x3 or noxMskSize5x5, where there is a choice. Each filter is a row kernel followed by
 * a column kernel (I. Sobel, 1968; H. Scharr, 2000):
 *
 * | filter           | 3x3: rows; columns              | 5x5: rows; columns                    |
 * |------------------|---------------------------------|---------------------------------------|
 * | SobelHoriz       | 1 2 1; -1 0 1                   | 1 4 6 4 1; -1 -2 0 2 1                |
 * | SobelVert        | 1 0 -1; 1 2 1                   | 1 2 0 -2 -1; 1 4 6 4 1                |
 * | SobelNegVert     | minus SobelVert                 | minus SobelVert                       |
 * | SobelHorizSecond | 1 2 1; 1 -2 1                   | 1 4 6 4 1; 1 0 -2 0 1                 |
 * | SobelVertSecond  | 1 -2 1; 1 2 1                   | 1 0 -2 0 1; 1 4 6 4 1                 |
 * | SobelCross       | 1 0 -1; -1 0 1                  | 1 2 0 -2 -1; -1 -2 0 2 1              |
 * | ScharrHoriz      | 3 10 3; -1 0 1                  |                                       |
 * | ScharrVert       | -1 0 1; 3 10 3                  |                                       |
 * | Laplacian        | 2 0 2, 0 -8 0, 2 0 2 as a whole | SobelHorizSecond plus SobelVertSecond |
 *
 * 8u16s gives the exact value. 8u8s gives the value times the reciprocal of the divisor (in extended precision, as in
 * the row filters above), clamped to -128 to 127, truncated toward zero; Laplacian 5x5 takes the reciprocal and the
 * product in single precision. 32f rounds each of the two stages once, from an extended-precision sum to single; the
 * second half of Laplacian 5x5 adds to the first half's rounded value. Above and below the image noxBorderConstant
 * stands for rows whose filtered value is borderValue times the sum of the row taps.
 *
 * Status: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep (16s and 32f images),
 * noxStsBadArgument (borderType, then divisor 0), noxStsBadMaskSize, in this order.
 *
 * Threads: with more than one thread on more than one core, images of at least 128 rows a thread and 256 columns go
 * parallel (8u ScharrHoriz of any width; 8u8s Laplacian 3x3 from 32 rows a thread, 5x5 never; 32f ScharrVert from 256
 * rows a thread, on any core count). From 256 rows a thread, 5x5 forms of 8u SobelHoriz and of 32f SobelVert,
 * SobelNegVert and SobelCross go parallel on a single core too.
 * @{
 */
/** Below minus above (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelHorizBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                       NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                       Nox8u *buffer);
/** Below minus above (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelHorizBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                      NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                      int divisor, Nox8u *buffer);
/** Below minus above (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelHorizBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                     NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                     Nox8u *buffer);
/** Left minus right (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelVertBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                      NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                      Nox8u *buffer);
/** Left minus right (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelVertBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                     NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                     int divisor, Nox8u *buffer);
/** Left minus right (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelVertBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                    Nox8u *buffer);
/** Right minus left (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelNegVertBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                         NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                         Nox8u *buffer);
/** Right minus left (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelNegVertBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                        NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                        int divisor, Nox8u *buffer);
/** Right minus left (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelNegVertBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                       Nox8u *buffer);
/** Second derivative down the columns (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelHorizSecondBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                             NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                             Nox8u *buffer);
/** Second derivative down the columns (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelHorizSecondBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                            NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                            int divisor, Nox8u *buffer);
/** Second derivative down the columns (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelHorizSecondBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                           NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                           Nox8u *buffer);
/** Second derivative along the rows (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelVertSecondBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                            NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                            Nox8u *buffer);
/** Second derivative along the rows (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelVertSecondBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                           NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                           int divisor, Nox8u *buffer);
/** Second derivative along the rows (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelVertSecondBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                          NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                          Nox8u *buffer);
/** Mixed second derivative (Sobel): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterSobelCrossBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                       NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                       Nox8u *buffer);
/** Mixed second derivative (Sobel): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterSobelCrossBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                      NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                      int divisor, Nox8u *buffer);
/** Mixed second derivative (Sobel): single precision. */
NOX_API NoxStatus noxiFilterSobelCrossBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                     NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                     Nox8u *buffer);
/** Laplacian: 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterLaplacianBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                      NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                      Nox8u *buffer);
/** Laplacian: 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterLaplacianBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                     NoxiSize roi, int mask, int borderType, Nox8u borderValue,
                                                     int divisor, Nox8u *buffer);
/** Laplacian: single precision. */
NOX_API NoxStatus noxiFilterLaplacianBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                    Nox8u *buffer);
/** Below minus above (Scharr): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterScharrHorizBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                        NoxiSize roi, int borderType, Nox8u borderValue, Nox8u *buffer);
/** Below minus above (Scharr): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterScharrHorizBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                       NoxiSize roi, int borderType, Nox8u borderValue, int divisor,
                                                       Nox8u *buffer);
/** Below minus above (Scharr): single precision. */
NOX_API NoxStatus noxiFilterScharrHorizBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                      NoxiSize roi, int borderType, Nox32f borderValue, Nox8u *buffer);
/** Right minus left (Scharr): 8-bit unsigned to 16-bit signed. */
NOX_API NoxStatus noxiFilterScharrVertBorder_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                       NoxiSize roi, int borderType, Nox8u borderValue, Nox8u *buffer);
/** Right minus left (Scharr): 8-bit unsigned to 8-bit signed. */
NOX_API NoxStatus noxiFilterScharrVertBorder_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep,
                                                      NoxiSize roi, int borderType, Nox8u borderValue, int divisor,
                                                      Nox8u *buffer);
/** Right minus left (Scharr): single precision. */
NOX_API NoxStatus noxiFilterScharrVertBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                     NoxiSize roi, int borderType, Nox32f borderValue, Nox8u *buffer);
/** @} */

/**
 * @name Low-pass filters: the mean of the 3x3 or 5x5 neighbourhood
 * 8u: with s the sum, 3x3 gives (7280 s + 36400) >> 16 and 5x5 gives 2621 s >> 16; a flat image of 255 thus gives 254
 * at 5x5. 32f: the row sums rounded to single; then their sum times 0.11111111F or 0.04F in extended precision, rounded
 * once. mask is noxMskSize3x3 or noxMskSize5x5. borderType and borderValue, and threads, as in the Sobel filters.
 *
 * Status: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep (32f images),
 * noxStsBadArgument (borderType), noxStsBadMaskSize, in this order.
 * @{
 */
/** Mean of the window: 8-bit unsigned. */
NOX_API NoxStatus noxiFilterLowpassBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int mask, int borderType, Nox8u borderValue, Nox8u *buffer);
/** Mean of the window: single precision. */
NOX_API NoxStatus noxiFilterLowpassBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int mask, int borderType, Nox32f borderValue,
                                                  Nox8u *buffer);
/** @} */

/**
 * Writes to size the bytes of the Gaussian filter's work buffer: ((w4 + K) * (height + K) + K) * 4 + 64, with w4 the
 * width rounded up to a multiple of 4 and K = kernelSize.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize, noxStsBadArgument (kernelSize below 3 or even);
 * noxStsBadSize, and nothing stored, when the size exceeds 2147483647.
 */
NOX_API NoxStatus noxiFilterGaussGetBufferSize_32f_C1R(NoxiSize roi, int kernelSize, int *size);

/**
 * Gaussian filter of any odd size, one channel: rows, then columns, all in single precision with the products added in
 * ascending order. The edge pixels are repeated outside the image whatever borderType and borderValue say.
 *
 * sigma is the standard deviation in pixels. It is squared, so its sign does not matter, and it is not tested: with a
 * sigma of 0 the centre's exponent is 0 / 0, and the whole image becomes not-a-numbers, as with a sigma that is one. An
 * infinite sigma makes all taps 1 / (K + 1).
 *
 * Tap i, with K = kernelSize and K/2 rounded down, is exp(-(i - K/2)^2 / (2 sigma^2)) over the sum of those values for
 * i = 0 to K, that is of one value more than there are taps: the taps add up to less than 1, and a flat image comes out
 * darker by the share of that value. From kernelSize 11 on, whole groups of 8 taps from the first one at a 16-byte
 * boundary of the buffer on are multiplied by an approximate reciprocal of the sum (an estimate and one Newton step)
 * instead of divided by it.
 *
 * With a sigma of 0, or one whose square vanishes, the middle value is 0 / 0: all taps, and so all pixels, are not
 * numbers.
 *
 * Status: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadStep (a step below the width, both in plain
 * numbers), noxStsBadArgument (kernelSize below 3 or even), in this order. Runs on the calling thread.
 */
NOX_API NoxStatus noxiFilterGaussBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                                int kernelSize, Nox32f sigma, int borderType, Nox32f borderValue,
                                                Nox8u *buffer);

/**
 * @name Taps of a Sobel kernel of any odd size
 * Writes kernelSize taps: the binomial smoothing of that size, differentiated dx times; negated when sign is negative.
 * A kernelSize of 3 and a dx of 1 give -1 0 1; 5 and 0 give 1 4 6 4 1. 16s keeps the low 16 bits; 32f rounds each
 * addition to single.
 *
 * Status: noxStsNullPointer (kernel), noxStsBadSize (kernelSize below 1 or even, dx outside 0 to kernelSize - 1), in
 * this order.
 * @{
 */
/** Taps of a Sobel kernel as 16-bit integers. */
NOX_API NoxStatus noxiGenSobelKernel_16s(Nox16s *kernel, int kernelSize, int dx, int sign);
/** Taps of a Sobel kernel in single precision. */
NOX_API NoxStatus noxiGenSobelKernel_32f(Nox32f *kernel, int kernelSize, int dx, int sign);
/** @} */

NOX_END_DECLS

#endif
