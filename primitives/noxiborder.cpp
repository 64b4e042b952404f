// Copies into a larger region with a constant or replicated border.
//
// These functions move bit patterns: a kernel knows a pixel only as so many bytes.
#include <cstring>

#include "checks.h"
#include "noxcv/primitives.h"
#include "owncopybytes.h"
#include "ownprimitives.h"
#include "rows.h"

using namespace nox;

namespace {

/// Where the source lands in the destination, in pixels.
struct Placement {
    NoxiSize src, dst;
    int top, left;

    int right() const { return dst.width - left - src.width; }
    int bottom() const { return dst.height - top - src.height; }
};

NoxStatus checkPlacement(const Placement &place) {
    const bool fits = place.top >= 0 && place.left >= 0 &&
                      place.dst.width >= static_cast<long long>(place.left) + place.src.width &&
                      place.dst.height >= static_cast<long long>(place.top) + place.src.height;
    return firstFailure(checkSize(place.src), checkSize(place.dst), require(fits, noxStsBadSize));
}

/// A pixel of any type and channel count, at any address.
template <int bytes>
struct Pixel {
    Nox8u byte[bytes];
};

template <int bytes>
void fillPixels(Pixel<bytes> *dst, Pixel<bytes> value, int count) {
    if constexpr (bytes == 1)
        std::memset(static_cast<void *>(dst), value.byte[0], count);
    else
        for (int x = 0; x < count; ++x)
            dst[x] = value;
}

/// `count` rows from row `first` on become copies of row `from`.
template <int bytes>
void repeatRow(Rows<Pixel<bytes>> image, int from, int first, int count, int width) {
    const Pixel<bytes> *row = image[from];
    for (int y = first; y < first + count; ++y)
        copyBytes(image[y], row, sizeof(*row) * width);
}

/// Extends a row whose own pixels begin at `row`.
template <int bytes>
void extendRow(Pixel<bytes> *row, const Placement &place) {
    fillPixels(row - place.left, row[0], place.left);
    fillPixels(row + place.src.width, row[place.src.width - 1], place.right());
}

template <int bytes>
void copyReplicated(Rows<const Pixel<bytes>> src, Rows<Pixel<bytes>> dst, const Placement &place) {
    const Rows<Pixel<bytes>> band = dst.from(place.top);
    for (int y = 0; y < place.src.height; ++y) {
        Pixel<bytes> *row = band[y] + place.left;
        copyBytes(row, src[y], sizeof(*row) * place.src.width);
        extendRow(row, place);
    }
    repeatRow(band, place.src.height - 1, place.src.height, place.bottom(), place.dst.width);
    repeatRow(dst, place.top, 0, place.top, place.dst.width);
}

template <int bytes>
void replicateInPlace(Rows<Pixel<bytes>> srcDst, const Placement &place) {
    const Rows<Pixel<bytes>> whole = {srcDst.base - place.left, srcDst.step};
    extendRow(srcDst[0], place);
    repeatRow(whole, 0, -place.top, place.top, place.dst.width);
    for (int y = 1; y < place.src.height; ++y)
        extendRow(srcDst[y], place);
    repeatRow(whole, place.src.height - 1, place.src.height, place.bottom(), place.dst.width);
}

void copyConstant(Rows<const Nox8u> src, Rows<Nox8u> dst, const Placement &place, Nox8u value) {
    int y = 0;
    for (; y < place.top; ++y)
        std::memset(dst[y], value, place.dst.width);
    for (; y < place.top + place.src.height; ++y) {
        Nox8u *row = dst[y];
        std::memset(row, value, place.left);
        copyBytes(row + place.left, src[y - place.top], place.src.width);
        std::memset(row + place.left + place.src.width, value, place.right());
    }
    for (; y < place.dst.height; ++y)
        std::memset(dst[y], value, place.dst.width);
}

} // namespace

NoxStatus noxiCopyConstBorder_8u_C1R(const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep,
                                     NoxiSize dstRoi, int topBorderHeight, int leftBorderWidth, Nox8u value) {
    const Placement place = {srcRoi, dstRoi, topBorderHeight, leftBorderWidth};
    const NoxStatus status =
        firstFailure(checkPointers(src, dst), checkPositiveSteps(srcStep, dstStep), checkPlacement(place));
    if (status == noxStsNoError)
        copyConstant({src, srcStep}, {dst, dstStep}, place, value);
    return status;
}

#define NOX_REPLICATE(FUNCTION, IN_PLACE_FUNCTION, TYPE, CHANNELS)                                                     \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, NoxiSize srcRoi, TYPE *dst, int dstStep, NoxiSize dstRoi,         \
                       int topBorderHeight, int leftBorderWidth) {                                                     \
        using P = Pixel<CHANNELS * sizeof(TYPE)>;                                                                      \
        const Placement place = {srcRoi, dstRoi, topBorderHeight, leftBorderWidth};                                    \
        const NoxStatus status =                                                                                       \
            firstFailure(checkPointers(src, dst), checkPositiveSteps(srcStep, dstStep), checkPlacement(place));        \
        if (status == noxStsNoError)                                                                                   \
            copyReplicated<sizeof(P)>({reinterpret_cast<const P *>(src), srcStep},                                     \
                                      {reinterpret_cast<P *>(dst), dstStep}, place);                                   \
        return status;                                                                                                 \
    }                                                                                                                  \
    NoxStatus IN_PLACE_FUNCTION(TYPE *srcDst, int srcDstStep, NoxiSize srcRoi, NoxiSize dstRoi, int topBorderHeight,   \
                                int leftBorderWidth) {                                                                 \
        using P = Pixel<CHANNELS * sizeof(TYPE)>;                                                                      \
        const Placement place = {srcRoi, dstRoi, topBorderHeight, leftBorderWidth};                                    \
        const NoxStatus status =                                                                                       \
            firstFailure(checkPointers(srcDst), checkPositiveSteps(srcDstStep), checkPlacement(place));                \
        if (status == noxStsNoError)                                                                                   \
            replicateInPlace<sizeof(P)>({reinterpret_cast<P *>(srcDst), srcDstStep}, place);                           \
        return status;                                                                                                 \
    }
NOX_REPLICATE(noxiCopyReplicateBorder_8u_C1R, noxiCopyReplicateBorder_8u_C1IR, Nox8u, 1)
NOX_REPLICATE(noxiCopyReplicateBorder_8u_C3R, noxiCopyReplicateBorder_8u_C3IR, Nox8u, 3)
NOX_REPLICATE(noxiCopyReplicateBorder_8u_C4R, noxiCopyReplicateBorder_8u_C4IR, Nox8u, 4)
NOX_REPLICATE(noxiCopyReplicateBorder_32s_C1R, noxiCopyReplicateBorder_32s_C1IR, Nox32s, 1)
NOX_REPLICATE(noxiCopyReplicateBorder_32s_C3R, noxiCopyReplicateBorder_32s_C3IR, Nox32s, 3)
NOX_REPLICATE(noxiCopyReplicateBorder_32s_C4R, noxiCopyReplicateBorder_32s_C4IR, Nox32s, 4)
