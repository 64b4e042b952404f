// Loops that make each element of a vector from the elements at the same place in others.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rows.h"
#include "tiers.h"

namespace nox {

/// Whether elements may be done several at a time: dst is src itself, or the two do not touch.
NOX_INLINE bool inAnyOrder(const void *src, const void *dst, std::size_t bytes) {
    const std::uintptr_t distance = reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
    return distance == 0 || (distance >= bytes && 0 - distance >= bytes);
}

/// dst[i] = make(src[i]...) for ascending i. Where ranges overlap, later elements see what earlier ones have become;
/// a dst that is one of the sources runs at full speed, which the compiler's own overlap test would deny it.
template <class Make, class T, class... Source>
NOX_INLINE void makeElements(const Make &make, std::ptrdiff_t length, T *dst, const Source *...src) {
    static_assert(((sizeof(Source) == sizeof(T)) && ...));
    if ((inAnyOrder(src, dst, static_cast<std::size_t>(length) * sizeof(T)) && ...)) {
#pragma GCC ivdep
        for (std::ptrdiff_t i = 0; i < length; ++i)
            elements(dst)[i] = make(elements(src)[i]...);
        return;
    }
    for (std::ptrdiff_t i = 0; i < length; ++i) {
        elements(dst)[i] = make(elements(src)[i]...);
        __asm__ volatile("" : : : "memory"); // one at a time
    }
}

} // namespace nox
