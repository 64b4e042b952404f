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

template <class T, class Value, class Entry>
void addAbsDiffC(const char *name, Entry entry, Value value) {
    bench::add({name, sizeof(T), sizeof(T), false, [entry, value](NoxiSize size) -> bench::Work {
                    const auto a = bench::picture<T>(size);
                    const bench::Image<T> d(size);
                    return {[=] { entry(a.data(), a.step(), d.data(), d.step(), size, value); },
                            [=] {
                                for (std::size_t i = 0; i < d.count(); ++i)
                                    d.data()[i] = reference::absDiff(a.data()[i], static_cast<T>(value));
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
});

} // namespace
