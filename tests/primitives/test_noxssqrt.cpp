#include <algorithm>
#include <cmath>
#include <cstdint>

#include <immintrin.h>

#include "noxcv.h"
#include "reference/elementwise.h"
#include "support/vector.h"

using test::Vector;

namespace {

constexpr Nox32f infinity = std::numeric_limits<Nox32f>::infinity(), nan = std::numeric_limits<Nox32f>::quiet_NaN(),
                 smallest = std::numeric_limits<Nox32f>::min();

bool isSpecial(Nox32f x) { return !(x >= smallest) || x == infinity; }

/// One Newton step from the processor's estimate, each operation rounded to single precision.
Nox32f estimatedRoot(Nox32f x) {
    const Nox32f r = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
    volatile Nox32f head = 0.5F * x, xr = x * r;
    head = head * r;
    xr = xr * r;
    volatile Nox32f tail = 3.0F - xr;
    return head * tail;
}

/// Groups of eight from the first 16-byte boundary on; `address` decides where that is.
void rootsOf(const Vector<Nox32f> &x, std::uintptr_t address, const Vector<Nox32f> &expected) {
    const int length = x.length();
    const int lead = address % 4 == 0 ? std::min(length, int((16 - address % 16) % 16 / 4)) : 0;
    const int groups = (length - lead) / 8;
    for (int i = 0; i < length; ++i) {
        bool exact = i < lead || i >= lead + 8 * groups;
        const int group = lead + (i - lead) / 8 * 8;
        for (int k = group; !exact && k < group + 8; ++k)
            exact = isSpecial(x[k]);
        expected[i] = exact ? std::sqrt(x[i]) : estimatedRoot(x[i]);
    }
}

void expectRoots(const Vector<Nox32f> &vector) {
    const Vector<Nox32f> expected(vector);
    bool negative = false;
    for (int i = 0; i < vector.length(); ++i)
        negative = negative || vector[i] < 0;
    rootsOf(vector, reinterpret_cast<std::uintptr_t>(vector.data()), expected);
    ASSERT_EQ(noxsSqrt_32f_I(vector.data(), vector.length()), negative ? noxStsSqrtOfNegative : noxStsNoError);
    ASSERT_TRUE(test::sameVector(vector, expected));
}

TEST(Sqrt32f, EqualsReferenceAtEveryLengthAndAddress) {
    test::Random random(1);
    for (const int length : test::testLengths())
        for (int shift = 0; shift < 20; ++shift) {
            Vector<Nox32f> vector(length, shift);
            vector.generate(
                [&](int) { return std::bit_cast<Nox32f>(static_cast<Nox32u>(0x00800000U + random() % 0x7f000000U)); });
            expectRoots(vector);
        }
}

TEST(Sqrt32f, OneSpecialElementMakesItsGroupExact) {
    test::Random random(2);
    const Nox32f specials[] = {0.0F,
                               -0.0F,
                               -1.0F,
                               -infinity,
                               infinity,
                               nan,
                               -nan,
                               smallest,
                               std::bit_cast<Nox32f>(0x007fffffU),
                               std::numeric_limits<Nox32f>::denorm_min(),
                               -smallest,
                               std::numeric_limits<Nox32f>::max(),
                               std::bit_cast<Nox32f>(0x7f800001U)};
    for (const Nox32f special : specials)
        for (int place = 0; place < 43; ++place) {
            Vector<Nox32f> vector(43, 4);
            vector.generate([&](int i) { return i == place ? special : Nox32f(random() % 10000 + 1) / 7; });
            expectRoots(vector);
        }
}

/// Special elements here and there: the routine goes over from one way of making roots to the other and back.
TEST(Sqrt32f, SpecialElementsNowAndThen) {
    test::Random random(3);
    const Nox32f specials[] = {0.0F, nan, infinity, -1.0F};
    for (const int every : {30, 300, 3000})
        for (const Nox32f special : specials)
            for (int turn = 0; turn < 4; ++turn) {
                Vector<Nox32f> vector(5003, 4 * turn);
                vector.generate(
                    [&](int) { return random() % every == 0 ? special : Nox32f(random() % 1000000 + 1) / 7; });
                expectRoots(vector);
            }
}

TEST(Sqrt32f, WarnsOfElementsBelowZeroOnly) {
    for (const int place : {0, 5, 20, 40}) {
        Vector<Nox32f> vector(41);
        vector.generate([](int) { return 2.0F; });
        for (const Nox32f harmless : {-0.0F, nan, -nan, infinity}) {
            vector[place] = harmless;
            EXPECT_EQ(noxsSqrt_32f_I(vector.data(), 41), noxStsNoError) << harmless;
        }
        for (const Nox32f negative : {-1.0F, -infinity, -std::numeric_limits<Nox32f>::denorm_min()}) {
            vector[place] = negative;
            EXPECT_EQ(noxsSqrt_32f_I(vector.data(), 41), noxStsSqrtOfNegative);
            EXPECT_TRUE(std::isnan(vector[place]));
        }
    }
}

TEST(Sqrt32f, LeavesTheControlStateAsItWas) {
    const unsigned before = _mm_getcsr();
    for (const bool unmasked : {false, true})
        for (const unsigned flags : {0U, unsigned(_MM_EXCEPT_INEXACT)}) {
            Vector<Nox32f> vector(30);
            vector.generate([](int i) { return i % 4 == 0 ? -3.0F : Nox32f(i); });
            const unsigned invalidMask = unmasked ? 0U : unsigned(_MM_MASK_INVALID);
            const unsigned state = (before & ~unsigned(_MM_MASK_INVALID | _MM_EXCEPT_MASK)) | invalidMask | flags;
            _mm_setcsr(state);
            const NoxStatus status = noxsSqrt_32f_I(vector.data(), 30);
            const unsigned after = _mm_getcsr();
            _mm_setcsr(before);
            EXPECT_EQ(status, noxStsSqrtOfNegative);
            EXPECT_EQ(after, state);
        }
}

TEST(Sqrt32f, StatusesInOrder) {
    Nox32f element = 4;
    EXPECT_EQ(noxsSqrt_32f_I(nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxsSqrt_32f_I(&element, 0), noxStsBadSize);
    EXPECT_EQ(noxsSqrt_32f_I(&element, -1), noxStsBadSize);
    EXPECT_EQ(element, 4.0F);
}

/// Integers about every place where a result, or the kernel's truncated root, changes.
std::vector<Nox32s> boundaries(int scaleFactor, int stride) {
    std::vector<Nox32s> values;
    const auto around = [&](double place) {
        for (int offset = -2; offset <= 2; ++offset) {
            const double value = std::floor(place) + offset;
            if (value >= 0 && value <= 2147483647.0)
                values.push_back(static_cast<Nox32s>(value));
        }
    };
    // Roots at whole and half units of the result, and at the squares themselves.
    const double unit = std::ldexp(1.0, 2 * scaleFactor);
    const double last = std::min(46342.0, std::sqrt(2147483648.0 / unit) + 2);
    for (double t = 0; t <= last; t += stride) {
        around(t * t * unit);
        around((t + 0.5) * (t + 0.5) * unit);
    }
    for (double t = 0; t <= 46341; t += stride)
        around(t * t);
    for (int bit = 0; bit < 31; ++bit)
        around(std::ldexp(1.0, bit));
    around(2147483647.0);
    around(1073676288.0);
    return values;
}

void expectIntegerRoots(const std::vector<Nox32s> &values, int scaleFactor) {
    std::vector<Nox16s> results(values.size());
    ASSERT_EQ(noxsSqrt_32s16s_Sfs(values.data(), results.data(), int(values.size()), scaleFactor), noxStsNoError);
    for (std::size_t i = 0; i < values.size(); ++i)
        ASSERT_EQ(results[i], reference::elementwise::root(values[i], scaleFactor))
            << values[i] << " scale " << scaleFactor;
}

TEST(Sqrt32s16s, NearestAboutSomeBoundaries) {
    for (int scale = -20; scale <= 20; ++scale)
        expectIntegerRoots(boundaries(scale, 37), scale);
}

TEST(Sqrt32s16sFull, NearestAboutEveryBoundary) {
    for (int scale = -16; scale <= 18; ++scale)
        expectIntegerRoots(boundaries(scale, 1), scale);
}

TEST(Sqrt32s16sFull, EverySmallElement) {
    std::vector<Nox32s> values(1 << 18);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<Nox32s>(i);
    for (int scale = -16; scale <= 18; ++scale)
        expectIntegerRoots(values, scale);
}

TEST(Sqrt32s16s, EqualsReferenceAtEveryLengthAndAddress) {
    test::Random random(3);
    for (const int scale : {-16, -15, -14, -3, 0, 1, 5, 16, 17})
        for (const int length : test::testLengths())
            for (const int shift : {0, 1, 2, 6}) {
                Vector<Nox32s> src(length, shift);
                Vector<Nox16s> actual(length, 7 - shift), expected(length);
                bool negative = false;
                src.generate([&](int) {
                    const auto value = static_cast<Nox32s>(random()) >> random() % 31;
                    return random() % 64 == 0 ? value : value & 0x7fffffff;
                });
                for (int i = 0; i < length; ++i)
                    negative = negative || src[i] < 0;
                expected.generate([&](int i) { return reference::elementwise::root(src[i], scale); });
                ASSERT_EQ(noxsSqrt_32s16s_Sfs(src.data(), actual.data(), length, scale),
                          negative ? noxStsSqrtOfNegative : noxStsNoError);
                ASSERT_TRUE(test::sameVector(actual, expected)) << scale;
            }
}

Nox16s rootOf(Nox32s x, int scaleFactor) {
    Nox16s result = -7;
    noxsSqrt_32s16s_Sfs(&x, &result, 1, scaleFactor);
    return result;
}

TEST(Sqrt32s16s, EdgeCases) {
    EXPECT_EQ(rootOf(2, 0), 1);
    EXPECT_EQ(rootOf(3, 0), 2);
    EXPECT_EQ(rootOf(2147483647, 0), 32767);
    EXPECT_EQ(rootOf(0, 0), 0);
    EXPECT_EQ(rootOf(1 << 30, 16), 0); // half, to even
    EXPECT_EQ(rootOf((1 << 30) + 1, 16), 1);
    EXPECT_EQ(rootOf(9, 1), 2); // one and a half, to even
    EXPECT_EQ(rootOf(25, 1), 2);
    EXPECT_EQ(rootOf(1, -14), 16384);
    EXPECT_EQ(rootOf(4, -14), 32767);
    for (const int scale : {-15, -1000, -2147483647 - 1}) {
        EXPECT_EQ(rootOf(1, scale), 32767);
        EXPECT_EQ(rootOf(0, scale), 0);
    }
    for (const int scale : {17, 1000, 2147483647})
        EXPECT_EQ(rootOf(2147483647, scale), 0);
    for (const int scale : {-100, -14, -1, 0, 1, 16, 17, 100})
        for (const Nox32s negative : {-1, -2147483647 - 1}) {
            Nox16s result = -7;
            EXPECT_EQ(noxsSqrt_32s16s_Sfs(&negative, &result, 1, scale), noxStsSqrtOfNegative);
            EXPECT_EQ(result, 0);
        }
}

TEST(Sqrt32s16s, StatusesInOrder) {
    Nox32s src = -4;
    Nox16s dst = 7;
    EXPECT_EQ(noxsSqrt_32s16s_Sfs(nullptr, &dst, 0, 0), noxStsNullPointer);
    EXPECT_EQ(noxsSqrt_32s16s_Sfs(&src, nullptr, 0, 0), noxStsNullPointer);
    EXPECT_EQ(noxsSqrt_32s16s_Sfs(&src, &dst, 0, 0), noxStsBadSize);
    EXPECT_EQ(noxsSqrt_32s16s_Sfs(&src, &dst, -1, 17), noxStsBadSize);
    EXPECT_EQ(dst, 7);
}

} // namespace
