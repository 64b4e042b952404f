// Border derivative and smoothing filters: checks, buffer sizes, threads, and the pair of kernels of each filter.
#include "noxvfilterborder.h"

#include <algorithm>
#include <type_traits>

#include "checks.h"
#include "noxcv/filter.h"
#include "noxvseparablesize.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

/// Indices of a row and a column kernel.
struct Pair {
    int row, column;
};

// One line per filter and mask size.
constexpr Pair sobelHoriz[] = {{6, 1}, {7, 4}}, sobelVert[] = {{2, 2}, {3, 3}}, sobelNegVert[] = {{2, 11}, {3, 12}},
               sobelHorizSecond[] = {{6, 5}, {7, 6}}, sobelVertSecond[] = {{4, 2}, {5, 3}},
               sobelCross[] = {{2, 1}, {3, 4}}, scharrHoriz[] = {{1, 1}}, scharrVert[] = {{0, 0}},
               lowpass8u[] = {{8, 0}, {9, 1}}, lowpass32f[] = {{8, 9}, {9, 10}};
constexpr Pair laplacian3 = {10, 7}, laplacian5First = {7, 6}, laplacian5Second = {5, 8};

/// The taps of the row and column kernels of the tables, for each index.
template <class Tap>
struct Taps;
#define NOX_TAPS(TYPE, TAG)                                                                                            \
    template <>                                                                                                        \
    struct Taps<TYPE> {                                                                                                \
        static constexpr const TYPE *row[] = {kerDx_3_##TAG,  kerScharr_3_##TAG, kerDxNeg_3_##TAG, kerDxNeg_5_##TAG,   \
                                              kerD2x_3_##TAG, kerD2x_5_##TAG,    kerSobel_3_##TAG, kerSobel_5_##TAG,   \
                                              kerAvr_3_##TAG, kerAvr_5_##TAG,    kerLap_3_##TAG};                      \
    };
NOX_TAPS(Nox16s, 16s)
NOX_TAPS(Nox32f, 32f)

template <class Pixel>
using TapOf = std::conditional_t<std::is_same_v<Pixel, Nox8u>, Nox16s, Nox32f>;

constexpr int kernelSizeOf(int mask) { return mask == noxMskSize3x3 ? 3 : 5; }

template <class Pixel>
FixedFilter<Pixel, TapOf<Pixel>> filterOf(Pair pair, int kernelSize, int borderType, Pixel borderValue) {
    return {Taps<TapOf<Pixel>>::row[pair.row], kernelSize, kernelSize, pair.row, pair.column, borderType, borderValue};
}

// Sizes. A thread's buffer is its rows, pointers and the pipelines' buffers; the rows of the engine are a part of it.

constexpr long long groups(int width, int length) { return (static_cast<long long>(width) + length - 1) / length; }

/// Bytes of 2K + 15 rows, 3K + 30 pointers and the alignment of both; the Laplacian has rows and pointers twice.
template <class Pixel>
long long ringBytes(NoxiSize roi, int kernelSize, bool laplacian) {
    constexpr bool bytes = std::is_same_v<Pixel, Nox8u>;
    const long long row = laplacian ? groups(roi.width, 16) * (bytes ? 64 : 128)
                          : bytes   ? groups(roi.width, 16) * 32
                                    : groups(roi.width, 4) * 16;
    const long long rows = 2LL * kernelSize + 15;
    const long long pointers = (3LL * kernelSize + 30) * static_cast<long long>(sizeof(void *));
    return row * rows + (laplacian ? 2 * pointers + 96 : pointers + 64);
}

template <class Pixel, class Out>
long long pipelineBytes(NoxiSize roi, int kernelSize) {
    constexpr bool bytes = std::is_same_v<Pixel, Nox8u>, floats = std::is_same_v<Out, Nox32f>;
    return limitedSum(pipelineBufferBytes(roi, kernelSize, bytes ? rowScratch8u16s : rowScratch32f),
                      pipelineBufferBytes(roi, kernelSize, floats ? columnScratch32f : columnScratch16s));
}

/// The image between the passes of the 8u8s Laplacian of size 5.
constexpr long long middleImageBytes(NoxiSize roi) {
    return limitedSum(limitedProduct(groups(roi.width, 16) * 32, roi.height), 32);
}

template <class Pixel, class Out>
long long threadBytes(NoxiSize roi, int kernelSize, bool laplacian) {
    const bool middle = laplacian && std::is_same_v<Out, Nox8s> && kernelSize == 5;
    const long long rows =
        limitedSum(ringBytes<Pixel>(roi, kernelSize, laplacian) + 32, pipelineBytes<Pixel, Out>(roi, kernelSize));
    return middle ? limitedSum(rows, middleImageBytes(roi)) : rows;
}

/// Bytes of the buffer, for as many threads as there are now.
template <class Pixel, class Out>
long long bufferBytes(NoxiSize roi, int kernelSize, bool laplacian) {
    return limitedProduct(sliceCount(), threadBytes<Pixel, Out>(roi, kernelSize, laplacian));
}

constexpr NoxStatus checkMask(int mask) {
    return require(mask == noxMskSize3x3 || mask == noxMskSize5x5, noxStsBadMaskSize);
}

template <class Pixel, class Out, bool Laplacian>
NoxStatus bufferSize(NoxiSize roi, int mask, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi), checkMask(mask));
    return status != noxStsNoError ? status
                                   : storeSize(bufferBytes<Pixel, Out>(roi, kernelSizeOf(mask), Laplacian), size);
}

