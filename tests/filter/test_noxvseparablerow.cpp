#include <numeric>

#include "noxcv.h"
#include "reference/separable.h"
#include "support/image.h"
#include "support/rowset.h"
#include "support/threads.h"

using test::Buffer;
using test::Image;

namespace {

/// What a test varies in a call.
struct Setting {
    NoxiSize size;
    int kernelSize, anchor, borderType, divisor;
};

template <class TypeParam>
class RowPipeline : public ::testing::Test {};

using Wrapping = reference::separable::WrappingSum;
using Extended = reference::separable::ExtendedSum;

// Each member: types, channels, the library's calls and the reference's arithmetic.
struct Row8uC1 {
    using Pixel = Nox8u;
    using Out = Nox16s;
    using Tap = Nox16s;
    static constexpr int channels = 1, perTap = 4, rest = 32;
    static constexpr bool divides = true;
    static constexpr auto call = noxiFilterRowBorderPipeline_8u16s_C1R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R;
    template <class... A>
    static void reference(int divisor, int, const Nox16s *kernel, int kernelSize, A &&...run) {
        (run.template operator()<Wrapping>(kernel, kernelSize, reference::separable::ClampedQuotient<Nox16s>(divisor)),
         ...);
    }
};
struct Row8uC3 : Row8uC1 {
    static constexpr int channels = 3, perTap = 12;
    static constexpr auto call = noxiFilterRowBorderPipeline_8u16s_C3R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R;
};
struct Row16sC3 : Row8uC1 {
    using Pixel = Nox16s;
    static constexpr int channels = 3, perTap = 28;
    static constexpr auto call = noxiFilterRowBorderPipeline_16s_C3R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_16s_C3R;
    template <class... A>
    static void reference(int divisor, int, const Nox16s *kernel, int kernelSize, A &&...run) {
        (run.template operator()<Extended>(kernel, kernelSize, reference::separable::ClampedQuotient<Nox16s>(divisor)),
         ...);
    }
};
struct Row16sC1 : Row16sC3 {
    static constexpr int channels = 1, perTap = 48, rest = 80;
    static constexpr auto call = noxiFilterRowBorderPipeline_16s_C1R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_16s_C1R;
    template <class Run>
    static void reference(int divisor, int size, const Nox16s *kernel, int kernelSize, Run &&run) {
        if (size == 3 || size == 5)
            return Row16sC3::reference(divisor, size, kernel, kernelSize, run);
        const auto taps = reference::separable::foldedTaps(kernel, kernelSize, divisor);
        run.template operator()<Extended>(taps.data(), kernelSize, reference::separable::ClampedQuotient<Nox16s>(1));
    }
};
struct RowLowC3 : Row16sC3 {
    static constexpr int perTap = 208, rest = 64;
    static constexpr auto call = noxiFilterRowBorderPipeline_Low_16s_C3R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R;
    template <class Run>
    static void reference(int divisor, int, const Nox16s *kernel, int kernelSize, Run &&run) {
        run.template operator()<Wrapping>(kernel, kernelSize, reference::separable::LowProduct(divisor));
    }
};
struct RowLowC1 : RowLowC3 {
    static constexpr int channels = 1, perTap = 24;
    static constexpr auto call = noxiFilterRowBorderPipeline_Low_16s_C1R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R;
    template <class Run>
    static void reference(int divisor, int size, const Nox16s *kernel, int kernelSize, Run &&run) {
        if (size != 5)
            return RowLowC3::reference(divisor, size, kernel, kernelSize, run);
        run.template operator()<Wrapping>(kernel, kernelSize, reference::separable::LowQuotient(divisor));
    }
};
struct Row32fC1 {
    using Pixel = Nox32f;
    using Out = Nox32f;
    using Tap = Nox32f;
    static constexpr int channels = 1, perTap = 16, rest = 32;
    static constexpr bool divides = false;
    static constexpr auto call = noxiFilterRowBorderPipeline_32f_C1R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_32f_C1R;
    template <class Run>
    static void reference(int, int, const Nox32f *kernel, int kernelSize, Run &&run) {
        run.template operator()<Extended>(kernel, kernelSize, reference::separable::Rounded());
    }
};
struct Row32fC3 : Row32fC1 {
    static constexpr int channels = 3, perTap = 192;
    static constexpr auto call = noxiFilterRowBorderPipeline_32f_C3R;
    static constexpr auto size = noxiFilterRowBorderPipelineGetBufferSize_32f_C3R;
};

using Members = ::testing::Types<Row8uC1, Row8uC3, Row16sC1, Row16sC3, RowLowC1, RowLowC3, Row32fC1, Row32fC3>;
TYPED_TEST_SUITE(RowPipeline, Members);

// Typed suites have their own form of name, so the long comparisons are plain tests over the same members.
template <class... M, class Body>
void forMembers(::testing::Types<M...>, const Body &body) {
    (body.template operator()<M>(), ...);
}

template <class M>
NoxStatus invoke(const typename M::Pixel *src, int srcStep, typename M::Out **rows, const Setting &s,
                 const typename M::Tap *kernel, const typename M::Pixel *value, Nox8u *buffer) {
    const auto border = [&] {
        if constexpr (M::channels == 1)
            return value[0];
        else
            return value;
    }();
    if constexpr (M::divides)
        return M::call(src, srcStep, rows, s.size, kernel, s.kernelSize, s.anchor, s.borderType, border, s.divisor,
                       buffer);
    else
        return M::call(src, srcStep, rows, s.size, kernel, s.kernelSize, s.anchor, s.borderType, border, buffer);
}

template <class M>
int queriedSize(const Setting &s) {
    int size = 0;
    EXPECT_EQ(M::size(s.size, s.kernelSize, &size), noxStsNoError);
    return size;
}

/// Runs a member and the reference, and compares.
template <class M>
testing::AssertionResult agrees(const Image<typename M::Pixel> &src, const Setting &s,
                                const std::vector<typename M::Tap> &kernel, int padding = 0) {
    using Out = typename M::Out;
    const typename M::Pixel value[3] = {7, 200, 93};
    Image<Out> actual(s.size.width, s.size.height, M::channels, padding), expected(actual);
    auto rows = test::shuffledRows(actual, 1), expectedRows = test::shuffledRows(expected, 1);
    const Buffer buffer(std::size_t(queriedSize<M>(s)));
    const NoxStatus status = invoke<M>(src.data(), src.step(), rows.data(), s, kernel.data(), value, buffer.data());
    if (status != noxStsNoError)
        return testing::AssertionFailure() << "status " << status;
    M::reference(s.divisor, s.kernelSize, kernel.data(), s.kernelSize,
                 [&]<class Sum>(const auto *taps, int tapCount, auto store) {
                     reference::separable::filterRows<Sum>(src.data(), src.step(), expectedRows.data(), s.size,
                                                           M::channels, taps, tapCount, s.anchor, s.borderType, value,
                                                           store);
                 });
    return test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected))
           << " kernelSize " << s.kernelSize << " anchor " << s.anchor << " border " << s.borderType << " divisor "
           << s.divisor;
}

