// Morphological reconstruction: a marker grows under a mask until nothing changes (L. Vincent, 1993).
//
// One sweep down and one up carry values along rows and from row to row. A sweep each way then visits the rows that can
// still change, and what is left is followed pixel by pixel through a short queue, which finds its way through mazes
// at a cost that does not depend on the number of their turns. When the queue is full, the row of a pixel that finds no
// place is marked and gone through again. The end is the fixed point, which no order of steps can miss or pass.
//
// Two threads share an image as the rows above and below a seam row. Each works on its own rows; between rounds the
// seam takes in the rows at both sides of it.
#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "frame/owncvomp.h"
#include "noxcv/morphology.h"
#include "noxvminmax.h"
#include "noxvreconstruct.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvreconstruct.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

// --- scans along a row ---

/// The operator on 16 bytes: the winner, and the cut at the mask.
template <class Op, class T>
NOX_INLINE __m128i extreme(__m128i a, __m128i b) {
    if constexpr (sizeof(T) == 1)
        return std::is_same_v<Op, Largest> ? _mm_max_epu8(a, b) : _mm_min_epu8(a, b);
    else
        return _mm_castps_si128(std::is_same_v<Op, Largest> ? _mm_max_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b))
                                                            : _mm_min_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b)));
}
template <class Op>
using Opposite = std::conditional_t<std::is_same_v<Op, Largest>, Smallest, Largest>;

/// The value that never wins.
template <class Op, class T>
constexpr T loser() {
    constexpr bool largest = std::is_same_v<Op, Largest>;
    if constexpr (sizeof(T) == 1)
        return largest ? 0 : 255;
    else
        return largest ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity();
}
template <class T>
NOX_INLINE __m128i repeated(T value) {
    if constexpr (sizeof(T) == 1)
        return _mm_set1_epi8(static_cast<char>(value));
    else
        return _mm_castps_si128(_mm_set1_ps(value));
}

/// A scan in one direction. What a pixel does to the value that comes along is v -> cut(winner(v, low), high), and two
/// such steps in a row are one of the same form; so a vector of steps is joined in the logarithm of its length.
template <class Op, class T, bool forward>
struct Scan {
    static constexpr int lanes = 16 / static_cast<int>(sizeof(T));

    /// v with each element d places further along the scan, `fill` behind it.
    template <int d>
    NOX_INLINE static __m128i along(__m128i v, __m128i fill) {
        constexpr int bytes = d * static_cast<int>(sizeof(T));
        if constexpr (forward)
            return _mm_or_si128(_mm_slli_si128(v, bytes), _mm_srli_si128(fill, 16 - bytes));
        else
            return _mm_or_si128(_mm_srli_si128(v, bytes), _mm_slli_si128(fill, 16 - bytes));
    }
    template <int d>
    NOX_INLINE static void join(__m128i &low, __m128i &high) {
        if constexpr (d < lanes) {
            const __m128i lowBefore = along<d>(low, repeated(loser<Op, T>()));
            const __m128i highBefore = along<d>(high, repeated(loser<Opposite<Op>, T>()));
            const __m128i joined = extreme<Opposite<Op>, T>(extreme<Op, T>(lowBefore, low), high);
            high = extreme<Opposite<Op>, T>(extreme<Op, T>(highBefore, low), high);
            low = joined;
            join<2 * d>(low, high);
        }
    }
    /// The last element along the scan in all lanes.
    NOX_INLINE static __m128i last(__m128i v) {
        if constexpr (sizeof(T) == 4) {
            return forward ? _mm_shuffle_epi32(v, 0xFF) : _mm_shuffle_epi32(v, 0);
        } else {
            const __m128i pairs = forward ? _mm_unpackhi_epi8(v, v) : _mm_unpacklo_epi8(v, v);
            return forward ? _mm_shuffle_epi32(_mm_shufflehi_epi16(pairs, 0xFF), 0xFF)
                           : _mm_shuffle_epi32(_mm_shufflelo_epi16(pairs, 0), 0);
        }
    }
    NOX_INLINE static void block(Element<T> *row, const Element<T> *mask, __m128i &value) {
        __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(row));
        __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(mask));
        low = extreme<Opposite<Op>, T>(low, high);
        join<1>(low, high);
        const __m128i result = extreme<Opposite<Op>, T>(extreme<Op, T>(value, low), high);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(row), result);
        value = last(result);
    }
    static void run(T *marker, const T *maskRow, int width) {
        Element<T> *const row = marker;
        const Element<T> *const mask = maskRow;
        __m128i value = repeated(loser<Op, T>());
        const int blocks = width / lanes, rest = width % lanes;
        for (int i = 0; i < blocks; ++i) {
            const int at = forward ? i * lanes : width - (i + 1) * lanes;
            block(row + at, mask + at, value);
        }
        T one = blocks == 0 ? loser<Op, T>() : T(row[forward ? blocks * lanes - 1 : rest]);
        for (int i = 0; i < rest; ++i) {
            const int at = forward ? blocks * lanes + i : rest - 1 - i;
            one = baseline::grownOne<Op, T>(one, row[at], mask[at]);
            row[at] = one;
        }
    }
};

