// What upright and tilted integral images share.
#pragma once

#include <cmath>
#include <type_traits>

#include "checks.h"
#include "noxtypes.h"
#include "rows.h"

namespace nox {

/// Stands for a table that a member does not have.
struct NoTable {};

template <class Q>
constexpr bool hasTable = !std::is_same_v<Q, NoTable>;

/// The checks of all builders: the tables hold `extra` columns more than the image.
template <class T, class Q>
NoxStatus checkTables(const Nox8u *src, int srcStep, const T *table, int tableStep, const Q *sqrTable, int sqrStep,
                      NoxiSize roi, int extra) {
    const long long columns = static_cast<long long>(roi.width) + extra;
    const bool squares = hasTable<Q>;
    return firstFailure(checkPointers(src, table), squares ? checkPointers(sqrTable) : noxStsNoError, checkSize(roi),
                        checkStep<Nox8u>(srcStep, roi.width), checkStep<T>(tableStep, columns),
                        squares ? checkStep<Q>(sqrStep, columns) : noxStsNoError, checkEvenSteps<T>(tableStep),
                        squares ? checkEvenSteps<Q>(sqrStep) : noxStsNoError);
}

/// The first columns + 1 elements of a row.
template <class T>
NOX_INLINE void fillRow(Element<T> *row, long long columns, T value) {
    for (long long x = 0; x <= columns; ++x)
        row[x] = value;
}

/// Whether every sum that a table of squares goes through is exact in double precision, and so in extended: all are
/// multiples of 1/1024, and at most a few times the offset and all squares together.
inline bool squaresExactInDouble(Nox64f offset, NoxiSize roi) {
    constexpr Nox64f largest = 9007199254740992.0 / 1024; // 2^53 / 2^10
    const Nox64f squares = 65025.0 * roi.width * roi.height;
    return std::floor(offset * 1024) == offset * 1024 && 8 * (std::fabs(offset) + squares) <= largest;
}

} // namespace nox
