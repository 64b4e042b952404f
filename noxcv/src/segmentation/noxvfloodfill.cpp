// Flood fill of pixels within a band of values: those equal to the seed, and those in a range around it.
//
// A fill goes by spans, the longest runs of joining pixels in a row. A span is painted when it is found and then waits
// until the rows above and below it are searched for more. Since painted pixels lie outside the band, the image itself
// tells what has been taken; a new value inside the band needs a bit a pixel instead.
//
// The stack cannot overflow. Spans of a row are separated by at least one pixel, so a row never has more than
// (width + 1) / 2 of them, at 8 bytes each. The buffer has 6 bytes a pixel, which is no less from a width of 2 on, and
// with the bits as well (a row of three pixels: 16 bytes and 1 of bits, where there are 18). In a single column no more
// than two spans wait at a time.
#include <emmintrin.h>

#include <cstring>
#include <type_traits>

#include "checks.h"
#include "noxvfloodfill.h"
#include "numerics.h"
#include "tiers.h"

using namespace nox;

namespace {

/// The values that join: neither below low nor above high, in each channel. A not-a-number joins everywhere.
template <class T, int channels>
struct Band {
    Color<T, channels> low, high;

    NOX_INLINE bool holds(const Element<T> *pixel) const {
        for (int c = 0; c < channels; ++c)
            if (low.value[c] > pixel[c] || pixel[c] > high.value[c])
                return false;
        return true;
    }
};

/// Tells of a group of pixels at once which of them join: bit i * bitsAPixel for pixel i.
template <class T, int channels>
class GroupTest {
public:
    static constexpr int pixels = 1, bitsAPixel = 1, bytes = channels * int(sizeof(T));
    static constexpr unsigned all = 1;
    explicit GroupTest(const Band<T, channels> &band) : band_(band) {}
    NOX_INLINE unsigned operator()(const Element<T> *row) const { return band_.holds(row) ? 1U : 0U; }

private:
    Band<T, channels> band_;
};

/// Bytes: n is in the band when n - low, modulo 256, is at most high - low. Colours repeat every three bytes, so that a
/// vector holds five of them and the first byte of a sixth.
template <int channels>
class GroupTest<Nox8u, channels> {
public:
    static constexpr int pixels = 16 / channels, bitsAPixel = channels, bytes = 16;
    static constexpr unsigned all = channels == 1 ? 0xffffU : 0x1249U;
    explicit GroupTest(const Band<Nox8u, channels> &band) {
        Nox8u low[16], extent[16];
        for (int i = 0; i < 16; ++i) {
            low[i] = band.low.value[i % channels];
            extent[i] = static_cast<Nox8u>(band.high.value[i % channels] - low[i]);
        }
        low_ = _mm_loadu_si128(reinterpret_cast<const __m128i *>(low));
        extent_ = _mm_loadu_si128(reinterpret_cast<const __m128i *>(extent));
    }
    NOX_INLINE unsigned operator()(const Nox8u *row) const {
        const __m128i n = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(row)), low_);
        const unsigned joins = _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(n, extent_), n));
        return channels == 1 ? joins : joins & joins >> 1 & joins >> 2 & all;
    }

private:
    __m128i low_, extent_;
};

template <>
class GroupTest<Nox32f, 1> {
public:
    static constexpr int pixels = 8, bitsAPixel = 1, bytes = 32;
    static constexpr unsigned all = 0xffU;
    explicit GroupTest(const Band<Nox32f, 1> &band)
        : low_(_mm_set1_ps(band.low.value[0])), high_(_mm_set1_ps(band.high.value[0])) {}
    NOX_INLINE unsigned operator()(const Element<Nox32f> *row) const { return four(row) | four(row + 4) << 4; }

private:
    NOX_INLINE unsigned four(const Element<Nox32f> *row) const {
        const __m128 n = _mm_loadu_ps(reinterpret_cast<const float *>(row));
        return static_cast<unsigned>(_mm_movemask_ps(_mm_or_ps(_mm_cmpgt_ps(low_, n), _mm_cmpgt_ps(n, high_)))) ^ 0xfU;
    }
    __m128 low_, high_;
};

/// A region whose painted pixels no longer join.
template <class T, int channels>
class PaintedRegion {
public:
    PaintedRegion(Rows<T> image, int width, const Band<T, channels> &band, const Color<T, channels> &color)
        : image_(image), width_(width), band_(band), test_(band), color_(color) {}

