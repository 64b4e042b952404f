// Taps of Sobel kernels of any odd size: repeated sums and differences of neighbours, in place.
#include "checks.h"
#include "noxcv/filter.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

NOX_INLINE Nox16s add(Nox16s a, Nox16s b) { return wrap<Nox16s>(a + b); }
NOX_INLINE Nox16s subtract(Nox16s a, Nox16s b) { return wrap<Nox16s>(a - b); }
NOX_INLINE Nox32f add(Nox32f a, Nox32f b) { return a + b; }
NOX_INLINE Nox32f subtract(Nox32f a, Nox32f b) { return a - b; }

/// From 0, ..., 0, 1: size - dx - 1 sums of neighbours, then dx differences.
template <class T>
NoxStatus sobelKernel(T *taps, int size, int dx, int sign) {
    const NoxStatus status =
        firstFailure(checkPointers(taps), require(size >= 1 && size % 2 == 1 && dx >= 0 && dx < size, noxStsBadSize));
    if (status != noxStsNoError)
        return status;
    Element<T> *kernel = taps;
    for (int j = 0; j < size; ++j)
        kernel[j] = static_cast<T>(j == size - 1 ? 1 : 0);
    for (int i = 1; i < size; ++i)
        for (int j = size - 1 - i; j < size - 1; ++j)
            kernel[j] = i < size - dx ? add(kernel[j], kernel[j + 1]) : subtract(kernel[j], kernel[j + 1]);
    if (sign < 0)
        for (int j = 0; j < size; ++j)
            kernel[j] = subtract(T(0), kernel[j]);
    return noxStsNoError;
}

} // namespace

NoxStatus noxiGenSobelKernel_16s(Nox16s *kernel, int kernelSize, int dx, int sign) {
    return sobelKernel(kernel, kernelSize, dx, sign);
}

NoxStatus noxiGenSobelKernel_32f(Nox32f *kernel, int kernelSize, int dx, int sign) {
    return sobelKernel(kernel, kernelSize, dx, sign);
}
