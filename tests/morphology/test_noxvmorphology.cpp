#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>

#include "masks.h"
#include "members.h"
#include "morphology/noxvminmax.h"
#include "morphology/noxvmorphology.h"
#include "support/allocator.h"

using namespace test;
using namespace test::morphology;

namespace {

template <class Layout>
struct Calls {
    using T = typename Layout::T;
    static constexpr int channels = Layout::channels, e = int(sizeof(T));

    static NoxStatus size(int roiWidth, const Mask &mask, int *bytes) {
        return NOX_MEMBER(Layout, noxiMorphologyGetSize)(roiWidth, mask.cells.data(), mask.size, bytes);
    }
    static NoxStatus init(int roiWidth, const Mask &mask, NoxiMorphState *state) {
        return NOX_MEMBER(Layout, noxiMorphologyInit)(roiWidth, mask.cells.data(), mask.size, mask.anchor, state);
    }
    static NoxStatus initAlloc(int roiWidth, const Mask &mask, NoxiMorphState **state) {
        return NOX_MEMBER(Layout, noxiMorphologyInitAlloc)(roiWidth, mask.cells.data(), mask.size, mask.anchor, state);
    }
    static NoxStatus run(bool largest, const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int border,
                         const NoxiMorphState *state) {
        return (largest ? NOX_MEMBER(Layout, noxiDilateBorderReplicate)
                        : NOX_MEMBER(Layout, noxiErodeBorderReplicate))(src, srcStep, dst, dstStep, roi, border, state);
    }
    /// A state in memory of exactly its size, filled with garbage, at a multiple of 4 bytes.
    static void compare(const Mask &mask, NoxiSize size, Random &random) {
        const int roiWidth = size.width + int(random() % 3);
        NoxiMorphState *allocated = nullptr;
        ASSERT_EQ(initAlloc(roiWidth, mask, &allocated), noxStsNoError);
        const int bytes = allocated->stateSize, kind = allocated->kernelKind, shift = int(random() % 4) * 4;
        int queried = 0;
        Mask centred(mask);
        centred.anchor = {mask.size.width >> 1, mask.size.height >> 1};
        NoxiMorphState *asQueried = nullptr;
        ASSERT_EQ(Calls::size(roiWidth, mask, &queried), noxStsNoError);
        ASSERT_EQ(initAlloc(roiWidth, centred, &asQueried), noxStsNoError);
        ASSERT_EQ(queried, asQueried->stateSize);
        ASSERT_TRUE(queried == bytes || kind != asQueried->kernelKind) << mask.name;
        noxiMorphologyFree(asQueried);
        noxiMorphologyFree(allocated);
        const ShiftedBuffer memory(bytes + (4 - bytes % 4) % 4, shift);
        auto *state = reinterpret_cast<NoxiMorphState *>(memory.data());
        ASSERT_EQ(init(roiWidth, mask, state), noxStsNoError);
        Image<T> src(size.width, size.height, channels, int(random() % 2) * 4, int(random() % 8));
        roughen(src, random);
        for (const bool largest : {false, true}) {
            Image<T> dst(size.width, size.height, channels, int(random() % 2) * 8, int(random() % 8)),
                expected(size.width, size.height, channels);
            reference::morphology::overMask<T>(largest, source(src), result(expected), size, mask.cells.data(),
                                               mask.size, mask.anchor);
            if (kind == 0)
                limit(expected, largest);
            ASSERT_EQ(run(largest, src.data(), src.step(), dst.data(), dst.step(), size, 1, state), noxStsNoError);
            ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)))
                << mask.name << " anchor " << mask.anchor.x << "," << mask.anchor.y;
            ASSERT_TRUE(memory.intact());
        }
    }
    /// The general kind gives finite numbers only.
    static void limit(Image<T> &image, bool /*largest*/) {
        if constexpr (e == 4)
            image.generate(
                [&](int x, int y, int c) { return std::clamp<float>(image.at(x, y, c), -FLT_MAX, FLT_MAX); });
    }
};

