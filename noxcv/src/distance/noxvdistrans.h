// Chamfer distance transforms: the call, its plan, and the passes that the serial forms and the parallel twins share.
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "noxtypes.h"
#include "noxvdistranspasses.h"
#include "rows.h"

namespace nox {

/// What a call does after its checks.
template <class T>
struct ChamferPlan {
    ChamferMask mask;
    ChamferWeights<T> weights;
    T twoAlong;      ///< weight of two steps along a row in one
    bool skipsAll;   ///< every row has them
    bool skipsInEnd; ///< the last row has them
};

template <class T>
struct ChamferCall {
    Rows<const Nox8u> src;
    Rows<T> dst;
    NoxiSize roi;
    ChamferPlan<T> plan;
};

/// A pass over some rows, one after the other.
struct ChamferPass {
    int first, count;
    bool down;       ///< from a row to the next one below, with the rows above as the ones before; otherwise up
    bool backward;   ///< each row from right to left
    bool fromSource; ///< zeros of the source start distances; otherwise the distances that are there are improved
};

template <class T>
void chamferPass(const ChamferCall<T> &call, const ChamferPass &pass);

extern template void chamferPass(const ChamferCall<Nox8u> &, const ChamferPass &);
extern template void chamferPass(const ChamferCall<Nox16u> &, const ChamferPass &);
extern template void chamferPass(const ChamferCall<Nox32f> &, const ChamferPass &);

/// Integer weights are compared in 64 bits; a weight beyond the largest distance is as good as that.
template <class T>
using ChamferSum = std::conditional_t<std::is_same_v<T, Nox32f>, Nox32f, long long>;

template <class T>
T cappedWeight(ChamferSum<T> weight) {
    if constexpr (std::is_same_v<T, Nox32f>)
        return weight;
    else
        return static_cast<T>(std::min<long long>(weight, std::numeric_limits<T>::max()));
}

/// The 3x3 transform: straight and diagonal weight.
template <class T>
ChamferPlan<T> planOf3x3(ChamferSum<T> a, ChamferSum<T> b, NoxiSize roi) {
    ChamferPlan<T> plan = {};
    plan.mask = roi.width == 1 || b >= 2 * a ? ChamferMask::Four : ChamferMask::Eight;
    plan.weights.straight = cappedWeight<T>(a);
    plan.weights.diagonal = cappedWeight<T>(b);
    // A way of diagonal steps along the last row would need a row below it.
    plan.skipsInEnd = plan.mask == ChamferMask::Eight && a > b && std::min(roi.width, roi.height) >= 2;
    plan.twoAlong = cappedWeight<T>(2 * b);
    return plan;
}

/// The 5x5 transform with weights that are ordered: straight, effective diagonal, knight's.
template <class T>
ChamferPlan<T> planOrdered(ChamferSum<T> a, ChamferSum<T> b, ChamferSum<T> c) {
    ChamferPlan<T> plan = {};
    plan.mask = ChamferMask::Ordered;
    plan.weights.straight = cappedWeight<T>(a);
    plan.weights.diagonal = cappedWeight<T>(b);
    plan.weights.knight = cappedWeight<T>(c);
    return plan;
}

} // namespace nox
