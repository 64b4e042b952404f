// The layer state, and what both layer operators share.
#pragma once

#include <cfloat>

#include "checks.h"
#include "frame/noxvdatatype.h"
#include "noxcv/pyramid.h"
#include "noxtypes.h"
#include "rows.h"

/// One allocation: this record, the normalised kernel, the scratch planes.
struct NoxiPyramidLayerState {
    void *kernel;   ///< Nox16s taps with 13 fractional bits, or Nox32f taps
    Nox8u *work;    ///< scratch
    Nox8u *table;   ///< scratch behind the planes (down layers)
    int kernelSize; ///< odd, at least 3
    int dataType;   ///< 1 for 8u, 5 for 16u, 13 for 32f
    int width;      ///< of the larger image
    int height;
    int mode; ///< always 2
    Nox32f rate;
};

extern "C" {
NoxStatus ownPyramidLayerDownInitAlloc(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const void *kernel,
                                       int kernelSize, int mode, int dataType, int channels);
NoxStatus ownPyramidLayerUpInitAlloc(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const void *kernel,
                                     int kernelSize, int mode, int dataType, int channels);
}

namespace nox {

/// A rate between two levels: above 1, at most 10.
constexpr NoxStatus checkRate(Nox32f rate) { return require(rate > 1.0F && rate <= 10.0F, noxStsBadArgument); }

/// 32-bit words of an up state's scratch.
long long upLayerScratchWords(const NoxiPyramidLayerState &state, int channels);

/// The checks of a layer call but the last one, which compares the sizes. Only the source's sides are tested for
/// being positive: the destination's follow from them.
template <class T>
NoxStatus checkLayer(const T *src, int srcStep, NoxiSize srcRoi, const T *dst, int dstStep, NoxiSize dstRoi,
                     const NoxiPyramidLayerState *state, int channels) {
    return firstFailure(checkPointers(src, dst, state), checkSize(srcRoi),
                        checkStep<T>(srcStep, static_cast<long long>(srcRoi.width) * channels),
                        checkStep<T>(dstStep, static_cast<long long>(dstRoi.width) * channels),
                        checkEvenSteps<T>(srcStep, dstStep));
}

} // namespace nox
