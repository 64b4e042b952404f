// The Hough transform for straight lines, an angle at a time: three rows of the (theta, rho) plane are enough to tell
// its peaks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/lines.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace {

constexpr Nox64f pi = 3.14159265358979323846;

/// The plane's dimensions, in 64 bits; what is far beyond any buffer stops at a large number.
struct Plane {
    long long cells;  ///< of rho
    long long angles; ///< steps of theta; there is one angle more

    static Plane of(NoxiSize roi, NoxiPoint32f delta) {
        const auto length = static_cast<Nox32f>((static_cast<long long>(roi.width) + roi.height) * 2 + 1);
        return {truncated(length / delta.x), truncated(static_cast<long double>(pi) / delta.y)};
    }
    long long middle() const { return (cells - 1 + (cells < 1 ? 1 : 0)) >> 1; }

private:
    static long long truncated(long double value) {
        constexpr long double most = 1LL << 40;
        return static_cast<long long>(std::min(value, most));
    }
};

long long bufferBytes(NoxiSize roi, NoxiPoint32f delta, int maxLineCount) {
    const Plane plane = Plane::of(roi, delta);
    return (roi.width * 4LL + 32) * roi.height + maxLineCount * 16LL + plane.angles * 8 + (plane.cells * 4 + 4) * 4 +
           176;
}

/// A candidate of the list.
struct Candidate {
    Nox32s rho, theta, votes, unused;
};

constexpr int blockLength = 64; ///< of points that go through a kernel together

/// The areas of the buffer. They take less than the size told: rows of the plane have a guard cell at each end. The
/// points are what Points makes of them.
struct Areas {
    Nox32s *votes;
    Candidate *list;
    Nox32f *cosines, *sines;
    Nox32s *points;
    Areas(WorkBuffer &buffer, const Plane &plane, int maxLineCount, NoxiSize roi)
        : votes(buffer.take<Nox32s>(3 * (plane.cells + 2))), list(buffer.take<Candidate>(maxLineCount)),
          cosines(buffer.take<Nox32f>(plane.angles + 1)), sines(buffer.take<Nox32f>(plane.angles + 1)),
          points(buffer.take<Nox32s>((roi.width + 1LL) * roi.height)) {}
};

/// The tangent by its continued fraction.
Nox32f tangent(Nox32f angle) {
    const long double x = angle, square = x * x;
    long double fraction = 15 - square;
    for (int k = 13; k >= 1; k -= 2)
        fraction = k - square / fraction;
    return static_cast<Nox32f>(x / fraction);
}

/// Both functions of every angle, in cells of rho.
void fillAngles(const Areas &areas, long long count, NoxiPoint32f delta) {
    const Nox32f scale = 1 / delta.x;
    Nox32f angle = 0;
    for (long long i = 0; i < count; ++i, angle += delta.y) {
        const Nox32f t = tangent(angle * 0.5F), square = t * t;
        areas.sines[i] = 2 * t / (1 + square) * scale;
        areas.cosines[i] = (1 - square) / (1 + square) * scale;
    }
}

/// Calls found(x) for each pixel of a row that is set.
template <class Found>
NOX_INLINE void forEachSet(const Nox8u *row, int width, const Found &found) {
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, row + x, sizeof(eight));
        if (eight == 0)
            continue;
        for (int i = x; i < x + 8; ++i)
            found(i, row[i] != 0);
    }
    for (; x < width; ++x)
        found(x, row[x] != 0);
}

/// Some points, each coordinate for itself.
struct Block {
    int count;
    Nox32s x[blockLength], y[blockLength];
};

/// The pixels that are set, in scan order. Where both sides stay below 65536 each is a word, y above x; larger images
/// have a count for each row and then its positions.
class Points {
public:
    Points(Rows<const Nox8u> src, NoxiSize roi, Nox32s *memory)
        : roi_(roi), memory_(memory), words_(std::max(roi.width, roi.height) < 65536) {
        Nox32s *next = memory;
        for (int y = 0; y < roi.height; ++y) {
            Nox32s *count = words_ ? nullptr : next++;
            const Nox32s high = words_ ? static_cast<Nox32s>(static_cast<Nox32u>(y) << 16) : 0, *first = next;
            forEachSet(src[y], roi.width, [&](int x, bool set) {
                *next = high | x;
                next += set ? 1 : 0;
            });
            if (count != nullptr)
                *count = static_cast<Nox32s>(next - first);
        }
        length_ = static_cast<int>(next - memory);
    }
    NoxiSize roi() const { return roi_; }
    bool inWords() const { return words_; }
    const Nox32s *words() const { return memory_; }
    int count() const { return length_; }

