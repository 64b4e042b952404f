// Accumulators and the fast arctangent.
#include <cmath>

#include "bench.h"
#include "noxcv.h"
#include "reference/accumulate.h"

using reference::accumulate::Term;

namespace {

template <class T>
struct Pictures {
    explicit Pictures(NoxiSize size)
        : a(bench::picture<T>(size, 1, 1)), b(bench::picture<T>(size, 1, 2)), sum(bench::picture<Nox32f>(size, 1, 3)),
          mask(bench::picture<Nox8u>(size, 1, 4)) {
        for (std::size_t i = 0; i < mask.count(); ++i)
            mask.data()[i] = mask.data()[i] % 4 == 0 ? 0 : 255;
    }
    bench::Image<T> a, b;
    bench::Image<Nox32f> sum;
    bench::Image<Nox8u> mask;
};

constexpr Nox32f weight = 0.0625F;

template <class T, class Run>
void addMember(const char *name, Term term, bool masked, Run run) {
    const double read = sizeof(T) * (term == Term::Product ? 2 : 1) + (masked ? 1 : 0) + sizeof(Nox32f);
    bench::add({name, read, sizeof(Nox32f), false, [=](NoxiSize size) -> bench::Work {
                    const Pictures<T> p(size);
                    return {[=] { run(p, size); },
                            [=] {
                                reference::accumulate::accumulate(term, p.a.data(), p.a.step(), p.b.data(), p.b.step(),
                                                                  masked ? p.mask.data() : nullptr, p.mask.step(),
                                                                  p.sum.data(), p.sum.step(), size, weight);
                            }};
                }});
}

/// The plain form is the standard arctangent, in degrees.
void addArctan() {
    bench::add({"noxibFastArctan_32f", 2.0 * sizeof(Nox32f), sizeof(Nox32f), false, [](NoxiSize size) -> bench::Work {
                    auto y = bench::picture<Nox32f>(size, 1, 1), x = bench::picture<Nox32f>(size, 1, 2);
                    for (std::size_t i = 0; i < x.count(); ++i) {
                        x.data()[i] -= 128.0F;
                        y.data()[i] -= 128.0F;
                    }
                    const bench::Image<Nox32f> d(size);
                    const int length = int(d.count());
                    return {[=] { noxibFastArctan_32f(y.data(), x.data(), d.data(), length); },
                            [=] {
                                for (int i = 0; i < length; ++i)
                                    d.data()[i] = std::atan2(y.data()[i], x.data()[i]) * 57.29578F;
                            }};
                }});
}

// A member's call with the pictures p at hand.
#define CALL(...) [](const auto &p, NoxiSize size) { __VA_ARGS__; }
#define A p.a.data(), p.a.step()
#define B p.b.data(), p.b.step()
#define M p.mask.data(), p.mask.step()
#define D p.sum.data(), p.sum.step(), size

#define ADD(NAME, TERM, TAG, MASKED, ...)                                                                              \
    addMember<Nox##TAG>("noxi" #NAME, Term::TERM, MASKED, CALL(noxi##NAME(__VA_ARGS__)));
#define ADD_SUM(TAGS, TAG)                                                                                             \
    ADD(Add_##TAGS##_C1IR, Source, TAG, false, A, D)                                                                   \
    ADD(Add_##TAGS##_C1IMR, Source, TAG, true, A, M, D)
#define ADD_REST(TAGS, TAG)                                                                                            \
    ADD(AddSquare_##TAGS##_C1IR, Square, TAG, false, A, D)                                                             \
    ADD(AddSquare_##TAGS##_C1IMR, Square, TAG, true, A, M, D)                                                          \
    ADD(AddProduct_##TAGS##_C1IR, Product, TAG, false, A, B, D)                                                        \
    ADD(AddProduct_##TAGS##_C1IMR, Product, TAG, true, A, B, M, D)                                                     \
    ADD(AddWeighted_##TAGS##_C1IR, Weighted, TAG, false, A, D, weight)                                                 \
    ADD(AddWeighted_##TAGS##_C1IMR, Weighted, TAG, true, A, M, D, weight)

const bench::Registrar registrar([] {
    ADD_SUM(8u32f, 8u)
    ADD_SUM(8s32f, 8s)
    ADD_SUM(16u32f, 16u)
    ADD(Add_32f_C1IMR, Source, 32f, true, A, M, D)
    ADD_REST(8u32f, 8u)
    ADD_REST(8s32f, 8s)
    ADD_REST(16u32f, 16u)
    ADD_REST(32f, 32f)
    addArctan();
});

} // namespace