template <class Op, class T>
void scanBothWays(T *row, const T *mask, int width) {
    Scan<Op, T, true>::run(row, mask, width);
    Scan<Op, T, false>::run(row, mask, width);
}

// --- sweeps ---

template <class T>
constexpr RowRoutine<T> threeWide(bool largest) {
    if constexpr (sizeof(T) == 1)
        return largest ? ownFilterMaxRow03_8u_C1R : ownFilterMinRow03_8u_C1R;
    else
        return largest ? ownFilterMaxRow03_32f_C1R : ownFilterMinRow03_32f_C1R;
}

/// What a row gives to the next one: itself, or with eight neighbours the winners of three pixels.
template <class Op, class T, bool eight>
const T *givenBy(const T *row, T *line, int width) {
    if constexpr (eight) {
        threeWide<T>(std::is_same_v<Op, Largest>)(row, line, width, 3, 1);
        return line;
    } else {
        return row;
    }
}
template <class Op, class T>
bool grow(const T *near, const T *mask, T *row, int width) {
    return NOX_ON_TIER_FOR(tierBytes<T>(width), growRow<Op, T, true>(near, mask, row, width));
}
template <class Op, class T>
bool couldGrow(const T *near, const T *mask, T *row, int width) {
    return NOX_ON_TIER_FOR(tierBytes<T>(width), growRow<Op, T, false>(near, mask, row, width));
}

/// All rows in order, each grown by the one before it and scanned both ways. `before` is what stands before the first
/// row, or null.
template <class Op, class T, bool eight, bool down>
void sweep(const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, const T *before, T *line) {
    const Rows<const T> mask{src, srcStep};
    const Rows<T> marker{srcDst, srcDstStep};
    for (int i = 0; i < roi.height; ++i) {
        const int y = down ? i : roi.height - 1 - i;
        const T *const near = before == nullptr ? marker[y] : givenBy<Op, T, eight>(before, line, roi.width);
        grow<Op, T>(near, mask[y], marker[y], roi.width);
        scanBothWays<Op, T>(marker[y], mask[y], roi.width);
        before = marker[y];
    }
}

/// The rows that can change, in order: those whose flag is set and those behind one that has changed. Returns how many
/// did; a change is noted in the row's own flag and in that of the row before it. flags[-1] may be written.
template <class Op, class T, bool eight, bool down>
int checkedSweep(const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, Nox8u *flags, T *line) {
    const Rows<const T> mask{src, srcStep};
    const Rows<T> marker{srcDst, srcDstStep};
    constexpr int step = down ? 1 : -1;
    int changes = 0;
    bool changed = false;
    for (int y = down ? 1 : roi.height - 2; y >= 0 && y < roi.height; y += step) {
        if (!changed && flags[y] == 0)
            continue;
        const T *const near = givenBy<Op, T, eight>(marker[y - step], line, roi.width);
        changed = grow<Op, T>(near, mask[y], marker[y], roi.width);
        if (changed)
            scanBothWays<Op, T>(marker[y], mask[y], roi.width);
        flags[y] = changed;
        flags[y - step] |= static_cast<Nox8u>(changed);
        changes += changed;
    }
    return changes;
}

