// Elements at any address, for tests and references. Values are copied byte by byte: neither the processor nor the
// compiler is told of an alignment that is not there.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace test {

/// One element, as an lvalue.
template <class T>
class Ref {
public:
    using Value = std::remove_const_t<T>;

    explicit Ref(T *at) : at_(at) {}
    Ref(const Ref &) = default;

    [[gnu::always_inline]] operator Value() const { // NOLINT(google-explicit-constructor)
        Value value;
        std::memcpy(&value, at_, sizeof(value));
        return value;
    }
    [[gnu::always_inline]] const Ref &operator=(Value value) const {
        std::memcpy(const_cast<void *>(static_cast<const void *>(at_)), &value, sizeof(value));
        return *this;
    }
    const Ref &operator=(const Ref &other) const { return *this = Value(other); }
    const Ref &operator+=(Value value) const { return *this = static_cast<Value>(Value(*this) + value); }

private:
    T *at_;
};

/// A run of elements, where a pointer to the first one would stand.
template <class T>
class Run {
public:
    Run(T *first) : first_(first) {}        // NOLINT(google-explicit-constructor)
    operator T *() const { return first_; } // NOLINT(google-explicit-constructor)

    [[gnu::always_inline]] auto operator[](std::ptrdiff_t i) const {
        if constexpr (std::is_const_v<T>)
            return typename Ref<T>::Value(Ref<T>(at(i)));
        else
            return Ref<T>(at(i));
    }
    Run operator+(std::ptrdiff_t i) const { return at(i); }

private:
    T *at(std::ptrdiff_t i) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
        return reinterpret_cast<T *>(reinterpret_cast<Byte *>(first_) + i * static_cast<std::ptrdiff_t>(sizeof(T)));
    }
    T *first_;
};

/// Row y of an image with a byte step.
template <class T>
Run<T> rowAt(T *image, std::ptrdiff_t step, std::ptrdiff_t y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T *>(reinterpret_cast<Byte *>(image) + y * step);
}

} // namespace test