/// Taps of some size: small ones mostly, so that quotients are not all clamped.
template <class Tap>
std::vector<Tap> someTaps(int count, test::Random &random, int kind) {
    std::vector<Tap> taps(static_cast<std::size_t>(count));
    for (auto &tap : taps)
        if constexpr (std::is_floating_point_v<Tap>)
            tap = kind == 0 ? Tap(int(random() % 9) - 4) : test::randomElement<Tap>(random) / 300;
        else
            tap = static_cast<Tap>(kind == 0   ? int(random() % 9) - 4
                                   : kind == 1 ? int(random() % 300) - 150
                                               : int(random()));
    return taps;
}

int someDivisor(test::Random &random) {
    static const int divisors[] = {1, -1, 2, 3, 9, 16, 41, -41, 45, 55, 61, 82, 256, 1000, 16384, 16385, 32767, -7};
    return divisors[random() % std::size(divisors)];
}

template <class M>
void compareSizes(const std::vector<NoxiSize> &sizes, const std::vector<int> &kernelSizes, int anchorStep) {
    test::Random random(5);
    int kind = 0;
    for (const NoxiSize size : sizes) {
        Image<typename M::Pixel> src(size.width, size.height, M::channels, int(sizeof(typename M::Pixel)));
        test::randomize(src, random);
        for (const int kernelSize : kernelSizes)
            for (int anchor = 0; anchor < kernelSize; anchor += anchorStep)
                for (int border = 0; border <= 4; ++border) {
                    const Setting setting = {size, kernelSize, anchor, border, someDivisor(random)};
                    const auto taps = someTaps<typename M::Tap>(kernelSize, random, ++kind % 3);
                    ASSERT_TRUE(agrees<M>(src, setting, taps, border % 2 * int(sizeof(typename M::Out))));
                }
    }
}

