// Morphology: minimum and maximum filters, erosion and dilation by each kind of mask, compound and grey operations, and
// reconstruction.
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "picture.h"
#include "reference/morphology.h"

namespace {

using reference::morphology::View;

template <class T>
View<const T> source(const bench::Image<T> &image, int channels) {
    return {image.data(), image.step(), channels};
}
template <class T>
View<T> result(const bench::Image<T> &image, int channels) {
    return {image.data(), image.step(), channels};
}

template <class T, class Entry, class Query>
void addFilter(const std::string &name, Entry entry, Query query, bool largest, int channels,
               const std::vector<NoxiSize> &windows) {
    for (const NoxiSize window : windows)
        bench::add(
            {name + " " + std::to_string(window.width) + "x" + std::to_string(window.height),
             double(sizeof(T)) * channels, double(sizeof(T)) * channels, false, [=](NoxiSize size) -> bench::Work {
                 const auto src = bench::picture<T>(size, channels);
                 const bench::Image<T> dst(size, channels);
                 int bytes = 0;
                 query(size.width, window, &bytes);
                 const bench::Buffer buffer(bytes);
                 const NoxiPoint anchor{window.width / 2, window.height / 2};
                 return {[=] {
                             entry(src.data(), src.step(), dst.data(), dst.step(), size, window, anchor, buffer.data());
                         },
                         [=] {
                             reference::morphology::overRectangle<T>(largest, source(src, channels),
                                                                     result(dst, channels), size, window, anchor);
                         }};
             }});
}

struct Mask {
    std::string name;
    NoxiSize size;
    std::vector<Nox8u> cells;
    NoxiPoint anchor() const { return {size.width / 2, size.height / 2}; }
};
Mask disc(int diameter) {
    Mask mask{"disc " + std::to_string(diameter), {diameter, diameter}, {}};
    const int middle = diameter / 2;
    for (int y = -middle; y <= middle; ++y)
        for (int x = -middle; x <= middle; ++x)
            mask.cells.push_back(4 * (x * x + y * y) <= diameter * diameter);
    return mask;
}
Mask full(int side) {
    return {"full " + std::to_string(side), {side, side}, std::vector<Nox8u>(std::size_t(side) * side, 1)};
}
Mask scattered(int side) {
    Mask mask{"random " + std::to_string(side), {side, side}, {}};
    unsigned noise = 7;
    for (int i = 0; i < side * side; ++i) {
        noise = noise * 1664525U + 1013904223U;
        mask.cells.push_back(noise >> 31);
    }
    return mask;
}

template <class T, class InitAlloc, class Entry>
void addMask(const std::string &name, InitAlloc initAlloc, Entry entry, bool largest, int channels, const Mask &mask) {
    bench::add(
        {name + " " + mask.name, double(sizeof(T)) * channels, double(sizeof(T)) * channels, false,
         [=](NoxiSize size) -> bench::Work {
             const auto src = bench::picture<T>(size, channels);
             const bench::Image<T> dst(size, channels);
             NoxiMorphState *state = nullptr;
             initAlloc(size.width, mask.cells.data(), mask.size, mask.anchor(), &state);
             const std::shared_ptr<NoxiMorphState> owned(state, noxiMorphologyFree);
             return {
                 [=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, noxBorderReplicate, owned.get()); },
                 [=] {
                     reference::morphology::overMask<T>(largest, source(src, channels), result(dst, channels), size,
                                                        mask.cells.data(), mask.size, mask.anchor());
                 }};
         }});
}

template <class T, class InitAlloc, class Entry>
void addCompound(const std::string &name, InitAlloc initAlloc, Entry entry, int channels, const Mask &mask) {
    bench::add({name + " " + mask.name, double(sizeof(T)) * channels, double(sizeof(T)) * channels, false,
                [=](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, channels);
                    const bench::Image<T> dst(size, channels);
                    NoxiMorphAdvState *state = nullptr;
                    initAlloc(&state, size, mask.cells.data(), mask.size, mask.anchor());
                    const std::shared_ptr<NoxiMorphAdvState> owned(state, noxiMorphAdvFree);
                    return {[=] {
                                entry(src.data(), src.step(), dst.data(), dst.step(), size, noxBorderReplicate,
                                      owned.get());
                            },
                            {}};
                }});
}

template <class T, class Kernel, class InitAlloc, class Free, class Entry>
void addGray(const std::string &name, InitAlloc initAlloc, Free release, Entry entry, bool largest, int side) {
    bench::add({name + " " + std::to_string(side) + "x" + std::to_string(side), sizeof(T), sizeof(T), false,
                [=](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size);
                    const bench::Image<T> dst(size);
                    std::vector<Kernel> kernel;
                    for (int i = 0; i < side * side; ++i)
                        kernel.push_back(Kernel(i * 7 % 40 - 20));
                    NoxiMorphGrayState *state = nullptr;
                    initAlloc(&state, size, kernel.data(), {side, side}, {side / 2, side / 2});
                    const std::shared_ptr<NoxiMorphGrayState> owned(state, release);
                    return {[=] {
                                entry(src.data(), src.step(), dst.data(), dst.step(), size, noxBorderReplicate,
                                      owned.get());
                            },
                            [=] {
                                reference::morphology::gray(largest, source(src, 1), result(dst, 1), size,
                                                            kernel.data(), {side, side}, {side / 2, side / 2});
                            }};
                }});
}

