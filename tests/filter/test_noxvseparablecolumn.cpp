#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "noxcv.h"
#include "reference/separable.h"
#include "support/image.h"
#include "support/rowset.h"
#include "support/threads.h"

using test::Buffer;
using test::Image;

namespace {

using Wrapping = reference::separable::WrappingSum;
using Extended = reference::separable::ExtendedSum;

// Each member: types, channels, the library's calls and the reference's arithmetic.
template <class OutType, class Store>
struct Divided {
    using Pixel = Nox16s;
    using Out = OutType;
    using Tap = Nox16s;
    using Sum = Extended;
    static constexpr int perTap = 4, rest = 32;
    static constexpr bool divides = true;
    static Store store(int divisor) { return Store(divisor); }
};
template <class Out>
using Clamped = Divided<Out, reference::separable::ClampedQuotient<Out>>;
struct Low : Divided<Nox16s, reference::separable::LowQuotient> {
    using Sum = Wrapping;
    static constexpr int perTap = 0;
};
struct Single {
    using Pixel = Nox32f;
    using Out = Nox32f;
    using Tap = Nox32f;
    using Sum = Extended;
    static constexpr int perTap = 0, rest = 0;
    static constexpr bool divides = false;
    static reference::separable::Rounded store(int) { return {}; }
};

#define MEMBER(NAME, BASE, TAG, CHANNELS)                                                                              \
    struct NAME : BASE {                                                                                               \
        static constexpr int channels = CHANNELS;                                                                      \
        static constexpr auto call = noxiFilterColumnPipeline_##TAG;                                                   \
        static constexpr auto size = noxiFilterColumnPipelineGetBufferSize_##TAG;                                      \
    };
MEMBER(Column16sC1, Clamped<Nox16s>, 16s_C1R, 1)
MEMBER(Column16sC3, Clamped<Nox16s>, 16s_C3R, 3)
MEMBER(Column8uC1, Clamped<Nox8u>, 16s8u_C1R, 1)
MEMBER(Column8uC3, Clamped<Nox8u>, 16s8u_C3R, 3)
MEMBER(Column8sC1, Clamped<Nox8s>, 16s8s_C1R, 1)
MEMBER(Column8sC3, Clamped<Nox8s>, 16s8s_C3R, 3)
MEMBER(ColumnLowC1, Low, Low_16s_C1R, 1)
MEMBER(ColumnLowC3, Low, Low_16s_C3R, 3)
MEMBER(Column32fC1, Single, 32f_C1R, 1)
MEMBER(Column32fC3, Single, 32f_C3R, 3)
#undef MEMBER

using Members = ::testing::Types<Column16sC1, Column16sC3, Column8uC1, Column8uC3, Column8sC1, Column8sC3, ColumnLowC1,
                                 ColumnLowC3, Column32fC1, Column32fC3>;
template <class TypeParam>
class ColumnPipeline : public ::testing::Test {};
TYPED_TEST_SUITE(ColumnPipeline, Members);

// Typed suites have their own form of name, so the long comparisons are plain tests over the same members.
template <class... M, class Body>
void forMembers(::testing::Types<M...>, const Body &body) {
    (body.template operator()<M>(), ...);
}

template <class M>
NoxStatus invoke(const typename M::Pixel **rows, typename M::Out *dst, int step, NoxiSize roi,
                 const typename M::Tap *kernel, int kernelSize, int divisor, Nox8u *buffer) {
    if constexpr (M::divides)
        return M::call(rows, dst, step, roi, kernel, kernelSize, divisor, buffer);
    else
        return M::call(rows, dst, step, roi, kernel, kernelSize, buffer);
}

template <class M>
int queriedSize(NoxiSize roi, int kernelSize) {
    int size = 0;
    EXPECT_EQ(M::size(roi, kernelSize, &size), noxStsNoError);
    return size;
}

/// Rows of an image, in an order of their own.
template <class T>
std::vector<const T *> constRows(const Image<T> &image, int stride) {
    const auto rows = test::shuffledRows(image, stride);
    return {rows.begin(), rows.end()};
}

/// The row pointers end at memory that is not there: none behind them is read.
template <class M>
testing::AssertionResult agrees(const Image<typename M::Pixel> &src, const std::vector<typename M::Tap> &kernel,
                                int divisor, int padding = 0, int stride = 1) {
    const int kernelSize = int(kernel.size());
    const NoxiSize roi = {src.width(), src.height() - kernelSize + 1};
    Image<typename M::Out> actual(roi.width, roi.height, M::channels, padding), expected(actual);
    const auto rows = constRows(src, stride);
    const Buffer pointers(rows.size() * sizeof(rows[0]));
    std::memcpy(pointers.data(), rows.data(), pointers.size());
    const Buffer buffer(std::size_t(std::max(1, queriedSize<M>(roi, kernelSize))));
    const NoxStatus status = invoke<M>(reinterpret_cast<const typename M::Pixel **>(pointers.data()), actual.data(),
                                       actual.step(), roi, kernel.data(), kernelSize, divisor, buffer.data());
    if (status != noxStsNoError)
        return testing::AssertionFailure() << "status " << status;
    reference::separable::filterColumns<typename M::Sum>(rows.data(), expected.data(), expected.step(),
                                                         roi.width * M::channels, roi.height, kernel.data(), kernelSize,
                                                         M::store(divisor));
    return test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected))
           << " kernelSize " << kernelSize << " divisor " << divisor;
}

