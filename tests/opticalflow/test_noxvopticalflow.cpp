// The point tracker: every member against a plain one, for levels of both sorts, all threads, all kinds of points.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "noxcv.h"
#include "opticalflow/noxvopticalflow.h"
#include "opticalflow/noxvopticalflowpatch.h"
#include "reference/opticalflow.h"
#include "support/allocator.h"
#include "support/image.h"
#include "support/threads.h"

using test::Image;

namespace {

struct Member8u {
    using Element = Nox8u;
    static constexpr int selector = 1;
    static constexpr double scale = 255;
    static constexpr auto init = noxiOpticalFlowPyrLKInitAlloc_8u_C1R;
    static constexpr auto track = noxiOpticalFlowPyrLK_8u_C1R;
    static constexpr auto release = noxiOpticalFlowPyrLKFree_8u_C1R;
};
struct Member16u {
    using Element = Nox16u;
    static constexpr int selector = 5;
    static constexpr double scale = 65535;
    static constexpr auto init = noxiOpticalFlowPyrLKInitAlloc_16u_C1R;
    static constexpr auto track = noxiOpticalFlowPyrLK_16u_C1R;
    static constexpr auto release = noxiOpticalFlowPyrLKFree_16u_C1R;
};
struct Member32f {
    using Element = Nox32f;
    static constexpr int selector = 13;
    static constexpr double scale = 1000;
    static constexpr auto init = noxiOpticalFlowPyrLKInitAlloc_32f_C1R;
    static constexpr auto track = noxiOpticalFlowPyrLK_32f_C1R;
    static constexpr auto release = noxiOpticalFlowPyrLKFree_32f_C1R;
};

/// A pyramid of guarded images, each level drawn from the same picture function moved by (shiftX, shiftY).
template <class M>
class Pyramid {
public:
    using T = typename M::Element;

    Pyramid(NoxiSize size, int levels, float rate, double shiftX = 0, double shiftY = 0, int padding = 0,
            unsigned noise = 0) {
        noxiPyramidInitAlloc(&record_, std::max(1, levels), size, rate);
        test::Random random(noise + 1);
        for (int l = 0; l <= record_->level; ++l) {
            const NoxiSize s = record_->sizes[l];
            const double r = record_->rates[l];
            images_.push_back(std::make_unique<Image<T>>(s.width, s.height, 1, padding * int(sizeof(T))));
            images_.back()->generate([&](int x, int y, int) {
                const double at = x / r - shiftX, down = y / r - shiftY;
                const double grain = noise == 0 ? 0.0 : double(random() % 1024) / 1024 - 0.5;
                const double value = 0.5 + 0.2 * std::sin(at * 0.16 + 0.8 * std::sin(down * 0.06)) +
                                     0.2 * std::cos(down * 0.14 + at * 0.03) + 0.2 * grain;
                return T(value * M::scale);
            });
            record_->images[l] = reinterpret_cast<Nox8u *>(images_.back()->data());
            record_->steps[l] = images_.back()->step();
        }
    }
    Pyramid(const Pyramid &) = delete;
    Pyramid &operator=(const Pyramid &) = delete;
    ~Pyramid() { noxiPyramidFree(record_); }

    NoxiPyramid *get() const { return record_; }
    Image<T> &image(int level) const { return *images_[std::size_t(level)]; }

private:
    NoxiPyramid *record_ = nullptr;
    std::vector<std::unique_ptr<Image<T>>> images_;
};

template <class M>
class State {
public:
    State(NoxiSize roi, int winSize) { EXPECT_EQ(M::init(&state_, roi, winSize, 0), noxStsNoError); }
    State(const State &) = delete;
    State &operator=(const State &) = delete;
    ~State() { M::release(state_); }
    NoxiOptFlowPyrLKState *get() const { return state_; }

private:
    NoxiOptFlowPyrLKState *state_ = nullptr;
};

/// Outputs of a call, with one element more that nobody may touch.
struct Result {
    std::vector<NoxiPoint32f> next;
    std::vector<Nox8s> status;
    std::vector<Nox32f> error;

