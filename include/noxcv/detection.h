/**
 * @file detection.h
 * Object detection: integral images, the deviation of pixels under a rectangle, and stages of weak classifiers.
 *
 * What all functions share (addresses, checks, overlap, threads, floating-point state) is told in frame.h.
 */
#ifndef NOXCV_DETECTION_H
#define NOXCV_DETECTION_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Integral images
 * Summed-area tables (F. C. Crow, "Summed-area tables for texture mapping", 1984) of an image of w x h pixels. A table
 * has w + 1 columns and h + 1 rows. Element [r][c] is offset plus the sum of the pixels above row r and left of column
 * c; row 0 and column 0 hold offset alone. A second table, sqrIntegral, takes the squares of the pixels and sqrOffset.
 *
 * 32s tables wrap silently. In 32f tables a row's own sum is a 32-bit integer, converted once and added to the element
 * above in single precision; 64f tables add in extended precision and round to double.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (srcStep below w, a table's step below w + 1
 * elements), noxStsOddStep (a table's step is no multiple of its element). On the calling thread.
 * @{
 */
/** Sums of pixels as 32-bit integers. */
NOX_API NoxStatus noxiIntegral_8u32s_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                         NoxiSize roi, Nox32s offset);
/** Sums of pixels in single precision. */
NOX_API NoxStatus noxiIntegral_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *integral, int integralStep,
                                         NoxiSize roi, Nox32f offset);
/** Sums of pixels as 32-bit integers, of squares in double precision. */
NOX_API NoxStatus noxiSqrIntegral_8u32s64f_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                               Nox64f *sqrIntegral, int sqrIntegralStep, NoxiSize roi, Nox32s offset,
                                               Nox64f sqrOffset);
/** Sums of pixels in single precision, of squares in double precision. */
NOX_API NoxStatus noxiSqrIntegral_8u32f64f_C1R(const Nox8u *src, int srcStep, Nox32f *integral, int integralStep,
                                               Nox64f *sqrIntegral, int sqrIntegralStep, NoxiSize roi, Nox32f offset,
                                               Nox64f sqrOffset);
/** Sums of pixels and of squares as 32-bit integers. */
NOX_API NoxStatus noxiSqrIntegral_8u32s_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                            Nox32s *sqrIntegral, int sqrIntegralStep, NoxiSize roi, Nox32s offset,
                                            Nox32s sqrOffset);
/** @} */

/**
 * @name Tilted integral images
 * Tables for rectangles that are turned by 45 degrees (R. Lienhart, J. Maydt, "An extended set of Haar-like features
 * for rapid object detection", 2002). A table of a w x h image has w + 2 columns and h + 2 rows. Rows 0 and 1 hold
 * offset. With s the pixels of image row y, and Q, P, N the table's rows y, y + 1, y + 2:
 * - N[0] = P[1];
 * - N[x] = s[x-1] + s[x] + P[x-1] + P[x+1] - Q[x] for x from 1 to w - 1;
 * - N[w] = s[w-1] + P[w-1] + P[w+1] - Q[w];
 * - N[w+1] = P[w].
 *
 * A second table, sqrIntegral, takes s[i]^2 in place of s[i], and sqrOffset. 32s tables wrap. 32f sums are formed in
 * extended precision as P[x-1] - Q[x] + P[x+1] + s[x-1] + s[x] and rounded once; 64f sums as (s[x-1]^2 + s[x]^2) +
 * P[x-1] - Q[x]
 * + P[x+1].
 *
 * Two members differ from the rest:
 * - The 32f tables add N[w] to what column w held before the call: clear that column first.
 * - noxiTiltedSqrIntegral_8u32s_C1R takes s[w], the pixel behind each row, into column w of both tables. The image must
 *   have that pixel.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (srcStep below w, a table's step below w + 2
 * elements), noxStsOddStep (a table's step is no multiple of its element). On the calling thread.
 * @{
 */
/** Tilted sums of pixels as 32-bit integers. */
NOX_API NoxStatus noxiTiltedIntegral_8u32s_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                               NoxiSize roi, Nox32s offset);
/** Tilted sums of pixels in single precision; column w is added to. */
NOX_API NoxStatus noxiTiltedIntegral_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *integral, int integralStep,
                                               NoxiSize roi, Nox32f offset);
/** Tilted sums of pixels as 32-bit integers, of squares in double precision. */
NOX_API NoxStatus noxiTiltedSqrIntegral_8u32s64f_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                                     Nox64f *sqrIntegral, int sqrIntegralStep, NoxiSize roi,
                                                     Nox32s offset, Nox64f sqrOffset);
