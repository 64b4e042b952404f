// The point tracker: states, derivatives of whole levels, and the division of the points among threads.
#include "noxvopticalflow.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "checks.h"
#include "filter/noxvfilterborder.h"
#include "frame/noxvdatatype.h"
#include "frame/owncvomp.h"
#include "noxcv/filter.h"
#include "noxcv/primitives.h"
#include "noxvopticalflowpoint.h"
#include "rows.h"

using namespace nox;

namespace {

// ---- states ----

/// Planes and patches lie on multiples of this.
constexpr int pieceAlignment = 32;
/// Columns and rows that the planes have room for beyond the largest level.
constexpr int planeMargin = 5;

using ScharrSize = NoxStatus (*)(NoxiSize roi, int *size);

/// The filter's buffer, or -1 when an int cannot tell its size.
long long scharrBytes(ScharrSize query, NoxiSize roi) {
    int size = 0;
    return query(roi, &size) == noxStsNoError ? size : -1;
}

/// Bytes of the buffer, or -1 when an int cannot tell them.
long long bufferBytes(NoxiSize roi, long long winSize, long long threads, int dataType) {
    constexpr long long largest = std::numeric_limits<int>::max();
    const bool bytes = dataType == dataType8u;
    const long long width = static_cast<long long>(roi.width) + planeMargin,
                    height = static_cast<long long>(roi.height) + planeMargin;
    // Windows of 2^14 are too large anyway, and so are 2^23 threads; the limits keep the terms below in 64 bits.
    if (width > largest || height > largest || winSize > (1 << 14) || threads > (1 << 23) || width * height > largest)
        return -1;
    const NoxiSize extended = {static_cast<int>(width), static_cast<int>(height)};
    const long long horiz = scharrBytes(bytes ? noxiFilterScharrHorizGetBufferSize_8u16s_C1R
                                              : noxiFilterScharrHorizGetBufferSize_32f_C1R,
                                        extended),
                    vert = scharrBytes(bytes ? noxiFilterScharrVertGetBufferSize_8u16s_C1R
                                             : noxiFilterScharrVertGetBufferSize_32f_C1R,
                                       extended);
    if (horiz < 0 || vert < 0)
        return -1;
    const long long p = (winSize + 3) * (winSize + 3), planes = dataType == dataType16u ? 3 : 2,
                    s = std::max(horiz, vert) + width * height * planes,
                    a = (4 * winSize + 12) * (winSize + 3) * 2 + 4 * p;
    const long long size =
        bytes ? 2 * s + 8 * p + 16 * (2 * winSize + 6) * (winSize + 3) + threads * (24 * p + 52) + 16 * p * threads + 10
              : 4 * (a + s) + (4 * a + 4) * threads + 40 * threads + 16 * p * threads + 4;
    return size > largest ? -1 : size;
}

// ---- the buffer of a call: patches of each slice, two or three planes, the filter's buffer ----

template <class Cell>
constexpr std::ptrdiff_t sliceBytes(int winSize) {
    return roundUp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(Patches<Cell>::cellsOf(winSize) * sizeof(Cell)),
                                   pieceAlignment);
}

/// Planes for the largest coarse level, and the Scharr filters that fill them.
template <class T>
class LevelDerivatives {
public:
    using Cell = FlowCell<T>;

    LevelDerivatives(Nox8u *memory, NoxiSize largest, int filterThreads)
        : step_((largest.width + planeMargin) * static_cast<int>(sizeof(Cell))),
          bytes_(roundUp<std::ptrdiff_t>(std::ptrdiff_t{step_} * largest.height, pieceAlignment)), memory_(memory),
          parallel_(sliceCount() <= filterThreads) {}

    FlowPlanes<Cell> compute(const FlowLevel<T> &level) const;

private:
    Cell *plane(int index) const { return reinterpret_cast<Cell *>(memory_ + index * bytes_); }
    Nox8u *filterBuffer(int planes) const { return memory_ + planes * bytes_; }

    int step_;
    std::ptrdiff_t bytes_;
    Nox8u *memory_;
    bool parallel_; ///< the filter's buffer was made for as many threads as there are now
};

// Without a buffer for all threads the engine runs on this one, in one thread's share; it gives the same bits.

#define NOX_SCHARR(VERT_FUNCTION, HORIZ_FUNCTION, SOURCE, CELL, TAG, TAP)                                              \
    void scharr(const SOURCE *src, int srcStep, NoxiSize size, CELL *dx, CELL *dy, int step, Nox8u *buffer,            \
                bool parallel) {                                                                                       \
        if (parallel) {                                                                                                \
            VERT_FUNCTION(src, srcStep, dx, step, size, noxBorderReplicate, 0, buffer);                                \
            HORIZ_FUNCTION(src, srcStep, dy, step, size, noxBorderReplicate, 0, buffer);                               \
            return;                                                                                                    \
        }                                                                                                              \
        ownFilterConvolution_##TAG##_C1R(src, srcStep, dx, step, size.width, size.height, kerDx_3_##TAP, 3,            \
                                         kerScharr_3_##TAP, 3, noxBorderReplicate, 0, buffer, 0, 0);                   \
        ownFilterConvolution_##TAG##_C1R(src, srcStep, dy, step, size.width, size.height, kerScharr_3_##TAP, 3,        \
                                         kerDx_3_##TAP, 3, noxBorderReplicate, 0, buffer, 1, 1);                       \
    }
