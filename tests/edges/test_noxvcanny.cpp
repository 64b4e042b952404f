#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "edges/noxvcanny.h"
#include "noxcv.h"
#include "reference/canny.h"
#include "support/image.h"

using test::Buffer;
using test::Image;

namespace {

int bufferSize(NoxiSize roi) {
    int size = 0;
    EXPECT_EQ(noxiCannyGetSize(roi, &size), noxStsNoError);
    return size;
}

NoxStatus detect(const Image<Nox16s> &dx, const Image<Nox16s> &dy, Image<Nox8u> &dst, float low, float high,
                 Nox8u *buffer) {
    return noxiCanny_16s8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), dx.roi(), low, high,
                               buffer);
}
NoxStatus detect(const Image<Nox32f> &dx, const Image<Nox32f> &dy, Image<Nox8u> &dst, float low, float high,
                 Nox8u *buffer) {
    return noxiCanny_32f8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), dx.roi(), low, high,
                               buffer);
}

/// Runs the detector in a buffer of exactly the queried size, at every alignment of its start, and compares.
template <class T>
void expectReference(const Image<T> &dx, const Image<T> &dy, float low, float high, int misalignment = 0) {
    const NoxiSize roi = dx.roi();
    Image<Nox8u> actual(roi.width, roi.height), expected(roi.width, roi.height);
    actual.fill(7);
    const test::ShiftedBuffer buffer(bufferSize(roi), misalignment);
    ASSERT_EQ(detect(dx, dy, actual, low, high, buffer.data()), noxStsNoError);
    reference::canny::canny(dx.data(), dx.step(), dy.data(), dy.step(), expected.data(), expected.step(), roi, low,
                            high);
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(test::sameImage(actual, expected)) << low << " " << high;
}

template <class T>
class Canny : public ::testing::Test {};
using Derivatives = ::testing::Types<Nox16s, Nox32f>;
TYPED_TEST_SUITE(Canny, Derivatives);

TYPED_TEST(Canny, EqualsReferenceOnRandomDerivatives) {
    using T = TypeParam;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<T>()) {
            Image<T> dx(size.width, size.height, 1, padding), dy(size.width, size.height);
            // Small values make many ties; every eighth image has the whole range.
            const int range = random() % 8 == 0 ? 0 : 3 + int(random() % 40);
            const auto produce = [&](int, int, int) {
                return range == 0 ? test::randomElement<T>(random) : T(int(random() % (2 * range + 1)) - range);
            };
            dx.generate(produce);
            dy.generate(produce);
            const float low = float(random() % 10) + 0.9F, high = low + float(random() % 20);
            expectReference(dx, dy, low, high, int(random() % 32));
        }
}

TYPED_TEST(Canny, EqualsReferenceOnASmoothPicture) {
    using T = TypeParam;
    Image<T> dx(301, 211), dy(301, 211);
    dx.generate([](int x, int y, int) { return 400 * std::sin(x * 0.11) * std::cos(y * 0.05); });
    dy.generate([](int x, int y, int) { return 400 * std::cos(x * 0.07 + y * 0.13); });
    for (const float low : {0.0F, 100.0F, 300.0F})
        for (const float high : {low, 350.0F, 600.0F, 5000.0F})
            expectReference(dx, dy, low, high);
}

TYPED_TEST(Canny, DerivativeClassBoundaries) {
    // Ratios on both sides of the two tangents; each pixel is isolated so that its class decides alone.
    using T = TypeParam;
    Image<T> dx(60, 40), dy(60, 40);
    test::Random random(5);
    for (int round = 0; round < 20; ++round) {
        const auto ratio = [&](int x, int y, int) { return (x * 7 + y * 13 + round * 5) % 97; };
        dx.generate([&](int x, int y, int c) { return (random() % 2 ? 1 : -1) * ratio(x, y, c) * 12; });
        dy.generate([&](int x, int y, int c) { return (random() % 2 ? 1 : -1) * ratio(y, x, c) * 29; });
        expectReference(dx, dy, 2, 40);
    }
}

