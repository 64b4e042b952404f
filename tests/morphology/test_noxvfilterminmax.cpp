#include <cmath>
#include <cstring>

#include "members.h"
#include "morphology/noxvminmax.h"

using namespace test;
using namespace test::morphology;

namespace {

template <class Layout>
struct Filter {
    using T = typename Layout::T;
    static NoxStatus run(bool largest, const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, NoxiSize mask,
                         NoxiPoint anchor, Nox8u *buffer) {
        const auto entry = largest ? NOX_MEMBER(Layout, noxiFilterMaxBorderReplicate)
                                   : NOX_MEMBER(Layout, noxiFilterMinBorderReplicate);
        return entry(src, srcStep, dst, dstStep, roi, mask, anchor, buffer);
    }
    static NoxStatus query(bool largest, int width, NoxiSize mask, int *size) {
        return (largest ? NOX_MEMBER(Layout, noxiFilterMaxGetBufferSize)
                        : NOX_MEMBER(Layout, noxiFilterMinGetBufferSize))(width, mask, size);
    }
    /// Runs in a buffer of exactly the queried size, filled with garbage, and compares.
    static void compare(bool largest, const Image<T> &src, Image<T> &dst, NoxiSize mask, NoxiPoint anchor,
                        int bufferShift = 0) {
        int size = 0;
        ASSERT_EQ(query(largest, src.width(), mask, &size), noxStsNoError);
        const ShiftedBuffer buffer(size, bufferShift);
        ASSERT_EQ(run(largest, src.data(), src.step(), dst.data(), dst.step(), src.roi(), mask, anchor, buffer.data()),
                  noxStsNoError);
        Image<T> expected(src.width(), src.height(), Layout::channels);
        reference::morphology::overRectangle<T>(largest, source(src), result(expected), src.roi(), mask, anchor);
        ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)))
            << mask.width << "x" << mask.height << " anchor " << anchor.x << "," << anchor.y;
        ASSERT_TRUE(buffer.intact());
    }
};

template <class Layout>
class FilterMinMax : public ::testing::Test {};
TYPED_TEST_SUITE(FilterMinMax, Layouts);

template <class Layout>
void compareSizes(const std::vector<NoxiSize> &masks) {
    using T = typename Layout::T;
    Random random(7 + Layout::channels + 10 * int(sizeof(T)));
    for (const NoxiSize size : testSizes())
        for (const NoxiSize mask : masks) {
            if (random() % 3 != 0) // a third of all pairs, and another one for each layout
                continue;
            const bool largest = random() % 2;
            const int padding = int(random() % 3) * 4 * int(sizeof(T) == 4 ? 1 : random() % 5);
            Image<T> src(size.width, size.height, Layout::channels, padding, int(random() % 8));
            Image<T> dst(size.width, size.height, Layout::channels, int(random() % 2) * 4, int(random() % 8));
            roughen(src, random);
            const NoxiPoint anchor{int(random() % mask.width), int(random() % mask.height)};
            Filter<Layout>::compare(largest, src, dst, mask, anchor, int(random() % 9));
        }
}

TYPED_TEST(FilterMinMax, EveryWindowOnEverySize) {
    std::vector<NoxiSize> masks;
    for (int n = 1; n <= 18; ++n)
        masks.insert(masks.end(), {{n, 1}, {1, n}, {n, n}, {19 - n, n}});
    for (const int n : {31, 32, 63, 64, 65, 130})
        masks.insert(masks.end(), {{n, 3}, {5, n}, {n, n}});
    compareSizes<TypeParam>(masks);
}

TYPED_TEST(FilterMinMax, WindowsWiderThanAnyImage) { compareSizes<TypeParam>({{1000, 3}, {2, 499}, {2000, 400}}); }

TYPED_TEST(FilterMinMax, LongWindowsOnLongRows) {
    using T = typename TypeParam::T;
    Random random(3);
    for (const int width : {1100, 2600})
        for (const int window : {64, 254, 255, 256, 257, 511, 800, 1500, 2599})
            for (const int anchor : {0, window / 3, window - 1}) {
                Image<T> src(width, 2, TypeParam::channels), dst(width, 2, TypeParam::channels);
                roughen(src, random);
                Filter<TypeParam>::compare(window % 2, src, dst, {window, 1}, {anchor, 0});
            }
}

TYPED_TEST(FilterMinMax, AnchorsAtBothEnds) {
    using T = typename TypeParam::T;
    Random random(4);
    for (const int n : {2, 3, 5, 7, 16, 40}) {
        Image<T> src(90, 83, TypeParam::channels), dst(90, 83, TypeParam::channels);
        roughen(src, random);
        for (const NoxiPoint anchor : {NoxiPoint{0, 0}, {n - 1, 0}, {0, n - 1}, {n - 1, n - 1}})
            Filter<TypeParam>::compare(n % 2, src, dst, {n, n}, anchor);
    }
}

