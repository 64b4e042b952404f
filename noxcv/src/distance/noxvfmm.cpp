// Fast marching: arrival times by sweeps over whole rows, confined to what the last change can reach by a byte of flags
// a pixel and a byte a row.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "frame/owncvomp.h"
#include "noxcv/distance.h"
#include "rows.h"
#include "tiers.h"

using nox::checkEvenSteps, nox::checkPointers, nox::checkSize, nox::checkStep, nox::firstFailure, nox::require;
using nox::Element, nox::Rows;

namespace {

/// Stands for infinity where no front has come from yet.
constexpr Nox32f unreached = 999999.0F;
/// A zero pixel beside a positive one: the smallest step into the band, negative and yet no distance.
constexpr Nox32f boundary = -1e-10F;

// The sweeps that must visit a pixel again.
constexpr Nox8u downForward = 1, downBackward = 2, upForward = 4, upBackward = 8;
constexpr Nox8u inDown = downForward | downBackward, inUp = upForward | upBackward;

/// The larger root of the two-sided quadratic with unit steps, from a neighbour above or below and one to the side.
NOX_INLINE Nox32f arrival(Nox32f p, Nox32f q) {
    const Nox32f difference = p - q;
    if (std::fabs(difference) >= 1)
        return (p < q ? p : q) + 1;
    return ((p + q) + std::sqrt(2 - difference * difference)) * 0.5F;
}

/// The areas of a work buffer. A guard lies before the first row of flags and after the last one.
struct Areas {
    std::ptrdiff_t stride;
    Nox8u *pixelFlags; ///< of the guard row above the image
    Nox32s *rowCounts;
    Nox8u *rowFlags; ///< of the guard

    Areas(nox::WorkBuffer &buffer, NoxiSize roi)
        : stride(nox::roundUp<long long>(roi.width, 32)), pixelFlags(buffer.take<Nox8u>(stride * (roi.height + 2LL))),
          rowCounts(buffer.take<Nox32s>(roi.height)), rowFlags(buffer.take<Nox8u>(roi.height + 2LL)) {}
};
constexpr int bufferAlignment = 32;

/// The stated size; the areas above and the way to the alignment take no more.
long long bufferBytes(NoxiSize roi) {
    return roi.height * 5LL + 10 + (roi.height + 2LL) * nox::roundUp<long long>(roi.width, 32) + 40;
}

/// The sweeps. `band`: zero pixels near others get negative distances; `later`: a pixel is visited only where a flag
/// says so, or where the one before it in the pass has changed.
template <bool band>
class Solver {
public:
    Solver(Rows<const Nox8u> src, Rows<Nox32f> dst, NoxiSize roi, Nox32f radius, const Areas &areas)
        : src_(src), dst_(dst), width_(roi.width), height_(roi.height), stride_(areas.stride), reach_(radius + 1e-5F),
          pixelFlags_(areas.pixelFlags + areas.stride), rowFlags_(areas.rowFlags + 1) {}

    /// Fills rows first to end (exclusive, in the order of the two). Tells whether the last row has changed.
    bool first(int first, int end) const {
        const int ahead = first < end ? 1 : -1;
        firstRow(first);
        bool changed = true;
        for (int y = first + ahead; y != end; y += ahead) {
            changed = nextRow(y, ahead);
            mark(y, changed);
            if (y + ahead != end)
                mark(y + ahead, changed);
            mark(y - ahead, changed);
        }
        return changed;
    }
    /// Improves the rows that are flagged; tells whether any pixel changed. `keep`: a row's flag stays.
    bool second(int first, int end, bool keep) const { return sweep<false>(first, end, keep); }
    bool third(int first, int end, bool keep) const { return sweep<true>(first, end, keep); }

    void clearRowFlag(int y) const { rowFlags_[y] = 0; }
    void mark(int y, bool changed) const { rowFlags_[y] = static_cast<Nox8u>(rowFlags_[y] | (changed ? 1 : 0)); }

private:
    /// Distances that a front comes from: those of the band count as none.
    NOX_INLINE static Nox32f source(Nox32f value) { return band && value < 0 ? 0 : value; }