TYPED_TEST(Canny, StatusesInOrder) {
    using T = TypeParam;
    Image<T> d(8, 4);
    Image<Nox8u> dst(8, 4);
    dst.fill(9);
    const Image<Nox8u> before(dst);
    const Buffer buffer(bufferSize(d.roi()));
    const auto call = [&](const T *dx, int dxStep, const T *dy, int dyStep, Nox8u *out, int outStep, NoxiSize roi,
                          float low, float high, Nox8u *work) {
        if constexpr (std::is_same_v<T, Nox16s>)
            return noxiCanny_16s8u_C1R(dx, dxStep, dy, dyStep, out, outStep, roi, low, high, work);
        else
            return noxiCanny_32f8u_C1R(dx, dxStep, dy, dyStep, out, outStep, roi, low, high, work);
    };
    const int s = d.step();
    const NoxiSize roi = d.roi();
    EXPECT_EQ(call(nullptr, 0, d.data(), s, dst.data(), 8, {0, 0}, -1, -2, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(d.data(), s, nullptr, s, dst.data(), 8, roi, 1, 2, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(d.data(), s, d.data(), s, nullptr, 8, roi, 1, 2, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 8, roi, 1, 2, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(d.data(), 0, d.data(), s, dst.data(), 8, {8, 0}, 1, 2, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(d.data(), 0, d.data(), s, dst.data(), 8, {-1, 4}, 1, 2, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(d.data(), s - 1, d.data(), s, dst.data(), 8, roi, -1, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(d.data(), s, d.data(), s - 1, dst.data(), 8, roi, 1, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 7, roi, 1, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(d.data(), s + 1, d.data(), s, dst.data(), 7, roi, 1, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(d.data(), s + 1, d.data(), s, dst.data(), 8, roi, -1, 2, buffer.data()), noxStsOddStep);
    EXPECT_EQ(call(d.data(), s, d.data(), s + 1, dst.data(), 8, roi, 1, 2, buffer.data()), noxStsOddStep);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 8, roi, -0.5F, 2, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 8, roi, 3, 2, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 8, roi, nan, 2, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(d.data(), s, d.data(), s, dst.data(), 8, roi, 1, nan, buffer.data()), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(dst, before));
}

TYPED_TEST(Canny, ClearsTheWholeStepsOfTheResult) {
    using T = TypeParam;
    Image<T> dx(5, 3), dy(5, 3);
    dx.fill(0);
    dy.fill(0);
    constexpr int step = 9;
    std::vector<Nox8u> dst(step * 3, 77);
    const Buffer buffer(bufferSize(dx.roi()));
    if constexpr (std::is_same_v<T, Nox16s>)
        noxiCanny_16s8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), step, dx.roi(), 1, 2,
                            buffer.data());
    else
        noxiCanny_32f8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), step, dx.roi(), 1, 2,
                            buffer.data());
    EXPECT_EQ(dst, std::vector<Nox8u>(step * 3, 0));
}

TEST(CannyEdges, OneRowSurvivesInAllButTheHorizontalClass) {
    Image<Nox16s> dx(6, 1), dy(6, 1);
    dx.fill(1);
    dy.fill(50);
    Image<Nox8u> dst(6, 1);
    const Buffer buffer(bufferSize(dx.roi()));
    detect(dx, dy, dst, 5, 10, buffer.data());
    for (int x = 0; x < 6; ++x)
        EXPECT_EQ(dst.at(x, 0), 255);
}

TEST(CannyEdges, APlateauKeepsItsFirstPixel) {
    Image<Nox16s> dx(7, 3), dy(7, 3);
    dx.fill(20);
    dy.fill(0);
    Image<Nox8u> dst(7, 3);
    const Buffer buffer(bufferSize(dx.roi()));
    detect(dx, dy, dst, 5, 10, buffer.data());
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 7; ++x)
            EXPECT_EQ(dst.at(x, y), x == 0 ? 255 : 0);
}

TEST(CannyEdges, LowThresholdIsTruncatedAndHighIsNot) {
    Image<Nox16s> dx(1, 1), dy(1, 1);
    dx.fill(10);
    dy.fill(0);
    Image<Nox8u> dst(1, 1);
    const Buffer buffer(bufferSize(dx.roi()));
    detect(dx, dy, dst, 9.9F, 9.9F, buffer.data());
    EXPECT_EQ(dst.at(0, 0), 255);
    dx.fill(9);
    detect(dx, dy, dst, 8.9F, 9.0F, buffer.data());
    EXPECT_EQ(dst.at(0, 0), 0);
    detect(dx, dy, dst, 8.9F, 8.95F, buffer.data());
    EXPECT_EQ(dst.at(0, 0), 255);
    detect(dx, dy, dst, 9.9F, 9.9F, buffer.data());
    EXPECT_EQ(dst.at(0, 0), 0);
}

TEST(CannyEdges, HugeThresholdsFindNothing) {
    Image<Nox16s> dx(40, 5), dy(40, 5);
    dx.fill(-32768);
    dy.fill(-32768);
    Image<Nox8u> dst(40, 5);
    const Buffer buffer(bufferSize(dx.roi()));
    // Both strict comparisons of the falling diagonal hold only where both neighbours lie outside.
    EXPECT_EQ(detect(dx, dy, dst, 0, 65535.0F, buffer.data()), noxStsNoError);
    EXPECT_EQ(dst.at(39, 0), 255);
    EXPECT_EQ(dst.at(0, 4), 255);
    EXPECT_EQ(dst.at(0, 0), 0);
    EXPECT_EQ(detect(dx, dy, dst, 1e30F, 1e30F, buffer.data()), noxStsNoError);
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(dst.at(x, 2), 0);
}

TEST(CannyEdges, FloatSpecials) {
    test::Random random(3);
    const float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float values[] = {0.0F, -0.0F, 1.0F, -1.0F, 2.5F, infinity, -infinity, nan, 1e38F, 3e-40F};
    for (int round = 0; round < 30; ++round) {
        Image<Nox32f> dx(37, 9), dy(37, 9);
        dx.generate([&](int, int, int) { return values[random() % std::size(values)]; });
        dy.generate([&](int, int, int) { return values[random() % std::size(values)]; });
        expectReference(dx, dy, 0, 1);
    }
}

TEST(CannyBuffer, SizeFormulas) {
    EXPECT_EQ(bufferSize({1, 1}), 15 * 3 + 28 * 4 + 64);
    EXPECT_EQ(bufferSize({640, 480}), (5 * 480 + 10) * 642 + (4 * 640 + 24) * 4 + 64);
    EXPECT_EQ(bufferSize({65532, 10}), 60 * 65534 + (4 * 65532 + 24) * 4 + 64);
    EXPECT_EQ(bufferSize({65533, 10}), 9 * 12 * 65533 + 18 * 12 + (4 * 65533 + 24) * 4 + 64);
    EXPECT_EQ(bufferSize({10, 65533}), 9 * 65535 * 10 + 18 * 65535 + (4 * 10 + 24) * 4 + 64);
    int size = 5;
    EXPECT_EQ(noxiCannyGetSize({0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiCannyGetSize({0, 3}, &size), noxStsBadSize);
    EXPECT_EQ(noxiCannyGetSize({3, -1}, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
}

TEST(CannyBuffer, WideImagesTakeWidePairs) {
    for (const NoxiSize roi : {NoxiSize{65533, 3}, NoxiSize{3, 65533}}) {
        Image<Nox16s> dx(roi.width, roi.height), dy(roi.width, roi.height);
        dx.generate([](int x, int y, int) { return (x * 31 + y * 17) % 23 - 11; });
        dy.generate([](int x, int y, int) { return (x * 13 + y * 29) % 19 - 9; });
        expectReference(dx, dy, 3, 12);
    }
}

TEST(CannyTangentsFull, ProductsDecideLikeExtendedOnes) {
    // Every derivative against the integers next to its tangent products.
    const double tangents[] = {2.414213562373095, 0.41421356237309503};
    for (int a = 0; a <= 32768; ++a)
        for (const double tangent : tangents) {
            const auto exact = static_cast<float>(static_cast<long double>(a) * tangent);
            ASSERT_EQ(static_cast<float>(static_cast<double>(a) * tangent), exact) << a;
            if (a > 3362)
                continue;
            const float narrow = float(a) * float(tangent);
            for (int b = int(exact) - 1; b <= int(exact) + 2; ++b) {
                ASSERT_EQ(float(b) > narrow, float(b) > exact) << a << " " << b;
                ASSERT_EQ(float(b) >= narrow, float(b) >= exact) << a << " " << b;
            }
        }
}

/// The first derivatives that single-precision tangent products would put into another class, and their neighbours.
/// Larger magnitudes stand beside them in each direction by turns, so that the class decides whether they survive; none
/// is much larger, since a run's largest magnitude decides how it is done.
TYPED_TEST(Canny, TheFirstPairsThatNarrowProductsMisjudge) {
    using T = TypeParam;
    const int pairs[][2] = {{3362, 8117}, {3363, 8119}, {3770, 9102}, {3771, 9104}, {6149, 14845}, {17223, 7134}};
    for (const auto &pair : pairs)
        for (const int more : {-1, 0, 1})
            for (int larger = 0; larger < 8; ++larger) {
                const auto isPair = [](int x, int y) { return x % 4 == 1 && y == 1; };
                const auto isLarger = [&](int x, int y) {
                    const int direction = y == 1 ? 1 : x % 4 == 1 ? 2 : 4; // beside, above and below, diagonal
                    return x % 4 != 3 && (larger & direction) != 0;
                };
                Image<T> dx(133, 3), dy(133, 3);
                dx.generate([&](int x, int y, int) { return isPair(x, y) ? pair[0] : 5; });
                dy.generate([&](int x, int y, int) {
                    return isPair(x, y) ? pair[1] + more : isLarger(x, y) ? pair[0] + pair[1] : 3;
                });
                expectReference(dx, dy, 3, 5);
            }
}

TYPED_TEST(Canny, LongRunsOfEveryMagnitude) {
    // Runs of 64 pixels and more, with magnitudes on both sides of the limit for short products.
    using T = TypeParam;
    test::Random random(9);
    for (const int range : {40, 1000, 1680, 1682, 3400, 12000, 32767}) {
        Image<T> dx(259, 37), dy(259, 37);
        const auto produce = [&](int, int, int) { return T(int(random() % (2 * range + 1)) - range); };
        dx.generate(produce);
        dy.generate(produce);
        expectReference(dx, dy, float(range) * 0.3F, float(range) * 1.2F);
        // Products that lie on a class boundary: dy is the rounded tangent product of dx.
        dy.generate([&](int x, int y, int) {
            const double tangent = random() % 2 ? 2.414213562373095 : 0.41421356237309503;
            return std::min(32767.0, std::floor(std::abs(double(dx.at(x, y))) * tangent) + double(random() % 2));
        });
        expectReference(dx, dy, 0, float(range));
    }
}

TEST(Hysteresis, GrowsFromTheStackOverCandidates) {
    constexpr int width = 6, height = 4, pitch = width + 2;
    std::vector<Nox8u> map(pitch * (height + 2), 0), dst(width * height, 0);
    const auto mark = [&](int x, int y) { map[(y + 1) * pitch + x + 1] = 128; };
    mark(0, 0);
    mark(1, 1);
    mark(2, 1);
    mark(5, 3);
    std::vector<Nox16u> narrow(2 * width * height);
    narrow[0] = 0;
    narrow[1] = 0;
    dst[0] = 255;
    std::vector<Nox8u> wideDst = dst;
    ownHysteresisThresholding_16u(map.data(), narrow.data(), 1, width, height, dst.data(), width);
    std::vector<Nox8u> expected(width * height, 0);
    expected[0] = expected[width + 1] = expected[width + 2] = 255;
    EXPECT_EQ(dst, expected);
    std::vector<Nox32s> wide(2 * width * height, 0);
    ownHysteresisThresholding_32s(map.data(), wide.data(), 1, width, height, wideDst.data(), width);
    EXPECT_EQ(wideDst, expected);
}

} // namespace
