// Upright integral images: sums of pixels, and of their squares, above and left of each position.
#include "noxvintegral.h"

#include "noxcv/detection.h"
#include "tiers.h"

using namespace nox;

#define NOX_KERNELS "detection/noxvintegralkernels.inc"
#include "noxveachtier.h"

namespace {

/// The sums that are the same wherever they begin: a first row and a first column of one value.
template <class T>
void startTable(Rows<T> table, NoxiSize roi, T offset) {
    fillRow<T>(table[0], roi.width, offset);
    for (int y = 1; y <= roi.height; ++y)
        table[y][0] = offset;
}

template <class T, class Q>
void integralRows(Rows<const Nox8u> src, Rows<T> table, Rows<Q> sqrTable, NoxiSize roi) {
    NOX_ON_TIER(integralRows<T, Q>(src, table, sqrTable, roi));
}

template <class T>
void plainRows(Rows<const Nox8u> src, Rows<T> table, NoxiSize roi) {
    // Without a table of squares its rows are nowhere used; they only need an address.
    integralRows<T, NoTable>(src, table, {reinterpret_cast<NoTable *>(table.base), 0}, roi);
}

/// Squares for offsets that are no short binary fraction, or huge: each sum rounds twice, to extended and to double.
void extendedSquareRows(Rows<const Nox8u> src, Rows<Nox64f> table, NoxiSize roi) {
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *s = src[y];
        const Element<Nox64f> *above = table[y] + 1;
        Element<Nox64f> *out = table[y + 1] + 1;
        long double running = 0;
        for (int x = 0; x < roi.width; ++x) {
            running += s[x] * s[x];
            out[x] = static_cast<Nox64f>(above[x] + running);
        }
    }
}

template <class T, class Q>
void squareRows(Rows<const Nox8u> src, Rows<T> table, Rows<Q> sqrTable, NoxiSize roi, [[maybe_unused]] Q sqrOffset) {
    if constexpr (std::is_same_v<Q, Nox64f>) {
        if (!squaresExactInDouble(sqrOffset, roi)) {
            plainRows(src, table, roi);
            extendedSquareRows(src, sqrTable, roi);
            return;
        }
    }
    integralRows<T, Q>(src, table, sqrTable, roi);
}

template <class T>
NoxStatus integral(const Nox8u *src, int srcStep, T *table, int tableStep, NoxiSize roi, T offset) {
    const NoxStatus status = checkTables<T, NoTable>(src, srcStep, table, tableStep, nullptr, 0, roi, 1);
    if (status != noxStsNoError)
        return status;
    const Rows<T> sums{table, tableStep};
    startTable(sums, roi, offset);
    plainRows(Rows<const Nox8u>{src, srcStep}, sums, roi);
    return noxStsNoError;
}

template <class T, class Q>
NoxStatus sqrIntegral(const Nox8u *src, int srcStep, T *table, int tableStep, Q *sqrTable, int sqrStep, NoxiSize roi,
                      T offset, Q sqrOffset) {
    const NoxStatus status = checkTables(src, srcStep, table, tableStep, sqrTable, sqrStep, roi, 1);
    if (status != noxStsNoError)
        return status;
    const Rows<T> sums{table, tableStep};
    const Rows<Q> squares{sqrTable, sqrStep};
    startTable(sums, roi, offset);
    startTable(squares, roi, sqrOffset);
    squareRows(Rows<const Nox8u>{src, srcStep}, sums, squares, roi, sqrOffset);
    return noxStsNoError;
}

} // namespace

// One line per member.
#define NOX_INTEGRAL(FUNCTION, TYPE)                                                                                   \
    NoxStatus FUNCTION(const Nox8u *src, int srcStep, TYPE *table, int tableStep, NoxiSize roi, TYPE offset) {         \
        return integral(src, srcStep, table, tableStep, roi, offset);                                                  \
    }
#define NOX_SQRINTEGRAL(FUNCTION, TYPE, SQUARE)                                                                        \
    NoxStatus FUNCTION(const Nox8u *src, int srcStep, TYPE *table, int tableStep, SQUARE *sqrTable, int sqrStep,       \
                       NoxiSize roi, TYPE offset, SQUARE sqrOffset) {                                                  \
        return sqrIntegral(src, srcStep, table, tableStep, sqrTable, sqrStep, roi, offset, sqrOffset);                 \
    }

NOX_INTEGRAL(noxiIntegral_8u32s_C1R, Nox32s)
NOX_INTEGRAL(noxiIntegral_8u32f_C1R, Nox32f)
NOX_SQRINTEGRAL(noxiSqrIntegral_8u32s64f_C1R, Nox32s, Nox64f)
NOX_SQRINTEGRAL(noxiSqrIntegral_8u32f64f_C1R, Nox32f, Nox64f)
NOX_SQRINTEGRAL(noxiSqrIntegral_8u32s_C1R, Nox32s, Nox32s)