TYPED_TEST(RowPipeline, SmallImagesAllBordersAllAnchors) {
    std::vector<NoxiSize> sizes;
    for (int width = 1; width <= 12; ++width)
        sizes.push_back({width, 2});
    compareSizes<TypeParam>(sizes, {1, 2, 3, 4, 5, 7}, 1);
}

TYPED_TEST(RowPipeline, StandardSizes) {
    compareSizes<TypeParam>({{17, 3}, {31, 2}, {64, 3}, {127, 2}, {301, 2}, {513, 2}}, {1, 3, 5, 6, 9, 15}, 4);
}

/// Short rows go through a strip as a whole, with up to 512 elements and the border's; longer ones in three parts.
TYPED_TEST(RowPipeline, RowsAroundTheLongestShortOne) {
    for (const int kernelSize : {1, 3, 4, 8, 15}) {
        std::vector<NoxiSize> sizes;
        for (int more = -2; more <= 2; ++more)
            sizes.push_back({512 / TypeParam::channels - kernelSize + 1 + more, 2});
        compareSizes<TypeParam>(sizes, {kernelSize}, 3);
    }
    compareSizes<TypeParam>({{515, 1}}, {514, 515, 516, 530}, 257);
}

template <class M>
void compareAllSizesManyKernels() {
    std::vector<NoxiSize> sizes = test::testSizes();
    sizes.insert(sizes.end(), {{531, 3}, {700, 2}, {1031, 1}});
    compareSizes<M>(sizes, {1, 2, 3, 4, 5, 6, 7, 8, 11, 15, 40}, 3);
}

template <class M>
void compareEveryDivisor() {
    test::Random random(6);
    Image<typename M::Pixel> src(40, 1, M::channels);
    for (int divisor = 1; divisor <= (M::divides ? 32767 : 300); ++divisor) {
        // Small pixels, so that sums are close to the divisor and its multiples.
        src.generate([&](int, int, int) { return int(random() % 512) % 255; });
        const int size = divisor % 3 == 0 ? 3 : divisor % 3 == 1 ? 5 : 4;
        ASSERT_TRUE(agrees<M>(src, {{40, 1}, size, 1, 1, divisor % 2 ? divisor : -divisor},
                              someTaps<typename M::Tap>(size, random, divisor % 3)));
    }
}

TEST(RowPipelineFull, AllSizesManyKernels) {
    forMembers(Members(), []<class M>() { ASSERT_NO_FATAL_FAILURE(compareAllSizesManyKernels<M>()); });
}
TEST(RowPipelineFull, EveryDivisor) {
    forMembers(Members(), []<class M>() { ASSERT_NO_FATAL_FAILURE(compareEveryDivisor<M>()); });
}

TYPED_TEST(RowPipeline, ExactMultiplesOfDivisors) {
    using M = TypeParam;
    Image<typename M::Pixel> src(100, 1, M::channels);
    src.generate([](int x, int, int) { return x; });
    for (const int divisor : {41, 45, 55, 61, 82, 83, 97, 107, 3, 9})
        for (const int size : {1, 3, 5, 7}) {
            std::vector<typename M::Tap> taps(std::size_t(size), 0);
            taps[0] = static_cast<typename M::Tap>(divisor);
            ASSERT_TRUE(agrees<M>(src, {{100, 1}, size, 0, 1, divisor}, taps));
            ASSERT_TRUE(agrees<M>(src, {{100, 1}, size, 0, 1, -divisor}, taps));
        }
}

TYPED_TEST(RowPipeline, SumsOfEveryMagnitude) {
    using M = TypeParam;
    if constexpr (M::divides) {
        test::Random random(8);
        Image<typename M::Pixel> src(300, 2, M::channels);
        for (int shift = 0; shift < 16; ++shift)
            for (const int size : {3, 4, 5, 9, 33}) {
                test::randomize(src, random);
                std::vector<Nox16s> taps;
                for (int j = 0; j < size; ++j)
                    taps.push_back(static_cast<Nox16s>(j % 4 == 3 ? -32768 >> shift : int(random()) >> shift));
                for (const int divisor : {1, -3, 41, 1000, 32767, 1 << 20, 0x7fffffff, -0x7fffffff - 1})
                    ASSERT_TRUE(agrees<M>(src, {{300, 2}, size, size / 2, 2, divisor}, taps));
            }
    }
}

