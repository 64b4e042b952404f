// Watershed: labels grow over a relief of grey levels until they meet (S. Beucher, F. Meyer, 1993).
//
// The flood with queues has one for each level and never goes back to a lower one. Its work image holds a pixel's grey
// level and label in one 16-bit element, with a frame of boundary labels, so that a look at a neighbour is one load and
// needs no bounds test.
#include <cstring>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/segmentation.h"
#include "noxvboundsegments.h"
#include "noxvpixelqueue.h"
#include "noxvwatershedcost.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr Nox8u boundary = 255;

NOX_INLINE bool isLabel(int value) { return value != 0 && value != boundary; }

/// A pixel of the work image: label in the low byte, grey level in the high one.
NOX_INLINE Nox8u labelOf(Nox16u pixel) { return static_cast<Nox8u>(pixel); }
NOX_INLINE int levelOf(Nox16u pixel) { return pixel >> 8; }

struct QueueAreas {
    PixelQueue::Entry *pool;
    Nox16u *image;
    QueueAreas(WorkBuffer &buffer, NoxiSize roi)
        : pool(buffer.take<PixelQueue::Entry>(area(roi))),
          image(buffer.take<Nox16u>(area({roi.width + 2, roi.height + 2}))) {}
};

/// growth: 4 or 8 neighbours; bounds: 0, 4 or 8 neighbours decide on boundaries.
template <int growth, int bounds>
class QueueFlood {
public:
    QueueFlood(const QueueAreas &areas, NoxiSize roi)
        : queue_(areas.pool), image_(areas.image), roi_(roi), pitch_(roi.width + 2), neighbours_(pitch_) {}

    void run(Rows<const Nox8u> src, Rows<Nox8u> markers) {
        load(src, markers);
        for (int y = 0; y < roi_.height; ++y)
            startRow(markers[y], y);
        for (int level = 0; level < PixelQueue::levels; ++level)
            while (!queue_.empty(level))
                grow(level, image_ + queue_.pop(level));
        for (int y = 0; y < roi_.height; ++y) {
            const Nox16u *row = rowOf(y);
            Nox8u *labels = markers[y];
            for (int x = 0; x < roi_.width; ++x)
                labels[x] = labelOf(row[x]);
        }
    }

private:
    Nox16u *rowOf(int y) const { return image_ + (y + 1) * pitch_ + 1; }

    void load(Rows<const Nox8u> src, Rows<Nox8u> markers) {
        std::fill_n(rowOf(-1) - 1, pitch_, boundary);
        std::fill_n(rowOf(roi_.height) - 1, pitch_, boundary);
        for (int y = 0; y < roi_.height; ++y) {
            Nox16u *row = rowOf(y);
            const Nox8u *grey = src[y], *labels = markers[y];
            row[-1] = row[roi_.width] = boundary;
            for (int x = 0; x < roi_.width; ++x)
                row[x] = static_cast<Nox16u>(labels[x] | grey[x] << 8);
        }
    }

    /// Queues the labelled pixels of a row that have room to grow. Runs without labels are skipped by the word.
    void startRow(const Nox8u *labels, int y) {
        Nox16u *row = rowOf(y);
        constexpr int word = sizeof(std::uint64_t);
        for (int x = 0; x < roi_.width;) {
            std::uint64_t bytes = 1;
            if (x + word <= roi_.width)
                std::memcpy(&bytes, labels + x, word);
            if (bytes == 0) {
                x += word;
                continue;
            }
            if (isLabel(labels[x]))
                start(row + x);
            ++x;
        }
    }
    void start(Nox16u *pixel) {
        for (int i = 0; i < growth; ++i)
            if (labelOf(pixel[neighbours_.offset[i]]) == 0) {
                queue_.push(levelOf(*pixel), static_cast<Nox32u>(pixel - image_));
                break;
            }
        if (bounds > 0 && labelBetween(pixel, labelOf(*pixel)) == boundary)
            *pixel |= boundary;
    }

    /// Labels and queues the unlabelled neighbours.
    NOX_INLINE void grow(int level, const Nox16u *pixel) {
        const Nox8u label = labelOf(*pixel);
        for (int i = 0; i < growth; ++i) {
            Nox16u *neighbour = image_ + (pixel - image_) + neighbours_.offset[i];
            const Nox16u value = *neighbour;
            if (labelOf(value) != 0)
                continue;
            *neighbour = static_cast<Nox16u>(value | (bounds > 0 ? labelBetween(neighbour, label) : label));
            queue_.push(std::max(level, levelOf(value)), static_cast<Nox32u>(neighbour - image_));
        }
    }

