#include <cmath>
#include <limits>

#include "edges/noxvabsdiff.h"
#include "noxcv.h"
#include "reference/absdiff.h"
#include "support/image.h"

using test::Image;

namespace {

template <class T>
struct Member;

#define MEMBER(TYPE, TAG, VALUE)                                                                                       \
    template <>                                                                                                        \
    struct Member<TYPE> {                                                                                              \
        using Value = VALUE;                                                                                           \
        static constexpr auto absDiff = noxiAbsDiff_##TAG##_C1R;                                                       \
        static constexpr auto absDiffC = noxiAbsDiffC_##TAG##_C1R;                                                     \
    };
MEMBER(Nox8u, 8u, int)
MEMBER(Nox16u, 16u, int)
MEMBER(Nox32f, 32f, Nox32f)
#undef MEMBER

template <class T>
class AbsDiff : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox16u, Nox32f>;
TYPED_TEST_SUITE(AbsDiff, Elements);

TYPED_TEST(AbsDiff, EqualsReferenceOnAllSizes) {
    using T = TypeParam;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<T>()) {
            Image<T> a(size.width, size.height, 1, padding), b(size.width, size.height),
                actual(size.width, size.height, 1, padding), expected(actual);
            test::randomize(a, random);
            test::randomize(b, random);
            reference::absdiff::absDiff(a.data(), a.step(), b.data(), b.step(), expected.data(), expected.step(), size);
            ASSERT_EQ(Member<T>::absDiff(a.data(), a.step(), b.data(), b.step(), actual.data(), actual.step(), size),
                      noxStsNoError);
            ASSERT_TRUE(test::sameImage(actual, expected));
        }
}

TYPED_TEST(AbsDiff, ConstantFormEqualsReference) {
    using T = TypeParam;
    test::Random random(2);
    for (const NoxiSize size : test::testSizes()) {
        Image<T> a(size.width, size.height), actual(size.width, size.height, 1, sizeof(T)), expected(actual);
        test::randomize(a, random);
        const T value = test::randomElement<T>(random);
        expected.generate([&](int x, int y, int) { return reference::absdiff::absDiff<T>(a.at(x, y), value); });
        ASSERT_EQ(Member<T>::absDiffC(a.data(), a.step(), actual.data(), actual.step(), size, value), noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, expected));
    }
}

TYPED_TEST(AbsDiff, WorksInPlace) {
    using T = TypeParam;
    test::Random random(3);
    Image<T> a(67, 5), b(67, 5), expected(67, 5);
    test::randomize(a, random);
    test::randomize(b, random);
    reference::absdiff::absDiff(a.data(), a.step(), b.data(), b.step(), expected.data(), expected.step(), a.roi());
    Member<T>::absDiff(a.data(), a.step(), b.data(), b.step(), a.data(), a.step(), a.roi());
    EXPECT_TRUE(test::sameImage(a, expected));
}

TYPED_TEST(AbsDiff, StatusesInOrder) {
    using T = TypeParam;
    const auto call = Member<T>::absDiff;
    const auto callC = Member<T>::absDiffC;
    Image<T> a(4, 2), d(4, 2);
    const int row = a.step(), small = row - 1;
    const NoxiSize roi = a.roi(), empty = {0, 2}, flat = {4, 0};
    EXPECT_EQ(call(nullptr, small, a.data(), row, d.data(), row, empty), noxStsNullPointer);
    EXPECT_EQ(call(a.data(), row, nullptr, row, d.data(), row, roi), noxStsNullPointer);
    EXPECT_EQ(call(a.data(), row, a.data(), row, nullptr, row, roi), noxStsNullPointer);
    EXPECT_EQ(call(a.data(), small, a.data(), row, d.data(), row, empty), noxStsBadSize);
    EXPECT_EQ(call(a.data(), row, a.data(), row, d.data(), row, flat), noxStsBadSize);
    EXPECT_EQ(call(a.data(), small, a.data(), row, d.data(), row, roi), noxStsBadStep);
    EXPECT_EQ(call(a.data(), row, a.data(), -row, d.data(), row, roi), noxStsBadStep);
    EXPECT_EQ(call(a.data(), row, a.data(), row, d.data(), 0, roi), noxStsBadStep);
    EXPECT_EQ(callC(nullptr, row, d.data(), row, empty, 1), noxStsNullPointer);
    EXPECT_EQ(callC(a.data(), row, nullptr, row, roi, 1), noxStsNullPointer);
    EXPECT_EQ(callC(a.data(), small, d.data(), row, empty, 1), noxStsBadSize);
    EXPECT_EQ(callC(a.data(), row, d.data(), small, roi, 1), noxStsBadStep);
    const NoxStatus odd = sizeof(T) == 1 ? noxStsNoError : noxStsOddStep;
    Image<T> wide(5, 2);
    EXPECT_EQ(call(wide.data(), row + 1, wide.data(), row, wide.data(), row, {4, 1}), odd);
    EXPECT_EQ(call(wide.data(), row, wide.data(), row, wide.data(), row + 1, {4, 1}), odd);
    EXPECT_EQ(callC(wide.data(), row, wide.data(), row + 1, {4, 1}, 1), odd);
    // All steps are tested for their size before any is tested for its low bits.
    EXPECT_EQ(callC(wide.data(), row + 1, wide.data(), small, {4, 1}, 1), noxStsBadStep);
    EXPECT_EQ(callC(wide.data(), small, wide.data(), row + 1, {4, 1}, 1), noxStsBadStep);
    EXPECT_EQ(call(wide.data(), row + 1, wide.data(), small, wide.data(), row, {4, 1}), noxStsBadStep);
    EXPECT_EQ(call(wide.data(), row + 1, wide.data(), row, wide.data(), small, {4, 1}), noxStsBadStep);
    EXPECT_EQ(call(wide.data(), row, wide.data(), row + 1, wide.data(), small, {4, 1}), noxStsBadStep);
    // A step that is odd and too small is too small.
    EXPECT_EQ(call(a.data(), small, a.data(), row, d.data(), row, roi), noxStsBadStep);
}

