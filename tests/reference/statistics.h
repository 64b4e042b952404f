// Plain norms, means and extrema.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>

#include "noxcore.h"
#include "noxtypes.h"
#include "support/element.h"

namespace reference::statistics {

/// One channel of an image.
template <class T>
struct Channel {
    const T *data;
    int step, channels, channel;

    T operator()(int x, int y) const { return test::rowAt(data, step, y)[x * channels + channel]; }
};

/// A mask; without data every pixel is on.
struct Mask {
    const Nox8u *data;
    int step;

    bool operator()(int x, int y) const { return data == nullptr || data[std::ptrdiff_t(y) * step + x] != 0; }
};

enum class Form { Norm, NormDiff, NormRel };
enum class Norm { Inf, L1, L2 };

/// Sum of term(x, y) over the pixels under the mask of rows `first` to `last` - 1: exact for integers; for floats four
/// single-precision lanes a row, widened at its end.
template <class T, class Term>
auto sumOf(int width, int first, int last, Mask mask, Term term) {
    if constexpr (std::is_floating_point_v<T>) {
        long double total = 0;
        for (int y = first; y < last; ++y) {
            float lanes[4] = {};
            for (int x = 0; x < width; ++x)
                if (mask(x, y))
                    lanes[x % 4] += term(x, y);
            total += (static_cast<long double>(lanes[0]) + lanes[1]) + (static_cast<long double>(lanes[2]) + lanes[3]);
        }
        return static_cast<double>(total);
    } else {
        long long total = 0;
        for (int y = first; y < last; ++y)
            for (int x = 0; x < width; ++x)
                if (mask(x, y))
                    total += term(x, y);
        return total;
    }
}

/// The norm of v(x, y) before any root. Each slice of rows is summed alone; the sums are joined in order.
template <class T, class Value>
auto measure(Norm norm, NoxiSize size, Mask mask, int slices, Value v) {
    using Sum = std::conditional_t<std::is_floating_point_v<T>, double, long long>;
    using Wide = std::conditional_t<std::is_floating_point_v<T>, float, long long>;
    Sum total = 0;
    for (int i = 0; i < slices; ++i) {
        const int share = size.height / slices, first = i * share, last = i == slices - 1 ? size.height : first + share;
        if (norm == Norm::Inf) {
            for (int y = first; y < last; ++y)
                for (int x = 0; x < size.width; ++x)
                    if (mask(x, y) && Sum(std::abs(v(x, y))) > total)
                        total = std::abs(v(x, y));
        } else if (norm == Norm::L1) {
            const Sum sum =
                sumOf<T>(size.width, first, last, mask, [&](int x, int y) { return Wide(std::abs(v(x, y))); });
            total += sizeof(T) == 1 ? Sum(std::int32_t(std::uint32_t((long long)(sum)))) : sum;
        } else {
            total += sumOf<T>(size.width, first, last, mask, [&](int x, int y) { return Wide(v(x, y)) * v(x, y); });
        }
    }
    return total;
}

template <class T>
NoxStatus norm(Form form, Norm norm, Channel<T> a, Channel<T> b, Mask mask, NoxiSize size, int slices, double *value) {
    using Wide = std::conditional_t<std::is_floating_point_v<T>, float, int>;
    const auto numerator = measure<T>(norm, size, mask, slices, [&](int x, int y) {
        return form == Form::Norm ? Wide(a(x, y)) : Wide(a(x, y)) - Wide(b(x, y));
    });
    if (form != Form::NormRel) {
        *value = double(norm == Norm::L2 ? std::sqrt((long double)(numerator)) : (long double)(numerator));
        return noxStsNoError;
    }
    const auto denominator = measure<T>(norm, size, mask, slices, [&](int x, int y) { return Wide(b(x, y)); });
    if (denominator == 0) {
        *value = numerator == 0  ? noxConstantOfNAN_64f
                 : numerator > 0 ? noxConstantOfINF_64f
                                 : noxConstantOfINF_NEG_64f;
        return noxStsDivideByZero;
    }
    const long double ratio = (long double)(numerator) / (long double)(denominator);
    *value = double(norm == Norm::L2 ? std::sqrt(ratio) : ratio);
    return noxStsNoError;
}

template <class T, class Term>
auto slicedSum(NoxiSize size, Mask mask, int slices, Term term) {
    decltype(sumOf<T>(0, 0, 0, mask, term)) total = 0;
    for (int i = 0; i < slices; ++i) {
        const int share = size.height / slices, first = i * share;
        total += sumOf<T>(size.width, first, i == slices - 1 ? size.height : first + share, mask, term);
    }
    return total;
}

template <class T>
void meanAndDeviation(Channel<T> a, Mask mask, NoxiSize size, int slices, double *mean, double *deviation) {
    using Wide = std::conditional_t<std::is_floating_point_v<T>, float, long long>;
    long long count = 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            count += mask(x, y);
    *mean = *deviation = 0;
    if (count == 0)
        return;
    const auto sum = slicedSum<T>(size, mask, slices, [&](int x, int y) { return Wide(a(x, y)); });
    const auto squares = slicedSum<T>(size, mask, slices, [&](int x, int y) { return Wide(a(x, y)) * a(x, y); });
    const long double m = (long double)(sum) / count, q = (long double)(squares) / count;
    const long double variance = std::fabs(q - m * m);
    *mean = double(m);
    *deviation = double(std::sqrt(variance));
    if (std::is_floating_point_v<T> && variance < 0.05L * (m * m)) {
        const auto middle = Wide(m);
        const auto centred = slicedSum<T>(
            size, mask, slices, [&](int x, int y) { return (Wide(a(x, y)) - middle) * (Wide(a(x, y)) - middle); });
        *deviation = double(std::sqrt((long double)(centred) / count));
    }
}

struct Extrema {
    float low, high;
    NoxiPoint lowAt, highAt;
};

template <class T>
Extrema extrema(Channel<T> a, Mask mask, NoxiSize size) {
    T low = std::numeric_limits<T>::max(), high = std::numeric_limits<T>::lowest();
    bool anyOn = false;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            if (mask(x, y)) {
                anyOn = true;
                low = a(x, y) < low ? a(x, y) : low;
                high = a(x, y) > high ? a(x, y) : high;
            }
    Extrema result = {anyOn ? float(low) : 0, anyOn ? float(high) : 0, {0, 0}, {0, 0}};
    for (int y = size.height - 1; y >= 0; --y)
        for (int x = size.width - 1; x >= 0; --x)
            if (mask(x, y)) {
                if (a(x, y) == low)
                    result.lowAt = {x, y}, result.low = float(a(x, y));
                if (a(x, y) == high)
                    result.highAt = {x, y}, result.high = float(a(x, y));
            }
    return result;
}

} // namespace reference::statistics