    /// The first column from x to end - 1 that joins; end or beyond when there is none.
    int findJoining(int y, int x, int end) const { return find<true>(y, x, end); }
    /// The column behind the run of joining pixels that starts at x.
    int endOfRun(int y, int x) const { return find<false>(y, x, width_); }
    /// The first column of the run of joining pixels that ends before x.
    int startOfRun(int y, int x) const {
        const Element<T> *row = image_[y];
        for (; x >= Test::pixels; x -= Test::pixels) {
            const unsigned others = test_(row + std::ptrdiff_t(x - Test::pixels) * channels) ^ Test::all;
            if (others != 0)
                return x - Test::pixels + (31 - std::countl_zero(others)) / Test::bitsAPixel + 1;
        }
        while (x > 0 && band_.holds(row + std::ptrdiff_t(x - 1) * channels))
            --x;
        return x;
    }
    void take(const Span &span) { paint<T, channels>(image_[span.y], span.left, span.end, color_); }

private:
    using Test = GroupTest<T, channels>;

    template <bool joining>
    NOX_INLINE int find(int y, int x, int end) const {
        const Element<T> *row = image_[y];
        // A vector may hold a part of one more pixel, and must not reach beyond the row.
        constexpr int inReach = (Test::bytes + channels * int(sizeof(T)) - 1) / (channels * int(sizeof(T)));
        for (; x <= end - inReach; x += Test::pixels) {
            const unsigned found = test_(row + std::ptrdiff_t(x) * channels) ^ (joining ? 0U : Test::all);
            if (found != 0)
                return x + std::countr_zero(found) / Test::bitsAPixel;
        }
        while (x < end && band_.holds(row + std::ptrdiff_t(x) * channels) != joining)
            ++x;
        return x;
    }

    Rows<T> image_;
    int width_;
    Band<T, channels> band_;
    Test test_;
    Color<T, channels> color_;
};

/// A region whose painted pixels would join again: a bit tells which ones have been taken.
template <class T, int channels>
class MarkedRegion {
public:
    MarkedRegion(Rows<T> image, NoxiSize roi, const Band<T, channels> &band, const Color<T, channels> &color,
                 Nox8u *bits)
        : image_(image), width_(roi.width), band_(band), color_(color), bits_{bits, bitRowBytes(roi.width)} {
        std::memset(bits, 0, bitBytes(roi));
    }
    static std::size_t bitBytes(NoxiSize roi) { return std::size_t(roi.height) * bitRowBytes(roi.width); }

    int findJoining(int y, int x, int end) const {
        while (x < end && !joins(y, x))
            ++x;
        return x;
    }
    int endOfRun(int y, int x) const {
        while (x < width_ && joins(y, x))
            ++x;
        return x;
    }
    int startOfRun(int y, int x) const {
        while (x > 0 && joins(y, x - 1))
            --x;
        return x;
    }
    void take(const Span &span) {
        paint<T, channels>(image_[span.y], span.left, span.end, color_);
        Nox8u *bits = bits_[span.y];
        for (int x = span.left; x < span.end; ++x)
            bits[x >> 3] = static_cast<Nox8u>(bits[x >> 3] | 1U << (x & 7));
    }

private:
    static int bitRowBytes(int width) { return width / 8 + (width % 8 != 0); }
    bool joins(int y, int x) const {
        return (bits_[y][x >> 3] >> (x & 7) & 1) == 0 && band_.holds(image_[y] + std::ptrdiff_t(x) * channels);
    }

    Rows<T> image_;
    int width_;
    Band<T, channels> band_;
    Color<T, channels> color_;
    Rows<Nox8u> bits_;
};

/// Takes all runs of row y that the span reaches.
template <class Region>
NOX_INLINE void visitRow(Region &region, WaitingSpans &waiting, Extent &extent, const Span &span, int direction,
                         int width, int reach) {
    const int y = span.y + direction;
    const int begin = std::max(span.left - reach, 0), end = std::min(span.end + reach, width);
    for (int x = region.findJoining(y, begin, end); x < end; x = region.findJoining(y, x, end)) {
        Span found{y, x == begin ? region.startOfRun(y, x) : x, region.endOfRun(y, x + 1), 0};
        region.take(found);
        extent.add(found);
        // The pixels next to a span do not join.
        if (found.left - reach >= span.left - 1 && found.end + reach <= span.end + 1)
            found.done = -direction;
        waiting.push(found);
        x = found.end + 1;
    }
}

