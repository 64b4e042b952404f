// Watershed by topographic cost.
#pragma once

#include "frame/noxvworkbuffer.h"

extern "C" {
/// What two neighbours at a right angle save against one: 64 - (k + sqrt(8192 - k^2)) / 2 for costs that differ by k,
/// the first-order step of a front over a grid of unit 64, rounded to nearest.
NOX_GLOBAL extern const Nox32s FMM_SUB[65];
}

namespace nox {

/// The flood's areas in the caller's buffer: a cost for each pixel, and the lists of those that wait.
struct CostAreas {
    Nox32s *cost;
    Nox32u *next, *before;
    CostAreas(WorkBuffer &buffer, NoxiSize roi)
        : cost(buffer.take<Nox32s>(area(roi))), next(buffer.take<Nox32u>(area(roi))),
          before(buffer.take<Nox32u>(area(roi))) {}
};

/// Gives each pixel of label 0 the label of the neighbour on its cheapest way from a labelled one, and areas.cost the
/// cost of each pixel, in packed rows. norm is 0 to 3.
void floodByCost(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int norm, const CostAreas &areas);

} // namespace nox
