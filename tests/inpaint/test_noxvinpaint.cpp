#include <cfloat>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "noxcv.h"
#include "reference/inpaint.h"
#include "support/allocator.h"
#include "support/image.h"

using reference::inpaint::Inpainter;
using reference::inpaint::Plane;
using test::Image;

namespace {

struct Members {
    int channels;
    NoxStatus (*init)(NoxiInpaintState **, const Nox32f *, int, const Nox8u *, int, NoxiSize, Nox32f, int);
    NoxStatus (*run)(const Nox8u *, int, Nox8u *, int, NoxiSize, NoxiInpaintState *);
    NoxStatus (*free)(NoxiInpaintState *);
};
constexpr Members members[] = {{1, noxiInpaintInitAlloc_8u_C1R, noxiInpaint_8u_C1R, noxiInpaintFree_8u_C1R},
                               {3, noxiInpaintInitAlloc_8u_C3R, noxiInpaint_8u_C3R, noxiInpaintFree_8u_C3R}};

Image<Nox8u> picture(NoxiSize size, int channels, test::Random &random, int kind) {
    Image<Nox8u> image(size.width, size.height, channels, kind % 3 * 5);
    image.generate([&](int x, int y, int c) -> int {
        switch (kind % 3) {
        case 0:
            return random() % 256;
        case 1:
            return x * 7 + y * 3 + c * 40 + random() % 4;
        default:
            return (x / 5 + y / 7) % 2 == 0 ? 255 : 0;
        }
    });
    return image;
}

/// Holes of several kinds: scratches, blobs, single pixels, the edge, everything, nothing.
Image<Nox8u> holes(NoxiSize size, int kind, test::Random &random) {
    Image<Nox8u> mask(size.width, size.height, 1, kind % 4);
    mask.generate([&](int x, int y, int) -> int {
        switch (kind) {
        case 0:
            return random() % 20 == 0 ? 1 + random() % 255 : 0;
        case 1:
            return std::abs(x * 2 - y * 3) % 31 < 4 ? 255 : 0;
        case 2:
            return x < 3 || y > size.height - 3 ? 7 : 0;
        case 3:
            return std::hypot(x - size.width * 0.5, y - size.height * 0.5) < 0.2 * std::min(size.width, size.height);
        case 4:
            return 1;
        case 5:
            return x != size.width / 2 || y != size.height / 3;
        default:
            return 0;
        }
    });
    return mask;
}
constexpr int holeKinds = 7;

Image<Nox32f> mapOf(const Image<Nox8u> &mask) {
    Image<Nox32f> map(mask.width(), mask.height(), 1, 8);
    int size = 0;
    EXPECT_EQ(noxiFastMarchingGetBufferSize_8u32f_C1R(mask.roi(), &size), noxStsNoError);
    const test::Buffer buffer(size);
    EXPECT_EQ(
        noxiFastMarching_8u32f_C1R(mask.data(), mask.step(), map.data(), map.step(), mask.roi(), 0, buffer.data()),
        noxStsNoError);
    return map;
}

template <class T>
Plane<T> planeOf(const Image<T> &image) {
    Plane<T> plane(image.width(), image.height(), image.channels());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            for (int c = 0; c < image.channels(); ++c)
                plane.at(x, y, c) = image.at(x, y, c);
    return plane;
}

Image<Nox8u> expected(const Image<Nox8u> &src, const Image<Nox32f> &map, const Image<Nox8u> &mask, float radius,
                      int method) {
    Plane<Nox8u> plane = planeOf(src);
    Inpainter(planeOf(map), planeOf(mask), radius, method).paint(plane);
    Image<Nox8u> result(src.width(), src.height(), src.channels());
    result.generate([&](int x, int y, int c) { return plane.at(x, y, c); });
    return result;
}

NoxiInpaintState *stateOf(const Members &m, const Image<Nox32f> &map, const Image<Nox8u> &mask, float radius,
                          int method) {
    NoxiInpaintState *state = nullptr;
    EXPECT_EQ(m.init(&state, map.data(), map.step(), mask.data(), mask.step(), mask.roi(), radius, method),
              noxStsNoError);
    return state;
}

Image<Nox8u> painted(const Members &m, const Image<Nox8u> &src, NoxiInpaintState *state, int padding = 0) {
    Image<Nox8u> dst(src.width(), src.height(), src.channels(), padding);
    EXPECT_EQ(m.run(src.data(), src.step(), dst.data(), dst.step(), src.roi(), state), noxStsNoError);
    return dst;
}

void expectAsReference(const Members &m, const Image<Nox32f> &map, const Image<Nox8u> &mask, float radius, int method,
                       int kind, test::Random &random) {
    SCOPED_TRACE(testing::Message() << m.channels << " channels, radius " << radius << ", method " << method << ", "
                                    << mask.width() << "x" << mask.height() << ", picture " << kind);
    const Image<Nox8u> src = picture(mask.roi(), m.channels, random, kind);
    NoxiInpaintState *const state = stateOf(m, map, mask, radius, method);
    ASSERT_NE(state, nullptr);
    ASSERT_TRUE(sameImage(painted(m, src, state, kind), expected(src, map, mask, radius, method)));
    EXPECT_EQ(m.free(state), noxStsNoError);
}

constexpr float radii[] = {1, 1.5F, 2.6F, 3, 5.5F};

void compareAll(const std::vector<NoxiSize> &sizes) {
    test::Random random(5);
    int turn = 0;
    for (const NoxiSize size : sizes)
        for (int kind = 0; kind < holeKinds; ++kind) {
            const Image<Nox8u> mask = holes(size, kind, random);
            const Image<Nox32f> map = mapOf(mask);
            for (const float radius : radii)
                for (const int method : {0, 1}) {
                    expectAsReference(members[turn % 2], map, mask, radius, method, turn / 2 % 3, random);
                    if (testing::Test::HasFatalFailure())
                        return;
                    turn += method == 0 ? 1 : 2; // each radius and method meets each layout in turn
                }
        }
}

} // namespace

