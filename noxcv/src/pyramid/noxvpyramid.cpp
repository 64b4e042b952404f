// The pyramid record: how large the levels are, and their scales.
#include <algorithm>
#include <cmath>
#include <limits>

#include "noxcv/primitives.h"
#include "noxvpyrlayer.h"

using namespace nox;

namespace {

/// A single-precision product truncated toward zero; lengths that no int holds become the largest one.
int truncatedLength(Nox32f length) {
    return length < 2147483648.0F ? static_cast<int>(length) : std::numeric_limits<int>::max();
}

/// The lengths that a line of n samples may have one level up.
struct Range {
    int smallest, largest;
};

Range upRange(int n, Nox32f rate) {
    if (n == 1)
        return {1, std::max(2, truncatedLength(rate))};
    const int next = n < std::numeric_limits<int>::max() ? n + 1 : n;
    const int below = truncatedLength(static_cast<Nox32f>(n - 1) * rate);
    return {std::max(below < std::numeric_limits<int>::max() ? below + 1 : below, next),
            std::max(next, truncatedLength(static_cast<Nox32f>(n) * rate))};
}

/// The length one level down: near n / rate, and such that n lies in its range one level up.
int downLength(int n, Nox32f rate) {
    int candidate = std::max(truncatedLength(static_cast<Nox32f>(n) / rate + 0.5F), 1);
    for (;;) {
        const Range range = upRange(candidate, rate);
        if (n < range.smallest && candidate > 1)
            --candidate;
        else if (n > range.largest)
            ++candidate;
        else
            return candidate;
    }
}

NoxiSize downSize(NoxiSize roi, Nox32f rate) { return {downLength(roi.width, rate), downLength(roi.height, rate)}; }

/// Levels that there are at least, told at once. A line of n samples has a length of at least n / rate - 1, less what
/// single precision takes away, one level down; so k levels take it to no less than n / rate^k - k, times nearly 1.
int fewestLevels(NoxiSize size, Nox32f rate) {
    const Nox64f longest = std::max(size.width, size.height), growth = std::log(static_cast<Nox64f>(rate) + 0x1p-20);
    int count = 0;
    for (int step = 1 << 30; step > 0; step /= 2)
        if (const Nox64f levels = static_cast<Nox64f>(count) + step; longest * std::exp(-growth * levels) - levels > 2)
            count += step;
    return count;
}

/// How many levels there are above level 0, up to `wanted`.
int countLevels(NoxiSize size, Nox32f rate, int wanted) {
    int count = 0;
    for (; count < wanted && (size.width >= 2 || size.height > 1); ++count)
        size = downSize(size, rate);
    return count;
}

} // namespace

NoxStatus noxiGetPyramidDownROI(NoxiSize roi, NoxiSize *dstRoi, Nox32f rate) {
    const NoxStatus status = firstFailure(checkPointers(dstRoi), checkSize(roi), checkRate(rate));
    if (status == noxStsNoError)
        *dstRoi = downSize(roi, rate);
    return status;
}

NoxStatus noxiGetPyramidUpROI(NoxiSize roi, NoxiSize *dstRoiMin, NoxiSize *dstRoiMax, Nox32f rate) {
    const NoxStatus status = firstFailure(checkPointers(dstRoiMin, dstRoiMax), checkSize(roi), checkRate(rate));
    if (status != noxStsNoError)
        return status;
    const Range width = upRange(roi.width, rate), height = upRange(roi.height, rate);
    *dstRoiMin = {width.smallest, height.smallest};
    *dstRoiMax = {width.largest, height.largest};
    return noxStsNoError;
}

NoxStatus noxiPyramidInitAlloc(NoxiPyramid **pyramid, int level, NoxiSize roi, Nox32f rate) {
    const NoxStatus status =
        firstFailure(checkPointers(pyramid), checkSize(roi), checkRate(rate), require(level >= 1, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    // More than the arrays need, also with wide pointers.
    constexpr int bytesALevel = 44, bytesBesides = 112;
    // A record of four million levels takes 176 megabytes: one of more is refused, and most of those without a count.
    constexpr int mostLevels = 1 << 22;
    if (std::min(level, fewestLevels(roi, rate)) > mostLevels)
        return noxStsNoMemory;
    const int last = countLevels(roi, rate, std::min(level, mostLevels + 1)), levels = last + 1;
    if (last > mostLevels)
        return noxStsNoMemory;
    Nox8u *block = noxsMalloc_8u(last * bytesALevel + bytesBesides);
    if (block == nullptr)
        return noxStsNoMemory;

    auto *record = reinterpret_cast<NoxiPyramid *>(block);
    record->sizes = reinterpret_cast<NoxiSize *>(record + 1);
    record->images = reinterpret_cast<Nox8u **>(record->sizes + levels);
    record->rates = alignUp(reinterpret_cast<Nox64f *>(record->images + levels), sizeof(Nox64f));
    record->steps = reinterpret_cast<int *>(record->rates + levels);
    record->layerState = nullptr;
    record->level = last;
    const auto inverse = static_cast<Nox64f>(1.0L / rate);
    Nox64f scale = 1.0;
    for (int i = 0; i < levels; ++i, scale *= inverse, roi = downSize(roi, rate)) {
        record->sizes[i] = roi;
        record->images[i] = nullptr;
        record->rates[i] = scale;
        record->steps[i] = 0;
    }
    *pyramid = record;
    return noxStsNoError;
}

NoxStatus noxiPyramidFree(NoxiPyramid *pyramid) {
    if (pyramid == nullptr)
        return noxStsNullPointer;
    noxsFree(pyramid);
    return noxStsNoError;
}
