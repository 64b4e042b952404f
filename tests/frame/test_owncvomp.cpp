#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "frame/owncvhelpers.h"
#include "frame/owncvomp.h"
#include "noxcv.h"
#include "support/image.h"
#include "support/threads.h"

namespace {

TEST(Core, ThreadCountIsKeptInStep) {
    int before = 0;
    ASSERT_EQ(noxGetNumThreads(&before), noxStsNoError);
    EXPECT_GE(before, 1);
    EXPECT_EQ(noxSetNumThreads(5), noxStsNoError);
    int count = 0;
    noxGetNumThreads(&count);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(threads_omp_of_n_nox, 5);
    EXPECT_EQ(noxSetNumThreads(0), noxStsBadArgument);
    EXPECT_EQ(noxSetNumThreads(-3), noxStsBadArgument);
    noxGetNumThreads(&count);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(threads_omp_of_n_nox, 5);
    EXPECT_EQ(noxGetNumThreads(nullptr), noxStsNullPointer);
    noxSetNumThreads(before);
}

TEST(Core, MachineAnswers) {
    EXPECT_GE(noxGetNumCoresOnDie(), 1);
    int bytes = 0;
    EXPECT_EQ(noxGetMaxCacheSizeB(&bytes), noxStsNoError);
    EXPECT_GE(bytes, 16 * 1024);
    EXPECT_EQ(noxGetMaxCacheSizeB(nullptr), noxStsNullPointer);
    EXPECT_TRUE(std::isnan(noxConstantOfNAN_64f));
    EXPECT_EQ(noxConstantOfINF_64f, std::numeric_limits<double>::infinity());
    EXPECT_EQ(noxConstantOfINF_NEG_64f, -std::numeric_limits<double>::infinity());
}

TEST(Version, Record) {
    const NoxLibraryVersion *version = noxcvGetLibVersion();
    EXPECT_EQ(version->major, 5);
    EXPECT_EQ(version->minor, 2);
    EXPECT_EQ(version->majorBuild, 108);
    EXPECT_EQ(version->build, 398);
    EXPECT_EQ(std::memcmp(version->targetCpu, "a6\0\0", 4), 0);
    EXPECT_STREQ(version->name, "libnoxcva6.so.5.2");
    EXPECT_STREQ(version->version, "5.2");
    ASSERT_EQ(std::strlen(version->buildDate), 11U);
    EXPECT_EQ(version->buildDate[3], ' ');
    EXPECT_EQ(version->buildDate[6], ' ');
    EXPECT_EQ(noxcvGetLibVersion(), version);
}

TEST(Frame, SlicesCoverAllRowsOnce) {
    for (const int slices : {1, 2, 3, 7, 40})
        for (const int rows : {0, 1, 2, 5, 39, 40, 41, 100}) {
            int next = 0;
            for (int index = 0; index < slices; ++index) {
                const nox::Slice slice = nox::sliceOf(rows, index, slices);
                EXPECT_EQ(slice.first, next);
                EXPECT_EQ(slice.index, index);
                EXPECT_EQ(slice.count, index + 1 < slices ? rows / slices : rows / slices + rows % slices);
                next = slice.first + slice.count;
            }
            EXPECT_EQ(next, rows);
        }
}

/// How often each of 101 rows is handed out.
std::vector<int> visits() {
    std::vector<std::atomic<int>> rows(101);
    nox::parallelSlices(101, nox::sliceCount(), [&](nox::Slice slice) {
        for (int y = slice.first; y < slice.first + slice.count; ++y)
            ++rows[y];
    });
    return {rows.begin(), rows.end()};
}

TEST(Frame, ParallelSlicesVisitEveryRowOnceWhateverTheTeam) {
    for (const int threads : test::threadCounts()) {
        const test::ThreadCount scope(threads);
        EXPECT_EQ(visits(), std::vector<int>(101, 1));
        std::vector<int> nested;
        test::insideParallelRegion([&] { nested = visits(); });
        EXPECT_EQ(nested, std::vector<int>(101, 1));
    }
}

TEST(Frame, ThreadsOfATeamAreNumberedFromZero) {
    EXPECT_EQ(owncvGetIdThreads(), 0);
    std::atomic<int> team = 0;
    std::vector<std::atomic<int>> seen(64);
#pragma omp parallel num_threads(4)
    {
        ++team;
        ++seen[std::size_t(owncvGetIdThreads())];
    }
    for (int i = 0; i < int(seen.size()); ++i)
        EXPECT_EQ(seen[std::size_t(i)], i < team ? 1 : 0) << i;
}

TEST(Frame, AreaTestIsExactForHugeRegions) {
    const test::ThreadCount scope(4);
    EXPECT_TRUE(nox::largeEnough({65536, 65536}, 19));
    EXPECT_TRUE(nox::largeEnough({1024, 512}, 17));
    EXPECT_FALSE(nox::largeEnough({1024, 511}, 17));
}

TEST(Scale, SinglePrecision) {
    EXPECT_EQ(owncvGetScale_32s32f(0), 1.0F);
    EXPECT_EQ(owncvGetScale_32s32f(3), 0.125F);
    EXPECT_EQ(owncvGetScale_32s32f(-4), 16.0F);
    EXPECT_EQ(owncvGetScale_32s32f(149), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(owncvGetScale_32s32f(150), 0.0F);
    EXPECT_EQ(owncvGetScale_32s32f(200), 0.0F);
    EXPECT_EQ(owncvGetScale_32s32f(-127), std::ldexp(1.0F, 127));
    EXPECT_EQ(owncvGetScale_32s32f(-128), std::numeric_limits<float>::infinity());
    EXPECT_EQ(owncvGetScale_32s32f(-500), std::numeric_limits<float>::infinity());
}

TEST(Scale, DoublePrecisionIsTheProductOfTwoTables) {
    for (int scale = -1100; scale <= 1200; ++scale) {
        const int exponent = std::clamp(-scale, -1087, 1024), number = 1087 - exponent;
        const double high = std::ldexp(1.0, 1087 - 64 * (number / 64)), low = std::ldexp(1.0F, -(number % 64));
        EXPECT_EQ(owncvGetScale_32s64f(scale), high * low) << scale;
    }
    EXPECT_EQ(owncvGetScale_32s64f(-1024), std::numeric_limits<double>::infinity());
    EXPECT_EQ(owncvGetScale_32s64f(std::numeric_limits<int>::min()), std::numeric_limits<double>::infinity());
    EXPECT_EQ(owncvGetScale_32s64f(1087), 0.0);
}

TEST(RowMatrix, ReportsRowsOffSixteenBytes) {
    alignas(16) static unsigned char memory[64];
    const void *rows[] = {memory, memory + 16, memory + 40};
    EXPECT_EQ(owncvRowMatrAlErr(rows, 2), 0);
    EXPECT_EQ(owncvRowMatrAlErr(rows, 3), 1);
    EXPECT_EQ(owncvRowMatrAlErr(rows, 0), 0);
    EXPECT_EQ(owncvRowMatrAlErr(rows, -2), 0);
}

TEST(MultiplyBuffers, Floats) {
    test::Random random(1);
    for (const int width : {1, 3, 10, 11, 37}) {
        test::Image<Nox32f> dx(width, 3), dxdy(width, 3), dy(width, 3);
        test::randomize(dx, random);
        test::randomize(dy, random);
        const test::Image<Nox32f> x(dx), y(dy);
        owncvMulDBuffers_32f(width, 3, dx.data(), dxdy.data(), dy.data());
        for (int i = 0; i < width * 3; ++i) {
            ASSERT_EQ(dx.data()[i], x.data()[i] * x.data()[i]);
            ASSERT_EQ(dxdy.data()[i], x.data()[i] * y.data()[i]);
            ASSERT_EQ(dy.data()[i], y.data()[i] * y.data()[i]);
        }
    }
}

TEST(MultiplyBuffers, WidensSixteenBitsInPlace) {
    test::Random random(2);
    constexpr int height = 4;
    for (const int width : {1, 2, 7, 33}) {
        test::Image<Nox32f> dx(width, height), dxdy(width, height), dy(width, height);
        test::Image<Nox16s> x(width, height), y(width, height);
        test::randomize(x, random);
        test::randomize(y, random);
        for (int row = 0; row < height; ++row) {
            std::memcpy(dx.row(row), x.row(row), std::size_t(width) * 2);
            std::memcpy(dy.row(row), y.row(row), std::size_t(width) * 2);
        }
        owncvMulDBuffers_16s32f(width, height, dx.data(), dxdy.data(), dy.data());
        for (int row = 0; row < height; ++row)
            for (int i = 0; i < width; ++i) {
                ASSERT_EQ(dx.at(i, row), float(int(x.at(i, row)) * x.at(i, row)));
                ASSERT_EQ(dxdy.at(i, row), float(int(x.at(i, row)) * y.at(i, row)));
                ASSERT_EQ(dy.at(i, row), float(int(y.at(i, row)) * y.at(i, row)));
            }
    }
    owncvMulDBuffers_16s32f(3, 0, nullptr, nullptr, nullptr);
}

} // namespace