// --- the queue ---

struct Position {
    int x, y;
};

/// Positions in order of arrival, as many as there is room for.
class Queue {
public:
    bool empty() const { return first_ == end_; }
    bool push(Position p) {
        const unsigned next = (end_ + 1) % room;
        if (next == first_)
            return false;
        list_[end_] = p;
        end_ = next;
        return true;
    }
    Position pop() {
        const Position p = list_[first_];
        first_ = (first_ + 1) % room;
        return p;
    }

private:
    static constexpr unsigned room = 4096;
    Position list_[room];
    unsigned first_ = 0, end_ = 0;
};

/// Rows that belong to one thread, whose growth stops at their ends.
template <class Op, class T, bool eight>
struct Region {
    Rows<const T> mask;
    Rows<T> marker;
    NoxiSize roi;
    Nox8u *flags; ///< rows to go through again, because the queue was full
    T *line;
    bool full = false;
    Queue queue{};

    static bool better(T a, T b) { return std::is_same_v<Op, Largest> ? a > b : a < b; }

    void put(int x, int y) {
        if (!queue.push({x, y})) {
            flags[y] = 1;
            full = true;
        }
    }
    /// Lets a pixel of value v grow into a neighbour.
    NOX_INLINE void growInto(T v, int x, int y) {
        Element<T> *const row = marker[y];
        const T limit = mask[y][x], cut = better(v, limit) ? limit : v;
        if (better(cut, row[x])) {
            row[x] = cut;
            put(x, y);
        }
    }
    void drain() {
        while (!queue.empty()) {
            const Position p = queue.pop();
            const T v = marker[p.y][p.x];
            const int x0 = std::max(p.x - 1, 0), x1 = std::min(p.x + 1, roi.width - 1);
            if (p.x > 0)
                growInto(v, x0, p.y);
            if (p.x + 1 < roi.width)
                growInto(v, x1, p.y);
            for (const int y : {p.y - 1, p.y + 1})
                if (y >= 0 && y < roi.height)
                    for (int x = eight ? x0 : p.x; x <= (eight ? x1 : p.x); ++x)
                        growInto(v, x, y);
        }
    }
    /// Follows everything that row `from`, of this region or beside it, can change in row y.
    void follow(const T *from, int y) {
        const Element<T> *const near = givenBy<Op, T, eight>(from, line, roi.width);
        if (!couldGrow<Op, T>(near, mask[y], marker[y], roi.width))
            return;
        for (int x = 0; x < roi.width; ++x)
            growInto(near[x], x, y);
        drain();
    }
    void followAll() {
        for (int y = 1; y < roi.height; ++y)
            follow(marker[y - 1], y);
        for (int y = roi.height - 2; y >= 0; --y)
            follow(marker[y + 1], y);
    }
    /// Rows that pixels were left out of are scanned again, and all rows looked at, until none was.
    void settle() {
        while (full) {
            full = false;
            for (int y = 0; y < roi.height; ++y)
                if (flags[y] != 0) {
                    flags[y] = 0;
                    scanBothWays<Op, T>(marker[y], mask[y], roi.width);
                }
            followAll();
        }
    }
    /// To the fixed point of the region, from a state in which a row can change only the next one in the order of
    /// `first`. That sweep goes first, and leaves marks for the other one.
    void finish(CheckedSweep<T> first, CheckedSweep<T> second) {
        std::memset(flags, 1, roi.height);
        const int maskStep = static_cast<int>(mask.step), markerStep = static_cast<int>(marker.step);
        int changes = first(mask.base, maskStep, marker.base, markerStep, roi, flags, line);
        changes += second(mask.base, maskStep, marker.base, markerStep, roi, flags, line);
        std::memset(flags, 0, roi.height);
        if (changes == 0)
            return;
        followAll();
        settle();
    }
    /// The fixed point again after `from`, beside the region's row y, has grown.
    void takeIn(const T *from, int y) {
        follow(from, y);
        settle();
    }
};

