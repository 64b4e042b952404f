// Gaussian filter of any odd size, in single precision.
//
// Rows are filtered into a ring as high as the kernel, and columns out of the ring: the image is read and written once.
#include "noxvgauss.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "ahead.h"
#include "checks.h"
#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/filter.h"
#include "noxvseparable.h"
#include "rows.h"

using namespace nox;

namespace {

void repeat(Nox32f value, Element<Nox32f> *dst, int count) {
    for (int x = 0; x < count; ++x)
        dst[x] = value;
}

/// One row, with the edge pixels repeated in scratch.
void filterRow(const Nox32f *src, Nox32f *dst, int width, const Nox32f *taps, int tapCount, Nox32f *scratch) {
    const int reach = tapCount / 2;
    repeat(elements(src)[0], scratch, reach);
    std::memcpy(scratch + reach, src, sizeof(Nox32f) * static_cast<std::size_t>(width));
    repeat(elements(src)[width - 1], scratch + reach + width, reach);
    sumTaps(RowWindow<Nox32f>{scratch, 1}, taps, tapCount, dst, width);
}

/// exp(-d^2 / (2 sigma^2)) over the sum of such values, of one more than there are taps.
void gaussTaps(Element<Nox32f> *taps, int tapCount, Nox32f sigma) {
    const int reach = tapCount / 2;
    Nox32f sum = 0;
    for (int i = 0; i <= tapCount; ++i) {
        const auto distance = static_cast<Nox32f>(i - reach);
        const Nox32f exponent = (0.0F - distance * distance) / ((sigma + sigma) * sigma);
        const auto value = static_cast<Nox32f>(std::exp(static_cast<double>(exponent)));
        sum += value;
        if (i < tapCount)
            taps[i] = value;
    }
    // Whole groups of 8 behind a 16-byte boundary are multiplied by a reciprocal: an estimate with one Newton step.
    int grouped = 0, behind = 0;
    const auto address = reinterpret_cast<std::uintptr_t>(taps);
    if (tapCount >= 11 && address % sizeof(Nox32f) == 0) {
        grouped = static_cast<int>((16 - address % 16) % 16 / sizeof(Nox32f));
        behind = grouped + (tapCount - grouped) / 8 * 8;
    }
    const Nox32f estimate = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(sum)));
    const Nox32f reciprocal = (estimate + estimate) - sum * estimate * estimate;
    for (int i = 0; i < tapCount; ++i)
        taps[i] = i >= grouped && i < behind ? taps[i] * reciprocal : taps[i] / sum;
}

/// Bytes of the buffer: room for a whole image and its borders.
long long bufferBytes(NoxiSize roi, long long kernelSize) {
    const long long elements = limitedProduct(roundUp<long long>(roi.width, 4) + kernelSize, roi.height + kernelSize);
    return limitedSum(limitedProduct(limitedSum(elements, kernelSize), 4), 64);
}

NoxStatus checkKernelSize(int kernelSize) { return require(kernelSize >= 3 && kernelSize % 2 == 1, noxStsBadArgument); }

/// Row y of an image whose edge rows are repeated.
int clampedRow(int y, int height) { return std::clamp(y, 0, height - 1); }

/// Two rows at once, so that each row of the ring is read half as often, pay from this many taps on: the ring of a
/// smaller kernel lies in the nearest cache. In large images they always pay, since they ask for the next rows.
constexpr int fewestPairTaps = 7;
bool leavesCaches(NoxiSize roi) { return nox::leavesCaches(2 * static_cast<int>(sizeof(Nox32f)) * area(roi)); }
bool goesInPairs(NoxiSize roi, int tapCount) {
    return tapCount <= mostPairTaps && (tapCount >= fewestPairTaps || leavesCaches(roi));
}

/// The parts of the work buffer: taps, which lie where the buffer begins, and a row with its margins; then, on a
/// boundary, row pointers and the ring: as many rows as the kernel, one more for pairs, and never more than the image.
struct Areas {
    Nox32f *taps, *scratch;
    const Nox32f **window;
    RowRing<Nox32f> ring;

