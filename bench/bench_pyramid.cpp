// Pyramids: Gaussian sampling by two, layers at any rate.
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/pyrgauss.h"
#include "reference/pyrlayer.h"

namespace {

template <class T, class Entry>
void addDown(const std::string &name, Entry entry, int channels) {
    const double element = channels * double(sizeof(T));
    bench::add({name, element, element / 4, false, [entry, channels](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, channels);
                    const bench::Image<T> dst({(size.width + 1) / 2, (size.height + 1) / 2}, channels);
                    const bench::Buffer buffer(size.width * channels * 24 + 256);
                    return {[=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, buffer.data()); },
                            [=] {
                                reference::pyrgauss::pyrDown(src.data(), src.step(), dst.data(), dst.step(), size,
                                                             channels);
                            }};
                }});
}

template <class T, class Entry>
void addUp(const std::string &name, Entry entry, int channels) {
    const double element = channels * double(sizeof(T));
    bench::add({name, element, element * 4, false, [entry, channels](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, channels);
                    const bench::Image<T> dst({size.width * 2, size.height * 2}, channels);
                    const bench::Buffer buffer(size.width * channels * 24 + 256);
                    return {[=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, buffer.data()); },
                            [=] {
                                reference::pyrgauss::pyrUp(src.data(), src.step(), dst.data(), dst.step(), size,
                                                           channels);
                            }};
                }});
}

/// A binomial kernel of n taps.
template <class Tap>
std::vector<Tap> binomial(int n) {
    std::vector<Tap> taps(n, Tap(0));
    taps[0] = 1;
    for (int row = 1; row < n; ++row)
        for (int i = row; i > 0; --i)
            taps[i] = Tap(taps[i] + taps[i - 1]);
    return taps;
}

using State = std::shared_ptr<NoxiPyramidLayerState>;

template <class T, class Init, class Entry>
void addLayer(const std::string &name, Init init, Entry entry, int channels, int n, float rate, bool down) {
    const double element = channels * double(sizeof(T)), ratio = double(rate) * rate;
    const std::string title = name + " n" + std::to_string(n) + " rate " + (rate == 2.0F ? "2" : "1.5");
    bench::add(
        {title, element, down ? element / ratio : element * ratio, false, [=](NoxiSize size) -> bench::Work {
             using Tap = reference::pyrlayer::LayerTap<T>;
             NoxiSize to{}, low{};
             if (down)
                 noxiGetPyramidDownROI(size, &to, rate);
             else
                 noxiGetPyramidUpROI(size, &low, &to, rate);
             const auto kernel = binomial<Tap>(n);
             const auto taps = reference::pyrlayer::normalised(kernel, down, Tap(0));
             NoxiPyramidLayerState *made = nullptr;
             init(&made, down ? size : to, rate, kernel.data(), n, 2);
             const State state(made, noxiPyramidLayerDownFree);
             const auto src = bench::picture<T>(size, channels);
             const bench::Image<T> dst(to, channels);
             const auto plain = down ? reference::pyrlayer::layerDown<T> : reference::pyrlayer::layerUp<T>;
             return {[=] { entry(src.data(), src.step(), size, dst.data(), dst.step(), to, state.get()); },
                     [=] { plain(src.data(), src.step(), size, dst.data(), dst.step(), to, channels, taps, n, rate); }};
         }});
}

const bench::Registrar layerRegistrar([] {
#define NOX_LAYER(TYPE, TAG, CHANNELS)                                                                                 \
    for (const int n : {3, 5, 7})                                                                                      \
        for (const float rate : {2.0F, 1.5F}) {                                                                        \
            addLayer<TYPE>("noxiPyramidLayerDown_" #TAG "_C" #CHANNELS "R",                                            \
                           noxiPyramidLayerDownInitAlloc_##TAG##_C##CHANNELS##R,                                       \
                           noxiPyramidLayerDown_##TAG##_C##CHANNELS##R, CHANNELS, n, rate, true);                      \
            addLayer<TYPE>("noxiPyramidLayerUp_" #TAG "_C" #CHANNELS "R",                                              \
                           noxiPyramidLayerUpInitAlloc_##TAG##_C##CHANNELS##R,                                         \
                           noxiPyramidLayerUp_##TAG##_C##CHANNELS##R, CHANNELS, n, rate, false);                       \
        }
    NOX_LAYER(Nox8u, 8u, 1)
    NOX_LAYER(Nox8u, 8u, 3)
    NOX_LAYER(Nox16u, 16u, 1)
    NOX_LAYER(Nox16u, 16u, 3)
    NOX_LAYER(Nox32f, 32f, 1)
    NOX_LAYER(Nox32f, 32f, 3)
#undef NOX_LAYER
});

const bench::Registrar registrar([] {
    addDown<Nox8u>("noxiPyrDown_Gauss5x5_8u_C1R", noxiPyrDown_Gauss5x5_8u_C1R, 1);
    addDown<Nox8u>("noxiPyrDown_Gauss5x5_8u_C3R", noxiPyrDown_Gauss5x5_8u_C3R, 3);
    addDown<Nox8s>("noxiPyrDown_Gauss5x5_8s_C1R", noxiPyrDown_Gauss5x5_8s_C1R, 1);
    addDown<Nox8s>("noxiPyrDown_Gauss5x5_8s_C3R", noxiPyrDown_Gauss5x5_8s_C3R, 3);
    addDown<Nox32f>("noxiPyrDown_Gauss5x5_32f_C1R", noxiPyrDown_Gauss5x5_32f_C1R, 1);
    addDown<Nox32f>("noxiPyrDown_Gauss5x5_32f_C3R", noxiPyrDown_Gauss5x5_32f_C3R, 3);
    addUp<Nox8u>("noxiPyrUp_Gauss5x5_8u_C1R", noxiPyrUp_Gauss5x5_8u_C1R, 1);
    addUp<Nox8u>("noxiPyrUp_Gauss5x5_8u_C3R", noxiPyrUp_Gauss5x5_8u_C3R, 3);
    addUp<Nox8s>("noxiPyrUp_Gauss5x5_8s_C1R", noxiPyrUp_Gauss5x5_8s_C1R, 1);
    addUp<Nox8s>("noxiPyrUp_Gauss5x5_8s_C3R", noxiPyrUp_Gauss5x5_8s_C3R, 3);
    addUp<Nox32f>("noxiPyrUp_Gauss5x5_32f_C1R", noxiPyrUp_Gauss5x5_32f_C1R, 1);
    addUp<Nox32f>("noxiPyrUp_Gauss5x5_32f_C3R", noxiPyrUp_Gauss5x5_32f_C3R, 3);
});

} // namespace
