// Row filters with any border into rows given by their pointers: the first stage of a separable filter.
//
// Outputs whose taps reach past an end of the row read a strip: copies of the pixels around that end, extended by the
// border rule. All others read the row in place.
#include <atomic>
#include <cstring>

#include "borders.h"
#include "checks.h"
#include "noxcv/filter.h"
#include "noxvpipelinefloats.h"
#include "noxvseparablesize.h"
#include "noxvseparablesums.h"
#include "rows.h"

using namespace nox;

namespace {

template <class T>
struct RowCall {
    Rows<const T> src;
    NoxiSize roi;
    int kernelSize, xAnchor, borderType;
    const T *borderValue; ///< one value a channel
};

/// Copies pixels first, first + 1, ... of a row to the strip; those outside the row by the border rule.
template <int Channels, class T>
void fillStrip(const RowCall<T> &call, const T *row, int first, int count, T *strip) {
    constexpr std::ptrdiff_t pixel = Channels;
    const auto fillOutside = [&](int i, int end) {
        for (; i < end; ++i) {
            const bool constant = call.borderType == noxBorderConstant;
            const T *from =
                constant ? call.borderValue : row + pixel * borderIndex(first + i, call.roi.width, call.borderType);
            std::memcpy(strip + pixel * i, from, Channels * sizeof(T));
        }
    };
    const int begin = std::clamp(-first, 0, count), end = std::clamp(call.roi.width - first, begin, count);
    fillOutside(0, begin);
    if (begin < end)
        std::memcpy(strip + pixel * begin, row + pixel * (first + begin), (end - begin) * Channels * sizeof(T));
    fillOutside(end, count);
}

/// Filters lines one after the other.
template <class Rule>
class LineFilter {
public:
    explicit LineFilter(const Rule &rule) : rule_(rule) {}

    template <class T>
    void operator()(RowWindow<T> window, typename Rule::Output *dst, int count) const {
        filterLine(rule_, window, dst, count, NothingAhead());
    }

private:
    const Rule &rule_;
};

/// Floats: what is found of one line is tried on the next.
template <>
class LineFilter<FloatRule> {
public:
    explicit LineFilter(const FloatRule &rule) : rule_(rule), look_(rule) {}

