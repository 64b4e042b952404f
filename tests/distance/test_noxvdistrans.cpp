#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "distance/sources.h"
#include "noxcv.h"
#include "reference/distance.h"
#include "support/image.h"
#include "support/threads.h"

using reference::distance::Plane;
using test::Image;

namespace {

template <class T>
struct Member;
#define MEMBER(TYPE, WEIGHT, TAG)                                                                                      \
    template <>                                                                                                        \
    struct Member<TYPE> {                                                                                              \
        using Weight = WEIGHT;                                                                                         \
        static constexpr auto three = noxiDistanceTransform_3x3_##TAG##_C1R;                                           \
        static constexpr auto five = noxiDistanceTransform_5x5_##TAG##_C1R;                                            \
        static constexpr auto threeTwin = noxiDistanceTransform_3x3_##TAG##_C1R_omp;                                   \
        static constexpr auto fiveTwin = noxiDistanceTransform_5x5_##TAG##_C1R_omp;                                    \
    };
MEMBER(Nox8u, Nox32s, 8u)
MEMBER(Nox16u, Nox32s, 8u16u)
MEMBER(Nox32f, Nox32f, 8u32f)
#undef MEMBER

template <class T>
void fill(Image<T> &image, const Plane<T> &plane) {
    image.generate([&](int x, int y, int) { return plane.at(x, y); });
}

template <class T>
::testing::AssertionResult samePlane(const Image<T> &actual, const Plane<T> &expected) {
    Image<T> image(expected.width, expected.height, 1, 0, 0);
    fill(image, expected);
    return test::sameImage(actual, image);
}

template <class T, class Entry, class Weight>
::testing::AssertionResult givesPlane(Entry entry, const Plane<Nox8u> &src, const Weight *metrics,
                                      const Plane<T> &expected, int padding = 0) {
    Image<Nox8u> from(src.width, src.height, 1, padding);
    fill(from, src);
    Image<T> to(src.width, src.height, 1, padding * int(sizeof(T)));
    to.fill(T(77));
    if (entry(from.data(), from.step(), to.data(), to.step(), to.roi(), metrics) != noxStsNoError)
        return ::testing::AssertionFailure() << "status";
    return samePlane(to, expected);
}

/// Weights for every mode of the 3x3 and the 5x5 transforms, some of them far beyond the range of bytes.
template <class Weight>
std::vector<std::vector<Weight>> weights() {
    if constexpr (std::is_floating_point_v<Weight>)
        return {{0.955F, 1.3693F, 2.1969F},
                {1, 1.4F, 2.1969F},
                {1, 1, 2},
                {1, 2, 3},
                {3, 2, 4},
                {7, 3, 2},
                {1, 1.5F, 1.6F},
                {0.1F, 0.3F, 0.25F},
                {5, 7, 9.5F},
                {1e30F, 1.4e30F, 2.2e30F},
                {2.5F, 0.9F, 0.7F},
                {1, 2.1F, 2.9F}};
    else
        return {{5, 7, 11},
                {2, 3, 4},
                {1, 1, 2},
                {1, 2, 3},
                {3, 2, 4},
                {7, 3, 2},
                {3, 4, 5},
                {100, 250, 300},
                {9, 5, 13},
                {40, 50, 90},
                {1, 3, 9},
                {300, 400, 700},
                {9, 20, 4},
                {INT_MAX, 3, 5},
                {2, INT_MAX, 5},
                {INT_MAX, INT_MAX, INT_MAX},
                {60000, 65000, 130000}};
}

template <class T>
class DistanceTransform : public ::testing::Test {};
using Distances = ::testing::Types<Nox8u, Nox16u, Nox32f>;
TYPED_TEST_SUITE(DistanceTransform, Distances);

template <class T>
class DistanceTransformFull : public ::testing::Test {};
TYPED_TEST_SUITE(DistanceTransformFull, Distances);

template <class T>
void expectReference(const std::vector<NoxiSize> &sizes, unsigned seed) {
    using M = Member<T>;
    using Weight = typename M::Weight;
    const test::ThreadCount one(1);
    test::Random random(seed);
    for (const NoxiSize size : sizes)
        for (const auto &metrics : weights<Weight>()) {
            const int rarities[] = {0, 1, 3, 20, size.width * size.height, 200};
            const Plane<Nox8u> src = test::randomSource(size, rarities[random() % 6], random);
            const std::string where = std::to_string(size.width) + "x" + std::to_string(size.height) + " weights " +
                                      std::to_string(metrics[0]) + " " + std::to_string(metrics[1]) + " " +
                                      std::to_string(metrics[2]);
            ASSERT_TRUE(givesPlane(M::three, src, metrics.data(),
                                   reference::distance::chamfer3x3<T>(src, metrics.data()), int(random() % 3)))
                << "3x3 " << where;
            ASSERT_TRUE(givesPlane(M::five, src, metrics.data(),
                                   reference::distance::chamfer5x5<T>(src, metrics.data()), int(random() % 3)))
                << "5x5 " << where;
        }
}

TYPED_TEST(DistanceTransform, EqualsReferenceInEveryMode) {
    expectReference<TypeParam>(
        {{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 5}, {5, 3}, {4, 4}, {7, 6}, {17, 4}, {31, 12}, {70, 9}}, 1);
}
TYPED_TEST(DistanceTransformFull, EqualsReferenceOnAllSizes) {
    expectReference<TypeParam>(test::testSizes(), 2);
    expectReference<TypeParam>({{520, 7}, {1031, 5}, {513, 4}}, 3); // longer than a block of a row
}

/// One zero in the middle: the transform is the norm itself.
TYPED_TEST(DistanceTransform, SingleZeroGivesTheNorm) {
    using T = TypeParam;
    using Weight = typename Member<T>::Weight;
    Plane<Nox8u> src(41, 33, 1);
    src.at(20, 16) = 0;
    Plane<T> cityBlock(41, 33), chessboard(41, 33);
    for (int y = 0; y < 33; ++y)
        for (int x = 0; x < 41; ++x) {
            cityBlock.at(x, y) = T(std::abs(x - 20) + std::abs(y - 16));
            chessboard.at(x, y) = T(std::max(std::abs(x - 20), std::abs(y - 16)));
        }
    const Weight city[] = {1, 2, 3}, chess[] = {1, 1, 2};
    for (const int threads : {1, 2}) {
        const test::ThreadCount count(threads);
        EXPECT_TRUE(givesPlane(Member<T>::three, src, city, cityBlock));
        EXPECT_TRUE(givesPlane(Member<T>::five, src, city, cityBlock));
        EXPECT_TRUE(givesPlane(Member<T>::three, src, chess, chessboard));
        EXPECT_TRUE(givesPlane(Member<T>::five, src, chess, chessboard));
        EXPECT_TRUE(givesPlane(Member<T>::threeTwin, src, city, cityBlock));
        EXPECT_TRUE(givesPlane(Member<T>::threeTwin, src, chess, chessboard));
    }
}

/// Integer twins give what the serial forms give; float ones what the stated order of sweeps gives.
TYPED_TEST(DistanceTransform, TwinsInEveryTeam) {
    using T = TypeParam;
    using M = Member<T>;
    using Weight = typename M::Weight;
    const std::vector<std::vector<Weight>> three =
        sizeof(T) == 4 ? std::vector<std::vector<Weight>>{{Weight(0.955), Weight(1.3693)},
                                                          {1, 2},
                                                          {1, 1},
                                                          {Weight(0.1), Weight(0.13)}}
                       : std::vector<std::vector<Weight>>{{2, 3}, {1, 2}, {1, 1}, {3, 4}, {1, 9}, {7, 7}};
    const std::vector<std::vector<Weight>> five =
        sizeof(T) == 4 ? std::vector<std::vector<Weight>>{{1, Weight(1.4), Weight(2.1969)},
                                                          {Weight(0.97), Weight(1.3), Weight(2.2)}}
                       : std::vector<std::vector<Weight>>{{5, 7, 11}, {4, 5, 9}, {9, 13, 20}};
    test::Random random(4);
    for (const NoxiSize size : {NoxiSize{33, 21}, {300, 70}, {5, 6}, {1, 12}, {17, 5}, {65, 64}, {90, 2}})
        for (const int rarity : {4, 40, 700}) {
            const Plane<Nox8u> src = test::randomSource(size, rarity, random);
            for (const auto &metrics : three) {
                const Plane<T> expected = sizeof(T) == 4
                                              ? reference::distance::chamferInHalves<T>(src, metrics.data(), false)
                                              : reference::distance::chamfer3x3<T>(src, metrics.data());
                const bool entryToo = size.width >= 257 && (sizeof(T) < 4 || noxGetNumCoresOnDie() > 1);
                for (const int threads : test::threadCounts()) {
                    const test::ThreadCount count(threads);
                    ASSERT_TRUE(givesPlane(M::threeTwin, src, metrics.data(), expected))
                        << size.width << "x" << size.height << " " << metrics[0] << " " << metrics[1];
                    if (threads > 1 && entryToo) {
                        ASSERT_TRUE(givesPlane(M::three, src, metrics.data(), expected));
                    }
                }
            }
            for (const auto &metrics : five) {
                if (size.width < 4 || size.height < 4)
                    continue;
                const Plane<T> expected = sizeof(T) == 4
                                              ? reference::distance::chamferInHalves<T>(src, metrics.data(), true)
                                              : reference::distance::chamfer5x5<T>(src, metrics.data());
                const bool entryToo =
                    size.width >= 65 && size.height >= 64 && (sizeof(T) < 4 || noxGetNumCoresOnDie() > 1);
                for (const int threads : test::threadCounts()) {
                    const test::ThreadCount count(threads);
                    ASSERT_TRUE(givesPlane(M::fiveTwin, src, metrics.data(), expected))
                        << size.width << "x" << size.height << " " << metrics[0] << " " << metrics[1];
                    if (threads > 1 && entryToo) {
                        ASSERT_TRUE(givesPlane(M::five, src, metrics.data(), expected));
                    }
                }
            }
        }
    // A team of one, inside a region of the caller's.
    const test::ThreadCount count(2);
    const Plane<Nox8u> src = test::randomSource({300, 70}, 50, random);
    test::insideParallelRegion([&] {
        EXPECT_TRUE(givesPlane(M::threeTwin, src, three[0].data(),
                               reference::distance::chamferInHalves<T>(src, three[0].data(), false)));
    });
}

TYPED_TEST(DistanceTransform, StatusesInOrder) {
    using T = TypeParam;
    using M = Member<T>;
    using Weight = typename M::Weight;
    Image<Nox8u> src(8, 6);
    Image<T> dst(10, 6), before(dst);
    const Weight good[] = {5, 7, 11}, bad[] = {5, 0, 11}, badKnight[] = {5, 7, -1};
    const NoxiSize roi = {8, 6}, empty = {0, 6}, flat = {8, 0};
    const int s = src.step(), d = dst.step(), small = 8 * int(sizeof(T)) - 1;
    for (const auto call : {M::three, M::five}) {
        EXPECT_EQ(call(nullptr, s, dst.data(), d, empty, good), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), s, nullptr, d, empty, good), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), s, dst.data(), d, empty, static_cast<const Weight *>(nullptr)), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 7, dst.data(), d, empty, good), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 7, dst.data(), d, flat, good), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 7, dst.data(), d + 1, roi, bad), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, dst.data(), small, roi, bad), noxStsBadStep);
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(src.data(), s, dst.data(), d + 1, roi, bad), noxStsOddStep);
        }
        EXPECT_EQ(call(src.data(), s, dst.data(), d, roi, bad), noxStsBadMetric);
    }
    EXPECT_EQ(M::five(src.data(), s, dst.data(), d, roi, badKnight), noxStsBadMetric);
    EXPECT_TRUE(test::sameImage(dst, before));
    if constexpr (sizeof(T) == 4) {
        const Nox32f nan[] = {std::nanf(""), 1, 2};
        EXPECT_EQ(M::three(src.data(), s, dst.data(), d, roi, nan), noxStsBadMetric);
    }
}

