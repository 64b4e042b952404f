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

/// The areas of the buffer. They take less than the size told: rows of the plane have a guard cell at each end, rows of
/// the image hold a count and the positions of the pixels that are set.
struct Areas {
    Nox32s *votes;
    Candidate *list;
    Nox32f *cosines, *sines;
    Nox32s *pixels;
    Areas(WorkBuffer &buffer, const Plane &plane, int maxLineCount, NoxiSize roi)
        : votes(buffer.take<Nox32s>(3 * (plane.cells + 2))), list(buffer.take<Candidate>(maxLineCount)),
          cosines(buffer.take<Nox32f>(plane.angles + 1)), sines(buffer.take<Nox32f>(plane.angles + 1)),
          pixels(buffer.take<Nox32s>((roi.width + 1LL) * roi.height)) {}
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

/// The positions of the pixels that are set, row by row behind their count.
void packImage(Rows<const Nox8u> src, NoxiSize roi, Nox32s *pixels) {
    for (int y = 0; y < roi.height; ++y) {
        Nox32s *count = pixels;
        Nox32s *next = pixels + 1;
        const Nox8u *s = src[y];
        int x = 0;
        for (; x + 8 <= roi.width; x += 8) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, s + x, sizeof(eight));
            if (eight == 0)
                continue;
            for (int i = x; i < x + 8; ++i) {
                *next = i;
                next += s[i] != 0 ? 1 : 0;
            }
        }
        for (; x < roi.width; ++x)
            if (s[x] != 0)
                *next++ = x;
        *count = static_cast<Nox32s>(next - pixels - 1);
        pixels = next;
    }
}

constexpr int blockLength = 64;

/// Rounds half away from zero.
NOX_INLINE int rounded(Nox32f value) { return static_cast<int>(static_cast<Nox64f>(value) + (value > 0 ? 0.5 : -0.5)); }

/// The cells that some pixels of a row vote for. Products of a position and a table value are exact in double. Their
/// sum rounds to the same float as the extended one unless it is itself, in double, a midpoint between two floats.
/// @return whether one is
NOX_TIERS bool cellsOf(const Nox32s *xs, int count, Nox64f cosine, Nox64f rise, int middle, Nox32s *cells) {
    int doubts = 0;
    for (int k = 0; k < count; ++k) {
        const Nox64f sum = xs[k] * cosine + rise;
        const auto low = static_cast<Nox32u>(__builtin_bit_cast(std::uint64_t, sum));
        doubts |= (low & 0x1fffffffU) == 0x10000000U ? 1 : 0;
        cells[k] = rounded(static_cast<Nox32f>(sum)) + middle;
    }
    return doubts != 0;
}

void extendedCellsOf(const Nox32s *xs, int count, Nox32f cosine, long double rise, int middle, Nox32s *cells) {
    for (int k = 0; k < count; ++k)
        cells[k] = rounded(static_cast<Nox32f>(static_cast<long double>(xs[k]) * cosine + rise)) + middle;
}

/// A row of the plane: the votes of one angle. Cell -1 and the cell behind the last are guards.
struct Angle {
    Nox32s *cell;
    int low, high; ///< what was touched
};

class Transform {
public:
    Transform(const Areas &areas, const Plane &plane, NoxiSize roi, int threshold, int maxLineCount)
        : areas_(areas), cells_(static_cast<int>(plane.cells)), middle_(static_cast<int>(plane.middle())),
          height_(roi.height), threshold_(threshold), most_(maxLineCount) {
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
        std::memset(angle.cell - 1, 0, (static_cast<std::size_t>(cells_) + 2) * sizeof(Nox32s));
        angle.low = cells_ - 1;
        angle.high = 0;
    }

    /// Every pixel's vote at one angle.
    void vote(int i) {
        Angle &angle = row(i);
        clear(angle);
        const Nox32s *pixels = areas_.pixels;
        for (int y = 0; y < height_; ++y) {
            const int count = *pixels++;
            for (int k = 0; k < count; k += blockLength)
                voteBlock(angle, pixels + k, std::min(blockLength, count - k), i, y);
            pixels += count;
        }
    }
    void voteBlock(Angle &angle, const Nox32s *xs, int count, int i, int y) const {
        const Nox32f cosine = areas_.cosines[i], sine = areas_.sines[i];
        Nox32s cells[blockLength];
        if (cellsOf(xs, count, cosine, static_cast<Nox64f>(y) * sine, middle_, cells))
            extendedCellsOf(xs, count, cosine, static_cast<long double>(y) * sine, middle_, cells);
        for (int k = 0; k < count; ++k) {
            const int cell = cells[k];
            if (cell < -1 || cell >= cells_)
                continue;
            ++angle.cell[cell];
            angle.low = std::min(angle.low, cell);
            angle.high = std::max(angle.high, cell);
        }
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
    int cells_, middle_, height_, threshold_, most_;
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
    packImage({src, srcStep}, roi, areas.pixels);
    Transform transform(areas, plane, roi, threshold, maxLineCount);
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
