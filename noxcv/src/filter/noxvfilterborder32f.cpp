// Row and column kernels of the fixed filters on single-precision images: sums in extended precision, rounded once.
#include <algorithm>
#include <cstring>
#include <type_traits>

// Operators on vectors become part of the kernels: no call passes a vector.
#pragma GCC diagnostic ignored "-Wpsabi"

#include "noxvfilterborder.h"
#include "noxvfilterkernels.h"
#include "noxvseparable.h"
#include "numerics.h"

#define NOX_KERNELS "filter/noxvfilterborder32f.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// The sums that a vector holds: shorter rows are summed one by one.
constexpr int leastVector = 8;

template <class Operator>
struct SingleStep : std::false_type {};
// One addition, or one product, rounded to 64 bits and then to 24 is the same as rounded to 24 at once (64 is at least
// twice 24 plus 2), so single precision will do whatever the elements are.
template <>
struct SingleStep<DxOperator3> : std::true_type {};
template <>
struct SingleStep<DxNegOperator3> : std::true_type {};
template <>
struct SingleStep<LaplacianOuterOperator> : std::true_type {};
template <>
struct SingleStep<LaplacianMiddleOperator> : std::true_type {};

/// A block of double sums, tested; if there is a doubtful one each is formed again, and doubtful ones by the
/// definition.
template <class Operator, class Lines, class Next>
void sumTested(const Lines &lines, Nox32f *dst, int count, Nox32f certain, const Next &ahead) {
    if (count >= leastVector && !NOX_ON_TIER(sumColumnTested<Operator>(lines, dst, count, certain, ahead)))
        return;
    for (int i = 0; i < count; ++i) {
        const Nox64f sum = operate<Operator, Nox64f>(lines, i);
        const auto rounded = static_cast<Nox32f>(sum);
        nox::elements(dst)[i] = roundsDoubtfully(sum, rounded, certain)
                                    ? static_cast<Nox32f>(operate<Operator, long double>(lines, i))
                                    : rounded;
    }
}

template <class Operator, class Lines>
void operateTested(const Lines &lines, Nox32f *dst, int count, const Spread &elements, const Ahead &ahead) {
    const Nox32f certain = certainFrom(2 * Operator::taps, elements.largest * Operator::weight);
    asking(ahead, [&](const auto &next) {
        for (int x = 0; x < count; x += blockLength)
            sumTested<Operator>(lines.from(x), dst + x, std::min(blockLength, count - x), certain, next.from(x));
    });
}

/// The lines under the taps of a row operator: the row itself, shifted by a pixel each.
template <int Taps>
Lines<Nox32f, Taps> linesUnder(const Nox32f *src) {
    Lines<Nox32f, Taps> lines;
    for (int j = 0; j < Taps; ++j)
        lines.line[j] = src + j;
    return lines;
}

Nox32f roundSum(long double sum) { return static_cast<Nox32f>(sum); }

/// The results of a row near its ends, of one operator or two, in an arithmetic that suits its pixels.
template <class Row, class Second, class R>
void filterBothEnds(const Nox32f *src, Nox32f *row, int width, const RowEnds<Nox32f> &ends) {
    const auto store = [](R sum) { return static_cast<Nox32f>(sum); };
    filterEnds<Row, R>(src, row, width, ends, store);
    if constexpr (!std::is_void_v<Second>)
        filterEnds<Second, R>(src, row + ringRowLength(width), width, ends, store);
}

/// A row of pixels as it goes through the kernels.
struct FloatRow {
    const Nox32f *src;
    Nox32f *row;
    int width;
    const RowEnds<Nox32f> &ends;
    const Ahead &ahead;

    Nox32f *second() const { return row + ringRowLength(width); }
};

