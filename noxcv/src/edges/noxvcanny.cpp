// Canny's edge detector on given derivatives (J. Canny, 1986).
//
// One pass over the image: the magnitudes of four rows are held in a ring; each row is thinned as soon as the row
// below it has its magnitudes. Thinned pixels go to a byte map, those above the high threshold to a stack as well, from
// which the edges then grow.
#include "noxvcanny.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "checks.h"
#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/edges.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr double tangent67 = 2.414213562373095, tangent22 = 0.41421356237309503;
/// A map byte: the top bit tells a survivor, the next one a survivor above the high threshold.
constexpr Nox8u candidate = 128, strong = 64;
constexpr Nox8u edge = 255;
/// Image sides from which pixel positions no longer fit 16 bits together with the border.
constexpr int wideSide = 65533;

template <class T>
using Magnitude = std::conditional_t<std::is_same_v<T, Nox16s>, Nox32s, Nox32f>;

/// The L1 magnitudes of a row; those that are not above the lower threshold are 0.
template <class T>
NOX_INLINE void magnitudeRow(const Element<T> *dx, const Element<T> *dy, Magnitude<T> *magnitude, int width,
                             Magnitude<T> low) {
    for (int x = 0; x < width; ++x) {
        const Magnitude<T> sum = absolute<Magnitude<T>>(dx[x]) + absolute<Magnitude<T>>(dy[x]);
        magnitude[x] = sum > low ? sum : Magnitude<T>(0);
    }
}

NOX_INLINE bool signBit(Nox16s value) { return value < 0; }
NOX_INLINE bool signBit(Nox32f value) { return std::bit_cast<std::int32_t>(value) < 0; }

/// Tangent products in double precision, rounded to single: the same as from any wider format.
struct ExactProduct {
    NOX_INLINE static Nox32f of(Nox32f value, double tangent) {
        return static_cast<Nox32f>(static_cast<double>(value) * tangent);
    }
};
/// Single-precision products compare with every integer as the exact ones do, up to this integer factor.
struct NarrowProduct {
    static constexpr int limit = 3362;
    NOX_INLINE static Nox32f of(Nox32f value, double tangent) { return value * static_cast<Nox32f>(tangent); }
};

/// Pixels that are thinned together, if one of them has a magnitude at all.
constexpr int runLength = 64;

/// Non-maximum suppression of up to runLength pixels: a pixel survives when its magnitude is above the neighbour before
/// it along the gradient and above the one after it, or equal to that in the two axial directions. The codes are formed
/// as wide as the magnitudes and narrowed in a loop of their own: few registers hold one vector of everything.
template <class Product, class T, class M>
NOX_INLINE void thinRun(const Element<T> *dx, const Element<T> *dy, const M *above, const M *row, const M *below,
                        Nox8u *map, int count, Nox32f high) {
    Nox32s codes[runLength];
    for (int x = 0; x < count; ++x) {
        const Nox32f ax = absolute<Nox32f>(dx[x]), ay = absolute<Nox32f>(dy[x]);
        const bool vertical = ay > Product::of(ax, tangent67);
        const bool diagonal = ay >= Product::of(ax, tangent22);
        const bool rising = signBit(dx[x]) != signBit(dy[x]);
        const M aboveLeft = above[x - 1], aboveRight = above[x + 1], up = above[x];
        const M belowLeft = below[x - 1], belowRight = below[x + 1], down = below[x];
        const M left = row[x - 1], right = row[x + 1], m = row[x];
        const M diagonalBefore = rising ? aboveRight : aboveLeft, diagonalAfter = rising ? belowLeft : belowRight;
        const M before = vertical ? up : diagonal ? diagonalBefore : left;
        const M after = vertical ? down : diagonal ? diagonalAfter : right;
        const bool axial = vertical | !diagonal;
        const bool survives = (m > before) & ((m > after) | (axial & (m == after)));
        const Nox32s code = static_cast<Nox32f>(m) > high ? candidate | strong : candidate;
        codes[x] = survives ? code : 0;
    }
    for (int x = 0; x < count; ++x)
        map[x] = static_cast<Nox8u>(codes[x]);
}

