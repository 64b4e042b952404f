// Layer states, and both layer operators.
#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "noxcv.h"
#include "pyramid/noxvpyrlayer.h"
#include "reference/pyrlayer.h"
#include "support/allocator.h"
#include "support/image.h"

using test::Image;

namespace {

template <class T, int Channels>
struct Member;

#define MEMBER(TYPE, TAG, SELECTOR, CHANNELS)                                                                          \
    template <>                                                                                                        \
    struct Member<TYPE, CHANNELS> {                                                                                    \
        using Element = TYPE;                                                                                          \
        static constexpr int channels = CHANNELS, selector = SELECTOR;                                                 \
        static constexpr auto initDown = noxiPyramidLayerDownInitAlloc_##TAG##_C##CHANNELS##R;                         \
        static constexpr auto initUp = noxiPyramidLayerUpInitAlloc_##TAG##_C##CHANNELS##R;                             \
        static constexpr auto down = noxiPyramidLayerDown_##TAG##_C##CHANNELS##R;                                      \
        static constexpr auto up = noxiPyramidLayerUp_##TAG##_C##CHANNELS##R;                                          \
        static constexpr auto freeDown = noxiPyramidLayerDownFree_##TAG##_C##CHANNELS##R;                              \
        static constexpr auto freeUp = noxiPyramidLayerUpFree_##TAG##_C##CHANNELS##R;                                  \
    };
MEMBER(Nox8u, 8u, 1, 1)
MEMBER(Nox8u, 8u, 1, 3)
MEMBER(Nox16u, 16u, 5, 1)
MEMBER(Nox16u, 16u, 5, 3)
MEMBER(Nox32f, 32f, 13, 1)
MEMBER(Nox32f, 32f, 13, 3)
#undef MEMBER

/// Memory that ends at a guard page, so that a state that is too small shows.
test::GuardedBytes *guarded = nullptr;
void *guardedMalloc(std::size_t size) {
    guarded = new test::GuardedBytes(size);
    return guarded->data();
}
void guardedFree(void *) {
    delete guarded;
    guarded = nullptr;
}

class GuardedAllocator {
public:
    GuardedAllocator() {
        nox_malloc = guardedMalloc;
        nox_free = guardedFree;
    }
    ~GuardedAllocator() {
        nox_malloc = malloc_;
        nox_free = free_;
    }

private:
    void *(*malloc_)(std::size_t) = nox_malloc;
    void (*free_)(void *) = nox_free;
};

template <class T>
std::vector<std::vector<reference::pyrlayer::LayerTap<T>>> kernels() {
    return {{1, 2, 1},          {1, 4, 6, 4, 1},
            {0, 1, 0},          {1, 6, 15, 20, 15, 6, 1},
            {-1, 3, 12, 3, -1}, {2, 0, 3, 5, 9, 5, 3, 0, 2}};
}

std::vector<NoxiSize> sizes() {
    std::vector<NoxiSize> all = {{40, 31}, {64, 48}, {33, 7}, {7, 33}, {101, 65}, {300, 9}};
    for (int height = 1; height <= 7; height += 2)
        for (int width = 1; width <= 9; width += (width < 4 ? 1 : 2))
            all.push_back({width, height});
    return all;
}

constexpr float rates[] = {1.07F, 1.5F, 1.99999F, 2.0F, 2.1F, 3.0F, 4.7F, 10.0F};

template <class M>
class PyrLayer : public ::testing::Test {};
using Members = ::testing::Types<Member<Nox8u, 1>, Member<Nox8u, 3>, Member<Nox16u, 1>, Member<Nox16u, 3>,
                                 Member<Nox32f, 1>, Member<Nox32f, 3>>;
TYPED_TEST_SUITE(PyrLayer, Members);

template <class M>
void expectDown(NoxiSize size, const std::vector<reference::pyrlayer::LayerTap<typename M::Element>> &kernel,
                float rate, test::Random &random, int padding, bool extreme = false) {
    using T = typename M::Element;
    const int n = int(kernel.size());
    NoxiPyramidLayerState *state = nullptr;
    {
        const GuardedAllocator guard;
        ASSERT_GE(M::initDown(&state, size, rate, kernel.data(), n, 2), noxStsNoError);
        NoxiSize dstRoi{};
        noxiGetPyramidDownROI(size, &dstRoi, rate);
        Image<T> src(size.width, size.height, M::channels, padding);
        Image<T> actual(dstRoi.width, dstRoi.height, M::channels, padding), expected(actual);
        test::randomize(src, random);
        if (extreme)
            src.generate([&](int, int, int) { return random() % 2 ? std::numeric_limits<T>::max() : T(0); });
        ASSERT_EQ(M::down(src.data(), src.step(), size, actual.data(), actual.step(), dstRoi, state), noxStsNoError);
        reference::pyrlayer::LayerTap<T> unwritten;
        std::memset(&unwritten, 0xFF, sizeof(unwritten));
        const auto taps = reference::pyrlayer::normalised(kernel, true, unwritten);
        reference::pyrlayer::layerDown(src.data(), src.step(), size, expected.data(), expected.step(), dstRoi,
                                       M::channels, taps, n, rate);
        ASSERT_TRUE(test::sameImage(actual, expected))
            << "source " << size.width << "x" << size.height << " rate " << rate << " taps " << n;
        M::freeDown(state);
    }
}

/// Pixels at the ends of the range alone, under kernels whose sums of two cells fit 16 bits by little or not at all
/// ({-63, 251, -63} is the first that does not), and whose negative taps are odd numbers before their last shift.
TYPED_TEST(PyrLayer, ExtremePixelsUnderNegativeTaps) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(12);
    const std::vector<std::vector<int>> kernels = {{-2, 7, -2},       {-63, 251, -63},   {-1, 5, -1},
                                                   {-1, 7, -1},       {-1, 4, -1},       {-5, 12, -5},
                                                   {-1, 0, 5, 0, -1}, {-3, 5, 7, 5, -3}, {-9, 21, -9}};
    for (const auto &kernel : kernels)
        for (const float rate : {1.5F, 2.0F}) {
            const std::vector<reference::pyrlayer::LayerTap<T>> taps(kernel.begin(), kernel.end());
            for (const NoxiSize size : {NoxiSize{60, 33}, NoxiSize{4, 3}})
                ASSERT_NO_FATAL_FAILURE(expectDown<M>(size, taps, rate, random, 0, true)) << kernel[0];
        }
}

