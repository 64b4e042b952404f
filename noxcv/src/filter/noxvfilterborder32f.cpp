// Row and column kernels of the fixed filters on single-precision images: sums in extended precision, rounded once.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "noxvfilterborder.h"
#include "noxvfilterkernels.h"
#include "noxvseparable.h"
#include "numerics.h"

using namespace nox;

namespace {

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

template <class Operator, class Lines>
NOX_TIERS void operateInFloat(const Lines &lines, Element<Nox32f> *__restrict dst, int count) {
    const Lines local = lines;
    for (int x = 0; x < count; ++x)
        dst[x] = operate<Operator, Nox32f>(local, x);
}

/// Sums in double; Out is double, or float to round them.
template <class Operator, class T, int Taps, class Out>
NOX_TIERS void operateInDouble(const Lines<T, Taps> &lines, Out *__restrict out, int count) {
    Element<Out> *__restrict dst = out;
    const Lines<T, Taps> local = lines;
    for (int x = 0; x < count; ++x)
        dst[x] = static_cast<Out>(operate<Operator, Nox64f>(local, x));
}

/// A row is converted once, block by block, and not once for each tap.
template <class Operator, class Out>
NOX_TIERS void operateInDouble(const RowWindow<Nox32f> &window, Out *__restrict out, int count) {
    Element<Out> *__restrict dst = out;
    alignas(32) Nox64f line[blockLength + Operator::taps];
    const RowWindow<Nox64f> wide = {line, 1};
    for (int first = 0; first < count; first += blockLength) {
        const int length = std::min(blockLength, count - first);
        for (int x = 0; x < length + Operator::taps - 1; ++x)
            line[x] = window[0][first + x];
        for (int x = 0; x < length; ++x)
            dst[first + x] = static_cast<Out>(operate<Operator, Nox64f>(wide, x));
    }
}

/// Blocks of double sums, tested; doubtful ones by the definition.
template <class Operator, class Lines>
void operateTested(const Lines &lines, Element<Nox32f> *dst, int count, const Spread &elements) {
    const Nox32f certain = certainFrom(2 * Operator::taps, elements.largest * Operator::weight);
    for (int x = 0; x < count; x += blockLength) {
        const int length = std::min(blockLength, count - x);
        const Lines here = lines.from(x);
        alignas(32) Nox64f sums[blockLength];
        operateInDouble<Operator>(here, sums, length);
        if (storeRoundedTested(sums, dst + x, length, certain))
            for (int i = 0; i < length; ++i)
                if (roundsDoubtfully(sums[i], dst[x + i], certain))
                    dst[x + i] = static_cast<Nox32f>(operate<Operator, long double>(here, i));
    }
}

template <class Operator, class Lines>
void operateRounded(const Lines &lines, Nox32f *dst, int count, const Spread &elements) {
    if (SingleStep<Operator>() || exactInFloat(elements, Operator::weight))
        operateInFloat<Operator>(lines, dst, count);
    else if (exactInDouble(elements, Operator::weight))
        operateInDouble<Operator>(lines, dst, count);
    else
        operateTested<Operator>(lines, dst, count, elements);
}

/// A row of results; `elements` is the spread of the row's pixels and the border value.
template <class Operator>
void filterRow(const Nox32f *src, Nox32f *row, int width, const RowEnds<Nox32f> &ends, const Spread &elements) {
    constexpr int reach = Operator::taps / 2;
    const auto store = [](long double sum) { return static_cast<Nox32f>(sum); };
    if (width <= 2 * reach)
        return filterShortRow<Operator, long double>(src, row, width, ends, store);
    filterEnds<Operator, long double>(src, row, width, ends, store);
    operateRounded<Operator>(RowWindow<Nox32f>{src, 1}, row + reach, width - 2 * reach, elements);
}

Spread pixelSpread(const Nox32f *src, int width, const RowEnds<Nox32f> &ends) {
    const Spread pixels = spreadOf(src, width);
    return ends.borderType == noxBorderConstant ? join(pixels, spreadOf(&ends.value, 1)) : pixels;
}

template <class Operator>
Spread filterRow(const Nox32f *src, Nox32f *row, int width, const RowEnds<Nox32f> &ends) {
    const Spread elements = pixelSpread(src, width, ends);
    filterRow<Operator>(src, row, width, ends, elements);
    return spreadOfSums(elements, Operator::weight);
}

template <class Operator>
void filterColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread) {
    operateRounded<Operator>(linesOf<Operator::taps>(rows), dst, width, spread);
}

