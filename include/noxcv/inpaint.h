/**
 * @file inpaint.h
 * Inpainting: damaged pixels of an image are filled from their surroundings, from the outside in.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_INPAINT_H
#define NOXCV_INPAINT_H

#include "../noxtypes.h"
#include "morphology.h"

NOX_BEGIN_DECLS

/**
 * What is known about one mask and one distance map: any number of images of that size are repaired with it. One block
 * of memory in which all pointers point; it refers to nothing of the caller's. Images in it show the work area: the
 * rectangle about the mask's pixels, larger by the radius and one pixel on each side, as far as the region reaches.
 * A call uses the scratch inside, so a state serves one call at a time.
 */
typedef struct {
    Nox8u *holeMask;             /**< 255 on a masked pixel, 0 elsewhere. */
    Nox8u *workMask;             /**< Scratch: rings about the holes, then the pixels that are still unknown. */
    Nox16s *imageGradient;       /**< Scratch: for each pixel and channel the x and the y gradient. */
    Nox16s *distanceGradient;    /**< Method 0: gradient pairs of the distance map, 12 fractional bits. */
    Nox32f *distance;            /**< The distance map. */
    Nox64f *order;               /**< Pixels to fill: sorted distances that hold y * workWidth + x in their low 28 bits;
                                      zeros come first and stand for no pixel. */
    void *neighbours;            /**< The records of the disc's pixels. */
    NoxiMorphState *morphBig;    /**< Dilation by the square of the radius. */
    NoxiMorphState *morphCross;  /**< Dilation by a pixel and its four direct neighbours. */
    Nox32s width;                /**< Of the region that the state was made for. */
    Nox32s height;               /**< The same for the height. */
    Nox32s workWidth;            /**< Of the work area. */
    Nox32s workHeight;           /**< The same for the height. */
    Nox32s channels;             /**< 1 or 3. */
    Nox32s method;               /**< 0 or 1. */
    Nox32s count;                /**< Masked pixels, and entries of order. */
    Nox32s workX;                /**< Left column of the work area. */
    Nox32s workY;                /**< Its top row. */
    Nox32s workWidth2;           /**< As workWidth. */
    Nox32s workHeight2;          /**< As workHeight. */
    Nox32f radius;               /**< As the caller gave it. */
    Nox32s neighbourCount;       /**< Records in neighbours. */
    Nox32s maskStep;             /**< Bytes from row to row of holeMask and workMask. */
    Nox32s distanceStep;         /**< Bytes from row to row of distance. */
    Nox32s gradientStep;         /**< Bytes from row to row of imageGradient. */
    Nox32s distanceGradientStep; /**< Bytes from row to row of distanceGradient; 0 for method 1. */
} NoxiInpaintState;

/**
 * @name Building an inpainting state
 * Builds the state of a mask and a distance map (usually that of noxiFastMarching_8u32f_C1R for the mask) in a block
 * from noxsMalloc_8u; noxiInpaintFree releases it. Pixels are filled in the order of their distances, those of equal
 * distance row by row.
 *
 * Mask and map should agree: the map positive where the mask is not 0, and nowhere else. The map decides what is
 * filled, the mask what is unknown at first: of the positive distances in the work area the first ones row by row, as
 * many as the mask has pixels, are filled. A masked pixel that is not among them keeps its value and stays unknown to
 * its neighbours; a pixel outside the mask that is among them is painted over. Infinite distances come last, in no
 * particular order.
 *
 * A mask of zeros is allowed: with its state the image is copied.
 *
 * @param radius  neighbours up to this distance count. Needs memory for (2 * radius + 1)^2 of them.
 * @param method  0: neighbours weigh by how well they lie along the gradient of the distance (after A. Telea, "An image
 *                inpainting technique based on the fast marching method", 2004); 1: by how well they lie along the line
 *                of equal brightness that passes through them.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsOddStep (distanceStep),
 * noxStsBadArgument for another method, noxStsBadArgument for a radius that is not at least 1, noxStsNoMemory, also for
 * a state that would exceed the largest int. After a failure *state is as it was.
 * @{
 */
/** Builds a state for images of one channel. */
NOX_API NoxStatus noxiInpaintInitAlloc_8u_C1R(NoxiInpaintState **state, const Nox32f *distance, int distanceStep,
                                              const Nox8u *mask, int maskStep, NoxiSize roi, Nox32f radius, int method);
/** Builds a state for images of three channels. */
NOX_API NoxStatus noxiInpaintInitAlloc_8u_C3R(NoxiInpaintState **state, const Nox32f *distance, int distanceStep,
                                              const Nox8u *mask, int maskStep, NoxiSize roi, Nox32f radius, int method);
/** @} */

/**
 * @name Releasing an inpainting state
 * Status: noxStsNullPointer.
 * @{
 */
/** Releases a state for one channel. */
NOX_API NoxStatus noxiInpaintFree_8u_C1R(NoxiInpaintState *state);
/** Releases a state for three channels. */
NOX_API NoxStatus noxiInpaintFree_8u_C3R(NoxiInpaintState *state);
/** @} */

/**
 * @name Inpainting
 * Copies src to dst and then fills, one after the other, the pixels of the state's order. dst may be src; other
 * overlaps are not allowed. Runs on the calling thread. Calls do not depend on each other.
 *
 * Each pixel becomes a mean of the known pixels up to the radius, where a filled pixel is known from then on. Near the
 * edges of the work area the radius is truncated to an integer. With d the distance to a neighbour, (dx, dy) the way
 * from it, g its gradient, T the distance map:
 * - Method 0: weights |2^-12 / (|T - T0| + 1) * d^-3 * t|, t the product of (dx, dy) with the map's gradient at the
 *   pixel (of 12 fractional bits), at least 2.5e-25 in size. To the mean are added 0.5 and the normed sum of -g times
 *   (dx, dy), weighted alike: (sx + sy) / (|(sx, sy)| + 1e-20). The result is clamped and truncated.
 * - Method 1, for each channel on its own: weights t / (d * (d^4 + 1)), t = |(dx, dy) x g| / |g|, g turned by a right
 *   angle, or 1e-6 where that product is 0; near the edges of the work area the factor 1 / d is absent then. The root
 *   comes from the processor's estimate and one step of Newton's method, so results may differ between makes of
 *   processors. To the mean 0.5 is added, and the result truncated.
 *
 * Where the weights' sum stays below 0.0001, the mean is that of the four direct neighbours that are known; near the
 * edges of the work area they are added to the sums. Sums are formed in single precision, row by row, the result in
 * extended precision. A result that is not a number, from infinite distances, becomes 0.
 *
 * The function decides about the channels: a state made for another number serves as well, with the same result. If it
 * was made for one channel and the image has three, the call takes memory for the gradients from noxsMalloc_8u.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (also when roi is not that of the state), noxStsBadStep,
 * noxStsNoMemory (three channels with a state for one).
 * @{
 */
/** Repairs an image of one channel. */
NOX_API NoxStatus noxiInpaint_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                     NoxiInpaintState *state);
/** Repairs an image of three channels. */
NOX_API NoxStatus noxiInpaint_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                     NoxiInpaintState *state);
/** @} */

NOX_END_DECLS

#endif
