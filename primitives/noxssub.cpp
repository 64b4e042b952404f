// Subtraction of vectors: the second source is the minuend.
#include "elementwise.h"
#include "numerics.h"
#include "ownprimitives.h"

using namespace nox;

namespace {

/// a - b with a floor at 0.
NOX_INLINE Nox8u floored(Nox8u a, Nox8u b) { return static_cast<Nox8u>((a > b ? a : b) - b); }

} // namespace

// One line a kernel: its name, that of its in-place twin, and the element made of subtrahend s and minuend m.
#define NOX_SUB(NAME, TWIN, TYPE, FORMULA)                                                                             \
    NOX_TIERS void NAME(const TYPE *src1, const TYPE *src2, TYPE *dst, int length) {                                   \
        makeElements([](TYPE s, TYPE m) NOX_INLINE_LAMBDA -> TYPE { return FORMULA; }, length, dst, src1, src2);       \
    }                                                                                                                  \
    void TWIN(const TYPE *src, TYPE *srcDst, int length) { NAME(src, srcDst, srcDst, length); }

#define NOX_SUB_SHIFT(NAME, TWIN, FORMULA)                                                                             \
    NOX_TIERS void NAME(const Nox8u *src1, const Nox8u *src2, Nox8u *dst, int length, int shift) {                     \
        makeElements([shift](Nox8u s, Nox8u m) NOX_INLINE_LAMBDA -> Nox8u { return FORMULA; }, length, dst, src1,      \
                     src2);                                                                                            \
    }                                                                                                                  \
    void TWIN(const Nox8u *src, Nox8u *srcDst, int length, int shift) { NAME(src, srcDst, srcDst, length, shift); }

NOX_SUB(ownsSub_8u, ownsSub_8u_I, Nox8u, floored(m, s))
NOX_SUB(ownsSub_8u_1Sfs, ownsSub_8u_I_1Sfs, Nox8u, shiftRightNearestEven(floored(m, s), 1))
NOX_SUB_SHIFT(ownsSub_8u_PosSfs, ownsSub_8u_I_PosSfs, shiftRightNearestEven(floored(m, s), shift))
NOX_SUB_SHIFT(ownsSub_8u_NegSfs, ownsSub_8u_I_NegSfs, saturate<Nox8u>(floored(m, s) << shift))
NOX_SUB(ownsSub_8u_Bound, ownsSub_8u_I_Bound, Nox8u, m > s ? 255 : 0)
NOX_SUB(ownsSub_32f, ownsSub_32f_I, Nox32f, m - s)