TYPED_TEST(RowPipeline, SameResultForEveryThreadCount) {
    using M = TypeParam;
    test::Random random(9);
    const NoxiSize size = {1300, 1037};
    Image<typename M::Pixel> src(size.width, size.height, M::channels);
    test::randomize(src, random);
    for (const int kernelSize : {3, 7}) {
        const Setting setting = {size, kernelSize, 1, 3, 5};
        const auto taps = someTaps<typename M::Tap>(kernelSize, random, 0);
        const typename M::Pixel value[3] = {};
        Image<typename M::Out> expected(size.width, size.height, M::channels);
        auto rows = test::shuffledRows(expected);
        {
            const test::ThreadCount one(1);
            const Buffer buffer(std::size_t(queriedSize<M>(setting)));
            invoke<M>(src.data(), src.step(), rows.data(), setting, taps.data(), value, buffer.data());
        }
        for (const int threads : test::threadCounts()) {
            const test::ThreadCount scope(threads);
            const auto run = [&] {
                Image<typename M::Out> actual(size.width, size.height, M::channels);
                auto shuffled = test::shuffledRows(actual);
                const Buffer buffer(std::size_t(queriedSize<M>(setting)));
                ASSERT_EQ(
                    invoke<M>(src.data(), src.step(), shuffled.data(), setting, taps.data(), value, buffer.data()),
                    noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected)) << threads;
            };
            run();
            if (threads == 3)
                test::insideParallelRegion(run);
        }
    }
}

TYPED_TEST(RowPipeline, BufferMayLieAnywhere) {
    using M = TypeParam;
    test::Random random(10);
    Image<typename M::Pixel> src(9, 2, M::channels);
    test::randomize(src, random);
    const Setting setting = {{9, 2}, 6, 2, 4, 3};
    const auto taps = someTaps<typename M::Tap>(6, random, 0);
    const typename M::Pixel value[3] = {};
    Image<typename M::Out> expected(9, 2, M::channels), actual(9, 2, M::channels);
    auto rows = test::shuffledRows(expected), actualRows = test::shuffledRows(actual);
    const int size = queriedSize<M>(setting);
    for (int slack = 0; slack < 32; ++slack) {
        const Buffer buffer(std::size_t(size + slack));
        auto &target = slack == 0 ? rows : actualRows;
        invoke<M>(src.data(), src.step(), target.data(), setting, taps.data(), value, buffer.data());
        if (slack > 0) {
            ASSERT_TRUE(test::sameImage(actual, expected)) << slack;
        }
    }
}

TYPED_TEST(RowPipeline, BufferSizes) {
    using M = TypeParam;
    for (const int threads : {1, 3}) {
        const test::ThreadCount scope(threads);
        for (const int kernelSize : {1, 3, 8}) {
            int size = 0;
            EXPECT_EQ(M::size({10, 33}, kernelSize, &size), noxStsNoError);
            EXPECT_EQ(size, threads * 32 + threads * (33 + kernelSize) * int(sizeof(void *)) +
                                threads * (M::perTap * kernelSize + M::rest));
        }
    }
    int size = 77;
    EXPECT_EQ(M::size({0, 33}, 0, nullptr), noxStsNullPointer);
    EXPECT_EQ(M::size({0, 33}, 3, &size), noxStsBadSize);
    EXPECT_EQ(M::size({33, 0}, 3, &size), noxStsBadSize);
    EXPECT_EQ(M::size({33, 3}, 0, &size), noxStsBadSize);
    EXPECT_EQ(size, 77);
}

