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

using reference::statistics::Form;
using reference::statistics::Norm;
using test::Image;

namespace {

/// When a member goes parallel: from 2^shift pixels a thread on (0: never), perhaps only with a second core.
struct Path {
    int shift;
    bool asksRunomp;
};
constexpr Path serial = {0, false}, from17 = {17, false}, from17OnCores = {17, true}, from19 = {19, false};

/// A member with all arguments that any of them takes.
template <class T>
struct Member {
    std::string name;
    Form form;
    Norm norm;
    int channels;
    Path path;
    NoxStatus (*call)(const T *, int, const T *, int, const Nox8u *, int, NoxiSize, int, Nox64f *);

    int slices(NoxiSize size) const {
        int threads = 1;
        noxGetNumThreads(&threads);
        const bool parallel = path.shift != 0 &&
                              (long long)(size.width) * size.height >= (long long)(threads) << path.shift &&
                              (!path.asksRunomp || runomp() != 0);
        return parallel ? threads : 1;
    }
};

#define NORM(NORM, TAG, PATH1, PATH3)                                                                                  \
    {"noxiNorm_" #NORM "_" #TAG "_C1MR",                                                                               \
     Form::Norm,                                                                                                       \
     Norm::NORM,                                                                                                       \
     1,                                                                                                                \
     PATH1,                                                                                                            \
     [](const Nox##TAG *a, int aStep, const Nox##TAG *, int, const Nox8u *mask, int maskStep, NoxiSize roi, int,       \
        Nox64f *value) { return noxiNorm_##NORM##_##TAG##_C1MR(a, aStep, mask, maskStep, roi, value); }},              \
    {                                                                                                                  \
        "noxiNorm_" #NORM "_" #TAG "_C3CMR", Form::Norm, Norm::NORM, 3, PATH3,                                         \
            [](const Nox##TAG *a, int aStep, const Nox##TAG *, int, const Nox8u *mask, int maskStep, NoxiSize roi,     \
               int coi,                                                                                                \
               Nox64f *value) { return noxiNorm_##NORM##_##TAG##_C3CMR(a, aStep, mask, maskStep, roi, coi, value); }   \
    }
#define NORM2(FORM, NORM, TAG, PATH1, PATH3)                                                                           \
    {"noxi" #FORM "_" #NORM "_" #TAG "_C1MR",                                                                          \
     Form::FORM,                                                                                                       \
     Norm::NORM,                                                                                                       \
     1,                                                                                                                \
     PATH1,                                                                                                            \
     [](const Nox##TAG *a, int aStep, const Nox##TAG *b, int bStep, const Nox8u *mask, int maskStep, NoxiSize roi,     \
        int, Nox64f *value) {                                                                                          \
         return noxi##FORM##_##NORM##_##TAG##_C1MR(a, aStep, b, bStep, mask, maskStep, roi, value);                    \
     }},                                                                                                               \
    {                                                                                                                  \
        "noxi" #FORM "_" #NORM "_" #TAG "_C3CMR", Form::FORM, Norm::NORM, 3, PATH3,                                    \
            [](const Nox##TAG *a, int aStep, const Nox##TAG *b, int bStep, const Nox8u *mask, int maskStep,            \
               NoxiSize roi, int coi, Nox64f *value) {                                                                 \
                return noxi##FORM##_##NORM##_##TAG##_C3CMR(a, aStep, b, bStep, mask, maskStep, roi, coi, value);       \
            }                                                                                                          \
    }

template <class T>
std::vector<Member<T>> members();

template <>
std::vector<Member<Nox8u>> members() {
    return {NORM(Inf, 8u, from19, from17),
            NORM(L1, 8u, from17OnCores, from17),
            NORM(L2, 8u, from17OnCores, from17OnCores),
            NORM2(NormDiff, Inf, 8u, serial, serial),
            NORM2(NormDiff, L1, 8u, from17OnCores, from17),
            NORM2(NormDiff, L2, 8u, from17OnCores, from17),
            NORM2(NormRel, Inf, 8u, from17OnCores, from17OnCores),
            NORM2(NormRel, L1, 8u, serial, from17OnCores),
            NORM2(NormRel, L2, 8u, from17, from17OnCores)};
}
template <>
std::vector<Member<Nox8s>> members() {
    return {NORM(Inf, 8s, from19, from17),
            NORM(L1, 8s, from17OnCores, from17),
            NORM(L2, 8s, from17OnCores, from17OnCores),
            NORM2(NormDiff, Inf, 8s, serial, serial),
            NORM2(NormDiff, L1, 8s, from17OnCores, from17OnCores),
            NORM2(NormDiff, L2, 8s, from17OnCores, from17),
            NORM2(NormRel, Inf, 8s, from17OnCores, from17OnCores),
            NORM2(NormRel, L1, 8s, from17OnCores, from17OnCores),
            NORM2(NormRel, L2, 8s, from17, from17OnCores)};
}
template <>
std::vector<Member<Nox16u>> members() {
    return {NORM(Inf, 16u, from19, from17),
            NORM(L1, 16u, from17, from17),
            NORM(L2, 16u, from17, from17OnCores),
            NORM2(NormDiff, Inf, 16u, serial, serial),
            NORM2(NormDiff, L1, 16u, from17, from17OnCores),
            NORM2(NormDiff, L2, 16u, from17, from17OnCores),
            NORM2(NormRel, Inf, 16u, from17OnCores, from17),
            NORM2(NormRel, L1, 16u, from17OnCores, from17),
            NORM2(NormRel, L2, 16u, from17OnCores, from17)};
}
template <>
std::vector<Member<Nox32f>> members() {
    return {NORM(Inf, 32f, from17, from17),           NORM(L1, 32f, from17, from17),
            NORM(L2, 32f, from17, from17OnCores),     NORM2(NormDiff, Inf, 32f, serial, serial),
            NORM2(NormDiff, L1, 32f, serial, serial), NORM2(NormDiff, L2, 32f, serial, serial),
            NORM2(NormRel, Inf, 32f, from17, from17), NORM2(NormRel, L1, 32f, serial, serial),
            NORM2(NormRel, L2, 32f, serial, serial)};
}

template <class T>
::testing::AssertionResult equalsReference(const Member<T> &member, const Image<T> &a, const Image<T> &b,
                                           const Image<Nox8u> &mask, int coi) {
    double expected = -1;
    Nox64f actual = -1;
    const int slices = member.slices(mask.roi());
    const NoxStatus expectedStatus = reference::statistics::norm<T>(
        member.form, member.norm, {a.data(), a.step(), member.channels, coi - 1},
        {b.data(), b.step(), member.channels, coi - 1}, {mask.data(), mask.step()}, mask.roi(), slices, &expected);
    const NoxStatus status =
        member.call(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), mask.roi(), coi, &actual);
    if (status != expectedStatus || !test::sameElement(actual, expected))
        return ::testing::AssertionFailure()
               << member.name << " of " << mask.width() << "x" << mask.height() << ", channel " << coi << ", " << slices
               << " slices: " << actual << " (" << status << "), expected " << expected << " (" << expectedStatus
               << "), difference " << actual - expected;
    return ::testing::AssertionSuccess();
}

template <class T>
void compare(NoxiSize size, int padding, test::Random &random) {
    for (const Member<T> &member : members<T>()) {
        Image<T> a(size.width, size.height, member.channels, padding), b(size.width, size.height, member.channels);
        test::randomize(a, random);
        test::randomize(b, random);
        const Image<Nox8u> mask(test::randomMask(size, random, padding));
        for (int coi = 1; coi <= member.channels; ++coi)
            ASSERT_TRUE(equalsReference(member, a, b, mask, coi));
    }
}

template <class T>
class MaskedNorm : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox8s, Nox16u, Nox32f>;
TYPED_TEST_SUITE(MaskedNorm, Elements);

TYPED_TEST(MaskedNorm, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 13 * int(sizeof(TypeParam))})
            compare<TypeParam>(size, padding, random);
}

TYPED_TEST(MaskedNorm, PaddedRowsOfMasksAlone) {
    using T = TypeParam;
    test::Random random(8);
    for (const NoxiSize size : {NoxiSize{5, 9}, NoxiSize{16, 6}, NoxiSize{70, 5}})
        for (const Member<T> &member : members<T>()) {
            Image<T> a(size.width, size.height, member.channels), b(size.width, size.height, member.channels);
            test::randomize(a, random);
            test::randomize(b, random);
            const Image<Nox8u> mask(test::randomMask(size, random, 11));
            ASSERT_TRUE(equalsReference(member, a, b, mask, 1));
        }
}

TYPED_TEST(MaskedNorm, TakesAnyAddress) {
    using T = TypeParam;
    test::Random random(2);
    const NoxiSize size = {61, 7};
    for (const Member<T> &member : members<T>())
        for (int offset = 1; offset < 4; ++offset) {
            // Images whose first byte lies at every remainder of 4, ending at a guard page in the last of them.
            const int step = (size.width * member.channels + 1) * int(sizeof(T));
            const test::Buffer a(std::size_t(step) * size.height + 3), mask(std::size_t(64) * size.height + 3);
            for (std::size_t i = 0; i < a.size(); ++i)
                a.data()[i] = static_cast<unsigned char>(random() % 64);
            for (std::size_t i = 0; i < mask.size(); ++i)
                mask.data()[i] = random() % 2 == 0 ? 0 : 1;
            const auto *pixels = reinterpret_cast<const T *>(a.data() + offset);
            const Nox8u *on = mask.data() + offset;
            double expected = 0;
            Nox64f actual = -1;
            reference::statistics::norm<T>(member.form, member.norm, {pixels, step, member.channels, 0},
                                           {pixels, step, member.channels, 0}, {on, 64}, size, 1, &expected);
            member.call(pixels, step, pixels, step, on, 64, size, 1, &actual);
            ASSERT_TRUE(test::sameElement(actual, expected)) << member.name << ": " << actual << ", " << expected;
        }
}

TYPED_TEST(MaskedNorm, ExtremeImages) {
    using T = TypeParam;
    const T low = std::numeric_limits<T>::lowest(), high = std::numeric_limits<T>::max();
    const T values[] = {std::is_floating_point_v<T> ? T(-1e18F) : low, std::is_floating_point_v<T> ? T(1e18F) : high,
                        T(0)};
    for (const Member<T> &member : members<T>())
        for (const T first : values)
            for (const T second : values) {
                Image<T> a(197, 5, member.channels), b(197, 5, member.channels);
                Image<Nox8u> mask(197, 5);
                a.fill(first);
                b.fill(second);
                mask.fill(1);
                ASSERT_TRUE(equalsReference(member, a, b, mask, 1));
                mask.fill(0);
                ASSERT_TRUE(equalsReference(member, a, b, mask, 1));
            }
}

TYPED_TEST(MaskedNorm, StatusesInOrder) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        SCOPED_TRACE(member.name);
        Image<T> a(8, 2, 3, sizeof(T)), b(8, 2, 3, sizeof(T));
        Image<Nox8u> mask(8, 2);
        test::Random random(3);
        test::randomize(a, random);
        mask.fill(1);
        const NoxiSize roi = {4, 2}, flat = {4, 0}, empty = {0, 2};
        const int row = 4 * member.channels * int(sizeof(T)), wide = row + int(sizeof(T)), small = row - 1;
        const bool two = member.form != Form::Norm, c3 = member.channels == 3;
        Nox64f value = 77;
        const auto call = [&](const T *p, int pStep, const T *q, int qStep, const Nox8u *m, int mStep, NoxiSize size,
                              int coi) { return member.call(p, pStep, q, qStep, m, mStep, size, coi, &value); };
        const NoxStatus badCoi = c3 ? noxStsBadChannelOfInterest : noxStsNoError;
        EXPECT_EQ(call(nullptr, small, b.data(), small, mask.data(), 3, empty, 0), noxStsNullPointer);
        EXPECT_EQ(call(a.data(), small, b.data(), small, nullptr, 3, empty, 0), noxStsNullPointer);
        EXPECT_EQ(member.call(a.data(), small, b.data(), small, mask.data(), 3, empty, 0, nullptr), noxStsNullPointer);
        if (two) {
            EXPECT_EQ(call(a.data(), small, nullptr, small, mask.data(), 3, empty, 0), noxStsNullPointer);
            EXPECT_EQ(call(a.data(), row, b.data(), small, mask.data(), 4, roi, 0), noxStsBadStep);
        }
        EXPECT_EQ(call(a.data(), small, b.data(), small, mask.data(), 3, empty, 0), noxStsBadSize);
        EXPECT_EQ(call(a.data(), row, b.data(), row, mask.data(), 4, flat, 1), noxStsBadSize);
        EXPECT_EQ(call(a.data(), small, b.data(), row, mask.data(), 4, roi, 0), noxStsBadStep);
        EXPECT_EQ(call(a.data(), -row, b.data(), row, mask.data(), 4, roi, 0), noxStsBadStep);
        EXPECT_EQ(call(a.data(), wide + 1, b.data(), row, mask.data(), 3, roi, 0), noxStsBadStep);
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(a.data(), row + 1, b.data(), row, mask.data(), 4, roi, 0), noxStsOddStep);
            if (two) {
                EXPECT_EQ(call(a.data(), row, b.data(), row + 1, mask.data(), 4, roi, 0), noxStsOddStep);
            }
        }
        if (c3) {
            EXPECT_EQ(call(a.data(), row, b.data(), row, mask.data(), 4, roi, 0), badCoi);
            EXPECT_EQ(call(a.data(), row, b.data(), row, mask.data(), 4, roi, 4), badCoi);
        }
        EXPECT_EQ(value, 77) << "a refused call has written its result";
    }
}

