// Segmentation: flood fills, labels and boundaries, watersheds and growth along gradients.
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/floodfill.h"
#include "reference/segments.h"
#include "reference/watershed.h"

namespace {

using reference::floodfill::Kind;

enum class Pattern { Empty, Comb, Checkerboard };

/// Fills a picture again and again, with two values in turn.
template <class T, class Call>
bench::Work fillWork(NoxiSize size, int channels, Kind kind, bool diagonal, Pattern pattern, Call call) {
    const bench::Image<T> image(size, channels);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < channels; ++c)
                image.data()[(std::size_t(y) * size.width + x) * channels + c] =
                    pattern == Pattern::Empty || (pattern == Pattern::Comb && (y == 0 || x % 2 == 0)) ||
                            (pattern == Pattern::Checkerboard && (x + y) % 2 == 0)
                        ? T(1)
                        : T(100);
    int bytes = 0;
    if (kind == Kind::Gradient)
        noxiFloodFillGetSize_Grad(size, &bytes);
    else
        noxiFloodFillGetSize(size, &bytes);
    const bench::Image<Nox8u> buffer({bytes, 1});
    const auto next = std::make_shared<int>(2);
    const NoxiPoint seed = {size.width / 2 * 2 / 2, 0};
    const auto color = [=] {
        *next = 3 - *next;
        return std::array<T, 3>{T(*next), T(*next), T(*next)};
    };
    return {[=] {
                const auto value = color();
                const std::array<T, 3> delta{};
                NoxiConnectedRegion region;
                call(image.data(), image.step(), size, seed, value.data(), delta.data(), &region, buffer.data());
            },
            [=] {
                NoxiConnectedRegion region;
                reference::floodfill::fill(kind, reference::floodfill::View<T>{image.data(), image.step(), channels},
                                           size, seed, diagonal, color(), {}, {}, region);
            }};
}

template <class T, class Call>
void addFill(const char *name, int channels, Kind kind, bool diagonal, Call call) {
    const double bytes = channels * double(sizeof(T));
    bench::add({name, bytes, bytes, false,
                [=](NoxiSize size) { return fillWork<T>(size, channels, kind, diagonal, Pattern::Empty, call); }});
    if (channels > 1 || sizeof(T) > 1)
        return;
    const std::array<std::pair<Pattern, const char *>, 3> patterns = {{{Pattern::Empty, " on an empty image"},
                                                                       {Pattern::Comb, " on a comb"},
                                                                       {Pattern::Checkerboard, " on a checkerboard"}}};
    for (const auto &[pattern, what] : patterns)
        bench::add({std::string(name) + what,
                    bytes,
                    bytes,
                    false,
                    [=, p = pattern](NoxiSize size) { return fillWork<T>(size, channels, kind, diagonal, p, call); },
                    {{1024, 1024}, {2048, 2048}}});
}

// One line per member: VALUE is * for the members that take their values by value.
#define FILL(CON, TAG, CHANNELS, VALUE)                                                                                \
    addFill<Nox##TAG>("noxiFloodFill_" #CON "Con_" #TAG "_C" #CHANNELS "IR", CHANNELS, Kind::Plain, (CON) == 8,        \
                      [](Nox##TAG *image, int step, NoxiSize roi, NoxiPoint seed, const Nox##TAG *value,               \
                         const Nox##TAG *, NoxiConnectedRegion *region, Nox8u *buffer) {                               \
                          noxiFloodFill_##CON##Con_##TAG##_C##CHANNELS##IR(image, step, roi, seed, VALUE value,        \
                                                                           region, buffer);                            \
                      });
#define FILL_DELTA(KIND, CON, TAG, CHANNELS, VALUE)                                                                    \
    addFill<Nox##TAG>("noxiFloodFill_" #KIND #CON "Con_" #TAG "_C" #CHANNELS "IR", CHANNELS,                           \
                      std::string(#KIND) == "Grad" ? Kind::Gradient : Kind::Range, (CON) == 8,                         \
                      [](Nox##TAG *image, int step, NoxiSize roi, NoxiPoint seed, const Nox##TAG *value,               \
                         const Nox##TAG *delta, NoxiConnectedRegion *region, Nox8u *buffer) {                          \
                          noxiFloodFill_##KIND##CON##Con_##TAG##_C##CHANNELS##IR(                                      \
                              image, step, roi, seed, VALUE value, VALUE delta, VALUE delta, region, buffer);          \
                      });
#define FILLS(CON, TAG, CHANNELS, VALUE)                                                                               \
    FILL(CON, TAG, CHANNELS, VALUE)                                                                                    \
    FILL_DELTA(Range, CON, TAG, CHANNELS, VALUE)                                                                       \
    FILL_DELTA(Grad, CON, TAG, CHANNELS, VALUE)