NOX_TIERS void magnitudes(const Nox16s *dx, const Nox16s *dy, Nox32s *row, int width, Nox32s low) {
    magnitudeRow<Nox16s>(dx, dy, row, width, low);
}
NOX_TIERS void magnitudes(const Nox32f *dx, const Nox32f *dy, Nox32f *row, int width, Nox32f low) {
    magnitudeRow<Nox32f>(dx, dy, row, width, low);
}

/// All bits of the magnitudes of a run: they are not negative, so 0 tells that none is above the lower threshold, and
/// the largest is no larger than this.
template <class M>
NOX_INLINE std::uint32_t magnitudeBits(const M *row, int count) {
    std::uint32_t bits = 0;
    for (int x = 0; x < count; ++x)
        bits |= std::bit_cast<std::uint32_t>(row[x]);
    return bits;
}

template <class T, class M>
NOX_INLINE void thinRowRuns(const T *dx, const T *dy, const M *above, const M *row, const M *below, Nox8u *map,
                            int width, Nox32f high) {
    int x = 0;
    for (; x + runLength <= width; x += runLength) {
        const std::uint32_t bits = magnitudeBits(row + x, runLength);
        if (bits == 0)
            std::memset(map + x, 0, runLength);
        else if (std::is_integral_v<M> && bits <= NarrowProduct::limit)
            thinRun<NarrowProduct, T>(dx + x, dy + x, above + x, row + x, below + x, map + x, runLength, high);
        else
            thinRun<ExactProduct, T>(dx + x, dy + x, above + x, row + x, below + x, map + x, runLength, high);
    }
    thinRun<ExactProduct, T>(dx + x, dy + x, above + x, row + x, below + x, map + x, width - x, high);
}
NOX_TIERS void thinRow(const Nox16s *dx, const Nox16s *dy, const Nox32s *above, const Nox32s *row, const Nox32s *below,
                       Nox8u *map, int width, Nox32f high) {
    thinRowRuns(dx, dy, above, row, below, map, width, high);
}
NOX_TIERS void thinRow(const Nox32f *dx, const Nox32f *dy, const Nox32f *above, const Nox32f *row, const Nox32f *below,
                       Nox8u *map, int width, Nox32f high) {
    thinRowRuns(dx, dy, above, row, below, map, width, high);
}

/// The stack of (row, column) pairs.
template <class Entry>
struct Stack {
    Element<Entry> *top;

    void push(int y, int x) {
        top[0] = static_cast<Entry>(y);
        top[1] = static_cast<Entry>(x);
        top += 2;
    }
};

/// Survivors of row y above the high threshold are edges and go on the stack. They are few: one bit of 16 map bytes at
/// a time tells where they are.
template <class Entry>
void pushStrong(const Nox8u *map, int width, int y, Nox8u *dst, Stack<Entry> &stack) {
    const auto pushOne = [&](int x) {
        stack.push(y, x);
        dst[x] = edge;
    };
    constexpr int group = 16;
    int x = 0;
    for (; x + group <= width; x += group) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(map + x));
        const __m128i strongOnTop = _mm_slli_epi16(bytes, 1);
        for (unsigned bits = _mm_movemask_epi8(strongOnTop); bits != 0; bits &= bits - 1)
            pushOne(x + std::countr_zero(bits));
    }
    for (; x < width; ++x)
        if ((map[x] & strong) != 0)
            pushOne(x);
}

/// The parts of the caller's buffer.
template <class M>
struct Workspace {
    static constexpr int ringRows = 4;

    Nox8u *map;
    M *ring;
    void *stack;
    int pitch;