TYPED_TEST(MaskedNorm, ZeroDenominator) {
    using T = TypeParam;
    Image<Nox8u> mask(40, 3);
    mask.fill(255);
    for (const Member<T> &member : members<T>()) {
        if (member.form != Form::NormRel)
            continue;
        Image<T> zero(40, 3, member.channels), one(40, 3, member.channels);
        zero.fill(T(0));
        one.fill(T(1));
        Nox64f value = 0;
        EXPECT_EQ(member.call(zero.data(), zero.step(), zero.data(), zero.step(), mask.data(), mask.step(), mask.roi(),
                              1, &value),
                  noxStsDivideByZero);
        EXPECT_TRUE(std::isnan(value)) << member.name;
        EXPECT_EQ(member.call(one.data(), one.step(), zero.data(), zero.step(), mask.data(), mask.step(), mask.roi(), 1,
                              &value),
                  noxStsDivideByZero);
        EXPECT_EQ(value, std::numeric_limits<Nox64f>::infinity()) << member.name;
        EXPECT_EQ(member.call(zero.data(), zero.step(), one.data(), one.step(), mask.data(), mask.step(), mask.roi(), 1,
                              &value),
                  noxStsNoError);
        EXPECT_EQ(value, 1.0) << member.name;
    }
}

TYPED_TEST(MaskedNorm, EveryThreadCountGivesTheSlicesResult) {
    using T = TypeParam;
    test::Random random(4);
    const NoxiSize size = {1024, 521}; // enough for four threads and for the members that ask for 2^19 pixels
    const Image<Nox8u> mask(test::randomMask(size, random));
    for (const Member<T> &member : members<T>()) {
        Image<T> a(size.width, size.height, member.channels), b(size.width, size.height, member.channels);
        unsigned noise = 1;
        for (int kind = 0; kind < (std::is_floating_point_v<T> ? 3 : 1); ++kind) {
            a.generate([&](int, int, int) { return test::slicedElement<T>(noise); });
            b.generate([&](int, int, int) { return test::slicedElement<T>(noise); });
            if (kind > 0) {
                test::scaleRows(a, unsigned(kind));
                test::scaleRows(b, unsigned(kind) + 9);
            }
            for (const int threads : test::threadCounts()) {
                const test::ThreadCount count(threads);
                ASSERT_TRUE(equalsReference(member, a, b, mask, member.channels)) << threads << " kind " << kind;
            }
        }
        const test::ThreadCount three(3);
        test::insideParallelRegion([&] { EXPECT_TRUE(equalsReference(member, a, b, mask, 1)); });
    }
}

