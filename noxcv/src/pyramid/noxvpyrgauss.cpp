// Down and up sampling by two with the 5 x 5 binomial kernel (P. Burt and E. Adelson, 1983).
//
// The kernel is separable, and 8-bit sums fit 16 bits whatever the order of the passes, so integers go the way that
// keeps memory accesses in sequence. Floats are summed in the documented order.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "ahead.h"
#include "borders.h"
#include "checks.h"
#include "frame/noxvdatatype.h"
#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/pyramid.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr int bufferAlignment = 32, rowAlignment = 16;
constexpr int downRows = 6, upRows = 3;
/// Asking for rows ahead pays in images so many times as large as those that leave the nearest caches: in others
/// hardware, which follows every row by itself, is fast enough.
constexpr int aheadFrom = 4;

/// Bytes of the row accumulators with room to align them: six rows of the width on the way down, three of twice the
/// width on the way up, 32 bits an element.
constexpr long long downBytes(long long width, int channels) {
    return roundUp<long long>(width * channels * 4, rowAlignment) * downRows + bufferAlignment;
}
constexpr long long upBytes(long long width, int channels) {
    return roundUp<long long>(2 * width * channels * 4, rowAlignment) * upRows + bufferAlignment;
}

NoxStatus gaussBufferSize(int width, int dataType, int channels, int *size, long long (*bytes)(long long, int)) {
    const NoxStatus status = firstFailure(
        checkPointers(size), checkLength(width), require(channels == 1 || channels == 3, noxStsBadChannelCount),
        require(dataType == dataType8u || dataType == dataType8s || dataType == dataType32f, noxStsBadDataType));
    return status != noxStsNoError ? status : storeSize(bytes(width, channels), size);
}

/// Sums of 8-bit elements fit 16 bits, 255 * 256 at most. Signed elements are moved up by 128 on the way in and down
/// on the way out: the weights add up to the divisor, so the rounding is the same.
template <class T>
constexpr unsigned bias = std::is_signed_v<T> ? 0x80 : 0;

template <class T>
NOX_INLINE unsigned biased(T value) {
    return static_cast<Nox8u>(value) ^ bias<T>;
}

/// Half up by a power of two, in the sums' 16 bits.
template <int Shift>
NOX_INLINE Nox16u roundedShift(unsigned sum) {
    return static_cast<Nox16u>(static_cast<Nox16u>(sum + (1U << (Shift - 1))) >> Shift);
}

/// Row accumulators that rotate, so that each source row is filtered once, and what lies behind them.
struct Accumulators {
    RowRing<Nox32f> ring;
    Nox32f *behind;

    Accumulators(WorkBuffer &&work, std::ptrdiff_t elements, int rows)
        : ring(work.take<Nox32f>(static_cast<long long>(padded(elements)) * rows), rows, padded(elements)),
          behind(work.take<Nox32f>(0)) {}
    Accumulators(Nox8u *buffer, std::ptrdiff_t elements, int rows)
        : Accumulators(WorkBuffer(buffer, bufferAlignment), elements, rows) {}

private:
    static std::ptrdiff_t padded(std::ptrdiff_t elements) {
        return roundUp<std::ptrdiff_t>(elements, rowAlignment / sizeof(Nox32f));
    }
};

/// Element 0 of a row of sums with `margin` elements on either side.
Nox16u *takeSums(WorkBuffer &work, std::ptrdiff_t count, int margin) {
    return work.take<Nox16u>(count + 2LL * margin) + margin;
}

// ---- integers, down: five source rows are combined first, then the columns

/// The five rows around source row y, reflected at the image's edges.
template <class T>
struct FiveRows {
    const T *row[5];

    FiveRows(Rows<const T> src, int y, int height) {
        for (int k = 0; k < 5; ++k)
            row[k] = src[borderIndex(y - 2 + k, height, noxBorderMirror)];
    }
};

NOX_INLINE Nox16u downSum(unsigned a, unsigned b, unsigned c, unsigned d, unsigned e) {
    return static_cast<Nox16u>(a + e + 4 * (b + d) + 6 * c);
}

