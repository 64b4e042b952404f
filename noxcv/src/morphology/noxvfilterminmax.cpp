// Minimum and maximum over a rectangle: checks, buffers and the choice of row and column routines.
#include <algorithm>
#include <climits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/morphology.h"
#include "noxvminmax.h"
#include "rows.h"

using namespace nox;

namespace {

/// The caller's buffer: a table of row pointers, in which each pointer stands twice, and twice the window's height of
/// rows. The stated size has more room than that, which takes up the alignment of both.
template <class T>
struct Areas {
    T **table;
    Nox8u *rows;
    std::ptrdiff_t rowBytes;

    Areas(Nox8u *buffer, NoxiSize roi, int channels, int windowHeight)
        : table(reinterpret_cast<T **>(alignUp(buffer, 4))), rowBytes(0) {
        rows = alignUp(reinterpret_cast<Nox8u *>(table + std::ptrdiff_t(4) * windowHeight), 32);
        rowBytes = roundUp(static_cast<std::ptrdiff_t>(roi.width) * channels * static_cast<int>(sizeof(T)),
                           std::ptrdiff_t(32));
    }
    /// Points the table at its first `count` rows.
    T **pointers(int count) const {
        for (int i = 0; i < count; ++i)
            table[i] = table[i + count] = reinterpret_cast<T *>(rows + i * rowBytes);
        return table;
    }
};

template <class T>
NoxStatus bufferSize(int roiWidth, NoxiSize maskSize, int channels, int *size) {
    const NoxStatus status = firstFailure(checkPointers(size), checkLength(roiWidth),
                                          require(maskSize.width >= 1 && maskSize.height >= 1, noxStsBadMaskSize));
    if (status != noxStsNoError)
        return status;
    const long long n = maskSize.height, pointer = sizeof(void *),
                    rowBytes = static_cast<long long>(roiWidth) * channels * static_cast<int>(sizeof(T));
    long long rows = 0;
    if (__builtin_mul_overflow(2 * n, rowBytes + 32, &rows))
        return noxStsBadSize;
    return storeSize(4 * pointer * n + 32 <= LLONG_MAX - rows ? 4 * pointer * n + rows + 32 : LLONG_MAX, size);
}

/// Cuts a window along one side to what the image's side can hold of it.
void cutWindow(int side, int &window, int &anchor) {
    if (anchor >= side) {
        window += side - anchor - 1;
        anchor = side - 1;
    }
    if (side < window - anchor)
        window = side + anchor;
}

/// A region whose rows are done by the routines for small images.
bool isSmall(NoxiSize roi) { return 4 * area(roi) < 16385; }

template <class T>
using RowTable = const RowRoutine<T> *;

template <class T>
RowRoutine<T> rowRoutine(RowTable<T> table, RowTable<T> small, NoxiSize roi, int window) {
    const bool roomy = roi.width / 2 >= window;
    if (small != nullptr && isSmall(roi))
        return small[roomy ? std::min(window, 15) : 0];
    return table[roomy && window < 16 ? window : 0];
}

template <class T>
NoxStatus filter(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, NoxiSize mask, NoxiPoint anchor,
                 Nox8u *buffer, int channels, RowTable<T> table, RowTable<T> small,
                 const ColumnRoutine<T> *columnTable) {
    const long long elements = static_cast<long long>(roi.width) * channels;
    const NoxStatus status = firstFailure(
        checkPointers(src, dst, buffer), checkSize(roi),
        require(mask.width >= 1 && mask.height >= 1, noxStsBadMaskSize),
        require(anchor.x >= 0 && anchor.x < mask.width && anchor.y >= 0 && anchor.y < mask.height, noxStsBadAnchor),
        checkStep<T>(srcStep, elements), checkEvenSteps<T>(srcStep), checkStep<T>(dstStep, elements),
        checkEvenSteps<T>(dstStep));
    if (status != noxStsNoError)
        return status;
    cutWindow(roi.width, mask.width, anchor.x);
    cutWindow(roi.height, mask.height, anchor.y);
    const Areas<T> areas(buffer, roi, channels, mask.height);
    const bool direct = roi.height / 2 >= mask.height && (mask.height == 1 || mask.height == 3 || mask.height == 5);
    // Two rows more than the ring of any routine needs, and no less than the buffer has for a window of one row.
    T **const rows = areas.pointers(direct ? mask.height + 1 : 2 * mask.height);
    columnTable[direct ? mask.height : 0](src, srcStep, dst, dstStep, roi, channels, mask.width, mask.height, anchor.x,
                                          anchor.y, rowRoutine(table, small, roi, mask.width), rows);
    return noxStsNoError;
}

} // namespace

