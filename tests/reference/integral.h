// Integral images and deviations under rectangles, straight from their definitions.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::integral {

/// Row r and column c by sums of their own. T is the table's element; square tells whether pixels are squared.
template <class T>
void upright(const Nox8u *src, int srcStep, T *table, int step, NoxiSize roi, T offset, bool square) {
    for (int c = 0; c <= roi.width; ++c)
        test::rowAt(table, step, 0)[c] = offset;
    for (int y = 0; y < roi.height; ++y) {
        const auto above = test::rowAt(table, step, y), out = test::rowAt(table, step, y + 1);
        out[0] = offset;
        std::uint64_t running = 0;
        for (int c = 1; c <= roi.width; ++c) {
            const Nox32u pixel = test::rowAt(src, srcStep, y)[c - 1];
            running += square ? pixel * pixel : pixel;
            if constexpr (std::is_same_v<T, Nox32s>)
                out[c] = T(Nox32u(T(above[c])) + Nox32u(running));
            else if constexpr (std::is_same_v<T, Nox32f>)
                out[c] = T(above[c]) + T(Nox32s(running));
            else
                out[c] = T(static_cast<long double>(T(above[c])) + static_cast<long double>(running));
        }
    }
}

/// takesNext: column w takes the pixel behind the row in, as the columns before it do.
template <class T>
void tilted(const Nox8u *src, int srcStep, T *table, int step, NoxiSize roi, T offset, bool square,
            bool takesNext = false) {
    const int w = roi.width;
    for (int c = 0; c <= w + 1; ++c)
        test::rowAt(table, step, 0)[c] = test::rowAt(table, step, 1)[c] = offset;
    for (int y = 0; y < roi.height; ++y) {
        const auto q = test::rowAt(table, step, y), p = test::rowAt(table, step, y + 1),
                   n = test::rowAt(table, step, y + 2);
        const auto s = [&](int x) -> int {
            const int pixel = test::rowAt(src, srcStep, y)[x];
            return square ? pixel * pixel : pixel;
        };
        n[0] = T(p[1]);
        for (int x = 1; x <= w; ++x) {
            const bool last = x == w && !takesNext;
            if constexpr (std::is_same_v<T, Nox32s>) {
                n[x] = T(Nox32u(s(x - 1)) + (last ? 0U : Nox32u(s(x))) + Nox32u(T(p[x - 1])) + Nox32u(T(p[x + 1])) -
                         Nox32u(T(q[x])));
            } else {
                const long double left = T(p[x - 1]), right = T(p[x + 1]), top = T(q[x]);
                if (last && std::is_same_v<T, Nox32f>)
                    n[x] = T(n[x]) + T(s(x - 1) + left + right - top);
                else if (last)
                    n[x] = T(s(x - 1) + left + right - top);
                else if (std::is_same_v<T, Nox32f>)
                    n[x] = T(left - top + right + s(x - 1) + s(x));
                else
                    n[x] = T((s(x - 1) + s(x)) + left - top + right);
            }
        }
        n[w + 1] = T(p[w]);
    }
}

/// The four elements of a rectangle: the sum is plus - minus1 - minus2 + plus2.
template <class T>
struct Four {
    T plus, minus1, minus2, plus2;

    long double sum() const { return static_cast<long double>(plus) - minus1 - minus2 + plus2; }
    Nox32f wrapped() const { return Nox32f(Nox32s(Nox32u(plus) - Nox32u(minus1) - Nox32u(minus2) + Nox32u(plus2))); }
};

template <class T>
Four<T> four(const T *table, int step, int x, int y, const NoxiRect &r, bool isTilted) {
    const auto at = [&](std::ptrdiff_t row, std::ptrdiff_t column) -> T {
        return test::rowAt(table, step, row)[column];
    };
    if (!isTilted)
        return {at(y + r.y + r.height, x + r.x + r.width), at(y + r.y, x + r.x + r.width),
                at(y + r.y + r.height, x + r.x), at(y + r.y, x + r.x)};
    const std::ptrdiff_t row = y + r.x + r.y, column = x + r.x - r.y;
    return {at(row + r.width + r.height, column + r.width - r.height), at(row + r.height, column - r.height),
            at(row + r.width, column + r.width), at(row, column)};
}

template <class Real>
Real positive(Real v) {
    return v > 0 ? v : Real(0);
}

/// The member with a float result: S is Nox32f or Nox32s.
template <class S>
void deviation(const S *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst, int dstStep, NoxiSize roi,
               NoxiRect r, bool isTilted) {
    const long double area = (isTilted ? 2.0L : 1.0L) * r.width * r.height;
    const auto rounded = Nox32f(area);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const Four<S> sums = four(src, srcStep, x, y, r, isTilted);
            const Four<Nox64f> squares = four(sqr, sqrStep, x, y, r, isTilted);
            long double m, q;
            if constexpr (std::is_same_v<S, Nox32f>) {
                const long double a = isTilted ? area : rounded;
                m = sums.sum() / a;
                q = squares.sum() / a;
            } else {
                m = sums.wrapped() / rounded;
                q = squares.sum() / rounded;
            }
            test::rowAt(dst, dstStep, y)[x] = std::sqrt(Nox32f(positive(q - m * m)));
        }
}

/// The scaled member, for factors from -30 to 30.
inline void deviation(const Nox32s *src, int srcStep, const Nox32s *sqr, int sqrStep, Nox32s *dst, int dstStep,
                      NoxiSize roi, NoxiRect r, bool isTilted, int scaleFactor) {
    const auto area = Nox32f((isTilted ? 2LL : 1LL) * r.width * r.height);
    const Nox32f factor = scaleFactor >= 0 ? 1.0F / Nox32f(1 << scaleFactor) : Nox32f(1 << -scaleFactor);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const Nox32f m = four(src, srcStep, x, y, r, isTilted).wrapped() / area;
            const Nox32f q = four(sqr, sqrStep, x, y, r, isTilted).wrapped() / area;
            long double root;
            if (isTilted)
                root = std::sqrt(Nox32f(positive(static_cast<long double>(q) - static_cast<long double>(m) * m)));
            else
                root = std::sqrt(static_cast<long double>(positive(q - m * m)));
            const long double value = root * factor + 0.5L;
            test::rowAt(dst, dstStep, y)[x] =
                value < 2147483648.0L ? Nox32s(value) : std::numeric_limits<Nox32s>::min();
        }
}

} // namespace reference::integral