    /// A step farther into the band from neighbours of which one at least is negative; 0 stands for none.
    NOX_INLINE static Nox32f inward(Nox32f u, Nox32f v) {
        const Nox32f difference = u - v;
        if (u == 0 || v == 0)
            return (u < v ? u : v) - 1;
        if (std::fabs(difference) < 1)
            return ((u + v) - std::sqrt(2 - difference * difference)) * 0.5F;
        return (u > v ? u : v) - 1;
    }
    /// A zero pixel of the band; keeps what is nearer to zero.
    NOX_INLINE bool improveBand(Element<Nox32f> *row, int x, Nox32f u, Nox32f v) const {
        const Nox32f pixel = row[x];
        if (u > 0 || v > 0) {
            // One that is the boundary already has not changed; neighbours would mark each other for ever.
            row[x] = boundary;
            return pixel != boundary;
        }
        if (!(u < 0 || v < 0))
            return false;
        const Nox32f value = inward(u, v);
        if (!(value >= -reach_) || !(pixel == 0 || pixel < value))
            return false;
        row[x] = value;
        return true;
    }
    NOX_INLINE bool lower(Element<Nox32f> *row, int x, Nox32f value) const {
        if (!(value < row[x]))
            return false;
        row[x] = value;
        return true;
    }
    /// Pixel x from the row before and the pixel before.
    NOX_INLINE bool improve(const Nox8u *src, Element<Nox32f> *row, int x, Nox32f u, Nox32f v) const {
        if (src[x] != 0)
            return lower(row, x, arrival(source(u), source(v)));
        return band && improveBand(row, x, u, v);
    }
    /// Pixel 0 in a pass from left to right, which has no pixel before it.
    NOX_INLINE bool improveStart(const Nox8u *src, Element<Nox32f> *row, Nox32f u) const {
        if (src[0] != 0)
            return lower(row, 0, source(u) + 1);
        return band && improveBand(row, 0, u, 0);
    }

    /// The first row that a solution is swept from: along the row alone.
    void firstRow(int y) const {
        const Nox8u *src = src_[y];
        Element<Nox32f> *row = dst_[y];
        row[0] = src[0] != 0 ? unreached : 0;
        for (int x = 1; x < width_; ++x) {
            const Nox32f left = row[x - 1];
            row[x] = src[x] != 0 ? source(left) + 1 : band ? beside(left) : 0;
        }
        for (int x = width_ - 2; x >= 0; --x) {
            const Nox32f right = row[x + 1];
            if (src[x] != 0)
                lower(row, x, source(right) + 1);
            else if (band)
                improveBand(row, x, 0, right);
        }
        rowFlags_[y] = 1;
    }
    /// A zero pixel with one neighbour, where nothing has been written yet.
    NOX_INLINE Nox32f beside(Nox32f neighbour) const {
        if (neighbour > 0)
            return boundary;
        return neighbour < 0 && neighbour - 1 >= -reach_ ? neighbour - 1 : 0;
    }

    bool nextRow(int y, int ahead) const {
        const Nox8u *src = src_[y];
        Element<Nox32f> *row = dst_[y];
        const Element<Nox32f> *before = dst_[y - ahead];
        bool changed = false;
        if (src[0] != 0) {
            row[0] = source(before[0]) + 1;
            changed = true;
        } else {
            row[0] = band ? beside(before[0]) : 0;
            changed = row[0] != 0;
        }
        for (int x = 1; x < width_; ++x) {
            const Nox32f u = before[x], v = row[x - 1];
            if (src[x] != 0) {
                row[x] = arrival(source(u), source(v));
                changed = true;
            } else {
                row[x] = 0;
                if (band)
                    changed |= improveBand(row, x, u, v);
            }
        }
        for (int x = width_ - 2; x >= 0; --x)
            changed |= improve(src, row, x, before[x], row[x + 1]);
        return changed;
    }

    template <bool later>
    bool sweep(int first, int end, bool keep) const {
        const int ahead = first < end ? 1 : -1;
        bool any = false, carry = false;
        for (int y = first; y != end; y += ahead) {
            if (rowFlags_[y] == 0)
                continue;
            const bool changed = ahead > 0 ? sweepRow<later, true>(y, carry) : sweepRow<later, false>(y, carry);
            if (!keep)
                rowFlags_[y] = 0;
            mark(y, changed);
            mark(y - 1, changed);
            mark(y + 1, changed);
            any |= changed;
        }
        return any;
    }

