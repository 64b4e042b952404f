#include <chrono>
#include <climits>
#include <vector>

#include "noxcv.h"
#include "support/allocator.h"
#include "support/image.h"
#include "support/threads.h"

namespace {

/// The query's status and what it stored; 77 where it stored nothing.
struct Told {
    NoxStatus status;
    int size;
    bool operator==(const Told &) const = default;
};
constexpr Told nothing = {noxStsBadSize, 77};

template <class Query, class... Argument>
Told told(Query query, Argument... arguments) {
    Told result = {noxStsNoError, 77};
    result.status = query(arguments..., &result.size);
    return result;
}
std::ostream &operator<<(std::ostream &out, const Told &t) { return out << t.status << ", " << t.size; }

TEST(BufferSizes, GaussBeyondAnInt) {
    EXPECT_EQ(told(noxiFilterGaussGetBufferSize_32f_C1R, NoxiSize{1, 1}, 32765), nothing);
    EXPECT_EQ(told(noxiFilterGaussGetBufferSize_32f_C1R, NoxiSize{INT_MAX, INT_MAX}, INT_MAX), nothing);
    EXPECT_EQ(told(noxiFilterGaussGetBufferSize_32f_C1R, NoxiSize{1, 1}, 23161).status, noxStsNoError);
    EXPECT_EQ(told(noxiFilterGaussGetBufferSize_32f_C1R, NoxiSize{1, 1}, 23171), nothing);
    Nox32f pixel = 5, result = 77;
    Nox8u buffer[64];
    EXPECT_EQ(noxiFilterGaussBorder_32f_C1R(&pixel, 4, &result, 4, {1, 1}, 32765, 1, noxBorderReplicate, 0, buffer),
              noxStsBadSize);
    EXPECT_EQ(noxiFilterGaussBorder_32f_C1R(&pixel, 4, &result, 4, {1, 1}, 32764, 1, noxBorderReplicate, 0, buffer),
              noxStsBadArgument);
    EXPECT_EQ(result, 77);
}

TEST(BufferSizes, PyramidRowsBeyondAnInt) {
    EXPECT_EQ(told(noxiPyrDownGetBufSize_Gauss5x5, 178956971, 1, 1), nothing);
    EXPECT_EQ(told(noxiPyrUpGetBufSize_Gauss5x5, 178956971, 1, 1), nothing);
    EXPECT_EQ(told(noxiPyrDownGetBufSize_Gauss5x5, 89478484, 1, 1), nothing);
    EXPECT_EQ(told(noxiPyrDownGetBufSize_Gauss5x5, 89478480, 1, 1), (Told{noxStsNoError, 2147483552}));
    EXPECT_EQ(told(noxiPyrDownGetBufSize_Gauss5x5, INT_MAX, 13, 3), nothing);
    EXPECT_EQ(told(noxiPyrUpGetBufSize_Gauss5x5, INT_MAX, 13, 3), nothing);
    Nox8u pixel = 5, result = 77, buffer[64];
    EXPECT_EQ(noxiPyrDown_Gauss5x5_8u_C1R(&pixel, 178956971, &result, 178956971, {178956971, 1}, buffer),
              noxStsBadSize);
    EXPECT_EQ(noxiPyrUp_Gauss5x5_8u_C1R(&pixel, 178956971, &result, 357913942, {178956971, 1}, buffer), noxStsBadSize);
    EXPECT_EQ(noxiPyrUp_Gauss5x5_8u_C1R(&pixel, 178956971, &result, 357913941, {178956971, 1}, buffer), noxStsBadStep);
    EXPECT_EQ(result, 77);
}

TEST(BufferSizes, BorderFiltersBeyondAnInt) {
    const test::ThreadCount scope(64);
    EXPECT_EQ(told(noxiFilterSobelHorizGetBufferSize_8u16s_C1R, NoxiSize{256, 131072}, noxMskSize5x5), nothing);
    EXPECT_EQ(told(noxiFilterLaplacianGetBufferSize_8u8s_C1R, NoxiSize{INT_MAX, INT_MAX}, noxMskSize5x5), nothing);
    EXPECT_EQ(told(noxiFilterLowpassGetBufferSize_32f_C1R, NoxiSize{INT_MAX, INT_MAX}, noxMskSize3x3), nothing);
    EXPECT_EQ(told(noxiFilterScharrVertGetBufferSize_32f_C1R, NoxiSize{INT_MAX, 1}), nothing);
    Nox8u pixel = 5, buffer[64];
    Nox16s result = 77;
    EXPECT_EQ(noxiFilterSobelHorizBorder_8u16s_C1R(&pixel, 256, &result, 512, {256, 131072}, noxMskSize5x5,
                                                   noxBorderReplicate, 0, buffer),
              noxStsBadSize);
    EXPECT_EQ(noxiFilterSobelHorizBorder_8u16s_C1R(&pixel, 256, &result, 512, {256, 131072}, 7, noxBorderReplicate, 0,
                                                   buffer),
              noxStsBadMaskSize);
    EXPECT_EQ(noxiFilterLaplacianBorder_8u16s_C1R(&pixel, 256, &result, 512, {256, 131072}, noxMskSize5x5,
                                                  noxBorderReplicate, 0, buffer),
              noxStsBadSize);
    EXPECT_EQ(result, 77);
}

TEST(BufferSizes, PipelinesBeyondAnInt) {
    const test::ThreadCount scope(64);
    const NoxiSize tall = {16, 16777216};
    EXPECT_EQ(told(noxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, tall, 3), nothing);
    EXPECT_EQ(told(noxiFilterRowBorderPipelineGetBufferSize_32f_C3R, tall, 3), nothing);
    EXPECT_EQ(told(noxiFilterColumnPipelineGetBufferSize_32f_C1R, tall, 3), nothing);
    EXPECT_EQ(told(noxiFilterColumnPipelineGetBufferSize_16s_C1R, NoxiSize{1, INT_MAX}, INT_MAX), nothing);
    Nox8u pixels[16] = {}, buffer[64];
    Nox16s row[16] = {77}, taps[3] = {1, 1, 1};
    Nox16s *rows[1] = {row};
    EXPECT_EQ(
        noxiFilterRowBorderPipeline_8u16s_C1R(pixels, 16, rows, tall, taps, 3, 1, noxBorderReplicate, 0, 1, buffer),
        noxStsBadSize);
    EXPECT_EQ(
        noxiFilterRowBorderPipeline_8u16s_C1R(pixels, 16, rows, tall, taps, 3, 1, noxBorderReplicate, 0, 0, buffer),
        noxStsBadArgument);
    const Nox16s *from[1] = {row};
    EXPECT_EQ(noxiFilterColumnPipeline_16s_C1R(from, row, 32, {16, INT_MAX}, taps, 3, 1, buffer), noxStsBadSize);
    EXPECT_EQ(row[0], 77);
}

TEST(BufferSizes, CannysQueryWrapsAndItsDetectorRefuses) {
    const auto size = [](unsigned w, unsigned h) {
        const unsigned base = (4 * w + 24) * 4 + 64;
        return static_cast<int>(w + 2 < 65535 && h + 2 < 65535 ? (5 * h + 10) * (w + 2) + base
                                                               : 9 * (h + 2) * w + 18 * (h + 2) + base);
    };
    for (const NoxiSize roi : {NoxiSize{640, 480},
                               {20000, 25000},
                               {65532, 65532},
                               {65533, 5},
                               {5, 65533},
                               {65533, 65533},
                               {INT_MAX, INT_MAX},
                               {1, INT_MAX},
                               {INT_MAX, 1}})
        EXPECT_EQ(told(noxiCannyGetSize, roi), (Told{noxStsNoError, size(unsigned(roi.width), unsigned(roi.height))}));
    Nox16s derivative = 0;
    Nox8u result = 77, buffer[64];
    EXPECT_EQ(noxiCanny_16s8u_C1R(&derivative, 60000, &derivative, 60000, &result, 30000, {30000, 30000}, 1, 2, buffer),
              noxStsBadSize);
    EXPECT_EQ(noxiCanny_16s8u_C1R(&derivative, 60000, &derivative, 60000, &result, 30000, {30000, 30000}, 2, 1, buffer),
              noxStsBadArgument);
    EXPECT_EQ(result, 77);
}

TEST(BufferSizes, UndistortionBeyondAnInt) {
    EXPECT_EQ(told(noxiUndistortGetSize, NoxiSize{89478484, 1}), nothing);
    EXPECT_EQ(told(noxiUndistortGetSize, NoxiSize{INT_MAX, 1}), nothing);
    EXPECT_EQ(told(noxiUndistortGetSize, NoxiSize{89478480, 1}), (Told{noxStsNoError, 2147483552}));
    Nox8u pixel = 5, result = 77, buffer[64];
    EXPECT_EQ(noxiUndistortRadial_8u_C1R(&pixel, INT_MAX, &result, INT_MAX, {89478484, 2}, 1, 1, 0, 0, 0, 0, buffer),
              noxStsBadSize);
    EXPECT_EQ(result, 77);
}

TEST(LayerStates, ThatCannotExistAreNotMade) {
    const Nox16s taps[3] = {1, 2, 1};
    const Nox32f realTaps[3] = {1, 2, 1};
    auto *const untouched = reinterpret_cast<NoxiPyramidLayerState *>(&noxiPyramidLayerUpFree);
    const test::CountedAllocator allocator;
    for (const NoxiSize roi : {NoxiSize{INT_MAX, 2147483643}, {INT_MAX, INT_MAX}, {1, INT_MAX}, {40000, 40000}}) {
        NoxiPyramidLayerState *state = untouched;
        EXPECT_EQ(noxiPyramidLayerUpInitAlloc_8u_C1R(&state, roi, 2, taps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerUpInitAlloc_8u_C3R(&state, roi, 2, taps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerUpInitAlloc_32f_C1R(&state, roi, 2, realTaps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerUpInitAlloc_32f_C3R(&state, roi, 2, realTaps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerDownInitAlloc_8u_C1R(&state, roi, 2, taps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerDownInitAlloc_8u_C3R(&state, roi, 2, taps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerDownInitAlloc_32f_C1R(&state, roi, 2, realTaps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(noxiPyramidLayerDownInitAlloc_32f_C3R(&state, roi, 2, realTaps, 3, 2), noxStsNoMemory);
        EXPECT_EQ(state, untouched);
    }
    EXPECT_EQ(test::CountedAllocator::allocations(), 0);
}

TEST(PyramidRecord, ThatCannotExistEndsAtOnce) {
    const test::CountedAllocator allocator;
    const auto start = std::chrono::steady_clock::now();
    NoxiPyramid *pyramid = nullptr;
    EXPECT_EQ(noxiPyramidInitAlloc(&pyramid, INT_MAX, {INT_MAX, INT_MAX}, 1 + 0x1p-23F), noxStsNoMemory);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
    EXPECT_EQ(pyramid, nullptr);
    EXPECT_EQ(test::CountedAllocator::allocations(), 0);
    // Few levels of such a pyramid are no matter.
    ASSERT_EQ(noxiPyramidInitAlloc(&pyramid, 5, {INT_MAX, INT_MAX}, 1 + 0x1p-23F), noxStsNoError);
    EXPECT_EQ(pyramid->level, 5);
    noxiPyramidFree(pyramid);
}

} // namespace