TEST(MaskedNorm8s, SmallestValue) {
    Image<Nox8s> a(1, 1);
    Image<Nox8u> mask(1, 1);
    a.fill(-128);
    mask.fill(1);
    Nox64f value = 0;
    EXPECT_EQ(noxiNorm_Inf_8s_C1MR(a.data(), a.step(), mask.data(), 1, a.roi(), &value), noxStsNoError);
    EXPECT_EQ(value, 128);
}

TEST(MaskedNorm32f, WhatLiesUnderAZeroByteDoesNotCount) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    for (const int width : {1, 3, 4, 7, 29})
        for (const Member<Nox32f> &member : members<Nox32f>()) {
            Image<Nox32f> a(width, 2, member.channels), b(width, 2, member.channels), clean(width, 2, member.channels);
            Image<Nox8u> mask(width, 2);
            clean.generate([](int x, int y, int) { return float(x + y + 1); });
            a.generate([&](int x, int y, int) {
                return (x + y) % 2 == 0 ? clean.at(x, y) : x % 4 == 1 ? infinity : nan;
            });
            b.fill(2.0F);
            mask.generate([](int x, int y, int) { return (x + y) % 2 == 0; });
            Nox64f value = -1, expected = -1;
            member.call(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), mask.roi(), 1, &value);
            member.call(clean.data(), clean.step(), b.data(), b.step(), mask.data(), mask.step(), mask.roi(), 1,
                        &expected);
            EXPECT_EQ(value, expected) << member.name;
        }
}