    /// The label of a pixel that gets `label` among its neighbours: boundary when one has another label; a boundary's
    /// successor takes the one label that its neighbours have.
    NOX_INLINE Nox8u labelBetween(const Nox16u *pixel, Nox8u label) const {
        for (int i = 0; i < bounds; ++i) {
            const Nox8u other = labelOf(pixel[neighbours_.offset[i]]);
            if (!isLabel(other) || other == label)
                continue;
            if (label != boundary)
                return boundary;
            label = other;
        }
        return label;
    }

    PixelQueue queue_;
    Nox16u *image_;
    NoxiSize roi_;
    std::ptrdiff_t pitch_;
    Neighbours neighbours_;
};

template <int growth>
void floodByQueue(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int bounds, const QueueAreas &areas) {
    if (bounds == 4)
        QueueFlood<growth, 4>(areas, roi).run(src, markers);
    else if (bounds == 8)
        QueueFlood<growth, 8>(areas, roi).run(src, markers);
    else
        QueueFlood<growth, 0>(areas, roi).run(src, markers);
}

void floodByQueue(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int norm, int flag, Nox8u *buffer) {
    WorkBuffer work(buffer, alignof(PixelQueue::Entry));
    const QueueAreas areas(work, roi);
    if (norm == 1)
        floodByQueue<4>(src, markers, roi, boundaryNeighbours(flag), areas);
    else
        floodByQueue<8>(src, markers, roi, boundaryNeighbours(flag), areas);
}

void floodByCost(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int norm, int flag, Nox8u *buffer) {
    WorkBuffer work(buffer, alignof(Nox32s));
    const CostAreas areas(work, roi);
    floodByCost(src, markers, roi, norm, areas);
    if (boundaryNeighbours(flag) > 0)
        ownBoundSegments_8u_C1IR(markers.base, static_cast<int>(markers.step), areas.cost,
                                 roi.width * static_cast<int>(sizeof(Nox32s)), roi.width, roi.height, boundary,
                                 boundaryNeighbours(flag) == 4 ? 1 : 0);
}

/// Room for either form: 16-bit pixels with a frame and 8 bytes of queue a pixel, or 12 bytes of cost and lists a
/// pixel, each at most 13 bytes a pixel with a frame of one byte.
long long bufferBytes(NoxiSize roi) {
    if (area(roi) > INT_MAX)
        return -1;
    const long long stride = roundUp<long long>(roi.width, 32), height = roi.height;
    const long long sweeps = (2 * height + 2) * stride + 4 * stride * height + height + 66;
    return std::max(sweeps, 12 * area(roi) + 36 + (roi.width + 2) * (height + 2));
}

/// The forms by queue know norms 0 and 1, the one by cost 0 to 3.
NoxStatus checkForm(int norm, int flag) {
    const int norms = (flag & byQueue) != 0 ? 2 : (flag & bySweeps) != 0 ? 4 : 0;
    return require(norm >= 0 && norm < norms, noxStsBadArgument);
}

} // namespace

NoxStatus noxiSegmentWatershedGetBufferSize_8u_C1R(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    return status == noxStsNoError ? storeSize(bufferBytes(roi), size) : status;
}

NoxStatus noxiSegmentWatershed_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep, NoxiSize roi,
                                       int norm, int flag, Nox8u *buffer) {
    int bytes = 0;
    const NoxStatus status =
        firstFailure(checkPointers(src, markers, buffer), checkSize(roi), checkStep<Nox8u>(srcStep, roi.width),
                     checkStep<Nox8u>(markerStep, roi.width), checkForm(norm, flag));
    if (status != noxStsNoError)
        return status;
    if (storeSize(bufferBytes(roi), &bytes) != noxStsNoError)
        return noxStsBadSize;
    if ((flag & byQueue) != 0)
        floodByQueue({src, srcStep}, {markers, markerStep}, roi, norm, flag, buffer);
    else
        floodByCost({src, srcStep}, {markers, markerStep}, roi, norm, flag, buffer);
    return noxStsNoError;
}
