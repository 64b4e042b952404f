// Growth of labels in the order of the smallest difference between neighbouring pixels.
//
// Pixels wait in one queue for each difference. A pixel takes its label when it is popped, and its unlabelled
// neighbours wait from then on, perhaps in a lower queue. The work image holds a pixel's colour and label in one
// element, and its outer pixels are marked, so that no neighbour needs a bounds test.
#include <cstring>
#include <type_traits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/segmentation.h"
#include "noxvpixelqueue.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

/// Labels are 1 to 254; where boundaries are drawn, 254 is theirs. 255 marks a pixel that waits or is left out.
constexpr Nox8u boundary = 254, marked = 255;

/// An element of the work image: the label in the low byte, the channels above it.
template <int channels>
using Pixel = std::conditional_t<channels == 1, Nox16u, Nox32u>;

template <class P>
NOX_INLINE Nox8u labelOf(P pixel) {
    return static_cast<Nox8u>(pixel);
}
NOX_INLINE bool isLabel(Nox8u value) { return value != 0 && value != marked; }

/// The largest difference of a channel.
template <int channels>
NOX_INLINE int difference(Pixel<channels> a, Pixel<channels> b) {
    int largest = 0;
    for (int c = 1; c <= channels; ++c) {
        const int d = static_cast<int>(a >> (8 * c) & 255U) - static_cast<int>(b >> (8 * c) & 255U);
        largest = std::max(largest, d < 0 ? -d : d);
    }
    return largest;
}

template <int channels>
struct Areas {
    PixelQueue::Entry *pool;
    Pixel<channels> *image;
    Areas(WorkBuffer &buffer, NoxiSize roi)
        : pool(buffer.take<PixelQueue::Entry>(area(roi))), image(buffer.take<Pixel<channels>>(area(roi))) {}
};

/// growth: 4 or 8 neighbours; bounds: 0, 4 or 8 neighbours decide on boundaries.
template <int channels, int growth, int bounds>
class GradientGrowth {
public:
    GradientGrowth(const Areas<channels> &areas, NoxiSize roi)
        : queue_(areas.pool), image_(areas.image), roi_(roi), neighbours_(roi.width) {}

    void run(Rows<const Nox8u> src, Rows<Nox8u> markers) {
        load(src, markers);
        for (int y = 1; y < roi_.height - 1; ++y)
            startRow(y);
        for (int level = queue_.lowest(); level < PixelQueue::levels; level = queue_.lowest())
            grow(image_ + queue_.pop(level));
        for (int y = 0; y < roi_.height; ++y) {
            const P *row = rowOf(y);
            Nox8u *labels = markers[y];
            for (int x = 0; x < roi_.width; ++x)
                labels[x] = labelOf(row[x]);
        }
    }

private:
    using P = Pixel<channels>;

    P *rowOf(int y) const { return image_ + std::ptrdiff_t(y) * roi_.width; }
    P &neighbour(P *pixel, int i) const { return pixel[neighbours_.offset[i]]; }
    P neighbour(const P *pixel, int i) const { return pixel[neighbours_.offset[i]]; }

    void load(Rows<const Nox8u> src, Rows<Nox8u> markers) {
        for (int y = 0; y < roi_.height; ++y) {
            P *row = rowOf(y);
            const Nox8u *colors = src[y], *labels = markers[y];
            const bool outer = y == 0 || y == roi_.height - 1;
            for (int x = 0; x < roi_.width; ++x) {
                P pixel = outer ? marked : labels[x];
                for (int c = 0; c < channels; ++c)
                    pixel = static_cast<P>(pixel | static_cast<P>(colors[std::ptrdiff_t(x) * channels + c])
                                                       << (8 * (c + 1)));
                row[x] = pixel;
            }
            row[0] |= marked;
            row[roi_.width - 1] |= marked;
        }
    }

    /// Queues the unlabelled pixels of a row that have a labelled neighbour.
    void startRow(int y) {
        P *row = rowOf(y);
        for (int x = 1; x < roi_.width - 1; ++x) {
            if (labelOf(row[x]) != 0)
                continue;
            int smallest = PixelQueue::levels;
            for (int i = 0; i < growth; ++i) {
                const P other = neighbour(row + x, i);
                if (isLabel(labelOf(other)))
                    smallest = std::min(smallest, difference<channels>(row[x], other));
            }
            if (smallest < PixelQueue::levels)
                wait(row + x, smallest);
        }
    }
    NOX_INLINE void wait(P *pixel, int level) {
        queue_.push(level, static_cast<Nox32u>(pixel - image_));
        *pixel |= marked;
    }

