#include <cfenv>
#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>

#include "noxcv.h"
#include "reference/statistics.h"
#include "support/allocator.h"
#include "support/image.h"
#include "support/masks.h"
#include "support/threads.h"

using reference::statistics::Extrema;
using test::Image;

namespace {

/// A member with all arguments that any of them takes.
template <class T>
struct Member {
    std::string name;
    int channels;
    bool masked;
    NoxStatus (*call)(const T *, int, const Nox8u *, int, NoxiSize, int, Nox32f *, Nox32f *, NoxiPoint *, NoxiPoint *);
};

#define CALL(TAG, ...)                                                                                                 \
    [](const Nox##TAG *a, int step, [[maybe_unused]] const Nox8u *mask, [[maybe_unused]] int maskStep, NoxiSize roi,   \
       [[maybe_unused]] int coi, Nox32f *low, Nox32f *high, NoxiPoint *lowAt,                                          \
       NoxiPoint *highAt) { return __VA_ARGS__; }
#define MEMBERS(TAG)                                                                                                   \
    template <>                                                                                                        \
    std::vector<Member<Nox##TAG>> members() {                                                                          \
        return {                                                                                                       \
            {"noxiMinMaxIndx_" #TAG "_C1R", 1, false,                                                                  \
             CALL(TAG, noxiMinMaxIndx_##TAG##_C1R(a, step, roi, low, high, lowAt, highAt))},                           \
            {"noxiMinMaxIndx_" #TAG "_C3CR", 3, false,                                                                 \
             CALL(TAG, noxiMinMaxIndx_##TAG##_C3CR(a, step, roi, coi, low, high, lowAt, highAt))},                     \
            {"noxiMinMaxIndx_" #TAG "_C1MR", 1, true,                                                                  \
             CALL(TAG, noxiMinMaxIndx_##TAG##_C1MR(a, step, mask, maskStep, roi, low, high, lowAt, highAt))},          \
            {"noxiMinMaxIndx_" #TAG "_C3CMR", 3, true,                                                                 \
             CALL(TAG, noxiMinMaxIndx_##TAG##_C3CMR(a, step, mask, maskStep, roi, coi, low, high, lowAt, highAt))}};   \
    }
template <class T>
std::vector<Member<T>> members();
MEMBERS(8u)
MEMBERS(8s)
MEMBERS(16u)
MEMBERS(32f)

std::ostream &operator<<(std::ostream &out, const Extrema &e) {
    return out << e.low << " at (" << e.lowAt.x << ", " << e.lowAt.y << "), " << e.high << " at (" << e.highAt.x << ", "
               << e.highAt.y << ")";
}

bool same(NoxiPoint a, NoxiPoint b) { return a.x == b.x && a.y == b.y; }

::testing::AssertionResult same(const Extrema &actual, const Extrema &expected) {
    if (test::sameElement(actual.low, expected.low) && test::sameElement(actual.high, expected.high) &&
        same(actual.lowAt, expected.lowAt) && same(actual.highAt, expected.highAt))
        return ::testing::AssertionSuccess();
    std::ostringstream text;
    text << actual << ", expected " << expected;
    return ::testing::AssertionFailure() << text.str();
}

template <class T>
Extrema extremaOf(const Member<T> &member, const Image<T> &a, const Image<Nox8u> &mask, int coi) {
    Extrema result = {-77, -77, {-7, -7}, {-7, -7}};
    EXPECT_EQ(member.call(a.data(), a.step(), mask.data(), mask.step(), mask.roi(), coi, &result.low, &result.high,
                          &result.lowAt, &result.highAt),
              noxStsNoError)
        << member.name;
    return result;
}

template <class T>
::testing::AssertionResult equalsReference(const Member<T> &member, const Image<T> &a, const Image<Nox8u> &mask,
                                           int coi) {
    return same(extremaOf(member, a, mask, coi),
                reference::statistics::extrema<T>({a.data(), a.step(), member.channels, coi - 1},
                                                  {member.masked ? mask.data() : nullptr, mask.step()}, mask.roi()))
           << member.name << " of " << mask.width() << "x" << mask.height() << ", channel " << coi;
}

/// Random images: of the whole range, of very few values (so that extremes repeat), and flat at either end.
template <class T>
void compare(NoxiSize size, int padding, test::Random &random) {
    for (const Member<T> &member : members<T>()) {
        Image<T> a(size.width, size.height, member.channels, padding);
        const Image<Nox8u> mask(test::randomMask(size, random, padding));
        const auto compareChannels = [&] {
            for (int coi = 1; coi <= member.channels; ++coi)
                ASSERT_TRUE(equalsReference(member, a, mask, coi));
        };
        test::randomize(a, random);
        compareChannels();
        a.generate([&](int, int, int) { return 10 + random() % 3; });
        compareChannels();
        a.fill(std::numeric_limits<T>::max());
        compareChannels();
        a.fill(std::numeric_limits<T>::lowest());
        compareChannels();
    }
}

template <class T>
class MinMax : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox8s, Nox16u, Nox32f>;
TYPED_TEST_SUITE(MinMax, Elements);

TYPED_TEST(MinMax, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 13 * int(sizeof(TypeParam))})
            compare<TypeParam>(size, padding, random);
}

TYPED_TEST(MinMax, FirstOccurrenceForEveryThreadCount) {
    using T = TypeParam;
    test::Random random(2);
    const NoxiSize size = {193, 131}; // above 16384 pixels
    const Image<Nox8u> mask(test::randomMask(size, random));
    for (const Member<T> &member : members<T>())
        for (int trial = 0; trial < 8; ++trial) {
            Image<T> a(size.width, size.height, member.channels);
            a.generate([&](int, int, int) { return 20 + random() % 50; });
            for (int i = 0; i < 12; ++i) { // a few equal extremes anywhere
                a.at(int(random() % 193), int(random() % 131), int(random() % member.channels)) = T(3);
                a.at(int(random() % 193), int(random() % 131), int(random() % member.channels)) = T(99);
            }
            for (const int threads : test::threadCounts()) {
                const test::ThreadCount count(threads);
                ASSERT_TRUE(equalsReference(member, a, mask, member.channels)) << threads << " threads";
            }
            const test::ThreadCount three(3);
            test::insideParallelRegion([&] { EXPECT_TRUE(equalsReference(member, a, mask, 1)); });
        }
}

TYPED_TEST(MinMax, EmptyMaskGivesZeros) {
    using T = TypeParam;
    const Image<Nox8u> mask(test::flatMask({150, 120}, 0));
    for (const Member<T> &member : members<T>()) {
        if (!member.masked)
            continue;
        Image<T> a(150, 120, member.channels);
        a.fill(T(9));
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {0, 0, {0, 0}, {0, 0}})) << member.name;
    }
}

TYPED_TEST(MinMax, OnlyPixelUnderTheMaskIsBothExtremes) {
    using T = TypeParam;
    Image<Nox8u> mask(test::flatMask({150, 120}, 0));
    mask.at(97, 61) = 1;
    for (const Member<T> &member : members<T>()) {
        if (!member.masked)
            continue;
        for (const T value : {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), T(1)}) {
            Image<T> a(150, 120, member.channels);
            a.fill(value);
            EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {float(value), float(value), {97, 61}, {97, 61}}))
                << member.name;
        }
    }
}

TYPED_TEST(MinMax, StatusesInOrder) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        SCOPED_TRACE(member.name);
        Image<T> a(8, 2, 3);
        const Image<Nox8u> mask(test::flatMask({8, 2}, 1));
        const NoxiSize roi = {4, 2}, flat = {4, 0}, empty = {0, 2};
        const int row = 4 * member.channels * int(sizeof(T)), small = row - 1;
        Nox32f low = 77, high = 77;
        NoxiPoint lowAt = {77, 77}, highAt = {77, 77};
        const auto call = [&](const T *p, int step, const Nox8u *m, int mStep, NoxiSize size, int coi) {
            return member.call(p, step, m, mStep, size, coi, &low, &high, &lowAt, &highAt);
        };
        const auto results = [&](Nox32f *l, Nox32f *h, NoxiPoint *lAt, NoxiPoint *hAt) {
            return member.call(a.data(), small, mask.data(), 3, empty, 0, l, h, lAt, hAt);
        };
        EXPECT_EQ(call(nullptr, small, mask.data(), 3, empty, 0), noxStsNullPointer);
        EXPECT_EQ(results(nullptr, &high, &lowAt, &highAt), noxStsNullPointer);
        EXPECT_EQ(results(&low, nullptr, &lowAt, &highAt), noxStsNullPointer);
        EXPECT_EQ(results(&low, &high, nullptr, &highAt), noxStsNullPointer);
        EXPECT_EQ(results(&low, &high, &lowAt, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(a.data(), small, mask.data(), 3, empty, 0), noxStsBadSize);
        EXPECT_EQ(call(a.data(), row, mask.data(), 4, flat, 1), noxStsBadSize);
        EXPECT_EQ(call(a.data(), small, mask.data(), 4, roi, 0), noxStsBadStep);
        EXPECT_EQ(call(a.data(), -row, mask.data(), 4, roi, 0), noxStsBadStep);
        if (member.masked) {
            EXPECT_EQ(call(a.data(), row, nullptr, 4, empty, 0), noxStsNullPointer);
            EXPECT_EQ(call(a.data(), row + 1, mask.data(), 3, roi, 0), noxStsBadStep);
        }
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(a.data(), row + 1, mask.data(), 4, roi, 0), noxStsOddStep);
        }
        if (member.channels == 3) {
            EXPECT_EQ(call(a.data(), row, mask.data(), 4, roi, 0), noxStsBadChannelOfInterest);
            EXPECT_EQ(call(a.data(), row, mask.data(), 4, roi, 4), noxStsBadChannelOfInterest);
        }
        EXPECT_TRUE(same({low, high, lowAt, highAt}, {77, 77, {77, 77}, {77, 77}}));
    }
}

