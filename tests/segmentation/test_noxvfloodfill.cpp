// Flood fills against fills pixel by pixel.
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/floodfill.h"
#include "support/image.h"

using reference::floodfill::Color;
using reference::floodfill::Kind;
using reference::floodfill::View;
using test::Image;

namespace {

/// A member with all arguments that any of them takes.
template <class T>
struct Member {
    const char *name;
    Kind kind;
    int channels;
    bool diagonal;
    NoxStatus (*call)(T *, int, NoxiSize, NoxiPoint, const T *, const T *, const T *, NoxiConnectedRegion *, Nox8u *);
};

#define PLAIN(TYPE, CHANNELS, VALUE, CON)                                                                              \
    {                                                                                                                  \
        "noxiFloodFill_" #CON "Con_" #TYPE "_C" #CHANNELS "IR", Kind::Plain, CHANNELS, (CON) == 8,                     \
            [](Nox##TYPE *image, int step, NoxiSize roi, NoxiPoint seed, const Nox##TYPE *value, const Nox##TYPE *,    \
               const Nox##TYPE *, NoxiConnectedRegion *region, Nox8u *buffer) {                                        \
                return noxiFloodFill_##CON##Con_##TYPE##_C##CHANNELS##IR(image, step, roi, seed, VALUE value, region,  \
                                                                         buffer);                                      \
            }                                                                                                          \
    }
#define DELTAS(KIND, TYPE, CHANNELS, VALUE, CON)                                                                       \
    {                                                                                                                  \
        "noxiFloodFill_" #KIND #CON "Con_" #TYPE "_C" #CHANNELS "IR",                                                  \
            std::string(#KIND) == "Range" ? Kind::Range : Kind::Gradient, CHANNELS, (CON) == 8,                        \
            [](Nox##TYPE *image, int step, NoxiSize roi, NoxiPoint seed, const Nox##TYPE *value, const Nox##TYPE *low, \
               const Nox##TYPE *high, NoxiConnectedRegion *region, Nox8u *buffer) {                                    \
                return noxiFloodFill_##KIND##CON##Con_##TYPE##_C##CHANNELS##IR(image, step, roi, seed, VALUE value,    \
                                                                               VALUE low, VALUE high, region, buffer); \
            }                                                                                                          \
    }
#define MEMBERS(TYPE)                                                                                                  \
    PLAIN(TYPE, 1, *, 4), PLAIN(TYPE, 1, *, 8), PLAIN(TYPE, 3, , 4), PLAIN(TYPE, 3, , 8),                              \
        DELTAS(Range, TYPE, 1, *, 4), DELTAS(Range, TYPE, 1, *, 8), DELTAS(Range, TYPE, 3, , 4),                       \
        DELTAS(Range, TYPE, 3, , 8), DELTAS(Grad, TYPE, 1, *, 4), DELTAS(Grad, TYPE, 1, *, 8),                         \
        DELTAS(Grad, TYPE, 3, , 4), DELTAS(Grad, TYPE, 3, , 8)

template <class T>
const std::vector<Member<T>> &members();
template <>
const std::vector<Member<Nox8u>> &members() {
    static const std::vector<Member<Nox8u>> list = {MEMBERS(8u)};
    return list;
}
template <>
const std::vector<Member<Nox32f>> &members() {
    static const std::vector<Member<Nox32f>> list = {MEMBERS(32f)};
    return list;
}

int bufferSize(Kind kind, NoxiSize roi) {
    int size = 0;
    EXPECT_EQ(kind == Kind::Gradient ? noxiFloodFillGetSize_Grad(roi, &size) : noxiFloodFillGetSize(roi, &size),
              noxStsNoError);
    return size;
}

bool sameRegion(const NoxiConnectedRegion &a, const NoxiConnectedRegion &b) {
    const auto same = [](double x, double y) { return x == y || (x != x && y != y); };
    return a.area == b.area && same(a.value[0], b.value[0]) && same(a.value[1], b.value[1]) &&
           same(a.value[2], b.value[2]) && a.rect.x == b.rect.x && a.rect.y == b.rect.y &&
           a.rect.width == b.rect.width && a.rect.height == b.rect.height;
}