TYPED_TEST(AbsDiff, BadCallsWriteNothing) {
    using T = TypeParam;
    Image<T> a(9, 3), d(9, 3, 1, sizeof(T));
    a.fill(T(1));
    d.fill(T(77));
    const Image<T> before(d);
    Member<T>::absDiff(a.data(), a.step(), a.data(), 3, d.data(), d.step(), a.roi());
    Member<T>::absDiffC(a.data(), 3, d.data(), d.step(), a.roi(), 5);
    EXPECT_TRUE(test::sameImage(d, before));
}

TEST(AbsDiffC, IntegerValueIsClamped) {
    Image<Nox8u> a(70, 2), d(70, 2);
    a.generate([](int x, int y, int) { return x * 3 + y; });
    noxiAbsDiffC_8u_C1R(a.data(), a.step(), d.data(), d.step(), a.roi(), -5);
    EXPECT_TRUE(test::sameImage(d, a));
    noxiAbsDiffC_8u_C1R(a.data(), a.step(), d.data(), d.step(), a.roi(), 300);
    for (int x = 0; x < 70; ++x)
        ASSERT_EQ(d.at(x, 1), 255 - a.at(x, 1));
    Image<Nox16u> wide(9, 1), result(9, 1);
    wide.generate([](int x, int, int) { return x * 8000; });
    noxiAbsDiffC_16u_C1R(wide.data(), wide.step(), result.data(), result.step(), wide.roi(), 70000);
    for (int x = 0; x < 9; ++x)
        ASSERT_EQ(result.at(x, 0), 65535 - wide.at(x, 0));
    noxiAbsDiffC_16u_C1R(wide.data(), wide.step(), result.data(), result.step(), wide.roi(), -70000);
    EXPECT_TRUE(test::sameImage(result, wide));
}

TEST(AbsDiff32f, SpecialValues) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    Image<Nox32f> a(20, 1), b(20, 1), d(20, 1);
    a.generate([&](int x, int, int) { return x % 3 == 0 ? infinity : x % 3 == 1 ? -nan : 0.0F; });
    b.generate([&](int x, int, int) { return x % 3 == 0 ? infinity : 1.0F; });
    noxiAbsDiff_32f_C1R(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), a.roi());
    for (int x = 0; x < 20; ++x) {
        ASSERT_FALSE(std::signbit(d.at(x, 0))) << x;
        if (x % 3 == 2)
            ASSERT_EQ(d.at(x, 0), 1.0F);
        else
            ASSERT_TRUE(std::isnan(d.at(x, 0))) << x;
    }
}

TEST(AbsDiffKernel, TakesTheEntrysArguments) {
    Image<Nox8u> a(37, 3), b(37, 3), actual(37, 3), expected(37, 3);
    test::Random random(4);
    test::randomize(a, random);
    test::randomize(b, random);
    reference::absdiff::absDiff(a.data(), a.step(), b.data(), b.step(), expected.data(), expected.step(), a.roi());
    ownAbsDiff_8u_C1R_A6(a.data(), a.step(), b.data(), b.step(), actual.data(), actual.step(), 37, 3);
    EXPECT_TRUE(test::sameImage(actual, expected));
}

} // namespace
