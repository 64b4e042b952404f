#include "fixedinputs.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace bench {

namespace {

/// Images that are alive, in the order of their making.
struct Watched {
    std::weak_ptr<void> memory;
    std::size_t bytes;
};
std::vector<Watched> watched;

Kind kind = Kind::Smooth;

unsigned nextNoise(unsigned &noise) {
    noise = noise * 1664525U + 1013904223U;
    return noise >> 8;
}

/// A wave of whole numbers from 0 to 1023 without a library function, which might round differently elsewhere.
int wave(int position, int period) {
    const int phase = (position % period + period) % period * 2048 / period;
    return phase < 1024 ? phase : 2047 - phase;
}

template <class T>
T smoothElement(int x, int y, int channel, unsigned seed, unsigned noise) {
    const int level = 3 * wave(x + 31 * channel + int(seed) * 7, 57) + 4 * wave(y + int(seed) * 13, 39) +
                      wave(x + y, 11) + int(noise % 64); // 0 to 8254
    if constexpr (std::is_floating_point_v<T>)
        return T(level / 33); // whole numbers, as pictures of 8 bits give them
    else if constexpr (sizeof(T) == 1)
        return T(level / 33 - (std::is_signed_v<T> ? 128 : 0));
    else
        return T(level * 7 - (std::is_signed_v<T> ? 28000 : 0));
}

/// Integers over the whole range; floats of all 24 bits and of magnitudes that differ by up to 2^8, with zeros.
template <class T>
T roughElement(unsigned &noise) {
    const unsigned value = nextNoise(noise);
    if constexpr (std::is_floating_point_v<T>) {
        const unsigned exponent = nextNoise(noise) % 9;
        const T magnitude = T(value) / T(1U << (16 + exponent));
        return nextNoise(noise) % 31 == 0 ? T(0) : nextNoise(noise) % 2 == 0 ? magnitude : -magnitude;
    } else {
        return T(value);
    }
}

} // namespace

std::vector<Case> casesOf(const Member &member) {
    constexpr NoxiSize standard[] = {{67, 45}, {130, 33}, {301, 200}, {640, 260}};
    constexpr long long largest = 1 << 20;
    std::vector<NoxiSize> sizes(std::begin(standard), std::end(standard));
    if (!member.sizes.empty())
        sizes = member.sizes;
    std::vector<Case> cases;
    for (const NoxiSize size : sizes)
        for (const Kind each : {Kind::Smooth, Kind::Rough})
            for (const int threads : {1, 3})
                if (static_cast<long long>(size.width) * size.height <= largest && (threads == 1 || member.parallel))
                    cases.push_back({size, each, threads});
    return cases;
}

Work workOf(const Member &member, const Case &each) {
    kind = each.kind;
    watched.clear();
    return member.make(each.size);
}

void visitImages(const std::function<void(const void *, std::size_t)> &visit) {
    for (const Watched &image : watched)
        if (const auto memory = image.memory.lock())
            visit(memory.get(), image.bytes);
}

std::shared_ptr<void> imageMemory(std::size_t bytes) {
    const std::shared_ptr<void> memory(std::aligned_alloc(64, (bytes + 127) / 64 * 64), std::free);
    std::memset(memory.get(), 0x5A, bytes);
    watched.push_back({memory, bytes});
    return memory;
}

template <class T>
Image<T> picture(NoxiSize size, int channels, unsigned seed) {
    Image<T> image(size, channels);
    unsigned noise = seed * 2654435761U + 1U;
    T *element = image.data();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int channel = 0; channel < channels; ++channel)
                *element++ = kind == Kind::Smooth ? smoothElement<T>(x, y, channel, seed, nextNoise(noise))
                                                  : roughElement<T>(noise);
    return image;
}
BENCH_PICTURES(BENCH_DEFINED)

} // namespace bench
