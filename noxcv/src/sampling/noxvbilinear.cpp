// Bilinear interpolation of rows.
#include "noxvbilinear.h"

#include <cstring>

namespace nox {
/// How the integer kernels go over the results.
enum class Order { rows, columns };
} // namespace nox

#define NOX_KERNELS "sampling/noxvbilinearkernels.inc"
#include "noxveachtier.h"

constinit const std::array<Nox32f, 256> own8u32fTab = [] {
    std::array<Nox32f, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<Nox32f>(i);
    return table;
}();

namespace nox {

namespace {

/// Pixel by pixel, for rows narrower than a vector.
template <class S, class D, class Bilinear>
void interpolatePixels(Rows<const S> src, Rows<D> dst, NoxiSize size, const Bilinear &bilinear) {
    for (int y = 0; y < size.height; ++y) {
        const Element<S> *p = src[y], *q = src[y + 1];
        Element<D> *d = dst[y];
        for (int x = 0; x < size.width; ++x)
            if constexpr (std::is_same_v<D, Nox32f>)
                d[x] = bilinear(asFloat(p[x]), asFloat(p[x + 1]), asFloat(q[x]), asFloat(q[x + 1]));
            else
                d[x] = bilinear(p[x], p[x + 1], q[x], q[x + 1]);
    }
}

/// Whole rows are copied where one weight of 16-bit pixels is a whole 1. Tells whether that is so.
template <class D>
bool copyWhole(Rows<const Nox8u>, Rows<D>, NoxiSize, const FixedBilinear<Nox8u, D> &) {
    return false;
}
bool copyWhole(Rows<const Nox16u> src, Rows<Nox16u> dst, NoxiSize size, const FixedBilinear<Nox16u, Nox16u> &bilinear) {
    if (bilinear.copied(src[0], src[1]) == nullptr)
        return false;
    for (int y = 0; y < size.height; ++y)
        std::memmove(dst[y], bilinear.copied(src[y], src[y + 1]),
                     sizeof(Nox16u) * static_cast<std::size_t>(size.width));
    return true;
}

/// Rows of fewer than eight pixels; tells whether they are.
template <class S, class D>
bool interpolateNarrow(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear) {
    if (size.width < baseline::fixedLanes)
        interpolatePixels(src, dst, size, bilinear);
    return size.width < baseline::fixedLanes;
}

template <Order order, class S, class D>
void interpolateFixed(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear) {
    if (copyWhole(src, dst, size, bilinear) || interpolateNarrow(src, dst, size, bilinear))
        return;
    const FixedConstants constants(bilinear);
    if (constants.small)
        NOX_ON_TIER_FOR(size.width * 2, fixedResults<order, true>(src, dst, size, constants));
    else
        NOX_ON_TIER_FOR(size.width * 2, fixedResults<order, false>(src, dst, size, constants));
}

} // namespace

template <class S, class D>
void interpolateImage(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear) {
    interpolateFixed<Order::rows>(src, dst, size, bilinear);
}

template <class S, class D>
void interpolatePatch(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedBilinear<S, D> &bilinear) {
    interpolateFixed<Order::columns>(src, dst, size, bilinear);
}

template <class S>
void interpolatePatch(Rows<const S> src, Rows<Nox32f> dst, NoxiSize size, const FloatBilinear &bilinear) {
    if (size.width < baseline::floatLanes)
        return interpolatePixels(src, dst, size, bilinear);
    NOX_ON_TIER_FOR(size.width * 4, floatColumns(src, dst, size, bilinear));
}

#define NOX_FIXED(SOURCE, DESTINATION)                                                                                 \
    template void interpolateImage(Rows<const SOURCE>, Rows<DESTINATION>, NoxiSize,                                    \
                                   const FixedBilinear<SOURCE, DESTINATION> &);                                        \
    template void interpolatePatch(Rows<const SOURCE>, Rows<DESTINATION>, NoxiSize,                                    \
                                   const FixedBilinear<SOURCE, DESTINATION> &);
NOX_FIXED(Nox8u, Nox8u)
NOX_FIXED(Nox8u, Nox16u)
NOX_FIXED(Nox16u, Nox16u)

template void interpolatePatch(Rows<const Nox8u>, Rows<Nox32f>, NoxiSize, const FloatBilinear &);
template void interpolatePatch(Rows<const Nox16u>, Rows<Nox32f>, NoxiSize, const FloatBilinear &);
template void interpolatePatch(Rows<const Nox32f>, Rows<Nox32f>, NoxiSize, const FloatBilinear &);

} // namespace nox