template <class Tap>
std::vector<Tap> someTaps(int count, test::Random &random, int kind) {
    std::vector<Tap> taps(static_cast<std::size_t>(count));
    for (auto &tap : taps)
        if constexpr (std::is_floating_point_v<Tap>)
            tap = kind == 0 ? Tap(int(random() % 9) - 4) : test::randomElement<Tap>(random) / 300;
        else
            tap = static_cast<Tap>(kind == 0   ? int(random() % 9) - 4
                                   : kind == 1 ? int(random() % 300) - 150
                                               : int(random()));
    return taps;
}

int someDivisor(test::Random &random) {
    static const int divisors[] = {1, -1, 2, 3, 9, 16, 41, -41, 45, 55, 61, 82, 256, 1000, 16384, 32767, -7};
    return divisors[random() % std::size(divisors)];
}

template <class M>
void compareSizes(const std::vector<NoxiSize> &sizes, const std::vector<int> &kernelSizes) {
    test::Random random(5);
    int kind = 0;
    for (const NoxiSize size : sizes)
        for (const int kernelSize : kernelSizes) {
            Image<typename M::Pixel> src(size.width, size.height + kernelSize - 1, M::channels,
                                         int(sizeof(typename M::Pixel)));
            test::randomize(src, random);
            for (int i = 0; i < 3; ++i)
                ASSERT_TRUE(agrees<M>(src, someTaps<typename M::Tap>(kernelSize, random, ++kind % 3),
                                      someDivisor(random), i * int(sizeof(typename M::Out)), i));
        }
}

TYPED_TEST(ColumnPipeline, StandardSizes) { compareSizes<TypeParam>(test::testSizes(), {1, 2, 3, 5, 7, 8}); }
/// Such images ask for rows ahead, where one thread has the whole of them.
template <class M>
void compareLarge(const std::vector<int> &kernelSizes) {
    const test::ThreadCount one(1);
    constexpr int width = 1133, bytes = width * M::channels * int(sizeof(typename M::Pixel) + sizeof(typename M::Out));
    compareSizes<M>({{width, 2 + (4 << 20) / bytes}}, kernelSizes);
}

TYPED_TEST(ColumnPipeline, ImagesThatLeaveTheCaches) { compareLarge<TypeParam>({3}); }
TEST(ColumnPipelineFull, ImagesThatLeaveTheCaches) {
    forMembers(Members(), []<class M>() { ASSERT_NO_FATAL_FAILURE(compareLarge<M>({5, 66})); });
}