TYPED_TEST(FilterMinMax, InPlace) {
    using T = typename TypeParam::T;
    Random random(5);
    for (const NoxiSize mask : {NoxiSize{1, 1}, {3, 1}, {20, 1}, {1, 3}, {3, 3}, {5, 5}, {9, 12}, {40, 70}, {400, 400}})
        for (const int y : {0, mask.height / 2, mask.height - 1}) {
            Image<T> src(77, 50, TypeParam::channels), expected(77, 50, TypeParam::channels);
            roughen(src, random);
            const NoxiPoint anchor{mask.width / 2, y};
            reference::morphology::overRectangle<T>(true, source(src), result(expected), src.roi(), mask, anchor);
            int size = 0;
            Filter<TypeParam>::query(true, 77, mask, &size);
            const Buffer buffer(size);
            ASSERT_EQ(Filter<TypeParam>::run(true, src.data(), src.step(), src.data(), src.step(), src.roi(), mask,
                                             anchor, buffer.data()),
                      noxStsNoError);
            EXPECT_TRUE(sameImage(test::unsignZeros(src), test::unsignZeros(expected)))
                << mask.width << "x" << mask.height;
        }
}

/// Images that are too large for the nearest caches: there the columns ask for the rows that come next. What they do
/// with bytes does not depend on channels, so one layout tries all heights.
TYPED_TEST(FilterMinMax, ImagesThatLeaveTheCaches) {
    using T = typename TypeParam::T;
    constexpr int channels = TypeParam::channels;
    Random random(6);
    const int width = 1033 / channels, count = width * channels,
              height = 2 + (sizeof(T) == 1 ? 1 << 22 : 1 << 17) / count;
    Image<T> src(width, height, channels, 4, 3), dst(width, height, channels, 0, 1);
    roughen(src, random);
    const std::vector<NoxiSize> masks = sizeof(T) == 1 && channels > 1
                                            ? std::vector<NoxiSize>{{2, 3}}
                                            : std::vector<NoxiSize>{{3, 3}, {1, 5}, {4, 7}, {1, 18}, {2, 2}, {3, 20}};
    for (const NoxiSize mask : masks)
        for (const bool largest : {false, true})
            Filter<TypeParam>::compare(largest, src, dst, mask, {mask.width / 2, mask.height / 3});
}

