// Erosion and dilation by a stack of runs: each source row is filtered once for every distinct run length, and an
// output row is the winner of one of these rows for each non-empty row of the mask.
#include <algorithm>
#include <cfloat>
#include <type_traits>

#include "frame/noxvworkbuffer.h"
#include "noxvminmax.h"
#include "rows.h"

#define NOX_KERNELS "morphology/noxvminmaxkernels.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// The buffer: a table of row pointers, and a ring with a group of filtered rows, one for each run length, for as many
/// source rows as the box is high. The stated size has more room than that, which takes up the alignment of both.
template <class T>
struct Ring {
    const T **table;
    Nox8u *rows;
    std::ptrdiff_t rowBytes;
    int height, classes;

    Ring(Nox8u *buffer, std::ptrdiff_t bytes, const KernelInfo &info)
        : table(reinterpret_cast<const T **>(alignUp(buffer, 4))),
          rows(alignUp(reinterpret_cast<Nox8u *>(table + info.runRows), 32)),
          rowBytes(roundUp(bytes, std::ptrdiff_t(32))), height(info.height), classes(info.runClasses) {}

    T *row(int y, int runClass) const {
        const std::ptrdiff_t slot = static_cast<std::ptrdiff_t>(y % height) * classes + runClass;
        return reinterpret_cast<T *>(rows + slot * rowBytes);
    }
};

template <class Op, class T>
void joinRuns(Rows<const T> src, Rows<T> dst, NoxiSize roi, int channels, const KernelInfo &info, Nox8u *buffer,
              const RowRoutine<T> *routines) {
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(roi.width) * channels;
    const Ring<T> ring(buffer, count * static_cast<int>(sizeof(T)), info);
    const int lastRow = roi.height - 1;
    int filtered = 0;
    for (int y = 0; y < roi.height; ++y) {
        for (; filtered <= std::min(y - info.anchorY + info.height - 1, lastRow); ++filtered)
            for (int k = 0; k < info.runClasses; ++k) {
                const int length = info.classLength[k];
                const bool written = length < 16 && roi.width / 2 >= length;
                routines[written ? length : 0](src[filtered], ring.row(filtered, k), roi.width, length,
                                               info.classAnchor[k]);
            }
        for (int i = 0; i < info.runRows; ++i)
            ring.table[i] = ring.row(std::clamp(y + info.rowIndex[i] - info.anchorY, 0, lastRow), info.rowClass[i]);
        NOX_ON_TIER_FOR(tierBytes<T>(count), joinMany<Op, T>(ring.table, info.runRows, dst[y], count));
    }
}

} // namespace

NoxStatus ownMorphEllipseGetBufferSize(int roiWidth, int /*boxWidth*/, int boxHeight, int classCount, int dataType,
                                       int channels, int *size) {
    const long long rowBytes = static_cast<long long>(roiWidth) * channels * (dataType == 13 ? 4 : 1);
    const long long rows = static_cast<long long>(boxHeight) * classCount + 1;
    long long bytes = 0;
    if (__builtin_mul_overflow(rows, rowBytes + 32, &bytes) ||
        __builtin_add_overflow(bytes, (5LL * boxHeight + 1) * static_cast<int>(sizeof(void *)) + 32, &bytes))
        return noxStsBadSize;
    return storeSize(bytes, size);
}

#define NOX_ELLIPSE(NAME, OP, TYPE, CHANNELS, ROUTINES)                                                                \
    void NAME(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, const KernelInfo *kernelInfo,        \
              Nox8u *buffer) {                                                                                         \
        joinRuns<OP, TYPE>({src, srcStep}, {dst, dstStep}, roi, CHANNELS, *kernelInfo, buffer, ROUTINES);              \
    }
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_8u_C1R, Smallest, Nox8u, 1, owntablFilterMinRow_8u_C1)
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_8u_C3R, Smallest, Nox8u, 3, owntablFilterMinRow_8u_C3)
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_8u_C4R, Smallest, Nox8u, 4, owntablFilterMinRow_8u_C4)
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_32f_C1R, Smallest, Nox32f, 1, owntablFilterMinRow_32f_C1)
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_32f_C3R, Smallest, Nox32f, 3, owntablFilterMinRow_32f_C3)
NOX_ELLIPSE(ownErodeEllipseBorderReplicate_32f_C4R, Smallest, Nox32f, 4, owntablFilterMinRow_32f_C4)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_8u_C1R, Largest, Nox8u, 1, owntablFilterMaxRow_8u_C1)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_8u_C3R, Largest, Nox8u, 3, owntablFilterMaxRow_8u_C3)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_8u_C4R, Largest, Nox8u, 4, owntablFilterMaxRow_8u_C4)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_32f_C1R, Largest, Nox32f, 1, owntablFilterMaxRow_32f_C1)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_32f_C3R, Largest, Nox32f, 3, owntablFilterMaxRow_32f_C3)
NOX_ELLIPSE(ownDilateEllipseBorderReplicate_32f_C4R, Largest, Nox32f, 4, owntablFilterMaxRow_32f_C4)
