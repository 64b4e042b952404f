// The Gaussian foreground model against its definition.
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
    decltype(&noxiForegroundGaussianInitAlloc_8u_C1R) init;
    decltype(&noxiForegroundGaussian_8u_C1R) detect;
    decltype(&noxiForegroundGaussianFree_8u_C1R) free;
};
const Members members[] = {
    {1, noxiForegroundGaussianInitAlloc_8u_C1R, noxiForegroundGaussian_8u_C1R, noxiForegroundGaussianFree_8u_C1R},
    {3, noxiForegroundGaussianInitAlloc_8u_C3R, noxiForegroundGaussian_8u_C3R, noxiForegroundGaussianFree_8u_C3R}};

const int anything = 0;
const Nox8u reserved = 0;

template <class T>
T at(const void *memory, std::ptrdiff_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char *>(memory) + offset, sizeof(T));
    return value;
}

/// Every number of every mixture, bit for bit.
::testing::AssertionResult sameModel(const NoxiForegroundGaussianState &state,
                                     const reference::foreground::GaussianModel &model) {
    const int channels = model.channels, bytes = 12 + 16 * channels;
    for (std::size_t i = 0; i < model.mixtures.size(); ++i)
        for (int k = 0; k < 5; ++k) {
            const auto &expected = model.mixtures[i][k];
            const void *actual = static_cast<const char *>(state.mixtures[i]) + k * bytes;
            bool same = at<int>(actual, 0) == expected.count && at<double>(actual, 4) == expected.weight;
            for (int c = 0; c < channels; ++c)
                same = same && at<double>(actual, 12 + 8 * c) == expected.variance[c] &&
                       at<double>(actual, 12 + 8 * (channels + c)) == expected.mean[c];
            if (!same)
                return ::testing::AssertionFailure()
                       << "Gaussian " << k << " of pixel " << i << " in frame " << state.frames << ": count "
                       << at<int>(actual, 0) << ", expected " << expected.count;
        }
    if (std::memcmp(state.background, model.background.data(), model.background.size()) != 0)
        return ::testing::AssertionFailure() << "the background differs";
    return ::testing::AssertionSuccess();
}

void compare(const Members &m, NoxiSize size, int frames, int window, int padding) {
    const Image<Nox8u> first(test::videoFrame(size, m.channels, 0, padding));
    NoxiForegroundGaussianState *state = nullptr;
    ASSERT_EQ(m.init(first.data(), first.step(), size, &anything, &state), noxStsNoError);
    reference::foreground::GaussianModel model(first.data(), first.step(), size, m.channels);
    state->window = model.window = window;
    Image<Nox8u> mask(size.width, size.height, 1, padding), expected(mask);
    std::vector<Nox8u> expectedMask;
    for (int t = 1; t <= frames; ++t) {
        const Image<Nox8u> frame(test::videoFrame(size, m.channels, t, padding));
        ASSERT_EQ(m.detect(frame.data(), frame.step(), &reserved, 0, mask.data(), mask.step(), size, state),
                  noxStsNoError);
        model.detect(frame.data(), frame.step(), expectedMask);
        expected.generate([&](int x, int y, int) { return expectedMask[std::size_t(y) * size.width + x]; });
        ASSERT_TRUE(test::sameImage(mask, expected)) << "frame " << t;
        ASSERT_TRUE(sameModel(*state, model));
    }
    EXPECT_EQ(m.free(state), noxStsNoError);
}

TEST(ForegroundGaussian, EqualsReferenceOverManyFrames) {
    for (const Members &m : members)
        for (const int window : {200, 7, 20, 1})
            compare(m, {29, 17}, 60, window, window % 2 * 5);
}

TEST(ForegroundGaussian, EqualsReferenceOnAllSizes) {
    for (const Members &m : members)
        for (const NoxiSize size : test::testSizes())
            if (size.width * size.height < 3000)
                compare(m, size, 6, 4, 3);
}

