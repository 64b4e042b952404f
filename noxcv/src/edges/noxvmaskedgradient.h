// Gradients that are kept up to date while pixels become known: inpainting's support.
//
// dst holds Nox16s pairs (gx, gy), in the C3 forms the three pairs of channels 0, 1 and 2. Only pixels whose mask byte
// is not zero are written. A row above the first and below the last is that row itself; with a width of 1, gx is 0.
// Arguments are trusted.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// Differences: twice the central one inside, the one-sided one in the first and last column (gx) and row (gy).
NOX_GLOBAL void owncvGradient_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                         int maskStep, int width, int height);
NOX_GLOBAL void owncvGradient_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                         int maskStep, int width, int height);

/// Sums of the absolute differences to both neighbours; twice the absolute one-sided difference at the edges.
NOX_GLOBAL void owncvAbsGradient_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                            int maskStep, int width, int height);
NOX_GLOBAL void owncvAbsGradient_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                            int maskStep, int width, int height);

/// Differences of a float image, times 2^-scaleFactor (times 0 for a scaleFactor of 1 or more): half the central one
/// inside, the one-sided one at the edges; truncated, and the low 16 bits kept.
NOX_GLOBAL void owncvGradient_32f16s_C1MR_Sfs(const Nox32f *src, int srcStep, Nox16s *dst, int dstStep,
                                              const Nox8u *mask, int maskStep, int width, int height, int scaleFactor);

/// Repairs the gradient next to pixels whose `blocked` byte is not zero. With both neighbours along an axis blocked the
/// component becomes 0; with one, the one-sided difference to the other; with none it stays (in the first and last
/// column the one-sided difference is taken).
NOX_GLOBAL void owncvModGradient_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                            int maskStep, const Nox8u *blocked, int blockedStep, int width, int height);
NOX_GLOBAL void owncvModGradient_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                            int maskStep, const Nox8u *blocked, int blockedStep, int width, int height);
/// The same with twice the absolute one-sided difference.
NOX_GLOBAL void owncvModAbsGradient_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                               const Nox8u *mask, int maskStep, const Nox8u *blocked, int blockedStep,
                                               int width, int height);
NOX_GLOBAL void owncvModAbsGradient_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                               const Nox8u *mask, int maskStep, const Nox8u *blocked, int blockedStep,
                                               int width, int height);

/// Pixel (column, row) has just become known: clears its `blocked` byte, sets its gradient from the neighbours that are
/// not blocked, and repairs the component of its four neighbours that looks at it.
NOX_GLOBAL void owncvModGradientPoint_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                 Nox8u *blocked, int blockedStep, int width, int height, int row,
                                                 int column);
NOX_GLOBAL void owncvModGradientPoint_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                 Nox8u *blocked, int blockedStep, int width, int height, int row,
                                                 int column);
NOX_GLOBAL void owncvModAbsGradientPoint_8u16s_C1MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                    Nox8u *blocked, int blockedStep, int width, int height, int row,
                                                    int column);
NOX_GLOBAL void owncvModAbsGradientPoint_8u16s_C3MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,
                                                    Nox8u *blocked, int blockedStep, int width, int height, int row,
                                                    int column);

/// Counts the non-zero bytes of an image and gives their bounding rectangle; with none it is (-1, -1), 0 x 0.
NOX_GLOBAL void owncvNoZero_8u(const Nox8u *image, int step, int width, int height, int *count, NoxiRect *bounds);

/// Appends the values greater than 0, row by row, to a list of at most `capacity` records: the value in double
/// precision with its 28 lowest mantissa bits, zero by nature, replaced by y * width + x. A record sorts by value and
/// carries its pixel.
NOX_GLOBAL void owncvFillNoZero_32f(const Nox32f *image, int step, int width, int height, Nox64f *list, int capacity);
}
