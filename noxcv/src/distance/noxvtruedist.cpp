// The true distance transform: vertical distances of the columns, then a lower envelope of parabolas along each row.
#include <algorithm>
#include <climits>
#include <limits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "frame/owncvomp.h"
#include "noxcv/distance.h"
#include "noxcv/primitives.h"
#include "rows.h"
#include "tiers.h"

using nox::checkEvenSteps, nox::checkPointers, nox::checkSize, nox::checkStep, nox::firstFailure;
using nox::Element, nox::elements, nox::Rows;

namespace {

/// The square that stands for a column without a zero.
constexpr int noZero = 1000000;

// --- vertical distances ---

/// Counts up from the row below: 0 at a zero.
NOX_INLINE void countRow(const Nox8u *src, const Element<Nox32s> *below, Element<Nox32s> *counts, int width) {
    for (int x = 0; x < width; ++x)
        counts[x] = src[x] == 0 ? 0 : below[x] + 1;
}
NOX_TIERS void countRows(Rows<const Nox8u> src, Rows<Nox32s> counts, NoxiSize roi) {
    Element<Nox32s> *last = counts[roi.height - 1];
    for (int x = 0; x < roi.width; ++x)
        last[x] = src[roi.height - 1][x] == 0 ? 0 : roi.height;
    for (int y = roi.height - 2; y >= 0; --y)
        countRow(src[y], counts[y + 1], counts[y], roi.width);
}

/// Counts down from the row above, and squares. A count of `height` and more is that of a column without a zero.
template <class Square>
NOX_INLINE void squareRows(Rows<Nox32s> counts, Rows<Square> squares, NoxiSize roi, Nox32s *above) {
    std::fill_n(above, roi.width, roi.height - 1);
    for (int y = 0; y < roi.height; ++y) {
        const Element<Nox32s> *row = counts[y];
        Element<Square> *out = squares[y];
        for (int x = 0; x < roi.width; ++x) {
            const int next = above[x] + 1, count = next < row[x] ? next : row[x];
            above[x] = count;
            const auto distance = static_cast<Nox32f>(count);
            const Nox32f square = count < roi.height ? distance * distance : static_cast<Nox32f>(noZero);
            if constexpr (std::is_same_v<Square, Nox32f>)
                out[x] = square;
            else
                out[x] = count < roi.height ? (count <= 46340 ? count * count : INT_MAX) : noZero;
        }
    }
}
NOX_TIERS void squareRowsOf(Rows<Nox32s> counts, Rows<Nox32f> squares, NoxiSize roi, Nox32s *above) {
    squareRows(counts, squares, roi, above);
}
NOX_TIERS void squareRowsOf(Rows<Nox32s> counts, Rows<Nox32s> squares, NoxiSize roi, Nox32s *above) {
    squareRows(counts, squares, roi, above);
}

// --- envelope ---

/// What one thread needs for a row.
struct Envelope {
    Nox32f *values;   ///< the row's squares
    Nox32f *boundary; ///< where each kept parabola begins to be the lowest
    Nox32s *apex;     ///< its column
};

/// Tables for the columns: squares, and half of the inverse.
struct Tables {
    Nox32f *squares, *halfInverse;

