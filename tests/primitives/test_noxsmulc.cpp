#include <cmath>

#include "noxcv.h"
#include "reference/elementwise.h"
#include "support/vector.h"

using test::Vector;

namespace {

TEST(MulC16s, EqualsReferenceAtEveryScale) {
    test::Random random(1);
    for (int scale = -18; scale <= 33; ++scale)
        for (const int length : {1, 3, 6, 7, 11, 18, 19, 40, 257})
            for (const int shift : {0, 1, 2, 6}) {
                const Nox16s value = test::randomElement<Nox16s>(random);
                Vector<Nox16s> actual(length, shift), expected(length);
                test::randomize(actual, random);
                if (random() % 2 == 0) // small products, so that roundings and shifts do not all end in a clamp
                    actual.generate([&](int i) { return actual[i] % 64; });
                expected.generate([&](int i) { return reference::elementwise::mulC(value, actual[i], scale); });
                ASSERT_EQ(noxsMulC_16s_ISfs(value, actual.data(), length, scale), noxStsNoError);
                ASSERT_TRUE(test::sameVector(actual, expected)) << value << " scale " << scale;
            }
}

Vector<Nox16s> everyElement() {
    Vector<Nox16s> all(65536);
    all.generate([](int i) { return i - 32768; });
    return all;
}

TEST(MulC16sFull, EveryElementWithManyValues) {
    for (const int value : {-32768, -32767, -1000, -257, -3, -2, -1, 0, 1, 2, 3, 5, 255, 1000, 16384, 32767})
        for (const int scale : {-17, -16, -15, -14, -7, -1, 0, 1, 2, 3, 9, 15, 16, 29, 30, 31}) {
            const Vector<Nox16s> actual = everyElement(), expected = everyElement();
            for (int i = 0; i < expected.length(); ++i)
                expected[i] = reference::elementwise::mulC(static_cast<Nox16s>(value), expected[i], scale);
            noxsMulC_16s_ISfs(static_cast<Nox16s>(value), actual.data(), actual.length(), scale);
            ASSERT_TRUE(test::sameVector(actual, expected)) << value << " scale " << scale;
        }
}

Nox16s multiplied(Nox16s element, Nox16s value, int scale) {
    noxsMulC_16s_ISfs(value, &element, 1, scale);
    return element;
}

TEST(MulC16s, EdgeCases) {
    EXPECT_EQ(multiplied(1000, 1000, -1), 32767);
    EXPECT_EQ(multiplied(3, 1, 1), 2);
    EXPECT_EQ(multiplied(1, 1, 1), 0);
    EXPECT_EQ(multiplied(5, 1, 1), 2);
    EXPECT_EQ(multiplied(-3, 1, 1), -2);
    EXPECT_EQ(multiplied(5, -2, -16), -32768);
    EXPECT_EQ(multiplied(0, -2, -16), 0);
    EXPECT_EQ(multiplied(-32768, -32768, 30), 1);
    EXPECT_EQ(multiplied(-32768, -32768, 31), 0);
    EXPECT_EQ(multiplied(-32768, -32768, 0), 32767);
    for (const int scale : {-2147483647 - 1, -16, -1, 0, 1, 30, 31, 2147483647})
        EXPECT_EQ(multiplied(77, 0, scale), 0) << scale;
    EXPECT_EQ(multiplied(77, 1, 2147483647), 0);
    EXPECT_EQ(multiplied(77, 1, -2147483647 - 1), 32767);
}

TEST(MulC16s, StatusesInOrder) {
    Nox16s element = 7;
    EXPECT_EQ(noxsMulC_16s_ISfs(0, nullptr, 0, 0), noxStsNullPointer);
    EXPECT_EQ(noxsMulC_16s_ISfs(0, &element, 0, 31), noxStsBadSize);
    EXPECT_EQ(noxsMulC_16s_ISfs(3, &element, -1, 0), noxStsBadSize);
    EXPECT_EQ(element, 7);
}

TEST(MulC32f, EqualsReference) {
    test::Random random(2);
    for (const int length : test::testLengths())
        for (const int shift : test::testShifts()) {
            const Nox32f value = test::randomElement<Nox32f>(random);
            Vector<Nox32f> actual(length, shift), expected(length);
            test::randomize(actual, random);
            expected.generate([&](int i) { return value == 0 ? 0.0F : actual[i] * value; }); // +0, whatever stood there
            ASSERT_EQ(noxsMulC_32f_I(value, actual.data(), length), noxStsNoError);
            ASSERT_TRUE(test::sameVector(actual, expected));
        }
}

TEST(MulC32f, SpecialValues) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    const Nox32f elements[] = {nan, infinity, -0.0F, 3.0F, std::numeric_limits<Nox32f>::denorm_min()};
    const auto make = [&] {
        Vector<Nox32f> vector(35);
        vector.generate([&](int i) { return elements[i % 5]; });
        return vector;
    };
    for (const Nox32f value : {1.0F, nan, -nan}) {
        const Vector<Nox32f> actual = make();
        EXPECT_EQ(noxsMulC_32f_I(value, actual.data(), 35), noxStsNoError);
        EXPECT_TRUE(test::sameVector(actual, make())) << value;
    }
    for (const Nox32f value : {0.0F, -0.0F}) {
        const Vector<Nox32f> actual = make();
        EXPECT_EQ(noxsMulC_32f_I(value, actual.data(), 35), noxStsNoError);
        for (int i = 0; i < 35; ++i)
            ASSERT_EQ(std::bit_cast<Nox32u>(Nox32f(actual[i])), 0U) << i;
    }
    const Vector<Nox32f> actual = make();
    noxsMulC_32f_I(infinity, actual.data(), 35);
    EXPECT_TRUE(std::isnan(actual[2]));
    EXPECT_EQ(actual[3], infinity);
}

TEST(MulC32f, StatusesInOrder) {
    Nox32f element = 7;
    EXPECT_EQ(noxsMulC_32f_I(1.0F, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxsMulC_32f_I(1.0F, &element, 0), noxStsBadSize);
    EXPECT_EQ(noxsMulC_32f_I(0.0F, &element, -1), noxStsBadSize);
    EXPECT_EQ(element, 7.0F);
}

TEST(Convert, EveryElementIsExact) {
    for (const int shift : {0, 1, 2, 4, 7}) {
        Vector<Nox16u> src(65536, shift);
        Vector<Nox32f> dst(65536, 7 - shift);
        src.generate([](int i) { return i; });
        ASSERT_EQ(noxsConvert_16u32f(src.data(), dst.data(), 65536), noxStsNoError);
        for (int i = 0; i < 65536; ++i)
            ASSERT_EQ(dst[i], static_cast<Nox32f>(i));
        ASSERT_TRUE(dst.gapsIntact());
    }
    for (const int length : test::testLengths()) {
        Vector<Nox16u> src(length);
        Vector<Nox32f> dst(length), expected(length);
        src.generate([](int i) { return 65535 - i; });
        expected.generate([](int i) { return 65535 - i; });
        noxsConvert_16u32f(src.data(), dst.data(), length);
        ASSERT_TRUE(test::sameVector(dst, expected));
    }
}

TEST(Convert, StatusesInOrder) {
    Nox16u src = 1;
    Nox32f dst = 7;
    EXPECT_EQ(noxsConvert_16u32f(nullptr, &dst, 0), noxStsNullPointer);
    EXPECT_EQ(noxsConvert_16u32f(&src, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxsConvert_16u32f(&src, &dst, 0), noxStsBadSize);
    EXPECT_EQ(dst, 7.0F);
}

} // namespace