TEST(Inpaint, EqualsReference) {
    compareAll({{1, 1}, {1, 7}, {7, 1}, {2, 2}, {3, 3}, {5, 4}, {17, 2}, {31, 9}, {33, 17}, {64, 40}, {100, 1}});
}

TEST(InpaintFull, EqualsReference) { compareAll(test::testSizes()); }

/// A larger disc, whose square is dilated by another method, and one that covers the image.
TEST(Inpaint, LargeRadii) {
    test::Random random(6);
    for (const Members &m : members)
        for (const int method : {0, 1})
            for (const float radius : {9.0F, 12.7F, 60.0F}) {
                const Image<Nox8u> mask = holes({70, 50}, 1, random);
                expectAsReference(m, mapOf(mask), mask, radius, method, 1, random);
            }
}

TEST(Inpaint, CallsDoNotDependOnEachOther) {
    test::Random random(7);
    for (const Members &m : members)
        for (const int method : {0, 1}) {
            const Image<Nox8u> mask = holes({40, 30}, 1, random);
            const Image<Nox32f> map = mapOf(mask);
            NoxiInpaintState *const shared = stateOf(m, map, mask, 4, method);
            for (int kind = 0; kind < 4; ++kind) {
                const Image<Nox8u> src = picture(mask.roi(), m.channels, random, kind);
                NoxiInpaintState *const fresh = stateOf(m, map, mask, 4, method);
                EXPECT_TRUE(sameImage(painted(m, src, shared, kind), painted(m, src, fresh, 3)));
                m.free(fresh);
            }
            m.free(shared);
        }
}