template <class Layout>
class Morphology : public ::testing::Test {};
TYPED_TEST_SUITE(Morphology, Layouts);

TYPED_TEST(Morphology, EveryKindOfMask) {
    Random random(21 + TypeParam::channels);
    for (const Mask &mask : someMasks(random))
        for (const NoxiSize size : {NoxiSize{1, 1}, {1, 9}, {6, 2}, {13, 16}, {31, 7}, {70, 41}})
            if (random() % 2)
                Calls<TypeParam>::compare(mask, size, random);
}

TYPED_TEST(Morphology, RandomMasks) {
    Random random(22 + TypeParam::channels);
    for (int round = 0; round < 120; ++round) {
        const Mask mask = randomMask(random);
        Calls<TypeParam>::compare(mask, {1 + int(random() % 60), 1 + int(random() % 30)}, random);
    }
}

TYPED_TEST(Morphology, MasksOfManyCells) {
    Random random(23);
    Mask mask = Mask::of("many", {45, 40}, [&](int, int) { return random() % 2 != 0; }); // more than one list of cells
    Calls<TypeParam>::compare(mask, {50, 44}, random);
    Calls<TypeParam>::compare(Mask::of("tall", {1, 300}, [](int, int) { return true; }), {9, 320}, random);
    Calls<TypeParam>::compare(Mask::of("tall on low", {2, 300}, [](int, int) { return true; }), {9, 20}, random);
}

/// An image that is too large for the nearest caches: there the rows that come next are asked for.
template <class Layout>
NoxiSize largeSize() {
    const int width = 1033 / Layout::channels, row = 2 * width * Layout::channels * Calls<Layout>::e;
    return {width, 2 + (1 << 20) / row};
}

TYPED_TEST(Morphology, ImagesThatLeaveTheCaches) {
    Random random(24);
    const NoxiSize size = largeSize<TypeParam>();
    Calls<TypeParam>::compare(Mask::of("cells", {3, 4}, [](int x, int y) { return (x + y) % 2 == 0; }), size, random);
    Calls<TypeParam>::compare(Mask::of("runs", {9, 3}, [](int x, int y) { return x != 2 + 2 * y; }), size, random);
}

TEST(MorphologyFull, ManyCellsOnALargeImage) {
    Random random(25);
    const Mask mask = Mask::of("many", {37, 36}, [&](int, int) { return random() % 2 != 0; });
    Calls<Layout<Nox32f, 1>>::compare(mask, largeSize<Layout<Nox32f, 1>>(), random);
}

