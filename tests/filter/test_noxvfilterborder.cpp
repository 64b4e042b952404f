#include "filter/noxvfilterborder.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "noxcv.h"
#include "reference/filterborder.h"
#include "support/image.h"
#include "support/rowset.h"
#include "support/threads.h"

using reference::filterborder::Filter;
using test::Buffer;
using test::Image;

namespace {

/// One exported filter: its calls in one form, and what the sizes count.
template <class T, class Out>
struct Form {
    const char *name;
    Filter filter;
    NoxStatus (*call)(const T *, int, Out *, int, NoxiSize, int mask, int borderType, T value, int divisor, Nox8u *);
    NoxStatus (*size)(NoxiSize, int mask, int *);
    bool hasMask = true, divides = false;
};

#define FORM(NAME, FILTER, T, OUT, TAG)                                                                                                                     \
    Form<T, OUT> {                                                                                                                                          \
#NAME #TAG, Filter::FILTER,                                                                                                                         \
            [](const T *s, int ss, OUT *d, int ds, NoxiSize roi, int mask, int border, T value, int,                                                        \
               Nox8u *                                                                                                                                      \
                   b) { return noxiFilter##NAME##Border_##TAG##_C1R(s, ss, d, ds, roi, mask, border, value, b); },                                          \
                                                                                                                noxiFilter##NAME##GetBufferSize_##TAG##_C1R \
    }
#define FORM_8S(NAME, FILTER)                                                                                          \
    Form<Nox8u, Nox8s> {                                                                                               \
#NAME "8u8s", Filter::FILTER, noxiFilter##NAME##Border_8u8s_C1R, noxiFilter##NAME##GetBufferSize_8u8s_C1R,     \
            true, true                                                                                                 \
    }
#define FORM_3(NAME, FILTER, T, OUT, TAG)                                                                              \
    Form<T, OUT> {                                                                                                     \
#NAME #TAG, Filter::FILTER,                                                                                    \
            [](const T *s, int ss, OUT *d, int ds, NoxiSize roi, int, int border, T value, int, Nox8u *b) {            \
                return noxiFilter##NAME##Border_##TAG##_C1R(s, ss, d, ds, roi, border, value, b);                      \
            },                                                                                                         \
            [](NoxiSize roi, int, int *size) { return noxiFilter##NAME##GetBufferSize_##TAG##_C1R(roi, size); },       \
            false       \
    }
#define FORM_3_8S(NAME, FILTER)                                                                                        \
    Form<Nox8u, Nox8s> {                                                                                               \
#NAME "8u8s", Filter::FILTER,                                                                                  \
            [](const Nox8u *s, int ss, Nox8s *d, int ds, NoxiSize roi, int, int border, Nox8u value, int divisor,      \
               Nox8u *b) {                                                                                             \
                return noxiFilter##NAME##Border_8u8s_C1R(s, ss, d, ds, roi, border, value, divisor, b);                \
            },                                                                                                         \
            [](NoxiSize roi, int, int *size) { return noxiFilter##NAME##GetBufferSize_8u8s_C1R(roi, size); }, false,   \
            true       \
    }

const Form<Nox8u, Nox16s> forms8u16s[] = {FORM(SobelHoriz, sobelHoriz, Nox8u, Nox16s, 8u16s),
                                          FORM(SobelVert, sobelVert, Nox8u, Nox16s, 8u16s),
                                          FORM(SobelNegVert, sobelNegVert, Nox8u, Nox16s, 8u16s),
                                          FORM(SobelHorizSecond, sobelHorizSecond, Nox8u, Nox16s, 8u16s),
                                          FORM(SobelVertSecond, sobelVertSecond, Nox8u, Nox16s, 8u16s),
                                          FORM(SobelCross, sobelCross, Nox8u, Nox16s, 8u16s),
                                          FORM(Laplacian, laplacian, Nox8u, Nox16s, 8u16s),
                                          FORM_3(ScharrHoriz, scharrHoriz, Nox8u, Nox16s, 8u16s),
                                          FORM_3(ScharrVert, scharrVert, Nox8u, Nox16s, 8u16s)};
const Form<Nox8u, Nox8s> forms8u8s[] = {FORM_8S(SobelHoriz, sobelHoriz),
                                        FORM_8S(SobelVert, sobelVert),
                                        FORM_8S(SobelNegVert, sobelNegVert),
                                        FORM_8S(SobelHorizSecond, sobelHorizSecond),
                                        FORM_8S(SobelVertSecond, sobelVertSecond),
                                        FORM_8S(SobelCross, sobelCross),
                                        FORM_8S(Laplacian, laplacian),
                                        FORM_3_8S(ScharrHoriz, scharrHoriz),
                                        FORM_3_8S(ScharrVert, scharrVert)};
const Form<Nox8u, Nox8u> forms8u[] = {FORM(Lowpass, lowpass, Nox8u, Nox8u, 8u)};
const Form<Nox32f, Nox32f> forms32f[] = {FORM(SobelHoriz, sobelHoriz, Nox32f, Nox32f, 32f),
                                         FORM(SobelVert, sobelVert, Nox32f, Nox32f, 32f),
                                         FORM(SobelNegVert, sobelNegVert, Nox32f, Nox32f, 32f),
                                         FORM(SobelHorizSecond, sobelHorizSecond, Nox32f, Nox32f, 32f),
                                         FORM(SobelVertSecond, sobelVertSecond, Nox32f, Nox32f, 32f),
                                         FORM(SobelCross, sobelCross, Nox32f, Nox32f, 32f),
                                         FORM(Laplacian, laplacian, Nox32f, Nox32f, 32f),
                                         FORM(Lowpass, lowpass, Nox32f, Nox32f, 32f),
                                         FORM_3(ScharrHoriz, scharrHoriz, Nox32f, Nox32f, 32f),
                                         FORM_3(ScharrVert, scharrVert, Nox32f, Nox32f, 32f)};

template <class Body>
void forAllForms(const Body &body) {
    for (const auto &form : forms8u16s)
        ASSERT_NO_FATAL_FAILURE(body(form)) << form.name;
    for (const auto &form : forms8u8s)
        ASSERT_NO_FATAL_FAILURE(body(form)) << form.name;
    for (const auto &form : forms8u)
        ASSERT_NO_FATAL_FAILURE(body(form)) << form.name;
    for (const auto &form : forms32f)
        ASSERT_NO_FATAL_FAILURE(body(form)) << form.name;
}

template <class T, class Out>
int bufferSize(const Form<T, Out> &form, NoxiSize roi, int size) {
    int bytes = 0;
    EXPECT_EQ(form.size(roi, size == 3 ? 33 : 55, &bytes), noxStsNoError);
    return bytes;
}

template <class T, class Out>
void runReference(const Form<T, Out> &form, int size, const Image<T> &src, const Image<Out> &dst, int border, T value,
                  int divisor) {
    const NoxiSize roi = src.roi();
    if constexpr (std::is_same_v<Out, Nox16s>)
        reference::filterborder::filter8u16s(form.filter, size, src.data(), src.step(), dst.data(), dst.step(), roi,
                                             border, value);
    else if constexpr (std::is_same_v<Out, Nox8s>)
        reference::filterborder::filter8u8s(form.filter, size, src.data(), src.step(), dst.data(), dst.step(), roi,
                                            border, value, divisor);
    else if constexpr (std::is_same_v<Out, Nox8u>)
        reference::filterborder::lowpass8u(size, src.data(), src.step(), dst.data(), dst.step(), roi, border, value);
    else
        reference::filterborder::filter32f(form.filter, size, src.data(), src.step(), dst.data(), dst.step(), roi,
                                           border, value);
}

template <class T, class Out>
testing::AssertionResult agrees(const Form<T, Out> &form, int size, const Image<T> &src, int border, T value,
                                int divisor = 1, int padding = 0) {
    Image<Out> actual(src.width(), src.height(), 1, padding), expected(actual);
    const Buffer buffer(std::size_t(bufferSize(form, src.roi(), size)));
    const NoxStatus status = form.call(src.data(), src.step(), actual.data(), actual.step(), src.roi(),
                                       size == 3 ? 33 : 55, border, value, divisor, buffer.data());
    if (status != noxStsNoError)
        return testing::AssertionFailure() << "status " << status;
    runReference(form, size, src, expected, border, value, divisor);
    return test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected))
           << " " << form.name << " size " << size << " border " << border << " divisor " << divisor;
}

template <class T, class Out>
std::vector<int> sizesOf(const Form<T, Out> &form) {
    return form.hasMask ? std::vector{3, 5} : std::vector{3};
}

void compareSizes(const std::vector<NoxiSize> &sizes, const std::vector<int> &divisors) {
    forAllForms([&]<class T, class Out>(const Form<T, Out> &form) {
        test::Random random(1);
        for (const NoxiSize roi : sizes) {
            Image<T> src(roi.width, roi.height, 1, roi.width % 3 * int(sizeof(T)));
            test::randomize(src, random);
            for (const int size : sizesOf(form))
                for (int border = 0; border <= 4; ++border)
                    ASSERT_TRUE(agrees(form, size, src, border, T(200), divisors[random() % divisors.size()],
                                       border % 2 * int(sizeof(Out))));
        }
    });
}

TEST(FilterBorder, SmallImages) {
    std::vector<NoxiSize> sizes;
    for (int width = 1; width <= 6; ++width)
        for (int height = 1; height <= 6; ++height)
            sizes.push_back({width, height});
    compareSizes(sizes, {1, -2, 9, 16, 41, 300, -1});
}

TEST(FilterBorder, StandardSizes) { compareSizes(test::testSizes(), {1, 4, 7, 8, 41, 45, -55, 100}); }

/// Images that are too large for the nearest caches: there each pass asks for what the other one needs. Floats in
/// thirds: whole numbers, 24 bits, and more bits than sums in double hold.
TEST(FilterBorder, ImagesThatLeaveTheCaches) {
    forAllForms([]<class T, class Out>(const Form<T, Out> &form) {
        test::Random random(12);
        constexpr int width = 533;
        const int height = 2 + (1 << 20) / (width * int(sizeof(T) + sizeof(Out)));
        Image<T> src(width, height, 1, sizeof(T));
        src.generate([&](int, int y, int) {
            if constexpr (std::is_same_v<T, Nox8u>)
                return Nox8u(random());
            else
                return y < height / 3       ? Nox32f(random() % 256)
                       : y < 2 * height / 3 ? test::randomElement<Nox32f>(random)
                                            : std::ldexp(test::randomElement<Nox32f>(random), -int(random() % 40));
        });
        for (const int size : sizesOf(form))
            ASSERT_TRUE(agrees(form, size, src, size == 3 ? 0 : 4, T(7), 9));
    });
}

/// Rows whose first, aligned and last vectors overlap in all ways.
TEST(FilterBorder, LongRows) {
    forAllForms([]<class T, class Out>(const Form<T, Out> &form) {
        test::Random random(9);
        for (int width = 250; width <= 330; width += 3) {
            Image<T> src(width, 5);
            test::randomize(src, random);
            for (const int size : sizesOf(form))
                ASSERT_TRUE(agrees(form, size, src, width % 5, T(7), 9)) << "width " << width;
        }
    });
}

TEST(FilterBorder8u8s, EveryDivisor) {
    test::Random random(2);
    Image<Nox8u> src(120, 3);
    for (int divisor = 1; divisor <= 1000; ++divisor) {
        test::randomize(src, random);
        const auto &form = forms8u8s[divisor % std::size(forms8u8s)];
        for (const int size : sizesOf(form)) {
            ASSERT_TRUE(agrees(form, size, src, 1, Nox8u(0), divisor));
            ASSERT_TRUE(agrees(form, size, src, 1, Nox8u(0), -divisor));
        }
    }
    for (const int divisor : {0x7fffffff, -0x7fffffff - 1, 16320, 32767, 65536})
        ASSERT_TRUE(agrees(forms8u8s[0], 5, src, 1, Nox8u(0), divisor));
}

TEST(FilterBorder8u8sFull, EveryDivisor) {
    test::Random random(2);
    Image<Nox8u> src(100, 3);
    for (int divisor = 1001; divisor <= 32767; ++divisor) {
        test::randomize(src, random);
        const auto &form = forms8u8s[divisor % std::size(forms8u8s)];
        ASSERT_TRUE(agrees(form, divisor % 2 && form.hasMask ? 5 : 3, src, 1, Nox8u(0), divisor));
    }
}

// Floats whose sums are not exact: wide ranges of magnitude, cancellation, midpoints, and values that are not finite.
Nox32f awkwardElement(test::Random &random, int kind) {
    const auto scaled = [&](int low, int range) {
        const Nox32f value = std::ldexp(Nox32f(random() % (1U << 24)), low + int(random() % range));
        return random() % 2 ? value : -value;
    };
    switch (kind) {
    case 0: // magnitudes 2^60 apart
        return scaled(-60, 60);
    case 1: // few bits, far apart: midpoints and their neighbours
        return std::ldexp(Nox32f(random() % 3) - 1, int(random() % 56));
    case 2: // the whole range, with denormals and overflow
        return scaled(-149, 253);
    case 3: { // one in eight is not finite
        const Nox32f infinity = std::numeric_limits<Nox32f>::infinity();
        return random() % 8 ? scaled(-24, 30) : random() % 2 ? infinity : random() % 2 ? -infinity : NAN;
    }
    case 4: // small integers
        return Nox32f(int(random() % 512) - 256);
    case 5: // large numbers that cancel, and zeros
        return random() % 3 ? 16777215.0F * Nox32f(int(random() % 3) - 1) : scaled(-40, 10);
    default: // denormals
        return scaled(-149, 3);
    }
}

void compareAwkward(int rounds) {
    test::Random random(3);
    for (int round = 0; round < rounds; ++round)
        for (int kind = 0; kind < 7; ++kind) {
            Image<Nox32f> src(70 + round % 30, 9);
            src.generate([&](int, int, int) { return awkwardElement(random, kind); });
            for (const auto &form : forms32f)
                for (const int size : sizesOf(form))
                    ASSERT_TRUE(agrees(form, size, src, int(random() % 5), awkwardElement(random, kind))) << kind;
        }
}

TEST(FilterBorder32f, AwkwardValues) { compareAwkward(4); }
TEST(FilterBorder32fFull, AwkwardValues) { compareAwkward(150); }

/// A single row, a single pixel or the border value alone is awkward; all else is small integers, whose sums are exact.
TEST(FilterBorder32f, OneAwkwardRow) {
    test::Random random(8);
    constexpr int height = 12;
    for (int awkward = -1; awkward < 2 * height; ++awkward)
        for (int trial = 0; trial < 2; ++trial) {
            Image<Nox32f> src(61, height);
            const int column = int(random() % 61);
            src.generate([&](int x, int y, int) {
                const bool here = y == awkward || (y == awkward - height && x == column);
                return here ? test::randomElement<Nox32f>(random) : Nox32f(int(random() % 512) - 256);
            });
            const Nox32f value = awkward < 0 ? test::randomElement<Nox32f>(random) : 9.0F;
            for (const auto &form : forms32f)
                for (const int size : sizesOf(form))
                    for (const int border : {0, 1, 3})
                        ASSERT_TRUE(agrees(form, size, src, border, value)) << "row " << awkward;
        }
}

/// Small integers, and one pixel at every place of a row that no grid holds together with them: larger than they leave
/// room for, finer, both, or not finite.
void compareOnePixel(int width) {
    test::Random random(10);
    const Nox32f awkward[] = {0x1p24F,  -0x1.000002p24F,     0x1.fffffep-1F, 0x1p-140F, 0x1.234566p40F,
                              INFINITY, -0x1.8p23F - 513.0F, 0x1.000002p7F,  NAN};
    Image<Nox32f> src(width, 7);
    for (int x = 0; x < width; ++x) {
        src.generate([&](int, int, int) { return Nox32f(int(random() % 512) - 256); });
        src.at(x, 3) = awkward[x % std::size(awkward)];
        for (const auto &form : forms32f)
            for (const int size : sizesOf(form))
                ASSERT_TRUE(agrees(form, size, src, x % 5, 3.0F)) << "column " << x;
    }
}

TEST(FilterBorder32f, OnePixelOffTheGrid) { compareOnePixel(45); }
TEST(FilterBorder32fFull, OnePixelOffTheGrid) { compareOnePixel(299); }

/// Whole rows of one kind after whole rows of another: what one row tells of the next is wrong at each change.
TEST(FilterBorder32f, KindsOfRowsInTurn) {
    test::Random random(11);
    for (const int rows : {1, 2, 5, 17}) {
        Image<Nox32f> src(70, 70);
        src.generate([&](int, int y, int) {
            switch (y / rows % 7) {
            case 0:
                return 0.0F;
            case 1:
                return Nox32f(int(random() % 256));
            case 2: // integers' grids may be that fine, but not with so many bits
                return std::ldexp(Nox32f(random() % (1U << 21)), -(y % 13));
            case 3:
                return Nox32f(random() % (1U << 24)) * 0x1p-20F;
            case 4:
                return awkwardElement(random, 0);
            case 5:
                return Nox32f(int(random() % 65536)) * 0x1p70F;
            default:
                return Nox32f(int(random() % 65536)) * 0x1p-110F;
            }
        });
        for (const auto &form : forms32f)
            for (const int size : sizesOf(form))
                for (const int border : {0, 1})
                    ASSERT_TRUE(agrees(form, size, src, border, 5.0F)) << "rows " << rows;
    }
}

/// A sum of 30 bits whose product with the mean's factor lies 2^-54 of it below a midpoint of two floats: in double it
/// becomes the midpoint.
TEST(FilterBorder32f, MeanNextToAMidpoint) {
    Image<Nox32f> src(90, 3);
    src.generate([](int x, int y, int) { return y < 2 ? 110000000.0F : x % 3 == 1 ? 11088631.0F : 0.0F; });
    for (const auto &form : forms32f)
        for (const int size : sizesOf(form))
            ASSERT_TRUE(agrees(form, size, src, 1, 0.0F));
}

TEST(FilterBorder32f, LargeRandomImages) {
    test::Random random(4);
    for (int kind = 0; kind < 3; ++kind) {
        Image<Nox32f> src(701, 40);
        src.generate([&](int, int, int) {
            const Nox32f value = test::randomElement<Nox32f>(random);
            return kind == 0 ? value : kind == 1 ? std::floor(value) : value * 1e-9F;
        });
        for (const auto &form : forms32f)
            for (const int size : sizesOf(form))
                ASSERT_TRUE(agrees(form, size, src, 1, 0.0F));
    }
}

TEST(FilterBorder, SameResultForEveryThreadCount) {
    forAllForms([]<class T, class Out>(const Form<T, Out> &form) {
        test::Random random(5);
        Image<T> src(261, 1100);
        test::randomize(src, random);
        for (const int size : sizesOf(form)) {
            Image<Out> expected(261, 1100);
            runReference(form, size, src, expected, 4, T(9), 5);
            for (const int threads : test::threadCounts()) {
                const test::ThreadCount scope(threads);
                const auto run = [&] {
                    Image<Out> actual(261, 1100);
                    const Buffer buffer(std::size_t(bufferSize(form, src.roi(), size)));
                    form.call(src.data(), src.step(), actual.data(), actual.step(), src.roi(), size == 3 ? 33 : 55, 4,
                              T(9), 5, buffer.data());
                    ASSERT_TRUE(test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected)))
                        << form.name << size << " threads " << threads;
                };
                run();
                if (threads == 3)
                    test::insideParallelRegion(run);
            }
        }
    });
}