template <class Row, class Second>
bool filterOnGrid(const FloatRow &at, const Grid &grid) {
    constexpr int reach = Row::taps / 2;
    const int inner = at.width - 2 * reach;
    if (!asking(at.ahead, [&](const auto &next) {
            return NOX_ON_TIER(
                sumRowOnGrid<Row, Second>(at.src, at.row + reach, at.second() + reach, inner, grid, next));
        }))
        return false;
    filterBothEnds<Row, Second, Nox32f>(at.src, at.row, at.width, at.ends);
    return true;
}

/// The spread of the row's pixels; where it tells that sums are not exact in double, the results mean nothing.
template <class Row, class Second>
Spread filterWide(const FloatRow &at) {
    using Real = std::conditional_t<SingleStep<Row>::value, Nox32f, Nox64f>;
    constexpr int reach = Row::taps / 2;
    const int inner = at.width - 2 * reach;
    const Spread spread = asking(at.ahead, [&](const auto &next) {
        return NOX_ON_TIER(sumRowWide<Row, Second, Real>(at.src, at.row + reach, at.second() + reach, inner, next));
    });
    filterBothEnds<Row, Second, Nox64f>(at.src, at.row, at.width, at.ends);
    return spread;
}

/// Of pixels whose sums may not be exact in double.
template <class Row, class Second>
void filterTested(const FloatRow &at, const Spread &elements) {
    constexpr int reach = Row::taps / 2;
    const int inner = at.width - 2 * reach;
    if constexpr (SingleStep<Row>::value)
        filterWide<Row, Second>(at);
    else
        operateTested<Row>(linesUnder<Row::taps>(at.src), at.row + reach, inner, elements, at.ahead);
    filterBothEnds<Row, Second, long double>(at.src, at.row, at.width, at.ends);
}

/// A row that is shorter than a vector.
template <class Row, class Second>
void filterShort(const FloatRow &at) {
    filterShortRow<Row, long double>(at.src, at.row, at.width, at.ends, roundSum);
    if constexpr (!std::is_void_v<Second>)
        filterShortRow<Second, long double>(at.src, at.second(), at.width, at.ends, roundSum);
}

/// A row that is not what it was taken for. Gives the spread of its pixels and the border's.
template <class Row, class Second>
Spread filterUnknown(const FloatRow &at, int weight, RowGuess &guess) {
    const Spread elements = join(spreadOf(at.src, at.width), guess.border);
    guess.correct(elements, weight);
    if (exactInDouble(elements, weight))
        filterWide<Row, Second>(at);
    else
        filterTested<Row, Second>(at, elements);
    return elements;
}

/// A row of results. It is taken for what the last one was, and looked at while it is summed.
template <class Row, class Second = void>
Spread filterRow(const Nox32f *src, Nox32f *row, int width, const RowEnds<Nox32f> &ends, RowGuess &guess,
                 const Ahead &ahead) {
    using Kind = RowGuess::Kind;
    constexpr int weight = std::is_void_v<Second> ? Row::weight : LaplacianMiddleOperator::weight;
    const FloatRow at = {src, row, width, ends, ahead};
    if (width < leastVector + 2 * (Row::taps / 2)) {
        filterShort<Row, Second>(at);
        return spreadOfSums(join(spreadOf(src, width), guess.border), weight);
    }
    guess.next(src, width, weight);
    if (guess.kind == Kind::grid && filterOnGrid<Row, Second>(at, guess.grid))
        return spreadOfSums(guess.grid.spread, weight);
    if (guess.kind == Kind::wide) {
        const Spread elements = join(filterWide<Row, Second>(at), guess.border);
        if (exactInDouble(elements, weight))
            return spreadOfSums(elements, weight);
    }
    return spreadOfSums(filterUnknown<Row, Second>(at, weight, guess), weight);
}

template <class Operator, class Real, int Taps>
void sumLines(const Lines<Nox32f, Taps> &lines, Nox32f *dst, int count, const Ahead &ahead) {
    if (count >= leastVector)
        asking(ahead, [&](const auto &next) { NOX_ON_TIER(sumColumn<Operator, Real>(lines, dst, count, next)); });
    else
        for (int x = 0; x < count; ++x)
            elements(dst)[x] = static_cast<Nox32f>(operate<Operator, Real>(lines, x));
}