/// The sums of the columns of three channels.
template <class T>
NOX_TIERS void combineRows3(const FiveRows<T> &rows, Nox16u *sums, int width) {
    const T *a = rows.row[0], *b = rows.row[1], *c = rows.row[2], *d = rows.row[3], *e = rows.row[4];
    for (int i = 0; i < width * 3; ++i)
        sums[i] = downSum(biased(a[i]), biased(b[i]), biased(c[i]), biased(d[i]), biased(e[i]));
}

/// Two pixels on either side of a row of sums, reflected.
void reflectColumns3(Nox16u *sums, int width) {
    for (const int x : {-2, -1, width, width + 1})
        std::copy_n(sums + borderIndex(x, width, noxBorderMirror) * 3, 3, sums + x * 3);
}

/// The row filter at every other pixel of three channels, by way of the filter at every pixel: sequential accesses pay
/// for the pixels thrown away.
template <class T>
NOX_TIERS void decimate3(const Nox16u *sums, Nox16u *filtered, T *dst, int width) {
    for (int i = 0; i < width * 3; ++i) {
        const unsigned sum = sums[i - 6] + sums[i + 6] + 4U * (sums[i - 3] + sums[i + 3]) + 6U * sums[i];
        filtered[i] = roundedShift<8>(sum);
    }
    for (int x = 0; x < (width + 1) / 2; ++x)
        for (int c = 0; c < 3; ++c)
            dst[x * 3 + c] = static_cast<T>(filtered[6 * x + c] ^ bias<T>);
}

using BytePair [[gnu::aligned(1), gnu::may_alias]] = Nox16u;
template <class T>
constexpr unsigned bothBiases = bias<T> | bias<T> << 8;

/// The sums of the columns of one channel, those of even and of odd columns apart; two neighbours are read as a pair.
template <class T>
NOX_TIERS void combineRows1(const FiveRows<T> &rows, Nox16u *__restrict even, Nox16u *__restrict odd, int width) {
    const auto pairs = [&](int k) NOX_INLINE_LAMBDA { return reinterpret_cast<const BytePair *>(rows.row[k]); };
    const BytePair *a = pairs(0), *b = pairs(1), *c = pairs(2), *d = pairs(3), *e = pairs(4);
    constexpr unsigned biases = bothBiases<T>;
    for (int x = 0; x < width / 2; ++x) {
        const unsigned p = a[x] ^ biases, q = b[x] ^ biases, r = c[x] ^ biases, s = d[x] ^ biases, t = e[x] ^ biases;
        even[x] = downSum(p & 0xff, q & 0xff, r & 0xff, s & 0xff, t & 0xff);
        odd[x] = downSum(p >> 8, q >> 8, r >> 8, s >> 8, t >> 8);
    }
    if (width % 2 != 0) {
        const auto last = [&](int k) NOX_INLINE_LAMBDA { return biased(rows.row[k][width - 1]); };
        even[width / 2] = downSum(last(0), last(1), last(2), last(3), last(4));
    }
}

/// Two columns on either side, reflected.
void reflectColumns1(Nox16u *even, Nox16u *odd, int width) {
    for (const int x : {-2, -1, width, width + 1}) {
        const int from = borderIndex(x, width, noxBorderMirror);
        (x % 2 != 0 ? odd : even)[x >> 1] = (from % 2 != 0 ? odd : even)[from >> 1];
    }
}

template <class T>
NOX_TIERS void decimate1(const Nox16u *even, const Nox16u *odd, T *__restrict dst, int width) {
    for (int x = 0; x < (width + 1) / 2; ++x) {
        const unsigned sum = even[x - 1] + 4U * (odd[x - 1] + odd[x]) + 6U * even[x] + even[x + 1];
        dst[x] = static_cast<T>(roundedShift<8>(sum) ^ bias<T>);
    }
}

template <class T, int Channels>
requires std::is_integral_v<T>
void pyrDown(Rows<const T> src, Rows<T> dst, NoxiSize roi, Nox8u *buffer) {
    constexpr int margin = 2 * Channels;
    WorkBuffer work(buffer, bufferAlignment);
    Nox16u *const sums = takeSums(work, Channels == 1 ? roi.width / 2 : roi.width * 3, margin);
    Nox16u *const behind = Channels == 1 ? takeSums(work, roi.width / 2, margin) : work.take<Nox16u>(roi.width * 3LL);
    for (int y = 0; y < (roi.height + 1) / 2; ++y) {
        const FiveRows<T> rows(src, 2 * y, roi.height);
        if constexpr (Channels == 1) {
            combineRows1(rows, sums, behind, roi.width);
            reflectColumns1(sums, behind, roi.width);
            decimate1(sums, behind, dst[y], roi.width);
        } else {
            combineRows3(rows, sums, roi.width);
            reflectColumns3(sums, roi.width);
            decimate3(sums, behind, dst[y], roi.width);
        }
    }
}