template <class M>
void expectUp(NoxiSize srcRoi, NoxiSize dstRoi,
              const std::vector<reference::pyrlayer::LayerTap<typename M::Element>> &kernel, float rate,
              test::Random &random, int padding) {
    using T = typename M::Element;
    const int n = int(kernel.size());
    NoxiPyramidLayerState *state = nullptr;
    {
        const GuardedAllocator guard;
        ASSERT_GE(M::initUp(&state, dstRoi, rate, kernel.data(), n, 2), noxStsNoError);
    }
    Image<T> src(srcRoi.width, srcRoi.height, M::channels, padding);
    Image<T> actual(dstRoi.width, dstRoi.height, M::channels, padding), expected(actual);
    test::randomize(src, random);
    ASSERT_EQ(M::up(src.data(), src.step(), srcRoi, actual.data(), actual.step(), dstRoi, state), noxStsNoError);
    const auto taps = reference::pyrlayer::normalised(kernel, false, reference::pyrlayer::LayerTap<T>(0));
    reference::pyrlayer::layerUp(src.data(), src.step(), srcRoi, expected.data(), expected.step(), dstRoi, M::channels,
                                 taps, n, rate);
    ASSERT_TRUE(test::sameImage(actual, expected))
        << "source " << srcRoi.width << "x" << srcRoi.height << " to " << dstRoi.width << "x" << dstRoi.height
        << " rate " << rate << " taps " << n;
    const GuardedAllocator guard;
    M::freeUp(state);
}

TYPED_TEST(PyrLayer, DownEqualsReference) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(1);
    for (const NoxiSize size : sizes())
        for (const float rate : rates)
            for (const auto &kernel : kernels<T>())
                expectDown<M>(size, kernel, rate, random, int(random() % 3 * sizeof(T)));
}

TYPED_TEST(PyrLayer, UpEqualsReference) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(2);
    for (const NoxiSize size : sizes())
        for (const float rate : rates) {
            const auto &all = kernels<T>();
            const auto &kernel = all[random() % all.size()];
            const NoxiSize src = {std::min(size.width, 70), std::min(size.height, 40)};
            NoxiSize low{}, high{};
            noxiGetPyramidUpROI(src, &low, &high, rate);
            expectUp<M>(src, low, kernel, rate, random, 0);
            expectUp<M>(src, high, kernel, rate, random, int(random() % 3 * sizeof(T)));
        }
}

