// Watersheds and growth along gradients against plain queues and relaxed costs.
#include <climits>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/segments.h"
#include "reference/watershed.h"
#include "support/image.h"

using reference::watershed::Picture;
using test::Image;

namespace {

constexpr int byQueue = 1, bySweeps = 2;
const int boundaryFlags[] = {0, 64, 128, 192};

template <class Query>
int queried(Query query, NoxiSize roi) {
    int size = 0;
    EXPECT_EQ(query(roi, &size), noxStsNoError);
    return size;
}

Picture picture(const Image<Nox8u> &src, const Image<Nox8u> &markers) {
    return {src.data(), src.step(), src.channels(), markers.data(), markers.step(), markers.roi()};
}

::testing::AssertionResult watershedEqualsReference(const Image<Nox8u> &src, const Image<Nox8u> &markers, int norm,
                                                    int flag) {
    static int shift = 0;
    shift = (shift + 1) % 8;
    Image<Nox8u> actual(markers), expected(markers);
    const NoxiSize roi = markers.roi();
    if ((flag & byQueue) != 0) {
        reference::watershed::byQueue(picture(src, expected), norm, flag);
    } else {
        const auto costs = reference::watershed::byCost(picture(src, expected), norm);
        if ((flag & 192) != 0)
            reference::segments::boundByCost(expected.data(), expected.step(), {costs.begin(), costs.end()}, roi, 255,
                                             (flag & 64) != 0 ? 1 : 0);
    }
    const test::ShiftedBuffer buffer(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, roi), shift);
    const NoxStatus status = noxiSegmentWatershed_8u_C1IR(src.data(), src.step(), actual.data(), actual.step(), roi,
                                                          norm, flag, buffer.data());
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << "status " << status;
    if (!buffer.intact())
        return ::testing::AssertionFailure() << "writes behind its buffer";
    return test::sameImage(actual, expected) << " norm " << norm << " flag " << flag;
}

::testing::AssertionResult gradientEqualsReference(const Image<Nox8u> &src, const Image<Nox8u> &markers, int norm,
                                                   int flag) {
    static int shift = 0;
    shift = (shift + 1) % 8;
    Image<Nox8u> actual(markers), expected(markers);
    const NoxiSize roi = markers.roi();
    reference::watershed::byGradient(picture(src, expected), norm, flag);
    const bool gray = src.channels() == 1;
    const test::ShiftedBuffer buffer(
        queried(gray ? noxiSegmentGradientGetBufferSize_8u_C1R : noxiSegmentGradientGetBufferSize_8u_C3R, roi), shift);
    const auto call = gray ? noxiSegmentGradient_8u_C1IR : noxiSegmentGradient_8u_C3IR;
    const NoxStatus status = call(src.data(), src.step(), actual.data(), actual.step(), roi, norm, flag, buffer.data());
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << "status " << status;
    if (!buffer.intact())
        return ::testing::AssertionFailure() << "writes behind its buffer";
    return test::sameImage(actual, expected) << " norm " << norm << " flag " << flag;
}

/// Pictures of several kinds: noise of few or many levels, smooth hills, plateaus.
Image<Nox8u> relief(NoxiSize size, int kind, int channels, int padding, test::Random &random) {
    Image<Nox8u> image(size.width, size.height, channels, padding);
    const int levels = kind == 0 ? 2 : kind == 1 ? 256 : 7;
    const double period = 2 + random() % 9;
    return image.generate([&](int x, int y, int c) {
        if (kind < 3)
            return int(random() % levels) * (255 / (levels - 1));
        if (kind == 3)
            return int(127 + 120 * std::sin((x + c) / period) * std::cos(y / period));
        return (x / 5 + y / 4) % 3 * 100;
    });
}

/// About one label in `rarity` pixels, from few or from all values, with some 255.
Image<Nox8u> seeds(NoxiSize size, int rarity, int kinds, int padding, test::Random &random) {
    Image<Nox8u> image(size.width, size.height, 1, padding);
    return image.generate([&](int, int, int) {
        if (random() % rarity != 0)
            return 0;
        return random() % 9 == 0 ? 255 : int(1 + random() % kinds);
    });
}

template <class Compare>
void compareAll(int channels, const Compare &compare) {
    test::Random random(5);
    int kind = 0;
    for (const NoxiSize size : test::testSizes()) {
        if (size.width * size.height > 10000)
            continue;
        for (const int rarity : {2, 9, 60})
            for (const int padding : {0, 7}) {
                const Image<Nox8u> src(relief(size, ++kind % 5, channels, padding, random));
                const Image<Nox8u> markers(seeds(size, rarity, kind % 3 == 0 ? 254 : 3, padding, random));
                compare(src, markers);
            }
    }
}

TEST(Watershed, ByQueueEqualsReference) {
    compareAll(1, [](const Image<Nox8u> &src, const Image<Nox8u> &markers) {
        for (const int norm : {0, 1})
            for (const int bounds : boundaryFlags)
                for (const int form : {byQueue, byQueue | bySweeps})
                    ASSERT_TRUE(watershedEqualsReference(src, markers, norm, form | bounds));
    });
}