// Calls.

/// The arguments of a filter.
template <class Pixel, class Out>
struct Call {
    Rows<const Pixel> src;
    Rows<Out> dst;
    NoxiSize roi;
    int mask, borderType;
    Pixel borderValue;
    Nox8u *buffer;
    int divisor = 1;

    int kernelSize() const { return kernelSizeOf(mask); }
    FixedFilter<Pixel, TapOf<Pixel>> filter(Pair pair) const {
        return filterOf(pair, kernelSize(), borderType, borderValue);
    }
};

template <class Pixel, class Out>
NoxStatus check(const Call<Pixel, Out> &call, bool laplacian) {
    const int srcStep = static_cast<int>(call.src.step), dstStep = static_cast<int>(call.dst.step);
    return firstFailure(
        checkPointers(call.src.base, call.dst.base, call.buffer), checkSize(call.roi),
        checkStep<Pixel>(srcStep, call.roi.width), checkStep<Out>(dstStep, call.roi.width),
        checkEvenSteps<Pixel>(srcStep), checkEvenSteps<Out>(dstStep),
        require(call.borderType >= noxBorderConstant && call.borderType <= noxBorderMirrorEdge, noxStsBadArgument),
        require(call.divisor != 0, noxStsBadArgument), checkMask(call.mask),
        checkBufferBytes(bufferBytes<Pixel, Out>(call.roi, call.kernelSize(), laplacian)));
}

/// When a filter goes parallel, beyond having more than one thread.
enum class Parallel {
    never,
    manyRows,        ///< 128 rows a thread, 256 columns, several cores
    anyWidth,        ///< 128 rows a thread, several cores
    manyRowsOrSize5, ///< as manyRows; or kernel size 5, 256 rows a thread, 256 columns
    mostRows,        ///< 256 rows a thread, 256 columns
    fewRows          ///< 32 rows a thread, 256 columns, several cores
};

bool goesParallel(NoxiSize roi, int kernelSize, Parallel rule) {
    const long long threads = sliceCount();
    if (threads <= 1)
        return false;
    const auto rowsEach = [&](int rows) { return roi.height >= threads * rows; };
    const bool wide = roi.width >= 256, cores = runomp() != 0;
    switch (rule) {
    case Parallel::manyRows:
        return rowsEach(128) && wide && cores;
    case Parallel::anyWidth:
        return rowsEach(128) && cores;
    case Parallel::manyRowsOrSize5:
        return wide && ((rowsEach(128) && cores) || (rowsEach(256) && kernelSize == 5));
    case Parallel::mostRows:
        return rowsEach(256) && wide;
    case Parallel::fewRows:
        return rowsEach(32) && wide && cores;
    default:
        return false;
    }
}

