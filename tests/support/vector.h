// Test vectors at any address, before a guard page.
#pragma once

#include <vector>

#include "image.h"

namespace test {

/// `length` elements with watched bytes before them; they end `shift` bytes before a guard page, so a shift that is no
/// multiple of the element size gives an unaligned vector.
template <class T>
class Vector {
public:
    explicit Vector(int length, int shift = 0)
        : length_(length), shift_(shift), bytes_(front + std::size_t(length) * sizeof(T) + shift) {
        std::memset(bytes_.data(), gap, bytes_.size());
    }
    Vector(const Vector &other) : length_(other.length_), shift_(other.shift_), bytes_(other.bytes_.size()) {
        std::memcpy(bytes_.data(), other.bytes_.data(), bytes_.size());
    }
    Vector &operator=(const Vector &) = delete;

    T *data() const { return reinterpret_cast<T *>(bytes_.data() + front); }
    int length() const { return length_; }
    Ref<T> operator[](int i) const { return Run<T>(data())[i]; }

    /// Sets each element to produce(i).
    template <class Produce>
    Vector &generate(Produce produce) {
        for (int i = 0; i < length_; ++i)
            (*this)[i] = static_cast<T>(produce(i));
        return *this;
    }

    bool gapsIntact() const {
        for (std::size_t i = 0; i < bytes_.size(); ++i)
            if ((i < front || i >= bytes_.size() - shift_) && bytes_.data()[i] != gap)
                return false;
        return true;
    }

private:
    static constexpr unsigned char gap = 0xA5;
    static constexpr std::size_t front = 64;

    int length_, shift_;
    GuardedBytes bytes_;
};

/// Compares bit for bit and reports the first difference; also checks the bytes around the actual vector.
template <class T>
::testing::AssertionResult sameVector(const Vector<T> &actual, const Vector<T> &expected) {
    for (int i = 0; i < expected.length(); ++i)
        if (!sameElement<T>(actual[i], expected[i]))
            return ::testing::AssertionFailure() << "element " << i << " of " << expected.length() << ": "
                                                 << +T(actual[i]) << ", expected " << +T(expected[i]);
    if (!actual.gapsIntact())
        return ::testing::AssertionFailure() << "bytes around the vector were written";
    return ::testing::AssertionSuccess();
}

/// Fills a vector with random elements.
template <class T>
Vector<T> &randomize(Vector<T> &vector, Random &random) {
    return vector.generate([&random](int) { return randomElement<T>(random); });
}

/// Lengths that every vector function is compared on: all short ones, and some about powers of two.
inline std::vector<int> testLengths() {
    std::vector<int> lengths;
    for (int length = 1; length <= 70; ++length)
        lengths.push_back(length);
    for (const int length : {100, 127, 128, 129, 255, 257, 1000, 4099})
        lengths.push_back(length);
    return lengths;
}

/// Bytes that vectors are moved by: aligned, odd, half an element, one element.
inline std::vector<int> testShifts() { return {0, 1, 2, 4, 7, 8, 16}; }

} // namespace test
