// Lines: the Hough transform of an edge map with 3 percent of its pixels set.
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/houghline.h"

namespace {

const bench::Registrar registrar([] {
    bench::add({"noxiHoughLine_8u32f_C1R 1 pixel, 1 degree",
                1,
                0,
                false,
                [](NoxiSize size) -> bench::Work {
                    const bench::Image<Nox8u> src(size);
                    unsigned seed = 1;
                    for (std::size_t i = 0; i < src.count(); ++i) {
                        seed = seed * 1664525U + 1013904223U;
                        src.data()[i] = (seed >> 8) % 100 < 3 ? 255 : 0;
                    }
                    constexpr NoxiPoint32f delta = {1, 0.0174532925F};
                    constexpr int most = 100;
                    const int threshold = (size.width + size.height) / 60 + 2;
                    int bytes = 0;
                    noxiHoughLineGetSize_8u_C1R(size, delta, most, &bytes);
                    const bench::Buffer buffer(bytes);
                    return {[=] {
                                NoxiPoint32f lines[most];
                                int count = 0;
                                noxiHoughLine_8u32f_C1R(src.data(), src.step(), size, delta, threshold, lines, most,
                                                        &count, buffer.data());
                                bench::keep(count);
                                bench::keepBytes(lines, sizeof(lines[0]) * std::size_t(count));
                            },
                            [=] { reference::houghline::lines(src.data(), src.step(), size, delta, threshold, most); }};
                },
                {{1024, 1024}, {320, 240}, {1920, 1080}}});
});

} // namespace
