// Thread counts under test.
#pragma once

#include <omp.h>

#include <vector>

#include "noxcore.h"

namespace test {

/// Sets the library's thread count for a scope.
class ThreadCount {
public:
    explicit ThreadCount(int count) {
        noxGetNumThreads(&before_);
        noxSetNumThreads(count);
    }
    ThreadCount(const ThreadCount &) = delete;
    ThreadCount &operator=(const ThreadCount &) = delete;
    ~ThreadCount() { noxSetNumThreads(before_); }

private:
    int before_ = 1;
};

/// Counts that every parallel entry is compared under.
inline std::vector<int> threadCounts() { return {1, 2, 3, 4, 40}; }

/// Runs body once from inside a parallel region of the caller's, where the runtime delivers a team of one.
template <class Body>
void insideParallelRegion(const Body &body) {
#pragma omp parallel num_threads(2)
    {
#pragma omp single
        body();
    }
}

} // namespace test
