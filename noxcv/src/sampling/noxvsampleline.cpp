// Pixels along a straight segment.
#include "noxvsampleline.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "checks.h"
#include "noxcv/sampling.h"

using namespace nox;

int _noxvInitLineIterator(const void *image, int step, int pixelSize, int x1, int y1, int x2, int y2,
                          NoxvLineIterator *iterator) {
    const int dx = x2 - x1, dy = y2 - y1, width = std::abs(dx), height = std::abs(dy);
    const int xStep = dx < 0 ? -pixelSize : pixelSize, yStep = dy < 0 ? -step : step;
    const bool alongY = width <= height;
    const int length = alongY ? height : width, other = alongY ? width : height;
    const auto twice = [](int value) { return static_cast<int>(2U * static_cast<unsigned>(value)); };
    iterator->ptr = static_cast<Nox8u *>(const_cast<void *>(image)) + static_cast<std::ptrdiff_t>(y1) * step +
                    static_cast<std::ptrdiff_t>(x1) * pixelSize;
    iterator->err = length;
    iterator->plusDelta = twice(length);
    iterator->minusDelta = twice(other);
    iterator->plusStep = alongY ? xStep : yStep;
    iterator->minusStep = alongY ? yStep : xStep;
    return length + 1;
}

namespace {

/// Copies `count` pixels on the way to dst, without a branch on the error. Error is an integer that holds its range.
template <class Error, std::size_t PixelSize>
void walk(const NoxvLineIterator &from, int count, Nox8u *dst) {
    const Nox8u *pixel = from.ptr;
    const std::ptrdiff_t plusStep = from.plusStep, minusStep = from.minusStep;
    const auto plusDelta = static_cast<Error>(static_cast<unsigned>(from.plusDelta)),
               minusDelta = static_cast<Error>(static_cast<unsigned>(from.minusDelta));
    Error error = from.err;
    for (int i = 0;; ++i) {
        std::memcpy(dst, pixel, PixelSize);
        if (i == count - 1)
            return;
        dst += PixelSize;
        error -= minusDelta;
        const int mask = error < 0 ? -1 : 0;
        error += plusDelta & mask;
        pixel += minusStep + (plusStep & mask);
    }
}

template <class T, int Channels>
NoxStatus sampleLine(const T *src, int srcStep, NoxiSize roi, T *dst, NoxiPoint pt1, NoxiPoint pt2) {
    const auto inside = [roi](NoxiPoint point) {
        return point.x >= 0 && point.x < roi.width && point.y >= 0 && point.y < roi.height;
    };
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<T>(srcStep, Channels * 1LL * roi.width),
                     checkEvenSteps<T>(srcStep), require(inside(pt1) && inside(pt2), noxStsOutOfRange));
    if (status != noxStsNoError)
        return status;
    constexpr int pixelSize = Channels * static_cast<int>(sizeof(T));
    NoxvLineIterator iterator;
    const int count = _noxvInitLineIterator(src, srcStep, pixelSize, pt1.x, pt1.y, pt2.x, pt2.y, &iterator);
    if (count < 0)
        return noxStsBadLine;
    auto *pixels = reinterpret_cast<Nox8u *>(dst);
    if (count <= 1 << 30)
        walk<int, pixelSize>(iterator, count, pixels);
    else
        walk<long long, pixelSize>(iterator, count, pixels);
    return noxStsNoError;
}

} // namespace

#define NOX_SAMPLE_LINE(FUNCTION, TYPE, CHANNELS)                                                                      \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, NoxiSize roi, TYPE *dst, NoxiPoint pt1, NoxiPoint pt2) {          \
        return sampleLine<TYPE, CHANNELS>(src, srcStep, roi, dst, pt1, pt2);                                           \
    }

NOX_SAMPLE_LINE(noxiSampleLine_8u_C1R, Nox8u, 1)
NOX_SAMPLE_LINE(noxiSampleLine_8u_C3R, Nox8u, 3)
NOX_SAMPLE_LINE(noxiSampleLine_16u_C1R, Nox16u, 1)
NOX_SAMPLE_LINE(noxiSampleLine_16u_C3R, Nox16u, 3)
NOX_SAMPLE_LINE(noxiSampleLine_32f_C1R, Nox32f, 1)
NOX_SAMPLE_LINE(noxiSampleLine_32f_C3R, Nox32f, 3)
