#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "noxcv.h"

namespace {

std::vector<Nox16s> kernel16s(int size, int dx, int sign) {
    std::vector<Nox16s> taps(static_cast<std::size_t>(size), 77);
    EXPECT_EQ(noxiGenSobelKernel_16s(taps.data(), size, dx, sign), noxStsNoError);
    return taps;
}
std::vector<Nox32f> kernel32f(int size, int dx, int sign) {
    std::vector<Nox32f> taps(static_cast<std::size_t>(size), 77);
    EXPECT_EQ(noxiGenSobelKernel_32f(taps.data(), size, dx, sign), noxStsNoError);
    return taps;
}

TEST(SobelKernel, KnownKernels) {
    using Taps = std::vector<Nox16s>;
    EXPECT_EQ(kernel16s(1, 0, 1), (Taps{1}));
    EXPECT_EQ(kernel16s(3, 0, 1), (Taps{1, 2, 1}));
    EXPECT_EQ(kernel16s(3, 1, 1), (Taps{-1, 0, 1}));
    EXPECT_EQ(kernel16s(3, 1, 0), (Taps{-1, 0, 1}));
    EXPECT_EQ(kernel16s(3, 1, -1), (Taps{1, 0, -1}));
    EXPECT_EQ(kernel16s(3, 2, 1), (Taps{1, -2, 1}));
    EXPECT_EQ(kernel16s(5, 0, 1), (Taps{1, 4, 6, 4, 1}));
    EXPECT_EQ(kernel16s(5, 1, 1), (Taps{-1, -2, 0, 2, 1}));
    EXPECT_EQ(kernel16s(5, 2, 1), (Taps{1, 0, -2, 0, 1}));
    EXPECT_EQ(kernel16s(7, 0, -5), (Taps{-1, -6, -15, -20, -15, -6, -1}));
}

/// Coefficients of (1 + x)^(size - 1 - dx) (x - 1)^dx, modulo 2^32.
std::vector<std::uint32_t> product(int size, int dx) {
    std::vector<std::uint32_t> taps = {1};
    for (int i = 1; i < size; ++i) {
        taps.push_back(0);
        for (std::size_t j = taps.size() - 1; j > 0; --j)
            taps[j] = i <= dx ? taps[j - 1] - taps[j] : taps[j - 1] + taps[j];
        taps[0] = i <= dx ? 0U - taps[0] : taps[0];
    }
    return taps;
}

TEST(SobelKernel, EqualsProductOfBinomials) {
    for (int size = 1; size <= 33; size += 2)
        for (int dx = 0; dx < size; ++dx) {
            const auto expected = product(size, dx);
            const auto positive = kernel16s(size, dx, 1), negative = kernel16s(size, dx, -1);
            const auto single = kernel32f(size, dx, 1);
            for (int j = 0; j < size; ++j) {
                const auto low = static_cast<Nox16s>(static_cast<std::uint16_t>(expected[j]));
                ASSERT_EQ(positive[j], low) << size << " " << dx;
                ASSERT_EQ(negative[j], static_cast<Nox16s>(static_cast<std::uint16_t>(0U - expected[j])));
                if (size <= 25) {
                    ASSERT_EQ(single[j], static_cast<Nox32f>(static_cast<std::int32_t>(expected[j])));
                }
            }
        }
}

TEST(SobelKernel, SinglePrecisionRoundsEachAddition) {
    // Coefficients of size 41 exceed 24 bits; Pascal's triangle in single precision, as the generator walks it.
    std::vector<Nox32f> taps(41, 0.0F);
    taps[40] = 1;
    for (int i = 1; i < 41; ++i)
        for (int j = 40 - i; j < 40; ++j)
            taps[j] = taps[j] + taps[j + 1];
    EXPECT_EQ(kernel32f(41, 0, 1), taps);
}

TEST(SobelKernel, StatusesInOrder) {
    Nox16s taps[5] = {7, 7, 7, 7, 7};
    Nox32f single[5] = {7, 7, 7, 7, 7};
    EXPECT_EQ(noxiGenSobelKernel_16s(nullptr, 0, -1, 1), noxStsNullPointer);
    EXPECT_EQ(noxiGenSobelKernel_32f(nullptr, 0, -1, 1), noxStsNullPointer);
    for (const auto &[size, dx] : {std::pair{0, 0}, {-1, 0}, {2, 0}, {4, 1}, {3, -1}, {3, 3}, {1, 1}}) {
        EXPECT_EQ(noxiGenSobelKernel_16s(taps, size, dx, 1), noxStsBadSize);
        EXPECT_EQ(noxiGenSobelKernel_32f(single, size, dx, 1), noxStsBadSize);
    }
    EXPECT_EQ(taps[0], 7);
    EXPECT_EQ(single[0], 7);
}

} // namespace
