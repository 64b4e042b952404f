#include "filter/noxvgauss.h"

#include <xmmintrin.h>

#include <cmath>
#include <cstdint>

#include "noxcv.h"
#include "reference/gauss.h"
#include "support/image.h"

using test::Buffer;
using test::Image;

namespace {

/// The taps for a buffer at some address: divided by the sum, or, from 11 taps on, in groups of 8 behind a 16-byte
/// boundary multiplied by a refined estimate.
std::vector<Nox32f> expectedTaps(int size, Nox32f sigma, const void *buffer) {
    std::vector<Nox32f> taps;
    Nox32f sum = 0;
    for (int i = 0; i <= size; ++i) {
        const Nox32f d = Nox32f(i - size / 2), exponent = (0 - d * d) / ((sigma + sigma) * sigma);
        taps.push_back(Nox32f(std::exp(double(exponent))));
        sum += taps.back();
    }
    taps.pop_back();
    const Nox32f r = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(sum)));
    const Nox32f product = sum * r, square = product * r, refined = (r + r) - square;
    int i = 0;
    const auto address = reinterpret_cast<std::uintptr_t>(buffer);
    if (size >= 11 && address % 4 == 0) {
        for (; (address + 4 * unsigned(i)) % 16 != 0; ++i)
            taps[std::size_t(i)] /= sum;
        for (; i + 8 <= size; i += 8)
            for (int k = 0; k < 8; ++k)
                taps[std::size_t(i + k)] *= refined;
    }
    for (; i < size; ++i)
        taps[std::size_t(i)] /= sum;
    return taps;
}

int bufferSize(NoxiSize roi, int kernelSize) {
    int size = 0;
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R(roi, kernelSize, &size), noxStsNoError);
    return size;
}

testing::AssertionResult agrees(const Image<Nox32f> &src, int kernelSize, Nox32f sigma, int padding, int slack) {
    Image<Nox32f> actual(src.width(), src.height(), 1, padding), expected(actual);
    const Buffer buffer(std::size_t(bufferSize(src.roi(), kernelSize) + slack));
    const auto taps = expectedTaps(kernelSize, sigma, buffer.data());
    reference::gauss::gauss(src.data(), src.step(), expected.data(), expected.step(), src.roi(), taps);
    const NoxStatus status = noxiFilterGaussBorder_32f_C1R(src.data(), src.step(), actual.data(), actual.step(),
                                                           src.roi(), kernelSize, sigma, 0, 1e9F, buffer.data());
    if (status != noxStsNoError)
        return testing::AssertionFailure() << "status " << status;
    return test::sameImage(actual, expected) << " kernelSize " << kernelSize << " sigma " << sigma;
}

void compareSizes(const std::vector<int> &kernelSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int kernelSize : kernelSizes) {
            Image<Nox32f> src(size.width, size.height, 1, size.width % 2 * 4);
            test::randomize(src, random);
            ASSERT_TRUE(agrees(src, kernelSize, 0.3F + Nox32f(kernelSize) / 5, size.height % 2 * 12, size.width % 32));
        }
}

TEST(Gauss, StandardSizes) { compareSizes({3, 5, 9, 11, 13, 21}); }
TEST(GaussFull, ManyKernelSizes) { compareSizes({3, 5, 7, 9, 11, 13, 15, 17, 19, 23, 31, 65, 301}); }

/// Images that are too large for the nearest caches: there all but the largest kernels go down by pairs of rows, and
/// ask for the rows that come next.
TEST(Gauss, ImagesThatLeaveTheCaches) {
    test::Random random(6);
    for (const int height : {398, 399}) {
        Image<Nox32f> src(331, height, 1, 4);
        test::randomize(src, random);
        for (const int kernelSize : {3, 5, 9, 63, 65})
            ASSERT_TRUE(agrees(src, kernelSize, 0.3F + Nox32f(kernelSize) / 5, 8, 0));
    }
}

TEST(Gauss, FlatImageComesOutDarker) {
    Image<Nox32f> src(8, 8), dst(8, 8);
    src.fill(1000);
    const Buffer buffer(std::size_t(bufferSize({8, 8}, 3)));
    ASSERT_EQ(noxiFilterGaussBorder_32f_C1R(src.data(), 32, dst.data(), 32, {8, 8}, 3, 1.0F, 1, 0, buffer.data()),
              noxStsNoError);
    const double fourth = std::exp(-2.0), sum = 1 + 2 * std::exp(-0.5) + fourth;
    EXPECT_NEAR(dst.at(4, 4), 1000 * (1 - fourth / sum) * (1 - fourth / sum), 0.01);
    EXPECT_LT(dst.at(4, 4), 950);
}

TEST(Gauss, WorksInPlace) {
    test::Random random(2);
    Image<Nox32f> src(67, 40), expected(67, 40);
    test::randomize(src, random);
    const Buffer buffer(std::size_t(bufferSize({67, 40}, 9)));
    const auto run = [&](const Image<Nox32f> &dst) {
        noxiFilterGaussBorder_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), {67, 40}, 9, 2.0F, 1, 0,
                                      buffer.data());
    };
    run(expected);
    run(src);
    EXPECT_TRUE(test::sameImage(src, expected));
}

