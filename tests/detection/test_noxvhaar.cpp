#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "detection/noxvhaar.h"
#include "noxcv.h"
#include "reference/haar.h"
#include "reference/integral.h"
#include "support/allocator.h"
#include "support/image.h"
#include "support/masks.h"
#include "support/threads.h"

using test::Image;

namespace {

/// The arrays that a stage is created from.
template <class T>
struct Input {
    std::vector<NoxiRect> features;
    std::vector<T> weights, thresholds, lows, highs;
    std::vector<Nox32s> counts;

    void add(const std::vector<std::pair<NoxiRect, T>> &parts, T threshold, T low, T high) {
        for (const auto &[rect, weight] : parts) {
            features.push_back(rect);
            weights.push_back(weight);
        }
        counts.push_back(Nox32s(parts.size()));
        thresholds.push_back(threshold);
        lows.push_back(low);
        highs.push_back(high);
    }
    /// The same for the reference.
    reference::haar::Stage<T> stage(reference::haar::Corners (*shape)(const NoxiRect &)) const {
        reference::haar::Stage<T> result;
        std::size_t at = 0;
        for (std::size_t i = 0; i < counts.size(); ++i) {
            reference::haar::Classifier<T> c = {{}, thresholds[i], lows[i], highs[i]};
            for (int k = 0; k < counts[i]; ++k, ++at)
                c.features.push_back({shape(features[at]), weights[at]});
            result.push_back(c);
        }
        return result;
    }
    void reserve() { // so that no array is null
        features.reserve(1), weights.reserve(1), thresholds.reserve(1), lows.reserve(1), highs.reserve(1);
        counts.reserve(1);
    }
};

template <class T>
using StateOf = std::conditional_t<std::is_same_v<T, Nox32f>, NoxiHaarClassifier_32f, NoxiHaarClassifier_32s>;

NoxStatus create(bool tilted, NoxiHaarClassifier_32f **state, const Input<Nox32f> &in, int length) {
    return (tilted ? noxiTiltedHaarClassifierInitAlloc_32f : noxiHaarClassifierInitAlloc_32f)(
        state, in.features.data(), in.weights.data(), in.thresholds.data(), in.lows.data(), in.highs.data(),
        in.counts.data(), length);
}
NoxStatus create(bool tilted, NoxiHaarClassifier_32s **state, const Input<Nox32s> &in, int length) {
    return (tilted ? noxiTiltedHaarClassifierInitAlloc_32s : noxiHaarClassifierInitAlloc_32s)(
        state, in.features.data(), in.weights.data(), in.thresholds.data(), in.lows.data(), in.highs.data(),
        in.counts.data(), length);
}
NoxStatus destroy(NoxiHaarClassifier_32f *state) { return noxiHaarClassifierFree_32f(state); }
NoxStatus destroy(NoxiHaarClassifier_32s *state) { return noxiHaarClassifierFree_32s(state); }
NoxStatus sizeOf(const NoxiHaarClassifier_32f *state, NoxiSize *size) {
    return noxiGetHaarClassifierSize_32f(state, size);
}
NoxStatus sizeOf(const NoxiHaarClassifier_32s *state, NoxiSize *size) {
    return noxiGetHaarClassifierSize_32s(state, size);
}
NoxStatus turn(const Nox8u *mask, int flag, NoxiHaarClassifier_32f *state) {
    return noxiTiltHaarFeatures_32f(mask, flag, state);
}
NoxStatus turn(const Nox8u *mask, int flag, NoxiHaarClassifier_32s *state) {
    return noxiTiltHaarFeatures_32s(mask, flag, state);
}

/// A stage for a scope.
template <class T>
class Stage {
public:
    Stage(const Input<T> &in, bool tilted = false) {
        EXPECT_EQ(create(tilted, &state_, in, int(in.counts.size())), noxStsNoError);
    }
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;
    ~Stage() { EXPECT_EQ(destroy(state_), noxStsNoError); }
    StateOf<T> *get() const { return state_; }

private:
    StateOf<T> *state_ = nullptr;
};

constexpr int windowSize = 12; ///< features of random stages lie within a window of this size

/// A stage whose classifiers have 1 to 5 features; all of their corners, turned too, lie within 2 * windowSize.
template <class T>
Input<T> randomInput(test::Random &random, int length) {
    Input<T> in;
    in.reserve();
    const auto number = [&](int range) {
        if constexpr (std::is_same_v<T, Nox32f>)
            return T((double(random()) / 4294967296.0 - 0.5) * 2 * range);
        else
            return T(int(random() % (2 * range + 1)) - range);
    };
    for (int i = 0; i < length; ++i) {
        std::vector<std::pair<NoxiRect, T>> parts;
        const int count = random() % 3 == 0 ? 1 + int(random() % 5) : 2 + int(random() % 2);
        for (int k = 0; k < count; ++k) {
            const NoxiRect r = {4 + int(random() % 4), 4 + int(random() % 4), 1 + int(random() % 5),
                                1 + int(random() % 5)};
            parts.emplace_back(r, k == 0 ? T(-1) : number(3));
        }
        in.add(parts, number(30), number(1000), number(1000));
    }
    return in;
}

/// Tables of a picture, the norm and the mask of some positions.
template <class Table, class T>
struct Scene {
    NoxiSize roi;
    Image<Table> src, tilt;
    Image<T> norm;
    Image<Nox8u> mask;