TEST(ForegroundGaussianFull, FiveHundredFramesStayNumbers) {
    for (const Members &m : members) {
        const NoxiSize size = {23, 19};
        compare(m, size, 500, 200, 0);
        const Image<Nox8u> first(test::videoFrame(size, m.channels, 0));
        NoxiForegroundGaussianState *state = nullptr;
        ASSERT_EQ(m.init(first.data(), first.step(), size, &anything, &state), noxStsNoError);
        Image<Nox8u> mask(size.width, size.height);
        for (int t = 1; t <= 500; ++t) {
            const Image<Nox8u> frame(test::videoFrame(size, m.channels, t));
            m.detect(frame.data(), frame.step(), &reserved, 0, mask.data(), mask.step(), size, state);
        }
        for (int i = 0; i < size.width * size.height; ++i) {
            double sum = 0;
            for (int k = 0; k < 5; ++k) {
                const char *g = static_cast<const char *>(state->mixtures[i]) + k * (12 + 16 * m.channels);
                sum += at<double>(g, 4);
                for (int c = 0; c < 2 * m.channels; ++c)
                    ASSERT_TRUE(std::isfinite(at<double>(g, 12 + 8 * c)));
                ASSERT_GE(at<double>(g, 4), 0.0);
            }
            ASSERT_LE(sum, 1 + 1e-9);
        }
        m.free(state);
    }
}

TEST(ForegroundGaussian, StartsAsDocumented) {
    Image<Nox8u> first(3, 2);
    first.generate([](int x, int y, int) { return 10 * x + 50 * y; });
    NoxiForegroundGaussianState *state = nullptr;
    ASSERT_EQ(noxiForegroundGaussianInitAlloc_8u_C1R(first.data(), 3, {3, 2}, &anything, &state), noxStsNoError);
    EXPECT_EQ(state->window, 200);
    EXPECT_EQ(state->modes, 5);
    EXPECT_EQ(state->backgroundShare, 0.7);
    EXPECT_EQ(state->matchSigmas, 2.5);
    EXPECT_EQ(state->initialSigma, 15.0);
    EXPECT_EQ(state->initialWeight, 0.05);
    EXPECT_EQ(state->newVariance, 900.0);
    EXPECT_EQ(state->frames, 0);
    EXPECT_EQ(state->backgroundStep, 3);
    EXPECT_EQ(state->maskStep, 3);
    EXPECT_EQ(std::memcmp(state->background, first.data(), 6), 0);
    EXPECT_EQ(static_cast<char *>(state->mixtures[5]) - static_cast<char *>(state->mixtures[0]), 5 * 5 * 28);
    if (sizeof(void *) == 4) {
        EXPECT_EQ(sizeof(NoxiForegroundGaussianState), 72U);
    }
    noxiForegroundGaussianFree_8u_C1R(state);
}

TEST(ForegroundGaussian, FailedAllocationsLeaveNothing) {
    for (const Members &m : members)
        test::failEachAllocation<NoxiForegroundGaussianState>(m, anything, 5);
}

TEST(ForegroundGaussian, StatusesInOrder) {
    for (const Members &m : members) {
        const Image<Nox8u> frame(test::videoFrame({6, 3}, m.channels, 0));
        Image<Nox8u> mask(6, 3);
        mask.fill(7);
        const Image<Nox8u> before(mask);
        const int step = frame.step();
        NoxiForegroundGaussianState *state = nullptr;
        test::expectInitStatuses<NoxiForegroundGaussianState>(m, anything);
        ASSERT_EQ(m.init(frame.data(), step, {6, 3}, &anything, &state), noxStsNoError);
        const auto call = [&](const Nox8u *src, int srcStep, const Nox8u *r, Nox8u *dst, NoxiSize roi,
                              NoxiForegroundGaussianState *s) { return m.detect(src, srcStep, r, 0, dst, 6, roi, s); };
        EXPECT_EQ(call(nullptr, 0, &reserved, mask.data(), {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(call(frame.data(), 0, nullptr, mask.data(), {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(call(frame.data(), 0, &reserved, nullptr, {0, 0}, state), noxStsNullPointer);
        EXPECT_EQ(call(frame.data(), 0, &reserved, mask.data(), {0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(frame.data(), 0, &reserved, mask.data(), {0, 3}, state), noxStsBadSize);
        EXPECT_EQ(call(frame.data(), 0, &reserved, mask.data(), {6, 0}, state), noxStsBadSize);
        EXPECT_EQ(call(frame.data(), step - 1, &reserved, mask.data(), {6, 3}, state), noxStsBadStep);
        EXPECT_TRUE(test::sameImage(mask, before));
        EXPECT_EQ(state->frames, 0);
        EXPECT_EQ(m.free(nullptr), noxStsNullPointer);
        EXPECT_EQ(m.free(state), noxStsNoError);
    }
}

} // namespace
