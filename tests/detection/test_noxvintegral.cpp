#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/integral.h"
#include "support/image.h"

using test::Image;

namespace {

/// The members by the elements of their two tables; void where there is no second one.
template <class T, class Q, bool tilted>
struct Form {
    using Sum = T;
    using Square = Q;
    static constexpr bool isTilted = tilted;
};

// Plain members have a table of sums alone.
NoxStatus build(bool tilted, const Image<Nox8u> &src, Image<Nox32s> &table, NoxiSize roi, Nox32s offset) {
    return (tilted ? noxiTiltedIntegral_8u32s_C1R : noxiIntegral_8u32s_C1R)(src.data(), src.step(), table.data(),
                                                                            table.step(), roi, offset);
}
NoxStatus build(bool tilted, const Image<Nox8u> &src, Image<Nox32f> &table, NoxiSize roi, Nox32f offset) {
    return (tilted ? noxiTiltedIntegral_8u32f_C1R : noxiIntegral_8u32f_C1R)(src.data(), src.step(), table.data(),
                                                                            table.step(), roi, offset);
}
NoxStatus build(bool tilted, const Nox8u *src, int step, Nox32s *table, int tableStep, Nox64f *sqr, int sqrStep,
                NoxiSize roi, Nox32s offset, Nox64f sqrOffset) {
    return (tilted ? noxiTiltedSqrIntegral_8u32s64f_C1R
                   : noxiSqrIntegral_8u32s64f_C1R)(src, step, table, tableStep, sqr, sqrStep, roi, offset, sqrOffset);
}
NoxStatus build(bool tilted, const Nox8u *src, int step, Nox32f *table, int tableStep, Nox64f *sqr, int sqrStep,
                NoxiSize roi, Nox32f offset, Nox64f sqrOffset) {
    return (tilted ? noxiTiltedSqrIntegral_8u32f64f_C1R
                   : noxiSqrIntegral_8u32f64f_C1R)(src, step, table, tableStep, sqr, sqrStep, roi, offset, sqrOffset);
}
NoxStatus build(bool tilted, const Nox8u *src, int step, Nox32s *table, int tableStep, Nox32s *sqr, int sqrStep,
                NoxiSize roi, Nox32s offset, Nox32s sqrOffset) {
    return (tilted ? noxiTiltedSqrIntegral_8u32s_C1R : noxiSqrIntegral_8u32s_C1R)(src, step, table, tableStep, sqr,
                                                                                  sqrStep, roi, offset, sqrOffset);
}

template <class T>
void reference(bool tilted, const Image<Nox8u> &src, Image<T> &table, NoxiSize roi, T offset, bool square,
               bool takesNext) {
    if (tilted)
        reference::integral::tilted(src.data(), src.step(), table.data(), table.step(), roi, offset, square, takesNext);
    else
        reference::integral::upright(src.data(), src.step(), table.data(), table.step(), roi, offset, square);
}

/// Pixels of a picture; bright ones in every fourth.
Image<Nox8u> &fillPixels(Image<Nox8u> &src, test::Random &random) {
    const bool bright = random() % 4 == 0;
    return src.generate([&](int, int, int) { return bright ? 250 + random() % 6 : random(); });
}

/// Column w of the tables from row 2 on; what a builder may add to.
template <class T>
void setLastColumn(Image<T> &table, int w, T value) {
    for (int y = 2; y < table.height(); ++y)
        table.at(w, y) = value;
}

template <class T>
class PlainTable : public ::testing::Test {};
using PlainForms = ::testing::Types<Form<Nox32s, void, false>, Form<Nox32f, void, false>, Form<Nox32s, void, true>,
                                    Form<Nox32f, void, true>>;
TYPED_TEST_SUITE(PlainTable, PlainForms);

template <class F>
void comparePlain(NoxiSize size, int padding, typename F::Sum offset, typename F::Sum held, test::Random &random) {
    using T = typename F::Sum;
    const int extra = F::isTilted ? 2 : 1;
    Image<Nox8u> src(size.width, size.height, 1, padding);
    fillPixels(src, random);
    Image<T> actual(size.width + extra, size.height + extra, 1, padding * int(sizeof(T)));
    actual.fill(T(77));
    setLastColumn(actual, size.width, held);
    Image<T> expected(actual);
    ASSERT_EQ(build(F::isTilted, src, actual, size, offset), noxStsNoError);
    reference(F::isTilted, src, expected, size, offset, false, false);
    ASSERT_TRUE(test::sameImage(actual, expected)) << +offset << " " << +held;
}

TYPED_TEST(PlainTable, EqualsReference) {
    test::Random random(1);
    using T = typename TypeParam::Sum;
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 5})
            for (const T offset : {T(0), T(1000), T(-77)})
                comparePlain<TypeParam>(size, padding, offset, T(0), random);
}

