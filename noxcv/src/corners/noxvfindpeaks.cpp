// Peaks of a response: local extrema that stand out.
#include "noxvfindpeaks.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "checks.h"
#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/corners.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

struct Larger {
    template <class T>
    NOX_INLINE static T of(T a, T b) {
        return a > b ? a : b;
    }
};
struct Smaller {
    template <class T>
    NOX_INLINE static T of(T a, T b) {
        return a < b ? a : b;
    }
};

template <class Op, class T>
NOX_INLINE void threeOfRow(const Element<T> *src, Element<T> *__restrict dst, int n) {
    for (int i = 0; i < n - 2; ++i)
        dst[i] = Op::template of<T>(Op::template of<T>(src[i], src[i + 1]), src[i + 2]);
}

NOX_TIERS void largestOfThree(const Element<Nox32f> *src, Element<Nox32f> *dst, int n) {
    threeOfRow<Larger, Nox32f>(src, dst, n);
}
NOX_TIERS void smallestOfThree(const Element<Nox32f> *src, Element<Nox32f> *dst, int n) {
    threeOfRow<Smaller, Nox32f>(src, dst, n);
}
NOX_TIERS void largestOfThree(const Element<Nox32s> *src, Element<Nox32s> *dst, int n) {
    threeOfRow<Larger, Nox32s>(src, dst, n);
}
NOX_TIERS void smallestOfThree(const Element<Nox32s> *src, Element<Nox32s> *dst, int n) {
    threeOfRow<Smaller, Nox32s>(src, dst, n);
}

/// Whether v's magnitude is above the threshold. The lowest integer's is above any, and all are above one below 0.
NOX_INLINE bool stands(Nox32f v, Nox32f threshold) { return clearSign(v) > threshold; }
NOX_INLINE bool stands(Nox32s v, Nox32s threshold) { return (v > threshold) | (v < (threshold < 0 ? 0 : -threshold)); }
/// Whether v is one of these extrema of its neighbourhood.
NOX_INLINE bool isExtremum(Nox32f v, Nox32f largest, Nox32f smallest) {
    return !(absoluteDifference(v, v > 0 ? largest : smallest) > std::numeric_limits<Nox32f>::min());
}
NOX_INLINE bool isExtremum(Nox32s v, Nox32s largest, Nox32s smallest) { return v == (v >= 1 ? largest : smallest); }

/// Three rows of extrema, or of the response itself where its four neighbours count.
template <class T>
struct Neighbours {
    const Element<T> *largest[3], *smallest[3];
};

constexpr int blockLength = 64;

/// Marks the peaks among some pixels with all bits set; tells whether there are any.
template <class T>
NOX_INLINE bool markPeaks(const Element<T> *values, const Neighbours<T> &neighbours, int first, int count, T threshold,
                          int *__restrict marks) {
    const Neighbours<T> near = neighbours; // which no mark changes
    int found = 0;
    for (int i = 0; i < count; ++i)
        found |= stands(values[first + i], threshold) ? 1 : 0;
    if (found == 0)
        return false;
    found = 0;
    for (int i = 0; i < count; ++i) {
        const int x = first + i;
        const T largest = Larger::of<T>(Larger::of<T>(near.largest[0][x], near.largest[1][x]), near.largest[2][x]);
        const T smallest =
            Smaller::of<T>(Smaller::of<T>(near.smallest[0][x], near.smallest[1][x]), near.smallest[2][x]);
        const int mark = (stands(values[x], threshold) & isExtremum(values[x], largest, smallest)) ? 1 : 0;
        marks[i] = -mark;
        found |= mark;
    }
    return found != 0;
}
NOX_TIERS bool peaksOf(const Element<Nox32f> *values, const Neighbours<Nox32f> &near, int first, int count,
                       Nox32f threshold, int *marks) {
    return markPeaks(values, near, first, count, threshold, marks);
}
NOX_TIERS bool peaksOf(const Element<Nox32s> *values, const Neighbours<Nox32s> &near, int first, int count,
                       Nox32s threshold, int *marks) {
    return markPeaks(values, near, first, count, threshold, marks);
}

/// A bit for each of the first `count` marks that is set.
std::uint64_t bitsOf(const int (&marks)[blockLength], int count) {
    std::uint64_t bits = 0;
    for (int i = 0; i < blockLength; i += 4) {
        const __m128 four = _mm_castsi128_ps(_mm_load_si128(reinterpret_cast<const __m128i *>(marks + i)));
        bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_ps(four))) << i;
    }
    return count < blockLength ? bits & ((std::uint64_t{1} << count) - 1) : bits;
}

/// The caller's list.
struct PeakList {
    Element<Nox32s> *peaks;
    int most, count;

    /// False when the list is full.
    bool add(int x, int y) {
        peaks[2 * static_cast<std::ptrdiff_t>(count)] = x;
        peaks[2 * static_cast<std::ptrdiff_t>(count) + 1] = y;
        return ++count < most;
    }
};

/// The rows of the buffer: three of maxima and three of minima that rotate.
template <class T>
struct Areas {
    T *largest, *smallest;
    Areas(WorkBuffer &buffer, int width)
        : largest(buffer.take<T>(3 * pitchOf(width))), smallest(buffer.take<T>(3 * pitchOf(width))) {}
    static long long pitchOf(int width) { return roundUp(static_cast<long long>(width), 4LL); }
};

/// A search; positions in its rows count from column `border`.
template <class T>
class Search {
public:
    Search(Rows<const T> src, NoxiSize roi, int border, bool fourNeighbours, T threshold, const Areas<T> &areas)
        : src_(src), roi_(roi), border_(border), four_(fourNeighbours), threshold_(threshold),
          largest_(areas.largest, 3, Areas<T>::pitchOf(roi.width)),
          smallest_(areas.smallest, 3, Areas<T>::pitchOf(roi.width)) {}