TYPED_TEST(FilterMinMax, StatusesInOrder) {
    using T = typename TypeParam::T;
    constexpr int channels = TypeParam::channels;
    Image<T> src(8, 4, channels), dst(8, 4, channels);
    dst.fill(9);
    const Image<T> before(dst);
    const Buffer buffer(20000);
    const int s = src.step();
    for (const bool largest : {false, true}) {
        const auto call = [&](const T *in, int inStep, T *out, int outStep, NoxiSize roi, NoxiSize mask,
                              NoxiPoint anchor, Nox8u *work) {
            return Filter<TypeParam>::run(largest, in, inStep, out, outStep, roi, mask, anchor, work);
        };
        const NoxiSize roi{8, 4};
        Nox8u *const work = buffer.data();
        EXPECT_EQ(call(nullptr, 0, dst.data(), 0, {0, 0}, {0, 0}, {0, 0}, work), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), s, nullptr, s, roi, {3, 3}, {1, 1}, work), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), s, dst.data(), s, roi, {3, 3}, {1, 1}, nullptr), noxStsNullPointer);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {0, 4}, {0, 0}, {0, 0}, work), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, {8, -1}, {0, 0}, {0, 0}, work), noxStsBadSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {0, 3}, {-1, 0}, work), noxStsBadMaskSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {3, -3}, {-1, 0}, work), noxStsBadMaskSize);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {3, 3}, {-1, 0}, work), noxStsBadAnchor);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {3, 3}, {3, 0}, work), noxStsBadAnchor);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {3, 3}, {0, 3}, work), noxStsBadAnchor);
        EXPECT_EQ(call(src.data(), 0, dst.data(), 0, roi, {3, 3}, {0, -1}, work), noxStsBadAnchor);
        EXPECT_EQ(call(src.data(), s - 1, dst.data(), s, roi, {3, 3}, {1, 1}, work), noxStsBadStep);
        EXPECT_EQ(call(src.data(), s, dst.data(), s - 1, roi, {3, 3}, {1, 1}, work), noxStsBadStep);
        if (sizeof(T) == 4) {
            // Each image is looked at in turn: an odd first step is found before a short second one.
            EXPECT_EQ(call(src.data(), s + 1, dst.data(), s - 1, roi, {3, 3}, {1, 1}, work), noxStsOddStep);
            EXPECT_EQ(call(src.data(), s - 1, dst.data(), s + 1, roi, {3, 3}, {1, 1}, work), noxStsBadStep);
            EXPECT_EQ(call(src.data(), s, dst.data(), s + 2, roi, {3, 3}, {1, 1}, work), noxStsOddStep);
        }
        EXPECT_TRUE(sameImage(dst, before));
        int size = 5;
        EXPECT_EQ(Filter<TypeParam>::query(largest, 0, {0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(Filter<TypeParam>::query(largest, 0, {0, 0}, &size), noxStsBadSize);
        EXPECT_EQ(Filter<TypeParam>::query(largest, 3, {0, 1}, &size), noxStsBadMaskSize);
        EXPECT_EQ(Filter<TypeParam>::query(largest, 3, {1, -1}, &size), noxStsBadMaskSize);
        EXPECT_EQ(Filter<TypeParam>::query(largest, 1 << 30, {1, 1}, &size), noxStsBadSize);
        EXPECT_EQ(Filter<TypeParam>::query(largest, INT_MAX, {1, INT_MAX}, &size), noxStsBadSize);
        EXPECT_EQ(size, 5);
        const int row = 100 * channels * int(sizeof(T));
        EXPECT_EQ(Filter<TypeParam>::query(largest, 100, {9, 7}, &size), noxStsNoError);
        EXPECT_EQ(size, 7 * 4 * int(sizeof(void *)) + 14 * (row + 32) + 32);
    }
}

TEST(FilterMinMaxFloat, WindowsWithoutNotANumbersAreRight) {
    Random random(11);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const NoxiSize mask : {NoxiSize{3, 3}, {5, 5}, {7, 2}, {20, 9}, {300, 1}}) {
        Image<Nox32f> src(310, 40), dst(310, 40), clean(310, 40), expected(310, 40), touched(310, 40), near(310, 40);
        src.generate([&](int, int, int) { return random() % 200 == 0 ? nan : randomElement<float>(random); });
        clean.generate([&](int x, int y, int) { return std::isnan(src.at(x, y)) ? 0.0F : src.at(x, y); });
        touched.generate([&](int x, int y, int) { return std::isnan(src.at(x, y)) ? 1.0F : 0.0F; });
        const NoxiPoint anchor{mask.width / 2, mask.height / 2};
        reference::morphology::overRectangle<Nox32f>(false, source(clean), result(expected), src.roi(), mask, anchor);
        reference::morphology::overRectangle<Nox32f>(true, source(touched), result(near), src.roi(), mask, anchor);
        int size = 0;
        noxiFilterMinGetBufferSize_32f_C1R(310, mask, &size);
        const Buffer buffer(size);
        noxiFilterMinBorderReplicate_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), mask, anchor,
                                             buffer.data());
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 310; ++x) {
                const bool sure = near.at(x, y) == 0.0F;
                ASSERT_TRUE(!sure || dst.at(x, y) == expected.at(x, y)) << x << "," << y;
            }
    }
}

template <class T>
struct Routine {
    const char *name;
    nox::RowRoutine<T> run;
    int channels;
    bool largest;
    int window;
};

/// Keeps the routines of one element type.
template <class T>
struct Collect {
    std::vector<Routine<T>> list;
    void add(const char *name, nox::RowRoutine<T> run, int channels, bool largest, int window) {
        list.push_back({name, run, channels, largest, window});
    }
    template <class Other>
    void add(const char *, nox::RowRoutine<Other>, int, bool, int) {}
};

template <class T>
std::vector<Routine<T>> rowRoutines() {
    Collect<T> collect;
#define NOX_ROW_ROUTINE(NAME, TYPE, CHANNELS, OP, WINDOW)                                                              \
    collect.add(#NAME, static_cast<nox::RowRoutine<TYPE>>(NAME), CHANNELS, #OP[0] == 'L', WINDOW);
#include "morphology/noxvminmaxrows.inc"
#undef NOX_ROW_ROUTINE
    return collect.list;
}

template <class T>
void compareRowRoutines() {
    Random random(13);
    for (const Routine<T> &routine : rowRoutines<T>())
        for (const int width : {1, 2, 5, 16, 33, 150})
            for (int window : {0, 1, 3, 8, 17, 64, 200}) {
                if (window == 0)
                    window = routine.window == 0 ? 6 : routine.window;
                const int anchor = int(random() % window);
                Image<T> src(width, 1, routine.channels, 0, int(random() % 8)), dst(width, 1, routine.channels),
                    expected(width, 1, routine.channels);
                roughen(src, random);
                reference::morphology::overRectangle<T>(routine.largest, source(src), result(expected), src.roi(),
                                                        {window, 1}, {anchor, 0});
                routine.run(src.data(), dst.data(), width, window, anchor);
                ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected)))
                    << routine.name << " " << width << " " << window;
            }
}

