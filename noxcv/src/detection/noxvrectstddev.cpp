// The deviation of the pixels under a rectangle, from a table of sums and a table of squares.
//
// The definitions ask for extended precision. The kernels form the variance in double together with a bound of its
// distance from the extended one, and round both ends of that interval: rounding is monotone, so where both ends give
// the same result, so does the extended value. The few positions where they differ are formed again in long double.
#include <cmath>
#include <cstddef>
#include <limits>

#include "checks.h"
#include "frame/owncvomp.h"
#include "noxcv/detection.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace {

/// A little more than the largest error of a few roundings to double, relative to what they round.
constexpr Nox64f fewRoundings = 0x1p-50;
constexpr Nox64f fewExtended = 0x1p-62; ///< the same for extended precision
/// What products of denormals may lose; far below what single precision tells apart.
constexpr Nox64f lostByUnderflow = 0x1p-1000;

/// The corners of a rectangle in two tables, relative to a position: the sum under it is plus - minus1 - minus2 +
/// plus2, in this order for floats.
struct Corners {
    struct At {
        std::ptrdiff_t row, column;
    };
    At plus, minus1, minus2, plus2;
};

Corners uprightCorners(const NoxiRect &r) {
    const std::ptrdiff_t top = r.y, left = r.x, bottom = top + r.height, right = left + r.width;
    return {{bottom, right}, {top, right}, {bottom, left}, {top, left}};
}

Corners tiltedCorners(const NoxiRect &r) {
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(r.x) + r.y, column = static_cast<std::ptrdiff_t>(r.x) - r.y;
    const std::ptrdiff_t w = r.width, h = r.height;
    return {{row + w + h, column + w - h}, {row + h, column - h}, {row + w, column + w}, {row, column}};
}

/// The four elements of one table for the positions of a row.
template <class T>
struct CornerRows {
    const Element<T> *plus, *minus1, *minus2, *plus2;

    CornerRows(Rows<const T> table, const Corners &corners, int y)
        : plus(at(table, corners.plus, y)), minus1(at(table, corners.minus1, y)), minus2(at(table, corners.minus2, y)),
          plus2(at(table, corners.plus2, y)) {}

    /// The sum, in Real.
    template <class Real>
    NOX_INLINE Real sum(int x) const {
        return static_cast<Real>(plus[x]) - static_cast<Real>(minus1[x]) - static_cast<Real>(minus2[x]) +
               static_cast<Real>(plus2[x]);
    }
    /// The sum that wraps, as a float.
    NOX_INLINE Nox32f wrappedSum(int x) const {
        return static_cast<Nox32f>(static_cast<Nox32s>(static_cast<Nox32u>(plus[x]) - static_cast<Nox32u>(minus1[x]) -
                                                       static_cast<Nox32u>(minus2[x]) + static_cast<Nox32u>(plus2[x])));
    }
    /// The sum in double, from the two differences of neighbours, which are small beside the table's elements, and more
    /// than its distance from the sum in extended precision. The difference of each has an error of its own size; in
    /// extended precision, 2^-64 times as large, that counts for the order of sum().
    struct Close {
        Nox64f sum, error;
    };
    NOX_INLINE Close closeSum(int x) const {
        const Nox64f other = minus2[x];
        const Nox64f first = static_cast<Nox64f>(plus[x]) - static_cast<Nox64f>(minus1[x]);
        const Nox64f second = other - static_cast<Nox64f>(plus2[x]);
        return {first - second, (std::fabs(first) + std::fabs(second)) * fewRoundings + std::fabs(other) * fewExtended};
    }

private:
    static const Element<T> *at(Rows<const T> table, const Corners::At &corner, int y) {
        return table[y + corner.row] + corner.column;
    }
};

/// The rectangle's area in the forms that the members divide by, and its reciprocal.
struct Area {
    long double exact;
    Nox32f rounded;
    Nox64f reciprocal;

