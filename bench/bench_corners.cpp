// Corners: eigenvalues of the gradient's covariance, and the peaks of a response.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/corners.h"

namespace {

/// The whole pipeline by plain loops: 3 x 3 Sobel derivatives and averages, the nearest pixel outside the image.
template <class T>
void plainCorners(const bench::Image<T> &src, const bench::Image<Nox32f> &dst, bool vectors) {
    const int w = src.roi().width, h = src.roi().height;
    const auto at = [&](const auto *plane, int x, int y) {
        return Nox32f(
            plane[std::size_t(std::clamp(y, 0, h - 1)) * std::size_t(w) + std::size_t(std::clamp(x, 0, w - 1))]);
    };
    std::vector<Nox32f> products[3];
    for (auto &plane : products)
        plane.resize(std::size_t(w) * std::size_t(h));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            Nox32f dx = 0, dy = 0;
            for (int k = -1; k <= 1; ++k) {
                const Nox32f weight = k == 0 ? 2.0F : 1.0F;
                dx += weight * (at(src.data(), x - 1, y + k) - at(src.data(), x + 1, y + k));
                dy += weight * (at(src.data(), x + k, y + 1) - at(src.data(), x + k, y - 1));
            }
            const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
            products[0][i] = dx * dx, products[1][i] = dx * dy, products[2][i] = dy * dy;
        }
    const Nox32f scale = reference::corners::scaleOf(0, 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            Nox32f sums[3] = {};
            for (int p = 0; p < 3; ++p) {
                for (int j = -1; j <= 1; ++j)
                    for (int k = -1; k <= 1; ++k)
                        sums[p] += at(products[p].data(), x + k, y + j);
                sums[p] /= 9;
            }
            const std::size_t i = std::size_t(y) * std::size_t(w) + std::size_t(x);
            if (vectors)
                reference::corners::valuesAndVectors(sums[0], sums[1], sums[2], scale, -1, dst.data() + 6 * i);
            else
                dst.data()[i] = reference::corners::smallerValue(sums[0], sums[1], sums[2], scale);
        }
}

template <class T, class Entry, class Query>
void addCorners(const char *name, Entry entry, Query query, bool vectors) {
    bench::add({name, sizeof(T), vectors ? 24.0 : 4.0, false, [=](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<T>(size);
                    const bench::Image<Nox32f> dst(size, vectors ? 6 : 1);
                    int bytes = 0;
                    query(size, 3, 3, &bytes);
                    const bench::Buffer buffer(bytes);
                    return {
                        [=] { entry(src.data(), src.step(), dst.data(), dst.step(), size, 0, 3, 3, buffer.data()); },
                        [=] { plainCorners(src, dst, vectors); }};
                }});
}

template <class T, class Entry>
void addPeaks(const char *name, Entry entry, int norm) {
    bench::add(
        {std::string(name) + " norm " + std::to_string(norm), sizeof(T), 0, false, [=](NoxiSize size) -> bench::Work {
             const auto src = bench::picture<T>(size);
             int bytes = 0;
             noxiFindPeaks3x3GetBufferSize_32f_C1R(size.width, &bytes);
             const bench::Buffer buffer(bytes);
             constexpr int most = 100000;
             const auto peaks = std::make_shared<std::vector<Nox32s>>(2 * most);
             return {[=] {
                         int count = 0;
                         entry(src.data(), src.step(), size, T(100), peaks->data(), most, &count, norm, 1,
                               buffer.data());
                         bench::keep(count);
                         bench::keepBytes(peaks->data(), 8 * std::size_t(count));
                     },
                     [=] { reference::corners::peaks<T>(src.data(), src.step(), size, T(100), most, norm, 1); }};
         }});
}

const bench::Registrar registrar([] {
    addCorners<Nox8u>("noxiMinEigenVal_8u32f_C1R", noxiMinEigenVal_8u32f_C1R, noxiMinEigenValGetBufferSize_8u32f_C1R,
                      false);
    addCorners<Nox32f>("noxiMinEigenVal_32f_C1R", noxiMinEigenVal_32f_C1R, noxiMinEigenValGetBufferSize_32f_C1R, false);
    addCorners<Nox8u>("noxiEigenValsVecs_8u32f_C1R", noxiEigenValsVecs_8u32f_C1R,
                      noxiEigenValsVecsGetBufferSize_8u32f_C1R, true);
    addCorners<Nox32f>("noxiEigenValsVecs_32f_C1R", noxiEigenValsVecs_32f_C1R, noxiEigenValsVecsGetBufferSize_32f_C1R,
                       true);
    for (const int norm : {0, 1}) {
        addPeaks<Nox32f>("noxiFindPeaks3x3_32f_C1R", noxiFindPeaks3x3_32f_C1R, norm);
        addPeaks<Nox32s>("noxiFindPeaks3x3_32s_C1R", noxiFindPeaks3x3_32s_C1R, norm);
    }
});

} // namespace