NOX_SCHARR(noxiFilterScharrVertBorder_8u16s_C1R, noxiFilterScharrHorizBorder_8u16s_C1R, Nox8u, Nox16s, 8u16s, 16s)
NOX_SCHARR(noxiFilterScharrVertBorder_32f_C1R, noxiFilterScharrHorizBorder_32f_C1R, Nox32f, Nox32f, 32f, 32f)

/// To the scale of the patches: a sum of 32 weights for a value times 128, or for the value itself.
void rescale(Nox16s *row, int width) { noxsMulC_16s_ISfs(4, row, width, 0); }
void rescale(Nox32f *row, int width) { noxsMulC_32f_I(0.03125F, row, width); }

template <class T>
FlowPlanes<FlowCell<T>> LevelDerivatives<T>::compute(const FlowLevel<T> &level) const {
    Cell *const dx = plane(0), *const dy = plane(1);
    const NoxiSize size = level.size;
    if constexpr (std::is_same_v<T, Nox16u>) {
        Cell *const converted = plane(2);
        for (int y = 0; y < size.height; ++y)
            noxsConvert_16u32f(Rows<const T>{level.image, level.step}[y], Rows<Cell>{converted, step_}[y], size.width);
        scharr(converted, step_, size, dx, dy, step_, filterBuffer(3), parallel_);
    } else {
        scharr(level.image, level.step, size, dx, dy, step_, filterBuffer(2), parallel_);
    }
    for (int y = 0; y < size.height; ++y) {
        rescale(Rows<Cell>{dx, step_}[y], size.width);
        rescale(Rows<Cell>{dy, step_}[y], size.width);
    }
    return {dx, dy, step_};
}

// ---- a call ----

template <class T>
class Flow {
public:
    using Cell = FlowCell<T>;

    Flow(const FlowCall &call, int numPoints, int maxLevel, const NoxiOptFlowPyrLKState &state)
        : call_(call), state_(state), numPoints_(numPoints), maxLevel_(maxLevel),
          slices_(std::min(sliceCount(), state.numThreads)), coarsest_(firstCoarseLevel()) {}

    void run() const {
        noxsSet_8u(static_cast<Nox8u>(maxLevel_ + 1), reinterpret_cast<Nox8u *>(call_.status), numPoints_);
        noxsSet_32f(0.0F, call_.error, numPoints_);
        std::memset(state_.buffer, 0, static_cast<std::size_t>(sliceBytes<Cell>(call_.winSize)) * slices_);
        for (int level = maxLevel_; level >= coarsest_; --level)
            runCoarse(level);
        if (coarsest_ > 0)
            runFine();
    }

private:
    /// The finest level that is smaller than the state's largest in both directions, with all coarser ones.
    int firstCoarseLevel() const {
        int level = maxLevel_;
        for (; level >= 0; --level) {
            const NoxiSize size = call_.pyramid1->sizes[level];
            if (size.width >= state_.maxWidth || size.height >= state_.maxHeight)
                break;
        }
        return level + 1;
    }

    template <class Body>
    void forPoints(int startStatus, const Body &body) const {
        const auto start = static_cast<Nox8s>(startStatus);
        parallelSlices(numPoints_, slices_, [&](const Slice &slice) {
            Nox8u *memory = state_.buffer + slice.index * sliceBytes<Cell>(call_.winSize);
            PointTracker<T> tracker(call_, reinterpret_cast<Cell *>(memory));
            for (int point = slice.first; point < slice.first + slice.count; ++point)
                if (call_.status[point] == start)
                    body(tracker, point);
        });
    }

    /// Whether derivatives of bytes cost less under the windows of the points than for the whole level: a pixel of the
    /// level takes as long as some cells of a window.
    bool fewPoints(int level, NoxiSize size) const {
        constexpr long long cellsPerPixel = 2;
        if constexpr (!std::is_same_v<T, Nox8u>)
            return false;
        const auto points = std::count(call_.status, call_.status + numPoints_, static_cast<Nox8s>(level + 1));
        const long long side = call_.winSize + 1;
        return side * side * points < cellsPerPixel * area(size);
    }

