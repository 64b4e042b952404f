// A program that brings its own core library: these definitions stand in for the companion's.
#include <limits>
#include <vector>

#include "frame/owncvomp.h"
#include "noxcv.h"
#include "support/image.h"

/// Two definitions of the same data are what this program is about.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options() { return "detect_odr_violation=0"; }

namespace {
int threadsAnswer = 7, coresAnswer = 3, cacheAnswer = 12345;
} // namespace

int threads_omp_of_n_nox = 2;
const Nox64f noxConstantOfNAN_64f = 1.0;
const Nox64f noxConstantOfINF_64f = 2.0;
const Nox64f noxConstantOfINF_NEG_64f = 3.0;
NoxStatus noxGetNumThreads(int *count) {
    *count = threadsAnswer;
    return noxStsBadArgument; // nobody looks at it
}
int noxGetNumCoresOnDie() { return coresAnswer; }
NoxStatus noxGetMaxCacheSizeB(int *bytes) {
    *bytes = cacheAnswer;
    return noxStsBadArgument;
}

namespace {

TEST(ReplacedCore, TheLibraryFollowsItsAnswers) {
    EXPECT_EQ(owncvGetNumThreads(), 7);
    EXPECT_EQ(owncvGetMaxNumThreads(), 7);
    EXPECT_EQ(owncvGetCacheSize(), 12345);
    EXPECT_EQ(runomp(), 3);
    EXPECT_EQ(runsepomp(3), 3);
    EXPECT_EQ(runsepomp(7), 3);
    coresAnswer = 4;
    EXPECT_EQ(runsepomp(9), 5);
    EXPECT_EQ(runsepomp(5), 4);
    coresAnswer = 1;
    EXPECT_EQ(runomp(), 0);
    EXPECT_EQ(runsepomp(3), 0);
    EXPECT_EQ(runsepomp(5), 0);
    EXPECT_EQ(runsepomp(7), 1);
    for (const int kernelSize : {1, 2, 4, 6, 7, 8, 9, 11, 33, 1000}) {
        EXPECT_EQ(runsepomp(kernelSize), 1) << kernelSize;
        coresAnswer = 2;
        EXPECT_EQ(runsepomp(kernelSize), 3) << kernelSize;
        coresAnswer = 1;
    }
    coresAnswer = 3;
    threadsAnswer = 4;
    EXPECT_EQ(owncvGetNumThreads(), 4);
}

TEST(ReplacedCore, OddAnswersLoseNoRows) {
    for (const int team : {-1, 0, 1, 2, 5})
        for (const int threads : {-2, 0, 1, 3, 9}) {
            threads_omp_of_n_nox = team;
            threadsAnswer = threads;
            std::vector<int> rows(20, 0);
            nox::parallelSlices(20, nox::sliceCount(), [&](nox::Slice slice) {
                for (int y = slice.first; y < slice.first + slice.count; ++y)
                    ++rows[y];
            });
            EXPECT_EQ(rows, std::vector<int>(20, 1)) << team << " " << threads;
        }
    threads_omp_of_n_nox = 2;
    threadsAnswer = 7;
}

/// Sizes of buffers for whatever the core library answers.
std::vector<int> bufferSizes() {
    std::vector<int> sizes(5);
    noxiFilterSobelHorizGetBufferSize_8u16s_C1R({300, 200}, noxMskSize5x5, &sizes[0]);
    noxiFilterLaplacianGetBufferSize_8u8s_C1R({300, 200}, noxMskSize5x5, &sizes[1]);
    noxiFilterRowBorderPipelineGetBufferSize_32f_C1R({300, 200}, 7, &sizes[2]);
    noxiFilterColumnPipelineGetBufferSize_16s_C1R({300, 200}, 7, &sizes[3]);
    noxiFilterColumnPipelineGetBufferSize_32f_C1R({300, 200}, 7, &sizes[4]);
    return sizes;
}

TEST(ReplacedCore, CountsBelowOneAreServedAsOneByQueries) {
    threadsAnswer = 1;
    const std::vector<int> one = bufferSizes();
    for (const int size : one)
        EXPECT_GT(size, 0);
    for (const int answer : {0, -1, std::numeric_limits<int>::min()}) {
        threadsAnswer = answer;
        EXPECT_EQ(bufferSizes(), one) << answer;
    }
    threadsAnswer = std::numeric_limits<int>::max();
    int size = 77;
    EXPECT_EQ(noxiFilterSobelHorizGetBufferSize_8u16s_C1R({300, 200}, noxMskSize5x5, &size), noxStsBadSize);
    EXPECT_EQ(size, 77);
    NoxiOptFlowPyrLKState *state = nullptr;
    EXPECT_EQ(noxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, {300, 200}, 15, 0), noxStsNoMemory);
    EXPECT_EQ(state, nullptr);
    threadsAnswer = 7;
}

} // namespace
