// Shift of an image by a fraction of a pixel.
#include <algorithm>

#include "checks.h"
#include "noxcv/sampling.h"
#include "noxvbilinear.h"
#include "rows.h"

using namespace nox;

namespace nox {

/// The float form hands the share of a column on to the next pixel: what the column gives the pixel before, times
/// (1 - ax) / ax, is what it gives its own pixel. So ax may not be 0.
struct FloatShift {
    float w00, w01, upper, lower, ratio;

    explicit FloatShift(AxisWeights<float> x, AxisWeights<float> y)
        : w00(x.near * y.near), w01(x.near * y.far), upper(x.far * y.near), lower(x.far * y.far),
          ratio(x.near / x.far) {}

    NOX_INLINE float share(float p, float q) const { return p * upper + q * lower; }
};

} // namespace nox

#define NOX_KERNELS "sampling/noxvcopysubpixkernels.inc"
#include "noxveachtier.h"

namespace {

template <class S, class D>
void shiftImage(Rows<const S> src, Rows<D> dst, NoxiSize roi, float fx, float fy, FixedScale scale) {
    interpolateImage(src, dst, roi, FixedBilinear<S, D>(fixedAxis<S>(fx), fixedAxis<S>(fy), scale));
}

/// The first pixel of a row has no column before it.
template <class S>
NOX_INLINE float firstOfRow(const Element<S> *p, const Element<S> *q, const FloatShift &shift) {
    return asFloat(p[0]) * shift.w00 + asFloat(q[0]) * shift.w01 + shift.share(asFloat(p[1]), asFloat(q[1]));
}

/// Pixel by pixel, for rows that fill no vector.
template <class S>
void shiftNarrow(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, const FloatShift &shift) {
    for (int y = 0; y < roi.height; ++y) {
        const Element<S> *p = src[y], *q = src[y + 1];
        const auto share = [&](int column) { return shift.share(asFloat(p[column]), asFloat(q[column])); };
        for (int x = 1; x < roi.width; ++x)
            dst[y][x] = share(x) * shift.ratio + share(x + 1);
    }
}

template <class S>
void shiftImage(Rows<const S> src, Rows<Nox32f> dst, NoxiSize roi, float fx, float fy, FixedScale) {
    const FloatShift shift(floatAxis(std::max(fx, 1e-06F)), floatAxis(fy));
    if (roi.width < baseline::lanesOf<Nox32f>)
        shiftNarrow(src, dst, roi, shift);
    else
        NOX_ON_TIER_FOR(roi.width * 4, shiftFloat(src, dst, roi, shift));
    for (int y = 0; y < roi.height; ++y)
        dst[y][0] = firstOfRow<S>(src[y], src[y + 1], shift);
}

template <class S, class D>
NoxStatus shift(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float dx, float dy,
                FixedScale scale = plainScale<S>) {
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<S>(srcStep, roi.width),
                     checkStep<D>(dstStep, roi.width), checkEvenSteps<S>(srcStep), checkEvenSteps<D>(dstStep));
    if (status == noxStsNoError)
        shiftImage(Rows<const S>{src, srcStep}, Rows<D>{dst, dstStep}, roi, fractionOf(dx), fractionOf(dy), scale);
    return status;
}

} // namespace

#define NOX_SHIFT(FUNCTION, SOURCE, DESTINATION)                                                                       \
    NoxStatus FUNCTION(const SOURCE *src, int srcStep, DESTINATION *dst, int dstStep, NoxiSize roi, Nox32f dx,         \
                       Nox32f dy) {                                                                                    \
        return shift(src, srcStep, dst, dstStep, roi, dx, dy);                                                         \
    }

NOX_SHIFT(noxiCopySubpix_8u_C1R, Nox8u, Nox8u)
NOX_SHIFT(noxiCopySubpix_16u_C1R, Nox16u, Nox16u)
NOX_SHIFT(noxiCopySubpix_8u32f_C1R, Nox8u, Nox32f)
NOX_SHIFT(noxiCopySubpix_16u32f_C1R, Nox16u, Nox32f)
NOX_SHIFT(noxiCopySubpix_32f_C1R, Nox32f, Nox32f)

NoxStatus noxiCopySubpix_8u16u_C1R_Sfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi, Nox32f dx,
                                       Nox32f dy, int scaleFactor) {
    return shift(src, srcStep, dst, dstStep, roi, dx, dy, scaleOf(scaleFactor));
}
