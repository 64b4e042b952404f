#include "noxcv.h"
#include "reference/elementwise.h"
#include "support/image.h"

using test::Image;

namespace {

struct Floats {
    NoxStatus (*fromTwo)(const Nox32f *, int, const Nox32f *, int, Nox32f *, int, NoxiSize);
    NoxStatus (*inPlace)(const Nox32f *, int, Nox32f *, int, NoxiSize);
    int channels;
};
struct Bytes {
    NoxStatus (*fromTwo)(const Nox8u *, int, const Nox8u *, int, Nox8u *, int, NoxiSize, int);
    NoxStatus (*inPlace)(const Nox8u *, int, Nox8u *, int, NoxiSize, int);
    int channels;
};

const Floats floats[] = {{noxiSub_32f_C1R, noxiSub_32f_C1IR, 1},
                         {noxiSub_32f_C3R, noxiSub_32f_C3IR, 3},
                         {noxiSub_32f_C4R, noxiSub_32f_C4IR, 4}};
const Bytes bytes[] = {{noxiSub_8u_C1RSfs, noxiSub_8u_C1IRSfs, 1},
                       {noxiSub_8u_C3RSfs, noxiSub_8u_C3IRSfs, 3},
                       {noxiSub_8u_C4RSfs, noxiSub_8u_C4IRSfs, 4}};

/// Compares both forms; fromTwo(a, b, d) and inPlace(a, d) take images, formula(a, b) elements.
template <class T, class FromTwo, class InPlace, class Formula>
void expectEqualsReference(NoxiSize size, int channels, int padding, test::Random &random, const FromTwo &fromTwo,
                           const InPlace &inPlace, const Formula &formula) {
    Image<T> a(size.width, size.height, channels, padding), b(size.width, size.height, channels),
        actual(size.width, size.height, channels, 2 * padding), expected(size.width, size.height, channels);
    test::randomize(a, random);
    test::randomize(b, random);
    expected.generate([&](int x, int y, int c) { return formula(a.at(x, y, c), b.at(x, y, c)); });
    ASSERT_EQ(fromTwo(a, b, actual), noxStsNoError);
    ASSERT_TRUE(test::sameImage(actual, expected));
    ASSERT_EQ(inPlace(a, b), noxStsNoError);
    ASSERT_TRUE(test::sameImage(b, expected));
}

TEST(Sub32f, EqualsReference) {
    test::Random random(1);
    for (const auto &[fromTwo, inPlace, channels] : floats)
        for (const NoxiSize size : test::testSizes())
            for (const int padding : {0, 1, 4, 22})
                expectEqualsReference<Nox32f>(
                    size, channels, padding, random,
                    [&, call = fromTwo](auto &a, auto &b, auto &d) {
                        return call(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size);
                    },
                    [&, call = inPlace](auto &a, auto &d) {
                        return call(a.data(), a.step(), d.data(), d.step(), size);
                    },
                    [](Nox32f a, Nox32f b) { return b - a; });
}

TEST(Sub8u, EqualsReferenceAtEveryScale) {
    test::Random random(2);
    for (const auto &[fromTwo, inPlace, channels] : bytes)
        for (int scale = -10; scale <= 11; ++scale)
            for (const NoxiSize size : {NoxiSize{1, 1}, {7, 3}, {33, 17}, {64, 64}, {257, 6}})
                for (const int padding : {0, 13})
                    expectEqualsReference<Nox8u>(
                        size, channels, padding, random,
                        [&, call = fromTwo](auto &a, auto &b, auto &d) {
                            return call(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size, scale);
                        },
                        [&, call = inPlace](auto &a, auto &d) {
                            return call(a.data(), a.step(), d.data(), d.step(), size, scale);
                        },
                        [=](Nox8u a, Nox8u b) { return reference::elementwise::subtract(a, b, scale); });
}

TEST(Sub, DestinationMayBeEitherSource) {
    test::Random random(3);
    for (const bool first : {true, false}) {
        Image<Nox8u> a(131, 5), b(131, 5), expected(131, 5);
        test::randomize(a, random);
        test::randomize(b, random);
        expected.generate(
            [&](int x, int y, int) { return reference::elementwise::subtract(a.at(x, y), b.at(x, y), 2); });
        Image<Nox8u> &d = first ? a : b;
        noxiSub_8u_C1RSfs(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), a.roi(), 2);
        EXPECT_TRUE(test::sameImage(d, expected));
    }
}

