// Copy and fill of image regions. Steps are taken as given: zero, negative, or smaller than a row.
#include <cstring>

#include "checks.h"
#include "noxcv/primitives.h"
#include "ownprimitives.h"
#include "rows.h"

using namespace nox;

namespace {

void copyRows(Rows<const Nox8u> src, Rows<Nox8u> dst, std::ptrdiff_t rowBytes, int height) {
    forJoinedRows(
        rowBytes, height, [](std::ptrdiff_t bytes, const Nox8u *from, Nox8u *to) { std::memmove(to, from, bytes); },
        src, dst);
}

template <class T>
NoxStatus copyImage(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels) {
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkSize(roi));
    if (status == noxStsNoError)
        copyRows({reinterpret_cast<const Nox8u *>(src), srcStep}, {reinterpret_cast<Nox8u *>(dst), dstStep},
                 static_cast<std::ptrdiff_t>(sizeof(T)) * channels * roi.width, roi.height);
    return status;
}

void setRows(Nox8u value, Rows<Nox8u> dst, int width, int height) {
    forJoinedRows(
        width, height, [value](std::ptrdiff_t bytes, Nox8u *to) { std::memset(to, value, bytes); }, dst);
}

} // namespace

#define NOX_COPY(FUNCTION, TYPE, CHANNELS)                                                                             \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi) {                           \
        return copyImage(src, srcStep, dst, dstStep, roi, CHANNELS);                                                   \
    }
NOX_COPY(noxiCopy_8u_C1R, Nox8u, 1)
NOX_COPY(noxiCopy_8u_C3R, Nox8u, 3)
NOX_COPY(noxiCopy_8u_C4R, Nox8u, 4)
NOX_COPY(noxiCopy_32f_C1R, Nox32f, 1)
NOX_COPY(noxiCopy_32f_C3R, Nox32f, 3)
NOX_COPY(noxiCopy_32f_C4R, Nox32f, 4)

NoxStatus noxiSet_8u_C1R(Nox8u value, Nox8u *dst, int dstStep, NoxiSize roi) {
    const NoxStatus status = firstFailure(checkPointers(dst), checkSize(roi));
    if (status == noxStsNoError)
        setRows(value, {dst, dstStep}, roi.width, roi.height);
    return status;
}