    static Area upright(const NoxiRect &r) {
        const auto product = static_cast<Nox32s>(static_cast<Nox32u>(r.width) * static_cast<Nox32u>(r.height));
        return of(static_cast<Nox32f>(product), static_cast<Nox32f>(product));
    }
    static Area tilted(const NoxiRect &r) {
        const long double product = 2.0L * r.width * r.height;
        return of(product, static_cast<Nox32f>(product));
    }

private:
    static Area of(long double exact, Nox32f rounded) { return {exact, rounded, static_cast<Nox64f>(1 / exact)}; }
};

/// What is above 0, and 0 for all else, not-a-numbers too.
template <class Real>
NOX_INLINE Real positive(Real value) {
    return value > 0 ? value : Real(0);
}

/// An interval that holds the variance as extended precision forms it.
struct Variance {
    Nox64f low, high;

    NOX_INLINE static Variance about(Nox64f value, Nox64f error) { return {value - error, value + error}; }
};

/// Sums in single and squares in double precision.
struct RealTables {
    using Sum = Nox32f;
    using Square = Nox64f;

    /// The mean's error counts twice its value, and once more for its own square. Both errors have room for the
    /// roundings of quotients, squares and their difference.
    NOX_INLINE static Variance variance(const CornerRows<Nox32f> &sums, const CornerRows<Nox64f> &squares, int x,
                                        const Area &area) {
        const auto sum = sums.closeSum(x);
        const auto squareSum = squares.closeSum(x);
        const Nox64f mean = sum.sum * area.reciprocal, meanError = sum.error * area.reciprocal;
        const Nox64f error = squareSum.error * area.reciprocal + (2 * std::fabs(mean) + meanError) * meanError;
        return Variance::about(squareSum.sum * area.reciprocal - mean * mean, error + lostByUnderflow);
    }
    static long double extendedVariance(const CornerRows<Nox32f> &sums, const CornerRows<Nox64f> &squares, int x,
                                        const Area &area) {
        const long double mean = sums.sum<long double>(x) / area.exact;
        return squares.sum<long double>(x) / area.exact - mean * mean;
    }
};

/// Sums as 32-bit integers and squares in double precision: the mean is a float, its square exact in double.
struct MixedTables {
    using Sum = Nox32s;
    using Square = Nox64f;

    NOX_INLINE static Variance variance(const CornerRows<Nox32s> &sums, const CornerRows<Nox64f> &squares, int x,
                                        const Area &area) {
        const Nox64f mean = sums.wrappedSum(x) / area.rounded;
        const Nox64f reciprocal = 1 / static_cast<Nox64f>(area.rounded);
        const auto squareSum = squares.closeSum(x);
        const Nox64f error = squareSum.error * reciprocal + mean * mean * fewRoundings;
        return Variance::about(squareSum.sum * reciprocal - mean * mean, error + lostByUnderflow);
    }
    static long double extendedVariance(const CornerRows<Nox32s> &sums, const CornerRows<Nox64f> &squares, int x,
                                        const Area &area) {
        const long double mean = sums.wrappedSum(x) / area.rounded;
        return squares.sum<long double>(x) / area.rounded - mean * mean;
    }
};

constexpr int blockLength = 64; ///< positions that are looked through for doubtful ones together

/// One row of deviations. The corners are copied and results pass through a block of their own: the compiler must see
/// that no store changes what is read.
template <class Tables, class Sums, class Squares>
NOX_INLINE void deviationRow(const Sums &sumsOfRow, const Squares &squaresOfRow, Element<Nox32f> *dst, int width,
                             const Area &areaOfRect) {
    const Sums sums = sumsOfRow;
    const Squares squares = squaresOfRow;
    const Area area = areaOfRect;
    for (int first = 0; first < width; first += blockLength) {
        const int count = width - first < blockLength ? width - first : blockLength;
        Nox32f roots[blockLength];
        int doubtful[blockLength];
        int doubts = 0;
        for (int i = 0; i < count; ++i) {
            const Variance v = Tables::variance(sums, squares, first + i, area);
            const auto low = static_cast<Nox32f>(v.low), high = static_cast<Nox32f>(v.high);
            roots[i] = std::sqrt(positive(low));
            // A not-a-number in v gives two zeros: it must be formed again, and so is told by itself.
            const int doubt = (positive(low) == positive(high) ? 0 : 1) | (low <= high ? 0 : 1);
            doubtful[i] = doubt;
            doubts |= doubt;
        }
        for (int i = 0; doubts != 0 && i < count; ++i)
            if (doubtful[i] != 0)
                roots[i] = std::sqrt(
                    static_cast<Nox32f>(positive(Tables::extendedVariance(sums, squares, first + i, areaOfRect))));
        for (int i = 0; i < count; ++i)
            dst[first + i] = roots[i];
    }
}