TEST(Watershed, ByCostEqualsReference) {
    compareAll(1, [](const Image<Nox8u> &src, const Image<Nox8u> &markers) {
        for (int norm = 0; norm < 4; ++norm)
            for (const int bounds : boundaryFlags)
                ASSERT_TRUE(watershedEqualsReference(src, markers, norm, bySweeps | bounds));
    });
}

TEST(Watershed, GradientEqualsReference) {
    for (const int channels : {1, 3})
        compareAll(channels, [](const Image<Nox8u> &src, const Image<Nox8u> &markers) {
            for (const int norm : {0, 1})
                for (const int bounds : boundaryFlags)
                    ASSERT_TRUE(gradientEqualsReference(src, markers, norm, bounds));
        });
}

TEST(WatershedFull, LargerPictures) {
    test::Random random(11);
    for (int kind = 0; kind < 5; ++kind) {
        const NoxiSize size = {151, 97};
        for (const int rarity : {300, 5000}) {
            const Image<Nox8u> src(relief(size, kind, 1, 3, random)), color(relief(size, kind, 3, 1, random));
            const Image<Nox8u> markers(seeds(size, rarity, 254, 0, random));
            for (const int bounds : {0, 64, 128})
                for (int norm = 0; norm < 4; ++norm) {
                    ASSERT_TRUE(watershedEqualsReference(src, markers, norm, bySweeps | bounds));
                    if (norm > 1)
                        continue;
                    ASSERT_TRUE(watershedEqualsReference(src, markers, norm, byQueue | bounds));
                    ASSERT_TRUE(gradientEqualsReference(src, markers, norm, bounds));
                    ASSERT_TRUE(gradientEqualsReference(color, markers, norm, bounds));
                }
        }
    }
}

/// A corridor that fills the image, one pixel wide between walls of 255.
Image<Nox8u> serpentine(NoxiSize size, Nox8u floor) {
    Image<Nox8u> image(size.width, size.height);
    return image.generate(
        [&](int x, int y, int) { return y % 2 == 0 || x == (y % 4 == 1 ? size.width - 1 : 0) ? floor : 255; });
}

TEST(Watershed, LongWays) {
    const NoxiSize size = {61, 45};
    const Image<Nox8u> src(serpentine(size, 9));
    Image<Nox8u> markers(size.width, size.height);
    markers.fill(0);
    markers.at(0, 0) = 5;
    markers.at(30, 40) = 6;
    for (int norm = 0; norm < 4; ++norm)
        for (const int flag : {int(bySweeps), bySweeps | 64}) {
            ASSERT_TRUE(watershedEqualsReference(src, markers, norm, flag));
        }
}

TEST(Watershed, WaysBeyondTheCostOfALevelStillLabel) {
    // 140000 pixels at 64 a step pass the length that a level holds, also on the highest level.
    const NoxiSize size = {140000, 1};
    for (const int level : {0, 254, 255}) {
        Image<Nox8u> src(size.width, 1), markers(size.width, 1);
        src.fill(Nox8u(level));
        markers.fill(0);
        markers.at(0, 0) = 5;
        const test::Buffer buffer(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, size));
        ASSERT_EQ(noxiSegmentWatershed_8u_C1IR(src.data(), src.step(), markers.data(), markers.step(), size, 3,
                                               bySweeps | 64, buffer.data()),
                  noxStsNoError);
        for (int x = 0; x < size.width; ++x)
            ASSERT_EQ(markers.at(x, 0), 5) << x;
    }
}

TEST(Watershed, CostsPassFromOneLevelIntoTheNext) {
    // The way along a level of 0 gets longer than 2^23, dearer than the next level: pixels of level 1 behind it cost
    // what the way does, and a seed on level 1 is cheaper.
    const NoxiSize size = {140000, 1};
    Image<Nox8u> src(size.width, 1), markers(size.width, 1);
    src.generate([](int x, int, int) { return x > 139000 ? 1 : 0; });
    markers.fill(0);
    markers.at(0, 0) = 5;
    markers.at(139990, 0) = 6;
    ASSERT_TRUE(watershedEqualsReference(src, markers, 3, bySweeps));
}

TEST(Watershed, NoLabels) {
    Image<Nox8u> src(9, 5);
    src.generate([](int x, int y, int) { return x * y; });
    Image<Nox8u> markers(9, 5);
    markers.fill(0);
    for (int norm = 0; norm < 4; ++norm)
        for (const int flag : {1, 2, 66, 130})
            if (norm < 2 || (flag & 1) == 0) {
                ASSERT_TRUE(watershedEqualsReference(src, markers, norm, flag));
            }
    for (const int flag : boundaryFlags)
        ASSERT_TRUE(gradientEqualsReference(src, markers, 0, flag));
}

TEST(Watershed, PlateauGoesToTheFirstInTheQueue) {
    Image<Nox8u> src(5, 1), markers(5, 1);
    src.fill(3);
    markers.fill(0);
    markers.at(0, 0) = 1;
    markers.at(4, 0) = 2;
    const test::Buffer buffer(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, {5, 1}));
    noxiSegmentWatershed_8u_C1IR(src.data(), 5, markers.data(), 5, {5, 1}, 1, 1, buffer.data());
    const Nox8u expected[] = {1, 1, 1, 2, 2};
    EXPECT_EQ(std::memcmp(markers.data(), expected, 5), 0);
}