template <class Operator, int Taps>
void operateRounded(const Lines<Nox32f, Taps> &lines, Nox32f *dst, int count, const Spread &elements,
                    const Ahead &ahead) {
    if (SingleStep<Operator>() || exactInFloat(elements, Operator::weight))
        sumLines<Operator, Nox32f>(lines, dst, count, ahead);
    else if (exactInDouble(elements, Operator::weight))
        sumLines<Operator, Nox64f>(lines, dst, count, ahead);
    else
        operateTested<Operator>(lines, dst, count, elements, ahead);
}

template <class Operator>
void filterColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread, const Ahead &ahead) {
    operateRounded<Operator>(linesOf<Operator::taps>(rows), dst, width, spread, ahead);
}

/// The operator's sum times a factor: a product that is exact in double, or else tested.
template <class Operator>
struct Mean {
    using Sum = Operator;
    static constexpr Nox32f factor = Operator::taps == 3 ? 0.11111111F : 0.04F;
    static constexpr int taps = Operator::taps, weight = Operator::weight;
    template <class R, class... Rest>
    NOX_INLINE static R of(R a, R b, R c, Rest... rest) {
        return Operator::of(a, b, c, rest...) * factor;
    }
};

template <class Operator>
void meanColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread, const Ahead &ahead) {
    using Product = Mean<Operator>;
    const auto lines = linesOf<Operator::taps>(rows);
    // The factor has 24 bits, so the product of a sum of 24 bits is rounded once in single precision, and that of a sum
    // of 29 bits is exact in double.
    if (exactInFloat(spread, Operator::weight))
        sumLines<Product, Nox32f>(lines, dst, width, ahead);
    else if (sumsFit(29, spread, Operator::weight))
        sumLines<Product, Nox64f>(lines, dst, width, ahead);
    else
        operateTested<Product>(lines, dst, width, spread, ahead);
}

/// The grid on which what is added to sums of the Laplacian's rows may lie, for the result to be exact.
Grid gridOfAdded(const Spread &rows) {
    constexpr int bits = 21;
    constexpr double room = (1 << 23) - (1 << bits);
    return rows.largest * SobelOperator5::weight <= rows.quantum * room ? Grid(exponentOf(rows.quantum), bits) : Grid();
}

/// Adds to what dst holds, which is copied first: it is looked at while it is added, and then may have to be added
/// once more.
void addColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread) {
    const Grid grid = gridOfAdded(spread);
    Nox32f first[blockLength];
    for (int x = 0; x < width; x += blockLength) {
        const int length = std::min(blockLength, width - x);
        std::memcpy(first, dst + x, sizeof(Nox32f) * static_cast<std::size_t>(length));
        const Lines<Nox32f, 6> lines = {{rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x, rows[4] + x, first}};
        if (length >= leastVector) {
            if (grid && NOX_ON_TIER(sumLastOnGrid<LaplacianAddOperator>(lines, dst + x, length, grid)))
                continue;
            const Spread added = NOX_ON_TIER(sumLastWide<LaplacianAddOperator>(lines, dst + x, length));
            if (exactInDouble(join(spread, added), LaplacianAddOperator::weight))
                continue;
        }
        operateRounded<LaplacianAddOperator>(lines, dst + x, length, join(spread, spreadOf(first, length)), Ahead());
    }
}

} // namespace

extern "C" {

NOX_FILTER_TAPS(Nox32f, 32f)

#define NOX_ROW_KERNEL(TAG, OPERATOR)                                                                                  \
    static Spread ownFilterRowBorderPipeline_32f_C1R_##TAG(                                                            \
        const Nox32f *src, Nox32f *row, int width, const RowEnds<Nox32f> &ends, RowGuess &guess, const Ahead &ahead) { \
        return filterRow<OPERATOR>(src, row, width, ends, guess, ahead);                                               \
    }