    explicit Result(const std::vector<NoxiPoint32f> &guess)
        : next(guess), status(guess.size() + 1, 77), error(guess.size() + 1, -5.0F) {
        next.push_back({-7, -7});
    }
};

::testing::AssertionResult sameResult(const Result &actual, const Result &expected) {
    for (std::size_t i = 0; i < expected.next.size(); ++i)
        if (actual.status[i] != expected.status[i] || !test::sameElement(actual.next[i].x, expected.next[i].x) ||
            !test::sameElement(actual.next[i].y, expected.next[i].y) ||
            !test::sameElement(actual.error[i], expected.error[i]))
            return ::testing::AssertionFailure()
                   << "point " << i << ": status " << +actual.status[i] << " at " << actual.next[i].x << ", "
                   << actual.next[i].y << " error " << actual.error[i] << "; expected " << +expected.status[i] << " at "
                   << expected.next[i].x << ", " << expected.next[i].y << " error " << expected.error[i];
    return ::testing::AssertionSuccess();
}

struct Job {
    int winSize, maxLevel, maxIter;
    float threshold;
    NoxiSize roi;
};

/// One call of the library and one of the plain tracker.
template <class M>
::testing::AssertionResult agree(const NoxiPyramid &first, const NoxiPyramid &second,
                                 const std::vector<NoxiPoint32f> &prev, const std::vector<NoxiPoint32f> &guess,
                                 const Job &job, const NoxiOptFlowPyrLKState *state, Result *out = nullptr) {
    Result actual(guess), expected(guess);
    const NoxStatus status = M::track(&first, &second, prev.data(), actual.next.data(), actual.status.data(),
                                      actual.error.data(), int(prev.size()), job.winSize, job.maxLevel, job.maxIter,
                                      job.threshold, const_cast<NoxiOptFlowPyrLKState *>(state));
    if (status != noxStsNoError)
        return ::testing::AssertionFailure() << "status " << status;
    reference::opticalflow::opticalFlow<typename M::Element>(
        first, second, prev.data(), expected.next.data(), expected.status.data(), expected.error.data(),
        int(prev.size()), job.winSize, job.maxLevel, job.maxIter, job.threshold, job.roi);
    if (out != nullptr)
        *out = actual;
    return sameResult(actual, expected);
}

constexpr float infinity = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();

/// Points inside, at the border, far outside, and such that are no places at all.
std::vector<NoxiPoint32f> pointsAround(NoxiSize size, int count, unsigned seed = 1) {
    const float w = float(size.width), h = float(size.height);
    std::vector<NoxiPoint32f> points = {
        {0, 0},          {w - 1, h - 1},  {w / 2, 0},      {0, h / 2},    {w / 2, h / 2},
        {-0.25F, 3},     {w, h},          {-3.5F, -2.25F}, {w + 20, 5},   {-200, 5},
        {5, 1e9F},       {-1e30F, 1e30F}, {notANumber, 4}, {4, infinity}, {-infinity, notANumber},
        {-1e-9F, 1e-9F}, {1 - 3e-7F, 4}};
    test::Random random(seed);
    std::uniform_real_distribution<float> anywhere(-0.1F, 1.1F);
    while (int(points.size()) < count)
        points.push_back({anywhere(random) * w, anywhere(random) * h});
    return points;
}

std::vector<NoxiPoint32f> moved(std::vector<NoxiPoint32f> points, float x, float y) {
    for (NoxiPoint32f &p : points)
        p = {p.x + x, p.y + y};
    return points;
}

template <class M>
class OpticalFlow : public ::testing::Test {};
template <class M>
class OpticalFlowFull : public ::testing::Test {};
using Members = ::testing::Types<Member8u, Member16u, Member32f>;
TYPED_TEST_SUITE(OpticalFlow, Members);
TYPED_TEST_SUITE(OpticalFlowFull, Members);

// ---- results ----

/// Largest sizes for which all levels, some of them, or none are coarse.
std::vector<NoxiSize> stateSizes(NoxiSize size) {
    return {{size.width + 1, size.height + 1}, {size.width, size.height}, {size.width / 2, size.height}, {1, 1}};
}

TYPED_TEST(OpticalFlow, EqualsThePlainTracker) {
    using M = TypeParam;
    const test::ThreadCount one(1);
    const NoxiSize size = {97, 70};
    const Pyramid<M> first(size, 3, 2, 0, 0, 3), second(size, 3, 2, 1.7, -1.2, 0);
    const auto prev = pointsAround(size, 60);
    for (const NoxiSize roi : stateSizes(size))
        for (const int winSize : {1, 2, 5, 8, 13, 21}) {
            const State<M> state(roi, winSize);
            for (const int maxLevel : {0, 1, 2, 3})
                EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, moved(prev, 0.5F, 0.25F),
                                     {winSize, maxLevel, 12, 0.02F, roi}, state.get()))
                    << winSize << " " << maxLevel << " " << roi.width;
        }
}

