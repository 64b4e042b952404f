// Plain row and column filters: a line with its border written out, sums and quotients in 80 bits.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::separable {

/// The index that stands for a position, found by walking back and forth; -1 for the constant border.
inline int walk(int position, int length, int borderType) {
    while (position < 0 || position >= length)
        switch (borderType) {
        case noxBorderReplicate:
            position = position < 0 ? 0 : length - 1;
            break;
        case noxBorderWrap:
            position += position < 0 ? length : -length;
            break;
        case noxBorderMirror:
            if (length == 1)
                position = 0;
            else
                position = position < 0 ? -position : 2 * (length - 1) - position;
            break;
        case noxBorderMirrorEdge:
            position = position < 0 ? -position - 1 : 2 * length - 1 - position;
            break;
        default:
            return -1;
        }
    return position;
}

template <class T>
test::Run<T> rowOf(T *base, int step, int y) {
    return test::rowAt(base, step, y);
}

/// A row with `before` and `after` pixels more at its ends.
template <class T>
void extendRow(std::type_identity_t<test::Run<const T>> row, int width, int channels, int before, int after,
               int borderType, const T *value, std::vector<T> &line) {
    line.resize(std::size_t(before + width + after) * channels);
    T *to = line.data();
    for (int x = -before; x < width + after; ++x) {
        const int index = walk(x, width, borderType);
        for (int c = 0; c < channels; ++c)
            *to++ = index < 0 ? T(test::Run<const T>(value)[c]) : row[index * channels + c];
    }
}

/// Sum * (1 / divisor), clamped and truncated.
template <class T>
struct ClampedQuotient {
    long double reciprocal, low, high;

    explicit ClampedQuotient(int divisor)
        : reciprocal(1.0L / divisor), low(std::numeric_limits<T>::min()), high(std::numeric_limits<T>::max()) {}
    T operator()(long double sum) const {
        const long double value = sum * reciprocal;
        return static_cast<T>(static_cast<int>(value < low ? low : value > high ? high : value));
    }
};

/// The low 16 bits of the truncated quotient.
struct LowQuotient {
    long double reciprocal;

    explicit LowQuotient(int divisor) : reciprocal(1.0L / divisor) {}
    Nox16s operator()(int sum) const {
        return static_cast<Nox16s>(static_cast<std::uint16_t>(static_cast<long long>(sum * reciprocal)));
    }
};

/// The low 16 bits of sum * (16384 / divisor) / 2^14.
struct LowProduct {
    Nox16s factor;

    explicit LowProduct(int divisor) : factor(static_cast<Nox16s>(16384 / divisor)) {}
    Nox16s operator()(int sum) const {
        const std::uint32_t product = static_cast<std::uint32_t>(sum) * static_cast<std::uint32_t>(factor);
        return static_cast<Nox16s>(static_cast<std::uint16_t>(static_cast<std::int32_t>(product) >> 14));
    }
};

struct Rounded {
    Nox32f operator()(long double sum) const { return static_cast<Nox32f>(sum); }
};

/// A sum that wraps at 32 bits, and one in extended precision: both start with the first product.
struct WrappingSum {
    std::uint32_t value = 0;
    void add(int pixel, int tap) { value += static_cast<std::uint32_t>(pixel) * static_cast<std::uint32_t>(tap); }
    int result() const { return static_cast<int>(value); }
};
struct ExtendedSum {
    long double value = 0;
    template <class T, class Tap>
    void add(T pixel, Tap tap) {
        value += static_cast<long double>(pixel) * static_cast<long double>(tap);
    }
    long double result() const { return value; }
};

template <class Sum, class T, class Out, class Tap, class Store>
void filterRows(const T *src, int srcStep, Out *const *rows, NoxiSize roi, int channels, const Tap *kernel,
                int kernelSize, int anchor, int borderType, const T *value, Store store) {
    std::vector<T> line;
    for (int y = 0; y < roi.height; ++y) {
        extendRow(rowOf(src, srcStep, y), roi.width, channels, anchor, kernelSize - 1 - anchor, borderType, value,
                  line);
        for (int i = 0; i < roi.width * channels; ++i) {
            Sum sum;
            for (int j = 0; j < kernelSize; ++j)
                sum.add(line[i + j * channels], test::Run<const Tap>(kernel)[j]);
            test::Run<Out>{rows[y]}[i] = store(sum.result());
        }
    }
}

template <class Sum, class T, class Out, class Tap, class Store>
void filterColumns(const T *const *rows, Out *dst, int dstStep, int width, int height, const Tap *kernel,
                   int kernelSize, Store store) {
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width; ++i) {
            Sum sum;
            for (int j = 0; j < kernelSize; ++j)
                sum.add(test::Run<const T>(rows[y + j])[i], test::Run<const Tap>(kernel)[j]);
            rowOf(dst, dstStep, y)[i] = store(sum.result());
        }
}

/// Taps times the reciprocal of a divisor, rounded to single.
inline std::vector<Nox32f> foldedTaps(const Nox16s *kernel, int kernelSize, int divisor) {
    std::vector<Nox32f> taps;
    for (int j = 0; j < kernelSize; ++j)
        taps.push_back(static_cast<Nox32f>(kernel[j] * (1.0L / divisor)));
    return taps;
}

} // namespace reference::separable
