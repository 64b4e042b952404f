// Plain accumulators and the plain form of the fast arctangent.
#pragma once

#include <bit>
#include <cmath>
#include <type_traits>

#include <xmmintrin.h>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::accumulate {

enum class Term { Source, Square, Product, Weighted };

/// The new value of one pixel; `masked` is the form of the call, `on` the pixel's mask.
template <class T>
float accumulated(Term term, bool masked, bool on, T a, T b, float d, float alpha) {
    const auto s = static_cast<float>(a), s2 = static_cast<float>(b);
    if (term == Term::Weighted) {
        const float difference = s - d;
        const float change = difference * (on ? alpha : 0.0F);
        return d + change;
    }
    float value = term == Term::Source ? s : term == Term::Square ? s * s : s * s2;
    if (masked && std::is_floating_point_v<T>)
        value *= on ? 1.0F : 0.0F;
    else if (!on)
        value = 0.0F;
    return d + value;
}

template <class T>
void accumulate(Term term, const T *src1, int src1Step, const T *src2, int src2Step, const Nox8u *mask, int maskStep,
                float *dst, int dstStep, NoxiSize size, float alpha) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const T a = test::rowAt(src1, src1Step, y)[x], b = test::rowAt(src2, src2Step, y)[x];
            const auto d = test::rowAt(dst, dstStep, y)[x];
            const bool on = mask == nullptr || mask[y * maskStep + x] != 0;
            d = accumulated<T>(term, mask != nullptr, on, a, b, d, alpha);
        }
}

inline float arctan(float y, float x) {
    const float a = std::fabs(x), b = std::fabs(y), smaller = a < b ? a : b, larger = a < b ? b : a;
    const float m = larger < std::bit_cast<float>(0x322BCC77U) ? std::bit_cast<float>(0x322BCC77U) : larger;
    const float r = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(m)));
    const float z = smaller * (2.0F * r - (m * r) * r);
    float angle = (std::bit_cast<float>(0xC17D02D3U) * z + std::bit_cast<float>(0x42746075U)) * z +
                  std::bit_cast<float>(0xBE0FDF57U);
    if (a < b)
        angle = 90.0F - angle;
    if (x < 0)
        angle = 180.0F - angle;
    if (y < 0)
        angle = 360.0F - angle;
    return angle;
}

} // namespace reference::accumulate