TYPED_TEST(PlainTable, AnyOffsetAndAnyContents) {
    test::Random random(2);
    using T = typename TypeParam::Sum;
    std::vector<T> values = {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), T(16777213), T(3)};
    if constexpr (std::is_same_v<T, Nox32f>) {
        const T infinity = std::numeric_limits<T>::infinity();
        values.insert(values.end(), {0.1F, -0.0F, 1e-40F, 1e12F, 3e12F, 0x1p-10F, 0x1p-11F, infinity,
                                     std::numeric_limits<T>::quiet_NaN(), 1048575.93F});
    }
    for (const NoxiSize size : {NoxiSize{1, 1}, {19, 7}, {70, 33}})
        for (const T offset : values) {
            comparePlain<TypeParam>(size, 0, offset, T(0), random);
            for (const T held : values)
                comparePlain<TypeParam>(size, 0, offset, held, random);
        }
}

template <class T>
class SquareTable : public ::testing::Test {};
using SquareForms =
    ::testing::Types<Form<Nox32s, Nox64f, false>, Form<Nox32f, Nox64f, false>, Form<Nox32s, Nox32s, false>,
                     Form<Nox32s, Nox64f, true>, Form<Nox32f, Nox64f, true>, Form<Nox32s, Nox32s, true>>;
TYPED_TEST_SUITE(SquareTable, SquareForms);

/// The one member that takes the pixel behind each row in gets it; all others have a guard page or a gap there.
template <class F>
void compareSquares(NoxiSize size, int padding, typename F::Sum offset, typename F::Square sqrOffset,
                    test::Random &random) {
    using T = typename F::Sum;
    using Q = typename F::Square;
    constexpr bool takesNext = F::isTilted && std::is_same_v<Q, Nox32s>;
    const int extra = F::isTilted ? 2 : 1;
    Image<Nox8u> src(size.width + (takesNext ? 1 : 0), size.height, 1, padding);
    fillPixels(src, random);
    Image<T> actual(size.width + extra, size.height + extra, 1, padding * int(sizeof(T)));
    Image<Q> actualSqr(size.width + extra, size.height + extra, 1, padding * int(sizeof(Q)));
    actual.fill(T(5));
    actualSqr.fill(Q(6));
    Image<T> expected(actual);
    Image<Q> expectedSqr(actualSqr);
    ASSERT_EQ(build(F::isTilted, src.data(), src.step(), actual.data(), actual.step(), actualSqr.data(),
                    actualSqr.step(), size, offset, sqrOffset),
              noxStsNoError);
    reference(F::isTilted, src, expected, size, offset, false, takesNext);
    reference(F::isTilted, src, expectedSqr, size, sqrOffset, true, takesNext);
    ASSERT_TRUE(test::sameImage(actual, expected)) << +offset;
    ASSERT_TRUE(test::sameImage(actualSqr, expectedSqr)) << +sqrOffset;
}

TYPED_TEST(SquareTable, EqualsReference) {
    test::Random random(3);
    using T = typename TypeParam::Sum;
    using Q = typename TypeParam::Square;
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 5})
            for (const int offset : {0, 1000, -77})
                compareSquares<TypeParam>(size, padding, T(offset), Q(3 * offset), random);
}

TYPED_TEST(SquareTable, AnyOffset) {
    test::Random random(4);
    using T = typename TypeParam::Sum;
    using Q = typename TypeParam::Square;
    std::vector<Q> values = {std::numeric_limits<Q>::max(), std::numeric_limits<Q>::lowest(), Q(16777213), Q(3)};
    if constexpr (std::is_same_v<Q, Nox64f>)
        values.insert(values.end(), {0.1, -0.0, 1e-310, 9007199254740991.0, 9007199254740991.0 / 1024, 1e20, 0x1p-10,
                                     0x1p-11, std::numeric_limits<Q>::infinity(), 1048575.931234567891});
    for (const NoxiSize size : {NoxiSize{1, 1}, {19, 7}, {70, 33}, {300, 200}})
        for (const Q offset : values)
            compareSquares<TypeParam>(size, 0, T(1), offset, random);
}

TYPED_TEST(SquareTable, BrightImagesWrap) {
    using T = typename TypeParam::Sum;
    using Q = typename TypeParam::Square;
    if constexpr (std::is_same_v<Q, Nox32s>) {
        test::Random random(5);
        compareSquares<TypeParam>({301, 240}, 0, T(2147483000), Q(2147483000), random); // squares pass 2^32
    }
}

