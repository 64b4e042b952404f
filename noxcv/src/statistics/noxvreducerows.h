// Reduction of an image to a few numbers: the region that is read, and the joining of the threads' shares.
#pragma once

#include <climits>
#include <type_traits>

#include "frame/owncvomp.h"
#include "noxcv/primitives.h"
#include "rows.h"

namespace nox {

/// What a reduction reads: one or two images, a mask, a channel. Unused parts are left empty.
template <class T>
struct Region {
    Rows<const T> src1, src2;
    Rows<const Nox8u> mask;
    int width, height;
    int channel; ///< 0 in images of one channel

    /// Rows first to first + count - 1.
    NOX_INLINE Region rows(int first, int count) const {
        return {src1.from(first), src2.from(first), mask.from(first), width, count, channel};
    }
};

/// When a member goes parallel: from 2^shift pixels a thread on, perhaps only where there is a second core; a shift of
/// 0 keeps it on the calling thread.
struct ParallelFrom {
    int shift;
    bool asksRunomp;
};

/// The number of slices that a call divides its rows into.
inline int slicesOf(ParallelFrom from, NoxiSize roi) {
    const bool parallel = from.shift != 0 && largeEnough(roi, from.shift) && (!from.asksRunomp || runomp() != 0);
    return parallel ? sliceCount() : 1;
}

/// One slice's results: plain 64-bit values, so that they fit the slot arrays.
template <class Value, int count>
struct Slots {
    static_assert(sizeof(Value) == sizeof(Nox64f));
    Value value[count];
};

/// result = body(first row, row count) of each of `slices` slices, joined by join(total, next) in slice order on the
/// calling thread. One slice runs without a parallel region. Up to 32 slices keep their results on the stack, more of
/// them in a block from noxsMalloc_64f: noxStsNoMemory when there is none, with the result untouched.
template <class Result, class Body, class Join>
NoxStatus reduceRows(int rows, int slices, const Body &body, const Join &join, Result &result) {
    static_assert(std::is_trivially_copyable_v<Result> && alignof(Result) <= alignof(Nox64f));
    constexpr int onStack = 32;
    if (slices == 1) {
        result = body(0, rows);
        return noxStsNoError;
    }
    Result stack[onStack];
    Result *slots = stack;
    if (slices > onStack) {
        constexpr int slot = sizeof(Nox64f);
        const long long length = (static_cast<long long>(slices) * static_cast<int>(sizeof(Result)) + slot - 1) / slot;
        slots = length > INT_MAX ? nullptr : reinterpret_cast<Result *>(noxsMalloc_64f(static_cast<int>(length)));
        if (slots == nullptr)
            return noxStsNoMemory;
    }
    parallelSlices(rows, slices, [&](Slice slice) { slots[slice.index] = body(slice.first, slice.count); });
    result = slots[0];
    for (int i = 1; i < slices; ++i)
        join(result, slots[i]);
    if (slots != stack)
        noxsFree(slots);
    return noxStsNoError;
}

} // namespace nox