/** Tilted sums of pixels in single precision, whose column w is added to, and of squares in double precision. */
NOX_API NoxStatus noxiTiltedSqrIntegral_8u32f64f_C1R(const Nox8u *src, int srcStep, Nox32f *integral, int integralStep,
                                                     Nox64f *sqrIntegral, int sqrIntegralStep, NoxiSize roi,
                                                     Nox32f offset, Nox64f sqrOffset);
/** Tilted sums of pixels and of squares as 32-bit integers; reads one pixel behind each row. */
NOX_API NoxStatus noxiTiltedSqrIntegral_8u32s_C1R(const Nox8u *src, int srcStep, Nox32s *integral, int integralStep,
                                                  Nox32s *sqrIntegral, int sqrIntegralStep, NoxiSize roi, Nox32s offset,
                                                  Nox32s sqrOffset);
/** @} */

/**
 * @name Deviation of the pixels under an upright rectangle
 * From a table of sums, src, and a table of squares, sqr, for each position (x, y) of roi the standard deviation of the
 * pixels under rect, which is (rx, ry, rw, rh), moved by (x, y). Of each table the elements TL = [y+ry][x+rx], TR =
 * [y+ry][x+rx+rw], BL = [y+ry+rh][x+rx] and BR = [y+ry+rh][x+rx+rw] are taken. With a = rw * rh in single precision, m
 * = (BR - TR - BL + TL) / a from src, q likewise from sqr, the variance is v = q - m * m and dst = sqrt(v). A variance
 * that is not above 0, or no number, gives 0.
 * - 32f: all in extended precision; v is rounded to single, and the root taken there.
 * - 32s32f: m from a 32-bit integer sum that wraps, divided in single precision; the rest as in 32f.
 * - 32s, scaled: m and q from 32-bit integer sums, v in single precision; dst = sqrt(v) * f + 0.5 truncated, with the
 *   root in extended precision.
 *
 * The scaled form multiplies by f = 1 / 2^scaleFactor, or by 2^-scaleFactor for a negative one. The power is a signed
 * 32-bit shift whose count is taken modulo 32. What no 32-bit integer holds becomes the lowest one.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (roi), noxStsBadStep (the tables' steps below w + rx + rw
 * elements, dstStep below w elements), noxStsOddStep, noxStsBadSize (rx or ry negative, rw or rh below 1). The 32f form
 * goes parallel from 2048 positions on, with a thread for each 1024; the others stay on the calling thread.
 * @{
 */
/** Deviation from a single-precision table of sums and a double-precision table of squares. */
NOX_API NoxStatus noxiRectStdDev_32f_C1R(const Nox32f *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst,
                                         int dstStep, NoxiSize roi, NoxiRect rect);
/** Deviation from a 32-bit integer table of sums and a double-precision table of squares. */
NOX_API NoxStatus noxiRectStdDev_32s32f_C1R(const Nox32s *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst,
                                            int dstStep, NoxiSize roi, NoxiRect rect);
/** Scaled deviation from 32-bit integer tables. */
NOX_API NoxStatus noxiRectStdDev_32s_C1RSfs(const Nox32s *src, int srcStep, const Nox32s *sqr, int sqrStep, Nox32s *dst,
                                            int dstStep, NoxiSize roi, NoxiRect rect, int scaleFactor);
/** @} */

/**
 * @name Deviation of the pixels under a tilted rectangle
 * The deviation as above from tilted tables src and sqr, for a rectangle rect = (rx, ry, rw, rh) turned by 45 degrees.
 * With R = y + rx + ry and C = x + rx - ry the elements T = [R][C], Ri = [R+rw][C+rw], L = [R+rh][C-rh] and B =
 * [R+rw+rh][C+rw-rh] are taken; the sums are B - L - Ri
 * + T and a = 2 * rw * rh. Columns may be negative: src then points inside a larger table.
 * - 32f: as upright, with a exact.
 * - 32s32f: as upright.
 * - 32s, scaled by scaleFactor: m and q in single precision, v in extended precision and rounded to single, the root in
 *   single.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (roi), noxStsBadStep (the tables' steps below rw + rh + rx +
 * ry
 * + w - 1 elements, dstStep below w elements), noxStsOddStep, noxStsBadSize (rx or ry negative, rw or rh below 1). On
 * the calling thread.
 * @{
 */
/** Tilted deviation from a single-precision table of sums and a double-precision table of squares. */
NOX_API NoxStatus noxiTiltedRectStdDev_32f_C1R(const Nox32f *src, int srcStep, const Nox64f *sqr, int sqrStep,
                                               Nox32f *dst, int dstStep, NoxiSize roi, NoxiRect rect);
