// Sums over the patches of the point tracker.
#include "noxvopticalflowsums.h"

#include <cstdint>

namespace nox {

/// The cells of a window in each patch.
template <class Cell>
struct CellWindow {
    Rows<const Cell> ix, iy, first, second;
    int columns, rows;

    CellWindow(const Patches<Cell> &patches, const Window &window)
        : ix(from(patches.ixRows(), window.min)), iy(from(patches.iyRows(), window.min)),
          first(from(patches.firstRows(), window.min)), second(from(patches.secondRows(), window.min)),
          columns(window.size().width), rows(window.size().height) {}

private:
    static Rows<const Cell> from(Rows<const Cell> patch, NoxiPoint cell) {
        return {patch[cell.y] + cell.x, patch.step};
    }
};

} // namespace nox

#define NOX_KERNELS "opticalflow/noxvopticalflowkernels.inc"
#include "noxveachtier.h"

namespace nox {

namespace {

/// A row's sum of products.
struct RowSum {
    double lanes[4] = {};

    NOX_INLINE void add(int lane, Nox32f a, Nox32f b) {
        lanes[lane] += static_cast<double>(a) * static_cast<double>(b);
    }
    NOX_INLINE double total() const { return (lanes[0] + lanes[2]) + (lanes[1] + lanes[3]); }
};

/// body(column, lane) for each column of a row.
template <class Body>
NOX_INLINE void forColumns(int columns, const Body &body) {
    int column = 0;
    for (; column <= columns - 4; column += 4)
        for (int lane = 0; lane < 4; ++lane)
            body(column + lane, lane);
    for (int lane = 0; column < columns; ++lane, ++column)
        body(column, lane);
}

NOX_TIERS Projection floatResiduals(const CellWindow<Nox32f> &window) {
    Projection totals = {0, 0};
    for (int row = 0; row < window.rows; ++row) {
        const Nox32f *ix = window.ix[row], *iy = window.iy[row], *a = window.first[row], *b = window.second[row];
        RowSum x, y;
        forColumns(window.columns, [&](int column, int lane) NOX_INLINE_LAMBDA {
            const Nox32f r = a[column] - b[column];
            x.add(lane, ix[column], r);
            y.add(lane, iy[column], r);
        });
        totals.x += x.total();
        totals.y += y.total();
    }
    return totals;
}

NOX_TIERS GradientMatrix floatGradients(const CellWindow<Nox32f> &window) {
    GradientMatrix totals;
    for (int row = 0; row < window.rows; ++row) {
        const Nox32f *ix = window.ix[row], *iy = window.iy[row];
        RowSum xx, xy, yy;
        forColumns(window.columns, [&](int column, int lane) NOX_INLINE_LAMBDA {
            xx.add(lane, ix[column], ix[column]);
            xy.add(lane, ix[column], iy[column]);
            yy.add(lane, iy[column], iy[column]);
        });
        totals.xx += xx.total();
        totals.xy += xy.total();
        totals.yy += yy.total();
    }
    return totals;
}

template <class Cell>
Nox32f squaresInOrder(const CellWindow<Cell> &window) {
    Nox32f total = 0;
    for (int row = 0; row < window.rows; ++row) {
        const Cell *a = window.first[row], *b = window.second[row];
        for (int column = 0; column < window.columns; ++column) {
            const auto r = static_cast<Nox32f>(a[column] - b[column]);
            total += r * r;
        }
    }
    return total;
}

/// A window without its last column and row.
Window withoutEnd(const Window &window) { return {window.min, {window.max.x - 1, window.max.y - 1}}; }

} // namespace

Projection weightedResiduals(const Patches<Nox16s> &patches, const Window &window) {
    std::int64_t sums[2];
    NOX_ON_TIER(weightedResiduals({patches, window}, sums));
    return {static_cast<long double>(sums[0]), static_cast<long double>(sums[1])};
}

Projection weightedResiduals(const Patches<Nox32f> &patches, const Window &window) {
    return floatResiduals({patches, window});
}

GradientMatrix squaredGradients(const Patches<Nox16s> &patches, const Window &window) {
    std::int64_t sums[3];
    NOX_ON_TIER(squaredGradients({patches, window}, sums));
    const auto [xx, yy, xy] = sums;
    return {static_cast<long double>(xx), static_cast<long double>(xy), static_cast<long double>(yy)};
}

GradientMatrix squaredGradients(const Patches<Nox32f> &patches, const Window &window) {
    return floatGradients({patches, window});
}

Nox32f squaredResidual(const Patches<Nox16s> &patches, const Window &window) {
    const CellWindow<Nox16s> cells(patches, withoutEnd(window));
    // Below 2^24 each partial sum is an integer that single precision holds, so any order gives the same bits.
    const std::uint64_t exact = NOX_ON_TIER(squaredResiduals(cells));
    return exact < (1U << 24) ? static_cast<Nox32f>(exact) : squaresInOrder(cells);
}

Nox32f squaredResidual(const Patches<Nox32f> &patches, const Window &window) {
    return squaresInOrder(CellWindow<Nox32f>(patches, withoutEnd(window)));
}

} // namespace nox
