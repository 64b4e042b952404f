// States of inpainting: the work area about the holes, the order of their pixels, the table of neighbours.
#include <algorithm>
#include <climits>
#include <memory>
#include <new>

#include "checks.h"
#include "edges/noxvmaskedgradient.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"
#include "noxvinpaint.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr long long alignment = 64;
constexpr Nox8u cross[9] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
/// From here on no table of neighbours fits an int.
constexpr Nox32f hugeRadius = 32768;

/// Memory that is given back unless it is released.
struct Giver {
    void operator()(Nox8u *block) const { noxsFree(block); }
};
using Block = std::unique_ptr<Nox8u[], Giver>;

/// A block of so many bytes; null too for a size that cannot be asked for.
Block allocate(long long bytes) { return Block(bytes > INT_MAX ? nullptr : noxsMalloc_8u(static_cast<int>(bytes))); }

/// One axis of the work area: `margin` and one more on both sides of the holes, as far as the region reaches.
void clipWork(int first, int extent, int margin, int limit, int *start, int *length) {
    const long long from = static_cast<long long>(first) - margin - 1, end = from + extent + 2LL * margin + 2;
    *start = static_cast<int>(std::max(from, 0LL));
    *length = static_cast<int>(std::min<long long>(end, limit)) - *start;
}

/// The images and lists behind the headers.
struct Areas {
    InpaintNeighbour *neighbours;
    Nox64f *order;
    Nox8u *holeMask, *workMask;
    Nox32f *distance;
    Nox16s *imageGradient, *distanceGradient;

    Areas(WorkBuffer &buffer, const NoxiInpaintState &state, long long diameter)
        : neighbours(buffer.take<InpaintNeighbour>(diameter * diameter)),
          order(buffer.aligned(alignment).take<Nox64f>(state.count)),
          holeMask(image<Nox8u>(buffer, state, state.maskStep)), workMask(image<Nox8u>(buffer, state, state.maskStep)),
          distance(image<Nox32f>(buffer, state, state.distanceStep)),
          imageGradient(image<Nox16s>(buffer, state, state.gradientStep)),
          distanceGradient(image<Nox16s>(buffer, state, state.distanceGradientStep)) {}

private:
    template <class T>
    static T *image(WorkBuffer &buffer, const NoxiInpaintState &state, int step) {
        return reinterpret_cast<T *>(
            buffer.aligned(alignment).take<Nox8u>(static_cast<long long>(step) * state.workHeight));
    }
};

/// The steps of the work area's images; false when one exceeds an int.
bool setSteps(NoxiInpaintState &state) {
    const long long step = roundUp(4LL * state.workWidth * state.channels, alignment);
    if (step > INT_MAX)
        return false;
    state.maskStep = static_cast<int>(roundUp<long long>(state.workWidth, alignment));
    state.distanceStep = static_cast<int>(roundUp(4LL * state.workWidth, alignment));
    state.gradientStep = static_cast<int>(step);
    state.distanceGradientStep = state.method == alongDistanceGradient ? state.distanceStep : 0;
    return true;
}

/// Fills the table of neighbours.
void listNeighbours(NoxiInpaintState &state, int r, InpaintNeighbour *table) {
    const Nox32f limit = state.radius * state.radius;
    InpaintNeighbour *end = table;
    for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x) {
            const Nox32f squared = static_cast<Nox32f>(x * x + y * y);
            if (squared == 0 || squared > limit)
                continue;
            // A row offset that no int holds belongs to an image too low for the disc: its table is never used.
            const long long row = y;
            *end++ = {-x,
                      -y,
                      nearness(state.method, squared),
                      static_cast<Nox32s>(row * state.maskStep + x),
                      static_cast<Nox32s>(row * (state.distanceStep / 4) + x),
                      static_cast<Nox32s>(row * (state.gradientStep / 2) + 2LL * x * state.channels),
                      0};
        }
    state.neighbours = table;
    state.neighbourCount = static_cast<int>(end - table);
}

/// The sorted list of pixels. Entries that the map does not fill stay 0 and so come first.
NoxStatus listOrder(const NoxiInpaintState &state) {
    std::fill_n(state.order, state.count, 0.0);
    owncvFillNoZero_32f(state.distance, state.distanceStep, state.workWidth, state.workHeight, state.order,
                        state.count);
    return noxsSortAscend_64f_I(state.order, state.count);
}

/// The state of a mask without a pixel.
NoxStatus allocateEmpty(const NoxiInpaintState &described, NoxiInpaintState **state) {
    Block block = allocate(sizeof(NoxiInpaintState));
    if (block == nullptr)
        return noxStsNoMemory;
    *state = new (block.release()) NoxiInpaintState(described);
    return noxStsNoError;
}

