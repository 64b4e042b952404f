/**
 * @file pyramid.h
 * Pyramids: Gaussian resampling by two, pyramid records, and layers at any rate.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
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
/** Half the size: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
/** Half the size: 8-bit signed, one channel. */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8s_C1R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
/** Half the size: single precision, one channel. */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               Nox8u *buffer);
/** Half the size: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
/** Half the size: 8-bit signed, three channels. */
NOX_API NoxStatus noxiPyrDown_Gauss5x5_8s_C3R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer);
/** Half the size: single precision, three channels. */
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
/** Twice the size: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
/** Twice the size: 8-bit signed, one channel. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8s_C1R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
/** Twice the size: single precision, one channel. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                             Nox8u *buffer);
/** Twice the size: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
/** Twice the size: 8-bit signed, three channels. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_8s_C3R(const Nox8s *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,
                                            Nox8u *buffer);
/** Twice the size: single precision, three channels. */
NOX_API NoxStatus noxiPyrUp_Gauss5x5_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                             Nox8u *buffer);
/** @} */

/**
 * @name Buffer sizes of the Gaussian sampling
 * Writes to bufferSize the bytes of the work buffer for a source of this width: for down sampling six rows of
 * width * channels * 4 bytes, rounded up to a multiple of 16, and 32; for up sampling three rows of
 * 2 * width * channels * 4 bytes, rounded up likewise, and 32.
 *
 * @param dataType  noxType8u (1), noxType8s (3) or noxType32f (13); the size does not depend on it.
 * @param channels  1 or 3.
 *
 * Status, in this order: noxStsNullPointer (bufferSize), noxStsBadSize (width below 1), noxStsBadChannelCount,
 * noxStsBadDataType; noxStsBadSize, and nothing stored, when the size exceeds 2147483647.
 * @{
 */
/** Bytes of the work buffer of noxiPyrDown_Gauss5x5 for a source of this width. */
NOX_API NoxStatus noxiPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize);
/** Bytes of the work buffer of noxiPyrUp_Gauss5x5 for a source of this width. */
NOX_API NoxStatus noxiPyrUpGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize);
/** @} */

/**
 * An image pyramid: the sizes and scales of its levels, and places for the caller's images. The caller reads it and
 * fills images and steps.
 */
typedef struct {
    Nox8u **images;   /**< level + 1 pointers to the first pixel of each level; null at first. */
    NoxiSize *sizes;  /**< level + 1 sizes. */
    Nox64f *rates;    /**< level + 1 scales against level 0: 1, 1 / rate, its powers. */
    int *steps;       /**< level + 1 row steps in bytes; 0 at first. */
    void *layerState; /**< For the caller's use; null at first. */
    int level;        /**< Index of the last level. */
} NoxiPyramid;

/** A layer state: a normalised kernel and the scratch of a layer call. One state serves one call at a time. */
typedef struct NoxiPyramidLayerState NoxiPyramidLayerState;

/**
 * @name Sizes of neighbouring levels
 * noxiGetPyramidUpROI writes the smallest and the largest size that a level may have above one of size roi to dstRoiMin
 * and dstRoiMax: for each side of length n
 *
 *     smallest(n) = max(trunc((n - 1) rate) + 1, n + 1), and 1 when n is 1
 *     largest(n)  = max(trunc(n rate), n + 1)
 *
 * with the products in single precision. noxiGetPyramidDownROI writes the size below one of size roi to dstRoi: for
 * each side of length n it begins with
 *
 *     m = max(trunc(n / rate + 0.5), 1)
 *
 * in single precision, and then takes 1 off m while n < smallest(m) and m > 1, and adds 1 while n > largest(m): so n is
 * a size that noxiGetPyramidUpROI allows above m, and a layer may go down and up again between the two.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadArgument unless 1 < rate <= 10.
 * @{
 */
/** Size of the level below one of size roi. */
NOX_API NoxStatus noxiGetPyramidDownROI(NoxiSize roi, NoxiSize *dstRoi, Nox32f rate);
/** Smallest and largest size of the level above one of size roi. */
NOX_API NoxStatus noxiGetPyramidUpROI(NoxiSize roi, NoxiSize *dstRoiMin, NoxiSize *dstRoiMax, Nox32f rate);
/** @} */

/**
 * @name Pyramid record
 * noxiPyramidInitAlloc makes the record of a pyramid whose level 0 has the size roi, with levels up to `level` or as
 * many as the image allows (until both sides are 1). It holds no pixels. noxiPyramidFree releases it.
 *
 * Status of noxiPyramidInitAlloc, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadArgument unless
 * 1 < rate <= 10 and level >= 1, noxStsNoMemory. Of noxiPyramidFree: noxStsNullPointer.
 * @{
 */
