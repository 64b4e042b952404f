// The patches of the point tracker, and their derivatives.
#pragma once

#include <algorithm>

#include "noxtypes.h"
#include "rows.h"
#include "tiers.h"

extern "C" {
/// Interpolates a plane of derivatives: rect cells at dst, the first one from src on. The fraction of the place comes
/// from the point and the patch around it: u = x - (patch.width - 1) / 2, and v likewise, in extended precision. With a
/// = trunc(32768 fraction + 0.5) and b = 32768 - a an axis, the weights are (bx by + 16384) >> 15 and so on, and a cell
/// is (sum + 16384) >> 15. Reads one column and one row more than rect. plane and scale are not looked at.
NOX_GLOBAL void ownModifiedConvolution_16s_C1R(const Nox16s *src, int srcStep, Nox16s *dst, int dstStep, NoxiSize plane,
                                               NoxiSize patch, NoxiSize rect, Nox32f x, Nox32f y, int scale);
/// The same with the fractions themselves as weights, in single precision.
void ownModifiedConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize plane,
                                    NoxiSize patch, NoxiSize rect, Nox32f x, Nox32f y, int scale);

/// Derivatives of a patch of size + 2 cells a side: with d(x) = s(x + 2) - s(x) and m(x) = 3 s(x) + 10 s(x + 1) +
/// 3 s(x + 2) in each row, ix = (3 d(y) + 10 d(y + 1) + 3 d(y + 2) + 16) >> 5 and iy = (m(y + 2) - m(y) + 16) >> 5,
/// saturated. Rows of ix and iy are written up to a multiple of eight cells, with zeros behind the last one; those of
/// src are read two cells beyond that.
void ownOptConvolution_16s_C1R(const Nox16s *src, int srcStep, Nox16s *ix, Nox16s *iy, int dstStep, int size);
/// The same with the factors 0.09375 and 0.3125 and no shift, in single precision from left to right; size cells a row.
void ownOptConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *ix, Nox32f *iy, int dstStep, int size);
}

namespace nox {

/// Scharr derivatives with repeated edges, times 4, of `size` pixels of a level from pixel `at` on: what the filters
/// give for the whole level. Rows of dx and dy are written up to seven cells too far. `scratch` holds size + 2 bytes
/// both ways, and 16 more.
void levelDerivatives(Rows<const Nox8u> level, NoxiSize levelSize, NoxiPoint at, NoxiSize size, Rows<Nox16s> dx,
                      Rows<Nox16s> dy, Nox8u *scratch);

/// Cells min to max of a window, both included.
struct Window {
    NoxiPoint min, max;

    bool empty() const { return min.x > max.x || min.y > max.y; }
    NoxiSize size() const { return {max.x - min.x + 1, max.y - min.y + 1}; }
    bool operator==(const Window &other) const {
        return min.x == other.min.x && min.y == other.min.y && max.x == other.max.x && max.y == other.max.y;
    }
};

inline Window common(const Window &a, const Window &b) {
    return {{std::max(a.min.x, b.min.x), std::max(a.min.y, b.min.y)},
            {std::min(a.max.x, b.max.x), std::min(a.max.y, b.max.y)}};
}

/// The four patches of a point, windows of `size` cells a side. The first one has a ring of one cell around it. Rows
/// are padded so that a vector can be loaded from every cell of a window.
template <class Cell>
struct Patches {
    int size, step;
    Cell *first, *second, *ix, *iy;
    Cell *samples; ///< of the second image under its window: a row and a column more

    static constexpr int pitchOf(int size) {
        constexpr int lanes = 32 / sizeof(Cell);
        return roundUp(size, lanes) + lanes;
    }
    /// Cells of all four, and of the samples.
    static constexpr long long cellsOf(int size) {
        return (4LL * size + 2) * pitchOf(size) + (size + 1LL) * pitchOf(size + 1);
    }

    /// Carves the patches out of cells that hold zeros.
    Patches(Cell *cells, int windowSize)
        : size(windowSize), step(pitchOf(windowSize) * static_cast<int>(sizeof(Cell))), first(cells),
          second(first + patchCells(size + 2)), ix(second + patchCells(size)), iy(ix + patchCells(size)),
          samples(iy + patchCells(size)) {}

    Rows<const Cell> firstRows() const { return Rows<const Cell>{first + 1, step}.from(1); }
    Rows<const Cell> secondRows() const { return {second, step}; }
    Rows<const Cell> ixRows() const { return {ix, step}; }
    Rows<const Cell> iyRows() const { return {iy, step}; }
    /// Two planes of a row and a column more than the window has, and scratch for them. They lie where the second
    /// window, its samples and the derivatives go later: (size + 1)^2 cells and a vector more fit size * pitchOf(size)
    /// ones.
    Rows<Cell> planeX() const { return sampleRows(); }
    Rows<Cell> planeY() const { return {second, (size + 1) * static_cast<int>(sizeof(Cell))}; }
    Nox8u *planeScratch() const { return reinterpret_cast<Nox8u *>(ix); }
    Rows<Cell> sampleRows() const { return {samples, pitchOf(size + 1) * static_cast<int>(sizeof(Cell))}; }

private:
    std::ptrdiff_t patchCells(int rows) const { return std::ptrdiff_t{pitchOf(size)} * rows; }
};

} // namespace nox
