// Stages of weak classifiers, straight from their definition, on what the caller gave.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "noxtypes.h"
#include "support/element.h"

namespace reference::haar {

struct Point {
    Nox32s x, y;
};

/// A feature's corners: bottom right or bottom, bottom left or left, top right or right, top left or top.
struct Corners {
    Point br, bl, tr, tl;
};

inline Corners upright(const NoxiRect &r) {
    return {{r.x + r.width, r.y + r.height}, {r.x, r.y + r.height}, {r.x + r.width, r.y}, {r.x, r.y}};
}
inline Corners turned(const NoxiRect &r) {
    return {{r.x + r.width - r.height, r.y + r.width + r.height},
            {r.x - r.height, r.y + r.height},
            {r.x + r.width, r.y + r.width},
            {r.x, r.y}};
}
inline Corners turnedBack(const NoxiRect &r) {
    return {{r.x, r.y + r.height},
            {r.x - r.height, r.y},
            {r.x + r.width, r.y + r.height - r.width},
            {r.x + r.width - r.height, r.y - r.width}};
}

template <class T>
struct Feature {
    Corners corners;
    T weight;
};

template <class T>
struct Classifier {
    std::vector<Feature<T>> features;
    T threshold, low, high;
    bool isTurned = false;
};

/// Classifiers in the order of their evaluation.
template <class T>
using Stage = std::vector<Classifier<T>>;

/// Those of two features, those of three, all others.
template <class T>
Stage<T> grouped(const Stage<T> &input) {
    Stage<T> result;
    for (const int group : {2, 3, 0})
        for (const Classifier<T> &c : input)
            if (const int count = int(c.features.size()); group == (count == 2 || count == 3 ? count : 0))
                result.push_back(c);
    return result;
}

template <class Table>
struct TableAt {
    const Table *data;
    int step;

    Table at(std::ptrdiff_t x, std::ptrdiff_t y) const { return test::rowAt(data, step, y)[x]; }
    Table sum(const Corners &c, int x, int y) const {
        const Table br = at(x + c.br.x, y + c.br.y), bl = at(x + c.bl.x, y + c.bl.y), tr = at(x + c.tr.x, y + c.tr.y),
                    tl = at(x + c.tl.x, y + c.tl.y);
        if constexpr (std::is_same_v<Table, Nox32s>)
            return Nox32s(Nox32u(br) - Nox32u(bl) - Nox32u(tr) + Nox32u(tl));
        else
            return ((br - bl) - tr) + tl;
    }
};

/// Which table a classifier's features are read from; a null tilt table is none.
template <class Table>
struct Tables {
    TableAt<Table> src, tilt;

    template <class T>
    Table sum(const Classifier<T> &c, std::size_t k, int x, int y) const {
        if (c.isTurned && tilt.data != nullptr)
            return tilt.sum(c.features[k].corners, x + 1, y + 1);
        return src.sum(c.features[k].corners, x, y);
    }
};

/// Whether a classifier's feature sum is below its threshold times the norm. Single precision.
template <class Table>
bool isBelow(const Tables<Table> &tables, const Classifier<Nox32f> &c, int x, int y, Nox32f norm, int) {
    const auto term = [&](std::size_t k) { return Nox32f(tables.sum(c, k, x, y)) * c.features[k].weight; };
    const std::size_t count = c.features.size();
    Nox32f t = 0;
    const bool groups = std::is_same_v<Table, Nox32f> && tables.tilt.data == nullptr;
    if (groups && count == 2)
        t = term(1) + term(0);
    else if (groups && count == 3)
        t = (term(1) + term(2)) + term(0);
    else
        for (std::size_t k = 0; k < count; ++k)
            t = t + term(k);
    return t < static_cast<long double>(c.threshold) * norm;
}
/// Integers.
inline bool isBelow(const Tables<Nox32s> &tables, const Classifier<Nox32s> &c, int x, int y, Nox32s norm, int shift) {
    const auto term = [&](std::size_t k) {
        return Nox32s(Nox32u(tables.sum(c, k, x, y)) * Nox32u(c.features[k].weight));
    };
    if (tables.tilt.data == nullptr) {
        Nox32u t = 0;
        for (std::size_t k = 0; k < c.features.size(); ++k)
            t += Nox32u(term(k));
        return Nox32s(t) < Nox32s(Nox32u(norm) * Nox32u(c.threshold));
    }
    std::int64_t t = 0;
    for (std::size_t k = 0; k < c.features.size(); ++k)
        t += term(k);
    for (int i = 0; i < shift; ++i)
        t = std::int64_t(std::uint64_t(t) * 2);
    return t < std::int64_t(norm) * c.threshold;
}

inline Nox32f add(Nox32f a, Nox32f b) { return a + b; }
inline Nox32s add(Nox32s a, Nox32s b) { return Nox32s(Nox32u(a) + Nox32u(b)); }

/// Clears the mask where the stage rejects; the number of positions that pass.
template <class Table, class T>
int apply(const Tables<Table> &tables, const T *norm, int normStep, Nox8u *mask, int maskStep, NoxiSize roi,
          T threshold, const Stage<T> &stage, int shift = 0) {
    int passed = 0;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            const auto here = test::rowAt(mask, maskStep, y)[x];
            if (here == 0)
                continue;
            const T n = test::rowAt(norm, normStep, y)[x];
            T sum = 0;
            for (const Classifier<T> &c : stage)
                sum = add(sum, isBelow(tables, c, x, y, n, shift) ? c.low : c.high);
            if (sum >= threshold)
                ++passed;
            else
                here = 0;
        }
    return passed;
}

} // namespace reference::haar
