#include <climits>
#include <cmath>
#include <cstring>

#include "masks.h"
#include "members.h"
#include "support/allocator.h"

using namespace test;
using namespace test::morphology;

namespace {

template <class Layout>
struct Calls {
    using T = typename Layout::T;
    static constexpr int channels = Layout::channels;
    using Operation = NoxStatus (*)(const T *, int, T *, int, NoxiSize, int, const NoxiMorphAdvState *);

    static std::vector<Operation> operations() {
        return {NOX_MEMBER(Layout, noxiMorphOpenBorder), NOX_MEMBER(Layout, noxiMorphCloseBorder),
                NOX_MEMBER(Layout, noxiMorphTophatBorder), NOX_MEMBER(Layout, noxiMorphBlackhatBorder),
                NOX_MEMBER(Layout, noxiMorphGradientBorder)};
    }
    static NoxStatus initAlloc(NoxiMorphAdvState **state, NoxiSize roi, const Mask &mask) {
        return NOX_MEMBER(Layout, noxiMorphAdvInitAlloc)(state, roi, mask.cells.data(), mask.size, mask.anchor);
    }
    static NoxStatus init(NoxiMorphAdvState *state, NoxiSize roi, const Mask &mask) {
        return NOX_MEMBER(Layout, noxiMorphAdvInit)(state, roi, mask.cells.data(), mask.size, mask.anchor);
    }
    static int sizeOf(NoxiSize roi, const Mask &mask) {
        int size = 0;
        EXPECT_EQ(NOX_MEMBER(Layout, noxiMorphAdvGetSize)(roi, mask.cells.data(), mask.size, &size), noxStsNoError);
        return size;
    }
    static void expected(int operation, const Image<T> &src, Image<T> &dst, const Mask &mask) {
        Mask turned(mask);
        std::reverse(turned.cells.begin(), turned.cells.end());
        turned.anchor = {mask.size.width - 1 - mask.anchor.x, mask.size.height - 1 - mask.anchor.y};
        const NoxiSize roi = src.roi();
        Image<T> middle(roi.width, roi.height, channels), last(roi.width, roi.height, channels);
        const bool dilateFirst = operation == 1 || operation == 3 || operation == 4;
        const Mask &second = operation == 4 ? mask : turned;
        reference::morphology::overMask<T>(dilateFirst, source(src), result(middle), roi, mask.cells.data(), mask.size,
                                           mask.anchor);
        reference::morphology::overMask<T>(!dilateFirst, source(operation == 4 ? src : middle), result(last), roi,
                                           second.cells.data(), mask.size, second.anchor);
        dst.generate([&](int x, int y, int c) -> T {
            const T v = last.at(x, y, c);
            const T from = operation == 2 ? src.at(x, y, c) : operation == 3 ? v : middle.at(x, y, c);
            const T less = operation == 3 ? src.at(x, y, c) : v;
            if (operation < 2)
                return v;
            const T difference = T(from - less);
            return from > less ? difference : T(0);
        });
    }
};

template <class Layout>
class Compound : public ::testing::Test {};
TYPED_TEST_SUITE(Compound, Layouts);

TYPED_TEST(Compound, EveryKindOfMask) {
    using T = typename TypeParam::T;
    Random random(31 + TypeParam::channels);
    for (const Mask &mask : someMasks(random))
        for (const NoxiSize size : {NoxiSize{1, 1}, {12, 9}, {50, 23}}) {
            if (random() % 3 != 0)
                continue;
            const int bytes = Calls<TypeParam>::sizeOf(size, mask);
            const ShiftedBuffer memory(bytes + (4 - bytes % 4) % 4, int(random() % 8) * 4);
            auto *state = reinterpret_cast<NoxiMorphAdvState *>(memory.data());
            ASSERT_EQ(Calls<TypeParam>::init(state, size, mask), noxStsNoError);
            Image<T> src(size.width, size.height, TypeParam::channels, 4, int(random() % 8));
            randomize(src, random);
            for (int operation = 0; operation < 5; ++operation) {
                Image<T> dst(size.width, size.height, TypeParam::channels, 8, int(random() % 8)),
                    expected(size.width, size.height, TypeParam::channels);
                Calls<TypeParam>::expected(operation, src, expected, mask);
                ASSERT_EQ(Calls<TypeParam>::operations()[operation](src.data(), src.step(), dst.data(), dst.step(),
                                                                    size, 1, state),
                          noxStsNoError);
                ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)))
                    << mask.name << " operation " << operation;
            }
            ASSERT_TRUE(memory.intact());
        }
}

