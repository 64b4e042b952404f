// Following one point through the levels of two pyramids.
#pragma once

#include "noxvopticalflowlevel.h"
#include "noxvopticalflowpatch.h"
#include "noxvopticalflowsecond.h"

namespace nox {

/// What the points of a call share.
struct FlowCall {
    const NoxiPyramid *pyramid1, *pyramid2;
    const NoxiPoint32f *prevPts;
    NoxiPoint32f *nextPts;
    Nox8s *status;
    Nox32f *error;
    int winSize, maxIter;
    Nox32f squaredThreshold;
    Nox64f downScale; ///< from one level to the next finer one
};

/// Derivatives of a whole level. Without planes they are formed under the window of each point; that is for bytes only.
template <class Cell>
struct FlowPlanes {
    const Cell *dx, *dy;
    int step;
};

/// How a level ended for a point.
enum class FlowEnd {
    tracked,
    unread,  ///< no first patch
    lost,    ///< no second patch, or no structure in the patch
    outside, ///< the patches have no cell in common
};

/// Follows points, one at a time, with the patches of one slice.
template <class T>
class PointTracker {
public:
    using Cell = FlowCell<T>;

    /// cells: patches' worth of zeros.
    PointTracker(const FlowCall &call, Cell *cells);

    /// One level with derivatives of the whole level. The estimate comes from and goes to the point's result.
    void coarse(int point, int level, const FlowPlanes<Cell> &planes);
    /// Levels from `level` down to 0, with derivatives of the patch.
    void fine(int point, int level);

private:
    /// One level with its status and error; tells whether the point is still tracked.
    bool advance(int point, int level, NoxiPoint32f &estimate, const FlowPlanes<Cell> *planes);
    FlowEnd follow(int point, int level, NoxiPoint32f &estimate, const FlowPlanes<Cell> *planes);
    FlowEnd iterate(SecondWindow<T> &second, const Window &bounds, NoxiPoint32f &estimate, long double farAway);
    Window cutFirst(const FlowLevel<T> &level, NoxiPoint32f at, bool whole);
    void cutPlanes(const FlowPlanes<Cell> &planes, const FlowLevel<T> &level, const Window &bounds, NoxiPoint32f at);
    bool errorCounts(FlowEnd end, int level) const;
    Nox32f residual() const;

    const FlowCall &call_;
    Patches<Cell> patches_;
    Window window_{}; ///< the last common one of this level
};

extern template class PointTracker<Nox8u>;
extern template class PointTracker<Nox16u>;
extern template class PointTracker<Nox32f>;

} // namespace nox
