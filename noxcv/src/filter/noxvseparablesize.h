// Work buffers of the pipelines, and how threads share them.
#pragma once

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "frame/owncvomp.h"
#include "noxtypes.h"

namespace nox {

/// A thread's scratch in bytes: perTap for each tap, and a rest.
struct ScratchSize {
    int perTap, rest;

    constexpr long long bytes(int kernelSize) const { return static_cast<long long>(perTap) * kernelSize + rest; }
};

// The scratch of the members that the border filters stand on.
inline constexpr ScratchSize rowScratch8u16s = {4, 32}, rowScratch32f = {16, 32}, columnScratch16s = {4, 32},
                             columnScratch32f = {0, 0};

/// Bytes before the first thread's scratch, for n threads.
inline long long pipelinePointerBytes(NoxiSize roi, int kernelSize, long long n) {
    constexpr long long pointer = sizeof(void *);
    return limitedProduct(n, 32 + (static_cast<long long>(roi.height) + kernelSize) * pointer);
}

/// Bytes of a pipeline's buffer, for as many threads as there are now.
inline long long pipelineBufferBytes(NoxiSize roi, int kernelSize, ScratchSize scratch) {
    const long long n = sliceCount();
    return limitedSum(pipelinePointerBytes(roi, kernelSize, n), limitedProduct(n, scratch.bytes(kernelSize)));
}

inline NoxStatus pipelineBufferSize(NoxiSize roi, int kernelSize, int *size, ScratchSize scratch) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi), checkLength(kernelSize));
    return status != noxStsNoError ? status : storeSize(pipelineBufferBytes(roi, kernelSize, scratch), size);
}

/// What decides, beyond the area, whether a pipeline goes parallel.
enum class PipelineRule { always, separable, largeKernel };

/// 2^15 pixels a thread, and the member's own rule.
inline bool pipelineGoesParallel(NoxiSize roi, int kernelSize, PipelineRule rule) {
    if (!largeEnough(roi, 15))
        return false;
    switch (rule) {
    case PipelineRule::separable:
        return runsepomp(kernelSize) != 0;
    case PipelineRule::largeKernel:
        return kernelSize > 3;
    default:
        return true;
    }
}

} // namespace nox
