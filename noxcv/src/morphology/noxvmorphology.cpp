// States of erosion and dilation. A mask is looked at once, when its state is built: it is empty, a rectangle, a stack
// of runs or anything else, and the state holds the tables and the scratch of the way that was chosen.
#include "noxvmorphology.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cstring>
#include <new>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"
#include "noxvminmax.h"
#include "rows.h"

using namespace nox;

namespace {

/// Masks from this height on go the general way, whatever they hold.
constexpr int tallMask = 256;

/// What the classifier finds out about a mask.
struct Shape {
    KernelKind kind = generalKernel;
    NoxiSize box{1, 1};
    NoxiPoint anchor{0, 0}; ///< relative to the box
    int runRows = 0, runClasses = 0;
    int rowIndex[tallMask], rowClass[tallMask];
    int classLength[tallMask], classAnchor[tallMask];
};

/// A row's only run of set cells.
struct Run {
    int row, first, end;
};

/// Finds the runs of a mask, one for each row that is not empty, or -1 when a row has two.
int findRuns(const Nox8u *mask, NoxiSize size, Run *runs) {
    const auto set = [](Nox8u cell) { return cell != 0; };
    int count = 0;
    for (int r = 0; r < size.height; ++r) {
        const Nox8u *const row = mask + static_cast<std::ptrdiff_t>(r) * size.width, *const rowEnd = row + size.width;
        const Nox8u *const first = std::find_if(row, rowEnd, set), *const end = std::find(first, rowEnd, 0);
        if (first == rowEnd)
            continue;
        if (std::any_of(end, rowEnd, set))
            return -1;
        runs[count++] = {r, static_cast<int>(first - row), static_cast<int>(end - row)};
    }
    return count;
}

/// Groups the runs by length, longest first; false when two of one length begin in different columns.
bool groupRuns(const Run *runs, int count, int anchorX, Shape &shape) {
    shape.runRows = count;
    for (int i = 0; i < count; ++i) {
        const int length = runs[i].end - runs[i].first, offset = anchorX - runs[i].first;
        int k = 0;
        while (k < shape.runClasses && shape.classLength[k] > length)
            ++k;
        if (k == shape.runClasses || shape.classLength[k] != length) {
            std::copy_backward(shape.classLength + k, shape.classLength + shape.runClasses,
                               shape.classLength + shape.runClasses + 1);
            std::copy_backward(shape.classAnchor + k, shape.classAnchor + shape.runClasses,
                               shape.classAnchor + shape.runClasses + 1);
            shape.classLength[k] = length;
            shape.classAnchor[k] = offset;
            ++shape.runClasses;
        } else if (shape.classAnchor[k] != offset) {
            return false;
        }
    }
    for (int i = 0; i < count; ++i) {
        const int length = runs[i].end - runs[i].first;
        shape.rowIndex[i] = runs[i].row - runs[0].row;
        shape.rowClass[i] = static_cast<int>(
            std::find(shape.classLength, shape.classLength + shape.runClasses, length) - shape.classLength);
    }
    return true;
}

/// The kind of a mask. anchorOutside: treat the anchor as one that lies outside a run.
void ownCheckKernel(const Nox8u *mask, NoxiSize size, NoxiPoint anchor, bool anchorOutside, Shape &shape) {
    const std::ptrdiff_t cells = static_cast<std::ptrdiff_t>(area(size));
    shape.kind = generalKernel;
    if (std::all_of(mask, mask + cells, [](Nox8u cell) { return cell == 0; })) {
        shape.kind = emptyKernel;
        return;
    }
    if (size.height >= tallMask)
        return;
    Run runs[tallMask];
    const int count = findRuns(mask, size, runs);
    if (count < 0)
        return;
    const Run &top = runs[0], &bottom = runs[count - 1];
    int first = top.first, end = top.end;
    bool alike = bottom.row - top.row == count - 1;
    anchorOutside |= anchor.y < top.row || anchor.y > bottom.row;
    for (int i = 0; i < count; ++i) {
        first = std::min(first, runs[i].first);
        end = std::max(end, runs[i].end);
        alike &= runs[i].first == top.first && runs[i].end == top.end;
        anchorOutside |= anchor.x < runs[i].first || anchor.x >= runs[i].end;
    }
    shape.box = {end - first, bottom.row - top.row + 1};
    shape.anchor = {anchor.x - first, anchor.y - top.row};
    if (alike)
        shape.kind = rectangleKernel;
    else if (!anchorOutside && groupRuns(runs, count, anchor.x, shape))
        shape.kind = ellipseKernel;
}

/// Small 8-bit masks are done faster cell by cell than by rows and columns.
void applyAreaRule(int dataType, int channels, NoxiSize maskSize, Shape &shape) {
    const long long cells = area(maskSize);
    const int rectangle = channels == 1 ? 13 : 35, ellipse = channels == 1 ? 35 : 90;
    if (dataType == type8u &&
        ((shape.kind == rectangleKernel && cells < rectangle) || (shape.kind == ellipseKernel && cells < ellipse)))
        shape.kind = generalKernel;
}

/// Where the parts of a state lie, and how large it is. The sizes are those of a build with 32-bit pointers, plus what
/// wider records need.
struct Layout {
    long long bytes = 0; ///< of the whole state; beyond the largest int: too large
    long long info = 0, tables = 0, mask = 0, maskBytes = 0, erode = 0, dilate = 0, work = 0; ///< offsets
    long long rowStride = 0;

