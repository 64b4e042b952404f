// A view of an image's rows: keeps byte-step arithmetic in one place.
#pragma once

#include <cstddef>
#include <type_traits>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// Row y of an image of T with a byte step.
template <class T>
struct Rows {
    using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;

    T *base;
    std::ptrdiff_t step;

    NOX_INLINE T *operator[](std::ptrdiff_t y) const {
        return reinterpret_cast<T *>(reinterpret_cast<Byte *>(base) + y * step);
    }
    /// The same image from row y on.
    NOX_INLINE Rows from(std::ptrdiff_t y) const { return {(*this)[y], step}; }
};

template <class T>
Rows(T *, int) -> Rows<T>;

/// Number of pixels; an area of two ints needs 64 bits.
inline long long area(NoxiSize size) { return static_cast<long long>(size.width) * size.height; }

/// Rounds up to a multiple of a power of two.
template <class Int>
constexpr Int roundUp(Int value, Int multiple) {
    return (value + multiple - 1) & ~(multiple - 1);
}

/// Moves a pointer up to a multiple of a power of two.
template <class T>
inline T *alignUp(T *pointer, std::size_t multiple) {
    const auto address = reinterpret_cast<std::size_t>(pointer);
    return reinterpret_cast<T *>(roundUp(address, multiple));
}

} // namespace nox
