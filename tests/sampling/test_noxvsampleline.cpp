#include <vector>

#include "noxcv.h"
#include "reference/sampleline.h"
#include "sampling/noxvsampleline.h"
#include "support/image.h"
#include "support/vector.h"

using test::Image;

namespace {

template <class Element, int channelCount>
struct Member {
    using T = Element;
    static constexpr int channels = channelCount;
    static NoxStatus call(const T *src, int srcStep, NoxiSize roi, T *dst, NoxiPoint pt1, NoxiPoint pt2);
};
#define MEMBER(TYPE, TAG, CHANNELS)                                                                                    \
    template <>                                                                                                        \
    NoxStatus Member<TYPE, CHANNELS>::call(const TYPE *src, int srcStep, NoxiSize roi, TYPE *dst, NoxiPoint pt1,       \
                                           NoxiPoint pt2) {                                                            \
        return noxiSampleLine_##TAG##_C##CHANNELS##R(src, srcStep, roi, dst, pt1, pt2);                                \
    }
MEMBER(Nox8u, 8u, 1)
MEMBER(Nox8u, 8u, 3)
MEMBER(Nox16u, 16u, 1)
MEMBER(Nox16u, 16u, 3)
MEMBER(Nox32f, 32f, 1)
MEMBER(Nox32f, 32f, 3)
#undef MEMBER

template <class M>
class SampleLine : public ::testing::Test {};
using Members = ::testing::Types<Member<Nox8u, 1>, Member<Nox8u, 3>, Member<Nox16u, 1>, Member<Nox16u, 3>,
                                 Member<Nox32f, 1>, Member<Nox32f, 3>>;
TYPED_TEST_SUITE(SampleLine, Members);

/// Samples into a vector of just the right length, at any address, before a guard page.
template <class M>
::testing::AssertionResult agrees(const Image<typename M::T> &image, NoxiPoint pt1, NoxiPoint pt2, int shift = 0) {
    using T = typename M::T;
    const std::vector<NoxiPoint> pixels = reference::sampleline::linePixels(pt1, pt2);
    test::Vector<T> actual(int(pixels.size()) * M::channels, shift), expected(actual);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        for (int c = 0; c < M::channels; ++c)
            expected[int(i) * M::channels + c] = image.at(pixels[i].x, pixels[i].y, c);
    const NoxStatus status = M::call(image.data(), image.step(), image.roi(), actual.data(), pt1, pt2);
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << "status " << status;
    return test::sameVector(actual, expected)
           << "; from " << pt1.x << ", " << pt1.y << " to " << pt2.x << ", " << pt2.y;
}

TYPED_TEST(SampleLine, EqualsReferenceBetweenAllPoints) {
    using T = typename TypeParam::T;
    test::Random random(1);
    Image<T> image(7, 5, TypeParam::channels, int(sizeof(T)));
    test::randomize(image, random);
    for (int from = 0; from < 35; ++from)
        for (int to = 0; to < 35; ++to)
            ASSERT_TRUE(agrees<TypeParam>(image, {from % 7, from / 7}, {to % 7, to / 7}));
}

TYPED_TEST(SampleLine, EqualsReferenceOnAllSizes) {
    using T = typename TypeParam::T;
    test::Random random(2);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<T>()) {
            Image<T> image(size.width, size.height, TypeParam::channels, padding);
            test::randomize(image, random);
            const auto point = [&] {
                return NoxiPoint{int(random() % unsigned(size.width)), int(random() % unsigned(size.height))};
            };
            for (int i = 0; i < 5; ++i)
                ASSERT_TRUE(agrees<TypeParam>(image, point(), point(), i));
            ASSERT_TRUE(agrees<TypeParam>(image, {size.width - 1, size.height - 1}, {0, 0}));
            ASSERT_TRUE(agrees<TypeParam>(image, {0, size.height - 1}, {size.width - 1, 0}));
        }
}

