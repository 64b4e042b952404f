// The library frame: absolute differences.
#include "bench.h"
#include "noxcv.h"
#include "reference/absdiff.h"

namespace {

template <class T, class Entry>
void addAbsDiff(const char *name, Entry entry) {
    bench::add({name, 2.0 * sizeof(T), sizeof(T), false, [entry](NoxiSize size) -> bench::Work {
                    const auto a = bench::picture<T>(size, 1, 1), b = bench::picture<T>(size, 1, 2);
                    const bench::Image<T> d(size);
                    return {
                        [=] { entry(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size); },
                        [=] { reference::absDiff(a.data(), a.step(), b.data(), b.step(), d.data(), d.step(), size); }};
                }});
}

const bench::Registrar registrar([] {
    addAbsDiff<Nox8u>("noxiAbsDiff_8u_C1R", noxiAbsDiff_8u_C1R);
    addAbsDiff<Nox16u>("noxiAbsDiff_16u_C1R", noxiAbsDiff_16u_C1R);
    addAbsDiff<Nox32f>("noxiAbsDiff_32f_C1R", noxiAbsDiff_32f_C1R);
});

} // namespace
