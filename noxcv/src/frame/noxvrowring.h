// The last few rows of something that goes down an image.
#pragma once

#include <cstddef>

#include "tiers.h"

namespace nox {

/// Rows of T in a fixed piece of memory: row y takes the place of row y - rows. Position 0 of a row may lie behind
/// margin elements of its own.
template <class T>
class RowRing {
public:
    /// `memory` holds rows * stride elements.
    RowRing(T *memory, int rows, std::ptrdiff_t stride, std::ptrdiff_t margin = 0)
        : first_(memory + margin), stride_(stride), rows_(rows) {}

    /// Position 0 of row y; y may be as low as minus the number of rows.
    NOX_INLINE T *operator[](int y) const { return first_ + (y + rows_) % rows_ * stride_; }
    int rows() const { return rows_; }
    std::ptrdiff_t stride() const { return stride_; }

private:
    T *first_;
    std::ptrdiff_t stride_;
    int rows_;
};

} // namespace nox
