// Boundaries between labelled areas, one pixel wide.
#include "noxvboundsegments.h"

#include "checks.h"
#include "noxcv/segmentation.h"
#include "rows.h"

using namespace nox;

namespace {

/// Whether a pixel with this label becomes boundary beside a neighbour that has been passed.
NOX_INLINE bool bounds(Nox8u label, Nox8u neighbour, Nox8u value) {
    return (neighbour != value) & (neighbour != label);
}

/// Marks pixels begin to end - 1 by the left neighbour and, with `reach`, by those above from x - reach to x + reach; a
/// reach below 0 is a row without one above.
template <int reach>
NOX_INLINE void markRow(const Nox8u *above, Nox8u *row, int begin, int end, Nox8u value) {
    Nox8u left = begin > 0 ? row[begin - 1] : value;
    for (int x = begin; x < end; ++x) {
        const Nox8u label = row[x];
        bool marked = bounds(label, left, value);
        for (int i = -reach; i <= reach; ++i)
            marked |= bounds(label, above[x + i], value);
        left = marked ? value : label;
        row[x] = left;
    }
}

/// Four neighbours, or eight in images of two columns and more.
void markAll(Rows<Nox8u> markers, NoxiSize roi, Nox8u value, bool diagonal) {
    const int last = roi.width - 1;
    markRow<-1>(nullptr, markers[0], 0, roi.width, value);
    for (int y = 1; y < roi.height; ++y) {
        const Nox8u *above = markers[y - 1];
        Nox8u *row = markers[y];
        if (!diagonal || last == 0) {
            markRow<0>(above, row, 0, roi.width, value);
            continue;
        }
        const bool marked = bounds(row[0], above[0], value) | bounds(row[0], above[1], value);
        row[0] = marked ? value : row[0];
        markRow<1>(above, row, 1, last, value);
        const Nox8u label = row[last];
        const bool bound = bounds(label, above[last - 1], value) | bounds(label, above[last], value) |
                           bounds(label, row[last - 1], value);
        row[last] = bound ? value : label;
    }
}

/// One pair: the pixel of larger cost, of equal costs the later one.
NOX_INLINE void markPair(Nox8u &earlier, Nox32s earlierCost, Nox8u &later, Nox32s laterCost, Nox8u value) {
    if (earlier == later || earlier == value || later == value)
        return;
    (earlierCost > laterCost ? earlier : later) = value;
}

} // namespace

NoxStatus ownBoundSegments_8u_C1IR(Nox8u *markers, int markerStep, const Nox32s *cost, int costStep, int width,
                                   int height, Nox8u value, int norm) {
    const Rows<Nox8u> labels{markers, markerStep};
    const Rows<const Nox32s> costs{cost, costStep};
    for (int y = 0; y < height; ++y) {
        Nox8u *row = labels[y], *above = y > 0 ? labels[y - 1] : nullptr;
        const Element<const Nox32s> *c = costs[y], *costAbove = y > 0 ? costs[y - 1] : nullptr;
        for (int x = 0; x < width; ++x) {
            if (y > 0)
                markPair(above[x], costAbove[x], row[x], c[x], value);
            if (x + 1 < width)
                markPair(row[x], c[x], row[x + 1], c[x + 1], value);
            if (norm == 1 || y == 0)
                continue;
            if (x > 0)
                markPair(above[x - 1], costAbove[x - 1], row[x], c[x], value);
            if (x + 1 < width)
                markPair(above[x + 1], costAbove[x + 1], row[x], c[x], value);
        }
    }
    return noxStsNoError;
}

NoxStatus noxiBoundSegments_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, Nox8u value, int norm) {
    const NoxStatus status =
        firstFailure(checkPointers(markers), checkSize(roi), checkStep<Nox8u>(markerStep, roi.width),
                     require(norm == 0 || norm == 1, noxStsBadArgument));
    if (status == noxStsNoError)
        markAll({markers, markerStep}, roi, value, norm == 0);
    return status;
}