/// One call: tables, result, and where the corners lie.
template <class Sum, class Square, class Result>
struct Call {
    Rows<const Sum> src;
    Rows<const Square> sqr;
    Rows<Result> dst;
    Corners corners;
    Area area;
};
using RealCall = Call<Nox32f, Nox64f, Nox32f>;
using MixedCall = Call<Nox32s, Nox64f, Nox32f>;
using IntegerCall = Call<Nox32s, Nox32s, Nox32s>;

NOX_TIERS void realRow(const CornerRows<Nox32f> &sums, const CornerRows<Nox64f> &squares, Element<Nox32f> *dst,
                       int width, const Area &area) {
    deviationRow<RealTables>(sums, squares, dst, width, area);
}
NOX_TIERS void mixedRow(const CornerRows<Nox32s> &sums, const CornerRows<Nox64f> &squares, Element<Nox32f> *dst,
                        int width, const Area &area) {
    deviationRow<MixedTables>(sums, squares, dst, width, area);
}

void realRows(const RealCall &c, int width, const Slice &slice) {
    for (int y = slice.first; y < slice.first + slice.count; ++y)
        realRow({c.src, c.corners, y}, {c.sqr, c.corners, y}, c.dst[y], width, c.area);
}

/// A thread for each 1024 positions, as many as there are; the area is a product of 32 bits.
int slicesOf(NoxiSize roi) {
    const int product = static_cast<int>(static_cast<unsigned>(roi.width) * static_cast<unsigned>(roi.height));
    return std::clamp(std::min(owncvGetMaxNumThreads(), product >> 10), 1, 32);
}

/// 2^-scaleFactor as the scaled members form it: a signed shift of 32 bits, its count modulo 32.
Nox32f scaleOf(int scaleFactor) {
    const auto power = [](unsigned count) { return static_cast<Nox32f>(static_cast<int>(1U << (count & 31U))); };
    const auto count = static_cast<unsigned>(scaleFactor);
    return scaleFactor >= 0 ? 1.0F / power(count) : power(0U - count);
}

/// Truncates as the processor does: what no int holds becomes the lowest one.
template <class Real>
NOX_INLINE Nox32s truncated(Real value) {
    return value > Real(-2147483649.0) && value < Real(2147483648.0) ? static_cast<Nox32s>(value)
                                                                     : std::numeric_limits<Nox32s>::min();
}

/// The upright form: the variance is formed in single precision, its root in extended.
struct UprightScaled {
    NOX_INLINE static Nox32f variance(Nox32f square, Nox32f mean) { return positive(square - mean * mean); }
    NOX_INLINE static bool isDoubtful(Nox32f, Nox32f) { return false; }
    /// Truncation of a value next to an integer depends on the last bits of the root.
    NOX_INLINE static Nox64f scaledRoot(Nox32f variance, Nox64f scale) {
        return std::sqrt(static_cast<Nox64f>(variance)) * scale;
    }
    static constexpr Nox64f rootError = 0x1p-51;
    static Nox32s extended(Nox32f square, Nox32f mean, Nox32f scale) {
        return truncated(std::sqrt(static_cast<long double>(variance(square, mean))) * scale + 0.5L);
    }
};

