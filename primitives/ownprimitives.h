// Kernels of the primitives that other sources call or that have a name of their own. They trust their arguments.
#pragma once

#include <cstddef>

#include "noxtypes.h"
#include "tiers.h"

extern "C" {

/// @name dst = max(src2 - src1, 0), then scaled: not at all; by 1/2 or 2^-shift (shift 2 to 8) with ties to even; by
/// 2^shift (shift 1 to 7) and capped at 255. The Bound form is the limit of ever larger factors: 255 or 0.
/// The twins with _I work in place: srcDst plays the part of src2 and dst.
/// @{
NOX_GLOBAL void ownsSub_8u(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length);
NOX_GLOBAL void ownsSub_8u_1Sfs(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length);
NOX_GLOBAL void ownsSub_8u_PosSfs(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length, int shift);
NOX_GLOBAL void ownsSub_8u_NegSfs(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length, int shift);
NOX_GLOBAL void ownsSub_8u_Bound(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length);
NOX_GLOBAL void ownsSub_8u_I(const Nox8u *src, Nox8u *srcDst, int length);
NOX_GLOBAL void ownsSub_8u_I_1Sfs(const Nox8u *src, Nox8u *srcDst, int length);
NOX_GLOBAL void ownsSub_8u_I_PosSfs(const Nox8u *src, Nox8u *srcDst, int length, int shift);
NOX_GLOBAL void ownsSub_8u_I_NegSfs(const Nox8u *src, Nox8u *srcDst, int length, int shift);
NOX_GLOBAL void ownsSub_8u_I_Bound(const Nox8u *src, Nox8u *srcDst, int length);
/// @}

/// dst = src2 - src1 and srcDst = srcDst - src, in single precision.
NOX_GLOBAL void ownsSub_32f(const Nox32f *src1, const Nox32f *src2, Nox32f *dst, int length);
NOX_GLOBAL void ownsSub_32f_I(const Nox32f *src, Nox32f *srcDst, int length);

/// @name A packed copy of an image with a border of `left`, `right`, `top` and `bottom` pixels, from noxsMalloc_8u;
/// null when that fails. Kinds of border: 0 `value` (in all channels), 1 the nearest edge pixel, 2 cyclic, 3 and 4
/// reflections without and with the edge repeated, 5 before the start as 3 and past the end as 4; any other kind
/// leaves the border unset.
///
/// The cyclic kind is cyclic in the columns only. Its band row r on top is source row r, and row i of the result in
/// the bottom band is source row i - height; both are taken modulo the height.
/// @{
NOX_GLOBAL Nox8u *ownCopyWithBorder_8u_C1R(const Nox8u *src, int srcStep, int width, int height, int kind, Nox8u value,
                                           int left, int right, int top, int bottom);
NOX_GLOBAL Nox8u *ownCopyWithBorder_8u_C3R(const Nox8u *src, int srcStep, int width, int height, int kind, Nox8u value,
                                           int left, int right, int top, int bottom);
NOX_GLOBAL Nox16u *ownCopyWithBorder_16u_C1R(const Nox16u *src, int srcStep, int width, int height, int kind,
                                             Nox16u value, int left, int right, int top, int bottom);
NOX_GLOBAL Nox16u *ownCopyWithBorder_16u_C3R(const Nox16u *src, int srcStep, int width, int height, int kind,
                                             Nox16u value, int left, int right, int top, int bottom);
NOX_GLOBAL Nox32f *ownCopyWithBorder_32f_C1R(const Nox32f *src, int srcStep, int width, int height, int kind,
                                             Nox32f value, int left, int right, int top, int bottom);
NOX_GLOBAL Nox32f *ownCopyWithBorder_32f_C3R(const Nox32f *src, int srcStep, int width, int height, int kind,
                                             Nox32f value, int left, int right, int top, int bottom);
/// @}

/// dst = src, with `value` for pixels above (greaterThan not 0) or below the threshold.
NOX_GLOBAL void ownnoxiThreshold_V_8u_C1(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, int width, int height,
                                         Nox8u threshold, Nox8u value, int greaterThan);
}
