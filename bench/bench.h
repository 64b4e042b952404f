// What a source of benchmarks registers: its members, each with a call on images of any size. Two programs use the
// list: the benchmark runner (main.cpp) measures the calls, the digest (digest.cpp) prints a hash of what each
// computes.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "noxtypes.h"

namespace bench {

/// One call on one size. The closures own their images.
struct Work {
    std::function<void()> run;       ///< the library's call
    std::function<void()> reference; ///< the plain loop; empty when there is none
};

/// One exported member.
struct Member {
    std::string name;
    double read;                        ///< bytes a pixel that must be read
    double written;                     ///< bytes a pixel that must be written
    bool parallel;                      ///< has a parallel form
    std::function<Work(NoxiSize)> make; ///< sets up images of that size
    std::vector<NoxiSize> sizes = {};   ///< instead of the standard sizes
};

/// Adds a member to the table.
void add(Member member);
/// All members so far.
const std::vector<Member> &members();

/// Registers the members of one source before main.
struct Registrar {
    explicit Registrar(void (*addMembers)()) { addMembers(); }
};

/// At least `bytes` bytes on a 64-byte boundary. The digest program fills them and looks at them after the call.
std::shared_ptr<void> imageMemory(std::size_t bytes);

/// Tells a call's result that is no image; the digest program takes it in.
void keepBytes(const void *bytes, std::size_t count);
template <class... Result>
void keep(const Result &...results) {
    (keepBytes(&results, sizeof(results)), ...);
}

/// A packed image whose first row starts on a 64-byte boundary, shared by the closures of a Work.
template <class T>
class Image {
public:
    Image(NoxiSize size, int channels = 1)
        : size_(size), step_(size.width * channels * int(sizeof(T))),
          data_(std::static_pointer_cast<T>(imageMemory(std::size_t(step_) * size.height))) {}

    T *data() const { return data_.get(); }
    int step() const { return step_; }
    NoxiSize roi() const { return size_; }
    std::size_t count() const { return std::size_t(step_) / sizeof(T) * size_.height; }

private:
    NoxiSize size_;
    int step_;
    std::shared_ptr<T> data_;
};

/// A work buffer: what a call leaves in it is no result.
class Buffer {
public:
    explicit Buffer(int bytes)
        : data_(static_cast<Nox8u *>(std::aligned_alloc(64, (std::size_t(bytes) + 127) / 64 * 64)), std::free) {}
    Nox8u *data() const { return data_.get(); }

private:
    std::shared_ptr<Nox8u> data_;
};

/// A smooth picture with some texture, in the element's natural range (floats 0 to 255).
template <class T>
Image<T> picture(NoxiSize size, int channels = 1, unsigned seed = 1);
// The benchmark and the digest program have pictures of their own, for these types.
#define BENCH_PICTURES(INSTANCE)                                                                                       \
    INSTANCE(Nox8u) INSTANCE(Nox8s) INSTANCE(Nox16u) INSTANCE(Nox16s) INSTANCE(Nox32s) INSTANCE(Nox32f)
#define BENCH_DECLARED(T) extern template Image<T> picture<T>(NoxiSize, int, unsigned);
#define BENCH_DEFINED(T) template Image<T> picture<T>(NoxiSize, int, unsigned);
BENCH_PICTURES(BENCH_DECLARED)

} // namespace bench
