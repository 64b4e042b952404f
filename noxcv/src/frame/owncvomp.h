// The thread frame: machine queries, and the division of a call's rows among threads.
#pragma once

#include <algorithm>

#ifdef _OPENMP
#include <omp.h>
#endif
// Standard threads in place of the runtime's, for a data-race detector: it does not see how the runtime synchronises.
#ifdef NOXCV_STANDARD_THREADS
#include <barrier>
#include <thread>
#include <vector>
#endif

#include "noxcore.h"
#include "noxtypes.h"
#include "rows.h"
#include "tiers.h"

extern "C" {
/// The thread count that the core library reports.
NOX_GLOBAL int owncvGetNumThreads();
/// The same: the count that buffers are sized for.
NOX_GLOBAL int owncvGetMaxNumThreads();
/// The caller's number in the current team.
NOX_GLOBAL int owncvGetIdThreads();
/// The core count, with 1 core told as 0: not zero means that a parallel region pays.
NOX_GLOBAL int runomp();
/// As runomp for kernels of 3 and 5 taps; never zero for other sizes, whose serial form is no faster.
NOX_GLOBAL int runsepomp(int kernelSize);
/// The largest cache in bytes.
NOX_GLOBAL int owncvGetCacheSize();
}

namespace nox {

/// One thread's share of a call.
struct Slice {
    int first; ///< first row
    int count; ///< number of rows, may be 0
    int index; ///< slice number, 0 to the thread count minus 1
};

/// The number of slices: the core library's count, at least 1 whatever it answers.
inline int sliceCount() { return std::max(1, owncvGetNumThreads()); }

/// Slice `index` of `slices`: equal shares, the last one takes the remainder on top.
inline Slice sliceOf(int rows, int index, int slices) {
    const int share = rows / slices;
    return {index * share, index == slices - 1 ? rows - index * share : share, index};
}

/// The area test: at least 2^shift pixels for each thread.
inline bool largeEnough(NoxiSize roi, int shift) {
    return area(roi) >= (static_cast<long long>(sliceCount()) << shift);
}

/// The floating-point control of a thread: rounding, flushing of denormals and masks, of both arithmetic units.
class FloatControl {
public:
    /// That of the calling thread.
    static FloatControl ofThisThread();
    /// Sets it, with no exception flag raised.
    void apply() const;
    /// Sets it with the exception flags that it was taken with.
    void restore() const;

private:
    unsigned vector_;      // MXCSR with its flags
    unsigned extended_[7]; // the x87 environment; its first half word is the control word
};

/// Whether a call may open a team: false in a child of fork, which has none of the runtime's threads.
bool mayOpenTeam();

#ifdef NOXCV_STANDARD_THREADS
/// Where the threads of the team that the calling one belongs to wait for each other.
inline thread_local std::barrier<> *teamBarrier = nullptr;

template <class Body>
void runStandardTeam(int size, const Body &body) {
    std::barrier<> all(size);
    const auto run = [&](int index) {
        teamBarrier = &all;
        body(index, size);
        teamBarrier = nullptr;
    };
    std::vector<std::thread> workers;
    for (int index = 1; index < size; ++index)
        workers.emplace_back(run, index);
    run(0);
    for (std::thread &worker : workers)
        worker.join();
}
#endif

/// body(index, size) on every thread of a team of at most `most` threads, and no more than threads_omp_of_n_nox; the
/// runtime may deliver fewer (nested region, thread limit). The team works under the caller's floating-point control,
/// and each of its threads has its own again afterwards. A team of one is the calling thread alone, with no region.
template <class Body>
void runTeam(int most, const Body &body) {
    const int asked = std::min(most, threads_omp_of_n_nox);
    if (asked <= 1 || !mayOpenTeam()) {
        body(0, 1);
        return;
    }
#if defined(NOXCV_STANDARD_THREADS)
    runStandardTeam(asked, body);
#elif defined(_OPENMP)
    const FloatControl control = FloatControl::ofThisThread();
#pragma omp parallel num_threads(asked)
    {
        const int index = owncvGetIdThreads();
        if (index == 0) {
            body(0, omp_get_num_threads()); // the caller itself: its exception flags go on
        } else {
            const FloatControl own = FloatControl::ofThisThread();
            control.apply();
            body(index, omp_get_num_threads());
            own.restore();
        }
    }
#endif
}

/// Runs body(Slice) for every slice of `rows` rows in a team. Each thread takes every team-size-th slice, so that all
/// slices are done whatever team comes. Slices are numbered, so results joined in slice order do not depend on the
/// team. A family that wants fewer threads asks for fewer slices.
template <class Body>
void parallelSlices(int rows, int slices, const Body &body) {
    runTeam(slices, [&](int index, int team) {
        for (int i = index; i < slices; i += team)
            body(sliceOf(rows, i, slices));
    });
}

/// A thread's view of a call whose threads go through phases together. The work of a phase is divided into roles, whose
/// number does not depend on the team: a thread of a small team plays several, one after the other. So a phase's roles
/// may not wait for each other, and may read only what earlier phases wrote.
class Phases {
public:
    Phases(int roles, int index, int team) : roles_(roles), index_(index), team_(team) {}

    /// body(role) for every role, 0 to the number of roles minus 1; no thread goes on before all are done.
    template <class Body>
    void together(const Body &body) const {
        for (int role = index_; role < roles_; role += team_)
            body(role);
        wait();
    }
    /// body() once, on the calling thread of the call, while the others wait.
    template <class Body>
    void alone(const Body &body) const {
        if (index_ == 0)
            body();
        wait();
    }

private:
    void wait() const {
#if defined(NOXCV_STANDARD_THREADS)
        if (team_ > 1)
            teamBarrier->arrive_and_wait();
#elif defined(_OPENMP)
        if (team_ > 1) { // a team of one may stand in a region of the caller's, whose barrier is not ours
#pragma omp barrier
        }
#endif
    }
    int roles_, index_, team_;
};

/// Runs body(phases) on every thread of a team with the given number of roles. All threads must go through the same
/// phases: what they decide on must be the same for all, as what is written in alone() is.
template <class Body>
void parallelPhases(int roles, const Body &body) {
    runTeam(roles, [&](int index, int team) { body(Phases(roles, index, team)); });
}

/// Where a sum over rows passes its half: the first row from 1 on at which the sum of counts[0] to counts[row] is
/// greater than half of all (rounded down); `rows` when there is none.
inline int rowOfHalf(const int *counts, int rows) {
    long long total = 0, sum = 0;
    for (int y = 0; y < rows; ++y)
        total += counts[y];
    for (int y = 0; y < rows; ++y) {
        sum += counts[y];
        if (y >= 1 && sum > total / 2)
            return y;
    }
    return rows;
}

} // namespace nox
