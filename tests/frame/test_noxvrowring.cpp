#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "frame/noxvrowring.h"

namespace {

TEST(RowRing, ARowKeepsItsPlaceUntilAnotherOneTakesIt) {
    for (const int rows : {1, 2, 3, 4, 7})
        for (const int margin : {0, 1, 3}) {
            const int stride = 5 + margin;
            std::vector<int> memory(std::size_t(rows) * stride, 0);
            const nox::RowRing<int> ring(memory.data(), rows, stride, margin);
            EXPECT_EQ(ring.rows(), rows);
            EXPECT_EQ(ring.stride(), stride);
            for (int y = -rows; y < 40; ++y) {
                ring[y][0] = y;
                for (int older = y; older > y - rows && older >= -rows; --older)
                    ASSERT_EQ(ring[older][0], older) << "row " << y << " of " << rows;
            }
        }
}

TEST(RowRing, RowsFillTheMemory) {
    std::vector<int> memory(3 * 7);
    const nox::RowRing<int> ring(memory.data(), 3, 7, 2);
    for (int y = 0; y < 3; ++y)
        for (int x = -2; x < 5; ++x)
            ring[y][x] = 7 * y + x + 2;
    std::vector<int> expected(memory.size());
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(memory, expected);
    // The row above the first one has the last place.
    EXPECT_EQ(ring[-1], ring[2]);
    EXPECT_EQ(ring[-3], ring[0]);
}

} // namespace