/// body(slice, buffer) for all rows, as one slice or one a thread.
template <class Pixel, class Out, class Body>
void runSlices(const Call<Pixel, Out> &call, Parallel rule, bool laplacian, const Body &body) {
    if (!goesParallel(call.roi, call.kernelSize(), rule)) {
        body(Slice{0, call.roi.height, 0}, call.buffer);
        return;
    }
    const long long bytes = threadBytes<Pixel, Out>(call.roi, call.kernelSize(), laplacian);
    parallelSlices(call.roi.height, sliceCount(),
                   [&](const Slice &slice) { body(slice, call.buffer + slice.index * bytes); });
}

// One slice through the engine; dst begins with the slice's first row.

void convolve(const Call<Nox8u, Nox16s> &call, Rows<Nox16s> dst, Pair pair, const Slice &slice, Nox8u *buffer) {
    ownFilterConvolution_8u16s_C1R_omp(call.src, dst, call.roi, call.filter(pair), buffer, slice);
}
void convolve(const Call<Nox8u, Nox8s> &call, Rows<Nox8s> dst, Pair pair, const Slice &slice, Nox8u *buffer) {
    ownFilterConvolution_8u8s_C1R_omp(call.src, dst, call.roi, call.filter(pair), call.divisor, buffer, slice);
}
void convolve(const Call<Nox8u, Nox8u> &call, Rows<Nox8u> dst, Pair pair, const Slice &slice, Nox8u *buffer) {
    ownFilterConvolution_8u_C1R_omp(call.src, dst, call.roi, call.filter(pair), buffer, slice);
}
void convolve(const Call<Nox32f, Nox32f> &call, Rows<Nox32f> dst, Pair pair, const Slice &slice, Nox8u *buffer) {
    ownFilterConvolution_32f_C1R_omp(call.src, dst, call.roi, call.filter(pair), buffer, slice);
}

template <class Pixel, class Out>
void convolve(const Call<Pixel, Out> &call, Pair pair, const Slice &slice, Nox8u *buffer) {
    convolve(call, call.dst.from(slice.first), pair, slice, buffer);
}

/// pairs: of size 3, and of size 5 where there is one.
template <class Pixel, class Out>
NoxStatus filterImage(const Call<Pixel, Out> &call, const Pair *pairs, Parallel rule) {
    const NoxStatus status = check(call, false);
    if (status == noxStsNoError)
        runSlices(call, rule, false, [&](const Slice &slice, Nox8u *buffer) {
            convolve(call, pairs[call.mask == noxMskSize5x5 ? 1 : 0], slice, buffer);
        });
    return status;
}

// The Laplacian of size 5 takes two passes. They go through the slice in bands, so that the second pass finds what the
// first one wrote in the cache.

constexpr int bandHeight = 32;

/// body(band) for the bands of a slice.
template <class Body>
void forBands(const Slice &slice, const Body &body) {
    for (int y = 0; y < slice.count; y += bandHeight)
        body(Slice{slice.first + y, std::min(bandHeight, slice.count - y), 0});
}

template <class Pixel, class Out>
void laplacianSize5(const Call<Pixel, Out> &call, const Slice &slice, Nox8u *buffer) {
    forBands(slice, [&](const Slice &band) {
        convolve(call, laplacian5First, band, buffer);
        convolve(call, laplacian5Second, band, buffer);
    });
}

NOX_TIERS void scaleRow(const Nox16s *src, Nox8s *dst, int width, Nox32f factor) {
    for (int x = 0; x < width; ++x)
        dst[x] = truncateSaturated<Nox8s>(static_cast<Nox32f>(src[x]) * factor);
}

