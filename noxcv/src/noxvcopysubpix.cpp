// Shift of an image by a fraction of a pixel.
#include "checks.h"
#include "noxcv/sampling.h"
#include "noxvbilinear.h"
#include "rows.h"

using namespace nox;

namespace {

template <class S, class D>
NOX_INLINE void shiftRows(Rows<const S> src, Rows<D> dst, NoxiSize roi, float fx, float fy, FixedScale scale) {
    const FixedBilinear<S, D> bilinear(fixedAxis<S>(fx), fixedAxis<S>(fy), scale);
    const FixedBlock<S, D> block(bilinear);
    for (int y = 0; y < roi.height; ++y)
        interpolateRow(src[y], src[y + 1], dst[y], roi.width, bilinear, block);
}

/// The float form hands the share of a column on to the next pixel: what column x gives pixel x - 1, times (1 - ax) /
/// ax, is what it gives pixel x. So ax may not be 0.
template <class S>
NOX_INLINE void shiftRows(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, float fx, float fy) {
    const AxisWeights<float> x = floatAxis(std::max(fx, 1e-06F)), y = floatAxis(fy);
    const FloatBilinear<S> weights(x, y);
    const float ratio = x.near / x.far;
    for (int row = 0; row < roi.height; ++row) {
        const S *p = src[row], *q = src[row + 1];
        float *d = dst[row];
        const auto share = [=](int column) NOX_INLINE_LAMBDA {
            return static_cast<float>(p[column]) * weights.w10 + static_cast<float>(q[column]) * weights.w11;
        };
        d[0] = static_cast<float>(p[0]) * weights.w00 + static_cast<float>(q[0]) * weights.w01 + share(1);
        fillRow(d + 1, roi.width - 1, [=](int i) NOX_INLINE_LAMBDA { return share(i + 1) * ratio + share(i + 2); });
    }
}

template <class S, class D>
NOX_TIERS void shiftKernel(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float fx, float fy,
                           FixedScale scale) {
    if constexpr (std::is_same_v<D, Nox32f>)
        shiftRows<S>({src, srcStep}, {dst, dstStep}, roi, fx, fy);
    else
        shiftRows<S, D>({src, srcStep}, {dst, dstStep}, roi, fx, fy, scale);
}

template <class S, class D>
NoxStatus shift(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float dx, float dy,
                FixedScale scale = plainScale<S>) {
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<S>(srcStep, roi.width),
                     checkStep<D>(dstStep, roi.width), checkEvenSteps<S>(srcStep), checkEvenSteps<D>(dstStep));
    if (status == noxStsNoError)
        shiftKernel(src, srcStep, dst, dstStep, roi, fractionOf(dx), fractionOf(dy), scale);
    return status;
}

} // namespace

#define NOX_SHIFT(SOURCE, DESTINATION, TAG)                                                                            \
    NoxStatus noxiCopySubpix_##TAG##_C1R(const SOURCE *src, int srcStep, DESTINATION *dst, int dstStep, NoxiSize roi,  \
                                         Nox32f dx, Nox32f dy) {                                                       \
        return shift(src, srcStep, dst, dstStep, roi, dx, dy);                                                         \
    }

NOX_SHIFT(Nox8u, Nox8u, 8u)
NOX_SHIFT(Nox16u, Nox16u, 16u)
NOX_SHIFT(Nox8u, Nox32f, 8u32f)
NOX_SHIFT(Nox16u, Nox32f, 16u32f)
NOX_SHIFT(Nox32f, Nox32f, 32f)

NoxStatus noxiCopySubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi, Nox32f dx,
                                       Nox32f dy, int scaleFactor) {
    return shift(src, srcStep, dst, dstStep, roi, dx, dy, scaleOf(scaleFactor));
}