/// Kernels of all lengths over next to no image: the scratch of the state, or of the call, just suffices. With a
/// negative tap, and without.
TYPED_TEST(PyrLayer, UpFitsTheSmallestStates) {
    using M = TypeParam;
    test::Random random(6);
    for (int n = 3; n <= 131; n += n > 70 && n < 100 ? 2 : 4)
        for (const NoxiSize src : {NoxiSize{1, 1}, {1, 9}, {9, 1}}) {
            std::vector<reference::pyrlayer::LayerTap<typename M::Element>> kernel(n, 1);
            const float rate = n % 3 == 0 ? 1.0001F : n % 3 == 1 ? 1.5F : 2.0F;
            NoxiSize low{}, high{};
            noxiGetPyramidUpROI(src, &low, &high, rate);
            expectUp<M>(src, low, kernel, rate, random, 0);
            kernel[n / 2] = 2;
            kernel.front() = kernel.back() = -1;
            expectUp<M>(src, high, kernel, rate, random, 0);
        }
}

/// Rows of several strips, and lines that no state of that size can list at once.
TYPED_TEST(PyrLayer, UpOfLongLines) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(7);
    const auto &all = kernels<T>();
    for (const NoxiSize size : {NoxiSize{1500, 2}, {2, 1500}, {1, 700}})
        for (const float rate : {1.0001F, 1.5F, 2.0F, 2.7F}) {
            NoxiSize low{}, high{};
            noxiGetPyramidUpROI(size, &low, &high, rate);
            expectUp<M>(size, random() % 2 ? low : high, all[random() % all.size()], rate, random, 0);
        }
}

/// Places that only the very end of a tap reaches: their sums are so small that the roundings of the samples count.
TYPED_TEST(PyrLayer, UpWithLittleWeightAtSomePlaces) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(8);
    for (const float rate : {1.0001F, 1.01F, 1.999F, 2.001F, 2.999F, 3.9995F, 4.0005F, 5.003F, 7.99F, 9.999F})
        for (const auto &kernel : std::vector<std::vector<reference::pyrlayer::LayerTap<T>>>{
                 {0, 1, 0}, {1, 30000, 1}, {1, 0, 0, 0, 1}, {0, 1, 2, 1, 0}})
            for (const NoxiSize size : {NoxiSize{60, 3}, {3, 60}}) {
                NoxiSize low{}, high{};
                noxiGetPyramidUpROI(size, &low, &high, rate);
                expectUp<M>(size, high, kernel, rate, random, 0);
            }
}

/// Floats that are no numbers stay where they belong.
TYPED_TEST(PyrLayer, UpKeepsSpecialFloatsApart) {
    using M = TypeParam;
    using T = typename M::Element;
    if constexpr (std::is_floating_point_v<T>) {
        constexpr float infinity = std::numeric_limits<float>::infinity();
        for (const float rate : {1.07F, 1.5F, 2.0F, 3.0F}) {
            const NoxiSize size = {40, 30};
            NoxiSize low{}, high{};
            noxiGetPyramidUpROI(size, &low, &high, rate);
            for (const auto &kernel : kernels<T>()) {
                const int n = int(kernel.size());
                NoxiPyramidLayerState *state = nullptr;
                ASSERT_GE(M::initUp(&state, high, rate, kernel.data(), n, 2), noxStsNoError);
                Image<T> src(size.width, size.height, M::channels), actual(high.width, high.height, M::channels),
                    expected(actual);
                src.generate([&](int x, int y, int c) {
                    return (x + 3 * y + c) % 47 == 0 ? infinity : (x * y + c) % 61 == 5 ? -infinity : -0.0F;
                });
                ASSERT_EQ(M::up(src.data(), src.step(), size, actual.data(), actual.step(), high, state),
                          noxStsNoError);
                reference::pyrlayer::layerUp(src.data(), src.step(), size, expected.data(), expected.step(), high,
                                             M::channels, reference::pyrlayer::normalised(kernel, false, T(0)), n,
                                             rate);
                EXPECT_TRUE(test::sameImage(actual, expected)) << "rate " << rate << " taps " << n;
                M::freeUp(state);
            }
        }
    }
}

