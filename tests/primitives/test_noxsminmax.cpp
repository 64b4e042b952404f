#include <cmath>

#include "noxcv.h"
#include "reference/elementwise.h"
#include "support/vector.h"

using test::Vector;

namespace {

template <class T>
struct Entry {
    NoxStatus (*inPlace)(const T *, T *, int);
    NoxStatus (*fromTwo)(const T *, const T *, T *, int);
    T (*pick)(T, T);
};

const Entry<Nox8u> bytes[] = {{noxsMinEvery_8u_I, noxsMinEvery_8u, reference::elementwise::lesser<Nox8u>},
                              {noxsMaxEvery_8u_I, noxsMaxEvery_8u, reference::elementwise::greater<Nox8u>}};
const Entry<Nox32f> floats[] = {{noxsMinEvery_32f_I, noxsMinEvery_32f, reference::elementwise::lesser<Nox32f>},
                                {noxsMaxEvery_32f_I, noxsMaxEvery_32f, reference::elementwise::greater<Nox32f>}};

template <class T>
void expectEqualsReference(const Entry<T> &entry) {
    test::Random random(1);
    for (const int length : test::testLengths())
        for (const int shift : test::testShifts()) {
            Vector<T> a(length, shift), b(length, 16 - shift), expected(length), actual(length, 3);
            test::randomize(a, random);
            test::randomize(b, random);
            expected.generate([&](int i) { return entry.pick(a[i], b[i]); });
            ASSERT_EQ(entry.fromTwo(a.data(), b.data(), actual.data(), length), noxStsNoError);
            ASSERT_TRUE(test::sameVector(actual, expected));
            ASSERT_EQ(entry.inPlace(a.data(), b.data(), length), noxStsNoError);
            ASSERT_TRUE(test::sameVector(b, expected));
        }
}

TEST(MinMaxEvery, EqualsReference) {
    for (const auto &entry : bytes)
        expectEqualsReference(entry);
    for (const auto &entry : floats)
        expectEqualsReference(entry);
}

TEST(MinMaxEvery, NotANumbersAndZerosOfBothSigns) {
    const Nox32f nan = std::numeric_limits<Nox32f>::quiet_NaN(), infinity = std::numeric_limits<Nox32f>::infinity();
    const Nox32f values[] = {nan, 1.0F, -1.0F, 0.0F, -0.0F, infinity, -infinity};
    for (const auto &entry : floats) {
        Vector<Nox32f> a(49), b(49);
        a.generate([&](int i) { return values[i % 7]; });
        b.generate([&](int i) { return values[i / 7]; });
        const Vector<Nox32f> before(b);
        entry.inPlace(a.data(), b.data(), 49);
        for (int i = 0; i < 49; ++i) {
            if (std::isnan(a[i]) || a[i] == before[i])
                ASSERT_TRUE(test::sameElement<Nox32f>(b[i], before[i])) << i;
            else if (std::isnan(before[i]))
                ASSERT_TRUE(std::isnan(b[i])) << i;
            else
                ASSERT_EQ(b[i], entry.pick(a[i], before[i])) << i;
        }
    }
}

/// srcDst `distance` elements behind or before src in the same memory.
template <class T>
void expectAscendingOrder(const Entry<T> &entry) {
    test::Random random(2);
    for (const int distance : {-40, -9, -1, 0, 1, 3, 8, 31, 64})
        for (const int length : {1, 9, 50, 130}) {
            Vector<T> actual(300);
            test::randomize(actual, random);
            const Vector<T> expected(actual);
            const int first = 80, second = first + distance;
            for (int i = 0; i < length; ++i)
                expected[second + i] = entry.pick(expected[first + i], expected[second + i]);
            entry.inPlace(actual.data() + first, actual.data() + second, length);
            ASSERT_TRUE(test::sameVector(actual, expected)) << distance << " " << length;
            const int third = second + 2;
            for (int i = 0; i < length; ++i)
                expected[third + i] = entry.pick(expected[first + i], expected[second + i]);
            entry.fromTwo(actual.data() + first, actual.data() + second, actual.data() + third, length);
            ASSERT_TRUE(test::sameVector(actual, expected)) << distance << " " << length;
        }
}

TEST(MinMaxEvery, OverlappingRangesGoInAscendingOrder) {
    for (const auto &entry : bytes)
        expectAscendingOrder(entry);
    for (const auto &entry : floats)
        expectAscendingOrder(entry);
}

template <class T>
void expectStatuses(const Entry<T> &entry) {
    T a = 1, b = 2;
    EXPECT_EQ(entry.inPlace(nullptr, &b, 0), noxStsNullPointer);
    EXPECT_EQ(entry.inPlace(&a, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(entry.inPlace(&a, &b, 0), noxStsBadSize);
    EXPECT_EQ(entry.inPlace(&a, &b, -1), noxStsBadSize);
    // The forms from two sources test nothing.
    EXPECT_EQ(entry.fromTwo(&a, &b, &b, 0), noxStsNoError);
    EXPECT_EQ(entry.fromTwo(nullptr, nullptr, nullptr, -1), noxStsNoError);
    EXPECT_EQ(a, T(1));
    EXPECT_EQ(b, T(2));
}

TEST(MinMaxEvery, StatusesInOrder) {
    for (const auto &entry : bytes)
        expectStatuses(entry);
    for (const auto &entry : floats)
        expectStatuses(entry);
}

} // namespace
