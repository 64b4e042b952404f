// Memory that is asked for before it is used.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rows.h"
#include "tiers.h"

namespace nox {

constexpr int cacheLine = 64; ///< bytes

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
    /// Asks for the next elements, however many lines they are; nothing asks for nothing.
    NOX_INLINE void askAll(int count) {
        if (at_ == 0)
            return;
        const std::uintptr_t end = at_ + static_cast<std::uintptr_t>(count) * bytes_;
        for (; at_ < end; at_ += cacheLine)
            __builtin_prefetch(reinterpret_cast<const void *>(at_));
        at_ = end;
    }

private:
    std::uintptr_t at_ = 0, bytes_ = 0;
};

/// Rows of two images that the next passes begin with: as many that are read as are written. For kernels that tell
/// where in a row they are.
template <int rows>
class AheadRows {
public:
    /// Nothing.
    AheadRows() = default;
    /// Rows y, y + 1 ... of what is read, and rows z, z + 1 ... of what is written.
    template <class From, class To>
    AheadRows(const Rows<const From> &from, int y, const Rows<To> &to, int z)
        : from_(address(from, y)), to_(address(to, z)), fromStep_(static_cast<std::uintptr_t>(from.step)),
          toStep_(static_cast<std::uintptr_t>(to.step)) {}

    explicit operator bool() const { return from_ != 0; }
    /// Asks for `bytes` bytes of each row, from byte `first` on.
    NOX_INLINE void askAt(std::ptrdiff_t first, int bytes) const {
        for (int i = 0; i < bytes; i += cacheLine) {
            std::uintptr_t from = from_ + static_cast<std::uintptr_t>(first + i),
                           to = to_ + static_cast<std::uintptr_t>(first + i);
            for (int row = 0; row < rows; ++row, from += fromStep_, to += toStep_) {
                __builtin_prefetch(reinterpret_cast<const void *>(from));
                __builtin_prefetch(reinterpret_cast<const void *>(to));
            }
        }
    }

private:
    template <class T>
    static std::uintptr_t address(const Rows<T> &image, int y) {
        return reinterpret_cast<std::uintptr_t>(image.base) +
               static_cast<std::uintptr_t>(y) * static_cast<std::uintptr_t>(image.step);
    }

    std::uintptr_t from_ = 0, to_ = 0, fromStep_ = 0, toStep_ = 0;
};

/// In the place of what comes next, for kernels that are compiled once with and once without: in the nearest caches the
/// test alone costs a tenth of a filter's time.
struct NothingAhead {
    NOX_INLINE NothingAhead from(int /*x*/) const { return {}; }
    NOX_INLINE void ask(int /*count*/) const {}
    NOX_INLINE void askAt(std::ptrdiff_t /*first*/, int /*bytes*/) const {}
    NOX_INLINE void askAll(int /*count*/) const {}
};

/// kernel(what comes next).
template <class Next, class Kernel>
NOX_INLINE auto asking(const Next &ahead, const Kernel &kernel) {
    return ahead ? kernel(ahead) : kernel(NothingAhead());
}
template <class Kernel>
NOX_INLINE auto asking(const NothingAhead &ahead, const Kernel &kernel) {
    return kernel(ahead);
}

/// body(x, length) for `count` elements of a row: at once, or where it asks for something in pieces, so that loops over
/// a piece need no asking of their own and stay vector code. `asked` elements are asked for on the way.
template <int most, class Body>
NOX_INLINE void inPieces(int count, const Ahead &ahead, int asked, const Body &body) {
    if (!ahead)
        return body(0, count);
    Ahead next = ahead;
    for (int x = 0, length; x < count; x += length) {
        length = count - x < most ? count - x : most;
        next.askAll(static_cast<int>(static_cast<long long>(asked) * length / count));
        body(x, length);
    }
}

/// Whether images of so many bytes together are too large, or so many times too large, to stay in the nearest caches
/// from one call to the next.
constexpr bool leavesCaches(long long bytes, int times = 1) { return bytes > (1LL << 20) * times; }

} // namespace nox
