// Inpainting of scratches and spots, five pixels in a hundred.
#include <memory>
#include <utility>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/inpaint.h"

namespace {

using reference::inpaint::Inpainter;
using reference::inpaint::Plane;

/// Slanting scratches two to three pixels wide, and spots.
bench::Image<Nox8u> damage(NoxiSize size) {
    const bench::Image<Nox8u> mask(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const bool scratch = (2 * x + 3 * y) % 179 < 6;
            const int sx = x % 71 - 35, sy = y % 67 - 33;
            mask.data()[std::size_t(y) * size.width + x] = scratch || sx * sx + sy * sy < 30 ? 255 : 0;
        }
    return mask;
}

bench::Image<Nox32f> distances(const bench::Image<Nox8u> &mask) {
    const bench::Image<Nox32f> map(mask.roi());
    int bytes = 0;
    noxiFastMarchingGetBufferSize_8u32f_C1R(mask.roi(), &bytes);
    const bench::Buffer buffer(bytes);
    noxiFastMarching_8u32f_C1R(mask.data(), mask.step(), map.data(), map.step(), mask.roi(), 0, buffer.data());
    return map;
}

template <class T>
Plane<T> planeOf(const bench::Image<T> &image, int channels) {
    Plane<T> plane(image.roi().width, image.roi().height, channels);
    std::copy_n(image.data(), image.count(), plane.pixels.begin());
    return plane;
}

using Init = decltype(&noxiInpaintInitAlloc_8u_C1R);
using Run = decltype(&noxiInpaint_8u_C1R);

std::shared_ptr<NoxiInpaintState> stateOf(Init init, const bench::Image<Nox32f> &map, const bench::Image<Nox8u> &mask,
                                          int method) {
    NoxiInpaintState *state = nullptr;
    init(&state, map.data(), map.step(), mask.data(), mask.step(), mask.roi(), 5, method);
    return {state, noxiInpaintFree_8u_C1R};
}

const std::vector<NoxiSize> sizes = {{640, 480}, {1920, 1080}};

void addInpaint(const char *name, Init init, Run run, int channels, int method) {
    bench::add({name, double(channels), double(channels), false,
                [=](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<Nox8u>(size, channels);
                    const bench::Image<Nox8u> dst(size, channels), mask = damage(size);
                    const auto map = distances(mask);
                    const auto state = stateOf(init, map, mask, method);
                    const auto plain = std::make_shared<Inpainter>(planeOf(map, 1), planeOf(mask, 1), 5.0F, method);
                    return {[=] { run(src.data(), src.step(), dst.data(), dst.step(), size, state.get()); },
                            [=] {
                                Plane<Nox8u> image = planeOf(src, channels);
                                plain->paint(image);
                                bench::keep(image.pixels[0]);
                            }};
                },
                sizes});
}

void addInit(const char *name, Init init) {
    bench::add({name, 5, 0, false,
                [=](NoxiSize size) -> bench::Work {
                    const auto mask = damage(size);
                    const auto map = distances(mask);
                    return {[=] {
                                const auto state = stateOf(init, map, mask, 0);
                                bench::keep(state->neighbourCount, state->order[state->count - 1]);
                            },
                            {}};
                },
                sizes});
}

void addMembers() {
    addInit("noxiInpaintInitAlloc_8u_C1R", noxiInpaintInitAlloc_8u_C1R);
    addInit("noxiInpaintInitAlloc_8u_C3R", noxiInpaintInitAlloc_8u_C3R);
    addInpaint("noxiInpaint_8u_C1R", noxiInpaintInitAlloc_8u_C1R, noxiInpaint_8u_C1R, 1, 0);
    addInpaint("noxiInpaint_8u_C1R isophote", noxiInpaintInitAlloc_8u_C1R, noxiInpaint_8u_C1R, 1, 1);
    addInpaint("noxiInpaint_8u_C3R", noxiInpaintInitAlloc_8u_C3R, noxiInpaint_8u_C3R, 3, 0);
    addInpaint("noxiInpaint_8u_C3R isophote", noxiInpaintInitAlloc_8u_C3R, noxiInpaint_8u_C3R, 3, 1);
}
const bench::Registrar registrar(addMembers);

} // namespace
