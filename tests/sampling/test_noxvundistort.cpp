#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/undistort.h"
#include "support/image.h"

using reference::undistort::Lens;
using test::Image;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();

template <class Element, int channelCount>
struct Member {
    using T = Element;
    static constexpr int channels = channelCount;
    static NoxStatus call(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Lens &lens,
                          Nox8u *buffer);
};
#define MEMBER(TYPE, TAG, CHANNELS)                                                                                    \
    template <>                                                                                                        \
    NoxStatus Member<TYPE, CHANNELS>::call(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi,         \
                                           const Lens &lens, Nox8u *buffer) {                                          \
        return noxiUndistortRadial_##TAG##_C##CHANNELS##R(src, srcStep, dst, dstStep, roi, lens.fx, lens.fy, lens.cx,  \
                                                          lens.cy, lens.k1, lens.k2, buffer);                          \
    }
MEMBER(Nox8u, 8u, 1)
MEMBER(Nox8u, 8u, 3)
MEMBER(Nox16u, 16u, 1)
MEMBER(Nox16u, 16u, 3)
MEMBER(Nox32f, 32f, 1)
MEMBER(Nox32f, 32f, 3)
#undef MEMBER

NoxStatus createMaps(Image<Nox32f> &x, Image<Nox32f> &y, NoxiSize roi, const Lens &lens, Nox8u *buffer) {
    return noxiCreateMapCameraUndistort_32f_C1R(x.data(), x.step(), y.data(), y.step(), roi, lens.fx, lens.fy, lens.cx,
                                                lens.cy, lens.k1, lens.k2, lens.p1, lens.p2, buffer);
}

/// Lenses about an image: barrel, pincushion, strong ones that throw pixels far out, none, and some without sense.
std::vector<Lens> lenses(NoxiSize size) {
    const float w = float(size.width), h = float(size.height);
    return {{w, w, w / 2, h / 2, -0.2F, 0.05F},
            {w * 0.8F, h * 1.1F, w / 2 + 1.3F, h / 2 - 0.7F, 0.15F, -0.02F},
            {w / 3, h / 3, w / 4, h / 3, 0.9F, -1.4F},
            {w, h, 0, 0, 0, 0},
            {-w, h, w * 2, -h, -0.3F, 0.1F},
            {infinity, h, w / 2, h / 2, -0.1F, 0},
            {1e-30F, 1, 2, 3, 0.1F, 0.1F},
            {w, h, w / 2, h / 2, nan, 0},
            {w, h, infinity, h / 2, -0.1F, 0},
            {w, h, w / 2, h / 2, 1e38F, -1e38F},
            {w, h, w / 2, h / 2, 3e9F, 0}};
}

template <class M>
class Undistort : public ::testing::Test {};
using Members = ::testing::Types<Member<Nox8u, 1>, Member<Nox8u, 3>, Member<Nox16u, 1>, Member<Nox16u, 3>,
                                 Member<Nox32f, 1>, Member<Nox32f, 3>>;
TYPED_TEST_SUITE(Undistort, Members);

/// Without a buffer, and with one of the exact size at several alignments.
template <class M>
::testing::AssertionResult agrees(const Image<typename M::T> &src, int dstPadding, const Lens &lens, int shift) {
    using T = typename M::T;
    Image<T> expected(src.width(), src.height(), M::channels, dstPadding);
    test::Random random(77);
    test::randomize(expected, random); // what was there shows through
    Image<T> without(expected), with(expected);
    reference::undistort::undistortRadial(src.data(), src.step(), expected.data(), expected.step(), src.roi(),
                                          M::channels, lens);
    int size = 0;
    noxiUndistortGetSize(src.roi(), &size);
    const test::ShiftedBuffer buffer(size, shift);
    if (M::call(src.data(), src.step(), without.data(), without.step(), src.roi(), lens, nullptr) != noxStsNoError ||
        M::call(src.data(), src.step(), with.data(), with.step(), src.roi(), lens, buffer.data()) != noxStsNoError)
        return ::testing::AssertionFailure() << "status";
    const ::testing::AssertionResult result = test::sameImage(without, expected);
    if (!result)
        return ::testing::AssertionFailure() << result.message() << " without a buffer";
    if (!buffer.intact())
        return ::testing::AssertionFailure() << "written behind the buffer";
    return test::sameImage(with, expected) << " with a buffer";
}