TYPED_TEST(Morphology, KindsAndFields) {
    constexpr int e = Calls<TypeParam>::e, channels = TypeParam::channels;
    const bool narrow = e == 1;
    Random random(1);
    const auto stateOf = [=](const Mask &mask) {
        NoxiMorphState *state = nullptr;
        EXPECT_EQ(Calls<TypeParam>::initAlloc(100, mask, &state), noxStsNoError);
        EXPECT_EQ(state->dataType, e == 1 ? 1 : 13);
        EXPECT_EQ(state->channels, channels);
        EXPECT_EQ(state->roiWidth, 100);
        EXPECT_EQ(state->reserved, -1);
        EXPECT_EQ(std::memcmp(state->maskCopy, mask.cells.data(), mask.cells.size()), 0);
        return state;
    };
    const auto kindOf = [&](const Mask &mask) {
        NoxiMorphState *state = stateOf(mask);
        const int kind = state->kernelKind;
        EXPECT_EQ(state->kernelInfo == nullptr, kind == 0 || kind == 3);
        noxiMorphologyFree(state);
        return kind;
    };
    const auto full = [](int w, int h) { return Mask::of("full", {w, h}, [](int, int) { return true; }); };
    EXPECT_EQ(kindOf(full(3, 3)), narrow ? 0 : 1);
    EXPECT_EQ(kindOf(full(4, 3)), narrow ? 0 : 1);
    EXPECT_EQ(kindOf(full(13, 1)), narrow && channels > 1 ? 0 : 1);
    EXPECT_EQ(kindOf(full(4, 4)), narrow && channels > 1 ? 0 : 1);
    EXPECT_EQ(kindOf(full(34, 1)), narrow && channels > 1 ? 0 : 1);
    EXPECT_EQ(kindOf(full(5, 7)), 1);
    EXPECT_EQ(kindOf(full(1, 300)), 0);
    EXPECT_EQ(kindOf(full(1, 256)), 0);
    EXPECT_EQ(kindOf(full(1, 255)), 1);
    const auto empty = [](int w, int h) { return Mask::of("empty", {w, h}, [](int, int) { return false; }); };
    EXPECT_EQ(kindOf(empty(2, 300)), 3);
    EXPECT_EQ(kindOf(empty(1, 1)), 3);
    // A cross of 5 x 6 and 5 x 7 cells; of 8 x 11 and 9 x 10.
    const auto cross = [](int w, int h) {
        return Mask::of("cross", {w, h}, [=](int x, int y) { return x == w / 2 || y == h / 2; });
    };
    EXPECT_EQ(kindOf(cross(5, 6)), narrow ? 0 : 2);
    EXPECT_EQ(kindOf(cross(5, 7)), narrow && channels > 1 ? 0 : 2);
    EXPECT_EQ(kindOf(cross(8, 11)), narrow && channels > 1 ? 0 : 2);
    EXPECT_EQ(kindOf(cross(9, 10)), 2);
    // The area is the mask's, not that of the box.
    EXPECT_EQ(kindOf(Mask::of("margins", {7, 7}, [](int x, int y) { return x == 2 && y < 2; })), 1);
    // An empty row under the anchor leaves an ellipse one; an anchor beside a run does not.
    Mask gap = Mask::of("gap", {11, 11}, [](int x, int y) { return y != 5 && x >= y / 3 && x < 11 - y / 3; });
    EXPECT_EQ(kindOf(gap), 2);
    gap.anchor = {0, 5};
    EXPECT_EQ(kindOf(gap), 0);
    gap.anchor = {5, 10};
    EXPECT_EQ(kindOf(gap), 2);
    Mask low = Mask::of("low", {11, 11}, [](int x, int y) { return y > 2 && y < 9 && x >= y / 2 && x < 11 - y / 2; });
    EXPECT_EQ(kindOf(low), 2);
    low.anchor.y = 2;
    EXPECT_EQ(kindOf(low), 0);
    low.anchor.y = 9;
    EXPECT_EQ(kindOf(low), 0);
    // Runs of one length must begin in one column.
    EXPECT_EQ(kindOf(Mask::of("leaning", {11, 11}, [](int x, int y) { return x >= y / 4 + 2 && x < y / 4 + 7; })), 0);
    EXPECT_EQ(kindOf(Mask::of("holed", {11, 11}, [](int x, int y) { return x != 3 || y != 4; })), 0);

    Mask rectangle = Mask::of("rectangle", {20, 10}, [](int x, int y) { return x >= 3 && x < 9 && y >= 2 && y < 7; });
    rectangle.anchor = {1, 9};
    NoxiMorphState *state = stateOf(rectangle);
    const auto *info = static_cast<const nox::KernelInfo *>(state->kernelInfo);
    EXPECT_EQ(state->kernelKind, 1);
    EXPECT_EQ(state->maskWidth, 6);
    EXPECT_EQ(state->maskHeight, 5);
    EXPECT_EQ(state->anchorX, -2);
    EXPECT_EQ(state->anchorY, 7);
    EXPECT_EQ(info->width, 6);
    EXPECT_EQ(info->height, 5);
    EXPECT_EQ(info->anchorX, -2);
    EXPECT_EQ(info->anchorY, 7);
    noxiMorphologyFree(state);

    state = stateOf(cross(9, 11));
    info = static_cast<const nox::KernelInfo *>(state->kernelInfo);
    ASSERT_EQ(state->kernelKind, 2);
    EXPECT_EQ(info->runRows, 11);
    ASSERT_EQ(info->runClasses, 2);
    EXPECT_EQ(info->classLength[0], 9);
    EXPECT_EQ(info->classLength[1], 1);
    EXPECT_EQ(info->classAnchor[0], 4);
    EXPECT_EQ(info->classAnchor[1], 0);
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(info->rowIndex[i], i);
        EXPECT_EQ(info->rowClass[i], i == 5 ? 0 : 1);
    }
    noxiMorphologyFree(state);

    Mask general = Mask::of("general", {5, 4}, [](int x, int y) { return (x + y) % 2 == 0; });
    general.anchor = {1, 3};
    state = stateOf(general);
    ASSERT_EQ(state->kernelKind, 0);
    EXPECT_EQ(reinterpret_cast<std::size_t>(state->maskCopy) % 16, 0U);
    EXPECT_EQ(state->rightExtent, 3);
    EXPECT_EQ(state->bottomExtent, 0);
    EXPECT_EQ(state->rowStride, (105 * e * channels + 15) / 16 * 16);
    for (int i = 0; i < 20; ++i)
        for (int lane = 0; lane < (narrow ? 8 : 4); ++lane) {
            const bool set = general.cells[i] != 0;
            if (narrow) {
                EXPECT_EQ(static_cast<Nox8u *>(state->erodeTable)[8 * i + lane], set ? 0 : 0xFF);
                EXPECT_EQ(static_cast<Nox8u *>(state->dilateTable)[8 * i + lane], set ? 0xFF : 0);
            } else {
                EXPECT_EQ(static_cast<float *>(state->erodeTable)[4 * i + lane], set ? -FLT_MAX : FLT_MAX);
                EXPECT_EQ(static_cast<float *>(state->dilateTable)[4 * i + lane], set ? FLT_MAX : -FLT_MAX);
            }
        }
    noxiMorphologyFree(state);
}

