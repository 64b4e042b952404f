// Layer states: kernel normalisation, allocation, release.
#include "noxvpyrlayer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"
#include "numerics.h"

using namespace nox;

namespace {

constexpr int kernelAlignment = 32;
/// What the 64-bit record is wider than the 32-bit one, whose size the formulas include.
constexpr int widerRecord = static_cast<int>(sizeof(NoxiPyramidLayerState)) - 36;
static_assert(widerRecord >= 0);

/// Sum of the left half and the centre, the left half counted twice; warns when a mirrored tap differs.
template <class Tap, class Sum>
Sum kernelSum(const Tap *kernel, int size, bool &symmetric) {
    const int centre = size / 2;
    const Element<Tap> *taps = kernel;
    Sum half = 0;
    symmetric = true;
    for (int i = 0; i < centre; ++i) {
        half += taps[i];
        const Sum difference = static_cast<Sum>(taps[i]) - static_cast<Sum>(taps[size - 1 - i]);
        symmetric &= std::abs(difference) <= static_cast<Sum>(FLT_MIN);
    }
    return static_cast<Sum>(taps[centre]) + 2 * half;
}

/// Taps that sum to zero are copied as they are, in a layout of their own: the mirrored tap goes one place further to
/// the right than elsewhere, so the tap next to the centre keeps what the allocation held.
template <class Tap>
void copyRawTaps(const Tap *kernel, int size, Tap *out, Tap centreTap) {
    const int centre = size / 2;
    for (int i = 0; i < centre; ++i)
        out[i] = out[size - i] = elements(kernel)[i];
    out[centre] = centreTap;
}

/// Q13 taps from an integer kernel, for a down layer: two truncating divisions' worth of rounding.
void normaliseDown(const Nox16s *kernel, int size, long long sum, Nox16s *out) {
    const int centre = size / 2;
    for (int i = 0; i <= centre; ++i) {
        const long long quotient = elements(kernel)[i] * 16384LL / sum;
        out[i] = out[size - 1 - i] = static_cast<Nox16s>(quotient >> 1);
    }
}

/// Q13 taps for an up layer: rounded half up in single precision, then halved.
void normaliseUp(const Nox16s *kernel, int size, Nox32f sum, Nox16s *out) {
    const int centre = size / 2;
    for (int i = 0; i <= centre; ++i) {
        const int tap = truncateToInt(4.0F * static_cast<Nox32f>(elements(kernel)[i]) / sum * 8192.0F + 0.5F);
        out[i] = out[size - 1 - i] = static_cast<Nox16s>(wrap<Nox16s>(tap) >> 1);
    }
}

bool normaliseFloat(const Nox32f *kernel, int size, Nox32f *out) {
    const int centre = size / 2;
    bool symmetric = true;
    const auto sum = kernelSum<Nox32f, Nox32f>(kernel, size, symmetric);
    if (std::fabs(sum) > FLT_MIN) {
        for (int i = 0; i <= centre; ++i)
            out[i] = out[size - 1 - i] = elements(kernel)[i] / sum;
    } else {
        // The centre of such a kernel is the value of its byte number `centre`.
        copyRawTaps(kernel, size, out, static_cast<Nox32f>(reinterpret_cast<const Nox8u *>(kernel)[centre]));
    }
    return symmetric;
}

bool normaliseInteger(const Nox16s *kernel, int size, bool down, Nox16s *out) {
    bool symmetric = true;
    const auto sum = kernelSum<Nox16s, long long>(kernel, size, symmetric);
    const Nox32f upSum = static_cast<Nox32f>(4 * sum) * 0.5F;
    if (sum == 0)
        copyRawTaps(kernel, size, out, Nox16s{elements(kernel)[size / 2]});
    else if (down)
        normaliseDown(kernel, size, sum, out);
    else
        normaliseUp(kernel, size, upSum, out);
    return symmetric;
}

/// Bytes of an up state, and of a down state, without the wider record; beyond an int nothing is allocated.
long long upBytes(NoxiSize roi, long long n, long long channels, bool floating) {
    const long long w = roi.width, h = roi.height, m = std::max(w, h);
    const long long plane = limitedProduct(n + w - 1, n + h - 1), line = n + m - 1;
    const long long elements = limitedSum(plane, floating ? line : line * 2);
    return limitedSum(limitedProduct(elements, 4 * channels), n * (floating ? 4 : 2) + 108);
}

long long downBytes(NoxiSize roi, long long n, long long channels, int dataType) {
    const bool floating = dataType == dataType32f;
    const long long w = roi.width, h = roi.height, t = roundUp(w * channels, floating ? 4LL : 8LL);
    const long long plane = limitedProduct(limitedProduct(n + h, n + t), 4);
    const long long base = limitedSum(plane, std::max(t, h) * channels * 4 + n * (floating ? 4 : 2));
    if (w <= n || h <= n)
        return limitedSum(base, 140);
    const long long element = floating ? 4 : dataType == dataType16u ? 2 : 1;
    const long long ends = limitedProduct((n / 2 + n) * element * channels * 2, n), ring = limitedProduct(t * 4, n);
    return limitedSum(limitedSum(base, 240 + n * 52), limitedSum(ends, ring));
}

NoxStatus initAlloc(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const void *kernel, int kernelSize,
                    int mode, int dataType, int channels, bool down) {
    const NoxStatus status = firstFailure(
        checkPointers(state, kernel), checkSize(roi), require(mode == 2, noxStsBadArgument), checkRate(rate),
        require(kernelSize >= 3 && kernelSize % 2 == 1, noxStsBadArgument),
        require(channels == 1 || channels == 3, noxStsBadChannelCount),
        require(dataType == dataType8u || dataType == dataType16u || dataType == dataType32f, noxStsBadDataType));
    if (status != noxStsNoError)
        return status;
    const bool floating = dataType == dataType32f;
    const long long bytes =
        limitedSum(down ? downBytes(roi, kernelSize, channels, dataType) : upBytes(roi, kernelSize, channels, floating),
                   widerRecord);
    if (bytes > std::numeric_limits<int>::max())
        return noxStsNoMemory;
    Nox8u *block = noxsMalloc_8u(static_cast<int>(bytes));
    if (block == nullptr)
        return noxStsNoMemory;

    auto *layer = reinterpret_cast<NoxiPyramidLayerState *>(block);
    Nox8u *body = reinterpret_cast<Nox8u *>(layer + 1);
    // A zero-sum kernel leaves one tap unwritten: 0xFF bytes in down states, zero in up states.
    Nox8u *const taps = alignUp(body, kernelAlignment);
    const std::size_t tapBytes = (kernelSize + 1) * (floating ? sizeof(Nox32f) : sizeof(Nox16s));
    std::memset(taps, 0, tapBytes);
    if (down)
        std::memset(body, 0xFF, block + bytes - body);
    layer->kernel = taps;
    layer->work = alignUp(taps + tapBytes, kernelAlignment);
    layer->table = layer->work;
    layer->kernelSize = kernelSize;
    layer->dataType = dataType;
    layer->width = roi.width;
    layer->height = roi.height;
    layer->mode = mode;
    layer->rate = rate;
    const bool symmetric =
        floating
            ? normaliseFloat(static_cast<const Nox32f *>(kernel), kernelSize, reinterpret_cast<Nox32f *>(taps))
            : normaliseInteger(static_cast<const Nox16s *>(kernel), kernelSize, down, reinterpret_cast<Nox16s *>(taps));
    *state = layer;
    return symmetric ? noxStsNoError : noxStsKernelNotSymmetric;
}

NoxStatus release(NoxiPyramidLayerState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}

} // namespace

