// Chamfer distance transforms and the tables of their weights.
#include <algorithm>
#include <cmath>
#include <limits>

#include "checks.h"
#include "frame/owncvomp.h"
#include "noxcv/distance.h"
#include "noxvdistrans.h"

namespace nox {
namespace {

// --- weights ---

/// Rows: norm; columns: the weights of a kernel of 3, and of 5.
constexpr Nox32s integerWeights[3][5] = {{1, 1, 1, 1, 2}, {1, 2, 1, 2, 3}, {2, 3, 5, 7, 11}};
constexpr Nox32f realWeights[3][5] = {{1, 1, 1, 1, 2}, {1, 2, 1, 2, 3}, {0.955F, 1.3693F, 1, 1.4F, 2.1969F}};

template <class T>
NoxStatus weightsOf(const T (&table)[3][5], int kernelSize, int norm, T *metrics) {
    const NoxStatus status =
        firstFailure(checkPointers(metrics), require(kernelSize == 3 || kernelSize == 5, noxStsBadSize),
                     require(norm >= 0 && norm <= 2, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    const bool small = kernelSize == 3;
    std::copy_n(table[norm] + (small ? 0 : 2), small ? 2 : 3, metrics);
    return noxStsNoError;
}

/// Weights of the 5x5 transforms; diagonal is the effective one: two straight steps may be shorter.
template <class T>
struct Steps {
    ChamferSum<T> straight, diagonal, knight;
};

/// A knight's step is no longer of use where a straight and a diagonal one are as short.
bool knightIsUseless(const Steps<Nox32f> &w) {
    const Nox32f excess = (w.knight - w.straight) - w.diagonal, sum = std::fabs(w.straight + w.diagonal);
    return static_cast<long double>(excess) > static_cast<long double>(-1e-07) * sum;
}
template <class T>
bool knightIsUseless(const Steps<T> &w) {
    return w.knight >= w.straight + w.diagonal;
}

/// Straight, diagonal and knight's steps each get the farther for their weight: then half of the mask will do.
bool areOrdered(const Steps<Nox32f> &w) {
    const auto isBelow = [](Nox32f difference, Nox32f of) {
        return static_cast<long double>(difference) <= static_cast<long double>(-1e-07) * std::fabs(of);
    };
    return isBelow(w.straight - w.diagonal, w.diagonal) && isBelow(2 * w.straight - w.knight, w.knight) &&
           isBelow(1.5F * w.diagonal - w.knight, w.knight);
}
template <class T>
bool areOrdered(const Steps<T> &w) {
    return w.diagonal > w.straight && w.knight > 2 * w.straight && 2 * w.knight > 3 * w.diagonal;
}

template <class T>
ChamferPlan<T> planExtended(const Steps<T> &w) {
    using Sum = ChamferSum<T>;
    const Sum a = std::min<Sum>(w.straight, 3 * w.knight), b = std::min<Sum>(w.diagonal, 2 * w.knight);
    ChamferPlan<T> plan = planOrdered<T>(a, b, w.knight);
    plan.mask = ChamferMask::Extended;
    plan.weights.twoStraight = cappedWeight<T>(std::min({2 * a, 2 * b, 2 * w.knight}));
    plan.weights.twoDiagonal = cappedWeight<T>(std::min<Sum>(w.knight + a, 2 * b));
    plan.twoAlong = plan.weights.twoStraight;
    plan.skipsAll = true;
    return plan;
}

// --- serial forms ---

template <class T>
void twoPasses(const ChamferCall<T> &call) {
    const int height = call.roi.height;
    chamferPass(call, {0, height, true, false, true});
    chamferPass(call, {height - 1, height, false, true, false});
}

/// Images of fewer than four rows or columns: every pixel sees all its neighbours in the 5x5 mask.
template <class T>
class SmallImage {
public:
    SmallImage(const ChamferCall<T> &call, const Steps<T> &w) : call_(call) {
        const ChamferSum<T> of[3][3] = {{0, w.straight, 2 * w.straight},
                                        {w.straight, w.diagonal, w.knight},
                                        {2 * w.straight, w.knight, 2 * w.diagonal}};
        for (int dy = 0; dy < 3; ++dy)
            for (int dx = 0; dx < 3; ++dx)
                weights_[dy][dx] = cappedWeight<T>(of[dy][dx]);
        for (int y = 0; y < call.roi.height; ++y)
            for (int x = 0; x < call.roi.width; ++x)
                call.dst[y][x] = call.src[y][x] == 0 ? T(0) : std::numeric_limits<T>::max();
    }
    /// One sweep there and one back.
    void sweepTwice() {
        sweep(false, false);
        sweep(false, true);
    }
    /// Sweeps until nothing changes.
    void relax() {
        const bool columns = call_.roi.width >= 4;
        bool changed = true;
        while (changed) {
            changed = sweep(columns, false);
            changed |= sweep(columns, true);
        }
    }

private:
    /// Pixels in raster order, or column by column, each from the half of the mask that the sweep has passed.
    bool sweep(bool columns, bool back) {
        const int outer = columns ? call_.roi.width : call_.roi.height;
        const int inner = columns ? call_.roi.height : call_.roi.width, sign = back ? 1 : -1;
        bool changed = false;
        for (int i = 0; i < outer; ++i)
            for (int j = 0; j < inner; ++j) {
                const int along = back ? inner - 1 - j : j, across = back ? outer - 1 - i : i;
                for (int k = 1; k <= 2; ++k)
                    changed |= improve(columns, along, across, sign * k, 0);
                for (int k = 1; k <= 2; ++k)
                    for (int shift = -2; shift <= 2; ++shift)
                        changed |= improve(columns, along, across, shift, sign * k);
            }
        return changed;
    }
    bool improve(bool columns, int along, int across, int dAlong, int dAcross) {
        const int x = columns ? across : along, y = columns ? along : across;
        const int nx = x + (columns ? dAcross : dAlong), ny = y + (columns ? dAlong : dAcross);
        if (nx < 0 || nx >= call_.roi.width || ny < 0 || ny >= call_.roi.height)
            return false;
        const ChamferSum<T> candidate =
            ChamferSum<T>(T(call_.dst[ny][nx])) + weights_[std::abs(ny - y)][std::abs(nx - x)];
        if (!(candidate < T(call_.dst[y][x])))
            return false;
        call_.dst[y][x] = static_cast<T>(candidate);
        return true;
    }

    const ChamferCall<T> &call_;
    T weights_[3][3];
};

// --- entries ---

/// From how many pixels a side on the 3x3 transforms use two threads; the others do from 65 columns on.
template <class T>
constexpr int parallelWidth3x3 = sizeof(T) == 1 ? 257 : 65;
constexpr int parallelWidth5x5 = 65, parallelHeight = 64;

/// Float forms ask for a second core, too.
template <class T>
bool goesParallel(NoxiSize roi, int width) {
    return owncvGetNumThreads() >= 2 && roi.width >= width && roi.height >= parallelHeight &&
           (!std::is_same_v<T, Nox32f> || runomp() != 0);
}

template <class T, class Weight>
NoxStatus checkCall(const Nox8u *src, int srcStep, const T *dst, int dstStep, NoxiSize roi, const Weight *metrics,
                    int count) {
    const NoxStatus status =
        firstFailure(checkPointers(src, dst, metrics), checkSize(roi), checkStep<Nox8u>(srcStep, roi.width),
                     checkStep<T>(dstStep, roi.width), checkEvenSteps<T>(dstStep));
    if (status != noxStsNoError)
        return status;
    return require(std::all_of(metrics, metrics + count, [](Weight weight) { return weight > 0; }), noxStsBadMetric);
}

template <class T, class Weight, class Twin>
NoxStatus transform3x3(const Nox8u *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Weight *metrics,
                       Twin twin) {
    const NoxStatus status = checkCall(src, srcStep, dst, dstStep, roi, metrics, 2);
    if (status != noxStsNoError)
        return status;
    if (metrics[0] <= metrics[1] && goesParallel<T>(roi, parallelWidth3x3<T>))
        return twin(src, srcStep, dst, dstStep, roi, metrics);
    twoPasses<T>({{src, srcStep}, {dst, dstStep}, roi, planOf3x3<T>(metrics[0], metrics[1], roi)});
    return noxStsNoError;
}

template <class T, class Weight, class Form, class Twin>
NoxStatus transform5x5(const Nox8u *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Weight *metrics,
                       Form form3x3, Twin twin) {
    using Sum = ChamferSum<T>;
    const NoxStatus status = checkCall(src, srcStep, dst, dstStep, roi, metrics, 3);
    if (status != noxStsNoError)
        return status;
    const Sum a = metrics[0];
    const Steps<T> steps = {a, std::min<Sum>(2 * a, metrics[1]), Sum(metrics[2])};
    if (knightIsUseless(steps))
        return form3x3(src, srcStep, dst, dstStep, roi, metrics);
    const bool ordered = areOrdered(steps), small = roi.width < 4 || roi.height < 4;
    if (ordered && !small && goesParallel<T>(roi, parallelWidth5x5))
        return twin(src, srcStep, dst, dstStep, roi, metrics);
    const ChamferCall<T> call = {{src, srcStep},
                                 {dst, dstStep},
                                 roi,
                                 ordered ? planOrdered<T>(a, steps.diagonal, steps.knight) : planExtended<T>(steps)};
    if (!small)
        twoPasses(call);
    else if (ordered)
        SmallImage<T>(call, steps).sweepTwice();
    else
        SmallImage<T>(call, steps).relax();
    return noxStsNoError;
}

} // namespace
} // namespace nox

NoxStatus noxiGetDistanceTransformMask_32s(int kernelSize, int norm, Nox32s *metrics) {
    return nox::weightsOf(nox::integerWeights, kernelSize, norm, metrics);
}
NoxStatus noxiGetDistanceTransformMask_32f(int kernelSize, int norm, Nox32f *metrics) {
    return nox::weightsOf(nox::realWeights, kernelSize, norm, metrics);
}
NoxStatus noxiGetDistanceTransformMask(int maskType, Nox32f *metrics) {
    const int norm = maskType % 10;
    if (norm < 0 || norm > 2)
        return noxStsBadArgument;
    return noxiGetDistanceTransformMask_32f(maskType / 10, norm, metrics);
}

#define NOX_TRANSFORM(NAME, TYPE, WEIGHT, CALL)                                                                        \
    NoxStatus NAME(const Nox8u *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, const WEIGHT *metrics) {       \
        return nox::CALL;                                                                                              \
    }
NOX_TRANSFORM(noxiDistanceTransform_3x3_8u_C1R, Nox8u, Nox32s,
              transform3x3(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u_C1R_omp))
NOX_TRANSFORM(noxiDistanceTransform_3x3_8u16u_C1R, Nox16u, Nox32s,
              transform3x3(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u16u_C1R_omp))
NOX_TRANSFORM(noxiDistanceTransform_3x3_8u32f_C1R, Nox32f, Nox32f,
              transform3x3(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u32f_C1R_omp))
NOX_TRANSFORM(noxiDistanceTransform_5x5_8u_C1R, Nox8u, Nox32s,
              transform5x5(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u_C1R,
                           noxiDistanceTransform_5x5_8u_C1R_omp))
NOX_TRANSFORM(noxiDistanceTransform_5x5_8u16u_C1R, Nox16u, Nox32s,
              transform5x5(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u16u_C1R,
                           noxiDistanceTransform_5x5_8u16u_C1R_omp))
NOX_TRANSFORM(noxiDistanceTransform_5x5_8u32f_C1R, Nox32f, Nox32f,
              transform5x5(src, srcStep, dst, dstStep, roi, metrics, noxiDistanceTransform_3x3_8u32f_C1R,
                           noxiDistanceTransform_5x5_8u32f_C1R_omp))

NoxStatus noxiDistanceTransform_3x3_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, const Nox32s *metrics) {
    return noxiDistanceTransform_3x3_8u_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roi, metrics);
}
NoxStatus noxiDistanceTransform_5x5_8u_C1IR(Nox8u *srcDst, int srcDstStep, NoxiSize roi, const Nox32s *metrics) {
    return noxiDistanceTransform_5x5_8u_C1R(srcDst, srcDstStep, srcDst, srcDstStep, roi, metrics);
}