/// The tilted form: the variance is formed in extended precision and rounded to single, as its root is.
struct TiltedScaled {
    NOX_INLINE static Nox32f variance(Nox32f square, Nox32f mean) {
        const Nox64f m = mean;
        return static_cast<Nox32f>(positive(square - m * m)); // m * m is exact in double
    }
    /// Two roundings, of which the first may move a value to a midpoint of the second.
    NOX_INLINE static bool isDoubtful(Nox32f square, Nox32f mean) {
        const Nox64f m = mean, v = square - m * m, error = std::fabs(v) * 0x1p-52;
        return static_cast<Nox32f>(positive(v - error)) != static_cast<Nox32f>(positive(v + error));
    }
    NOX_INLINE static Nox64f scaledRoot(Nox32f variance, Nox64f scale) {
        return static_cast<Nox64f>(std::sqrt(variance)) * scale;
    }
    static constexpr Nox64f rootError = 0;
    static Nox32s extended(Nox32f square, Nox32f mean, Nox32f scale) {
        const long double m = mean;
        const auto v = static_cast<Nox32f>(positive(square - m * m));
        return truncated(static_cast<long double>(std::sqrt(v)) * scale + 0.5L);
    }
};

/// One row of scaled deviations.
template <class Form>
NOX_INLINE void scaledRow(const CornerRows<Nox32s> &sumsOfRow, const CornerRows<Nox32s> &squaresOfRow,
                          Element<Nox32s> *dst, int width, Nox32f area, Nox32f scale) {
    const CornerRows<Nox32s> sums = sumsOfRow, squares = squaresOfRow;
    for (int first = 0; first < width; first += blockLength) {
        const int count = width - first < blockLength ? width - first : blockLength;
        Nox32s results[blockLength];
        int doubtful[blockLength];
        int doubts = 0;
        for (int i = 0; i < count; ++i) {
            const int x = first + i;
            const Nox32f mean = sums.wrappedSum(x) / area, square = squares.wrappedSum(x) / area;
            const Nox64f root = Form::scaledRoot(Form::variance(square, mean), scale);
            const Nox64f error = std::fabs(root) * Form::rootError;
            const Nox32s low = truncated(root - error + 0.5), high = truncated(root + error + 0.5);
            results[i] = low;
            const int doubt = (low == high ? 0 : 1) | (Form::isDoubtful(square, mean) ? 1 : 0);
            doubtful[i] = doubt;
            doubts |= doubt;
        }
        for (int i = 0; doubts != 0 && i < count; ++i)
            if (doubtful[i] != 0)
                results[i] =
                    Form::extended(squares.wrappedSum(first + i) / area, sums.wrappedSum(first + i) / area, scale);
        for (int i = 0; i < count; ++i)
            dst[first + i] = results[i];
    }
}

NOX_TIERS void uprightScaledRow(const CornerRows<Nox32s> &sums, const CornerRows<Nox32s> &squares, Element<Nox32s> *dst,
                                int width, Nox32f area, Nox32f scale) {
    scaledRow<UprightScaled>(sums, squares, dst, width, area, scale);
}
NOX_TIERS void tiltedScaledRow(const CornerRows<Nox32s> &sums, const CornerRows<Nox32s> &squares, Element<Nox32s> *dst,
                               int width, Nox32f area, Nox32f scale) {
    scaledRow<TiltedScaled>(sums, squares, dst, width, area, scale);
}

/// The columns that a table's row must hold.
struct Upright {
    static long long columns(NoxiSize roi, const NoxiRect &r) {
        return static_cast<long long>(roi.width) + r.x + r.width;
    }
    static constexpr auto corners = uprightCorners;
    static constexpr auto area = Area::upright;
};
struct Tilted {
    static long long columns(NoxiSize roi, const NoxiRect &r) {
        return static_cast<long long>(r.width) + r.height + r.x + r.y + roi.width - 1;
    }
    static constexpr auto corners = tiltedCorners;
    static constexpr auto area = Area::tilted;
};

template <class Shape, class Sum, class Square, class Result>
NoxStatus checkDeviation(const Sum *src, int srcStep, const Square *sqr, int sqrStep, const Result *dst, int dstStep,
                         NoxiSize roi, const NoxiRect &rect) {
    const long long columns = Shape::columns(roi, rect);
    return firstFailure(checkPointers(src, sqr, dst), checkSize(roi), checkStep<Sum>(srcStep, columns),
                        checkStep<Square>(sqrStep, columns), checkStep<Result>(dstStep, roi.width),
                        checkEvenSteps<Sum>(srcStep), checkEvenSteps<Square>(sqrStep), checkEvenSteps<Result>(dstStep),
                        require(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1, noxStsBadSize));
}