    /// The block of words from one on.
    static void unpack(const Nox32s *words, int count, Block &block) {
        block.count = count;
        for (int k = 0; k < count; ++k) {
            block.x[k] = words[k] & 0xffff;
            block.y[k] = static_cast<Nox32s>(static_cast<Nox32u>(words[k]) >> 16);
        }
    }
    template <class Use>
    void forEachBlock(const Use &use) const {
        Block block;
        const Nox32s *next = memory_;
        for (int k = 0; words_ && k < length_; k += blockLength) {
            unpack(next + k, std::min(blockLength, length_ - k), block);
            use(block);
        }
        for (int y = 0; !words_ && y < roi_.height; ++y) {
            const int count = *next++;
            std::fill_n(block.y, blockLength, y);
            for (int k = 0; k < count; k += blockLength) {
                block.count = std::min(blockLength, count - k);
                std::copy_n(next + k, block.count, block.x);
                use(block);
            }
            next += count;
        }
    }

private:
    NoxiSize roi_;
    Nox32s *memory_;
    bool words_;
    int length_ = 0;
};

/// What turns a point into a cell at one angle.
struct Slope {
    Nox32f cosine, sine;
    int middle;
};

/// Rounds half away from zero.
NOX_INLINE int rounded(Nox32f value) { return static_cast<int>(static_cast<Nox64f>(value) + (value > 0 ? 0.5 : -0.5)); }

/// The cells that some points vote for. Products of a position and a table value are exact in double. Their
/// sum rounds to the same float as the extended one unless it is itself, in double, a midpoint between two floats.
/// @return whether one is
NOX_TIERS bool doubleCellsOf(const Block &block, const Slope &slope, Nox32s *cells) {
    const Nox64f cosine = slope.cosine, sine = slope.sine;
    int doubts = 0;
    for (int k = 0; k < block.count; ++k) {
        const Nox64f sum = block.x[k] * cosine + block.y[k] * sine;
        const auto low = static_cast<Nox32u>(__builtin_bit_cast(std::uint64_t, sum));
        doubts |= (low & 0x1fffffffU) == 0x10000000U ? 1 : 0;
        cells[k] = rounded(static_cast<Nox32f>(sum)) + slope.middle;
    }
    return doubts != 0;
}

void exactCellsOf(const Block &block, const Slope &slope, Nox32s *cells) {
    if (!doubleCellsOf(block, slope, cells))
        return;
    for (int k = 0; k < block.count; ++k) {
        const long double across = static_cast<long double>(block.x[k]) * slope.cosine;
        const long double down = static_cast<long double>(block.y[k]) * slope.sine;
        cells[k] = rounded(static_cast<Nox32f>(across + down)) + slope.middle;
    }
}

/// Added to a float below 2^22 in size, it leaves the nearest integer in the low bits.
constexpr Nox32f rounder = 12582912;
constexpr int mostCells = 1 << 22;

/// The cells of a block of words in single precision. With B = x |cosine| + y |sine| the two products, their sum and
/// the rounding of the exact value are off by 3 B 2^-24 at most together. Where the sum is farther than that (limit
/// leaves a little more) from the middle between two integers, the exact value rounds to the same integer.
/// @return whether some sum is not
NOX_INLINE bool quickCellsOf(const Nox32s *words, Nox32f cosine, Nox32f sine, Nox32f limit, int middle, Nox32s *cells) {
    const int offset = middle - __builtin_bit_cast(Nox32s, rounder);
    int doubts = 0;
    for (int k = 0; k < blockLength; ++k) {
        const auto x = static_cast<Nox32f>(words[k] & 0xffff);
        const auto y = static_cast<Nox32f>(static_cast<Nox32s>(static_cast<Nox32u>(words[k]) >> 16));
        const Nox32f value = x * cosine + y * sine, shifted = value + rounder;
        doubts |= std::fabs(value - (shifted - rounder)) > limit ? 1 : 0;
        cells[k] = __builtin_bit_cast(Nox32s, shifted) + offset;
    }
    return doubts != 0;
}

