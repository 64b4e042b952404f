// An allocator of the test's own behind the library's allocator entries.
#pragma once

#include <atomic>
#include <cstdlib>

#include "noxcv/primitives.h"

namespace test {

/// For a scope, every allocation and release of the library is counted, and one allocation can be made to fail.
class CountedAllocator {
public:
    /// failAt: the number of the allocation (from 1) that returns null; 0 for none.
    explicit CountedAllocator(int failAt = 0) : malloc_(nox_malloc), free_(nox_free) {
        state() = {};
        state().failAt = failAt;
        nox_malloc = countedMalloc;
        nox_free = countedFree;
    }
    CountedAllocator(const CountedAllocator &) = delete;
    CountedAllocator &operator=(const CountedAllocator &) = delete;
    ~CountedAllocator() {
        nox_malloc = malloc_;
        nox_free = free_;
    }

    static int allocations() { return state().allocations; }
    static int live() { return state().live; }
    static std::size_t lastSize() { return state().lastSize; }

private:
    struct State {
        int failAt = 0, allocations = 0, live = 0;
        std::size_t lastSize = 0;
    };
    static State &state() {
        static State counts;
        return counts;
    }
    static void *countedMalloc(std::size_t size) {
        state().lastSize = size;
        if (++state().allocations == state().failAt)
            return nullptr;
        ++state().live;
        return std::malloc(size);
    }
    static void countedFree(void *block) {
        --state().live;
        std::free(block);
    }

    void *(*malloc_)(std::size_t);
    void (*free_)(void *);
};

} // namespace test