    Layout(int dataType, int channels, int roiWidth, NoxiSize maskSize, const Shape &shape) {
        constexpr long long wider = sizeof(NoxiMorphState) - 72, widerInfo = sizeof(KernelInfo) - 40;
        const long long pixelBytes = (dataType == type32f ? 4 : 1) * channels;
        int buffer = 0;
        NoxStatus status = noxStsNoError;
        if (area(maskSize) > INT_MAX - 15) {
            bytes = LLONG_MAX;
            return;
        }
        maskBytes = roundUp(area(maskSize), 16LL);
        info = sizeof(NoxiMorphState);
        switch (shape.kind) {
        case emptyKernel:
            mask = info;
            bytes = maskBytes + 80 + wider;
            return;
        case rectangleKernel:
            mask = info + static_cast<long long>(sizeof(KernelInfo));
            work = mask + maskBytes;
            status = filterBuffer(dataType, channels, roiWidth, shape.box, &buffer);
            bytes = maskBytes + 112 + wider + widerInfo + buffer;
            break;
        case ellipseKernel:
            tables = info + static_cast<long long>(sizeof(KernelInfo));
            mask = tables + 8LL * (shape.runRows + shape.runClasses);
            work = mask + maskBytes;
            status = ownMorphEllipseGetBufferSize(roiWidth, shape.box.width, shape.box.height, shape.runClasses,
                                                  dataType, channels, &buffer);
            bytes = maskBytes + 128 + wider + widerInfo + 8LL * (shape.runRows + shape.runClasses) + buffer;
            break;
        default:
            general(dataType, pixelBytes, roiWidth, maskSize, wider);
            break;
        }
        if (status != noxStsNoError)
            bytes = LLONG_MAX;
    }

private:
    /// Offsets of a general state count from its first multiple of 16 bytes behind the record.
    void general(int dataType, long long pixelBytes, int roiWidth, NoxiSize maskSize, long long wider) {
        const long long tableBytes = maskBytes * (dataType == type32f ? 16 : 8), rows = maskSize.height;
        rowStride = roundUp((0LL + roiWidth + maskSize.width) * pixelBytes, 16LL);
        long long scratch = 0;
        if (__builtin_mul_overflow(2 * rows, rowStride, &scratch) || scratch > LLONG_MAX / 2) {
            bytes = LLONG_MAX;
            return;
        }
        scratch = std::max(scratch, pixelBytes * rows);
        erode = maskBytes;
        dilate = erode + tableBytes;
        work = dilate + tableBytes;
        bytes = maskBytes + 2 * tableBytes + 96 + wider + scratch;
    }
    static NoxStatus filterBuffer(int dataType, int channels, int roiWidth, NoxiSize box, int *size) {
        using Query = NoxStatus (*)(int, NoxiSize, int *);
        static constexpr Query queries[2][3] = {
            {noxiFilterMinGetBufferSize_8u_C1R, noxiFilterMinGetBufferSize_8u_C3R, noxiFilterMinGetBufferSize_8u_C4R},
            {noxiFilterMinGetBufferSize_32f_C1R, noxiFilterMinGetBufferSize_32f_C3R,
             noxiFilterMinGetBufferSize_32f_C4R}};
        // The maximum filters need as much.
        return queries[dataType == type32f][channels == 1 ? 0 : channels - 2](roiWidth, box, size);
    }
};

/// One table entry for each cell: a vector of `count` elements.
template <class T>
void expandMask(const Nox8u *mask, int cells, int count, T zeroCell, T setCell, T *table) {
    for (int i = 0; i < cells; ++i)
        std::fill_n(table + static_cast<std::ptrdiff_t>(i) * count, count, mask[i] == 0 ? zeroCell : setCell);
}

void buildGeneral(const Layout &layout, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor, Nox8u *block,
                  NoxiMorphState &state) {
    Nox8u *const base = alignUp(block + sizeof(NoxiMorphState), 16);
    const int cells = static_cast<int>(area(maskSize));
    state.maskCopy = base;
    state.erodeTable = base + layout.erode;
    state.dilateTable = base + layout.dilate;
    state.workBuffer = base + layout.work;
    if (state.dataType == type32f) {
        expandMask<Nox32f>(mask, cells, 4, FLT_MAX, -FLT_MAX, static_cast<Nox32f *>(state.erodeTable));
        expandMask<Nox32f>(mask, cells, 4, -FLT_MAX, FLT_MAX, static_cast<Nox32f *>(state.dilateTable));
    } else {
        expandMask<Nox8u>(mask, cells, 8, 0xFF, 0, static_cast<Nox8u *>(state.erodeTable));
        expandMask<Nox8u>(mask, cells, 8, 0, 0xFF, static_cast<Nox8u *>(state.dilateTable));
    }
    state.maskWidth = maskSize.width;
    state.maskHeight = maskSize.height;
    state.anchorX = anchor.x;
    state.anchorY = anchor.y;
    state.rightExtent = maskSize.width - anchor.x - 1;
    state.bottomExtent = maskSize.height - anchor.y - 1;
    state.rowStride = static_cast<int>(layout.rowStride);
}

/// The descriptor and its tables.
void describe(const Layout &layout, const Shape &shape, Nox8u *block, KernelInfo &info) {
    info = {shape.box.width, shape.box.height, shape.anchor.x, shape.anchor.y, 0, 0,
            nullptr,         nullptr,          nullptr,        nullptr};
    if (shape.kind != ellipseKernel)
        return;
    info.runRows = shape.runRows;
    info.runClasses = shape.runClasses;
    auto *table = reinterpret_cast<Nox32s *>(block + layout.tables);
    const auto keep = [&table](const int *values, int count) {
        Nox32s *const kept = table;
        std::copy_n(values, count, kept);
        table += count;
        return kept;
    };
    info.rowIndex = keep(shape.rowIndex, shape.runRows);
    info.rowClass = keep(shape.rowClass, shape.runRows);
    info.classLength = keep(shape.classLength, shape.runClasses);
    info.classAnchor = keep(shape.classAnchor, shape.runClasses);
}

void buildState(const Layout &layout, const Shape &shape, int dataType, int channels, int roiWidth, const Nox8u *mask,
                NoxiSize maskSize, NoxiPoint anchor, Nox8u *block) {
    NoxiMorphState state = {};
    state.stateSize = static_cast<int>(layout.bytes);
    state.dataType = dataType;
    state.channels = channels;
    state.roiWidth = roiWidth;
    state.reserved = -1;
    state.kernelKind = shape.kind;
    if (shape.kind == generalKernel) {
        buildGeneral(layout, mask, maskSize, anchor, block, state);
    } else {
        state.maskCopy = block + layout.mask;
        state.maskWidth = shape.box.width;
        state.maskHeight = shape.box.height;
        state.anchorX = shape.anchor.x;
        state.anchorY = shape.anchor.y;
        if (shape.kind != emptyKernel) {
            auto *const info = reinterpret_cast<KernelInfo *>(block + layout.info);
            describe(layout, shape, block, *info);
            state.kernelInfo = info;
            state.workBuffer = block + layout.work;
        }
    }
    const std::size_t cells = static_cast<std::size_t>(area(maskSize));
    std::memcpy(state.maskCopy, mask, cells);
    std::memset(state.maskCopy + cells, 0, static_cast<std::size_t>(layout.maskBytes) - cells);
    std::memcpy(block, &state, sizeof(state));
}

} // namespace

