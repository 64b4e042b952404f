// Extrema with the position of their first occurrence.
#include "checks.h"
#include "noxcv/statistics.h"
#include "noxvreduceblock.h"

using namespace nox;

namespace {

/// A call of this many pixels or more goes parallel, whatever the thread count.
constexpr long long parallelArea = 16384;

/// The pixel at an extreme level.
template <class T>
T pixelOf(Level<T> level) {
    return std::is_same_v<T, Nox8s> ? static_cast<T>(level - 128) : static_cast<T>(level);
}

/// The first pixel of an extreme level. `row` is the row where the search begins; -1: no pixel is better than the
/// level at the start, but one may equal it.
template <class T, int channels, bool masked>
bool locate(const Region<T> &region, Level<T> level, int row, Nox32f *value, NoxiPoint *position) {
    const T wanted = pixelOf<T>(level);
    const int first = row < 0 ? 0 : row;
    const NoxiPoint found = NOX_ON_TIER(firstEqual<T, channels, masked>(region, first, wanted));
    *value = static_cast<Nox32f>(wanted);
    *position = {0, 0};
    if (found.x < 0)
        return false;
    *value = static_cast<Nox32f>(region.src1[found.y][found.x * channels + region.channel]); // the sign of a zero
    *position = found;
    return true;
}

template <class T, int channels, bool masked>
NoxStatus extrema(const Region<T> &region, int slices, Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex,
                  NoxiPoint *maxIndex) {
    const auto body = [&](int first, int count) {
        const Region<T> rows = region.rows(first, count);
        Extrema<T> best = NOX_ON_TIER(extremaBlock<T, channels, masked>(rows));
        best.lowRow += best.lowRow < 0 ? 0 : first;
        best.highRow += best.highRow < 0 ? 0 : first;
        return best;
    };
    const auto join = [](Extrema<T> &total, const Extrema<T> &next) {
        if (next.low < total.low) {
            total.low = next.low;
            total.lowRow = next.lowRow;
        }
        if (next.high > total.high) {
            total.high = next.high;
            total.highRow = next.highRow;
        }
    };
    Extrema<T> total;
    const NoxStatus status = reduceRows(region.height, slices, body, join, total);
    if (status != noxStsNoError)
        return status;
    const bool low = locate<T, channels, masked>(region, total.low, total.lowRow, minValue, minIndex);
    const bool high = locate<T, channels, masked>(region, total.high, total.highRow, maxValue, maxIndex);
    if (masked && !low && !high && NOX_ON_TIER(countPixels<masked>(region)) == 0)
        *minValue = *maxValue = 0;
    return noxStsNoError;
}

template <class T, int channels, bool masked>
NoxStatus minMaxIndx(const T *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi,
                     Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex) {
    const NoxStatus status =
        firstFailure(checkPointers(src), masked ? checkPointers(mask) : noxStsNoError,
                     checkPointers(minValue, maxValue, minIndex, maxIndex), checkSize(roi),
                     checkStep<T>(srcStep, static_cast<long long>(roi.width) * channels),
                     checkStep<Nox8u>(maskStep, roi.width), checkEvenSteps<T>(srcStep), checkChannelOfInterest(coi));
    if (status != noxStsNoError)
        return status;
    const Region<T> region = {{src, srcStep}, {nullptr, 0}, {mask, maskStep}, roi.width, roi.height, coi - 1};
    return extrema<T, channels, masked>(region, area(roi) < parallelArea ? 1 : sliceCount(), minValue, maxValue,
                                        minIndex, maxIndex);
}

} // namespace

#define NOX_MINMAX(C1, C3C, C1M, C3CM, TAG)                                                                            \
    NoxStatus C1(const Nox##TAG *src, int srcStep, NoxiSize roi, Nox32f *minValue, Nox32f *maxValue,                   \
                 NoxiPoint *minIndex, NoxiPoint *maxIndex) {                                                           \
        return minMaxIndx<Nox##TAG, 1, false>(src, srcStep, nullptr, roi.width, roi, 1, minValue, maxValue, minIndex,  \
                                              maxIndex);                                                               \
    }                                                                                                                  \
    NoxStatus C3C(const Nox##TAG *src, int srcStep, NoxiSize roi, int coi, Nox32f *minValue, Nox32f *maxValue,         \
                  NoxiPoint *minIndex, NoxiPoint *maxIndex) {                                                          \
        return minMaxIndx<Nox##TAG, 3, false>(src, srcStep, nullptr, roi.width, roi, coi, minValue, maxValue,          \
                                              minIndex, maxIndex);                                                     \
    }                                                                                                                  \
    NoxStatus C1M(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, Nox32f *minValue,   \
                  Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex) {                                        \
        return minMaxIndx<Nox##TAG, 1, true>(src, srcStep, mask, maskStep, roi, 1, minValue, maxValue, minIndex,       \
                                             maxIndex);                                                                \
    }                                                                                                                  \
    NoxStatus C3CM(const Nox##TAG *src, int srcStep, const Nox8u *mask, int maskStep, NoxiSize roi, int coi,           \
                   Nox32f *minValue, Nox32f *maxValue, NoxiPoint *minIndex, NoxiPoint *maxIndex) {                     \
        return minMaxIndx<Nox##TAG, 3, true>(src, srcStep, mask, maskStep, roi, coi, minValue, maxValue, minIndex,     \
                                             maxIndex);                                                                \
    }

NOX_MINMAX(noxiMinMaxIndx_8u_C1R, noxiMinMaxIndx_8u_C3CR, noxiMinMaxIndx_8u_C1MR, noxiMinMaxIndx_8u_C3CMR, 8u)
NOX_MINMAX(noxiMinMaxIndx_8s_C1R, noxiMinMaxIndx_8s_C3CR, noxiMinMaxIndx_8s_C1MR, noxiMinMaxIndx_8s_C3CMR, 8s)
NOX_MINMAX(noxiMinMaxIndx_16u_C1R, noxiMinMaxIndx_16u_C3CR, noxiMinMaxIndx_16u_C1MR, noxiMinMaxIndx_16u_C3CMR, 16u)
NOX_MINMAX(noxiMinMaxIndx_32f_C1R, noxiMinMaxIndx_32f_C3CR, noxiMinMaxIndx_32f_C1MR, noxiMinMaxIndx_32f_C3CMR, 32f)
