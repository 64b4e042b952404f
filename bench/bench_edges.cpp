// Edges: differences, the detector on given derivatives, and the colour gradient.
#include <fstream>
#include <string>

#include "bench.h"
#include "noxcv.h"
#include "picture.h"
#include "reference/absdiff.h"
#include "reference/canny.h"

namespace {

/// Derivatives of a picture by plain differences.
template <class T>
void derivatives(const bench::Image<Nox8u> &picture, const bench::Image<T> &dx, const bench::Image<T> &dy) {
    const NoxiSize size = picture.roi();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Nox8u *row = picture.data() + std::size_t(y) * size.width;
            const Nox8u *next = y + 1 < size.height ? row + size.width : row;
            const std::size_t i = std::size_t(y) * size.width + x;
            dx.data()[i] = static_cast<T>(4 * (row[x + 1 < size.width ? x + 1 : x] - row[x]));
            dy.data()[i] = static_cast<T>(4 * (next[x] - row[x]));
        }
}

/// A detector's work on the derivatives of one picture.
template <class T, class Entry>
bench::Work cannyWork(Entry entry, const bench::Image<T> &dx, const bench::Image<T> &dy, Nox32f low, Nox32f high) {
    const NoxiSize size = dx.roi();
    const bench::Image<Nox8u> dst(size);
    int bytes = 0;
    noxiCannyGetSize(size, &bytes);
    const bench::Buffer buffer(bytes);
    return {[=] {
                entry(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), size, low, high,
                      buffer.data());
            },
            [=] {
                reference::canny::canny(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), size, low,
                                        high);
            }};
}

template <class T, class Entry>
void addCanny(const char *name, Entry entry) {
    bench::add({name, 2.0 * sizeof(T), 1, false, [entry](NoxiSize size) {
                    const bench::Image<T> dx(size), dy(size);
                    derivatives(bench::picture<Nox8u>(size), dx, dy);
                    return cannyWork(entry, dx, dy, 40.0F, 80.0F);
                }});
}

template <class Entry>
void addCannyOnPhotograph(const char *name, Entry entry) {
    constexpr const char *path = NOXCV_PICTURES "/camera.png";
    if (!std::ifstream(path))
        return; // tools/fetch-pictures brings it
    bench::add({name,
                4,
                1,
                false,
                [entry](NoxiSize size) {
                    const bench::Image<Nox16s> dx(size), dy(size);
                    derivatives(bench::photograph(path, size), dx, dy);
                    return cannyWork(entry, dx, dy, 20.0F, 60.0F);
                },
                {{2048, 2048}}});
}

template <class T, class Entry>
void addColorToGray(const char *name, Entry entry, int norm) {
    bench::add({std::string(name) + " norm " + std::to_string(norm), 3.0 * sizeof(T), sizeof(T), false,
                [entry, norm](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, 3);
                    const bench::Image<T> dst(size);
                    return {[=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, norm); },
                            [=] {
                                for (std::size_t i = 0; i < dst.count(); ++i) {
                                    const T *s = src.data() + 3 * i;
                                    dst.data()[i] = reference::canny::colorToGray(s[0], s[1], s[2], norm);
                                }
                            }};
                }});
}

template <class T, class Entry>
void addAbsDiff(const char *name, Entry entry) {
    bench::add({name, 2.0 * sizeof(T), sizeof(T), false, [entry](NoxiSize size) -> bench::Work {
                    const auto a = bench::picture<T>(size, 1, 1), b = bench::picture<T>(size, 1, 2);
                    const bench::Image<T> d(size);
                    return {[=] { entry(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size); },
                            [=] {
                                reference::absdiff::absDiff(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(),
                                                            size);
                            }};
                }});
}

template <class T, class Value, class Entry>
void addAbsDiffC(const char *name, Entry entry, Value value) {
    bench::add({name, sizeof(T), sizeof(T), false, [entry, value](NoxiSize size) -> bench::Work {
                    const auto a = bench::picture<T>(size);
                    const bench::Image<T> d(size);
                    return {[=] { entry(a.data(), a.step(), d.data(), d.step(), size, value); },
                            [=] {
                                for (std::size_t i = 0; i < d.count(); ++i)
                                    d.data()[i] = reference::absdiff::absDiff(a.data()[i], static_cast<T>(value));
                            }};
                }});
}

const bench::Registrar registrar([] {
    addAbsDiff<Nox8u>("noxiAbsDiff_8u_C1R", noxiAbsDiff_8u_C1R);
    addAbsDiff<Nox16u>("noxiAbsDiff_16u_C1R", noxiAbsDiff_16u_C1R);
    addAbsDiff<Nox32f>("noxiAbsDiff_32f_C1R", noxiAbsDiff_32f_C1R);
    addAbsDiffC<Nox8u>("noxiAbsDiffC_8u_C1R", noxiAbsDiffC_8u_C1R, 100);
    addAbsDiffC<Nox16u>("noxiAbsDiffC_16u_C1R", noxiAbsDiffC_16u_C1R, 30000);
    addAbsDiffC<Nox32f>("noxiAbsDiffC_32f_C1R", noxiAbsDiffC_32f_C1R, 100.0F);
    addCanny<Nox16s>("noxiCanny_16s8u_C1R", noxiCanny_16s8u_C1R);
    addCanny<Nox32f>("noxiCanny_32f8u_C1R", noxiCanny_32f8u_C1R);
    addCannyOnPhotograph("noxiCanny_16s8u_C1R on camera.png", noxiCanny_16s8u_C1R);
    for (int norm = 0; norm < 3; ++norm) {
        addColorToGray<Nox8u>("noxiGradientColorToGray_8u_C3C1R", noxiGradientColorToGray_8u_C3C1R, norm);
        addColorToGray<Nox16u>("noxiGradientColorToGray_16u_C3C1R", noxiGradientColorToGray_16u_C3C1R, norm);
        addColorToGray<Nox32f>("noxiGradientColorToGray_32f_C3C1R", noxiGradientColorToGray_32f_C3C1R, norm);
    }
});

} // namespace
