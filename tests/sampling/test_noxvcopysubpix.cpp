#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "noxcv.h"
#include "reference/subpix.h"
#include "support/image.h"

using test::Image;

namespace {

#define MEMBER(NAME, SOURCE, DESTINATION, TAG)                                                                         \
    struct NAME {                                                                                                      \
        using S = SOURCE;                                                                                              \
        using D = DESTINATION;                                                                                         \
        static constexpr bool scaled = false;                                                                          \
        static NoxStatus call(const S *src, int srcStep, D *dst, int dstStep, NoxiSize roi, float dx, float dy, int) { \
            return noxiCopySubpix_##TAG##_C1R(src, srcStep, dst, dstStep, roi, dx, dy);                                \
        }                                                                                                              \
    };
MEMBER(Shift8u, Nox8u, Nox8u, 8u)
MEMBER(Shift16u, Nox16u, Nox16u, 16u)
MEMBER(Shift8u32f, Nox8u, Nox32f, 8u32f)
MEMBER(Shift16u32f, Nox16u, Nox32f, 16u32f)
MEMBER(Shift32f, Nox32f, Nox32f, 32f)
#undef MEMBER
struct Shift8u16u {
    using S = Nox8u;
    using D = Nox16u;
    static constexpr bool scaled = true;
    static constexpr auto call = noxiCopySubpix_8u16u_C1R_Sfs;
};

/// A source with the one column and the one row more that a shift reads.
template <class S>
Image<S> source(NoxiSize roi, int padding, test::Random &random) {
    Image<S> image(roi.width + 1, roi.height + 1, 1, padding);
    return test::randomize(image, random);
}

template <class Member>
::testing::AssertionResult agrees(const Image<typename Member::S> &src, NoxiSize roi, int dstPadding, float dx,
                                  float dy, int scaleFactor = 0) {
    using D = typename Member::D;
    Image<D> actual(roi.width, roi.height, 1, dstPadding), expected(actual);
    reference::subpix::copySubpix(src.data(), src.step(), expected.data(), expected.step(), roi, dx, dy, scaleFactor);
    const NoxStatus status =
        Member::call(src.data(), src.step(), actual.data(), actual.step(), roi, dx, dy, scaleFactor);
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << "status " << status;
    return test::sameImage(actual, expected) << ", shift " << dx << ", " << dy << ", scale " << scaleFactor;
}

std::vector<float> someFractions() {
    return {0.0F, 0.25F, 0.5F, 0.999F, 1.0F, -0.25F, -1e-9F, 0.99999994F, 3.7F, -2.125F, 1e-7F, 1.0F / 65536};
}

template <class M>
class CopySubpix : public ::testing::Test {};
using Members = ::testing::Types<Shift8u, Shift8u16u, Shift16u, Shift8u32f, Shift16u32f, Shift32f>;
TYPED_TEST_SUITE(CopySubpix, Members);

TYPED_TEST(CopySubpix, EqualsReferenceOnAllSizes) {
    using S = typename TypeParam::S;
    test::Random random(1);
    std::uniform_real_distribution<float> shift(-3, 3);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<S>()) {
            const Image<S> src = source<S>(size, padding, random);
            ASSERT_TRUE(agrees<TypeParam>(src, size, padding * int(sizeof(typename TypeParam::D)), shift(random),
                                          shift(random), -7));
        }
}

TYPED_TEST(CopySubpix, EqualsReferenceAtEdgesOfTheFraction) {
    using S = typename TypeParam::S;
    test::Random random(2);
    const NoxiSize size = {43, 5};
    const Image<S> src = source<S>(size, 0, random);
    for (const float dx : someFractions())
        for (const float dy : someFractions())
            ASSERT_TRUE(agrees<TypeParam>(src, size, 0, dx, dy));
}

TYPED_TEST(CopySubpix, WholeAndHugeShiftsActAsZero) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    test::Random random(3);
    const NoxiSize size = {21, 4};
    const Image<S> src = source<S>(size, 0, random);
    Image<D> zero(size.width, size.height), actual(zero);
    TypeParam::call(src.data(), src.step(), zero.data(), zero.step(), size, 0, 0, -7);
    const float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    for (const float whole : {-0.0F, 1.0F, -5.0F, 1e10F, -1e30F, infinity, -infinity, nan}) {
        ASSERT_EQ(TypeParam::call(src.data(), src.step(), actual.data(), actual.step(), size, whole, -whole, -7),
                  noxStsNoError);
        ASSERT_TRUE(test::sameImage(actual, zero)) << whole;
    }
}