TEST(Inpaint, WorksInPlaceAndKeepsNoReference) {
    test::Random random(8);
    for (const Members &m : members) {
        Image<Nox8u> mask = holes({33, 21}, 2, random);
        Image<Nox32f> map = mapOf(mask);
        const Image<Nox8u> src = picture(mask.roi(), m.channels, random, 1), wanted = expected(src, map, mask, 3, 0);
        NoxiInpaintState *const state = stateOf(m, map, mask, 3, 0);
        mask.fill(0);
        map.fill(-1);
        Image<Nox8u> srcDst(src);
        EXPECT_EQ(m.run(srcDst.data(), srcDst.step(), srcDst.data(), srcDst.step(), mask.roi(), state), noxStsNoError);
        EXPECT_TRUE(sameImage(srcDst, wanted));
        m.free(state);
    }
}

/// The map is not positive on part of the mask, positive outside it, not a number, or of any size.
TEST(Inpaint, MapThatDisagrees) {
    test::Random random(9);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    const std::function<float(int, int, float)> changes[] = {
        [](int, int, float) { return 0.0F; },
        [](int, int, float) { return 1.0F; },
        [](int x, int, float d) { return x % 3 == 0 ? -0.0F : d; },
        [](int x, int y, float d) { return (x + y) % 5 == 0 ? nan : d; },
        [&](int, int, float) { return random() % 2 == 0 ? FLT_MAX : 1e-42F; },
        [&](int, int, float d) { return random() % 3 == 0 ? float(random() % 1000) * 0.01F : d; },
    };
    for (const int kind : {0, 2, 3}) {
        const Image<Nox8u> mask = holes({23, 17}, kind, random);
        const Image<Nox32f> agreeing = mapOf(mask);
        for (const auto &change : changes) {
            Image<Nox32f> map(agreeing);
            map.generate([&](int x, int y, int) { return change(x, y, map.at(x, y)); });
            for (const Members &m : members)
                for (const int method : {0, 1})
                    expectAsReference(m, map, mask, 2.5F, method, kind, random);
        }
    }
}

/// Infinite distances: nothing outside the hole changes, and the call ends.
TEST(Inpaint, InfiniteDistances) {
    test::Random random(10);
    for (const Members &m : members)
        for (const int method : {0, 1}) {
            const Image<Nox8u> mask = holes({40, 30}, 1, random);
            Image<Nox32f> map = mapOf(mask);
            map.generate([&](int x, int y, int) {
                return map.at(x, y) > 0 && x % 2 == 0 ? std::numeric_limits<float>::infinity() : float(map.at(x, y));
            });
            const Image<Nox8u> src = picture(mask.roi(), m.channels, random, 1);
            NoxiInpaintState *const state = stateOf(m, map, mask, 5, method);
            const Image<Nox8u> dst = painted(m, src, state);
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 40; ++x)
                    for (int c = 0; c < m.channels && mask.at(x, y) == 0; ++c)
                        ASSERT_EQ(dst.at(x, y, c), src.at(x, y, c));
            m.free(state);
        }
}

TEST(Inpaint, StateForOtherChannels) {
    test::Random random(11);
    for (int i = 0; i < 2; ++i)
        for (const int method : {0, 1}) {
            const Members &maker = members[i], &user = members[1 - i];
            const Image<Nox8u> mask = holes({37, 23}, 1, random);
            const Image<Nox32f> map = mapOf(mask);
            const Image<Nox8u> mine = picture(mask.roi(), maker.channels, random, 1),
                               other = picture(mask.roi(), user.channels, random, 1);
            NoxiInpaintState *const state = stateOf(maker, map, mask, 3, method);
            {
                const test::CountedAllocator allocator;
                EXPECT_TRUE(sameImage(painted(user, other, state), expected(other, map, mask, 3, method)));
                EXPECT_EQ(test::CountedAllocator::live(), 0);
            }
            EXPECT_TRUE(sameImage(painted(maker, mine, state), expected(mine, map, mask, 3, method)));
            if (user.channels == 3) {
                const test::CountedAllocator allocator(1);
                Image<Nox8u> dst(37, 23, 3);
                dst.fill(9);
                const Image<Nox8u> before(dst);
                EXPECT_EQ(user.run(other.data(), other.step(), dst.data(), dst.step(), mask.roi(), state),
                          noxStsNoMemory);
                EXPECT_TRUE(sameImage(dst, before));
            }
            maker.free(state);
        }
}

