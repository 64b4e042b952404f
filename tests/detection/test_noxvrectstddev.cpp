#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/integral.h"
#include "support/image.h"
#include "support/threads.h"

using test::Image;

namespace {

/// One member's tables and result.
template <class S, class Q, class D, bool tilted>
struct Member {
    using Sum = S;
    using Square = Q;
    using Result = D;
    static constexpr bool isTilted = tilted;
};

NoxStatus deviate(bool tilted, const Nox32f *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst, int dstStep,
                  NoxiSize roi, NoxiRect rect, int) {
    return (tilted ? noxiTiltedRectStdDev_32f_C1R : noxiRectStdDev_32f_C1R)(src, srcStep, sqr, sqrStep, dst, dstStep,
                                                                            roi, rect);
}
NoxStatus deviate(bool tilted, const Nox32s *src, int srcStep, const Nox64f *sqr, int sqrStep, Nox32f *dst, int dstStep,
                  NoxiSize roi, NoxiRect rect, int) {
    return (tilted ? noxiTiltedRectStdDev_32s32f_C1R : noxiRectStdDev_32s32f_C1R)(src, srcStep, sqr, sqrStep, dst,
                                                                                  dstStep, roi, rect);
}
NoxStatus deviate(bool tilted, const Nox32s *src, int srcStep, const Nox32s *sqr, int sqrStep, Nox32s *dst, int dstStep,
                  NoxiSize roi, NoxiRect rect, int scaleFactor) {
    return (tilted ? noxiTiltedRectStdDev_32s_C1RSfs : noxiRectStdDev_32s_C1RSfs)(src, srcStep, sqr, sqrStep, dst,
                                                                                  dstStep, roi, rect, scaleFactor);
}

/// Tables of a size that holds all corners of a rectangle, and where position (0, 0) lies in them.
template <class M>
struct Tables {
    NoxiSize roi;
    NoxiRect rect;
    int left; ///< columns before position 0, for tilted corners
    Image<typename M::Sum> src;
    Image<typename M::Square> sqr;

    static int columns(NoxiSize roi, NoxiRect r) {
        return M::isTilted ? roi.width + r.x + r.y + r.width + r.height : roi.width + r.x + r.width;
    }
    static int rows(NoxiSize roi, NoxiRect r) {
        return M::isTilted ? roi.height + r.x + r.y + r.width + r.height : roi.height + r.y + r.height;
    }
    Tables(NoxiSize size, NoxiRect r, int padding = 0)
        : roi(size), rect(r), left(M::isTilted ? std::max(0, r.y + r.height - r.x) : 0),
          src(columns(size, r) + left, rows(size, r), 1, padding * int(sizeof(typename M::Sum))),
          sqr(columns(size, r) + left, rows(size, r), 1, padding * int(sizeof(typename M::Square))) {}

    const typename M::Sum *sums() const { return src.row(0) + left; }
    const typename M::Square *squares() const { return sqr.row(0) + left; }

    /// Tables of a random picture; flat pictures have a deviation of 0.
    void build(test::Random &random, bool flat) {
        const int extra = M::isTilted ? 2 : 1;
        const NoxiSize size = {src.width() - extra, src.height() - extra};
        Image<Nox8u> picture(std::max(1, size.width), std::max(1, size.height));
        const int level = int(random() % 256), range = flat ? 1 : 1 + int(random() % 256);
        picture.generate([&](int, int, int) { return std::min(255, level + int(random() % range)); });
        fillTable(picture, src, false);
        fillTable(picture, sqr, true);
    }
    template <class T>
    void fillTable(const Image<Nox8u> &picture, Image<T> &table, bool square) {
        table.fill(T(0));
        if (table.width() <= 2 || table.height() <= 2)
            return;
        if (M::isTilted)
            reference::integral::tilted(picture.data(), picture.step(), table.data(), table.step(), picture.roi(), T(0),
                                        square);
        else
            reference::integral::upright(picture.data(), picture.step(), table.data(), table.step(), picture.roi(),
                                         T(0), square);
    }
    template <class T>
    void scatter(test::Random &random, Image<T> &table, const std::vector<T> &specials) {
        table.generate([&](int, int, int) {
            return random() % 8 == 0 && !specials.empty() ? specials[random() % specials.size()]
                                                          : test::randomElement<T>(random);
        });
    }

