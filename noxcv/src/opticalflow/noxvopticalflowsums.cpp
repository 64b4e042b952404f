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

/// The same, with the samples of the second patch in place of it.
struct SampledWindow : CellWindow<Nox16s> {
    Rows<const Nox16s> samples;
    FixedConstants weights;

    SampledWindow(const Patches<Nox16s> &patches, const Window &window, const FixedConstants &constants)
        : CellWindow(patches, window), samples{patches.samples, patches.sampleRows().step}, weights(constants) {}
};

} // namespace nox

#define NOX_KERNELS "opticalflow/noxvopticalflowkernels.inc"
#include "noxveachtier.h"

namespace nox {

namespace {

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

Projection weightedResiduals(const Patches<Nox16s> &patches, const Window &window, const FixedConstants &weights) {
    std::int64_t sums[2];
    NOX_ON_TIER(weightedResiduals(SampledWindow(patches, window, weights), sums));
    return {static_cast<long double>(sums[0]), static_cast<long double>(sums[1])};
}

void keepSamples(Rows<const Nox8u> image, const Patches<Nox16s> &patches, NoxiSize size) {
    NOX_ON_TIER(keepSamples(image, patches.sampleRows(), {size.width + 1, size.height + 1}));
}

void storeSecond(const Patches<Nox16s> &patches, const Window &window, const FixedConstants &weights) {
    NOX_ON_TIER(storeSecond(SampledWindow(patches, window, weights)));
}

Projection weightedResiduals(const Patches<Nox32f> &patches, const Window &window) {
    return NOX_ON_TIER(weightedResiduals(CellWindow<Nox32f>(patches, window)));
}

GradientMatrix squaredGradients(const Patches<Nox16s> &patches, const Window &window) {
    std::int64_t sums[3];
    NOX_ON_TIER(squaredGradients(CellWindow<Nox16s>(patches, window), sums));
    const auto [xx, yy, xy] = sums;
    return {static_cast<long double>(xx), static_cast<long double>(xy), static_cast<long double>(yy)};
}

GradientMatrix squaredGradients(const Patches<Nox32f> &patches, const Window &window) {
    return NOX_ON_TIER(squaredGradients(CellWindow<Nox32f>(patches, window)));
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