TEST(Inpaint, EmptyMask) {
    test::Random random(12);
    for (const Members &m : members) {
        const Image<Nox8u> mask = holes({9, 5}, 6, random);
        Image<Nox32f> map(9, 5);
        map.fill(3);
        NoxiInpaintState *const state = stateOf(m, map, mask, std::numeric_limits<float>::infinity(), 1);
        ASSERT_NE(state, nullptr);
        EXPECT_EQ(state->count, 0);
        EXPECT_EQ(state->order, nullptr);
        EXPECT_EQ(state->channels, m.channels);
        const Image<Nox8u> src = picture({9, 5}, m.channels, random, 0);
        EXPECT_TRUE(sameImage(painted(m, src, state, 4), src));
        Image<Nox8u> dst(9, 5, m.channels);
        EXPECT_EQ(m.run(src.data(), src.step(), dst.data(), dst.step(), {9, 4}, state), noxStsBadSize);
        m.free(state);
    }
}

TEST(Inpaint, Record) {
    Image<Nox8u> mask(100, 50);
    mask.generate([](int x, int y, int) { return x >= 20 && x < 50 && y >= 2 && y < 20 ? 3 : 0; });
    NoxiInpaintState *const state = stateOf(members[1], mapOf(mask), mask, 5.5F, 0);
    EXPECT_EQ(state->width, 100);
    EXPECT_EQ(state->height, 50);
    EXPECT_EQ(state->count, 30 * 18);
    EXPECT_EQ(state->workX, 14);
    EXPECT_EQ(state->workY, 0);
    EXPECT_EQ(state->workWidth, 42);
    EXPECT_EQ(state->workHeight, 26);
    EXPECT_EQ(state->maskStep, 64);
    EXPECT_EQ(state->distanceStep, 192);
    EXPECT_EQ(state->gradientStep, 512);
    EXPECT_EQ(state->distanceGradientStep, 192);
    EXPECT_EQ(state->neighbourCount, 96);
    EXPECT_EQ(reinterpret_cast<std::size_t>(state->holeMask) % 64, 0U);
    noxiInpaintFree_8u_C3R(state);
}

TEST(Inpaint, FailedAllocations) {
    test::Random random(13);
    const Image<Nox8u> mask = holes({30, 20}, 1, random);
    const Image<Nox32f> map = mapOf(mask);
    for (const Members &m : members) {
        auto *const anything = reinterpret_cast<NoxiInpaintState *>(&random);
        for (int failAt = 1; failAt <= 3; ++failAt) {
            const test::CountedAllocator allocator(failAt);
            NoxiInpaintState *state = anything;
            const NoxStatus status = m.init(&state, map.data(), map.step(), mask.data(), mask.step(), mask.roi(), 4, 0);
            if (failAt == 3) {
                EXPECT_EQ(status, noxStsNoError);
                EXPECT_EQ(test::CountedAllocator::live(), 1);
                EXPECT_EQ(m.free(state), noxStsNoError);
            } else {
                EXPECT_EQ(status, noxStsNoMemory);
                EXPECT_EQ(state, anything);
            }
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        }
        for (const float radius : {5000.0F, 40000.0F, 1e9F, FLT_MAX, std::numeric_limits<float>::infinity()}) {
            const test::CountedAllocator allocator;
            NoxiInpaintState *state = anything;
            EXPECT_EQ(m.init(&state, map.data(), map.step(), mask.data(), mask.step(), mask.roi(), radius, 0),
                      noxStsNoMemory);
            EXPECT_EQ(state, anything);
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        }
    }
}