TYPED_TEST(OpticalFlow, EqualsThePlainTrackerOnNoise) {
    using M = TypeParam;
    const test::ThreadCount one(1);
    const NoxiSize size = {64, 50};
    const Pyramid<M> first(size, 2, 1.5F, 0, 0, 1, 5), second(size, 2, 1.5F, 0.5, 0.5, 0, 9);
    const auto prev = pointsAround(size, 60);
    for (const NoxiSize roi : stateSizes(size))
        for (const float threshold : {0.0F, 0.1F}) {
            const State<M> state(roi, 10);
            EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {10, 2, 30, threshold, roi}, state.get()));
        }
}

/// Full contrast makes row sums of bytes wrap.
TYPED_TEST(OpticalFlow, EqualsThePlainTrackerOnStripes) {
    using M = TypeParam;
    const test::ThreadCount one(1);
    using T = typename M::Element;
    const NoxiSize size = {60, 60};
    const Pyramid<M> first(size, 1, 2), second(size, 1, 2);
    for (int l = 0; l < 2; ++l) {
        first.image(l).generate([](int x, int y, int) { return T((x / 2 + y / 20) % 2 ? M::scale : 0); });
        second.image(l).generate([](int x, int y, int) { return T(((x + 1) / 2 + y / 20) % 2 ? M::scale : 0); });
    }
    const auto prev = pointsAround(size, 40);
    for (const NoxiSize roi : stateSizes(size)) {
        const State<M> state(roi, 25);
        EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {25, 1, 8, 0.01F, roi}, state.get()));
    }
}

TYPED_TEST(OpticalFlowFull, EveryWindowAndSize) {
    using M = TypeParam;
    const test::ThreadCount one(1);
    for (const NoxiSize size : test::testSizes()) {
        if (size.width > 200)
            continue;
        const Pyramid<M> first(size, 3, 2, 0, 0, 1), second(size, 3, 2, -0.6, 0.8, 2);
        const auto prev = pointsAround(size, 30);
        const int last = std::min(first.get()->level, second.get()->level);
        for (const NoxiSize roi : stateSizes(size))
            for (const int winSize : {1, 3, 6, 7, 9, 16, 17, 31}) {
                if (roi.width < 1)
                    continue;
                const State<M> state(roi, winSize);
                for (int maxLevel = 0; maxLevel <= last; ++maxLevel)
                    ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, moved(prev, -0.5F, 0.5F),
                                         {winSize, maxLevel, 6, 0.01F, roi}, state.get()))
                        << size.width << "x" << size.height << " " << winSize << " " << maxLevel << " " << roi.width;
            }
    }
}

TYPED_TEST(OpticalFlowFull, RatesAndRandomPoints) {
    using M = TypeParam;
    const test::ThreadCount one(1);
    const NoxiSize size = {180, 140};
    for (const float rate : {1.2F, 1.5F, 2.0F, 3.0F}) {
        const Pyramid<M> first(size, 5, rate, 0, 0, 0, 3), second(size, 5, rate, 3.3, 2.1, 0, 4);
        const auto prev = pointsAround(size, 300, 77);
        for (const NoxiSize roi : stateSizes(size)) {
            const State<M> state(roi, 15);
            EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {15, first.get()->level, 20, 0.01F, roi},
                                 state.get()))
                << rate;
        }
    }
}