NoxStatus nox::buildMorphology(int dataType, int channels, int roiWidth, const Nox8u *mask, NoxiSize maskSize,
                               NoxiPoint anchor, void *output, int mode, bool anchorOutside) {
    NoxStatus status =
        firstFailure(checkPointers(mask), checkLength(roiWidth), checkSize(maskSize),
                     require(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                             noxStsBadAnchor));
    if (status != noxStsNoError)
        return status;
    if (output == nullptr)
        return noxStsNullPointer;
    Shape shape;
    ownCheckKernel(mask, maskSize, anchor, anchorOutside, shape);
    applyAreaRule(dataType, channels, maskSize, shape);
    const Layout layout(dataType, channels, roiWidth, maskSize, shape);
    int size = 0;
    status = storeSize(layout.bytes, &size);
    if (status != noxStsNoError)
        return status;
    if (mode == measureState) {
        *static_cast<int *>(output) = size;
        return noxStsNoError;
    }
    auto *block = static_cast<Nox8u *>(output);
    if (mode == allocateState) {
        block = noxsMalloc_8u(size);
        if (block == nullptr)
            return noxStsNoMemory;
        *static_cast<NoxiMorphState **>(output) = reinterpret_cast<NoxiMorphState *>(block);
    }
    buildState(layout, shape, dataType, channels, roiWidth, mask, maskSize, anchor, block);
    return noxStsNoError;
}