TYPED_TEST(Compound, StateFields) {
    constexpr int e = int(sizeof(typename TypeParam::T)) * TypeParam::channels;
    Mask disc = Mask::of("disc", {15, 15}, [](int x, int y) { return (x - 7) * (x - 7) + (y - 7) * (y - 7) <= 52; });
    disc.anchor = {6, 7};
    NoxiMorphAdvState *state = nullptr;
    ASSERT_EQ(Calls<TypeParam>::initAlloc(&state, {101, 20}, disc), noxStsNoError);
    EXPECT_EQ(state->forwardState->kernelKind, 0); // a stack of runs goes the general way here
    EXPECT_EQ(state->reflectedState->kernelKind, 0);
    EXPECT_EQ(state->reflectedState->anchorX, 8);
    EXPECT_EQ(state->reflectedState->anchorY, 7);
    EXPECT_EQ(std::memcmp(state->forwardState->maskCopy, disc.cells.data(), disc.cells.size()), 0);
    for (std::size_t i = 0; i < disc.cells.size(); ++i)
        EXPECT_EQ(state->reflectedState->maskCopy[i], disc.cells[disc.cells.size() - 1 - i]);
    EXPECT_EQ(state->tempSize, (101 * e + 31) / 32 * 32 * 20);
    EXPECT_EQ(state->tempFlags, 0);
    EXPECT_EQ(reinterpret_cast<std::size_t>(state->tempImage) % 32, 0U);
    EXPECT_EQ(reinterpret_cast<std::size_t>(state->reflectedState) % 32, 0U);
    noxiMorphAdvFree(state);
    const Mask box = Mask::of("box", {9, 9}, [](int x, int y) { return x > 2 && y > 4; });
    ASSERT_EQ(Calls<TypeParam>::initAlloc(&state, {101, 20}, box), noxStsNoError);
    EXPECT_EQ(state->forwardState->kernelKind, 1);
    EXPECT_EQ(state->reflectedState->kernelKind, 1);
    noxiMorphAdvFree(state);
    int one = 0;
    ASSERT_EQ(NOX_MEMBER(TypeParam, noxiMorphologyGetSize)(101, box.cells.data(), box.size, &one), noxStsNoError);
    EXPECT_EQ(Calls<TypeParam>::sizeOf({101, 20}, box),
              (101 * e + 31) / 32 * 32 * 20 + 84 + int(sizeof(NoxiMorphAdvState)) - 20 + 2 * one);
}