// --- one call ---

/// The caller's buffer: four rows, two for each thread, and a flag for each row behind a spare one. The fourth row is
/// not rounded up; there is no room for that.
template <class T>
struct Areas {
    T *lines[2];
    Nox8u *flags;

    Areas(Nox8u *buffer, NoxiSize roi) {
        Nox8u *const base = alignUp(buffer, 32);
        const std::ptrdiff_t bytes = static_cast<std::ptrdiff_t>(roi.width) * static_cast<int>(sizeof(T)),
                             row = roundUp(bytes, std::ptrdiff_t(32));
        lines[0] = reinterpret_cast<T *>(base);
        lines[1] = reinterpret_cast<T *>(base + 2 * row);
        flags = base + 3 * row + bytes + 1;
    }
};

/// The routines for a neighbourhood: four or eight neighbours.
template <class T>
struct Routines {
    Sweep<T> down, up;
    CheckedSweep<T> downCheck, upCheck;
};

template <class Op, class T, bool eight>
void reconstructAlone(Rows<const T> mask, Rows<T> marker, NoxiSize roi, const Areas<T> &areas, const Routines<T> &go) {
    const int maskStep = static_cast<int>(mask.step), markerStep = static_cast<int>(marker.step);
    go.down(mask.base, maskStep, marker.base, markerStep, roi, nullptr, areas.lines[0]);
    go.up(mask.base, maskStep, marker.base, markerStep, roi, nullptr, areas.lines[0]);
    Region<Op, T, eight>{mask, marker, roi, areas.flags, areas.lines[0]}.finish(go.downCheck, go.upCheck);
}

/// Rounds in which two threads take turns with the seam.
constexpr int longestExchange = 4;

template <class Op, class T, bool eight>
void reconstructTogether(Rows<const T> mask, Rows<T> marker, NoxiSize roi, const Areas<T> &areas,
                         const Routines<T> &go) {
    const int seam = roi.height / 2, maskStep = static_cast<int>(mask.step), markerStep = static_cast<int>(marker.step);
    const NoxiSize sizes[2] = {{roi.width, seam}, {roi.width, roi.height - seam - 1}};
    const int first[2] = {0, seam + 1}, beside[2] = {seam - 1, seam + 1};
    bool seamChanged = false;
    const auto sweep = [&](int role, bool downwards, const T *before) {
        (downwards ? go.down : go.up)(mask[first[role]], maskStep, marker[first[role]], markerStep, sizes[role], before,
                                      areas.lines[role]);
    };
    const auto region = [&](int role) {
        return Region<Op, T, eight>{mask.from(first[role]), marker.from(first[role]), sizes[role],
                                    areas.flags + first[role], areas.lines[role]};
    };
    const auto growSeam = [&](int near) {
        const T *const given = givenBy<Op, T, eight>(marker[near], areas.lines[0], roi.width);
        return grow<Op, T>(given, mask[seam], marker[seam], roi.width);
    };
    parallelPhases(2, [&](const Phases &phases) {
        // From the outer rows to the seam, and back.
        phases.together([&](int role) { sweep(role, role == 0, nullptr); });
        phases.alone([&] {
            growSeam(beside[0]);
            growSeam(beside[1]);
            scanBothWays<Op, T>(marker[seam], mask[seam], roi.width);
        });
        phases.together([&](int role) {
            sweep(role, role != 0, marker[seam]);
            region(role).finish(role == 0 ? go.downCheck : go.upCheck, role == 0 ? go.upCheck : go.downCheck);
        });
        for (int round = 0;; ++round) {
            phases.alone([&] {
                if (round == longestExchange) {
                    // A path that crosses the seam again and again: it is followed by one thread.
                    Region<Op, T, eight> whole{mask, marker, roi, areas.flags, areas.lines[0]};
                    whole.takeIn(marker[beside[0]], seam);
                    whole.takeIn(marker[beside[1]], seam);
                }
                seamChanged = growSeam(beside[0]);
                seamChanged |= growSeam(beside[1]);
                if (seamChanged)
                    scanBothWays<Op, T>(marker[seam], mask[seam], roi.width);
            });
            if (!seamChanged)
                break;
            phases.together([&](int role) { region(role).takeIn(marker[seam], beside[role] - first[role]); });
        }
    });
}

