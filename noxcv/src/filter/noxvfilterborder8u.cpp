// Row and column kernels of the fixed filters on 8-bit images, through rows of 16 bits.
#include <algorithm>

// Operators on vectors become part of the kernels: no call passes a vector.
#pragma GCC diagnostic ignored "-Wpsabi"

#include "noxvfilterborder.h"
#include "noxvfilterkernels.h"
#include "numerics.h"

#define NOX_KERNELS "filter/noxvfilterborder8u.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// The sums that the smallest vector holds: shorter rows are summed one by one.
constexpr int leastVector = 16;

template <class Operator>
void filterRow(const Nox8u *src, Nox16s *row, int width, const RowEnds<Nox8u> &ends, const Ahead &ahead) {
    constexpr int reach = Operator::taps / 2;
    const auto store = [](int sum) { return wrap<Nox16s>(sum); };
    const int inner = width - 2 * reach;
    if (inner < leastVector)
        return filterShortRow<Operator, int>(src, row, width, ends, store);
    filterEnds<Operator, int>(src, row, width, ends, store);
    asking(ahead, [&](const auto &next) { NOX_ON_TIER_FOR(inner, sumRow<Operator>(src, row + reach, inner, next)); });
}

template <class Operator, class Next>
void sumLines(const Lines<Nox16s, Operator::taps> &lines, Nox16s *sums, int width, const Next &ahead) {
    if (width >= leastVector)
        NOX_ON_TIER_FOR(width, sumColumn<Operator>(lines, sums, width, ahead));
    else
        for (int x = 0; x < width; ++x)
            elements(sums)[x] = wrap<Nox16s>(operate<Operator, int>(lines, x));
}

template <class Operator>
void filterColumn(const Nox16s *const *rows, Nox16s *dst, int width, const Ahead &ahead) {
    const auto lines = linesOf<Operator::taps>(rows);
    asking(ahead, [&](const auto &next) { sumLines<Operator>(lines, dst, width, next); });
}

NOX_TIERS void addColumn(const Nox16s *const *rows, Element<Nox16s> *dst, int width) {
    const auto lines = linesOf<5>(rows);
    for (int x = 0; x < width; ++x)
        dst[x] = wrap<Nox16s>(operate<SobelOperator5, int>(lines, x) + dst[x]);
}

template <bool Falls>
NOX_INLINE void divideSums(const Nox16s *sums, Nox8s *__restrict dst, int width, const Quotient<Nox32f> &by) {
    for (int x = 0; x < width; ++x)
        dst[x] = truncatedQuotient<Nox8s, Falls>(static_cast<Nox32f>(sums[x]), by);
}

NOX_TIERS void divideSums(const Nox16s *sums, Nox8s *dst, int width, const Quotient<Nox32f> &by) {
    const Quotient<Nox32f> local = by;
    if (local.falls)
        divideSums<true>(sums, dst, width, local);
    else
        divideSums<false>(sums, dst, width, local);
}

/// Sums in blocks, which are divided at once.
template <class Operator, class Next>
void divideLines(const Lines<Nox16s, Operator::taps> &lines, Nox8s *dst, int width, const Quotient<Nox32f> &by,
                 const Next &ahead) {
    alignas(32) Nox16s sums[blockLength];
    for (int x = 0; x < width; x += blockLength) {
        const int length = std::min(blockLength, width - x);
        sumLines<Operator>(lines.from(x), sums, length, ahead.from(x));
        if (length >= leastVector && !by.falls)
            NOX_ON_TIER_FOR(length, divideVectors(sums, dst + x, length, by.reciprocal));
        else
            divideSums(sums, dst + x, length, by);
    }
}

template <class Operator>
void filterColumn(const Nox16s *const *rows, Nox8s *dst, int width, const Quotient<Nox32f> &by, const Ahead &ahead) {
    const auto lines = linesOf<Operator::taps>(rows);
    asking(ahead, [&](const auto &next) { divideLines<Operator>(lines, dst, width, by, next); });
}

/// The mean of 9 or 25 pixels from rows of sums, at most 255 * 25: (7280 s + 36400) >> 16 = (7280 (s + 5)) >> 16, and
/// (2621 s) >> 16, both at most 255.
template <class Operator>
void meanColumn(const Nox16s *const *rows, Nox8u *dst, int width, const Ahead &ahead) {
    constexpr Nox32u factor = Operator::taps == 3 ? 7280 : 2621;
    constexpr Nox32u added = Operator::taps == 3 ? 5 : 0;
    const auto lines = linesOf<Operator::taps>(rows);
    if (width >= leastVector)
        asking(ahead, [&](const auto &next) {
            NOX_ON_TIER_FOR(width, meanOfRows<Operator, factor, added>(lines, dst, width, next));
        });
    else
        for (int x = 0; x < width; ++x) {
            const auto sum = static_cast<Nox16u>(operate<Operator, int>(lines, x) + static_cast<int>(added));
            dst[x] = static_cast<Nox8u>((sum * factor) >> 16);
        }
}

} // namespace

