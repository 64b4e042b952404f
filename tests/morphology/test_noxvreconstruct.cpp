#include <algorithm>
#include <cmath>
#include <functional>

#include "members.h"
#include "morphology/noxvreconstruct.h"
#include "support/threads.h"

using namespace test;
using namespace test::morphology;

namespace {

template <class T>
NoxStatus run(bool dilate, const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, Nox8u *buffer,
              int norm) {
    if constexpr (sizeof(T) == 1)
        return (dilate ? noxiMorphReconstructDilate_8u_C1IR
                       : noxiMorphReconstructErode_8u_C1IR)(src, srcStep, srcDst, srcDstStep, roi, buffer, norm);
    else
        return (dilate ? noxiMorphReconstructDilate_32f_C1IR
                       : noxiMorphReconstructErode_32f_C1IR)(src, srcStep, srcDst, srcDstStep, roi, buffer, norm);
}
template <class T>
NoxStatus query(NoxiSize roi, int *size) {
    return (sizeof(T) == 1 ? noxiMorphReconstructGetBufferSize_8u_C1 : noxiMorphReconstructGetBufferSize_32f_C1)(roi,
                                                                                                                 size);
}

/// Both operators and neighbourhoods under every given thread count, in a buffer of exactly the queried size.
template <class T>
void compare(const Image<T> &mask, const Image<T> &marker, const std::vector<int> &threads, Random &random) {
    const NoxiSize roi = mask.roi();
    int size = 0;
    ASSERT_EQ(query<T>(roi, &size), noxStsNoError);
    ASSERT_EQ(size, (sizeof(T) == 1 ? 4 : 16) * roi.width + roi.height + 130);
    for (const bool dilate : {true, false})
        for (const int norm : {0, 1}) {
            Image<T> expected(marker);
            reference::morphology::reconstruct(dilate, source(mask), result(expected), roi, norm == 0);
            for (const int count : threads) {
                const ThreadCount team(count);
                Image<T> grown(marker);
                const ShiftedBuffer buffer(size, int(random() % 33));
                ASSERT_EQ(run(dilate, mask.data(), mask.step(), grown.data(), grown.step(), roi, buffer.data(), norm),
                          noxStsNoError);
                ASSERT_TRUE(sameImage(test::unsignZeros(grown), test::unsignZeros(expected)))
                    << "dilate " << dilate << " norm " << norm << " threads " << count;
                ASSERT_TRUE(buffer.intact());
            }
        }
}

template <class T>
class Reconstruction : public ::testing::Test {};
TYPED_TEST_SUITE(Reconstruction, GrayTypes);

TYPED_TEST(Reconstruction, EverySize) {
    using T = TypeParam;
    Random random(51);
    auto sizes = testSizes();
    sizes.insert(sizes.end(), {{10, 11}, {11, 10}, {11, 11}, {12, 30}});
    for (const NoxiSize size : sizes)
        for (int round = 0; round < 3; ++round) {
            Image<T> mask(size.width, size.height, 1, 4, int(random() % 8)),
                marker(size.width, size.height, 1, 8, int(random() % 8));
            roughen(mask, random);
            roughen(marker, random);
            if (round > 0) // few seeds, so that values travel
                marker.generate(
                    [&](int x, int y, int) { return random() % 50 == 0 ? mask.at(x, y) : T(round == 1 ? 0 : 200); });
            compare(mask, marker, {1, 2}, random);
        }
}

TYPED_TEST(Reconstruction, SmoothPictures) {
    using T = TypeParam;
    Random random(52);
    Image<T> mask(150, 120), marker(150, 120);
    mask.generate([](int x, int y, int) { return 120 + 60 * std::sin(x * 0.2) + 50 * std::cos(y * 0.13 + x * 0.05); });
    for (const int difference : {1, 20, -20}) {
        marker.generate([&](int x, int y, int) { return std::clamp<double>(mask.at(x, y) - difference, 0, 255); });
        compare(mask, marker, threadCounts(), random);
    }
}

/// Corridors of ones between walls of zeros, and one seed.
template <class T>
void compareCorridors(NoxiSize size, const std::function<bool(int, int)> &open, NoxiPoint seed) {
    Random random(53);
    Image<T> mask(size.width, size.height), marker(size.width, size.height);
    for (const bool inverted : {false, true}) {
        const T wall = inverted ? 9 : 1, corridor = inverted ? 1 : 9;
        mask.generate([&](int x, int y, int) { return open(x, y) ? corridor : wall; });
        marker.fill(wall);
        marker.at(seed.x, seed.y) = corridor;
        compare(mask, marker, {1, 2}, random);
    }
}

/// A corridor that winds from the first pixel to the middle, with walls of one pixel.
std::vector<bool> spiral(int side) {
    std::vector<bool> open(std::size_t(side) * side, false);
    const auto isOpen = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < side && y < side && open[std::size_t(y) * side + x];
    };
    int x = 0, y = 0, dx = 1, dy = 0;
    for (int turns = 0; turns < 2;) {
        open[std::size_t(y) * side + x] = true;
        const int nx = x + dx, ny = y + dy;
        if (nx < 0 || ny < 0 || nx >= side || ny >= side || isOpen(nx + dx, ny + dy)) {
            const int old = dx;
            dx = -dy;
            dy = old;
            ++turns;
        } else {
            x = nx;
            y = ny;
            turns = 0;
        }
    }
    return open;
}

