// A program that brings its own core library: these definitions stand in for the companion's.
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

} // namespace