TYPED_TEST(Undistort, EqualsReferenceOnAllSizes) {
    using T = typename TypeParam::T;
    test::Random random(1);
    int shift = 0;
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<T>()) {
            Image<T> src(size.width, size.height, TypeParam::channels, padding);
            test::randomize(src, random);
            for (const Lens &lens : lenses(size))
                ASSERT_TRUE(agrees<TypeParam>(src, padding * 3, lens, ++shift % 33));
        }
}

TYPED_TEST(Undistort, NoDistortionCopiesAllButTheLastRowAndColumn) {
    using T = typename TypeParam::T;
    test::Random random(2);
    Image<T> src(70, 9, TypeParam::channels), dst(70, 9, TypeParam::channels);
    test::randomize(src, random);
    dst.fill(T(7));
    TypeParam::call(src.data(), src.step(), dst.data(), dst.step(), src.roi(), {50, 60, 35, 4, 0, 0}, nullptr);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 70; ++x)
            for (int c = 0; c < TypeParam::channels; ++c)
                ASSERT_EQ(dst.at(x, y, c), x == 69 || y == 8 ? T(7) : src.at(x, y, c)) << x << ' ' << y;
}

/// Places half-way between two pixels, to the bit: halves are rounded up.
TYPED_TEST(Undistort, TiesAreRoundedUp) {
    using T = typename TypeParam::T;
    if constexpr (std::is_integral_v<T>) {
        test::Random random(4);
        const Lens lens = {32, 32, 20, 2, 1, 0}; // in row 2, pixels 12 and 28 lie 8^3 / 32^2 = 1/2 farther out
        for (int trial = 0; trial < 60; ++trial) {
            Image<T> src(41, 5, TypeParam::channels);
            test::randomize(src, random);
            ASSERT_TRUE(agrees<TypeParam>(src, 0, lens, trial % 33));
            Image<T> dst(41, 5, TypeParam::channels);
            TypeParam::call(src.data(), src.step(), dst.data(), dst.step(), src.roi(), lens, nullptr);
            for (int c = 0; c < TypeParam::channels; ++c) {
                ASSERT_EQ(dst.at(28, 2, c), T((src.at(28, 2, c) + src.at(29, 2, c) + 1) / 2));
                ASSERT_EQ(dst.at(12, 2, c), T((src.at(11, 2, c) + src.at(12, 2, c) + 1) / 2));
            }
        }
    }
}

TYPED_TEST(Undistort, TakesPixelsAtAnyAddress) {
    using T = typename TypeParam::T;
    test::Random random(3);
    const NoxiSize size = {37, 11};
    const Lens lens = {30, 30, 18, 5, -0.2F, 0.1F};
    Image<T> src(size.width, size.height, TypeParam::channels), expected(src);
    test::randomize(src, random);
    const std::size_t bytes = std::size_t(src.step()) * size.height;
    for (int offset = 1; offset < 4; ++offset) {
        test::Buffer from(bytes + offset), to(bytes + offset);
        std::memcpy(from.data(), src.data(), bytes);
        std::memcpy(to.data(), expected.data(), bytes);
        Image<T> result(expected);
        reference::undistort::undistortRadial(src.data(), src.step(), result.data(), result.step(), size,
                                              TypeParam::channels, lens);
        ASSERT_EQ(TypeParam::call(reinterpret_cast<const T *>(from.data()), src.step(),
                                  reinterpret_cast<T *>(to.data()), src.step(), size, lens, nullptr),
                  noxStsNoError);
        ASSERT_EQ(std::memcmp(to.data(), result.data(), bytes), 0) << offset;
    }
}

