// Plain absolute differences.
#pragma once

#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::absdiff {

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
            const T a = test::rowAt(src1, src1Step, y)[x], b = test::rowAt(src2, src2Step, y)[x];
            test::rowAt(dst, dstStep, y)[x] = absDiff(a, b);
        }
}

} // namespace reference::absdiff
