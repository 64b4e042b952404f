// A view of an image's rows: keeps byte-step arithmetic in one place.
#pragma once

#include <climits>
#include <cstddef>
#include <type_traits>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// T as it lies in an image: at any address, whatever the type's own alignment, and under any other type's name. A
/// kernel reads and writes pixels through pointers to this, never through plain T pointers: the compiler would take a
/// plain pointer's alignment for granted, and some of its tunings build vector loops on that.
///
/// The alignment belongs to the pointer's spelling, not to the type: a reference to such an element, and a template
/// argument that is deduced from one, are those of plain T. So pass elements by value, and let kernels' parameters be
/// spelled `const Element<T> *`. Bytes are what they are, and a structure that stands for a pixel is packed itself.
template <class T, bool asItIs = alignof(T) == 1 || std::is_class_v<T>>
struct ElementOf {
    typedef T Type __attribute__((aligned(1), may_alias)); // an alias declaration would lose the attributes
};
template <class T>
struct ElementOf<T, true> {
    using Type = T;
};
template <class T>
using Element = typename ElementOf<T>::Type;

/// The elements at a pointer that may not be aligned: elements(p)[i] is element i. For pointers whose type is deduced.
template <class T>
NOX_INLINE Element<T> *elements(T *at) {
    return at;
}

/// Row y of an image of T with a byte step.
template <class T>
struct Rows {
    using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;

    T *base;
    std::ptrdiff_t step;

    NOX_INLINE Element<T> *operator[](std::ptrdiff_t y) const {
        return reinterpret_cast<Element<T> *>(reinterpret_cast<Byte *>(base) + y * step);
    }
    /// The same image from row y on.
    NOX_INLINE Rows from(std::ptrdiff_t y) const { return {(*this)[y], step}; }
};

template <class T>
Rows(T *, int) -> Rows<T>;

/// Number of pixels; an area of two ints needs 64 bits.
inline long long area(NoxiSize size) { return static_cast<long long>(size.width) * size.height; }

/// Whether the rows of an image, `length` elements each, follow each other without a gap.
template <class T>
NOX_INLINE bool isPacked(Rows<T> image, std::ptrdiff_t length) {
    return image.step == length * static_cast<std::ptrdiff_t>(sizeof(T));
}

/// The rows that a loop goes through: `count` rows of `length` elements.
struct Runs {
    std::ptrdiff_t length;
    int count;
};

/// A region as one long row where all its images are packed, else its rows as they are. The long row's length fits in
/// an int.
NOX_INLINE Runs joinedRows(std::ptrdiff_t length, int height, bool packed) {
    const bool joined = packed && static_cast<long long>(length) * height <= INT_MAX;
    return joined ? Runs{length * height, 1} : Runs{length, height};
}

/// body(length, row...) for the joined rows of images whose rows all have `length` elements.
template <class Body, class... T>
NOX_INLINE void forJoinedRows(std::ptrdiff_t length, int height, const Body &body, Rows<T>... images) {
    const Runs runs = joinedRows(length, height, (isPacked(images, length) && ...));
    for (int y = 0; y < runs.count; ++y)
        body(runs.length, images[y]...);
}

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