/// Through an image of 16 bits at the end of the buffer, of which the bands use the first rows over and over.
void laplacianSize5(const Call<Nox8u, Nox8s> &call, const Slice &slice, Nox8u *buffer) {
    Nox8u *behind = buffer + ringBytes<Nox8u>(call.roi, 5, true) + pipelineBytes<Nox8u, Nox8s>(call.roi, 5);
    const Rows<Nox16s> middle = {reinterpret_cast<Nox16s *>(alignUp(behind, 32)),
                                 static_cast<std::ptrdiff_t>(groups(call.roi.width, 16) * 32)};
    const Nox32f factor = 1.0F / static_cast<Nox32f>(call.divisor);
    forBands(slice, [&](const Slice &band) {
        const Call<Nox8u, Nox16s> wide = {call.src,        middle,           call.roi,   call.mask,
                                          call.borderType, call.borderValue, call.buffer};
        convolve(wide, middle, laplacian5First, band, buffer);
        convolve(wide, middle, laplacian5Second, band, buffer);
        for (int y = 0; y < band.count; ++y)
            scaleRow(middle[y], call.dst[band.first + y], call.roi.width, factor);
    });
}

template <class Pixel, class Out>
NoxStatus laplacianImage(const Call<Pixel, Out> &call, Parallel rule3, Parallel rule5) {
    const NoxStatus status = check(call, true);
    if (status == noxStsNoError)
        runSlices(call, call.mask == noxMskSize3x3 ? rule3 : rule5, true, [&](const Slice &slice, Nox8u *buffer) {
            if (call.mask == noxMskSize3x3)
                convolve(call, laplacian3, slice, buffer);
            else
                laplacianSize5(call, slice, buffer);
        });
    return status;
}

} // namespace

// One line per filter: name and pairs, and when each of its types goes parallel.
#define NOX_SIZE(FUNCTION, TYPE, OUT, LAPLACIAN)                                                                       \
    NoxStatus FUNCTION(NoxiSize roi, int mask, int *size) { return bufferSize<TYPE, OUT, LAPLACIAN>(roi, mask, size); }
#define NOX_SIZE_3(FUNCTION, TYPE, OUT)                                                                                \
    NoxStatus FUNCTION(NoxiSize roi, int *size) { return bufferSize<TYPE, OUT, false>(roi, noxMskSize3x3, size); }

#define NOX_FILTER(FUNCTION, TYPE, OUT, RUN, ...)                                                                      \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, OUT *dst, int dstStep, NoxiSize roi, int mask, int borderType,    \
                       TYPE borderValue, Nox8u *buffer) {                                                              \
        return RUN(Call<TYPE, OUT>{{src, srcStep}, {dst, dstStep}, roi, mask, borderType, borderValue, buffer},        \
                   __VA_ARGS__);                                                                                       \
    }
#define NOX_FILTER_8S(FUNCTION, RUN, ...)                                                                              \
    NoxStatus FUNCTION(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi, int mask, int borderType, \
                       Nox8u borderValue, int divisor, Nox8u *buffer) {                                                \
        return RUN(                                                                                                    \
            Call<Nox8u, Nox8s>{{src, srcStep}, {dst, dstStep}, roi, mask, borderType, borderValue, buffer, divisor},   \
            __VA_ARGS__);                                                                                              \
    }
#define NOX_SOBEL(SIZE_8U16S_FUNCTION, SIZE_8U8S_FUNCTION, SIZE_32F_FUNCTION, BORDER_8U16S_FUNCTION,                   \
                  BORDER_8U8S_FUNCTION, BORDER_32F_FUNCTION, PAIRS, RULE_8U, RULE_32F)                                 \
    NOX_SIZE(SIZE_8U16S_FUNCTION, Nox8u, Nox16s, false)                                                                \
    NOX_SIZE(SIZE_8U8S_FUNCTION, Nox8u, Nox8s, false)                                                                  \
    NOX_SIZE(SIZE_32F_FUNCTION, Nox32f, Nox32f, false)                                                                 \
    NOX_FILTER(BORDER_8U16S_FUNCTION, Nox8u, Nox16s, filterImage, PAIRS, Parallel::RULE_8U)                            \
    NOX_FILTER_8S(BORDER_8U8S_FUNCTION, filterImage, PAIRS, Parallel::RULE_8U)                                         \
    NOX_FILTER(BORDER_32F_FUNCTION, Nox32f, Nox32f, filterImage, PAIRS, Parallel::RULE_32F)