TYPED_TEST(MinMax, SlotsAreTakenFromTheAllocatorBeyond32Threads) {
    using T = TypeParam;
    const test::ThreadCount count(33);
    for (const Member<T> &member : members<T>())
        for (const NoxiSize size : {NoxiSize{128, 128}, NoxiSize{128, 127}}) {
            Image<T> a(size.width, size.height, member.channels);
            a.fill(T(4));
            const Image<Nox8u> mask(test::flatMask(size, 1));
            const int expected = size.height == 128 ? 1 : 0;
            {
                const test::CountedAllocator counted;
                extremaOf(member, a, mask, 1);
                EXPECT_EQ(counted.allocations(), expected);
                EXPECT_EQ(counted.live(), 0);
            }
            if (expected == 1) {
                const test::CountedAllocator failing(1);
                Extrema e = {77, 77, {77, 77}, {77, 77}};
                EXPECT_EQ(member.call(a.data(), a.step(), mask.data(), mask.step(), size, 1, &e.low, &e.high, &e.lowAt,
                                      &e.highAt),
                          noxStsNoMemory);
                EXPECT_TRUE(same(e, {77, 77, {77, 77}, {77, 77}}));
            }
        }
}

TEST(MinMax32f, NotFinitePixels) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN(),
                 most = std::numeric_limits<Nox32f>::max();
    const Image<Nox8u> mask(test::flatMask({37, 5}, 1)), none(test::flatMask({37, 5}, 0));
    for (const Member<Nox32f> &member : members<Nox32f>()) {
        SCOPED_TRACE(member.name);
        Image<Nox32f> a(37, 5, member.channels);
        a.fill(nan);
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {most, -most, {0, 0}, {0, 0}}));
        a.at(30, 3, 0) = 5.0F;
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {5, 5, {30, 3}, {30, 3}}));
        a.fill(infinity);
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {most, infinity, {0, 0}, {0, 0}}));
        a.at(11, 2, 0) = most;
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {most, infinity, {11, 2}, {0, 0}}));
        a.fill(-infinity);
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {-infinity, -most, {0, 0}, {0, 0}}));
        if (member.masked) {
            EXPECT_TRUE(same(extremaOf(member, a, none, 1), {0, 0, {0, 0}, {0, 0}}));
        }
    }
}

