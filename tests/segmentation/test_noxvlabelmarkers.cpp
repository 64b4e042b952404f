// Labels of connected components.
#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/segments.h"
#include "support/image.h"

using test::Image;

namespace {

int bufferSize(NoxiSize roi) {
    int size = 0;
    EXPECT_EQ(noxiLabelMarkersGetBufferSize_8u_C1R(roi, &size), noxStsNoError);
    return size;
}

void compare(const Image<Nox8u> &image, int minLabel, int maxLabel, int norm, int shift) {
    Image<Nox8u> actual(image), expected(image);
    const test::ShiftedBuffer buffer(bufferSize(image.roi()), shift);
    int count = -1;
    ASSERT_EQ(noxiLabelMarkers_8u_C1IR(actual.data(), actual.step(), image.roi(), minLabel, maxLabel, norm, &count,
                                       buffer.data()),
              noxStsNoError);
    ASSERT_EQ(count,
              reference::segments::label(expected.data(), expected.step(), image.roi(), minLabel, maxLabel, norm));
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(test::sameImage(actual, expected));
}

TEST(LabelMarkers, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    int shift = 0;
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 13})
            for (const int holes : {2, 3, 5, 30})
                for (const int norm : {0, 1}) {
                    Image<Nox8u> image(size.width, size.height, 1, padding);
                    image.generate([&](int, int, int) { return random() % holes == 0 ? 0 : random() % 255 + 1; });
                    compare(image, 1, 254, norm, ++shift % 8);
                    compare(image, 5, 9, norm, ++shift % 8);
                    compare(image, 7, 7, norm, ++shift % 8);
                }
}

TEST(LabelMarkers, DiagonalNeighboursByNorm) {
    Image<Nox8u> image(4, 4);
    for (const int norm : {0, 1}) {
        image.generate([](int x, int y, int) { return x == y ? 3 : 0; });
        const test::Buffer buffer(bufferSize(image.roi()));
        int count = 0;
        EXPECT_EQ(noxiLabelMarkers_8u_C1IR(image.data(), 4, image.roi(), 1, 254, norm, &count, buffer.data()),
                  noxStsNoError);
        EXPECT_EQ(count, norm == 0 ? 1 : 4);
        EXPECT_EQ(image.at(3, 3), norm == 0 ? 1 : 4);
    }
}

TEST(LabelMarkers, NothingToLabel) {
    Image<Nox8u> image(7, 3);
    image.fill(0);
    const Image<Nox8u> before(image);
    const test::Buffer buffer(bufferSize(image.roi()));
    int count = 5;
    EXPECT_EQ(noxiLabelMarkers_8u_C1IR(image.data(), 7, image.roi(), 1, 1, 1, &count, buffer.data()), noxStsNoError);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(test::sameImage(image, before));
}

TEST(LabelMarkers, StatusesInOrder) {
    Image<Nox8u> image(4, 3);
    image.fill(9);
    const Image<Nox8u> before(image);
    const test::Buffer buffer(bufferSize(image.roi()));
    int count = 5;
    const auto call = [&](Nox8u *markers, int step, NoxiSize roi, int low, int high, int norm, int *number,
                          Nox8u *memory) {
        return noxiLabelMarkers_8u_C1IR(markers, step, roi, low, high, norm, number, memory);
    };
    EXPECT_EQ(call(nullptr, 0, {0, 0}, 0, 0, 2, &count, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(image.data(), 0, {0, 0}, 0, 0, 2, nullptr, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(image.data(), 0, {0, 0}, 0, 0, 2, &count, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(image.data(), 0, {0, 3}, 0, 0, 2, &count, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(image.data(), 0, {4, 0}, 0, 0, 2, &count, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(image.data(), 3, {4, 3}, 0, 0, 2, &count, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(image.data(), 4, {4, 3}, 0, 9, 0, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(image.data(), 4, {4, 3}, 1, 255, 0, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(image.data(), 4, {4, 3}, 6, 5, 0, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(image.data(), 4, {4, 3}, 1, 5, 2, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(image.data(), 4, {4, 3}, 1, 5, -1, &count, buffer.data()), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(image, before));
    EXPECT_EQ(count, 5);
    EXPECT_EQ(noxiLabelMarkersGetBufferSize_8u_C1R({0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiLabelMarkersGetBufferSize_8u_C1R({0, 3}, &count), noxStsBadSize);
    EXPECT_EQ(noxiLabelMarkersGetBufferSize_8u_C1R({3, 0}, &count), noxStsBadSize);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(bufferSize({640, 480}), 640 * 480 * 6 + 32);
}

} // namespace
