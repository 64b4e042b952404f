// The benchmark runner's interface: a source registers members, the runner measures and prints them.
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

/// Registers the members of one source before main.
struct Registrar {
    explicit Registrar(void (*addMembers)()) { addMembers(); }
};

/// A packed image with 64-byte aligned rows start, shared by the closures of a Work.
template <class T>
class Image {
public:
    Image(NoxiSize size, int channels = 1)
        : size_(size), step_(size.width * channels * int(sizeof(T))),
          data_(static_cast<T *>(std::aligned_alloc(64, (std::size_t(step_) * size.height + 127) / 64 * 64)),
                std::free) {}

    T *data() const { return data_.get(); }
    int step() const { return step_; }
    NoxiSize roi() const { return size_; }
    std::size_t count() const { return std::size_t(step_) / sizeof(T) * size_.height; }

private:
    NoxiSize size_;
    int step_;
    std::shared_ptr<T> data_;
};

/// A smooth picture with some texture, in the element's natural range (floats 0 to 255).
template <class T>
Image<T> picture(NoxiSize size, int channels = 1, unsigned seed = 1);
extern template Image<Nox8u> picture<Nox8u>(NoxiSize, int, unsigned);
extern template Image<Nox8s> picture<Nox8s>(NoxiSize, int, unsigned);
extern template Image<Nox16u> picture<Nox16u>(NoxiSize, int, unsigned);
extern template Image<Nox16s> picture<Nox16s>(NoxiSize, int, unsigned);
extern template Image<Nox32s> picture<Nox32s>(NoxiSize, int, unsigned);
extern template Image<Nox32f> picture<Nox32f>(NoxiSize, int, unsigned);

} // namespace bench
