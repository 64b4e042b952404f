// Tilted integral images: sums of pixels, and of their squares, in the 45-degree cone above each position.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "noxcv/detection.h"
#include "noxvintegral.h"
#include "tiers.h"

using namespace nox;

namespace {

/// A pixel, or its square, as a term of a table.
template <bool squared>
NOX_INLINE int term(Nox8u pixel) {
    return squared ? pixel * pixel : pixel;
}

/// Three rows of a table, one below the other: `above` the two that are there already.
template <class T>
struct TiltedRow {
    const Element<T> *twoAbove, *above;
    Element<T> *out;
};

/// Columns 1 to columns - 1 of a row: sums that wrap.
template <bool squared>
NOX_INLINE void wrappedColumns(const Nox8u *s, const TiltedRow<Nox32s> &row, int columns) {
    const auto *above = reinterpret_cast<const Element<Nox32u> *>(row.above);
    const auto *twoAbove = reinterpret_cast<const Element<Nox32u> *>(row.twoAbove);
    auto *out = reinterpret_cast<Element<Nox32u> *>(row.out);
    for (int x = 1; x < columns; ++x)
        out[x] = static_cast<Nox32u>(term<squared>(s[x - 1]) + term<squared>(s[x])) + above[x - 1] + above[x + 1] -
                 twoAbove[x];
}

/// The same in Real, rounded to T; terms are added in T's order. The pointers are copied: a store must not seem to
/// change them.
/// @return the largest magnitude of the columns, as the bits of a float; of double columns nothing
template <class T, class Real>
NOX_INLINE int realColumns(const Nox8u *s, const TiltedRow<T> &row, int columns) {
    const Element<T> *above = row.above, *twoAbove = row.twoAbove;
    Element<T> *out = row.out;
    int largest = 0;
    for (int x = 1; x < columns; ++x) {
        const Real left = above[x - 1], right = above[x + 1], top = twoAbove[x];
        if constexpr (std::is_same_v<T, Nox64f>) {
            out[x] = static_cast<T>(static_cast<Real>(term<true>(s[x - 1]) + term<true>(s[x])) + left - top + right);
        } else {
            const Real table = left - top + right;
            // In double all of this is exact, so the pixels may be added first.
            const auto sum = std::is_same_v<Real, Nox64f>
                                 ? static_cast<T>(table + static_cast<Real>(s[x - 1] + s[x]))
                                 : static_cast<T>(table + static_cast<Real>(s[x - 1]) + static_cast<Real>(s[x]));
            largest = std::max(largest, std::bit_cast<int>(sum) & 0x7fffffff);
            out[x] = sum;
        }
    }
    return largest;
}

NOX_TIERS void columns32s(const Nox8u *s, const TiltedRow<Nox32s> &row, int columns) {
    wrappedColumns<false>(s, row, columns);
}
NOX_TIERS void squareColumns32s(const Nox8u *s, const TiltedRow<Nox32s> &row, int columns) {
    wrappedColumns<true>(s, row, columns);
}
NOX_TIERS void columns64f(const Nox8u *s, const TiltedRow<Nox64f> &row, int columns) {
    realColumns<Nox64f, Nox64f>(s, row, columns);
}

NOX_TIERS int columns32f(const Nox8u *s, const TiltedRow<Nox32f> &row, int columns) {
    return realColumns<Nox32f, Nox64f>(s, row, columns);
}

/// The column above the image's last pixel: pixels end here.
template <bool squared>
void lastColumn(const Nox8u *s, const TiltedRow<Nox32s> &row, int w) {
    row.out[w] =
        static_cast<Nox32s>(static_cast<Nox32u>(term<squared>(s[w - 1])) + static_cast<Nox32u>(row.above[w - 1]) +
                            static_cast<Nox32u>(row.above[w + 1]) - static_cast<Nox32u>(row.twoAbove[w]));
}
template <class T>
long double lastSum(const Nox8u *s, const TiltedRow<T> &row, int w) {
    return static_cast<long double>(term<std::is_same_v<T, Nox64f>>(s[w - 1])) + row.above[w - 1] + row.above[w + 1] -
           row.twoAbove[w];
}

/// A table of 32-bit sums. The one builder whose both tables are of this kind takes the pixel behind each row in.
template <bool squared, bool takesNextPixel>
class WrappedTable {
public:
    WrappedTable(Nox32s, NoxiSize roi) : width_(roi.width) {}
    void put(const Nox8u *s, const TiltedRow<Nox32s> &row) {
        constexpr auto columns = [](const Nox8u *pixels, const TiltedRow<Nox32s> &to, int count) {
            squared ? squareColumns32s(pixels, to, count) : columns32s(pixels, to, count);
        };
        columns(s, row, takesNextPixel ? width_ + 1 : width_);
        if (!takesNextPixel)
            lastColumn<squared>(s, row, width_);
    }

private:
    int width_;
};

/// A table of float sums. Sums of five multiples of 1/1024 up to 2^40 are exact in double as in extended precision;
/// once a row has other elements, extended precision itself does the work.
class FloatTable {
public:
    FloatTable(Nox32f offset, NoxiSize roi) : width_(roi.width), exact_(isExact(offset)) {}
    void put(const Nox8u *s, const TiltedRow<Nox32f> &row) {
        if (exact_)
            exact_ = columns32f(s, row, width_) <= std::bit_cast<int>(limit);
        else
            realColumns<Nox32f, long double>(s, row, width_);
        row.out[width_] = row.out[width_] + static_cast<Nox32f>(lastSum(s, row, width_)); // adds to what is there
        exact_ = exact_ && isExact(row.out[width_]);
    }

private:
    static constexpr Nox32f limit = 0x1p40F;
    static bool isExact(Nox32f value) { return std::fabs(value) <= limit && std::floor(value * 1024) == value * 1024; }
    int width_;
    bool exact_;
};

/// A table of double sums.
class DoubleTable {
public:
    DoubleTable(Nox64f offset, NoxiSize roi) : width_(roi.width), exact_(squaresExactInDouble(offset, roi)) {}
    void put(const Nox8u *s, const TiltedRow<Nox64f> &row) {
        if (exact_)
            columns64f(s, row, width_);
        else
            realColumns<Nox64f, long double>(s, row, width_);
        row.out[width_] = static_cast<Nox64f>(lastSum(s, row, width_));
    }

private:
    int width_;
    bool exact_;
};

/// All rows of one table.
template <class Table, class T>
void tiltedRows(const Nox8u *src, int srcStep, T *table, int tableStep, NoxiSize roi, T offset) {
    const Rows<const Nox8u> image{src, srcStep};
    const Rows<T> sums{table, tableStep};
    fillRow<T>(sums[0], roi.width + 1LL, offset);
    fillRow<T>(sums[1], roi.width + 1LL, offset);
    Table rows(offset, roi);
    for (int y = 0; y < roi.height; ++y) {
        const TiltedRow<T> row = {sums[y], sums[y + 1], sums[y + 2]};
        row.out[0] = row.above[1];
        rows.put(image[y], row);
        row.out[roi.width + 1] = row.above[roi.width];
    }
}

} // namespace

