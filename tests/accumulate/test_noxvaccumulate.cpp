#include <cmath>
#include <limits>
#include <string>

#include "noxcv.h"
#include "reference/accumulate.h"
#include "support/image.h"
#include "support/masks.h"

using reference::accumulate::Term;
using test::Image;

namespace {

/// A member with all arguments that any of them takes.
template <class T>
struct Member {
    std::string name;
    Term term;
    bool masked;
    NoxStatus (*call)(const T *, int, const T *, int, const Nox8u *, int, Nox32f *, int, NoxiSize, Nox32f);
};

#define CALL(TAG, ...)                                                                                                 \
    [](const Nox##TAG *a, int aStep, [[maybe_unused]] const Nox##TAG *b, [[maybe_unused]] int bStep,                   \
       [[maybe_unused]] const Nox8u *mask, [[maybe_unused]] int maskStep, Nox32f *d, int dStep, NoxiSize roi,          \
       [[maybe_unused]] Nox32f alpha) { return __VA_ARGS__; }
#define ADD_PLAIN(TAGS, TAG)                                                                                           \
    {"noxiAdd_" #TAGS "_C1IR", Term::Source, false, CALL(TAG, noxiAdd_##TAGS##_C1IR(a, aStep, d, dStep, roi))},
#define REST(TAGS, TAG)                                                                                                \
    {"noxiAdd_" #TAGS "_C1IMR", Term::Source, true,                                                                    \
     CALL(TAG, noxiAdd_##TAGS##_C1IMR(a, aStep, mask, maskStep, d, dStep, roi))},                                      \
        {"noxiAddSquare_" #TAGS "_C1IR", Term::Square, false,                                                          \
         CALL(TAG, noxiAddSquare_##TAGS##_C1IR(a, aStep, d, dStep, roi))},                                             \
        {"noxiAddSquare_" #TAGS "_C1IMR", Term::Square, true,                                                          \
         CALL(TAG, noxiAddSquare_##TAGS##_C1IMR(a, aStep, mask, maskStep, d, dStep, roi))},                            \
        {"noxiAddProduct_" #TAGS "_C1IR", Term::Product, false,                                                        \
         CALL(TAG, noxiAddProduct_##TAGS##_C1IR(a, aStep, b, bStep, d, dStep, roi))},                                  \
        {"noxiAddProduct_" #TAGS "_C1IMR", Term::Product, true,                                                        \
         CALL(TAG, noxiAddProduct_##TAGS##_C1IMR(a, aStep, b, bStep, mask, maskStep, d, dStep, roi))},                 \
        {"noxiAddWeighted_" #TAGS "_C1IR", Term::Weighted, false,                                                      \
         CALL(TAG, noxiAddWeighted_##TAGS##_C1IR(a, aStep, d, dStep, roi, alpha))},                                    \
    {                                                                                                                  \
        "noxiAddWeighted_" #TAGS "_C1IMR", Term::Weighted, true,                                                       \
            CALL(TAG, noxiAddWeighted_##TAGS##_C1IMR(a, aStep, mask, maskStep, d, dStep, roi, alpha))                  \
    }
template <class T>
std::vector<Member<T>> members();
template <>
std::vector<Member<Nox8u>> members() {
    return {ADD_PLAIN(8u32f, 8u) REST(8u32f, 8u)};
}
template <>
std::vector<Member<Nox8s>> members() {
    return {ADD_PLAIN(8s32f, 8s) REST(8s32f, 8s)};
}
template <>
std::vector<Member<Nox16u>> members() {
    return {ADD_PLAIN(16u32f, 16u) REST(16u32f, 16u)};
}
template <>
std::vector<Member<Nox32f>> members() {
    return {REST(32f, 32f)};
}

/// Calls a member on a copy of d and compares it with the reference on another copy.
template <class T>
::testing::AssertionResult equalsReference(const Member<T> &member, const Image<T> &a, const Image<T> &b,
                                           const Image<Nox8u> &mask, const Image<Nox32f> &d, Nox32f alpha) {
    Image<Nox32f> actual(d), expected(d);
    reference::accumulate::accumulate(member.term, a.data(), a.step(), b.data(), b.step(),
                                      member.masked ? mask.data() : nullptr, mask.step(), expected.data(),
                                      expected.step(), d.roi(), alpha);
    const NoxStatus status = member.call(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(),
                                         actual.data(), actual.step(), d.roi(), alpha);
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << member.name << " returns " << status;
    return test::sameImage(actual, expected) << " " << member.name;
}

template <class T>
void compare(NoxiSize size, int padding, test::Random &random) {
    for (const Member<T> &member : members<T>()) {
        Image<T> a(size.width, size.height, 1, padding * int(sizeof(T))), b(size.width, size.height);
        Image<Nox32f> d(size.width, size.height, 1, padding * int(sizeof(Nox32f)));
        test::randomize(a, random);
        test::randomize(b, random);
        test::randomize(d, random);
        const Image<Nox8u> mask(test::randomMask(size, random, padding));
        for (const float alpha : {0.0625F, 0.3F, 1.0F})
            ASSERT_TRUE(equalsReference(member, a, b, mask, d, alpha));
    }
}

template <class T>
class Accumulate : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox8s, Nox16u, Nox32f>;
TYPED_TEST_SUITE(Accumulate, Elements);

TYPED_TEST(Accumulate, EqualsReferenceOnAllSizes) {
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int padding : {0, 1, 13})
            compare<TypeParam>(size, padding, random);
}

TYPED_TEST(Accumulate, TakesAnyAddress) {
    using T = TypeParam;
    test::Random random(2);
    const NoxiSize size = {61, 3};
    for (const Member<T> &member : members<T>())
        for (int offset = 0; offset < 4; ++offset) {
            const int step = 64 * int(sizeof(T));
            const test::Buffer source(std::size_t(step) * 3 + 4), d(256 * 3 + 4), expected(256 * 3 + 4),
                mask(64 * 3 + 4);
            for (std::size_t i = 0; i < source.size(); ++i)
                source.data()[i] = static_cast<unsigned char>(random() % 64);
            for (std::size_t i = 0; i < d.size(); ++i)
                d.data()[i] = expected.data()[i] = static_cast<unsigned char>(random() % 64);
            for (std::size_t i = 0; i < mask.size(); ++i)
                mask.data()[i] = random() % 2 == 0 ? 0 : 9;
            const auto *a = reinterpret_cast<const T *>(source.data() + offset);
            const Nox8u *on = mask.data() + offset;
            reference::accumulate::accumulate(member.term, a, step, a, step, member.masked ? on : nullptr, 64,
                                              reinterpret_cast<Nox32f *>(expected.data() + offset), 256, size, 0.5F);
            member.call(a, step, a, step, on, 64, reinterpret_cast<Nox32f *>(d.data() + offset), 256, size, 0.5F);
            ASSERT_EQ(std::memcmp(d.data(), expected.data(), d.size()), 0) << member.name << " at offset " << offset;
        }
}

TYPED_TEST(Accumulate, ExtremePixels) {
    using T = TypeParam;
    constexpr bool isFloat = std::is_floating_point_v<T>;
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN();
    const T values[] = {isFloat ? T(infinity) : std::numeric_limits<T>::max(),
                        isFloat ? T(1e30F) : std::numeric_limits<T>::lowest(), isFloat ? T(nan) : T(1), T(0)};
    Image<Nox8u> mask(67, 1);
    mask.generate([](int x, int, int) { return x % 2; });
    for (const Member<T> &member : members<T>())
        for (const T first : values)
            for (const T second : values)
                for (const Nox32f sum : {0.5F, 1e7F, infinity, nan}) {
                    Image<T> a(67, 1), b(67, 1);
                    Image<Nox32f> d(67, 1);
                    a.fill(first);
                    b.fill(second);
                    d.fill(sum);
                    ASSERT_TRUE(equalsReference(member, a, b, mask, d, 0.25F));
                }
}

TYPED_TEST(Accumulate, StatusesInOrder) {
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        SCOPED_TRACE(member.name);
        Image<T> a(8, 2), b(8, 2);
        Image<Nox32f> d(8, 2);
        d.fill(5.0F);
        const Image<Nox32f> before(d);
        const Image<Nox8u> mask(test::flatMask({8, 2}, 1));
        const NoxiSize roi = {4, 2}, flat = {4, 0}, empty = {0, 2};
        const int row = 4 * int(sizeof(T)), small = row - 1, odd = row + 1, mStep = 4, dRow = 16;
        const auto call = [&](int aStep, int bStep, int maskStep, int dStep, NoxiSize size) {
            return member.call(a.data(), aStep, b.data(), bStep, mask.data(), maskStep, d.data(), dStep, size, 1.0F);
        };
        EXPECT_EQ(member.call(nullptr, small, b.data(), small, mask.data(), 3, d.data(), 15, empty, 1.0F),
                  noxStsNullPointer);
        EXPECT_EQ(member.call(a.data(), small, b.data(), small, mask.data(), 3, nullptr, 15, empty, 1.0F),
                  noxStsNullPointer);
        EXPECT_EQ(call(small, small, 3, 15, empty), noxStsBadSize);
        EXPECT_EQ(call(row, row, mStep, dRow, flat), noxStsBadSize);
        EXPECT_EQ(call(small, small, 3, 15, roi), noxStsBadStep);
        EXPECT_EQ(call(-row, row, mStep, dRow, roi), noxStsBadStep);
        EXPECT_EQ(call(row, row, mStep, 15, roi), noxStsBadStep);
        EXPECT_EQ(call(row, row, mStep, 17, roi), noxStsOddStep);
        // A 16u source is tested for both rules before the next image; a float one for the second rule last.
        const NoxStatus early = sizeof(T) == 2 ? noxStsOddStep : noxStsBadStep;
        EXPECT_EQ(call(odd, row, mStep, 15, roi), early);
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(odd, row, mStep, dRow, roi), noxStsOddStep);
        }
        if (member.term == Term::Product) {
            EXPECT_EQ(member.call(a.data(), row, nullptr, row, mask.data(), 4, d.data(), dRow, roi, 1.0F),
                      noxStsNullPointer);
            EXPECT_EQ(call(row, small, mStep, 17, roi), noxStsBadStep);
            EXPECT_EQ(call(odd, small, mStep, dRow, roi), early);
            EXPECT_EQ(call(row, odd, mStep, 15, roi), early);
        }
        if (member.masked) {
            EXPECT_EQ(member.call(a.data(), row, b.data(), row, nullptr, 4, d.data(), dRow, roi, 1.0F),
                      noxStsNullPointer);
            EXPECT_EQ(call(row, row, 3, 17, roi), noxStsBadStep);
            EXPECT_EQ(call(odd, row, 3, dRow, roi), early);
        }
        EXPECT_TRUE(test::sameImage(d, before));
        EXPECT_EQ(call(row, row, mStep, dRow, roi), noxStsNoError);
    }
}

TEST(Accumulate32f, SourceMayBeTheAccumulator) {
    test::Random random(3);
    const Image<Nox8u> mask(test::randomMask({67, 3}, random));
    for (const Member<Nox32f> &member : members<Nox32f>()) {
        Image<Nox32f> d(67, 3);
        test::randomize(d, random);
        Image<Nox32f> source(d), expected(d);
        reference::accumulate::accumulate(member.term, source.data(), source.step(), source.data(), source.step(),
                                          member.masked ? mask.data() : nullptr, mask.step(), expected.data(),
                                          expected.step(), d.roi(), 0.5F);
        member.call(d.data(), d.step(), d.data(), d.step(), mask.data(), mask.step(), d.data(), d.step(), d.roi(),
                    0.5F);
        EXPECT_TRUE(test::sameImage(d, expected)) << member.name;
    }
}

TEST(AccumulateEdge, StatedValues) {
    const Nox32f infinity = std::numeric_limits<Nox32f>::infinity();
    const NoxiSize one = {1, 1};
    const Nox8u off = 0;
    Nox32f d = 0;
    const Nox16u most = 65535;
    noxiAddProduct_16u32f_C1IR(&most, 2, &most, 2, &d, 4, one);
    EXPECT_EQ(d, 4294836225.0F);
    d = 0;
    const Nox8s least = -128;
    noxiAddSquare_8s32f_C1IR(&least, 1, &d, 4, one);
    EXPECT_EQ(d, 16384.0F);
    d = 3;
    noxiAdd_32f_C1IMR(&infinity, 4, &off, 1, &d, 4, one);
    EXPECT_TRUE(std::isnan(d));
    d = 3;
    const Nox32f large = 1e30F;
    noxiAddSquare_32f_C1IMR(&large, 4, &off, 1, &d, 4, one);
    EXPECT_TRUE(std::isnan(d));
    d = 3.25F;
    const Nox8u pixel = 200;
    noxiAddWeighted_8u32f_C1IR(&pixel, 1, &d, 4, one, 0.0F);
    EXPECT_EQ(d, 3.25F);
    d = infinity;
    noxiAddWeighted_8u32f_C1IR(&pixel, 1, &d, 4, one, 0.0F);
    EXPECT_TRUE(std::isnan(d));
}

template <class T>
void everyWidthUpToSomeVectors() {
    test::Random random(4);
    for (int width = 1; width < 200; ++width)
        compare<T>({width, 1 + width % 7}, width % 3, random);
}

TEST(AccumulateFull, EveryWidthUpToSomeVectors) {
    everyWidthUpToSomeVectors<Nox8u>();
    everyWidthUpToSomeVectors<Nox8s>();
    everyWidthUpToSomeVectors<Nox16u>();
    everyWidthUpToSomeVectors<Nox32f>();
}

/// Every product of two 16-bit pixels, in steps that visit all high and low bits.
TEST(Accumulate16uFull, ProductsRoundOnce) {
    const int width = 65536;
    Image<Nox16u> a(width, 1), b(width, 1);
    Image<Nox32f> d(width, 1);
    const Image<Nox8u> mask(test::flatMask({width, 1}, 1));
    a.generate([](int x, int, int) { return x; });
    for (int value = 1; value < 65536; value += 97) {
        b.fill(Nox16u(value));
        for (const bool masked : {false, true}) {
            d.fill(0.0F);
            if (masked)
                noxiAddProduct_16u32f_C1IMR(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), d.data(),
                                            d.step(), d.roi());
            else
                noxiAddProduct_16u32f_C1IR(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), d.roi());
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(d.at(x, 0), static_cast<Nox32f>(Nox32u(x) * Nox32u(value)));
        }
    }
}

} // namespace