/// Fills from the seed, which is taken whether it joins or not. Spans reach pixels `reach` columns beyond their ends.
template <class Region>
Extent grow(Region &region, WaitingSpans &waiting, NoxiPoint seed, NoxiSize roi, int reach) {
    Extent extent;
    const Span first{seed.y, region.startOfRun(seed.y, seed.x), region.endOfRun(seed.y, seed.x + 1), 0};
    region.take(first);
    extent.add(first);
    waiting.push(first);
    while (!waiting.empty()) {
        const Span span = waiting.pop();
        if (span.done != 1 && span.y + 1 < roi.height)
            visitRow(region, waiting, extent, span, 1, roi.width, reach);
        if (span.done != -1 && span.y > 0)
            visitRow(region, waiting, extent, span, -1, roi.width, reach);
    }
    return extent;
}

/// The bytes and the floats around the seed's value that a range takes.
NOX_INLINE void setBand(Nox8u seed, Nox8u minDelta, Nox8u maxDelta, Nox8u &low, Nox8u &high) {
    low = saturate<Nox8u>(seed - minDelta);
    high = saturate<Nox8u>(seed + maxDelta);
}
NOX_INLINE void setBand(Nox32f seed, Nox32f minDelta, Nox32f maxDelta, Nox32f &low, Nox32f &high) {
    low = seed - minDelta;
    high = maxDelta + seed;
}

/// No channel of the seed is less or greater than that of the color.
template <class T, int channels>
bool hasColor(const Color<T, channels> &seed, const Color<T, channels> &color) {
    for (int c = 0; c < channels; ++c)
        if (seed.value[c] < color.value[c] || seed.value[c] > color.value[c])
            return false;
    return true;
}

/// Null deltas stand for a band of the seed's value alone.
template <class T, int channels>
void fill(Rows<T> image, NoxiSize roi, NoxiPoint seed, const Color<T, channels> &color, const T *minDelta,
          const T *maxDelta, int reach, NoxiConnectedRegion *region, Nox8u *buffer) {
    const auto start = Color<T, channels>::load(image[seed.y] + std::ptrdiff_t(seed.x) * channels);
    if (hasColor(start, color))
        return;
    Band<T, channels> band{start, start};
    if (minDelta != nullptr)
        for (int c = 0; c < channels; ++c)
            setBand(start.value[c], minDelta[c], maxDelta[c], band.low.value[c], band.high.value[c]);
    Extent extent;
    if (band.holds(color.value)) {
        MarkedRegion<T, channels> marked(image, roi, band, color, buffer);
        WaitingSpans waiting(buffer + marked.bitBytes(roi), roi);
        extent = grow(marked, waiting, seed, roi, reach);
    } else {
        PaintedRegion<T, channels> painted(image, roi.width, band, color);
        WaitingSpans waiting(buffer, roi);
        extent = grow(painted, waiting, seed, roi, reach);
    }
    *region = regionRecord(extent, color);
}

bool inside(NoxiPoint point, NoxiSize roi) {
    return point.x >= 0 && point.x < roi.width && point.y >= 0 && point.y < roi.height;
}

/// Steps are measured with one channel whatever the image has, and those of floats must be even.
template <class T>
NoxStatus checkFill(NoxStatus pointers, NoxiSize roi, int imageStep, NoxiPoint seed) {
    return firstFailure(pointers, checkSize(roi), require(stackBytes(roi) <= INT_MAX, noxStsBadSize),
                        checkStep<T>(imageStep, roi.width),
                        require(sizeof(T) == 1 || imageStep % 2 == 0, noxStsOddStep),
                        require(inside(seed, roi), noxStsOutOfRange));
}

template <class T>
NoxStatus fillOne(T *image, int imageStep, NoxiSize roi, NoxiPoint seed, T newValue, const T *minDelta,
                  const T *maxDelta, int reach, NoxiConnectedRegion *region, Nox8u *buffer) {
    const NoxStatus status = checkFill<T>(checkPointers(image, region, buffer), roi, imageStep, seed);
    if (status == noxStsNoError)
        fill<T, 1>({image, imageStep}, roi, seed, {{newValue}}, minDelta, maxDelta, reach, region, buffer);
    return status;
}

template <class T>
NoxStatus fillThree(T *image, int imageStep, NoxiSize roi, NoxiPoint seed, const T *newValue, int reach,
                    NoxiConnectedRegion *region, Nox8u *buffer) {
    const NoxStatus status = checkFill<T>(checkPointers(image, newValue, region, buffer), roi, imageStep, seed);
    if (status == noxStsNoError)
        fill<T, 3>({image, imageStep}, roi, seed, Color<T, 3>::load(newValue), nullptr, nullptr, reach, region, buffer);
    return status;
}

