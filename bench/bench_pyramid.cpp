// Pyramids: Gaussian sampling by two.
#include <string>

#include "bench.h"
#include "noxcv.h"
#include "reference/pyrgauss.h"

namespace {

template <class T, class Entry>
void addDown(const std::string &name, Entry entry, int channels) {
    const double element = channels * double(sizeof(T));
    bench::add({name, element, element / 4, false, [entry, channels](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, channels);
                    const bench::Image<T> dst({(size.width + 1) / 2, (size.height + 1) / 2}, channels);
                    const bench::Image<Nox8u> buffer({size.width * channels * 24 + 256, 1});
                    return {
                        [=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, buffer.data()); },
                        [=] { reference::pyrDown(src.data(), src.step(), dst.data(), dst.step(), size, channels); }};
                }});
}

template <class T, class Entry>
void addUp(const std::string &name, Entry entry, int channels) {
    const double element = channels * double(sizeof(T));
    bench::add({name, element, element * 4, false, [entry, channels](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size, channels);
                    const bench::Image<T> dst({size.width * 2, size.height * 2}, channels);
                    const bench::Image<Nox8u> buffer({size.width * channels * 24 + 256, 1});
                    return {[=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, buffer.data()); },
                            [=] { reference::pyrUp(src.data(), src.step(), dst.data(), dst.step(), size, channels); }};
                }});
}

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
