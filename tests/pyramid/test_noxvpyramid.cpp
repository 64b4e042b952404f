#include <algorithm>

#include "noxcv.h"
#include "support/allocator.h"
#include "support/image.h"

namespace {

constexpr float rates[] = {1.0001F, 1.1F, 1.25F, 1.5F, 1.99998F, 2.0F, 2.00001F, 2.1F, 2.5F, 3.0F, 7.3F, 10.0F};

TEST(PyramidRoi, UpFollowsTheFormula) {
    for (const float rate : rates)
        for (int n = 1; n < 300; ++n) {
            NoxiSize low{}, high{};
            ASSERT_EQ(noxiGetPyramidUpROI({n, 2}, &low, &high, rate), noxStsNoError);
            const int smallest = n == 1 ? 1 : std::max(int(float(n - 1) * rate) + 1, n + 1);
            ASSERT_EQ(low.width, smallest);
            ASSERT_EQ(high.width, std::max(n + 1, int(float(n) * rate)));
            ASSERT_EQ(low.height, std::max(int(rate) + 1, 3));
        }
}

TEST(PyramidRoi, DownIsTheSizeWhoseRangeHoldsTheSource) {
    for (const float rate : rates)
        for (int n = 1; n < 300; ++n) {
            NoxiSize down{}, low{}, high{};
            ASSERT_EQ(noxiGetPyramidDownROI({n, 301 - n}, &down, rate), noxStsNoError);
            ASSERT_EQ(noxiGetPyramidUpROI(down, &low, &high, rate), noxStsNoError);
            ASSERT_LE(low.width, n);
            ASSERT_GE(high.width, n);
            ASSERT_LE(low.height, 301 - n);
            ASSERT_GE(high.height, 301 - n);
        }
    NoxiSize one{};
    noxiGetPyramidDownROI({1, 1}, &one, 2.0F);
    EXPECT_EQ(one.width, 1);
    EXPECT_EQ(one.height, 1);
}

TEST(PyramidRoi, HugeSizesEnd) {
    for (const float rate : rates) {
        NoxiSize down{}, low{}, high{};
        EXPECT_EQ(noxiGetPyramidDownROI({2147483647, 1 << 30}, &down, rate), noxStsNoError);
        EXPECT_EQ(noxiGetPyramidUpROI({2147483647, 1 << 30}, &low, &high, rate), noxStsNoError);
    }
}

TEST(PyramidRoi, Statuses) {
    NoxiSize a{}, b{};
    EXPECT_EQ(noxiGetPyramidDownROI({0, 0}, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxiGetPyramidDownROI({0, 1}, &a, 0), noxStsBadSize);
    EXPECT_EQ(noxiGetPyramidDownROI({1, 1}, &a, 1.0F), noxStsBadArgument);
    EXPECT_EQ(noxiGetPyramidDownROI({1, 1}, &a, 10.01F), noxStsBadArgument);
    EXPECT_EQ(noxiGetPyramidDownROI({1, 1}, &a, std::nanf("")), noxStsBadArgument);
    EXPECT_EQ(noxiGetPyramidUpROI({0, 0}, nullptr, &b, 0), noxStsNullPointer);
    EXPECT_EQ(noxiGetPyramidUpROI({0, 0}, &a, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxiGetPyramidUpROI({1, 0}, &a, &b, 0), noxStsBadSize);
    EXPECT_EQ(noxiGetPyramidUpROI({1, 1}, &a, &b, 0.5F), noxStsBadArgument);
}

TEST(Pyramid, RecordHoldsSizesAndScales) {
    for (const float rate : rates)
        for (const NoxiSize roi : {NoxiSize{1, 1}, {1, 9}, {17, 1}, {64, 48}, {97, 301}})
            for (const int wanted : {1, 3, 1000}) {
                NoxiPyramid *pyramid = nullptr;
                ASSERT_EQ(noxiPyramidInitAlloc(&pyramid, wanted, roi, rate), noxStsNoError);
                NoxiSize size = roi;
                double scale = 1.0;
                int level = 0;
                for (;; ++level) {
                    ASSERT_EQ(pyramid->sizes[level].width, size.width);
                    ASSERT_EQ(pyramid->sizes[level].height, size.height);
                    ASSERT_EQ(pyramid->rates[level], scale);
                    ASSERT_EQ(pyramid->images[level], nullptr);
                    ASSERT_EQ(pyramid->steps[level], 0);
                    if (level == wanted || (size.width < 2 && size.height <= 1))
                        break;
                    noxiGetPyramidDownROI(size, &size, rate);
                    scale *= double(1.0L / (long double)rate);
                }
                ASSERT_EQ(pyramid->level, level);
                ASSERT_EQ(pyramid->layerState, nullptr);
                ASSERT_EQ(noxiPyramidFree(pyramid), noxStsNoError);
            }
}

TEST(Pyramid, OneAllocationOfTheStatedSize) {
    const test::CountedAllocator counted;
    NoxiPyramid *pyramid = nullptr;
    ASSERT_EQ(noxiPyramidInitAlloc(&pyramid, 4, {640, 480}, 2.0F), noxStsNoError);
    EXPECT_EQ(test::CountedAllocator::live(), 1);
    EXPECT_EQ(test::CountedAllocator::lastSize(), 4 * 44 + 112 + 32 + sizeof(void *));
    noxiPyramidFree(pyramid);
    EXPECT_EQ(test::CountedAllocator::live(), 0);
}

TEST(Pyramid, Statuses) {
    NoxiPyramid *pyramid = nullptr;
    EXPECT_EQ(noxiPyramidInitAlloc(nullptr, 0, {0, 0}, 0), noxStsNullPointer);
    EXPECT_EQ(noxiPyramidInitAlloc(&pyramid, 0, {0, 5}, 0), noxStsBadSize);
    EXPECT_EQ(noxiPyramidInitAlloc(&pyramid, 1, {5, 5}, 1.0F), noxStsBadArgument);
    EXPECT_EQ(noxiPyramidInitAlloc(&pyramid, 1, {5, 5}, 10.5F), noxStsBadArgument);
    EXPECT_EQ(noxiPyramidInitAlloc(&pyramid, 0, {5, 5}, 2.0F), noxStsBadArgument);
    EXPECT_EQ(noxiPyramidFree(nullptr), noxStsNullPointer);
    for (int failAt = 1; failAt <= 2; ++failAt) {
        const test::CountedAllocator failing(failAt);
        const NoxStatus status = noxiPyramidInitAlloc(&pyramid, 3, {50, 50}, 2.0F);
        if (test::CountedAllocator::allocations() >= failAt) {
            EXPECT_EQ(status, noxStsNoMemory);
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        } else {
            noxiPyramidFree(pyramid);
        }
    }
}

} // namespace