TYPED_TEST(Morphology, SizeFormulas) {
    constexpr int e = Calls<TypeParam>::e, channels = TypeParam::channels, p = int(sizeof(void *));
    const int header = int(sizeof(NoxiMorphState)) - 72, info = int(sizeof(nox::KernelInfo)) - 40,
              row = 200 * e * channels;
    const auto sizeOf = [](const Mask &mask) {
        int bytes = 0;
        EXPECT_EQ(Calls<TypeParam>::size(200, mask, &bytes), noxStsNoError);
        return bytes;
    };
    EXPECT_EQ(sizeOf(Mask::of("empty", {5, 5}, [](int, int) { return false; })), 32 + 80 + header);
    EXPECT_EQ(sizeOf(Mask::of("rectangle", {9, 5}, [](int x, int) { return x > 1; })),
              48 + 112 + header + info + 4 * p * 5 + 10 * (row + 32) + 32);
    EXPECT_EQ(sizeOf(Mask::of("cross", {9, 11}, [](int x, int y) { return x == 4 || y == 5; })),
              112 + 128 + header + info + 8 * 13 + (11 * 2 + 1) * (row + 32) + 56 * p + 32);
    const int stride = ((200 + 6) * e * channels + 15) / 16 * 16;
    EXPECT_EQ(sizeOf(Mask::of("general", {6, 7}, [](int x, int y) { return (x + y) % 2 == 0; })),
              48 * (e == 1 ? 17 : 33) + 96 + header + std::max(14 * stride, e * channels * 7));
}