/// A known shift is found.
TYPED_TEST(OpticalFlow, FindsAShift) {
    using M = TypeParam;
    const NoxiSize size = {160, 120};
    const Pyramid<M> first(size, 3, 2), second(size, 3, 2, 5.25, -3.5);
    std::vector<NoxiPoint32f> prev;
    for (int y = 30; y < 90; y += 10)
        for (int x = 30; x < 130; x += 10)
            prev.push_back({float(x) + 0.3F, float(y)});
    for (const NoxiSize roi : stateSizes(size)) {
        const State<M> state(roi, 21);
        Result result(prev);
        ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {21, 3, 30, 0.001F, roi}, state.get(), &result));
        for (std::size_t i = 0; i < prev.size(); ++i) {
            EXPECT_EQ(result.status[i], 0);
            EXPECT_NEAR(result.next[i].x, prev[i].x + 5.25F, 0.05F);
            EXPECT_NEAR(result.next[i].y, prev[i].y - 3.5F, 0.05F);
            EXPECT_LT(result.error[i], 0.01F * float(M::scale));
        }
    }
}

// ---- edge cases ----

TYPED_TEST(OpticalFlow, LevelZeroMayBeCoarse) {
    using M = TypeParam;
    const NoxiSize size = {40, 40};
    const Pyramid<M> first(size, 1, 2), second(size, 1, 2, 0.5, 0.5);
    const auto prev = pointsAround(size, 40);
    const State<M> state({41, 41}, 9);
    Result result(prev);
    ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {9, 0, 10, 0.01F, {41, 41}}, state.get(), &result));
    int tracked = 0;
    for (std::size_t i = 0; i < prev.size(); ++i) {
        EXPECT_TRUE(result.status[i] == 0 || result.status[i] == 1);
        tracked += result.status[i] == 0;
    }
    EXPECT_GT(tracked, 10);
}

TYPED_TEST(OpticalFlow, AWindowOutsideEndsAtTheEstimate) {
    using M = TypeParam;
    const NoxiSize size = {64, 64};
    const Pyramid<M> first(size, 2, 2), second(size, 2, 2);
    const State<M> state({40, 40}, 7);
    const std::vector<NoxiPoint32f> prev = {{30, 30}, {30, 30}, {notANumber, 30}, {30, infinity}},
                                    guess = {{500.5F, 30}, {30, -400}, {31, 30}, {32, 30}};
    Result result(guess);
    ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, guess, {7, 2, 10, 0.01F, {40, 40}}, state.get(), &result));
    for (std::size_t i = 0; i < prev.size(); ++i) {
        EXPECT_EQ(result.status[i], 3);
        EXPECT_EQ(result.next[i].x, guess[i].x);
        EXPECT_EQ(result.next[i].y, guess[i].y);
        EXPECT_EQ(result.error[i], 0);
    }
}

TYPED_TEST(OpticalFlow, AFlatWindowIsLost) {
    using M = TypeParam;
    using T = typename M::Element;
    const NoxiSize size = {64, 64};
    const Pyramid<M> first(size, 1, 2), second(size, 1, 2);
    first.image(0).fill(T(100));
    first.image(1).fill(T(100));
    for (const NoxiSize roi : stateSizes(size)) {
        const State<M> state(roi, 7);
        const std::vector<NoxiPoint32f> prev = {{30, 30}}, guess = {{31.5F, 29}};
        Result result(guess);
        ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, guess, {7, 1, 10, 0.01F, roi}, state.get(), &result));
        EXPECT_EQ(result.status[0], 2);
        EXPECT_EQ(result.next[0].x, 31.5F);
        EXPECT_EQ(result.next[0].y, 29);
        EXPECT_GT(result.error[0], 0);
    }
}

/// Two levels without the scale between them, three with it.
TYPED_TEST(OpticalFlow, OneFineLevelHandsItsEstimateOnUnscaled) {
    using M = TypeParam;
    const NoxiSize size = {96, 96};
    const Pyramid<M> first(size, 2, 2), second(size, 2, 2);
    const State<M> state({1, 1}, 11);
    const std::vector<NoxiPoint32f> prev = {{60, 60}};
    Result one(prev), two(prev);
    ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {11, 1, 1, 0.5F, {1, 1}}, state.get(), &one));
    ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {11, 2, 1, 0.5F, {1, 1}}, state.get(), &two));
    EXPECT_GT(std::fabs(one.next[0].x - 60), 10);
    EXPECT_LT(std::fabs(two.next[0].x - 60), 1);
}