// One line per member.
#define NOX_TILTED(FUNCTION, TYPE, TABLE)                                                                              \
    NoxStatus FUNCTION(const Nox8u *src, int srcStep, TYPE *table, int tableStep, NoxiSize roi, TYPE offset) {         \
        const NoxStatus status = checkTables<TYPE, NoTable>(src, srcStep, table, tableStep, nullptr, 0, roi, 2);       \
        if (status == noxStsNoError)                                                                                   \
            tiltedRows<TABLE>(src, srcStep, table, tableStep, roi, offset);                                            \
        return status;                                                                                                 \
    }
#define NOX_TILTEDSQR(FUNCTION, TYPE, TABLE, SQUARE, SQUARETABLE)                                                      \
    NoxStatus FUNCTION(const Nox8u *src, int srcStep, TYPE *table, int tableStep, SQUARE *sqrTable, int sqrStep,       \
                       NoxiSize roi, TYPE offset, SQUARE sqrOffset) {                                                  \
        const NoxStatus status = checkTables(src, srcStep, table, tableStep, sqrTable, sqrStep, roi, 2);               \
        if (status == noxStsNoError) {                                                                                 \
            tiltedRows<TABLE>(src, srcStep, table, tableStep, roi, offset);                                            \
            tiltedRows<SQUARETABLE>(src, srcStep, sqrTable, sqrStep, roi, sqrOffset);                                  \
        }                                                                                                              \
        return status;                                                                                                 \
    }

using PlainSums = WrappedTable<false, false>;
using SumsWithNext = WrappedTable<false, true>;
using SquaresWithNext = WrappedTable<true, true>;

NOX_TILTED(noxiTiltedIntegral_8u32s_C1R, Nox32s, PlainSums)
NOX_TILTED(noxiTiltedIntegral_8u32f_C1R, Nox32f, FloatTable)
NOX_TILTEDSQR(noxiTiltedSqrIntegral_8u32s64f_C1R, Nox32s, PlainSums, Nox64f, DoubleTable)
NOX_TILTEDSQR(noxiTiltedSqrIntegral_8u32f64f_C1R, Nox32f, FloatTable, Nox64f, DoubleTable)
NOX_TILTEDSQR(noxiTiltedSqrIntegral_8u32s_C1R, Nox32s, SumsWithNext, Nox32s, SquaresWithNext)