    /// Marks what a change of pixel x can reach: its neighbours in the sweeps from the other side, and the row that
    /// comes next where pixels are visited by flags.
    template <bool later, bool down>
    NOX_INLINE void markAround(Nox8u *flags, int x) const {
        constexpr Nox8u left = down ? upBackward : downBackward, right = down ? upForward : downForward;
        constexpr Nox8u behind = down ? inUp : inDown, next = down ? inDown : inUp;
        const std::ptrdiff_t ahead = down ? stride_ : -stride_;
        if (x > 0)
            flags[x - 1] = static_cast<Nox8u>(flags[x - 1] | left);
        if (x + 1 < width_)
            flags[x + 1] = static_cast<Nox8u>(flags[x + 1] | right);
        flags[x - ahead] = static_cast<Nox8u>(flags[x - ahead] | behind);
        if (later)
            flags[x + ahead] = static_cast<Nox8u>(flags[x + ahead] | next);
    }

    /// Both passes over a row.
    template <bool later, bool down>
    bool sweepRow(int y, bool &carry) const {
        const Nox8u *src = src_[y];
        Element<Nox32f> *row = dst_[y];
        const Element<Nox32f> *before = dst_[down ? y - 1 : y + 1];
        Nox8u *flags = pixelFlags_ + y * stride_;
        bool any = false;
        // Visits pixel x where it must be; visit() improves it.
        const auto step = [&](int x, Nox8u bit, const auto &visit) NOX_INLINE_LAMBDA {
            if (later) {
                if (!carry && (flags[x] & bit) == 0)
                    return;
                flags[x] = static_cast<Nox8u>(flags[x] & ~bit);
            }
            carry = visit();
            if (carry) {
                any = true;
                markAround<later, down>(flags, x);
            }
        };
        constexpr Nox8u forward = down ? downForward : upForward, back = down ? downBackward : upBackward;
        step(0, forward, [&] { return improveStart(src, row, before[0]); });
        for (int x = 1; x < width_; ++x) {
            if (later && !carry)
                x = skipForward(flags, x, forward);
            if (x < width_)
                step(x, forward, [&] { return improve(src, row, x, before[x], row[x - 1]); });
        }
        for (int x = width_ - 2; x >= 0; --x) {
            if (later && !carry)
                x = skipBackward(flags, x, back);
            if (x >= 0)
                step(x, back, [&] { return improve(src, row, x, before[x], row[x + 1]); });
        }
        return any;
    }

    /// The next pixel from x on whose flags have the bit; the width when there is none. Rows of flags are whole groups.
    int skipForward(const Nox8u *flags, int x, Nox8u bit) const {
        for (; x < width_ && x % 8 != 0; ++x)
            if ((flags[x] & bit) != 0)
                return x;
        for (; x < width_ && (group(flags + x) & bit * ones) == 0; x += 8) {
        }
        while (x < width_ && (flags[x] & bit) == 0)
            ++x;
        return x;
    }
    /// The same downwards; -1 when there is none.
    int skipBackward(const Nox8u *flags, int x, Nox8u bit) const {
        for (; x >= 0 && x % 8 != 7; --x)
            if ((flags[x] & bit) != 0)
                return x;
        for (; x >= 0 && (group(flags + x - 7) & bit * ones) == 0; x -= 8) {
        }
        while (x >= 0 && (flags[x] & bit) == 0)
            --x;
        return x;
    }
    static constexpr unsigned long long ones = 0x0101010101010101U;
    NOX_INLINE static unsigned long long group(const Nox8u *flags) {
        unsigned long long eight;
        std::memcpy(&eight, flags, sizeof(eight));
        return eight;
    }