template <class M>
void compareManyKernels() {
    compareSizes<M>(test::testSizes(), {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 15, 40, 99});
    compareSizes<M>({{1025, 70}, {2051, 130}}, {1, 3, 5, 15});
}

template <class M>
void compareEveryDivisor() {
    test::Random random(6);
    Image<typename M::Pixel> src(60, 5, M::channels);
    for (int divisor = 1; divisor <= (M::divides ? 32767 : 300); ++divisor) {
        src.generate([&](int, int, int) { return int(random() % 512) - 200; });
        ASSERT_TRUE(agrees<M>(src, someTaps<typename M::Tap>(1 + divisor % 5, random, divisor % 3),
                              divisor % 2 ? divisor : -divisor));
    }
}

TEST(ColumnPipelineFull, ManyKernels) {
    forMembers(Members(), []<class M>() { ASSERT_NO_FATAL_FAILURE(compareManyKernels<M>()); });
}
TEST(ColumnPipelineFull, EveryDivisor) {
    forMembers(Members(), []<class M>() { ASSERT_NO_FATAL_FAILURE(compareEveryDivisor<M>()); });
}

TYPED_TEST(ColumnPipeline, ExactMultiplesOfDivisors) {
    using M = TypeParam;
    Image<typename M::Pixel> src(600, 1, M::channels);
    src.generate([](int x, int, int) { return x - 300; });
    for (const int divisor : {41, 45, 55, 61, 82, 83, 97, 107, 3, 9, 8191})
        for (const int d : {divisor, -divisor})
            ASSERT_TRUE(agrees<M>(src, {static_cast<typename M::Tap>(divisor)}, d));
}

TYPED_TEST(ColumnPipeline, SumsOfEveryMagnitude) {
    using M = TypeParam;
    if constexpr (M::divides) {
        test::Random random(8);
        for (int shift = 0; shift < 16; ++shift)
            for (const int size : {3, 5, 8, 33}) {
                Image<Nox16s> src(90, size + 1, M::channels);
                test::randomize(src, random);
                std::vector<Nox16s> taps;
                for (int j = 0; j < size; ++j)
                    taps.push_back(static_cast<Nox16s>(j % 4 == 3 ? -32768 >> shift : int(random()) >> shift));
                for (const int divisor : {1, -3, 41, 1000, 32767, 1 << 20, 0x7fffffff, -0x7fffffff - 1})
                    ASSERT_TRUE(agrees<M>(src, taps, divisor));
            }
    }
}

// More taps than a double can add up exactly: one row under all of them.
TYPED_TEST(ColumnPipeline, MillionsOfTaps) {
    using M = TypeParam;
    if constexpr (M::divides && M::channels == 1) {
        const int kernelSize = (1 << 23) + 5;
        std::vector<Nox16s> taps(kernelSize, -32768);
        taps[1] = 32767;
        for (int j = 0; j < kernelSize / 2; ++j)
            taps[kernelSize - 1 - j] = 32767;
        const Nox16s pixels[9] = {-32768, 32767, 1, 0, -1, 5, 3, -32768, 77};
        std::vector<const Nox16s *> rows(kernelSize, pixels);
        const Buffer buffer(64);
        typename M::Out actual[9], expected[9];
        for (const int divisor : {1 << 30, 41, -1}) {
            ASSERT_EQ(
                M::call(rows.data(), actual, sizeof actual, {9, 1}, taps.data(), kernelSize, divisor, buffer.data()),
                noxStsNoError);
            reference::separable::filterColumns<typename M::Sum>(rows.data(), expected, sizeof expected, 9, 1,
                                                                 taps.data(), kernelSize, M::store(divisor));
            for (int i = 0; i < 9; ++i)
                ASSERT_EQ(actual[i], expected[i]) << i << " divisor " << divisor;
        }
    }
}