TEST(FilterBorder, TallImagesOnManyThreads) {
    const test::ThreadCount scope(40);
    test::Random random(6);
    Image<Nox8u> src(256, 40 * 128 + 7);
    test::randomize(src, random);
    for (const int border : {0, 2})
        for (const int size : {3, 5}) {
            ASSERT_TRUE(agrees(forms8u16s[0], size, src, border, Nox8u(3)));
            ASSERT_TRUE(agrees(forms8u16s[6], size, src, border, Nox8u(3)));
            ASSERT_TRUE(agrees(forms8u8s[6], size, src, border, Nox8u(3), 41));
        }
}

TEST(FilterBorder, StatusesInOrder) {
    forAllForms([]<class T, class Out>(const Form<T, Out> &form) {
        Image<T> src(6, 2, 1, 1);
        Image<Out> dst(6, 2, 1, 1);
        dst.fill(5);
        const Image<Out> before(dst);
        const Buffer buffer(std::size_t(bufferSize(form, {6, 2}, 5)));
        const int row = 6 * int(sizeof(T)), out = 6 * int(sizeof(Out));
        const auto call = [&](const T *s, int ss, Out *d, int ds, NoxiSize roi, int mask, int border, int divisor,
                              Nox8u *b) { return form.call(s, ss, d, ds, roi, mask, border, T(0), divisor, b); };
        EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 0}, 44, 9, 0, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 44, 9, 0, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 0}, 44, 9, 0, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 2}, 44, 9, 0, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {6, 0}, 44, 9, 0, buffer.data()), noxStsBadSize);
        EXPECT_EQ(call(src.data(), row - 1, dst.data(), out + 1, {6, 2}, 44, 9, 0, buffer.data()), noxStsBadStep);
        EXPECT_EQ(call(src.data(), row + 1, dst.data(), out - 1, {6, 2}, 44, 9, 0, buffer.data()), noxStsBadStep);
        EXPECT_EQ(call(src.data(), row + 1, dst.data(), out, {6, 2}, 44, 9, 0, buffer.data()),
                  sizeof(T) > 1 ? noxStsOddStep : noxStsBadArgument);
        EXPECT_EQ(call(src.data(), row, dst.data(), out + 1, {6, 2}, 44, 9, 0, buffer.data()),
                  sizeof(Out) > 1 ? noxStsOddStep : noxStsBadArgument);
        EXPECT_EQ(call(src.data(), row, dst.data(), out, {6, 2}, 44, 5, 1, buffer.data()), noxStsBadArgument);
        EXPECT_EQ(call(src.data(), row, dst.data(), out, {6, 2}, 44, -1, 1, buffer.data()), noxStsBadArgument);
        if (form.divides) {
            EXPECT_EQ(call(src.data(), row, dst.data(), out, {6, 2}, 44, 1, 0, buffer.data()), noxStsBadArgument);
        }
        if (form.hasMask) {
            EXPECT_EQ(call(src.data(), row, dst.data(), out, {6, 2}, 44, 1, 1, buffer.data()), noxStsBadMaskSize);
        }
        EXPECT_TRUE(test::sameImage(dst, before)) << form.name;

        int size = 77;
        EXPECT_EQ(form.size({0, 1}, 44, nullptr), noxStsNullPointer);
        EXPECT_EQ(form.size({0, 1}, 44, &size), noxStsBadSize);
        EXPECT_EQ(form.size({1, 0}, 44, &size), noxStsBadSize);
        EXPECT_EQ(form.size({1, 1}, 44, &size), form.hasMask ? noxStsBadMaskSize : noxStsNoError);
        EXPECT_TRUE(!form.hasMask || size == 77);
    });
}

