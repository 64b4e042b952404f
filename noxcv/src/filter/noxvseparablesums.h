// The rounding rules of the pipelines: each gives one output by its definition, and blocks of outputs fast.
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "ahead.h"
#include "noxvextendedsum.h"
#include "noxvseparable.h"
#include "numerics.h"

namespace nox {

/// The taps' magnitudes, added up.
inline long long weightOf(const Nox16s *taps, int tapCount) {
    long long weight = 0;
    for (int j = 0; j < tapCount; ++j)
        weight += std::abs(static_cast<int>(elements(taps)[j]));
    return weight;
}

/// The exact sum, or its low bits in unsigned arithmetic.
template <class Sum, class Window>
Sum sumOf(Window window, const Nox16s *taps, int tapCount) {
    Sum sum = 0;
    for (int j = 0; j < tapCount; ++j)
        sum += static_cast<Sum>(window[j][0] * elements(taps)[j]);
    return sum;
}

/// The sum in extended precision, j ascending.
template <class Window>
long double extendedSumOf(Window window, const Nox32f *taps, int tapCount) {
    long double sum = static_cast<long double>(window[0][0]) * elements(taps)[0];
    for (int j = 1; j < tapCount; ++j)
        sum += static_cast<long double>(window[j][0]) * elements(taps)[j];
    return sum;
}

/// Sums times the reciprocal of a divisor, clamped to T and truncated. The sums of 8-bit pixels wrap at 32 bits, those
/// of 16-bit pixels are exact.
template <class Element, class T>
class QuotientRule {
public:
    using Output = T;

    QuotientRule(const Nox16s *taps, int tapCount, int divisor)
        : taps_(taps), tapCount_(tapCount), divisor_(divisor), narrow_(makeQuotient<Nox32f>(divisor)),
          wide_(makeQuotient<Nox64f>(divisor)) {
        constexpr long long pixel = wraps ? 255 : 32768, exactDoubles = 1LL << 53;
        const long long largest = weightOf(taps, tapCount) * pixel;
        level_ = largest <= Quotient<Nox32f>::largestSum ? Level::narrow
                 : wraps || largest <= INT_MAX           ? Level::integer
                 : largest <= exactDoubles               ? Level::wide
                                                         : Level::plain;
    }

    template <class Window>
    T one(Window window) const {
        if constexpr (wraps)
            return exactQuotient<T>(static_cast<Nox32s>(sumOf<Nox32u>(window, taps_, tapCount_)), divisor_);
        return exactQuotient<T>(sumOf<long long>(window, taps_, tapCount_), divisor_);
    }

    template <class Window>
    void block(Window window, T *dst, int count) const {
        if (level_ == Level::narrow || level_ == Level::integer) {
            alignas(32) Nox32s sums[blockLength];
            sumTaps(window, taps_, tapCount_, sums, count);
            level_ == Level::narrow ? storeQuotients(sums, dst, count, narrow_)
                                    : storeQuotients(sums, dst, count, wide_);
        } else if constexpr (!wraps) {
            if (level_ == Level::plain) {
                for (int x = 0; x < count; ++x)
                    elements(dst)[x] = one(window.from(x));
                return;
            }
            alignas(32) Nox64f sums[blockLength];
            sumTaps(window, taps_, tapCount_, sums, count);
            storeQuotients(sums, dst, count, wide_);
        }
    }

private:
    static constexpr bool wraps = std::is_same_v<Element, Nox8u>;
    /// What holds the sums and their quotients: 32 bits and float, 32 bits and double, double, extended precision.
    enum class Level { narrow, integer, wide, plain };

    const Nox16s *taps_;
    int tapCount_, divisor_;
    Level level_;
    Quotient<Nox32f> narrow_;
    Quotient<Nox64f> wide_;
};

/// Sums in 32 bits, with wrap, times the reciprocal of a divisor, truncated; the low 16 bits are kept.
class LowQuotientRule {
public:
    using Output = Nox16s;

    LowQuotientRule(const Nox16s *taps, int tapCount, int divisor)
        : taps_(taps), tapCount_(tapCount), divisor_(divisor), by_(makeQuotient<Nox64f>(divisor)) {}