    void compare(int scaleFactor) const {
        Image<typename M::Result> actual(roi.width, roi.height, 1, 4), expected(roi.width, roi.height, 1, 4);
        ASSERT_EQ(deviate(M::isTilted, sums(), src.step(), squares(), sqr.step(), actual.data(), actual.step(), roi,
                          rect, scaleFactor),
                  noxStsNoError);
        if constexpr (std::is_same_v<typename M::Result, Nox32s>)
            reference::integral::deviation(sums(), src.step(), squares(), sqr.step(), expected.data(), expected.step(),
                                           roi, rect, M::isTilted, scaleFactor);
        else
            reference::integral::deviation(sums(), src.step(), squares(), sqr.step(), expected.data(), expected.step(),
                                           roi, rect, M::isTilted);
        ASSERT_TRUE(test::sameImage(actual, expected))
            << rect.x << " " << rect.y << " " << rect.width << " " << rect.height << " scale " << scaleFactor;
    }
};

template <class T>
class RectStdDev : public ::testing::Test {};
using Members = ::testing::Types<Member<Nox32f, Nox64f, Nox32f, false>, Member<Nox32s, Nox64f, Nox32f, false>,
                                 Member<Nox32s, Nox32s, Nox32s, false>, Member<Nox32f, Nox64f, Nox32f, true>,
                                 Member<Nox32s, Nox64f, Nox32f, true>, Member<Nox32s, Nox32s, Nox32s, true>>;
TYPED_TEST_SUITE(RectStdDev, Members);

NoxiRect randomRect(test::Random &random) {
    return {int(random() % 6), int(random() % 6), 1 + int(random() % 24), 1 + int(random() % 24)};
}

TYPED_TEST(RectStdDev, EqualsReferenceOnPictures) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (int round = 0; round < 3; ++round) {
            Tables<TypeParam> tables(size, randomRect(random), round);
            tables.build(random, round == 2);
            tables.compare(int(random() % 9) - 4);
        }
}

TYPED_TEST(RectStdDev, EqualsReferenceOnAnyTables) {
    using M = TypeParam;
    using Q = typename M::Square;
    using S = typename M::Sum;
    test::Random random(2);
    std::vector<S> sums;
    std::vector<Q> squares;
    if constexpr (std::is_same_v<S, Nox32f>)
        sums = {
            0.0F, -0.0F, 1e-40F, 1e20F, 3e38F, std::numeric_limits<S>::infinity(), std::numeric_limits<S>::quiet_NaN()};
    if constexpr (std::is_same_v<Q, Nox64f>)
        squares = {
            0.0, 1e-310, 1e18, 1e300, 1e6, std::numeric_limits<Q>::infinity(), std::numeric_limits<Q>::quiet_NaN()};
    for (const NoxiSize size : {NoxiSize{1, 1}, {67, 9}, {130, 4}})
        for (int round = 0; round < 12; ++round) {
            Tables<M> tables(size, randomRect(random));
            tables.scatter(random, tables.src, round < 6 ? std::vector<S>{} : sums);
            tables.scatter(random, tables.sqr, round < 6 ? std::vector<Q>{} : squares);
            tables.compare(int(random() % 61) - 30);
        }
}

TYPED_TEST(RectStdDev, VariancesNextToMidpoints) {
    // A rectangle of one pixel with a sum of 0: the variance is the square itself, given to the last bit.
    using M = TypeParam;
    if constexpr (std::is_same_v<typename M::Square, Nox64f>) {
        test::Random random(3);
        Tables<M> tables({200, 3}, {0, 0, 1, 1});
        tables.src.fill(0);
        tables.sqr.fill(0);
        for (int y = 0; y < tables.sqr.height(); ++y)
            for (int x = 0; x < tables.sqr.width(); ++x) {
                const Nox64f single = Nox32f(1 + random() % 100000) / 7.0F;
                const Nox64f midpoint =
                    single + std::ldexp(std::ilogb(single) >= 0 ? 1.0 : 0.5, std::ilogb(single) - 24);
                tables.sqr.at(x, y) = std::nextafter(midpoint, random() % 2 ? 1e9 : 0.0) * (M::isTilted ? 2 : 1);
            }
        tables.compare(0);
    }
}

TYPED_TEST(RectStdDev, VariancesThatAFarCornerDecides) {
    // The lowest corner holds a midpoint between two floats, the highest one a little of its own, which double
    // precision drops and extended precision keeps.
    using M = TypeParam;
    if constexpr (std::is_same_v<typename M::Square, Nox64f>) {
        test::Random random(7);
        Tables<M> tables({600, 1}, {0, 0, 1, 1});
        tables.src.fill(0);
        tables.sqr.fill(0);
        for (int x = 0; x + 1 < tables.sqr.width(); x += 2) {
            const Nox64f single = Nox32f(1 + random() % 100000) / 7.0F;
            const Nox64f midpoint = (single + std::ldexp(1.0, std::ilogb(single) - 24)) * (M::isTilted ? 2 : 1);
            tables.sqr.at(x + (M::isTilted ? 0 : 1), M::isTilted ? 2 : 1) = midpoint;
            tables.sqr.at(x, 0) = std::ldexp(random() % 2 ? midpoint : -midpoint, -54 - int(random() % 8));
        }
        tables.compare(0);
    }
}

TYPED_TEST(RectStdDev, ThreadsGiveTheSame) {
    using M = TypeParam;
    test::Random random(4);
    for (const NoxiSize size : {NoxiSize{3000, 1}, {1500, 3}, {257, 61}}) {
        Tables<M> tables(size, {1, 2, 7, 5});
        tables.build(random, false);
        for (const int threads : test::threadCounts()) {
            const test::ThreadCount count(threads);
            tables.compare(1);
            test::insideParallelRegion([&] { tables.compare(1); });
        }
    }
}

