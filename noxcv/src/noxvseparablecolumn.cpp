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

/// A strip of single-precision columns whose rows are converted to double once, when they enter the window: a ring of
/// rows with their spreads.
class WideStrip {
public:
    static constexpr int mostRows = 64, elements = 4096;

    /// Columns of a strip under a kernel of at most mostRows taps.
    static int widthFor(int kernelSize) { return elements / kernelSize / vectorLength * vectorLength; }

    explicit WideStrip(int kernelSize) : kernelSize_(kernelSize), width_(widthFor(kernelSize)) {}

    /// Row y of those pushed takes the place of the oldest.
    void push(const Nox32f *row, int count, int y) {
        const int slot = y % kernelSize_;
        spreads_[slot] = widen(row, count, elements_ + slot * width_);
        lines_[slot] = lines_[slot + kernelSize_] = elements_ + slot * width_;
    }

    /// The window that ends with row y.
    ColumnWindow<Nox64f> window(int y) const { return {lines_ + (y + 1) % kernelSize_, 0}; }
    Spread spread() const {
        Spread all;
        for (int slot = 0; slot < kernelSize_; ++slot)
            all = join(all, spreads_[slot]);
        return all;
    }

private:
    int kernelSize_, width_;
    alignas(32) Nox64f elements_[elements];
    Spread spreads_[mostRows];
    const Nox64f *lines_[2 * mostRows];
};

/// Rows of a strip are too short for the processor to foresee the next one.
void prefetch(const Nox32f *row, int count) {
    constexpr int cacheLine = 64 / sizeof(Nox32f);
    for (int x = 0; x < count; x += cacheLine)
        __builtin_prefetch(row + x);
}

void filterStrip(const RoundedRule &rule, const Nox32f *const *rows, Rows<Nox32f> dst, int first, int width, int height,
                 int kernelSize) {
    WideStrip strip(kernelSize);
    for (int y = 0; y < kernelSize - 1; ++y)
        strip.push(rows[y] + first, width, y);
    for (int y = 0; y < height; ++y) {
        const int last = y + kernelSize - 1;
        if (y + 1 < height)
            prefetch(rows[last + 1] + first, width);
        strip.push(rows[last] + first, width, last);
        const Spread spread = strip.spread();
        if (rule.fitsFloat(spread))
            filterLine(rule, ColumnWindow<Nox32f>{rows + y, first}, dst[y] + first, width, spread);
        else
            filterLine(rule, strip.window(last), dst[y] + first, width, spread);
    }
}

void filterColumns(const RoundedRule &rule, const Nox32f *const *rows, Rows<Nox32f> dst, int width, int height,
                   int kernelSize) {
    if (kernelSize > WideStrip::mostRows) {
        // The conversion is small beside so many taps; one spread serves all rows.
        Spread spread;
        for (int y = 0; y < height + kernelSize - 1; ++y)
            spread = join(spread, spreadOf(rows[y], width));
        for (int y = 0; y < height; ++y)
            filterLine(rule, ColumnWindow<Nox32f>{rows + y, 0}, dst[y], width, spread);
        return;
    }
    const int stripWidth = WideStrip::widthFor(kernelSize);
    for (int x = 0; x < width; x += stripWidth)
        filterStrip(rule, rows, dst, x, std::min(stripWidth, width - x), height, kernelSize);
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
