#include <cstring>
#include <functional>
#include <vector>

#include "noxcv.h"
#include "support/vector.h"

using test::Vector;

namespace {

template <class T>
using CopyEntry = NoxStatus (*)(const T *, T *, int);
template <class T>
using SetEntry = NoxStatus (*)(T, T *, int);
template <class T>
using ZeroEntry = NoxStatus (*)(T *, int);

/// Lengths about the sizes at which the kind of stores may change.
std::vector<int> lengthsOf(int elementSize) {
    std::vector<int> lengths = test::testLengths();
    for (const int bytes : {8192, 16384, 20480, 1 << 20})
        for (const int extra : {-1, 0, 1})
            lengths.push_back(bytes / elementSize + extra);
    return lengths;
}

template <class T>
void expectCopies(CopyEntry<T> copy) {
    test::Random random(1);
    for (const int length : lengthsOf(sizeof(T)))
        for (const int shift : test::testShifts()) {
            Vector<T> src(length, shift), actual(length, 7 - shift % 7), expected(length);
            auto *bytes = reinterpret_cast<Nox8u *>(src.data());
            for (std::size_t i = 0; i < length * sizeof(T); ++i)
                bytes[i] = static_cast<Nox8u>(random());
            ASSERT_EQ(copy(src.data(), actual.data(), length), noxStsNoError);
            ASSERT_EQ(std::memcmp(actual.data(), src.data(), length * sizeof(T)), 0) << length;
            ASSERT_TRUE(actual.gapsIntact());
        }
    T element{}, *null = nullptr;
    EXPECT_EQ(copy(null, &element, 0), noxStsNullPointer);
    EXPECT_EQ(copy(&element, null, 0), noxStsNullPointer);
    EXPECT_EQ(copy(&element, &element, 0), noxStsBadSize);
    EXPECT_EQ(copy(&element, &element, -1), noxStsBadSize);
}

TEST(Copy, CopiesBitPatterns) {
    expectCopies<Nox8u>(noxsCopy_8u);
    expectCopies<Nox32f>(noxsCopy_32f);
}

/// Not promised to callers; but in-place use by a few bytes must not begin to depend on the length of a row.
TEST(Copy, OverlappingBytesArriveAsTheyWere) {
    test::Random random(2);
    for (const int length : {31, 64, 100, 129, 200, 1000})
        for (int distance = -length; distance <= length; ++distance) {
            std::vector<Nox8u> bytes(3 * length), expected;
            for (Nox8u &byte : bytes)
                byte = static_cast<Nox8u>(random());
            expected = bytes;
            std::memmove(expected.data() + length + distance, expected.data() + length, length);
            ASSERT_EQ(noxsCopy_8u(bytes.data() + length, bytes.data() + length + distance, length), noxStsNoError);
            ASSERT_EQ(bytes, expected) << length << " bytes by " << distance;
        }
}

template <class T>
void expectSets(const std::function<NoxStatus(T *, int)> &set, T value) {
    for (const int length : lengthsOf(sizeof(T)))
        for (const int shift : test::testShifts()) {
            Vector<T> actual(length, shift), expected(length);
            expected.generate([&](int) { return value; });
            ASSERT_EQ(set(actual.data(), length), noxStsNoError);
            ASSERT_TRUE(test::sameVector(actual, expected));
        }
    T element = T(77);
    EXPECT_EQ(set(nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(set(&element, 0), noxStsBadSize);
    EXPECT_EQ(set(&element, -3), noxStsBadSize);
    EXPECT_EQ(element, T(77));
}

template <class T>
void expectSets(SetEntry<T> set, T value) {
    expectSets<T>([=](T *dst, int length) { return set(value, dst, length); }, value);
}

TEST(Set, SetsEveryElement) {
    expectSets<Nox8u>(noxsSet_8u, 0);
    expectSets<Nox8u>(noxsSet_8u, 0xC3);
    expectSets<Nox32f>(noxsSet_32f, -1.7F);
    expectSets<Nox32f>(noxsSet_32f, -0.0F);
    expectSets<Nox32f>(noxsSet_32f, std::numeric_limits<Nox32f>::infinity());
}

TEST(Zero, ZeroesEveryElement) {
    expectSets<Nox8u>(noxsZero_8u, 0);
    expectSets<Nox16s>(noxsZero_16s, 0);
    expectSets<Nox32s>(noxsZero_32s, 0);
    expectSets<Nox32f>(noxsZero_32f, 0.0F);
}

TEST(Set, KeepsThePayloadOfANotANumber) {
    const auto value = std::bit_cast<Nox32f>(0x7fc12345U);
    Vector<Nox32f> actual(37);
    noxsSet_32f(value, actual.data(), 37);
    for (int i = 0; i < 37; ++i)
        ASSERT_EQ(std::bit_cast<Nox32u>(Nox32f(actual[i])), 0x7fc12345U);
}

} // namespace
