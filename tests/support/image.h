// Test images between guard pages.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "noxtypes.h"
#include "support/element.h"

namespace test {

/// Memory whose last byte is followed by an inaccessible page; another one lies before the first page.
class GuardedBytes {
public:
    explicit GuardedBytes(std::size_t size) : size_(size) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        mapped_ = (size + page - 1) / page * page + 2 * page;
        base_ = static_cast<unsigned char *>(
            mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (base_ == MAP_FAILED)
            std::abort();
        mprotect(base_, page, PROT_NONE);
        mprotect(base_ + mapped_ - page, page, PROT_NONE);
        data_ = base_ + mapped_ - page - size;
    }
    GuardedBytes(const GuardedBytes &) = delete;
    GuardedBytes &operator=(const GuardedBytes &) = delete;
    ~GuardedBytes() { munmap(base_, mapped_); }

    unsigned char *data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    std::size_t size_, mapped_;
    unsigned char *base_, *data_;
};

/// A work buffer of exactly `size` bytes that ends at a guard page.
using Buffer = GuardedBytes;

/// A work buffer of `size` bytes at any alignment: `shift` bytes lie between its end and the guard page, and hold a
/// pattern that must survive.
class ShiftedBuffer {
public:
    ShiftedBuffer(int size, int shift) : bytes_(std::size_t(size) + shift), size_(size) {
        std::memset(bytes_.data(), pattern, bytes_.size());
    }
    unsigned char *data() const { return bytes_.data(); }
    bool intact() const {
        for (std::size_t i = size_; i < bytes_.size(); ++i)
            if (bytes_.data()[i] != pattern)
                return false;
        return true;
    }

private:
    static constexpr unsigned char pattern = 0x5A;
    GuardedBytes bytes_;
    std::size_t size_;
};

/// Shifts that images take in turn, so that every test sees pixels at odd addresses, and every other image ends right
/// at its guard page.
inline int nextShift() {
    static unsigned count = 0;
    constexpr int shifts[] = {0, 1, 0, 3, 0, 6, 0, 5, 0, 2, 7};
    return shifts[count++ % (sizeof(shifts) / sizeof(shifts[0]))];
}

/// An image whose last pixel lies `shift` bytes before a guard page; without a shift of its own it takes the next one
/// in turn. The bytes between rows and behind the last one hold a pattern that must survive.
template <class T>
class Image {
public:
    /// `padding` bytes are added to each row's step.
    Image(int width, int height, int channels = 1, int padding = 0, int shift = nextShift())
        : width_(width), height_(height), channels_(channels), step_(width * channels * int(sizeof(T)) + padding),
          shift_(shift), bytes_(std::size_t(step_) * (height - 1) + rowBytes() + shift) {
        std::memset(bytes_.data(), gap, bytes_.size());
    }
    Image(const Image &other)
        : width_(other.width_), height_(other.height_), channels_(other.channels_), step_(other.step_),
          shift_(other.shift_), bytes_(other.bytes_.size()) {
        std::memcpy(bytes_.data(), other.bytes_.data(), bytes_.size());
    }
    Image &operator=(const Image &) = delete;