// ---- integers, up: the rows of both kinds of places are combined first, then the columns

template <class T>
NOX_TIERS void combineUp(const T *above, const T *here, const T *below, Nox16u *__restrict first,
                         Nox16u *__restrict second, int count) {
    for (int i = 0; i < count; ++i) {
        const unsigned outer = biased(below[i]), middle = biased(here[i]);
        first[i] = static_cast<Nox16u>(biased(above[i]) + 6 * middle + outer);
        second[i] = static_cast<Nox16u>(middle + outer); // a quarter of its sum
    }
}

/// A pixel on either side of a row of sums: reflected on the left, repeated on the right.
template <int Channels>
void extendColumns(Nox16u *sums, int width) {
    std::copy_n(sums + std::min(1, width - 1) * Channels, Channels, sums - Channels);
    std::copy_n(sums + (width - 1) * Channels, Channels, sums + width * Channels);
}

/// Results at even and at odd places, from sums of a row with a scale of 2^Shift / 8.
template <int Shift>
NOX_INLINE unsigned evenUp(unsigned before, unsigned here, unsigned after) {
    return roundedShift<Shift>(before + 6U * here + after);
}
template <int Shift>
NOX_INLINE unsigned oddUp(unsigned here, unsigned after) {
    return roundedShift<Shift - 2>(here + after);
}

/// A destination row of one channel: the pixels of an even and an odd place are stored as one 16-bit value.
template <int Shift, class T>
NOX_TIERS void spreadRow1(const Nox16u *sums, T *dst, int width) {
    BytePair *const __restrict pairs = reinterpret_cast<BytePair *>(dst); // auto would forget its alignment
    for (int x = 0; x < width; ++x) {
        const unsigned even = evenUp<Shift>(sums[x - 1], sums[x], sums[x + 1]),
                       odd = oddUp<Shift>(sums[x], sums[x + 1]);
        pairs[x] = static_cast<Nox16u>((even | odd << 8) ^ bothBiases<T>);
    }
}

/// A destination row of three channels by way of its two planes. Four bytes carry three; the next pixel overwrites the
/// fourth.
template <int Shift, class T>
NOX_TIERS void spreadRow3(const Nox16u *sums, T *__restrict even, T *__restrict odd, T *__restrict dst, int width) {
    for (int i = 0; i < width * 3; ++i) {
        even[i] = static_cast<T>(evenUp<Shift>(sums[i - 3], sums[i], sums[i + 3]) ^ bias<T>);
        odd[i] = static_cast<T>(oddUp<Shift>(sums[i], sums[i + 3]) ^ bias<T>);
    }
    for (int x = 0; x < width - 1; ++x) {
        std::memcpy(dst + 6 * x, even + 3 * x, 4);
        std::memcpy(dst + 6 * x + 3, odd + 3 * x, 4);
    }
    std::memcpy(dst + 6 * (width - 1), even + 3 * (width - 1), 3);
    std::memcpy(dst + 6 * (width - 1) + 3, odd + 3 * (width - 1), 3);
}

template <int Shift, int Channels, class T>
void spreadRow(Nox16u *sums, T *scratch, T *dst, int width, const Ahead &ahead, int asked) {
    extendColumns<Channels>(sums, width);
    if constexpr (Channels == 1)
        inPieces<512>(width, ahead, asked, [&](int x, int n) { spreadRow1<Shift>(sums + x, dst + 2 * x, n); });
    else
        spreadRow3<Shift>(sums, scratch, scratch + static_cast<std::ptrdiff_t>(width) * 3, dst, width);
}