TEST(Gauss, RowsThatOverlapAreWrittenInTheirOrder) {
    test::Random random(5);
    Image<Nox32f> src(40, 31), apart(40, 31);
    test::randomize(src, random);
    const Buffer buffer(std::size_t(bufferSize({40, 31}, 9)));
    const auto run = [&](Nox32f *dst, int step) {
        return noxiFilterGaussBorder_32f_C1R(src.data(), src.step(), dst, step, {40, 31}, 9, 2.0F, 1, 0, buffer.data());
    };
    ASSERT_EQ(run(apart.data(), apart.step()), noxStsNoError);
    constexpr int step = 40; // bytes: each row begins ten pixels behind the one before
    std::vector<Nox32f> expected(30 * step / 4 + 40), actual(expected);
    for (int y = 0; y < 31; ++y)
        for (int x = 0; x < 40; ++x)
            expected[std::size_t(y * step / 4 + x)] = apart.at(x, y);
    ASSERT_EQ(run(actual.data(), step), noxStsNoError);
    EXPECT_EQ(actual, expected);
}

TEST(Gauss, SigmaIsNotTested) {
    test::Random random(4);
    Image<Nox32f> src(20, 9), dst(20, 9), other(20, 9);
    test::randomize(src, random);
    const Buffer buffer(std::size_t(bufferSize({20, 9}, 5)));
    const auto run = [&](const Image<Nox32f> &to, Nox32f sigma) {
        return noxiFilterGaussBorder_32f_C1R(src.data(), src.step(), to.data(), to.step(), {20, 9}, 5, sigma, 1, 0,
                                             buffer.data());
    };
    ASSERT_EQ(run(dst, 1.5F), noxStsNoError);
    ASSERT_EQ(run(other, -1.5F), noxStsNoError);
    EXPECT_TRUE(test::sameImage(dst, other));
    ASSERT_EQ(run(dst, 0.0F), noxStsNoError);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 20; ++x)
            EXPECT_TRUE(std::isnan(Nox32f(dst.at(x, y)))) << x << ' ' << y;
}

TEST(Gauss, HalvesStandAlone) {
    test::Random random(3);
    for (const NoxiSize size : {NoxiSize{1, 1}, NoxiSize{50, 7}, NoxiSize{3, 300}}) {
        Image<Nox32f> src(size.width, size.height, 1, 8), actual(size.width, size.height, 1, 4), expected(actual);
        test::randomize(src, random);
        const std::vector<Nox32f> taps = {0.1F, -3.0F, 7.25F, 1e-3F, 2.0F};
        const Buffer row(std::size_t(size.width + 4) * 4), column(std::size_t(size.height + 4) * 4);
        ownRowConvolution(src.data(), src.step(), actual.data(), actual.step(), size.width, size.height, taps.data(), 5,
                          reinterpret_cast<Nox32f *>(row.data()));
        ownColConvolution(actual.data(), actual.step(), size.width, size.height, taps.data(), 5,
                          reinterpret_cast<Nox32f *>(column.data()));
        reference::gauss::gauss(src.data(), src.step(), expected.data(), expected.step(), size, taps);
        EXPECT_TRUE(test::sameImage(actual, expected));
    }
}

TEST(Gauss, BufferSize) {
    EXPECT_EQ(bufferSize({10, 7}, 5), ((12 + 5) * (7 + 5) + 5) * 4 + 64);
    EXPECT_EQ(bufferSize({1, 1}, 3), ((4 + 3) * (1 + 3) + 3) * 4 + 64);
    int size = 77;
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({0, 1}, 2, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({0, 1}, 2, &size), noxStsBadSize);
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({1, 0}, 2, &size), noxStsBadSize);
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({1, 1}, 2, &size), noxStsBadArgument);
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({1, 1}, 1, &size), noxStsBadArgument);
    EXPECT_EQ(noxiFilterGaussGetBufferSize_32f_C1R({1, 1}, 4, &size), noxStsBadArgument);
    EXPECT_EQ(size, 77);
}

TEST(Gauss, StatusesInOrder) {
    Image<Nox32f> src(8, 2), dst(8, 2);
    dst.fill(5);
    const Image<Nox32f> before(dst);
    const Buffer buffer(4096);
    const auto call = [&](const Nox32f *s, int ss, Nox32f *d, int ds, NoxiSize roi, int kernelSize, Nox8u *b) {
        return noxiFilterGaussBorder_32f_C1R(s, ss, d, ds, roi, kernelSize, 1.0F, 77, 0, b);
    };
    EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 0}, 2, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 2, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 0}, 2, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 2}, 2, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {8, 0}, 2, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 7, dst.data(), 32, {8, 2}, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 32, dst.data(), 7, {8, 2}, 2, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 32, dst.data(), 32, {8, 2}, 2, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(src.data(), 32, dst.data(), 32, {8, 2}, 1, buffer.data()), noxStsBadArgument);
    EXPECT_TRUE(test::sameImage(dst, before));
    // Steps are measured in pixels: 8 will do for 8 pixels of one row.
    EXPECT_EQ(call(src.data(), 8, dst.data(), 9, {8, 1}, 3, buffer.data()), noxStsNoError);
}

} // namespace