TEST(MinMax32f, AZeroKeepsTheSignOfItsPixel) {
    Image<Nox32f> a(40, 2);
    a.fill(0.0F);
    a.at(39, 1) = -0.0F;
    const Image<Nox8u> mask(test::flatMask(a.roi(), 1));
    for (const Member<Nox32f> &member : members<Nox32f>()) {
        if (member.channels != 1)
            continue;
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {0.0F, 0.0F, {0, 0}, {0, 0}}));
        a.at(0, 0) = -0.0F;
        EXPECT_TRUE(same(extremaOf(member, a, mask, 1), {-0.0F, -0.0F, {0, 0}, {0, 0}}));
        a.at(0, 0) = 0.0F;
    }
}

TEST(MinMax32f, TheFirstOfTwoZerosGivesItsSign) {
    // Zeros of both signs are equal: the first one in raster order is the extreme, whatever lanes and threads they meet
    // in.
    test::Random random(5);
    const Image<Nox8u> mask(test::flatMask({193, 131}, 1));
    for (const Member<Nox32f> &member : members<Nox32f>())
        for (int trial = 0; trial < 40; ++trial) {
            Image<Nox32f> a(193, 131, member.channels);
            const float others = trial % 2 == 0 ? 1.0F : -1.0F; // the zeros are the smallest, or the largest
            a.generate([&](int, int, int) { return others * float(1 + random() % 9); });
            const int first = int(random() % (193 * 131)), second = int(random() % (193 * 131));
            a.at(first % 193, first / 193, 0) = trial % 4 < 2 ? 0.0F : -0.0F;
            a.at(second % 193, second / 193, 0) = trial % 4 < 2 ? -0.0F : 0.0F;
            for (const int threads : {1, 3}) {
                const test::ThreadCount count(threads);
                ASSERT_TRUE(equalsReference(member, a, mask, 1)) << first << " " << second << " " << threads;
            }
        }
}