TYPED_TEST(OpticalFlow, PixelsThatAreNoNumbersLoseTheirPointsOnly) {
    using M = TypeParam;
    if constexpr (std::is_same_v<M, Member32f>) {
        const NoxiSize size = {80, 60};
        const Pyramid<M> first(size, 2, 2), second(size, 2, 2, 0.5, 0.5);
        for (int l = 0; l < 2; ++l) {
            first.image(l).at(10 >> l, 10 >> l) = notANumber;
            second.image(l).at(60 >> l, 40 >> l) = infinity;
        }
        const std::vector<NoxiPoint32f> prev = {{10, 10}, {40, 30}, {60, 40}, {13, 10}, {5.2F, 10}, {15.1F, 10}};
        for (const NoxiSize roi : stateSizes(size)) {
            const State<M> state(roi, 9);
            Result result(prev);
            ASSERT_TRUE(
                agree<M>(*first.get(), *second.get(), prev, prev, {9, 2, 10, 0.01F, roi}, state.get(), &result));
            EXPECT_NE(result.status[0], 0);
            EXPECT_EQ(result.status[1], 0);
        }
    }
}

// ---- images that the caller has not set ----

TYPED_TEST(OpticalFlow, LevelsWithoutAnImage) {
    using M = TypeParam;
    const NoxiSize size = {90, 80};
    const auto prev = pointsAround(size, 40);
    for (const NoxiSize roi : stateSizes(size))
        for (int broken = 0; broken <= 2; ++broken)
            for (const bool inFirst : {true, false})
                for (int how = 0; how < 3; ++how) {
                    if (how == 2 && sizeof(typename M::Element) == 1)
                        continue;
                    const Pyramid<M> first(size, 2, 2), second(size, 2, 2, 0.5, 0.5);
                    NoxiPyramid &record = inFirst ? *first.get() : *second.get();
                    if (how == 0)
                        record.images[broken] = nullptr;
                    else if (how == 1)
                        record.steps[broken] = record.sizes[broken].width * int(sizeof(typename M::Element)) - 1;
                    else
                        record.steps[broken] += 1;
                    const State<M> state(roi, 9);
                    for (const int threads : {1, 3}) {
                        const test::ThreadCount count(threads);
                        EXPECT_TRUE(
                            agree<M>(*first.get(), *second.get(), prev, prev, {9, 2, 10, 0.01F, roi}, state.get()))
                            << roi.width << " level " << broken << " first " << inFirst << " how " << how;
                    }
                }
}

/// The error of a point that finds no image is that of the level before.
TYPED_TEST(OpticalFlow, TheErrorOfTheLevelBeforeStays) {
    using M = TypeParam;
    const NoxiSize size = {90, 80};
    const Pyramid<M> first(size, 1, 2), second(size, 1, 2, 0.5, 0.5);
    first.get()->images[0] = nullptr;
    for (const NoxiSize roi : stateSizes(size)) {
        const State<M> state(roi, 9);
        const std::vector<NoxiPoint32f> prev = {{45, 40}};
        Result result(prev);
        ASSERT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, {9, 1, 10, 0.001F, roi}, state.get(), &result));
        EXPECT_EQ(result.status[0], 0);
        EXPECT_GT(result.error[0], 0);
    }
}

// ---- threads ----

TYPED_TEST(OpticalFlow, SameBitsForEveryTeam) {
    using M = TypeParam;
    const NoxiSize size = {200, 600}; // high enough for parallel filters
    const Pyramid<M> first(size, 2, 2, 0, 0, 0, 3), second(size, 2, 2, 1.5, 0.5, 0, 3);
    const Job job = {9, 2, 8, 0.02F, {300, 601}};
    for (const int points : {1, 2, 3, 39, 101}) {
        auto prev = pointsAround(size, 101, 5);
        prev.resize(std::size_t(points));
        for (const int made : {1, 2, 40})
            for (const int threads : test::threadCounts()) {
                std::unique_ptr<State<M>> state;
                {
                    const test::ThreadCount count(made);
                    state = std::make_unique<State<M>>(job.roi, job.winSize);
                }
                const test::ThreadCount count(threads);
                if (points == 101 && made == 2)
                    test::insideParallelRegion(
                        [&] { EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, job, state->get())); });
                else
                    EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, job, state->get()))
                        << points << " made for " << made << " run with " << threads;
            }
    }
}

