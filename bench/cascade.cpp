// A whole cascade on a photograph: tables, deviations, and all stages on the mask that they shrink. The cascade is the
// public one for faces that Debian's opencv-data installs, the photograph one that tools/demo fetches; without one of
// the two there is nothing to measure, and a line on stderr says so.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <vector>

#include "../examples/support/cascade.h"
#include "bench.h"
#include "noxcv.h"
#include "picture.h"
#include "reference/haar.h"
#include "reference/integral.h"

namespace {

constexpr const char *cascadePath = "/usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml";
constexpr const char *photographPath = NOXCV_PICTURES "/astronaut.png";
constexpr Nox32f rate = 1.1F;

using PlainStage = reference::haar::Stage<Nox32f>;

/// The cascade, and the same for the reference.
struct Stages {
    Cascade cascade;
    std::vector<PlainStage> plain;

    /// False when the file cannot be read.
    bool read() {
        if (!readCascade(cascadePath, cascade))
            return false;
        for (const CascadeStage &stage : cascade.stages) {
            PlainStage result;
            std::size_t feature = 0;
            for (std::size_t i = 0; i < stage.counts.size(); ++i) {
                reference::haar::Classifier<Nox32f> c = {
                    {}, stage.thresholds[i], stage.lowValues[i], stage.highValues[i]};
                for (int k = 0; k < stage.counts[i]; ++k, ++feature)
                    c.features.push_back({reference::haar::upright(stage.rectangles[feature]), stage.weights[feature]});
                result.push_back(c);
            }
            plain.push_back(reference::haar::grouped(result));
        }
        return true;
    }
};

/// A picture with the arrays that a scan fills; every pitch-th row and column of positions is looked at.
class Scan {
public:
    Scan(const Stages &stages, const bench::Image<Nox8u> &picture, int pitch)
        : stages_(stages), picture_(picture),
          pitch_(pitch), positions_{picture.roi().width - stages.cascade.window.width + 1,
                                    picture.roi().height - stages.cascade.window.height + 1},
          sums_({picture.roi().width + 1, picture.roi().height + 1}), squares_(sums_.roi()), norms_(positions_),
          mask_(positions_) {}

    void run() const {
        const Cascade &cascade = stages_.cascade;
        noxiSqrIntegral_8u32f64f_C1R(picture_.data(), picture_.step(), sums_.data(), sums_.step(), squares_.data(),
                                     squares_.step(), picture_.roi(), 0, 0);
        noxiRectStdDev_32f_C1R(sums_.data(), sums_.step(), squares_.data(), squares_.step(), norms_.data(),
                               norms_.step(), positions_, cascade.normRectangle);
        startMask();
        for (const CascadeStage &stage : cascade.stages) {
            int left = 0;
            noxiApplyHaarClassifier_32f_C1R(sums_.data(), sums_.step(), norms_.data(), norms_.step(), mask_.data(),
                                            mask_.step(), positions_, &left, stage.threshold, stage.state.get());
            if (left == 0)
                break;
        }
    }
    void runPlain() const {
        const Cascade &cascade = stages_.cascade;
        reference::integral::upright(picture_.data(), picture_.step(), sums_.data(), sums_.step(), picture_.roi(),
                                     Nox32f(0), false);
        reference::integral::upright(picture_.data(), picture_.step(), squares_.data(), squares_.step(), picture_.roi(),
                                     Nox64f(0), true);
        reference::integral::deviation(sums_.data(), sums_.step(), squares_.data(), squares_.step(), norms_.data(),
                                       norms_.step(), positions_, cascade.normRectangle, false);
        startMask();
        const reference::haar::Tables<Nox32f> tables = {{sums_.data(), sums_.step()}, {nullptr, 0}};
        for (std::size_t i = 0; i < cascade.stages.size(); ++i)
            if (reference::haar::apply(tables, norms_.data(), norms_.step(), mask_.data(), mask_.step(), positions_,
                                       cascade.stages[i].threshold, stages_.plain[i]) == 0)
                break;
    }
    /// The mask that a run leaves, for a comparison of both.
    std::vector<Nox8u> left() const { return {mask_.data(), mask_.data() + mask_.count()}; }

private:
    void startMask() const {
        std::fill_n(mask_.data(), mask_.count(), Nox8u(0));
        for (int y = 0; y < positions_.height; y += pitch_)
            for (int x = 0; x < positions_.width; x += pitch_)
                mask_.data()[std::size_t(y) * positions_.width + x] = 1;
    }

    const Stages &stages_;
    bench::Image<Nox8u> picture_;
    int pitch_;
    NoxiSize positions_;
    bench::Image<Nox32f> sums_;
    bench::Image<Nox64f> squares_;
    bench::Image<Nox32f> norms_;
    bench::Image<Nox8u> mask_;
};

/// The picture and smaller versions of it, down to the window.
std::vector<bench::Image<Nox8u>> scales(const bench::Image<Nox8u> &picture, NoxiSize window) {
    const Nox16s kernel[] = {1, 6, 1};
    NoxiPyramidLayerState *state = nullptr;
    noxiPyramidLayerDownInitAlloc_8u_C1R(&state, picture.roi(), rate, kernel, 3, 2);
    std::vector<bench::Image<Nox8u>> all = {picture};
    for (NoxiSize size = picture.roi();;) {
        noxiGetPyramidDownROI(all.back().roi(), &size, rate);
        if (size.width < window.width || size.height < window.height)
            break;
        const bench::Image<Nox8u> smaller(size);
        noxiPyramidLayerDown_8u_C1R(all.back().data(), all.back().step(), all.back().roi(), smaller.data(),
                                    smaller.step(), size, state);
        all.push_back(smaller);
    }
    noxiPyramidLayerDownFree_8u_C1R(state);
    return all;
}

bench::Work workOf(const std::shared_ptr<Stages> &stages, std::vector<Scan> scans) {
    for (const Scan &scan : scans) {
        scan.run();
        const std::vector<Nox8u> left = scan.left();
        scan.runPlain();
        if (left != scan.left())
            std::fprintf(stderr, "the cascade and its reference leave different positions\n");
    }
    const auto all = std::make_shared<std::vector<Scan>>(std::move(scans));
    return {[stages, all] {
                for (const Scan &scan : *all)
                    scan.run();
            },
            [stages, all] {
                for (const Scan &scan : *all)
                    scan.runPlain();
            }};
}

bool isThere(const char *path) {
    const bool there = std::ifstream(path).good();
    if (!there)
        std::fprintf(stderr, "no cascade is measured: %s is not there\n", path);
    return there;
}

const bench::Registrar registrar([] {
    const auto stages = std::make_shared<Stages>();
    if (!isThere(cascadePath) || !isThere(photographPath) || !stages->read())
        return;
    bench::add({"cascade, all scales",
                1,
                0,
                true,
                [stages](NoxiSize size) {
                    std::vector<Scan> scans;
                    for (const auto &picture : scales(bench::photograph(photographPath, size), stages->cascade.window))
                        scans.emplace_back(*stages, picture, 1);
                    return workOf(stages, std::move(scans));
                },
                {{512, 512}}});
    bench::add({"cascade, one scale, every second row and column",
                1,
                0,
                true,
                [stages](NoxiSize size) {
                    std::vector<Scan> scans;
                    scans.emplace_back(*stages, bench::photograph(photographPath, size), 2);
                    return workOf(stages, std::move(scans));
                },
                {{1920, 1080}}});
});

} // namespace
