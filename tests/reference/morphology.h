// Morphology, straight from the definitions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

#include "noxtypes.h"

namespace reference::morphology {

/// A view of an image of interleaved channels.
template <class T>
struct View {
    T *base;
    int step; ///< bytes
    int channels;

    T &at(int x, int y, int c) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
        return reinterpret_cast<T *>(reinterpret_cast<Byte *>(base) + std::ptrdiff_t(y) * step)[x * channels + c];
    }
};

/// The winner of a pair: the first only if it compares less (greater).
template <class T>
T pick(bool largest, T a, T b) {
    return (largest ? a > b : a < b) ? a : b;
}

/// The winner of src over the set cells of a mask, for every pixel and channel; pixels outside are the nearest ones
/// inside. An empty mask gives src.
template <class T>
void overMask(bool largest, View<const T> src, View<T> dst, NoxiSize roi, const Nox8u *mask, NoxiSize size,
              NoxiPoint anchor) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int c = 0; c < src.channels; ++c) {
                bool any = false;
                T best = src.at(x, y, c);
                for (int r = 0; r < size.height; ++r)
                    for (int i = 0; i < size.width; ++i) {
                        if (mask[r * size.width + i] == 0)
                            continue;
                        const T v = src.at(std::clamp(x + i - anchor.x, 0, roi.width - 1),
                                           std::clamp(y + r - anchor.y, 0, roi.height - 1), c);
                        best = any ? pick(largest, v, best) : v;
                        any = true;
                    }
                dst.at(x, y, c) = best;
            }
}

/// The same for floats as the kernels of general masks form it: every cell takes part, and the value of one that is not
/// set is limited to the number that cannot win.
inline void overLimitedMask(bool largest, View<const Nox32f> src, View<Nox32f> dst, NoxiSize roi, const Nox8u *mask,
                            NoxiSize size, NoxiPoint anchor) {
    constexpr Nox32f most = std::numeric_limits<Nox32f>::max();
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            for (int c = 0; c < src.channels; ++c) {
                Nox32f best = largest ? -most : most;
                for (int r = 0; r < size.height; ++r)
                    for (int i = 0; i < size.width; ++i) {
                        const bool set = mask[r * size.width + i] != 0;
                        const Nox32f v = src.at(std::clamp(x + i - anchor.x, 0, roi.width - 1),
                                                std::clamp(y + r - anchor.y, 0, roi.height - 1), c);
                        best = pick(largest, best, pick(!largest, v, set == largest ? most : -most));
                    }
                dst.at(x, y, c) = best;
            }
}

/// The winner of the cells from `position` - anchor on, `cells` of them, as far as they lie on the line.
template <class T, class At>
T winnerAlong(bool largest, int position, int length, int cells, int anchor, const At &at) {
    T best = at(position);
    const int end = int(std::min<long long>(length, 0LL + position - anchor + cells));
    for (int i = std::max(0, position - anchor); i < end; ++i)
        best = pick(largest, at(i), best);
    return best;
}

/// The winner over a whole rectangle: first of each row, then of each column of the rows' winners.
template <class T>
void overRectangle(bool largest, View<const T> src, View<T> dst, NoxiSize roi, NoxiSize size, NoxiPoint anchor) {
    std::vector<T> rows(std::size_t(roi.width) * roi.height * src.channels);
    const View<T> middle{rows.data(), int(roi.width * src.channels * sizeof(T)), src.channels};
    const auto forEach = [&](View<T> result, const auto &winner) {
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                for (int c = 0; c < src.channels; ++c)
                    result.at(x, y, c) = winner(x, y, c);
    };
    forEach(middle, [&](int x, int y, int c) {
        return winnerAlong<T>(largest, x, roi.width, size.width, anchor.x, [&](int i) -> T { return src.at(i, y, c); });
    });
    forEach(dst, [&](int x, int y, int c) {
        return winnerAlong<T>(largest, y, roi.height, size.height, anchor.y,
                              [&](int i) -> T { return middle.at(x, i, c); });
    });
}

/// A line of floats that may hold not-a-numbers, by the order of operands that windows of 3 (pairs) and windows of any
/// width (blocks) keep; of a pair with a not-a-number the second one is taken.
class OrderedLine {
public:
    OrderedLine(bool largest, const std::vector<float> &line) : largest_(largest), s_(line) {}

