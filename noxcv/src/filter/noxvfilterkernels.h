// What the fixed filters of 8-bit and of float images share: the tables of taps, the kernels by their tags, and the
// pixels near the ends of a row.
#pragma once

#include "borders.h"
#include "noxtypes.h"
#include "noxvfilteroperators.h"
#include "noxvseparable.h"

/// The taps in one type, for the rows and columns that the constant border stands for.
#define NOX_FILTER_TAPS(TYPE, TAG)                                                                                     \
    const TYPE kerScharr_3_##TAG[3] = {3, 10, 3}, kerDx_3_##TAG[3] = {-1, 0, 1}, kerDx_5_##TAG[5] = {-1, -2, 0, 2, 1}, \
               kerDxNeg_3_##TAG[3] = {1, 0, -1}, kerDxNeg_5_##TAG[5] = {1, 2, 0, -2, -1},                              \
               kerD2x_3_##TAG[3] = {1, -2, 1}, kerD2x_5_##TAG[5] = {1, 0, -2, 0, 1}, kerSobel_3_##TAG[3] = {1, 2, 1},  \
               kerSobel_5_##TAG[5] = {1, 4, 6, 4, 1}, kerAvr_3_##TAG[3] = {1, 1, 1},                                   \
               kerAvr_5_##TAG[5] = {1, 1, 1, 1, 1}, kerLap_3_##TAG[3] = {1, 0, 1};

/// KERNEL(tag, operator) for each row kernel but the 3x3 Laplacian's, in the order of the tables.
#define NOX_ROW_KERNELS(KERNEL)                                                                                        \
    KERNEL(3x3_kerDx, DxOperator3)                                                                                     \
    KERNEL(3x3_kerScharr, ScharrOperator)                                                                              \
    KERNEL(3x3_kerDxNeg, DxNegOperator3)                                                                               \
    KERNEL(5x5_kerDxNeg, DxNegOperator5)                                                                               \
    KERNEL(3x3_kerDx2, Dx2Operator3)                                                                                   \
    KERNEL(5x5_kerDx2, Dx2Operator5)                                                                                   \
    KERNEL(3x3_kerSobel, SobelOperator3)                                                                               \
    KERNEL(5x5_kerSobel, SobelOperator5)                                                                               \
    KERNEL(3x3_kerAvr, MeanOperator3)                                                                                  \
    KERNEL(5x5_kerAvr, MeanOperator5)

/// KERNEL(tag, operator) for each column kernel of one operator.
#define NOX_COLUMN_KERNELS(KERNEL)                                                                                     \
    KERNEL(3x3_kerScharr, ScharrOperator)                                                                              \
    KERNEL(3x3_kerDx, DxOperator3)                                                                                     \
    KERNEL(3x3_kerSobel, SobelOperator3)                                                                               \
    KERNEL(5x5_kerSobel, SobelOperator5)                                                                               \
    KERNEL(5x5_kerDx, DxOperator5)                                                                                     \
    KERNEL(3x3_kerDx2, Dx2Operator3)                                                                                   \
    KERNEL(5x5_kerDx2, Dx2Operator5)                                                                                   \
    KERNEL(3x3_kerSobelNeg, Negative<SobelOperator3>)                                                                  \
    KERNEL(5x5_kerSobelNeg, Negative<SobelOperator5>)

namespace nox {

/// Outputs first to first + count - 1 near the ends of a row, in the arithmetic R; store makes a result of a sum.
template <class Operator, class R, class T, class Out, class Store>
NOX_INLINE void filterNearEnd(const T *src, Out *row, int width, int first, int count, int borderType, T borderValue,
                              const Store &store) {
    constexpr int taps = Operator::taps;
    for (int x = first; x < first + count; ++x) {
        T pixels[taps];
        for (int j = 0; j < taps; ++j) {
            const int position = x + j - taps / 2;
            const bool constant = borderType == noxBorderConstant && (position < 0 || position >= width);
            pixels[j] = constant ? borderValue : elements(src)[borderIndex(position, width, borderType)];
        }
        row[x] = store(operate<Operator, R>(RowWindow<T>{pixels, 1}, 0));
    }
}

} // namespace nox
