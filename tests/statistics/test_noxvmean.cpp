#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "frame/owncvomp.h"
#include "noxcv.h"
#include "reference/statistics.h"
#include "support/allocator.h"
#include "support/image.h"
#include "support/masks.h"
#include "support/slices.h"
#include "support/threads.h"

using test::Image;

namespace {

/// A member with all arguments that any of them takes.
template <class T>
struct Member {
    std::string name;
    int channels;
    bool masked, deviates;
    NoxStatus (*call)(const T *, int, const Nox8u *, int, NoxiSize, int, Nox64f *, Nox64f *);

    /// The slices of a call: the plain integer forms ask for a second core, the plain float ones have limits of
    /// their own.
    int slices(NoxiSize size) const {
        int threads = 1, shift = 17;
        noxGetNumThreads(&threads);
        if (!masked && std::is_floating_point_v<T>) {
            if (channels == 3)
                return 1;
            shift = 16;
        } else if (!masked && runomp() == 0) {
            return 1;
        }
        return (long long)(size.width) * size.height >= (long long)(threads) << shift ? threads : 1;
    }
};

#define CALL(TAG, ...)                                                                                                 \
    [](const Nox##TAG *a, int step, [[maybe_unused]] const Nox8u *mask, [[maybe_unused]] int maskStep, NoxiSize roi,   \
       [[maybe_unused]] int coi, Nox64f *mean, [[maybe_unused]] Nox64f *deviation) { return __VA_ARGS__; }
#define MEMBERS(TAG)                                                                                                   \
    template <>                                                                                                        \
    std::vector<Member<Nox##TAG>> members() {                                                                          \
        return {{"noxiMean_" #TAG "_C1MR", 1, true, false,                                                             \
                 CALL(TAG, noxiMean_##TAG##_C1MR(a, step, mask, maskStep, roi, mean))},                                \
                {"noxiMean_" #TAG "_C3CMR", 3, true, false,                                                            \
                 CALL(TAG, noxiMean_##TAG##_C3CMR(a, step, mask, maskStep, roi, coi, mean))},                          \
                {"noxiMean_StdDev_" #TAG "_C1R", 1, false, true,                                                       \
                 CALL(TAG, noxiMean_StdDev_##TAG##_C1R(a, step, roi, mean, deviation))},                               \
                {"noxiMean_StdDev_" #TAG "_C3CR", 3, false, true,                                                      \
                 CALL(TAG, noxiMean_StdDev_##TAG##_C3CR(a, step, roi, coi, mean, deviation))},                         \
                {"noxiMean_StdDev_" #TAG "_C1MR", 1, true, true,                                                       \
                 CALL(TAG, noxiMean_StdDev_##TAG##_C1MR(a, step, mask, maskStep, roi, mean, deviation))},              \
                {"noxiMean_StdDev_" #TAG "_C3CMR", 3, true, true,                                                      \
                 CALL(TAG, noxiMean_StdDev_##TAG##_C3CMR(a, step, mask, maskStep, roi, coi, mean, deviation))}};       \
    }
template <class T>
std::vector<Member<T>> members();
MEMBERS(8u)
MEMBERS(8s)
MEMBERS(16u)
MEMBERS(32f)

template <class T>
::testing::AssertionResult equalsReference(const Member<T> &member, const Image<T> &a, const Image<Nox8u> &mask,
                                           int coi) {
    double expectedMean = -1, expectedDeviation = -1;
    Nox64f mean = -1, deviation = -1;
    const int slices = member.slices(mask.roi());
    reference::statistics::meanAndDeviation<T>({a.data(), a.step(), member.channels, coi - 1},
                                               {member.masked ? mask.data() : nullptr, mask.step()}, mask.roi(), slices,
                                               &expectedMean, &expectedDeviation);
    const NoxStatus status =
        member.call(a.data(), a.step(), mask.data(), mask.step(), mask.roi(), coi, &mean, &deviation);
    if (!member.deviates)
        deviation = expectedDeviation;
    if (status != noxStsNoError || !test::sameElement(mean, expectedMean) ||
        !test::sameElement(deviation, expectedDeviation))
        return ::testing::AssertionFailure()
               << member.name << " of " << mask.width() << "x" << mask.height() << ", channel " << coi << ", " << slices
               << " slices: " << mean << ", " << deviation << " (" << status << "), expected " << expectedMean << ", "
               << expectedDeviation;
    return ::testing::AssertionSuccess();
}

/// Members on random images; an offset far above the spread sends floats through their second pass.
template <class T>
void compare(NoxiSize size, int padding, test::Random &random) {
    for (const Member<T> &member : members<T>()) {
        const bool far = random() % 2 == 0;
        Image<T> a(size.width, size.height, member.channels, padding);
        a.generate([&](int, int, int) {
            const T value = test::randomElement<T>(random);
            return std::is_floating_point_v<T> && far ? T(value / 16 + 1000) : value;
        });
        const Image<Nox8u> mask(test::randomMask(size, random, padding));
        for (int coi = 1; coi <= member.channels; ++coi)
            ASSERT_TRUE(equalsReference(member, a, mask, coi));
    }
}

template <class T>
class Mean : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox8s, Nox16u, Nox32f>;
TYPED_TEST_SUITE(Mean, Elements);

TYPED_TEST(Mean, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 13 * int(sizeof(TypeParam))})
            compare<TypeParam>(size, padding, random);
}

TYPED_TEST(Mean, ExtremeImages) {
    using T = TypeParam;
    constexpr bool isFloat = std::is_floating_point_v<T>;
    for (const Member<T> &member : members<T>())
        for (const T value : {isFloat ? T(-1e9F) : std::numeric_limits<T>::lowest(), T(1),
                              isFloat ? T(1e9F) : std::numeric_limits<T>::max()}) {
            Image<T> a(133, 7, member.channels);
            a.fill(value);
            for (const Nox8u on : {1, 0}) {
                const Image<Nox8u> mask(test::flatMask({133, 7}, on));
                ASSERT_TRUE(equalsReference(member, a, mask, 1));
                Nox64f mean = -1, deviation = 0;
                member.call(a.data(), a.step(), mask.data(), mask.step(), mask.roi(), 1, &mean, &deviation);
                const bool empty = member.masked && on == 0;
                if (!isFloat || empty) {
                    EXPECT_EQ(mean, empty ? 0.0 : double(value)) << member.name;
                    EXPECT_EQ(deviation, 0.0) << member.name;
                }
            }
        }
}

TYPED_TEST(Mean, StatusesInOrder) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        SCOPED_TRACE(member.name);
        Image<T> a(8, 2, 3);
        a.fill(T(5));
        const Image<Nox8u> mask(test::flatMask({8, 2}, 1));
        const NoxiSize roi = {4, 2}, flat = {4, 0}, empty = {0, 2};
        const int row = 4 * member.channels * int(sizeof(T)), small = row - 1;
        Nox64f mean = 77, deviation = 77;
        const auto call = [&](const T *p, int step, const Nox8u *m, int mStep, NoxiSize size, int coi) {
            return member.call(p, step, m, mStep, size, coi, &mean, &deviation);
        };
        EXPECT_EQ(call(nullptr, small, mask.data(), 3, empty, 0), noxStsNullPointer);
        EXPECT_EQ(call(a.data(), small, mask.data(), 3, empty, 0), noxStsBadSize);
        EXPECT_EQ(call(a.data(), row, mask.data(), 4, flat, 1), noxStsBadSize);
        EXPECT_EQ(call(a.data(), small, mask.data(), 4, roi, 0), noxStsBadStep);
        EXPECT_EQ(call(a.data(), -row, mask.data(), 4, roi, 0), noxStsBadStep);
        if (member.masked) {
            EXPECT_EQ(call(a.data(), small, nullptr, 3, empty, 0), noxStsNullPointer);
            EXPECT_EQ(call(a.data(), row + 1, mask.data(), 3, roi, 0), noxStsBadStep);
        }
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(a.data(), row + 1, mask.data(), 4, roi, 0), noxStsOddStep);
        }
        if (member.channels == 3) {
            EXPECT_EQ(call(a.data(), row, mask.data(), 4, roi, 0), noxStsBadChannelOfInterest);
            EXPECT_EQ(call(a.data(), row, mask.data(), 4, roi, 4), noxStsBadChannelOfInterest);
        }
        EXPECT_EQ(mean, 77);
        EXPECT_EQ(deviation, 77);
        const NoxStatus without = member.call(a.data(), row, mask.data(), 4, roi, 1, nullptr, &deviation);
        EXPECT_EQ(without, member.deviates ? noxStsNoError : noxStsNullPointer);
        if (member.deviates) {
            EXPECT_EQ(deviation, 0);
            EXPECT_EQ(member.call(a.data(), row, mask.data(), 4, roi, 1, &mean, nullptr), noxStsNoError);
            EXPECT_EQ(mean, 5);
            EXPECT_EQ(member.call(a.data(), row, mask.data(), 4, roi, 1, nullptr, nullptr), noxStsNoError);
        }
    }
}

TYPED_TEST(Mean, EveryThreadCountGivesTheSlicesResult) {
    using T = TypeParam;
    test::Random random(2);
    const NoxiSize size = {1024, 521};
    const Image<Nox8u> mask(test::randomMask(size, random));
    for (const Member<T> &member : members<T>())
        for (int kind = -1; kind < (std::is_floating_point_v<T> ? 4 : 0); ++kind) {
            Image<T> a(size.width, size.height, member.channels);
            unsigned noise = 1;
            // Floats far from zero make two passes.
            a.generate([&](int, int, int) { return T(test::slicedElement<T>(noise) + (kind == 0 ? T(3000) : T(0))); });
            if (kind > 0)
                test::scaleRows(a, unsigned(kind));
            for (const int threads : test::threadCounts()) {
                const test::ThreadCount count(threads);
                ASSERT_TRUE(equalsReference(member, a, mask, member.channels)) << threads << " kind " << kind;
            }
            const test::ThreadCount three(3);
            test::insideParallelRegion([&] { EXPECT_TRUE(equalsReference(member, a, mask, 1)); });
        }
}

TYPED_TEST(Mean, PaddedRowsOfMasksAlone) {
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

/// The second pass is made where the variance is below 0.05 of the squared mean, and rounds in another way.
TEST(Mean32f, VariancesOnBothSidesOfTheSecondPass) {
    test::Random random(9);
    for (const double share : {0.0004, 0.003, 0.006, 0.02, 0.04, 0.048, 0.052, 0.06, 0.2, 0.6})
        for (int trial = 0; trial < 3; ++trial)
            for (const Member<Nox32f> &member : members<Nox32f>()) {
                Image<Nox32f> a(211, 17, member.channels);
                const double mean = 100 + random() % 1000, half = mean * std::sqrt(3 * share); // of a flat distribution
                a.generate([&](int, int, int) { return float(mean + half * (double(random()) / 0x80000000U - 1)); });
                const Image<Nox8u> mask(test::randomMask(a.roi(), random));
                ASSERT_TRUE(equalsReference(member, a, mask, 1)) << share;
            }
}

TEST(Mean32f, FlatImageOfLargeValuesHasNoDeviation) {
    Image<Nox32f> a(640, 480);
    const Nox32f value = 123.0F * 65536.0F; // row sums of it are exact
    a.fill(value);
    Nox64f mean = 0, deviation = -1;
    EXPECT_EQ(noxiMean_StdDev_32f_C1R(a.data(), a.step(), a.roi(), &mean, &deviation), noxStsNoError);
    EXPECT_EQ(mean, value);
    EXPECT_EQ(deviation, 0);
}

TEST(Mean32f, WhatLiesUnderAZeroByteDoesNotCount) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    for (const int width : {1, 2, 3, 5, 31})
        for (const Member<Nox32f> &member : members<Nox32f>()) {
            if (!member.masked)
                continue;
            for (const float middle : {0.0F, 1000.0F}) {
                Image<Nox32f> a(width, 3, member.channels), clean(width, 3, member.channels);
                Image<Nox8u> mask(width, 3);
                mask.generate([](int x, int y, int) { return (x + y) % 2 == 0; });
                clean.generate([&](int x, int y, int) { return middle + float(x * y); });
                a.generate([&](int x, int y, int) { return mask.at(x, y) ? clean.at(x, y) : x % 2 ? infinity : nan; });
                ASSERT_TRUE(equalsReference(member, a, mask, 1));
                Nox64f mean = -1, deviation = 0, cleanMean = -2, cleanDeviation = 0;
                member.call(a.data(), a.step(), mask.data(), mask.step(), mask.roi(), 1, &mean, &deviation);
                member.call(clean.data(), clean.step(), mask.data(), mask.step(), mask.roi(), 1, &cleanMean,
                            &cleanDeviation);
                EXPECT_EQ(mean, cleanMean);
                EXPECT_EQ(deviation, cleanDeviation);
            }
        }
}

TEST(Mean32f, CloseToAnExtendedSum) {
    test::Random random(3);
    Image<Nox32f> a(4099, 67);
    for (const float middle : {0.0F, 500.0F, 20000.0F}) {
        a.generate([&](int, int, int) { return middle + test::randomElement<Nox32f>(random); });
        long double sum = 0, squares = 0;
        const long double count = 4099 * 67;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                sum += a.at(x, y);
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                squares += (a.at(x, y) - sum / count) * (a.at(x, y) - sum / count);
        Nox64f mean = 0, deviation = 0;
        noxiMean_StdDev_32f_C1R(a.data(), a.step(), a.roi(), &mean, &deviation);
        EXPECT_NEAR(deviation / double(std::sqrt(squares / count)), 1.0, 1e-6) << middle;
        if (middle != 0) {
            EXPECT_NEAR(mean / double(sum / count), 1.0, 1e-6) << middle;
        }
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

TEST(MeanFull, EveryWidthUpToSomeVectors) {
    everyWidthUpToSomeVectors<Nox8u>();
    everyWidthUpToSomeVectors<Nox8s>();
    everyWidthUpToSomeVectors<Nox16u>();
    everyWidthUpToSomeVectors<Nox32f>();
}

template <class T>
void slotsAreTakenFromTheAllocatorBeyond32Threads() {
    // A flat image, so that floats make two passes with an allocation each.
    const NoxiSize size = {4224, 1024}; // 33 times 2^17 pixels
    Image<T> a(size.width, size.height, 3);
    std::fill_n(a.data(), std::size_t(size.width) * size.height * 3, T(3));
    const Image<Nox8u> mask(test::flatMask(size, 1));
    const test::ThreadCount count(33);
    for (const Member<T> &member : members<T>())
        for (const int rows : {1024, 1023, 511}) {
            SCOPED_TRACE(member.name);
            const NoxiSize roi = {size.width, rows};
            const int passes = std::is_floating_point_v<T> && member.deviates ? 2 : 1;
            const int expected = member.slices(roi) == 1 ? 0 : passes;
            Nox64f mean = 77, deviation = 77;
            const auto call = [&] {
                return member.call(a.data(), a.step(), mask.data(), mask.step(), roi, 1, &mean, &deviation);
            };
            for (int failing = 1; failing <= expected; ++failing) {
                const test::CountedAllocator counted(failing);
                EXPECT_EQ(call(), noxStsNoMemory);
                EXPECT_EQ(counted.live(), 0);
                EXPECT_EQ(mean, 77);
                EXPECT_EQ(deviation, 77);
            }
            const test::CountedAllocator counted;
            EXPECT_EQ(call(), noxStsNoError);
            EXPECT_EQ(counted.allocations(), expected);
            EXPECT_EQ(counted.live(), 0);
            EXPECT_EQ(mean, 3);
            if (member.deviates) {
                EXPECT_EQ(deviation, 0);
            }
        }
}

TEST(MeanFull, SlotsAreTakenFromTheAllocatorBeyond32Threads) {
    slotsAreTakenFromTheAllocatorBeyond32Threads<Nox8u>();
    slotsAreTakenFromTheAllocatorBeyond32Threads<Nox8s>();
    slotsAreTakenFromTheAllocatorBeyond32Threads<Nox16u>();
    slotsAreTakenFromTheAllocatorBeyond32Threads<Nox32f>();
}

TEST(Mean8uFull, HugeImagesAreExact) {
    for (const int height : {1023, 1025}) { // below and above 2^23 pixels
        const NoxiSize size = {8192, height};
        Image<Nox8u> a(size.width, size.height);
        a.fill(255);
        const Image<Nox8u> mask(test::flatMask(size, 1));
        for (const int threads : {1, 2}) {
            const test::ThreadCount count(threads);
            Nox64f mean = 0, deviation = -1;
            noxiMean_8u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &mean);
            EXPECT_EQ(mean, 255);
            noxiMean_StdDev_8u_C1R(a.data(), a.step(), size, &mean, &deviation);
            EXPECT_EQ(mean, 255);
            EXPECT_EQ(deviation, 0);
            noxiMean_StdDev_8u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &mean, &deviation);
            EXPECT_EQ(mean, 255);
            EXPECT_EQ(deviation, 0);
        }
    }
}

TEST(Mean16uFull, WideRowsAreExact) {
    // One row whose pixel sum and square sum exceed 32 and 53 bits.
    const NoxiSize size = {5000001, 1};
    Image<Nox16u> a(size.width, 1);
    a.generate([](int x, int, int) { return x == 77 ? 1 : 65535; });
    const Image<Nox8u> mask(test::flatMask(size, 1));
    double expectedMean = 0, expectedDeviation = 0;
    reference::statistics::meanAndDeviation<Nox16u>({a.data(), a.step(), 1, 0}, {nullptr, 0}, size, 1, &expectedMean,
                                                    &expectedDeviation);
    Nox64f mean = 0, deviation = 0;
    noxiMean_StdDev_16u_C1R(a.data(), a.step(), size, &mean, &deviation);
    EXPECT_EQ(mean, expectedMean);
    EXPECT_EQ(deviation, expectedDeviation);
    noxiMean_16u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &mean);
    EXPECT_EQ(mean, double(5000000.0L * 65535 + 1) / 5000001);
}

} // namespace
