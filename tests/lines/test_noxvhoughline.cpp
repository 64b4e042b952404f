#include <cmath>
#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/houghline.h"
#include "support/image.h"
#include "support/vector.h"

using test::Image;

namespace {

constexpr Nox32f degree = 0.0174532925F;

void compare(const Image<Nox8u> &src, NoxiPoint32f delta, int threshold, int most, int misalignment = 0) {
    int size = 0;
    ASSERT_EQ(noxiHoughLineGetSize_8u_C1R(src.roi(), delta, most, &size), noxStsNoError);
    const test::ShiftedBuffer buffer(size, misalignment);
    test::Vector<Nox32f> lines(2 * most);
    int count = -1;
    ASSERT_EQ(noxiHoughLine_8u32f_C1R(src.data(), src.step(), src.roi(), delta, threshold,
                                      reinterpret_cast<NoxiPoint32f *>(lines.data()), most, &count, buffer.data()),
              noxStsNoError);
    const auto expected = reference::houghline::lines(src.data(), src.step(), src.roi(), delta, threshold, most);
    ASSERT_EQ(count, int(expected.size())) << src.width() << "x" << src.height() << " " << delta.x << " " << delta.y;
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(Nox32f(lines[2 * i]), expected[std::size_t(i)].x) << i;
        ASSERT_EQ(Nox32f(lines[2 * i + 1]), expected[std::size_t(i)].y) << i;
    }
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(lines.gapsIntact());
}

/// Random pixels and some straight lines.
Image<Nox8u> &drawLines(Image<Nox8u> &image, test::Random &random, unsigned every) {
    image.generate([&](int, int, int) { return random() % every == 0 ? 1 + random() % 255 : 0; });
    for (int line = 0; line < 4; ++line) {
        const double angle = double(random() % 314) / 100, rho = double(int(random() % 100) - 30);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (std::fabs(x * std::cos(angle) + y * std::sin(angle) - rho) < 0.6)
                    image.at(x, y) = 255;
    }
    return image;
}

TEST(HoughLine, EqualsReference) {
    test::Random random(1);
    const NoxiPoint32f deltas[] = {{1, degree}, {2.5F, 0.05F}, {0.3F, 0.2F}, {1, 1.57F}, {0.7F, 3.0F}, {4, 0.1F}};
    for (const NoxiSize size : test::testSizes()) {
        Image<Nox8u> src(size.width, size.height, 1, int(random() % 5));
        drawLines(src, random, 2 + random() % 40);
        for (const NoxiPoint32f delta : deltas) {
            if (delta.x > Nox32f(size.width + size.height) || size.width * size.height > 10000)
                continue;
            compare(src, delta, 1 + int(random() % 4), 1 + int(random() % 40), int(random() % 40));
        }
    }
}

TEST(HoughLine, CoarseCellsOfSmallImages) {
    // Indices of rho reach the guards on both sides.
    test::Random random(2);
    for (int round = 0; round < 600; ++round) {
        Image<Nox8u> src(1 + int(random() % 9), 1 + int(random() % 9));
        src.generate([&](int, int, int) { return random() % 4; });
        const Nox32f most = Nox32f(src.width() + src.height());
        const NoxiPoint32f delta = {most * Nox32f(1 + random() % 1000) / 1000, 0.1F + Nox32f(random() % 30) / 10};
        compare(src, delta, 1, 1 + int(random() % 20));
    }
}

TEST(HoughLine, SumsNextToTheMiddleOfTwoCells) {
    // At the steps of 2 and 0.5 sums are exactly in the middle; at 0.0937 many lie next to it.
    test::Random random(5);
    Image<Nox8u> src(611, 97);
    src.generate([&](int, int, int) { return random() % 5 == 0; });
    for (const NoxiPoint32f delta : {NoxiPoint32f{2, degree * 15}, {0.5F, degree * 9}, {0.0937F, degree * 5}})
        compare(src, delta, 1, 3000);
}

TEST(HoughLine, SidesAroundSixteenBits) {
    test::Random random(6);
    for (const NoxiSize size : {NoxiSize{65535, 2}, {65536, 2}, {65537, 2}, {1, 65536}, {2, 65538}}) {
        Image<Nox8u> src(size.width, size.height);
        src.generate([&](int x, int y, int) { return x > 65532 || y > 65532 || random() % 97 == 0; });
        compare(src, {1, 0.4F}, 1, 200);
        compare(src, {3.7F, 0.4F}, 1, 200);
    }
}

TEST(HoughLineFull, EqualsReferenceOnAPicture) {
    test::Random random(3);
    Image<Nox8u> src(301, 97);
    compare(drawLines(src, random, 30), {1, degree}, 10, 100);
    compare(src, {1, degree}, 10, 3);
    compare(src, {0.5F, degree / 2}, 20, 50);
}