TYPED_TEST(Morphology, StatusesInOrder) {
    using T = typename TypeParam::T;
    constexpr int channels = TypeParam::channels;
    Mask mask = Mask::of("full", {5, 7}, [](int, int) { return true; });
    const auto size = NOX_MEMBER(TypeParam, noxiMorphologyGetSize);
    const auto init = NOX_MEMBER(TypeParam, noxiMorphologyInit);
    const auto initAlloc = NOX_MEMBER(TypeParam, noxiMorphologyInitAlloc);
    int bytes = 5;
    const Nox8u *cells = mask.cells.data();
    EXPECT_EQ(size(0, nullptr, mask.size, &bytes), noxStsNullPointer);
    EXPECT_EQ(size(0, cells, mask.size, nullptr), noxStsBadSize);
    EXPECT_EQ(size(8, cells, {0, 7}, nullptr), noxStsBadSize);
    EXPECT_EQ(size(8, cells, {5, -7}, nullptr), noxStsBadSize);
    EXPECT_EQ(size(8, cells, mask.size, nullptr), noxStsNullPointer);
    EXPECT_EQ(size(INT_MAX, cells, mask.size, &bytes), noxStsBadSize);
    EXPECT_EQ(bytes, 5);
    NoxiMorphState *state = nullptr;
    EXPECT_EQ(init(8, nullptr, {0, 0}, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(init(8, cells, {0, 7}, {-1, 0}, nullptr), noxStsBadSize);
    for (const NoxiPoint anchor : {NoxiPoint{-1, 0}, {5, 0}, {0, -1}, {0, 7}}) {
        EXPECT_EQ(init(8, cells, mask.size, anchor, nullptr), noxStsBadAnchor);
        EXPECT_EQ(initAlloc(8, cells, mask.size, anchor, nullptr), noxStsBadAnchor);
    }
    EXPECT_EQ(init(8, cells, mask.size, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(initAlloc(8, cells, mask.size, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(initAlloc(INT_MAX, cells, mask.size, {0, 0}, &state), noxStsBadSize);
    {
        const CountedAllocator failing(1);
        EXPECT_EQ(initAlloc(8, cells, mask.size, {0, 0}, &state), noxStsNoMemory);
        EXPECT_EQ(state, nullptr);
        EXPECT_EQ(initAlloc(8, cells, mask.size, {0, 0}, &state), noxStsNoError);
        EXPECT_EQ(noxiMorphologyFree(state), noxStsNoError);
        EXPECT_EQ(CountedAllocator::live(), 0);
        EXPECT_EQ(noxiMorphologyFree(nullptr), noxStsNullPointer);
    }
    ASSERT_EQ(initAlloc(8, cells, mask.size, {0, 0}, &state), noxStsNoError);
    Image<T> src(9, 4, channels), dst(9, 4, channels);
    src.fill(1);
    dst.fill(9);
    const Image<T> before(dst);
    const int s = src.step();
    for (const bool largest : {false, true}) {
        const auto call = [&](const T *in, int inStep, T *out, int outStep, NoxiSize roi, int border,
                              const NoxiMorphState *with) {
            return Calls<TypeParam>::run(largest, in, inStep, out, outStep, roi, border, with);
        };
        EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 4}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 4}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 4}, 0, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 4}, 0, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {8, 0}, 0, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s - 1, dst.data(), s, {9, 4}, 0, state), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, dst.data(), s - 1, {9, 4}, 0, state), noxStsBadStep);
        if (sizeof(T) == 4) {
            EXPECT_EQ(call(src.data(), s + 1, dst.data(), s - 1, {9, 4}, 0, state), noxStsBadStep);
            EXPECT_EQ(call(src.data(), s + 1, dst.data(), s, {9, 4}, 0, state), noxStsOddStep);
            EXPECT_EQ(call(src.data(), s, dst.data(), s + 2, {9, 4}, 0, state), noxStsOddStep);
        }
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {9, 4}, 0, state), noxStsBadArgument);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {9, 4}, 2, state), noxStsBadArgument);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {9, 4}, 1, state), noxStsBadSize);
        EXPECT_TRUE(sameImage(dst, before));
    }
    EXPECT_EQ(Calls<TypeParam>::run(false, src.data(), s, dst.data(), s, {5, 4}, 1, state), noxStsNoError);
    noxiMorphologyFree(state);
}