/// A mask image and what its marker starts as.
template <class T>
struct Scene {
    bench::Image<T> mask, marker;
};

/// Holes filled: the marker is the border of the picture, everything inside starts at the top and shrinks.
template <class T>
Scene<T> holes(const bench::Image<Nox8u> &picture) {
    const NoxiSize size = picture.roi();
    Scene<T> scene{bench::Image<T>(size), bench::Image<T>(size)};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::size_t i = std::size_t(y) * size.width + x;
            const bool edge = x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1;
            scene.mask.data()[i] = T(picture.data()[i]);
            scene.marker.data()[i] = edge ? T(picture.data()[i]) : T(255);
        }
    return scene;
}

/// A corridor that winds to the middle, and a seed at its entrance.
template <class T>
Scene<T> spiral(NoxiSize size) {
    Scene<T> scene{bench::Image<T>(size), bench::Image<T>(size)};
    for (std::size_t i = 0; i < scene.mask.count(); ++i)
        scene.mask.data()[i] = scene.marker.data()[i] = T(0);
    int x = 0, y = 0, dx = 1, dy = 0, left = 0, top = 0, right = size.width - 1, bottom = size.height - 1;
    scene.marker.data()[0] = T(255);
    for (bool turned = false; left <= right && top <= bottom;) {
        scene.mask.data()[std::size_t(y) * size.width + x] = T(255);
        const bool atEnd =
            (dx > 0 && x == right) || (dy > 0 && y == bottom) || (dx < 0 && x == left) || (dy < 0 && y == top);
        if (!atEnd) {
            x += dx;
            y += dy;
            turned = false;
            continue;
        }
        if (turned)
            break;
        turned = true;
        if (dx > 0)
            top += 2;
        else if (dy > 0)
            right -= 2;
        else if (dx < 0)
            bottom -= 2;
        else
            left += 2;
        const int old = dx;
        dx = -dy;
        dy = old;
    }
    return scene;
}

template <class T, class Query, class Entry, class Make>
void addReconstruct(const std::string &name, Query query, Entry entry, bool dilate, int norm, const Make &make,
                    bool plain) {
    bench::add({name + (norm == 0 ? " norm 0" : " norm 1"),
                2.0 * sizeof(T),
                sizeof(T),
                true,
                [=](NoxiSize size) -> bench::Work {
                    const Scene<T> scene = make(size);
                    const bench::Image<T> grown(size);
                    int bytes = 0;
                    query(size, &bytes);
                    const bench::Buffer buffer(bytes);
                    const auto start = [=] { std::copy_n(scene.marker.data(), grown.count(), grown.data()); };
                    bench::Work work{[=] {
                                         start();
                                         entry(scene.mask.data(), scene.mask.step(), grown.data(), grown.step(), size,
                                               buffer.data(), norm);
                                     },
                                     {}};
                    if (plain)
                        work.reference = [=] {
                            start();
                            reference::morphology::reconstruct(dilate, source(scene.mask, 1), result(grown, 1), size,
                                                               norm == 0);
                        };
                    return work;
                },
                {{2048, 2048}}});
}

template <class T, class Query, class Erode, class Dilate>
void addReconstructions(const std::string &tag, Query query, Erode erode, Dilate dilate) {
    constexpr const char *path = NOXCV_PICTURES "/coins.png";
    const std::string erodeName = "noxiMorphReconstructErode_" + tag, dilateName = "noxiMorphReconstructDilate_" + tag;
    if (std::ifstream(path)) // tools/fetch-pictures brings it
        for (const int norm : {1, 0})
            addReconstruct<T>(
                erodeName + " coins.png", query, erode, false, norm,
                [](NoxiSize size) { return holes<T>(bench::photograph(path, size)); }, true);
    addReconstruct<T>(
        erodeName + " picture", query, erode, false, 1,
        [](NoxiSize size) { return holes<T>(bench::picture<Nox8u>(size)); }, true);
    addReconstruct<T>(
        dilateName + " spiral", query, dilate, true, 1, [](NoxiSize size) { return spiral<T>(size); }, false);
}

#define NOX_EACH_LAYOUT(ADD, ...)                                                                                      \
    ADD(Nox8u, 8u_C1R, 1, __VA_ARGS__);                                                                                \
    ADD(Nox8u, 8u_C3R, 3, __VA_ARGS__);                                                                                \
    ADD(Nox8u, 8u_C4R, 4, __VA_ARGS__);                                                                                \
    ADD(Nox32f, 32f_C1R, 1, __VA_ARGS__);                                                                              \
    ADD(Nox32f, 32f_C3R, 3, __VA_ARGS__);                                                                              \
    ADD(Nox32f, 32f_C4R, 4, __VA_ARGS__)