constexpr int leastSide = 11; ///< of images that two threads share

template <class Op, class T>
NoxStatus reconstruct(const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, Nox8u *buffer, int norm,
                      const Sweep<T> *down, const Sweep<T> *up, const CheckedSweep<T> *downCheck,
                      const CheckedSweep<T> *upCheck) {
    const NoxStatus status =
        firstFailure(checkPointers(src, srcDst, buffer), checkSize(roi), checkStep<T>(srcStep, roi.width),
                     checkStep<T>(srcDstStep, roi.width), checkEvenSteps<T>(srcStep, srcDstStep),
                     require(norm == 0 || norm == 1, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    const int entry = norm == 1 ? 0 : 1;
    const Routines<T> go{down[entry], up[entry], downCheck[entry], upCheck[entry]};
    const bool together = roi.height >= leastSide && roi.width >= leastSide && owncvGetNumThreads() >= 2;
    const auto run = norm == 1 ? (together ? reconstructTogether<Op, T, false> : reconstructAlone<Op, T, false>)
                               : (together ? reconstructTogether<Op, T, true> : reconstructAlone<Op, T, true>);
    run({src, srcStep}, {srcDst, srcDstStep}, roi, Areas<T>(buffer, roi), go);
    return noxStsNoError;
}

NoxStatus bufferSize(NoxiSize roi, int rowBytes, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi));
    return status != noxStsNoError ? status
                                   : storeSize(static_cast<long long>(rowBytes) * roi.width + roi.height + 130, size);
}

} // namespace

NoxStatus noxiMorphReconstructGetBufferSize_8u_C1(NoxiSize roi, int *size) { return bufferSize(roi, 4, size); }
NoxStatus noxiMorphReconstructGetBufferSize_32f_C1(NoxiSize roi, int *size) { return bufferSize(roi, 16, size); }

// Entry 0 is for four neighbours, entry 1 for eight.
#define NOX_SWEEP(NAME, OP, TYPE, EIGHT, DOWN)                                                                         \
    static void NAME(const TYPE *src, int srcStep, TYPE *srcDst, int srcDstStep, NoxiSize roi, const TYPE *before,     \
                     TYPE *line) {                                                                                     \
        sweep<OP, TYPE, EIGHT, DOWN>(src, srcStep, srcDst, srcDstStep, roi, before, line);                             \
    }
#define NOX_CHECKED_SWEEP(NAME, OP, TYPE, EIGHT, DOWN)                                                                 \
    static int NAME(const TYPE *src, int srcStep, TYPE *srcDst, int srcDstStep, NoxiSize roi, Nox8u *flags,            \
                    TYPE *line) {                                                                                      \
        return checkedSweep<OP, TYPE, EIGHT, DOWN>(src, srcStep, srcDst, srcDstStep, roi, flags, line);                \
    }