    static int ringRows(NoxiSize roi, int tapCount) {
        return std::min(tapCount + (goesInPairs(roi, tapCount) ? 1 : 0), roi.height);
    }
    Areas(WorkBuffer &&head, WorkBuffer &&rest, NoxiSize roi, int tapCount)
        : taps(head.take<Nox32f>(tapCount)), scratch(head.take<Nox32f>(scratchLength(roi, tapCount))),
          window(rest.take<const Nox32f *>(tapCount + 1LL)),
          ring(rest.aligned(16).take<Nox32f>(0), ringRows(roi, tapCount), roundUp(roi.width, 4)) {}
    Areas(Nox8u *buffer, NoxiSize roi, int tapCount)
        : Areas(WorkBuffer(buffer, 1),
                WorkBuffer(buffer + sizeof(Nox32f) * static_cast<std::size_t>(tapCount + scratchLength(roi, tapCount)),
                           16),
                roi, tapCount) {}

private:
    static int scratchLength(NoxiSize roi, int tapCount) { return roi.width + tapCount - 1; }
};

void filterImage(Rows<const Nox32f> src, Rows<Nox32f> dst, NoxiSize roi, int tapCount, const Areas &work) {
    const int reach = tapCount / 2;
    // Rows that overlap are written in their order.
    const bool pairs = goesInPairs(roi, tapCount) &&
                       std::abs(dst.step) >= static_cast<std::ptrdiff_t>(roi.width) * std::ptrdiff_t{sizeof(Nox32f)};
    const bool asks = leavesCaches(roi);
    int filtered = -1; // the last row in the ring
    for (int y = 0; y < roi.height;) {
        const int count = pairs && y + 1 < roi.height ? 2 : 1;
        while (filtered < clampedRow(y + count - 1 + reach, roi.height)) {
            ++filtered;
            ownRowConvolution(src[filtered], 0, work.ring[filtered], 0, roi.width, 1, work.taps, tapCount,
                              work.scratch);
        }
        for (int j = 0; j < tapCount + count - 1; ++j)
            work.window[j] = work.ring[clampedRow(y + j - reach, roi.height)];
        if (count == 2)
            sumTapsTwice(work.window, work.taps, tapCount, dst[y], dst[y + 1], roi.width,
                         asks ? AheadRows<2>(src, filtered + 1, dst, y + 2) : AheadRows<2>());
        else
            sumTaps(ColumnWindow<Nox32f>{work.window, 0}, work.taps, tapCount, dst[y], roi.width);
        y += count;
    }
}

} // namespace

void ownRowConvolution(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width, int height,
                       const Nox32f *taps, int K, Nox32f *scratch) {
    const Rows<const Nox32f> from = {src, srcStep};
    const Rows<Nox32f> to = {dst, dstStep};
    for (int y = 0; y < height; ++y)
        filterRow(from[y], to[y], width, taps, K, scratch);
}

void ownColConvolution(Nox32f *dst, int dstStep, int width, int height, const Nox32f *taps, int K, Nox32f *scratch) {
    const Rows<Nox32f> rows = {dst, dstStep};
    const int reach = K / 2;
    for (int x = 0; x < width; ++x) {
        for (int i = 0; i < height + K - 1; ++i)
            elements(scratch)[i] = rows[clampedRow(i - reach, height)][x];
        for (int y = 0; y < height; y += blockLength) {
            Nox32f sums[blockLength];
            const int length = std::min(blockLength, height - y);
            sumTaps(RowWindow<Nox32f>{scratch + y, 1}, taps, K, sums, length);
            for (int i = 0; i < length; ++i)
                rows[y + i][x] = sums[i];
        }
    }
}

NoxStatus noxiFilterGaussGetBufferSize_32f_C1R(NoxiSize roi, int kernelSize, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi), checkKernelSize(kernelSize));
    return status != noxStsNoError ? status : storeSize(bufferBytes(roi, kernelSize), size);
}

// The steps are measured in pixels: this filter accepts rows that overlap.
NoxStatus noxiFilterGaussBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                        int kernelSize, Nox32f sigma, int /*borderType*/, Nox32f /*borderValue*/,
                                        Nox8u *buffer) {
    const NoxStatus status = firstFailure(checkPointers(src, dst, buffer), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, roi.width), checkStep<Nox8u>(dstStep, roi.width),
                                          checkKernelSize(kernelSize), checkBufferBytes(bufferBytes(roi, kernelSize)));
    if (status == noxStsNoError) {
        const Areas work(buffer, roi, kernelSize);
        gaussTaps(work.taps, kernelSize, sigma);
        filterImage({src, srcStep}, {dst, dstStep}, roi, kernelSize, work);
    }
    return status;
}
