// The primitives: vectors, copies, borders, differences, thresholds.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "bench.h"
#include "noxcv.h"
#include "reference/border.h"
#include "reference/elementwise.h"

namespace {

using bench::Image;
using bench::Work;

int lengthOf(NoxiSize size) { return size.width * size.height; }

/// A member without a parallel form.
template <class Make>
void add(const std::string &name, double read, double written, const Make &make) {
    bench::add({name, read, written, false, make});
}

template <class T, class Entry>
void addVectorCopy(const char *name, Entry entry) {
    add(name, sizeof(T), sizeof(T), [entry](NoxiSize size) -> Work {
        const auto a = bench::picture<T>(size);
        const Image<T> d(size);
        return {[=] { entry(a.data(), d.data(), lengthOf(size)); },
                [=] { reference::border::copy(a.data(), a.step(), d.data(), d.step(), size, 1); }};
    });
}

/// entry(dst, length) stores `value`.
template <class T, class Entry>
void addVectorSet(const char *name, T value, Entry entry) {
    add(name, 0, sizeof(T), [=](NoxiSize size) -> Work {
        const Image<T> d(size);
        return {[=] { entry(d.data(), lengthOf(size)); },
                [=] { reference::border::set<T>(value, d.data(), d.step(), size); }};
    });
}

template <class T, class InPlace, class FromTwo>
void addEvery(const std::string &name, const std::string &tag, InPlace inPlace, FromTwo fromTwo, T (*pick)(T, T)) {
    add(name + "_" + tag + "_I", 2 * sizeof(T), sizeof(T), [=](NoxiSize size) -> Work {
        const auto a = bench::picture<T>(size, 1, 1), d = bench::picture<T>(size, 1, 2);
        return {[=] { inPlace(a.data(), d.data(), lengthOf(size)); },
                [=] {
                    for (int i = 0; i < lengthOf(size); ++i)
                        d.data()[i] = pick(a.data()[i], d.data()[i]);
                }};
    });
    add(name + "_" + tag, 2 * sizeof(T), sizeof(T), [=](NoxiSize size) -> Work {
        const auto a = bench::picture<T>(size, 1, 1), b = bench::picture<T>(size, 1, 2);
        const Image<T> d(size);
        return {[=] { fromTwo(a.data(), b.data(), d.data(), lengthOf(size)); },
                [=] {
                    for (int i = 0; i < lengthOf(size); ++i)
                        d.data()[i] = pick(a.data()[i], b.data()[i]);
                }};
    });
}

/// The plain form of a scaled product: one rounding shift, one clamp.
Nox16s plainMulC(Nox16s value, Nox16s element, int scale) {
    long long product = static_cast<long long>(value) * element;
    if (scale > 0)
        product = (product + (1LL << (scale - 1)) - 1 + ((product >> scale) & 1)) >> scale;
    else if (scale < 0)
        product = std::clamp(product, -32768LL, 32767LL) << -scale;
    return static_cast<Nox16s>(std::clamp(product, -32768LL, 32767LL));
}

void addMulC() {
    for (const int scale : {0, 1, 5, -3, -16})
        add("noxsMulC_16s_ISfs scale " + std::to_string(scale), 2, 2, [scale](NoxiSize size) -> Work {
            const auto d = bench::picture<Nox16s>(size);
            return {[=] { noxsMulC_16s_ISfs(3, d.data(), lengthOf(size), scale); },
                    [=] {
                        for (int i = 0; i < lengthOf(size); ++i)
                            d.data()[i] = plainMulC(3, d.data()[i], std::max(scale, -15));
                    }};
        });
    add("noxsMulC_32f_I", 4, 4, [](NoxiSize size) -> Work {
        const auto d = bench::picture<Nox32f>(size);
        return {[=] { noxsMulC_32f_I(-1.0F, d.data(), lengthOf(size)); },
                [=] {
                    for (int i = 0; i < lengthOf(size); ++i)
                        d.data()[i] *= -1.0F;
                }};
    });
    add("noxsConvert_16u32f", 2, 4, [](NoxiSize size) -> Work {
        const auto a = bench::picture<Nox16u>(size);
        const Image<Nox32f> d(size);
        return {[=] { noxsConvert_16u32f(a.data(), d.data(), lengthOf(size)); },
                [=] {
                    for (int i = 0; i < lengthOf(size); ++i)
                        d.data()[i] = a.data()[i];
                }};
    });
}

void addRoots() {
    // Zeros take another way than other elements: none of them, or one in 30.
    for (const int zeros : {0, 30})
        add(std::string("noxsSqrt_32f_I") + (zeros == 0 ? "" : " zeros"), 4, 4, [zeros](NoxiSize size) -> Work {
            const auto d = bench::picture<Nox32f>(size);
            const auto chance = bench::picture<Nox16u>(size, 1, 1);
            for (int i = 0; i < lengthOf(size); ++i)
                d.data()[i] = zeros != 0 && chance.data()[i] % zeros == 0 ? 0.0F : d.data()[i] + 1;
            return {[=] { noxsSqrt_32f_I(d.data(), lengthOf(size)); },
                    [=] {
                        for (int i = 0; i < lengthOf(size); ++i)
                            d.data()[i] = std::sqrt(d.data()[i]);
                    }};
        });
    for (const int scale : {0, 3, -3})
        add("noxsSqrt_32s16s_Sfs scale " + std::to_string(scale), 4, 2, [scale](NoxiSize size) -> Work {
            const auto a = bench::picture<Nox32s>(size);
            const Image<Nox16s> d(size);
            return {[=] { noxsSqrt_32s16s_Sfs(a.data(), d.data(), lengthOf(size), scale); },
                    [=] {
                        const double factor = std::ldexp(1.0, -scale);
                        for (int i = 0; i < lengthOf(size); ++i) {
                            const double x = std::max(a.data()[i], 0);
                            d.data()[i] = static_cast<Nox16s>(std::min(32767L, std::lrint(std::sqrt(x) * factor)));
                        }
                    }};
        });
    // Each run sorts the same elements anew; the plain form is the standard library's sort.
    bench::add({"noxsSortAscend_64f_I",
                16,
                16,
                false,
                [](NoxiSize size) -> Work {
                    const auto from = bench::picture<Nox32f>(size);
                    const Image<Nox64f> d(size);
                    const auto fill = [=] { std::copy_n(from.data(), lengthOf(size), d.data()); };
                    return {[=] {
                                fill();
                                noxsSortAscend_64f_I(d.data(), lengthOf(size));
                            },
                            [=] {
                                fill();
                                std::sort(d.data(), d.data() + lengthOf(size));
                            }};
                },
                {{10, 10}, {64, 64}, {640, 480}}});
}

template <class T, class Entry>
void addCopy(const char *name, int channels, Entry entry) {
    add(name, sizeof(T) * channels, sizeof(T) * channels, [=](NoxiSize size) -> Work {
        const auto a = bench::picture<T>(size, channels);
        const Image<T> d(size, channels);
        return {[=] { entry(a.data(), a.step(), d.data(), d.step(), size); },
                [=] { reference::border::copy(a.data(), a.step(), d.data(), d.step(), size, channels); }};
    });
}

constexpr int border = 4;

NoxiSize around(NoxiSize size) { return {size.width + 2 * border, size.height + 2 * border}; }

template <class T, class Copy, class InPlace>
void addReplicate(const std::string &name, int channels, Copy copy, InPlace inPlace) {
    const double bytes = double(sizeof(T)) * channels;
    add(name + "R", bytes, bytes, [=](NoxiSize size) -> Work {
        const NoxiSize whole = around(size);
        const auto a = bench::picture<T>(size, channels);
        const Image<T> d(whole, channels);
        return {[=] { copy(a.data(), a.step(), size, d.data(), d.step(), whole, border, border); },
                [=] {
                    reference::border::copyReplicated<T>(a.data(), a.step(), size, d.data(), d.step(), whole, border,
                                                         border, channels);
                }};
    });
    // Reads and writes the border alone: the figures by pixel say little here.
    add(name + "IR", 0.1 * bytes, 0.1 * bytes, [=](NoxiSize size) -> Work {
        const NoxiSize whole = around(size);
        const auto d = bench::picture<T>(whole, channels);
        T *first = d.data() + border * (std::size_t(d.step()) / sizeof(T)) + border * channels;
        return {[=] { inPlace(first, d.step(), size, whole, border, border); }, {}};
    });
}

template <class FromTwo, class InPlace>
void addSub32f(const std::string &name, int channels, FromTwo fromTwo, InPlace inPlace) {
    add(name + "R", 8.0 * channels, 4.0 * channels, [=](NoxiSize size) -> Work {
        const auto a = bench::picture<Nox32f>(size, channels, 1), b = bench::picture<Nox32f>(size, channels, 2);
        const Image<Nox32f> d(size, channels);
        return {[=] { fromTwo(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size); },
                [=] {
                    for (std::size_t i = 0; i < d.count(); ++i)
                        d.data()[i] = b.data()[i] - a.data()[i];
                }};
    });
    add(name + "IR", 8.0 * channels, 4.0 * channels, [=](NoxiSize size) -> Work {
        const auto a = bench::picture<Nox32f>(size, channels, 1), d = bench::picture<Nox32f>(size, channels, 2);
        return {[=] { inPlace(a.data(), a.step(), d.data(), d.step(), size); },
                [=] {
                    for (std::size_t i = 0; i < d.count(); ++i)
                        d.data()[i] = d.data()[i] - a.data()[i];
                }};
    });
}

/// The plain form of a scaled difference.
Nox8u plainSubtract(Nox8u a, Nox8u b, int scale) {
    int difference = std::max(b - a, 0);
    if (scale > 0)
        difference = (difference + (1 << (scale - 1)) - 1 + ((difference >> scale) & 1)) >> scale;
    else
        difference = std::min(difference << -scale, 255);
    return static_cast<Nox8u>(difference);
}

template <class FromTwo, class InPlace>
void addScaledSub8u(const std::string &name, int channels, int scale, FromTwo fromTwo, InPlace inPlace) {
    const std::string tail = scale == 0 ? "" : " scale " + std::to_string(scale);
    add(name + "RSfs" + tail, 2.0 * channels, channels, [=](NoxiSize size) -> Work {
        const auto a = bench::picture<Nox8u>(size, channels, 1), b = bench::picture<Nox8u>(size, channels, 2);
        const Image<Nox8u> d(size, channels);
        return {[=] { fromTwo(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size, scale); },
                [=] {
                    for (std::size_t i = 0; i < d.count(); ++i)
                        d.data()[i] = plainSubtract(a.data()[i], b.data()[i], scale);
                }};
    });
    add(name + "IRSfs" + tail, 2.0 * channels, channels, [=](NoxiSize size) -> Work {
        const auto a = bench::picture<Nox8u>(size, channels, 1), d = bench::picture<Nox8u>(size, channels, 2);
        return {[=] { inPlace(a.data(), a.step(), d.data(), d.step(), size, scale); },
                [=] {
                    for (std::size_t i = 0; i < d.count(); ++i)
                        d.data()[i] = plainSubtract(a.data()[i], d.data()[i], scale);
                }};
    });
}

template <class FromTwo, class InPlace>
void addSub8u(const std::string &name, int channels, FromTwo fromTwo, InPlace inPlace) {
    for (const int scale : {0, 1, 3, -2, -8})
        addScaledSub8u(name, channels, scale, fromTwo, inPlace);
}

/// entry(src, dst, size) with packed images, or the same image for both; formula makes a pixel.
template <class T, class Entry, class Formula>
void addThreshold(const char *name, bool inPlace, Entry entry, Formula formula) {
    add(name, sizeof(T), sizeof(T), [=](NoxiSize size) -> Work {
        const auto a = bench::picture<T>(size);
        const Image<T> d = inPlace ? a : Image<T>(size);
        return {[=] { entry(a, d, size); },
                [=] {
                    for (std::size_t i = 0; i < d.count(); ++i)
                        d.data()[i] = formula(a.data()[i]);
                }};
    });
}

void addThresholds() {
    const auto greater = [](Nox8u v) { return reference::elementwise::thresholdValue(v, 128, 9, noxCmpGreater); };
    const auto less = [](Nox32f v) { return reference::elementwise::threshold(v, 100.0F, noxCmpLess); };
    addThreshold<Nox8u>(
        "noxiThreshold_Val_8u_C1R", false,
        [](auto &a, auto &d, NoxiSize size) {
            noxiThreshold_Val_8u_C1R(a.data(), a.step(), d.data(), d.step(), size, 128, 9, noxCmpLess);
        },
        [](Nox8u v) { return reference::elementwise::thresholdValue(v, 128, 9, noxCmpLess); });
    addThreshold<Nox8u>(
        "noxiThreshold_GTVal_8u_C1R", false,
        [](auto &a, auto &d, NoxiSize size) {
            noxiThreshold_GTVal_8u_C1R(a.data(), a.step(), d.data(), d.step(), size, 128, 9);
        },
        greater);
    addThreshold<Nox8u>(
        "noxiThreshold_GTVal_8u_C1IR", true,
        [](auto &, auto &d, NoxiSize size) { noxiThreshold_GTVal_8u_C1IR(d.data(), d.step(), size, 128, 9); }, greater);
    addThreshold<Nox32f>(
        "noxiThreshold_32f_C1R", false,
        [](auto &a, auto &d, NoxiSize size) {
            noxiThreshold_32f_C1R(a.data(), a.step(), d.data(), d.step(), size, 100.0F, noxCmpGreater);
        },
        [](Nox32f v) { return reference::elementwise::threshold(v, 100.0F, noxCmpGreater); });
    addThreshold<Nox32f>(
        "noxiThreshold_LT_32f_C1R", false,
        [](auto &a, auto &d, NoxiSize size) {
            noxiThreshold_LT_32f_C1R(a.data(), a.step(), d.data(), d.step(), size, 100.0F);
        },
        less);
    addThreshold<Nox32f>(
        "noxiThreshold_LT_32f_C1IR", true,
        [](auto &, auto &d, NoxiSize size) { noxiThreshold_LT_32f_C1IR(d.data(), d.step(), size, 100.0F); }, less);
}

void addVectors() {
    addVectorCopy<Nox8u>("noxsCopy_8u", noxsCopy_8u);
    addVectorCopy<Nox32f>("noxsCopy_32f", noxsCopy_32f);
    addVectorSet<Nox8u>("noxsSet_8u", 7, [](Nox8u *dst, int length) { noxsSet_8u(7, dst, length); });
    addVectorSet<Nox32f>("noxsSet_32f", 7, [](Nox32f *dst, int length) { noxsSet_32f(7, dst, length); });
    addVectorSet<Nox8u>("noxsZero_8u", 0, noxsZero_8u);
    addVectorSet<Nox16s>("noxsZero_16s", 0, noxsZero_16s);
    addVectorSet<Nox32s>("noxsZero_32s", 0, noxsZero_32s);
    addVectorSet<Nox32f>("noxsZero_32f", 0, noxsZero_32f);
    addEvery<Nox8u>("noxsMinEvery", "8u", noxsMinEvery_8u_I, noxsMinEvery_8u, reference::elementwise::lesser<Nox8u>);
    addEvery<Nox8u>("noxsMaxEvery", "8u", noxsMaxEvery_8u_I, noxsMaxEvery_8u, reference::elementwise::greater<Nox8u>);
    addEvery<Nox32f>("noxsMinEvery", "32f", noxsMinEvery_32f_I, noxsMinEvery_32f,
                     reference::elementwise::lesser<Nox32f>);
    addEvery<Nox32f>("noxsMaxEvery", "32f", noxsMaxEvery_32f_I, noxsMaxEvery_32f,
                     reference::elementwise::greater<Nox32f>);
    addMulC();
    addRoots();
}

void addConstantFillAndBorder() {
    add("noxiSet_8u_C1R", 0, 1, [](NoxiSize size) -> Work {
        const Image<Nox8u> d(size);
        return {[=] { noxiSet_8u_C1R(7, d.data(), d.step(), size); },
                [=] { reference::border::set<Nox8u>(7, d.data(), d.step(), size); }};
    });
    add("noxiCopyConstBorder_8u_C1R", 1, 1, [](NoxiSize size) -> Work {
        const NoxiSize whole = around(size);
        const auto a = bench::picture<Nox8u>(size);
        const Image<Nox8u> d(whole);
        return {
            [=] { noxiCopyConstBorder_8u_C1R(a.data(), a.step(), size, d.data(), d.step(), whole, border, border, 7); },
            [=] {
                reference::border::copyConstant<Nox8u>(a.data(), a.step(), size, d.data(), d.step(), whole, border,
                                                       border, 7);
            }};
    });
}

const bench::Registrar registrar([] {
    addVectors();
#define COPY(TYPE, TAG)                                                                                                \
    addCopy<TYPE>("noxiCopy_" #TAG "_C1R", 1, noxiCopy_##TAG##_C1R),                                                   \
        addCopy<TYPE>("noxiCopy_" #TAG "_C3R", 3, noxiCopy_##TAG##_C3R),                                               \
        addCopy<TYPE>("noxiCopy_" #TAG "_C4R", 4, noxiCopy_##TAG##_C4R)
    COPY(Nox8u, 8u);
    COPY(Nox32f, 32f);
#undef COPY
    addConstantFillAndBorder();
#define REPLICATE(TYPE, TAG, C)                                                                                        \
    addReplicate<TYPE>("noxiCopyReplicateBorder_" #TAG "_C" #C, C, noxiCopyReplicateBorder_##TAG##_C##C##R,            \
                       noxiCopyReplicateBorder_##TAG##_C##C##IR)
    REPLICATE(Nox8u, 8u, 1);
    REPLICATE(Nox8u, 8u, 3);
    REPLICATE(Nox8u, 8u, 4);
    REPLICATE(Nox32s, 32s, 1);
    REPLICATE(Nox32s, 32s, 3);
    REPLICATE(Nox32s, 32s, 4);
#undef REPLICATE
#define SUB(C)                                                                                                         \
    addSub32f("noxiSub_32f_C" #C, C, noxiSub_32f_C##C##R, noxiSub_32f_C##C##IR),                                       \
        addSub8u("noxiSub_8u_C" #C, C, noxiSub_8u_C##C##RSfs, noxiSub_8u_C##C##IRSfs)
    SUB(1);
    SUB(3);
    SUB(4);
#undef SUB
    addThresholds();
});

} // namespace