/// Pixels are done in ascending order: a destination that begins within a source reads what it has written.
TEST(Sub, OverlappingImagesGoInAscendingOrder) {
    test::Random random(6);
    for (const int shift : {-40, -16, -3, -1, 1, 2, 7, 16, 31, 32, 40})
        for (const int scale : {0, 1, 2, 9, -1})
            for (const bool first : {true, false}) {
                Image<Nox8u> a(300, 1), b(300, 1);
                test::randomize(a, random);
                test::randomize(b, random);
                Image<Nox8u> a2(a), b2(b);
                const int from = 60, n = 150;
                Nox8u *d = (first ? a : b).data() + from + shift, *expected = (first ? a2 : b2).data() + from + shift;
                for (int x = 0; x < n; ++x)
                    expected[x] = reference::elementwise::subtract(a2.data()[from + x], b2.data()[from + x], scale);
                noxiSub_8u_C1RSfs(a.data() + from, 300, b.data() + from, 300, d, 300, {n, 1}, scale);
                ASSERT_TRUE(test::sameImage(a, a2)) << shift << " " << scale;
                ASSERT_TRUE(test::sameImage(b, b2)) << shift << " " << scale;
            }
}

TEST(Sub, StepsAreTakenAsGiven) {
    test::Random random(4);
    for (const int step : {0, 5, -20})
        for (const int scale : {0, 9}) {
            Image<Nox8u> a(100, 1), b(100, 1), actual(100, 1), expected(actual);
            test::randomize(a, random);
            test::randomize(b, random);
            const int first = step < 0 ? -4 * step : 0;
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 20; ++x) {
                    const int i = first + y * step + x;
                    expected.at(i, 0) = reference::elementwise::subtract(a.at(i, 0), b.at(i, 0), scale);
                }
            EXPECT_EQ(noxiSub_8u_C1RSfs(a.data() + first, step, b.data() + first, step, actual.data() + first, step,
                                        {20, 5}, scale),
                      noxStsNoError);
            EXPECT_TRUE(test::sameImage(actual, expected)) << step;
        }
}

/// The width comes before the pointers with three and four channels, the height never.
template <class FromTwo, class InPlace, class T>
void expectStatuses(const FromTwo &fromTwo, const InPlace &inPlace, int channels, T *pixel) {
    const NoxStatus widthFirst = channels == 1 ? noxStsNullPointer : noxStsBadSize;
    const T before = *pixel;
    EXPECT_EQ(fromTwo(nullptr, pixel, pixel, NoxiSize{0, 1}), widthFirst);
    EXPECT_EQ(fromTwo(nullptr, pixel, pixel, NoxiSize{-1, 0}), widthFirst);
    EXPECT_EQ(inPlace(nullptr, pixel, NoxiSize{0, 1}), widthFirst);
    EXPECT_EQ(fromTwo(nullptr, pixel, pixel, NoxiSize{1, 0}), noxStsNullPointer);
    EXPECT_EQ(fromTwo(pixel, nullptr, pixel, NoxiSize{1, 1}), noxStsNullPointer);
    EXPECT_EQ(fromTwo(pixel, pixel, nullptr, NoxiSize{1, 1}), noxStsNullPointer);
    EXPECT_EQ(inPlace(nullptr, pixel, NoxiSize{1, 0}), noxStsNullPointer);
    EXPECT_EQ(inPlace(pixel, nullptr, NoxiSize{1, 1}), noxStsNullPointer);
    EXPECT_EQ(fromTwo(pixel, pixel, pixel, NoxiSize{0, 1}), noxStsBadSize);
    EXPECT_EQ(fromTwo(pixel, pixel, pixel, NoxiSize{1, 0}), noxStsBadSize);
    EXPECT_EQ(inPlace(pixel, pixel, NoxiSize{1, -1}), noxStsBadSize);
    EXPECT_EQ(*pixel, before);
}

TEST(Sub, StatusesInOrder) {
    for (const auto &[fromTwo, inPlace, channels] : floats) {
        Nox32f pixel[4] = {5, 5, 5, 5};
        expectStatuses([call = fromTwo](const Nox32f *a, const Nox32f *b, Nox32f *d,
                                        NoxiSize roi) { return call(a, 1, b, 1, d, 1, roi); },
                       [call = inPlace](const Nox32f *a, Nox32f *d, NoxiSize roi) { return call(a, 1, d, 1, roi); },
                       channels, pixel);
    }
    for (const auto &[fromTwo, inPlace, channels] : bytes)
        for (const int scale : {0, 1, 2, 9, -1, -8}) {
            Nox8u pixel[4] = {5, 5, 5, 5};
            expectStatuses(
                [=, call = fromTwo](const Nox8u *a, const Nox8u *b, Nox8u *d, NoxiSize roi) {
                    return call(a, 1, b, 1, d, 1, roi, scale);
                },
                [=, call = inPlace](const Nox8u *a, Nox8u *d, NoxiSize roi) { return call(a, 1, d, 1, roi, scale); },
                channels, pixel);
        }
}

} // namespace