    Scene(NoxiSize size, test::Random &random, int padding, bool wild)
        : roi(size), src(size.width + 2 * windowSize, size.height + 2 * windowSize, 1, padding * 4),
          tilt(size.width + 2 * windowSize + 1, size.height + 2 * windowSize + 1, 1, padding * 4),
          norm(size.width, size.height, 1, padding * 4), mask(test::randomMask(size, random, padding)) {
        const auto fillTable = [&](Image<Table> &table, bool tilted) {
            const int extra = tilted ? 2 : 1;
            Image<Nox8u> picture(table.width() - extra, table.height() - extra);
            test::randomize(picture, random);
            table.fill(0);
            if (wild)
                test::randomize(table, random);
            else if (tilted)
                reference::integral::tilted(picture.data(), picture.step(), table.data(), table.step(), picture.roi(),
                                            Table(0), false);
            else
                reference::integral::upright(picture.data(), picture.step(), table.data(), table.step(), picture.roi(),
                                             Table(0), false);
        };
        fillTable(src, false);
        fillTable(tilt, true);
        norm.generate([&](int, int, int) {
            if (wild)
                return test::randomElement<T>(random);
            return random() % 8 == 0 ? T(0) : T(random() % 4096) / T(16);
        });
    }
};

/// The members by table, number, and whether they have two tables.
template <class Table, class T, bool twoTables>
struct Member {
    using Tables = Table;
    using Number = T;
    static constexpr bool mixed = twoTables;
    static constexpr bool shifts = mixed && std::is_same_v<T, Nox32s>;
};

template <class M>
NoxStatus apply(const typename M::Tables *src, int srcStep, const typename M::Tables *tilt, int tiltStep,
                const typename M::Number *norm, int normStep, Nox8u *mask, int maskStep, NoxiSize roi, int *positive,
                typename M::Number threshold, const StateOf<typename M::Number> *state, [[maybe_unused]] int scale) {
    constexpr bool isFloat = std::is_same_v<typename M::Tables, Nox32f>;
    if constexpr (M::shifts)
        return noxiApplyMixedHaarClassifier_32s_C1RSfs(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep,
                                                       roi, positive, threshold, state, scale);
    else if constexpr (M::mixed && isFloat)
        return noxiApplyMixedHaarClassifier_32f_C1R(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep, roi,
                                                    positive, threshold, state);
    else if constexpr (M::mixed)
        return noxiApplyMixedHaarClassifier_32s32f_C1R(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep,
                                                       roi, positive, threshold, state);
    else if constexpr (isFloat)
        return noxiApplyHaarClassifier_32f_C1R(src, srcStep, norm, normStep, mask, maskStep, roi, positive, threshold,
                                               state);
    else if constexpr (std::is_same_v<typename M::Number, Nox32f>)
        return noxiApplyHaarClassifier_32s32f_C1R(src, srcStep, norm, normStep, mask, maskStep, roi, positive,
                                                  threshold, state);
    else
        return noxiApplyHaarClassifier_32s_C1RSfs(src, srcStep, norm, normStep, mask, maskStep, roi, positive,
                                                  threshold, state);
}

template <class M>
void compare(const Scene<typename M::Tables, typename M::Number> &scene, typename M::Number threshold,
             const StateOf<typename M::Number> *state, const reference::haar::Stage<typename M::Number> &stage,
             int scale = 0) {
    Image<Nox8u> actual(scene.mask), expected(scene.mask);
    int positive = -1;
    ASSERT_EQ(apply<M>(scene.src.data(), scene.src.step(), scene.tilt.data(), scene.tilt.step(), scene.norm.data(),
                       scene.norm.step(), actual.data(), actual.step(), scene.roi, &positive, threshold, state, scale),
              noxStsNoError);
    const reference::haar::Tables<typename M::Tables> tables = {
        {scene.src.data(), scene.src.step()}, {M::mixed ? scene.tilt.data() : nullptr, scene.tilt.step()}};
    const int passed = reference::haar::apply(tables, scene.norm.data(), scene.norm.step(), expected.data(),
                                              expected.step(), scene.roi, threshold, stage, -scale);
    ASSERT_TRUE(test::sameImage(actual, expected));
    ASSERT_EQ(positive, passed);
}

template <class T>
class HaarApply : public ::testing::Test {};
using Members =
    ::testing::Types<Member<Nox32f, Nox32f, false>, Member<Nox32s, Nox32f, false>, Member<Nox32s, Nox32s, false>,
                     Member<Nox32f, Nox32f, true>, Member<Nox32s, Nox32f, true>, Member<Nox32s, Nox32s, true>>;
TYPED_TEST_SUITE(HaarApply, Members);

TYPED_TEST(HaarApply, EqualsReference) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (int round = 0; round < 4; ++round) {
            const Input<T> in = randomInput<T>(random, int(random() % 12));
            const Stage<T> state(in);
            const Scene<typename M::Tables, T> scene(size, random, round, round == 3);
            const T threshold = T(int(random() % 600) - 300);
            compare<M>(scene, threshold, state.get(), reference::haar::grouped(in.stage(reference::haar::upright)),
                       M::shifts ? -int(random() % 70) : 0);
        }
}