extern "C" {

NOX_FILTER_TAPS(Nox16s, 16s)

#define NOX_ROW_KERNEL(TAG, OPERATOR)                                                                                  \
    static void ownFilterRowBorderPipeline_8u16s_C1R_##TAG(const Nox8u *src, Nox16s *row, int width,                   \
                                                           const RowEnds<Nox8u> &ends, const Ahead &ahead) {           \
        filterRow<OPERATOR>(src, row, width, ends, ahead);                                                             \
    }
NOX_ROW_KERNELS(NOX_ROW_KERNEL)

static void ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian(const Nox8u *src, Nox16s *row, int width,
                                                                  const RowEnds<Nox8u> &ends, const Ahead &ahead) {
    filterRow<LaplacianOuterOperator>(src, row, width, ends, ahead);
    filterRow<LaplacianMiddleOperator>(src, row + ringRowLength(width), width, ends, ahead);
}

#define NOX_COLUMN_KERNEL(TAG, OPERATOR)                                                                               \
    static void ownFilterColumnPipeline_16s_C1R_##TAG(const Nox16s *const *rows, Nox16s *dst, int width,               \
                                                      const Ahead &ahead) {                                            \
        filterColumn<OPERATOR>(rows, dst, width, ahead);                                                               \
    }                                                                                                                  \
    static void ownFilterColumnPipeline_16s8s_C1R_##TAG(const Nox16s *const *rows, Nox8s *dst, int width,              \
                                                        const Quotient<Nox32f> &by, const Ahead &ahead) {              \
        filterColumn<OPERATOR>(rows, dst, width, by, ahead);                                                           \
    }
NOX_COLUMN_KERNELS(NOX_COLUMN_KERNEL)

// The middle row's second half stands in for its first.
static void ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian(const Nox16s *const *rows, Nox16s *dst, int width,
                                                             const Ahead &ahead) {
    const Nox16s *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width, ahead);
}
static void ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian(const Nox16s *const *rows, Nox8s *dst, int width,
                                                               const Quotient<Nox32f> &by, const Ahead &ahead) {
    const Nox16s *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width, by, ahead);
}

static void ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian(const Nox16s *const *rows, Nox16s *dst, int width,
                                                             const Ahead & /*ahead*/) {
    addColumn(rows, dst, width);
}

static void ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr(const Nox16s *const *rows, Nox8u *dst, int width,
                                                         const Ahead &ahead) {
    meanColumn<MeanOperator3>(rows, dst, width, ahead);
}
static void ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr(const Nox16s *const *rows, Nox8u *dst, int width,
                                                         const Ahead &ahead) {
    meanColumn<MeanOperator5>(rows, dst, width, ahead);
}

#define NOX_ROW(TAG) ownFilterRowBorderPipeline_8u16s_C1R_##TAG
const RowKernel8u16s owntabRow_8u16s[11] = {NOX_ROW(3x3_kerDx),    NOX_ROW(3x3_kerScharr),   NOX_ROW(3x3_kerDxNeg),
                                            NOX_ROW(5x5_kerDxNeg), NOX_ROW(3x3_kerDx2),      NOX_ROW(5x5_kerDx2),
                                            NOX_ROW(3x3_kerSobel), NOX_ROW(5x5_kerSobel),    NOX_ROW(3x3_kerAvr),
                                            NOX_ROW(5x5_kerAvr),   NOX_ROW(3x3_kerLaplacian)};

#define NOX_COLUMN(TAG) ownFilterColumnPipeline_16s_C1R_##TAG
const ColumnKernel16s owntabColumn_8u16s[13] = {
    NOX_COLUMN(3x3_kerScharr),   NOX_COLUMN(3x3_kerDx),        NOX_COLUMN(3x3_kerSobel),
    NOX_COLUMN(5x5_kerSobel),    NOX_COLUMN(5x5_kerDx),        NOX_COLUMN(3x3_kerDx2),
    NOX_COLUMN(5x5_kerDx2),      NOX_COLUMN(3x3_kerLaplacian), NOX_COLUMN(5x5_kerLaplacian),
    NOX_COLUMN(3x3_kerSobelNeg), NOX_COLUMN(5x5_kerSobelNeg),  NOX_COLUMN(3x3_kerSobelNeg),
    NOX_COLUMN(5x5_kerSobelNeg)};

#define NOX_COLUMN_8S(TAG) ownFilterColumnPipeline_16s8s_C1R_##TAG
const ColumnKernel16s8s owntabColumn_8u8s[13] = {
    NOX_COLUMN_8S(3x3_kerScharr),   NOX_COLUMN_8S(3x3_kerDx),        NOX_COLUMN_8S(3x3_kerSobel),
    NOX_COLUMN_8S(5x5_kerSobel),    NOX_COLUMN_8S(5x5_kerDx),        NOX_COLUMN_8S(3x3_kerDx2),
    NOX_COLUMN_8S(5x5_kerDx2),      NOX_COLUMN_8S(3x3_kerLaplacian), NOX_COLUMN_8S(3x3_kerLaplacian),
    NOX_COLUMN_8S(3x3_kerSobelNeg), NOX_COLUMN_8S(5x5_kerSobelNeg),  NOX_COLUMN_8S(3x3_kerSobelNeg),
    NOX_COLUMN_8S(5x5_kerSobelNeg)};

const ColumnKernel16s8u owntabColumn_8u[2] = {ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr,
                                              ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr};
}
