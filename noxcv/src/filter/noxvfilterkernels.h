// What the fixed filters of 8-bit and of float images share: the tables of taps, the kernels by their tags, and the
// pixels near the ends of a row.
#pragma once

#include "borders.h"
#include "noxtypes.h"
#include "noxvfilterborder.h"
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

/// A pixel of a row, or the one that stands for it outside.
template <class T>
NOX_INLINE T pixelAt(const T *src, int position, int width, const RowEnds<T> &ends) {
    if (position >= 0 && position < width)
        return elements(src)[position];
    return ends.borderType == noxBorderConstant ? ends.value
                                                : T{elements(src)[borderIndex(position, width, ends.borderType)]};
}

/// Outputs of a row that may be shorter than the window, in the arithmetic R; store makes a result of a sum.
template <class Operator, class R, class T, class Out, class Store>
void filterShortRow(const T *src, Out *row, int width, const RowEnds<T> &ends, const Store &store) {
    constexpr int taps = Operator::taps;
    for (int x = 0; x < width; ++x)
        row[x] = store(
            operateOn<Operator>([&](int j) { return static_cast<R>(pixelAt(src, x + j - taps / 2, width, ends)); }));
}

/// The first and the last taps / 2 outputs of a row that is longer than that.
template <class Operator, class R, class T, class Out, class Store>
NOX_INLINE void filterEnds(const T *src, Out *row, int width, const RowEnds<T> &ends, const Store &store) {
    constexpr int taps = Operator::taps, reach = taps / 2;
    const T *left = src, *right = src + width - 2 * reach;
    // The pixels under the windows at one end: those outside, then those inside, or the other way round.
    T first[3 * reach], last[3 * reach];
    for (int i = 0; i < reach; ++i) {
        first[i] = ends.places[i] < 0 ? ends.value : T{elements(src)[ends.places[i]]};
        last[2 * reach + i] = ends.places[reach + i] < 0 ? ends.value : T{elements(src)[ends.places[reach + i]]};
    }
    for (int i = 0; i < 2 * reach; ++i) {
        first[reach + i] = elements(left)[i];
        last[i] = elements(right)[i];
    }
    for (int i = 0; i < reach; ++i) {
        row[i] = store(operate<Operator, R>(RowWindow<T>{first, 1}, i));
        row[width - reach + i] = store(operate<Operator, R>(RowWindow<T>{last, 1}, i));
    }
}

} // namespace nox
