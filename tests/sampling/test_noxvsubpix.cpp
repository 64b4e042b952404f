#include <cmath>
#include <limits>

#include "noxcv.h"
#include "reference/subpix.h"
#include "sampling/noxvsubpix.h"
#include "support/image.h"

using test::Image;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();

#define MEMBER(NAME, SOURCE, DESTINATION, FUNCTION, INNER)                                                             \
    struct NAME {                                                                                                      \
        using S = SOURCE;                                                                                              \
        using D = DESTINATION;                                                                                         \
        static constexpr bool inner = INNER;                                                                           \
        static NoxStatus call(const S *src, int srcStep, NoxiSize srcRoi, D *dst, int dstStep, NoxiSize dstRoi,        \
                              NoxiPoint32f point, NoxiPoint *min, NoxiPoint *max, int) {                               \
            return FUNCTION(src, srcStep, srcRoi, dst, dstStep, dstRoi, point, min, max);                              \
        }                                                                                                              \
    };
MEMBER(Patch8u, Nox8u, Nox8u, noxiCopySubpixIntersect_8u_C1R, false)
MEMBER(Patch16u, Nox16u, Nox16u, noxiCopySubpixIntersect_16u_C1R, false)
MEMBER(Patch8u32f, Nox8u, Nox32f, noxiCopySubpixIntersect_8u32f_C1R, false)
MEMBER(Patch16u32f, Nox16u, Nox32f, noxiCopySubpixIntersect_16u32f_C1R, false)
MEMBER(Patch32f, Nox32f, Nox32f, noxiCopySubpixIntersect_32f_C1R, false)
MEMBER(Inner8u, Nox8u, Nox8u, ownGetRectSubpix_8u_C1R, true)
MEMBER(Inner16u, Nox16u, Nox16u, ownGetRectSubpix_16u_C1R, true)
MEMBER(Inner16u32f, Nox16u, Nox32f, ownGetRectSubpix_16u32f_C1R, true)
MEMBER(Inner32f, Nox32f, Nox32f, ownGetRectSubpix_32f_C1R, true)
#undef MEMBER
struct Patch8u16u {
    using S = Nox8u;
    using D = Nox16u;
    static constexpr bool inner = false;
    static constexpr auto call = noxiCopySubpixIntersect_8u16u_C1R_Sfs;
};
struct Inner8u16u {
    using S = Nox8u;
    using D = Nox16u;
    static constexpr bool inner = true;
    static constexpr auto call = ownGetRectSubpix_8u16u_C1R_Sfs;
};

/// Cuts a patch and compares all of it, and min and max, with the reference.
template <class Member>
::testing::AssertionResult agrees(const Image<typename Member::S> &src, NoxiSize patch, int padding, NoxiPoint32f point,
                                  int scaleFactor = -7) {
    using D = typename Member::D;
    Image<D> actual(patch.width, patch.height, 1, padding);
    actual.fill(D(99));
    Image<D> expected(actual);
    NoxiPoint min{-5, -5}, max{-5, -5}, expectedMin{}, expectedMax{};
    reference::subpix::cutSubpix(src.data(), src.step(), src.roi(), expected.data(), expected.step(), patch, point,
                                 &expectedMin, &expectedMax, scaleFactor, Member::inner);
    const NoxStatus status = Member::call(src.data(), src.step(), src.roi(), actual.data(), actual.step(), patch, point,
                                          &min, &max, scaleFactor);
    const auto where = [&](::testing::AssertionResult result) {
        return result << "; patch " << patch.width << "x" << patch.height << " at " << point.x << ", " << point.y
                      << " of " << src.width() << "x" << src.height() << ", scale " << scaleFactor;
    };
    if (status != noxStsNoError)
        return where(::testing::AssertionFailure() << "status " << status);
    if (min.x != expectedMin.x || min.y != expectedMin.y || max.x != expectedMax.x || max.y != expectedMax.y)
        return where(::testing::AssertionFailure()
                     << "min " << min.x << ", " << min.y << ", max " << max.x << ", " << max.y << ", expected "
                     << expectedMin.x << ", " << expectedMin.y << " and " << expectedMax.x << ", " << expectedMax.y);
    return where(test::sameImage(actual, expected));
}

template <class M>
class Subpix : public ::testing::Test {};
using Members = ::testing::Types<Patch8u, Patch8u16u, Patch16u, Patch8u32f, Patch16u32f, Patch32f, Inner8u, Inner8u16u,
                                 Inner16u, Inner16u32f, Inner32f>;