TEST(Inpaint, StatusesInOrder) {
    const Image<Nox8u> mask(8, 4), image(8, 4, 3);
    const Image<Nox32f> map(8, 4);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Members &m : members) {
        NoxiInpaintState *state = nullptr;
        const auto init = [&](const Nox32f *d, int dStep, const Nox8u *k, int kStep, NoxiSize roi, float radius,
                              int method) { return m.init(&state, d, dStep, k, kStep, roi, radius, method); };
        EXPECT_EQ(m.init(nullptr, map.data(), 32, mask.data(), 8, {0, 4}, 3, 0), noxStsNullPointer);
        EXPECT_EQ(init(nullptr, 32, mask.data(), 8, {0, 4}, 3, 0), noxStsNullPointer);
        EXPECT_EQ(init(map.data(), 32, nullptr, 8, {8, 0}, 3, 0), noxStsNullPointer);
        EXPECT_EQ(init(map.data(), 3, mask.data(), 7, {0, 4}, 3, 0), noxStsBadSize);
        EXPECT_EQ(init(map.data(), 3, mask.data(), 7, {8, 0}, 3, 0), noxStsBadSize);
        EXPECT_EQ(init(map.data(), 33, mask.data(), 7, {8, 4}, 3, 2), noxStsBadStep);
        EXPECT_EQ(init(map.data(), 31, mask.data(), 8, {8, 4}, 3, 2), noxStsBadStep);
        EXPECT_EQ(init(map.data(), 33, mask.data(), 8, {8, 4}, 3, 2), noxStsOddStep);
        for (const int method : {-1, 2})
            EXPECT_EQ(init(map.data(), 32, mask.data(), 8, {8, 4}, 3, method), noxStsBadArgument);
        for (const float radius : {0.99F, -3.0F, nan})
            EXPECT_EQ(init(map.data(), 32, mask.data(), 8, {8, 4}, radius, 1), noxStsBadArgument);
        EXPECT_EQ(state, nullptr);
        ASSERT_EQ(init(map.data(), 32, mask.data(), 8, {8, 4}, 1, 1), noxStsNoError);
        Image<Nox8u> dst(8, 4, 3);
        const int step = 8 * m.channels;
        const auto run = [&](const Nox8u *s, int sStep, Nox8u *d, int dStep, NoxiSize roi) {
            return m.run(s, sStep, d, dStep, roi, state);
        };
        EXPECT_EQ(m.run(image.data(), step, dst.data(), step, {0, 4}, nullptr), noxStsNullPointer);
        EXPECT_EQ(run(nullptr, step, dst.data(), step, {0, 4}), noxStsNullPointer);
        EXPECT_EQ(run(image.data(), step, nullptr, step, {0, 4}), noxStsNullPointer);
        EXPECT_EQ(run(image.data(), 1, dst.data(), 1, {0, 4}), noxStsBadSize);
        EXPECT_EQ(run(image.data(), 1, dst.data(), 1, {8, 0}), noxStsBadSize);
        EXPECT_EQ(run(image.data(), 1, dst.data(), 1, {7, 4}), noxStsBadSize);
        EXPECT_EQ(run(image.data(), 1, dst.data(), 1, {8, 3}), noxStsBadSize);
        EXPECT_EQ(run(image.data(), step - 1, dst.data(), step, {8, 4}), noxStsBadStep);
        EXPECT_EQ(run(image.data(), step, dst.data(), step - 1, {8, 4}), noxStsBadStep);
        EXPECT_EQ(run(image.data(), step, dst.data(), step, {8, 4}), noxStsNoError);
        EXPECT_EQ(m.free(state), noxStsNoError);
        EXPECT_EQ(m.free(nullptr), noxStsNullPointer);
    }
}
