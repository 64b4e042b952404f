// The six element types and layouts that the morphology's members come in, for typed tests.
#pragma once

#include <limits>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/morphology.h"
#include "support/image.h"
#include "support/rowset.h"

namespace test::morphology {

template <class Element, int count>
struct Layout {
    using T = Element;
    static constexpr int channels = count;
};
using Layouts = ::testing::Types<Layout<Nox8u, 1>, Layout<Nox8u, 3>, Layout<Nox8u, 4>, Layout<Nox32f, 1>,
                                 Layout<Nox32f, 3>, Layout<Nox32f, 4>>;

using GrayTypes = ::testing::Types<Nox8u, Nox32f>;

/// Of six functions of a family, the one of a layout.
template <class Layout, class A, class B, class C, class D, class E, class F>
constexpr auto memberOf(A a, B b, C c, D d, E e, F f) {
    constexpr int index = Layout::channels == 1 ? 0 : Layout::channels - 2;
    if constexpr (sizeof(typename Layout::T) == 1)
        return std::get<index>(std::tuple(a, b, c));
    else
        return std::get<index>(std::tuple(d, e, f));
}
#define NOX_MEMBER(LAYOUT, NAME)                                                                                       \
    test::morphology::memberOf<LAYOUT>(NAME##_8u_C1R, NAME##_8u_C3R, NAME##_8u_C4R, NAME##_32f_C1R, NAME##_32f_C3R,    \
                                       NAME##_32f_C4R)

template <class T>
reference::morphology::View<const T> source(const Image<T> &image) {
    return {image.data(), image.step(), image.channels()};
}
template <class T>
reference::morphology::View<T> result(const Image<T> &image) {
    return {image.data(), image.step(), image.channels()};
}

/// Random pixels: few distinct values or many, both zeros, denormals and infinities among floats.
template <class T>
Image<T> &roughen(Image<T> &image, Random &random) {
    const int kinds = int(random() % 3);
    return image.generate([&](int, int, int) -> T {
        if constexpr (sizeof(T) == 4) {
            constexpr float infinity = std::numeric_limits<float>::infinity();
            if (kinds == 0)
                switch (random() % 20) {
                case 0:
                    return infinity;
                case 1:
                    return -infinity;
                case 2:
                    return 1e-42F * float(random() % 9);
                default:
                    break;
                }
        }
        return kinds == 1 ? T(random() % 4 + 1) : randomElement<T>(random);
    });
}

} // namespace test::morphology