    void operator()(RowWindow<Nox32f> window, Nox32f *dst, int count) {
        if (count < vectorLength)
            return filterLine(rule_, window, dst, count, NothingAhead(), Spread());
        const std::ptrdiff_t under = count + window.stride * (rule_.tapCount() - 1);
        filterLine(rule_, window, dst, count, NothingAhead(), look_.at(window.first, static_cast<int>(under)));
    }

private:
    const FloatRule &rule_;
    FloatLook look_;
};

/// Outputs first to last - 1 of a row, read from a strip.
template <int Channels, class Rule, class T>
void filterStrip(const RowCall<T> &call, LineFilter<Rule> &filter, const T *row, int first, int last, T *strip,
                 typename Rule::Output *dst) {
    if (first >= last)
        return;
    fillStrip<Channels>(call, row, first - call.xAnchor, last - first + call.kernelSize - 1, strip);
    filter(RowWindow<T>{strip, Channels}, dst + std::ptrdiff_t{Channels} * first, Channels * (last - first));
}

/// Rows first to first + count - 1.
template <int Channels, class Rule, class T>
NoxStatus filterRows(const RowCall<T> &call, const Rule &rule, typename Rule::Output *const *rows, int first, int count,
                     Nox8u *scratch) {
    T *strip = reinterpret_cast<T *>(alignUp(scratch, 32));
    // Outputs that reach neither end; a row shorter than the kernel has none. It goes through the strip as a whole, and
    // so do other short rows, through a strip of their own: the parts of a row cost more than its pixels there.
    const int width = call.roi.width, inner = width - call.kernelSize + 1, left = call.xAnchor, right = left + inner;
    constexpr int shortRow = 512;
    T whole[shortRow];
    const bool isShort = (static_cast<long long>(width) + call.kernelSize - 1) * Channels <= shortRow;
    LineFilter<Rule> filter(rule);
    for (int y = first; y < first + count; ++y) {
        const T *row = call.src[y];
        typename Rule::Output *dst = elements(rows)[y];
        if (dst == nullptr)
            return noxStsNullPointer;
        if (isShort) {
            filterStrip<Channels>(call, filter, row, 0, width, whole, dst);
        } else if (inner > 0) {
            filterStrip<Channels>(call, filter, row, 0, left, strip, dst);
            filter(RowWindow<T>{row, Channels}, dst + std::ptrdiff_t{Channels} * left, Channels * inner);
            filterStrip<Channels>(call, filter, row, right, width, strip, dst);
        } else {
            filterStrip<Channels>(call, filter, row, 0, width, strip, dst);
        }
    }
    return noxStsNoError;
}

/// All rows, on one thread or several. The threads' scratch lies behind room for row pointers, which is free.
template <int Channels, class Rule, class T>
NoxStatus runRows(const RowCall<T> &call, const Rule &rule, typename Rule::Output *const *rows, Nox8u *buffer,
                  ScratchSize scratch, PipelineRule parallel) {
    const bool goesParallel = pipelineGoesParallel(call.roi, call.kernelSize, parallel);
    const int slices = goesParallel ? sliceCount() : 1;
    Nox8u *first = buffer + pipelinePointerBytes(call.roi, call.kernelSize, slices);
    if (!goesParallel)
        return filterRows<Channels>(call, rule, rows, 0, call.roi.height, first);
    std::atomic<NoxStatus> status = noxStsNoError;
    parallelSlices(call.roi.height, slices, [&](const Slice &slice) {
        const NoxStatus own = filterRows<Channels>(call, rule, rows, slice.first, slice.count,
                                                   first + slice.index * scratch.bytes(call.kernelSize));
        if (own != noxStsNoError)
            status = own;
    });
    return status;
}

template <int Channels, class T, class Out, class Tap>
NoxStatus checkRows(const RowCall<T> &call, Out *const *rows, const Tap *kernel, const Nox8u *buffer, int divisor,
                    ScratchSize scratch) {
    const int step = static_cast<int>(call.src.step);
    return firstFailure(
        checkPointers(call.src.base, rows, kernel, buffer), checkSize(call.roi), checkLength(call.kernelSize),
        require(call.xAnchor >= 0 && call.xAnchor < call.kernelSize, noxStsBadAnchor),
        checkStep<T>(step, static_cast<long long>(call.roi.width) * Channels), checkEvenSteps<T>(step),
        require(call.borderType >= noxBorderConstant && call.borderType <= noxBorderMirrorEdge, noxStsBadArgument),
        require(call.borderType != noxBorderConstant || call.borderValue != nullptr, noxStsNullPointer),
        require(divisor != 0, noxStsBadArgument),
        checkBufferBytes(pipelineBufferBytes(call.roi, call.kernelSize, scratch)));
}

/// How a member turns a checked call into a rule for its sums.
template <class Rule, int Channels, class T, class Tap>
NoxStatus runMember(const RowCall<T> &call, typename Rule::Output *const *rows, const Tap *kernel, int divisor,
                    Nox8u *buffer, ScratchSize scratch, PipelineRule parallel) {
    return runRows<Channels>(call, Rule(kernel, call.kernelSize, divisor), rows, buffer, scratch, parallel);
}

/// 16s_C1R: sizes other than 3 and 5 fold the divisor's reciprocal into the taps, at the start of the buffer.
struct FoldedMember {
    using Output = Nox16s;
};
template <>
NoxStatus runMember<FoldedMember, 1>(const RowCall<Nox16s> &call, Nox16s *const *rows, const Nox16s *kernel,
                                     int divisor, Nox8u *buffer, ScratchSize scratch, PipelineRule parallel) {
    if (call.kernelSize == 3 || call.kernelSize == 5)
        return runMember<QuotientRule<Nox16s, Nox16s>, 1>(call, rows, kernel, divisor, buffer, scratch, parallel);
    auto *taps = reinterpret_cast<Nox32f *>(alignUp(buffer, sizeof(Nox32f)));
    const long double reciprocal = 1.0L / static_cast<long double>(divisor);
    for (int j = 0; j < call.kernelSize; ++j)
        taps[j] = static_cast<Nox32f>(static_cast<long double>(elements(kernel)[j]) * reciprocal);
    return runRows<1>(call, TruncatedRule(taps, call.kernelSize), rows, buffer, scratch, parallel);
}

/// Low_16s_C1R: size 5 has another rounding.
struct LowMember {
    using Output = Nox16s;
};
template <>
NoxStatus runMember<LowMember, 1>(const RowCall<Nox16s> &call, Nox16s *const *rows, const Nox16s *kernel, int divisor,
                                  Nox8u *buffer, ScratchSize scratch, PipelineRule parallel) {
    const auto run = call.kernelSize == 5 ? runMember<LowQuotientRule, 1, Nox16s, Nox16s>
                                          : runMember<LowProductRule, 1, Nox16s, Nox16s>;
    return run(call, rows, kernel, divisor, buffer, scratch, parallel);
}

using QuotientMember8u = QuotientRule<Nox8u, Nox16s>;
using QuotientMember16s = QuotientRule<Nox16s, Nox16s>;

} // namespace

