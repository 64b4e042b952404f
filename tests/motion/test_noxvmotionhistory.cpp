// Motion history against its definition.
#include <bit>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/motionhistory.h"
#include "support/image.h"

using test::Image;

namespace {

NoxStatus call(const Nox8u *s, int sStep, Nox32f *m, int mStep, NoxiSize roi, float timestamp, float duration) {
    return noxiUpdateMotionHistory_8u32f_C1IR(s, sStep, m, mStep, roi, timestamp, duration);
}
NoxStatus call(const Nox16u *s, int sStep, Nox32f *m, int mStep, NoxiSize roi, float timestamp, float duration) {
    return noxiUpdateMotionHistory_16u32f_C1IR(s, sStep, m, mStep, roi, timestamp, duration);
}
NoxStatus call(const Nox32f *s, int sStep, Nox32f *m, int mStep, NoxiSize roi, float timestamp, float duration) {
    return noxiUpdateMotionHistory_32f_C1IR(s, sStep, m, mStep, roi, timestamp, duration);
}

constexpr float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
const float specials[] = {0.0F, -0.0F,    1.0F,      -1.0F, 1e-45F, -1e-45F, 3e38F, -3e38F,
                          nan,  infinity, -infinity, -nan,  10.0F,  9.5F,    -2.0F, 1e-38F};

template <class T>
class MotionHistory : public ::testing::Test {
protected:
    test::Random random{1};

    T silhouetteElement() {
        if (random() % 3 != 0)
            return T(0);
        if constexpr (std::is_floating_point_v<T>)
            return specials[random() % std::size(specials)];
        else
            return test::randomElement<T>(random);
    }
    float entry() {
        return random() % 4 == 0 ? specials[random() % std::size(specials)]
                                 : float(std::uniform_real_distribution<double>(-20.0, 20.0)(random));
    }
    /// Bit for bit, not-a-numbers too: entries that stay and timestamps are copied.
    static void expectSameBits(const Nox8u *actual, const Nox8u *expected, std::size_t bytes) {
        ASSERT_EQ(std::memcmp(actual, expected, bytes), 0);
    }
    void compare(NoxiSize size, int padding, int shift, float timestamp, float duration) {
        const int sStep = (size.width + padding) * int(sizeof(T)), mStep = (size.width + padding) * 4;
        const auto bytes = [&](int step, int element) {
            return std::size_t(step) * (size.height - 1) + std::size_t(size.width) * element + shift;
        };
        const test::Buffer s(bytes(sStep, sizeof(T))), actual(bytes(mStep, 4)), expected(bytes(mStep, 4));
        std::memset(s.data(), 0x5a, s.size());
        std::memset(actual.data(), 0x5a, actual.size());
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                const T element = silhouetteElement();
                const float value = entry();
                std::memcpy(s.data() + std::size_t(y) * sStep + x * sizeof(T), &element, sizeof(T));
                std::memcpy(actual.data() + std::size_t(y) * mStep + std::size_t(x) * 4, &value, 4);
            }
        std::memcpy(expected.data(), actual.data(), actual.size());
        reference::motionhistory::update(reinterpret_cast<const T *>(s.data()), sStep,
                                         reinterpret_cast<Nox32f *>(expected.data()), mStep, size, timestamp, duration);
        ASSERT_EQ(call(reinterpret_cast<const T *>(s.data()), sStep, reinterpret_cast<Nox32f *>(actual.data()), mStep,
                       size, timestamp, duration),
                  noxStsNoError);
        expectSameBits(actual.data(), expected.data(), actual.size());
    }
};
using Elements = ::testing::Types<Nox8u, Nox16u, Nox32f>;
TYPED_TEST_SUITE(MotionHistory, Elements);

TYPED_TEST(MotionHistory, EqualsReferenceOnAllSizesAndAddresses) {
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 13})
            for (const int shift : {0, 1, 2, 3})
                this->compare(size, padding, shift, 10.0F, 0.5F);
}

TYPED_TEST(MotionHistory, LimitsOfEveryKind) {
    for (const float timestamp : specials)
        for (const float duration : {0.0F, -0.0F, 1e-45F, 0.5F, 1.0F, 3e38F, infinity})
            this->compare({67, 3}, 0, 0, timestamp, duration);
}

