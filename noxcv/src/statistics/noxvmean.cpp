// Masked means, and means with standard deviation.
#include <cmath>

#include "checks.h"
#include "noxcv/statistics.h"
#include "noxvreduceblock.h"

using namespace nox;

extern "C" const Nox8u noxvCoiMaskA[3][48] = {
#define NOX_4(A, B, C) A, B, C, A, B, C, A, B, C, A, B, C
#define NOX_16(A, B, C) NOX_4(A, B, C), NOX_4(A, B, C), NOX_4(A, B, C), NOX_4(A, B, C)
    {NOX_16(0xFF, 0, 0)}, {NOX_16(0, 0xFF, 0)}, {NOX_16(0, 0, 0xFF)}
#undef NOX_16
#undef NOX_4
};

namespace {

/// When the masked members go parallel.
constexpr ParallelFrom maskedFrom = {17, false};
/// When the plain members do: those of integers ask for a second core.
template <class T, int channels>
constexpr ParallelFrom plainFrom = !std::is_same_v<T, Nox32f> ? ParallelFrom{17, true}
                                   : channels == 1            ? ParallelFrom{16, false}
                                                              : ParallelFrom{0, false};

template <class T, int channels, bool masked, bool squares>
NoxStatus sums(const Region<T> &region, int slices, MeanSlots<T> &total) {
    const auto body = [&](int first, int count) {
        const Region<T> rows = region.rows(first, count);
        return NOX_ON_TIER(meanBlock<T, channels, masked, squares>(rows));
    };
    const auto join = [](MeanSlots<T> &all, const MeanSlots<T> &next) {
        all.sum += next.sum;
        all.squares += next.squares;
        all.count += next.count;
    };
    return reduceRows(region.height, slices, body, join, total);
}

/// Square root of the mean of (pixel - mean)^2, the mean rounded to single precision.
template <int channels, bool masked>
NoxStatus centredDeviation(const Region<Nox32f> &region, int slices, Nox32f mean, long long count, Nox64f &deviation) {
    const auto body = [&](int first, int rowCount) {
        const Region<Nox32f> rows = region.rows(first, rowCount);
        return NOX_ON_TIER(centredSquares<channels, masked>(rows, mean));
    };
    const auto join = [](Slots<Nox64f, 1> &all, const Slots<Nox64f, 1> &next) { all.value[0] += next.value[0]; };
    Slots<Nox64f, 1> total;
    const NoxStatus status = reduceRows(region.height, slices, body, join, total);
    if (status == noxStsNoError)
        deviation = static_cast<Nox64f>(std::sqrt(static_cast<long double>(total.value[0]) / count));
    return status;
}

template <class T>
NoxStatus checkMean(NoxStatus pointers, int srcStep, int maskStep, NoxiSize roi, int channels, int coi) {
    return firstFailure(pointers, checkSize(roi), checkStep<T>(srcStep, static_cast<long long>(roi.width) * channels),
                        checkStep<Nox8u>(maskStep, roi.width), checkEvenSteps<T>(srcStep), checkChannelOfInterest(coi));
}

template <class T, int channels>
NoxStatus maskedMean(const T *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi, Nox64f *mean) {
    const NoxStatus bad = checkMean<T>(checkPointers(src, mask, mean), srcStep, maskStep, roi, channels, coi);
    if (bad != noxStsNoError)
        return bad;
    const Region<T> region = {{src, srcStep}, {nullptr, 0}, {mask, maskStep}, roi.width, roi.height, coi - 1};
    MeanSlots<T> total;
    const NoxStatus status = sums<T, channels, true, false>(region, slicesOf(maskedFrom, roi), total);
    if (status == noxStsNoError)
        *mean = total.count == 0 ? 0 : static_cast<Nox64f>(static_cast<long double>(total.sum) / total.count);
    return status;
}

/// The two sums give the deviation as the root of |q - m m|. Floats take a second pass about the mean where that
/// difference has lost too many digits.
template <class T, int channels, bool masked>
NoxStatus meanAndDeviation(const Region<T> &region, int slices, Nox64f *mean, Nox64f *stdDev) {
    MeanSlots<T> total;
    const NoxStatus status = sums<T, channels, masked, true>(region, slices, total);
    if (status != noxStsNoError)
        return status;
    long double m = 0, variance = 0;
    if (total.count != 0) {
        m = static_cast<long double>(total.sum) / total.count;
        variance = std::fabs(static_cast<long double>(total.squares) / total.count - m * m);
    }
    Nox64f deviation = static_cast<Nox64f>(std::sqrt(variance));
    if constexpr (std::is_same_v<T, Nox32f>)
        if (stdDev != nullptr && variance < 0.05L * (m * m)) {
            const NoxStatus second =
                centredDeviation<channels, masked>(region, slices, static_cast<Nox32f>(m), total.count, deviation);
            if (second != noxStsNoError)
                return second;
        }
    if (mean != nullptr)
        *mean = static_cast<Nox64f>(m);
    if (stdDev != nullptr)
        *stdDev = deviation;
    return noxStsNoError;
}

template <class T, int channels>
NoxStatus plainMeanAndDeviation(const T *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean, Nox64f *stdDev) {
    const NoxStatus bad = checkMean<T>(checkPointers(src), srcStep, roi.width, roi, channels, coi);
    if (bad != noxStsNoError)
        return bad;
    const Region<T> region = {{src, srcStep}, {nullptr, 0}, {nullptr, 0}, roi.width, roi.height, coi - 1};
    return meanAndDeviation<T, channels, false>(region, slicesOf(plainFrom<T, channels>, roi), mean, stdDev);
}

template <class T, int channels>
NoxStatus maskedMeanAndDeviation(const T *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi,
                                 Nox64f *mean, Nox64f *stdDev) {
    const NoxStatus bad = checkMean<T>(checkPointers(src, mask), srcStep, maskStep, roi, channels, coi);
    if (bad != noxStsNoError)
        return bad;
    const Region<T> region = {{src, srcStep}, {nullptr, 0}, {mask, maskStep}, roi.width, roi.height, coi - 1};
    return meanAndDeviation<T, channels, true>(region, slicesOf(maskedFrom, roi), mean, stdDev);
}

} // namespace

