// Boundaries between labels.
#include <cstring>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/segments.h"
#include "segmentation/noxvboundsegments.h"
#include "support/image.h"

using test::Image;

namespace {

Image<Nox8u> labels(NoxiSize size, int padding, int kinds, int patch, test::Random &random) {
    const unsigned seed = random();
    return Image<Nox8u>(size.width, size.height, 1, padding).generate([&](int x, int y, int) {
        return (unsigned(x / patch * 7 + y / patch * 13) * 2654435761U + seed) % unsigned(kinds);
    });
}

TEST(BoundSegments, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 13})
            for (const int patch : {1, 3, 10})
                for (const int kinds : {2, 3, 7, 255})
                    for (const int norm : {0, 1})
                        for (const int value : {0, 1, 255}) {
                            Image<Nox8u> actual(labels(size, padding, kinds, patch, random)), expected(actual);
                            ASSERT_EQ(noxiBoundSegments_8u_C1IR(actual.data(), actual.step(), size, Nox8u(value), norm),
                                      noxStsNoError);
                            reference::segments::bound(expected.data(), expected.step(), size, Nox8u(value), norm);
                            ASSERT_TRUE(test::sameImage(actual, expected)) << norm << " " << value;
                        }
}

TEST(BoundSegments, RandomLabels) {
    test::Random random(2);
    for (int round = 0; round < 300; ++round) {
        const NoxiSize size = {1 + int(random() % 9), 1 + int(random() % 9)};
        const int kinds = 2 + int(random() % 3), norm = round % 2;
        Image<Nox8u> actual(size.width, size.height);
        actual.generate([&](int, int, int) { return random() % kinds; });
        Image<Nox8u> expected(actual);
        noxiBoundSegments_8u_C1IR(actual.data(), actual.step(), size, 2, norm);
        reference::segments::bound(expected.data(), expected.step(), size, 2, norm);
        ASSERT_TRUE(test::sameImage(actual, expected));
    }
}

TEST(BoundSegments, TheLaterPixelOfAPairIsMarked) {
    Image<Nox8u> image(5, 1);
    const Nox8u before[] = {1, 1, 2, 3, 3}, after[] = {1, 1, 9, 3, 3};
    std::memcpy(image.data(), before, 5);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 5, {5, 1}, 9, 1), noxStsNoError);
    EXPECT_EQ(std::memcmp(image.data(), after, 5), 0);
}

TEST(BoundSegments, StatusesInOrder) {
    Image<Nox8u> image(4, 3);
    image.generate([](int x, int, int) { return x; });
    const Image<Nox8u> before(image);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(nullptr, 0, {0, 0}, 9, 2), noxStsNullPointer);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 0, {0, 3}, 9, 2), noxStsBadSize);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 0, {4, -3}, 9, 2), noxStsBadSize);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 3, {4, 3}, 9, 2), noxStsBadStep);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 4, {4, 3}, 9, 2), noxStsBadArgument);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 4, {4, 3}, 9, -1), noxStsBadArgument);
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 4, {1, 3}, 9, 2), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(image, before));
    EXPECT_EQ(noxiBoundSegments_8u_C1IR(image.data(), 4, {1, 3}, 9, 0), noxStsNoError);
}

TEST(BoundSegmentsByCost, EqualsReference) {
    test::Random random(3);
    for (int round = 0; round < 600; ++round) {
        const NoxiSize size = {1 + int(random() % 19), 1 + int(random() % 9)};
        const int kinds = 2 + int(random() % 4), levels = 1 + int(random() % 6), norm = round % 2;
        Image<Nox8u> actual(size.width, size.height, 1, round % 5);
        Image<Nox32s> cost(size.width, size.height, 1, round % 3 * 4);
        std::vector<int> costs;
        actual.generate([&](int, int, int) { return random() % kinds; });
        cost.generate([&](int, int, int) {
            costs.push_back(int(random() % levels) * (round % 2 ? 1 : 0x10000000));
            return costs.back();
        });
        Image<Nox8u> expected(actual);
        ASSERT_EQ(ownBoundSegments_8u_C1IR(actual.data(), actual.step(), cost.data(), cost.step(), size.width,
                                           size.height, 2, norm),
                  noxStsNoError);
        reference::segments::boundByCost(expected.data(), expected.step(), costs, size, 2, norm);
        ASSERT_TRUE(test::sameImage(actual, expected));
    }
}

} // namespace