/// Each pass asks for the row that the next one begins with. (Three channels take so long that memory keeps up.)
template <class T, int Channels>
requires std::is_integral_v<T>
void pyrUp(Rows<const T> src, Rows<T> dst, NoxiSize roi, Nox8u *buffer) {
    const int count = roi.width * Channels;
    WorkBuffer work(buffer, bufferAlignment);
    Nox16u *const first = takeSums(work, count, Channels);
    Nox16u *const second = takeSums(work, count, Channels);
    T *const scratch = work.take<T>(0);
    const bool asks = Channels == 1 && leavesCaches(5 * area(roi), aheadFrom);
    const auto ahead = [asks](const T *row) { return asks ? Ahead(row) : Ahead(); };
    for (int y = 0; y < roi.height; ++y) {
        const T *above = src[y == 0 ? std::min(1, roi.height - 1) : y - 1], *here = src[y],
                *below = src[std::min(y + 1, roi.height - 1)];
        T *const even = dst[2 * y], *const odd = dst[2 * y + 1];
        inPieces<512>(count, ahead(even), 2 * count,
                      [&](int x, int n) { combineUp(above + x, here + x, below + x, first + x, second + x, n); });
        spreadRow<6, Channels>(first, scratch, even, roi.width, ahead(odd), 2 * count);
        spreadRow<4, Channels>(second, scratch, odd, roi.width, ahead(src[std::min(y + 2, roi.height - 1)]), count);
    }
}

// ---- floats

using Four [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = Nox32f;

NOX_INLINE Four load(const Element<Nox32f> *p) { return *reinterpret_cast<const Four *>(p); }
NOX_INLINE void store(Element<Nox32f> *p, Four value) { *reinterpret_cast<Four *>(p) = value; }

constexpr Nox32f downScale = 0.00390625F, upScale = 0.015625F;

/// The row filter inside an image, from five samples; of one value or of a vector of channels.
template <class Value>
NOX_INLINE Value filterInside(Value a, Value b, Value c, Value d, Value e) {
    return a + 4.0F * (b + d) + 6.0F * c + e;
}

/// The filter at position 2i of a line of n samples, in the forms that its ends have. `sample(k)` takes any position.
template <class Sample>
NOX_INLINE Nox32f filterAnywhere(const Sample &sample, int i, int n) {
    const int x = 2 * i;
    if (i == 0)
        return 6.0F * sample(0) + 8.0F * sample(1) + 2.0F * sample(2);
    if (x == n - 1)
        return 6.0F * sample(x) + 8.0F * sample(x - 1) + 2.0F * sample(x - 2);
    if (x == n - 2)
        return sample(x - 2) + 4.0F * (sample(x - 1) + sample(x + 1)) + 7.0F * sample(x);
    return filterInside(sample(x - 2), sample(x - 1), sample(x), sample(x + 1), sample(x + 2));
}

/// The filter along a line of `n` samples that lie `stride` bytes apart.
NOX_INLINE Nox32f filterLine(const Nox32f *line, std::ptrdiff_t stride, int i, int n) {
    const Rows<const Nox32f> samples{line, stride};
    return filterAnywhere([&](int k) { return samples[borderIndex(k, n, noxBorderMirror)][0]; }, i, n);
}

/// Output pixels of a row that need no reflection: 1 to this.
NOX_INLINE int innerEnd(int width) { return (width - 1) / 2; }

/// Inner pixels of one channel. The samples are first parted into even and odd ones (`parted` has room for a row), so
/// that the filter reads in sequence.
NOX_TIERS void filterInner1(const Element<Nox32f> *src, Nox32f *row, Nox32f *parted, int width) {
    const int half = width / 2, end = innerEnd(width);
    if (end <= 1)
        return; // narrow images leave no room for the parted row, and have no inner pixels
    Nox32f *const even = parted, *const odd = parted + half + 1;
    for (int x = 0; x < half; ++x) {
        even[x] = src[2 * x];
        odd[x] = src[2 * x + 1];
    }
    if (width % 2 != 0)
        even[half] = src[width - 1];
    for (int x = 1; x < end; ++x)
        row[x] = filterInside(even[x - 1], odd[x - 1], even[x], odd[x], even[x + 1]);
}

/// Some pixels of three channels. Four lanes carry three channels; the next pixel overwrites the fourth.
NOX_TIERS void filterPixels3(const Element<Nox32f> *src, Nox32f *row, int count) {
    for (int x = 0; x < count; ++x) {
        const Element<Nox32f> *s = src + 6 * x;
        store(row + 3 * x, filterInside(load(s - 6), load(s - 3), load(s), load(s + 3), load(s + 6)));
    }
}

/// Inner pixels of three channels. The last one goes by single values: its loads could reach one value behind the row.
void filterInner3(const Element<Nox32f> *src, Nox32f *row, int width, const Ahead &ahead) {
    const int end = innerEnd(width);
    inPieces<64>(std::max(end - 2, 0), ahead, 3 * width,
                 [&](int x, int n) { filterPixels3(src + 6 * (x + 1), row + 3 * (x + 1), n); });
    for (int x = std::max(end - 1, 1); x < end; ++x)
        for (int c = 0; c < 3; ++c) {
            const Element<Nox32f> *s = src + 6 * x + c;
            row[3 * x + c] = filterInside(s[-6], s[-3], s[0], s[3], s[6]);
        }
}

template <int Channels>
void filterRow(const Nox32f *src, Nox32f *row, Nox32f *parted, int width, const Ahead &ahead) {
    constexpr std::ptrdiff_t pixelBytes = Channels * sizeof(Nox32f);
    if constexpr (Channels == 1)
        filterInner1(src, row, parted, width);
    else
        filterInner3(src, row, width, ahead);
    const auto endPixel = [&](int x) {
        for (int c = 0; c < Channels; ++c)
            row[x * Channels + c] = filterLine(src + c, pixelBytes, x, width);
    };
    endPixel(0);
    for (int x = std::max(innerEnd(width), 1); x < (width + 1) / 2; ++x)
        endPixel(x);
}

NOX_TIERS void combineDown(const Nox32f *const rows[5], Element<Nox32f> *dst, int count) {
    const Nox32f *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3], *e = rows[4];
    for (int i = 0; i < count; ++i)
        dst[i] = (6.0F * c[i] + 4.0F * (b[i] + d[i]) + a[i] + e[i]) * downScale;
}