    void run(PeakList &list) {
        const int end = roi_.height - border_;
        if (roi_.width - 2LL * border_ < 1 || border_ >= end)
            return;
        if (!four_) {
            filterRow(border_ - 1);
            filterRow(border_);
        }
        for (int y = border_; y < end; ++y) {
            filterRow(four_ ? y : y + 1);
            if (!searchRow(y, list))
                return;
        }
    }

private:
    int columns() const { return roi_.width - 2 * border_; }

    void filterRow(int y) {
        const Element<T> *from = src_[y] + (border_ - 1);
        largestOfThree(from, elements(largest_[y]), columns() + 2);
        smallestOfThree(from, elements(smallest_[y]), columns() + 2);
    }
    Neighbours<T> neighboursOf(int y) const {
        if (!four_)
            return {{largest_[y - 1], largest_[y], largest_[y + 1]},
                    {smallest_[y - 1], smallest_[y], smallest_[y + 1]}};
        const Element<T> *above = src_[y - 1] + border_, *below = src_[y + 1] + border_;
        return {{above, largest_[y], below}, {above, smallest_[y], below}};
    }
    /// False when the list is full.
    bool searchRow(int y, PeakList &list) const {
        const Element<T> *values = src_[y] + border_;
        const Neighbours<T> near = neighboursOf(y);
        alignas(16) int marks[blockLength] = {};
        for (int first = 0; first < columns(); first += blockLength) {
            const int count = std::min(blockLength, columns() - first);
            if (!peaksOf(values, near, first, count, threshold_, marks))
                continue;
            for (std::uint64_t left = bitsOf(marks, count); left != 0; left &= left - 1)
                if (!list.add(border_ + first + std::countr_zero(left), y))
                    return false;
        }
        return true;
    }

    Rows<const T> src_;
    NoxiSize roi_;
    int border_;
    bool four_;
    T threshold_;
    RowRing<T> largest_, smallest_;
};

/// No more than half of a length, compared in single precision.
constexpr NoxStatus checkBorder(int border, int length) {
    return require(!(static_cast<Nox32f>(border) > static_cast<Nox32f>(length) * 0.5F), noxStsBadSize);
}

template <class T>
NoxStatus findPeaks(const T *src, int srcStep, NoxiSize roi, T threshold, Nox32s *peaks, int maxPeakCount,
                    int *peakCount, int norm, int border, Nox8u *buffer) {
    const Nox32u pitch = static_cast<Nox32u>(srcStep) >> 2; // in elements: the step's lowest bits are not looked at
    const NoxStatus status =
        firstFailure(checkPointers(src, peaks, peakCount, buffer), checkSize(roi), checkLength(maxPeakCount),
                     checkLength(border), checkBorder(border, roi.width), checkBorder(border, roi.height),
                     require(pitch >= static_cast<Nox32u>(roi.width), noxStsBadStep),
                     require(pitch % 4 == 0, noxStsOddStep), require(norm == 0 || norm == 1, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    WorkBuffer memory(buffer, 32);
    const Areas<T> areas(memory, roi.width);
    Search<T> search({src, srcStep & ~3}, roi, border, norm == 1, threshold, areas);
    PeakList list = {peaks, maxPeakCount, 0};
    search.run(list);
    *peakCount = list.count;
    return noxStsNoError;
}

/// Room for eight rows, rounded up.
NoxStatus storeBufferSize(int width, int *bufferSize) {
    const NoxStatus status = firstFailure(checkPointers(bufferSize), checkLength(width));
    return status != noxStsNoError ? status : storeSize(((width + 5LL) >> 2) * 128 + 32, bufferSize);
}

} // namespace

void ownSiftFilterMaxRow03_32f_C1R(const Nox32f *src, Nox32f *dst, int n) { largestOfThree(src, dst, n); }
void ownSiftFilterMinRow03_32f_C1R(const Nox32f *src, Nox32f *dst, int n) { smallestOfThree(src, dst, n); }
void ownSiftFilterMaxRow03_32s_C1R(const Nox32s *src, Nox32s *dst, int n) { largestOfThree(src, dst, n); }
void ownSiftFilterMinRow03_32s_C1R(const Nox32s *src, Nox32s *dst, int n) { smallestOfThree(src, dst, n); }

NoxStatus noxiFindPeaks3x3_32f_C1R(const Nox32f *src, int srcStep, NoxiSize roi, Nox32f threshold, Nox32s *peaks,
                                   int maxPeakCount, int *peakCount, int norm, int border, Nox8u *buffer) {
    return findPeaks(src, srcStep, roi, threshold, peaks, maxPeakCount, peakCount, norm, border, buffer);
}
NoxStatus noxiFindPeaks3x3_32s_C1R(const Nox32s *src, int srcStep, NoxiSize roi, Nox32s threshold, Nox32s *peaks,
                                   int maxPeakCount, int *peakCount, int norm, int border, Nox8u *buffer) {
    return findPeaks(src, srcStep, roi, threshold, peaks, maxPeakCount, peakCount, norm, border, buffer);
}
NoxStatus noxiFindPeaks3x3GetBufferSize_32f_C1R(int width, int *bufferSize) {
    return storeBufferSize(width, bufferSize);
}
NoxStatus noxiFindPeaks3x3GetBufferSize_32s_C1R(int width, int *bufferSize) {
    return storeBufferSize(width, bufferSize);
}