// ---- the state ----

/// Memory that ends at a guard page, for two blocks.
std::array<std::unique_ptr<test::GuardedBytes>, 8> guardedBlocks;
void *guardedMalloc(std::size_t size) {
    for (auto &block : guardedBlocks)
        if (block == nullptr) {
            block = std::make_unique<test::GuardedBytes>(size);
            std::memset(block->data(), 0xFF, size);
            return block->data();
        }
    return nullptr;
}
void guardedFree(void *memory) {
    for (auto &block : guardedBlocks)
        if (block != nullptr && block->data() == memory)
            block.reset();
}

class GuardedAllocator {
public:
    GuardedAllocator() {
        nox_malloc = guardedMalloc;
        nox_free = guardedFree;
    }
    GuardedAllocator(const GuardedAllocator &) = delete;
    GuardedAllocator &operator=(const GuardedAllocator &) = delete;
    ~GuardedAllocator() {
        nox_malloc = malloc_;
        nox_free = free_;
    }

private:
    void *(*malloc_)(std::size_t) = nox_malloc;
    void (*free_)(void *) = nox_free;
};

TYPED_TEST(OpticalFlow, TheBufferSuffices) {
    using M = TypeParam;
    const NoxiSize size = {45, 270};
    const Pyramid<M> first(size, 2, 2), second(size, 2, 2, 0.5, 0.25);
    const auto prev = pointsAround(size, 45);
    for (const int threads : {1, 2, 3, 7, 40}) {
        const test::ThreadCount count(threads);
        for (const int winSize : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 33}) {
            const GuardedAllocator guard;
            const Job job = {winSize, 2, 3, 0.01F, {size.width + 1, size.height + 1}};
            const State<M> state(job.roi, winSize);
            EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, job, state.get()));
        }
    }
}

/// The smallest planes: levels of one pixel.
TYPED_TEST(OpticalFlow, TheBufferSufficesForTheSmallestLevels) {
    using M = TypeParam;
    for (const NoxiSize size : {NoxiSize{1, 1}, {1, 9}, {9, 1}, {2, 2}}) {
        const Pyramid<M> first(size, 1, 2), second(size, 1, 2);
        const int last = first.get()->level;
        for (const int threads : {1, 40}) {
            const test::ThreadCount count(threads);
            for (const int winSize : {1, 2, 8}) {
                const GuardedAllocator guard;
                const Job job = {winSize, last, 3, 0.01F, {size.width + 1, size.height + 1}};
                const State<M> state(job.roi, winSize);
                const auto prev = pointsAround(size, 20);
                EXPECT_TRUE(agree<M>(*first.get(), *second.get(), prev, prev, job, state.get()));
            }
        }
    }
}

long long statedSize(int selector, NoxiSize roi, long long winSize, long long threads) {
    const NoxiSize extended = {roi.width + 5, roi.height + 5};
    int horiz = 0, vert = 0;
    if (selector == 1) {
        noxiFilterScharrHorizGetBufferSize_8u16s_C1R(extended, &horiz);
        noxiFilterScharrVertGetBufferSize_8u16s_C1R(extended, &vert);
    } else {
        noxiFilterScharrHorizGetBufferSize_32f_C1R(extended, &horiz);
        noxiFilterScharrVertGetBufferSize_32f_C1R(extended, &vert);
    }
    const long long p = (winSize + 3) * (winSize + 3), cells = (long long)extended.width * extended.height,
                    s = std::max(horiz, vert) + cells * (selector == 5 ? 3 : 2);
    if (selector == 1)
        return 2 * s + 8 * p + 16 * (2 * winSize + 6) * (winSize + 3) + threads * (24 * p + 52) + 16 * p * threads + 10;
    const long long a = (4 * winSize + 12) * (winSize + 3) * 2 + 4 * p;
    return 4 * (a + s) + (4 * a + 4) * threads + 40 * threads + 16 * p * threads + 4;
}