TYPED_TEST(RowPipeline, StatusesInOrder) {
    using M = TypeParam;
    Image<typename M::Pixel> src(8, 2, M::channels, 1);
    Image<typename M::Out> dst(8, 2, M::channels);
    dst.fill(5);
    const Image<typename M::Out> before(dst);
    auto rows = test::shuffledRows(dst);
    const std::vector<typename M::Tap> taps(3, 1);
    const typename M::Pixel value[3] = {};
    const Setting good = {{8, 2}, 3, 1, 1, 1};
    const Buffer buffer(std::size_t(queriedSize<M>(good)));
    const int row = 8 * M::channels * int(sizeof(typename M::Pixel));
    const auto call = [&](const Setting &s, int step, const typename M::Pixel *border = nullptr) {
        return invoke<M>(src.data(), step, rows.data(), s, taps.data(), border ? border : value, buffer.data());
    };
    const Setting worse = {{0, 0}, 0, -1, 9, 0};
    EXPECT_EQ((invoke<M>(nullptr, 0, rows.data(), worse, taps.data(), value, buffer.data())), noxStsNullPointer);
    EXPECT_EQ((invoke<M>(src.data(), 0, nullptr, worse, taps.data(), value, buffer.data())), noxStsNullPointer);
    EXPECT_EQ((invoke<M>(src.data(), 0, rows.data(), worse, nullptr, value, buffer.data())), noxStsNullPointer);
    EXPECT_EQ((invoke<M>(src.data(), 0, rows.data(), worse, taps.data(), value, nullptr)), noxStsNullPointer);
    EXPECT_EQ(call({{8, 0}, 3, 3, 9, 0}, 0), noxStsBadSize);
    EXPECT_EQ(call({{0, 2}, 3, 3, 9, 0}, 0), noxStsBadSize);
    EXPECT_EQ(call({{8, 2}, 0, 3, 9, 0}, 0), noxStsBadSize);
    EXPECT_EQ(call({{8, 2}, 3, 3, 9, 0}, 0), noxStsBadAnchor);
    EXPECT_EQ(call({{8, 2}, 3, -1, 9, 0}, 0), noxStsBadAnchor);
    EXPECT_EQ(call({{8, 2}, 3, 2, 9, 0}, row - 1), noxStsBadStep);
    EXPECT_EQ(call({{8, 2}, 3, 2, 9, 0}, -row), noxStsBadStep);
    EXPECT_EQ(call({{8, 2}, 3, 2, 9, 0}, row + 1), sizeof(typename M::Pixel) > 1 ? noxStsOddStep : noxStsBadArgument);
    EXPECT_EQ(call({{8, 2}, 3, 2, 5, 1}, row), noxStsBadArgument);
    EXPECT_EQ(call({{8, 2}, 3, 2, -1, 1}, row), noxStsBadArgument);
    if constexpr (M::divides) {
        EXPECT_EQ(call({{8, 2}, 3, 2, 4, 0}, row), noxStsBadArgument);
    }
    if constexpr (M::channels == 3) {
        EXPECT_EQ((invoke<M>(src.data(), row, rows.data(), {{8, 2}, 3, 2, 0, 0}, taps.data(), nullptr, buffer.data())),
                  noxStsNullPointer);
        EXPECT_EQ((invoke<M>(src.data(), row, rows.data(), good, taps.data(), nullptr, buffer.data())), noxStsNoError);
        dst.fill(5);
    }
    EXPECT_TRUE(test::sameImage(dst, before));
}

TYPED_TEST(RowPipeline, NullRowEndsTheCallWhenItIsReached) {
    using M = TypeParam;
    Image<typename M::Pixel> src(8, 3, M::channels);
    src.fill(3);
    Image<typename M::Out> dst(8, 3, M::channels);
    dst.fill(5);
    auto rows = test::shuffledRows(dst);
    rows[1] = nullptr;
    const std::vector<typename M::Tap> taps(1, 2);
    const typename M::Pixel value[3] = {};
    const Setting setting = {{8, 3}, 1, 0, 1, 1};
    const Buffer buffer(std::size_t(queriedSize<M>(setting)));
    EXPECT_EQ((invoke<M>(src.data(), src.step(), rows.data(), setting, taps.data(), value, buffer.data())),
              noxStsNullPointer);
    EXPECT_EQ(dst.at(7, 0), 6);
    EXPECT_EQ(dst.at(0, 2), 5);
}

TYPED_TEST(RowPipeline, NullRowOfALargeImageIsTold) {
    using M = TypeParam;
    const NoxiSize size = {1300, 1037};
    Image<typename M::Pixel> src(size.width, size.height, M::channels);
    src.fill(3);
    const std::vector<typename M::Tap> taps(7, 1);
    const typename M::Pixel value[3] = {};
    const Setting setting = {size, 7, 3, 1, 1};
    for (const int threads : test::threadCounts())
        for (const int missing : {0, 517, 1036}) { // of the first, a middle and the last thread
            const test::ThreadCount scope(threads);
            Image<typename M::Out> dst(size.width, size.height, M::channels);
            auto rows = test::shuffledRows(dst);
            rows[std::size_t(missing)] = nullptr;
            const Buffer buffer(std::size_t(queriedSize<M>(setting)));
            ASSERT_EQ((invoke<M>(src.data(), src.step(), rows.data(), setting, taps.data(), value, buffer.data())),
                      noxStsNullPointer)
                << threads << " threads, row " << missing;
        }
}

