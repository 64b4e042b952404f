// Aligned memory from replaceable allocator entries.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "noxcv/primitives.h"

void *(*nox_malloc)(size_t size) = std::malloc;
void *(*nox_calloc)(size_t count, size_t size) = std::calloc;
void *(*nox_realloc)(void *block, size_t size) = std::realloc;
void (*nox_free)(void *block) = std::free;
int nox_version = 1;
int nox_min_version = 0;

namespace {

constexpr std::size_t alignment = 32;
/// Room to align, and for the raw pointer just below the aligned one.
constexpr std::size_t surplus = alignment + sizeof(void *);

template <class T>
T *allocate(int length) {
    if (length < 1 || static_cast<std::uint64_t>(length) * sizeof(T) > SIZE_MAX - surplus)
        return nullptr;
    auto *raw = static_cast<unsigned char *>(nox_malloc(static_cast<std::size_t>(length) * sizeof(T) + surplus));
    if (raw == nullptr)
        return nullptr;
    const auto end = reinterpret_cast<std::uintptr_t>(raw) + surplus - 1;
    unsigned char *aligned = raw + (end / alignment * alignment - reinterpret_cast<std::uintptr_t>(raw));
    std::memcpy(aligned - sizeof(raw), static_cast<const void *>(&raw), sizeof(raw));
    return reinterpret_cast<T *>(aligned);
}

} // namespace

Nox8u *noxsMalloc_8u(int length) { return allocate<Nox8u>(length); }
Nox8s *noxsMalloc_8s(int length) { return allocate<Nox8s>(length); }
Nox16u *noxsMalloc_16u(int length) { return allocate<Nox16u>(length); }
Nox32s *noxsMalloc_32s(int length) { return allocate<Nox32s>(length); }
Nox32f *noxsMalloc_32f(int length) { return allocate<Nox32f>(length); }
Nox64f *noxsMalloc_64f(int length) { return allocate<Nox64f>(length); }

void noxsFree(void *block) {
    if (block == nullptr)
        return;
    void *raw = nullptr;
    std::memcpy(static_cast<void *>(&raw), static_cast<unsigned char *>(block) - sizeof(raw), sizeof(raw));
    nox_free(raw);
}
