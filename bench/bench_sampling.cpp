// Sampling and geometry: sub-pixel shift, patches around points, lines, undistortion.
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/sampleline.h"
#include "reference/subpix.h"
#include "reference/undistort.h"
#include "sampling/noxvsubpix.h"

namespace {

constexpr int trackerScale = -7;

template <class S, class D, class Call>
void addShift(const std::string &name, Call call) {
    bench::add({name, sizeof(S), sizeof(D), false, [call](NoxiSize size) -> bench::Work {
                    const auto src = bench::picture<S>({size.width + 1, size.height + 1});
                    const bench::Image<D> dst(size);
                    return {
                        [=] { call(trackerScale, src.data(), src.step(), dst.data(), dst.step(), size, 0.3F, 0.7F); },
                        [=] {
                            reference::subpix::copySubpix(src.data(), src.step(), dst.data(), dst.step(), size, 0.3F,
                                                          0.7F, trackerScale);
                        }};
                }});
}

/// Patches at points spread over a picture, most of them inside. A pixel of the table is a cell of a patch.
template <class S, class D, class Call>
void addPatch(const std::string &name, Call call, bool innerOnly) {
    for (const int side : {10, 21, 30})
        bench::add({name + " " + std::to_string(side) + "x" + std::to_string(side),
                    sizeof(S),
                    sizeof(D),
                    false,
                    [=](NoxiSize size) -> bench::Work {
                        const NoxiSize patch = {side, side}, picture = {640, 480};
                        const auto src = bench::picture<S>(picture);
                        const bench::Image<D> dst(patch);
                        std::vector<NoxiPoint32f> points(std::size_t(size.width) * size.height / side / side);
                        unsigned random = 1;
                        for (NoxiPoint32f &point : points) {
                            random = random * 1664525U + 1013904223U;
                            point = {float(random >> 16) * 640 / 65536, float(random & 0xffff) * 480 / 65536};
                        }
                        return {[=] {
                                    NoxiPoint min, max;
                                    for (const NoxiPoint32f &point : points)
                                        call(trackerScale, src.data(), src.step(), picture, dst.data(), dst.step(),
                                             patch, point, &min, &max);
                                },
                                [=] {
                                    NoxiPoint min, max;
                                    for (const NoxiPoint32f &point : points)
                                        reference::subpix::cutSubpix(src.data(), src.step(), picture, dst.data(),
                                                                     dst.step(), patch, point, &min, &max, trackerScale,
                                                                     innerOnly);
                                }};
                    },
                    {{side * 100, side * 100}}});
}

/// Lines in all directions between the sides of a picture. A pixel of the table is a pixel of a line.
template <class T, class Call>
void addLine(const std::string &name, Call call, int channels) {
    const double bytes = channels * double(sizeof(T));
    bench::add({name,
                bytes,
                bytes,
                false,
                [=](NoxiSize size) -> bench::Work {
                    const NoxiSize picture = {640, 480};
                    const auto src = bench::picture<T>(picture, channels);
                    const bench::Image<T> dst({640, 1}, channels);
                    std::vector<NoxiPoint> ends;
                    for (int i = 0; i < size.height; ++i)
                        ends.push_back({0, i * 97 % 480});
                    const int step = src.step();
                    return {
                        [=] {
                            for (std::size_t i = 0; i < ends.size(); ++i)
                                call(src.data(), step, picture, dst.data(), ends[i], NoxiPoint{639, int(i * 61 % 480)});
                        },
                        [=] {
                            for (std::size_t i = 0; i < ends.size(); ++i) {
                                T *d = dst.data();
                                const NoxiPoint end = {639, int(i * 61 % 480)};
                                for (const NoxiPoint pixel : reference::sampleline::linePixels(ends[i], end))
                                    for (int c = 0; c < channels; ++c)
                                        *d++ = reference::undistort::undistortRow(src.data(), step,
                                                                                  pixel.y)[pixel.x * channels + c];
                            }
                        }};
                },
                {{640, 480}}});
}

/// A plausible wide-angle lens for a picture.
reference::undistort::Lens lensFor(NoxiSize size, float tangential) {
    const auto w = float(size.width), h = float(size.height);
    return {w * 0.8F, w * 0.8F, w * 0.49F, h * 0.52F, -0.18F, 0.03F, tangential, -tangential};
}

template <class T, class Call>
void addUndistort(const std::string &name, Call call, int channels) {
    const double bytes = channels * double(sizeof(T));
    for (const bool buffered : {true, false})
        bench::add({name + (buffered ? " buffer" : ""), bytes, bytes, false, [=](NoxiSize size) -> bench::Work {
                        const auto src = bench::picture<T>(size, channels);
                        const auto dst = bench::picture<T>(size, channels, 2);
                        int bufferSize = 0;
                        noxiUndistortGetSize(size, &bufferSize);
                        const bench::Buffer buffer(bufferSize);
                        const reference::undistort::Lens lens = lensFor(size, 0);
                        return {[=] {
                                    call(src.data(), src.step(), dst.data(), dst.step(), size, lens.fx, lens.fy,
                                         lens.cx, lens.cy, lens.k1, lens.k2, buffered ? buffer.data() : nullptr);
                                },
                                [=] {
                                    reference::undistort::undistortRadial(src.data(), src.step(), dst.data(),
                                                                          dst.step(), size, channels, lens);
                                }};
                    }});
}

void addMaps(const std::string &name, float tangential) {
    bench::add({name, 0, 2 * sizeof(Nox32f), false, [tangential](NoxiSize size) -> bench::Work {
                    const bench::Image<Nox32f> x(size), y(size);
                    const reference::undistort::Lens lens = lensFor(size, tangential);
                    return {
                        [=] {
                            noxiCreateMapCameraUndistort_32f_C1R(x.data(), x.step(), y.data(), y.step(), size, lens.fx,
                                                                 lens.fy, lens.cx, lens.cy, lens.k1, lens.k2, lens.p1,
                                                                 lens.p2, nullptr);
                        },
                        [=] { reference::undistort::createMaps(x.data(), x.step(), y.data(), y.step(), size, lens); }};
                }});
}

#define CALL(FUNCTION) [](int, auto... arguments) { FUNCTION(arguments...); }
#define CALL_SFS(FUNCTION) [](int scaleFactor, auto... arguments) { FUNCTION(arguments..., scaleFactor); }
#define SHIFT(SOURCE, DESTINATION, NAME, KIND) addShift<SOURCE, DESTINATION>(#NAME, KIND(NAME));
#define PATCH(SOURCE, DESTINATION, NAME, KIND) addPatch<SOURCE, DESTINATION>(#NAME, KIND(NAME), false);
#define INNER(SOURCE, DESTINATION, NAME, KIND) addPatch<SOURCE, DESTINATION>(#NAME, KIND(NAME), true);
#define LINE(TYPE, NAME, CHANNELS) addLine<TYPE>(#NAME, NAME, CHANNELS);
#define UNDISTORT(TYPE, NAME, CHANNELS) addUndistort<TYPE>(#NAME, NAME, CHANNELS);

const bench::Registrar registrar([] {
    SHIFT(Nox8u, Nox8u, noxiCopySubpix_8u_C1R, CALL)
    SHIFT(Nox8u, Nox16u, noxiCopySubpix_8u16u_C1R_Sfs, CALL_SFS)
    SHIFT(Nox16u, Nox16u, noxiCopySubpix_16u_C1R, CALL)
    SHIFT(Nox8u, Nox32f, noxiCopySubpix_8u32f_C1R, CALL)
    SHIFT(Nox16u, Nox32f, noxiCopySubpix_16u32f_C1R, CALL)
    SHIFT(Nox32f, Nox32f, noxiCopySubpix_32f_C1R, CALL)

    PATCH(Nox8u, Nox8u, noxiCopySubpixIntersect_8u_C1R, CALL)
    PATCH(Nox8u, Nox16u, noxiCopySubpixIntersect_8u16u_C1R_Sfs, CALL_SFS)
    PATCH(Nox16u, Nox16u, noxiCopySubpixIntersect_16u_C1R, CALL)
    PATCH(Nox8u, Nox32f, noxiCopySubpixIntersect_8u32f_C1R, CALL)
    PATCH(Nox16u, Nox32f, noxiCopySubpixIntersect_16u32f_C1R, CALL)
    PATCH(Nox32f, Nox32f, noxiCopySubpixIntersect_32f_C1R, CALL)

    INNER(Nox8u, Nox8u, ownGetRectSubpix_8u_C1R, CALL)
    INNER(Nox8u, Nox16u, ownGetRectSubpix_8u16u_C1R_Sfs, CALL_SFS)
    INNER(Nox16u, Nox16u, ownGetRectSubpix_16u_C1R, CALL)
    INNER(Nox16u, Nox32f, ownGetRectSubpix_16u32f_C1R, CALL)
    INNER(Nox32f, Nox32f, ownGetRectSubpix_32f_C1R, CALL)

    LINE(Nox8u, noxiSampleLine_8u_C1R, 1)
    LINE(Nox8u, noxiSampleLine_8u_C3R, 3)
    LINE(Nox16u, noxiSampleLine_16u_C1R, 1)
    LINE(Nox16u, noxiSampleLine_16u_C3R, 3)
    LINE(Nox32f, noxiSampleLine_32f_C1R, 1)
    LINE(Nox32f, noxiSampleLine_32f_C3R, 3)

    UNDISTORT(Nox8u, noxiUndistortRadial_8u_C1R, 1)
    UNDISTORT(Nox16u, noxiUndistortRadial_16u_C1R, 1)
    UNDISTORT(Nox32f, noxiUndistortRadial_32f_C1R, 1)
    UNDISTORT(Nox8u, noxiUndistortRadial_8u_C3R, 3)
    UNDISTORT(Nox16u, noxiUndistortRadial_16u_C3R, 3)
    UNDISTORT(Nox32f, noxiUndistortRadial_32f_C3R, 3)
    addMaps("noxiCreateMapCameraUndistort_32f_C1R radial", 0);
    addMaps("noxiCreateMapCameraUndistort_32f_C1R tangential", 0.01F);
});

} // namespace
