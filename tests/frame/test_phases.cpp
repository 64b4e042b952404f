#include <algorithm>
#include <atomic>
#include <cfenv>
#include <cstdlib>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <xmmintrin.h>

#include "frame/owncvomp.h"
#include "noxcv.h"
#include "support/image.h"
#include "support/threads.h"

namespace {

/// How often body is called for each role, in a call with more phases than one.
std::vector<int> rolesPlayed(int roles) {
    std::vector<std::atomic<int>> played(static_cast<std::size_t>(roles));
    nox::parallelPhases(roles, [&](const nox::Phases &phases) {
        phases.together([&](int role) { ++played[std::size_t(role)]; });
        phases.alone([] {});
        phases.together([&](int role) { ++played[std::size_t(role)]; });
    });
    return {played.begin(), played.end()};
}

TEST(Phases, EveryRoleIsPlayedWhateverTheTeam) {
    for (const int threads : test::threadCounts()) {
        const test::ThreadCount scope(threads);
        for (const int roles : {1, 2, 3, 8, 50}) {
            EXPECT_EQ(rolesPlayed(roles), std::vector<int>(std::size_t(roles), 2)) << threads;
            std::vector<int> nested;
            test::insideParallelRegion([&] { nested = rolesPlayed(roles); });
            EXPECT_EQ(nested, std::vector<int>(std::size_t(roles), 2)) << threads;
        }
    }
}

/// Rounds until nothing changes: the smaller of both neighbours goes one place further in each round.
TEST(Phases, ARoundReadsWhatTheRoundBeforeWrote) {
    constexpr int cells = 60;
    for (const int threads : test::threadCounts()) {
        const test::ThreadCount scope(threads);
        std::vector<int> old(cells, cells), now(cells);
        old[7] = 0;
        int rounds = 0;
        bool changed = true;
        nox::parallelPhases(5, [&](const nox::Phases &phases) {
            while (changed) {
                phases.together([&](int role) {
                    for (int i = role; i < cells; i += 5) {
                        const int left = i > 0 ? old[i - 1] + 1 : cells, right = i + 1 < cells ? old[i + 1] + 1 : cells;
                        now[std::size_t(i)] = std::min({old[std::size_t(i)], left, right});
                    }
                });
                phases.alone([&] {
                    changed = old != now;
                    old = now;
                    ++rounds;
                });
            }
        });
        EXPECT_EQ(rounds, cells - 7);
        for (int i = 0; i < cells; ++i)
            ASSERT_EQ(old[std::size_t(i)], std::abs(i - 7)) << threads;
    }
}

TEST(Phases, NothingIsDoneAloneTwice) {
    const test::ThreadCount scope(4);
    int count = 0;
    nox::parallelPhases(4, [&](const nox::Phases &phases) {
        for (int i = 0; i < 100; ++i)
            phases.alone([&] { ++count; });
    });
    EXPECT_EQ(count, 100);
}

TEST(Teams, NoMoreThreadsThanAskedFor) {
    for (const int threads : test::threadCounts()) {
        const test::ThreadCount scope(threads);
        for (const int most : {1, 2, 3, 8}) {
            std::atomic<int> members = 0, size = 0;
            nox::runTeam(most, [&](int index, int team) {
                EXPECT_LT(index, team);
                size = team;
                ++members;
            });
            EXPECT_EQ(members, size);
            EXPECT_LE(size, std::min(most, threads));
            EXPECT_GE(size, 1);
        }
    }
}

TEST(RowOfHalf, IsTheFirstRowBeyondHalf) {
    const auto row = [](const std::vector<int> &counts) { return nox::rowOfHalf(counts.data(), int(counts.size())); };
    EXPECT_EQ(row({1, 1, 1, 1}), 2);
    EXPECT_EQ(row({9, 1, 1}), 1); // never row 0
    EXPECT_EQ(row({0, 0, 0, 5}), 3);
    EXPECT_EQ(row({0, 0}), 2);
    EXPECT_EQ(row({7}), 1);
    EXPECT_EQ(row({2, 1, 0, 2}), 1);
    EXPECT_EQ(row({1, 1, 0, 2}), 3);
    EXPECT_EQ(row({2000000000, 2000000000, 2000000000}), 1);
}

/// The worker's control inside a team, and after one.
unsigned controlOf() { return _mm_getcsr() & ~0x3FU; }

TEST(FloatControl, AWorkerSeesTheCallersAndGetsItsOwnBack) {
    const test::ThreadCount scope(4);
    constexpr unsigned flushes = 0x8040, up = _MM_ROUND_UP;
    const auto everyControl = [] {
        std::vector<unsigned> controls(4, controlOf());
#pragma omp parallel num_threads(4)
        controls[std::size_t(owncvGetIdThreads())] = controlOf();
        return controls;
    };
    const std::vector<unsigned> before = everyControl();
    const unsigned own = _mm_getcsr();
    const int rounding = std::fegetround();
    std::fesetround(FE_UPWARD); // both units
    _mm_setcsr(_mm_getcsr() | flushes);
    const unsigned wanted = controlOf();
    EXPECT_EQ(wanted & (flushes | _MM_ROUND_MASK), flushes | up);
    std::vector<unsigned> seen(4, wanted);
    std::vector<int> modes(4, FE_UPWARD);
    nox::runTeam(4, [&](int index, int) {
        seen[std::size_t(index)] = controlOf();
        unsigned short word = 0;
        __asm__ volatile("fnstcw %0" : "=m"(word));
        modes[std::size_t(index)] = word & 0xC00;
    });
    std::fesetround(rounding);
    _mm_setcsr(own);
    EXPECT_EQ(seen, std::vector<unsigned>(4, wanted));
    EXPECT_EQ(modes, std::vector<int>(4, FE_UPWARD));
    EXPECT_EQ(everyControl(), before);
}

/// Whether a call that goes parallel gives what it should.
bool parallelCallWorks() {
    const NoxiSize size = {512, 600};
    test::Image<Nox8u> image(size.width, size.height), mask(size.width, size.height);
    image.fill(3);
    mask.fill(1);
    Nox64f norm = 0;
    return noxiNorm_L1_8u_C1MR(image.data(), image.step(), mask.data(), mask.step(), size, &norm) == noxStsNoError &&
           norm == 3.0 * size.width * size.height;
}

TEST(Fork, AChildOfAParallelProgramCompletesItsCalls) {
    const test::ThreadCount scope(4);
    ASSERT_TRUE(parallelCallWorks());
    std::atomic<int> members = 0;
    nox::runTeam(4, [&](int, int) { ++members; });
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(20); // a call that waits for the parent's threads ends here
        std::atomic<int> team = 0;
        nox::runTeam(4, [&](int, int size) { team += size; });
        _exit(parallelCallWorks() && team == 1 && rolesPlayed(6) == std::vector<int>(6, 2) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(parallelCallWorks());
}

} // namespace
