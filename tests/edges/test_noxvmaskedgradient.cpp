#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include "edges/noxvmaskedgradient.h"
#include "reference/maskedgradient.h"
#include "support/image.h"

using reference::maskedgradient::GradientForm;
using test::Image;

namespace {

/// A picture, a field of stored gradients, a mask and blocked pixels.
template <class T, int Channels>
struct Scene {
    Image<T> src;
    Image<Nox16s> dst;
    Image<Nox8u> mask, blocked;

    Scene(NoxiSize size, test::Random &random)
        : src(size.width, size.height, Channels, 5 * int(sizeof(T))), dst(size.width, size.height, 2 * Channels, 6),
          mask(size.width, size.height, 1, 3), blocked(size.width, size.height) {
        test::randomize(src, random);
        test::randomize(dst, random);
        mask.generate([&](int, int, int) { return random() % 3 == 0 ? 0 : random() % 255 + 1; });
        blocked.generate([&](int, int, int) { return random() % 2 == 0 ? 0 : random() % 255 + 1; });
    }
    int width() const { return src.width(); }
    int height() const { return src.height(); }
    auto rowSamples(int y, int c) const {
        return [this, y, c](int x) { return int(src.at(x, y, c)); };
    }
    auto columnSamples(int x, int c) const {
        return [this, x, c](int y) { return int(src.at(x, y, c)); };
    }
    auto rowBlocked(int y) const {
        return [this, y](int x) { return blocked.at(x, y) != 0; };
    }
    auto columnBlocked(int x) const {
        return [this, x](int y) { return blocked.at(x, y) != 0; };
    }
};

template <int Channels>
struct Member;
#define MEMBER(C)                                                                                                      \
    template <>                                                                                                        \
    struct Member<C> {                                                                                                 \
        static constexpr auto plain = owncvGradient_8u16s_C##C##MR;                                                    \
        static constexpr auto absolute = owncvAbsGradient_8u16s_C##C##MR;                                              \
        static constexpr auto modPlain = owncvModGradient_8u16s_C##C##MR;                                              \
        static constexpr auto modAbsolute = owncvModAbsGradient_8u16s_C##C##MR;                                        \
        static constexpr auto pointPlain = owncvModGradientPoint_8u16s_C##C##MR;                                       \
        static constexpr auto pointAbsolute = owncvModAbsGradientPoint_8u16s_C##C##MR;                                 \
    };
MEMBER(1)
MEMBER(3)
#undef MEMBER

template <class Constant>
class MaskedGradient : public ::testing::Test {};
using Channels = ::testing::Types<std::integral_constant<int, 1>, std::integral_constant<int, 3>>;
TYPED_TEST_SUITE(MaskedGradient, Channels);

TYPED_TEST(MaskedGradient, EqualsReference) {
    constexpr int channels = TypeParam::value;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const GradientForm form : {GradientForm{false}, GradientForm{true}}) {
            Scene<Nox8u, channels> scene(size, random);
            Image<Nox16s> expected(scene.dst);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    for (int c = 0; c < channels && scene.mask.at(x, y) != 0; ++c) {
                        expected.at(x, y, 2 * c) =
                            Nox16s(gradientComponent(form, scene.rowSamples(y, c), x, size.width));
                        expected.at(x, y, 2 * c + 1) =
                            Nox16s(gradientComponent(form, scene.columnSamples(x, c), y, size.height));
                    }
            const auto call = form.absolute ? Member<channels>::absolute : Member<channels>::plain;
            call(scene.src.data(), scene.src.step(), scene.dst.data(), scene.dst.step(), scene.mask.data(),
                 scene.mask.step(), size.width, size.height);
            ASSERT_TRUE(test::sameImage(scene.dst, expected)) << "absolute " << form.absolute;
        }
}