NoxStatus ownMorphologyInitAlloc(int dataType, int channels, int roiWidth, const Nox8u *mask, NoxiSize maskSize,
                                 NoxiPoint anchor, void *output, int mode) {
    return buildMorphology(dataType, channels, roiWidth, mask, maskSize, anchor, output, mode, false);
}

#define NOX_MORPHOLOGY_STATE(QUERY, INIT, INIT_ALLOC, TYPE, CHANNELS)                                                  \
    NoxStatus QUERY(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size) {                                   \
        return ownMorphologyInitAlloc(TYPE, CHANNELS, roiWidth, mask, maskSize,                                        \
                                      {maskSize.width >> 1, maskSize.height >> 1}, size, measureState);                \
    }                                                                                                                  \
    NoxStatus INIT(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor, NoxiMorphState *state) {      \
        return ownMorphologyInitAlloc(TYPE, CHANNELS, roiWidth, mask, maskSize, anchor, state, buildInPlace);          \
    }                                                                                                                  \
    NoxStatus INIT_ALLOC(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,                         \
                         NoxiMorphState **state) {                                                                     \
        return ownMorphologyInitAlloc(TYPE, CHANNELS, roiWidth, mask, maskSize, anchor, state, allocateState);         \
    }

NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_8u_C1R, noxiMorphologyInit_8u_C1R, noxiMorphologyInitAlloc_8u_C1R, type8u, 1)
NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_8u_C3R, noxiMorphologyInit_8u_C3R, noxiMorphologyInitAlloc_8u_C3R, type8u, 3)
NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_8u_C4R, noxiMorphologyInit_8u_C4R, noxiMorphologyInitAlloc_8u_C4R, type8u, 4)
NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_32f_C1R, noxiMorphologyInit_32f_C1R, noxiMorphologyInitAlloc_32f_C1R,
                     type32f, 1)
NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_32f_C3R, noxiMorphologyInit_32f_C3R, noxiMorphologyInitAlloc_32f_C3R,
                     type32f, 3)
NOX_MORPHOLOGY_STATE(noxiMorphologyGetSize_32f_C4R, noxiMorphologyInit_32f_C4R, noxiMorphologyInitAlloc_32f_C4R,
                     type32f, 4)

NoxStatus noxiMorphologyFree(NoxiMorphState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}
