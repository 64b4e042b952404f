
#include <algorithm>
#include <cmath>

#include "noxcv.h"
#include "reference/canny.h"
#include "support/image.h"

using test::Image;

namespace {

NoxStatus toGray(const Nox8u *s, int ss, Nox8u *d, int ds, NoxiSize roi, int norm) {
    return noxiGradientColorToGray_8u_C3C1R(s, ss, d, ds, roi, norm);
}
NoxStatus toGray(const Nox16u *s, int ss, Nox16u *d, int ds, NoxiSize roi, int norm) {
    return noxiGradientColorToGray_16u_C3C1R(s, ss, d, ds, roi, norm);
}
NoxStatus toGray(const Nox32f *s, int ss, Nox32f *d, int ds, NoxiSize roi, int norm) {
    return noxiGradientColorToGray_32f_C3C1R(s, ss, d, ds, roi, norm);
}

template <class T>
class ColorGradient : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox16u, Nox32f>;
TYPED_TEST_SUITE(ColorGradient, Elements);

TYPED_TEST(ColorGradient, EqualsReferenceOnAllSizes) {
    using T = TypeParam;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<T>())
            for (int norm = 0; norm < 3; ++norm) {
                Image<T> src(size.width, size.height, 3, padding);
                Image<T> actual(size.width, size.height, 1, padding), expected(size.width, size.height, 1, padding);
                test::randomize(src, random);
                expected.generate([&](int x, int y, int) {
                    return reference::canny::colorToGray(src.at(x, y, 0), src.at(x, y, 1), src.at(x, y, 2), norm);
                });
                ASSERT_EQ(toGray(src.data(), src.step(), actual.data(), actual.step(), size, norm), noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected)) << "norm " << norm;
            }
}

TYPED_TEST(ColorGradient, StatusesInOrder) {
    using T = TypeParam;
    Image<T> src(4, 2, 3), dst(4, 2);
    dst.fill(3);
    const Image<T> before(dst);
    const int s = src.step(), d = dst.step();
    const NoxiSize roi = dst.roi();
    EXPECT_EQ(toGray(nullptr, 0, dst.data(), d, {0, 0}, 7), noxStsNullPointer);
    EXPECT_EQ(toGray(src.data(), 0, nullptr, d, {0, 0}, 7), noxStsNullPointer);
    EXPECT_EQ(toGray(src.data(), 0, dst.data(), d, {0, 2}, 7), noxStsBadSize);
    EXPECT_EQ(toGray(src.data(), s - 1, dst.data(), d, roi, 7), noxStsBadStep);
    EXPECT_EQ(toGray(src.data(), s, dst.data(), d - 1, roi, 7), noxStsBadStep);
    if (sizeof(T) > 1) {
        EXPECT_EQ(toGray(src.data(), s + 1, dst.data(), d, roi, 7), noxStsOddStep);
        EXPECT_EQ(toGray(src.data(), s, dst.data(), d + 1, roi, 7), noxStsOddStep);
    }
    EXPECT_EQ(toGray(src.data(), s, dst.data(), d, roi, 3), noxStsBadArgument);
    EXPECT_EQ(toGray(src.data(), s, dst.data(), d, roi, -1), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(dst, before));
}

TEST(ColorGradient16u, SquaresOfChannelsOneAndTwoWrap) {
    Image<Nox16u> src(3, 1, 3), dst(3, 1);
    src.generate([](int x, int, int c) {
        return x == 0 ? (c == 0 ? 65535 : 0) : x == 1 ? (c == 1 ? 46341 : 0) : 46340;
    });
    ASSERT_EQ(toGray(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 2), noxStsNoError);
    EXPECT_EQ(dst.at(0, 0), 37837); // 65535 / sqrt(3)
    EXPECT_EQ(dst.at(1, 0), 0);     // 46341^2 is negative as a signed number
    EXPECT_EQ(dst.at(2, 0), 46340);
}

TEST(ColorGradient8uFull, EverySumOfSquares) {
    // All triples: the single-precision root must round like the extended one.
    Image<Nox8u> src(256, 256, 3), dst(256, 256);
    for (int a = 0; a < 256; ++a) {
        src.generate([a](int x, int y, int c) { return c == 0 ? a : c == 1 ? x : y; });
        toGray(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 2);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 256; ++x)
                ASSERT_EQ(dst.at(x, y), reference::canny::colorToGray(Nox8u(a), Nox8u(x), Nox8u(y), 2));
    }
}

TEST(ColorGradient16uFull, RootsNextToHalfIntegers) {
    // Sums a^2 + b^2 (+ c^2) next to three times the square of a half integer.
    Image<Nox16u> src(1, 1, 3), dst(1, 1);
    for (int k = 0; k < 37000; ++k) {
        const double sum = 3.0 * (k + 0.5) * (k + 0.5);
        const auto a = static_cast<Nox16u>(std::min(65535.0, std::sqrt(sum)));
        const double rest = sum - double(a) * a;
        const auto b = static_cast<Nox16u>(std::sqrt(std::max(0.0, rest)));
        for (int c = 0; c < 4; ++c) {
            src.at(0, 0, 0) = a;
            src.at(0, 0, 1) = b;
            src.at(0, 0, 2) = static_cast<Nox16u>(c);
            toGray(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 2);
            ASSERT_EQ(dst.at(0, 0), reference::canny::colorToGray(a, b, Nox16u(c), 2)) << a << " " << b << " " << c;
        }
    }
}

} // namespace