TYPED_TEST(Reconstruction, SpiralsAndSerpentines) {
    const auto open = spiral(61);
    EXPECT_EQ(std::count(open.begin(), open.end(), true), 1921); // some 30 turns
    compareCorridors<TypeParam>({61, 61}, [&](int x, int y) { return open[y * 61 + x]; }, {0, 0});
    compareCorridors<TypeParam>({61, 61}, [&](int x, int y) { return open[y * 61 + x]; }, {30, 30});
    // Up and down, and to and fro: a gate at alternating ends of each wall.
    compareCorridors<TypeParam>({47, 33}, [](int x, int y) { return x % 2 == 0 || y == (x % 4 == 1 ? 32 : 0); },
                                {0, 16});
    compareCorridors<TypeParam>({33, 46}, [](int x, int y) { return y % 2 == 0 || x == (y % 4 == 1 ? 32 : 0); },
                                {16, 45});
}

TYPED_TEST(Reconstruction, Mazes) {
    Random random(54);
    for (int round = 0; round < 6; ++round) {
        std::vector<bool> cells(45 * 37);
        for (std::size_t i = 0; i < cells.size(); ++i)
            cells[i] = random() % 5 < 3 || (i % 45 % 2 == 0 && i / 45 % 2 == 0);
        compareCorridors<TypeParam>({45, 37}, [&](int x, int y) { return cells[y * 45 + x]; }, {22, 18});
    }
}

TYPED_TEST(Reconstruction, WavesWiderThanTheQueue) {
    // The lower half leads down and up again to the seam between the halves, which is then open all along; above it,
    // two and a half thousand corridors of their own. So the seam's whole row goes to the queue at once.
    constexpr int w = 5001, h = 24, seam = h / 2;
    compareCorridors<TypeParam>({w, h},
                                [](int x, int y) {
                                    if (y > seam)
                                        return x == 0 || x == 2 || (y == h - 1 && x == 1);
                                    return y == seam ? x >= 2 : y == seam - 1 || x % 2 == 0;
                                },
                                {0, seam + 1});
}