TYPED_TEST_SUITE(Subpix, Members);

template <class M>
class Patch : public ::testing::Test {};
using Patches = ::testing::Types<Patch8u, Patch8u16u, Patch16u, Patch8u32f, Patch16u32f, Patch32f>;
TYPED_TEST_SUITE(Patch, Patches);

TYPED_TEST(Subpix, EqualsReferenceOnAllSizes) {
    using S = typename TypeParam::S;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<S>()) {
            Image<S> src(size.width, size.height, 1, padding);
            test::randomize(src, random);
            for (const NoxiSize patch : {NoxiSize{1, 1}, {2, 3}, {7, 7}, {10, 10}, {23, 4}}) {
                // From all of a patch before the source to all of it behind.
                std::uniform_real_distribution<float> x(-float(patch.width) * 1.2F, float(size.width + patch.width)),
                    y(-float(patch.height) * 1.2F, float(size.height + patch.height));
                for (int i = 0; i < 3; ++i)
                    ASSERT_TRUE(agrees<TypeParam>(src, patch, padding * int(sizeof(typename TypeParam::D)),
                                                  {x(random), y(random)}));
            }
        }
}

TYPED_TEST(Subpix, WildPointsLieOutside) {
    using S = typename TypeParam::S;
    test::Random random(3);
    Image<S> src(13, 9);
    test::randomize(src, random);
    const float wild[] = {5.3F,          infinity, -infinity, nan,     1e10F,  -1e10F, 3e38F,  -3e38F,
                          2147483648.0F, -2.2e9F,  1e-40F,    -1e-40F, -1e-9F, 13.0F,  12.999F};
    for (const float x : wild)
        for (const float y : wild)
            ASSERT_TRUE(agrees<TypeParam>(src, {10, 6}, 0, {x, y}));
}

TYPED_TEST(Subpix, PatchLargerThanTheSource) {
    using S = typename TypeParam::S;
    test::Random random(4);
    for (const NoxiSize size : {NoxiSize{1, 1}, {3, 2}, {8, 20}, {9, 5}, {24, 31}}) {
        Image<S> src(size.width, size.height);
        test::randomize(src, random);
        for (const float shift : {0.0F, 0.4F, -0.9F})
            ASSERT_TRUE(agrees<TypeParam>(src, {67, 41}, 0, {float(size.width) / 2 + shift, 1 - shift}));
    }
}

TYPED_TEST(Subpix, FractionsRoundedUpToOne) {
    using S = typename TypeParam::S;
    test::Random random(5);
    Image<S> src(40, 40);
    test::randomize(src, random);
    for (const float x : {std::nextafter(16.0F, 0.0F), std::nextafter(4.5F, 0.0F), -1e-9F})
        for (const float y : {std::nextafter(20.0F, 0.0F), std::nextafter(4.0F, 0.0F), 7.0F})
            for (const NoxiSize patch : {NoxiSize{10, 10}, {9, 9}})
                ASSERT_TRUE(agrees<TypeParam>(src, patch, 0, {x, y}));
}

TYPED_TEST(Subpix, TakesPixelsAtAnyAddress) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    test::Random random(6);
    Image<S> src(30, 20);
    test::randomize(src, random);
    const NoxiSize patch = {21, 9};
    const NoxiPoint32f point = {14.3F, 9.8F};
    NoxiPoint min{}, max{};
    Image<D> expected(patch.width, patch.height);
    reference::subpix::cutSubpix(src.data(), src.step(), src.roi(), expected.data(), expected.step(), patch, point,
                                 &min, &max, -7);
    for (int offset = 1; offset < 4; ++offset) {
        const std::size_t srcBytes = std::size_t(src.step()) * src.height(),
                          dstBytes = std::size_t(expected.step()) * patch.height;
        test::Buffer from(srcBytes + offset), to(dstBytes + offset);
        std::memcpy(from.data(), src.data(), srcBytes);
        ASSERT_EQ(TypeParam::call(reinterpret_cast<const S *>(from.data()), src.step(), src.roi(),
                                  reinterpret_cast<D *>(to.data()), expected.step(), patch, point, &min, &max, -7),
                  noxStsNoError);
        ASSERT_EQ(std::memcmp(to.data(), expected.data(), dstBytes), 0) << offset;
    }
}

