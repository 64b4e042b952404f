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
 * c; row 0 and column 0 hold offset alone. A second table takes the squares of the pixels and sqrOffset.
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
 * A second table takes s[i]^2 in place of s[i], and sqrOffset. 32s tables wrap. 32f sums are formed in extended
 * precision as P[x-1] - Q[x] + P[x+1] + s[x-1] + s[x] and rounded once; 64f sums as (s[x-1]^2 + s[x]^2) + P[x-1] - Q[x]
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
 * From a table of sums and a table of squares, for each position (x, y) of roi the standard deviation of the pixels
 * under rect moved by (x, y). Of each table the elements TL = [y+ry][x+rx], TR = [y+ry][x+rx+rw], BL = [y+ry+rh][x+rx]
 * and BR = [y+ry+rh][x+rx+rw] are taken. With a = rw * rh in single precision, m = (BR - TR - BL + TL) / a from src, q
 * likewise from sqr, the variance is v = q - m * m and dst = sqrt(v). A variance that is not above 0, or no number,
 * gives 0.
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
 * The same from tilted tables, for a rectangle turned by 45 degrees. With R = y + rx + ry and C = x + rx - ry the
 * elements T = [R][C], Ri = [R+rw][C+rw], L = [R+rh][C-rh] and B = [R+rw+rh][C+rw-rh] are taken; the sums are B - L -
 * Ri
 * + T and a = 2 * rw * rh. Columns may be negative: src then points inside a larger table.
 * - 32f: as upright, with a exact.
 * - 32s32f: as upright.
 * - 32s, scaled: m and q in single precision, v in extended precision and rounded to single, the root in single.
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

NOX_END_DECLS

#endif