TYPED_TEST(Reconstruction, StatusesInOrder) {
    using T = TypeParam;
    Image<T> mask(8, 4), marker(8, 4);
    mask.fill(3);
    marker.fill(9);
    const Image<T> before(marker);
    const Buffer buffer(400);
    const int s = mask.step();
    for (const bool dilate : {false, true}) {
        const auto call = [&](const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, Nox8u *work,
                              int norm) { return run<T>(dilate, src, srcStep, srcDst, srcDstStep, roi, work, norm); };
        EXPECT_EQ(call(nullptr, 0, marker.data(), 0, {0, 0}, buffer.data(), 2), noxStsNullPointer);
        EXPECT_EQ(call(mask.data(), 0, nullptr, 0, {0, 0}, buffer.data(), 2), noxStsNullPointer);
        EXPECT_EQ(call(mask.data(), 0, marker.data(), 0, {0, 0}, nullptr, 2), noxStsNullPointer);
        EXPECT_EQ(call(mask.data(), 0, marker.data(), 0, {8, 0}, buffer.data(), 2), noxStsBadSize);
        EXPECT_EQ(call(mask.data(), s - 1, marker.data(), s, {8, 4}, buffer.data(), 2), noxStsBadStep);
        EXPECT_EQ(call(mask.data(), s, marker.data(), s - 1, {8, 4}, buffer.data(), 2), noxStsBadStep);
        if (sizeof(T) == 4) {
            EXPECT_EQ(call(mask.data(), s + 1, marker.data(), s - 1, {8, 4}, buffer.data(), 2), noxStsBadStep);
            EXPECT_EQ(call(mask.data(), s + 1, marker.data(), s, {8, 4}, buffer.data(), 2), noxStsOddStep);
            EXPECT_EQ(call(mask.data(), s, marker.data(), s + 2, {8, 4}, buffer.data(), 2), noxStsOddStep);
        }
        EXPECT_EQ(call(mask.data(), s, marker.data(), s, {8, 4}, buffer.data(), 2), noxStsBadArgument);
        EXPECT_EQ(call(mask.data(), s, marker.data(), s, {8, 4}, buffer.data(), -1), noxStsBadArgument);
        EXPECT_TRUE(sameImage(marker, before));
    }
    int size = 5;
    EXPECT_EQ(query<T>({0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(query<T>({0, 1}, &size), noxStsBadSize);
    EXPECT_EQ(query<T>({1, 0}, &size), noxStsBadSize);
    EXPECT_EQ(query<T>({1 << 29, 1}, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
}

TYPED_TEST(Reconstruction, InsideATeamOfTheCallers) {
    using T = TypeParam;
    Random random(55);
    Image<T> mask(60, 40), marker(60, 40);
    randomize(mask, random);
    marker.generate([&](int x, int y, int) { return random() % 9 == 0 ? mask.at(x, y) : T(0); });
    const ThreadCount team(2);
    insideParallelRegion([&] { compare(mask, marker, {2}, random); });
}

TEST(ReconstructionFloat, EndsWithNotANumbers) {
    Random random(56);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (int round = 0; round < 10; ++round) {
        Image<Nox32f> mask(70, 30), marker(70, 30);
        mask.generate([&](int, int, int) { return random() % 9 == 0 ? nan : float(random() % 50); });
        marker.generate([&](int, int, int) { return random() % 9 == 0 ? nan : float(random() % 60); });
        int size = 0;
        query<Nox32f>(mask.roi(), &size);
        const Buffer buffer(size);
        for (const bool dilate : {false, true}) {
            const ThreadCount team(1 + round % 2);
            EXPECT_EQ(run(dilate, mask.data(), mask.step(), marker.data(), marker.step(), mask.roi(), buffer.data(),
                          round % 2),
                      noxStsNoError);
        }
    }
}

TEST(ReconstructionNeighbours, DiagonalsConnectWithEightOnly) {
    for (const int norm : {0, 1}) {
        Image<Nox8u> mask(20, 20), marker(20, 20);
        mask.generate([](int x, int y, int) { return x == y ? 200 : 0; });
        marker.fill(0);
        marker.at(5, 5) = 250;
        const Buffer buffer(4 * 20 + 20 + 130);
        run<Nox8u>(true, mask.data(), 20, marker.data(), 20, {20, 20}, buffer.data(), norm);
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(marker.at(i, i), norm == 0 || i == 5 ? 200 : 0);
    }
}

} // namespace
