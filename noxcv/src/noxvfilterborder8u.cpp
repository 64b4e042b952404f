// Row and column kernels of the fixed filters on 8-bit images, through rows of 16 bits.
#include "borders.h"
#include "noxvfilterborder.h"
#include "noxvfilteroperators.h"
#include "noxvseparable.h"
#include "numerics.h"

using namespace nox;

namespace {

/// Outputs first to first + count - 1 near the ends of a row.
template <class Operator>
NOX_INLINE void filterEnd(const Nox8u *src, Nox16s *row, int width, int first, int count, int borderType,
                          Nox8u borderValue) {
    constexpr int taps = Operator::taps;
    for (int x = first; x < first + count; ++x) {
        Nox8u pixels[taps];
        for (int j = 0; j < taps; ++j) {
            const int position = x + j - taps / 2;
            const bool constant = borderType == noxBorderConstant && (position < 0 || position >= width);
            pixels[j] = constant ? borderValue : src[borderIndex(position, width, borderType)];
        }
        row[x] = wrap<Nox16s>(operate<Operator, int>(RowWindow<Nox8u>{pixels, 1}, 0));
    }
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
NOX_TIERS void filterColumn(const Nox16s *const *rows, Nox16s *__restrict dst, int width) {
    const auto lines = linesOf<Operator::taps>(rows);
    for (int x = 0; x < width; ++x)
        dst[x] = wrap<Nox16s>(operate<Operator, int>(lines, x));
}

NOX_TIERS void addColumn(const Nox16s *const *rows, Nox16s *dst, int width) {
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

const Nox16s kerScharr_3_16s[3] = {3, 10, 3}, kerDx_3_16s[3] = {-1, 0, 1}, kerDx_5_16s[5] = {-1, -2, 0, 2, 1},
             kerDxNeg_3_16s[3] = {1, 0, -1}, kerDxNeg_5_16s[5] = {1, 2, 0, -2, -1}, kerD2x_3_16s[3] = {1, -2, 1},
             kerD2x_5_16s[5] = {1, 0, -2, 0, 1}, kerSobel_3_16s[3] = {1, 2, 1}, kerSobel_5_16s[5] = {1, 4, 6, 4, 1},
             kerAvr_3_16s[3] = {1, 1, 1}, kerAvr_5_16s[5] = {1, 1, 1, 1, 1}, kerLap_3_16s[3] = {1, 0, 1};

// One line per kernel: tag and operator.
#define NOX_ROW_KERNEL(TAG, OPERATOR)                                                                                  \
    static void ownFilterRowBorderPipeline_8u16s_C1R_##TAG(const Nox8u *src, Nox16s *row, int width, int borderType,   \
                                                           Nox8u borderValue) {                                        \
        filterRow<OPERATOR>(src, row, width, borderType, borderValue);                                                 \
    }
NOX_ROW_KERNEL(3x3_kerDx, DxOperator3)
NOX_ROW_KERNEL(3x3_kerScharr, ScharrOperator)
NOX_ROW_KERNEL(3x3_kerDxNeg, DxNegOperator3)
NOX_ROW_KERNEL(5x5_kerDxNeg, DxNegOperator5)
NOX_ROW_KERNEL(3x3_kerDx2, Dx2Operator3)
NOX_ROW_KERNEL(5x5_kerDx2, Dx2Operator5)
NOX_ROW_KERNEL(3x3_kerSobel, SobelOperator3)
NOX_ROW_KERNEL(5x5_kerSobel, SobelOperator5)
NOX_ROW_KERNEL(3x3_kerAvr, MeanOperator3)
NOX_ROW_KERNEL(5x5_kerAvr, MeanOperator5)

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
NOX_COLUMN_KERNEL(3x3_kerScharr, ScharrOperator)
NOX_COLUMN_KERNEL(3x3_kerDx, DxOperator3)
NOX_COLUMN_KERNEL(3x3_kerSobel, SobelOperator3)
NOX_COLUMN_KERNEL(5x5_kerSobel, SobelOperator5)
NOX_COLUMN_KERNEL(5x5_kerDx, DxOperator5)
NOX_COLUMN_KERNEL(3x3_kerDx2, Dx2Operator3)
NOX_COLUMN_KERNEL(5x5_kerDx2, Dx2Operator5)
NOX_COLUMN_KERNEL(3x3_kerSobelNeg, Negative<SobelOperator3>)
NOX_COLUMN_KERNEL(5x5_kerSobelNeg, Negative<SobelOperator5>)

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
