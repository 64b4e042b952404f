#include "noxcv.h"
#include "reference/pyrgauss.h"
#include "support/image.h"

using test::Buffer;
using test::Image;

namespace {

template <class T, int Channels>
struct Member;

#define MEMBER(TYPE, TAG, SELECTOR, CHANNELS)                                                                          \
    template <>                                                                                                        \
    struct Member<TYPE, CHANNELS> {                                                                                    \
        using Element = TYPE;                                                                                          \
        static constexpr int channels = CHANNELS, selector = SELECTOR;                                                 \
        static constexpr auto down = noxiPyrDown_Gauss5x5_##TAG##_C##CHANNELS##R;                                      \
        static constexpr auto up = noxiPyrUp_Gauss5x5_##TAG##_C##CHANNELS##R;                                          \
    };
MEMBER(Nox8u, 8u, 1, 1)
MEMBER(Nox8u, 8u, 1, 3)
MEMBER(Nox8s, 8s, 3, 1)
MEMBER(Nox8s, 8s, 3, 3)
MEMBER(Nox32f, 32f, 13, 1)
MEMBER(Nox32f, 32f, 13, 3)
#undef MEMBER

template <class M>
class PyrGauss : public ::testing::Test {};
using Members = ::testing::Types<Member<Nox8u, 1>, Member<Nox8u, 3>, Member<Nox8s, 1>, Member<Nox8s, 3>,
                                 Member<Nox32f, 1>, Member<Nox32f, 3>>;
TYPED_TEST_SUITE(PyrGauss, Members);

template <class M>
int downBufferSize(int width) {
    int size = 0;
    EXPECT_EQ(noxiPyrDownGetBufSize_Gauss5x5(width, M::selector, M::channels, &size), noxStsNoError);
    return size;
}
template <class M>
int upBufferSize(int width) {
    int size = 0;
    EXPECT_EQ(noxiPyrUpGetBufSize_Gauss5x5(width, M::selector, M::channels, &size), noxStsNoError);
    return size;
}

/// The shared sizes, and all tiny ones.
std::vector<NoxiSize> sizes() {
    std::vector<NoxiSize> all = test::testSizes();
    for (int height = 1; height <= 6; ++height)
        for (int width = 1; width <= 9; ++width)
            all.push_back({width, height});
    return all;
}

template <class M>
void compareDown(NoxiSize size, int padding, test::Random &random) {
    using T = typename M::Element;
    Image<T> src(size.width, size.height, M::channels, padding);
    test::randomize(src, random);
    Image<T> actual((size.width + 1) / 2, (size.height + 1) / 2, M::channels, padding), expected(actual);

    const test::ShiftedBuffer buffer(downBufferSize<M>(size.width), int(random() % 32));
    ASSERT_EQ(M::down(src.data(), src.step(), actual.data(), actual.step(), size, buffer.data()), noxStsNoError);
    reference::pyrgauss::pyrDown(src.data(), src.step(), expected.data(), expected.step(), size, M::channels);
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(test::sameImage(actual, expected)) << "source " << size.width << "x" << size.height;
}

template <class M>
void compareUp(NoxiSize size, int padding, test::Random &random) {
    using T = typename M::Element;
    Image<T> src(size.width, size.height, M::channels, padding);
    test::randomize(src, random);
    Image<T> actual(size.width * 2, size.height * 2, M::channels, padding), expected(actual);

    const test::ShiftedBuffer buffer(upBufferSize<M>(size.width), int(random() % 32));
    ASSERT_EQ(M::up(src.data(), src.step(), actual.data(), actual.step(), size, buffer.data()), noxStsNoError);
    reference::pyrgauss::pyrUp(src.data(), src.step(), expected.data(), expected.step(), size, M::channels);
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(test::sameImage(actual, expected)) << "source " << size.width << "x" << size.height;
}

TYPED_TEST(PyrGauss, DownEqualsReference) {
    test::Random random(1);
    for (const NoxiSize size : sizes())
        for (const int padding : test::testPaddings<typename TypeParam::Element>())
            ASSERT_NO_FATAL_FAILURE(compareDown<TypeParam>(size, padding, random));
}

TYPED_TEST(PyrGauss, UpEqualsReference) {
    test::Random random(2);
    for (const NoxiSize size : sizes())
        for (const int padding : test::testPaddings<typename TypeParam::Element>())
            ASSERT_NO_FATAL_FAILURE(compareUp<TypeParam>(size, padding, random));
}

/// Such images ask for rows ahead, and their rows are filtered in pieces.
TYPED_TEST(PyrGauss, ImagesThatLeaveTheCaches) {
    using T = typename TypeParam::Element;
    test::Random random(3);
    constexpr int pixelBytes = TypeParam::channels * int(sizeof(T)), padding = 4 * int(sizeof(T));
    for (const int width : {1123, 2054, 3077}) {
        const int height = 2 + (4 << 20) / (width * pixelBytes);
        ASSERT_NO_FATAL_FAILURE(compareDown<TypeParam>({width, height}, padding, random));
        ASSERT_NO_FATAL_FAILURE(compareUp<TypeParam>({width, height / 4}, padding, random));
    }
}

TYPED_TEST(PyrGauss, ExtremesDoNotOverflow) {
    using M = TypeParam;
    using T = typename M::Element;
    if constexpr (std::is_integral_v<T>)
        for (const T value : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0)}) {
            Image<T> src(53, 21, M::channels), small(27, 11, M::channels), large(106, 42, M::channels);
            src.fill(value);
            const Image<T> flatSmall(27, 11, M::channels), flatLarge(106, 42, M::channels);
            const_cast<Image<T> &>(flatSmall).fill(value);
            const_cast<Image<T> &>(flatLarge).fill(value);
            const Buffer downBuffer(downBufferSize<M>(53)), upBuffer(upBufferSize<M>(53));
            M::down(src.data(), src.step(), small.data(), small.step(), src.roi(), downBuffer.data());
            M::up(src.data(), src.step(), large.data(), large.step(), src.roi(), upBuffer.data());
            ASSERT_TRUE(test::sameImage(small, flatSmall));
            ASSERT_TRUE(test::sameImage(large, flatLarge));
        }
}