    /// Labels a pixel and lets its unlabelled neighbours wait.
    NOX_INLINE void grow(P *pixel) {
        const Nox8u label = nearestLabel(pixel);
        *pixel = static_cast<P>((*pixel & ~P(255)) | (meetsOther(pixel, label) ? boundary : label));
        for (int i = 0; i < growth; ++i) {
            P &other = neighbour(pixel, i);
            if (labelOf(other) == 0)
                wait(&other, difference<channels>(*pixel, other));
        }
    }
    /// That of the neighbour with the smallest difference. The last of equal ones counts, but not for a boundary.
    NOX_INLINE Nox8u nearestLabel(const P *pixel) const {
        int smallest = PixelQueue::levels;
        Nox8u label = 0;
        for (int i = 0; i < growth; ++i) {
            const P other = neighbour(pixel, i);
            if (!isLabel(labelOf(other)))
                continue;
            const int d = difference<channels>(*pixel, other);
            if (d < smallest || (d == smallest && labelOf(other) < boundary)) {
                smallest = d;
                label = labelOf(other);
            }
        }
        return label;
    }
    NOX_INLINE bool meetsOther(const P *pixel, Nox8u label) const {
        for (int i = 0; i < bounds; ++i) {
            const Nox8u other = labelOf(neighbour(pixel, i));
            if (isLabel(other) && other != boundary && other != label)
                return true;
        }
        return false;
    }

    PixelQueue queue_;
    P *image_;
    NoxiSize roi_;
    Neighbours neighbours_;
};

template <int channels, int growth>
void segment(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int bounds, const Areas<channels> &areas) {
    if (bounds == 4)
        GradientGrowth<channels, growth, 4>(areas, roi).run(src, markers);
    else if (bounds == 8)
        GradientGrowth<channels, growth, 8>(areas, roi).run(src, markers);
    else
        GradientGrowth<channels, growth, 0>(areas, roi).run(src, markers);
}

/// Both forms have room in it: 8 bytes of queue and at most 4 of image a pixel.
long long bufferBytes(NoxiSize roi) { return area(roi) > INT_MAX ? -1 : 13 * area(roi) + 103; }

NoxStatus bufferSize(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    return status == noxStsNoError ? storeSize(bufferBytes(roi), size) : status;
}

template <int channels>
NoxStatus segment(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep, NoxiSize roi, int norm, int flag,
                  Nox8u *buffer) {
    const NoxStatus status = firstFailure(
        checkPointers(src, markers, buffer), checkSize(roi), checkStep<Nox8u>(srcStep, roi.width * (long long)channels),
        checkStep<Nox8u>(markerStep, roi.width), require(norm == 0 || norm == 1, noxStsBadArgument),
        require(bufferBytes(roi) >= 0 && bufferBytes(roi) <= INT_MAX, noxStsBadSize));
    if (status != noxStsNoError)
        return status;
    WorkBuffer work(buffer, alignof(PixelQueue::Entry));
    const Areas<channels> areas(work, roi);
    if (norm == 1)
        segment<channels, 4>({src, srcStep}, {markers, markerStep}, roi, boundaryNeighbours(flag), areas);
    else
        segment<channels, 8>({src, srcStep}, {markers, markerStep}, roi, boundaryNeighbours(flag), areas);
    return noxStsNoError;
}

} // namespace

NoxStatus noxiSegmentGradientGetBufferSize_8u_C1R(NoxiSize roi, int *size) { return bufferSize(roi, size); }
NoxStatus noxiSegmentGradientGetBufferSize_8u_C3R(NoxiSize roi, int *size) { return bufferSize(roi, size); }

NoxStatus noxiSegmentGradient_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep, NoxiSize roi,
                                      int norm, int flag, Nox8u *buffer) {
    return segment<1>(src, srcStep, markers, markerStep, roi, norm, flag, buffer);
}
NoxStatus noxiSegmentGradient_8u_C3IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep, NoxiSize roi,
                                      int norm, int flag, Nox8u *buffer) {
    return segment<3>(src, srcStep, markers, markerStep, roi, norm, flag, buffer);
}