TEST(HoughLine, AnEmptyImageHasNone) {
    Image<Nox8u> src(20, 10);
    src.fill(0);
    compare(src, {1, degree}, 1, 5);
}

TEST(HoughLine, TheThresholdItselfIsNoLine) {
    Image<Nox8u> src(20, 10);
    src.fill(0);
    for (int x = 0; x < 20; ++x)
        src.at(x, 4) = 9;
    int size = 0, count = -1;
    noxiHoughLineGetSize_8u_C1R(src.roi(), {1, degree}, 4, &size);
    const test::Buffer buffer(size);
    NoxiPoint32f lines[4];
    for (const int threshold : {19, 20}) {
        ASSERT_EQ(noxiHoughLine_8u32f_C1R(src.data(), src.step(), src.roi(), {1, degree}, threshold, lines, 4, &count,
                                          buffer.data()),
                  noxStsNoError);
        EXPECT_EQ(count > 0, threshold == 19);
    }
}

TEST(HoughLine, Statuses) {
    Image<Nox8u> src(20, 10);
    src.fill(1);
    int size = 0, count = 77;
    const NoxiSize roi = {20, 10};
    noxiHoughLineGetSize_8u_C1R(roi, {1, degree}, 4, &size);
    const test::Buffer buffer(size);
    NoxiPoint32f lines[4];
    const auto call = [&](const Nox8u *s, int step, NoxiSize r, NoxiPoint32f delta, int threshold, NoxiPoint32f *out,
                          int most, int *found, Nox8u *work) {
        return noxiHoughLine_8u32f_C1R(s, step, r, delta, threshold, out, most, found, work);
    };
    const NoxiPoint32f good = {1, degree};
    EXPECT_EQ(call(nullptr, 0, {0, 0}, good, 1, lines, 4, &count, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 20, roi, good, 1, nullptr, 4, &count, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 20, roi, good, 1, lines, 4, nullptr, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, roi, good, 1, lines, 4, &count, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, {0, 10}, good, 1, lines, 4, &count, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 1, {0, 10}, good, 0, lines, 4, &count, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 1, {20, 0}, good, 0, lines, 4, &count, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 1, roi, good, 0, lines, 0, &count, buffer.data()), noxStsBadSize);
    const Nox32f nan = std::numeric_limits<Nox32f>::quiet_NaN();
    for (const NoxiPoint32f bad : {NoxiPoint32f{0, degree},
                                   {-1, degree},
                                   {30.001F, degree},
                                   {1, 0},
                                   {1, -1},
                                   {1, 3.14159274F},
                                   {nan, 1},
                                   {1, nan}})
        EXPECT_EQ(call(src.data(), 20, roi, bad, 1, lines, 4, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(src.data(), 20, roi, good, 0, lines, 4, &count, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(src.data(), 20, roi, {1e-9F, 1}, 1, lines, 4, &count, buffer.data()), noxStsBadSize);
    EXPECT_EQ(count, 77);
    EXPECT_EQ(call(src.data(), 20, roi, {30, 3.14159250F}, 1, lines, 4, &count, buffer.data()), noxStsNoError);
}

TEST(HoughLine, SizesAsStated) {
    int size = 0;
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 10}, {1, degree}, 4, &size), noxStsNoError);
    EXPECT_EQ(size, (20 * 4 + 32) * 10 + 4 * 16 + 180 * 8 + (61 * 4 + 4) * 4 + 176);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 10}, {2, 10}, 4, &size), noxStsNoError);
    EXPECT_EQ(size, (20 * 4 + 32) * 10 + 4 * 16 + (30 * 4 + 4) * 4 + 176);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({0, 0}, {0, 0}, 4, nullptr), noxStsNullPointer);
    size = 5;
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({0, 10}, {0, 1}, 4, &size), noxStsBadSize);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 0}, {0, 1}, 4, &size), noxStsBadSize);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 10}, {0, 1}, 4, &size), noxStsBadArgument);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 10}, {1, 0}, 4, &size), noxStsBadArgument);
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({20, 10}, {1, std::numeric_limits<Nox32f>::quiet_NaN()}, 4, &size),
              noxStsBadArgument);
    EXPECT_EQ(size, 5);
    const unsigned large = (30000U * 4 + 32) * 20000U + 16 + 8 * 3 + (100001U * 4 + 4) * 4 + 176;
    EXPECT_EQ(noxiHoughLineGetSize_8u_C1R({30000, 20000}, {1, 1}, 1, &size), noxStsBufferSizeWarning);
    EXPECT_EQ(unsigned(size), large);
}

} // namespace