TYPED_TEST(HaarApply, SparseMasks) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(2);
    for (int round = 0; round < 60; ++round) {
        const Input<T> in = randomInput<T>(random, 1 + int(random() % 6));
        const Stage<T> state(in);
        Scene<typename M::Tables, T> scene({400, 3}, random, 0, false);
        const unsigned every = 1 + random() % 40;
        scene.mask.generate([&](int, int, int) { return random() % every == 0 ? 1 : 0; });
        compare<M>(scene, T(0), state.get(), reference::haar::grouped(in.stage(reference::haar::upright)));
    }
}

TYPED_TEST(HaarApply, TurnedClassifiers) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(3);
    for (int round = 0; round < 40; ++round) {
        const Input<T> in = randomInput<T>(random, 1 + int(random() % 10));
        const Stage<T> state(in);
        std::vector<Nox8u> turned(in.counts.size());
        for (Nox8u &one : turned)
            one = random() % 2;
        const bool aboutTop = random() % 2;
        ASSERT_EQ(turn(turned.data(), aboutTop, state.get()), noxStsNoError);
        auto stage = in.stage(reference::haar::upright);
        const auto other = in.stage(aboutTop ? reference::haar::turned : reference::haar::turnedBack);
        for (std::size_t i = 0; i < stage.size(); ++i)
            if (turned[i] != 0) {
                stage[i] = other[i];
                stage[i].isTurned = true;
            }
        // Corners may lie up to 5 positions before the window: keep one more of the tables.
        const Scene<typename M::Tables, T> scene({61, 9}, random, 1, false);
        compare<M>(scene, T(0), state.get(), reference::haar::grouped(stage));
    }
}