    Workspace(WorkBuffer &&buffer, NoxiSize roi) : pitch(roi.width + 2) {
        const std::size_t mapBytes = std::size_t(roi.height + 2) * pitch;
        map = buffer.take<Nox8u>(static_cast<long long>(mapBytes));
        // Element 1 of the first ring row, pixel 0, lies 16 bytes behind a 32-byte boundary.
        buffer.aligned(32).take<Nox8u>(16 - static_cast<int>(sizeof(M)));
        ring = buffer.take<M>(static_cast<long long>(ringRows) * pitch);
        stack = buffer.take<void *>(0);
        // Thinning writes the inner map; its border of one pixel and the ring's columns outside the image stay zero.
        std::memset(map, 0, pitch);
        std::memset(map + mapBytes - pitch, 0, pitch);
        for (int y = 0; y < roi.height; ++y)
            mapRow(y)[-1] = mapRow(y)[roi.width] = 0;
        std::memset(ring, 0, std::size_t(ringRows) * pitch * sizeof(M));
    }
    Nox8u *mapRow(int y) const { return map + std::size_t(y + 1) * pitch + 1; }
    /// Pixel 0 of the ring row that holds image row y; row -1 is ring row 0.
    M *ringRow(int y) const { return RowRing<M>(ring, ringRows, pitch, 1)[y + 1]; }
};

/// Pops the last pair and pushes its unmarked candidate neighbours, until the stack is empty. The map's border of zero
/// keeps the walk inside the image.
template <class Entry>
void grow(const Nox8u *map, Element<Entry> *stack, int count, int width, Nox8u *dst, int dstStep) {
    const Rows<Nox8u> edges{dst, dstStep};
    const std::ptrdiff_t pitch = width + 2;
    Stack<Entry> pending{stack + std::ptrdiff_t(count) * 2};
    while (pending.top != stack) {
        pending.top -= 2;
        const int y = pending.top[0], x = pending.top[1];
        for (int ny = y - 1; ny <= y + 1; ++ny) {
            const Nox8u *near = map + (ny + 1) * pitch + x;
            if ((near[0] | near[1] | near[2]) < candidate)
                continue;
            Nox8u *edgeRow = edges[ny];
            for (int i = 0; i < 3; ++i)
                if (near[i] >= candidate && edgeRow[x - 1 + i] == 0) {
                    edgeRow[x - 1 + i] = edge;
                    pending.push(ny, x - 1 + i);
                }
        }
    }
}

NOX_INLINE void hysteresis(const Nox8u *map, Nox16u *stack, int count, NoxiSize roi, Nox8u *dst, int dstStep) {
    ownHysteresisThresholding_16u(map, stack, count, roi.width, roi.height, dst, dstStep);
}
NOX_INLINE void hysteresis(const Nox8u *map, Nox32s *stack, int count, NoxiSize roi, Nox8u *dst, int dstStep) {
    ownHysteresisThresholding_32s(map, stack, count, roi.width, roi.height, dst, dstStep);
}

template <class T, class Entry>
void detect(Rows<const T> dx, Rows<const T> dy, Nox8u *dst, int dstStep, NoxiSize roi, Magnitude<T> low, Nox32f high,
            Nox8u *buffer) {
    using M = Magnitude<T>;
    const Workspace<M> work(WorkBuffer(buffer, 32), roi);
    const Rows<Nox8u> edges{dst, dstStep};
    auto *const bottom = static_cast<Entry *>(work.stack);
    Stack<Entry> stack{bottom};
    magnitudes(dx[0], dy[0], work.ringRow(0), roi.width, low);
    for (int y = 0; y < roi.height; ++y) {
        if (y + 1 < roi.height)
            magnitudes(dx[y + 1], dy[y + 1], work.ringRow(y + 1), roi.width, low);
        else
            std::fill_n(work.ringRow(y + 1), roi.width, M(0));
        thinRow(dx[y], dy[y], work.ringRow(y - 1), work.ringRow(y), work.ringRow(y + 1), work.mapRow(y), roi.width,
                high);
        std::memset(edges[y], 0, dstStep);
        pushStrong(work.mapRow(y), roi.width, y, edges[y], stack);
    }
    hysteresis(work.map, bottom, static_cast<int>((stack.top - bottom) / 2), roi, dst, dstStep);
}

