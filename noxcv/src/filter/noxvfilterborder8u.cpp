// Row and column kernels of the fixed filters on 8-bit images, through rows of 16 bits.
#include <algorithm>

#include "noxvfilterborder.h"
#include "noxvfilterkernels.h"
#include "numerics.h"

using namespace nox;

namespace {

/// Outputs near the ends of a row.
template <class Operator>
NOX_INLINE void filterEnd(const Nox8u *src, Nox16s *row, int width, int first, int count, int borderType,
                          Nox8u borderValue) {
    filterNearEnd<Operator, int>(src, row, width, first, count, borderType, borderValue,
                                 [](int sum) NOX_INLINE_LAMBDA { return wrap<Nox16s>(sum); });
}

template <class Operator>
NOX_TIERS void filterRow(const Nox8u *src, Nox16s *__restrict row, int width, int borderType, Nox8u borderValue) {
    constexpr int reach = Operator::taps / 2;
    const int inner = std::max(0, width - 2 * reach), left = inner > 0 ? reach : width;
    filterEnd<Operator>(src, row, width, 0, left, borderType, borderValue);
    const RowWindow<Nox8u> window = {src, 1};
    for (int x = 0; x < inner; ++x)
        row[reach + x] = wrap<Nox16s>(operate<Operator, int>(window, x));
    filterEnd<Operator>(src, row, width, left + inner, width - left - inner, borderType, borderValue);
}

template <class Operator>
NOX_TIERS void filterColumn(const Nox16s *const *rows, Element<Nox16s> *__restrict dst, int width) {
    const auto lines = linesOf<Operator::taps>(rows);
    for (int x = 0; x < width; ++x)
        dst[x] = wrap<Nox16s>(operate<Operator, int>(lines, x));
}

NOX_TIERS void addColumn(const Nox16s *const *rows, Element<Nox16s> *dst, int width) {
    const auto lines = linesOf<5>(rows);
    for (int x = 0; x < width; ++x)
        dst[x] = wrap<Nox16s>(operate<SobelOperator5, int>(lines, x) + dst[x]);
}

template <bool Falls, class Operator>
NOX_INLINE void divideColumn(const Nox16s *const *rows, Nox8s *__restrict dst, int width, const Quotient<Nox32f> &by) {
    const auto lines = linesOf<Operator::taps>(rows);
    for (int x = 0; x < width; ++x) {
        const Nox16s sum = wrap<Nox16s>(operate<Operator, int>(lines, x));
        dst[x] = truncatedQuotient<Nox8s, Falls>(static_cast<Nox32f>(sum), by);
    }
}

template <class Operator>
NOX_TIERS void filterColumn(const Nox16s *const *rows, Nox8s *dst, int width, const Quotient<Nox32f> &by) {
    const Quotient<Nox32f> local = by;
    if (local.falls)
        divideColumn<true, Operator>(rows, dst, width, local);
    else
        divideColumn<false, Operator>(rows, dst, width, local);
}

/// The mean of 9 or 25 pixels from rows of sums, at most 255 * 25: (7280 s + 36400) >> 16 = (7280 (s + 5)) >> 16, and
/// (2621 s) >> 16, both at most 255.
template <class Operator>
NOX_TIERS void meanColumn(const Nox16s *const *rows, Nox8u *__restrict dst, int width) {
    constexpr Nox32u factor = Operator::taps == 3 ? 7280 : 2621;
    constexpr int added = Operator::taps == 3 ? 5 : 0;
    const auto lines = linesOf<Operator::taps>(rows);
    for (int first = 0; first < width; first += blockLength) {
        // The sums rest in memory, since otherwise the compiler adds and multiplies in lanes of 32 bits.
        alignas(32) Nox16u sums[blockLength];
        const int length = width - first < blockLength ? width - first : blockLength;
        for (int x = 0; x < length; ++x)
            sums[x] = static_cast<Nox16u>(operate<Operator, int>(lines, first + x) + added);
        for (int x = 0; x < length; ++x) {
            const auto high = static_cast<Nox16u>((sums[x] * factor) >> 16);
            dst[first + x] = static_cast<Nox8u>(high);
        }
    }
}

} // namespace

extern "C" {

NOX_FILTER_TAPS(Nox16s, 16s)

#define NOX_ROW_KERNEL(TAG, OPERATOR)                                                                                  \
    static void ownFilterRowBorderPipeline_8u16s_C1R_##TAG(const Nox8u *src, Nox16s *row, int width, int borderType,   \
                                                           Nox8u borderValue) {                                        \
        filterRow<OPERATOR>(src, row, width, borderType, borderValue);                                                 \
    }
NOX_ROW_KERNELS(NOX_ROW_KERNEL)

static void ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian(const Nox8u *src, Nox16s *row, int width,
                                                                  int borderType, Nox8u borderValue) {
    filterRow<LaplacianOuterOperator>(src, row, width, borderType, borderValue);
    filterRow<LaplacianMiddleOperator>(src, row + ringRowLength(width), width, borderType, borderValue);
}

#define NOX_COLUMN_KERNEL(TAG, OPERATOR)                                                                               \
    static void ownFilterColumnPipeline_16s_C1R_##TAG(const Nox16s *const *rows, Nox16s *dst, int width) {             \
        filterColumn<OPERATOR>(rows, dst, width);                                                                      \
    }                                                                                                                  \
    static void ownFilterColumnPipeline_16s8s_C1R_##TAG(const Nox16s *const *rows, Nox8s *dst, int width,              \
                                                        const Quotient<Nox32f> &by) {                                  \
        filterColumn<OPERATOR>(rows, dst, width, by);                                                                  \
    }
NOX_COLUMN_KERNELS(NOX_COLUMN_KERNEL)

// The middle row's second half stands in for its first.
static void ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian(const Nox16s *const *rows, Nox16s *dst, int width) {
    const Nox16s *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width);
}
static void ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian(const Nox16s *const *rows, Nox8s *dst, int width,
                                                               const Quotient<Nox32f> &by) {
    const Nox16s *const halves[] = {rows[0], rows[1] + ringRowLength(width), rows[2]};
    filterColumn<LaplacianColumnOperator>(halves, dst, width, by);
}

static void ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian(const Nox16s *const *rows, Nox16s *dst, int width) {
    addColumn(rows, dst, width);
}

static void ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr(const Nox16s *const *rows, Nox8u *dst, int width) {
    meanColumn<MeanOperator3>(rows, dst, width);
}
static void ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr(const Nox16s *const *rows, Nox8u *dst, int width) {
    meanColumn<MeanOperator5>(rows, dst, width);
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