NOX_SWEEP(ownDilateDown_8u_C1R, Largest, Nox8u, false, true)
NOX_SWEEP(ownDilateDown_8u_C1RInf, Largest, Nox8u, true, true)
NOX_CHECKED_SWEEP(ownDilateDownCheck_8u_C1R, Largest, Nox8u, false, true)
NOX_CHECKED_SWEEP(ownDilateDownCheck_8u_C1RInf, Largest, Nox8u, true, true)
NOX_SWEEP(ownDilateUp_8u_C1R, Largest, Nox8u, false, false)
NOX_SWEEP(ownDilateUp_8u_C1RInf, Largest, Nox8u, true, false)
NOX_CHECKED_SWEEP(ownDilateUpCheck_8u_C1R, Largest, Nox8u, false, false)
NOX_CHECKED_SWEEP(ownDilateUpCheck_8u_C1RInf, Largest, Nox8u, true, false)
NOX_SWEEP(ownDilateDown_32f_C1R, Largest, Nox32f, false, true)
NOX_SWEEP(ownDilateDown_32f_C1RInf, Largest, Nox32f, true, true)
NOX_CHECKED_SWEEP(ownDilateDownCheck_32f_C1R, Largest, Nox32f, false, true)
NOX_CHECKED_SWEEP(ownDilateDownCheck_32f_C1RInf, Largest, Nox32f, true, true)
NOX_SWEEP(ownDilateUp_32f_C1R, Largest, Nox32f, false, false)
NOX_SWEEP(ownDilateUp_32f_C1RInf, Largest, Nox32f, true, false)
NOX_CHECKED_SWEEP(ownDilateUpCheck_32f_C1R, Largest, Nox32f, false, false)
NOX_CHECKED_SWEEP(ownDilateUpCheck_32f_C1RInf, Largest, Nox32f, true, false)
NOX_SWEEP(ownErodeDown_8u_C1R, Smallest, Nox8u, false, true)
NOX_SWEEP(ownErodeDown_8u_C1RInf, Smallest, Nox8u, true, true)
NOX_CHECKED_SWEEP(ownErodeDownCheck_8u_C1R, Smallest, Nox8u, false, true)
NOX_CHECKED_SWEEP(ownErodeDownCheck_8u_C1RInf, Smallest, Nox8u, true, true)
NOX_SWEEP(ownErodeUp_8u_C1R, Smallest, Nox8u, false, false)
NOX_SWEEP(ownErodeUp_8u_C1RInf, Smallest, Nox8u, true, false)
NOX_CHECKED_SWEEP(ownErodeUpCheck_8u_C1R, Smallest, Nox8u, false, false)
NOX_CHECKED_SWEEP(ownErodeUpCheck_8u_C1RInf, Smallest, Nox8u, true, false)
NOX_SWEEP(ownErodeDown_32f_C1R, Smallest, Nox32f, false, true)
NOX_SWEEP(ownErodeDown_32f_C1RInf, Smallest, Nox32f, true, true)
NOX_CHECKED_SWEEP(ownErodeDownCheck_32f_C1R, Smallest, Nox32f, false, true)
NOX_CHECKED_SWEEP(ownErodeDownCheck_32f_C1RInf, Smallest, Nox32f, true, true)
NOX_SWEEP(ownErodeUp_32f_C1R, Smallest, Nox32f, false, false)
NOX_SWEEP(ownErodeUp_32f_C1RInf, Smallest, Nox32f, true, false)
NOX_CHECKED_SWEEP(ownErodeUpCheck_32f_C1R, Smallest, Nox32f, false, false)
NOX_CHECKED_SWEEP(ownErodeUpCheck_32f_C1RInf, Smallest, Nox32f, true, false)