TYPED_TEST(Patch, BeyondTheRightEdgeRepeatsTheLastColumn) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(6, 9);
    Image<D> dst(5, 3);
    src.generate([](int x, int y, int) { return x * 10 + y; });
    NoxiPoint min{}, max{};
    TypeParam::call(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), {100.0F, 4.0F}, &min, &max,
                    0);
    EXPECT_EQ(min.x, 0);
    EXPECT_EQ(max.x, -1);
    EXPECT_EQ(min.y, 0);
    EXPECT_EQ(max.y, 2);
    for (int v = 0; v < 3; ++v)
        for (int u = 0; u < 5; ++u)
            ASSERT_EQ(dst.at(u, v), src.at(5, 3 + v));
}

TYPED_TEST(Patch, BeforeTheLeftEdgeRepeatsTheFirstColumn) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(6, 9);
    Image<D> dst(5, 3);
    src.generate([](int x, int y, int) { return x * 10 + y; });
    NoxiPoint min{}, max{};
    TypeParam::call(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), {-9.5F, 4.0F}, &min, &max, 0);
    EXPECT_EQ(min.x, 5);
    EXPECT_EQ(max.x, 4);
    for (int v = 0; v < 3; ++v)
        for (int u = 0; u < 5; ++u)
            ASSERT_EQ(dst.at(u, v), src.at(0, 3 + v));
}

TYPED_TEST(Patch, WholePointAndOddSizeCopy) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(30, 20);
    Image<D> dst(21, 11);
    src.generate([](int x, int y, int) { return x * 4 + y; });
    NoxiPoint min{}, max{};
    TypeParam::call(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), {14.0F, 9.0F}, &min, &max, 0);
    EXPECT_EQ(min.x, 0);
    EXPECT_EQ(max.x, 20);
    for (int v = 0; v < 11; ++v)
        for (int u = 0; u < 21; ++u)
            ASSERT_EQ(dst.at(u, v), src.at(u + 4, v + 4));
}

TYPED_TEST(Patch, StatusesInOrder) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(9, 5);
    Image<D> dst(9, 5);
    const NoxiSize from = {4, 2}, to = {3, 2};
    const int srcRow = 4 * int(sizeof(S)), dstRow = 3 * int(sizeof(D));
    NoxiPoint min{}, max{};
    const auto call = [&](const S *s, int srcStep, NoxiSize srcRoi, D *d, int dstStep, NoxiSize dstRoi, NoxiPoint *low,
                          NoxiPoint *high) {
        return TypeParam::call(s, srcStep, srcRoi, d, dstStep, dstRoi, {1.0F, 1.0F}, low, high, 0);
    };
    S *s = src.data();
    D *d = dst.data();
    EXPECT_EQ(call(nullptr, 0, {0, 0}, d, dstRow, to, &min, &max), noxStsNullPointer);
    EXPECT_EQ(call(s, srcRow, from, nullptr, 0, {0, 0}, &min, &max), noxStsNullPointer);
    EXPECT_EQ(call(s, srcRow, from, d, 0, {0, 0}, nullptr, &max), noxStsNullPointer);
    EXPECT_EQ(call(s, srcRow, from, d, 0, {0, 0}, &min, nullptr), noxStsNullPointer);
    for (const NoxiSize bad : {NoxiSize{0, 1}, {1, 0}, {-3, 2}, {2, -3}}) {
        EXPECT_EQ(call(s, -1, bad, d, dstRow, to, &min, &max), noxStsBadSize);
        EXPECT_EQ(call(s, srcRow, from, d, -1, bad, &min, &max), noxStsBadSize);
    }
    EXPECT_EQ(call(s, srcRow - 1, from, d, dstRow, to, &min, &max), noxStsBadStep);
    EXPECT_EQ(call(s, srcRow + 1, from, d, dstRow - 1, to, &min, &max), noxStsBadStep);
    EXPECT_EQ(call(s, srcRow + 1, from, d, dstRow, to, &min, &max), sizeof(S) == 1 ? noxStsNoError : noxStsOddStep);
    EXPECT_EQ(call(s, srcRow, from, d, dstRow + 1, to, &min, &max), sizeof(D) == 1 ? noxStsNoError : noxStsOddStep);
    EXPECT_EQ(call(s, srcRow, from, d, dstRow, to, &min, &max), noxStsNoError);
}