TEST(MaskedNorm32f, NotFinitePixelsUnderTheMask) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    Image<Nox32f> a(9, 1), zero(9, 1);
    Image<Nox8u> mask(9, 1);
    mask.fill(1);
    zero.fill(0.0F);
    a.generate([&](int x, int, int) { return x == 3 ? nan : float(-x); });
    Nox64f value = 0;
    noxiNorm_Inf_32f_C1MR(a.data(), a.step(), mask.data(), 9, a.roi(), &value);
    EXPECT_EQ(value, 8) << "the maximum passes over not-a-numbers";
    noxiNorm_L1_32f_C1MR(a.data(), a.step(), mask.data(), 9, a.roi(), &value);
    EXPECT_TRUE(std::isnan(value));
    EXPECT_EQ(noxiNormRel_L1_32f_C1MR(a.data(), a.step(), zero.data(), zero.step(), mask.data(), 9, a.roi(), &value),
              noxStsDivideByZero);
    EXPECT_EQ(value, -std::numeric_limits<Nox64f>::infinity());
    a.at(3, 0) = -infinity;
    noxiNorm_Inf_32f_C1MR(a.data(), a.step(), mask.data(), 9, a.roi(), &value);
    EXPECT_EQ(value, infinity);
}

TEST(MaskedNorm32f, CloseToAnExtendedSum) {
    test::Random random(5);
    Image<Nox32f> a(4099, 67);
    Image<Nox8u> mask(4099, 67);
    test::randomize(a, random);
    mask.fill(1);
    long double sum = 0, squares = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            sum += std::fabs(a.at(x, y));
            squares += (long double)(a.at(x, y)) * a.at(x, y);
        }
    Nox64f value = 0;
    noxiNorm_L1_32f_C1MR(a.data(), a.step(), mask.data(), mask.step(), a.roi(), &value);
    EXPECT_NEAR(value / double(sum), 1.0, 1e-6);
    noxiNorm_L2_32f_C1MR(a.data(), a.step(), mask.data(), mask.step(), a.roi(), &value);
    EXPECT_NEAR(value / double(std::sqrt(squares)), 1.0, 1e-6);
}