    void fill(int width) const {
        halfInverse[0] = 0;
        for (int i = 0; i < width; ++i) {
            squares[i] = static_cast<Nox32f>(i) * static_cast<Nox32f>(i);
            if (i > 0)
                halfInverse[i] = 0.5F / static_cast<Nox32f>(i);
        }
    }
};

/// The row's squares as floats, and its new squares from floats: whole numbers are truncated. Both are loops of their
/// own, so that they go in vectors.
NOX_INLINE void readSquares(const Element<Nox32f> *row, Nox32f *__restrict values, int width) {
    std::copy_n(row, width, values);
}
NOX_TIERS void readSquares(const Element<Nox32s> *row, Nox32f *__restrict values, int width) {
    for (int x = 0; x < width; ++x)
        values[x] = static_cast<Nox32f>(row[x]);
}
NOX_INLINE void storeSquares(Element<Nox32f> *, int) {}
NOX_TIERS void storeSquares(Element<Nox32s> *row, int width) {
    constexpr Nox32f most = 2147483520.0F; // the largest float that an int holds
    for (int x = 0; x < width; ++x) {
        const auto square = __builtin_bit_cast(Nox32f, static_cast<Nox32s>(row[x]));
        row[x] = static_cast<Nox32s>(square < most ? square : most);
    }
}

/// The lower envelope of parabolas over one row. `low` and `high` stand for the ends of the line.
template <class Square>
void envelopeRow(Element<Square> *row, int width, const Tables &tables, const Envelope &work) {
    constexpr Nox32f low = -std::numeric_limits<Nox32f>::infinity(), high = 1e6F;
    Nox32f *const values = work.values, *const boundary = work.boundary;
    Nox32s *const apex = work.apex;
    readSquares(elements(row), values, width);
    int k = 0;
    apex[0] = 0;
    boundary[0] = low;
    for (int q = 1; q < width; ++q) {
        const Nox32f top = tables.squares[q] + values[q];
        Nox32f crossing;
        for (;;) {
            const int p = apex[k];
            crossing = ((top - values[p]) - tables.squares[p]) * tables.halfInverse[q - p];
            if (crossing > boundary[k])
                break;
            --k; // a crossing is a finite number, so the first parabola stays
        }
        ++k;
        apex[k] = q;
        boundary[k] = crossing;
    }
    boundary[k + 1] = std::max(high, static_cast<Nox32f>(width));
    auto *out = reinterpret_cast<Element<Nox32f> *>(row); // which the values are a copy of
    int kept = 0;
    for (int q = 0; q < width; ++q) {
        while (boundary[kept + 1] < static_cast<Nox32f>(q))
            ++kept;
        const int p = apex[kept];
        out[q] = tables.squares[q < p ? p - q : q - p] + values[p];
    }
    storeSquares(elements(row), width);
}

// --- buffers ---

/// The areas of a work buffer. Columns come before rows, so their counts lie where the tables will.
template <class Square>
struct Layout {
    Rows<Square> grid{}; ///< of whole numbers only; floats are made in the destination
    Tables tables;
    Nox32s *above;
    Envelope first;
    std::ptrdiff_t stride; ///< elements from one of a thread's vectors to the next