// Single precision: values whose sums are not exact in double.
Nox32f awkwardElement(test::Random &random, int kind) {
    const auto scaled = [&](int low, int range) {
        const Nox32f value = std::ldexp(Nox32f(random() % (1U << 24)), low + int(random() % range));
        return random() % 2 ? value : -value;
    };
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity();
    switch (kind) {
    case 0:
        return scaled(-60, 60);
    case 1: // midpoints and their neighbours
        return std::ldexp(Nox32f(random() % 3) - 1, int(random() % 56));
    case 2:
        return scaled(-149, 253);
    case 3:
        return random() % 8 ? scaled(-24, 30) : random() % 2 ? infinity : random() % 2 ? -infinity : NAN;
    case 4:
        return Nox32f(int(random() % 512) - 256);
    case 5: // cancellation
        return random() % 3 ? 16777215.0F * Nox32f(int(random() % 3) - 1) : scaled(-40, 10);
    case 6:
        return scaled(-149, 3);
    default:
        return scaled(-30, 8);
    }
}

/// Down the columns of an image and, since rows share the arithmetic, along its first row.
void compareBothWays(const Image<Nox32f> &src, const std::vector<Nox32f> &taps) {
    ASSERT_TRUE(agrees<Column32fC1>(src, taps, 1));
    const int kernelSize = int(taps.size());
    Nox32f *out[1];
    Image<Nox32f> actual(src.width(), 1), expected(src.width(), 1);
    out[0] = actual.row(0);
    Nox32f *expectedOut[1] = {expected.row(0)};
    const NoxiSize line = {src.width(), 1};
    int size = 0;
    noxiFilterRowBorderPipelineGetBufferSize_32f_C1R(line, kernelSize, &size);
    const Buffer buffer{std::size_t(size)};
    noxiFilterRowBorderPipeline_32f_C1R(src.data(), src.step(), out, line, taps.data(), kernelSize, kernelSize / 2, 3,
                                        0, buffer.data());
    const Nox32f zero = 0;
    reference::separable::filterRows<Extended>(src.data(), src.step(), expectedOut, line, 1, taps.data(), kernelSize,
                                               kernelSize / 2, 3, &zero, reference::separable::Rounded());
    ASSERT_TRUE(test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected)));
}

void compareAwkward(int rounds) {
    test::Random random(3);
    for (int round = 0; round < rounds; ++round)
        for (int kind = 0; kind < 8; ++kind)
            for (int tapKind = 0; tapKind < 8; ++tapKind) {
                const int kernelSize = 1 + int(random() % 9);
                Image<Nox32f> src(40 + round % 30, kernelSize + 3);
                src.generate([&](int, int, int) { return awkwardElement(random, kind); });
                std::vector<Nox32f> taps;
                for (int j = 0; j < kernelSize; ++j)
                    taps.push_back(awkwardElement(random, tapKind));
                ASSERT_NO_FATAL_FAILURE(compareBothWays(src, taps)) << kind << " " << tapKind;
            }
}

/// The same, or the opposite, from the kernel's other end.
std::vector<Nox32f> mirrored(std::vector<Nox32f> taps, bool opposite) {
    const std::size_t count = taps.size();
    for (std::size_t j = 0; j < count / 2; ++j)
        taps[count - 1 - j] = opposite ? -taps[j] : taps[j];
    if (opposite && count % 2 != 0)
        taps[count / 2] = 0;
    return taps;
}

void compareMirrored(int rounds) {
    test::Random random(31);
    for (int round = 0; round < rounds; ++round)
        for (int kind = 0; kind < 8; ++kind)
            for (int tapKind = 0; tapKind < 8; ++tapKind) {
                const int kernelSize = 1 + int(random() % 34);
                Image<Nox32f> src(40 + int(random() % 300), kernelSize + 3);
                src.generate([&](int, int, int) { return awkwardElement(random, kind); });
                std::vector<Nox32f> taps;
                for (int j = 0; j < kernelSize; ++j)
                    taps.push_back(awkwardElement(random, tapKind));
                ASSERT_NO_FATAL_FAILURE(compareBothWays(src, mirrored(taps, round % 2 != 0)))
                    << kind << " " << tapKind << " taps " << kernelSize;
            }
}

