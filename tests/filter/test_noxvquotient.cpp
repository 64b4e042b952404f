#include "filter/noxvquotient.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

using namespace nox;

namespace {

template <class T, class Real>
T quotient(long long sum, const Quotient<Real> &by) {
    const Real real = static_cast<Real>(sum);
    return by.falls ? truncatedQuotient<T, true>(real, by) : truncatedQuotient<T, false>(real, by);
}

/// The definition, spelled out once more.
template <class T>
T expected(long long sum, int divisor) {
    const long double low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
    const long double value = static_cast<long double>(sum) * (1.0L / divisor);
    return static_cast<T>(static_cast<long long>(value < low ? low : value > high ? high : value));
}

/// Compares quotients of sums around a multiple of the divisor.
struct Comparison {
    int divisor;
    Quotient<float> narrow = makeQuotient<float>(divisor);
    Quotient<double> wide = makeQuotient<double>(divisor);

    testing::AssertionResult around(long long multiple) const {
        for (long long sum = multiple - 1; sum <= multiple + 1; ++sum) {
            if (std::abs(sum) <= Quotient<float>::largestSum &&
                quotient<Nox16s>(sum, narrow) != expected<Nox16s>(sum, divisor))
                return testing::AssertionFailure() << "float: " << sum << " / " << divisor;
            const bool fits = std::abs(sum) / std::abs(static_cast<long long>(divisor)) < (1LL << 31);
            if (std::abs(sum) <= Quotient<double>::largestSum && fits &&
                quotient<Nox16s>(sum, wide) != expected<Nox16s>(sum, divisor))
                return testing::AssertionFailure() << "double: " << sum << " / " << divisor;
            if (std::abs(sum) < (1LL << 31) && std::abs(static_cast<long long>(divisor)) > 1 &&
                quotient<Nox32s>(sum, wide) != expected<Nox32s>(sum, divisor))
                return testing::AssertionFailure() << "32 bits: " << sum << " / " << divisor;
        }
        return testing::AssertionSuccess();
    }
    /// Quotients from first to last, of both signs.
    void quotients(long long first, long long last, long long step) const {
        for (long long q = first; q <= last; q += step) {
            ASSERT_TRUE(around(q * divisor));
            ASSERT_TRUE(around(-q * divisor));
        }
    }
};

TEST(Quotient, SmallestDivisorThatFallsIs41) {
    for (int divisor = 1; divisor < 41; ++divisor)
        ASSERT_FALSE(quotientFalls(1, divisor)) << divisor;
    for (const int divisor : {41, 45, 55, 61, 82, -41}) {
        EXPECT_TRUE(quotientFalls(1, divisor)) << divisor;
        EXPECT_TRUE(makeQuotient<float>(divisor).falls);
        EXPECT_EQ(quotient<Nox16s>(divisor, makeQuotient<float>(divisor)), 0);
        EXPECT_EQ(quotient<Nox16s>(-divisor, makeQuotient<double>(divisor)), 0);
    }
}

TEST(Quotient, EveryDivisorSmallQuotients) {
    for (int divisor = 1; divisor <= 32768; ++divisor)
        for (const int d : {divisor, -divisor})
            ASSERT_NO_FATAL_FAILURE((Comparison{d}.quotients(0, 9, 1)));
}

// A divisor falls for the powers of two and for mantissas above its own limit: quotients on both sides of the limit.
TEST(Quotient, QuotientsAroundTheLimit) {
    int partial = 0;
    for (int divisor = 1; divisor <= 32767; ++divisor) {
        const Comparison comparison = {divisor};
        if (!comparison.narrow.falls)
            continue;
        partial += comparison.wide.limit > 1.01;
        const auto near = static_cast<long long>(comparison.wide.limit * 16384);
        ASSERT_NO_FATAL_FAILURE(comparison.quotients(near - 3, near + 4, 1));
        ASSERT_NO_FATAL_FAILURE(comparison.quotients(32766, 32770, 1));
    }
    EXPECT_GT(partial, 1000);
}

TEST(Quotient, ExtremeDivisors) {
    for (const int divisor : {1, -1, 2, 65535, 65536, 1 << 24, (1 << 24) + 1, 0x7fffffff, -0x7fffffff, -0x7fffffff - 1,
                              1000003, 0x7ffffffe, 55 << 20, 41 << 25})
        ASSERT_NO_FATAL_FAILURE((Comparison{divisor}.quotients(0, 32770, 11)));
}

// Every divisor with every quotient that occurs in 16 bits of some stride, and every divisor that falls with all of
// them.
TEST(QuotientFull, EveryDivisorEveryQuotient) {
    for (int divisor = 1; divisor <= 32767; ++divisor) {
        const Comparison comparison = {divisor};
        const long long step = comparison.narrow.falls ? 37 : 211;
        ASSERT_NO_FATAL_FAILURE(comparison.quotients(divisor % step, 32770, step));
    }
}

TEST(QuotientFull, RandomSums) {
    std::mt19937 random(1);
    for (int i = 0; i < 3000000; ++i) {
        const int divisor = static_cast<int>(random() >> (random() % 31)) | 1;
        const Comparison comparison = {i % 2 ? divisor : -divisor};
        ASSERT_TRUE(comparison.around(static_cast<int>(random()) >> (random() % 20)));
        if (i % 10000 == 0) {
            ASSERT_TRUE(comparison.around((static_cast<long long>(random()) << 15) + random()));
        }
    }
}

} // namespace