TEST(RowRoutines, AnyWindow) {
    EXPECT_EQ(rowRoutines<Nox8u>().size() + rowRoutines<Nox32f>().size(), 144U);
    compareRowRoutines<Nox8u>();
    compareRowRoutines<Nox32f>();
}

/// The order of operands shows where there are not-a-numbers.
TEST(RowRoutines, NotANumbersInTheOrderOfPairsAndBlocks) {
    Random random(19);
    for (const Routine<Nox32f> &routine : rowRoutines<Nox32f>()) {
        if (routine.window != 0 && routine.window != 3)
            continue;
        for (const int width : {7, 16, 64, 131, 400})
            for (const int window : routine.window == 3 ? std::vector{3} : std::vector{2, 5, 8, 17, 63, 64, 100, 150}) {
                if (2 * window > width)
                    continue;
                const int anchor = int(random() % window), channels = routine.channels;
                Image<Nox32f> src(width, 1, channels), dst(width, 1, channels), expected(width, 1, channels);
                src.generate(
                    [&](int, int, int) { return random() % 4 == 0 ? std::nanf("") : float(random() % 50 + 1); });
                for (int c = 0; c < channels; ++c) {
                    std::vector<float> line;
                    for (int x = 0; x < width; ++x)
                        line.push_back(src.at(x, 0, c));
                    const auto winners = reference::morphology::OrderedLine(routine.largest, line)
                                             .windows(window, anchor, routine.window == 0);
                    for (int x = 0; x < width; ++x)
                        expected.at(x, 0, c) = winners[x];
                }
                routine.run(src.data(), dst.data(), width, window, anchor);
                ASSERT_TRUE(sameImage(dst, expected)) << routine.name << " " << width << " " << window << " " << anchor;
            }
    }
}

template <class T>
void compareColumnRoutine(nox::ColumnRoutine<T> column, nox::RowRoutine<T> row, bool largest) {
    Random random(17);
    for (const int n : {1, 2, 3, 5, 8, 40})
        for (const int height : {1, 6, 12, 30}) {
            Image<T> src(21, height, 3), dst(21, height, 3), expected(21, height, 3);
            roughen(src, random);
            const NoxiPoint anchor{2, int(random() % n)};
            reference::morphology::overRectangle<T>(largest, source(src), result(expected), src.roi(), {5, n}, anchor);
            const Buffer memory((2 * n + 1) * 256);
            std::vector<T *> rows;
            for (int i = 0; i < 4 * n; ++i)
                rows.push_back(reinterpret_cast<T *>(memory.data() + i % (2 * n) * 256));
            column(src.data(), src.step(), dst.data(), dst.step(), src.roi(), 3, 5, n, anchor.x, anchor.y, row,
                   rows.data());
            ASSERT_TRUE(sameImage(test::unsignZeros(dst), test::unsignZeros(expected))) << n << " of " << height;
        }
}

TEST(ColumnRoutines, AnyWindow) {
    for (const auto column : {ownFilterMinColumn01_8u_C1R, ownFilterMinColumn03_8u_C1R, ownFilterMinColumn05_8u_C1R,
                              ownFilterMinColumnVH_8u_C1R})
        compareColumnRoutine<Nox8u>(column, ownFilterMinRow05_8u_C3R, false);
    for (const auto column : {ownFilterMaxColumn01_8u_C1R, ownFilterMaxColumn03_8u_C1R, ownFilterMaxColumn05_8u_C1R,
                              ownFilterMaxColumnVH_8u_C1R})
        compareColumnRoutine<Nox8u>(column, ownFilterMaxRow05_8u_C3R, true);
    for (const auto column : {ownFilterMinColumn01_32f_C1R, ownFilterMinColumn03_32f_C1R, ownFilterMinColumn05_32f_C1R,
                              ownFilterMinColumnVH_32f_C1R})
        compareColumnRoutine<Nox32f>(column, ownFilterMinRow05_32f_C3R, false);
    for (const auto column : {ownFilterMaxColumn01_32f_C1R, ownFilterMaxColumn03_32f_C1R, ownFilterMaxColumn05_32f_C1R,
                              ownFilterMaxColumnVH_32f_C1R})
        compareColumnRoutine<Nox32f>(column, ownFilterMaxRow05_32f_C3R, true);
}

} // namespace