TYPED_TEST(OpticalFlow, TheStateIsTwoAllocationsOfTheStatedSize) {
    using M = TypeParam;
    for (const int threads : {1, 3})
        for (const NoxiSize roi : {NoxiSize{1, 1}, {40, 30}, {333, 7}})
            for (const int winSize : {1, 10, 21}) {
                const test::ThreadCount count(threads);
                const test::CountedAllocator counted;
                NoxiOptFlowPyrLKState *state = nullptr;
                ASSERT_EQ(M::init(&state, roi, winSize, 42), noxStsNoError);
                EXPECT_EQ(test::CountedAllocator::allocations(), 2);
                EXPECT_EQ((long long)test::CountedAllocator::lastSize(),
                          statedSize(M::selector, roi, winSize, threads) + 32 + (long long)sizeof(void *));
                EXPECT_EQ(state->maxWidth, roi.width);
                EXPECT_EQ(state->maxHeight, roi.height);
                EXPECT_EQ(state->numThreads, threads);
                EXPECT_EQ(state->dataType, M::selector);
                EXPECT_EQ(state->hint, 42);
                EXPECT_EQ(state->winSize, winSize);
                EXPECT_EQ(M::release(state), noxStsNoError);
                EXPECT_EQ(test::CountedAllocator::live(), 0);
            }
}

TYPED_TEST(OpticalFlow, InitReportsFailures) {
    using M = TypeParam;
    NoxiOptFlowPyrLKState *const before = reinterpret_cast<NoxiOptFlowPyrLKState *>(&guardedBlocks), *state = before;
    EXPECT_EQ(M::init(nullptr, {0, 0}, 0, 0), noxStsNullPointer);
    EXPECT_EQ(M::init(&state, {8, 8}, 0, 0), noxStsBadSize);
    EXPECT_EQ(M::init(&state, {0, 8}, 5, 0), noxStsBadSize);
    EXPECT_EQ(M::init(&state, {8, -1}, 5, 0), noxStsBadSize);
    for (const int failAt : {1, 2}) {
        const test::CountedAllocator failing(failAt);
        EXPECT_EQ(M::init(&state, {8, 8}, 5, 0), noxStsNoMemory);
        EXPECT_EQ(test::CountedAllocator::live(), 0);
    }
    constexpr int most = std::numeric_limits<int>::max();
    const test::CountedAllocator counted;
    for (const NoxiSize roi : {NoxiSize{most, most}, {most, 1}, {1, most}, {60000, 60000}, {most / 8, 1}, {1 << 26, 1}})
        EXPECT_EQ(M::init(&state, roi, 5, 0), noxStsNoMemory) << roi.width << "x" << roi.height;
    for (const int winSize : {most, 1 << 15, 20000})
        EXPECT_EQ(M::init(&state, {8, 8}, winSize, 0), noxStsNoMemory) << winSize;
    EXPECT_EQ(test::CountedAllocator::allocations(), 0);
    EXPECT_EQ(state, before);
    EXPECT_EQ(M::release(nullptr), noxStsNullPointer);
}

// ---- statuses of a call ----