TYPED_TEST(Compound, StatusesInOrder) {
    using T = typename TypeParam::T;
    const Mask mask = Mask::of("full", {5, 7}, [](int, int) { return true; });
    const Nox8u *cells = mask.cells.data();
    const auto query = NOX_MEMBER(TypeParam, noxiMorphAdvGetSize);
    const auto init = NOX_MEMBER(TypeParam, noxiMorphAdvInit);
    const auto initAlloc = NOX_MEMBER(TypeParam, noxiMorphAdvInitAlloc);
    int size = 5;
    EXPECT_EQ(query({0, 0}, nullptr, mask.size, nullptr), noxStsBadSize);
    EXPECT_EQ(query({0, 3}, nullptr, {0, 0}, nullptr), noxStsNullPointer);
    EXPECT_EQ(query({0, 3}, nullptr, {0, 0}, &size), noxStsNullPointer);
    EXPECT_EQ(query({0, 3}, cells, mask.size, &size), noxStsBadSize);
    EXPECT_EQ(query({3, 3}, cells, {0, 7}, &size), noxStsBadSize);
    EXPECT_EQ(query({1 << 20, 1 << 20}, cells, mask.size, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(init(nullptr, {0, 0}, nullptr, mask.size, {-1, 0}), noxStsBadSize);
    EXPECT_EQ(init(nullptr, {0, 3}, nullptr, mask.size, {-1, 0}), noxStsNullPointer);
    NoxiMorphAdvState unused{};
    EXPECT_EQ(init(&unused, {0, 3}, nullptr, mask.size, {-1, 0}), noxStsNullPointer);
    EXPECT_EQ(init(&unused, {0, 3}, cells, mask.size, {-1, 0}), noxStsBadSize);
    EXPECT_EQ(init(&unused, {3, 3}, cells, mask.size, {-1, 0}), noxStsBadAnchor);
    EXPECT_EQ(init(&unused, {3, 3}, cells, mask.size, {0, 7}), noxStsBadAnchor);
    EXPECT_EQ(init(&unused, {1 << 20, 1 << 20}, cells, mask.size, {0, 0}), noxStsBadSize);
    NoxiMorphAdvState *state = nullptr;
    EXPECT_EQ(initAlloc(nullptr, {0, 0}, nullptr, {0, 0}, {0, 0}), noxStsNullPointer);
    {
        const CountedAllocator failing(1);
        EXPECT_EQ(initAlloc(&state, {9, 9}, cells, mask.size, {0, 0}), noxStsNoMemory);
        EXPECT_EQ(initAlloc(&state, {9, 0}, cells, mask.size, {0, 0}), noxStsBadSize);
        EXPECT_EQ(initAlloc(&state, {9, 9}, nullptr, mask.size, {0, 0}), noxStsNullPointer);
        EXPECT_EQ(initAlloc(&state, {9, 9}, cells, mask.size, {5, 0}), noxStsBadAnchor);
        EXPECT_EQ(initAlloc(&state, {1 << 20, 1 << 20}, cells, mask.size, {0, 0}), noxStsBadSize);
        EXPECT_EQ(state, nullptr);
        EXPECT_EQ(CountedAllocator::live(), 0);
        EXPECT_EQ(initAlloc(&state, {9, 9}, cells, mask.size, {0, 0}), noxStsNoError);
        EXPECT_EQ(noxiMorphAdvFree(state), noxStsNoError);
        EXPECT_EQ(CountedAllocator::live(), 0);
        EXPECT_EQ(noxiMorphAdvFree(nullptr), noxStsNullPointer);
    }
    ASSERT_EQ(initAlloc(&state, {40, 9}, cells, mask.size, {2, 3}), noxStsNoError);
    Image<T> src(41, 9, TypeParam::channels), dst(41, 9, TypeParam::channels);
    src.fill(3);
    dst.fill(9);
    const Image<T> before(dst);
    const int s = src.step();
    for (const auto call : Calls<TypeParam>::operations()) {
        EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 0}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 9}, 0, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 9}, 0, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s - 1, dst.data(), s, {41, 9}, 0, state), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, dst.data(), s - 1, {41, 9}, 0, state), noxStsBadStep);
        if (sizeof(T) == 4) {
            EXPECT_EQ(call(src.data(), s, dst.data(), s + 1, {41, 9}, 0, state), noxStsOddStep);
        }
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {41, 9}, 0, state), noxStsBadArgument);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {41, 9}, 1, state), noxStsBadSize); // wider
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {40, 8}, 1, state), noxStsBadSize); // lower
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {7, 9}, 1, state), noxStsBadSize);  // much narrower
    }
    EXPECT_TRUE(sameImage(dst, before));
    for (const auto call : Calls<TypeParam>::operations())
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {40, 9}, 1, state), noxStsNoError);
    noxiMorphAdvFree(state);
}

// --- grey ---

template <class Element>
struct GrayCalls;
template <>
struct GrayCalls<Nox8u> {
    using Kernel = Nox32s;
    static constexpr auto size = noxiMorphGrayGetSize_8u_C1R;
    static constexpr auto init = noxiMorphGrayInit_8u_C1R;
    static constexpr auto initAlloc = noxiMorphGrayInitAlloc_8u_C1R;
    static constexpr auto release = noxiMorphGrayFree_8u_C1R;
    static constexpr auto dilate = noxiGrayDilateBorder_8u_C1R;
    static constexpr auto erode = noxiGrayErodeBorder_8u_C1R;
};
template <>
struct GrayCalls<Nox32f> {
    using Kernel = Nox32f;
    static constexpr auto size = noxiMorphGrayGetSize_32f_C1R;
    static constexpr auto init = noxiMorphGrayInit_32f_C1R;
    static constexpr auto initAlloc = noxiMorphGrayInitAlloc_32f_C1R;
    static constexpr auto release = noxiMorphGrayFree_32f_C1R;
    static constexpr auto dilate = noxiGrayDilateBorder_32f_C1R;
    static constexpr auto erode = noxiGrayErodeBorder_32f_C1R;
};