    void runCoarse(int level) const {
        const FlowLevel<T> first(*call_.pyramid1, level);
        if (!first.usable()) {
            // The first point that gets here finds nothing to read, and ends the level for all.
            const auto start = static_cast<Nox8s>(level + 1);
            Nox8s *const end = call_.status + numPoints_, *const found = std::find(call_.status, end, start);
            if (found != end)
                *found = static_cast<Nox8s>(level);
            return;
        }
        const LevelDerivatives<T> derivatives(state_.buffer + state_.numThreads * sliceBytes<Cell>(call_.winSize),
                                              call_.pyramid1->sizes[coarsest_], state_.numThreads);
        const FlowPlanes<Cell> planes =
            fewPoints(level, first.size) ? FlowPlanes<Cell>{nullptr, nullptr, 0} : derivatives.compute(first);
        forPoints(level + 1, [&](PointTracker<T> &tracker, int point) { tracker.coarse(point, level, planes); });
    }

    void runFine() const {
        forPoints(coarsest_, [&](PointTracker<T> &tracker, int point) { tracker.fine(point, coarsest_ - 1); });
    }

    const FlowCall &call_;
    const NoxiOptFlowPyrLKState &state_;
    int numPoints_, maxLevel_, slices_, coarsest_;
};

/// The threshold of the call is in place of its square.
template <class T>
NoxStatus track(FlowCall call, int numPoints, int maxLevel, const NoxiOptFlowPyrLKState *state) {
    const NoxStatus pointers =
        checkPointers(call.pyramid1, call.pyramid2, state, call.prevPts, call.nextPts, call.status, call.error);
    if (pointers != noxStsNoError)
        return pointers;
    const NoxStatus status = firstFailure(
        checkLength(numPoints), checkLength(call.winSize), require(call.winSize == state->winSize, noxStsBadSize),
        require(maxLevel >= 0 && call.maxIter >= 1, noxStsBadArgument),
        require(!(call.squaredThreshold < 0), noxStsBadArgument),
        require(maxLevel <= call.pyramid1->level && maxLevel <= call.pyramid2->level, noxStsBadArgument),
        require(state->dataType == dataTypeOf<T>, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    call.squaredThreshold *= call.squaredThreshold;
    call.downScale = maxLevel > 1 ? 1.0 / call.pyramid1->rates[1] : 1.0;
    Flow<T>(call, numPoints, maxLevel, *state).run();
    return noxStsNoError;
}

NoxStatus freeState(NoxiOptFlowPyrLKState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state->buffer);
    noxsFree(state);
    return noxStsNoError;
}

} // namespace

NoxStatus ownOpticalFlowPyrLKInitAlloc(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize, int hint,
                                       int dataType) {
    const NoxStatus status = firstFailure(checkPointers(state), checkLength(winSize), checkSize(roi));
    if (status != noxStsNoError)
        return status;
    const int threads = sliceCount();
    const long long bytes = bufferBytes(roi, winSize, threads, dataType);
    if (bytes < 0)
        return noxStsNoMemory;
    auto *made = reinterpret_cast<NoxiOptFlowPyrLKState *>(noxsMalloc_8u(sizeof(NoxiOptFlowPyrLKState)));
    if (made == nullptr)
        return noxStsNoMemory;
    Nox8u *buffer = noxsMalloc_8u(static_cast<int>(bytes));
    if (buffer == nullptr) {
        noxsFree(made);
        return noxStsNoMemory;
    }
    *made = {roi.width, roi.height, threads, dataType, hint, winSize, buffer};
    *state = made;
    return noxStsNoError;
}

#define NOX_TRACKER(INIT_ALLOC_FUNCTION, FREE_FUNCTION, FUNCTION, TYPE)                                                \
    NoxStatus INIT_ALLOC_FUNCTION(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize, int hint) {                \
        return ownOpticalFlowPyrLKInitAlloc(state, roi, winSize, hint, dataTypeOf<TYPE>);                              \
    }                                                                                                                  \
    NoxStatus FREE_FUNCTION(NoxiOptFlowPyrLKState *state) { return freeState(state); }                                 \
    NoxStatus FUNCTION(const NoxiPyramid *pyramid1, const NoxiPyramid *pyramid2, const NoxiPoint32f *prevPts,          \
                       NoxiPoint32f *nextPts, Nox8s *status, Nox32f *error, int numPoints, int winSize, int maxLevel,  \
                       int maxIter, Nox32f threshold, NoxiOptFlowPyrLKState *state) {                                  \
        return track<TYPE>({pyramid1, pyramid2, prevPts, nextPts, status, error, winSize, maxIter, threshold, 1.0},    \
                           numPoints, maxLevel, state);                                                                \
    }

NOX_TRACKER(noxiOpticalFlowPyrLKInitAlloc_8u_C1R, noxiOpticalFlowPyrLKFree_8u_C1R, noxiOpticalFlowPyrLK_8u_C1R, Nox8u)
NOX_TRACKER(noxiOpticalFlowPyrLKInitAlloc_16u_C1R, noxiOpticalFlowPyrLKFree_16u_C1R, noxiOpticalFlowPyrLK_16u_C1R,
            Nox16u)
NOX_TRACKER(noxiOpticalFlowPyrLKInitAlloc_32f_C1R, noxiOpticalFlowPyrLKFree_32f_C1R, noxiOpticalFlowPyrLK_32f_C1R,
            Nox32f)