TYPED_TEST(MaskedGradient, RepairEqualsReference) {
    constexpr int channels = TypeParam::value;
    test::Random random(2);
    for (const NoxiSize size : test::testSizes())
        for (const GradientForm form : {GradientForm{false}, GradientForm{true}}) {
            Scene<Nox8u, channels> scene(size, random);
            Image<Nox16s> expected(scene.dst);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    for (int c = 0; c < channels && scene.mask.at(x, y) != 0; ++c) {
                        const auto gx = expected.at(x, y, 2 * c), gy = expected.at(x, y, 2 * c + 1);
                        gx = Nox16s(repairedComponent(form, scene.rowSamples(y, c), scene.rowBlocked(y), x, size.width,
                                                      true, gx));
                        gy = Nox16s(repairedComponent(form, scene.columnSamples(x, c), scene.columnBlocked(x), y,
                                                      size.height, false, gy));
                    }
            const auto call = form.absolute ? Member<channels>::modAbsolute : Member<channels>::modPlain;
            call(scene.src.data(), scene.src.step(), scene.dst.data(), scene.dst.step(), scene.mask.data(),
                 scene.mask.step(), scene.blocked.data(), scene.blocked.step(), size.width, size.height);
            ASSERT_TRUE(test::sameImage(scene.dst, expected)) << "absolute " << form.absolute;
        }
}

/// The update along one axis, written out case by case. `set(i, value)` stores a component.
void pointUpdate(GradientForm form, const std::function<int(int)> &s, const std::function<bool(int)> &blocked, int i,
                 int n, const std::function<void(int, int)> &set) {
    const bool first = i == 0, last = i == n - 1;
    if (first && last)
        set(i, 0);
    else if (first && !blocked(i + 1))
        set(i, form.oneSided(s(i), s(i + 1)));
    else if (last && !blocked(i - 1))
        set(i, form.oneSided(s(i - 1), s(i)));
    else if (!first && !last && !blocked(i - 1) && !blocked(i + 1))
        set(i, form.central(s(i - 1), s(i), s(i + 1)));
    else if (!first && !last && blocked(i - 1) && !blocked(i + 1))
        set(i, form.oneSided(s(i), s(i + 1)));
    else if (!first && !last && !blocked(i - 1) && blocked(i + 1))
        set(i, form.oneSided(s(i - 1), s(i)));

    if (i >= 2 && !blocked(i - 2))
        set(i - 1, form.central(s(i - 2), s(i - 1), s(i)));
    else if (i >= 1 && !blocked(i - 1))
        set(i - 1, form.oneSided(s(i - 1), s(i)));
    if (i + 2 < n && !blocked(i + 2))
        set(i + 1, form.central(s(i), s(i + 1), s(i + 2)));
    else if (i + 1 < n && !blocked(i + 1))
        set(i + 1, form.oneSided(s(i), s(i + 1)));
}

TYPED_TEST(MaskedGradient, PointUpdateEqualsReference) {
    constexpr int channels = TypeParam::value;
    test::Random random(3);
    const NoxiSize sizes[] = {{1, 1}, {1, 4}, {4, 1}, {2, 2}, {2, 5}, {3, 3}, {7, 6}};
    for (const NoxiSize size : sizes)
        for (const GradientForm form : {GradientForm{false}, GradientForm{true}})
            for (int round = 0; round < 40; ++round) {
                Scene<Nox8u, channels> scene(size, random);
                const int row = int(random() % size.height), column = int(random() % size.width);
                Image<Nox16s> expected(scene.dst);
                Image<Nox8u> expectedBlocked(scene.blocked);
                Scene<Nox8u, channels> known(size, random);
                known.src.generate([&](int x, int y, int c) { return scene.src.at(x, y, c); });
                expectedBlocked.at(column, row) = 0;
                known.blocked.generate([&](int x, int y, int) { return expectedBlocked.at(x, y); });
                for (int c = 0; c < channels; ++c) {
                    pointUpdate(form, known.columnSamples(column, c), known.columnBlocked(column), row, size.height,
                                [&](int y, int value) { expected.at(column, y, 2 * c + 1) = Nox16s(value); });
                    pointUpdate(form, known.rowSamples(row, c), known.rowBlocked(row), column, size.width,
                                [&](int x, int value) { expected.at(x, row, 2 * c) = Nox16s(value); });
                }
                const auto call = form.absolute ? Member<channels>::pointAbsolute : Member<channels>::pointPlain;
                call(scene.src.data(), scene.src.step(), scene.dst.data(), scene.dst.step(), scene.blocked.data(),
                     scene.blocked.step(), size.width, size.height, row, column);
                ASSERT_TRUE(test::sameImage(scene.dst, expected)) << "absolute " << form.absolute;
                ASSERT_TRUE(test::sameImage(scene.blocked, expectedBlocked));
            }
}