    T *data() const { return reinterpret_cast<T *>(bytes_.data()); }
    int step() const { return step_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int channels() const { return channels_; }
    NoxiSize roi() const { return {width_, height_}; }

    Run<T> row(int y) const { return rowAt(data(), step_, y); }
    Ref<T> at(int x, int y, int channel = 0) const { return row(y)[x * channels_ + channel]; }

    /// Sets each element to produce(x, y, channel).
    template <class Produce>
    Image &generate(Produce produce) {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                for (int c = 0; c < channels_; ++c)
                    at(x, y, c) = static_cast<T>(produce(x, y, c));
        return *this;
    }
    Image &fill(T value) {
        return generate([value](int, int, int) { return value; });
    }

    /// True when no byte between the rows, or behind the last one, has changed.
    bool gapsIntact() const {
        for (int y = 0; y + 1 < height_; ++y)
            for (const unsigned char *p = bytes_.data() + std::ptrdiff_t(y) * step_ + rowBytes(),
                                     *end = bytes_.data() + std::ptrdiff_t(y + 1) * step_;
                 p < end; ++p)
                if (*p != gap)
                    return false;
        for (int i = 1; i <= shift_; ++i)
            if (bytes_.data()[bytes_.size() - i] != gap)
                return false;
        return true;
    }

private:
    static constexpr unsigned char gap = 0xA5;
    int rowBytes() const { return width_ * channels_ * int(sizeof(T)); }

    int width_, height_, channels_, step_, shift_;
    GuardedBytes bytes_;
};

/// Bitwise equality of elements; two not-a-numbers are equal.
template <class T>
bool sameElement(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
        return (std::isnan(a) && std::isnan(b)) || std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
    } else {
        return a == b;
    }
}

/// Compares the pixels of two images bit for bit and reports the first difference; also checks both images' gaps.
template <class T>
::testing::AssertionResult sameImage(const Image<T> &actual, const Image<T> &expected) {
    for (int y = 0; y < expected.height(); ++y)
        for (int x = 0; x < expected.width(); ++x)
            for (int c = 0; c < expected.channels(); ++c)
                if (!sameElement<T>(actual.at(x, y, c), expected.at(x, y, c)))
                    return ::testing::AssertionFailure()
                           << "pixel (" << x << ", " << y << ") channel " << c << " of " << expected.width() << "x"
                           << expected.height() << ": " << +T(actual.at(x, y, c)) << ", expected "
                           << +T(expected.at(x, y, c));
    if (!actual.gapsIntact())
        return ::testing::AssertionFailure() << "bytes between the rows were written";
    return ::testing::AssertionSuccess();
}

using Random = std::mt19937;

/// A random element over the type's whole range, extremes often; floats are of moderate size, with zeros of both signs,
/// small whole and half numbers, which are often equal, and denormals among them.
template <class T>
T randomElement(Random &random) {
    if constexpr (std::is_floating_point_v<T>) {
        switch (random() % 32) {
        case 0:
            return T(0);
        case 1:
            return -T(0);
        case 2:
            return T(int(random() % 9) - 4) / 2;
        case 3:
            return std::numeric_limits<T>::denorm_min() * T(int(random() % 2000) - 1000);
        default:
            return static_cast<T>(std::uniform_real_distribution<double>(-1000.0, 1000.0)(random));
        }
    } else {
        constexpr auto low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
        switch (random() % 16) {
        case 0:
            return low;
        case 1:
            return high;
        default:
            return static_cast<T>(random());
        }
    }
}

/// An element for sums that are joined by slices: floats are fractions of 24 random bits, so that a sum shows in which
/// order it was formed; integers have some bits only, so that sums stay small.
template <class T>
T slicedElement(unsigned &noise) {
    noise = noise * 1664525U + 1013904223U;
    if constexpr (std::is_floating_point_v<T>)
        return T(noise >> 8) * T(0x1p-24);
    else
        return T(int(noise >> 20) - 99);
}

/// Fills an image with random elements.
template <class T>
Image<T> &randomize(Image<T> &image, Random &random) {
    return image.generate([&random](int, int, int) { return randomElement<T>(random); });
}

/// Sizes that every family is compared on: single pixels, rows, columns, odd sizes, vector tails, a few hundred.
inline std::vector<NoxiSize> testSizes() {
    return {{1, 1},   {1, 7},    {7, 1},  {2, 2},   {3, 3},   {5, 4},   {8, 3},   {15, 5},
            {16, 6},  {17, 2},   {31, 9}, {33, 17}, {40, 11}, {63, 5},  {64, 64}, {65, 3},
            {100, 1}, {127, 33}, {1, 65}, {2, 130}, {4, 39},  {257, 6}, {301, 97}};
}

/// Bytes added to an image's step: none, one element, an odd number of elements.
template <class T>
std::vector<int> testPaddings() {
    return {0, int(sizeof(T)), 13 * int(sizeof(T))};
}

} // namespace test
