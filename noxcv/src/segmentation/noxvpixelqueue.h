// First-in first-out queues of pixels, one for each level, in the caller's buffer.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// Entries are taken from a pool that has one for each pixel, as many as can ever be pushed. One that has been popped
/// is used again first, so that the pool's hot part stays small, and no entry is touched before it is needed.
class PixelQueue {
public:
    static constexpr int levels = 256;
    struct Entry {
        Nox32u next, pixel;
    };

    explicit PixelQueue(Entry *pool) : pool_(pool) { std::fill_n(first_, levels, none); }

    NOX_INLINE void push(int level, Nox32u pixel) {
        Nox32u entry = free_;
        if (entry != none)
            free_ = pool_[entry].next;
        else
            entry = fresh_++;
        pool_[entry] = {none, pixel};
        if (first_[level] == none) {
            first_[level] = entry;
            filled_[level / 32] |= 1U << (level % 32);
        } else {
            pool_[last_[level]].next = entry;
        }
        last_[level] = entry;
    }
    NOX_INLINE bool empty(int level) const { return first_[level] == none; }
    /// The first pixel of a level that is not empty.
    NOX_INLINE Nox32u pop(int level) {
        const Nox32u entry = first_[level];
        const auto [next, pixel] = pool_[entry];
        first_[level] = next;
        if (next == none)
            filled_[level / 32] &= ~(1U << (level % 32));
        pool_[entry].next = free_;
        free_ = entry;
        return pixel;
    }
    /// The lowest level that is not empty; `levels` when all are.
    NOX_INLINE int lowest() const {
        for (int i = 0; i < levels / 32; ++i)
            if (filled_[i] != 0)
                return i * 32 + std::countr_zero(filled_[i]);
        return levels;
    }

private:
    static constexpr Nox32u none = ~0U;

    Entry *pool_;
    Nox32u free_ = none, fresh_ = 0;
    Nox32u first_[levels], last_[levels];
    Nox32u filled_[levels / 32] = {};
};

/// Bits of the flag argument.
enum SegmentFlag : int { byQueue = 1, bySweeps = 2, boundaries4 = 64, boundaries8 = 128 };

/// How many neighbours decide on a boundary: 0 where none is drawn, 4, or 8. Bit 64 goes before bit 128.
inline int boundaryNeighbours(int flag) { return (flag & boundaries4) != 0 ? 4 : (flag & boundaries8) != 0 ? 8 : 0; }

/// Distances to the neighbours of a pixel in their order: left, right, up, down, then the diagonal ones above and
/// below.
struct Neighbours {
    std::ptrdiff_t offset[8];
    explicit Neighbours(std::ptrdiff_t pitch)
        : offset{-1, 1, -pitch, pitch, -pitch - 1, -pitch + 1, pitch - 1, pitch + 1} {}
};

} // namespace nox