/// Truncation to 16 bits the way the library keeps it: low bits of the truncated product.
Nox16s scaledComponent(float difference, float factor) {
    const double product = double(difference * factor);
    return product >= -2147483648.0 && product < 2147483648.0 ? Nox16s(std::uint16_t(std::int64_t(product)))
                                                              : Nox16s(0);
}

TEST(MaskedGradient32f, EqualsReferenceForAllScales) {
    test::Random random(4);
    for (const NoxiSize size : test::testSizes())
        for (const int scaleFactor : {-12, 0, 1, 5, -3}) {
            Scene<Nox32f, 1> scene(size, random);
            Image<Nox16s> expected(scene.dst);
            const float scale = scaleFactor < 1 ? float(1 << -scaleFactor) : 0.0F;
            const auto component = [&](const std::function<float(int)> &s, int i, int n) {
                if (n == 1)
                    return Nox16s(0);
                if (i == 0)
                    return scaledComponent(s(1) - s(0), scale);
                if (i == n - 1)
                    return scaledComponent(s(i) - s(i - 1), scale);
                return scaledComponent(s(i + 1) - s(i - 1), scale * 0.5F);
            };
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    if (scene.mask.at(x, y) != 0) {
                        expected.at(x, y, 0) = component([&](int i) { return scene.src.at(i, y); }, x, size.width);
                        expected.at(x, y, 1) = component([&](int i) { return scene.src.at(x, i); }, y, size.height);
                    }
            owncvGradient_32f16s_C1MR_Sfs(scene.src.data(), scene.src.step(), scene.dst.data(), scene.dst.step(),
                                          scene.mask.data(), scene.mask.step(), size.width, size.height, scaleFactor);
            ASSERT_TRUE(test::sameImage(scene.dst, expected)) << scaleFactor;
        }
}

TEST(NoZero, CountsAndBounds) {
    Image<Nox8u> image(9, 7, 1, 2);
    image.fill(0);
    int count = -1;
    NoxiRect bounds{};
    owncvNoZero_8u(image.data(), image.step(), 9, 7, &count, &bounds);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(bounds.x, -1);
    EXPECT_EQ(bounds.y, -1);
    EXPECT_EQ(bounds.width, 0);
    EXPECT_EQ(bounds.height, 0);
    image.at(6, 2) = 1;
    image.at(3, 4) = 255;
    image.at(4, 3) = 9;
    owncvNoZero_8u(image.data(), image.step(), 9, 7, &count, &bounds);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(bounds.x, 3);
    EXPECT_EQ(bounds.y, 2);
    EXPECT_EQ(bounds.width, 4);
    EXPECT_EQ(bounds.height, 3);
}

TEST(FillNoZero, RecordsCarryValueAndPixel) {
    Image<Nox32f> image(5, 3);
    image.fill(-1.0F);
    image.at(2, 0) = 0.5F;
    image.at(0, 1) = std::numeric_limits<float>::quiet_NaN();
    image.at(1, 1) = 0.0F;
    image.at(4, 2) = 1e30F;
    image.at(3, 1) = 0.25F;
    std::vector<Nox64f> list(4, 0.0);
    owncvFillNoZero_32f(image.data(), image.step(), 5, 3, list.data(), 4);
    const auto record = [](float value, unsigned index) {
        return std::bit_cast<double>(std::bit_cast<std::uint64_t>(double(value)) | index);
    };
    EXPECT_EQ(list, (std::vector<Nox64f>{record(0.5F, 2), record(0.25F, 8), record(1e30F, 14), 0.0}));
    std::vector<Nox64f> two(2, 0.0);
    owncvFillNoZero_32f(image.data(), image.step(), 5, 3, two.data(), 1);
    EXPECT_EQ(two, (std::vector<Nox64f>{record(0.5F, 2), 0.0}));
}

} // namespace
