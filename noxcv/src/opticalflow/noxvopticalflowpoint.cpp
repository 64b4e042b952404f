// One point: at each level, from coarse to fine, a window of the first image is matched against the second one by
// Gauss-Newton steps. The steps are solved in extended precision; places are single precision.
#include "noxvopticalflowpoint.h"

#include <cmath>
#include <cstring>

#include "noxcv/sampling.h"
#include "noxvopticalflowsums.h"
#include "sampling/noxvsubpix.h"

using namespace nox;

namespace {

/// One over the scale of the patches of 8-bit images.
constexpr Nox32f patchUnit = 0.0078125F;

constexpr Nox64f smallestDeterminant = 2.220446049250313e-16;
/// Two steps that cancel each other up to this much: the point goes back and forth.
constexpr Nox64f reversal = 0.0003452669770922512;

constexpr Window nothing = {{0, 0}, {-1, -1}};

NoxiPoint32f multiplied(NoxiPoint32f p, Nox64f by) {
    return {static_cast<Nox32f>(p.x * by), static_cast<Nox32f>(p.y * by)};
}
NoxiPoint32f divided(NoxiPoint32f p, Nox64f by) {
    return {static_cast<Nox32f>(p.x / by), static_cast<Nox32f>(p.y / by)};
}
NoxiPoint32f toSingle(long double x, long double y) { return {static_cast<Nox32f>(x), static_cast<Nox32f>(y)}; }

// The caller's points may lie at any address.
NoxiPoint32f pointOf(const NoxiPoint32f *points, int index) {
    NoxiPoint32f point;
    std::memcpy(&point, points + index, sizeof(point));
    return point;
}
void setPoint(NoxiPoint32f *points, int index, NoxiPoint32f point) {
    std::memcpy(points + index, &point, sizeof(point));
}

// The patch functions of each type.

void cutWhole(const FlowLevel<Nox8u> &level, Nox16s *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    noxiCopySubpixIntersect_8u16u_C1R_Sfs(level.image, level.step, level.size, reinterpret_cast<Nox16u *>(dst), step,
                                          size, at, &inside.min, &inside.max, patchScale);
}
void cutWhole(const FlowLevel<Nox16u> &level, Nox32f *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    noxiCopySubpixIntersect_16u32f_C1R(level.image, level.step, level.size, dst, step, size, at, &inside.min,
                                       &inside.max);
}
void cutWhole(const FlowLevel<Nox32f> &level, Nox32f *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    noxiCopySubpixIntersect_32f_C1R(level.image, level.step, level.size, dst, step, size, at, &inside.min, &inside.max);
}

void cutInside(const FlowLevel<Nox8u> &level, Nox16s *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    ownGetRectSubpix_8u16u_C1R_Sfs(level.image, level.step, level.size, reinterpret_cast<Nox16u *>(dst), step, size, at,
                                   &inside.min, &inside.max, patchScale);
}
void cutInside(const FlowLevel<Nox16u> &level, Nox32f *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    ownGetRectSubpix_16u32f_C1R(level.image, level.step, level.size, dst, step, size, at, &inside.min, &inside.max);
}
void cutInside(const FlowLevel<Nox32f> &level, Nox32f *dst, int step, NoxiSize size, NoxiPoint32f at, Window &inside) {
    ownGetRectSubpix_32f_C1R(level.image, level.step, level.size, dst, step, size, at, &inside.min, &inside.max);
}

constexpr auto convolvePatch(const Nox16s *) { return ownOptConvolution_16s_C1R; }
constexpr auto convolvePatch(const Nox32f *) { return ownOptConvolution_32f_C1R; }
constexpr auto interpolate(const Nox16s *) { return ownModifiedConvolution_16s_C1R; }
constexpr auto interpolate(const Nox32f *) { return ownModifiedConvolution_32f_C1R; }

/// From the ringed patch to the window inside it: the cells whose neighbours lie in the image.
void shrink(int &min, int &max, int winSize) {
    if (min > 0)
        --min;
    max -= max > winSize ? 2 : 1;
}

/// The column (row) of the level where the first cell of the window inside the image lies.
int planeStart(Nox32f centre, int winSize) {
    const Nox32f left = centre - static_cast<Nox32f>(winSize + 1) * 0.5F;
    return left < 0 ? 0 : static_cast<int>(left) + 1;
}

/// The normal equations of a window.
struct NormalEquations {
    GradientMatrix sums;
    long double determinant = 0;