    std::vector<float> windows(int cells, int anchor, bool blocks) const {
        const int width = int(s_.size()), some = blocks ? std::min(cells, 63) : cells, before = std::min(anchor, 62);
        std::vector<float> d(s_.size());
        for (int x = 0; x < width; ++x) {
            const int begin = x - before, end = begin + some; // the head and the tail grow cell by cell from their end
            if (begin < 0)
                d[x] = run(0, std::min(end, width) - 1, true);
            if (begin >= 0 && end <= width)
                d[x] = blocks ? inBlock(begin, some) : inPair(begin);
        }
        for (int x = 0; x < width; ++x)
            if (x >= before && x - before + some > width)
                d[x] = run(width - 1, x - before, true);
        widen(d, cells, anchor, some);
        return d;
    }

private:
    float winner(float a, float b) const { return pick(largest_, a, b); }
    /// Cells from one to another, up or down; each new one is the first operand, or the second.
    float run(int from, int to, bool newFirst) const {
        float best = s_[from];
        for (int i = from; i != to;) {
            i += from < to ? 1 : -1;
            best = newFirst ? winner(s_[i], best) : winner(best, s_[i]);
        }
        return best;
    }
    float inPair(int begin) const {
        return begin % 2 == 0 ? winner(s_[begin], winner(s_[begin + 1], s_[begin + 2]))
                              : winner(s_[begin + 2], winner(s_[begin], s_[begin + 1]));
    }
    float inBlock(int begin, int n) const {
        const int place = begin % (n + 1), block = begin - place, last = block + n - 1;
        if (place == 0)
            return winner(run(last, block + 1, false), s_[block]);
        const float behind = run(last + 1, last + place, false);
        return place == n ? behind : winner(run(last, begin, false), behind);
    }
    void widen(std::vector<float> &d, int cells, int anchor, int k) const {
        const int width = int(d.size());
        for (; anchor >= k;) {
            const int t = std::min(anchor - k + 1, k);
            for (int x = width - 1; x > 0; --x)
                d[x] = winner(d[std::max(x - t, 0)], d[x]);
            k += t;
        }
        for (; cells > k;) {
            const int t = std::min(cells - k, k);
            for (int x = 0; x < width - 1; ++x)
                d[x] = winner(d[std::min(x + t, width - 1)], d[x]);
            k += t;
        }
    }

    bool largest_;
    const std::vector<float> &s_;
};

/// The largest (smallest) sum of a pixel and its kernel value, in extended precision, rounded and limited at the end.
template <class T, class Kernel>
void gray(bool largest, View<const T> src, View<T> dst, NoxiSize roi, const Kernel *kernel, NoxiSize size,
          NoxiPoint anchor) {
    constexpr bool bytes = sizeof(T) == 1;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            constexpr long double low = bytes ? 0.0L : -static_cast<long double>(std::numeric_limits<T>::max());
            long double best = largest ? low : static_cast<long double>(std::numeric_limits<T>::max());
            for (int r = 0; r < size.height; ++r)
                for (int i = 0; i < size.width; ++i) {
                    const T v = src.at(std::clamp(x + i - anchor.x, 0, roi.width - 1),
                                       std::clamp(y + r - anchor.y, 0, roi.height - 1), 0);
                    best = pick(largest, static_cast<long double>(kernel[r * size.width + i]) + v, best);
                }
            dst.at(x, y, 0) = static_cast<T>(bytes ? std::clamp(best, 0.0L, 255.0L) : best);
        }
}

/// Reconstruction: the marker is cut at the mask and grows in raster order and against it until nothing changes.
template <class T>
void reconstruct(bool dilate, View<const T> mask, View<T> marker, NoxiSize roi, bool eight) {
    const auto cut = [&](T v, int x, int y) { return pick(!dilate, v, mask.at(x, y, 0)); };
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            marker.at(x, y, 0) = cut(marker.at(x, y, 0), x, y);
    bool changed = true;
    const auto visit = [&](int x, int y) {
        T best = marker.at(x, y, 0);
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const bool outside = x + dx < 0 || x + dx >= roi.width || y + dy < 0 || y + dy >= roi.height;
                if (!outside && (eight || dx == 0 || dy == 0))
                    best = pick(dilate, marker.at(x + dx, y + dy, 0), best);
            }
        best = cut(best, x, y);
        if (best != marker.at(x, y, 0)) {
            marker.at(x, y, 0) = best;
            changed = true;
        }
    };
    while (changed) {
        changed = false;
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                visit(x, y);
        for (int y = roi.height - 1; y >= 0; --y)
            for (int x = roi.width - 1; x >= 0; --x)
                visit(x, y);
    }
}

} // namespace reference::morphology