/// Runs a member on a copy of the image and compares image and record with the reference. The buffer has the queried
/// size, holds garbage, and lies at an odd address every other time.
template <class T>
::testing::AssertionResult equalsReference(const Member<T> &member, const Image<T> &image, NoxiPoint seed,
                                           const Color<T> &newValue, const Color<T> &low, const Color<T> &high) {
    static int shift = 0;
    shift = (shift + 1) % 8;
    Image<T> actual(image), expected(image);
    NoxiConnectedRegion untouched{-1, {-2, -3, -4}, {-5, -6, -7, -8}}, region = untouched, wanted = untouched;
    const NoxiSize roi = image.roi();
    reference::floodfill::fill(member.kind, View<T>{expected.data(), expected.step(), member.channels}, roi, seed,
                               member.diagonal, newValue, low, high, wanted);
    const test::ShiftedBuffer buffer(bufferSize(member.kind, roi), shift);
    const NoxStatus status = member.call(actual.data(), actual.step(), roi, seed, newValue.data(), low.data(),
                                         high.data(), &region, buffer.data());
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << member.name << " returns " << status;
    if (!sameRegion(region, wanted))
        return ::testing::AssertionFailure()
               << member.name << " on " << roi.width << "x" << roi.height << " from " << seed.x << "," << seed.y
               << " fills " << region.area << " at " << region.rect.x << "," << region.rect.y << " "
               << region.rect.width << "x" << region.rect.height << ", expected " << wanted.area << " at "
               << wanted.rect.x << "," << wanted.rect.y << " " << wanted.rect.width << "x" << wanted.rect.height;
    if (!buffer.intact())
        return ::testing::AssertionFailure() << member.name << " writes behind its buffer";
    return test::sameImage(actual, expected) << " " << member.name;
}

template <class T>
class FloodFill : public ::testing::Test {
protected:
    test::Random random{7};

    NoxiPoint anyPoint(NoxiSize size) { return {int(random() % size.width), int(random() % size.height)}; }
    Color<T> color(T value) { return {value, value, value}; }
    /// All members on one picture from one seed.
    template <class Value>
    void compareAll(NoxiSize size, int padding, const Value &value, const Color<T> &newValue, const Color<T> &low,
                    const Color<T> &high) {
        for (const Member<T> &member : members<T>()) {
            Image<T> image(size.width, size.height, member.channels, padding * int(sizeof(T)));
            image.generate(value);
            ASSERT_TRUE(equalsReference(member, image, anyPoint(size), newValue, low, high));
        }
    }
};
using Elements = ::testing::Types<Nox8u, Nox32f>;
TYPED_TEST_SUITE(FloodFill, Elements);

TYPED_TEST(FloodFill, EqualsReferenceOnAllSizes) {
    using T = TypeParam;
    for (const NoxiSize size : test::testSizes())
        for (const int levels : {1, 2, 3, 12})
            for (const int padding : {0, 13})
                this->compareAll(
                    size, padding, [&](int, int, int) { return this->random() % levels; }, this->color(T(77)),
                    this->color(T(levels / 4)), this->color(T(levels / 3)));
}

TYPED_TEST(FloodFill, NewValueInsideTheRange) {
    using T = TypeParam;
    for (const NoxiSize size : test::testSizes())
        for (const int levels : {2, 9})
            for (const int newValue : {0, 1, 4, 8})
                this->compareAll(
                    size, 1, [&](int, int, int) { return this->random() % levels; }, this->color(T(newValue)),
                    this->color(T(levels / 2)), this->color(T(levels / 2)));
}

TYPED_TEST(FloodFill, SmoothPictures) {
    using T = TypeParam;
    for (const NoxiSize size : {NoxiSize{60, 41}, NoxiSize{257, 30}, NoxiSize{9, 70}})
        for (int round = 0; round < 6; ++round) {
            const int period = 3 + int(this->random() % 20);
            this->compareAll(size, 0,
                             [&](int x, int y, int c) {
                                 return 100 +
                                        90 * std::sin(double(x + c) / period) * std::cos(double(y) / (period + 2)) +
                                        double(this->random() % 3);
                             },
                             {T(1), T(2), T(3)}, {T(6), T(7), T(9)}, {T(5), T(8), T(4)});
        }
}

