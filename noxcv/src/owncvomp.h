// The thread frame: machine queries, and the division of a call's rows among threads.
#pragma once

#include <algorithm>

#include <omp.h>

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
    return area(roi) >= (static_cast<long long>(owncvGetMaxNumThreads()) << shift);
}

/// Runs body(Slice) for every slice of `rows` rows in a team of threads_omp_of_n_nox threads. The runtime may deliver
/// a smaller team than asked (nested region, thread limit): each thread takes every team-size-th slice, so that all
/// slices are done whatever comes. Slices are numbered, so results joined in slice order do not depend on the team.
/// A single slice runs on the calling thread, without a region.
template <class Body>
void parallelSlices(int rows, int slices, const Body &body) {
    if (slices == 1) {
        body(sliceOf(rows, 0, 1));
        return;
    }
#pragma omp parallel num_threads(std::max(1, threads_omp_of_n_nox))
    {
        const int team = omp_get_num_threads();
        for (int index = owncvGetIdThreads(); index < slices; index += team)
            body(sliceOf(rows, index, slices));
    }
}

} // namespace nox
