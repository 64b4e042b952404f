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

#define NOX_EVERY(FUNCTION, IN_PLACE_FUNCTION, PICK, TYPE)                                                             \
    NoxStatus FUNCTION(const TYPE *src1, const TYPE *src2, TYPE *dst, int length) {                                    \
        pickEvery<PICK>(src1, src2, dst, length);                                                                      \
        return noxStsNoError;                                                                                          \
    }                                                                                                                  \
    NoxStatus IN_PLACE_FUNCTION(const TYPE *src, TYPE *srcDst, int length) {                                           \
        const NoxStatus status = firstFailure(checkPointers(src, srcDst), checkLength(length));                        \
        if (status == noxStsNoError)                                                                                   \
            pickEvery<PICK>(src, srcDst, srcDst, length);                                                              \
        return status;                                                                                                 \
    }
NOX_EVERY(noxsMinEvery_8u, noxsMinEvery_8u_I, Lesser, Nox8u)
NOX_EVERY(noxsMaxEvery_8u, noxsMaxEvery_8u_I, Greater, Nox8u)
NOX_EVERY(noxsMinEvery_32f, noxsMinEvery_32f_I, Lesser, Nox32f)
NOX_EVERY(noxsMaxEvery_32f, noxsMaxEvery_32f_I, Greater, Nox32f)