TYPED_TEST(OpticalFlow, ChecksInTheirOrder) {
    using M = TypeParam;
    const NoxiSize size = {32, 32};
    const Pyramid<M> first(size, 1, 2), deep(size, 3, 2);
    const State<M> state({40, 40}, 5);
    const std::vector<NoxiPoint32f> prev = {{10, 10}};
    Result result(prev);
    const Result untouched(prev);
    struct Call {
        const NoxiPyramid *pyramid1, *pyramid2;
        const NoxiPoint32f *prevPts;
        NoxiPoint32f *nextPts;
        Nox8s *status;
        Nox32f *error;
        int numPoints, winSize, maxLevel, maxIter;
        float threshold;
        NoxiOptFlowPyrLKState *state;

        NoxStatus run() const {
            return M::track(pyramid1, pyramid2, prevPts, nextPts, status, error, numPoints, winSize, maxLevel, maxIter,
                            threshold, state);
        }
    };
    const Call good = {
        first.get(), first.get(), prev.data(), result.next.data(), result.status.data(), result.error.data(), 1, 5,
        1,           3,           0.1F,        state.get()};
    const auto with = [&](auto change) {
        Call call = good;
        change(call);
        return call.run();
    };
    EXPECT_EQ(with([](Call &c) { c.pyramid1 = nullptr, c.numPoints = 0; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.pyramid2 = nullptr, c.numPoints = 0; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.state = nullptr, c.numPoints = 0; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.prevPts = nullptr, c.winSize = 0; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.nextPts = nullptr, c.maxLevel = -1; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.status = nullptr, c.maxIter = 0; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.error = nullptr, c.threshold = -1; }), noxStsNullPointer);
    EXPECT_EQ(with([](Call &c) { c.numPoints = 0, c.maxLevel = -1; }), noxStsBadSize);
    EXPECT_EQ(with([](Call &c) { c.numPoints = -4; }), noxStsBadSize);
    EXPECT_EQ(with([](Call &c) { c.winSize = 0, c.maxIter = 0; }), noxStsBadSize);
    EXPECT_EQ(with([](Call &c) { c.winSize = 6, c.threshold = -1; }), noxStsBadSize);
    EXPECT_EQ(with([](Call &c) { c.maxLevel = -1; }), noxStsBadArgument);
    EXPECT_EQ(with([](Call &c) { c.maxIter = 0; }), noxStsBadArgument);
    EXPECT_EQ(with([](Call &c) { c.threshold = -0.5F; }), noxStsBadArgument);
    EXPECT_EQ(with([](Call &c) { c.maxLevel = 2; }), noxStsBadArgument);
    EXPECT_EQ(with([&](Call &c) { c.maxLevel = 2, c.pyramid1 = deep.get(); }), noxStsBadArgument);
    EXPECT_EQ(with([&](Call &c) { c.maxLevel = 2, c.pyramid2 = deep.get(); }), noxStsBadArgument);
    NoxiOptFlowPyrLKState other = *state.get();
    other.dataType = M::selector == 1 ? 13 : 1;
    EXPECT_EQ(with([&](Call &c) { c.state = &other; }), noxStsBadArgument);
    EXPECT_TRUE(sameResult(result, untouched));
    EXPECT_EQ(good.run(), noxStsNoError);
    EXPECT_EQ(with([](Call &c) { c.threshold = 0, c.maxLevel = 0; }), noxStsNoError);
}

// ---- kernels ----

TEST(OpticalFlowKernels, PlaneInterpolationEqualsItsDefinition) {
    test::Random random(3);
    for (int width = 1; width <= 27; ++width)
        for (const float fraction : {0.0F, 0.25F, 0.99999F, 0.5F}) {
            const int height = 3;
            Image<Nox16s> src(width + 1, height + 1, 1, 2), dst(width, height, 1, 6), expected(width, height, 1, 6);
            test::randomize(src, random);
            reference::opticalflow::FlowPlane<Nox16s> plane;
            plane.width = width + 1;
            for (int y = 0; y <= height; ++y)
                for (int x = 0; x <= width; ++x)
                    plane.cells.push_back(src.at(x, y));
            const float x = 20 + fraction, y = 30 + 0.5F * fraction;
            const long double fx = reference::opticalflow::flowPlaceFraction(x, 9),
                              fy = reference::opticalflow::flowPlaceFraction(y, 8);
            expected.generate(
                [&](int u, int v, int) { return reference::opticalflow::flowPlaneCell(plane, u, v, fx, fy); });
            ownModifiedConvolution_16s_C1R(src.data(), src.step(), dst.data(), dst.step(), {width + 3, height + 3},
                                           {9, 8}, {width, height}, x, y, 0);
            EXPECT_TRUE(test::sameImage(dst, expected)) << width << " " << fraction;
        }
}

TEST(OpticalFlowKernels, PlaneInterpolationOfAnEmptyRectangleWritesNothing) {
    Image<Nox16s> src(2, 2), dst(4, 4);
    src.fill(1);
    dst.fill(7);
    const Image<Nox16s> before(dst);
    for (const NoxiSize rect : {NoxiSize{0, 3}, {3, 0}, {-2, 4}})
        ownModifiedConvolution_16s_C1R(src.data(), src.step(), dst.data(), dst.step(), {4, 4}, {4, 4}, rect, notANumber,
                                       infinity, 0);
    EXPECT_TRUE(test::sameImage(dst, before));
}

} // namespace