TYPED_TEST(Undistort, StatusesInOrder) {
    using T = typename TypeParam::T;
    Image<T> src(9, 4, TypeParam::channels), dst(9, 4, TypeParam::channels);
    const int row = 4 * TypeParam::channels * int(sizeof(T));
    const NoxiSize roi = {4, 3};
    const Lens good = {5, 5, 2, 2, 0, 0}, bad = {0, 5, 2, 2, 0, 0};
    T *s = src.data(), *d = dst.data();
    EXPECT_EQ(TypeParam::call(nullptr, 0, d, row, {0, 0}, bad, nullptr), noxStsNullPointer);
    EXPECT_EQ(TypeParam::call(s, 0, nullptr, row, {0, 0}, bad, nullptr), noxStsNullPointer);
    EXPECT_EQ(TypeParam::call(s, 0, d, row, {0, 3}, bad, nullptr), noxStsBadSize);
    EXPECT_EQ(TypeParam::call(s, 0, d, row, {4, -1}, bad, nullptr), noxStsBadSize);
    EXPECT_EQ(TypeParam::call(s, row - 1, d, row, roi, bad, nullptr), noxStsBadStep);
    EXPECT_EQ(TypeParam::call(s, row + 1, d, row - 1, roi, bad, nullptr), noxStsBadStep);
    const NoxStatus odd = sizeof(T) == 1 ? noxStsBadArgument : noxStsOddStep;
    EXPECT_EQ(TypeParam::call(s, row + 1, d, row, roi, bad, nullptr), odd);
    EXPECT_EQ(TypeParam::call(s, row, d, row + 1, roi, bad, nullptr), odd);
    for (const float f : {0.0F, -0.0F, nan}) {
        EXPECT_EQ(TypeParam::call(s, row, d, row, roi, {f, 5, 2, 2, 0, 0}, nullptr), noxStsBadArgument);
        EXPECT_EQ(TypeParam::call(s, row, d, row, roi, {5, f, 2, 2, 0, 0}, nullptr), noxStsBadArgument);
    }
    EXPECT_EQ(TypeParam::call(s, row, d, row, roi, good, nullptr), noxStsNoError);
}

TYPED_TEST(Undistort, BadCallsWriteNothing) {
    using T = typename TypeParam::T;
    Image<T> src(9, 4, TypeParam::channels), dst(9, 4, TypeParam::channels);
    src.fill(T(1));
    dst.fill(T(5));
    const Image<T> before(dst);
    test::Buffer buffer(9 * 24 + 400);
    std::memset(buffer.data(), 3, buffer.size());
    TypeParam::call(src.data(), src.step(), dst.data(), dst.step(), src.roi(), {0, 5, 2, 2, 0, 0}, buffer.data());
    TypeParam::call(src.data(), 1, dst.data(), dst.step(), src.roi(), {5, 5, 2, 2, 0, 0}, buffer.data());
    EXPECT_TRUE(test::sameImage(dst, before));
    for (std::size_t i = 0; i < buffer.size(); ++i)
        ASSERT_EQ(buffer.data()[i], 3);
}

TEST(UndistortBright, IntegersStayInRange) {
    Image<Nox8u> bytes(100, 80), correctedBytes(100, 80);
    Image<Nox16u> words(100, 80), correctedWords(100, 80);
    bytes.fill(255);
    words.fill(65535);
    for (const Lens &lens : lenses({100, 80})) {
        correctedBytes.fill(255);
        correctedWords.fill(65535);
        Member<Nox8u, 1>::call(bytes.data(), bytes.step(), correctedBytes.data(), correctedBytes.step(), bytes.roi(),
                               lens, nullptr);
        Member<Nox16u, 1>::call(words.data(), words.step(), correctedWords.data(), correctedWords.step(), words.roi(),
                                lens, nullptr);
        ASSERT_TRUE(test::sameImage(correctedBytes, bytes));
        ASSERT_TRUE(test::sameImage(correctedWords, words));
    }
}

