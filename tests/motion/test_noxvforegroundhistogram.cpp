// The histogram foreground model against its definition.
#include <climits>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "noxcv.h"
#include "reference/foreground.h"
#include "support/foreground.h"
#include "support/image.h"
#include "support/video.h"

using test::Image;

namespace {

/// The members for one number of channels.
struct Members {
    int channels;
    decltype(&noxiForegroundHistogramInitAlloc_8u_C1R) init;
    decltype(&noxiForegroundHistogram_8u_C1R) detect;
    decltype(&noxiForegroundHistogramUpdate_8u_C1R) update;
    decltype(&noxiForegroundHistogramFree_8u_C1R) free;
};
const Members members[] = {{1, noxiForegroundHistogramInitAlloc_8u_C1R, noxiForegroundHistogram_8u_C1R,
                            noxiForegroundHistogramUpdate_8u_C1R, noxiForegroundHistogramFree_8u_C1R},
                           {3, noxiForegroundHistogramInitAlloc_8u_C3R, noxiForegroundHistogram_8u_C3R,
                            noxiForegroundHistogramUpdate_8u_C3R, noxiForegroundHistogramFree_8u_C3R}};

const int anything = 0;
const Nox8u reserved = 0;

template <class Entry>
bool sameTable(const Entry *actual, const reference::foreground::HistogramModel::Table &expected) {
    for (std::size_t i = 0; i < expected.entries.size(); ++i) {
        const auto &e = expected.entries[i];
        if (actual[i].p != e.p)
            return false;
        if (e.p == 0)
            break;
        if (actual[i].pb != e.pb || std::memcmp(actual[i].value, e.value.data(), expected.keyBytes) != 0)
            return false;
    }
    return true;
}

::testing::AssertionResult sameModel(const NoxiForegroundHistogramState &state,
                                     const reference::foreground::HistogramModel &model) {
    for (std::size_t i = 0; i < model.pixels.size(); ++i) {
        const auto &actual = state.pixels[i];
        const auto &expected = model.pixels[i];
        if (actual.colorPrior != expected.color.prior || actual.changePrior != expected.change.prior ||
            (actual.colorTrusted != 0) != expected.color.trusted ||
            (actual.changeTrusted != 0) != expected.change.trusted)
            return ::testing::AssertionFailure() << "priors of pixel " << i;
        if (!sameTable(actual.colorTable, expected.color))
            return ::testing::AssertionFailure() << "colours of pixel " << i;
        if (!sameTable(actual.changeTable, expected.change))
            return ::testing::AssertionFailure() << "changes of pixel " << i;
    }
    const auto same = [](const Nox8u *actual, const std::vector<Nox8u> &expected) {
        return std::memcmp(actual, expected.data(), expected.size()) == 0;
    };
    if (!same(state.background, model.background) || !same(state.previous, model.previous) ||
        !same(state.frameChange, model.frameChange) || !same(state.backgroundChange, model.backgroundChange))
        return ::testing::AssertionFailure() << "images differ";
    return ::testing::AssertionSuccess();
}

/// Frames with large, rare changes, so that thresholds vary; every third stretch is still.
Image<Nox8u> frameOf(NoxiSize size, int channels, int t, int padding) {
    Image<Nox8u> frame(test::videoFrame(size, channels, t / 20 % 3 == 1 ? t / 20 * 20 : t, padding));
    if (t % 4 == 3)
        for (int y = 0; y < size.height / 2; ++y)
            for (int x = 0; x < size.width / 2; ++x)
                for (int c = 0; c < channels; ++c)
                    frame.at(x, y, c) = Nox8u(frame.at(x, y, c) / 2 + 5);
    return frame;
}

/// Rates of 0 stand for those of the model.
void compare(const Members &m, NoxiSize size, int frames, int padding, bool ownMask, float slow = 0, float fast = 0) {
    const Image<Nox8u> first(frameOf(size, m.channels, 0, padding));
    NoxiForegroundHistogramState *state = nullptr;
    ASSERT_EQ(m.init(first.data(), first.step(), size, &anything, &state), noxStsNoError);
    reference::foreground::HistogramModel model(first.data(), first.step(), size, m.channels);
    if (slow > 0) {
        state->slowRate = model.slowRate = slow;
        state->fastRate = model.fastRate = fast;
    }
    Image<Nox8u> mask(size.width, size.height, 1, padding), expected(mask), taught(mask);
    std::vector<Nox8u> expectedMask;
    test::Random random(4);
    for (int t = 1; t <= frames; ++t) {
        const Image<Nox8u> frame(frameOf(size, m.channels, t, padding));
        ASSERT_EQ(m.detect(frame.data(), frame.step(), mask.data(), mask.step(), size, state), noxStsNoError);
        model.detect(frame.data(), frame.step(), expectedMask);
        expected.generate([&](int x, int y, int) { return expectedMask[std::size_t(y) * size.width + x]; });
        ASSERT_TRUE(test::sameImage(mask, expected)) << "frame " << t;
        taught.generate([&](int x, int y, int) {
            return ownMask ? mask.at(x, y) : (x / 5 + t / 30) % 3 == 0 || random() % 9 == 0 ? 255 : 0;
        });
        ASSERT_EQ(m.update(frame.data(), frame.step(), taught.data(), taught.step(), &reserved, 0, size, state),
                  noxStsNoError);
        model.update(frame.data(), frame.step(), taught.data(), taught.step());
        ASSERT_TRUE(sameModel(*state, model)) << "frame " << t;
    }
    EXPECT_EQ(m.free(state), noxStsNoError);
}

TEST(ForegroundHistogram, EqualsReferenceOverManyFrames) {
    for (const Members &m : members)
        for (const bool ownMask : {true, false})
            compare(m, {29, 17}, 150, ownMask ? 0 : 5, ownMask);
}

TEST(ForegroundHistogram, EntriesThatHaveFadedHideThoseBehind) {
    // Fast decay: entries reach 0 while others behind them still live.
    for (const Members &m : members)
        for (const float slow : {0.6F, 0.9F})
            compare(m, {29, 17}, 150, 0, false, slow, 0.9F);
}

TEST(ForegroundHistogram, EqualsReferenceOnAllSizes) {
    for (const Members &m : members)
        for (const NoxiSize size : test::testSizes())
            if (size.width * size.height < 3000)
                for (const int padding : {0, 1})
                    compare(m, size, 5, padding, true);
}

TEST(ForegroundHistogramFull, FiveHundredFramesStayProbabilities) {
    for (const Members &m : members) {
        const NoxiSize size = {23, 19};
        compare(m, size, 500, 0, false);
        const Image<Nox8u> first(frameOf(size, m.channels, 0, 0));
        NoxiForegroundHistogramState *state = nullptr;
        ASSERT_EQ(m.init(first.data(), first.step(), size, &anything, &state), noxStsNoError);
        Image<Nox8u> mask(size.width, size.height);
        for (int t = 1; t <= 500; ++t) {
            const Image<Nox8u> frame(frameOf(size, m.channels, t, 0));
            m.detect(frame.data(), frame.step(), mask.data(), mask.step(), size, state);
            m.update(frame.data(), frame.step(), mask.data(), mask.step(), &reserved, 0, size, state);
        }
        const auto probability = [](float p) { return p >= 0 && p <= 1.001F; };
        for (int i = 0; i < size.width * size.height; ++i) {
            const NoxiForegroundPixel &pixel = state->pixels[i];
            ASSERT_TRUE(probability(pixel.colorPrior) && probability(pixel.changePrior));
            for (int k = 0; k < 25 && pixel.colorTable[k].p != 0; ++k)
                ASSERT_TRUE(probability(pixel.colorTable[k].p) && probability(pixel.colorTable[k].pb))
                    << pixel.colorTable[k].p << " " << pixel.colorTable[k].pb;
            for (int k = 0; k < 40 && pixel.changeTable[k].p != 0; ++k)
                ASSERT_TRUE(probability(pixel.changeTable[k].p) && probability(pixel.changeTable[k].pb))
                    << pixel.changeTable[k].p << " " << pixel.changeTable[k].pb;
        }
        m.free(state);
    }
}

TEST(ForegroundHistogram, ARepeatedFrameIsBackground) {
    for (const Members &m : members) {
        const Image<Nox8u> first(test::videoFrame({31, 9}, m.channels, 3));
        NoxiForegroundHistogramState *state = nullptr;
        ASSERT_EQ(m.init(first.data(), first.step(), first.roi(), &anything, &state), noxStsNoError);
        Image<Nox8u> mask(31, 9), zero(31, 9);
        mask.fill(9);
        zero.fill(0);
        EXPECT_EQ(m.detect(first.data(), first.step(), mask.data(), 31, first.roi(), state), noxStsNoError);
        EXPECT_TRUE(test::sameImage(mask, zero));
        // A difference of 10 is not yet a change.
        Image<Nox8u> next(first);
        next.at(4, 4, 0) = Nox8u(first.at(4, 4, 0) + (first.at(4, 4, 0) < 128 ? 10 : -10));
        EXPECT_EQ(m.detect(next.data(), next.step(), mask.data(), 31, first.roi(), state), noxStsNoError);
        EXPECT_TRUE(test::sameImage(mask, zero));
        next.at(4, 4, 0) = Nox8u(first.at(4, 4, 0) + (first.at(4, 4, 0) < 128 ? 11 : -11));
        EXPECT_EQ(m.detect(next.data(), next.step(), mask.data(), 31, first.roi(), state), noxStsNoError);
        EXPECT_EQ(mask.at(4, 4), 255);
        m.free(state);
    }
}

TEST(ForegroundHistogram, StartsAsDocumented) {
    Image<Nox8u> first(3, 2);
    first.generate([](int x, int y, int) { return 10 * x + 50 * y; });
    NoxiForegroundHistogramState *state = nullptr;
    ASSERT_EQ(noxiForegroundHistogramInitAlloc_8u_C1R(first.data(), 3, {3, 2}, &anything, &state), noxStsNoError);
    const int numbers[] = {state->colorLevels,
                           state->colorUsed,
                           state->colorSize,
                           state->changeLevels,
                           state->changeUsed,
                           state->changeSize,
                           state->flags[0],
                           state->flags[1],
                           state->backgroundStep,
                           state->frameChangeStep,
                           state->backgroundChangeStep,
                           state->previousStep,
                           state->reserved[0],
                           state->reserved[1]};
    const int expected[] = {128, 15, 25, 64, 25, 40, 1, 1, 3, 3, 3, 3, 0, 0};
    EXPECT_EQ(std::memcmp(numbers, expected, sizeof(expected)), 0);
    const float rates[] = {state->backgroundRate, state->slowRate,       state->fastRate,
                           state->tolerance,      state->trustThreshold, state->minArea};
    const float expectedRates[] = {0.1F, 0.005F, 0.1F, 2.0F, 0.9F, 0.0F};
    EXPECT_EQ(std::memcmp(rates, expectedRates, sizeof(rates)), 0);
    EXPECT_EQ(sizeof(NoxiForegroundColor), 12U);
    EXPECT_EQ(sizeof(NoxiForegroundChange), 16U);
    EXPECT_EQ(std::memcmp(state->background, first.data(), 6), 0);
    EXPECT_EQ(std::memcmp(state->previous, first.data(), 6), 0);
    EXPECT_EQ(state->pixels[5].colorTable - state->pixels[0].colorTable, 125);
    EXPECT_EQ(state->pixels[5].changeTable[39].p, 0.0F);
    noxiForegroundHistogramFree_8u_C1R(state);
}

TEST(ForegroundHistogram, FailedAllocationsLeaveNothing) {
    for (const Members &m : members)
        test::failEachAllocation<NoxiForegroundHistogramState>(m, anything, 8);
}

TEST(ForegroundHistogram, StatusesInOrder) {
    for (const Members &m : members) {
        const Image<Nox8u> frame(test::videoFrame({6, 3}, m.channels, 0));
        Image<Nox8u> mask(6, 3);
        mask.fill(7);
        const Image<Nox8u> before(mask);
        const int step = frame.step();
        NoxiForegroundHistogramState *state = nullptr;
        test::expectInitStatuses<NoxiForegroundHistogramState>(m, anything);
        ASSERT_EQ(m.init(frame.data(), step, {6, 3}, &anything, &state), noxStsNoError);
        EXPECT_EQ(m.detect(nullptr, 0, mask.data(), 6, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(m.detect(frame.data(), 0, nullptr, 6, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(m.detect(frame.data(), 0, mask.data(), 6, {0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(m.detect(frame.data(), 0, mask.data(), 6, {0, 3}, state), noxStsBadSize);
        EXPECT_EQ(m.detect(frame.data(), 0, mask.data(), 6, {6, 0}, state), noxStsBadSize);
        EXPECT_EQ(m.detect(frame.data(), step - 1, mask.data(), 6, {6, 3}, state), noxStsBadStep);
        const auto update = [&](const Nox8u *src, int srcStep, const Nox8u *foreground, const Nox8u *r, NoxiSize roi,
                                NoxiForegroundHistogramState *s) {
            return m.update(src, srcStep, foreground, 6, r, 0, roi, s);
        };
        EXPECT_EQ(update(nullptr, 0, mask.data(), &reserved, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(update(frame.data(), 0, nullptr, &reserved, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(update(frame.data(), 0, mask.data(), nullptr, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(update(frame.data(), 0, mask.data(), &reserved, {0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(update(frame.data(), 0, mask.data(), &reserved, {0, 3}, state), noxStsBadSize);
        EXPECT_EQ(update(frame.data(), 0, mask.data(), &reserved, {6, -3}, state), noxStsBadSize);
        EXPECT_EQ(update(frame.data(), step - 1, mask.data(), &reserved, {6, 3}, state), noxStsBadStep);
        EXPECT_TRUE(test::sameImage(mask, before));
        EXPECT_EQ(state->pixels[0].changeTable[0].p, 0.0F);
        EXPECT_EQ(m.free(nullptr), noxStsNullPointer);
        EXPECT_EQ(m.free(state), noxStsNoError);
    }
}

} // namespace