long long nox::upLayerScratchWords(const NoxiPyramidLayerState &state, int channels) {
    const long long bytes =
        upBytes({state.width, state.height}, state.kernelSize, channels, state.dataType == dataType32f) + widerRecord;
    const auto *begin = reinterpret_cast<const Nox8u *>(&state);
    return (bytes - (state.work - begin)) / static_cast<long long>(sizeof(Nox32f));
}

NoxStatus ownPyramidLayerDownInitAlloc(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const void *kernel,
                                       int kernelSize, int mode, int dataType, int channels) {
    return initAlloc(state, roi, rate, kernel, kernelSize, mode, dataType, channels, true);
}

NoxStatus ownPyramidLayerUpInitAlloc(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const void *kernel,
                                     int kernelSize, int mode, int dataType, int channels) {
    return initAlloc(state, roi, rate, kernel, kernelSize, mode, dataType, channels, false);
}

NoxStatus noxiPyramidLayerDownFree(NoxiPyramidLayerState *state) { return release(state); }
NoxStatus noxiPyramidLayerUpFree(NoxiPyramidLayerState *state) { return release(state); }

#define NOX_LAYER_STATE(INIT_ALLOC_FUNCTION, FREE_FUNCTION, DIRECTION, TAPS, TYPE, CHANNELS)                           \
    NoxStatus INIT_ALLOC_FUNCTION(NoxiPyramidLayerState **state, NoxiSize roi, Nox32f rate, const TAPS *kernel,        \
                                  int kernelSize, int mode) {                                                          \
        return ownPyramidLayer##DIRECTION##InitAlloc(state, roi, rate, kernel, kernelSize, mode, TYPE, CHANNELS);      \
    }                                                                                                                  \
    NoxStatus FREE_FUNCTION(NoxiPyramidLayerState *state) { return release(state); }
