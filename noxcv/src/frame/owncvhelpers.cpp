#include "owncvhelpers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "rows.h"

using namespace nox;

namespace {

NOX_TIERS void multiplyBuffers(std::ptrdiff_t count, Element<Nox32f> *dx, Element<Nox32f> *dxdy, Element<Nox32f> *dy) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const Nox32f x = dx[i], y = dy[i];
        dxdy[i] = x * y;
        dx[i] = x * x;
        dy[i] = y * y;
    }
}

Nox16s narrowElement(const Nox32f *row, int x) {
    Nox16s value;
    std::memcpy(&value, reinterpret_cast<const unsigned char *>(row) + x * sizeof(Nox16s), sizeof(value));
    return value;
}

} // namespace

Nox32f owncvGetScale_32s32f(int scaleFactor) {
    // ldexp gives infinity at 2^128 and zero at 2^-150 (a tie that goes to even), and denormals between.
    return static_cast<Nox32f>(std::ldexp(1.0, -std::clamp(scaleFactor, -128, 150)));
}

Nox64f owncvGetScale_32s64f(int scaleFactor) {
    const long long exponent = std::clamp(-static_cast<long long>(scaleFactor), -1087LL, 1024LL);
    return std::ldexp(1.0, static_cast<int>(exponent));
}

int owncvRowMatrAlErr(const void *const *rows, int count) {
    constexpr std::uintptr_t alignment = 16;
    for (int y = 0; y < count; ++y)
        if (reinterpret_cast<std::uintptr_t>(elements(rows)[y]) % alignment != 0)
            return 1;
    return 0;
}

void owncvMulDBuffers_32f(int width, int height, Nox32f *dx, Nox32f *dxdy, Nox32f *dy) {
    if (width > 0 && height > 0)
        multiplyBuffers(static_cast<std::ptrdiff_t>(width) * height, dx, dxdy, dy);
}

void owncvMulDBuffers_16s32f(int width, int height, Nox32f *dx, Nox32f *dxdy, Nox32f *dy) {
    for (int y = 0; y < height; ++y, dx += width, dxdy += width, dy += width) {
        // From the last element to the first: a 32-bit square never covers a 16-bit value that is still to be read.
        for (int x = width - 1; x >= 0; --x) {
            const auto gx = static_cast<Nox32f>(narrowElement(dx, x));
            const auto gy = static_cast<Nox32f>(narrowElement(dy, x));
            elements(dx)[x] = gx * gx;
            elements(dxdy)[x] = gx * gy;
            elements(dy)[x] = gy * gy;
        }
    }
}