TEST(FilterBorder, BufferSizes) {
    for (const int threads : {1, 3}) {
        const test::ThreadCount scope(threads);
        forAllForms([threads]<class T, class Out>(const Form<T, Out> &form) {
            for (const int K : sizesOf(form))
                for (const NoxiSize roi : {NoxiSize{1, 1}, NoxiSize{17, 9}, NoxiSize{640, 480}}) {
                    const bool bytes = sizeof(T) == 1, laplacian = form.filter == Filter::laplacian;
                    const int A = K == 3 ? 21 : 25, B = (3 * K + 30) * int(sizeof(void *)), W = roi.width,
                              H = roi.height;
                    const int P = laplacian ? (W + 15) / 16 * (bytes ? 64 : 128) * A + 2 * B + 96
                                  : bytes   ? (W + 15) / 16 * 32 * A + B + 64
                                            : (W + 3) / 4 * 16 * A + B + 64;
                    const int pointers = threads * 32 + threads * (H + K) * int(sizeof(void *));
                    const int rows = pointers + threads * ((bytes ? 4 : 16) * K + 32);
                    const int columns = pointers + (bytes ? threads * (4 * K + 32) : 0);
                    const bool middle = laplacian && sizeof(Out) == 1 && K == 5;
                    const int image = middle ? (W + 15) / 16 * 16 * H * 2 + 32 : 0;
                    EXPECT_EQ(bufferSize(form, roi, K), threads * (P + rows + columns + image + 32)) << form.name;
                }
        });
    }
}

