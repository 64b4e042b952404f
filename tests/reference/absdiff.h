// Plain absolute differences.
#pragma once

#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "noxtypes.h"

namespace reference {

template <class T>
T absDiff(T a, T b) {
    if constexpr (std::is_floating_point_v<T>)
        return std::fabs(a - b);
    else
        return static_cast<T>(std::abs(int(a) - int(b)));
}

template <class T>
void absDiff(const T *src1, int src1Step, const T *src2, int src2Step, T *dst, int dstStep, NoxiSize roi) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const auto *a = reinterpret_cast<const T *>(reinterpret_cast<const char *>(src1) + y * src1Step);
            const auto *b = reinterpret_cast<const T *>(reinterpret_cast<const char *>(src2) + y * src2Step);
            auto *d = reinterpret_cast<T *>(reinterpret_cast<char *>(dst) + y * dstStep);
            d[x] = absDiff(a[x], b[x]);
        }
}

} // namespace reference
