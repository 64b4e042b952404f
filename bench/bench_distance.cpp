// Distance maps: chamfer transforms, the true distance, fast marching.
#include <memory>
#include <string>

#include "bench.h"
#include "noxcv.h"
#include "reference/distance.h"

namespace {

using reference::distance::Plane;

/// Blobs of a few sizes in a picture, one pixel in `share` being 0.
bench::Image<Nox8u> blobs(NoxiSize size, int share) {
    const bench::Image<Nox8u> image(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const unsigned block = unsigned(x / 6 * 7919 + y / 5 * 104729) * 2654435761U;
            image.data()[std::size_t(y) * size.width + x] = (block >> 16) % unsigned(share) == 0 ? 0 : 255;
        }
    return image;
}

Plane<Nox8u> planeOf(const bench::Image<Nox8u> &image) {
    const NoxiSize size = image.roi();
    Plane<Nox8u> plane(size.width, size.height);
    std::copy_n(image.data(), image.count(), plane.pixels.begin());
    return plane;
}

const Nox32s *weightsOf3x3(Nox32s) {
    static constexpr Nox32s weights[] = {2, 3};
    return weights;
}
const Nox32f *weightsOf3x3(Nox32f) {
    static constexpr Nox32f weights[] = {0.955F, 1.3693F};
    return weights;
}
const Nox32s *weightsOf5x5(Nox32s) {
    static constexpr Nox32s weights[] = {5, 7, 11};
    return weights;
}
const Nox32f *weightsOf5x5(Nox32f) {
    static constexpr Nox32f weights[] = {1, 1.4F, 2.1969F};
    return weights;
}

template <class T, class Weight, class Entry>
void addChamfer(const char *name, Entry entry, bool five) {
    bench::add({name, 1, sizeof(T), true, [entry, five](NoxiSize size) -> bench::Work {
                    const auto src = blobs(size, 40);
                    const bench::Image<T> dst(size);
                    const auto plane = std::make_shared<Plane<Nox8u>>(planeOf(src));
                    const Weight *metrics = five ? weightsOf5x5(Weight{}) : weightsOf3x3(Weight{});
                    return {[=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, metrics); },
                            [=] {
                                const Plane<T> plain = five ? reference::distance::chamfer5x5<T>(*plane, metrics)
                                                            : reference::distance::chamfer3x3<T>(*plane, metrics);
                                bench::keep(plain.pixels[0]);
                            }};
                }});
}

void addInPlace(const char *name, NoxStatus (*entry)(Nox8u *, int, NoxiSize, const Nox32s *)) {
    bench::add({name, 1, 1, true, [entry](NoxiSize size) -> bench::Work {
                    const auto srcDst = blobs(size, 40);
                    static constexpr Nox32s metrics[] = {5, 7, 11};
                    return {[=] { entry(srcDst.data(), srcDst.step(), size, metrics); }, {}};
                }});
}

/// The plain form of the two stages: all columns, then the envelope of each row with divisions and roots as they come.
void plainTrueDistance(const Plane<Nox8u> &src, Plane<float> &d) {
    const int w = src.width, h = src.height;
    for (int x = 0; x < w; ++x) {
        int count = h;
        for (int y = 0; y < h; ++y) {
            count = src.at(x, y) == 0 ? 0 : count + 1;
            d.at(x, y) = float(count);
        }
        count = h;
        for (int y = h - 1; y >= 0; --y) {
            count = src.at(x, y) == 0 ? 0 : count + 1;
            const float nearest = std::min(d.at(x, y), float(count));
            d.at(x, y) = nearest >= float(h) ? 1e6F : nearest * nearest;
        }
    }
    std::vector<int> apex(w + 1);
    std::vector<float> from(w + 1), row(w);
    for (int y = 0; y < h; ++y) {
        int k = 0;
        apex[0] = 0;
        from[0] = -1e30F;
        for (int x = 0; x < w; ++x)
            row[x] = d.at(x, y);
        for (int q = 1; q < w; ++q) {
            float s = 0;
            for (;; --k) {
                const int p = apex[k];
                s = (float(q) * float(q) + row[q] - row[p] - float(p) * float(p)) / (2 * float(q - p));
                if (s > from[k])
                    break;
            }
            apex[++k] = q;
            from[k] = s;
        }
        const int last = k;
        k = 0;
        for (int q = 0; q < w; ++q) {
            while (k < last && from[k + 1] < float(q))
                ++k;
            const float dx = float(q - apex[k]);
            d.at(q, y) = std::sqrt(dx * dx + row[apex[k]]);
        }
    }
}

