#include <algorithm>
#include <cmath>

#include "noxcv.h"
#include "ownprimitives.h"
#include "reference/elementwise.h"
#include "support/image.h"

using test::Image;

namespace {

TEST(ThresholdVal, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<Nox8u>())
            for (const int compare : {noxCmpLess, noxCmpGreater}) {
                const auto threshold = static_cast<Nox8u>(random()), value = static_cast<Nox8u>(random());
                Image<Nox8u> src(size.width, size.height, 1, padding), actual(size.width, size.height, 1, 13 - padding),
                    expected(size.width, size.height);
                test::randomize(src, random);
                expected.generate([&](int x, int y, int) {
                    return reference::elementwise::thresholdValue(src.at(x, y), threshold, value, compare);
                });
                ASSERT_EQ(noxiThreshold_Val_8u_C1R(src.data(), src.step(), actual.data(), actual.step(), size,
                                                   threshold, value, compare),
                          noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected));
            }
}

TEST(ThresholdVal, EveryPixelAtEveryThreshold) {
    Image<Nox8u> src(256, 1), actual(256, 1);
    src.generate([](int x, int, int) { return x; });
    for (int threshold = 0; threshold < 256; ++threshold)
        for (const int compare : {noxCmpLess, noxCmpGreater}) {
            noxiThreshold_Val_8u_C1R(src.data(), src.step(), actual.data(), actual.step(), src.roi(),
                                     static_cast<Nox8u>(threshold), 99, compare);
            for (int x = 0; x < 256; ++x)
                ASSERT_EQ(actual.at(x, 0), (compare == noxCmpLess ? x < threshold : x > threshold) ? 99 : x);
        }
}

TEST(ThresholdVal, GreaterFormsAndInPlace) {
    test::Random random(2);
    for (const NoxiSize size : {NoxiSize{1, 1}, {7, 2}, {100, 9}, {301, 4}}) {
        Image<Nox8u> src(size.width, size.height, 1, 3), actual(size.width, size.height),
            expected(size.width, size.height);
        test::randomize(src, random);
        expected.generate([&](int x, int y, int) {
            return reference::elementwise::thresholdValue(src.at(x, y), 100, 7, noxCmpGreater);
        });
        ASSERT_EQ(noxiThreshold_GTVal_8u_C1R(src.data(), src.step(), actual.data(), actual.step(), size, 100, 7),
                  noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, expected));
        ASSERT_EQ(noxiThreshold_GTVal_8u_C1IR(src.data(), src.step(), size, 100, 7), noxStsNoError);
        ASSERT_TRUE(test::sameImage(src, expected));
    }
}

TEST(ThresholdVal, KernelTakesAFlagForGreater) {
    Image<Nox8u> src(50, 2), actual(50, 2);
    src.generate([](int x, int y, int) { return 5 * x + y; });
    for (const int greater : {0, 1, -3}) {
        ownnoxiThreshold_V_8u_C1(src.data(), src.step(), actual.data(), actual.step(), 50, 2, 120, 9, greater);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 50; ++x)
                ASSERT_EQ(actual.at(x, y), reference::elementwise::thresholdValue(
                                               src.at(x, y), 120, 9, greater != 0 ? noxCmpGreater : noxCmpLess));
    }
}

/// Pixels with every kind of special value among them.
Nox32f specialPixel(int i, test::Random &random) {
    const Nox32f nan = std::numeric_limits<Nox32f>::quiet_NaN(), infinity = std::numeric_limits<Nox32f>::infinity();
    const Nox32f values[] = {nan, -nan, infinity, -infinity, 0.0F, -0.0F, 100.0F};
    return i % 3 == 0 ? values[random() % 7] : test::randomElement<Nox32f>(random);
}

TEST(Threshold32f, EqualsReferenceOnAllSizes) {
    test::Random random(3);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 4, 22})
            for (const Nox32f threshold : {100.0F, -7.5F, 0.0F, -0.0F})
                for (const int compare : {noxCmpLess, noxCmpGreater}) {
                    Image<Nox32f> src(size.width, size.height, 1, padding),
                        actual(size.width, size.height, 1, 22 - padding), expected(size.width, size.height);
                    src.generate([&](int x, int, int) { return specialPixel(x, random); });
                    expected.generate([&](int x, int y, int) {
                        return reference::elementwise::threshold(src.at(x, y), threshold, compare);
                    });
                    ASSERT_EQ(noxiThreshold_32f_C1R(src.data(), src.step(), actual.data(), actual.step(), size,
                                                    threshold, compare),
                              noxStsNoError);
                    ASSERT_TRUE(test::sameImage(actual, expected));
                }
}

TEST(Threshold32f, LessFormsAndInPlace) {
    test::Random random(4);
    for (const NoxiSize size : {NoxiSize{1, 1}, {7, 2}, {100, 9}, {301, 4}}) {
        Image<Nox32f> src(size.width, size.height, 1, 5), actual(size.width, size.height),
            expected(size.width, size.height);
        src.generate([&](int x, int, int) { return specialPixel(x, random); });
        expected.generate(
            [&](int x, int y, int) { return reference::elementwise::threshold(src.at(x, y), 3.5F, noxCmpLess); });
        ASSERT_EQ(noxiThreshold_LT_32f_C1R(src.data(), src.step(), actual.data(), actual.step(), size, 3.5F),
                  noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, expected));
        ASSERT_EQ(noxiThreshold_LT_32f_C1IR(src.data(), src.step(), size, 3.5F), noxStsNoError);
        ASSERT_TRUE(test::sameImage(src, expected));
        for (int x = 0; x < size.width; ++x)
            ASSERT_FALSE(std::isnan(src.at(x, 0)));
    }
}

