// Gradients under a mask, their repair next to unknown pixels, and the update when one pixel becomes known.
#include "noxvmaskedgradient.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

// A gradient form gives the difference inside the image, from three samples, and the one next to an edge or to an
// unknown pixel, from two.

/// Twice the central difference, but a plain one-sided difference.
struct Signed {
    static int central(int before, int /*here*/, int after) { return 2 * (after - before); }
    static int oneSided(int first, int second) { return second - first; }
};

/// Absolute differences, one-sided ones counted twice.
struct Absolute {
    static int central(int before, int here, int after) { return std::abs(after - here) + std::abs(here - before); }
    static int oneSided(int first, int second) { return 2 * std::abs(second - first); }
};

/// Scaled differences of floats.
struct Scaled {
    Nox32f scale;
    int central(Nox32f before, Nox32f /*here*/, Nox32f after) const {
        return truncateToInt((after - before) * (scale * 0.5F));
    }
    int oneSided(Nox32f first, Nox32f second) const { return truncateToInt((second - first) * scale); }
};

/// The neighbours of position i on a line of n: missing ones are the position itself.
struct Neighbours {
    int before, after;
    Neighbours(int i, int n) : before(std::max(i - 1, 0)), after(std::min(i + 1, n - 1)) {}
};

template <int Channels, class T, class Form>
void gradient(Rows<const T> src, Rows<Nox16s> dst, Rows<const Nox8u> mask, int width, int height, Form form) {
    // With both neighbours the central form, with one the one-sided form, which is 0 without any.
    const auto difference = [&form](bool inner, T before, T here, T after) {
        return wrap<Nox16s>(inner ? form.central(before, here, after) : form.oneSided(before, after));
    };
    for (int y = 0; y < height; ++y) {
        const Neighbours ny(y, height);
        const bool innerRow = y > 0 && y < height - 1;
        for (int x = 0; x < width; ++x) {
            if (mask[y][x] == 0)
                continue;
            const Neighbours nx(x, width);
            const bool innerColumn = x > 0 && x < width - 1;
            for (int c = 0; c < Channels; ++c) {
                const auto at = [&](int row, int column) { return src[row][column * Channels + c]; };
                Element<Nox16s> *pair = dst[y] + 2 * (x * Channels + c);
                pair[0] = difference(innerColumn, at(y, nx.before), at(y, x), at(y, nx.after));
                pair[1] = difference(innerRow, at(ny.before, x), at(y, x), at(ny.after, x));
            }
        }
    }
}

/// What a repair does to one component.
enum class Repair { keep, zero, backward, forward };

/// By which neighbours are blocked.
Repair repairOf(bool beforeBlocked, bool afterBlocked) {
    if (beforeBlocked)
        return afterBlocked ? Repair::zero : Repair::forward;
    return afterBlocked ? Repair::backward : Repair::keep;
}

/// In the first and last column, where one neighbour does not exist.
Repair edgeRepair(bool neighbourBlocked, Repair towardNeighbour) {
    return neighbourBlocked ? Repair::zero : towardNeighbour;
}

template <class Form>
void repair(Element<Nox16s> *component, Repair kind, int before, int here, int after) {
    if (kind == Repair::keep)
        return;
    const int value = kind == Repair::zero       ? 0
                      : kind == Repair::backward ? Form::oneSided(before, here)
                                                 : Form::oneSided(here, after);
    *component = wrap<Nox16s>(value);
}