TYPED_TEST(FloodFill, EveryAlignmentOfThePixels) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>())
        for (int shift = 0; shift < 4; ++shift) {
            const NoxiSize roi = {37, 11};
            const int step = (roi.width * 3 + 1) * int(sizeof(T));
            const std::size_t used = std::size_t(step) * 10 + std::size_t(roi.width) * member.channels * sizeof(T);
            const test::Buffer actual(used + shift), expected(used + shift);
            std::memset(actual.data(), 0x33, actual.size());
            const View<T> view{reinterpret_cast<T *>(actual.data()), step, member.channels};
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x)
                    view.set(x, y, this->color(T(this->random() % 4 == 0 ? 9 : 2)));
            view.set(5, 5, this->color(T(2)));
            std::memcpy(expected.data(), actual.data(), actual.size());
            const Color<T> newValue = this->color(T(200)), delta = this->color(T(1));
            NoxiConnectedRegion region{}, wanted{};
            reference::floodfill::fill(member.kind,
                                       View<T>{reinterpret_cast<T *>(expected.data()), step, member.channels}, roi,
                                       {5, 5}, member.diagonal, newValue, delta, delta, wanted);
            const test::Buffer buffer(bufferSize(member.kind, roi));
            ASSERT_EQ(member.call(view.data, step, roi, {5, 5}, newValue.data(), delta.data(), delta.data(), &region,
                                  buffer.data()),
                      noxStsNoError);
            ASSERT_TRUE(sameRegion(region, wanted)) << member.name;
            ASSERT_EQ(std::memcmp(actual.data(), expected.data(), used), 0) << member.name;
        }
}

/// Patterns with many spans waiting at once.
std::vector<std::pair<const char *, std::function<bool(int, int)>>> patterns() {
    return {
        {"checkerboard", [](int x, int y) { return (x + y) % 2 == 0; }},
        {"grid", [](int x, int y) { return x % 2 == 0 || y % 2 == 0; }},
        {"comb", [](int x, int y) { return y == 0 || x % 2 == 0; }},
        {"comb upward", [](int x, int y) { return y % 7 == 6 || x % 2 == 0; }},
        {"comb sideways", [](int x, int y) { return x == 0 || y % 2 == 0; }},
        {"serpentine", [](int x, int y) { return y % 2 == 0 || x == (y / 2 % 2 == 0 ? 0 : 5); }},
        {"fans", [](int x, int y) { return y % 4 == 0 || (x + y % 2) % 2 == 0; }},
        {"crosses", [](int x, int y) { return x % 3 == y % 3 || (x + y) % 3 == 2; }},
        {"all", [](int, int) { return true; }},
    };
}

TYPED_TEST(FloodFill, TheBufferSufficesForEveryPattern) {
    using T = TypeParam;
    std::vector<NoxiSize> sizes = {{64, 40}, {65, 41}, {5, 90}, {90, 5}, {4, 50}, {33, 1}};
    for (int width = 1; width <= 9; ++width)
        for (int height = 1; height <= 6; ++height)
            sizes.push_back({width, height});
    for (const auto &[name, pattern] : patterns())
        for (const NoxiSize size : sizes)
            for (const int newValue : {7, 3, 1}) // 3 and 1 lie in the range
                this->compareAll(
                    size, 0, [&](int x, int y, int) { return pattern(x, y) ? 2 : 100; }, this->color(T(newValue)),
                    this->color(T(1)), this->color(T(1)));
}

TYPED_TEST(FloodFill, TheBufferSufficesForSteepGradients) {
    // Staircases in which every pixel is a span of its own: neighbours in a row cannot follow each other.
    using T = TypeParam;
    for (const NoxiSize size : {NoxiSize{64, 40}, NoxiSize{3, 3}, NoxiSize{5, 5}, NoxiSize{33, 31}, NoxiSize{2, 9}})
        for (int round = 0; round < 30; ++round) {
            const int a = int(this->random() % 200), b = int(this->random() % 200), up = int(this->random() % 60);
            this->compareAll(
                size, 0,
                [&](int x, int y, int) { return round % 3 == 0 ? this->random() % 256 : (x * a + y * b) % 256; },
                this->color(T(1)), this->color(T(0)), this->color(T(up)));
        }
}

TYPED_TEST(FloodFill, FloatSpecialsJoinAsTheComparisonsTell) {
    using T = TypeParam;
    if constexpr (std::is_floating_point_v<T>) {
        const float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
        const float values[] = {0.0F, -0.0F, 1.0F, nan, 1.5F, infinity, -infinity, 1e-44F};
        const float deltas[] = {0.0F, 1.0F, 0.25F, infinity, nan, -1.0F, 1e-45F};
        for (const Member<T> &member : members<T>())
            for (int round = 0; round < 300; ++round) {
                Image<T> image(19, 7, member.channels);
                const int kinds = 2 + round % 7;
                image.generate([&](int, int, int) { return values[this->random() % kinds]; });
                Color<T> newValue, low, high;
                for (int c = 0; c < 3; ++c) {
                    newValue[c] = this->random() % 3 ? 5.0F : values[this->random() % std::size(values)];
                    const int count = member.kind == Kind::Gradient ? 4 : int(std::size(deltas));
                    low[c] = deltas[this->random() % count];
                    high[c] = deltas[this->random() % count];
                }
                ASSERT_TRUE(equalsReference(member, image, this->anyPoint(image.roi()), newValue, low, high));
            }
    }
}

