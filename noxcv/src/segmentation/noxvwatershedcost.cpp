// Watershed by topographic cost: the highest level crossed on the way from a labelled pixel, then the length of the
// way.
//
// The costs are the least ones everywhere, so they can be settled in ascending order (E. W. Dijkstra, 1959), with lists
// of pixels by cost (R. B. Dial, 1969). A cost is a grey level in the high bits and a length in the low ones. Taking a
// step adds no more than 64, and only a pixel of a higher level than all before it can be further away: its cost is
// that level, of length 0, and is final. So two sets of lists suffice: a ring of the next costs, and one list a level.
//
// A pixel gets its label when its cost is settled, from the neighbours, which are settled if they are cheaper. That
// does not depend on the order of the work.
#include "noxvwatershedcost.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>

#include "tiers.h"

using namespace nox;

const Nox32s FMM_SUB[65] = {19, 18, 18, 17, 17, 16, 16, 15, 15, 14, 14, 14, 13, 13, 12, 12, 11, 11, 11, 10, 10, 9,
                            9,  9,  8,  8,  8,  7,  7,  7,  6,  6,  6,  5,  5,  5,  4,  4,  4,  4,  3,  3,  3,  3,
                            2,  2,  2,  2,  2,  1,  1,  1,  1,  1,  1,  1,  0,  0,  0,  0,  0,  0,  0,  0,  0};

namespace {

constexpr int lengthBits = 23, levels = 256;
/// A pixel that no way leads to, and the cost at which ways stop growing: beyond any that a picture can make, except
/// by ways of tens of thousands of pixels on the highest level.
constexpr Nox32s unreached = 0x7fc00000, longest = unreached - 1;
constexpr Nox8u boundary = 255;

struct Step {
    int dx, dy, length;
};

/// The steps of a norm, in the order in which the first of equal ones counts.
template <int norm>
struct Steps;
template <>
struct Steps<0> {
    static constexpr Step all[] = {{-1, 0, 1}, {-1, -1, 1}, {0, -1, 1}, {1, -1, 1},
                                   {1, 0, 1},  {-1, 1, 1},  {0, 1, 1},  {1, 1, 1}};
};
template <>
struct Steps<1> {
    static constexpr Step all[] = {{-1, 0, 1}, {0, -1, 1}, {1, 0, 1}, {0, 1, 1}};
};
template <>
struct Steps<2> {
    static constexpr Step all[] = {{-1, 0, 11}, {-1, -1, 15}, {0, -1, 11}, {1, -1, 15},
                                   {1, 0, 11},  {-1, 1, 15},  {0, 1, 11},  {1, 1, 15}};
};
/// Fronts: horizontal neighbours before vertical ones; the length depends on both.
template <>
struct Steps<3> {
    static constexpr Step all[] = {{-1, 0, 64}, {1, 0, 64}, {0, -1, 64}, {0, 1, 64}};
};

/// The cost behind the better horizontal and the better vertical neighbour.
NOX_INLINE Nox32s frontCost(Nox32s horizontal, Nox32s vertical) {
    const Nox32s difference = std::abs(horizontal - vertical);
    const Nox32s alone = std::min(horizontal, vertical) + 64;
    return difference < 64 ? alone - FMM_SUB[difference] : alone;
}

template <int norm>
class CostFlood {
public:
    CostFlood(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, const CostAreas &areas)
        : src_(src), markers_(markers), roi_(roi), areas_(areas) {
        std::fill_n(ring_, ringSize, none);
        std::fill_n(levelLists_, levels, none);
    }

    void run() {
        start();
        while (advance()) {
            const Nox32u i = ring_[now_ % ringSize];
            unlink(i, now_);
            settle(i);
        }
    }

private:
    static constexpr Nox32u none = ~0U;
    static constexpr int ringSize = 128; ///< a power of two above the longest step, and a part of a level

    bool inside(int x, int y) const {
        return static_cast<unsigned>(x) < static_cast<unsigned>(roi_.width) &&
               static_cast<unsigned>(y) < static_cast<unsigned>(roi_.height);
    }
    Nox32u distance(const Step &step) const { return static_cast<Nox32u>(step.dy) * roi_.width + step.dx; }
    static Nox32s levelCost(int level) { return static_cast<Nox32s>(static_cast<Nox32u>(level) << lengthBits); }

    void start() {
        Nox32u i = 0;
        for (int y = 0; y < roi_.height; ++y) {
            const Nox8u *labels = markers_[y], *grey = src_[y];
            for (int x = 0; x < roi_.width; ++x, ++i) {
                areas_.cost[i] = unreached;
                if (labels[x] == 0 || labels[x] == boundary)
                    continue;
                areas_.cost[i] = levelCost(grey[x]);
                link(levelLists_[grey[x]], i);
            }
        }
    }

