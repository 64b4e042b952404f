#include "noxcv.h"
#include "reference/border.h"
#include "support/image.h"

using test::Image;

namespace {

template <class T>
struct Entry {
    NoxStatus (*call)(const T *, int, T *, int, NoxiSize);
    int channels;
};

const Entry<Nox8u> bytes[] = {{noxiCopy_8u_C1R, 1}, {noxiCopy_8u_C3R, 3}, {noxiCopy_8u_C4R, 4}};
const Entry<Nox32f> floats[] = {{noxiCopy_32f_C1R, 1}, {noxiCopy_32f_C3R, 3}, {noxiCopy_32f_C4R, 4}};

/// Random bytes, so that floats meet every bit pattern.
template <class T>
void scramble(const Image<T> &image, test::Random &random) {
    for (int y = 0; y < image.height(); ++y)
        for (std::size_t i = 0; i < std::size_t(image.width()) * image.channels() * sizeof(T); ++i)
            reinterpret_cast<Nox8u *>(static_cast<T *>(image.row(y)))[i] = static_cast<Nox8u>(random());
}

template <class T>
void expectCopies(const Entry<T> &entry) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 4, 19}) {
            Image<T> src(size.width, size.height, entry.channels, padding);
            const Image<T> dst(size.width, size.height, entry.channels, 19 - padding);
            scramble(src, random);
            ASSERT_EQ(entry.call(src.data(), src.step(), dst.data(), dst.step(), size), noxStsNoError);
            for (int y = 0; y < size.height; ++y)
                ASSERT_EQ(std::memcmp(dst.row(y), src.row(y), size.width * entry.channels * sizeof(T)), 0);
            ASSERT_TRUE(dst.gapsIntact());
        }
}

TEST(Copy, CopiesBitPatternsOnAllSizes) {
    for (const auto &entry : bytes)
        expectCopies(entry);
    for (const auto &entry : floats)
        expectCopies(entry);
}

TEST(Copy, PackedImagesAreOneRun) {
    Image<Nox8u> src(333, 71), dst(333, 71);
    test::Random random(2);
    test::randomize(src, random);
    EXPECT_EQ(noxiCopy_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi()), noxStsNoError);
    EXPECT_TRUE(test::sameImage(dst, src));
}

TEST(Copy, StepsAreTakenAsGiven) {
    test::Random random(3);
    // Source and destination steps: zero, smaller than the row (rows overlap, later ones win), negative.
    for (const int srcStep : {0, 3, 10, 14, -14})
        for (const int dstStep : {0, 3, 10, 14, -14})
            for (const auto &[call, channels] : bytes) {
                const NoxiSize roi = {10, 6};
                Image<Nox8u> src(14 * 6, 1, channels), actual(14 * 6, 1, channels), expected(actual);
                test::randomize(src, random);
                const auto first = [&](const Image<Nox8u> &image, int step) {
                    return image.data() + (step < 0 ? -step * 5 * channels : 0);
                };
                reference::border::copy<Nox8u>(first(src, srcStep), srcStep * channels, first(expected, dstStep),
                                               dstStep * channels, roi, channels);
                ASSERT_EQ(
                    call(first(src, srcStep), srcStep * channels, first(actual, dstStep), dstStep * channels, roi),
                    noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected)) << srcStep << " " << dstStep;
            }
}

template <class T>
void expectStatuses(const Entry<T> &entry) {
    Image<T> image(4, 2, entry.channels);
    const T *before = image.data();
    const int step = image.step();
    EXPECT_EQ(entry.call(nullptr, step, image.data(), step, {0, 2}), noxStsNullPointer);
    EXPECT_EQ(entry.call(before, step, nullptr, step, {0, 2}), noxStsNullPointer);
    EXPECT_EQ(entry.call(before, step, image.data(), step, {0, 2}), noxStsBadSize);
    EXPECT_EQ(entry.call(before, step, image.data(), step, {4, 0}), noxStsBadSize);
    EXPECT_EQ(entry.call(before, step, image.data(), step, {-4, -2}), noxStsBadSize);
    EXPECT_EQ(entry.call(before, 0, image.data(), 0, {1, 1}), noxStsNoError);
}

TEST(Copy, StatusesInOrder) {
    for (const auto &entry : bytes)
        expectStatuses(entry);
    for (const auto &entry : floats)
        expectStatuses(entry);
}

TEST(Set, SetsEveryPixel) {
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<Nox8u>()) {
            Image<Nox8u> actual(size.width, size.height, 1, padding), expected(actual);
            reference::border::set<Nox8u>(201, expected.data(), expected.step(), size);
            ASSERT_EQ(noxiSet_8u_C1R(201, actual.data(), actual.step(), size), noxStsNoError);
            ASSERT_TRUE(test::sameImage(actual, expected));
        }
}

TEST(Set, StepsAreTakenAsGiven) {
    for (const int step : {0, 3, 10, 14, -14}) {
        Image<Nox8u> actual(84, 1), expected(actual);
        const int first = step < 0 ? -step * 5 : 0;
        reference::border::set<Nox8u>(9, expected.data() + first, step, {10, 6});
        ASSERT_EQ(noxiSet_8u_C1R(9, actual.data() + first, step, {10, 6}), noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, expected)) << step;
    }
}

TEST(Set, StatusesInOrder) {
    Nox8u pixel = 5;
    EXPECT_EQ(noxiSet_8u_C1R(1, nullptr, 4, {0, 1}), noxStsNullPointer);
    EXPECT_EQ(noxiSet_8u_C1R(1, &pixel, 4, {0, 1}), noxStsBadSize);
    EXPECT_EQ(noxiSet_8u_C1R(1, &pixel, 4, {1, -1}), noxStsBadSize);
    EXPECT_EQ(pixel, 5);
}

} // namespace