TYPED_TEST(HaarApply, StagesCreatedTurned) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(4);
    for (int round = 0; round < 40; ++round) {
        const Input<T> in = randomInput<T>(random, 1 + int(random() % 10));
        const Stage<T> state(in, true);
        auto stage = in.stage(reference::haar::turned); // no groups, so sums in the order of the features
        for (auto &classifier : stage)
            classifier.isTurned = true;
        if constexpr (!M::mixed && std::is_same_v<typename M::Tables, Nox32f>)
            continue; // the reference adds pairs in their own order; StagesCreatedTurnedInOrder looks at this
        const Scene<typename M::Tables, T> scene({61, 9}, random, 1, false);
        compare<M>(scene, T(0), state.get(), stage);
    }
}

TYPED_TEST(HaarApply, ProductsOfThresholdAndNormAreNotRounded) {
    // One pixel under one rectangle; the table's element is the feature sum itself.
    using M = TypeParam;
    using T = typename M::Number;
    if constexpr (std::is_same_v<T, Nox32f> && std::is_same_v<typename M::Tables, Nox32f>) {
        test::Random random(5);
        Scene<Nox32f, Nox32f> scene({40, 5}, random, 0, false);
        for (int round = 0; round < 50; ++round) {
            const Nox32f threshold = 1.0F + Nox32f(random() % 8388608) * 0x1p-23F;
            Input<Nox32f> in;
            in.add({{{0, 0, 1, 1}, 1.0F}}, threshold, -1.0F, 1.0F);
            const Stage<Nox32f> state(in);
            scene.src.fill(0);
            scene.mask.fill(1);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 40; x += 2) {
                    const Nox32f n = 1.0F + Nox32f(random() % 8388608) * 0x1p-23F;
                    scene.norm.at(x, y) = n;
                    scene.src.at(x + 1, y) = -(n * threshold); // a right top corner
                }
            compare<M>(scene, 0.0F, state.get(), in.stage(reference::haar::upright));
        }
    }
}

TYPED_TEST(HaarApply, NumbersThatAreNone) {
    using M = TypeParam;
    using T = typename M::Number;
    if constexpr (std::is_same_v<T, Nox32f>) {
        test::Random random(6);
        const T values[] = {std::numeric_limits<T>::infinity(),
                            -std::numeric_limits<T>::infinity(),
                            std::numeric_limits<T>::quiet_NaN(),
                            3e38F,
                            1e-40F,
                            -0.0F,
                            0.0F,
                            1.0F};
        const auto any = [&] { return values[random() % std::size(values)]; };
        for (int round = 0; round < 60; ++round) {
            Input<T> in = randomInput<T>(random, 1 + int(random() % 4));
            for (auto *list : {&in.weights, &in.thresholds, &in.lows, &in.highs})
                for (T &value : *list)
                    if (random() % 3 == 0)
                        value = any();
            const Stage<T> state(in);
            Scene<typename M::Tables, T> scene({45, 4}, random, 0, false);
            scene.norm.generate([&](int, int, int) { return random() % 3 == 0 ? any() : T(random() % 50); });
            compare<M>(scene, any(), state.get(), reference::haar::grouped(in.stage(reference::haar::upright)));
        }
    }
}

TYPED_TEST(HaarApply, ThreadsGiveTheSame) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(7);
    const Input<T> in = randomInput<T>(random, 9);
    const Stage<T> state(in);
    const auto stage = reference::haar::grouped(in.stage(reference::haar::upright));
    for (const NoxiSize size : {NoxiSize{3000, 1}, {3000, 3}, {300, 41}}) {
        const Scene<typename M::Tables, T> scene(size, random, 1, false);
        for (const int threads : test::threadCounts()) {
            const test::ThreadCount count(threads);
            compare<M>(scene, T(0), state.get(), stage);
            test::insideParallelRegion([&] { compare<M>(scene, T(0), state.get(), stage); });
        }
    }
}

