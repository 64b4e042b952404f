// The parallel twins of the chamfer distance transforms: two halves of the image, each swept towards the seam between
// them, the seam repaired by one thread, and each half swept away from it.
//
// Where the twins are taken the weights make a norm, so that integer results are those of the serial forms. The twins
// take the same two roles whatever team they get.
#include "frame/owncvomp.h"
#include "noxcv/distance.h"
#include "noxvdistrans.h"

namespace nox {
namespace {

constexpr bool down = true, up = false, backward = true, forward = false, fromSource = true, improve = false;

/// The sweeps over the seam row, in the order that carries every way across it.
template <class T>
void repairSeam(const ChamferCall<T> &call, int seam) {
    const auto sweep = [&](bool vertical, bool horizontal) {
        chamferPass(call, {seam, 1, vertical, horizontal, improve});
    };
    if (call.plan.mask == ChamferMask::Eight) {
        sweep(down, forward);
        sweep(up, backward);
        return;
    }
    sweep(up, backward);
    sweep(down, forward);
    // What came from above goes on to the left, too.
    sweep(down, backward);
}

template <class T>
NoxStatus inTwoHalves(const ChamferCall<T> &call) {
    const int height = call.roi.height, seam = height / 2;
    // A row beside the seam of a 5x5 mask reads the row on the other side of it: both are done while nothing else
    // moves.
    const int beside = call.plan.mask == ChamferMask::Ordered ? 1 : 0;
    parallelPhases(2, [&](const Phases &phases) {
        phases.together([&](int half) {
            if (half == 0)
                chamferPass(call, {0, seam, down, forward, fromSource});
            else
                chamferPass(call, {height - 1, height - seam, up, backward, fromSource});
        });
        phases.alone([&] {
            repairSeam(call, seam);
            if (beside != 0 && seam >= 1)
                chamferPass(call, {seam - 1, 1, up, backward, improve});
            if (beside != 0 && seam + 1 < height)
                chamferPass(call, {seam + 1, 1, down, forward, improve});
        });
        phases.together([&](int half) {
            if (half == 0)
                chamferPass(call, {seam - 1 - beside, seam - beside, up, backward, improve});
            else
                chamferPass(call, {seam + 1 + beside, height - seam - 1 - beside, down, forward, improve});
        });
    });
    return noxStsNoError;
}

/// The halves need no terms beyond the plan's: a twin is taken for straight weights up to the diagonal ones only.
template <class T, class Weight>
NoxStatus twin3x3(const Nox8u *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Weight *metrics) {
    ChamferPlan<T> plan = planOf3x3<T>(metrics[0], metrics[1], roi);
    plan.skipsInEnd = false;
    return inTwoHalves<T>({{src, srcStep}, {dst, dstStep}, roi, plan});
}

template <class T, class Weight>
NoxStatus twin5x5(const Nox8u *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Weight *metrics) {
    using Sum = ChamferSum<T>;
    const Sum a = metrics[0], b = std::min<Sum>(2 * a, metrics[1]);
    return inTwoHalves<T>({{src, srcStep}, {dst, dstStep}, roi, planOrdered<T>(a, b, metrics[2])});
}

} // namespace
} // namespace nox

#define NOX_TWIN(NAME, SIZE, TYPE, WEIGHT)                                                                             \
    NoxStatus NAME(const Nox8u *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, const WEIGHT *metrics) {       \
        return nox::twin##SIZE<TYPE, WEIGHT>(src, srcStep, dst, dstStep, roi, metrics);                                \
    }
NOX_TWIN(noxiDistanceTransform_3x3_8u_C1R_omp, 3x3, Nox8u, Nox32s)
NOX_TWIN(noxiDistanceTransform_5x5_8u_C1R_omp, 5x5, Nox8u, Nox32s)
NOX_TWIN(noxiDistanceTransform_3x3_8u16u_C1R_omp, 3x3, Nox16u, Nox32s)
NOX_TWIN(noxiDistanceTransform_5x5_8u16u_C1R_omp, 5x5, Nox16u, Nox32s)
NOX_TWIN(noxiDistanceTransform_3x3_8u32f_C1R_omp, 3x3, Nox32f, Nox32f)
NOX_TWIN(noxiDistanceTransform_5x5_8u32f_C1R_omp, 5x5, Nox32f, Nox32f)
