// What the tests of both foreground models ask of InitAlloc. Members holds `channels`, `init` and `free` of one layout.
#pragma once

#include <climits>

#include <gtest/gtest.h>

#include "support/allocator.h"
#include "support/video.h"

namespace test {

/// Fails one allocation after the other, until the state, which takes `allocations` of them, is made.
template <class State, class Members, class Parameters>
void failEachAllocation(const Members &m, const Parameters &parameters, int allocations) {
    const Image<Nox8u> first(videoFrame({9, 5}, m.channels, 0));
    for (int failAt = 1;; ++failAt) {
        const CountedAllocator allocator(failAt);
        State *state = nullptr;
        const NoxStatus status = m.init(first.data(), first.step(), first.roi(), &parameters, &state);
        if (status == noxStsNoError) {
            EXPECT_EQ(failAt, allocations + 1);
            EXPECT_EQ(m.free(state), noxStsNoError);
            EXPECT_EQ(CountedAllocator::live(), 0);
            break;
        }
        ASSERT_EQ(status, noxStsNoMemory);
        ASSERT_EQ(state, nullptr);
        ASSERT_EQ(CountedAllocator::live(), 0);
    }
}

/// The statuses of InitAlloc, each before the next one's cause counts.
template <class State, class Members, class Parameters>
void expectInitStatuses(const Members &m, const Parameters &parameters) {
    const Image<Nox8u> frame(videoFrame({6, 3}, m.channels, 0));
    State *none = nullptr;
    EXPECT_EQ(m.init(nullptr, 0, {0, 0}, &parameters, &none), noxStsNullPointer);
    EXPECT_EQ(m.init(frame.data(), 0, {0, 0}, nullptr, &none), noxStsNullPointer);
    EXPECT_EQ(m.init(frame.data(), 0, {0, 0}, &parameters, nullptr), noxStsNullPointer);
    EXPECT_EQ(m.init(frame.data(), 0, {0, 3}, &parameters, &none), noxStsBadSize);
    EXPECT_EQ(m.init(frame.data(), 0, {6, -1}, &parameters, &none), noxStsBadSize);
    EXPECT_EQ(m.init(frame.data(), frame.step() - 1, {6, 3}, &parameters, &none), noxStsBadStep);
    // Models beyond any memory fail as one that cannot be had.
    EXPECT_EQ(m.init(frame.data(), 2000000000, {20000, 1000000}, &parameters, &none), noxStsNoMemory);
    EXPECT_EQ(m.init(frame.data(), INT_MAX, {INT_MAX / 3, INT_MAX}, &parameters, &none), noxStsNoMemory);
    EXPECT_EQ(none, nullptr);
}

} // namespace test