TEST(UndistortMaps, EqualReferenceOnAllSizes) {
    int shift = 0;
    for (const NoxiSize size : test::testSizes())
        for (const int padding : test::testPaddings<Nox32f>())
            for (Lens lens : lenses(size))
                for (const auto &[p1, p2] : {std::pair(0.0F, 0.0F), {0.01F, 0.0F}, {0.0F, -0.02F}, {0.003F, nan}}) {
                    lens.p1 = p1;
                    lens.p2 = p2;
                    Image<Nox32f> x(size.width, size.height, 1, padding), y(size.width, size.height, 1, padding * 3),
                        expectedX(x), expectedY(y), bufferedX(x), bufferedY(y);
                    reference::undistort::createMaps(expectedX.data(), expectedX.step(), expectedY.data(),
                                                     expectedY.step(), size, lens);
                    int bytes = 0;
                    noxiUndistortGetSize(size, &bytes);
                    const test::ShiftedBuffer buffer(bytes, ++shift % 33);
                    ASSERT_EQ(createMaps(x, y, size, lens, nullptr), noxStsNoError);
                    ASSERT_EQ(createMaps(bufferedX, bufferedY, size, lens, buffer.data()), noxStsNoError);
                    ASSERT_TRUE(buffer.intact());
                    ASSERT_TRUE(test::sameImage(x, expectedX));
                    ASSERT_TRUE(test::sameImage(y, expectedY));
                    ASSERT_TRUE(test::sameImage(bufferedX, expectedX));
                    ASSERT_TRUE(test::sameImage(bufferedY, expectedY));
                }
}

TEST(UndistortMaps, FollowTheFormula) {
    Image<Nox32f> x(60, 40), y(60, 40);
    const Lens lens = {55, 50, 28, 21, -0.2F, 0.05F, 0.01F, -0.02F};
    createMaps(x, y, x.roi(), lens, nullptr);
    for (int j = 0; j < 40; ++j)
        for (int i = 0; i < 60; ++i) {
            const double x1 = (i - 28) / 55.0, y1 = (j - 21) / 50.0, r2 = x1 * x1 + y1 * y1;
            const double t = 2 * -0.02 * x1 + 2 * 0.01 * y1 + (0.05 * r2 - 0.2) * r2;
            ASSERT_NEAR(x.at(i, j), i + 55 * -0.02 * r2 + (i - 28) * t, 1e-4);
            ASSERT_NEAR(y.at(i, j), j + 50 * 0.01 * r2 + (j - 21) * t, 1e-4);
        }
    createMaps(x, y, x.roi(), {55, 50, 28, 21, -0.2F, 0.05F}, nullptr);
    for (int j = 0; j < 40; ++j)
        for (int i = 0; i < 60; ++i) {
            const double x1 = (i - 28) / 55.0, y1 = (j - 21) / 50.0, r2 = x1 * x1 + y1 * y1;
            ASSERT_NEAR(x.at(i, j), i + (i - 28) * (0.05 * r2 - 0.2) * r2, 1e-4);
            ASSERT_NEAR(y.at(i, j), j + (j - 21) * (0.05 * r2 - 0.2) * r2, 1e-4);
        }
}

