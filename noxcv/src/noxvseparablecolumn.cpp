// Column filters from rows given by their pointers: the second stage of a separable filter.
#include <algorithm>

#include "checks.h"
#include "noxcv/filter.h"
#include "noxvseparablesize.h"
#include "noxvseparablesums.h"
#include "rows.h"

using namespace nox;

namespace {

template <class Rule, class T>
void filterColumns(const Rule &rule, const T *const *rows, Rows<typename Rule::Output> dst, int width, int height,
                   int /*kernelSize*/) {
    for (int y = 0; y < height; ++y)
        filterLine(rule, ColumnWindow<T>{rows + y, 0}, dst[y], width);
}

/// Single precision goes down strips of columns, so that each row's spread is found once: when the row enters the
/// window. It is forgotten at the end of a run of rows only.
void filterColumns(const RoundedRule &rule, const Nox32f *const *rows, Rows<Nox32f> dst, int width, int height,
                   int kernelSize) {
    constexpr int stripWidth = 1024, runLength = 64;
    for (int x = 0; x < width; x += stripWidth) {
        const int count = std::min(stripWidth, width - x);
        Spread spread;
        for (int y = 0; y < height; ++y) {
            int entering = kernelSize - 1;
            if (y % runLength == 0) {
                spread = {};
                entering = 0;
            }
            for (; entering < kernelSize; ++entering)
                spread = join(spread, spreadOf(rows[y + entering] + x, count));
            filterLine(rule, ColumnWindow<Nox32f>{rows + y, x}, dst[y] + x, count, spread);
        }
    }
}

template <class Rule, class T>
NoxStatus runColumns(const Rule &rule, const T *const *rows, typename Rule::Output *dst, int dstStep, int width,
                     NoxiSize roi, int kernelSize, PipelineRule parallel) {
    const Rows<typename Rule::Output> all = {dst, dstStep};
    if (!pipelineGoesParallel(roi, kernelSize, parallel))
        filterColumns(rule, rows, all, width, roi.height, kernelSize);
    else
        parallelSlices(roi.height, sliceCount(), [&](const Slice &slice) {
            filterColumns(rule, rows + slice.first, all.from(slice.first), width, slice.count, kernelSize);
        });
    return noxStsNoError;
}

template <class T>
NoxStatus checkRowPointers(const T *const *rows, NoxiSize roi, int kernelSize) {
    const long long count = static_cast<long long>(roi.height) + kernelSize - 1;
    return require(std::find(rows, rows + count, nullptr) == rows + count, noxStsNullPointer);
}

template <class T, class Out, class Tap>
NoxStatus checkColumns(const T *const *rows, const Out *dst, int dstStep, NoxiSize roi, int channels, const Tap *kernel,
                       int kernelSize, int divisor, const Nox8u *buffer) {
    const NoxStatus status =
        firstFailure(checkPointers(rows, dst, kernel), checkSize(roi), checkLength(kernelSize),
                     checkStep<Out>(dstStep, static_cast<long long>(roi.width) * channels),
                     checkEvenSteps<Out>(dstStep), checkPointers(buffer), require(divisor != 0, noxStsBadArgument));
    return status != noxStsNoError ? status : checkRowPointers(rows, roi, kernelSize);
}

} // namespace

// One line per member. Three channels are one of three times the width.
#define NOX_COLUMNS_SIZE(TAG, CHANNELS, PER_TAP, REST)                                                                 \
    NoxStatus noxiFilterColumnPipelineGetBufferSize_##TAG##_C##CHANNELS##R(NoxiSize roi, int kernelSize, int *size) {  \
        return pipelineBufferSize(roi, kernelSize, size, {PER_TAP, REST});                                             \
    }

#define NOX_COLUMNS(OUT, TAG, CHANNELS, PER_TAP, RULE)                                                                 \
    NOX_COLUMNS_SIZE(TAG, CHANNELS, PER_TAP, 32)                                                                       \
    NoxStatus noxiFilterColumnPipeline_##TAG##_C##CHANNELS##R(const Nox16s **rows, OUT *dst, int dstStep,              \
                                                              NoxiSize roi, const Nox16s *kernel, int kernelSize,      \
                                                              int divisor, Nox8u *buffer) {                            \
        const NoxStatus status = checkColumns(rows, dst, dstStep, roi, CHANNELS, kernel, kernelSize, divisor, buffer); \
        return status != noxStsNoError ? status                                                                        \
                                       : runColumns(RULE(kernel, kernelSize, divisor), rows, dst, dstStep,             \
                                                    CHANNELS * roi.width, roi, kernelSize, PipelineRule::separable);   \
    }

#define NOX_COLUMNS_32F(CHANNELS)                                                                                      \
    NOX_COLUMNS_SIZE(32f, CHANNELS, 0, 0)                                                                              \
    NoxStatus noxiFilterColumnPipeline_32f_C##CHANNELS##R(const Nox32f **rows, Nox32f *dst, int dstStep, NoxiSize roi, \
                                                          const Nox32f *kernel, int kernelSize, Nox8u *buffer) {       \
        const NoxStatus status = checkColumns(rows, dst, dstStep, roi, CHANNELS, kernel, kernelSize, 1, buffer);       \
        return status != noxStsNoError ? status                                                                        \
                                       : runColumns(RoundedRule(kernel, kernelSize), rows, dst, dstStep,               \
                                                    CHANNELS * roi.width, roi, kernelSize, PipelineRule::always);      \
    }

using Quotient16s = QuotientRule<Nox16s, Nox16s>;
using Quotient8u = QuotientRule<Nox16s, Nox8u>;
using Quotient8s = QuotientRule<Nox16s, Nox8s>;

NOX_COLUMNS(Nox16s, 16s, 1, 4, Quotient16s)
NOX_COLUMNS(Nox16s, 16s, 3, 4, Quotient16s)
NOX_COLUMNS(Nox8u, 16s8u, 1, 4, Quotient8u)
NOX_COLUMNS(Nox8u, 16s8u, 3, 4, Quotient8u)
NOX_COLUMNS(Nox8s, 16s8s, 1, 4, Quotient8s)
NOX_COLUMNS(Nox8s, 16s8s, 3, 4, Quotient8s)
NOX_COLUMNS(Nox16s, Low_16s, 1, 0, LowQuotientRule)
NOX_COLUMNS(Nox16s, Low_16s, 3, 0, LowQuotientRule)
NOX_COLUMNS_32F(1)
NOX_COLUMNS_32F(3)