#define NOX_LAYER_STATES(INIT_ALLOC_8U_FUNCTION, FREE_8U_FUNCTION, INIT_ALLOC_16U_FUNCTION, FREE_16U_FUNCTION,         \
                         INIT_ALLOC_32F_FUNCTION, FREE_32F_FUNCTION, DIRECTION, CHANNELS)                              \
    NOX_LAYER_STATE(INIT_ALLOC_8U_FUNCTION, FREE_8U_FUNCTION, DIRECTION, Nox16s, dataType8u, CHANNELS)                 \
    NOX_LAYER_STATE(INIT_ALLOC_16U_FUNCTION, FREE_16U_FUNCTION, DIRECTION, Nox16s, dataType16u, CHANNELS)              \
    NOX_LAYER_STATE(INIT_ALLOC_32F_FUNCTION, FREE_32F_FUNCTION, DIRECTION, Nox32f, dataType32f, CHANNELS)
NOX_LAYER_STATES(noxiPyramidLayerDownInitAlloc_8u_C1R, noxiPyramidLayerDownFree_8u_C1R,
                 noxiPyramidLayerDownInitAlloc_16u_C1R, noxiPyramidLayerDownFree_16u_C1R,
                 noxiPyramidLayerDownInitAlloc_32f_C1R, noxiPyramidLayerDownFree_32f_C1R, Down, 1)
NOX_LAYER_STATES(noxiPyramidLayerDownInitAlloc_8u_C3R, noxiPyramidLayerDownFree_8u_C3R,
                 noxiPyramidLayerDownInitAlloc_16u_C3R, noxiPyramidLayerDownFree_16u_C3R,
                 noxiPyramidLayerDownInitAlloc_32f_C3R, noxiPyramidLayerDownFree_32f_C3R, Down, 3)
NOX_LAYER_STATES(noxiPyramidLayerUpInitAlloc_8u_C1R, noxiPyramidLayerUpFree_8u_C1R, noxiPyramidLayerUpInitAlloc_16u_C1R,
                 noxiPyramidLayerUpFree_16u_C1R, noxiPyramidLayerUpInitAlloc_32f_C1R, noxiPyramidLayerUpFree_32f_C1R,
                 Up, 1)
NOX_LAYER_STATES(noxiPyramidLayerUpInitAlloc_8u_C3R, noxiPyramidLayerUpFree_8u_C3R, noxiPyramidLayerUpInitAlloc_16u_C3R,
                 noxiPyramidLayerUpFree_16u_C3R, noxiPyramidLayerUpInitAlloc_32f_C3R, noxiPyramidLayerUpFree_32f_C3R,
                 Up, 3)