/// One or two rows: half the sum of the two filtered rows, the same row twice where there is one.
template <int Channels>
void ownPyrDownG5x5_H2_32f(Rows<const Nox32f> src, Element<Nox32f> *dst, NoxiSize roi) {
    const Nox32f *first = src[0], *second = src[roi.height - 1];
    constexpr std::ptrdiff_t pixelBytes = Channels * sizeof(Nox32f);
    for (int x = 0; x < (roi.width + 1) / 2; ++x)
        for (int c = 0; c < Channels; ++c)
            dst[x * Channels + c] =
                (filterLine(first + c, pixelBytes, x, roi.width) + filterLine(second + c, pixelBytes, x, roi.width)) *
                8.0F * downScale;
}

/// One or two columns: the same with rows and columns exchanged.
template <int Channels>
void ownPyrDownG5x5_W2_32f(Rows<const Nox32f> src, Rows<Nox32f> dst, NoxiSize roi) {
    for (int y = 0; y < (roi.height + 1) / 2; ++y)
        for (int c = 0; c < Channels; ++c)
            dst[y][c] = (filterLine(src[0] + c, src.step, y, roi.height) +
                         filterLine(src[0] + (roi.width - 1) * Channels + c, src.step, y, roi.height)) *
                        8.0F * downScale;
}

template <class T, int Channels>
requires std::is_floating_point_v<T>
void pyrDown(Rows<const T> src, Rows<T> dst, NoxiSize roi, Nox8u *buffer) {
    if (roi.height < 3)
        return ownPyrDownG5x5_H2_32f<Channels>(src, dst[0], roi);
    if (roi.width <= 2)
        return ownPyrDownG5x5_W2_32f<Channels>(src, dst, roi);
    const int count = (roi.width + 1) / 2 * Channels;
    const Accumulators sums(buffer, count, downRows);
    const RowRing<Nox32f> ring = sums.ring;
    // Both passes ask for the row after theirs: each would begin with a row from memory. (One channel gains nothing.)
    const bool asks = Channels == 3 && leavesCaches(area(roi) * Channels * 5, aheadFrom);
    const int lastRow = roi.height - 1, lastResult = (roi.height + 1) / 2 - 1;
    const auto ahead = [asks](const Element<Nox32f> *row) { return asks ? Ahead(row) : Ahead(); };
    int filtered = 0;
    for (int y = 0; y <= lastResult; ++y) {
        for (; filtered < std::min(2 * y + 3, roi.height); ++filtered)
            filterRow<Channels>(src[filtered], ring[filtered], sums.behind, roi.width,
                                ahead(src[std::min(filtered + 1, lastRow)]));
        const Nox32f *rows[5];
        for (int k = 0; k < 5; ++k)
            rows[k] = ring[borderIndex(2 * y - 2 + k, roi.height, noxBorderMirror)];
        Element<Nox32f> *const result = dst[y];
        inPieces<512>(count, ahead(dst[std::min(y + 1, lastResult)]), count, [&](int x, int n) {
            const Nox32f *const from[] = {rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x, rows[4] + x};
            combineDown(from, result + x, n);
        });
    }
}

