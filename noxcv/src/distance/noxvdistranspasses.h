// Chamfer passes: a row of distances from the rows before it and from its own neighbours.
//
// Integer distances are handled as closeness, the largest value minus the distance: then a step away is a subtraction
// that stops at 0, and the nearest is the greatest, both single vector operations for bytes.
#pragma once

#include <algorithm>
#include <cstring>
#include <limits>

#include <emmintrin.h>

#include "noxtypes.h"
#include "rows.h"
#include "tiers.h"

namespace nox {

/// How a chamfer handles distances of T.
template <class T>
struct Chamfer {
    static constexpr T farthest = 0; ///< no zero pixel reached
    static constexpr T nearest = std::numeric_limits<T>::max();
    NOX_INLINE static T cellOf(T distance) { return static_cast<T>(~distance); }
    NOX_INLINE static T distanceOf(T cell) { return static_cast<T>(~cell); }
    NOX_INLINE static T away(T cell, T weight) { return static_cast<T>((cell > weight ? cell : weight) - weight); }
    NOX_INLINE static T nearer(T a, T b) { return a > b ? a : b; }
};
template <>
struct Chamfer<Nox32f> {
    static constexpr Nox32f farthest = std::numeric_limits<Nox32f>::max(), nearest = 0;
    NOX_INLINE static Nox32f cellOf(Nox32f distance) { return distance; }
    NOX_INLINE static Nox32f distanceOf(Nox32f cell) { return cell; }
    NOX_INLINE static Nox32f away(Nox32f cell, Nox32f weight) { return cell + weight; }
    NOX_INLINE static Nox32f nearer(Nox32f a, Nox32f b) { return a < b ? a : b; }
};

/// Which neighbours in the one or two rows before a pixel's row take part.
enum class ChamferMask {
    Four,    ///< straight steps
    Eight,   ///< and diagonal ones
    Ordered, ///< and knight's steps
    Extended ///< and two steps at once along an axis or a diagonal: the whole half of a 5x5 mask
};

/// Weights of the steps, at most the largest distance of T.
template <class T>
struct ChamferWeights {
    T straight, diagonal, knight, twoStraight, twoDiagonal;
};

/// One row in one direction.
template <class T>
struct ChamferRow {
    const Nox8u *src;             ///< a zero starts a distance of 0; null: the row's own distances take part
    const Element<T> *near, *far; ///< the two rows before; null where there is none
    Element<T> *row;
    int width;
    ChamferMask mask;
    bool backward; ///< from right to left
    T twoAlong;    ///< weight of two steps along the row in one, where that is `skips`
    bool skips;
    ChamferWeights<T> weights;
};

/// The nearest of the neighbours of pixel x in the rows before; `bounded` where some may lie outside.
template <class T, ChamferMask mask, bool far, bool bounded>
NOX_INLINE T cellFromRows(const ChamferRow<T> &step, int x) {
    using C = Chamfer<T>;
    T best = C::farthest;
    const auto take = [&](const Element<T> *row, int dx, T weight) NOX_INLINE_LAMBDA {
        if (!bounded || (x + dx >= 0 && x + dx < step.width))
            best = C::nearer(best, C::away(C::cellOf(row[x + dx]), weight));
    };
    const ChamferWeights<T> &w = step.weights;
    take(step.near, 0, w.straight);
    if constexpr (mask >= ChamferMask::Eight) {
        take(step.near, -1, w.diagonal);
        take(step.near, 1, w.diagonal);
    }
    if constexpr (mask >= ChamferMask::Ordered) {
        take(step.near, -2, w.knight);
        take(step.near, 2, w.knight);
        if constexpr (far) {
            take(step.far, -1, w.knight);
            take(step.far, 1, w.knight);
        }
    }
    if constexpr (mask == ChamferMask::Extended && far) {
        take(step.far, -2, w.twoDiagonal);
        take(step.far, 2, w.twoDiagonal);
        take(step.far, 0, w.twoStraight);
    }
    return best;
}

/// Cells of pixels first to first + count - 1 from the rows before.
template <class T, ChamferMask mask, bool far>
NOX_INLINE void cellsFromRows(const ChamferRow<T> &step, int first, int count, T *cells) {
    const int inner = std::clamp(2 - first, 0, count), end = std::clamp(step.width - 2 - first, inner, count);
    for (int i = 0; i < inner; ++i)
        cells[i] = cellFromRows<T, mask, far, true>(step, first + i);
    for (int i = inner; i < end; ++i)
        cells[i] = cellFromRows<T, mask, far, false>(step, first + i);
    for (int i = end; i < count; ++i)
        cells[i] = cellFromRows<T, mask, far, true>(step, first + i);
}

template <class T>
NOX_INLINE void cellsFromAllRows(const ChamferRow<T> &step, int first, int count, T *cells) {
    if (step.near == nullptr) {
        std::fill_n(cells, count, Chamfer<T>::farthest);
        return;
    }
    switch (step.mask) {
    case ChamferMask::Four:
        return cellsFromRows<T, ChamferMask::Four, false>(step, first, count, cells);
    case ChamferMask::Eight:
        return cellsFromRows<T, ChamferMask::Eight, false>(step, first, count, cells);
    case ChamferMask::Ordered:
        return step.far == nullptr ? cellsFromRows<T, ChamferMask::Ordered, false>(step, first, count, cells)
                                   : cellsFromRows<T, ChamferMask::Ordered, true>(step, first, count, cells);
    case ChamferMask::Extended:
        return step.far == nullptr ? cellsFromRows<T, ChamferMask::Extended, false>(step, first, count, cells)
                                   : cellsFromRows<T, ChamferMask::Extended, true>(step, first, count, cells);
    }
}

/// Brings in what belongs to the pixels themselves: zeros of the source, or the distances that they have.
template <class T>
NOX_INLINE void takeOwn(const ChamferRow<T> &step, int first, int count, T *cells) {
    using C = Chamfer<T>;
    if (step.src != nullptr) {
        const Nox8u *src = step.src + first;
        for (int i = 0; i < count; ++i)
            cells[i] = src[i] == 0 ? C::nearest : cells[i];
    } else {
        const Element<T> *row = step.row + first;
        for (int i = 0; i < count; ++i)
            cells[i] = C::nearer(cells[i], C::cellOf(row[i]));
    }
}

/// Vectors of cells for the scan along a row: how to step away, and to move cells one or more places on.
struct Bytes16 {
    using Cell = Nox8u;
    static constexpr int lanes = 16;
    NOX_INLINE static __m128i away(__m128i v, __m128i weight) { return _mm_subs_epu8(v, weight); }
    NOX_INLINE static __m128i nearer(__m128i a, __m128i b) { return _mm_max_epu8(a, b); }
};
struct Words8 {
    using Cell = Nox16u;
    static constexpr int lanes = 8;
    NOX_INLINE static __m128i away(__m128i v, __m128i weight) { return _mm_subs_epu16(v, weight); }
    NOX_INLINE static __m128i nearer(__m128i a, __m128i b) { return _mm_adds_epu16(_mm_subs_epu16(a, b), b); }
};

/// v moved by a number of bytes along the direction of the scan; farthest cells move in.
template <int bytes, bool backward>
NOX_INLINE __m128i movedOn(__m128i v) {
    if constexpr (backward)
        return _mm_srli_si128(v, bytes);
    else
        return _mm_slli_si128(v, bytes);
}

/// What is subtracted along a row, for 1 to `lanes` steps.
template <class V>
struct Ramp {
    alignas(16) typename V::Cell steps[V::lanes];
    __m128i one, two, four, eight;