TEST(DistanceTransformInPlace, EqualsTheFormWithTwoImages) {
    test::Random random(5);
    const Nox32s metrics[] = {5, 7, 11};
    for (const int threads : {1, 2}) {
        const test::ThreadCount count(threads);
        for (const NoxiSize size : {NoxiSize{1, 1}, {9, 7}, {300, 80}, {700, 3}}) {
            const Plane<Nox8u> src = test::randomSource(size, 60, random);
            Image<Nox8u> image(size.width, size.height, 1, 3);
            fill(image, src);
            EXPECT_EQ(noxiDistanceTransform_3x3_8u_C1IR(image.data(), image.step(), size, metrics), noxStsNoError);
            EXPECT_TRUE(samePlane(image, reference::distance::chamfer3x3<Nox8u>(src, metrics)));
            fill(image, src);
            EXPECT_EQ(noxiDistanceTransform_5x5_8u_C1IR(image.data(), image.step(), size, metrics), noxStsNoError);
            EXPECT_TRUE(samePlane(image, reference::distance::chamfer5x5<Nox8u>(src, metrics)));
        }
    }
}

TEST(DistanceTransformMask, Tables) {
    Nox32s whole[3] = {};
    Nox32f real[3] = {};
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(5, 2, whole), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32s>(whole, whole + 3), (std::vector<Nox32s>{5, 7, 11}));
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(3, 2, whole), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32s>(whole, whole + 3), (std::vector<Nox32s>{2, 3, 11}));
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(5, 0, whole), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32s>(whole, whole + 3), (std::vector<Nox32s>{1, 1, 2}));
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(3, 1, whole), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32s>(whole, whole + 2), (std::vector<Nox32s>{1, 2}));
    EXPECT_EQ(noxiGetDistanceTransformMask_32f(3, 2, real), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32f>(real, real + 2), (std::vector<Nox32f>{0.955F, 1.3693F}));
    EXPECT_EQ(noxiGetDistanceTransformMask(52, real), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32f>(real, real + 3), (std::vector<Nox32f>{1.0F, 1.4F, 2.1969F}));
    EXPECT_EQ(noxiGetDistanceTransformMask(51, real), noxStsNoError);
    EXPECT_EQ(std::vector<Nox32f>(real, real + 3), (std::vector<Nox32f>{1, 2, 3}));
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(4, 7, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(4, 7, whole), noxStsBadSize);
    EXPECT_EQ(noxiGetDistanceTransformMask_32s(5, 3, whole), noxStsBadArgument);
    EXPECT_EQ(noxiGetDistanceTransformMask_32f(3, -1, real), noxStsBadArgument);
    EXPECT_EQ(noxiGetDistanceTransformMask(33, nullptr), noxStsBadArgument);
    EXPECT_EQ(noxiGetDistanceTransformMask(-32, real), noxStsBadArgument);
    EXPECT_EQ(noxiGetDistanceTransformMask(42, real), noxStsBadSize);
    EXPECT_EQ(noxiGetDistanceTransformMask(30, nullptr), noxStsNullPointer);
}

} // namespace
