// Copies of rows.
#pragma once

#include <cstddef>

#include "rows.h"

namespace nox {

/// std::memmove(to, from, bytes), which it calls for few bytes, above 32 KB and where the two overlap. In between, in
/// the nearest cache, the C library's copy is as slow as half of this one in 32-bit code; behind it memory decides.
void copyBytes(void *to, const void *from, std::size_t bytes);

/// The same for rows of `rowBytes` bytes from the first to the last, packed images as one row.
void copyRows(Rows<const Nox8u> src, Rows<Nox8u> dst, std::ptrdiff_t rowBytes, int height);

} // namespace nox