TEST(ColumnPipeline32f, TapsFromBothEnds) { compareMirrored(6); }
TEST(ColumnPipeline32fFull, TapsFromBothEnds) { compareMirrored(60); }

/// Zeros of both signs: a sum is -0 when all of its products are.
TEST(ColumnPipeline32f, TapsFromBothEndsKeepTheSignOfZero) {
    test::Random random(32);
    for (int round = 0; round < 60; ++round) {
        const int kernelSize = 2 + round % 6;
        Image<Nox32f> src(70, kernelSize + 4), actual(70, 5);
        const auto levels = 2U + random() % 2;
        src.generate([&](int, int, int) {
            const Nox32f value = random() % levels < 2 ? 0.0F : 100.0F;
            return random() % 8 != 0 ? -value : value;
        });
        std::vector<Nox32f> taps;
        for (int j = 0; j < kernelSize; ++j) // too fine for single precision
            taps.push_back((random() % 4 != 0 ? 0.1F : -0.1F) + std::ldexp(Nox32f(random() % 4096), -20));
        taps = mirrored(taps, round % 2 != 0);
        auto rows = constRows(src, 1);
        const Buffer buffer(4096);
        noxiFilterColumnPipeline_32f_C1R(rows.data(), actual.data(), actual.step(), {70, 5}, taps.data(), kernelSize,
                                         buffer.data());
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 70; ++x) {
                long double sum = static_cast<long double>(rows[y][x]) * taps[0];
                for (int j = 1; j < kernelSize; ++j)
                    sum += static_cast<long double>(rows[y + j][x]) * taps[j];
                ASSERT_EQ(Nox32f(sum), actual.at(x, y));
                ASSERT_EQ(std::signbit(sum), std::signbit(Nox32f(actual.at(x, y)))) << "taps " << kernelSize;
            }
    }
}

/// What is found of a row is tried on the next: rows of finer steps, larger, or without a value come among others.
TEST(ColumnPipeline32f, RowsThatAreNotLikeThoseBefore) {
    test::Random random(33);
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity();
    for (int first = 0; first < 3; ++first)
        for (const Nox32f other : {0.5F, 0x1p-20F, 256.5F, 3e9F, 0x1.000002p9F, 1e30F, -infinity, NAN, -1e-40F})
            for (const int column : {0, 31, 60}) {
                Image<Nox32f> src(61, 30);
                const int row = 3 + int(random() % 20);
                src.generate([&](int x, int y, int) {
                    if (y == row && x == column)
                        return other;
                    return first == 0   ? Nox32f(random() % 256)
                           : first == 1 ? std::ldexp(Nox32f(random() % (1U << 24)), -16)
                                        : std::ldexp(Nox32f(random() % (1U << 20)), -10);
                });
                for (const auto &taps : {std::vector<Nox32f>{1, 4, 6, 4, 1}, {0.1F, 0.3F, 0.1F}, {-1, 2, 5}})
                    ASSERT_TRUE(agrees<Column32fC1>(src, taps, 1)) << first << " " << other << " row " << row;
            }
}

TEST(ColumnPipeline32f, AwkwardValues) { compareAwkward(8); }
TEST(ColumnPipeline32fFull, AwkwardValues) { compareAwkward(400); }

/// A single row is awkward, and all others are small integers: each row of the first window, and behind it.
TEST(ColumnPipeline32f, OneAwkwardRow) {
    test::Random random(4);
    for (const int kernelSize : {1, 2, 3, 4, 5, 7, 11})
        for (int awkward = 0; awkward < kernelSize + 6; ++awkward)
            for (const bool pixel : {false, true}) {
                Image<Nox32f> src(61, kernelSize + 6);
                const int column = int(random() % 61);
                src.generate([&](int x, int y, int) {
                    const bool here = y == awkward && (!pixel || x == column);
                    return here ? test::randomElement<Nox32f>(random) : Nox32f(int(random() % 512) - 256);
                });
                std::vector<Nox32f> taps;
                for (int j = 0; j < kernelSize; ++j)
                    taps.push_back(Nox32f(int(random() % 15) - 7));
                ASSERT_TRUE(agrees<Column32fC1>(src, taps, 1)) << kernelSize << " row " << awkward;
            }
}

