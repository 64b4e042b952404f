// Absolute difference of two images, and of an image and a constant.
#include "noxvabsdiff.h"

#include "checks.h"
#include "elementwise.h"
#include "noxcv/edges.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

template <class T>
NOX_INLINE void absDiffRows(Rows<const T> src1, Rows<const T> src2, Rows<T> dst, int width, int height) {
    forJoinedRows(
        width, height,
        [](std::ptrdiff_t length, const T *a, const T *b, T *d) NOX_INLINE_LAMBDA {
            makeElements([](T v, T w) NOX_INLINE_LAMBDA -> T { return absoluteDifference(v, w); }, length, d, a, b);
        },
        src1, src2, dst);
}

template <class T>
NOX_INLINE void absDiffConstantRows(Rows<const T> src, Rows<T> dst, int width, int height, T value) {
    forJoinedRows(
        width, height,
        [value](std::ptrdiff_t length, const T *a, T *d) NOX_INLINE_LAMBDA {
            makeElements([value](T v) NOX_INLINE_LAMBDA -> T { return absoluteDifference(v, value); }, length, d, a);
        },
        src, dst);
}

template <class T>
NoxStatus checkAbsDiff(const T *src1, int src1Step, const T *src2, int src2Step, const T *dst, int dstStep,
                       NoxiSize roi) {
    return firstFailure(checkPointers(src1, src2, dst), checkSize(roi), checkStep<T>(src1Step, roi.width),
                        checkStep<T>(src2Step, roi.width), checkStep<T>(dstStep, roi.width),
                        checkEvenSteps<T>(src1Step, src2Step, dstStep));
}

template <class T>
NoxStatus checkAbsDiffC(const T *src, int srcStep, const T *dst, int dstStep, NoxiSize roi) {
    return firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<T>(srcStep, roi.width),
                        checkStep<T>(dstStep, roi.width), checkEvenSteps<T>(srcStep, dstStep));
}

} // namespace

// One line per member: the kernel compiled for each tier, and the entry that checks and calls it.
#define NOX_ABSDIFF(FUNCTION, TYPE, KERNEL)                                                                            \
    NOX_TIERS void KERNEL(const TYPE *src1, int src1Step, const TYPE *src2, int src2Step, TYPE *dst, int dstStep,      \
                          int width, int height) {                                                                     \
        absDiffRows<TYPE>({src1, src1Step}, {src2, src2Step}, {dst, dstStep}, width, height);                          \
    }                                                                                                                  \
    NoxStatus FUNCTION(const TYPE *src1, int src1Step, const TYPE *src2, int src2Step, TYPE *dst, int dstStep,         \
                       NoxiSize roi) {                                                                                 \
        const NoxStatus status = checkAbsDiff(src1, src1Step, src2, src2Step, dst, dstStep, roi);                      \
        if (status == noxStsNoError)                                                                                   \
            KERNEL(src1, src1Step, src2, src2Step, dst, dstStep, roi.width, roi.height);                               \
        return status;                                                                                                 \
    }

#define NOX_ABSDIFFC(FUNCTION, TYPE, VALUE, CONVERT, KERNEL)                                                           \
    NOX_TIERS void KERNEL(const TYPE *src, int srcStep, TYPE *dst, int dstStep, int width, int height, TYPE value) {   \
        absDiffConstantRows<TYPE>({src, srcStep}, {dst, dstStep}, width, height, value);                               \
    }                                                                                                                  \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, VALUE value) {              \
        const NoxStatus status = checkAbsDiffC(src, srcStep, dst, dstStep, roi);                                       \
        if (status == noxStsNoError)                                                                                   \
            KERNEL(src, srcStep, dst, dstStep, roi.width, roi.height, CONVERT(value));                                 \
        return status;                                                                                                 \
    }

NOX_ABSDIFF(noxiAbsDiff_8u_C1R, Nox8u, ownAbsDiff_8u_C1R_A6)
NOX_ABSDIFF(noxiAbsDiff_16u_C1R, Nox16u, ownAbsDiff_16u_C1R)
NOX_ABSDIFF(noxiAbsDiff_32f_C1R, Nox32f, ownAbsDiff_32f_C1R_A6)

NOX_ABSDIFFC(noxiAbsDiffC_8u_C1R, Nox8u, int, saturate<Nox8u>, ownAbsDiffC_8u_C1R_A6)
NOX_ABSDIFFC(noxiAbsDiffC_16u_C1R, Nox16u, int, saturate<Nox16u>, ownAbsDiffC_16u_C1R)
NOX_ABSDIFFC(noxiAbsDiffC_32f_C1R, Nox32f, Nox32f, static_cast<Nox32f>, ownAbsDiffC_32f_C1R_A6)