TEST(FilterBorder, ConstantRowsAreWeighted) {
    const Nox8u pixels[3] = {0, 0, 0};
    Nox8u result[3];
    const Buffer buffer(std::size_t(bufferSize(forms8u[0], {3, 1}, 3)));
    noxiFilterLowpassBorder_8u_C1R(pixels, 3, result, 3, {3, 1}, 33, noxBorderConstant, 200, buffer.data());
    EXPECT_EQ(result[1], (1200 * 7280 + 36400) >> 16);
}

TEST(FilterBorder, FlatImageOf255Gives254At5x5) {
    Image<Nox8u> src(20, 20), dst(20, 20);
    src.fill(255);
    const Buffer buffer(std::size_t(bufferSize(forms8u[0], {20, 20}, 5)));
    noxiFilterLowpassBorder_8u_C1R(src.data(), 20, dst.data(), 20, {20, 20}, 55, 1, 0, buffer.data());
    EXPECT_EQ(dst.at(10, 10), 254);
    noxiFilterLowpassBorder_8u_C1R(src.data(), 20, dst.data(), 20, {20, 20}, 33, 1, 0, buffer.data());
    EXPECT_EQ(dst.at(10, 10), 255);
}

TEST(FilterConvolution, RunsAnyPairOfKernels) {
    test::Random random(7);
    Image<Nox8u> src(45, 12);
    test::randomize(src, random);
    Image<Nox16s> actual(45, 12), expected(45, 12);
    const Buffer buffer(std::size_t(bufferSize(forms8u16s[0], {45, 12}, 3)));
    const Nox16s dx[] = {-1, 0, 1}, sobel[] = {1, 2, 1};
    // Rows Dx, columns Sobel: minus the vertical Sobel filter.
    ownFilterConvolution_8u16s_C1R(src.data(), src.step(), actual.data(), actual.step(), 45, 12, dx, 3, sobel, 3, 4, 0,
                                   buffer.data(), 0, 2);
    reference::filterborder::filter8u16s(Filter::sobelNegVert, 3, src.data(), src.step(), expected.data(),
                                         expected.step(), {45, 12}, 4, 0);
    EXPECT_TRUE(test::sameImage(actual, expected));
    Image<Nox8s> narrow(45, 12), narrowExpected(45, 12);
    ownFilterConvolution_8u8s_C1R(src.data(), src.step(), narrow.data(), narrow.step(), 45, 12, dx, 3, sobel, 3, 4, 0,
                                  buffer.data(), 0, 2, 41);
    reference::filterborder::filter8u8s(Filter::sobelNegVert, 3, src.data(), src.step(), narrowExpected.data(),
                                        narrowExpected.step(), {45, 12}, 4, 0, 41);
    EXPECT_TRUE(test::sameImage(narrow, narrowExpected));
    Image<Nox8u> mean(45, 12), meanExpected(45, 12);
    const Nox16s ones[] = {1, 1, 1};
    ownFilterConvolution_8u_C1R(src.data(), src.step(), mean.data(), mean.step(), 45, 12, ones, 3, ones, 3, 0, 31,
                                buffer.data(), 8, 0, 1);
    reference::filterborder::lowpass8u(3, src.data(), src.step(), meanExpected.data(), meanExpected.step(), {45, 12}, 0,
                                       31);
    EXPECT_TRUE(test::sameImage(mean, meanExpected));
    Image<Nox32f> wide(45, 12), wideActual(45, 12), wideExpected(45, 12);
    test::randomize(wide, random);
    const Buffer wideBuffer(std::size_t(bufferSize(forms32f[0], {45, 12}, 3)));
    const Nox32f dx32f[] = {-1, 0, 1}, sobel32f[] = {1, 2, 1};
    ownFilterConvolution_32f_C1R(wide.data(), wide.step(), wideActual.data(), wideActual.step(), 45, 12, dx32f, 3,
                                 sobel32f, 3, 2, 0, wideBuffer.data(), 0, 2);
    reference::filterborder::filter32f(Filter::sobelNegVert, 3, wide.data(), wide.step(), wideExpected.data(),
                                       wideExpected.step(), {45, 12}, 2, 0);
    EXPECT_TRUE(test::sameImage(test::unsignZeros(wideActual), test::unsignZeros(wideExpected)));
}

} // namespace