TYPED_TEST(Patch, BadCallsWriteNothing) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(9, 5);
    Image<D> dst(6, 3);
    src.fill(S(1));
    dst.fill(D(77));
    const Image<D> before(dst);
    NoxiPoint min{-7, -8}, max{-9, -10};
    TypeParam::call(src.data(), 1, src.roi(), dst.data(), dst.step(), dst.roi(), {2, 2}, &min, &max, 0);
    TypeParam::call(src.data(), src.step(), src.roi(), dst.data(), 1, dst.roi(), {2, 2}, &min, &max, 0);
    TypeParam::call(src.data(), src.step(), {0, 5}, dst.data(), dst.step(), dst.roi(), {2, 2}, &min, &max, 0);
    EXPECT_TRUE(test::sameImage(dst, before));
    EXPECT_EQ(min.x, -7);
    EXPECT_EQ(min.y, -8);
    EXPECT_EQ(max.x, -9);
    EXPECT_EQ(max.y, -10);
}

TEST(Patch8u16u, EqualsReferenceAtEveryScale) {
    test::Random random(7);
    Image<Nox8u> src(30, 20);
    test::randomize(src, random);
    for (int scaleFactor = -40; scaleFactor <= 40; ++scaleFactor) {
        ASSERT_TRUE(agrees<Patch8u16u>(src, {12, 5}, 0, {3.3F, 0.8F}, scaleFactor));
        ASSERT_TRUE(agrees<Inner8u16u>(src, {12, 5}, 0, {3.3F, 0.8F}, scaleFactor));
    }
}

TEST(Patch16u, SaturatesAtTheTop) {
    Image<Nox16u> src(20, 20), dst(30, 30), bright(30, 30);
    src.fill(65535);
    bright.fill(65535);
    NoxiPoint min{}, max{};
    for (const float fraction : {3.0F / 32768, 0.5F, 0.7071F}) {
        noxiCopySubpixIntersect_16u_C1R(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(),
                                        {10 + fraction, 9.3F}, &min, &max);
        ASSERT_TRUE(test::sameImage(dst, bright)) << fraction;
    }
}

TEST(Patch32f, WholePointCopiesExactly) {
    test::Random random(8);
    Image<Nox32f> src(30, 20), dst(21, 11);
    test::randomize(src, random);
    NoxiPoint min{}, max{};
    noxiCopySubpixIntersect_32f_C1R(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), {14.0F, 9.0F},
                                    &min, &max);
    for (int v = 0; v < 11; ++v)
        for (int u = 0; u < 21; ++u)
            ASSERT_EQ(dst.at(u, v), src.at(u + 4, v + 4));
}

TEST(Patch32f, FollowsTheFormula) {
    Image<Nox32f> src(40, 30), dst(11, 8);
    // A plane is interpolated exactly, up to rounding.
    src.generate([](int x, int y, int) { return 3.0F * float(x) - 2.0F * float(y); });
    NoxiPoint min{}, max{};
    noxiCopySubpixIntersect_32f_C1R(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(),
                                    {17.3F, 12.9F}, &min, &max);
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 11; ++u)
            ASSERT_NEAR(dst.at(u, v), 3 * (17.3 - 5 + u) - 2 * (12.9 - 3.5 + v), 1e-4);
}

/// Patches a quarter of a pixel apart, over small images and beyond.
template <class M>
void compareOnAGrid() {
    test::Random random(10);
    for (const NoxiSize size : {NoxiSize{1, 1}, {1, 9}, {2, 2}, {9, 1}, {12, 7}}) {
        Image<typename M::S> src(size.width, size.height);
        test::randomize(src, random);
        for (const NoxiSize patch : {NoxiSize{1, 2}, {4, 5}, {11, 3}})
            for (float y = -9; y <= float(size.height) + 6; y += 1.25F)
                for (float x = -13; x <= float(size.width) + 8; x += 0.25F)
                    ASSERT_TRUE(agrees<M>(src, patch, 0, {x, y}));
    }
}

/// Random patches of every size up to 40 in one image, with the places that a tracker meets.
template <class M>
void compareAtRandomPlaces() {
    test::Random random(9);
    Image<typename M::S> src(90, 70, 1, 8 * int(sizeof(typename M::S)));
    test::randomize(src, random);
    std::uniform_real_distribution<float> x(-45, 135), y(-45, 115);
    for (int i = 0; i < 4000; ++i)
        ASSERT_TRUE(agrees<M>(src, {int(random() % 40) + 1, int(random() % 40) + 1}, 0, {x(random), y(random)},
                              int(random() % 24) - 13));
}

template <class... M>
void compareAll(::testing::Types<M...>) {
    (compareOnAGrid<M>(), ...);
    (compareAtRandomPlaces<M>(), ...);
}
TEST(SubpixFull, EqualsReferenceEverywhere) { compareAll(Members{}); }

} // namespace