#define NOX_BENCH_FILTER(TYPE, TAG, CHANNELS, OP, LARGEST, WINDOWS)                                                    \
    addFilter<TYPE>("noxiFilter" #OP "BorderReplicate_" #TAG, noxiFilter##OP##BorderReplicate_##TAG,                   \
                    noxiFilter##OP##GetBufferSize_##TAG, LARGEST, CHANNELS, WINDOWS)
#define NOX_BENCH_MASK(TYPE, TAG, CHANNELS, OP, LARGEST, MASK)                                                         \
    addMask<TYPE>("noxi" #OP "BorderReplicate_" #TAG, noxiMorphologyInitAlloc_##TAG, noxi##OP##BorderReplicate_##TAG,  \
                  LARGEST, CHANNELS, MASK)
#define NOX_BENCH_COMPOUND(TYPE, TAG, CHANNELS, OP, MASK)                                                              \
    addCompound<TYPE>("noxiMorph" #OP "Border_" #TAG, noxiMorphAdvInitAlloc_##TAG, noxiMorph##OP##Border_##TAG,        \
                      CHANNELS, MASK)

const bench::Registrar registrar([] {
    const std::vector<NoxiSize> windows = {{3, 3},   {5, 5},     {7, 7},     {15, 15}, {31, 31},
                                           {63, 63}, {127, 127}, {255, 255}, {255, 1}, {1, 255}};
    const std::vector<NoxiSize> few = {{3, 3}, {15, 15}, {255, 255}};
    NOX_BENCH_FILTER(Nox8u, 8u_C1R, 1, Min, false, windows);
    NOX_BENCH_FILTER(Nox8u, 8u_C3R, 3, Min, false, few);
    NOX_BENCH_FILTER(Nox8u, 8u_C4R, 4, Min, false, few);
    NOX_BENCH_FILTER(Nox32f, 32f_C1R, 1, Min, false, windows);
    NOX_BENCH_FILTER(Nox32f, 32f_C3R, 3, Min, false, few);
    NOX_BENCH_FILTER(Nox32f, 32f_C4R, 4, Min, false, few);
    NOX_EACH_LAYOUT(NOX_BENCH_FILTER, Max, true, few);
    NOX_EACH_LAYOUT(NOX_BENCH_MASK, Erode, false, disc(15));
    NOX_EACH_LAYOUT(NOX_BENCH_MASK, Dilate, true, disc(15));
    NOX_EACH_LAYOUT(NOX_BENCH_MASK, Erode, false, scattered(5));
    NOX_EACH_LAYOUT(NOX_BENCH_MASK, Dilate, true, scattered(5));
    NOX_BENCH_MASK(Nox8u, 8u_C1R, 1, Erode, false, full(3));
    NOX_BENCH_MASK(Nox8u, 8u_C1R, 1, Erode, false, full(15));
    NOX_BENCH_MASK(Nox8u, 8u_C1R, 1, Erode, false, disc(31));
    NOX_BENCH_MASK(Nox8u, 8u_C1R, 1, Erode, false, scattered(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Open, full(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Open, disc(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Close, disc(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Tophat, full(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Blackhat, full(15));
    NOX_EACH_LAYOUT(NOX_BENCH_COMPOUND, Gradient, full(15));
    for (const int side : {3, 5, 9}) {
        addGray<Nox8u, Nox32s>("noxiGrayDilateBorder_8u_C1R", noxiMorphGrayInitAlloc_8u_C1R, noxiMorphGrayFree_8u_C1R,
                               noxiGrayDilateBorder_8u_C1R, true, side);
        addGray<Nox8u, Nox32s>("noxiGrayErodeBorder_8u_C1R", noxiMorphGrayInitAlloc_8u_C1R, noxiMorphGrayFree_8u_C1R,
                               noxiGrayErodeBorder_8u_C1R, false, side);
        addGray<Nox32f, Nox32f>("noxiGrayDilateBorder_32f_C1R", noxiMorphGrayInitAlloc_32f_C1R,
                                noxiMorphGrayFree_32f_C1R, noxiGrayDilateBorder_32f_C1R, true, side);
        addGray<Nox32f, Nox32f>("noxiGrayErodeBorder_32f_C1R", noxiMorphGrayInitAlloc_32f_C1R,
                                noxiMorphGrayFree_32f_C1R, noxiGrayErodeBorder_32f_C1R, false, side);
    }
    addReconstructions<Nox8u>("8u_C1IR", noxiMorphReconstructGetBufferSize_8u_C1, noxiMorphReconstructErode_8u_C1IR,
                              noxiMorphReconstructDilate_8u_C1IR);
    addReconstructions<Nox32f>("32f_C1IR", noxiMorphReconstructGetBufferSize_32f_C1, noxiMorphReconstructErode_32f_C1IR,
                               noxiMorphReconstructDilate_32f_C1IR);
});

} // namespace