TYPED_TEST(HaarApply, ReadsNothingForPositionsThatAreOut) {
    // The table's last row ends at a guard page, behind the corners of the last position that is left.
    using M = TypeParam;
    using Table = typename M::Tables;
    using T = typename M::Number;
    Input<T> in;
    in.add({{{0, 0, 1, 1}, T(1)}}, T(1), T(-1), T(1));
    const Stage<T> state(in);
    constexpr int step = 1604;
    for (const int last : {2, 3, 5, 29, 64}) {
        const test::Buffer bytes(step + (last + 2) * sizeof(Table));
        const auto *table = reinterpret_cast<const Table *>(bytes.data());
        Image<T> norm(400, 1);
        norm.fill(1);
        Image<Nox8u> mask(400, 1);
        mask.fill(0);
        mask.at(last, 0) = mask.at(2, 0) = 1;
        int positive = 0;
        ASSERT_EQ(apply<M>(table, step, table, step, norm.data(), norm.step(), mask.data(), mask.step(), {400, 1},
                           &positive, T(0), state.get(), 0),
                  noxStsNoError);
        EXPECT_EQ(positive, 0);
    }
}

TYPED_TEST(HaarApply, StatusesInOrder) {
    using M = TypeParam;
    using T = typename M::Number;
    test::Random random(8);
    const Input<T> in = randomInput<T>(random, 3);
    const Stage<T> state(in);
    const Scene<typename M::Tables, T> scene({6, 3}, random, 2, false);
    Image<Nox8u> mask(scene.mask);
    int positive = 77;
    const auto call = [&](const typename M::Tables *src, int srcStep, const typename M::Tables *tilt, int tiltStep,
                          const T *norm, int normStep, Nox8u *out, int maskStep, NoxiSize roi, int *count,
                          const StateOf<T> *stage, int scale) {
        return apply<M>(src, srcStep, tilt, tiltStep, norm, normStep, out, maskStep, roi, count, T(0), stage, scale);
    };
    const auto *src = scene.src.data(), *tilt = scene.tilt.data();
    const T *norm = scene.norm.data();
    const NoxiSize roi = {6, 3};
    EXPECT_EQ(call(nullptr, 0, tilt, 0, norm, 0, mask.data(), 0, {0, 0}, &positive, state.get(), 1), noxStsNullPointer);
    EXPECT_EQ(call(src, 24, tilt, 24, nullptr, 24, mask.data(), 6, roi, &positive, state.get(), 0), noxStsNullPointer);
    EXPECT_EQ(call(src, 24, tilt, 24, norm, 24, nullptr, 6, roi, &positive, state.get(), 0), noxStsNullPointer);
    EXPECT_EQ(call(src, 24, tilt, 24, norm, 24, mask.data(), 6, roi, nullptr, state.get(), 0), noxStsNullPointer);
    EXPECT_EQ(call(src, 24, tilt, 24, norm, 24, mask.data(), 6, {0, 3}, &positive, nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(call(src, 0, tilt, 24, norm, 24, mask.data(), 6, {0, 3}, &positive, state.get(), 0), noxStsBadSize);
    EXPECT_EQ(call(src, 0, tilt, 24, norm, 24, mask.data(), 6, {6, 0}, &positive, state.get(), 0), noxStsBadSize);
    EXPECT_EQ(call(src, 23, tilt, 24, norm, 25, mask.data(), 6, roi, &positive, state.get(), 0), noxStsBadStep);
    EXPECT_EQ(call(src, 25, tilt, 24, norm, 23, mask.data(), 6, roi, &positive, state.get(), 0), noxStsBadStep);
    EXPECT_EQ(call(src, 25, tilt, 24, norm, 24, mask.data(), 5, roi, &positive, state.get(), 0), noxStsBadStep);
    EXPECT_EQ(call(src, 26, tilt, 24, norm, 24, mask.data(), 6, roi, &positive, state.get(), 1), noxStsOddStep);
    EXPECT_EQ(call(src, 24, tilt, 24, norm, 26, mask.data(), 6, roi, &positive, state.get(), 1), noxStsOddStep);
    if (M::mixed) {
        EXPECT_EQ(call(src, 24, nullptr, 24, norm, 24, mask.data(), 6, roi, &positive, state.get(), 0),
                  noxStsNullPointer);
        EXPECT_EQ(call(src, 25, tilt, 23, norm, 24, mask.data(), 6, roi, &positive, state.get(), 0), noxStsBadStep);
        EXPECT_EQ(call(src, 24, tilt, 27, norm, 24, mask.data(), 6, roi, &positive, state.get(), 1), noxStsOddStep);
    }
    if (M::shifts) {
        EXPECT_EQ(call(src, 24, tilt, 24, norm, 24, mask.data(), 6, roi, &positive, state.get(), 1), noxStsBadArgument);
    }
    EXPECT_EQ(positive, 77);
    EXPECT_TRUE(test::sameImage(mask, scene.mask));
}

TEST(HaarApplySums, StagesCreatedTurnedAddInOrder) {
    // 1e8 + 3 rounds; the order tells.
    Input<Nox32f> in;
    in.add({{{0, 0, 1, 1}, 1.0F}, {{1, 0, 1, 1}, 1.0F}, {{2, 0, 1, 1}, 1.0F}}, 0.5F, -1.0F, 1.0F);
    Nox32f table[4][8] = {};
    const auto passes = [&](bool tilted, Nox32f a, Nox32f b, Nox32f c) {
        const Stage<Nox32f> state(in, tilted);
        // The top corners alone are not zero.
        Nox32f *top = table[0];
        top[0] = top[1] = top[2] = top[3] = 0;
        if (tilted) {
            top[0] = a, top[1] = b, top[2] = c;
        } else { // rectangle i is top[i] - top[i + 1]
            top[2] = c, top[1] = b + c, top[0] = a + (b + c);
        }
        const Nox32f norm = 1;
        Nox8u mask = 1;
        int positive = 0;
        EXPECT_EQ(
            noxiApplyHaarClassifier_32f_C1R(table[0], 32, &norm, 4, &mask, 1, {1, 1}, &positive, 0.0F, state.get()),
            noxStsNoError);
        return positive == 1;
    };
    EXPECT_TRUE(passes(true, 1e8F, -1e8F, 1.0F));  // (a + b) + c = 1
    EXPECT_FALSE(passes(true, 1.0F, 1e8F, -1e8F)); // (1 + 1e8) - 1e8 = 0
    EXPECT_TRUE(passes(false, 1.0F, 1e8F, -1e8F)); // (1e8 - 1e8) + 1 = 1
    in = {};
    in.add({{{0, 0, 1, 1}, 1.0F}, {{1, 0, 1, 1}, 1.0F}}, 0.5F, -1.0F, 1.0F);
    EXPECT_TRUE(passes(true, 1.0F, 0.0F, 0.0F));
}

template <class T>
class HaarStage : public ::testing::Test {};
using Numbers = ::testing::Types<Nox32f, Nox32s>;
TYPED_TEST_SUITE(HaarStage, Numbers);

TYPED_TEST(HaarStage, RegroupsAndKeepsIndices) {
    using T = TypeParam;
    Input<T> in;
    const auto parts = [](int count) {
        return std::vector<std::pair<NoxiRect, T>>(std::size_t(count), {{5, 2, 3, 4}, T(-1)});
    };
    for (const int count : {3, 1, 2, 4, 3, 2})
        in.add(parts(count), T(count), T(10 * count), T(100 * count));
    const Stage<T> state(in);
    const int order[] = {2, 5, 0, 4, 1, 3};
    EXPECT_EQ(state.get()->classifierCount, 6);
    EXPECT_EQ(state.get()->featureCount, 15);
    EXPECT_EQ(state.get()->evalFeatureCount, 15);
    EXPECT_EQ(state.get()->pairCount, 2);
    EXPECT_EQ(state.get()->pairTripleCount, 4);
    EXPECT_EQ(state.get()->flags, 0U);
    for (int i = 0; i < 6; ++i) {
        const auto &c = state.get()->classifiers[i];
        EXPECT_EQ(c.id, Nox32u(order[i]) << 8);
        EXPECT_EQ(c.featuresInClassifier, in.counts[std::size_t(order[i])]);
        EXPECT_EQ(c.threshold, in.thresholds[std::size_t(order[i])]);
        EXPECT_EQ(c.lowValue, in.lows[std::size_t(order[i])]);
        EXPECT_EQ(c.highValue, in.highs[std::size_t(order[i])]);
    }
    if constexpr (std::is_same_v<T, Nox32f>) {
        EXPECT_EQ(state.get()->firstWeightsMinusOne, 1);
    }
    const Stage<T> turned(in, true);
    EXPECT_EQ(turned.get()->pairTripleCount, 0);
    EXPECT_EQ(turned.get()->flags, 1U);
    EXPECT_EQ(turned.get()->classifiers[3].id, (3U << 8) | 1U);
}

TYPED_TEST(HaarStage, BoundsMixWidthsAndEdges) {
    using T = TypeParam;
    Input<T> in;
    in.add({{{5, 6, 7, 8}, T(1)}}, T(0), T(0), T(0));
    in.add({{{3, 9, 20, 2}, T(1)}}, T(0), T(0), T(0));
    const Stage<T> state(in);
    // Width: 7, then right edge 12 is not above 7 + 5, then 23 is above 7 + 3. Height: 14 is not above 8 + 6, nor 11.
    EXPECT_EQ(state.get()->boundsX, 3);
    EXPECT_EQ(state.get()->boundsY, 6);
    EXPECT_EQ(state.get()->boundsWidth, 23 - 3);
    EXPECT_EQ(state.get()->boundsHeight, 8 - 6);
    NoxiSize size = {-1, -1};
    EXPECT_EQ(sizeOf(state.get(), &size), noxStsNoError);
    EXPECT_EQ(size.width, 23);
    EXPECT_EQ(size.height, 14);
}

TYPED_TEST(HaarStage, StatusesOfCreation) {
    using T = TypeParam;
    Input<T> in;
    in.add({{{1, 2, 3, 4}, T(1)}, {{0, 0, 1, 1}, T(1)}}, T(0), T(0), T(0));
    auto *const before = reinterpret_cast<StateOf<T> *>(&in);
    for (const bool tilted : {false, true}) {
        StateOf<T> *state = before;
        EXPECT_EQ(create(tilted, static_cast<StateOf<T> **>(nullptr), in, -1), noxStsNullPointer);
        EXPECT_EQ(create(tilted, &state, Input<T>{}, -1), noxStsNullPointer);
        EXPECT_EQ(create(tilted, &state, in, -1), noxStsBadSize);
        Input<T> bad = in;
        bad.counts[0] = 0;
        bad.features[0].x = -1;
        EXPECT_EQ(create(tilted, &state, bad, 1), noxStsBadSize);
        bad.counts[0] = 2147483647;
        EXPECT_EQ(create(tilted, &state, bad, 1), noxStsNoMemory);
        {
            const test::CountedAllocator allocator(1);
            bad.counts[0] = 2;
            EXPECT_EQ(create(tilted, &state, bad, 1), noxStsNoMemory);
        }
        EXPECT_EQ(state, before);
        const NoxiRect rects[] = {{-1, 0, 1, 1},
                                  {0, -1, 1, 1},
                                  {0, 0, 0, 1},
                                  {0, 0, 1, 0},
                                  {2147483647, 2147483647, 2147483647, -2147483647 - 1}};
        for (const NoxiRect &rect : rects)
            for (const int at : {0, 1}) {
                const test::CountedAllocator allocator;
                bad = in;
                bad.features[0] = {4, 0, 1, 1};
                bad.features[std::size_t(at)] = rect;
                state = before;
                EXPECT_EQ(create(tilted, &state, bad, 1), noxStsBadArgument);
                EXPECT_EQ(state, nullptr);
                EXPECT_EQ(test::CountedAllocator::live(), 0);
            }
        // Huge coordinates wrap.
        bad.features = {{2147483647, 2147483647, 2147483647, 2147483647}, {1, 1, 2147483647, 1}};
        EXPECT_EQ(create(tilted, &state, bad, 1), noxStsNoError);
        EXPECT_EQ(destroy(state), noxStsNoError);
    }
    EXPECT_EQ(destroy(static_cast<StateOf<T> *>(nullptr)), noxStsNullPointer);
}

TYPED_TEST(HaarStage, TurnedRectanglesNeedRoomOnTheLeft) {
    using T = TypeParam;
    for (const int height : {1, 2}) {
        Input<T> in;
        in.add({{{0, 0, 1, height}, T(1)}}, T(0), T(0), T(0));
        StateOf<T> *state = nullptr;
        EXPECT_EQ(create(true, &state, in, 1), height == 1 ? noxStsNoError : noxStsBadArgument);
        if (state != nullptr) {
            NoxiSize size;
            sizeOf(state, &size);
            EXPECT_EQ(size.width, 1);  // the right corner
            EXPECT_EQ(size.height, 2); // the bottom one
            destroy(state);
        }
    }
}

TYPED_TEST(HaarStage, AnEmptyStageDecidesByItsThreshold) {
    using T = TypeParam;
    Input<T> in;
    in.reserve();
    const Stage<T> state(in);
    NoxiSize size = {7, 7};
    EXPECT_EQ(sizeOf(state.get(), &size), noxStsNoError);
    EXPECT_EQ(size.width, 0);
    EXPECT_EQ(size.height, 0);
    using M = Member<T, T, false>;
    const T table[4] = {}, norm[4] = {};
    for (const T threshold : {T(-1), T(0), T(1)}) {
        Nox8u mask[4] = {1, 0, 255, 2};
        int positive = -1;
        EXPECT_EQ(apply<M>(table, 16, table, 16, norm, 16, mask, 4, {4, 1}, &positive, threshold, state.get(), 0),
                  noxStsNoError);
        EXPECT_EQ(positive, threshold <= T(0) ? 3 : 0);
        EXPECT_EQ(mask[2], threshold <= T(0) ? 255 : 0);
    }
}

TYPED_TEST(HaarStage, IsTurnedOnce) {
    using T = TypeParam;
    Input<T> in;
    in.add({{{5, 6, 2, 3}, T(1)}}, T(0), T(0), T(0));
    in.add({{{5, 6, 2, 3}, T(1)}, {{7, 8, 1, 1}, T(1)}}, T(0), T(0), T(0));
    const Nox8u none[] = {0, 0}, second[] = {0, 1};
    const Stage<T> state(in);
    EXPECT_EQ(turn(nullptr, 1, state.get()), noxStsNullPointer);
    EXPECT_EQ(turn(none, 1, static_cast<StateOf<T> *>(nullptr)), noxStsNullPointer);
    EXPECT_EQ(turn(none, 1, state.get()), noxStsNoError);
    EXPECT_EQ(turn(second, 0, state.get()), noxStsNoError);
    EXPECT_EQ(turn(none, 1, state.get()), noxStsBadArgument);
    const auto &turned = state.get()->classifiers[0], &other = state.get()->classifiers[1];
    EXPECT_EQ(turned.id, 1U);
    EXPECT_EQ(other.id, 0U);
    const auto &f = turned.features[0];
    EXPECT_EQ(f.brX, 5);
    EXPECT_EQ(f.brY, 9);
    EXPECT_EQ(f.trX, 7);
    EXPECT_EQ(f.trY, 7);
    EXPECT_EQ(f.blX, 2);
    EXPECT_EQ(f.blY, 6);
    EXPECT_EQ(f.tlX, 4);
    EXPECT_EQ(f.tlY, 4);
    const Stage<T> created(in, true);
    EXPECT_EQ(turn(none, 1, created.get()), noxStsBadArgument);
    // Many classifiers are found in one go.
    Input<T> many;
    for (int i = 0; i < 300000; ++i)
        many.add({{{5, 6, 2, 3}, T(1)}}, T(0), T(0), T(0));
    const Stage<T> large(many);
    const std::vector<Nox8u> all(300000, 1);
    EXPECT_EQ(turn(all.data(), 1, large.get()), noxStsNoError);
    for (int i = 0; i < 300000; ++i)
        ASSERT_EQ(large.get()->classifiers[i].id, 1U);
}

} // namespace