// 2^24 + 1 is the midpoint of two floats; what is added decides, however small, as long as 64 bits hold it.
TEST(ColumnPipeline32f, MidpointsAreDecidedBeyondDouble) {
    for (int exponent = -10; exponent >= -40; --exponent) {
        Image<Nox32f> src(300, 3);
        src.generate([&](int x, int y, int) {
            return y == 0 ? 16777216.0F : y == 1 ? 1.0F : std::ldexp(Nox32f(x % 3 - 1), exponent);
        });
        ASSERT_TRUE(agrees<Column32fC1>(src, {1, 1, 1}, 1)) << exponent;
        const Nox32f beyond = exponent >= -39 ? 16777218.0F : 16777216.0F;
        Image<Nox32f> dst(300, 1);
        auto rows = constRows(src, 1);
        const Buffer buffer(4096);
        const Nox32f taps[] = {1, 1, 1};
        noxiFilterColumnPipeline_32f_C1R(rows.data(), dst.data(), dst.step(), {300, 1}, taps, 3, buffer.data());
        ASSERT_EQ(dst.at(2, 0), beyond) << exponent;
        ASSERT_EQ(dst.at(0, 0), 16777216.0F) << exponent;
    }
}

// 2^24 + 1 + 2^-29 has one bit too many for a double, which rounds it to the midpoint.
TEST(ColumnPipeline32f, OneBitBeyondDouble) {
    const Nox32f column[] = {16777216.0F, 1.0F, -0x1p-28F, 0x3p-29F};
    Image<Nox32f> src(40, 4), dst(40, 1);
    src.generate([&](int, int y, int) { return column[y]; });
    auto rows = constRows(src, 1);
    const Nox32f taps[] = {1, 1, 1, 1};
    const Buffer buffer(256);
    noxiFilterColumnPipeline_32f_C1R(rows.data(), dst.data(), dst.step(), {40, 1}, taps, 4, buffer.data());
    EXPECT_EQ(dst.at(0, 0), 16777218.0F);
    EXPECT_EQ(dst.at(20, 0), 16777218.0F);
}

TYPED_TEST(ColumnPipeline, SameResultForEveryThreadCount) {
    using M = TypeParam;
    test::Random random(9);
    const NoxiSize size = {1300, 1037};
    for (const int kernelSize : {3, 7}) {
        Image<typename M::Pixel> src(size.width, size.height + kernelSize - 1, M::channels);
        test::randomize(src, random);
        const auto taps = someTaps<typename M::Tap>(kernelSize, random, 0);
        auto rows = constRows(src, 1);
        Image<typename M::Out> expected(size.width, size.height, M::channels);
        const Buffer buffer(1 << 20);
        {
            const test::ThreadCount one(1);
            invoke<M>(rows.data(), expected.data(), expected.step(), size, taps.data(), kernelSize, 5, buffer.data());
        }
        for (const int threads : test::threadCounts()) {
            const test::ThreadCount scope(threads);
            const auto run = [&] {
                Image<typename M::Out> actual(size.width, size.height, M::channels);
                ASSERT_EQ(invoke<M>(rows.data(), actual.data(), actual.step(), size, taps.data(), kernelSize, 5,
                                    buffer.data()),
                          noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected)) << threads;
            };
            run();
            if (threads == 3)
                test::insideParallelRegion(run);
        }
    }
}