TYPED_TEST(SampleLine, StatusesInOrder) {
    using T = typename TypeParam::T;
    const int channels = TypeParam::channels;
    Image<T> image(9, 4, channels);
    T line[16 * 3];
    const T *src = image.data();
    const int row = 4 * channels * int(sizeof(T));
    const NoxiSize roi = {4, 3};
    const NoxiPoint in = {1, 2}, out = {4, 0};
    EXPECT_EQ(TypeParam::call(nullptr, 0, {0, 0}, line, in, out), noxStsNullPointer);
    EXPECT_EQ(TypeParam::call(src, 0, {0, 0}, nullptr, in, out), noxStsNullPointer);
    EXPECT_EQ(TypeParam::call(src, 0, {0, 3}, line, in, out), noxStsBadSize);
    EXPECT_EQ(TypeParam::call(src, 0, {4, 0}, line, in, out), noxStsBadSize);
    EXPECT_EQ(TypeParam::call(src, row - 1, roi, line, in, out), noxStsBadStep);
    EXPECT_EQ(TypeParam::call(src, -row, roi, line, in, out), noxStsBadStep);
    EXPECT_EQ(TypeParam::call(src, row + 1, roi, line, in, out), sizeof(T) == 1 ? noxStsOutOfRange : noxStsOddStep);
    for (const NoxiPoint bad : {NoxiPoint{-1, 0}, {4, 0}, {0, -1}, {0, 3}, {-2147483647 - 1, 2147483647}}) {
        EXPECT_EQ(TypeParam::call(src, row, roi, line, in, bad), noxStsOutOfRange);
        EXPECT_EQ(TypeParam::call(src, row, roi, line, bad, in), noxStsOutOfRange);
    }
    EXPECT_EQ(TypeParam::call(src, row, roi, line, in, in), noxStsNoError);
}

TYPED_TEST(SampleLine, BadCallsWriteNothing) {
    using T = typename TypeParam::T;
    Image<T> image(4, 3, TypeParam::channels);
    image.fill(T(1));
    test::Vector<T> line(12), before(line);
    TypeParam::call(image.data(), 1, image.roi(), line.data(), {0, 0}, {3, 2});
    TypeParam::call(image.data(), image.step(), image.roi(), line.data(), {0, 0}, {4, 2});
    TypeParam::call(image.data(), image.step(), {4, 0}, line.data(), {0, 0}, {3, 2});
    for (int i = 0; i < 12; ++i)
        ASSERT_TRUE(test::sameElement(line[i], before[i]));
}

TEST(LineIterator, FieldsAlongX) {
    Nox8u image[100] = {};
    NoxvLineIterator it;
    EXPECT_EQ(_noxvInitLineIterator(image, 20, 3, 5, 1, 1, 3, &it), 5);
    EXPECT_EQ(it.ptr, image + 20 + 15);
    EXPECT_EQ(it.err, 4);
    EXPECT_EQ(it.plusDelta, 8);
    EXPECT_EQ(it.minusDelta, 4);
    EXPECT_EQ(it.plusStep, 20);
    EXPECT_EQ(it.minusStep, -3);
}

TEST(LineIterator, FieldsAlongY) {
    Nox8u image[100] = {};
    NoxvLineIterator it;
    EXPECT_EQ(_noxvInitLineIterator(image, 20, 3, 1, 4, 2, 1, &it), 4);
    EXPECT_EQ(it.ptr, image + 80 + 3);
    EXPECT_EQ(it.err, 3);
    EXPECT_EQ(it.plusDelta, 6);
    EXPECT_EQ(it.minusDelta, 2);
    EXPECT_EQ(it.plusStep, 3);
    EXPECT_EQ(it.minusStep, -20);
}

TEST(LineIterator, DiagonalsHaveYAsTheMainAxis) {
    Nox8u image[100] = {};
    NoxvLineIterator it;
    EXPECT_EQ(_noxvInitLineIterator(image, 10, 1, 0, 0, 4, 4, &it), 5);
    EXPECT_EQ(it.plusStep, 1);
    EXPECT_EQ(it.minusStep, 10);
}

TEST(LineIterator, EqualEndPointsAreOnePixel) {
    Nox8u image[100] = {};
    NoxvLineIterator it;
    EXPECT_EQ(_noxvInitLineIterator(image, 10, 1, 3, 2, 3, 2, &it), 1);
    EXPECT_EQ(it.ptr, image + 23);
    EXPECT_EQ(it.err, 0);
    EXPECT_EQ(it.plusDelta, 0);
    EXPECT_EQ(it.minusDelta, 0);
}

} // namespace