    Layout(nox::WorkBuffer &buffer, NoxiSize roi, int threads) {
        constexpr bool whole = std::is_same_v<Square, Nox32s>;
        stride = nox::roundUp<long long>(roi.width, whole ? 8 : 4);
        if constexpr (whole)
            grid = {buffer.take<Nox32s>(stride * roi.height), static_cast<int>(stride * sizeof(Nox32s))};
        tables.squares = buffer.take<Nox32f>(stride);
        above = reinterpret_cast<Nox32s *>(tables.squares);
        tables.halfInverse = buffer.take<Nox32f>(stride);
        first.values = buffer.take<Nox32f>(4LL * stride * threads);
        // Both hold a place more than there are columns.
        first.boundary = first.values + stride;
        first.apex = reinterpret_cast<Nox32s *>(first.boundary + stride + 1);
    }
    Envelope ofThread(int index) const {
        const std::ptrdiff_t from = 4 * stride * index;
        return {first.values + from, first.boundary + from, first.apex + from};
    }
};

constexpr int bufferAlignment = 16;

/// The stated sizes; what the layouts above take is less.
long long bufferBytes(NoxiSize roi, Nox32f) {
    const long long longer = std::max(nox::roundUp<long long>(roi.width, 4), nox::roundUp<long long>(roi.height, 4));
    return (longer * 24 + 56) * nox::sliceCount();
}
long long bufferBytes(NoxiSize roi, Nox32s) {
    const long long w8 = nox::roundUp<long long>(roi.width, 8);
    const long long longer = std::max(w8, nox::roundUp<long long>(roi.height, 8));
    return (longer * 6 + 6) * 4 * nox::sliceCount() + w8 * roi.height * 4 + 32;
}

template <class Square>
NoxStatus querySize(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    return status != noxStsNoError ? status : nox::storeSize(bufferBytes(roi, Square{}), size);
}

// --- transforms ---

/// Whether rows go to several threads.
bool goesParallel(NoxiSize roi) {
    const long long threads = owncvGetMaxNumThreads();
    return threads >= 2 && (runomp() != 0 || (threads * roi.height >= 256 && roi.width >= 256));
}

/// takeRoot(y) makes the row's distances from its squares.
template <class Square, class TakeRoot>
NoxStatus transform(Rows<const Nox8u> src, Rows<Square> squares, NoxiSize roi, const Layout<Square> &layout,
                    const TakeRoot &takeRoot) {
    const Rows<Nox32s> counts = {reinterpret_cast<Nox32s *>(squares.base), squares.step};
    countRows(src, counts, roi);
    squareRowsOf(counts, squares, roi, layout.above);
    layout.tables.fill(roi.width);
    nox::parallelSlices(roi.height, goesParallel(roi) ? nox::sliceCount() : 1, [&](const nox::Slice &slice) {
        const Envelope work = layout.ofThread(slice.index);
        for (int y = slice.first; y < slice.first + slice.count; ++y) {
            envelopeRow<Square>(squares[y], roi.width, layout.tables, work);
            takeRoot(y);
        }
    });
    return noxStsNoError;
}

template <class T>
NoxStatus checkCall(const Nox8u *src, int srcStep, const T *dst, int dstStep, NoxiSize roi, const Nox8u *buffer) {
    return firstFailure(checkPointers(src, dst, buffer), checkSize(roi), checkStep<Nox8u>(srcStep, roi.width),
                        checkStep<T>(dstStep, roi.width), checkEvenSteps<T>(dstStep));
}

} // namespace

NoxStatus noxiTrueDistanceTransformGetBufferSize_8u32f_C1R(NoxiSize roi, int *size) {
    return querySize<Nox32f>(roi, size);
}
NoxStatus noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(NoxiSize roi, int *size) {
    return querySize<Nox32s>(roi, size);
}

NoxStatus noxiTrueDistanceTransform_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              Nox8u *buffer) {
    const NoxStatus status = checkCall(src, srcStep, dst, dstStep, roi, buffer);
    if (status != noxStsNoError)
        return status;
    if (bufferBytes(roi, Nox32f{}) > INT_MAX)
        return noxStsBadSize;
    nox::WorkBuffer work(buffer, bufferAlignment);
    const Rows<Nox32f> rows = {dst, dstStep};
    return transform<Nox32f>({src, srcStep}, rows, roi, Layout<Nox32f>(work, roi, nox::sliceCount()),
                             [&](int y) { noxsSqrt_32f_I(rows[y], roi.width); });
}

NoxStatus noxiTrueDistanceTransform_8u16u_C1RSfs(const Nox8u *src, int srcStep, Nox16u *dst, int dstStep, NoxiSize roi,
                                                 int scaleFactor, Nox8u *buffer) {
    const NoxStatus status = checkCall(src, srcStep, dst, dstStep, roi, buffer);
    if (status != noxStsNoError)
        return status;
    if (bufferBytes(roi, Nox32s{}) > INT_MAX)
        return noxStsBadSize;
    nox::WorkBuffer work(buffer, bufferAlignment);
    const Layout<Nox32s> layout(work, roi, nox::sliceCount());
    const Rows<Nox16s> rows = {reinterpret_cast<Nox16s *>(dst), dstStep};
    return transform<Nox32s>({src, srcStep}, layout.grid, roi, layout,
                             [&](int y) { noxsSqrt_32s16s_Sfs(layout.grid[y], rows[y], roi.width, scaleFactor); });
}