TEST(Watershed, FrontsOverAPlateau) {
    // Fronts meet at every difference of costs, and with labels as witnesses of small ones.
    test::Random random(3);
    Image<Nox8u> src(120, 90), markers(120, 90);
    src.fill(77);
    for (const int rarity : {100, 400, 3000}) {
        markers.generate([&](int, int, int) { return random() % rarity == 0 ? 1 + random() % 254 : 0; });
        for (const int flag : {2, 66, 130})
            ASSERT_TRUE(watershedEqualsReference(src, markers, 3, flag));
    }
}

TEST(Watershed, BufferSizes) {
    EXPECT_EQ(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, {1, 1}), (2 + 2) * 32 + 4 * 32 + 1 + 66);
    EXPECT_EQ(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, {640, 480}), 12 * 640 * 480 + 36 + 642 * 482);
    EXPECT_EQ(queried(noxiSegmentGradientGetBufferSize_8u_C1R, {7, 3}), 13 * 21 + 103);
    EXPECT_EQ(queried(noxiSegmentGradientGetBufferSize_8u_C3R, {7, 3}), 13 * 21 + 103);
    int size = 5;
    for (const auto query : {noxiSegmentWatershedGetBufferSize_8u_C1R, noxiSegmentGradientGetBufferSize_8u_C1R,
                             noxiSegmentGradientGetBufferSize_8u_C3R}) {
        EXPECT_EQ(query({0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(query({0, 3}, &size), noxStsBadSize);
        EXPECT_EQ(query({3, -1}, &size), noxStsBadSize);
        EXPECT_EQ(query({20000, 20000}, &size), noxStsBadSize);
        EXPECT_EQ(query({INT_MAX, INT_MAX}, &size), noxStsBadSize);
    }
    EXPECT_EQ(size, 5);
}

TEST(Watershed, StatusesInOrder) {
    Image<Nox8u> src(6, 4), markers(6, 4);
    src.fill(3);
    markers.generate([](int x, int, int) { return x == 3 ? 1 : 0; });
    const Image<Nox8u> before(markers);
    const test::Buffer buffer(queried(noxiSegmentWatershedGetBufferSize_8u_C1R, {6, 4}));
    const auto call = [&](const Nox8u *s, int sStep, Nox8u *m, int mStep, NoxiSize roi, int norm, int flag, Nox8u *b) {
        return noxiSegmentWatershed_8u_C1IR(s, sStep, m, mStep, roi, norm, flag, b);
    };
    EXPECT_EQ(call(nullptr, 0, markers.data(), 0, {0, 0}, 9, 0, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 9, 0, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {0, 0}, 9, 0, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {0, 4}, 9, 0, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {6, 0}, 9, 0, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 5, markers.data(), 6, {6, 4}, 9, 0, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 6, markers.data(), 5, {6, 4}, 9, 0, buffer.data()), noxStsBadStep);
    for (const int flag : {0, 64, 128, 4, 256})
        EXPECT_EQ(call(src.data(), 6, markers.data(), 6, {6, 4}, 0, flag, buffer.data()), noxStsBadArgument);
    for (const int norm : {-1, 2, 3, 4})
        EXPECT_EQ(call(src.data(), 6, markers.data(), 6, {6, 4}, norm, 3, buffer.data()), noxStsBadArgument);
    for (const int norm : {-1, 4})
        EXPECT_EQ(call(src.data(), 6, markers.data(), 6, {6, 4}, norm, 2, buffer.data()), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(markers, before));
}

TEST(WatershedGradient, StatusesInOrder) {
    Image<Nox8u> src(6, 4, 3), markers(6, 4);
    src.fill(3);
    markers.generate([](int x, int, int) { return x == 3 ? 1 : 0; });
    const Image<Nox8u> before(markers);
    const test::Buffer buffer(queried(noxiSegmentGradientGetBufferSize_8u_C1R, {6, 4}));
    for (const int channels : {1, 3}) {
        const auto call = channels == 1 ? noxiSegmentGradient_8u_C1IR : noxiSegmentGradient_8u_C3IR;
        const int step = 6 * channels;
        EXPECT_EQ(call(nullptr, 0, markers.data(), 0, {0, 0}, 9, 0, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 9, 0, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {0, 0}, 9, 0, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {0, 4}, 9, 0, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 0, markers.data(), 0, {6, 0}, 9, 0, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(src.data(), step - 1, markers.data(), 6, {6, 4}, 9, 0, buffer.data()), noxStsBadStep);
        EXPECT_EQ(call(src.data(), step, markers.data(), 5, {6, 4}, 9, 0, buffer.data()), noxStsBadStep);
        for (const int norm : {-1, 2})
            EXPECT_EQ(call(src.data(), step, markers.data(), 6, {6, 4}, norm, 0, buffer.data()), noxStsBadArgument);
    }
    EXPECT_TRUE(test::sameImage(markers, before));
}

} // namespace
