// Sampling and geometry: sub-pixel shift, patches around points, lines, undistortion.
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "noxvsubpix.h"
#include "reference/subpix.h"

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
                            reference::copySubpix(src.data(), src.step(), dst.data(), dst.step(), size, 0.3F, 0.7F,
                                                  trackerScale);
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
                                        reference::cutSubpix(src.data(), src.step(), picture, dst.data(), dst.step(),
                                                             patch, point, &min, &max, trackerScale, innerOnly);
                                }};
                    },
                    {{side * 100, side * 100}}});
}

#define CALL(FUNCTION) [](int, auto... arguments) { FUNCTION(arguments...); }
#define CALL_SFS(FUNCTION) [](int scaleFactor, auto... arguments) { FUNCTION(arguments..., scaleFactor); }
#define SHIFT(SOURCE, DESTINATION, NAME, KIND) addShift<SOURCE, DESTINATION>(#NAME, KIND(NAME));
#define PATCH(SOURCE, DESTINATION, NAME, KIND) addPatch<SOURCE, DESTINATION>(#NAME, KIND(NAME), false);
#define INNER(SOURCE, DESTINATION, NAME, KIND) addPatch<SOURCE, DESTINATION>(#NAME, KIND(NAME), true);

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
});

} // namespace
