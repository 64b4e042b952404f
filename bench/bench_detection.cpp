// Object detection: integral images, deviations, and stages of weak classifiers.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/haar.h"
#include "reference/integral.h"

namespace {

NoxiSize larger(NoxiSize size, int by) { return {size.width + by, size.height + by}; }

/// A table that starts with zeros: two members add to what is there.
template <class T>
bench::Image<T> zeroTable(NoxiSize size) {
    const bench::Image<T> table(size);
    for (std::size_t i = 0; i < table.count(); ++i)
        table.data()[i] = 0;
    return table;
}

/// Clears the column that those two add to, before each call.
template <class T>
void clearColumn(const bench::Image<T> &table, int column) {
    for (int y = 0; y < table.roi().height; ++y)
        table.data()[std::size_t(y) * table.roi().width + column] = 0;
}

template <class T, class Entry>
void addIntegral(const char *name, Entry entry, bool tilted) {
    bench::add({name, 1, sizeof(T), false, [entry, tilted](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<Nox8u>(size);
                    const auto table = zeroTable<T>(larger(size, tilted ? 2 : 1));
                    return {[=] {
                                if (tilted)
                                    clearColumn(table, size.width);
                                entry(src.data(), src.step(), table.data(), table.step(), size, T(0));
                            },
                            [=] {
                                if (tilted) {
                                    clearColumn(table, size.width);
                                    reference::integral::tilted(src.data(), src.step(), table.data(), table.step(),
                                                                size, T(0), false);
                                } else {
                                    reference::integral::upright(src.data(), src.step(), table.data(), table.step(),
                                                                 size, T(0), false);
                                }
                            }};
                }});
}

template <class T, class Q, class Entry>
void addSquares(const char *name, Entry entry, bool tilted, bool takesNext = false) {
    bench::add({name, 1, sizeof(T) + sizeof(Q), false, [entry, tilted, takesNext](NoxiSize size) -> bench::Work {
                    // One column more than is worked on, for the member that takes it in.
                    const auto src = bench::picture<Nox8u>({size.width + 1, size.height});
                    const auto table = zeroTable<T>(larger(size, tilted ? 2 : 1));
                    const auto sqr = zeroTable<Q>(larger(size, tilted ? 2 : 1));
                    return {[=] {
                                if (tilted)
                                    clearColumn(table, size.width);
                                entry(src.data(), src.step(), table.data(), table.step(), sqr.data(), sqr.step(), size,
                                      T(0), Q(0));
                            },
                            [=] {
                                using namespace reference::integral;
                                if (tilted) {
                                    clearColumn(table, size.width);
                                    reference::integral::tilted(src.data(), src.step(), table.data(), table.step(),
                                                                size, T(0), false, takesNext);
                                    reference::integral::tilted(src.data(), src.step(), sqr.data(), sqr.step(), size,
                                                                Q(0), true, takesNext);
                                } else {
                                    upright(src.data(), src.step(), table.data(), table.step(), size, T(0), false);
                                    upright(src.data(), src.step(), sqr.data(), sqr.step(), size, Q(0), true);
                                }
                            }};
                }});
}

constexpr NoxiRect window = {1, 1, 22, 22};

/// Tables of a picture for positions of this size under the window, and where position (0, 0) lies in them.
template <class T>
struct WindowTable {
    bench::Image<T> table;
    int left;

    WindowTable(NoxiSize size, bool tilted, bool square)
        : table(larger(size, 2 * (window.width + window.height))), left(tilted ? window.height : 0) {
        const NoxiSize pixels = larger(table.roi(), tilted ? -2 : -1);
        const auto src = bench::picture<Nox8u>(pixels);
        for (std::size_t i = 0; i < table.count(); ++i)
            table.data()[i] = 0;
        if (tilted)
            reference::integral::tilted(src.data(), src.step(), table.data(), table.step(), pixels, T(0), square);
        else
            reference::integral::upright(src.data(), src.step(), table.data(), table.step(), pixels, T(0), square);
    }
    const T *data() const { return table.data() + left; }
    int step() const { return table.step(); }
};

template <class S, class Q, class D, class Entry, class... Scale>
void addDeviation(const char *name, Entry entry, bool tilted, bool parallel, Scale... scale) {
    bench::add({name, sizeof(S) + sizeof(Q), sizeof(D), parallel, [=](NoxiSize size) -> bench::Work {
                    const WindowTable<S> sums(size, tilted, false);
                    const WindowTable<Q> squares(size, tilted, true);
                    const bench::Image<D> dst(size);
                    return {[=] {
                                entry(sums.data(), sums.step(), squares.data(), squares.step(), dst.data(), dst.step(),
                                      size, window, scale...);
                            },
                            [=] {
                                reference::integral::deviation(sums.data(), sums.step(), squares.data(), squares.step(),
                                                               dst.data(), dst.step(), size, window, tilted, scale...);
                            }};
                }});
}

/// The arrays of a stage, with features of a window of 20 x 20, and the same for the reference.
template <class T>
struct StageInput {
    std::vector<NoxiRect> features;
    std::vector<T> weights, thresholds, lows, highs;
    std::vector<Nox32s> counts;
    reference::haar::Stage<T> plain;

