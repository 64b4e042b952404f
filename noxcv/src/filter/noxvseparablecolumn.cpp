// Column filters from rows given by their pointers: the second stage of a separable filter.
#include <climits>

#include "ahead.h"
#include "checks.h"
#include "noxcv/filter.h"
#include "noxvpipelinefloats.h"
#include "noxvseparablesize.h"
#include "noxvseparablesums.h"
#include "rows.h"

using namespace nox;

namespace {

/// The row that the next window has more than this one, and the row that it is filtered to.
struct NextWindow {
    Ahead source, result;

    void askAll(int count) {
        source.askAll(count);
        result.askAll(count);
    }
};

/// What comes after each window of an image. Hardware follows the one new row and the result by itself, and is fast
/// enough in images up to some times the size of those that leave the nearest caches; in larger ones it loses time at
/// the beginning of every row and every page.
template <class T, class Out>
class NextWindows {
public:
    NextWindows(const T *const *rows, Rows<Out> dst, int width, int height, int kernelSize)
        : rows_(rows), dst_(dst), last_(height - 1), kernelSize_(kernelSize),
          asks_(leavesCaches(static_cast<long long>(sizeof(T) + sizeof(Out)) * width * height, hardwareServes)) {}

    /// line(y, what comes next) for all windows.
    template <class Line>
    void forLines(const Line &line) const {
        int y = 0;
        for (; asks_ && y < last_; ++y)
            line(y, NextWindow{Ahead(elements(rows_)[y + kernelSize_]), Ahead(static_cast<Out *>(dst_[y + 1]))});
        for (; y <= last_; ++y)
            line(y, NothingAhead());
    }

private:
    static constexpr int hardwareServes = 4;
    const T *const *rows_;
    Rows<Out> dst_;
    int last_, kernelSize_;
    bool asks_;
};

template <class Rule, class T>
void filterColumns(const Rule &rule, const T *const *rows, Rows<typename Rule::Output> dst, int width, int height,
                   int kernelSize) {
    const NextWindows next(rows, dst, width, height, kernelSize);
    next.forLines([&](int y, const auto &ahead) {
        filterLine(rule, ColumnWindow<T>{rows + y, 0}, dst[y], width, ahead);
    });
}

/// The spread of all rows.
Spread spreadOfRows(const Nox32f *const *rows, int width, int count) {
    Spread all;
    for (int y = 0; y < count; ++y)
        all = join(all, spreadOf(elements(rows)[y], width));
    return all;
}

/// The spreads of the rows under a kernel; each row is looked at once.
class SpreadWindow {
public:
    static constexpr int mostRows = 64;

    SpreadWindow(const FloatRule &rule, const Nox32f *const *rows, int width, int kernelSize)
        : rows_(rows), width_(width), kernelSize_(kernelSize), look_(rule) {
        for (int y = 0; y < kernelSize - 1; ++y)
            push(y);
    }
    /// Of the rows from y on; y goes up by one from 0.
    Spread at(int y) {
        push(y + kernelSize_ - 1);
        Spread all;
        for (int slot = 0; slot < kernelSize_; ++slot)
            all = join(all, spreads_[slot]);
        return all;
    }

private:
    void push(int y) { spreads_[y % kernelSize_] = look_.at(elements(rows_)[y], width_); }