    template <class Window>
    Nox16s one(Window window) const {
        const auto sum = static_cast<Nox32s>(sumOf<Nox32u>(window, taps_, tapCount_));
        const long double quotient = static_cast<long double>(sum) * (1.0L / static_cast<long double>(divisor_));
        return static_cast<Nox16s>(static_cast<Nox16u>(static_cast<long long>(quotient)));
    }

    template <class Window>
    void block(Window window, Nox16s *dst, int count) const {
        alignas(32) Nox32s sums[blockLength];
        sumTaps(window, taps_, tapCount_, sums, count);
        if (std::abs(static_cast<long long>(divisor_)) == 1)
            storeLowProducts(sums, dst, count, divisor_, 0);
        else
            storeLowQuotients(sums, dst, count, by_);
    }

private:
    const Nox16s *taps_;
    int tapCount_, divisor_;
    Quotient<Nox64f> by_;
};

/// Sums in 32 bits, with wrap, times a 14-bit reciprocal of a divisor, with wrap, shifted; the low 16 bits are kept.
class LowProductRule {
public:
    using Output = Nox16s;

    LowProductRule(const Nox16s *taps, int tapCount, int divisor)
        : taps_(taps), tapCount_(tapCount), factor_((1 << shift) / divisor) {}

    template <class Window>
    Nox16s one(Window window) const {
        const Nox32u product = sumOf<Nox32u>(window, taps_, tapCount_) * static_cast<Nox32u>(factor_);
        return wrap<Nox16s>(static_cast<Nox32s>(product) >> shift);
    }

    template <class Window>
    void block(Window window, Nox16s *dst, int count) const {
        alignas(32) Nox32s sums[blockLength];
        sumTaps(window, taps_, tapCount_, sums, count);
        storeLowProducts(sums, dst, count, factor_, shift);
    }

private:
    static constexpr int shift = 14;
    const Nox16s *taps_;
    int tapCount_, factor_;
};

/// The power of two that all taps are multiples of, and their magnitudes' sum; infinite when a tap is not finite.
struct TapSpread {
    double quantum, weight;

    static TapSpread of(const Nox32f *taps, int tapCount) {
        const Spread spread = spreadOf(taps, tapCount);
        double weight = 0;
        for (int j = 0; j < tapCount; ++j)
            weight += std::fabs(static_cast<double>(elements(taps)[j]));
        // A million taps and the rounding of their sum.
        return {spread.quantum, weight * (1 + 0x1p-30)};
    }
};

/// Pixels of 16 bits, single-precision taps: sums in extended precision, clamped and truncated.
class TruncatedRule {
public:
    using Output = Nox16s;

    TruncatedRule(const Nox32f *taps, int tapCount) : taps_(taps), tapCount_(tapCount) {
        const TapSpread spread = TapSpread::of(taps, tapCount);
        const bool exact = exactInDouble({32768, 1}, spread.weight, spread.quantum);
        margin_ = exact ? 0 : (tapCount + 1) * 0x1p-53 * 32768 * spread.weight;
    }

    template <class Window>
    Nox16s one(Window window) const {
        return truncateSaturated<Nox16s>(extendedSumOf(window, taps_, tapCount_));
    }

    template <class Window>
    void block(Window window, Nox16s *dst, int count) const {
        alignas(32) Nox64f sums[blockLength];
        sumTaps(window, taps_, tapCount_, sums, count);
        if (storeTruncated(sums, dst, count, margin_))
            for (int x = 0; x < count; ++x)
                if (truncatesDoubtfully(sums[x], margin_))
                    elements(dst)[x] = one(window.from(x));
    }

private:
    const Nox32f *taps_;
    int tapCount_;
    Nox64f margin_; ///< bounds the error of a sum; 0 when all sums are exact
};

/// Outputs of one line: blocks, or one by one where a block would be too short for the kernels. With each block it asks
/// for as much of what comes next.
template <class Rule, class Window, class Next, class... More>
void filterLine(const Rule &rule, Window window, typename Rule::Output *dst, int count, Next next,
                const More &...more) {
    for (int x = 0; x < count; x += blockLength) {
        const int length = std::min(blockLength, count - x);
        next.askAll(length);
        if (length >= vectorLength)
            rule.block(window.from(x), dst + x, length, more...);
        else
            for (int i = x; i < count; ++i)
                elements(dst)[i] = rule.one(window.from(i));
    }
}

} // namespace nox