#define NOX_MEAN(MEAN_C1M, MEAN_C3CM, DEVIATION_C1, DEVIATION_C3C, DEVIATION_C1M, DEVIATION_C3CM, TAG)                 \
    NoxStatus MEAN_C1M(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,                \
                       Nox64f *mean) {                                                                                 \
        return maskedMean<Nox##TAG, 1>(src, srcStep, mask, maskStep, roi, 1, mean);                                    \
    }                                                                                                                  \
    NoxStatus MEAN_C3CM(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi,      \
                        Nox64f *mean) {                                                                                \
        return maskedMean<Nox##TAG, 3>(src, srcStep, mask, maskStep, roi, coi, mean);                                  \
    }                                                                                                                  \
    NoxStatus DEVIATION_C1(const Nox##TAG *src, int srcStep, NoxiSize roi, Nox64f *mean, Nox64f *stdDev) {             \
        return plainMeanAndDeviation<Nox##TAG, 1>(src, srcStep, roi, 1, mean, stdDev);                                 \
    }                                                                                                                  \
    NoxStatus DEVIATION_C3C(const Nox##TAG *src, int srcStep, NoxiSize roi, int coi, Nox64f *mean, Nox64f *stdDev) {   \
        return plainMeanAndDeviation<Nox##TAG, 3>(src, srcStep, roi, coi, mean, stdDev);                               \
    }                                                                                                                  \
    NoxStatus DEVIATION_C1M(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi,           \
                            Nox64f *mean, Nox64f *stdDev) {                                                            \
        return maskedMeanAndDeviation<Nox##TAG, 1>(src, srcStep, mask, maskStep, roi, 1, mean, stdDev);                \
    }                                                                                                                  \
    NoxStatus DEVIATION_C3CM(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi, \
                             Nox64f *mean, Nox64f *stdDev) {                                                           \
        return maskedMeanAndDeviation<Nox##TAG, 3>(src, srcStep, mask, maskStep, roi, coi, mean, stdDev);              \
    }

NOX_MEAN(noxiMean_8u_C1MR, noxiMean_8u_C3CMR, noxiMean_StdDev_8u_C1R, noxiMean_StdDev_8u_C3CR, noxiMean_StdDev_8u_C1MR,
         noxiMean_StdDev_8u_C3CMR, 8u)
NOX_MEAN(noxiMean_8s_C1MR, noxiMean_8s_C3CMR, noxiMean_StdDev_8s_C1R, noxiMean_StdDev_8s_C3CR, noxiMean_StdDev_8s_C1MR,
         noxiMean_StdDev_8s_C3CMR, 8s)
NOX_MEAN(noxiMean_16u_C1MR, noxiMean_16u_C3CMR, noxiMean_StdDev_16u_C1R, noxiMean_StdDev_16u_C3CR,
         noxiMean_StdDev_16u_C1MR, noxiMean_StdDev_16u_C3CMR, 16u)
NOX_MEAN(noxiMean_32f_C1MR, noxiMean_32f_C3CMR, noxiMean_StdDev_32f_C1R, noxiMean_StdDev_32f_C3CR,
         noxiMean_StdDev_32f_C1MR, noxiMean_StdDev_32f_C3CMR, 32f)