TYPED_TEST(CopySubpix, NegativeFractionsCountFromBelow) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    test::Random random(4);
    const NoxiSize size = {21, 4};
    const Image<S> src = source<S>(size, 0, random);
    Image<D> negative(size.width, size.height), positive(negative);
    TypeParam::call(src.data(), src.step(), negative.data(), negative.step(), size, -0.25F, -1.5F, -7);
    TypeParam::call(src.data(), src.step(), positive.data(), positive.step(), size, 0.75F, 0.5F, -7);
    EXPECT_TRUE(test::sameImage(negative, positive));
}

TYPED_TEST(CopySubpix, TakesPixelsAtAnyAddress) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    test::Random random(5);
    const NoxiSize size = {37, 3};
    const Image<S> src = source<S>(size, 0, random);
    Image<D> expected(size.width, size.height);
    reference::subpix::copySubpix(src.data(), src.step(), expected.data(), expected.step(), size, 0.3F, 0.8F, -7);
    for (int offset = 1; offset < 4; ++offset) {
        const std::size_t srcBytes = std::size_t(src.step()) * src.height(),
                          dstBytes = std::size_t(expected.step()) * size.height;
        test::Buffer from(srcBytes + offset), to(dstBytes + offset);
        std::memcpy(from.data(), src.data(), srcBytes);
        ASSERT_EQ(TypeParam::call(reinterpret_cast<const S *>(from.data()), src.step(),
                                  reinterpret_cast<D *>(to.data()), expected.step(), size, 0.3F, 0.8F, -7),
                  noxStsNoError);
        ASSERT_EQ(std::memcmp(to.data(), expected.data(), dstBytes), 0) << offset;
    }
}

TYPED_TEST(CopySubpix, StatusesInOrder) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(9, 5);
    Image<D> dst(9, 5);
    const NoxiSize roi = {4, 2}, thin = {0, 2}, flat = {4, 0};
    const int srcRow = 4 * int(sizeof(S)), dstRow = 4 * int(sizeof(D));
    const auto call = [](const S *s, int srcStep, D *d, int dstStep, NoxiSize size) {
        return TypeParam::call(s, srcStep, d, dstStep, size, 0.5F, 0.5F, 0);
    };
    EXPECT_EQ(call(nullptr, 0, dst.data(), dstRow, thin), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), srcRow, nullptr, 0, flat), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), srcRow - 1, dst.data(), dstRow, thin), noxStsBadSize);
    EXPECT_EQ(call(src.data(), srcRow, dst.data(), dstRow - 1, flat), noxStsBadSize);
    EXPECT_EQ(call(src.data(), srcRow - 1, dst.data(), dstRow, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), srcRow, dst.data(), dstRow - 1, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), -srcRow, dst.data(), dstRow, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), srcRow + 1, dst.data(), dstRow - 1, roi), noxStsBadStep);
    EXPECT_EQ(call(src.data(), srcRow + 1, dst.data(), dstRow, roi), sizeof(S) == 1 ? noxStsNoError : noxStsOddStep);
    EXPECT_EQ(call(src.data(), srcRow, dst.data(), dstRow + 1, roi), sizeof(D) == 1 ? noxStsNoError : noxStsOddStep);
    EXPECT_EQ(call(src.data(), srcRow, dst.data(), dstRow, roi), noxStsNoError);
}

TYPED_TEST(CopySubpix, BadCallsWriteNothing) {
    using S = typename TypeParam::S;
    using D = typename TypeParam::D;
    Image<S> src(10, 4);
    Image<D> dst(9, 3);
    src.fill(S(1));
    dst.fill(D(77));
    const Image<D> before(dst);
    TypeParam::call(src.data(), 3, dst.data(), dst.step(), dst.roi(), 0.5F, 0.5F, 0);
    TypeParam::call(src.data(), src.step(), dst.data(), 3, dst.roi(), 0.5F, 0.5F, 0);
    TypeParam::call(src.data(), src.step(), dst.data(), dst.step(), {9, -1}, 0.5F, 0.5F, 0);
    EXPECT_TRUE(test::sameImage(dst, before));
}