TYPED_TEST(PyrGauss, StatusesInOrder) {
    using M = TypeParam;
    using T = typename M::Element;
    constexpr int channels = M::channels;
    Image<T> small(4, 2, channels), large(8, 4, channels);
    small.fill(T(5));
    large.fill(T(6));
    const Image<T> smallBefore(small), largeBefore(large);
    const Buffer buffer(1024);
    const int s = small.step(), l = large.step();
    const NoxiSize roi = large.roi();
    Nox8u *work = buffer.data();
    EXPECT_EQ(M::down(nullptr, 0, small.data(), 0, {0, 0}, work), noxStsNullPointer);
    EXPECT_EQ(M::down(large.data(), 0, nullptr, 0, {0, 0}, work), noxStsNullPointer);
    EXPECT_EQ(M::down(large.data(), 0, small.data(), 0, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(M::down(large.data(), 0, small.data(), 0, {0, 4}, work), noxStsBadSize);
    EXPECT_EQ(M::down(large.data(), 0, small.data(), 0, {8, -1}, work), noxStsBadSize);
    EXPECT_EQ(M::down(large.data(), l - 1, small.data(), s, roi, work), noxStsBadStep);
    EXPECT_EQ(M::down(large.data(), l, small.data(), s - 1, roi, work), noxStsBadStep);
    EXPECT_EQ(M::up(nullptr, 0, large.data(), 0, {0, 0}, work), noxStsNullPointer);
    EXPECT_EQ(M::up(small.data(), 0, nullptr, 0, {0, 0}, work), noxStsNullPointer);
    EXPECT_EQ(M::up(small.data(), 0, large.data(), 0, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(M::up(small.data(), 0, large.data(), 0, {0, 2}, work), noxStsBadSize);
    EXPECT_EQ(M::up(small.data(), s - 1, large.data(), l, small.roi(), work), noxStsBadStep);
    EXPECT_EQ(M::up(small.data(), s, large.data(), l - 1, small.roi(), work), noxStsBadStep);
    if (sizeof(T) > 1) {
        EXPECT_EQ(M::down(large.data(), l + 1, small.data(), s - 1, roi, work), noxStsBadStep);
        EXPECT_EQ(M::down(large.data(), l + 1, small.data(), s, roi, work), noxStsOddStep);
        EXPECT_EQ(M::down(large.data(), l, small.data(), s + 2, roi, work), noxStsOddStep);
        EXPECT_EQ(M::up(small.data(), s + 1, large.data(), l, small.roi(), work), noxStsOddStep);
        EXPECT_EQ(M::up(small.data(), s, large.data(), l + 3, small.roi(), work), noxStsOddStep);
    }
    EXPECT_TRUE(test::sameImage(small, smallBefore));
    EXPECT_TRUE(test::sameImage(large, largeBefore));
}

TEST(PyrGaussBuffer, FormulasAndStatuses) {
    for (const int width : {1, 2, 3, 5, 640, 1921})
        for (const int channels : {1, 3})
            for (const int selector : {1, 3, 13}) {
                int size = 0;
                EXPECT_EQ(noxiPyrDownGetBufSize_Gauss5x5(width, selector, channels, &size), noxStsNoError);
                EXPECT_EQ(size, ((width * channels * 4 + 15) & ~15) * 6 + 32);
                EXPECT_EQ(noxiPyrUpGetBufSize_Gauss5x5(width, selector, channels, &size), noxStsNoError);
                EXPECT_EQ(size, ((width * 2 * channels * 4 + 15) & ~15) * 3 + 32);
            }
    for (const auto query : {noxiPyrDownGetBufSize_Gauss5x5, noxiPyrUpGetBufSize_Gauss5x5}) {
        int size = 77;
        EXPECT_EQ(query(0, 7, 2, nullptr), noxStsNullPointer);
        EXPECT_EQ(query(0, 7, 2, &size), noxStsBadSize);
        EXPECT_EQ(query(1, 7, 2, &size), noxStsBadChannelCount);
        EXPECT_EQ(query(1, 5, 3, &size), noxStsBadDataType);
        EXPECT_EQ(query(1, 0, 1, &size), noxStsBadDataType);
        EXPECT_EQ(size, 77);
    }
}

TEST(PyrGaussEdges, OnePixelAndTwoColumns) {
    Image<Nox8u> one(1, 1), same(1, 1), block(2, 2);
    one.fill(201);
    const Buffer buffer(1024);
    noxiPyrDown_Gauss5x5_8u_C1R(one.data(), one.step(), same.data(), same.step(), one.roi(), buffer.data());
    EXPECT_EQ(same.at(0, 0), 201);
    noxiPyrUp_Gauss5x5_8u_C1R(one.data(), one.step(), block.data(), block.step(), one.roi(), buffer.data());
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(block.at(i % 2, i / 2), 201);
    Image<Nox8u> two(2, 1);
    two.at(0, 0) = 10;
    two.at(1, 0) = 20;
    noxiPyrDown_Gauss5x5_8u_C1R(two.data(), two.step(), same.data(), same.step(), two.roi(), buffer.data());
    EXPECT_EQ(same.at(0, 0), 15);
}

TEST(PyrGaussEdges, SignedSumsRoundHalfUp) {
    // A single pixel of weight 36 * 4 corners cannot reach these sums; rows of one column can: 8 (F0 + F1) with
    // F = 16 v, so sums are 128 (v0 + v1).
    Image<Nox8s> src(1, 2), dst(1, 1);
    const Buffer buffer(1024);
    src.at(0, 0) = -1;
    src.at(0, 1) = 0;
    noxiPyrDown_Gauss5x5_8s_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data());
    EXPECT_EQ(dst.at(0, 0), 0); // -128
    src.at(0, 1) = -2;
    noxiPyrDown_Gauss5x5_8s_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data());
    EXPECT_EQ(dst.at(0, 0), -1); // -384
}

} // namespace
