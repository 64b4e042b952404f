// Object detection: integral images, deviations, and stages of weak classifiers.
#include <string>

#include "bench.h"
#include "noxcv.h"
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
});

} // namespace