/** Makes the record of a pyramid: sizes and scales of its levels. */
NOX_API NoxStatus noxiPyramidInitAlloc(NoxiPyramid **pyramid, int level, NoxiSize roi, Nox32f rate);
/** Releases the record of a pyramid. */
NOX_API NoxStatus noxiPyramidFree(NoxiPyramid *pyramid);
/** @} */

/**
 * @name States of the down layer
 * Makes the state of a layer for images up to the size roi of the source, the larger of the two. The kernel is
 * symmetric: its left half and centre are used, and noxStsKernelNotSymmetric warns when a mirrored tap differs (exactly
 * for integers, by more than the smallest normal number for Nox32f). Tap k(i) is
 * kernel[i]: k(0) is the outermost tap on the left, k(c) with c = kernelSize / 2 the centre, and k(2c) the outermost on
 * the right, for which k(0) stands. With sum = k(c) + 2 (k(0) + ... + k(c - 1)):
 * Integer taps get 13 fractional bits: ((k(i) * 16384) / sum) >> 1, the division truncating toward zero; Nox32f taps
 * are divided by the sum.
 *
 * Taps whose sum is zero are not normalised, and lie in a layout of their own: tap i of the left half at i and at
 * kernelSize - i, so that the tap behind the centre holds 0xFF bytes; the centre of a Nox32f kernel becomes the value
 * of the kernel's byte number kernelSize / 2.
 *
 * @param kernelSize  odd, at least 3.
 * @param mode        2.
 *
 * Status, in this order: noxStsNullPointer (state, kernel), noxStsBadSize, noxStsBadArgument (mode, rate unless
 * 1 < rate <= 10, kernelSize), noxStsNoMemory; the warning noxStsKernelNotSymmetric.
 * @{
 */
/** State of the down layer: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_8u_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                       const Nox16s *kernel, int kernelSize, int mode);
/** State of the down layer: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_16u_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                        const Nox16s *kernel, int kernelSize, int mode);
/** State of the down layer: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_32f_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                        const Nox32f *kernel, int kernelSize, int mode);
/** State of the down layer: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_8u_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                       const Nox16s *kernel, int kernelSize, int mode);
/** State of the down layer: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_16u_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                        const Nox16s *kernel, int kernelSize, int mode);
/** State of the down layer: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownInitAlloc_32f_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                        const Nox32f *kernel, int kernelSize, int mode);
/** @} */

/**
 * @name Down layer
 * Smooths with the state's kernel in both directions and resamples by its rate.
 *
 * Smoothing reflects at the edges without repeating the edge sample. 8u: R = (sum of pixel * k along the row) >> 8,
 * then P = (sum of k * R along the column + 2^14) >> 15, limited to 16 bits, which has 3 fractional bits; 16u the same
 * with shifts 10 and 13 and a rounding of 2^12. When the kernel is not smaller than both sides of the image each
 * product is shifted by itself instead of the row's sum. Nox32f: plain sums in single precision, taps ascending.
 *
 * Resampling: for a rate within 1.99998 to 2.00002, every second row and column, from the first on (a column or row
 * behind the last stands for the last). Otherwise along rows, then columns, output i is
 * trunc(v(q + 1) f + 0.5 + v(q) (1 - f)) with p = i rate, q = trunc(p), f = p - q in single precision; v(q) where q + 1
 * lies outside. Nox32f has no 0.5. At the end integers are (v + 4) >> 3, limited to their range. Channels do not mix.
 *
 * srcRoi may be smaller than the state's.
 *
 * Status, in this order: noxStsNullPointer (src, dst, state), noxStsBadSize (srcRoi), noxStsBadStep (each image by its
 * own width), noxStsOddStep (16u, 32f), noxStsBadArgument (the state's rate), noxStsBadSize unless dstRoi is what
 * noxiGetPyramidDownROI tells for srcRoi, or when srcRoi is larger than the state's.
 * @{
 */
/** Next smaller level: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDown_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                              NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next smaller level: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDown_16u_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                               int dstStep, NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next smaller level: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerDown_32f_C1R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                               int dstStep, NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next smaller level: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDown_8u_C3R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                              NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next smaller level: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDown_16u_C3R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst,
                                               int dstStep, NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next smaller level: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerDown_32f_C3R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst,
                                               int dstStep, NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** @} */

/**
 * @name States of the up layer
 * Makes the state of a layer for images up to the size roi of the destination, the larger of the two. The kernel is
 * symmetric: its left half and centre are used, and noxStsKernelNotSymmetric warns when a mirrored tap differs (exactly
 * for integers, by more than the smallest normal number for Nox32f). Tap k(i) is
 * kernel[i]: k(0) is the outermost tap on the left, k(c) with c = kernelSize / 2 the centre, and k(2c) the outermost on
 * the right, for which k(0) stands. With sum = k(c) + 2 (k(0) + ... + k(c - 1)):
 * Integer taps get 13 fractional bits: trunc(4 k(i) / s2 * 8192 + 0.5) >> 1 with s2 = 2 sum, in single precision;
 * Nox32f taps are divided by the sum.
 *
 * Taps whose sum is zero are not normalised, and lie in a layout of their own: tap i of the left half at i and at
 * kernelSize - i, so that the tap behind the centre is 0; the centre of a Nox32f kernel becomes the value of
 * the kernel's byte number kernelSize / 2.
 *
 * @param kernelSize  odd, at least 3.
 * @param mode        2.
 *
 * Status, in this order: noxStsNullPointer (state, kernel), noxStsBadSize, noxStsBadArgument (mode, rate unless
 * 1 < rate <= 10, kernelSize), noxStsNoMemory; the warning noxStsKernelNotSymmetric.
 * @{
 */