/// One awkward pixel, or the border value alone, among small integers.
TEST(RowPipeline32f, OneAwkwardPixel) {
    test::Random random(14);
    for (const int kernelSize : {1, 2, 3, 4, 5, 7, 11})
        for (int awkward = -1; awkward < 40; ++awkward) {
            Image<Nox32f> src(40, 2);
            src.generate([&](int x, int, int) {
                return x == awkward ? test::randomElement<Nox32f>(random) : Nox32f(int(random() % 512) - 256);
            });
            std::vector<Nox32f> taps;
            for (int j = 0; j < kernelSize; ++j)
                taps.push_back(Nox32f(int(random() % 15) - 7));
            const Nox32f value = awkward < 0 ? test::randomElement<Nox32f>(random) : 9.0F;
            Image<Nox32f> actual(40, 2), expected(40, 2);
            auto rows = test::shuffledRows(actual, 1), expectedRows = test::shuffledRows(expected, 1);
            const int anchor = int(random() % unsigned(kernelSize));
            const Setting setting = {{40, 2}, kernelSize, anchor, 0, 1};
            const Buffer buffer(std::size_t(queriedSize<Row32fC1>(setting)));
            invoke<Row32fC1>(src.data(), src.step(), rows.data(), setting, taps.data(), &value, buffer.data());
            reference::separable::filterRows<Extended>(src.data(), src.step(), expectedRows.data(), {40, 2}, 1,
                                                       taps.data(), kernelSize, anchor, 0, &value,
                                                       reference::separable::Rounded());
            ASSERT_TRUE(test::sameImage(test::unsignZeros(actual), test::unsignZeros(expected)))
                << kernelSize << " pixel " << awkward;
        }
}

TEST(RowPipelineLow, TwoRoundings) {
    const Nox16s pixels[] = {1, 1, 1, 1, 1, 1};
    const Nox16s three[] = {1, 1, 1}, five[] = {1, 1, 1, 0, 0};
    Nox16s row[6];
    Nox16s *rows[] = {row};
    const NoxiSize size = {6, 1};
    const Buffer buffer(4096);
    noxiFilterRowBorderPipeline_Low_16s_C1R(pixels, 12, rows, size, three, 3, 1, 1, 0, 3, buffer.data());
    EXPECT_EQ(row[2], 0);
    noxiFilterRowBorderPipeline_Low_16s_C1R(pixels, 12, rows, size, five, 5, 2, 1, 0, 3, buffer.data());
    EXPECT_EQ(row[2], 1);
    noxiFilterRowBorderPipeline_Low_16s_C1R(pixels, 12, rows, size, three, 3, 1, 1, 0, 16385, buffer.data());
    EXPECT_EQ(row[2], 0);
}

// The sum is 7 less 2^-39, which a double loses beside the large products.
TEST(RowPipeline16s, FoldedTapsAreSummedBeyondDouble) {
    const int divisor = 40003, count = 300;
    const std::vector<Nox16s> taps = {32767, 1, 3, 5, 7, -32767};
    const Nox16s period[] = {32767, 31, 40, 24992, 22130, 32767};
    Image<Nox16s> src(count, 1);
    src.generate([&](int x, int, int) { return period[x % 6]; });
    ASSERT_TRUE(agrees<Row16sC1>(src, {{count, 1}, 6, 0, 1, divisor}, taps));
    Nox16s row[count];
    Nox16s *rows[] = {row};
    const Buffer buffer(8192);
    noxiFilterRowBorderPipeline_16s_C1R(src.data(), src.step(), rows, {count, 1}, taps.data(), 6, 0, 1, 0, divisor,
                                        buffer.data());
    EXPECT_EQ(row[0], 6);
    EXPECT_EQ(row[120], 6);
}

TEST(RowPipeline8u16s, TruncatesTowardZero) {
    const Nox8u pixels[] = {1, 1, 1};
    const Nox16s taps[] = {1, 1, 1};
    Nox16s row[3];
    Nox16s *rows[] = {row};
    const Buffer buffer(4096);
    noxiFilterRowBorderPipeline_8u16s_C1R(pixels, 3, rows, {3, 1}, taps, 3, 1, 1, 0, 2, buffer.data());
    EXPECT_EQ(row[1], 1);
    noxiFilterRowBorderPipeline_8u16s_C1R(pixels, 3, rows, {3, 1}, taps, 3, 1, 1, 0, -2, buffer.data());
    EXPECT_EQ(row[1], -1);
}

} // namespace
