// Separable filtering: row and column pipelines, border filters, Gaussian.
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/filterborder.h"
#include "reference/gauss.h"
#include "reference/separable.h"

namespace {

using reference::filterborder::Filter;

/// Binomial taps whose sum stays small enough for 16 bits, and what they add up to; floats have all their bits.
template <class Tap>
std::vector<Tap> taps(int kernelSize) {
    std::vector<Tap> result(static_cast<std::size_t>(kernelSize));
    const double sigma = kernelSize / 4.0;
    for (int j = 0; j < kernelSize; ++j) {
        const double value = std::exp(-(j - kernelSize / 2) * (j - kernelSize / 2) / (2 * sigma * sigma));
        result[j] = static_cast<Tap>(std::is_integral_v<Tap> ? std::lround(64 * value) : value / sigma / 2.5);
    }
    return result;
}
constexpr int divisor = 161;

/// An image and pointers to its rows.
template <class T>
struct RowSet {
    bench::Image<T> image;
    std::vector<T *> rows;
    std::vector<const T *> readable;

    explicit RowSet(const bench::Image<T> &all) : image(all) {
        for (int y = 0; y < image.roi().height; ++y)
            rows.push_back(image.data() + std::size_t(y) * (image.step() / sizeof(T)));
        readable.assign(rows.begin(), rows.end());
    }
    T **pointers() const { return const_cast<T **>(rows.data()); }
    const T **readablePointers() const { return const_cast<const T **>(readable.data()); }
};

std::string named(const char *name, int kernelSize) { return std::string(name) + " " + std::to_string(kernelSize); }

bench::Buffer bufferOf(int bytes) { return bench::Buffer(bytes + 1); }

/// A row pipeline. call(src, step, rows, roi, kernel, kernelSize, buffer).
template <class T, class Out, class Tap, int Channels, class Sum, class Store, class Call, class Size>
void addRows(const char *name, Call call, Size size) {
    for (const int kernelSize : {3, 5, 7, 15})
        bench::add({named(name, kernelSize), Channels * double(sizeof(T)), Channels * double(sizeof(Out)), true,
                    [=](NoxiSize roi) -> bench::Work {
                        const auto src = bench::picture<T>(roi, Channels);
                        const RowSet<Out> dst{bench::Image<Out>(roi, Channels)};
                        const auto kernel = taps<Tap>(kernelSize);
                        int bytes = 0;
                        size(roi, kernelSize, &bytes);
                        // Enough for any thread count of the run.
                        const auto buffer = bufferOf(4 * bytes);
                        return {[=] {
                                    call(src.data(), src.step(), dst.pointers(), roi, kernel.data(), kernelSize,
                                         buffer.data());
                                },
                                [=] {
                                    const T value[3] = {};
                                    reference::separable::filterRows<Sum>(src.data(), src.step(), dst.pointers(), roi,
                                                                          Channels, kernel.data(), kernelSize,
                                                                          kernelSize / 2, 1, value, Store(divisor));
                                }};
                    }});
}

template <class T, class Out, class Tap, int Channels, class Sum, class Store, class Call, class Size>
void addColumns(const char *name, Call call, Size size) {
    for (const int kernelSize : {3, 5, 7, 15})
        bench::add({named(name, kernelSize), Channels * double(sizeof(T)), Channels * double(sizeof(Out)), true,
                    [=](NoxiSize roi) -> bench::Work {
                        const RowSet<T> src{bench::picture<T>({roi.width, roi.height + kernelSize - 1}, Channels)};
                        const bench::Image<Out> dst(roi, Channels);
                        const auto kernel = taps<Tap>(kernelSize);
                        int bytes = 0;
                        size(roi, kernelSize, &bytes);
                        const auto buffer = bufferOf(4 * bytes);
                        return {[=] {
                                    call(src.readablePointers(), dst.data(), dst.step(), roi, kernel.data(), kernelSize,
                                         buffer.data());
                                },
                                [=] {
                                    reference::separable::filterColumns<Sum>(
                                        src.readablePointers(), dst.data(), dst.step(), roi.width * Channels,
                                        roi.height, kernel.data(), kernelSize, Store(divisor));
                                }};
                    }});
}

struct Rounding : reference::separable::Rounded {
    explicit Rounding(int) {}
};
using Wrapping = reference::separable::WrappingSum;
using Extended = reference::separable::ExtendedSum;
template <class T>
using Clamped = reference::separable::ClampedQuotient<T>;

// One line per member: types, channels, reference arithmetic, tag; then where the arguments differ.
#define ROWS(T, OUT, CHANNELS, SUM, STORE, TAG, VALUE)                                                                 \
    addRows<T, OUT, Nox16s, CHANNELS, SUM, STORE>(                                                                     \
        "noxiFilterRowBorderPipeline_" #TAG,                                                                           \
        [](const T *src, int step, OUT **rows, NoxiSize roi, const Nox16s *kernel, int size, Nox8u *buffer) {          \
            noxiFilterRowBorderPipeline_##TAG(src, step, rows, roi, kernel, size, size / 2, 1, VALUE, divisor,         \
                                              buffer);                                                                 \
        },                                                                                                             \
        noxiFilterRowBorderPipelineGetBufferSize_##TAG)
#define ROWS_32F(CHANNELS, TAG, VALUE)                                                                                 \
    addRows<Nox32f, Nox32f, Nox32f, CHANNELS, Extended, Rounding>(                                                     \
        "noxiFilterRowBorderPipeline_" #TAG,                                                                           \
        [](const Nox32f *src, int step, Nox32f **rows, NoxiSize roi, const Nox32f *kernel, int size, Nox8u *buffer) {  \
            noxiFilterRowBorderPipeline_##TAG(src, step, rows, roi, kernel, size, size / 2, 1, VALUE, buffer);         \
        },                                                                                                             \
        noxiFilterRowBorderPipelineGetBufferSize_##TAG)
#define COLUMNS(OUT, CHANNELS, SUM, STORE, TAG)                                                                        \
    addColumns<Nox16s, OUT, Nox16s, CHANNELS, SUM, STORE>(                                                             \
        "noxiFilterColumnPipeline_" #TAG,                                                                              \
        [](const Nox16s **rows, OUT *dst, int step, NoxiSize roi, const Nox16s *kernel, int size, Nox8u *buffer) {     \
            noxiFilterColumnPipeline_##TAG(rows, dst, step, roi, kernel, size, divisor, buffer);                       \
        },                                                                                                             \
        noxiFilterColumnPipelineGetBufferSize_##TAG)
#define COLUMNS_32F(CHANNELS, TAG)                                                                                     \
    addColumns<Nox32f, Nox32f, Nox32f, CHANNELS, Extended, Rounding>(                                                  \
        "noxiFilterColumnPipeline_" #TAG,                                                                              \
        [](const Nox32f **rows, Nox32f *dst, int step, NoxiSize roi, const Nox32f *kernel, int size, Nox8u *buffer) {  \
            noxiFilterColumnPipeline_##TAG(rows, dst, step, roi, kernel, size, buffer);                                \
        },                                                                                                             \
        noxiFilterColumnPipelineGetBufferSize_##TAG)

/// Floats as pictures of 8 bits give them, or with all their bits.
enum class Pixels { wholeNumbers, allBits };

template <class T>
bench::Image<T> filterPicture(NoxiSize roi, Pixels pixels) {
    const auto image = bench::picture<T>(roi);
    if (std::is_floating_point_v<T> && pixels == Pixels::wholeNumbers)
        for (std::size_t i = 0; i < image.count(); ++i)
            image.data()[i] = static_cast<T>(static_cast<int>(image.data()[i]));
    return image;
}

/// A fixed filter in one mask size. call(src, step, dst, step, roi, mask, buffer), plain(the same with the size).
template <class T, class Out, class Call, class Size, class Plain>
void addFilter(const char *name, int kernelSize, Call call, Size size, Plain plain) {
    const auto add = [=](const std::string &title, Pixels pixels) {
        bench::add({title, double(sizeof(T)), double(sizeof(Out)), true, [=](NoxiSize roi) -> bench::Work {
                        const auto src = filterPicture<T>(roi, pixels);
                        const bench::Image<Out> dst(roi);
                        const int mask = kernelSize == 3 ? 33 : 55;
                        int bytes = 0;
                        size(roi, mask, &bytes);
                        const auto buffer = bufferOf(4 * bytes);
                        return {[=] { call(src.data(), src.step(), dst.data(), dst.step(), roi, mask, buffer.data()); },
                                [=] { plain(kernelSize, src.data(), src.step(), dst.data(), dst.step(), roi); }};
                    }});
    };
    add(named(name, kernelSize), Pixels::allBits);
    if (std::is_floating_point_v<T>)
        add(named(name, kernelSize) + " whole numbers", Pixels::wholeNumbers);
}

#define FILTER_16S(NAME, FILTER, SIZE)                                                                                 \
    addFilter<Nox8u, Nox16s>(                                                                                          \
        "noxiFilter" #NAME "Border_8u16s_C1R", SIZE,                                                                   \
        [](const Nox8u *s, int ss, Nox16s *d, int ds, NoxiSize roi, int mask, Nox8u *b) {                              \
            noxiFilter##NAME##Border_8u16s_C1R(s, ss, d, ds, roi, mask, 1, 0, b);                                      \
        },                                                                                                             \
        noxiFilter##NAME##GetBufferSize_8u16s_C1R,                                                                     \
        [](int size, const Nox8u *s, int ss, Nox16s *d, int ds, NoxiSize roi) {                                        \
            reference::filterborder::filter8u16s(Filter::FILTER, size, s, ss, d, ds, roi, 1, 0);                       \
        })
#define FILTER_8S(NAME, FILTER, SIZE)                                                                                  \
    addFilter<Nox8u, Nox8s>(                                                                                           \
        "noxiFilter" #NAME "Border_8u8s_C1R", SIZE,                                                                    \
        [](const Nox8u *s, int ss, Nox8s *d, int ds, NoxiSize roi, int mask, Nox8u *b) {                               \
            noxiFilter##NAME##Border_8u8s_C1R(s, ss, d, ds, roi, mask, 1, 0, 9, b);                                    \
        },                                                                                                             \
        noxiFilter##NAME##GetBufferSize_8u8s_C1R,                                                                      \
        [](int size, const Nox8u *s, int ss, Nox8s *d, int ds, NoxiSize roi) {                                         \
            reference::filterborder::filter8u8s(Filter::FILTER, size, s, ss, d, ds, roi, 1, 0, 9);                     \
        })
#define FILTER_32F(NAME, FILTER, SIZE)                                                                                 \
    addFilter<Nox32f, Nox32f>(                                                                                         \
        "noxiFilter" #NAME "Border_32f_C1R", SIZE,                                                                     \
        [](const Nox32f *s, int ss, Nox32f *d, int ds, NoxiSize roi, int mask, Nox8u *b) {                             \
            noxiFilter##NAME##Border_32f_C1R(s, ss, d, ds, roi, mask, 1, 0, b);                                        \
        },                                                                                                             \
        noxiFilter##NAME##GetBufferSize_32f_C1R,                                                                       \
        [](int size, const Nox32f *s, int ss, Nox32f *d, int ds, NoxiSize roi) {                                       \
            reference::filterborder::filter32f(Filter::FILTER, size, s, ss, d, ds, roi, 1, 0);                         \
        })
#define SOBEL(NAME, FILTER)                                                                                            \
    for (const int size : {3, 5}) {                                                                                    \
        FILTER_16S(NAME, FILTER, size);                                                                                \
        FILTER_8S(NAME, FILTER, size);                                                                                 \
        FILTER_32F(NAME, FILTER, size);                                                                                \
    }

#define FILTER_3(NAME, FILTER, OUT, TAG, TYPE, PLAIN, ...)                                                             \
    addFilter<TYPE, OUT>(                                                                                              \
        "noxiFilter" #NAME "Border_" #TAG "_C1R", 3,                                                                   \
        [](const TYPE *s, int ss, OUT *d, int ds, NoxiSize roi, int, Nox8u *b) {                                       \
            noxiFilter##NAME##Border_##TAG##_C1R(s, ss, d, ds, roi, 1, 0 __VA_OPT__(, ) __VA_ARGS__, b);               \
        },                                                                                                             \
        [](NoxiSize roi, int, int *bytes) { noxiFilter##NAME##GetBufferSize_##TAG##_C1R(roi, bytes); },                \
        [](int size, const TYPE *s, int ss, OUT *d, int ds, NoxiSize roi) {                                            \
            reference::filterborder::PLAIN(Filter::FILTER, size, s, ss, d, ds, roi, 1, 0 __VA_OPT__(, ) __VA_ARGS__);  \
        })
#define SCHARR(NAME, FILTER)                                                                                           \
    FILTER_3(NAME, FILTER, Nox16s, 8u16s, Nox8u, filter8u16s);                                                         \
    FILTER_3(NAME, FILTER, Nox8s, 8u8s, Nox8u, filter8u8s, 9);                                                         \
    FILTER_3(NAME, FILTER, Nox32f, 32f, Nox32f, filter32f)

void addGauss(int kernelSize) {
    bench::add({named("noxiFilterGaussBorder_32f_C1R", kernelSize), 4, 4, false, [=](NoxiSize roi) -> bench::Work {
                    const auto src = bench::picture<Nox32f>(roi);
                    const bench::Image<Nox32f> dst(roi);
                    int bytes = 0;
                    noxiFilterGaussGetBufferSize_32f_C1R(roi, kernelSize, &bytes);
                    const auto buffer = bufferOf(bytes);
                    const auto kernel = taps<Nox32f>(kernelSize);
                    return {
                        [=] {
                            noxiFilterGaussBorder_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), roi,
                                                          kernelSize, 2.0F, 1, 0, buffer.data());
                        },
                        [=] { reference::gauss::gauss(src.data(), src.step(), dst.data(), dst.step(), roi, kernel); }};
                }});
}

template <class T>
void addSobelKernel(const char *name, NoxStatus (*call)(T *, int, int, int)) {
    bench::add({name,
                0,
                7 * sizeof(T),
                false,
                [call](NoxiSize) -> bench::Work {
                    const bench::Image<T> kernel({7, 1});
                    return {[=] { call(kernel.data(), 7, 1, 1); }, {}};
                },
                {{1, 1}}});
}

const bench::Registrar registrar([] {
    static const Nox8u none8u[3] = {};
    static const Nox16s none16s[3] = {};
    static const Nox32f none32f[3] = {};
    ROWS(Nox8u, Nox16s, 1, Wrapping, Clamped<Nox16s>, 8u16s_C1R, 0);
    ROWS(Nox8u, Nox16s, 3, Wrapping, Clamped<Nox16s>, 8u16s_C3R, none8u);
    ROWS(Nox16s, Nox16s, 1, Extended, Clamped<Nox16s>, 16s_C1R, 0);
    ROWS(Nox16s, Nox16s, 3, Extended, Clamped<Nox16s>, 16s_C3R, none16s);
    ROWS(Nox16s, Nox16s, 1, Wrapping, reference::separable::LowProduct, Low_16s_C1R, 0);
    ROWS(Nox16s, Nox16s, 3, Wrapping, reference::separable::LowProduct, Low_16s_C3R, none16s);
    ROWS_32F(1, 32f_C1R, 0);
    ROWS_32F(3, 32f_C3R, none32f);
    COLUMNS(Nox16s, 1, Extended, Clamped<Nox16s>, 16s_C1R);
    COLUMNS(Nox16s, 3, Extended, Clamped<Nox16s>, 16s_C3R);
    COLUMNS(Nox8u, 1, Extended, Clamped<Nox8u>, 16s8u_C1R);
    COLUMNS(Nox8u, 3, Extended, Clamped<Nox8u>, 16s8u_C3R);
    COLUMNS(Nox8s, 1, Extended, Clamped<Nox8s>, 16s8s_C1R);
    COLUMNS(Nox8s, 3, Extended, Clamped<Nox8s>, 16s8s_C3R);
    COLUMNS(Nox16s, 1, Wrapping, reference::separable::LowQuotient, Low_16s_C1R);
    COLUMNS(Nox16s, 3, Wrapping, reference::separable::LowQuotient, Low_16s_C3R);
    COLUMNS_32F(1, 32f_C1R);
    COLUMNS_32F(3, 32f_C3R);
    SOBEL(SobelHoriz, sobelHoriz)
    SOBEL(SobelVert, sobelVert)
    SOBEL(SobelNegVert, sobelNegVert)
    SOBEL(SobelHorizSecond, sobelHorizSecond)
    SOBEL(SobelVertSecond, sobelVertSecond)
    SOBEL(SobelCross, sobelCross)
    SOBEL(Laplacian, laplacian)
    SCHARR(ScharrHoriz, scharrHoriz);
    SCHARR(ScharrVert, scharrVert);
    for (const int size : {3, 5}) {
        addFilter<Nox8u, Nox8u>(
            "noxiFilterLowpassBorder_8u_C1R", size,
            [](const Nox8u *s, int ss, Nox8u *d, int ds, NoxiSize roi, int mask, Nox8u *b) {
                noxiFilterLowpassBorder_8u_C1R(s, ss, d, ds, roi, mask, 1, 0, b);
            },
            noxiFilterLowpassGetBufferSize_8u_C1R,
            [](int mask, const Nox8u *s, int ss, Nox8u *d, int ds, NoxiSize roi) {
                reference::filterborder::lowpass8u(mask, s, ss, d, ds, roi, 1, 0);
            });
        FILTER_32F(Lowpass, lowpass, size);
    }
    for (const int size : {5, 9, 15})
        addGauss(size);
    addSobelKernel("noxiGenSobelKernel_16s 7", noxiGenSobelKernel_16s);
    addSobelKernel("noxiGenSobelKernel_32f 7", noxiGenSobelKernel_32f);
});

} // namespace
