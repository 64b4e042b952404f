#include <cmath>
#include <vector>

#include "distance/sources.h"
#include "noxcv.h"
#include "reference/distance.h"
#include "support/image.h"
#include "support/threads.h"

using reference::distance::Plane;
using test::Image;

namespace {

/// Runs both forms in buffers of exactly the queried size, at some alignment, and compares with all squared distances.
void expectDistances(const Plane<Nox8u> &plane, const Plane<double> &squares, int misalignment) {
    Image<Nox8u> src(plane.width, plane.height, 1, misalignment % 3);
    src.generate([&](int x, int y, int) { return plane.at(x, y); });
    Image<Nox32f> real(plane.width, plane.height, 1, 4 * (misalignment % 2)), roots(real);
    Image<Nox16u> whole(plane.width, plane.height, 1, 2 * (misalignment % 2));
    int size = 0;
    ASSERT_EQ(noxiTrueDistanceTransformGetBufferSize_8u32f_C1R(src.roi(), &size), noxStsNoError);
    const test::ShiftedBuffer buffer(size, misalignment);
    ASSERT_EQ(
        noxiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), real.data(), real.step(), src.roi(), buffer.data()),
        noxStsNoError);
    ASSERT_TRUE(buffer.intact());
    ASSERT_EQ(noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(src.roi(), &size), noxStsNoError);
    const int scaleFactor = misalignment % 4 - 2;
    const test::ShiftedBuffer buffer16(size, misalignment);
    ASSERT_EQ(noxiTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), whole.data(), whole.step(), src.roi(),
                                                     scaleFactor, buffer16.data()),
              noxStsNoError);
    ASSERT_TRUE(buffer16.intact());
    // The squares are exact in single precision here; the root is the one of the vector function at the same address.
    std::vector<Nox32s> row(std::size_t(plane.width));
    std::vector<Nox16s> expected(row.size());
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x) {
            ASSERT_LT(squares.at(x, y), 16777216.0);
            row[std::size_t(x)] = Nox32s(squares.at(x, y));
            roots.at(x, y) = Nox32f(squares.at(x, y));
        }
        noxsSqrt_32f_I(
            reinterpret_cast<Nox32f *>(reinterpret_cast<char *>(roots.data()) + std::ptrdiff_t(y) * roots.step()),
            plane.width);
        noxsSqrt_32s16s_Sfs(row.data(), expected.data(), plane.width, scaleFactor);
        for (int x = 0; x < plane.width; ++x) {
            ASSERT_NEAR(real.at(x, y), std::sqrt(squares.at(x, y)), 1e-5 * std::sqrt(squares.at(x, y)))
                << x << " " << y << " of " << plane.width << "x" << plane.height;
            ASSERT_EQ(whole.at(x, y), Nox16u(expected[std::size_t(x)])) << x << " " << y;
        }
    }
    // The groups of the root function depend on addresses modulo 16, so the copy lies like the destination.
    if (reinterpret_cast<std::uintptr_t>(roots.data()) % 16 == reinterpret_cast<std::uintptr_t>(real.data()) % 16) {
        ASSERT_TRUE(test::sameImage(real, roots));
    }
    ASSERT_TRUE(real.gapsIntact() && whole.gapsIntact());
}

TEST(TrueDistance, EqualsBruteForceOnSmallImages) {
    test::Random random(1);
    for (int height = 1; height <= 40; height += 1 + height / 6)
        for (int width = 1; width <= 40; width += 1 + width / 6)
            for (const int rarity : {0, 1, 4, 30, 300}) {
                const Plane<Nox8u> src = test::randomSource({width, height}, rarity, random);
                expectDistances(src, reference::distance::squaredDistances(src), int(random() % 32));
            }
}

TEST(TrueDistance, ColumnsWithoutZerosAreAThousandAway) {
    const test::ThreadCount one(1);
    Plane<Nox8u> src(9, 5, 1);
    src.at(2, 3) = 0;
    expectDistances(src, reference::distance::squaredDistances(src), 5);
    // Farther than a thousand columns and rows away: the vertical distance of another column, and its own.
    Plane<Nox8u> wide(1300, 3, 1), high(3, 1600, 1);
    wide.at(0, 0) = 0;
    high.at(0, 0) = 0;
    expectDistances(wide, reference::distance::squaredDistances(wide), 1);
    expectDistances(high, reference::distance::squaredDistances(high), 2);
}