    NormalEquations() = default;
    explicit NormalEquations(const GradientMatrix &g) : sums(g), determinant(g.xx * g.yy - g.xy * g.xy) {}
    /// Not a number counts as too small.
    bool solvable() const { return determinant >= smallestDeterminant; }
    Projection solve(const Projection &b) const {
        return {(sums.yy * b.x - sums.xy * b.y) / determinant, (b.y * sums.xx - b.x * sums.xy) / determinant};
    }
};

} // namespace

namespace nox {

template <class T>
PointTracker<T>::PointTracker(const FlowCall &call, Cell *cells) : call_(call), patches_(cells, call.winSize) {}

/// Derivatives of the patch reach one cell out of the image, so they need the patch whole.
template <class T>
Window PointTracker<T>::cutFirst(const FlowLevel<T> &level, NoxiPoint32f at, bool whole) {
    const int size = call_.winSize + 2;
    Window inside{};
    if (whole)
        cutWhole(level, patches_.first, patches_.step, {size, size}, at, inside);
    else
        cutInside(level, patches_.first, patches_.step, {size, size}, at, inside);
    shrink(inside.min.x, inside.max.x, call_.winSize);
    shrink(inside.min.y, inside.max.y, call_.winSize);
    return inside;
}

template <class T>
void PointTracker<T>::cutPlanes(const FlowPlanes<Cell> &planes, const FlowLevel<T> &level, const Window &bounds,
                                NoxiPoint32f at) {
    if (bounds.empty())
        return;
    const NoxiPoint from = {planeStart(at.x, call_.winSize), planeStart(at.y, call_.winSize)};
    const auto cut = [&](Rows<const Cell> plane, Cell *patch) {
        interpolate(plane.base)(plane.base, static_cast<int>(plane.step),
                                Rows<Cell>{patch, patches_.step}[bounds.min.y] + bounds.min.x, patches_.step,
                                {level.size.width + 2, level.size.height + 2}, {call_.winSize, call_.winSize},
                                bounds.size(), at.x, at.y, 0);
    };
    const auto cutBoth = [&](Rows<const Cell> dx, Rows<const Cell> dy) {
        cut(dx, patches_.ix);
        cut(dy, patches_.iy);
    };
    if constexpr (std::is_same_v<T, Nox8u>)
        if (planes.dx == nullptr) {
            const Rows<Cell> dx = patches_.planeX(), dy = patches_.planeY();
            const auto [columns, rows] = bounds.size();
            levelDerivatives({level.image, level.step}, level.size, from, {columns + 1, rows + 1}, dx, dy,
                             patches_.planeScratch());
            return cutBoth({dx.base, dx.step}, {dy.base, dy.step});
        }
    const auto cells = [&](const Cell *plane) {
        return Rows<const Cell>{Rows<const Cell>{plane, planes.step}[from.y] + from.x, planes.step};
    };
    cutBoth(cells(planes.dx), cells(planes.dy));
}

template <class T>
FlowEnd PointTracker<T>::iterate(SecondWindow<T> &second, const Window &bounds, NoxiPoint32f &estimate,
                                 long double farAway) {
    Projection previous = {farAway, farAway};
    NormalEquations equations;
    for (int iteration = 0; iteration < call_.maxIter; ++iteration) {
        const Window window = common(bounds, second.place(estimate));
        const bool moved = iteration == 0 || !(window == window_);
        window_ = window;
        if (window.empty())
            return FlowEnd::outside;
        second.take(window);
        if (moved)
            equations = NormalEquations(squaredGradients(patches_, window));
        if (!equations.solvable())
            return FlowEnd::lost;
        const auto [dx, dy] = equations.solve(second.weightedResiduals(window));
        const long double x = estimate.x + dx, y = estimate.y + dy;
        estimate = toSingle(x, y);
        if (dx * dx + dy * dy < call_.squaredThreshold)
            break;
        if (std::fabs(previous.x + dx) < reversal && std::fabs(previous.y + dy) < reversal) {
            estimate = toSingle(x - 0.5L * dx, y - 0.5L * dy);
            break;
        }
        previous = {dx, dy};
    }
    return FlowEnd::tracked;
}

template <class T>
FlowEnd PointTracker<T>::follow(int point, int level, NoxiPoint32f &estimate, const FlowPlanes<Cell> *planes) {
    const FlowLevel<T> first(*call_.pyramid1, level), second(*call_.pyramid2, level);
    if (!first.usable())
        return FlowEnd::unread;
    window_ = nothing;
    if (!second.usable())
        return FlowEnd::lost;
    const NoxiPoint32f at = multiplied(pointOf(call_.prevPts, point), call_.pyramid1->rates[level]);
    const Window bounds = cutFirst(first, at, planes == nullptr);
    if (planes != nullptr)
        cutPlanes(*planes, first, bounds, at);
    else
        convolvePatch(patches_.first)(patches_.first, patches_.step, patches_.ix, patches_.iy, patches_.step,
                                      call_.winSize);
    // A first step cannot cancel what is as far away as this.
    SecondWindow<T> moving(patches_, second);
    const FlowEnd end =
        iterate(moving, bounds, estimate, static_cast<long double>(first.size.width) + first.size.height);
    if (errorCounts(end, level))
        moving.store(window_);
    return end;
}

/// Each level replaces the error of the one before, so only the last one that reads an image needs to compute it.
template <class T>
bool PointTracker<T>::errorCounts(FlowEnd end, int level) const {
    return end != FlowEnd::tracked || level == 0 || !FlowLevel<T>(*call_.pyramid1, level - 1).usable();
}

template <class T>
Nox32f PointTracker<T>::residual() const {
    if (window_.empty())
        return 0;
    const Nox32f sum = squaredResidual(patches_, window_);
    if (!(sum > 0))
        return 0;
    const auto [columns, rows] = window_.size();
    const Nox32f deviation = std::sqrt(sum / static_cast<Nox32f>((columns - 1) * (rows - 1)));
    return std::is_same_v<T, Nox8u> ? deviation * patchUnit : deviation;
}

template <class T>
bool PointTracker<T>::advance(int point, int level, NoxiPoint32f &estimate, const FlowPlanes<Cell> *planes) {
    call_.status[point] = static_cast<Nox8s>(level);
    const FlowEnd end = follow(point, level, estimate, planes);
    if (end == FlowEnd::unread)
        return false;
    if (end == FlowEnd::outside)
        setPoint(call_.nextPts, point, divided(estimate, call_.pyramid1->rates[level]));
    if (end != FlowEnd::tracked)
        call_.status[point] = static_cast<Nox8s>(level + 1);
    if (errorCounts(end, level))
        elements(call_.error)[point] = residual();
    return end == FlowEnd::tracked;
}

template <class T>
void PointTracker<T>::coarse(int point, int level, const FlowPlanes<Cell> &planes) {
    const Nox64f rate = call_.pyramid1->rates[level];
    NoxiPoint32f estimate = multiplied(pointOf(call_.nextPts, point), rate);
    if (advance(point, level, estimate, &planes))
        setPoint(call_.nextPts, point, level == 0 ? estimate : divided(estimate, rate));
}

template <class T>
void PointTracker<T>::fine(int point, int level) {
    NoxiPoint32f estimate = multiplied(pointOf(call_.nextPts, point), call_.pyramid1->rates[level]);
    for (; advance(point, level, estimate, nullptr); --level, estimate = multiplied(estimate, call_.downScale))
        if (level == 0) {
            setPoint(call_.nextPts, point, estimate);
            return;
        }
}

template class PointTracker<Nox8u>;
template class PointTracker<Nox16u>;
template class PointTracker<Nox32f>;

} // namespace nox
