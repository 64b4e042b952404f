/**
 * @file opticalflow.h
 * Points tracked between two pictures through their pyramids.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_OPTICALFLOW_H
#define NOXCV_OPTICALFLOW_H

#include "../noxtypes.h"
#include "pyramid.h"

NOX_BEGIN_DECLS

/** A tracker's state: the size of its windows and the scratch of a call. One state serves one call at a time. */
typedef struct NoxiOptFlowPyrLKState NoxiOptFlowPyrLKState;

/**
 * @name States of the point tracker
 * Makes the state of a tracker with windows of winSize by winSize pixels. Pyramid levels that are strictly smaller than
 * roi in both directions are coarse: their derivatives are computed for the whole level at once, with Scharr filters.
 * At the finer levels they are computed in the window of each point. The state has scratch for the thread count of its
 * making; under a larger one the points still go to that many threads.
 *
 * The two sorts of derivatives differ in their last bits. For 8u neither costs much more than the other: with few
 * points on a large level, those of the whole level are computed where points need them only. 16u and 32f always
 * compute the whole level, so there a roi should leave out levels that have more than (winSize + 1) (winSize + 1)
 * pixels for each point: with 2000 points and windows of 21 on 1920 x 1080, a roi that takes in level 0 makes calls
 * take 1.6 times as long as one of 641 x 481.
 *
 * @param hint  kept, not looked at.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (winSize or a side below 1), noxStsNoMemory (nothing stays
 * allocated).
 * @{
 */
/** State for pictures of 8-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKInitAlloc_8u_C1R(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize,
                                                       int hint);
/** State for pictures of 16-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKInitAlloc_16u_C1R(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize,
                                                        int hint);
/** State for pictures of single-precision pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKInitAlloc_32f_C1R(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize,
                                                        int hint);
/** @} */

/**
 * @name Release of tracker states
 * Releases a tracker's state; all of these do the same.
 *
 * Status: noxStsNullPointer.
 * @{
 */
/** Releases a state for pictures of 8-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKFree_8u_C1R(NoxiOptFlowPyrLKState *state);
/** Releases a state for pictures of 16-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKFree_16u_C1R(NoxiOptFlowPyrLKState *state);
/** Releases a state for pictures of single-precision pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLKFree_32f_C1R(NoxiOptFlowPyrLKState *state);
/** @} */

/**
 * @name Point tracker
 * Tracks points from one image to another through their pyramids (B. Lucas and T. Kanade, "An iterative image
 * registration technique", 1981; coarse to fine, J.-Y. Bouguet, 2000). At each level from maxLevel down to 0 the window
 * around a point of the first image is matched against the second image: with Ix, Iy the Scharr derivatives of the
 * first window and D the first window minus the one at the estimate, the step (dx, dy) solves
 *
 *     | sum Ix Ix  sum Ix Iy | | dx |   | sum Ix D |
 *     | sum Ix Iy  sum Iy Iy | | dy | = | sum Iy D |
 *
 * over the cells that lie inside both images. A level ends when dx dx + dy dy < threshold threshold, when a step takes
 * back the one before (both parts to within 0.000345, the estimate then goes half a step back), or after maxIter
 * steps.
 *
 * Windows are bilinear, those of 8u in 16 bits with 7 fractional bits, and centred on the points; a level's point is
 * the given one times rates[level] of pyramid1. Sums of 8u are exact but for row sums that pass 32 bits, which wrap;
 * steps are solved in extended precision and estimates kept in single. With a maxLevel of 1 a fine level 1 hands its
 * estimate to level 0 as it is, without the scale between the two.
 *
 * @param pyramid1   first image; images and steps of levels 0 to maxLevel are set by the caller.
 * @param pyramid2   second image, likewise.
 * @param prevPts    points of the first image, in pixels of level 0.
 * @param nextPts    in: where to begin; out: where the points are in the second image.
 * @param status     out: 0 for a tracked point, else the number of the level that lost it plus 1 (in 8 bits).
 * @param error      out, for lost points too: the root of the mean squared D over the last common cells of both
 * windows, without their last column and row; 0 when there are none, or no window was read at any level.
 * @param maxLevel   the level to begin with; not above that of either pyramid.
 * @param maxIter    steps at a level, at least 1.
 * @param threshold  length of a step that ends a level, in pixels of the level; not below 0.
 * @param state      of the same type and winSize.
 *
 * A point is lost, with nextPts as it was, where its window has no structure (the determinant is below 2^-52). It is
 * lost with nextPts at the estimate where the two windows have no cell inside both images, as it is with coordinates
 * that are not finite. A lost point's error is formed like that of any other. Where the caller has set no image (null,
 * or a step that is too small or odd): in the second pyramid, points are lost at that level; in the first one they stay
 * where they are and their status is the level itself; at a coarse level that is so for the first point only, the
 * others keep the level above.
 *
 * Points are divided among threads; results do not depend on their number.
 *
 * Status, in this order: noxStsNullPointer (pyramid1, pyramid2, state, prevPts, nextPts, status, error), noxStsBadSize
 * (numPoints or winSize below 1, winSize not the state's), noxStsBadArgument (maxLevel, maxIter, threshold, a state of
 * another type). Lost points are no failure of the call.
 * @{
 */
/** Tracks points between pictures of 8-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLK_8u_C1R(const NoxiPyramid *pyramid1, const NoxiPyramid *pyramid2,
                                              const NoxiPoint32f *prevPts, NoxiPoint32f *nextPts, Nox8s *status,
                                              Nox32f *error, int numPoints, int winSize, int maxLevel, int maxIter,
                                              Nox32f threshold, NoxiOptFlowPyrLKState *state);
/** Tracks points between pictures of 16-bit pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLK_16u_C1R(const NoxiPyramid *pyramid1, const NoxiPyramid *pyramid2,
                                               const NoxiPoint32f *prevPts, NoxiPoint32f *nextPts, Nox8s *status,
                                               Nox32f *error, int numPoints, int winSize, int maxLevel, int maxIter,
                                               Nox32f threshold, NoxiOptFlowPyrLKState *state);
/** Tracks points between pictures of single-precision pixels. */
NOX_API NoxStatus noxiOpticalFlowPyrLK_32f_C1R(const NoxiPyramid *pyramid1, const NoxiPyramid *pyramid2,
                                               const NoxiPoint32f *prevPts, NoxiPoint32f *nextPts, Nox8s *status,
                                               Nox32f *error, int numPoints, int winSize, int maxLevel, int maxIter,
                                               Nox32f threshold, NoxiOptFlowPyrLKState *state);
/** @} */

NOX_END_DECLS

#endif