TYPED_TEST(PyrLayer, ZeroSumKernelsKeepTheirOwnLayout) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(3);
    const std::vector<reference::pyrlayer::LayerTap<T>> three = {1, -2, 1}, five = {3, -1, -4, -1, 3};
    for (const auto &kernel : {three, five}) {
        expectDown<M>({20, 15}, kernel, 1.5F, random, 0);
        expectDown<M>({2, 3}, kernel, 2.0F, random, 0);
        expectUp<M>({20, 15}, {30, 22}, kernel, 1.5F, random, 0);
    }
}

TYPED_TEST(PyrLayer, ManyAndLargeTapsStayExact) {
    using M = TypeParam;
    using T = typename M::Element;
    test::Random random(4);
    std::vector<reference::pyrlayer::LayerTap<T>> many(41, 1), large = {-30000, 32000, -4100, 32000, -30000};
    expectDown<M>({90, 60}, many, 1.7F, random, 0);
    expectDown<M>({30, 60}, many, 2.0F, random, 0);
    expectDown<M>({60, 50}, large, 2.3F, random, 0);
    expectUp<M>({30, 20}, {45, 30}, many, 1.5F, random, 0);
    // Taps that wrap to 15474, 13654, 15474, 13654, 15474: none is negative, and sums leave 32 bits all the same.
    expectUp<M>({42, 28}, {44, 29}, {-17, 21, -17, 21, -17}, 1.07F, random, 0);
}

TYPED_TEST(PyrLayer, FlatImagesStayFlat) {
    using M = TypeParam;
    using T = typename M::Element;
    if constexpr (std::is_integral_v<T>) {
        const std::vector<Nox16s> kernel = {1, 4, 6, 4, 1};
        const int highest = std::numeric_limits<T>::max();
        for (const float rate : {1.5F, 2.0F, 2.7F, 5.0F})
            for (int value = 0; value <= highest; value += (highest > 255 ? 61 : 1)) {
                const NoxiSize src = {9, 7};
                NoxiSize low{}, high{};
                noxiGetPyramidUpROI(src, &low, &high, rate);
                NoxiPyramidLayerState *state = nullptr;
                M::initUp(&state, high, rate, kernel.data(), 5, 2);
                Image<T> small(9, 7, M::channels), large(high.width, high.height, M::channels), flat(large);
                small.fill(T(value));
                flat.fill(T(value));
                M::up(small.data(), small.step(), src, large.data(), large.step(), high, state);
                ASSERT_TRUE(test::sameImage(large, flat)) << "rate " << rate << " value " << value;
                M::freeUp(state);
            }
    }
}

TYPED_TEST(PyrLayer, SmallerImagesThanTheState) {
    using M = TypeParam;
    using T = typename M::Element;
    const std::vector<reference::pyrlayer::LayerTap<T>> kernel = {1, 2, 1};
    NoxiPyramidLayerState *state = nullptr;
    ASSERT_EQ(M::initDown(&state, {40, 30}, 2.0F, kernel.data(), 3, 2), noxStsNoError);
    Image<T> src(41, 30, M::channels), dst(21, 15, M::channels);
    src.fill(T(3));
    EXPECT_EQ(M::down(src.data(), src.step(), {20, 10}, dst.data(), dst.step(), {10, 5}, state), noxStsNoError);
    // Larger ones would not fit its scratch.
    EXPECT_EQ(M::down(src.data(), src.step(), {41, 30}, dst.data(), dst.step(), {21, 15}, state), noxStsBadSize);
    M::freeDown(state);
}