    void link(Nox32u &list, Nox32u i) {
        areas_.before[i] = none;
        areas_.next[i] = list;
        if (list != none)
            areas_.before[list] = i;
        list = i;
    }
    void linkNear(Nox32u i, Nox32s cost) {
        link(ring_[cost % ringSize], i);
        ++near_;
    }
    void unlink(Nox32u i, Nox32s cost) {
        const Nox32u before = areas_.before[i], next = areas_.next[i];
        (before == none ? ring_[cost % ringSize] : areas_.next[before]) = next;
        if (next != none)
            areas_.before[next] = before;
        --near_;
    }

    /// Goes on to the next cost at which a pixel waits; false when none does.
    bool advance() {
        while (near_ == 0 || ring_[now_ % ringSize] == none) {
            if (near_ > 0) {
                ++now_;
            } else {
                while (nextLevel_ < levels && levelLists_[nextLevel_] == none)
                    ++nextLevel_;
                if (nextLevel_ == levels)
                    return false;
                now_ = levelCost(nextLevel_);
            }
            if (nextLevel_ < levels && levelCost(nextLevel_) <= now_)
                takeLevel();
        }
        return true;
    }
    /// The pixels that wait for this level have come near.
    void takeLevel() {
        Nox32u &list = levelLists_[nextLevel_];
        while (list != none) {
            const Nox32u i = list;
            list = areas_.next[i];
            linkNear(i, now_);
        }
        ++nextLevel_;
    }

    /// A pixel and where its label and its grey level lie.
    struct Spot {
        int x, y;
        Nox32u i;
        Nox8u *label;
        const Nox8u *grey;
    };
    NOX_INLINE Spot moved(const Spot &spot, const Step &step) const {
        return {spot.x + step.dx, spot.y + step.dy, spot.i + distance(step),
                spot.label + step.dy * markers_.step + step.dx, spot.grey + step.dy * src_.step + step.dx};
    }

    void settle(Nox32u i) {
        const int y = static_cast<int>(i / static_cast<unsigned>(roi_.width));
        const int x = static_cast<int>(i % static_cast<unsigned>(roi_.width));
        const Spot spot{x, y, i, markers_[y] + x, src_[y] + x};
        if (x >= 2 && y >= 2 && x < roi_.width - 2 && y < roi_.height - 2)
            settle<true>(spot);
        else
            settle<false>(spot);
    }
    /// inner: the neighbours and theirs lie in the image.
    template <bool inner>
    NOX_INLINE void settle(const Spot &spot) {
        if (*spot.label == 0)
            *spot.label = labelFromNeighbours<inner>(spot);
        for (const Step &step : Steps<norm>::all) {
            const Spot next = moved(spot, step);
            if ((inner || inside(next.x, next.y)) && *next.label == 0)
                reach<inner>(next, step.length);
        }
    }

    /// Lowers the cost of an unlabelled neighbour where the way over this pixel is shorter.
    template <bool inner>
    NOX_INLINE void reach(const Spot &spot, int length) {
        const auto costAt = [&](int dx, int dy) {
            return inner || inside(spot.x + dx, spot.y + dy) ? areas_.cost[spot.i + distance({dx, dy, 0})] : unreached;
        };
        const Nox32s way = norm == 3
                               ? frontCost(std::min(costAt(-1, 0), costAt(1, 0)), std::min(costAt(0, -1), costAt(0, 1)))
                               : now_ + length;
        const int level = *spot.grey;
        const Nox32s old = areas_.cost[spot.i], cost = std::min(std::max(levelCost(level), way), longest);
        if (cost >= old)
            return;
        if (old != unreached)
            unlink(spot.i, old); // from the ring: what waits for its level has the least cost
        areas_.cost[spot.i] = cost;
        if (cost - now_ < ringSize)
            linkNear(spot.i, cost);
        else
            link(levelLists_[level], spot.i);
    }

    /// The label of the first of the nearest neighbours.
    template <bool inner>
    NOX_INLINE Nox8u labelFromNeighbours(const Spot &spot) const {
        Nox32s best = INT_MAX;
        Nox8u label = 0;
        for (const Step &step : Steps<norm>::all) {
            const Spot next = moved(spot, step);
            if (!(inner || inside(next.x, next.y)) || *next.label == 0 || *next.label == boundary)
                continue;
            const Nox32s way = areas_.cost[next.i] + step.length;
            if (way < best) {
                best = way;
                label = *next.label;
            }
        }
        return label;
    }

    Rows<const Nox8u> src_;
    Rows<Nox8u> markers_;
    NoxiSize roi_;
    CostAreas areas_;
    Nox32s now_ = 0;
    int nextLevel_ = 0; ///< the first whose list has not come near
    Nox32u near_ = 0;   ///< pixels in the ring
    Nox32u ring_[ringSize], levelLists_[levels];
};

} // namespace

namespace nox {

void floodByCost(Rows<const Nox8u> src, Rows<Nox8u> markers, NoxiSize roi, int norm, const CostAreas &areas) {
    switch (norm) {
    case 0:
        return CostFlood<0>(src, markers, roi, areas).run();
    case 1:
        return CostFlood<1>(src, markers, roi, areas).run();
    case 2:
        return CostFlood<2>(src, markers, roi, areas).run();
    default:
        return CostFlood<3>(src, markers, roi, areas).run();
    }
}

} // namespace nox