TEST(Threshold, StepsNeedNotHoldARow) {
    test::Random random(5);
    for (const int step : {1, 3, 17}) {
        Image<Nox8u> src(100, 1), actual(100, 1), expected(actual);
        test::randomize(src, random);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 40; ++x)
                expected.at(y * step + x, 0) =
                    reference::elementwise::thresholdValue(src.at(y * step + x, 0), 128, 0, noxCmpGreater);
        EXPECT_EQ(noxiThreshold_GTVal_8u_C1R(src.data(), step, actual.data(), step, {40, 4}, 128, 0), noxStsNoError);
        EXPECT_TRUE(test::sameImage(actual, expected)) << step;
    }
    // Rows of floats at odd addresses.
    Image<Nox32f> src(9, 4, 1, 1), actual(9, 4, 1, 3), expected(9, 4);
    src.generate([](int x, int y, int) { return x - y; });
    expected.generate([](int x, int y, int) { return std::max(x - y, 2); });
    EXPECT_EQ(noxiThreshold_LT_32f_C1R(src.data(), src.step(), actual.data(), actual.step(), src.roi(), 2.0F),
              noxStsNoError);
    EXPECT_TRUE(test::sameImage(actual, expected));
}

TEST(Threshold, StatusesInOrder) {
    Nox8u byte = 200;
    const auto val = [&](const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, int compare) {
        return noxiThreshold_Val_8u_C1R(src, srcStep, dst, dstStep, roi, 100, 0, compare);
    };
    // The operator comes first here ...
    EXPECT_EQ(val(nullptr, 0, &byte, 0, {0, 0}, 1), noxStsUnsupportedMode);
    EXPECT_EQ(val(&byte, 1, &byte, 1, {1, 1}, 2), noxStsUnsupportedMode);
    EXPECT_EQ(val(&byte, 1, &byte, 1, {1, 1}, -1), noxStsUnsupportedMode);
    EXPECT_EQ(val(nullptr, 0, &byte, 0, {0, 0}, 4), noxStsNullPointer);
    EXPECT_EQ(val(&byte, 0, nullptr, 0, {0, 0}, 0), noxStsNullPointer);
    EXPECT_EQ(val(&byte, 0, &byte, 0, {0, 1}, 0), noxStsBadSize);
    EXPECT_EQ(val(&byte, 0, &byte, 0, {1, 0}, 0), noxStsBadSize);
    EXPECT_EQ(val(&byte, 0, &byte, 1, {1, 1}, 4), noxStsBadStep);
    EXPECT_EQ(val(&byte, 1, &byte, -1, {1, 1}, 4), noxStsBadStep);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1R(nullptr, 0, &byte, 0, {0, 0}, 1, 0), noxStsNullPointer);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1R(&byte, 0, &byte, 0, {0, 0}, 1, 0), noxStsBadSize);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1R(&byte, 1, &byte, 0, {1, 1}, 1, 0), noxStsBadStep);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1IR(nullptr, 0, {0, 0}, 1, 0), noxStsNullPointer);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1IR(&byte, 0, {1, -1}, 1, 0), noxStsBadSize);
    EXPECT_EQ(noxiThreshold_GTVal_8u_C1IR(&byte, 0, {1, 1}, 1, 0), noxStsBadStep);
    EXPECT_EQ(byte, 200);

    // ... and last here.
    Nox32f pixel = 200;
    const auto plain = [&](const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi, int compare) {
        return noxiThreshold_32f_C1R(src, srcStep, dst, dstStep, roi, 300.0F, compare);
    };
    EXPECT_EQ(plain(nullptr, 0, &pixel, 0, {0, 0}, 1), noxStsNullPointer);
    EXPECT_EQ(plain(&pixel, 0, nullptr, 0, {0, 0}, 1), noxStsNullPointer);
    EXPECT_EQ(plain(&pixel, 0, &pixel, 0, {0, 1}, 1), noxStsBadSize);
    EXPECT_EQ(plain(&pixel, 0, &pixel, 4, {1, 1}, 1), noxStsBadStep);
    EXPECT_EQ(plain(&pixel, 4, &pixel, -4, {1, 1}, 1), noxStsBadStep);
    EXPECT_EQ(plain(&pixel, 4, &pixel, 4, {1, 1}, 1), noxStsUnsupportedMode);
    EXPECT_EQ(noxiThreshold_LT_32f_C1R(nullptr, 0, &pixel, 0, {0, 0}, 300.0F), noxStsNullPointer);
    EXPECT_EQ(noxiThreshold_LT_32f_C1R(&pixel, 0, &pixel, 0, {0, 0}, 300.0F), noxStsBadSize);
    EXPECT_EQ(noxiThreshold_LT_32f_C1R(&pixel, 0, &pixel, 1, {1, 1}, 300.0F), noxStsBadStep);
    EXPECT_EQ(noxiThreshold_LT_32f_C1IR(nullptr, 0, {0, 0}, 300.0F), noxStsNullPointer);
    EXPECT_EQ(noxiThreshold_LT_32f_C1IR(&pixel, 0, {0, 1}, 300.0F), noxStsBadSize);
    EXPECT_EQ(noxiThreshold_LT_32f_C1IR(&pixel, 0, {1, 1}, 300.0F), noxStsBadStep);
    EXPECT_EQ(pixel, 200.0F);
}

} // namespace