NOX_ROW_KERNELS(NOX_ROW_KERNEL)

static Spread ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian(const Nox32f *src, Nox32f *row, int width,
                                                                  const RowEnds<Nox32f> &ends, RowGuess &guess,
                                                                  const Ahead &ahead) {
    return filterRow<LaplacianOuterOperator, LaplacianMiddleOperator>(src, row, width, ends, guess, ahead);
}

#define NOX_COLUMN_KERNEL(TAG, OPERATOR)                                                                               \
    static void ownFilterColumnPipeline_32f_C1R_##TAG(const Nox32f *const *rows, Nox32f *dst, int width,               \
                                                      const Spread &spread, const Ahead &ahead) {                      \
        filterColumn<OPERATOR>(rows, dst, width, spread, ahead);                                                       \
    }
NOX_COLUMN_KERNELS(NOX_COLUMN_KERNEL)

// The middle row's second half stands in for its first.
static void ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian(const Nox32f *const *rows, Nox32f *dst, int width,
                                                             const Spread &spread, const Ahead &ahead) {
    const Nox32f *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width, spread, ahead);
}

static void ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian(const Nox32f *const *rows, Nox32f *dst, int width,
                                                             const Spread &spread, const Ahead & /*ahead*/) {
    addColumn(rows, dst, width, spread);
}

static void ownFilterColumnPipeline_32f_C1R_3x3_kerAvr(const Nox32f *const *rows, Nox32f *dst, int width,
                                                       const Spread &spread, const Ahead &ahead) {
    meanColumn<MeanOperator3>(rows, dst, width, spread, ahead);
}
static void ownFilterColumnPipeline_32f_C1R_5x5_kerAvr(const Nox32f *const *rows, Nox32f *dst, int width,
                                                       const Spread &spread, const Ahead &ahead) {
    meanColumn<MeanOperator5>(rows, dst, width, spread, ahead);
}

#define NOX_ROW(TAG) ownFilterRowBorderPipeline_32f_C1R_##TAG
const RowKernel32f owntabRow_32f[11] = {NOX_ROW(3x3_kerDx),    NOX_ROW(3x3_kerScharr),   NOX_ROW(3x3_kerDxNeg),
                                        NOX_ROW(5x5_kerDxNeg), NOX_ROW(3x3_kerDx2),      NOX_ROW(5x5_kerDx2),
                                        NOX_ROW(3x3_kerSobel), NOX_ROW(5x5_kerSobel),    NOX_ROW(3x3_kerAvr),
                                        NOX_ROW(5x5_kerAvr),   NOX_ROW(3x3_kerLaplacian)};

#define NOX_COLUMN(TAG) ownFilterColumnPipeline_32f_C1R_##TAG
const ColumnKernel32f owntabColumn_32f[13] = {
    NOX_COLUMN(3x3_kerScharr),    NOX_COLUMN(3x3_kerDx),  NOX_COLUMN(3x3_kerSobel), NOX_COLUMN(5x5_kerSobel),
    NOX_COLUMN(5x5_kerDx),        NOX_COLUMN(3x3_kerDx2), NOX_COLUMN(5x5_kerDx2),   NOX_COLUMN(3x3_kerLaplacian),
    NOX_COLUMN(5x5_kerLaplacian), NOX_COLUMN(3x3_kerAvr), NOX_COLUMN(5x5_kerAvr),   NOX_COLUMN(3x3_kerSobelNeg),
    NOX_COLUMN(5x5_kerSobelNeg)};

const int columnWeights_32f[13] = {
    ScharrOperator::weight,       DxOperator3::weight,   SobelOperator3::weight, SobelOperator5::weight,
    DxOperator5::weight,          Dx2Operator3::weight,  Dx2Operator5::weight,   LaplacianColumnOperator::weight,
    LaplacianAddOperator::weight, MeanOperator3::weight, MeanOperator5::weight,  SobelOperator3::weight,
    SobelOperator5::weight};
}