#define NOX_FILTER_3(SIZE_FUNCTION, BORDER_FUNCTION, TYPE, OUT, PAIRS, RULE)                                           \
    NOX_SIZE_3(SIZE_FUNCTION, TYPE, OUT)                                                                               \
    NoxStatus BORDER_FUNCTION(const TYPE *src, int srcStep, OUT *dst, int dstStep, NoxiSize roi, int borderType,       \
                              TYPE borderValue, Nox8u *buffer) {                                                       \
        return filterImage(                                                                                            \
            Call<TYPE, OUT>{{src, srcStep}, {dst, dstStep}, roi, noxMskSize3x3, borderType, borderValue, buffer},      \
            PAIRS, Parallel::RULE);                                                                                    \
    }
#define NOX_SCHARR(SIZE_8U16S_FUNCTION, BORDER_8U16S_FUNCTION, SIZE_32F_FUNCTION, BORDER_32F_FUNCTION,                 \
                   SIZE_8U8S_FUNCTION, BORDER_8U8S_FUNCTION, PAIRS, RULE_8U, RULE_32F)                                 \
    NOX_FILTER_3(SIZE_8U16S_FUNCTION, BORDER_8U16S_FUNCTION, Nox8u, Nox16s, PAIRS, RULE_8U)                            \
    NOX_FILTER_3(SIZE_32F_FUNCTION, BORDER_32F_FUNCTION, Nox32f, Nox32f, PAIRS, RULE_32F)                              \
    NOX_SIZE_3(SIZE_8U8S_FUNCTION, Nox8u, Nox8s)                                                                       \
    NoxStatus BORDER_8U8S_FUNCTION(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep, NoxiSize roi,               \
                                   int borderType, Nox8u borderValue, int divisor, Nox8u *buffer) {                    \
        return filterImage(                                                                                            \
            Call<Nox8u, Nox8s>{                                                                                        \
                {src, srcStep}, {dst, dstStep}, roi, noxMskSize3x3, borderType, borderValue, buffer, divisor},         \
            PAIRS, Parallel::RULE_8U);                                                                                 \
    }

NOX_SOBEL(noxiFilterSobelHorizGetBufferSize_8u16s_C1R, noxiFilterSobelHorizGetBufferSize_8u8s_C1R,
          noxiFilterSobelHorizGetBufferSize_32f_C1R, noxiFilterSobelHorizBorder_8u16s_C1R,
          noxiFilterSobelHorizBorder_8u8s_C1R, noxiFilterSobelHorizBorder_32f_C1R, sobelHoriz, manyRowsOrSize5,
          manyRows)
NOX_SOBEL(noxiFilterSobelVertGetBufferSize_8u16s_C1R, noxiFilterSobelVertGetBufferSize_8u8s_C1R,
          noxiFilterSobelVertGetBufferSize_32f_C1R, noxiFilterSobelVertBorder_8u16s_C1R,
          noxiFilterSobelVertBorder_8u8s_C1R, noxiFilterSobelVertBorder_32f_C1R, sobelVert, manyRows, manyRowsOrSize5)
NOX_SOBEL(noxiFilterSobelNegVertGetBufferSize_8u16s_C1R, noxiFilterSobelNegVertGetBufferSize_8u8s_C1R,
          noxiFilterSobelNegVertGetBufferSize_32f_C1R, noxiFilterSobelNegVertBorder_8u16s_C1R,
          noxiFilterSobelNegVertBorder_8u8s_C1R, noxiFilterSobelNegVertBorder_32f_C1R, sobelNegVert, manyRows,
          manyRowsOrSize5)