TEST(MaskedNormSlots, AreTakenFromTheAllocatorBeyond32Threads) {
    const NoxiSize size = {4096, 1281}; // just above 40 times 2^17 pixels
    Image<Nox8u> a(size.width, size.height), b(size.width, size.height), mask(size.width, size.height);
    unsigned noise = 1;
    a.generate([&](int, int, int) { return test::slicedElement<Nox8u>(noise); });
    b.generate([&](int, int, int) { return test::slicedElement<Nox8u>(noise); });
    mask.fill(1);
    const auto call = [&](Nox64f *value) {
        return noxiNormRel_L2_8u_C1MR(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), size, value);
    };
    double expected = 0;
    reference::statistics::norm<Nox8u>(Form::NormRel, Norm::L2, {a.data(), a.step(), 1, 0}, {b.data(), b.step(), 1, 0},
                                       {mask.data(), mask.step()}, size, 40, &expected);
    Nox64f value = 77;
    const test::ThreadCount count(40);
    {
        const test::CountedAllocator counted;
        EXPECT_EQ(call(&value), noxStsNoError);
        EXPECT_EQ(value, expected);
        EXPECT_EQ(counted.allocations(), 1);
        EXPECT_EQ(counted.live(), 0);
        EXPECT_EQ(counted.lastSize(), 40 * 2 * sizeof(Nox64f) + 32 + sizeof(void *));
    }
    {
        const test::CountedAllocator failing(1);
        value = 77;
        EXPECT_EQ(call(&value), noxStsNoMemory);
        EXPECT_EQ(value, 77);
        EXPECT_EQ(failing.live(), 0);
    }
    const test::ThreadCount fewer(32);
    const test::CountedAllocator none;
    EXPECT_EQ(call(&value), noxStsNoError);
    EXPECT_EQ(value, expected);
    EXPECT_EQ(none.allocations(), 0);
}