/// A filtered row: `width * channels` sums at even places, then as many at odd places.
struct Places {
    Nox32f *even, *odd;
};

template <int Channels>
NOX_TIERS void spreadRow(const Element<Nox32f> *src, Places row, int width) {
    const int last = (width - 1) * Channels;
    for (int c = 0; c < Channels; ++c) {
        const auto s = [ src, c ](int x) __attribute__((always_inline)) { return src[x * Channels + c]; };
        if (width == 1) {
            row.even[c] = row.odd[c] = 8 * s(0);
            continue;
        }
        row.even[c] = 2 * (3 * s(0) + s(1));
        row.odd[c] = 4 * (s(0) + s(1));
        row.even[last + c] = s(width - 2) + 7 * s(width - 1);
        row.odd[last + c] = 8 * s(width - 1);
    }
    for (int i = Channels; i < last; ++i) {
        row.even[i] = src[i - Channels] + 6 * src[i] + src[i + Channels];
        row.odd[i] = 4 * (src[i] + src[i + Channels]);
    }
}

/// Three filtered rows around a source row; in an image of one row all are the same.
struct ThreeRows {
    Places above, here, below;
    bool single;
};

template <class Value>
NOX_INLINE Value firstUp(Value above, Value here, Value below) {
    return (above + 6.0F * here + below) * upScale;
}
template <class Value>
NOX_INLINE Value secondUp(Value here, Value below) {
    return 4.0F * (here + below) * upScale;
}

/// The two destination rows of a source row, of one plane; pixels of the plane go to every other pixel.
template <int Channels>
NOX_INLINE void storePlane(const Nox32f *above, const Nox32f *here, const Nox32f *below, Element<Nox32f> *first,
                           Element<Nox32f> *second, int begin, int end) {
    for (int x = begin; x < end; ++x)
        for (int c = 0; c < Channels; ++c) {
            const int i = x * Channels + c, to = 2 * x * Channels + c;
            first[to] = firstUp(above[i], here[i], below[i]);
            second[to] = secondUp(here[i], below[i]);
        }
}

template <int Channels>
NOX_TIERS void storeUp(const ThreeRows &rows, Element<Nox32f> *first, Element<Nox32f> *second, int width) {
    const Places above = rows.above, here = rows.here, below = rows.below;
    if (rows.single) {
        // One row: both destination rows are the filtered row itself.
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < Channels; ++c) {
                Element<Nox32f> *to = first + 2 * x * Channels + c;
                to[0] = 8.0F * here.even[x * Channels + c] * upScale;
                to[Channels] = 8.0F * here.odd[x * Channels + c] * upScale;
            }
        std::memcpy(second, first, std::size_t(width) * 2 * Channels * sizeof(Nox32f));
        return;
    }
    if constexpr (Channels == 1) {
        for (int x = 0; x < width; ++x) {
            first[2 * x] = firstUp(above.even[x], here.even[x], below.even[x]);
            first[2 * x + 1] = firstUp(above.odd[x], here.odd[x], below.odd[x]);
        }
        for (int x = 0; x < width; ++x) {
            second[2 * x] = secondUp(here.even[x], below.even[x]);
            second[2 * x + 1] = secondUp(here.odd[x], below.odd[x]);
        }
    } else {
        // Four lanes carry three channels; the next pixel overwrites the fourth.
        for (int x = 0; x < width - 1; ++x) {
            const int i = 3 * x, to = 6 * x;
            const Four evenHere = load(here.even + i), evenBelow = load(below.even + i);
            const Four oddHere = load(here.odd + i), oddBelow = load(below.odd + i);
            store(first + to, firstUp(load(above.even + i), evenHere, evenBelow));
            store(first + to + 3, firstUp(load(above.odd + i), oddHere, oddBelow));
            store(second + to, secondUp(evenHere, evenBelow));
            store(second + to + 3, secondUp(oddHere, oddBelow));
        }
        storePlane<3>(above.even, here.even, below.even, first, second, width - 1, width);
        storePlane<3>(above.odd, here.odd, below.odd, first + 3, second + 3, width - 1, width);
    }
}