TYPED_TEST(FloodFill, GradientsBySpansReachTheSamePixels) {
    using T = TypeParam;
    for (int round = 0; round < 400; ++round)
        for (const bool diagonal : {false, true}) {
            const NoxiSize size = {1 + int(this->random() % 17), 1 + int(this->random() % 9)};
            Image<T> image(size.width, size.height);
            const int range = 3 + int(this->random() % 40);
            image.generate([&](int, int, int) { return this->random() % range; });
            Image<T> expected(image);
            const Color<T> newValue = this->color(T(2)), low = this->color(T(this->random() % range / 3)),
                           high = this->color(T(this->random() % range / 3));
            const NoxiPoint seed = this->anyPoint(size);
            const auto wanted = reference::floodfill::fillBySpans(View<T>{expected.data(), expected.step(), 1}, size,
                                                                  seed, diagonal, newValue, low, high);
            const test::Buffer buffer(bufferSize(Kind::Gradient, size));
            NoxiConnectedRegion region{};
            for (const Member<T> &member : members<T>())
                if (member.kind == Kind::Gradient && member.channels == 1 && member.diagonal == diagonal) {
                    ASSERT_EQ(member.call(image.data(), image.step(), size, seed, newValue.data(), low.data(),
                                          high.data(), &region, buffer.data()),
                              noxStsNoError);
                }
            ASSERT_TRUE(sameRegion(region, wanted));
            ASSERT_TRUE(test::sameImage(image, expected));
        }
}

TYPED_TEST(FloodFill, ASeedOfTheNewValueIsLeftAloneExceptAlongGradients) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        Image<T> image(5, 4, member.channels);
        image.fill(T(9));
        const Color<T> value = this->color(T(9)), zero = this->color(T(0));
        NoxiConnectedRegion region{-1, {-1, -1, -1}, {-1, -1, -1, -1}};
        const test::Buffer buffer(bufferSize(member.kind, image.roi()));
        EXPECT_EQ(member.call(image.data(), image.step(), image.roi(), {2, 2}, value.data(), zero.data(), zero.data(),
                              &region, buffer.data()),
                  noxStsNoError);
        EXPECT_EQ(region.area, member.kind == Kind::Gradient ? 20 : -1) << member.name;
        EXPECT_EQ(region.rect.height, member.kind == Kind::Gradient ? 4 : -1) << member.name;
    }
}

