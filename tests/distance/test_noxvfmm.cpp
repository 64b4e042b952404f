#include <cmath>
#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/distance.h"
#include "support/image.h"
#include "support/threads.h"

using reference::distance::FastMarching;
using reference::distance::Plane;
using test::Image;

namespace {

Image<Nox32f> march(const Plane<Nox8u> &plane, float radius, int misalignment = 0) {
    Image<Nox8u> src(plane.width, plane.height, 1, misalignment % 3);
    src.generate([&](int x, int y, int) { return plane.at(x, y); });
    Image<Nox32f> dst(plane.width, plane.height, 1, 4 * (misalignment % 2));
    dst.fill(-5);
    int size = 0;
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R(src.roi(), &size), noxStsNoError);
    const test::ShiftedBuffer buffer(size, misalignment);
    EXPECT_EQ(
        noxiFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), radius, buffer.data()),
        noxStsNoError);
    EXPECT_TRUE(buffer.intact());
    EXPECT_TRUE(dst.gapsIntact());
    return dst;
}

/// Masks of all kinds: none, all, random of some density, checkerboard, a spiral of walls, blobs.
std::vector<Plane<Nox8u>> masks(NoxiSize size, test::Random &random) {
    std::vector<Plane<Nox8u>> list;
    const auto add = [&](auto produce) {
        Plane<Nox8u> mask(size.width, size.height);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                mask.at(x, y) = Nox8u(produce(x, y));
        list.push_back(mask);
    };
    add([](int, int) { return 0; });
    add([](int, int) { return 9; });
    for (const unsigned density : {2U, 10U, 50U, 90U, 99U})
        add([&](int, int) { return random() % 100 < density ? 1 + random() % 255 : 0; });
    add([](int x, int y) { return (x + y) % 2; });
    add([&](int x, int y) { return y % 4 == 3 ? (y / 4 % 2 == 0 ? x == size.width - 1 : x == 0) : 1; });
    add([&](int x, int y) { return x != 0 || y != size.height / 2; });
    add([&](int x, int y) {
        const double dx = x - size.width * 0.4, dy = y - size.height * 0.55;
        return dx * dx + dy * dy < size.width * size.height * 0.08 || (x / 9 + y / 7) % 5 == 0;
    });
    return list;
}

/// Every pixel that is not 0 obeys the upwind equation with its neighbours; zeros are 0 or lie in the band.
void expectEikonal(const Image<Nox32f> &d, const Plane<Nox8u> &src, float radius) {
    const float infinity = std::numeric_limits<float>::infinity();
    const auto value = [&](int x, int y) { return src.inside(x, y) ? std::max(float(d.at(x, y)), 0.0F) : infinity; };
    bool reached = false;
    for (const Nox8u byte : src.pixels)
        reached |= byte == 0;
    for (int y = 0; y < src.height; ++y)
        for (int x = 0; x < src.width; ++x) {
            if (src.at(x, y) == 0) {
                ASSERT_TRUE(d.at(x, y) <= 0 && d.at(x, y) >= -radius - 1e-4F) << x << " " << y;
                if (radius == 0) {
                    ASSERT_EQ(d.at(x, y), 0.0F);
                }
            } else if (reached) {
                const float p = std::min(value(x, y - 1), value(x, y + 1)),
                            q = std::min(value(x - 1, y), value(x + 1, y));
                const float expected = std::isinf(p) ? q + 1 : std::isinf(q) ? p + 1 : FastMarching::arrival(p, q);
                ASSERT_NEAR(d.at(x, y), expected, 4e-6F * (1 + expected))
                    << x << " " << y << " of " << src.width << "x" << src.height;
            }
        }
}