/// Filtered rows rotate through three accumulators.
template <class T, int Channels>
requires std::is_floating_point_v<T>
void pyrUp(Rows<const T> src, Rows<T> dst, NoxiSize roi, Nox8u *buffer) {
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(roi.width) * Channels;
    const RowRing<Nox32f> ring = Accumulators(buffer, 2 * count, upRows).ring;
    const auto places = [&](int y) { return Places{ring[y], ring[y] + count}; };
    int filtered = 0;
    for (int y = 0; y < roi.height; ++y) {
        for (; filtered < std::min(y + 2, roi.height); ++filtered)
            spreadRow<Channels>(src[filtered], places(filtered), roi.width);
        const int above = y == 0 ? std::min(1, roi.height - 1) : y - 1, below = std::min(y + 1, roi.height - 1);
        storeUp<Channels>({places(above), places(y), places(below), roi.height == 1}, dst[2 * y], dst[2 * y + 1],
                          roi.width);
    }
}

// ---- entries

template <class T>
NoxStatus checkPyramid(const T *src, int srcStep, const T *dst, int dstStep, NoxiSize roi, const Nox8u *buffer,
                       int channels, long long dstWidth, long long bufferBytes) {
    return firstFailure(checkPointers(src, dst, buffer), checkSize(roi),
                        checkStep<T>(srcStep, static_cast<long long>(roi.width) * channels),
                        checkStep<T>(dstStep, dstWidth * channels), checkEvenSteps<T>(srcStep, dstStep),
                        checkBufferBytes(bufferBytes));
}

template <class T, int Channels>
NoxStatus down(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, Nox8u *buffer) {
    const NoxStatus status = checkPyramid(src, srcStep, dst, dstStep, roi, buffer, Channels,
                                          (static_cast<long long>(roi.width) + 1) / 2, downBytes(roi.width, Channels));
    if (status == noxStsNoError)
        pyrDown<T, Channels>({src, srcStep}, {dst, dstStep}, roi, buffer);
    return status;
}

template <class T, int Channels>
NoxStatus up(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, Nox8u *buffer) {
    const NoxStatus status =
        checkPyramid(src, srcStep, dst, dstStep, roi, buffer, Channels, 2LL * roi.width, upBytes(roi.width, Channels));
    if (status == noxStsNoError)
        pyrUp<T, Channels>({src, srcStep}, {dst, dstStep}, roi, buffer);
    return status;
}

} // namespace

#define NOX_PYR_GAUSS(DOWN_FUNCTION, UP_FUNCTION, TYPE, CHANNELS)                                                      \
    NoxStatus DOWN_FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, Nox8u *buffer) {       \
        return down<TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, buffer);                                          \
    }                                                                                                                  \
    NoxStatus UP_FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, Nox8u *buffer) {         \
        return up<TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, buffer);                                            \
    }
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_8u_C1R, noxiPyrUp_Gauss5x5_8u_C1R, Nox8u, 1)
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_8u_C3R, noxiPyrUp_Gauss5x5_8u_C3R, Nox8u, 3)
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_8s_C1R, noxiPyrUp_Gauss5x5_8s_C1R, Nox8s, 1)
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_8s_C3R, noxiPyrUp_Gauss5x5_8s_C3R, Nox8s, 3)
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_32f_C1R, noxiPyrUp_Gauss5x5_32f_C1R, Nox32f, 1)
NOX_PYR_GAUSS(noxiPyrDown_Gauss5x5_32f_C3R, noxiPyrUp_Gauss5x5_32f_C3R, Nox32f, 3)

NoxStatus noxiPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize) {
    return gaussBufferSize(width, dataType, channels, bufferSize, downBytes);
}

NoxStatus noxiPyrUpGetBufSize_Gauss5x5(int width, int dataType, int channels, int *bufferSize) {
    return gaussBufferSize(width, dataType, channels, bufferSize, upBytes);
}