NOX_SOBEL(noxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R, noxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R,
          noxiFilterSobelHorizSecondGetBufferSize_32f_C1R, noxiFilterSobelHorizSecondBorder_8u16s_C1R,
          noxiFilterSobelHorizSecondBorder_8u8s_C1R, noxiFilterSobelHorizSecondBorder_32f_C1R, sobelHorizSecond,
          manyRows, manyRows)
NOX_SOBEL(noxiFilterSobelVertSecondGetBufferSize_8u16s_C1R, noxiFilterSobelVertSecondGetBufferSize_8u8s_C1R,
          noxiFilterSobelVertSecondGetBufferSize_32f_C1R, noxiFilterSobelVertSecondBorder_8u16s_C1R,
          noxiFilterSobelVertSecondBorder_8u8s_C1R, noxiFilterSobelVertSecondBorder_32f_C1R, sobelVertSecond, manyRows,
          manyRows)
NOX_SOBEL(noxiFilterSobelCrossGetBufferSize_8u16s_C1R, noxiFilterSobelCrossGetBufferSize_8u8s_C1R,
          noxiFilterSobelCrossGetBufferSize_32f_C1R, noxiFilterSobelCrossBorder_8u16s_C1R,
          noxiFilterSobelCrossBorder_8u8s_C1R, noxiFilterSobelCrossBorder_32f_C1R, sobelCross, manyRows,
          manyRowsOrSize5)

NOX_SCHARR(noxiFilterScharrHorizGetBufferSize_8u16s_C1R, noxiFilterScharrHorizBorder_8u16s_C1R,
           noxiFilterScharrHorizGetBufferSize_32f_C1R, noxiFilterScharrHorizBorder_32f_C1R,
           noxiFilterScharrHorizGetBufferSize_8u8s_C1R, noxiFilterScharrHorizBorder_8u8s_C1R, scharrHoriz, anyWidth,
           manyRows)
NOX_SCHARR(noxiFilterScharrVertGetBufferSize_8u16s_C1R, noxiFilterScharrVertBorder_8u16s_C1R,
           noxiFilterScharrVertGetBufferSize_32f_C1R, noxiFilterScharrVertBorder_32f_C1R,
           noxiFilterScharrVertGetBufferSize_8u8s_C1R, noxiFilterScharrVertBorder_8u8s_C1R, scharrVert, manyRows,
           mostRows)

NOX_SIZE(noxiFilterLaplacianGetBufferSize_8u16s_C1R, Nox8u, Nox16s, true)
NOX_SIZE(noxiFilterLaplacianGetBufferSize_8u8s_C1R, Nox8u, Nox8s, true)
NOX_SIZE(noxiFilterLaplacianGetBufferSize_32f_C1R, Nox32f, Nox32f, true)
NOX_FILTER(noxiFilterLaplacianBorder_8u16s_C1R, Nox8u, Nox16s, laplacianImage, Parallel::manyRows, Parallel::manyRows)
NOX_FILTER_8S(noxiFilterLaplacianBorder_8u8s_C1R, laplacianImage, Parallel::fewRows, Parallel::never)
NOX_FILTER(noxiFilterLaplacianBorder_32f_C1R, Nox32f, Nox32f, laplacianImage, Parallel::manyRows, Parallel::manyRows)

NOX_SIZE(noxiFilterLowpassGetBufferSize_8u_C1R, Nox8u, Nox8u, false)
NOX_SIZE(noxiFilterLowpassGetBufferSize_32f_C1R, Nox32f, Nox32f, false)
NOX_FILTER(noxiFilterLowpassBorder_8u_C1R, Nox8u, Nox8u, filterImage, lowpass8u, Parallel::manyRows)
NOX_FILTER(noxiFilterLowpassBorder_32f_C1R, Nox32f, Nox32f, filterImage, lowpass32f, Parallel::manyRows)
