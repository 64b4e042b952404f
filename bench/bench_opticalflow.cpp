// The point tracker: 2000 points, windows of 21, four levels, a picture that moves by a fraction of a pixel.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "noxcv.h"
#include "reference/opticalflow.h"

namespace {

constexpr int winSize = 21, maxLevel = 3, maxIter = 20, pointCount = 2000;
constexpr float threshold = 0.01F;
/// The two coarser ones of four levels of 1920 x 1080 get derivatives of the whole level.
constexpr NoxiSize coarse = {641, 481};

constexpr short kernel16[] = {1, 4, 6, 4, 1};
constexpr float kernel32[] = {1, 4, 6, 4, 1};

template <class T>
struct Member;

#define FLOW_MEMBER(TYPE, TAG, KERNEL)                                                                                 \
    template <>                                                                                                        \
    struct Member<TYPE> {                                                                                              \
        static constexpr const char *name = "noxiOpticalFlowPyrLK_" #TAG "_C1R";                                       \
        static constexpr auto init = noxiOpticalFlowPyrLKInitAlloc_##TAG##_C1R;                                        \
        static constexpr auto track = noxiOpticalFlowPyrLK_##TAG##_C1R;                                                \
        static constexpr auto release = noxiOpticalFlowPyrLKFree_##TAG##_C1R;                                          \
        static constexpr auto layerInit = noxiPyramidLayerDownInitAlloc_##TAG##_C1R;                                   \
        static constexpr auto layer = noxiPyramidLayerDown_##TAG##_C1R;                                                \
        static constexpr auto kernel = KERNEL;                                                                         \
    };
FLOW_MEMBER(Nox8u, 8u, kernel16)
FLOW_MEMBER(Nox16u, 16u, kernel16)
FLOW_MEMBER(Nox32f, 32f, kernel32)
#undef FLOW_MEMBER

/// A pyramid with its images and the means to fill them from level 0.
template <class T>
class Pyramid {
public:
    explicit Pyramid(const bench::Image<T> &picture) {
        noxiPyramidInitAlloc(&record_, maxLevel, picture.roi(), 2);
        Member<T>::layerInit(&layer_, picture.roi(), 2, Member<T>::kernel, 5, 2);
        images_.push_back(picture);
        for (int l = 1; l <= record_->level; ++l)
            images_.emplace_back(record_->sizes[l]);
        for (int l = 0; l <= record_->level; ++l) {
            record_->images[l] = reinterpret_cast<Nox8u *>(images_[std::size_t(l)].data());
            record_->steps[l] = images_[std::size_t(l)].step();
        }
        fill();
    }
    Pyramid(const Pyramid &) = delete;
    Pyramid &operator=(const Pyramid &) = delete;
    ~Pyramid() {
        noxiPyramidFree(record_);
        noxiPyramidLayerDownFree(layer_);
    }

    void fill() const {
        for (std::size_t l = 1; l < images_.size(); ++l)
            Member<T>::layer(images_[l - 1].data(), images_[l - 1].step(), images_[l - 1].roi(), images_[l].data(),
                             images_[l].step(), images_[l].roi(), layer_);
    }
    const NoxiPyramid &get() const { return *record_; }

private:
    NoxiPyramid *record_ = nullptr;
    NoxiPyramidLayerState *layer_ = nullptr;
    std::vector<bench::Image<T>> images_;
};

/// The same picture a little to the lower right.
template <class T>
bench::Image<T> moved(const bench::Image<T> &picture) {
    const auto [width, height] = picture.roi();
    const bench::Image<T> out(picture.roi());
    constexpr float right = 1.4F, down = 0.7F;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float u = std::clamp(float(x) - right, 0.0F, float(width) - 1.001F),
                        v = std::clamp(float(y) - down, 0.0F, float(height) - 1.001F);
            const int column = int(u), row = int(v);
            const float fx = u - float(column), fy = v - float(row);
            const T *p = picture.data() + std::size_t(row) * width + column;
            const int next = column + 1 < width, below = row + 1 < height ? width : 0;
            out.data()[std::size_t(y) * width + x] = T((float(p[0]) * (1 - fx) + float(p[next]) * fx) * (1 - fy) +
                                                       (float(p[below]) * (1 - fx) + float(p[below + next]) * fx) * fy);
        }
    return out;
}

/// Blocks of a few sizes on top of the standard picture, so that points have something to hold on to at every level.
template <class T>
bench::Image<T> texture(NoxiSize size) {
    bench::Image<T> image = bench::picture<T>(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            T &pixel = image.data()[std::size_t(y) * size.width + x];
            const unsigned block = unsigned(x / 7 * 7919 + y / 9 * 104729), wide = unsigned(x / 37 * 31 + y / 29 * 17);
            pixel = T(pixel * (0.5 + 0.25 * (block * 2654435761U >> 31) + 0.25 * (wide * 2246822519U >> 31)));
        }
    return image;
}

template <class T>
struct Job {
    Pyramid<T> first, second;
    std::vector<NoxiPoint32f> prev, next;
    std::vector<Nox8s> status = std::vector<Nox8s>(pointCount);
    std::vector<Nox32f> error = std::vector<Nox32f>(pointCount);
    NoxiOptFlowPyrLKState *state = nullptr;
    int lastLevel;

    Job(NoxiSize size, const bench::Image<T> &picture)
        : first(picture), second(moved(picture)), lastLevel(std::min(maxLevel, first.get().level)) {
        noxSetNumThreads(2);
        Member<T>::init(&state, coarse, winSize, 0);
        noxSetNumThreads(1);
        unsigned noise = 1;
        const auto uniform = [&] {
            noise = noise * 1664525U + 1013904223U;
            return float(noise >> 8) / float(1 << 24);
        };
        for (int i = 0; i < pointCount; ++i)
            prev.push_back({uniform() * float(size.width - 1), uniform() * float(size.height - 1)});
        next = prev;
    }
    Job(const Job &) = delete;
    Job &operator=(const Job &) = delete;
    ~Job() { Member<T>::release(state); }

    void track() {
        next = prev;
        Member<T>::track(&first.get(), &second.get(), prev.data(), next.data(), status.data(), error.data(), pointCount,
                         winSize, lastLevel, maxIter, threshold, state);
        bench::keepBytes(next.data(), next.size() * sizeof(next[0]));
        bench::keepBytes(status.data(), status.size());
        bench::keepBytes(error.data(), error.size() * sizeof(error[0]));
    }
    void trackPlain() {
        next = prev;
        reference::opticalflow::opticalFlow<T>(first.get(), second.get(), prev.data(), next.data(), status.data(),
                                               error.data(), pointCount, winSize, lastLevel, maxIter, threshold,
                                               coarse);
    }
};

/// A pixel of the table is a pixel of level 0. With pyramids: both are filled in the same run.
template <class T>
void addTracker(bool pyramids) {
    const double element = sizeof(T);
    bench::add({std::string(Member<T>::name) + (pyramids ? " with both pyramids" : ""), element, element, true,
                [pyramids](NoxiSize size) -> bench::Work {
                    const auto job = std::make_shared<Job<T>>(size, texture<T>(size));
                    if (pyramids)
                        return {[job] {
                                    job->first.fill();
                                    job->second.fill();
                                    job->track();
                                },
                                {}};
                    return {[job] { job->track(); }, [job] { job->trackPlain(); }};
                }});
}

const bench::Registrar registrar([] {
    addTracker<Nox8u>(false);
    addTracker<Nox16u>(false);
    addTracker<Nox32f>(false);
    addTracker<Nox8u>(true);
});

} // namespace