TEST(UndistortMaps, StatusesInOrder) {
    Image<Nox32f> x(9, 4), y(9, 4);
    const auto call = [](Nox32f *xs, int xStep, Nox32f *ys, int yStep, NoxiSize roi, float fx, float fy) {
        return noxiCreateMapCameraUndistort_32f_C1R(xs, xStep, ys, yStep, roi, fx, fy, 0, 0, 0, 0, 0, 0, nullptr);
    };
    const NoxiSize roi = {4, 3};
    EXPECT_EQ(call(nullptr, 0, y.data(), 16, {0, 0}, 0, 1), noxStsNullPointer);
    EXPECT_EQ(call(x.data(), 0, nullptr, 16, {0, 0}, 0, 1), noxStsNullPointer);
    EXPECT_EQ(call(x.data(), 0, y.data(), 16, {0, 1}, 0, 1), noxStsBadSize);
    EXPECT_EQ(call(x.data(), 16, y.data(), 0, {1, 0}, 0, 1), noxStsBadSize);
    EXPECT_EQ(call(x.data(), 15, y.data(), 16, roi, 0, 1), noxStsBadStep);
    EXPECT_EQ(call(x.data(), 17, y.data(), 15, roi, 0, 1), noxStsBadStep);
    EXPECT_EQ(call(x.data(), 17, y.data(), 16, roi, 0, 1), noxStsOddStep);
    EXPECT_EQ(call(x.data(), 16, y.data(), 18, roi, 0, 1), noxStsOddStep);
    for (const float f : {0.0F, -0.0F, nan}) {
        EXPECT_EQ(call(x.data(), 16, y.data(), 16, roi, f, 1), noxStsBadArgument);
        EXPECT_EQ(call(x.data(), 16, y.data(), 16, roi, 1, f), noxStsBadArgument);
    }
    EXPECT_EQ(call(x.data(), 16, y.data(), 16, roi, 1, 1), noxStsNoError);
}

TEST(UndistortMaps, BadCallsWriteNothing) {
    Image<Nox32f> x(4, 3), y(4, 3);
    x.fill(5);
    y.fill(6);
    const Image<Nox32f> beforeX(x), beforeY(y);
    createMaps(x, y, x.roi(), {0, 1, 0, 0, 0, 0}, nullptr);
    createMaps(x, y, {5, 3}, {1, 1, 0, 0, 0, 0}, nullptr);
    EXPECT_TRUE(test::sameImage(x, beforeX));
    EXPECT_TRUE(test::sameImage(y, beforeY));
}

TEST(UndistortGetSize, FormulaAndStatuses) {
    int size = -1;
    EXPECT_EQ(noxiUndistortGetSize({0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiUndistortGetSize({0, 5}, &size), noxStsBadSize);
    EXPECT_EQ(noxiUndistortGetSize({5, 0}, &size), noxStsBadSize);
    EXPECT_EQ(noxiUndistortGetSize({-5, 1}, &size), noxStsBadSize);
    EXPECT_EQ(noxiUndistortGetSize({2147483647, 1}, &size), noxStsBadSize);
    EXPECT_EQ(size, -1);
    for (const int width : {1, 2, 3, 4, 5, 639, 640, 641, 4096, 89478400}) {
        EXPECT_EQ(noxiUndistortGetSize({width, 1}, &size), noxStsNoError);
        EXPECT_EQ(size, (width + 3) / 4 * 4 * 24 + 32);
        int other = 0;
        noxiUndistortGetSize({width, 1000000}, &other);
        EXPECT_EQ(other, size);
    }
}

/// Large images, random lenses.
template <class M>
void compareRandomLenses() {
    test::Random random(4);
    std::uniform_real_distribution<float> focal(100, 900), centre(-50, 700), coefficient(-0.6F, 0.6F);
    Image<typename M::T> src(650, 90, M::channels);
    test::randomize(src, random);
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(agrees<M>(
            src, 0,
            {focal(random), focal(random), centre(random), centre(random), coefficient(random), coefficient(random)},
            i));
}

template <class... M>
void compareAll(::testing::Types<M...>) {
    (compareRandomLenses<M>(), ...);
}
TEST(UndistortFull, RandomLenses) { compareAll(Members{}); }

} // namespace