    NOX_INLINE Ramp(typename V::Cell weight, bool backward) {
        constexpr int most = std::numeric_limits<typename V::Cell>::max();
        typename V::Cell times[9];
        for (int i = 0; i < V::lanes; ++i) {
            const auto value = static_cast<typename V::Cell>(std::min(most, (i + 1) * int{weight}));
            steps[backward ? V::lanes - 1 - i : i] = value;
            if (i < 8)
                times[i + 1] = value;
        }
        const auto splat = [](typename V::Cell value) NOX_INLINE_LAMBDA {
            return V::lanes == 16 ? _mm_set1_epi8(static_cast<char>(value)) : _mm_set1_epi16(static_cast<short>(value));
        };
        one = splat(times[1]);
        two = splat(times[2]);
        four = splat(times[4]);
        eight = splat(times[8]);
    }
};

/// Each of `count` cells becomes the nearest of itself and all before it in the direction of the scan, stepped away.
/// The cells lie in whole vectors; those behind the count are farthest.
template <class V, bool backward>
NOX_INLINE void scanVectors(typename V::Cell *cells, int count, const Ramp<V> &ramp) {
    constexpr int cell = sizeof(typename V::Cell);
    const __m128i ramps = _mm_load_si128(reinterpret_cast<const __m128i *>(ramp.steps));
    __m128i carry = _mm_setzero_si128();
    const int vectors = (count + V::lanes - 1) / V::lanes;
    for (int i = 0; i < vectors; ++i) {
        auto *at = reinterpret_cast<__m128i *>(cells + (backward ? vectors - 1 - i : i) * V::lanes);
        __m128i v = _mm_loadu_si128(at);
        v = V::nearer(v, V::away(movedOn<cell, backward>(v), ramp.one));
        v = V::nearer(v, V::away(movedOn<2 * cell, backward>(v), ramp.two));
        v = V::nearer(v, V::away(movedOn<4 * cell, backward>(v), ramp.four));
        if constexpr (V::lanes == 16)
            v = V::nearer(v, V::away(movedOn<8 * cell, backward>(v), ramp.eight));
        v = V::nearer(v, V::away(carry, ramps));
        _mm_storeu_si128(at, v);
        // The cell that the scan leaves, in all lanes.
        __m128i last = backward ? _mm_unpacklo_epi8(v, v) : _mm_unpackhi_epi8(v, v);
        if constexpr (V::lanes == 16)
            last = backward ? _mm_shufflelo_epi16(last, 0x00) : _mm_shufflehi_epi16(last, 0xFF);
        else
            last = backward ? _mm_shufflelo_epi16(v, 0x00) : _mm_shufflehi_epi16(v, 0xFF);
        carry = backward ? _mm_unpacklo_epi64(last, last) : _mm_unpackhi_epi64(last, last);
    }
}

/// The same one by one, with two steps at once where the row has them. before1 and before2 are the cells that the scan
/// has passed last.
template <class T>
NOX_INLINE void scanCells(const ChamferRow<T> &step, T *cells, int count, T &before1, T &before2) {
    using C = Chamfer<T>;
    for (int i = 0; i < count; ++i) {
        T &cell = cells[step.backward ? count - 1 - i : i];
        cell = C::nearer(cell, C::away(before1, step.weights.straight));
        if (step.skips)
            cell = C::nearer(cell, C::away(before2, step.twoAlong));
        before2 = before1;
        before1 = cell;
    }
}

template <class T>
NOX_INLINE void scanBlock(const ChamferRow<T> &step, T *cells, int count, T &before1, T &before2) {
    using C = Chamfer<T>;
    if constexpr (sizeof(T) < 4) {
        using V = std::conditional_t<sizeof(T) == 1, Bytes16, Words8>;
        if (!step.skips) {
            T &first = cells[step.backward ? count - 1 : 0];
            first = C::nearer(first, C::away(before1, step.weights.straight));
            std::fill_n(cells + count, V::lanes - 1, C::farthest);
            const Ramp<V> ramp(step.weights.straight, step.backward);
            if (step.backward)
                scanVectors<V, true>(cells, count, ramp);
            else
                scanVectors<V, false>(cells, count, ramp);
            before1 = cells[step.backward ? 0 : count - 1];
            return;
        }
    }
    scanCells(step, cells, count, before1, before2);
}

/// One row, block by block: the rows before, the row's own part, the scan along it. The source is read before the row
/// is written, so both may be the same.
template <class T>
NOX_INLINE void chamferRow(const ChamferRow<T> &step) {
    constexpr int block = 512, spare = 16;
    T cells[block + spare];
    T before1 = Chamfer<T>::farthest, before2 = Chamfer<T>::farthest;
    for (int done = 0; done < step.width;) {
        const int count = std::min(block, step.width - done);
        const int first = step.backward ? step.width - done - count : done;
        cellsFromAllRows(step, first, count, cells);
        takeOwn(step, first, count, cells);
        scanBlock(step, cells, count, before1, before2);
        Element<T> *row = step.row + first;
        for (int i = 0; i < count; ++i)
            row[i] = Chamfer<T>::distanceOf(cells[i]);
        done += count;
    }
}

/// Rows of floats that are done together. The scan along a row waits for each of its sums, so the scans of some rows go
/// side by side.
constexpr int rowsTogether = 4;

/// The rows of `steps`, each with the one before it as its near row: every row stays two blocks behind that one.
NOX_INLINE void chamferRows(const ChamferRow<Nox32f> *steps) {
    constexpr int block = 128, lag = 2;
    using C = Chamfer<Nox32f>;
    Nox32f cells[rowsTogether][block];
    Nox32f before[rowsTogether], unused = C::farthest;
    std::fill_n(before, rowsTogether, C::farthest);
    const int width = steps[0].width, blocks = (width + block - 1) / block;
    const bool backward = steps[0].backward;
    const Nox32f straight = steps[0].weights.straight;
    for (int i = 0; i < blocks + lag * (rowsTogether - 1); ++i) {
        int counts[rowsTogether], firsts[rowsTogether], whole = 0;
        for (int r = 0; r < rowsTogether; ++r) {
            const int done = (i - lag * r) * block;
            counts[r] = done < 0 ? 0 : std::clamp(width - done, 0, block);
            firsts[r] = backward ? width - done - counts[r] : done;
            whole += counts[r] == block ? 1 : 0;
            if (counts[r] > 0) {
                cellsFromAllRows(steps[r], firsts[r], counts[r], cells[r]);
                takeOwn(steps[r], firsts[r], counts[r], cells[r]);
            }
        }
        if (whole == rowsTogether) {
            for (int k = 0; k < block; ++k)
                for (int r = 0; r < rowsTogether; ++r) {
                    Nox32f &cell = cells[r][backward ? block - 1 - k : k];
                    before[r] = cell = C::nearer(cell, C::away(before[r], straight));
                }
        } else {
            for (int r = 0; r < rowsTogether; ++r)
                scanCells(steps[r], cells[r], counts[r], before[r], unused);
        }
        for (int r = 0; r < rowsTogether; ++r)
            std::copy_n(cells[r], counts[r], steps[r].row + firsts[r]);
    }
}

} // namespace nox