TYPED_TEST(RectStdDev, StatusesInOrder) {
    using M = TypeParam;
    constexpr int e = int(sizeof(typename M::Square));
    const NoxiRect rect = {1, 2, 3, 4};
    const NoxiSize roi = {5, 3};
    Tables<M> tables(roi, rect, 2);
    test::Random random(5);
    tables.build(random, false);
    Image<typename M::Result> dst(5, 3, 1, 4);
    dst.fill(7);
    const Image<typename M::Result> before(dst);
    const int columns = M::isTilted ? 3 + 4 + 1 + 2 + 5 - 1 : 5 + 1 + 3, a = 4 * columns, b = e * columns;
    const auto call = [&](int srcStep, int sqrStep, int dstStep, NoxiSize size, NoxiRect r) {
        return deviate(M::isTilted, tables.sums(), srcStep, tables.squares(), sqrStep, dst.data(), dstStep, size, r, 0);
    };
    const NoxiRect bad[] = {{-1, 2, 3, 4}, {1, -1, 3, 4}, {1, 2, 0, 4}, {1, 2, 3, 0}};
    const typename M::Sum *const noTable = nullptr;
    EXPECT_EQ(deviate(M::isTilted, noTable, 0, tables.squares(), b, dst.data(), 20, {0, 0}, rect, 0),
              noxStsNullPointer);
    EXPECT_EQ(deviate(M::isTilted, tables.sums(), a, nullptr, b, dst.data(), 20, roi, rect, 0), noxStsNullPointer);
    EXPECT_EQ(deviate(M::isTilted, tables.sums(), a, tables.squares(), b, nullptr, 20, {0, 1}, rect, 0),
              noxStsNullPointer);
    EXPECT_EQ(call(0, b, 20, {0, 3}, rect), noxStsBadSize);
    EXPECT_EQ(call(0, b, 20, {5, 0}, rect), noxStsBadSize);
    EXPECT_EQ(call(a - 1, b, 20, roi, rect), noxStsBadStep);
    EXPECT_EQ(call(a + 1, b - 1, 20, roi, rect), noxStsBadStep);
    EXPECT_EQ(call(a + 1, b, 19, roi, rect), noxStsBadStep);
    EXPECT_EQ(call(a + 1, b, 20, roi, bad[0]), noxStsOddStep);
    EXPECT_EQ(call(a, b + e / 2, 20, roi, bad[1]), noxStsOddStep);
    EXPECT_EQ(call(a, b, 22, roi, rect), noxStsOddStep);
    for (const NoxiRect &r : bad) {
        EXPECT_EQ(call(a, b, 20, roi, r), noxStsBadSize);
        EXPECT_EQ(call(4, b, 20, roi, r), noxStsBadStep);
    }
    EXPECT_EQ(call(a, b, 20, roi, {2147483647, 2147483647, 2147483647, 2147483647}), noxStsBadStep);
    EXPECT_TRUE(test::sameImage(dst, before));
    EXPECT_EQ(call(a, b, 20, roi, rect), noxStsNoError);
}

TEST(UprightDeviation, FlatImagesGiveZero) {
    Image<Nox8u> picture(40, 30);
    picture.fill(201);
    Image<Nox32f> sums(41, 31), dst(28, 20);
    Image<Nox64f> squares(41, 31);
    dst.fill(1);
    noxiSqrIntegral_8u32f64f_C1R(picture.data(), picture.step(), sums.data(), sums.step(), squares.data(),
                                 squares.step(), picture.roi(), 0, 0);
    ASSERT_EQ(noxiRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), dst.data(), dst.step(),
                                     dst.roi(), {0, 0, 13, 11}),
              noxStsNoError);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 28; ++x)
            EXPECT_EQ(dst.at(x, y), 0);
}

TEST(ScaledDeviation, FactorsBeyondTheRange) {
    // Variance 4 - 0: the root is 2. Counts are taken modulo 32, of a signed shift.
    const Nox32s sums[] = {0, 0, 0, 0}, squares[] = {0, 0, 0, 4};
    const auto scaled = [&](int scaleFactor) {
        Nox32s result = 0;
        EXPECT_EQ(noxiRectStdDev_32s_C1RSfs(sums, 8, squares, 8, &result, 4, {1, 1}, {0, 0, 1, 1}, scaleFactor),
                  noxStsNoError);
        return result;
    };
    constexpr int lowest = std::numeric_limits<int>::min();
    EXPECT_EQ(scaled(0), 2);
    EXPECT_EQ(scaled(1), 1);
    EXPECT_EQ(scaled(2), 1); // half up
    EXPECT_EQ(scaled(3), 0);
    EXPECT_EQ(scaled(30), 0);
    EXPECT_EQ(scaled(31), 0);
    EXPECT_EQ(scaled(32), 2);
    EXPECT_EQ(scaled(-29), 1 << 30);
    EXPECT_EQ(scaled(-30), lowest);
    EXPECT_EQ(scaled(-31), lowest);
    EXPECT_EQ(scaled(-32), 2);
    EXPECT_EQ(scaled(lowest), 2);
}

} // namespace