TYPED_TEST(PyrLayer, CallStatusesInOrder) {
    using M = TypeParam;
    using T = typename M::Element;
    const std::vector<reference::pyrlayer::LayerTap<T>> kernel = {1, 2, 1};
    const std::function<NoxStatus(const T *, int, NoxiSize, T *, int, NoxiSize, NoxiPyramidLayerState *)> calls[] = {
        M::down, M::up};
    for (const bool up : {false, true}) {
        NoxiPyramidLayerState *state = nullptr;
        ASSERT_EQ((up ? M::initUp : M::initDown)(&state, {8, 6}, 2.0F, kernel.data(), 3, 2), noxStsNoError);
        const auto &call = calls[up ? 1 : 0];
        const NoxiSize from = up ? NoxiSize{4, 3} : NoxiSize{8, 6}, to = up ? NoxiSize{8, 6} : NoxiSize{4, 3};
        Image<T> src(from.width, from.height, M::channels), dst(to.width, to.height, M::channels);
        src.fill(T(1));
        dst.fill(T(9));
        const Image<T> before(dst);
        const int s = src.step(), d = dst.step();
        EXPECT_EQ(call(nullptr, 0, {0, 0}, dst.data(), d, to, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, {0, 0}, nullptr, d, to, state), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, {0, 0}, dst.data(), d, to, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, {0, from.height}, dst.data(), 0, to, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s - 1, from, dst.data(), d, {1, 1}, state), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, from, dst.data(), d - 1, to, state), noxStsBadStep);
        if (sizeof(T) > 1) {
            EXPECT_EQ(call(src.data(), s + 1, from, dst.data(), d, {1, 1}, state), noxStsOddStep);
            EXPECT_EQ(call(src.data(), s, from, dst.data(), d + 1, to, state), noxStsOddStep);
        }
        EXPECT_EQ(call(src.data(), s, from, dst.data(), d, {to.width - 2, to.height}, state), noxStsBadSize);
        EXPECT_EQ(call(src.data(), s, from, dst.data(), d, {to.width, to.height - 2}, state), noxStsBadSize);
        state->rate = 11.0F;
        EXPECT_EQ(call(src.data(), s, from, dst.data(), d, {1, 1}, state), noxStsBadArgument);
        EXPECT_TRUE(test::sameImage(dst, before));
        (up ? M::freeUp : M::freeDown)(state);
    }
}