const Sweep<Nox8u> tabDilateDown_8u_C1R[2] = {ownDilateDown_8u_C1R, ownDilateDown_8u_C1RInf};
const CheckedSweep<Nox8u> tabDilateDownCheck_8u_C1R[2] = {ownDilateDownCheck_8u_C1R, ownDilateDownCheck_8u_C1RInf};
const Sweep<Nox8u> tabDilateUp_8u_C1R[2] = {ownDilateUp_8u_C1R, ownDilateUp_8u_C1RInf};
const CheckedSweep<Nox8u> tabDilateUpCheck_8u_C1R[2] = {ownDilateUpCheck_8u_C1R, ownDilateUpCheck_8u_C1RInf};
const Sweep<Nox32f> tabDilateDown_32f_C1R[2] = {ownDilateDown_32f_C1R, ownDilateDown_32f_C1RInf};
const CheckedSweep<Nox32f> tabDilateDownCheck_32f_C1R[2] = {ownDilateDownCheck_32f_C1R, ownDilateDownCheck_32f_C1RInf};
const Sweep<Nox32f> tabDilateUp_32f_C1R[2] = {ownDilateUp_32f_C1R, ownDilateUp_32f_C1RInf};
const CheckedSweep<Nox32f> tabDilateUpCheck_32f_C1R[2] = {ownDilateUpCheck_32f_C1R, ownDilateUpCheck_32f_C1RInf};
const Sweep<Nox8u> tabErodeDown_8u_C1R[2] = {ownErodeDown_8u_C1R, ownErodeDown_8u_C1RInf};
const CheckedSweep<Nox8u> tabErodeDownCheck_8u_C1R[2] = {ownErodeDownCheck_8u_C1R, ownErodeDownCheck_8u_C1RInf};
const Sweep<Nox8u> tabErodeUp_8u_C1R[2] = {ownErodeUp_8u_C1R, ownErodeUp_8u_C1RInf};
const CheckedSweep<Nox8u> tabErodeUpCheck_8u_C1R[2] = {ownErodeUpCheck_8u_C1R, ownErodeUpCheck_8u_C1RInf};
const Sweep<Nox32f> tabErodeDown_32f_C1R[2] = {ownErodeDown_32f_C1R, ownErodeDown_32f_C1RInf};
const CheckedSweep<Nox32f> tabErodeDownCheck_32f_C1R[2] = {ownErodeDownCheck_32f_C1R, ownErodeDownCheck_32f_C1RInf};
const Sweep<Nox32f> tabErodeUp_32f_C1R[2] = {ownErodeUp_32f_C1R, ownErodeUp_32f_C1RInf};
const CheckedSweep<Nox32f> tabErodeUpCheck_32f_C1R[2] = {ownErodeUpCheck_32f_C1R, ownErodeUpCheck_32f_C1RInf};

NoxStatus noxiMorphReconstructDilate_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,
                                             Nox8u *buffer, int norm) {
    return reconstruct<Largest>(src, srcStep, srcDst, srcDstStep, roi, buffer, norm, tabDilateDown_8u_C1R,
                                tabDilateUp_8u_C1R, tabDilateDownCheck_8u_C1R, tabDilateUpCheck_8u_C1R);
}
NoxStatus noxiMorphReconstructDilate_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                              NoxiSize roi, Nox8u *buffer, int norm) {
    return reconstruct<Largest>(src, srcStep, srcDst, srcDstStep, roi, buffer, norm, tabDilateDown_32f_C1R,
                                tabDilateUp_32f_C1R, tabDilateDownCheck_32f_C1R, tabDilateUpCheck_32f_C1R);
}
NoxStatus noxiMorphReconstructErode_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep, NoxiSize roi,
                                            Nox8u *buffer, int norm) {
    return reconstruct<Smallest>(src, srcStep, srcDst, srcDstStep, roi, buffer, norm, tabErodeDown_8u_C1R,
                                 tabErodeUp_8u_C1R, tabErodeDownCheck_8u_C1R, tabErodeUpCheck_8u_C1R);
}
NoxStatus noxiMorphReconstructErode_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                             NoxiSize roi, Nox8u *buffer, int norm) {
    return reconstruct<Smallest>(src, srcStep, srcDst, srcDstStep, roi, buffer, norm, tabErodeDown_32f_C1R,
                                 tabErodeUp_32f_C1R, tabErodeDownCheck_32f_C1R, tabErodeUpCheck_32f_C1R);
}
