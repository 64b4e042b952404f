// Work buffers of the pipelines, and how threads share them.
#pragma once

#include "checks.h"
#include "frame/owncvomp.h"
#include "noxtypes.h"

namespace nox {

/// A thread's scratch in bytes: perTap for each tap, and a rest.
struct ScratchSize {
    int perTap, rest;

    constexpr long long bytes(int kernelSize) const { return static_cast<long long>(perTap) * kernelSize + rest; }
};

/// Bytes before the first thread's scratch, for n threads.
inline long long pipelinePointerBytes(NoxiSize roi, int kernelSize, long long n) {
    return n * 32 + n * (static_cast<long long>(roi.height) + kernelSize) * static_cast<long long>(sizeof(void *));
}

inline NoxStatus pipelineBufferSize(NoxiSize roi, int kernelSize, int *size, ScratchSize scratch) {
    const NoxStatus status = firstFailure(checkPointers(size), checkSize(roi), checkLength(kernelSize));
    if (status == noxStsNoError) {
        const long long n = owncvGetMaxNumThreads();
        *size = static_cast<int>(pipelinePointerBytes(roi, kernelSize, n) + n * scratch.bytes(kernelSize));
    }
    return status;
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