TYPED_TEST(SquareTable, StatusesInOrder) {
    using F = TypeParam;
    using T = typename F::Sum;
    using Q = typename F::Square;
    const int extra = F::isTilted ? 2 : 1, w = 6;
    Image<Nox8u> src(w + 1, 4);
    Image<T> table(w + extra, 4 + extra, 1, int(sizeof(T)));
    Image<Q> sqr(w + extra, 4 + extra, 1, int(sizeof(Q)));
    table.fill(T(9));
    sqr.fill(Q(9));
    const Image<T> before(table);
    const Image<Q> sqrBefore(sqr);
    const int t = (w + extra) * int(sizeof(T)), q = (w + extra) * int(sizeof(Q));
    const auto call = [&](const Nox8u *s, int sStep, T *a, int aStep, Q *b, int bStep, NoxiSize roi) {
        return build(F::isTilted, s, sStep, a, aStep, b, bStep, roi, T(0), Q(0));
    };
    const NoxiSize roi = {w, 4};
    EXPECT_EQ(call(nullptr, 0, table.data(), 0, sqr.data(), 0, {0, 0}), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 7, nullptr, t, sqr.data(), q, roi), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 7, table.data(), t, nullptr, q, {0, 4}), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, table.data(), 0, sqr.data(), 0, {0, 4}), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, table.data(), 0, sqr.data(), 0, {w, -1}), noxStsBadSize);
    EXPECT_EQ(call(src.data(), w - 1, table.data(), t + 1, sqr.data(), q + 1, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), w, table.data(), t - 1, sqr.data(), q + 1, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), w, table.data(), t + 1, sqr.data(), q - 1, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), w, table.data(), t, sqr.data(), q, {2147483647, 4}), noxStsBadStep);
    EXPECT_EQ(call(src.data(), w, table.data(), t + 2, sqr.data(), q, roi), noxStsOddStep);
    EXPECT_EQ(call(src.data(), w, table.data(), t, sqr.data(), q + int(sizeof(Q)) / 2, roi), noxStsOddStep);
    EXPECT_TRUE(test::sameImage(table, before));
    EXPECT_TRUE(test::sameImage(sqr, sqrBefore));
    EXPECT_EQ(call(src.data(), w, table.data(), t, sqr.data(), q, roi), noxStsNoError);
}

TYPED_TEST(PlainTable, StatusesInOrder) {
    using F = TypeParam;
    using T = typename F::Sum;
    const int extra = F::isTilted ? 2 : 1;
    const auto call = [&](const Nox8u *s, int sStep, T *a, int aStep, NoxiSize roi) {
        if constexpr (std::is_same_v<T, Nox32s>)
            return (F::isTilted ? noxiTiltedIntegral_8u32s_C1R : noxiIntegral_8u32s_C1R)(s, sStep, a, aStep, roi, 0);
        else
            return (F::isTilted ? noxiTiltedIntegral_8u32f_C1R : noxiIntegral_8u32f_C1R)(s, sStep, a, aStep, roi, 0);
    };
    Image<Nox8u> src(6, 4);
    Image<T> table(6 + extra, 4 + extra, 1, 4);
    table.fill(T(9));
    const Image<T> before(table);
    const int t = (6 + extra) * 4;
    EXPECT_EQ(call(nullptr, 0, table.data(), 0, {0, 0}), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, table.data(), 0, {0, 4}), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 5, table.data(), t + 1, {6, 4}), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 6, table.data(), t - 1, {6, 4}), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 6, table.data(), t + 1, {6, 4}), noxStsOddStep);
    EXPECT_TRUE(test::sameImage(table, before));
}

TEST(TiltedTable, CountsThePixelsOfACone) {
    // One bright pixel: each element whose cone holds it grows by it.
    Image<Nox8u> src(9, 6);
    src.fill(0);
    src.at(4, 1) = 100;
    Image<Nox32s> table(11, 8);
    ASSERT_EQ(build(true, src, table, src.roi(), 0), noxStsNoError);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 11; ++c) {
            // The cone of [r][c] holds the pixels of row r - 2 - k that lie at c - 1 - k to c + k.
            const int k = r - 2 - 1;
            const bool inside = k >= 0 && 4 >= c - 1 - k && 4 <= c + k;
            EXPECT_EQ(table.at(c, r), inside ? 100 : 0) << r << " " << c;
        }
}

TEST(TiltedTable, WhatItIsAddedToMayNeedExtendedPrecision) {
    // Fractions in the last column that lie next to midpoints, together with pixels and with each other.
    test::Random random(9);
    const Nox32f fractions[] = {0.0F, 0x1p-16F, -0x1p-16F, 0x1p-50F, -0x1p-50F};
    for (int round = 0; round < 4000; ++round) {
        Image<Nox8u> src(1 + int(random() % 4), 14);
        src.generate([&](int, int, int) { return random() % 2 ? 0 : random(); });
        Image<Nox32f> actual(src.width() + 2, 16);
        actual.fill(0);
        for (int y = 2; y < 16; ++y)
            actual.at(src.width(), y) = fractions[random() % 5];
        Image<Nox32f> expected(actual);
        ASSERT_EQ(build(true, src, actual, src.roi(), 0.0F), noxStsNoError);
        reference(true, src, expected, src.roi(), 0.0F, false, false);
        ASSERT_TRUE(test::sameImage(actual, expected)) << round;
    }
}

TEST(UprightTable, SumsOfRectangles) {
    test::Random random(8);
    Image<Nox8u> src(40, 30);
    fillPixels(src, random);
    Image<Nox32s> table(41, 31);
    ASSERT_EQ(build(false, src, table, src.roi(), 12345), noxStsNoError);
    int sum = 0;
    for (int y = 3; y < 20; ++y)
        for (int x = 7; x < 33; ++x)
            sum += src.at(x, y);
    EXPECT_EQ(table.at(33, 20) - table.at(33, 3) - table.at(7, 20) + table.at(7, 3), sum);
}

} // namespace
