// Motion: history images and foreground models.
#include "bench.h"
#include "noxcv.h"
#include "reference/motionhistory.h"

namespace {

template <class T, class Entry>
void addMotionHistory(const char *name, Entry entry) {
    bench::add(
        {name, sizeof(T) + 4.0, 4.0, false, [entry](NoxiSize size) -> bench::Work {
             const auto silhouette = bench::picture<T>(size);
             for (std::size_t i = 0; i < silhouette.count(); ++i)
                 silhouette.data()[i] = int(silhouette.data()[i]) % 3 == 0 ? T(1) : T(0);
             const auto mhi = bench::picture<Nox32f>(size, 1, 2);
             return {[=] { entry(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(), size, 200.0F, 100.0F); },
                     [=] {
                         reference::motionhistory::update(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(),
                                                          size, 200.0F, 100.0F);
                     }};
         }});
}

const bench::Registrar registrar([] {
    addMotionHistory<Nox8u>("noxiUpdateMotionHistory_8u32f_C1IR", noxiUpdateMotionHistory_8u32f_C1IR);
    addMotionHistory<Nox16u>("noxiUpdateMotionHistory_16u32f_C1IR", noxiUpdateMotionHistory_16u32f_C1IR);
    addMotionHistory<Nox32f>("noxiUpdateMotionHistory_32f_C1IR", noxiUpdateMotionHistory_32f_C1IR);
});

} // namespace
