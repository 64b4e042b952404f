// Memory of models whose sizes may pass what an int holds.
#pragma once

#include <climits>
#include <cstring>

#include "noxcv/primitives.h"

namespace nox {

/// A block from noxsMalloc_8u; null when there is none, or for a size that it cannot be asked for.
inline Nox8u *allocateBytes(long long bytes) {
    return bytes > INT_MAX ? nullptr : noxsMalloc_8u(static_cast<int>(bytes));
}

/// `count` elements of T, all bytes 0.
template <class T>
T *allocateZeroed(long long count) {
    const long long bytes = count * static_cast<long long>(sizeof(T));
    Nox8u *block = allocateBytes(bytes);
    if (block != nullptr)
        std::memset(block, 0, static_cast<std::size_t>(bytes));
    return reinterpret_cast<T *>(block);
}

} // namespace nox