template <class Form, int Channels>
void repairMasked(Rows<const Nox8u> src, Rows<Nox16s> dst, Rows<const Nox8u> mask, Rows<const Nox8u> blocked, int width,
                  int height) {
    for (int y = 0; y < height; ++y) {
        const Neighbours ny(y, height);
        for (int x = 0; x < width; ++x) {
            if (mask[y][x] == 0)
                continue;
            const Neighbours nx(x, width);
            const bool left = blocked[y][nx.before] != 0, right = blocked[y][nx.after] != 0;
            const Repair horizontal = x == 0           ? edgeRepair(right, Repair::forward)
                                      : x == width - 1 ? edgeRepair(left, Repair::backward)
                                                       : repairOf(left, right);
            const Repair vertical = repairOf(blocked[ny.before][x] != 0, blocked[ny.after][x] != 0);
            for (int c = 0; c < Channels; ++c) {
                const auto at = [&](int row, int column) { return src[row][column * Channels + c]; };
                Element<Nox16s> *pair = dst[y] + 2 * (x * Channels + c);
                repair<Form>(pair, horizontal, at(y, nx.before), at(y, x), at(y, nx.after));
                repair<Form>(pair + 1, vertical, at(ny.before, x), at(y, x), at(ny.after, x));
            }
        }
    }
}

/// One axis through a pixel: the samples, `blocked` bytes and gradient components of the pixels on it.
template <int Channels>
struct Line {
    const Nox8u *sample;          ///< channel 0 of the pixel at position 0
    std::ptrdiff_t sampleStep;    ///< bytes to the next position
    const Nox8u *blockedByte;     ///< of position 0
    std::ptrdiff_t blockedStep;   ///< bytes to the next position
    Nox16s *component;            ///< of channel 0 at position 0
    std::ptrdiff_t componentStep; ///< bytes to the next position
    int length;

    bool open(int i) const { return blockedByte[i * blockedStep] == 0; }
    /// Sets the component of every channel at position i from samples at up to three positions.
    template <class Difference>
    void set(int i, const Difference &difference) const {
        Element<Nox16s> *out = Rows<Nox16s>{component, componentStep}[i];
        for (int c = 0; c < Channels; ++c)
            out[2 * c] = wrap<Nox16s>(difference([&](int at) { return int(sample[at * sampleStep + c]); }));
    }
    template <class Form>
    void setCentral(int i) const {
        set(i, [i](const auto &s) { return Form::central(s(i - 1), s(i), s(i + 1)); });
    }
    /// One-sided between position i and the next one, stored at `where`.
    template <class Form>
    void setOneSided(int where, int i) const {
        set(where, [i](const auto &s) { return Form::oneSided(s(i), s(i + 1)); });
    }
};

/// The pixel's own component, from those neighbours that are known.
template <class Form, int Channels>
void updateOwn(const Line<Channels> &line, int i) {
    const bool hasBefore = i > 0, hasAfter = i < line.length - 1;
    if (!hasBefore && !hasAfter) {
        line.set(i, [](const auto &) { return 0; });
        return;
    }
    const bool before = hasBefore && line.open(i - 1), after = hasAfter && line.open(i + 1);
    if (before && after)
        line.template setCentral<Form>(i);
    else if (after)
        line.template setOneSided<Form>(i, i);
    else if (before)
        line.template setOneSided<Form>(i, i - 1);
}

/// The components of the two neighbours, which now have this pixel on one side.
template <class Form, int Channels>
void updateNeighbours(const Line<Channels> &line, int i) {
    if (i > 0) {
        if (i > 1 && line.open(i - 2))
            line.template setCentral<Form>(i - 1);
        else if (line.open(i - 1))
            line.template setOneSided<Form>(i - 1, i - 1);
    }
    if (i < line.length - 1) {
        if (i < line.length - 2 && line.open(i + 2))
            line.template setCentral<Form>(i + 1);
        else if (line.open(i + 1))
            line.template setOneSided<Form>(i + 1, i);
    }
}

template <class Form, int Channels>
void updatePoint(Rows<const Nox8u> src, Rows<Nox16s> dst, Rows<Nox8u> blocked, int width, int height, int row,
                 int column) {
    constexpr std::ptrdiff_t pairBytes = 2 * sizeof(Nox16s) * Channels;
    const Line<Channels> horizontal = {src[row], Channels, blocked[row], 1, dst[row], pairBytes, width};
    const Line<Channels> vertical = {src[0] + std::ptrdiff_t(column) * Channels,
                                     src.step,
                                     blocked[0] + column,
                                     blocked.step,
                                     dst[0] + std::ptrdiff_t(column) * 2 * Channels + 1,
                                     dst.step,
                                     height};
    blocked[row][column] = 0;
    updateOwn<Form>(vertical, row);
    updateOwn<Form>(horizontal, column);
    updateNeighbours<Form>(vertical, row);
    updateNeighbours<Form>(horizontal, column);
}

} // namespace