/// The operator's sum times a factor: a product that is exact in double, or else tested.
template <class Operator>
struct Mean {
    static constexpr Nox32f factor = Operator::taps == 3 ? 0.11111111F : 0.04F;
    static constexpr int taps = Operator::taps, weight = Operator::weight;
    template <class R, class... Rest>
    NOX_INLINE static R of(R a, R b, R c, Rest... rest) {
        return Operator::of(a, b, c, rest...) * R(factor);
    }
};

template <class Operator>
void meanColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread) {
    using Product = Mean<Operator>;
    const auto lines = linesOf<Operator::taps>(rows);
    // The factor has 24 bits, so the product of a sum of 24 bits is rounded once in single precision, and that of a sum
    // of 29 bits is exact in double.
    if (exactInFloat(spread, Operator::weight))
        operateInFloat<Product>(lines, dst, width);
    else if (sumsFit(29, spread, Operator::weight))
        operateInDouble<Product>(lines, dst, width);
    else
        operateTested<Product>(lines, dst, width, spread);
}

/// Adds to what dst holds, which is copied first: a doubtful sum is formed twice.
void addColumn(const Nox32f *const *rows, Nox32f *dst, int width, const Spread &spread) {
    Nox32f first[blockLength];
    for (int x = 0; x < width; x += blockLength) {
        const int length = std::min(blockLength, width - x);
        std::memcpy(first, dst + x, sizeof(Nox32f) * static_cast<std::size_t>(length));
        const Lines<Nox32f, 6> lines = {{rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x, rows[4] + x, first}};
        operateRounded<LaplacianAddOperator>(lines, dst + x, length, join(spread, spreadOf(first, length)));
    }
}

} // namespace

extern "C" {

NOX_FILTER_TAPS(Nox32f, 32f)

#define NOX_ROW_KERNEL(TAG, OPERATOR)                                                                                  \
    static Spread ownFilterRowBorderPipeline_32f_C1R_##TAG(const Nox32f *src, Nox32f *row, int width,                  \
                                                           const RowEnds<Nox32f> &ends) {                              \
        return filterRow<OPERATOR>(src, row, width, ends);                                                             \
    }
NOX_ROW_KERNELS(NOX_ROW_KERNEL)

static Spread ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian(const Nox32f *src, Nox32f *row, int width,
                                                                  const RowEnds<Nox32f> &ends) {
    const Spread elements = pixelSpread(src, width, ends);
    filterRow<LaplacianOuterOperator>(src, row, width, ends, elements);
    filterRow<LaplacianMiddleOperator>(src, row + ringRowLength(width), width, ends, elements);
    return spreadOfSums(elements, LaplacianMiddleOperator::weight);
}

#define NOX_COLUMN_KERNEL(TAG, OPERATOR)                                                                               \
    static void ownFilterColumnPipeline_32f_C1R_##TAG(const Nox32f *const *rows, Nox32f *dst, int width,               \
                                                      const Spread &spread) {                                          \
        filterColumn<OPERATOR>(rows, dst, width, spread);                                                              \
    }
NOX_COLUMN_KERNELS(NOX_COLUMN_KERNEL)

// The middle row's second half stands in for its first.
static void ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian(const Nox32f *const *rows, Nox32f *dst, int width,
                                                             const Spread &spread) {
    const Nox32f *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width, spread);
}

static void ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian(const Nox32f *const *rows, Nox32f *dst, int width,
                                                             const Spread &spread) {
    addColumn(rows, dst, width, spread);
}

static void ownFilterColumnPipeline_32f_C1R_3x3_kerAvr(const Nox32f *const *rows, Nox32f *dst, int width,
                                                       const Spread &spread) {
    meanColumn<MeanOperator3>(rows, dst, width, spread);
}
static void ownFilterColumnPipeline_32f_C1R_5x5_kerAvr(const Nox32f *const *rows, Nox32f *dst, int width,
                                                       const Spread &spread) {
    meanColumn<MeanOperator5>(rows, dst, width, spread);
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
}