TEST(FastMarching, OneThreadFollowsTheSweepsToTheBit) {
    const test::ThreadCount one(1);
    test::Random random(1);
    for (const NoxiSize size :
         {NoxiSize{1, 1}, {1, 9}, {9, 1}, {2, 2}, {2, 7}, {3, 3}, {8, 5}, {13, 13}, {33, 17}, {64, 40}, {71, 50}})
        for (const Plane<Nox8u> &mask : masks(size, random))
            for (const float radius : {0.0F, 1e-20F, 1.0F, 2.5F, 6.0F}) {
                const Plane<float> expected = FastMarching(mask, radius).serial();
                const Image<Nox32f> actual = march(mask, radius, int(random() % 40));
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        ASSERT_TRUE(test::sameElement(float(actual.at(x, y)), expected.at(x, y)))
                            << x << " " << y << " of " << size.width << "x" << size.height << " radius " << radius
                            << ": " << actual.at(x, y) << ", expected " << expected.at(x, y);
            }
}

TEST(FastMarching, SolvesTheEquationInEveryTeam) {
    test::Random random(2);
    for (const NoxiSize size : {NoxiSize{40, 30}, {13, 13}, {12, 40}, {57, 90}})
        for (const Plane<Nox8u> &mask : masks(size, random))
            for (const float radius : {0.0F, 3.0F})
                for (const int threads : {1, 2, 3, 40}) {
                    const test::ThreadCount count(threads);
                    const Image<Nox32f> actual = march(mask, radius);
                    expectEikonal(actual, mask, radius);
                    // Again, and in a team of one: the same bits.
                    ASSERT_TRUE(test::sameImage(march(mask, radius), actual));
                    if (threads > 1)
                        test::insideParallelRegion([&] { ASSERT_TRUE(test::sameImage(march(mask, radius), actual)); });
                }
}

TEST(FastMarchingFull, LargerMasks) {
    test::Random random(3);
    for (const NoxiSize size : {NoxiSize{300, 211}, {129, 400}})
        for (const Plane<Nox8u> &mask : masks(size, random))
            for (const int threads : {1, 2}) {
                const test::ThreadCount count(threads);
                expectEikonal(march(mask, 0), mask, 0);
                expectEikonal(march(mask, 5), mask, 5);
            }
}

TEST(FastMarching, BandAroundAStraightEdge) {
    const test::ThreadCount one(1);
    Plane<Nox8u> mask(30, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 15; x < 30; ++x)
            mask.at(x, y) = 1;
    const Image<Nox32f> d = march(mask, 3);
    for (int y = 0; y < 8; ++y) {
        EXPECT_EQ(d.at(15, y), 1.0F);
        EXPECT_EQ(d.at(20, y), 6.0F);
        EXPECT_EQ(d.at(14, y), -1e-10F);
        EXPECT_EQ(d.at(13, y), -1.0F);
        EXPECT_EQ(d.at(11, y), -3.0F);
        EXPECT_EQ(d.at(10, y), 0.0F);
    }
}

TEST(FastMarching, SizesAndStatuses) {
    int size = 5;
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R({33, 7}, &size), noxStsNoError);
    EXPECT_EQ(size, 7 * 5 + 10 + 9 * 64 + 40);
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R({0, 7}, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R({0, 7}, &size), noxStsBadSize);
    size = 5;
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R({65536, 65536}, &size), noxStsBadSize);
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R({1, 2147483647}, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
    Image<Nox8u> src(8, 4);
    Image<Nox32f> dst(9, 4), before(dst);
    const test::Buffer buffer(4096);
    const NoxiSize roi = {8, 4}, empty = {0, 4};
    const int s = src.step(), d = dst.step();
    const auto call = noxiFastMarching_8u32f_C1R;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(call(nullptr, s, dst.data(), d, empty, 1, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), s, nullptr, d, empty, 1, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), s, dst.data(), d, empty, 1, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 7, dst.data(), d, empty, 1, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 7, dst.data(), d + 1, roi, 1, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), s, dst.data(), 31, roi, 1, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), s, dst.data(), d + 1, roi, -1, buffer.data()), noxStsOddStep);
    EXPECT_EQ(call(src.data(), s, dst.data(), d, roi, -1, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(src.data(), s, dst.data(), d, roi, nan, buffer.data()), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(dst, before));
}

} // namespace
