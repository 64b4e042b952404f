// The thread frame for a data-race detector, over standard threads: slices, phases and reductions, from two callers at
// once. Exits with 0 when all came out right; with an argument a race is made, which the detector must report.
#include <cstdio>
#include <numeric>
#include <thread>
#include <vector>

#include "frame/owncvomp.h"
#include "statistics/noxvreducerows.h"

namespace {

/// Rows are written by slices and read by the caller.
bool slicesWriteRows() {
    std::vector<int> rows(1001, 0);
    nox::parallelSlices(1001, 7, [&](nox::Slice slice) {
        for (int y = slice.first; y < slice.first + slice.count; ++y)
            rows[std::size_t(y)] = y;
    });
    return std::accumulate(rows.begin(), rows.end(), 0) == 1001 * 500;
}

/// Each round reads what other roles wrote in the round before, and what was written alone.
bool phasesReadTheRoundBefore() {
    constexpr int roles = 5, rounds = 40;
    int now[roles] = {}, next[roles] = {}, round = 0;
    nox::parallelPhases(roles, [&](const nox::Phases &phases) {
        while (round < rounds) {
            phases.together([&](int role) { next[role] = now[(role + 1) % roles] + 1; });
            phases.together([&](int role) { now[role] = next[role]; });
            phases.alone([&] { ++round; });
        }
    });
    return std::accumulate(now, now + roles, 0) == roles * rounds;
}

bool reductionsJoin(int slices) {
    struct Sum {
        long long value;
    } sum = {0};
    const auto rows = [](int first, int count) {
        Sum part = {0};
        for (int y = first; y < first + count; ++y)
            part.value += y;
        return part;
    };
    return nox::reduceRows(
               999, slices, rows, [](Sum &total, const Sum &part) { total.value += part.value; }, sum) ==
               noxStsNoError &&
           sum.value == 999LL * 998 / 2;
}

bool race() {
    int count = 0;
    nox::parallelSlices(1000, 4, [&](nox::Slice slice) { count += slice.count; });
    return count > 0;
}

bool everything() {
    for (int i = 0; i < 20; ++i)
        if (!slicesWriteRows() || !phasesReadTheRoundBefore() || !reductionsJoin(3) || !reductionsJoin(40))
            return false;
    return true;
}

} // namespace

int main(int argc, char **) {
    noxSetNumThreads(4);
    if (argc > 1)
        return race() ? 0 : 1;
    bool other = false;
    std::thread caller([&] { other = everything(); });
    const bool own = everything();
    caller.join();
    std::printf("races: %s\n", own && other ? "all came out right" : "a wrong result");
    return own && other ? 0 : 1;
}