template <class T>
void goesParallelFromItsAreaOn() {
    // 33 threads take their slots from the allocator, which tells a parallel call from a serial one.
    const test::ThreadCount count(33);
    const NoxiSize large = {4224, 1024}, small = {4224, 1023}; // 33 times 2^17 pixels, and fewer
    const Image<T> a(large.width, large.height, 3);
    const Image<Nox8u> mask(test::flatMask(large, 0));
    for (const Member<T> &member : members<T>())
        for (const NoxiSize size : {large, small}) {
            Nox64f value = 0;
            const test::CountedAllocator counted;
            member.call(a.data(), a.step(), a.data(), a.step(), mask.data(), mask.step(), size, 1, &value);
            EXPECT_EQ(counted.allocations(), member.slices(size) == 1 ? 0 : 1) << member.name;
        }
}

TEST(MaskedNormFull, GoesParallelFromItsAreaOn) {
    goesParallelFromItsAreaOn<Nox8u>();
    goesParallelFromItsAreaOn<Nox8s>();
    goesParallelFromItsAreaOn<Nox16u>();
    goesParallelFromItsAreaOn<Nox32f>();
}

template <class T>
void everyWidthUpToSomeVectors() {
    test::Random random(6);
    for (int width = 1; width < 200; ++width)
        compare<T>({width, 1 + width % 11}, (width % 3) * int(sizeof(T)), random);
    compare<T>({33000, 3}, sizeof(T), random);
    compare<T>({98500, 1}, 0, random);
}

TEST(MaskedNormFull, EveryWidthUpToSomeVectors) {
    everyWidthUpToSomeVectors<Nox8u>();
    everyWidthUpToSomeVectors<Nox8s>();
    everyWidthUpToSomeVectors<Nox16u>();
    everyWidthUpToSomeVectors<Nox32f>();
}

TEST(MaskedNorm8uFull, SumOfABlockWraps) {
    // 8500000 white pixels exceed 2^31: one block wraps to a negative number, two do not.
    const NoxiSize size = {8500, 1000};
    Image<Nox8u> a(size.width, size.height), zero(size.width, size.height), mask(size.width, size.height);
    a.fill(255);
    zero.fill(0);
    mask.fill(1);
    const long long sum = 8500000LL * 255;
    ASSERT_GT(sum, std::numeric_limits<int>::max());
    Nox64f value = 0;
    const test::ThreadCount one(1);
    noxiNorm_L1_8u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &value);
    EXPECT_EQ(value, double(sum - (1LL << 32)));
    EXPECT_EQ(
        noxiNormRel_L1_8u_C1MR(a.data(), a.step(), zero.data(), zero.step(), mask.data(), mask.step(), size, &value),
        noxStsDivideByZero);
    EXPECT_EQ(value, -std::numeric_limits<Nox64f>::infinity());
    const test::ThreadCount two(2);
    noxiNorm_L1_8u_C3CMR(a.data(), a.step(), mask.data(), mask.step(), {size.width / 3, size.height}, 1, &value);
    EXPECT_EQ(value, double(size.width / 3) * size.height * 255);
    noxiNorm_L1_8u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &value);
    EXPECT_EQ(value, runomp() != 0 ? double(sum) : double(sum - (1LL << 32)));
}

TEST(MaskedNorm16uFull, HugeSquaresAreExact) {
    const NoxiSize size = {4000, 2500}; // sum of squares above 2^53
    Image<Nox16u> a(size.width, size.height);
    Image<Nox8u> mask(size.width, size.height);
    a.fill(65535);
    a.at(17, 3) = 65534;
    mask.fill(1);
    const unsigned long long squares = 10000000ULL * 65535 * 65535 - 65535ULL * 65535 + 65534ULL * 65534;
    for (const int threads : {1, 2, 3}) {
        const test::ThreadCount count(threads);
        Nox64f value = 0;
        noxiNorm_L2_16u_C1MR(a.data(), a.step(), mask.data(), mask.step(), size, &value);
        EXPECT_EQ(value, double(std::sqrt((long double)(squares))));
    }
}

} // namespace