    const Nox32f *const *rows_;
    int width_, kernelSize_;
    FloatLook look_;
    Spread spreads_[mostRows];
};

void filterColumns(const FloatRule &rule, const Nox32f *const *rows, Rows<Nox32f> dst, int width, int height,
                   int kernelSize) {
    const NextWindows next(rows, dst, width, height, kernelSize);
    if (kernelSize > SpreadWindow::mostRows) {
        // The look at all rows is small beside so many taps.
        const Spread all = spreadOfRows(rows, width, height + kernelSize - 1);
        return next.forLines([&](int y, const auto &ahead) {
            filterLine(rule, ColumnWindow<Nox32f>{rows + y, 0}, dst[y], width, ahead, all);
        });
    }
    SpreadWindow spreads(rule, rows, width, kernelSize);
    next.forLines([&](int y, const auto &ahead) {
        filterLine(rule, ColumnWindow<Nox32f>{rows + y, 0}, dst[y], width, ahead, spreads.at(y));
    });
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
    for (long long y = 0; y < count; ++y)
        if (elements(rows)[y] == nullptr)
            return noxStsNullPointer;
    return noxStsNoError;
}

template <class T, class Out, class Tap>
NoxStatus checkColumns(const T *const *rows, const Out *dst, int dstStep, NoxiSize roi, int channels, const Tap *kernel,
                       int kernelSize, int divisor, const Nox8u *buffer, ScratchSize scratch) {
    const NoxStatus status =
        firstFailure(checkPointers(rows, dst, kernel), checkSize(roi), checkLength(kernelSize),
                     checkStep<Out>(dstStep, static_cast<long long>(roi.width) * channels),
                     checkEvenSteps<Out>(dstStep), checkPointers(buffer), require(divisor != 0, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    // More row pointers than an int counts are not looked at: they have no place in memory.
    if (static_cast<long long>(roi.height) + kernelSize - 1 > INT_MAX)
        return noxStsBadSize;
    return firstFailure(checkRowPointers(rows, roi, kernelSize),
                        checkBufferBytes(pipelineBufferBytes(roi, kernelSize, scratch)));
}

} // namespace

// One line per member. Three channels are one of three times the width.
#define NOX_COLUMNS_SIZE(FUNCTION, PER_TAP, REST)                                                                      \
    NoxStatus FUNCTION(NoxiSize roi, int kernelSize, int *size) {                                                      \
        return pipelineBufferSize(roi, kernelSize, size, {PER_TAP, REST});                                             \
    }

#define NOX_COLUMNS(SIZE_FUNCTION, FUNCTION, OUT, CHANNELS, PER_TAP, RULE)                                             \
    NOX_COLUMNS_SIZE(SIZE_FUNCTION, PER_TAP, 32)                                                                       \
    NoxStatus FUNCTION(const Nox16s **rows, OUT *dst, int dstStep, NoxiSize roi, const Nox16s *kernel, int kernelSize, \
                       int divisor, Nox8u *buffer) {                                                                   \
        const NoxStatus status =                                                                                       \
            checkColumns(rows, dst, dstStep, roi, CHANNELS, kernel, kernelSize, divisor, buffer, {PER_TAP, 32});       \
        return status != noxStsNoError ? status                                                                        \
                                       : runColumns(RULE(kernel, kernelSize, divisor), rows, dst, dstStep,             \
                                                    CHANNELS * roi.width, roi, kernelSize, PipelineRule::separable);   \
    }

#define NOX_COLUMNS_32F(SIZE_FUNCTION, FUNCTION, CHANNELS)                                                             \
    NOX_COLUMNS_SIZE(SIZE_FUNCTION, 0, 0)                                                                              \
    NoxStatus FUNCTION(const Nox32f **rows, Nox32f *dst, int dstStep, NoxiSize roi, const Nox32f *kernel,              \
                       int kernelSize, Nox8u *buffer) {                                                                \
        const NoxStatus status =                                                                                       \
            checkColumns(rows, dst, dstStep, roi, CHANNELS, kernel, kernelSize, 1, buffer, columnScratch32f);          \
        return status != noxStsNoError ? status                                                                        \
                                       : runColumns(FloatRule(kernel, kernelSize), rows, dst, dstStep,                 \
                                                    CHANNELS * roi.width, roi, kernelSize, PipelineRule::always);      \
    }

using Quotient16s = QuotientRule<Nox16s, Nox16s>;
using Quotient8u = QuotientRule<Nox16s, Nox8u>;
using Quotient8s = QuotientRule<Nox16s, Nox8s>;

NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s_C1R, noxiFilterColumnPipeline_16s_C1R, Nox16s, 1, 4, Quotient16s)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s_C3R, noxiFilterColumnPipeline_16s_C3R, Nox16s, 3, 4, Quotient16s)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s8u_C1R, noxiFilterColumnPipeline_16s8u_C1R, Nox8u, 1, 4,
            Quotient8u)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s8u_C3R, noxiFilterColumnPipeline_16s8u_C3R, Nox8u, 3, 4,
            Quotient8u)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s8s_C1R, noxiFilterColumnPipeline_16s8s_C1R, Nox8s, 1, 4,
            Quotient8s)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_16s8s_C3R, noxiFilterColumnPipeline_16s8s_C3R, Nox8s, 3, 4,
            Quotient8s)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_Low_16s_C1R, noxiFilterColumnPipeline_Low_16s_C1R, Nox16s, 1, 0,
            LowQuotientRule)
NOX_COLUMNS(noxiFilterColumnPipelineGetBufferSize_Low_16s_C3R, noxiFilterColumnPipeline_Low_16s_C3R, Nox16s, 3, 0,
            LowQuotientRule)
NOX_COLUMNS_32F(noxiFilterColumnPipelineGetBufferSize_32f_C1R, noxiFilterColumnPipeline_32f_C1R, 1)
NOX_COLUMNS_32F(noxiFilterColumnPipelineGetBufferSize_32f_C3R, noxiFilterColumnPipeline_32f_C3R, 3)