template <class T, class Query, class Run>
void addTrue(const char *name, Query query, Run run) {
    bench::add({name, 1, sizeof(T), true, [=](NoxiSize size) -> bench::Work {
                    const auto src = blobs(size, 300);
                    const bench::Image<T> dst(size);
                    int bytes = 0;
                    query(size, &bytes);
                    // Enough for any thread count of the run.
                    const bench::Buffer buffer(4 * bytes);
                    const auto plane = std::make_shared<Plane<Nox8u>>(planeOf(src));
                    const auto plain = std::make_shared<Plane<float>>(size.width, size.height);
                    return {[=] { run(src, dst, size, buffer); }, [=] { plainTrueDistance(*plane, *plain); }};
                }});
}

void addMarching(const std::string &name, float radius) {
    bench::add({name, 1, 4, true, [radius](NoxiSize size) -> bench::Work {
                    // Discs that cover about a fifth.
                    const bench::Image<Nox8u> src(size);
                    for (int y = 0; y < size.height; ++y)
                        for (int x = 0; x < size.width; ++x) {
                            const int dx = x % 80 - 40, dy = y % 80 - 40;
                            src.data()[std::size_t(y) * size.width + x] = dx * dx + dy * dy < 410 ? 255 : 0;
                        }
                    const bench::Image<Nox32f> dst(size);
                    int bytes = 0;
                    noxiFastMarchingGetBufferSize_8u32f_C1R(size, &bytes);
                    const bench::Buffer buffer(bytes);
                    const auto plane = std::make_shared<Plane<Nox8u>>(planeOf(src));
                    return {[=] {
                                noxiFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), size, radius,
                                                           buffer.data());
                            },
                            [=] {
                                const auto plain = reference::distance::FastMarching(*plane, radius).serial();
                                bench::keep(plain.pixels[0]);
                            }};
                }});
}

const bench::Registrar registrar([] {
#define NOX_CHAMFER(TYPE, WEIGHT, NAME, FIVE) addChamfer<TYPE, WEIGHT>(#NAME, NAME, FIVE);
    NOX_CHAMFER(Nox8u, Nox32s, noxiDistanceTransform_3x3_8u_C1R, false)
    NOX_CHAMFER(Nox16u, Nox32s, noxiDistanceTransform_3x3_8u16u_C1R, false)
    NOX_CHAMFER(Nox32f, Nox32f, noxiDistanceTransform_3x3_8u32f_C1R, false)
    NOX_CHAMFER(Nox8u, Nox32s, noxiDistanceTransform_5x5_8u_C1R, true)
    NOX_CHAMFER(Nox16u, Nox32s, noxiDistanceTransform_5x5_8u16u_C1R, true)
    NOX_CHAMFER(Nox32f, Nox32f, noxiDistanceTransform_5x5_8u32f_C1R, true)
    NOX_CHAMFER(Nox8u, Nox32s, noxiDistanceTransform_3x3_8u_C1R_omp, false)
    NOX_CHAMFER(Nox16u, Nox32s, noxiDistanceTransform_3x3_8u16u_C1R_omp, false)
    NOX_CHAMFER(Nox32f, Nox32f, noxiDistanceTransform_3x3_8u32f_C1R_omp, false)
    NOX_CHAMFER(Nox8u, Nox32s, noxiDistanceTransform_5x5_8u_C1R_omp, true)
    NOX_CHAMFER(Nox16u, Nox32s, noxiDistanceTransform_5x5_8u16u_C1R_omp, true)
    NOX_CHAMFER(Nox32f, Nox32f, noxiDistanceTransform_5x5_8u32f_C1R_omp, true)
    addInPlace("noxiDistanceTransform_3x3_8u_C1IR", noxiDistanceTransform_3x3_8u_C1IR);
    addInPlace("noxiDistanceTransform_5x5_8u_C1IR", noxiDistanceTransform_5x5_8u_C1IR);
    addTrue<Nox32f>("noxiTrueDistanceTransform_8u32f_C1R", noxiTrueDistanceTransformGetBufferSize_8u32f_C1R,
                    [](const auto &src, const auto &dst, NoxiSize size, const bench::Buffer &buffer) {
                        noxiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), size,
                                                            buffer.data());
                    });
    addTrue<Nox16u>("noxiTrueDistanceTransform_8u16u_C1RSfs", noxiTrueDistanceTransformGetBufferSize_8u16u_C1RSfs,
                    [](const auto &src, const auto &dst, NoxiSize size, const bench::Buffer &buffer) {
                        noxiTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), dst.data(), dst.step(), size, -4,
                                                               buffer.data());
                    });
    addMarching("noxiFastMarching_8u32f_C1R", 0);
    addMarching("noxiFastMarching_8u32f_C1R radius 5", 5);
});

} // namespace