template <class T>
NoxStatus fillThreeInRange(T *image, int imageStep, NoxiSize roi, NoxiPoint seed, const T *newValue, const T *minDelta,
                           const T *maxDelta, int reach, NoxiConnectedRegion *region, Nox8u *buffer) {
    const NoxStatus status =
        checkFill<T>(checkPointers(image, newValue, minDelta, maxDelta, region, buffer), roi, imageStep, seed);
    if (status != noxStsNoError)
        return status;
    const auto low = Color<T, 3>::load(minDelta), high = Color<T, 3>::load(maxDelta);
    fill<T, 3>({image, imageStep}, roi, seed, Color<T, 3>::load(newValue), low.value, high.value, reach, region,
               buffer);
    return noxStsNoError;
}

} // namespace

NoxStatus noxiFloodFillGetSize(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    if (status == noxStsNoError)
        *size = static_cast<int>(static_cast<unsigned>(stackBytes(roi)));
    return status;
}

// One line per member.
#define NOX_FILL_C1(NAME, TYPE, REACH)                                                                                 \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, TYPE newValue,                            \
                   NoxiConnectedRegion *region, Nox8u *buffer) {                                                       \
        return fillOne<TYPE>(image, imageStep, roi, seed, newValue, nullptr, nullptr, REACH, region, buffer);          \
    }
#define NOX_FILL_C3(NAME, TYPE, REACH)                                                                                 \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, const TYPE *newValue,                     \
                   NoxiConnectedRegion *region, Nox8u *buffer) {                                                       \
        return fillThree<TYPE>(image, imageStep, roi, seed, newValue, REACH, region, buffer);                          \
    }
#define NOX_FILL_RANGE_C1(NAME, TYPE, REACH)                                                                           \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, TYPE newValue, TYPE minDelta,             \
                   TYPE maxDelta, NoxiConnectedRegion *region, Nox8u *buffer) {                                        \
        return fillOne<TYPE>(image, imageStep, roi, seed, newValue, &minDelta, &maxDelta, REACH, region, buffer);      \
    }
#define NOX_FILL_RANGE_C3(NAME, TYPE, REACH)                                                                           \
    NoxStatus NAME(TYPE *image, int imageStep, NoxiSize roi, NoxiPoint seed, const TYPE *newValue,                     \
                   const TYPE *minDelta, const TYPE *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer) {           \
        return fillThreeInRange<TYPE>(image, imageStep, roi, seed, newValue, minDelta, maxDelta, REACH, region,        \
                                      buffer);                                                                         \
    }
NOX_FILL_C1(noxiFloodFill_4Con_8u_C1IR, Nox8u, 0)
NOX_FILL_C1(noxiFloodFill_8Con_8u_C1IR, Nox8u, 1)
NOX_FILL_C1(noxiFloodFill_4Con_32f_C1IR, Nox32f, 0)
NOX_FILL_C1(noxiFloodFill_8Con_32f_C1IR, Nox32f, 1)
NOX_FILL_C3(noxiFloodFill_4Con_8u_C3IR, Nox8u, 0)
NOX_FILL_C3(noxiFloodFill_8Con_8u_C3IR, Nox8u, 1)
NOX_FILL_C3(noxiFloodFill_4Con_32f_C3IR, Nox32f, 0)
NOX_FILL_C3(noxiFloodFill_8Con_32f_C3IR, Nox32f, 1)
NOX_FILL_RANGE_C1(noxiFloodFill_Range4Con_8u_C1IR, Nox8u, 0)
NOX_FILL_RANGE_C1(noxiFloodFill_Range8Con_8u_C1IR, Nox8u, 1)
NOX_FILL_RANGE_C1(noxiFloodFill_Range4Con_32f_C1IR, Nox32f, 0)
NOX_FILL_RANGE_C1(noxiFloodFill_Range8Con_32f_C1IR, Nox32f, 1)
NOX_FILL_RANGE_C3(noxiFloodFill_Range4Con_8u_C3IR, Nox8u, 0)
NOX_FILL_RANGE_C3(noxiFloodFill_Range8Con_8u_C3IR, Nox8u, 1)
NOX_FILL_RANGE_C3(noxiFloodFill_Range4Con_32f_C3IR, Nox32f, 0)
NOX_FILL_RANGE_C3(noxiFloodFill_Range8Con_32f_C3IR, Nox32f, 1)
