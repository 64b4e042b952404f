#include "noxvchangemask.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#include "numerics.h"
#include "tiers.h"

namespace nox {

namespace {

/// Counts of the differences of one channel.
struct Counts {
    Nox32u of[256];
};

/// Two tables in turn: equal differences in a row do not wait for each other.
template <int channels>
void countDifferences(Rows<const Nox8u> frame, Rows<const Nox8u> other, NoxiSize roi, Counts (&counts)[channels]) {
    Counts odd[channels];
    std::memset(counts, 0, sizeof(counts));
    std::memset(odd, 0, sizeof(odd));
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *a = frame[y], *b = other[y];
        int x = 0;
        for (; x + 2 <= roi.width; x += 2, a += 2 * channels, b += 2 * channels)
            for (int c = 0; c < channels; ++c) {
                ++counts[c].of[absoluteDifference(a[c], b[c])];
                ++odd[c].of[absoluteDifference(a[c + channels], b[c + channels])];
            }
        if (x < roi.width)
            for (int c = 0; c < channels; ++c)
                ++counts[c].of[absoluteDifference(a[c], b[c])];
    }
    for (int c = 0; c < channels; ++c)
        for (int i = 0; i < 256; ++i)
            counts[c].of[i] += odd[c].of[i];
}

/// Levels are whole: a difference is above the threshold when it is above the threshold's whole part.
template <int channels>
NOX_INLINE void markRows(Rows<const Nox8u> frame, Rows<const Nox8u> other, Rows<Nox8u> mask, NoxiSize roi,
                         const int (&levels)[channels]) {
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *a = frame[y], *b = other[y];
        Nox8u *m = mask[y];
#pragma GCC ivdep
        for (int x = 0; x < roi.width; ++x) {
            bool changed = false;
            for (int c = 0; c < channels; ++c)
                changed |= absoluteDifference(a[x * channels + c], b[x * channels + c]) > levels[c];
            m[x] = changed ? 255 : 0;
        }
    }
}
NOX_TIERS void mark(Rows<const Nox8u> frame, Rows<const Nox8u> other, Rows<Nox8u> mask, NoxiSize roi,
                    const int (&levels)[1]) {
    markRows<1>(frame, other, mask, roi, levels);
}
NOX_TIERS void mark(Rows<const Nox8u> frame, Rows<const Nox8u> other, Rows<Nox8u> mask, NoxiSize roi,
                    const int (&levels)[3]) {
    markRows<3>(frame, other, mask, roi, levels);
}

} // namespace

Nox32f changeThreshold(const Nox32u (&counts)[256]) {
    Nox32f threshold = 10;
    std::uint64_t count = counts[255], sum = count * 255, squares = sum * 255;
    for (unsigned k = 254; k < 255; --k) {
        const std::uint64_t bin = counts[k];
        count += bin;
        sum += bin * k;
        squares += bin * k * k;
        const auto n = static_cast<Nox32f>(count == 0 ? 1 : count);
        const Nox32f mean = static_cast<Nox32f>(sum) / n;
        const Nox32f deviation = std::sqrt(static_cast<Nox32f>(squares) / n - mean * mean);
        threshold = deviation > threshold ? deviation : threshold;
    }
    return threshold;
}

template <int channels>
void markChanges(Rows<const Nox8u> frame, Rows<const Nox8u> other, Rows<Nox8u> mask, NoxiSize roi) {
    Counts counts[channels];
    countDifferences(frame, other, roi, counts);
    int levels[channels];
    for (int c = 0; c < channels; ++c)
        levels[c] = static_cast<int>(changeThreshold(counts[c].of));
    mark(frame, other, mask, roi, levels);
}
template void markChanges<1>(Rows<const Nox8u>, Rows<const Nox8u>, Rows<Nox8u>, NoxiSize);
template void markChanges<3>(Rows<const Nox8u>, Rows<const Nox8u>, Rows<Nox8u>, NoxiSize);

} // namespace nox