/** Tilted deviation from a 32-bit integer table of sums and a double-precision table of squares. */
NOX_API NoxStatus noxiTiltedRectStdDev_32s32f_C1R(const Nox32s *src, int srcStep, const Nox64f *sqr, int sqrStep,
                                                  Nox32f *dst, int dstStep, NoxiSize roi, NoxiRect rect);
/** Scaled tilted deviation from 32-bit integer tables. */
NOX_API NoxStatus noxiTiltedRectStdDev_32s_C1RSfs(const Nox32s *src, int srcStep, const Nox32s *sqr, int sqrStep,
                                                  Nox32s *dst, int dstStep, NoxiSize roi, NoxiRect rect,
                                                  int scaleFactor);
/** @} */

/** A stage of weak classifiers with single-precision numbers. */
typedef struct NoxiHaarClassifier_32f NoxiHaarClassifier_32f;
/** A stage of weak classifiers with 32-bit integers. */
typedef struct NoxiHaarClassifier_32s NoxiHaarClassifier_32s;

/**
 * @name Stages of weak classifiers: creation
 * A stage of a cascade (P. Viola, M. Jones, "Rapid object detection using a boosted cascade of simple features", 2001).
 * Each classifier is a weighted sum of rectangle sums. Classifier i has counts[i] features, and thresholds[i],
 * lowValues[i] and highValues[i] decide what it adds to the stage; features and weights hold one element a feature,
 * classifier after classifier.
 *
 * The plain members put classifiers of two features first, those of three next and all others behind them, each group
 * in the order of the input. Float sums depend on that order. The tilted members keep the input's order and take (x, y,
 * width, height) as a rectangle turned by 45 degrees about its top corner (x, y): its right corner is (x + width, y +
 * width), its left one (x - height, y + height).
 *
 * A stage lives until it is freed. length may be 0.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize (length below 0, a count below 1), noxStsNoMemory,
 * noxStsBadArgument for a rectangle with x or y below 0, width or height below 1 or, in the tilted members, x + 1 below
 * height: then, and only then, a null is stored through state.
 * @{
 */
/** Creates a stage of single-precision numbers. */
NOX_API NoxStatus noxiHaarClassifierInitAlloc_32f(NoxiHaarClassifier_32f **state, const NoxiRect *features,
                                                  const Nox32f *weights, const Nox32f *thresholds,
                                                  const Nox32f *lowValues, const Nox32f *highValues,
                                                  const Nox32s *counts, int length);
/** Creates a stage of 32-bit integers. */
NOX_API NoxStatus noxiHaarClassifierInitAlloc_32s(NoxiHaarClassifier_32s **state, const NoxiRect *features,
                                                  const Nox32s *weights, const Nox32s *thresholds,
                                                  const Nox32s *lowValues, const Nox32s *highValues,
                                                  const Nox32s *counts, int length);
/** Creates a stage of single-precision numbers whose rectangles are turned. */
NOX_API NoxStatus noxiTiltedHaarClassifierInitAlloc_32f(NoxiHaarClassifier_32f **state, const NoxiRect *features,
                                                        const Nox32f *weights, const Nox32f *thresholds,
                                                        const Nox32f *lowValues, const Nox32f *highValues,
                                                        const Nox32s *counts, int length);
/** Creates a stage of 32-bit integers whose rectangles are turned. */
NOX_API NoxStatus noxiTiltedHaarClassifierInitAlloc_32s(NoxiHaarClassifier_32s **state, const NoxiRect *features,
                                                        const Nox32s *weights, const Nox32s *thresholds,
                                                        const Nox32s *lowValues, const Nox32s *highValues,
                                                        const Nox32s *counts, int length);
/** @} */

/**
 * @name Stages of weak classifiers: care
 * Release, size and turning of a stage.
 *
 * Status: noxStsNullPointer; of the turning members also noxStsBadArgument for a stage that was turned before or
 * created turned.
 * @{
 */
/** Frees a stage of single-precision numbers. */
NOX_API NoxStatus noxiHaarClassifierFree_32f(NoxiHaarClassifier_32f *state);
/** Frees a stage of 32-bit integers. */
NOX_API NoxStatus noxiHaarClassifierFree_32s(NoxiHaarClassifier_32s *state);
/** Writes to size the largest right and bottom coordinates of the features' corners, (0, 0) without features: floats.
 */
NOX_API NoxStatus noxiGetHaarClassifierSize_32f(const NoxiHaarClassifier_32f *state, NoxiSize *size);
/** Writes to size the largest right and bottom coordinates of the features' corners, (0, 0) without: integers. */
NOX_API NoxStatus noxiGetHaarClassifierSize_32s(const NoxiHaarClassifier_32s *state, NoxiSize *size);
/**
 * Turns by 45 degrees, once, the rectangles of the classifiers whose byte in tiltMask (indexed as at creation) is not
 * zero: about the top left corner when tiltFlag is not zero, and about the bottom left corner, the other way, when it
 * is.
 */