NOX_INLINE void voteBlock(const Nox32s *words, int count, Nox32f across, Nox32f down, const Slope &slope, Nox32s *row) {
    // The last point is the lowest one.
    const auto bottom = static_cast<Nox32f>(static_cast<Nox32s>(static_cast<Nox32u>(words[count - 1]) >> 16));
    const Nox32f limit = 0.5F - 0x1p-24F - (across + bottom * down) * 0x1.88p-23F;
    Nox32s cells[blockLength];
    if (quickCellsOf(words, slope.cosine, slope.sine, limit, slope.middle, cells)) {
        Block block;
        Points::unpack(words, count, block);
        exactCellsOf(block, slope, cells);
    }
    for (int k = 0; k < count; ++k)
        ++row[cells[k]];
}

/// All votes of an angle whose cells are all in the row.
NOX_TIERS void voteInside(const Points &points, const Slope &slope, Nox32s *row) {
    const Nox32f across = static_cast<Nox32f>(points.roi().width) * std::fabs(slope.cosine),
                 down = std::fabs(slope.sine);
    const Nox32s *words = points.words();
    int left = points.count();
    for (; left >= blockLength; left -= blockLength, words += blockLength)
        voteBlock(words, blockLength, across, down, slope, row);
    if (left > 0) {
        Nox32s last[blockLength] = {};
        std::copy_n(words, left, last);
        voteBlock(last, left, across, down, slope, row);
    }
}

/// A row of the plane: the votes of one angle. Cell -1 and the cell behind the last are guards.
struct Angle {
    Nox32s *cell;
    int low, high; ///< no other cell was touched
};

class Transform {
public:
    Transform(const Areas &areas, const Plane &plane, const Points &points, int threshold, int maxLineCount)
        : areas_(areas), points_(points), cells_(static_cast<int>(plane.cells)),
          middle_(static_cast<int>(plane.middle())), threshold_(threshold), most_(maxLineCount) {
        for (int i = 0; i < 3; ++i)
            rows_[i] = {areas.votes + i * (plane.cells + 2) + 1, 0, -1};
        std::memset(areas.votes, 0, static_cast<std::size_t>(plane.cells + 2) * 3 * sizeof(Nox32s));
    }
    /// All angles, 0 to last.
    void run(int last) {
        for (int i = 0; i <= last; ++i) {
            vote(i);
            if (i > 0)
                pick(i - 1);
        }
        clear(row(last + 1));
        pick(last);
    }
    int found() const { return count_; }
    int middle() const { return middle_; }

private:
    Angle &row(int i) { return rows_[(i + 3) % 3]; }

    void clear(Angle &angle) const {
        if (angle.low <= angle.high)
            std::memset(angle.cell + angle.low, 0,
                        (static_cast<std::size_t>(angle.high) - angle.low + 1) * sizeof(Nox32s));
        angle.low = cells_;
        angle.high = -1;
    }

    /// Every pixel's vote at one angle.
    void vote(int i) {
        Angle &angle = row(i);
        clear(angle);
        const Slope slope = {areas_.cosines[i], areas_.sines[i], middle_};
        const Nox64f right = (points_.roi().width - 1.0) * slope.cosine;
        const Nox64f bottom = (points_.roi().height - 1.0) * slope.sine;
        const Nox64f low = std::min(right, 0.0) + std::min(bottom, 0.0) + middle_ - 2;
        const Nox64f high = std::max(right, 0.0) + std::max(bottom, 0.0) + middle_ + 2;
        if (points_.inWords() && cells_ < mostCells && low >= 0 && high < cells_) {
            angle.low = static_cast<int>(low);
            angle.high = static_cast<int>(high);
            voteInside(points_, slope, angle.cell);
        } else {
            voteAnywhere(slope, angle);
        }
    }
    /// The same with a look at each cell.
    void voteAnywhere(const Slope &slope, Angle &angle) const {
        points_.forEachBlock([&](const Block &block) {
            Nox32s cells[blockLength];
            exactCellsOf(block, slope, cells);
            for (int k = 0; k < block.count; ++k) {
                const int cell = cells[k];
                if (cell < -1 || cell >= cells_)
                    continue;
                ++angle.cell[cell];
                angle.low = std::min(angle.low, cell);
                angle.high = std::max(angle.high, cell);
            }
        });
    }

