// Vectors times a constant, and conversion of elements.
#include "checks.h"
#include "noxcv/frame.h"
#include "numerics.h"
#include "tiers.h"

using namespace nox;

namespace {

template <class Scale>
NOX_INLINE void mulC(Nox16s value, Nox16s *srcDst, int length, const Scale &scale) {
    for (int i = 0; i < length; ++i)
        srcDst[i] = scale(value * srcDst[i]);
}

NOX_TIERS void ownsMulC_16s_I(Nox16s value, Nox16s *srcDst, int length) {
    mulC(value, srcDst, length, [](int product) NOX_INLINE_LAMBDA { return saturate<Nox16s>(product); });
}

NOX_TIERS void ownsMulC_16s_I_PosSfs(Nox16s value, Nox16s *srcDst, int length, int shift) {
    mulC(value, srcDst, length,
         [shift](int product) NOX_INLINE_LAMBDA { return saturate<Nox16s>(shiftRightNearestEven(product, shift)); });
}

/// The product is clamped before the shift as well as after it: one above 32767 counts as 32767.
NOX_TIERS void ownsMulC_16s_I_NegSfs(Nox16s value, Nox16s *srcDst, int length, int shift) {
    mulC(value, srcDst, length, [shift](int product) NOX_INLINE_LAMBDA {
        return saturate<Nox16s>(static_cast<int>(saturate<Nox16s>(product)) * (1 << shift));
    });
}

/// The limit of ever larger factors.
NOX_TIERS void ownsMulC_16s_I_Bound(Nox16s value, Nox16s *srcDst, int length) {
    mulC(value, srcDst, length, [](int product) NOX_INLINE_LAMBDA {
        return static_cast<Nox16s>(product > 0 ? 32767 : product < 0 ? -32768 : 0);
    });
}

NOX_TIERS void ownsMulC_32f_I(Nox32f value, Nox32f *srcDst, int length) {
    for (int i = 0; i < length; ++i)
        srcDst[i] = srcDst[i] * value;
}

NOX_TIERS void convert(const Nox16u *src, Nox32f *dst, int length) {
    for (int i = 0; i < length; ++i)
        dst[i] = static_cast<Nox32f>(src[i]);
}

} // namespace

NoxStatus noxsMulC_16s_ISfs(Nox16s value, Nox16s *srcDst, int length, int scaleFactor) {
    constexpr int largestRightShift = 30, largestLeftShift = 15;
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    if (status != noxStsNoError)
        return status;
    if (value == 0 || scaleFactor > largestRightShift)
        return noxsZero_16s(srcDst, length);
    if (scaleFactor > 0)
        ownsMulC_16s_I_PosSfs(value, srcDst, length, scaleFactor);
    else if (scaleFactor < -largestLeftShift)
        ownsMulC_16s_I_Bound(value, srcDst, length);
    else if (scaleFactor < 0)
        ownsMulC_16s_I_NegSfs(value, srcDst, length, -scaleFactor);
    else if (value != 1)
        ownsMulC_16s_I(value, srcDst, length);
    return noxStsNoError;
}

NoxStatus noxsMulC_32f_I(Nox32f value, Nox32f *srcDst, int length) {
    const NoxStatus status = firstFailure(checkPointers(srcDst), checkLength(length));
    // A not-a-number counts as 1 and leaves the vector as it is; 0 makes all of it 0, whatever stood there.
    if (status != noxStsNoError || value == 1.0F || value != value)
        return status;
    if (value == 0.0F)
        return noxsZero_32f(srcDst, length);
    ownsMulC_32f_I(value, srcDst, length);
    return noxStsNoError;
}

NoxStatus noxsConvert_16u32f(const Nox16u *src, Nox32f *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkLength(length));
    if (status == noxStsNoError)
        convert(src, dst, length);
    return status;
}