#define NOX_MASKED_GRADIENT(NAME, FORM, CHANNELS)                                                                      \
    void owncv##NAME##_8u16s_C##CHANNELS##MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,                  \
                                             const Nox8u *mask, int maskStep, int width, int height) {                 \
        gradient<CHANNELS, Nox8u>({src, srcStep}, {dst, dstStep}, {mask, maskStep}, width, height, FORM());            \
    }                                                                                                                  \
    void owncvMod##NAME##_8u16s_C##CHANNELS##MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,               \
                                                const Nox8u *mask, int maskStep, const Nox8u *blocked,                 \
                                                int blockedStep, int width, int height) {                              \
        repairMasked<FORM, CHANNELS>({src, srcStep}, {dst, dstStep}, {mask, maskStep}, {blocked, blockedStep}, width,  \
                                     height);                                                                          \
    }                                                                                                                  \
    void owncvMod##NAME##Point_8u16s_C##CHANNELS##MR(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep,          \
                                                     Nox8u *blocked, int blockedStep, int width, int height, int row,  \
                                                     int column) {                                                     \
        updatePoint<FORM, CHANNELS>({src, srcStep}, {dst, dstStep}, {blocked, blockedStep}, width, height, row,        \
                                    column);                                                                           \
    }

NOX_MASKED_GRADIENT(Gradient, Signed, 1)
NOX_MASKED_GRADIENT(Gradient, Signed, 3)
NOX_MASKED_GRADIENT(AbsGradient, Absolute, 1)
NOX_MASKED_GRADIENT(AbsGradient, Absolute, 3)

void owncvGradient_32f16s_C1MR_Sfs(const Nox32f *src, int srcStep, Nox16s *dst, int dstStep, const Nox8u *mask,
                                   int maskStep, int width, int height, int scaleFactor) {
    const int scale = scaleFactor < 1 ? static_cast<int>(1U << (-static_cast<unsigned>(scaleFactor) & 31U)) : 0;
    gradient<1, Nox32f>({src, srcStep}, {dst, dstStep}, {mask, maskStep}, width, height,
                        Scaled{static_cast<Nox32f>(scale)});
}

void owncvNoZero_8u(const Nox8u *image, int step, int width, int height, int *count, NoxiRect *bounds) {
    const Rows<const Nox8u> rows{image, step};
    int found = 0, left = width, right = -1, top = -1, bottom = -1;
    for (int y = 0; y < height; ++y) {
        const Nox8u *row = rows[y];
        for (int x = 0; x < width; ++x) {
            if (row[x] == 0)
                continue;
            ++found;
            left = std::min(left, x);
            right = std::max(right, x);
            top = top < 0 ? y : top;
            bottom = y;
        }
    }
    *count = found;
    *bounds = found == 0 ? NoxiRect{-1, -1, 0, 0} : NoxiRect{left, top, right - left + 1, bottom - top + 1};
}

void owncvFillNoZero_32f(const Nox32f *image, int step, int width, int height, Nox64f *list, int capacity) {
    constexpr std::uint64_t indexBits = (1ULL << 28) - 1;
    const Rows<const Nox32f> rows{image, step};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width && capacity > 0; ++x) {
            const Nox32f value = rows[y][x];
            if (!(value > 0))
                continue;
            const auto index = static_cast<std::uint64_t>(static_cast<long long>(y) * width + x) & indexBits;
            *elements(list++) = std::bit_cast<Nox64f>(std::bit_cast<std::uint64_t>(static_cast<Nox64f>(value)) | index);
            --capacity;
        }
}
