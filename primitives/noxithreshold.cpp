// Thresholds of images.
#include "checks.h"
#include "elementwise.h"
#include "noxcv/primitives.h"
#include "ownprimitives.h"
#include "rows.h"

using namespace nox;

namespace {

/// Makes each pixel of dst from the pixel of src.
template <class T, class Make>
NOX_INLINE void thresholdRows(Rows<const T> src, Rows<T> dst, int width, int height, const Make &make) {
    forJoinedRows(
        width, height,
        [&make](std::ptrdiff_t length, const T *from, T *to)
            NOX_INLINE_LAMBDA { makeElements(make, length, to, from); },
        src, dst);
}

/// Both forms give the threshold for a not-a-number and for a zero of the other sign.
NOX_TIERS void ownnoxiThreshold_32f_C1(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width, int height,
                                       Nox32f threshold, int greaterThan) {
    if (greaterThan != 0)
        thresholdRows<Nox32f>({src, srcStep}, {dst, dstStep}, width, height,
                              [threshold](Nox32f v) NOX_INLINE_LAMBDA { return v < threshold ? v : threshold; });
    else
        thresholdRows<Nox32f>({src, srcStep}, {dst, dstStep}, width, height,
                              [threshold](Nox32f v) NOX_INLINE_LAMBDA { return v > threshold ? v : threshold; });
}

constexpr NoxStatus checkOperator(int compare) {
    return require(compare == noxCmpLess || compare == noxCmpGreater, noxStsUnsupportedMode);
}

} // namespace

NOX_TIERS void ownnoxiThreshold_V_8u_C1(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, int width, int height,
                                        Nox8u threshold, Nox8u value, int greaterThan) {
    if (greaterThan != 0)
        thresholdRows<Nox8u>({src, srcStep}, {dst, dstStep}, width, height,
                             [=](Nox8u v) NOX_INLINE_LAMBDA { return v <= threshold ? v : value; });
    else
        thresholdRows<Nox8u>({src, srcStep}, {dst, dstStep}, width, height,
                             [=](Nox8u v) NOX_INLINE_LAMBDA { return v >= threshold ? v : value; });
}

NoxStatus noxiThreshold_Val_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                   Nox8u threshold, Nox8u value, int compare) {
    const NoxStatus status = firstFailure(checkOperator(compare), checkPointers(src, dst), checkSize(roi),
                                          checkPositiveSteps(srcStep, dstStep));
    if (status == noxStsNoError)
        ownnoxiThreshold_V_8u_C1(src, srcStep, dst, dstStep, roi.width, roi.height, threshold, value,
                                 compare == noxCmpGreater);
    return status;
}

NoxStatus noxiThreshold_GTVal_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                     Nox8u threshold, Nox8u value) {
    return noxiThreshold_Val_8u_C1R(src, srcStep, dst, dstStep, roi, threshold, value, noxCmpGreater);
}

NoxStatus noxiThreshold_GTVal_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, Nox8u threshold, Nox8u value) {
    return noxiThreshold_Val_8u_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roi, threshold, value, noxCmpGreater);
}

NoxStatus noxiThreshold_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                Nox32f threshold, int compare) {
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkSize(roi), checkPositiveSteps(srcStep, dstStep),
                                          checkOperator(compare));
    if (status == noxStsNoError)
        ownnoxiThreshold_32f_C1(src, srcStep, dst, dstStep, roi.width, roi.height, threshold, compare == noxCmpGreater);
    return status;
}

NoxStatus noxiThreshold_LT_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                   Nox32f threshold) {
    return noxiThreshold_32f_C1R(src, srcStep, dst, dstStep, roi, threshold, noxCmpLess);
}

NoxStatus noxiThreshold_LT_32f_C1IR(Nox32f *srcDst, int srcDstStep, NoxiSize roi, Nox32f threshold) {
    return noxiThreshold_32f_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roi, threshold, noxCmpLess);
}
