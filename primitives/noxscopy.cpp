// Copy, set and zero of vectors.
//
// The system's copy and fill choose between plain and cache-bypassing stores by the size and the processor's caches;
// measured against fixed limits they are never slower.
#include <bit>
#include <cstddef>
#include <cstring>

#include "checks.h"
#include "noxcv/primitives.h"
#include "owncopybytes.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace {

template <class T>
std::size_t bytesOf(int length) {
    return static_cast<std::size_t>(length) * sizeof(T);
}

NOX_TIERS void ownsSet_32s(Nox32s pattern, Element<Nox32s> *dst, std::ptrdiff_t length) {
    for (std::ptrdiff_t i = 0; i < length; ++i)
        dst[i] = pattern;
}

template <class T>
NoxStatus copyVector(const T *src, T *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkLength(length));
    if (status == noxStsNoError)
        copyBytes(dst, src, bytesOf<T>(length));
    return status;
}

template <class T>
NoxStatus zeroVector(T *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(dst), checkLength(length));
    if (status == noxStsNoError)
        std::memset(dst, 0, bytesOf<T>(length));
    return status;
}

} // namespace

NoxStatus noxsCopy_8u(const Nox8u *src, Nox8u *dst, int length) { return copyVector(src, dst, length); }
NoxStatus noxsCopy_32f(const Nox32f *src, Nox32f *dst, int length) { return copyVector(src, dst, length); }

NoxStatus noxsZero_8u(Nox8u *dst, int length) { return zeroVector(dst, length); }
NoxStatus noxsZero_16s(Nox16s *dst, int length) { return zeroVector(dst, length); }
NoxStatus noxsZero_32s(Nox32s *dst, int length) { return zeroVector(dst, length); }
NoxStatus noxsZero_32f(Nox32f *dst, int length) { return zeroVector(dst, length); }

NoxStatus noxsSet_8u(Nox8u value, Nox8u *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(dst), checkLength(length));
    if (status == noxStsNoError)
        std::memset(dst, value, bytesOf<Nox8u>(length));
    return status;
}

NoxStatus noxsSet_32f(Nox32f value, Nox32f *dst, int length) {
    const NoxStatus status = firstFailure(checkPointers(dst), checkLength(length));
    if (status == noxStsNoError)
        ownsSet_32s(std::bit_cast<Nox32s>(value), reinterpret_cast<Element<Nox32s> *>(dst), length);
    return status;
}