TYPED_TEST(MotionHistory, EqualToTheLimitStays) {
    using T = TypeParam;
    Image<T> silhouette(4, 1);
    silhouette.fill(T(0));
    Image<Nox32f> mhi(4, 1);
    mhi.at(0, 0) = 9.0F;
    mhi.at(1, 0) = std::nextafter(9.0F, 0.0F);
    mhi.at(2, 0) = 10.0F;
    mhi.at(3, 0) = -1.0F;
    EXPECT_EQ(call(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(), mhi.roi(), 10.0F, 1.0F),
              noxStsNoError);
    EXPECT_EQ(mhi.at(0, 0), 9.0F);
    EXPECT_EQ(mhi.at(1, 0), 0.0F);
    EXPECT_EQ(mhi.at(2, 0), 10.0F);
    EXPECT_EQ(mhi.at(3, 0), 0.0F);
    // A limit of -1 erases what lies below it only.
    mhi.at(1, 0) = -1.0F;
    mhi.at(3, 0) = -1.5F;
    EXPECT_EQ(call(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(), mhi.roi(), 0.0F, 1.0F), noxStsNoError);
    EXPECT_EQ(mhi.at(1, 0), -1.0F);
    EXPECT_EQ(mhi.at(3, 0), 0.0F);
}

TYPED_TEST(MotionHistory, MinusZeroAtALimitOfZero) {
    using T = TypeParam;
    Image<T> silhouette(1, 1);
    silhouette.fill(T(0));
    Image<Nox32f> mhi(1, 1);
    mhi.fill(-0.0F);
    EXPECT_EQ(call(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(), mhi.roi(), 1.0F, 1.0F), noxStsNoError);
    const bool isFloat = std::is_floating_point_v<T>;
    EXPECT_EQ(std::bit_cast<unsigned>(mhi.at(0, 0)), isFloat ? 0x80000000U : 0U);
}

TYPED_TEST(MotionHistory, StatusesInOrder) {
    using T = TypeParam;
    Image<T> s(6, 3);
    Image<Nox32f> m(6, 3);
    s.fill(T(0));
    m.fill(5.0F);
    const Image<Nox32f> before(m);
    const int sStep = s.step(), mStep = m.step();
    const NoxiSize roi = s.roi();
    EXPECT_EQ(call(static_cast<const T *>(nullptr), 0, m.data(), mStep, {0, 1}, 9, 1), noxStsNullPointer);
    EXPECT_EQ(call(s.data(), 0, nullptr, mStep, {1, 0}, 9, 1), noxStsNullPointer);
    EXPECT_EQ(call(s.data(), 0, m.data(), mStep, {0, 1}, 9, 1), noxStsBadSize);
    EXPECT_EQ(call(s.data(), 0, m.data(), 0, {6, 0}, 9, 1), noxStsBadSize);
    EXPECT_EQ(call(s.data(), sStep - 1, m.data(), mStep + 1, roi, 9, 1), noxStsBadStep);
    EXPECT_EQ(call(s.data(), -sStep, m.data(), mStep, roi, 9, 1), noxStsBadStep);
    EXPECT_EQ(call(s.data(), sStep + int(sizeof(T)) - 1, m.data(), mStep - 1, roi, 9, -1), noxStsBadStep);
    EXPECT_EQ(call(s.data(), sStep, m.data(), mStep + 2, roi, 9, -1), noxStsOddStep);
    if (sizeof(T) > 1) {
        EXPECT_EQ(call(s.data(), sStep + 1, m.data(), mStep, roi, 9, -1), noxStsOddStep);
    }
    EXPECT_EQ(call(s.data(), sStep, m.data(), mStep, roi, 9, -1), noxStsOutOfRange);
    EXPECT_EQ(call(s.data(), sStep, m.data(), mStep, roi, 9, nan), noxStsOutOfRange);
    EXPECT_TRUE(test::sameImage(m, before));
    EXPECT_EQ(call(s.data(), sStep, m.data(), mStep, roi, 9, -0.0F), noxStsNoError);
}

} // namespace