    explicit StageInput(int length) {
        unsigned seed = 1;
        const auto next = [&seed](int range) {
            seed = seed * 1664525U + 1013904223U;
            return int((seed >> 8) % unsigned(range));
        };
        for (int i = 0; i < length; ++i) {
            const int count = 2 + next(2);
            reference::haar::Classifier<T> c = {{}, T(next(9) - 4), T(next(100) - 50), T(next(100) - 50)};
            for (int k = 0; k < count; ++k) {
                const NoxiRect r = {8 + next(6), next(8), 2 + next(6), 2 + next(6)};
                features.push_back(r);
                weights.push_back(T(k == 0 ? -1 : 2));
                c.features.push_back({reference::haar::upright(r), weights.back()});
            }
            counts.push_back(count);
            thresholds.push_back(c.threshold);
            lows.push_back(c.low);
            highs.push_back(c.high);
            plain.push_back(c);
        }
        plain = reference::haar::grouped(plain);
    }
};

inline NoxStatus create(NoxiHaarClassifier_32f **state, const StageInput<Nox32f> &in) {
    return noxiHaarClassifierInitAlloc_32f(state, in.features.data(), in.weights.data(), in.thresholds.data(),
                                           in.lows.data(), in.highs.data(), in.counts.data(), int(in.counts.size()));
}
inline NoxStatus create(NoxiHaarClassifier_32s **state, const StageInput<Nox32s> &in) {
    return noxiHaarClassifierInitAlloc_32s(state, in.features.data(), in.weights.data(), in.thresholds.data(),
                                           in.lows.data(), in.highs.data(), in.counts.data(), int(in.counts.size()));
}
inline void destroy(NoxiHaarClassifier_32f *state) { noxiHaarClassifierFree_32f(state); }
inline void destroy(NoxiHaarClassifier_32s *state) { noxiHaarClassifierFree_32s(state); }

/// One stage of 20 classifiers over a mask whose positions are all left. call(src, tilt, norm, mask, positive, state).
template <class State, class Table, class T, class Call>
void addStage(const char *name, bool mixed, bool parallel, Call call) {
    bench::add({name, sizeof(Table) + sizeof(T), 1, parallel, [=](NoxiSize size) -> bench::Work {
                    const WindowTable<Table> src(size, false, false), tilt(size, true, false);
                    const bench::Image<T> norm(size);
                    for (std::size_t i = 0; i < norm.count(); ++i)
                        norm.data()[i] = T(20 + i % 300);
                    const bench::Image<Nox8u> mask(size);
                    const auto input = std::make_shared<StageInput<T>>(20);
                    State *created = nullptr;
                    create(&created, *input);
                    const std::shared_ptr<State> state(created, [](State *s) { destroy(s); });
                    const auto positions = [mask] {
                        for (std::size_t i = 0; i < mask.count(); ++i)
                            mask.data()[i] = 1;
                    };
                    return {[=] {
                                positions();
                                int positive = 0;
                                call(src, tilt, norm, mask, &positive, state.get());
                                bench::keep(positive);
                            },
                            [=] {
                                positions();
                                const reference::haar::Tables<Table> tables = {
                                    {src.data(), src.step()}, {mixed ? tilt.data() : nullptr, tilt.step()}};
                                reference::haar::apply(tables, norm.data(), norm.step(), mask.data(), mask.step(), size,
                                                       T(0), input->plain, 1);
                            }};
                }});
}

template <class State, class Table, class T, class Entry>
void addPlainStage(const char *name, Entry entry, bool parallel) {
    addStage<State, Table, T>(
        name, false, parallel,
        [=](const auto &src, const auto &, const auto &norm, const auto &mask, int *positive, const State *state) {
            entry(src.data(), src.step(), norm.data(), norm.step(), mask.data(), mask.step(), norm.roi(), positive,
                  T(0), state);
        });
}

template <class State, class Table, class T, class Entry, class... Scale>
void addMixedStage(const char *name, Entry entry, Scale... scale) {
    addStage<State, Table, T>(
        name, true, false,
        [=](const auto &src, const auto &tilt, const auto &norm, const auto &mask, int *positive, const State *state) {
            entry(src.data(), src.step(), tilt.data(), tilt.step(), norm.data(), norm.step(), mask.data(), mask.step(),
                  norm.roi(), positive, T(0), state, scale...);
        });
}

const bench::Registrar registrar([] {
    addIntegral<Nox32s>("noxiIntegral_8u32s_C1R", noxiIntegral_8u32s_C1R, false);
    addIntegral<Nox32f>("noxiIntegral_8u32f_C1R", noxiIntegral_8u32f_C1R, false);
    addSquares<Nox32s, Nox64f>("noxiSqrIntegral_8u32s64f_C1R", noxiSqrIntegral_8u32s64f_C1R, false);
    addSquares<Nox32f, Nox64f>("noxiSqrIntegral_8u32f64f_C1R", noxiSqrIntegral_8u32f64f_C1R, false);
    addSquares<Nox32s, Nox32s>("noxiSqrIntegral_8u32s_C1R", noxiSqrIntegral_8u32s_C1R, false);
    addIntegral<Nox32s>("noxiTiltedIntegral_8u32s_C1R", noxiTiltedIntegral_8u32s_C1R, true);
    addIntegral<Nox32f>("noxiTiltedIntegral_8u32f_C1R", noxiTiltedIntegral_8u32f_C1R, true);
    addSquares<Nox32s, Nox64f>("noxiTiltedSqrIntegral_8u32s64f_C1R", noxiTiltedSqrIntegral_8u32s64f_C1R, true);
    addSquares<Nox32f, Nox64f>("noxiTiltedSqrIntegral_8u32f64f_C1R", noxiTiltedSqrIntegral_8u32f64f_C1R, true);
    addSquares<Nox32s, Nox32s>("noxiTiltedSqrIntegral_8u32s_C1R", noxiTiltedSqrIntegral_8u32s_C1R, true, true);
    addDeviation<Nox32f, Nox64f, Nox32f>("noxiRectStdDev_32f_C1R", noxiRectStdDev_32f_C1R, false, true);
    addDeviation<Nox32s, Nox64f, Nox32f>("noxiRectStdDev_32s32f_C1R", noxiRectStdDev_32s32f_C1R, false, false);
    addDeviation<Nox32s, Nox32s, Nox32s>("noxiRectStdDev_32s_C1RSfs", noxiRectStdDev_32s_C1RSfs, false, false, 1);
    addDeviation<Nox32f, Nox64f, Nox32f>("noxiTiltedRectStdDev_32f_C1R", noxiTiltedRectStdDev_32f_C1R, true, false);
    addDeviation<Nox32s, Nox64f, Nox32f>("noxiTiltedRectStdDev_32s32f_C1R", noxiTiltedRectStdDev_32s32f_C1R, true,
                                         false);
    addDeviation<Nox32s, Nox32s, Nox32s>("noxiTiltedRectStdDev_32s_C1RSfs", noxiTiltedRectStdDev_32s_C1RSfs, true,
                                         false, 1);
    addPlainStage<NoxiHaarClassifier_32f, Nox32f, Nox32f>("noxiApplyHaarClassifier_32f_C1R",
                                                          noxiApplyHaarClassifier_32f_C1R, true);
    addPlainStage<NoxiHaarClassifier_32f, Nox32s, Nox32f>("noxiApplyHaarClassifier_32s32f_C1R",
                                                          noxiApplyHaarClassifier_32s32f_C1R, false);
    addPlainStage<NoxiHaarClassifier_32s, Nox32s, Nox32s>("noxiApplyHaarClassifier_32s_C1RSfs",
                                                          noxiApplyHaarClassifier_32s_C1RSfs, false);
    addMixedStage<NoxiHaarClassifier_32f, Nox32f, Nox32f>("noxiApplyMixedHaarClassifier_32f_C1R",
                                                          noxiApplyMixedHaarClassifier_32f_C1R);
    addMixedStage<NoxiHaarClassifier_32f, Nox32s, Nox32f>("noxiApplyMixedHaarClassifier_32s32f_C1R",
                                                          noxiApplyMixedHaarClassifier_32s32f_C1R);
    addMixedStage<NoxiHaarClassifier_32s, Nox32s, Nox32s>("noxiApplyMixedHaarClassifier_32s_C1RSfs",
                                                          noxiApplyMixedHaarClassifier_32s_C1RSfs, -1);
});

} // namespace