NOX_API NoxStatus noxiTiltHaarFeatures_32f(const Nox8u *tiltMask, int tiltFlag, NoxiHaarClassifier_32f *state);
/**
 * Turns by 45 degrees, once, the rectangles of the chosen classifiers of a stage of 32-bit integers; tiltMask and
 * tiltFlag as in noxiTiltHaarFeatures_32f.
 */
NOX_API NoxStatus noxiTiltHaarFeatures_32s(const Nox8u *tiltMask, int tiltFlag, NoxiHaarClassifier_32s *state);
/** @} */

/**
 * @name Stages of weak classifiers: application
 * At each position (x, y) of roi whose mask byte is not zero: for each classifier t is the sum over its features of
 * weight * (br - bl - tr + tl), the table's elements at the corners moved by (x, y). Where t is below the classifier's
 * threshold times norm(x, y), lowValue is added to the stage sum, and highValue elsewhere. A position passes when the
 * sum is at least threshold; else its mask byte becomes 0. positive gets the number of positions that passed. Positions
 * whose mask byte is zero are not looked at.
 *
 * The mixed members read turned classifiers from a second table, tilt, moved by (x + 1, y + 1): a tilted integral
 * image.
 * - 32f: all in single precision, but for threshold * norm, which is not rounded. In the plain member features of pairs
 *   and triples are added as (second + third) + first, in all others in their order.
 * - 32s32f: rectangle sums are 32-bit integers that wrap; the rest as in 32f, in the order of the features.
 * - 32s: 32-bit integers that wrap. In the mixed member t is a 64-bit sum of 32-bit products, shifted left by
 *   -scaleFactor (64 and more leave 0) and compared with a 64-bit product.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (below roi.width elements), noxStsOddStep,
 * noxStsBadArgument (scaleFactor above 0). A stage is only read. The plain 32f member goes parallel from 2048 positions
 * on, with a thread for each 1024; the others stay on the calling thread.
 * @{
 */
/** Applies a stage to a single-precision table. */
NOX_API NoxStatus noxiApplyHaarClassifier_32f_C1R(const Nox32f *src, int srcStep, const Nox32f *norm, int normStep,
                                                  Nox8u *mask, int maskStep, NoxiSize roi, int *positive,
                                                  Nox32f threshold, const NoxiHaarClassifier_32f *state);
/** Applies a stage to a table of 32-bit integers. */
NOX_API NoxStatus noxiApplyHaarClassifier_32s32f_C1R(const Nox32s *src, int srcStep, const Nox32f *norm, int normStep,
                                                     Nox8u *mask, int maskStep, NoxiSize roi, int *positive,
                                                     Nox32f threshold, const NoxiHaarClassifier_32f *state);
/** Applies a stage of 32-bit integers; nothing is scaled. */
NOX_API NoxStatus noxiApplyHaarClassifier_32s_C1RSfs(const Nox32s *src, int srcStep, const Nox32s *norm, int normStep,
                                                     Nox8u *mask, int maskStep, NoxiSize roi, int *positive,
                                                     Nox32s threshold, const NoxiHaarClassifier_32s *state);
/** Applies a stage to an upright and a tilted single-precision table. */
NOX_API NoxStatus noxiApplyMixedHaarClassifier_32f_C1R(const Nox32f *src, int srcStep, const Nox32f *tilt, int tiltStep,
                                                       const Nox32f *norm, int normStep, Nox8u *mask, int maskStep,
                                                       NoxiSize roi, int *positive, Nox32f threshold,
                                                       const NoxiHaarClassifier_32f *state);
/** Applies a stage to an upright and a tilted table of 32-bit integers. */
NOX_API NoxStatus noxiApplyMixedHaarClassifier_32s32f_C1R(const Nox32s *src, int srcStep, const Nox32s *tilt,
                                                          int tiltStep, const Nox32f *norm, int normStep, Nox8u *mask,
                                                          int maskStep, NoxiSize roi, int *positive, Nox32f threshold,
                                                          const NoxiHaarClassifier_32f *state);
/** Applies a stage of 32-bit integers to two tables, with feature sums shifted left. */
NOX_API NoxStatus noxiApplyMixedHaarClassifier_32s_C1RSfs(const Nox32s *src, int srcStep, const Nox32s *tilt,
                                                          int tiltStep, const Nox32s *norm, int normStep, Nox8u *mask,
                                                          int maskStep, NoxiSize roi, int *positive, Nox32s threshold,
                                                          const NoxiHaarClassifier_32s *state, int scaleFactor);
/** @} */

NOX_END_DECLS

#endif