/** State of the up layer: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_8u_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                     const Nox16s *kernel, int kernelSize, int mode);
/** State of the up layer: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_16u_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                      const Nox16s *kernel, int kernelSize, int mode);
/** State of the up layer: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_32f_C1R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                      const Nox32f *kernel, int kernelSize, int mode);
/** State of the up layer: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_8u_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                     const Nox16s *kernel, int kernelSize, int mode);
/** State of the up layer: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_16u_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                      const Nox16s *kernel, int kernelSize, int mode);
/** State of the up layer: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpInitAlloc_32f_C3R(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate,
                                                      const Nox32f *kernel, int kernelSize, int mode);
/** @} */

/**
 * @name Up layer
 * Spreads each source pixel over the destination with the state's kernel, and divides each destination pixel by the
 * weight that reached it, so that an irregular grid of sources leaves no ripple in brightness: first along rows, then
 * along columns. Outside the image the source is reflected without repeating the edge.
 *
 * Source sample i lies at p = i rate, q = trunc(p + 100) - 100, f = p - q in single precision. With
 * w(t) the normalised tap at distance |t| from the centre and half the distance of the outermost one, it adds
 * w(t - 1) f + w(t) (1 - f) times its value at the places q + t, t from -half + 1 to half; with f = 0, w(t) for all
 * taps (without the outermost when they are 0). Products with f not 0 are truncated after adding 0.5. Row results are
 * scaled by 32768 / weight with 8 bits dropped (8u) or 8192 / weight with 6 bits dropped (16u), rounding half up;
 * column results by the same factors with 22 and 20 bits dropped, and limited to the type's range. Nox32f: divided by
 * the weight, no rounding steps.
 *
 * srcRoi and dstRoi may be smaller than the state's. The call allocates a bordered copy of the source, and scratch
 * where the state of a tiny image with a long kernel has too little.
 *
 * Status, in this order: noxStsNullPointer (src, dst, state), noxStsBadSize (srcRoi), noxStsBadStep (each image by its
 * own width), noxStsOddStep (16u, 32f), noxStsBadArgument (the state's rate), noxStsBadSize unless dstRoi lies in the
 * range of noxiGetPyramidUpROI for srcRoi, or when dstRoi is larger than the state's, noxStsNoMemory.
 * @{
 */
/** Next larger level: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUp_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                            NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next larger level: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUp_16u_C1R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst, int dstStep,
                                             NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next larger level: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerUp_32f_C1R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst, int dstStep,
                                             NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next larger level: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUp_8u_C3R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                            NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next larger level: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUp_16u_C3R(const Nox16u *src, int srcStep, NoxiSize srcRoi, Nox16u *dst, int dstStep,
                                             NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** Next larger level: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerUp_32f_C3R(const Nox32f *src, int srcStep, NoxiSize srcRoi, Nox32f *dst, int dstStep,
                                             NoxiSize dstRoi, NoxiPyramidLayerState *state);
/** @} */

/**
 * @name Release of layer states
 * Releases a layer state; all of these do the same.
 *
 * Status: noxStsNullPointer.
 * @{
 */
/** Releases a state of the down layer, whatever its type. */
NOX_API NoxStatus noxiPyramidLayerDownFree(NoxiPyramidLayerState *state);
/** Releases a state of the up layer, whatever its type. */
NOX_API NoxStatus noxiPyramidLayerUpFree(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownFree_8u_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownFree_16u_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerDownFree_32f_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownFree_8u_C3R(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownFree_16u_C3R(NoxiPyramidLayerState *state);
/** Releases a state of the down layer: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerDownFree_32f_C3R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: 8-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpFree_8u_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: 16-bit unsigned, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpFree_16u_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: single precision, one channel. */
NOX_API NoxStatus noxiPyramidLayerUpFree_32f_C1R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: 8-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpFree_8u_C3R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: 16-bit unsigned, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpFree_16u_C3R(NoxiPyramidLayerState *state);
/** Releases a state of the up layer: single precision, three channels. */
NOX_API NoxStatus noxiPyramidLayerUpFree_32f_C3R(NoxiPyramidLayerState *state);
/** @} */

NOX_END_DECLS

#endif
