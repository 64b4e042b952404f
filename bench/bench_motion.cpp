// Motion: history images and foreground models.
#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/foreground.h"
#include "reference/motionhistory.h"

namespace {

template <class T, class Entry>
void addMotionHistory(const char *name, Entry entry) {
    bench::add(
        {name, sizeof(T) + 4.0, 4.0, false, [entry](NoxiSize size) -> bench::Work {
             const auto silhouette = bench::picture<T>(size);
             for (std::size_t i = 0; i < silhouette.count(); ++i)
                 silhouette.data()[i] = int(silhouette.data()[i]) % 3 == 0 ? T(1) : T(0);
             const auto mhi = bench::picture<Nox32f>(size, 1, 2);
             return {[=] { entry(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(), size, 200.0F, 100.0F); },
                     [=] {
                         reference::motionhistory::update(silhouette.data(), silhouette.step(), mhi.data(), mhi.step(),
                                                          size, 200.0F, 100.0F);
                     }};
         }});
}

constexpr NoxiSize frameSize = {640, 480};

/// A short video that is shown over and over: a picture with noise, and a square that moves over it.
struct Video {
    explicit Video(NoxiSize size, int channels) {
        const auto background = bench::picture<Nox8u>(size, channels);
        std::mt19937 random(1);
        for (int t = 0; t < 8; ++t) {
            frames.emplace_back(size, channels);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    for (int c = 0; c < channels; ++c) {
                        const std::size_t i = (std::size_t(y) * size.width + x) * channels + c;
                        const bool square = x / 8 >= t && x / 8 < t + 8 && y >= 100 && y < 200;
                        const int value = (square ? 255 - background.data()[i] : background.data()[i]);
                        frames.back().data()[i] = Nox8u(std::clamp(value + int(random() % 5) - 2, 0, 255));
                    }
        }
    }
    const bench::Image<Nox8u> &next() const { return frames[(*number)++ % frames.size()]; }
    std::vector<bench::Image<Nox8u>> frames;
    std::shared_ptr<unsigned> number = std::make_shared<unsigned>(0);
};

template <class Init, class Detect, class Free>
void addForegroundGaussian(const char *name, int channels, Init init, Detect detect, Free release) {
    bench::add(
        {name,
         double(channels),
         1,
         false,
         [=](NoxiSize size) -> bench::Work {
             const Video video(size, channels);
             const bench::Image<Nox8u> mask(size);
             const bench::Image<Nox8u> &first = video.frames[0];
             NoxiForegroundGaussianState *made = nullptr;
             init(first.data(), first.step(), size, &video, &made);
             const std::shared_ptr<NoxiForegroundGaussianState> state(made, release);
             const auto model =
                 std::make_shared<reference::foreground::GaussianModel>(first.data(), first.step(), size, channels);
             const auto run = [=] {
                 const bench::Image<Nox8u> &frame = video.next();
                 detect(frame.data(), frame.step(), frame.data(), 0, mask.data(), mask.step(), size, state.get());
             };
             const auto plain = [=] {
                 const bench::Image<Nox8u> &frame = video.next();
                 std::vector<Nox8u> result;
                 model->detect(frame.data(), frame.step(), result);
             };
             for (int t = 0; t < 30; ++t) {
                 run();
                 plain();
             }
             return {run, plain};
         },
         {frameSize}});
}

/// Detection and, in the second member, the update with its mask.
template <class Init, class Detect, class Update, class Free>
void addForegroundHistogram(const char *tag, int channels, bool update, Init init, Detect detect, Update learn,
                            Free release) {
    bench::add({std::string("noxiForegroundHistogram") + (update ? "Update" : "") + tag,
                double(channels),
                1,
                false,
                [=](NoxiSize size) -> bench::Work {
                    const Video video(size, channels);
                    const bench::Image<Nox8u> mask(size);
                    const bench::Image<Nox8u> &first = video.frames[0];
                    NoxiForegroundHistogramState *made = nullptr;
                    init(first.data(), first.step(), size, &video, &made);
                    const std::shared_ptr<NoxiForegroundHistogramState> state(made, release);
                    const auto model = std::make_shared<reference::foreground::HistogramModel>(
                        first.data(), first.step(), size, channels);
                    const auto plainMask = std::make_shared<std::vector<Nox8u>>();
                    const auto runDetect = [=] {
                        const bench::Image<Nox8u> &frame = video.next();
                        detect(frame.data(), frame.step(), mask.data(), mask.step(), size, state.get());
                    };
                    const auto runUpdate = [=] {
                        const bench::Image<Nox8u> &frame = video.next();
                        learn(frame.data(), frame.step(), mask.data(), mask.step(), frame.data(), 0, size, state.get());
                    };
                    const auto plainDetect = [=] {
                        const bench::Image<Nox8u> &frame = video.next();
                        model->detect(frame.data(), frame.step(), *plainMask);
                    };
                    const auto plainUpdate = [=] {
                        const bench::Image<Nox8u> &frame = video.next();
                        model->update(frame.data(), frame.step(), mask.data(), mask.step());
                    };
                    for (int t = 0; t < 30; ++t) {
                        runDetect();
                        runUpdate();
                        plainDetect();
                        plainUpdate();
                    }
                    if (update)
                        return {runUpdate, plainUpdate};
                    return {runDetect, plainDetect};
                },
                {{320, 240}}});
}

const bench::Registrar registrar([] {
    addMotionHistory<Nox8u>("noxiUpdateMotionHistory_8u32f_C1IR", noxiUpdateMotionHistory_8u32f_C1IR);
    addMotionHistory<Nox16u>("noxiUpdateMotionHistory_16u32f_C1IR", noxiUpdateMotionHistory_16u32f_C1IR);
    addMotionHistory<Nox32f>("noxiUpdateMotionHistory_32f_C1IR", noxiUpdateMotionHistory_32f_C1IR);
    addForegroundGaussian("noxiForegroundGaussian_8u_C1R", 1, noxiForegroundGaussianInitAlloc_8u_C1R,
                          noxiForegroundGaussian_8u_C1R, noxiForegroundGaussianFree_8u_C1R);
    addForegroundGaussian("noxiForegroundGaussian_8u_C3R", 3, noxiForegroundGaussianInitAlloc_8u_C3R,
                          noxiForegroundGaussian_8u_C3R, noxiForegroundGaussianFree_8u_C3R);
    for (const bool update : {false, true}) {
        addForegroundHistogram("_8u_C1R", 1, update, noxiForegroundHistogramInitAlloc_8u_C1R,
                               noxiForegroundHistogram_8u_C1R, noxiForegroundHistogramUpdate_8u_C1R,
                               noxiForegroundHistogramFree_8u_C1R);
        addForegroundHistogram("_8u_C3R", 3, update, noxiForegroundHistogramInitAlloc_8u_C3R,
                               noxiForegroundHistogram_8u_C3R, noxiForegroundHistogramUpdate_8u_C3R,
                               noxiForegroundHistogramFree_8u_C3R);
    }
});

} // namespace
