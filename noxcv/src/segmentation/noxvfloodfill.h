// What flood fills have in common: spans, the stack of those that wait, what was filled.
#pragma once

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>

#include "noxcv/segmentation.h"
#include "rows.h"

namespace nox {

/// Pixels left to end - 1 of row y. The row at y + done needs no visit: nothing in reach there is left to join; 0 when
/// both rows must be visited.
struct Span {
    int y, left, end, done;
};

/// Bytes of a fill's stack, with what moving it up to an address that is a multiple of 8 may take.
inline long long stackBytes(NoxiSize roi) { return area(roi) * 6 + 32; }

/// The spans that wait for a visit of their neighbour rows, last in, first out: 8 bytes each in the caller's buffer.
/// Images whose stack an int can size need 30 bits for a row and a column, and 29 for another column.
class WaitingSpans {
public:
    WaitingSpans(void *buffer, NoxiSize roi)
        : bottom_(static_cast<Element<std::uint64_t> *>(alignUp(buffer, 8))), top_(bottom_),
          columnBits_(std::bit_width(static_cast<unsigned>(roi.width - 1))) {}
    bool empty() const { return top_ == bottom_; }
    void push(const Span &span) {
        std::uint64_t record = static_cast<unsigned>(span.y);
        record = record << columnBits_ | static_cast<unsigned>(span.left);
        record = record << columnBits_ | static_cast<unsigned>(span.end - 1);
        *top_++ = record << 2 | static_cast<unsigned>(span.done + 1);
    }
    Span pop() {
        const std::uint64_t record = *--top_;
        const unsigned mask = (1U << columnBits_) - 1U;
        const auto right = static_cast<unsigned>(record >> 2) & mask;
        const auto left = static_cast<unsigned>(record >> (2 + columnBits_)) & mask;
        return {static_cast<int>(record >> (2 + 2 * columnBits_)), static_cast<int>(left), static_cast<int>(right) + 1,
                static_cast<int>(record & 3U) - 1};
    }

private:
    Element<std::uint64_t> *bottom_, *top_;
    int columnBits_;
};

/// Number of filled pixels and their bounding box.
struct Extent {
    long long area = 0;
    int left = INT_MAX, right = -1, top = INT_MAX, bottom = -1;

    void add(const Span &span) {
        area += span.end - span.left;
        left = std::min(left, span.left);
        right = std::max(right, span.end - 1);
        top = std::min(top, span.y);
        bottom = std::max(bottom, span.y);
    }
    NoxiRect box() const { return {left, top, right - left + 1, bottom - top + 1}; }
};

/// A pixel's value.
template <class T, int channels>
struct Color {
    T value[channels];

    static Color load(const Element<T> *pixel) {
        Color color;
        for (int c = 0; c < channels; ++c)
            color.value[c] = pixel[c];
        return color;
    }
};

/// Pixels left to end - 1 of a row get the color.
template <class T, int channels>
void paint(Element<T> *row, int left, int end, const Color<T, channels> &color) {
    constexpr int group = 16;
    T pattern[group * channels];
    Element<T> *p = row + std::ptrdiff_t(left) * channels;
    std::ptrdiff_t rest = end - left;
    if (rest >= group) {
        for (int i = 0; i < group * channels; ++i)
            pattern[i] = color.value[i % channels];
        for (; rest >= group; rest -= group, p += group * channels)
            __builtin_memcpy(p, pattern, sizeof(pattern));
    }
    for (; rest > 0; --rest)
        for (int c = 0; c < channels; ++c)
            *p++ = color.value[c];
}

template <class T, int channels>
NoxiConnectedRegion regionRecord(const Extent &extent, const Color<T, channels> &color) {
    NoxiConnectedRegion region{static_cast<Nox64f>(extent.area), {0, 0, 0}, extent.box()};
    for (int c = 0; c < channels; ++c)
        region.value[c] = static_cast<Nox64f>(color.value[c]);
    return region;
}

} // namespace nox