TEST(MorphologyFloat, GeneralMasksLimitTheirCells) {
    // The order of operands: a not-a-number under a set cell is the table's limit.
    constexpr float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    const float values[] = {nan, infinity, -infinity, 0.0F, 3.0F, -2.0F, FLT_MAX, 7.0F};
    Random random(5);
    const Mask mask = Mask::of("general", {4, 3}, [](int x, int y) { return (x ^ y) & 1; });
    NoxiMorphState *state = nullptr;
    ASSERT_EQ(noxiMorphologyInitAlloc_32f_C1R(60, mask.cells.data(), mask.size, mask.anchor, &state), noxStsNoError);
    for (const NoxiSize size : {NoxiSize{60, 20}, {3, 2}}) {
        Image<Nox32f> src(size.width, size.height), dst(size.width, size.height), expected(size.width, size.height);
        src.generate([&](int, int, int) { return values[random() % std::size(values)]; });
        for (const bool largest : {false, true}) {
            reference::morphology::overLimitedMask(largest, source(src), result(expected), size, mask.cells.data(),
                                                   mask.size, mask.anchor);
            const auto entry = largest ? noxiDilateBorderReplicate_32f_C1R : noxiErodeBorderReplicate_32f_C1R;
            ASSERT_EQ(entry(src.data(), src.step(), dst.data(), dst.step(), size, 1, state), noxStsNoError);
            ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)));
        }
    }
    noxiMorphologyFree(state);
}

TEST(MorphologyKernels, OneRowOfAMask) {
    Random random(6);
    const Mask mask = Mask::of("general", {7, 4}, [&](int, int) { return random() % 3 == 0; });
    NoxiMorphState *state = nullptr;
    ASSERT_EQ(noxiMorphologyInitAlloc_8u_C3R(50, mask.cells.data(), mask.size, {0, 0}, &state), noxStsNoError);
    Image<Nox8u> src(56, 4, 3, 5), dst(50, 1, 3), expected(56, 4, 3);
    randomize(src, random);
    for (const bool largest : {false, true}) {
        (largest ? Dilate_8u_C3S
                 : Erode_8u_C3S)(src.data(), src.step(), dst.data(), 50,
                                 static_cast<const Nox8u *>(largest ? state->dilateTable : state->erodeTable), 7, 4);
        reference::morphology::overMask<Nox8u>(largest, source(src), result(expected), src.roi(), mask.cells.data(),
                                               mask.size, {0, 0});
        for (int x = 0; x < 50; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(dst.at(x, 0, c), expected.at(x, 0, c));
    }
    noxiMorphologyFree(state);
}

TEST(MorphologyKernels, OneBuilderForAllMembers) {
    const Nox8u cells[9] = {1, 0, 1, 0, 1, 0, 1, 0, 1};
    int direct = 0, member = 0;
    EXPECT_EQ(ownMorphologyInitAlloc(13, 4, 33, cells, {3, 3}, {1, 1}, &direct, 0), noxStsNoError);
    EXPECT_EQ(noxiMorphologyGetSize_32f_C4R(33, cells, {3, 3}, &member), noxStsNoError);
    EXPECT_EQ(direct, member);
    void *state = nullptr;
    EXPECT_EQ(ownMorphologyInitAlloc(13, 4, 33, cells, {3, 3}, {1, 1}, &state, 2), noxStsNoError);
    EXPECT_EQ(static_cast<NoxiMorphState *>(state)->stateSize, direct);
    noxiMorphologyFree(static_cast<NoxiMorphState *>(state));
}

TEST(MorphologyStates, AnOffCentreAnchorCanNeedMoreThanTheQueryTells) {
    Mask disc = Mask::of("disc", {15, 15}, [](int x, int y) { return (x - 7) * (x - 7) + (y - 7) * (y - 7) <= 50; });
    int queried = 0;
    ASSERT_EQ(noxiMorphologyGetSize_32f_C1R(20, disc.cells.data(), disc.size, &queried), noxStsNoError);
    disc.anchor = {0, 0};
    NoxiMorphState *state = nullptr;
    ASSERT_EQ(noxiMorphologyInitAlloc_32f_C1R(20, disc.cells.data(), disc.size, disc.anchor, &state), noxStsNoError);
    EXPECT_EQ(state->kernelKind, 0);
    EXPECT_GT(state->stateSize, queried);
    noxiMorphologyFree(state);
}

} // namespace