TYPED_TEST(PyrLayer, InitStatusesInOrder) {
    using M = TypeParam;
    using T = typename M::Element;
    const std::vector<reference::pyrlayer::LayerTap<T>> kernel = {1, 2, 3};
    NoxiPyramidLayerState *state = nullptr;
    for (const auto init : {M::initDown, M::initUp}) {
        EXPECT_EQ(init(nullptr, {0, 0}, 0, kernel.data(), 3, 2), noxStsNullPointer);
        EXPECT_EQ(init(&state, {0, 0}, 0, nullptr, 3, 2), noxStsNullPointer);
        EXPECT_EQ(init(&state, {5, 0}, 0, kernel.data(), 2, 1), noxStsBadSize);
        EXPECT_EQ(init(&state, {5, 5}, 2, kernel.data(), 3, 1), noxStsBadArgument);
        EXPECT_EQ(init(&state, {5, 5}, 1, kernel.data(), 3, 2), noxStsBadArgument);
        EXPECT_EQ(init(&state, {5, 5}, 2, kernel.data(), 1, 2), noxStsBadArgument);
        EXPECT_EQ(init(&state, {5, 5}, 2, kernel.data(), 4, 2), noxStsBadArgument);
        const test::CountedAllocator failing(1);
        EXPECT_EQ(init(&state, {5, 5}, 2, kernel.data(), 3, 2), noxStsNoMemory);
        EXPECT_EQ(test::CountedAllocator::live(), 0);
    }
    for (const auto init : {M::initDown, M::initUp}) {
        EXPECT_EQ(init(&state, {5, 5}, 2, kernel.data(), 3, 2), noxStsKernelNotSymmetric);
        M::freeUp(state);
    }
    EXPECT_EQ(M::freeDown(nullptr), noxStsNullPointer);
    EXPECT_EQ(M::freeUp(nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiPyramidLayerDownFree(nullptr), noxStsNullPointer);
    EXPECT_EQ(noxiPyramidLayerUpFree(nullptr), noxStsNullPointer);
}

TYPED_TEST(PyrLayer, AsymmetricKernelWorksFromItsLeftHalf) {
    using M = TypeParam;
    using T = typename M::Element;
    const std::vector<reference::pyrlayer::LayerTap<T>> skewed = {1, 2, 3}, even = {1, 2, 1};
    Image<T> src(16, 12, M::channels), a(8, 6, M::channels), b(8, 6, M::channels);
    test::Random random(5);
    test::randomize(src, random);
    NoxiPyramidLayerState *one = nullptr, *two = nullptr;
    EXPECT_EQ(M::initDown(&one, src.roi(), 2, skewed.data(), 3, 2), noxStsKernelNotSymmetric);
    EXPECT_EQ(M::initDown(&two, src.roi(), 2, even.data(), 3, 2), noxStsNoError);
    M::down(src.data(), src.step(), src.roi(), a.data(), a.step(), a.roi(), one);
    M::down(src.data(), src.step(), src.roi(), b.data(), b.step(), b.roi(), two);
    EXPECT_TRUE(test::sameImage(a, b));
    M::freeDown(one);
    M::freeDown(two);
}

TYPED_TEST(PyrLayer, StateIsOneAllocationOfTheStatedSize) {
    using M = TypeParam;
    using T = typename M::Element;
    constexpr bool floating = std::is_floating_point_v<T>;
    constexpr long long ch = M::channels, wider = sizeof(NoxiPyramidLayerState) - 36;
    for (const NoxiSize roi : {NoxiSize{3, 9}, {40, 4}, {40, 31}, {5, 5}})
        for (const int n : {3, 5, 7}) {
            const std::vector<reference::pyrlayer::LayerTap<T>> kernel(n, 1);
            const long long w = roi.width, h = roi.height, m = std::max(w, h);
            const long long up = floating ? ((n + w - 1) * (n + h - 1) + n + m - 1) * 4 * ch + n * 4 + 108
                                          : ((n + w - 1) * (n + h - 1) + (n + m - 1) * 2) * 4 * ch + n * 2 + 108;
            const long long t = floating ? (w * ch + 3) / 4 * 4 : (w * ch + 7) / 8 * 8;
            const long long base = floating ? (std::max(t, h) * ch + n + (n + h) * (n + t)) * 4
                                            : n * 2 + std::max(t, h) * ch * 4 + (n + h) * (n + t) * 4;
            const long long down = w > n && h > n ? n * 20 + (n / 2 + n) * n * (long long)(sizeof(T)) * ch * 2 +
                                                        n * 32 + t * 4 * n + base + 240
                                                  : base + 140;
            const test::CountedAllocator counted;
            NoxiPyramidLayerState *state = nullptr;
            ASSERT_EQ(M::initUp(&state, roi, 2, kernel.data(), n, 2), noxStsNoError);
            EXPECT_EQ((long long)test::CountedAllocator::lastSize(), up + wider + 32 + (long long)sizeof(void *));
            EXPECT_EQ(test::CountedAllocator::live(), 1);
            noxiPyramidLayerUpFree(state);
            ASSERT_EQ(M::initDown(&state, roi, 2, kernel.data(), n, 2), noxStsNoError);
            EXPECT_EQ((long long)test::CountedAllocator::lastSize(), down + wider + 32 + (long long)sizeof(void *));
            noxiPyramidLayerDownFree(state);
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        }
}

/// The copy with its border, and the scratch where the state of a small image has too little for a long kernel.
TYPED_TEST(PyrLayer, UpReportsFailedAllocations) {
    using M = TypeParam;
    using T = typename M::Element;
    for (const int n : {3, 15, 19, 27}) {
        const std::vector<reference::pyrlayer::LayerTap<T>> kernel(n, 1);
        Image<T> src(1, 1, M::channels), dst(2, 2, M::channels);
        src.fill(T(1));
        NoxiPyramidLayerState *state = nullptr;
        ASSERT_EQ(M::initUp(&state, dst.roi(), 2, kernel.data(), n, 2), noxStsNoError);
        const auto call = [&] {
            return M::up(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), state);
        };
        int allocations = 0;
        {
            const test::CountedAllocator counted;
            EXPECT_EQ(call(), noxStsNoError);
            allocations = test::CountedAllocator::allocations();
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        }
        EXPECT_EQ(allocations, n >= 19 && sizeof(T) == 1 && M::channels == 3 ? 2 : allocations);
        dst.fill(T(7));
        const Image<T> before(dst);
        for (int i = 1; i <= allocations; ++i) {
            const test::CountedAllocator failing(i);
            EXPECT_EQ(call(), noxStsNoMemory);
            EXPECT_TRUE(test::sameImage(dst, before));
            EXPECT_EQ(test::CountedAllocator::live(), 0);
        }
        M::freeUp(state);
    }
}

} // namespace