    Rows<const Nox8u> src_;
    Rows<Nox32f> dst_;
    int width_, height_;
    std::ptrdiff_t stride_;
    Nox32f reach_;
    Nox8u *pixelFlags_, *rowFlags_;
};

/// One thread: down, up, then down and up again as long as something changes.
template <bool band>
void marchAlone(const Solver<band> &solver, int height) {
    solver.first(0, height);
    solver.clearRowFlag(height - 1);
    bool changed = solver.second(height - 2, -1, false);
    while (changed) {
        solver.clearRowFlag(0);
        if (!solver.third(std::min(1, height), height, false))
            return;
        solver.clearRowFlag(height - 1);
        changed = solver.third(height - 2, -1, false);
    }
}

/// Two roles: the rows before `split` and those from it on, each swept from its outer edge to the split and back; the
/// two rows at the split are swept by one thread while nothing else moves.
template <bool band>
void marchInHalves(const Solver<band> &solver, int height, int split) {
    bool changed[2] = {}, again = true;
    nox::parallelPhases(2, [&](const nox::Phases &phases) {
        phases.together([&](int half) {
            changed[half] = half == 0 ? solver.first(0, split) : solver.first(height - 1, split - 1);
        });
        phases.alone([&] {
            solver.mark(split, band || changed[0]);
            solver.mark(split - 1, band || changed[1]);
            solver.second(split - 1, split - 2, false);
            solver.second(split, split + 1, false);
        });
        phases.together([&](int half) {
            if (half == 0)
                solver.second(split - 2, -1, true);
            else
                solver.second(split + 1, height, true);
        });
        while (again) {
            phases.together([&](int half) {
                solver.clearRowFlag(half == 0 ? 0 : height - 1);
                changed[half] = half == 0 ? solver.third(1, split - 1, false) : solver.third(height - 2, split, false);
            });
            bool seam = false;
            phases.alone([&] {
                seam = solver.third(split - 1, split + 1, true);
                seam |= solver.third(split, split - 2, true);
                seam |= changed[0] || changed[1];
            });
            phases.together([&](int half) {
                changed[half] = half == 0 ? solver.third(split - 2, -1, false) : solver.third(split + 1, height, false);
            });
            // Only the calling thread knows of the seam; the others read what it writes.
            phases.alone([&] { again = seam || changed[0] || changed[1]; });
        }
    });
}

/// The row that halves the pixels that are not 0, away from the edges.
int splitOf(Rows<const Nox8u> src, NoxiSize roi, Nox32s *counts) {
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *row = src[y];
        counts[y] = static_cast<Nox32s>(std::count_if(row, row + roi.width, [](Nox8u byte) { return byte != 0; }));
    }
    return std::min(roi.height - 3, std::max(nox::rowOfHalf(counts, roi.height), 3));
}

template <bool band>
void march(Rows<const Nox8u> src, Rows<Nox32f> dst, NoxiSize roi, Nox32f radius, Nox8u *buffer) {
    constexpr int leastSide = 13;
    nox::WorkBuffer work(buffer, bufferAlignment);
    const Areas areas(work, roi);
    std::memset(areas.pixelFlags, 0, static_cast<std::size_t>(areas.stride) * (roi.height + std::size_t{2}));
    std::memset(areas.rowFlags, 0, roi.height + std::size_t{2});
    const Solver<band> solver(src, dst, roi, radius, areas);
    if (roi.height >= leastSide && roi.width >= leastSide && threads_omp_of_n_nox > 1)
        marchInHalves(solver, roi.height, splitOf(src, roi, areas.rowCounts));
    else
        marchAlone(solver, roi.height);
}

} // namespace

NoxStatus noxiFastMarchingGetBufferSize_8u32f_C1R(NoxiSize roi, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    return status != noxStsNoError ? status : nox::storeSize(bufferBytes(roi), size);
}

NoxStatus noxiFastMarching_8u32f_C1R(const Nox8u *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                     Nox32f radius, Nox8u *buffer) {
    const NoxStatus status = firstFailure(checkPointers(src, dst, buffer), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, roi.width), checkStep<Nox32f>(dstStep, roi.width),
                                          checkEvenSteps<Nox32f>(dstStep), require(radius >= 0, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    if (bufferBytes(roi) > INT_MAX)
        return noxStsBadSize;
    if (radius > 0)
        march<true>({src, srcStep}, {dst, dstStep}, roi, radius, buffer);
    else
        march<false>({src, srcStep}, {dst, dstStep}, roi, radius, buffer);
    return noxStsNoError;
}