template <class Element>
class GrayMorphology : public ::testing::Test {};
TYPED_TEST_SUITE(GrayMorphology, test::morphology::GrayTypes);

TYPED_TEST(GrayMorphology, EverySizeAndKernel) {
    using T = TypeParam;
    using Call = GrayCalls<T>;
    using Kernel = typename Call::Kernel;
    Random random(41);
    for (const NoxiSize size : testSizes())
        for (const NoxiSize mask : {NoxiSize{1, 1}, {3, 3}, {5, 4}, {1, 9}, {20, 2}, {19, 17}}) {
            if ((long long)size.width * size.height * mask.width * mask.height > 400000)
                continue;
            std::vector<Kernel> kernel;
            const int range = random() % 2 ? 60 : 700;
            for (int i = 0; i < mask.width * mask.height; ++i)
                kernel.push_back(Kernel(int(random() % (2 * range)) - range));
            const NoxiPoint anchor{int(random() % mask.width), int(random() % mask.height)};
            int bytes = 0;
            ASSERT_EQ(Call::size(size, kernel.data(), mask, &bytes), noxStsNoError);
            ASSERT_EQ(bytes, mask.width * mask.height * 4 + int(sizeof(NoxiMorphGrayState)));
            const ShiftedBuffer memory(bytes, int(random() % 4) * 4);
            auto *state = reinterpret_cast<NoxiMorphGrayState *>(memory.data());
            ASSERT_EQ(Call::init(state, size, kernel.data(), mask, anchor), noxStsNoError);
            Image<T> src(size.width, size.height, 1, 4, int(random() % 8));
            roughen(src, random);
            for (const bool largest : {false, true}) {
                Image<T> dst(size.width, size.height, 1, 0, int(random() % 8)), expected(size.width, size.height);
                reference::morphology::gray(largest, source(src), result(expected), size, kernel.data(), mask, anchor);
                ASSERT_EQ((largest ? Call::dilate : Call::erode)(src.data(), src.step(), dst.data(), dst.step(), size,
                                                                 1, state),
                          noxStsNoError);
                ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)))
                    << mask.width << "x" << mask.height;
            }
            ASSERT_TRUE(memory.intact());
        }
}