TEST(CopySubpix8u16u, EqualsReferenceAtEveryScale) {
    test::Random random(6);
    const NoxiSize size = {45, 3};
    const Image<Nox8u> src = source<Nox8u>(size, 0, random);
    for (int scaleFactor = -40; scaleFactor <= 40; ++scaleFactor)
        ASSERT_TRUE(agrees<Shift8u16u>(src, size, 0, 0.375F, 0.77F, scaleFactor));
    for (const int scaleFactor : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        ASSERT_TRUE(agrees<Shift8u16u>(src, size, 0, 0.375F, 0.77F, scaleFactor));
}

TEST(CopySubpix8u16u, ScaleMinusSevenGives128TimesThePixel) {
    Image<Nox8u> src(18, 2);
    Image<Nox16u> dst(17, 1);
    src.generate([](int x, int, int) { return x * 15; });
    noxiCopySubpix_8u16u_C1R_Sfs(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 0.5F, 0, -7);
    for (int x = 0; x < 17; ++x)
        // The weights at fraction 0 are a little above 1 together.
        ASSERT_NEAR(dst.at(x, 0), (x * 15 + 7.5) * 128, 8.0);
}

TEST(CopySubpix8u, BrightImagesStayInRange) {
    const NoxiSize size = {33, 3};
    Image<Nox8u> src(34, 4), dst(33, 3), bright(33, 3);
    src.fill(255);
    bright.fill(255);
    for (float fraction = 0; fraction < 1; fraction += 0.0371F) {
        noxiCopySubpix_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), size, fraction, 1 - fraction);
        ASSERT_TRUE(test::sameImage(dst, bright)) << fraction;
    }
}

TEST(CopySubpix16u, WholeShiftsCopy) {
    test::Random random(7);
    const NoxiSize size = {37, 5};
    const Image<Nox16u> src = source<Nox16u>(size, 0, random);
    Image<Nox16u> dst(size.width, size.height), expected(dst);
    const float almostOne = 0.99999994F;
    for (const auto &[dx, dy, x0, y0] : {std::tuple(0.0F, 0.0F, 0, 0), std::tuple(almostOne, 0.0F, 1, 0),
                                         std::tuple(0.0F, almostOne, 0, 1), std::tuple(almostOne, almostOne, 1, 1)}) {
        noxiCopySubpix_16u_C1R(src.data(), src.step(), dst.data(), dst.step(), size, dx, dy);
        expected.generate([&, left = x0, top = y0](int x, int y, int) { return src.at(x + left, y + top); });
        ASSERT_TRUE(test::sameImage(dst, expected));
    }
}

TEST(CopySubpix16u, SaturatesAtTheTop) {
    Image<Nox16u> src(20, 3), dst(19, 2), bright(19, 2);
    src.fill(65535);
    bright.fill(65535);
    for (const float fraction : {3.0F / 32768, 0.5F, 0.7071F, 1.0F / 256})
        for (const float other : {5.0F / 32768, 0.5F, 0.9F}) {
            noxiCopySubpix_16u_C1R(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), fraction, other);
            ASSERT_TRUE(test::sameImage(dst, bright)) << fraction << ' ' << other;
        }
}

TEST(CopySubpix32f, FollowsTheFormula) {
    test::Random random(8);
    const NoxiSize size = {29, 4};
    const Image<Nox32f> src = source<Nox32f>(size, 0, random);
    Image<Nox32f> dst(size.width, size.height);
    const double ax = 0.3, ay = 0.6;
    noxiCopySubpix_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), size, 0.3F, 0.6F);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            ASSERT_NEAR(dst.at(x, y),
                        (1 - ax) * ((1 - ay) * src.at(x, y) + ay * src.at(x, y + 1)) +
                            ax * ((1 - ay) * src.at(x + 1, y) + ay * src.at(x + 1, y + 1)),
                        1e-3);
}

TEST(CopySubpix32f, SpecialValuesTravelByTheRecurrence) {
    const float infinity = std::numeric_limits<float>::infinity();
    Image<Nox32f> src(30, 3);
    src.generate([=](int x, int y, int) { return x == 11 ? infinity : x == 20 && y == 1 ? NAN : float(x) - 7; });
    for (const float dx : {0.0F, 0.5F})
        for (const float dy : {0.0F, 0.5F})
            ASSERT_TRUE(agrees<Shift32f>(src, {29, 2}, 0, dx, dy));
}

/// All weights that fractions along one axis can have.
template <class Member>
void compareAllWeights(int one) {
    using S = typename Member::S;
    test::Random random(9);
    const NoxiSize size = {19, 1};
    for (int weight = 0; weight < one; ++weight) {
        const Image<S> src = source<S>(size, 0, random);
        const float dx = (float(weight) + 0.25F) / float(one), dy = float(random() % unsigned(one)) / float(one);
        ASSERT_TRUE(agrees<Member>(src, size, 0, dx, dy, int(random() % 17) - 9));
    }
}
TEST(CopySubpixFull, AllWeights8u) { compareAllWeights<Shift8u>(16384); }
TEST(CopySubpixFull, AllWeights8u16u) { compareAllWeights<Shift8u16u>(16384); }
TEST(CopySubpixFull, AllWeights16u) { compareAllWeights<Shift16u>(32768); }

} // namespace
