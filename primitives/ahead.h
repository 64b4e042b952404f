// Memory that is asked for before it is used.
#pragma once

#include <cstdint>

#include "tiers.h"

namespace nox {

/// The row that the next pass over an image begins with. The pass before it asks for it on its way, so that memory
/// works while the processor does: worth it in images that the nearest caches do not keep, where it makes filters of
/// two passes up to twice as fast, and a loss of some 5 percent in others. Asking reads nothing, so any address will
/// do.
class Ahead {
public:
    /// Nothing.
    Ahead() = default;
    template <class T>
    explicit Ahead(const T *row) : at_(reinterpret_cast<std::uintptr_t>(row)), bytes_(sizeof(T)) {}

    explicit operator bool() const { return at_ != 0; }
    /// From element x on.
    Ahead from(int x) const {
        Ahead rest = *this;
        rest.at_ += static_cast<std::uintptr_t>(x) * bytes_;
        return rest;
    }
    /// Asks for the next elements, at most a cache line of them.
    NOX_INLINE void ask(int count) {
        __builtin_prefetch(reinterpret_cast<const void *>(at_));
        at_ += static_cast<std::uintptr_t>(count) * bytes_;
    }

private:
    std::uintptr_t at_ = 0, bytes_ = 0;
};

/// In the place of an Ahead, for kernels that are compiled once with and once without: in the nearest caches the test
/// alone costs a tenth of a filter's time.
struct NothingAhead {
    NOX_INLINE NothingAhead from(int /*x*/) const { return {}; }
    NOX_INLINE void ask(int /*count*/) const {}
};

/// kernel(what comes next).
template <class Kernel>
NOX_INLINE auto asking(const Ahead &ahead, const Kernel &kernel) {
    return ahead ? kernel(ahead) : kernel(NothingAhead());
}

/// Whether images of so many bytes together are too large to stay in the nearest caches from one call to the next.
constexpr bool leavesCaches(long long bytes) { return bytes > 1 << 20; }

} // namespace nox