TYPED_TEST(GrayMorphology, StatusesInOrder) {
    using T = TypeParam;
    using Call = GrayCalls<T>;
    const std::vector<typename Call::Kernel> kernel(15, 1);
    int size = 5;
    EXPECT_EQ(Call::size({0, 0}, nullptr, {5, 3}, &size), noxStsNullPointer);
    EXPECT_EQ(Call::size({0, 0}, kernel.data(), {5, 3}, nullptr), noxStsNullPointer);
    EXPECT_EQ(Call::size({0, 4}, kernel.data(), {5, 3}, &size), noxStsBadSize);
    EXPECT_EQ(Call::size({4, 4}, kernel.data(), {5, 0}, &size), noxStsBadSize);
    EXPECT_EQ(Call::size({4, 4}, kernel.data(), {INT_MAX, INT_MAX}, &size), noxStsBadSize);
    EXPECT_EQ(Call::size({4, 4}, kernel.data(), {INT_MAX / 4, 1}, &size), noxStsBadSize);
    EXPECT_EQ(size, 5);
    NoxiMorphGrayState *state = nullptr, unused{};
    EXPECT_EQ(Call::init(nullptr, {0, 0}, kernel.data(), {5, 3}, {-1, 0}), noxStsNullPointer);
    EXPECT_EQ(Call::init(&unused, {0, 0}, nullptr, {5, 3}, {-1, 0}), noxStsNullPointer);
    EXPECT_EQ(Call::init(&unused, {8, 0}, kernel.data(), {5, 3}, {-1, 0}), noxStsBadSize);
    EXPECT_EQ(Call::init(&unused, {8, 8}, kernel.data(), {0, 3}, {-1, 0}), noxStsBadSize);
    EXPECT_EQ(Call::init(&unused, {8, 8}, kernel.data(), {5, 3}, {-1, 0}), noxStsBadAnchor);
    EXPECT_EQ(Call::init(&unused, {8, 8}, kernel.data(), {5, 3}, {0, 3}), noxStsBadAnchor);
    EXPECT_EQ(Call::initAlloc(nullptr, {0, 0}, kernel.data(), {5, 3}, {0, 0}), noxStsNullPointer);
    EXPECT_EQ(Call::initAlloc(&state, {0, 8}, kernel.data(), {5, 3}, {5, 0}), noxStsBadSize);
    EXPECT_EQ(Call::initAlloc(&state, {8, 8}, kernel.data(), {5, 3}, {5, 0}), noxStsBadAnchor);
    {
        const CountedAllocator failing(1);
        EXPECT_EQ(Call::initAlloc(&state, {8, 4}, kernel.data(), {5, 3}, {2, 1}), noxStsNoMemory);
        EXPECT_EQ(state, nullptr);
        EXPECT_EQ(Call::initAlloc(&state, {8, 4}, kernel.data(), {5, 3}, {2, 1}), noxStsNoError);
        EXPECT_EQ(Call::release(state), noxStsNoError);
        EXPECT_EQ(CountedAllocator::live(), 0);
        EXPECT_EQ(Call::release(nullptr), noxStsNullPointer);
    }
    ASSERT_EQ(Call::initAlloc(&state, {8, 4}, kernel.data(), {5, 3}, {2, 1}), noxStsNoError);
    EXPECT_EQ(state->maskWidth, 5);
    EXPECT_EQ(state->maskHeight, 3);
    EXPECT_EQ(state->anchorX, 2);
    EXPECT_EQ(state->anchorY, 1);
    EXPECT_EQ(state->roiWidth, 8);
    EXPECT_EQ(state->roiHeight, 4);
    Image<T> src(9, 5), dst(9, 5);
    src.fill(3);
    dst.fill(9);
    const Image<T> before(dst);
    const int s = src.step();
    for (const auto call : {Call::dilate, Call::erode}) {
        EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 0}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, nullptr, 0, {0, 0}, 0, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 0}, 0, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {9, 0}, 0, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s - 1, dst.data(), s, {9, 5}, 0, state), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, dst.data(), s - 1, {9, 5}, 0, state), noxStsBadStep);
        if (sizeof(T) == 4) {
            EXPECT_EQ(call(src.data(), s, dst.data(), s + 1, {9, 5}, 0, state), noxStsOddStep);
        }
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {9, 5}, 0, state), noxStsBadArgument);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {9, 4}, 1, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, {8, 5}, 1, state), noxStsBadSize);
        EXPECT_TRUE(sameImage(dst, before));
    }
    EXPECT_EQ(Call::dilate(src.data(), s, dst.data(), s, {8, 4}, 1, state), noxStsNoError);
    EXPECT_EQ(dst.at(3, 3), T(4));
    Call::release(state);
}

TEST(GrayMorphologyEdges, ResultsThatNoSumReaches) {
    const Nox32s low[] = {-300}, high[] = {300}, extreme[] = {INT_MIN, INT_MAX};
    NoxiMorphGrayState *state = nullptr;
    Image<Nox8u> src(40, 2), dst(40, 2);
    src.generate([](int x, int, int) { return x * 6; });
    const auto run = [&](const Nox32s *kernel, NoxiSize mask, bool largest) {
        EXPECT_EQ(noxiMorphGrayInitAlloc_8u_C1R(&state, {40, 2}, kernel, mask, {0, 0}), noxStsNoError);
        (largest ? noxiGrayDilateBorder_8u_C1R : noxiGrayErodeBorder_8u_C1R)(src.data(), src.step(), dst.data(),
                                                                             dst.step(), {40, 2}, 1, state);
        noxiMorphGrayFree_8u_C1R(state);
        return int(dst.at(20, 1));
    };
    EXPECT_EQ(run(low, {1, 1}, true), 0);
    EXPECT_EQ(run(high, {1, 1}, false), 255);
    EXPECT_EQ(run(extreme, {2, 1}, true), 255);
    EXPECT_EQ(run(extreme, {2, 1}, false), 0);
}

} // namespace
