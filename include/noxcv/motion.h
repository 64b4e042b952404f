/**
 * @file motion.h
 * Motion: history images and foreground models.
 */
#ifndef NOXCV_MOTION_H
#define NOXCV_MOTION_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Motion history
 * Keeps in each pixel of mhi the last time at which it moved (A. F. Bobick, J. W. Davis, "The recognition of human
 * movement using temporal templates", 2001), in place. Where silhouette is not zero, mhi becomes timestamp, bit for
 * bit. Elsewhere an entry below timestamp - duration (one single-precision subtraction) becomes 0, and the others stay;
 * one that equals the limit stays. One channel.
 *
 * What is below: the members with an integer silhouette compare bit patterns in the order of floats, in which minus
 * zero lies below zero and not-a-numbers lie beyond the infinity of their sign. noxiUpdateMotionHistory_32f_C1IR
 * compares in single precision: an entry that is not a number, and every entry when the limit is not a number, becomes
 * 0, and minus zero equals zero. Its silhouette counts as zero where it is neither below nor above zero.
 *
 * Status, in this order: noxStsNullPointer (silhouette, mhi), noxStsBadSize, noxStsBadStep, noxStsOddStep (mhi, and
 * silhouette in 16u and 32f), noxStsOutOfRange unless duration >= 0 (a not-a-number fails too).
 * @{
 */
/** History from a silhouette of bytes. */
NOX_API NoxStatus noxiUpdateMotionHistory_8u32f_C1IR(const Nox8u *silhouette, int silhouetteStep, Nox32f *mhi,
                                                     int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** History from a silhouette of 16-bit elements. */
NOX_API NoxStatus noxiUpdateMotionHistory_16u32f_C1IR(const Nox16u *silhouette, int silhouetteStep, Nox32f *mhi,
                                                      int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** History from a silhouette of floats. */
NOX_API NoxStatus noxiUpdateMotionHistory_32f_C1IR(const Nox32f *silhouette, int silhouetteStep, Nox32f *mhi,
                                                   int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** @} */

NOX_END_DECLS

#endif