template <class Shape, class Sum, class Square, class Result>
Call<Sum, Square, Result> callOf(const Sum *src, int srcStep, const Square *sqr, int sqrStep, Result *dst, int dstStep,
                                 const NoxiRect &rect) {
    return {{src, srcStep}, {sqr, sqrStep}, {dst, dstStep}, Shape::corners(rect), Shape::area(rect)};
}

void mixedRows(const MixedCall &c, NoxiSize roi) {
    for (int y = 0; y < roi.height; ++y)
        mixedRow({c.src, c.corners, y}, {c.sqr, c.corners, y}, c.dst[y], roi.width, c.area);
}

template <class Shape>
void scaledRows(const IntegerCall &c, NoxiSize roi, int scaleFactor) {
    const Nox32f scale = scaleOf(scaleFactor);
    for (int y = 0; y < roi.height; ++y) {
        const CornerRows<Nox32s> sums(c.src, c.corners, y), squares(c.sqr, c.corners, y);
        if constexpr (std::is_same_v<Shape, Upright>)
            uprightScaledRow(sums, squares, c.dst[y], roi.width, c.area.rounded, scale);
        else
            tiltedScaledRow(sums, squares, c.dst[y], roi.width, c.area.rounded, scale);
    }
}

} // namespace

// One line per member. Only the upright one on float tables goes parallel.
#define NOX_REALDEVIATION(FUNCTION, SHAPE, SLICES)                                                                     \
    NoxStatus FUNCTION(const Nox32f *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst, int dstStep,       \
                       NoxiSize roi, NoxiRect rect) {                                                                  \
        const NoxStatus status = checkDeviation<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, roi, rect);           \
        if (status != noxStsNoError)                                                                                   \
            return status;                                                                                             \
        const RealCall call = callOf<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, rect);                           \
        parallelSlices(roi.height, SLICES, [&](const Slice &slice) { realRows(call, roi.width, slice); });             \
        return noxStsNoError;                                                                                          \
    }
#define NOX_MIXEDDEVIATION(FUNCTION, SHAPE)                                                                            \
    NoxStatus FUNCTION(const Nox32s *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst, int dstStep,       \
                       NoxiSize roi, NoxiRect rect) {                                                                  \
        const NoxStatus status = checkDeviation<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, roi, rect);           \
        if (status == noxStsNoError)                                                                                   \
            mixedRows(callOf<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, rect), roi);                             \
        return status;                                                                                                 \
    }
#define NOX_SCALEDDEVIATION(FUNCTION, SHAPE)                                                                           \
    NoxStatus FUNCTION(const Nox32s *src, int srcStep, const Nox32s *sqr, int sqrStep, Nox32s *dst, int dstStep,       \
                       NoxiSize roi, NoxiRect rect, int scaleFactor) {                                                 \
        const NoxStatus status = checkDeviation<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, roi, rect);           \
        if (status == noxStsNoError)                                                                                   \
            scaledRows<SHAPE>(callOf<SHAPE>(src, srcStep, sqr, sqrStep, dst, dstStep, rect), roi, scaleFactor);        \
        return status;                                                                                                 \
    }

NOX_REALDEVIATION(noxiRectStdDev_32f_C1R, Upright, slicesOf(roi))
NOX_REALDEVIATION(noxiTiltedRectStdDev_32f_C1R, Tilted, 1)
NOX_MIXEDDEVIATION(noxiRectStdDev_32s32f_C1R, Upright)
NOX_MIXEDDEVIATION(noxiTiltedRectStdDev_32s32f_C1R, Tilted)
NOX_SCALEDDEVIATION(noxiRectStdDev_32s_C1RSfs, Upright)
NOX_SCALEDDEVIATION(noxiTiltedRectStdDev_32s_C1RSfs, Tilted)