// One line per member: types and tag, channels, scratch, parallel rule, rule of the sums.
#define NOX_ROWS_SIZE(FUNCTION, PER_TAP, REST)                                                                         \
    NoxStatus FUNCTION(NoxiSize roi, int kernelSize, int *size) {                                                      \
        return pipelineBufferSize(roi, kernelSize, size, {PER_TAP, REST});                                             \
    }

#define NOX_ROWS(SIZE_FUNCTION, FUNCTION, TYPE, OUT, CHANNELS, VALUE, ADDRESS, PER_TAP, REST, PARALLEL, MEMBER)        \
    NOX_ROWS_SIZE(SIZE_FUNCTION, PER_TAP, REST)                                                                        \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, OUT **rows, NoxiSize roi, const Nox16s *kernel, int kernelSize,   \
                       int xAnchor, int borderType, VALUE borderValue, int divisor, Nox8u *buffer) {                   \
        const RowCall<TYPE> call = {{src, srcStep}, roi, kernelSize, xAnchor, borderType, ADDRESS};                    \
        const NoxStatus status = checkRows<CHANNELS>(call, rows, kernel, buffer, divisor, {PER_TAP, REST});            \
        return status != noxStsNoError ? status                                                                        \
                                       : runMember<MEMBER, CHANNELS>(call, rows, kernel, divisor, buffer,              \
                                                                     {PER_TAP, REST}, PipelineRule::PARALLEL);         \
    }

#define NOX_ROWS_32F(SIZE_FUNCTION, FUNCTION, CHANNELS, VALUE, ADDRESS, PER_TAP, REST, PARALLEL)                       \
    NOX_ROWS_SIZE(SIZE_FUNCTION, PER_TAP, REST)                                                                        \
    NoxStatus FUNCTION(const Nox32f *src, int srcStep, Nox32f **rows, NoxiSize roi, const Nox32f *kernel,              \
                       int kernelSize, int xAnchor, int borderType, VALUE borderValue, Nox8u *buffer) {                \
        const RowCall<Nox32f> call = {{src, srcStep}, roi, kernelSize, xAnchor, borderType, ADDRESS};                  \
        const NoxStatus status = checkRows<CHANNELS>(call, rows, kernel, buffer, 1, {PER_TAP, REST});                  \
        return status != noxStsNoError ? status                                                                        \
                                       : runRows<CHANNELS>(call, FloatRule(kernel, kernelSize), rows, buffer,          \
                                                           {PER_TAP, REST}, PipelineRule::PARALLEL);                   \
    }

NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, noxiFilterRowBorderPipeline_8u16s_C1R, Nox8u, Nox16s, 1,
         Nox8u, &borderValue, 4, 32, always, QuotientMember8u)
NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, noxiFilterRowBorderPipeline_8u16s_C3R, Nox8u, Nox16s, 3,
         const Nox8u *, borderValue, 12, 32, always, QuotientMember8u)
NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_16s_C1R, noxiFilterRowBorderPipeline_16s_C1R, Nox16s, Nox16s, 1,
         Nox16s, &borderValue, 48, 80, largeKernel, FoldedMember)
NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_16s_C3R, noxiFilterRowBorderPipeline_16s_C3R, Nox16s, Nox16s, 3,
         const Nox16s *, borderValue, 28, 32, always, QuotientMember16s)
NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, noxiFilterRowBorderPipeline_Low_16s_C1R, Nox16s, Nox16s,
         1, Nox16s, &borderValue, 24, 64, always, LowMember)
NOX_ROWS(noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, noxiFilterRowBorderPipeline_Low_16s_C3R, Nox16s, Nox16s,
         3, const Nox16s *, borderValue, 208, 64, always, LowProductRule)
NOX_ROWS_32F(noxiFilterRowBorderPipelineGetBufferSize_32f_C1R, noxiFilterRowBorderPipeline_32f_C1R, 1, Nox32f,
             &borderValue, 16, 32, separable)
NOX_ROWS_32F(noxiFilterRowBorderPipelineGetBufferSize_32f_C3R, noxiFilterRowBorderPipeline_32f_C3R, 3, const Nox32f *,
             borderValue, 192, 32, always)
