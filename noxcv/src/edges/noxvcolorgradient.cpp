// A three-channel gradient folded into one channel.
#include <algorithm>
#include <cmath>

#include "checks.h"
#include "noxcv/edges.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

enum Norm { normInf = 0, normL1 = 1, normL2 = 2 };

NOX_INLINE Nox32f magnitude(Nox32f value) { return clearSign(value); }
template <class T>
NOX_INLINE T magnitude(T value) {
    return value;
}

struct Maximum {
    template <class T>
    NOX_INLINE T operator()(T a, T b, T c) const {
        const T first = magnitude(a), second = magnitude(b), third = magnitude(c);
        const T larger = first > second ? first : second;
        return larger > third ? larger : third;
    }
};

struct Sum {
    NOX_INLINE Nox8u operator()(Nox8u a, Nox8u b, Nox8u c) const {
        return static_cast<Nox8u>(((a + b + c) * 1365 + 2048) >> 12);
    }
    NOX_INLINE Nox16u operator()(Nox16u a, Nox16u b, Nox16u c) const {
        return static_cast<Nox16u>(((a + b + c) * 5461 + 8192) >> 14);
    }
    NOX_INLINE Nox32f operator()(Nox32f a, Nox32f b, Nox32f c) const {
        return magnitude(a) + magnitude(b) + magnitude(c);
    }
};

struct Root {
    // A third of an integer is at least 1/12 away from every square of a half integer, so no rounding of quotient,
    // root or sum in single precision can move the result across an integer.
    NOX_INLINE Nox8u operator()(Nox8u a, Nox8u b, Nox8u c) const {
        const auto third = static_cast<Nox32f>(a * a + b * b + c * c) / 3.0F;
        return static_cast<Nox8u>(static_cast<int>(std::sqrt(third) + 0.5F));
    }
    // The same holds in double precision for sums below 2^34, exact in it.
    NOX_INLINE Nox16u operator()(Nox16u a, Nox16u b, Nox16u c) const {
        const double sum = static_cast<double>(a) * a + square(b) + square(c);
        return static_cast<Nox16u>(static_cast<int>(std::sqrt(std::max(sum, 0.0) / 3.0) + 0.5));
    }
    NOX_INLINE Nox32f operator()(Nox32f a, Nox32f b, Nox32f c) const { return std::sqrt(a * a + b * b + c * c); }

private:
    /// A product of 32 bits, read as signed: it wraps from 46341 on.
    NOX_INLINE static double square(Nox16u value) { return static_cast<int>(static_cast<unsigned>(value) * value); }
};

template <class Fold, class T>
NOX_TIERS void foldRows(Rows<const T> src, Rows<T> dst, NoxiSize roi) {
    for (int y = 0; y < roi.height; ++y) {
        const Element<T> *s = src[y];
        Element<T> *d = dst[y];
        for (int x = 0; x < roi.width; ++x)
            d[x] = Fold()(s[3 * x], s[3 * x + 1], s[3 * x + 2]);
    }
}

template <class T>
NoxStatus colorToGray(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int norm) {
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<T>(srcStep, 3LL * roi.width),
                     checkStep<T>(dstStep, roi.width), checkEvenSteps<T>(srcStep, dstStep),
                     require(norm >= normInf && norm <= normL2, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    const Rows<const T> from{src, srcStep};
    const Rows<T> to{dst, dstStep};
    if (norm == normInf)
        foldRows<Maximum>(from, to, roi);
    else if (norm == normL1)
        foldRows<Sum>(from, to, roi);
    else
        foldRows<Root>(from, to, roi);
    return noxStsNoError;
}

} // namespace

#define NOX_COLOR_TO_GRAY(FUNCTION, TYPE)                                                                              \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int norm) {                 \
        return colorToGray(src, srcStep, dst, dstStep, roi, norm);                                                     \
    }
NOX_COLOR_TO_GRAY(noxiGradientColorToGray_8u_C3C1R, Nox8u)
NOX_COLOR_TO_GRAY(noxiGradientColorToGray_16u_C3C1R, Nox16u)
NOX_COLOR_TO_GRAY(noxiGradientColorToGray_32f_C3C1R, Nox32f)