TYPED_TEST(ColumnPipeline, BufferSizes) {
    using M = TypeParam;
    for (const int threads : {1, 3}) {
        const test::ThreadCount scope(threads);
        for (const int kernelSize : {1, 3, 8})
            EXPECT_EQ(queriedSize<M>({10, 33}, kernelSize), threads * 32 +
                                                                threads * (33 + kernelSize) * int(sizeof(void *)) +
                                                                threads * (M::perTap * kernelSize + M::rest));
    }
    int size = 77;
    EXPECT_EQ(M::size({0, 33}, 0, nullptr), noxStsNullPointer);
    EXPECT_EQ(M::size({0, 33}, 3, &size), noxStsBadSize);
    EXPECT_EQ(M::size({33, 0}, 3, &size), noxStsBadSize);
    EXPECT_EQ(M::size({33, 3}, 0, &size), noxStsBadSize);
    EXPECT_EQ(size, 77);
}

TYPED_TEST(ColumnPipeline, StatusesInOrder) {
    using M = TypeParam;
    Image<typename M::Pixel> src(8, 4, M::channels);
    src.fill(3);
    Image<typename M::Out> dst(8, 2, M::channels, 1);
    dst.fill(5);
    const Image<typename M::Out> before(dst);
    auto rows = constRows(src, 1);
    const std::vector<typename M::Tap> taps(3, 1);
    const Buffer buffer(4096);
    const int row = 8 * M::channels * int(sizeof(typename M::Out));
    const auto call = [&](int step, NoxiSize roi, int kernelSize, int divisor, Nox8u *work) {
        return invoke<M>(rows.data(), dst.data(), step, roi, taps.data(), kernelSize, divisor, work);
    };
    EXPECT_EQ((invoke<M>(nullptr, dst.data(), 0, {0, 0}, taps.data(), 0, 0, nullptr)), noxStsNullPointer);
    EXPECT_EQ((invoke<M>(rows.data(), nullptr, 0, {0, 0}, taps.data(), 0, 0, nullptr)), noxStsNullPointer);
    EXPECT_EQ((invoke<M>(rows.data(), dst.data(), 0, {0, 0}, nullptr, 0, 0, nullptr)), noxStsNullPointer);
    EXPECT_EQ(call(0, {8, 0}, 3, 0, nullptr), noxStsBadSize);
    EXPECT_EQ(call(0, {0, 2}, 3, 0, nullptr), noxStsBadSize);
    EXPECT_EQ(call(0, {8, 2}, 0, 0, nullptr), noxStsBadSize);
    EXPECT_EQ(call(row - 1, {8, 2}, 3, 0, nullptr), noxStsBadStep);
    EXPECT_EQ(call(row + 1, {8, 2}, 3, 0, nullptr), sizeof(typename M::Out) > 1 ? noxStsOddStep : noxStsNullPointer);
    EXPECT_EQ(call(row, {8, 2}, 3, 0, nullptr), noxStsNullPointer);
    rows[3] = nullptr;
    if constexpr (M::divides) {
        EXPECT_EQ(call(row, {8, 2}, 3, 0, buffer.data()), noxStsBadArgument);
    }
    EXPECT_EQ(call(row, {8, 2}, 3, 1, buffer.data()), noxStsNullPointer);
    EXPECT_TRUE(test::sameImage(dst, before));
    EXPECT_EQ(call(row, {8, 1}, 3, 1, buffer.data()), noxStsNoError);
}

TEST(ColumnPipeline16s8u, ClampsAndTruncates) {
    const Nox16s pixels[] = {-5, 2559, 2560, 25600, 2549};
    const Nox16s *rows[] = {pixels};
    const Nox16s tap = 1;
    Nox8u result[5];
    const Buffer buffer(256);
    noxiFilterColumnPipeline_16s8u_C1R(rows, result, 5, {5, 1}, &tap, 1, 10, buffer.data());
    EXPECT_EQ(result[0], 0);
    EXPECT_EQ(result[1], 255);
    EXPECT_EQ(result[2], 255);
    EXPECT_EQ(result[3], 255);
    EXPECT_EQ(result[4], 254);
}

} // namespace