bool isWide(NoxiSize roi) { return roi.width >= wideSide || roi.height >= wideSide; }

/// Bytes of the buffer, modulo 2^64.
std::uint64_t bufferBytes(NoxiSize roi) {
    const std::uint64_t w = roi.width, h = roi.height, base = (4 * w + 24) * 4 + 64;
    return isWide(roi) ? 9 * (h + 2) * (w + 2) + base : (5 * h + 10) * (w + 2) + base;
}

NoxStatus checkBuffer(NoxiSize roi) {
    return area(roi) > INT_MAX ? noxStsBadSize : checkBufferBytes(static_cast<long long>(bufferBytes(roi)));
}

/// The lower threshold in the magnitude's type: truncated for integers, whose sums are at most 65536.
template <class M>
M lowerThreshold(Nox32f low) {
    if constexpr (std::is_integral_v<M>)
        return truncateSaturated<Nox32s>(static_cast<double>(low));
    else
        return low;
}

template <class T>
NoxStatus canny(const T *srcDx, int srcDxStep, const T *srcDy, int srcDyStep, Nox8u *dst, int dstStep, NoxiSize roi,
                Nox32f lowThreshold, Nox32f highThreshold, Nox8u *buffer) {
    const NoxStatus status =
        firstFailure(checkPointers(srcDx, srcDy, dst, buffer), checkSize(roi), checkStep<T>(srcDxStep, roi.width),
                     checkStep<T>(srcDyStep, roi.width), checkStep<Nox8u>(dstStep, roi.width),
                     checkEvenSteps<T>(srcDxStep, srcDyStep),
                     require(lowThreshold >= 0 && highThreshold >= lowThreshold, noxStsBadArgument), checkBuffer(roi));
    if (status != noxStsNoError)
        return status;
    const auto run = isWide(roi) ? detect<T, Nox32s> : detect<T, Nox16u>;
    run({srcDx, srcDxStep}, {srcDy, srcDyStep}, dst, dstStep, roi, lowerThreshold<Magnitude<T>>(lowThreshold),
        highThreshold, buffer);
    return noxStsNoError;
}

} // namespace

void ownHysteresisThresholding_16u(const Nox8u *map, Nox16u *stack, int count, int width, int /*height*/, Nox8u *dst,
                                   int dstStep) {
    grow<Nox16u>(map, stack, count, width, dst, dstStep);
}

void ownHysteresisThresholding_32s(const Nox8u *map, Nox32s *stack, int count, int width, int /*height*/, Nox8u *dst,
                                   int dstStep) {
    grow<Nox32s>(map, stack, count, width, dst, dstStep);
}

NoxStatus noxiCanny_16s8u_C1R(const Nox16s *srcDx, int srcDxStep, const Nox16s *srcDy, int srcDyStep, Nox8u *dst,
                              int dstStep, NoxiSize roi, Nox32f lowThreshold, Nox32f highThreshold, Nox8u *buffer) {
    return canny(srcDx, srcDxStep, srcDy, srcDyStep, dst, dstStep, roi, lowThreshold, highThreshold, buffer);
}

NoxStatus noxiCanny_32f8u_C1R(const Nox32f *srcDx, int srcDxStep, const Nox32f *srcDy, int srcDyStep, Nox8u *dst,
                              int dstStep, NoxiSize roi, Nox32f lowThreshold, Nox32f highThreshold, Nox8u *buffer) {
    return canny(srcDx, srcDxStep, srcDy, srcDyStep, dst, dstStep, roi, lowThreshold, highThreshold, buffer);
}

NoxStatus noxiCannyGetSize(NoxiSize roi, int *bufferSize) {
    const NoxStatus status = firstFailure(checkPointers(bufferSize), checkSize(roi));
    if (status != noxStsNoError)
        return status;
    // The low 32 bits, without an overflow check: the detector itself refuses an image that large.
    *bufferSize = static_cast<int>(static_cast<Nox32u>(bufferBytes(roi)));
    return noxStsNoError;
}