#define NOX_FILTER_MEMBER(ENTRY, QUERY, TYPE, CHANNELS, ROWS, SMALL, COLUMNS)                                          \
    NoxStatus ENTRY(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, NoxiSize maskSize,             \
                    NoxiPoint anchor, Nox8u *buffer) {                                                                 \
        return filter<TYPE>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer, CHANNELS, ROWS, SMALL,          \
                            COLUMNS);                                                                                  \
    }                                                                                                                  \
    NoxStatus QUERY(int roiWidth, NoxiSize maskSize, int *size) {                                                      \
        return bufferSize<TYPE>(roiWidth, maskSize, CHANNELS, size);                                                   \
    }

NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_8u_C1R, noxiFilterMinGetBufferSize_8u_C1R, Nox8u, 1,
                  owntablFilterMinRow_8u_C1, nullptr, owntablFilterMinColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_8u_C3R, noxiFilterMinGetBufferSize_8u_C3R, Nox8u, 3,
                  owntablFilterMinRow_8u_C3, nullptr, owntablFilterMinColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_8u_C4R, noxiFilterMinGetBufferSize_8u_C4R, Nox8u, 4,
                  owntablFilterMinRow_8u_C4, owntablFilterMinRow_8u_C4_Small, owntablFilterMinColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_32f_C1R, noxiFilterMinGetBufferSize_32f_C1R, Nox32f, 1,
                  owntablFilterMinRow_32f_C1, owntablFilterMinRow_32f_C1_Small, owntablFilterMinColumn_32f_C1)
NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_32f_C3R, noxiFilterMinGetBufferSize_32f_C3R, Nox32f, 3,
                  owntablFilterMinRow_32f_C3, nullptr, owntablFilterMinColumn_32f_C1)
NOX_FILTER_MEMBER(noxiFilterMinBorderReplicate_32f_C4R, noxiFilterMinGetBufferSize_32f_C4R, Nox32f, 4,
                  owntablFilterMinRow_32f_C4, nullptr, owntablFilterMinColumn_32f_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_8u_C1R, noxiFilterMaxGetBufferSize_8u_C1R, Nox8u, 1,
                  owntablFilterMaxRow_8u_C1, nullptr, owntablFilterMaxColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_8u_C3R, noxiFilterMaxGetBufferSize_8u_C3R, Nox8u, 3,
                  owntablFilterMaxRow_8u_C3, nullptr, owntablFilterMaxColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_8u_C4R, noxiFilterMaxGetBufferSize_8u_C4R, Nox8u, 4,
                  owntablFilterMaxRow_8u_C4, owntablFilterMaxRow_8u_C4_Small, owntablFilterMaxColumn_8u_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_32f_C1R, noxiFilterMaxGetBufferSize_32f_C1R, Nox32f, 1,
                  owntablFilterMaxRow_32f_C1, owntablFilterMaxRow_32f_C1_Small, owntablFilterMaxColumn_32f_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_32f_C3R, noxiFilterMaxGetBufferSize_32f_C3R, Nox32f, 3,
                  owntablFilterMaxRow_32f_C3, nullptr, owntablFilterMaxColumn_32f_C1)
NOX_FILTER_MEMBER(noxiFilterMaxBorderReplicate_32f_C4R, noxiFilterMaxGetBufferSize_32f_C4R, Nox32f, 4,
                  owntablFilterMaxRow_32f_C4, nullptr, owntablFilterMaxColumn_32f_C1)