NoxStatus allocateState(NoxiInpaintState described, Rows<const Nox32f> distance, Rows<const Nox8u> mask, NoxiRect holes,
                        NoxiInpaintState **state) {
    if (described.radius >= hugeRadius)
        return noxStsNoMemory;
    const int r = static_cast<int>(described.radius), side = static_cast<int>(1.0F + 2.0F * described.radius);
    clipWork(holes.x, holes.width, r, described.width, &described.workX, &described.workWidth);
    clipWork(holes.y, holes.height, r, described.height, &described.workY, &described.workHeight);
    described.workWidth2 = described.workWidth;
    described.workHeight2 = described.workHeight;
    WorkBuffer measure;
    if (!setSteps(described))
        return noxStsNoMemory;
    Areas(measure, described, 2LL * r + 1);
    if (measure.bytes() > INT_MAX) // before memory is taken for nothing
        return noxStsNoMemory;

    const long long cells = static_cast<long long>(side) * side;
    const Block ones = allocate(cells);
    if (ones == nullptr)
        return noxStsNoMemory;
    std::fill_n(ones.get(), cells, Nox8u{1});
    const NoxiSize square{side, side}, small{3, 3};
    int bigBytes = 0, crossBytes = 0;
    if (noxiMorphologyGetSize_8u_C1R(described.workWidth, ones.get(), square, &bigBytes) != noxStsNoError ||
        noxiMorphologyGetSize_8u_C1R(described.workWidth, cross, small, &crossBytes) != noxStsNoError)
        return noxStsNoMemory;
    const long long bigAt = roundUp<long long>(sizeof(NoxiInpaintState), sizeof(void *));
    const long long crossAt = bigAt + roundUp<long long>(bigBytes, 16);
    const long long header = roundUp(crossAt + roundUp<long long>(crossBytes, 16), alignment);
    Block block = allocate(header + measure.bytes() + alignment);
    if (block == nullptr)
        return noxStsNoMemory;

    WorkBuffer buffer(block.get() + header, alignment);
    const Areas areas(buffer, described, 2LL * r + 1);
    described.order = areas.order;
    described.holeMask = areas.holeMask;
    described.workMask = areas.workMask;
    described.distance = areas.distance;
    described.imageGradient = areas.imageGradient;
    described.distanceGradient = described.method == alongDistanceGradient ? areas.distanceGradient : nullptr;
    described.morphBig = reinterpret_cast<NoxiMorphState *>(block.get() + bigAt);
    described.morphCross = reinterpret_cast<NoxiMorphState *>(block.get() + crossAt);
    noxiMorphologyInit_8u_C1R(described.workWidth, ones.get(), square, {r, r}, described.morphBig);
    noxiMorphologyInit_8u_C1R(described.workWidth, cross, small, {1, 1}, described.morphCross);
    const NoxiSize work{described.workWidth, described.workHeight};
    noxiThreshold_GTVal_8u_C1R(mask[described.workY] + described.workX, static_cast<int>(mask.step), described.holeMask,
                               described.maskStep, work, 0, 255);
    noxiCopy_32f_C1R(distance[described.workY] + described.workX, static_cast<int>(distance.step), described.distance,
                     described.distanceStep, work);
    listNeighbours(described, r, areas.neighbours);
    const NoxStatus status = listOrder(described);
    if (status == noxStsNoError)
        *state = new (block.release()) NoxiInpaintState(described);
    return status;
}

/// Both members of the family come here.
NoxStatus ownInpaintInitAlloc_8u(NoxiInpaintState **state, const Nox32f *distance, int distanceStep, const Nox8u *mask,
                                 int maskStep, NoxiSize roi, Nox32f radius, int method, int channels) {
    const NoxStatus status =
        firstFailure(checkPointers(mask, distance, state), checkSize(roi), checkStep<Nox8u>(maskStep, roi.width),
                     checkStep<Nox32f>(distanceStep, roi.width), checkEvenSteps<Nox32f>(distanceStep),
                     require(method == alongDistanceGradient || method == alongIsophote, noxStsBadArgument),
                     require(radius >= 1.0F, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    NoxiInpaintState described{};
    described.width = roi.width;
    described.height = roi.height;
    described.channels = channels;
    described.method = method;
    described.radius = radius;
    NoxiRect holes;
    owncvNoZero_8u(mask, maskStep, roi.width, roi.height, &described.count, &holes);
    if (described.count < 1)
        return allocateEmpty(described, state);
    return allocateState(described, {distance, distanceStep}, {mask, maskStep}, holes, state);
}

NoxStatus freeState(NoxiInpaintState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}

} // namespace

NoxStatus noxiInpaintInitAlloc_8u_C1R(NoxiInpaintState **state, const Nox32f *distance, int distanceStep,
                                      const Nox8u *mask, int maskStep, NoxiSize roi, Nox32f radius, int method) {
    return ownInpaintInitAlloc_8u(state, distance, distanceStep, mask, maskStep, roi, radius, method, 1);
}

NoxStatus noxiInpaintInitAlloc_8u_C3R(NoxiInpaintState **state, const Nox32f *distance, int distanceStep,
                                      const Nox8u *mask, int maskStep, NoxiSize roi, Nox32f radius, int method) {
    return ownInpaintInitAlloc_8u(state, distance, distanceStep, mask, maskStep, roi, radius, method, 3);
}

NoxStatus noxiInpaintFree_8u_C1R(NoxiInpaintState *state) { return freeState(state); }
NoxStatus noxiInpaintFree_8u_C3R(NoxiInpaintState *state) { return freeState(state); }