TYPED_TEST(MinMax, PaddedRowsOfMasksAlone) {
    using T = TypeParam;
    test::Random random(8);
    for (const NoxiSize size : {NoxiSize{5, 9}, NoxiSize{16, 6}, NoxiSize{70, 5}})
        for (const Member<T> &member : members<T>()) {
            Image<T> a(size.width, size.height, member.channels);
            test::randomize(a, random);
            const Image<Nox8u> mask(test::randomMask(size, random, 11));
            ASSERT_TRUE(equalsReference(member, a, mask, 1));
        }
}

TYPED_TEST(MinMax, ExtremesInTheLastOfManySlices) {
    using T = TypeParam;
    const test::ThreadCount count(40);
    const Image<Nox8u> mask(test::flatMask({140, 131}, 1));
    for (const Member<T> &member : members<T>())
        for (const int y : {129, 99, 98, 40, 0}) { // 3 rows a slice, so row 99 begins the 34th
            Image<T> a(140, 131, member.channels);
            a.fill(T(50));
            a.at(99, y, 0) = T(3);
            a.at(100, y, 0) = T(80);
            ASSERT_TRUE(equalsReference(member, a, mask, 1)) << y;
        }
}

/// Pixels that do not count, and those behind a row, are no operands: no flag of an invalid operation is raised.
TEST(MinMax32f, OrdinaryPixelsRaiseNoFlag) {
    test::Random random(6);
    for (int width = 1; width < 70; ++width)
        for (const Member<Nox32f> &member : members<Nox32f>()) {
            Image<Nox32f> a(width, 3, member.channels);
            const Image<Nox8u> mask(test::randomMask(a.roi(), random));
            a.generate([&](int x, int y, int) {
                return !member.masked || mask.at(x, y) != 0 ? test::randomElement<Nox32f>(random) : NAN;
            });
            feclearexcept(FE_ALL_EXCEPT);
            extremaOf(member, a, mask, 1);
            ASSERT_FALSE(fetestexcept(FE_INVALID)) << member.name << " " << width;
        }
}

TEST(MinMax32f, WhatLiesUnderAZeroByteDoesNotCount) {
    test::Random random(3);
    const NoxiSize size = {61, 9};
    const Image<Nox8u> mask(test::randomMask(size, random));
    for (const Member<Nox32f> &member : members<Nox32f>()) {
        if (!member.masked)
            continue;
        Image<Nox32f> a(size.width, size.height, member.channels);
        a.generate([&](int x, int y, int) {
            return mask.at(x, y) != 0 ? test::randomElement<Nox32f>(random)
                                      : (x % 2 ? -1.0F : 1.0F) * std::numeric_limits<Nox32f>::infinity();
        });
        ASSERT_TRUE(equalsReference(member, a, mask, member.channels));
    }
}

template <class T>
void everyWidthUpToSomeVectors() {
    test::Random random(4);
    for (int width = 1; width < 200; ++width)
        compare<T>({width, 1 + width % 11}, (width % 3) * int(sizeof(T)), random);
    compare<T>({33000, 3}, sizeof(T), random);
    compare<T>({98500, 1}, 0, random);
}

TEST(MinMaxFull, EveryWidthUpToSomeVectors) {
    everyWidthUpToSomeVectors<Nox8u>();
    everyWidthUpToSomeVectors<Nox8s>();
    everyWidthUpToSomeVectors<Nox16u>();
    everyWidthUpToSomeVectors<Nox32f>();
}

} // namespace
