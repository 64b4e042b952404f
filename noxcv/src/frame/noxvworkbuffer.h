// The areas of a work buffer: one description of a layout tells its size and gives out its pointers.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "noxtypes.h"
#include "rows.h"

namespace nox {

/// a + b and a * b of lengths that are not negative; what 64 bits do not hold becomes the largest value.
constexpr long long limitedSum(long long a, long long b) {
    long long sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<long long>::max() : sum;
}
constexpr long long limitedProduct(long long a, long long b) {
    long long product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<long long>::max() : product;
}

/// noxStsBadSize for a buffer whose size no int tells: the check that stands last in an entry.
constexpr NoxStatus checkBufferBytes(long long bytes) {
    return bytes >= 0 && bytes <= INT_MAX ? noxStsNoError : noxStsBadSize;
}

/// Gives out the areas of a buffer one behind the other. A family describes its layout once, as a function or a
/// constructor that takes a WorkBuffer; over no memory that tells the size, over the caller's buffer it gives the
/// pointers, so the two cannot disagree:
///
///     struct Areas {
///         Nox32f *row;
///         Nox8u *flags;
///         Areas(WorkBuffer &buffer, NoxiSize roi)
///             : row(buffer.take<Nox32f>(roi.width)), flags(buffer.aligned(32).take<Nox8u>(roi.height)) {}
///     };
///     WorkBuffer measure;                       // no memory
///     Areas(measure, roi);
///     return storeSize(measure.bytes() + 31, size); // 31: the caller's address may lie anywhere
///     ...
///     WorkBuffer work(buffer, 32);              // the caller's buffer, moved up to a multiple of 32
///     const Areas areas(work, roi);
///
/// Lengths and sums are formed in 64 bits and stop at the largest value, so that no size wraps.
class WorkBuffer {
public:
    /// Measures: pointers that it gives have no meaning.
    WorkBuffer() = default;
    /// Starts at the first address from `buffer` on that is a multiple of `multiple`, a power of two.
    WorkBuffer(void *buffer, std::size_t multiple) : base_(alignUp(static_cast<unsigned char *>(buffer), multiple)) {}

    /// The next `length` elements of T; a length below 1 takes nothing.
    template <class T>
    T *take(long long length) {
        unsigned char *area = base_ + (base_ == nullptr ? 0 : static_cast<std::ptrdiff_t>(bytes_));
        if (length > 0)
            bytes_ = limitedSum(bytes_, limitedProduct(length, static_cast<long long>(sizeof(T))));
        return reinterpret_cast<T *>(area);
    }
    /// Goes on at the next multiple of `multiple` bytes from the start.
    WorkBuffer &aligned(int multiple) {
        const long long rest = bytes_ & (multiple - 1);
        if (rest != 0)
            bytes_ = limitedSum(bytes_, multiple - rest);
        return *this;
    }
    /// What has been taken so far, gaps included.
    long long bytes() const { return bytes_; }

private:
    unsigned char *base_ = nullptr;
    long long bytes_ = 0;
};

/// Stores a size that an int holds; noxStsBadSize, and nothing stored, for one that it does not.
inline NoxStatus storeSize(long long bytes, int *size) {
    const NoxStatus status = checkBufferBytes(bytes);
    if (status == noxStsNoError)
        *size = static_cast<int>(bytes);
    return status;
}

} // namespace nox
