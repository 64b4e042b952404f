// Subtraction of images: the second source is the minuend. Channels are more columns.
#include <algorithm>
#include <climits>
#include <cstring>

#include "checks.h"
#include "noxcv/primitives.h"
#include "ownprimitives.h"
#include "rows.h"

using namespace nox;

namespace {

template <class T>
struct Images {
    Rows<const T> src1, src2;
    Rows<T> dst;
    NoxiSize roi;
    int channels;
};

/// Runs kernel(src1, src2, dst, length) over the joined rows. A row of several channels may be longer than an int
/// tells.
template <class T, class Kernel>
void forRows(const Images<T> &im, const Kernel &kernel) {
    forJoinedRows(
        static_cast<std::ptrdiff_t>(im.roi.width) * im.channels, im.roi.height,
        [&](std::ptrdiff_t length, auto... row) {
            for (std::ptrdiff_t x = 0; x < length; x += std::min<std::ptrdiff_t>(length - x, INT_MAX))
                kernel(row + x..., static_cast<int>(std::min<std::ptrdiff_t>(length - x, INT_MAX)));
        },
        im.src1, im.src2, im.dst);
}

/// With more than one channel the width is tested before all else.
template <class T>
NoxStatus check(const Images<T> &im) {
    return firstFailure(require(im.channels == 1 || im.roi.width >= 1, noxStsBadSize),
                        checkPointers(im.src1.base, im.src2.base, im.dst.base), checkSize(im.roi));
}

NoxStatus subtract(const Images<Nox32f> &im) {
    const NoxStatus status = check(im);
    if (status == noxStsNoError)
        forRows(im, [](auto... row) { ownsSub_32f(row...); });
    return status;
}

NoxStatus subtract(const Images<Nox8u> &im, int scaleFactor) {
    constexpr int largestRightShift = 8, largestLeftShift = 7;
    const NoxStatus status = check(im);
    if (status != noxStsNoError)
        return status;
    if (scaleFactor > largestRightShift)
        forRows(im, [](const Nox8u *, const Nox8u *, Nox8u *dst, int length) { std::memset(dst, 0, length); });
    else if (scaleFactor > 1)
        forRows(im, [scaleFactor](auto... row) { ownsSub_8u_PosSfs(row..., scaleFactor); });
    else if (scaleFactor == 1)
        forRows(im, [](auto... row) { ownsSub_8u_1Sfs(row...); });
    else if (scaleFactor == 0)
        forRows(im, [](auto... row) { ownsSub_8u(row...); });
    else if (scaleFactor >= -largestLeftShift)
        forRows(im, [scaleFactor](auto... row) { ownsSub_8u_NegSfs(row..., -scaleFactor); });
    else
        forRows(im, [](auto... row) { ownsSub_8u_Bound(row...); });
    return noxStsNoError;
}

} // namespace

#define NOX_SUB_8U(FUNCTION, IN_PLACE_FUNCTION, CHANNELS)                                                              \
    NoxStatus FUNCTION(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst, int dstStep,      \
                       NoxiSize roi, int scaleFactor) {                                                                \
        return subtract({{src1, src1Step}, {src2, src2Step}, {dst, dstStep}, roi, CHANNELS}, scaleFactor);             \
    }                                                                                                                  \
    NoxStatus IN_PLACE_FUNCTION(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,            \
                                int scaleFactor) {                                                                     \
        return subtract({{src, srcStep}, {srcDst, srcDstStep}, {srcDst, srcDstStep}, roi, CHANNELS}, scaleFactor);     \
    }
NOX_SUB_8U(noxiSub_8u_C1RSfs, noxiSub_8u_C1IRSfs, 1)
NOX_SUB_8U(noxiSub_8u_C3RSfs, noxiSub_8u_C3IRSfs, 3)
NOX_SUB_8U(noxiSub_8u_C4RSfs, noxiSub_8u_C4IRSfs, 4)

#define NOX_SUB_32F(FUNCTION, IN_PLACE_FUNCTION, CHANNELS)                                                             \
    NoxStatus FUNCTION(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst, int dstStep,   \
                       NoxiSize roi) {                                                                                 \
        return subtract({{src1, src1Step}, {src2, src2Step}, {dst, dstStep}, roi, CHANNELS});                          \
    }                                                                                                                  \
    NoxStatus IN_PLACE_FUNCTION(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep, NoxiSize roi) {        \
        return subtract({{src, srcStep}, {srcDst, srcDstStep}, {srcDst, srcDstStep}, roi, CHANNELS});                  \
    }
NOX_SUB_32F(noxiSub_32f_C1R, noxiSub_32f_C1IR, 1)
NOX_SUB_32F(noxiSub_32f_C3R, noxiSub_32f_C3IR, 3)
NOX_SUB_32F(noxiSub_32f_C4R, noxiSub_32f_C4IR, 4)