/// Labels in patches of 16 x 16 pixels.
bench::Image<Nox8u> patches(NoxiSize size) {
    bench::Image<Nox8u> image(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            image.data()[std::size_t(y) * size.width + x] = Nox8u(1 + (x / 16 * 7 + y / 16 * 13) % 200);
    return image;
}

void addBoundSegments(int norm) {
    bench::add({"noxiBoundSegments_8u_C1IR norm " + std::to_string(norm), 1, 1, false, [norm](NoxiSize size) {
                    const auto image = patches(size);
                    return bench::Work{
                        [=] { noxiBoundSegments_8u_C1IR(image.data(), image.step(), size, 255, norm); },
                        [=] { reference::segments::bound(image.data(), image.step(), size, 255, norm); }};
                }});
}

/// Squares of 10 x 10 pixels that do not touch.
void addLabelMarkers(int norm) {
    bench::add({"noxiLabelMarkers_8u_C1IR norm " + std::to_string(norm), 1, 1, false, [norm](NoxiSize size) {
                    const bench::Image<Nox8u> image(size);
                    for (int y = 0; y < size.height; ++y)
                        for (int x = 0; x < size.width; ++x)
                            image.data()[std::size_t(y) * size.width + x] = x % 16 < 10 && y % 16 < 10 ? 1 : 0;
                    int bytes = 0, count = 0;
                    noxiLabelMarkersGetBufferSize_8u_C1R(size, &bytes);
                    const bench::Image<Nox8u> buffer({bytes, 1});
                    return bench::Work{
                        [=]() mutable {
                            noxiLabelMarkers_8u_C1IR(image.data(), image.step(), size, 1, 254, norm, &count,
                                                     buffer.data());
                        },
                        [=] { reference::segments::label(image.data(), image.step(), size, 1, 254, norm); }};
                }});
}

/// A picture and 200 labelled pixels, which each call gets anew.
struct Seeded {
    Seeded(NoxiSize roi, int channels) : size(roi), src(bench::picture<Nox8u>(roi, channels)), seeds(roi), labels(roi) {
        std::memset(seeds.data(), 0, seeds.count());
        for (int i = 0; i < 200; ++i)
            seeds.data()[(i * 2654435761U % 65536U) * static_cast<Nox32u>(seeds.count()) / 65536U] = Nox8u(1 + i);
    }
    Nox8u *freshLabels() const {
        std::memcpy(labels.data(), seeds.data(), seeds.count());
        return labels.data();
    }
    reference::watershed::Picture picture() const {
        return {src.data(), src.step(), src.step() / size.width, freshLabels(), labels.step(), size};
    }
    NoxiSize size;
    bench::Image<Nox8u> src, seeds, labels;
};

const std::vector<NoxiSize> watershedSizes = {{64, 64}, {640, 480}, {1024, 1024}};

void addWatershed(int norm, int flag) {
    const bool queue = (flag & 1) != 0;
    bench::add({"noxiSegmentWatershed_8u_C1IR " + std::string(queue ? "queue" : "cost") + " norm " +
                    std::to_string(norm) + " flag " + std::to_string(flag),
                2, 1, false,
                [=](NoxiSize size) {
                    const Seeded s(size, 1);
                    int bytes = 0;
                    noxiSegmentWatershedGetBufferSize_8u_C1R(size, &bytes);
                    const bench::Image<Nox8u> buffer({bytes, 1});
                    return bench::Work{[=] {
                                           noxiSegmentWatershed_8u_C1IR(s.src.data(), s.src.step(), s.freshLabels(),
                                                                        s.labels.step(), size, norm, flag,
                                                                        buffer.data());
                                       },
                                       [=] {
                                           if (queue)
                                               reference::watershed::byHeap(s.picture(), norm);
                                           else
                                               reference::watershed::byCost(s.picture(), norm);
                                       }};
                },
                watershedSizes});
}

template <class Entry>
void addSegmentGradient(const char *name, int channels, int norm, int flag, Entry entry) {
    bench::add({std::string(name) + " norm " + std::to_string(norm) + " flag " + std::to_string(flag), channels + 1.0,
                1, false,
                [=](NoxiSize size) {
                    const Seeded s(size, channels);
                    int bytes = 0;
                    noxiSegmentGradientGetBufferSize_8u_C1R(size, &bytes);
                    const bench::Image<Nox8u> buffer({bytes, 1});
                    return bench::Work{[=] {
                                           entry(s.src.data(), s.src.step(), s.freshLabels(), s.labels.step(), size,
                                                 norm, flag, buffer.data());
                                       },
                                       [=] { reference::watershed::byGradient(s.picture(), norm, flag); }};
                },
                watershedSizes});
}

const bench::Registrar registrar([] {
    FILLS(4, 8u, 1, *)
    FILLS(8, 8u, 1, *)
    FILLS(4, 8u, 3, )
    FILLS(8, 8u, 3, )
    FILLS(4, 32f, 1, *)
    FILLS(8, 32f, 1, *)
    FILLS(4, 32f, 3, )
    FILLS(8, 32f, 3, )
    for (const int norm : {0, 1}) {
        addLabelMarkers(norm);
        addBoundSegments(norm);
        addWatershed(norm, 1);
        addWatershed(norm, 1 + 64);
        for (const int flag : {0, 64}) {
            addSegmentGradient("noxiSegmentGradient_8u_C1IR", 1, norm, flag, noxiSegmentGradient_8u_C1IR);
            addSegmentGradient("noxiSegmentGradient_8u_C3IR", 3, norm, flag, noxiSegmentGradient_8u_C3IR);
        }
    }
    for (int norm = 0; norm < 4; ++norm)
        addWatershed(norm, 2);
});

} // namespace