TYPED_TEST(FloodFill, StatusesInOrder) {
    using T = TypeParam;
    constexpr int e = int(sizeof(T));
    for (const Member<T> &member : members<T>()) {
        Image<T> image(6, 4, 3);
        image.fill(T(4));
        const Image<T> before(image);
        const Color<T> value = this->color(T(9)), delta = this->color(T(1));
        NoxiConnectedRegion region{-1, {-1, -1, -1}, {-1, -1, -1, -1}};
        const test::Buffer buffer(bufferSize(member.kind, {6, 4}));
        const auto call = [&](T *pixels, int step, NoxiSize roi, NoxiPoint seed, const T *newValue, const T *low,
                              const T *high, NoxiConnectedRegion *record, Nox8u *memory) {
            return member.call(pixels, step, roi, seed, newValue, low, high, record, memory);
        };
        const T *v = value.data(), *d = delta.data();
        const NoxiPoint outside = {6, 0};
        EXPECT_EQ(call(nullptr, 0, {0, 0}, outside, v, d, d, &region, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(image.data(), 0, {0, 0}, outside, v, d, d, nullptr, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(image.data(), 0, {0, 0}, outside, v, d, d, &region, nullptr), noxStsNullPointer);
        if (member.channels == 3) {
            EXPECT_EQ(call(image.data(), 0, {0, 0}, outside, nullptr, d, d, &region, buffer.data()), noxStsNullPointer);
            if (member.kind != Kind::Plain) {
                EXPECT_EQ(call(image.data(), 0, {0, 0}, outside, v, nullptr, d, &region, buffer.data()),
                          noxStsNullPointer);
                EXPECT_EQ(call(image.data(), 0, {0, 0}, outside, v, d, nullptr, &region, buffer.data()),
                          noxStsNullPointer);
            }
        }
        EXPECT_EQ(call(image.data(), 0, {0, 4}, outside, v, d, d, &region, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(image.data(), 0, {6, -1}, outside, v, d, d, &region, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(image.data(), 0, {40000, 40000}, outside, v, d, d, &region, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(image.data(), 6 * e - 1, {6, 4}, outside, v, d, d, &region, buffer.data()), noxStsBadStep);
        if (e > 1) {
            EXPECT_EQ(call(image.data(), 6 * e + 1, {6, 4}, outside, v, d, d, &region, buffer.data()), noxStsOddStep);
            EXPECT_EQ(call(image.data(), 18 * e + 2, {6, 3}, outside, v, d, d, &region, buffer.data()),
                      member.kind == Kind::Gradient ? noxStsOddStep : noxStsOutOfRange);
        }
        for (const NoxiPoint seed : {outside, NoxiPoint{0, 4}, NoxiPoint{-1, 0}, NoxiPoint{0, -1}})
            EXPECT_EQ(call(image.data(), image.step(), {6, 4}, seed, v, d, d, &region, buffer.data()),
                      noxStsOutOfRange);
        EXPECT_TRUE(test::sameImage(image, before));
        EXPECT_EQ(region.area, -1);
        // A step too small for three channels passes.
        EXPECT_EQ(call(image.data(), 6 * e, {6, 1}, {0, 0}, v, d, d, &region, buffer.data()), noxStsNoError);
    }
}

TEST(FloodFillGradient, FloatDeltasAreNotNegative) {
    Image<Nox32f> image(3, 3, 3);
    image.fill(1.0F);
    const test::Buffer buffer(bufferSize(Kind::Gradient, {3, 3}));
    NoxiConnectedRegion region{};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float bad : {-1.0F, -1e-45F, nan}) {
        EXPECT_EQ(noxiFloodFill_Grad4Con_32f_C1IR(image.data(), image.step(), image.roi(), {0, 0}, 5, bad, 1, &region,
                                                  buffer.data()),
                  noxStsOutOfRange);
        EXPECT_EQ(noxiFloodFill_Grad8Con_32f_C1IR(image.data(), image.step(), image.roi(), {0, 0}, 5, 1, bad, &region,
                                                  buffer.data()),
                  noxStsOutOfRange);
        for (int c = 0; c < 3; ++c) {
            float low[3] = {1, 1, 1};
            const float value[3] = {5, 5, 5}, one[3] = {1, 1, 1};
            low[c] = bad;
            EXPECT_EQ(noxiFloodFill_Grad4Con_32f_C3IR(image.data(), image.step(), image.roi(), {0, 0}, value, low, one,
                                                      &region, buffer.data()),
                      noxStsOutOfRange);
            EXPECT_EQ(noxiFloodFill_Grad8Con_32f_C3IR(image.data(), image.step(), image.roi(), {0, 0}, value, one, low,
                                                      &region, buffer.data()),
                      noxStsOutOfRange);
        }
    }
    EXPECT_EQ(noxiFloodFill_Grad4Con_32f_C1IR(image.data(), image.step(), image.roi(), {0, 0}, 5, -0.0F, 0, &region,
                                              buffer.data()),
              noxStsNoError);
    EXPECT_EQ(region.area, 9);
}

TEST(FloodFillBuffer, SizeFormulas) {
    int size = 5;
    EXPECT_EQ(bufferSize(Kind::Plain, {1, 1}), 6 + 32);
    EXPECT_EQ(bufferSize(Kind::Plain, {3, 5}), 90 + 32);
    EXPECT_EQ(bufferSize(Kind::Plain, {10000, 10000}), 600000032);
    EXPECT_EQ(bufferSize(Kind::Gradient, {3, 5}), 35 + 90 + 32);
    EXPECT_EQ(noxiFloodFillGetSize({20000, 20000}, &size), noxStsNoError);
    EXPECT_EQ(static_cast<unsigned>(size), 2400000032U);
    size = 5;
    for (const auto query : {noxiFloodFillGetSize, noxiFloodFillGetSize_Grad}) {
        EXPECT_EQ(query({0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(query({0, 3}, &size), noxStsBadSize);
        EXPECT_EQ(query({3, -1}, &size), noxStsBadSize);
    }
    EXPECT_EQ(size, 5);
}

} // namespace
