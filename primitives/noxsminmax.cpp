// Element-wise minimum and maximum of vectors. Ranges may overlap: elements are done in ascending order.
#include "checks.h"
#include "elementwise.h"
#include "noxcv/primitives.h"
#include "tiers.h"

using namespace nox;

namespace {

/// `a` wins only if it compares greater (less), so a not-a-number in `b` stays and one in `a` loses.
struct Greater {
    template <class T>
    NOX_INLINE T operator()(T a, T b) const {
        return a > b ? a : b;
    }
};
struct Lesser {
    template <class T>
    NOX_INLINE T operator()(T a, T b) const {
        return a < b ? a : b;
    }
};

template <class Pick, class T>
NOX_TIERS void pickEvery(const T *src1, const T *src2, T *dst, int length) {
    makeElements(Pick(), length, dst, src1, src2);
}

} // namespace

#define NOX_EVERY(NAME, PICK, TYPE, TAG)                                                                               \
    NoxStatus noxs##NAME##_##TAG(const TYPE *src1, const TYPE *src2, TYPE *dst, int length) {                          \
        pickEvery<PICK>(src1, src2, dst, length);                                                                      \
        return noxStsNoError;                                                                                          \
    }                                                                                                                  \
    NoxStatus noxs##NAME##_##TAG##_I(const TYPE *src, TYPE *srcDst, int length) {                                      \
        const NoxStatus status = firstFailure(checkPointers(src, srcDst), checkLength(length));                        \
        if (status == noxStsNoError)                                                                                   \
            pickEvery<PICK>(src, srcDst, srcDst, length);                                                              \
        return status;                                                                                                 \
    }
NOX_EVERY(MinEvery, Lesser, Nox8u, 8u)
NOX_EVERY(MaxEvery, Greater, Nox8u, 8u)
NOX_EVERY(MinEvery, Lesser, Nox32f, 32f)
NOX_EVERY(MaxEvery, Greater, Nox32f, 32f)