TEST(TrueDistance, SameForEveryThreadCount) {
    test::Random random(2);
    for (const NoxiSize size : {NoxiSize{300, 301}, {17, 33}, {260, 3}, {5, 70}}) {
        const Plane<Nox8u> plane = test::randomSource(size, 500, random);
        Image<Nox8u> src(size.width, size.height);
        src.generate([&](int x, int y, int) { return plane.at(x, y); });
        Image<Nox32f> expected(size.width, size.height, 1, 0, 0);
        Image<Nox16u> expected16(size.width, size.height);
        for (const int threads : test::threadCounts()) {
            const test::ThreadCount count(threads);
            Image<Nox32f> actual(size.width, size.height, 1, 0, 0);
            Image<Nox16u> actual16(size.width, size.height);
            int bytes = 0;
            noxiTrueDistanceTransformGetBufferSize_8u32f_C1R(size, &bytes);
            const test::Buffer buffer{std::size_t(bytes)};
            noxiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), actual.data(), actual.step(), size,
                                                buffer.data());
            noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(size, &bytes);
            const test::Buffer buffer16{std::size_t(bytes)};
            noxiTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), actual16.data(), actual16.step(), size, -4,
                                                   buffer16.data());
            if (threads == 1) {
                expected.generate([&](int x, int y, int) { return actual.at(x, y); });
                expected16.generate([&](int x, int y, int) { return actual16.at(x, y); });
            }
            ASSERT_TRUE(test::sameImage(actual, expected)) << threads;
            ASSERT_TRUE(test::sameImage(actual16, expected16)) << threads;
        }
    }
}

TEST(TrueDistanceFull, EqualsBruteForceOnLargerImages) {
    test::Random random(3);
    for (const NoxiSize size : {NoxiSize{700, 60}, {61, 500}, {333, 222}})
        for (const int rarity : {3, 100, 5000}) {
            const Plane<Nox8u> src = test::randomSource(size, rarity, random);
            expectDistances(src, reference::distance::squaredDistances(src), int(random() % 32));
        }
}

TEST(TrueDistance, SizesAndStatuses) {
    int size = 5;
    const test::ThreadCount two(2);
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u32f_C1R({13, 9}, &size), noxStsNoError);
    EXPECT_EQ(size, (16 * 24 + 56) * 2);
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({13, 9}, &size), noxStsNoError);
    EXPECT_EQ(size, (16 * 6 + 6) * 4 * 2 + 16 * 9 * 4 + 32);
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u32f_C1R({0, 9}, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u32f_C1R({0, 9}, &size), noxStsBadSize);
    size = 5;
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u32f_C1R({44739243, 1}, &size), noxStsBadSize);
    EXPECT_EQ(noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({65536, 65536}, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
    Image<Nox8u> src(8, 4);
    Image<Nox32f> dst(9, 4);
    Image<Nox16u> dst16(9, 4);
    const test::Buffer buffer(4096);
    const NoxiSize roi = {8, 4}, empty = {8, 0};
    const int s = src.step(), d = dst.step();
    const auto call = noxiTrueDistanceTransform_8u32f_C1R;
    EXPECT_EQ(call(nullptr, s, dst.data(), d, empty, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), s, nullptr, d, empty, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), s, dst.data(), d, empty, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 7, dst.data(), d, empty, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 7, dst.data(), d + 1, roi, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), s, dst.data(), 31, roi, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), s, dst.data(), d + 2, roi, buffer.data()), noxStsOddStep);
    const auto call16 = noxiTrueDistanceTransform_8u16u_C1RSfs;
    EXPECT_EQ(call16(src.data(), s, dst16.data(), 15, roi, 0, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call16(src.data(), s, dst16.data(), 17, roi, 0, buffer.data()), noxStsOddStep);
    EXPECT_EQ(call16(src.data(), s, dst16.data(), 18, roi, 0, nullptr), noxStsNullPointer);
}

} // namespace