    /// The lines of angle i, between those of the angles next to it.
    void pick(int i) {
        const Angle &here = row(i);
        const Nox32s *older = row(i - 1).cell, *newer = row(i + 1).cell, *cell = here.cell;
        for (int c = std::max(here.low, 0); c <= here.high; ++c) {
            const int v = cell[c];
            if (v > threshold_ && v > cell[c - 1] && v >= cell[c + 1] && v > older[c] && v >= newer[c])
                insert({c, i, v, 0});
        }
    }
    /// Behind all candidates with as many votes; the last one falls out of a full list.
    void insert(const Candidate &candidate) {
        Candidate *end = areas_.list + count_;
        Candidate *at = std::upper_bound(areas_.list, end, candidate,
                                         [](const Candidate &a, const Candidate &b) { return a.votes > b.votes; });
        if (count_ < most_)
            ++count_;
        else if (at == end)
            return;
        else
            --end;
        std::move_backward(at, end, end + 1);
        *at = candidate;
    }

    const Areas &areas_;
    const Points &points_;
    int cells_, middle_, threshold_, most_;
    int count_ = 0;
    Angle rows_[3];
};

NoxStatus checkHough(const Nox8u *src, int srcStep, NoxiSize roi, NoxiPoint32f delta, int threshold,
                     const NoxiPoint32f *lines, int maxLineCount, const int *lineCount, const Nox8u *buffer) {
    const auto most = static_cast<Nox32f>(static_cast<long long>(roi.width) + roi.height);
    return firstFailure(
        checkPointers(src, lines, lineCount, buffer), checkPositiveSteps(srcStep), checkSize(roi),
        checkLength(maxLineCount),
        require(delta.x > 0 && delta.x <= most && delta.y > 0 && delta.y <= pi && threshold >= 1, noxStsBadArgument));
}

} // namespace

NoxStatus noxiHoughLine_8u32f_C1R(const Nox8u *src, int srcStep, NoxiSize roi, NoxiPoint32f delta, int threshold,
                                  NoxiPoint32f *lines, int maxLineCount, int *lineCount, Nox8u *buffer) {
    NoxStatus status = checkHough(src, srcStep, roi, delta, threshold, lines, maxLineCount, lineCount, buffer);
    if (status == noxStsNoError)
        status = checkBufferBytes(bufferBytes(roi, delta, maxLineCount));
    if (status != noxStsNoError)
        return status;
    const Plane plane = Plane::of(roi, delta);
    WorkBuffer memory(buffer, alignof(Nox32s));
    const Areas areas(memory, plane, maxLineCount, roi);
    fillAngles(areas, plane.angles + 1, delta);
    const Points points({src, srcStep}, roi, areas.points);
    Transform transform(areas, plane, points, threshold, maxLineCount);
    transform.run(static_cast<int>(plane.angles));
    auto *out = reinterpret_cast<Element<Nox32f> *>(lines);
    for (int i = 0; i < transform.found(); ++i) {
        out[2 * i] = static_cast<Nox32f>(areas.list[i].rho - transform.middle()) * delta.x;
        out[2 * i + 1] = static_cast<Nox32f>(areas.list[i].theta) * delta.y;
    }
    *lineCount = transform.found();
    return noxStsNoError;
}

NoxStatus noxiHoughLineGetSize_8u_C1R(NoxiSize roi, NoxiPoint32f delta, int maxLineCount, int *bufferSize) {
    const NoxStatus status =
        firstFailure(checkPointers(bufferSize), checkSize(roi), require(delta.x > 0 && delta.y > 0, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    const long long bytes = bufferBytes(roi, delta, maxLineCount);
    *bufferSize = static_cast<int>(static_cast<Nox32u>(bytes));
    return checkBufferBytes(bytes) == noxStsNoError ? noxStsNoError : noxStsBufferSizeWarning;
}
