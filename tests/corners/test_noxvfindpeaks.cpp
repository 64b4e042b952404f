#include <limits>
#include <vector>

#include "corners/noxvfindpeaks.h"
#include "noxcv.h"
#include "reference/corners.h"
#include "support/image.h"
#include "support/vector.h"

using test::Image;

namespace {

NoxStatus find(const Nox32f *src, int step, NoxiSize roi, Nox32f threshold, Nox32s *peaks, int most, int *count,
               int norm, int border, Nox8u *buffer) {
    return noxiFindPeaks3x3_32f_C1R(src, step, roi, threshold, peaks, most, count, norm, border, buffer);
}
NoxStatus find(const Nox32s *src, int step, NoxiSize roi, Nox32s threshold, Nox32s *peaks, int most, int *count,
               int norm, int border, Nox8u *buffer) {
    return noxiFindPeaks3x3_32s_C1R(src, step, roi, threshold, peaks, most, count, norm, border, buffer);
}

int bufferSize(int width) {
    int size = 0, other = 0;
    EXPECT_EQ(noxiFindPeaks3x3GetBufferSize_32f_C1R(width, &size), noxStsNoError);
    EXPECT_EQ(noxiFindPeaks3x3GetBufferSize_32s_C1R(width, &other), noxStsNoError);
    EXPECT_EQ(size, other);
    EXPECT_EQ(size, ((width + 5) / 4 * 128) | 32);
    return size;
}

/// An image whose step the search takes.
template <class T>
Image<T> response(NoxiSize size) {
    return Image<T>(size.width, size.height, 1, ((size.width + 3) / 4 * 4 - size.width) * 4);
}

template <class T>
void compare(const Image<T> &src, T threshold, int most, int norm, int border, int misalignment, int stepBits = 0) {
    const test::ShiftedBuffer buffer(bufferSize(src.width()), misalignment);
    test::Vector<Nox32s> peaks(2 * most, misalignment % 3);
    int count = -1;
    const auto expected =
        reference::corners::peaks<T>(src.data(), src.step(), src.roi(), threshold, most, norm, border);
    ASSERT_EQ(find(src.data(), src.step() + stepBits, src.roi(), threshold, peaks.data(), most, &count, norm, border,
                   buffer.data()),
              noxStsNoError);
    ASSERT_EQ(count, int(expected.size()));
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(Nox32s(peaks[2 * i]), expected[std::size_t(i)].x) << i;
        ASSERT_EQ(Nox32s(peaks[2 * i + 1]), expected[std::size_t(i)].y) << i;
    }
    ASSERT_TRUE(buffer.intact());
    ASSERT_TRUE(peaks.gapsIntact());
}

template <class T>
class FindPeaks : public ::testing::Test {};
using Elements = ::testing::Types<Nox32f, Nox32s>;
TYPED_TEST_SUITE(FindPeaks, Elements);

TYPED_TEST(FindPeaks, EqualsReference) {
    using T = TypeParam;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const int norm : {0, 1})
            for (const int border : {1, 2, 5}) {
                if (2 * border > std::min(size.width, size.height))
                    continue;
                Image<T> src = response<T>(size);
                const int range = 2 + int(random() % 50); // small ranges have plateaus
                src.generate([&](int, int, int) {
                    return random() % 9 == 0 && range > 40 ? test::randomElement<T>(random)
                                                           : T(int(random() % (2 * range)) - range);
                });
                compare<T>(src, T(range / 3), 5000, norm, border, int(random() % 40));
                compare<T>(src, T(-1), 1 + int(random() % 7), norm, border, int(random() % 40), int(random() % 4));
            }
}

TYPED_TEST(FindPeaks, ExtremesOfTheType) {
    using T = TypeParam;
    std::vector<T> values = {std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max(), T(0), T(1), T(-1)};
    if constexpr (std::is_same_v<T, Nox32f>)
        values.insert(values.end(), {1e-38F, 2e-38F, 3e-38F, -1e-45F, 1e-45F, std::numeric_limits<T>::infinity()});
    test::Random random(2);
    for (int round = 0; round < 100; ++round) {
        Image<T> src = response<T>({37, 9});
        src.generate([&](int, int, int) { return values[random() % values.size()]; });
        for (const T threshold : {T(0), T(-5), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()})
            compare<T>(src, threshold, 400, round % 2, 1, 0);
    }
}

TYPED_TEST(FindPeaks, StatusesInOrder) {
    using T = TypeParam;
    Image<T> src = response<T>({10, 8});
    src.fill(9);
    const test::Buffer buffer(bufferSize(10));
    Nox32s peaks[8] = {};
    int count = 77;
    const auto call = [&](const T *s, int step, NoxiSize roi, Nox32s *list, int most, int *found, int norm, int border,
                          Nox8u *work) { return find(s, step, roi, T(1), list, most, found, norm, border, work); };
    const NoxiSize roi = {10, 8};
    EXPECT_EQ(call(nullptr, 0, {0, 0}, peaks, 4, &count, 0, 1, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 48, roi, nullptr, 4, &count, 0, 1, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 48, roi, peaks, 4, nullptr, 0, 1, buffer.data()), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 48, {0, 8}, peaks, 4, &count, 0, 1, nullptr), noxStsNullPointer);
    EXPECT_EQ(call(src.data(), 0, {0, 8}, peaks, 4, &count, 2, 1, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, {10, 0}, peaks, 4, &count, 2, 1, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, roi, peaks, 0, &count, 2, 1, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, roi, peaks, 4, &count, 2, 0, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 0, roi, peaks, 4, &count, 2, 5, buffer.data()), noxStsBadSize);
    EXPECT_EQ(call(src.data(), 36, roi, peaks, 4, &count, 2, 1, buffer.data()), noxStsBadStep);
    EXPECT_EQ(call(src.data(), 40, roi, peaks, 4, &count, 2, 1, buffer.data()), noxStsOddStep);
    EXPECT_EQ(call(src.data(), 48, roi, peaks, 4, &count, 2, 1, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(call(src.data(), 48, roi, peaks, 4, &count, -1, 1, buffer.data()), noxStsBadArgument);
    EXPECT_EQ(count, 77);
    EXPECT_EQ(call(src.data(), 48, {10, 8}, peaks, 4, &count, 0, 4, buffer.data()), noxStsNoError);
    EXPECT_EQ(count, 0); // border is half the height
    EXPECT_EQ(call(src.data(), 48 + 3, roi, peaks, 4, &count, 1, 1, buffer.data()), noxStsNoError);
    EXPECT_EQ(count, 4);
    int size = 3;
    for (const auto query : {noxiFindPeaks3x3GetBufferSize_32f_C1R, noxiFindPeaks3x3GetBufferSize_32s_C1R}) {
        EXPECT_EQ(query(0, nullptr), noxStsNullPointer);
        EXPECT_EQ(query(0, &size), noxStsBadSize);
        EXPECT_EQ(query(2147483647, &size), noxStsBadSize);
    }
    EXPECT_EQ(size, 3);
}

TYPED_TEST(FindPeaks, RowFilters) {
    using T = TypeParam;
    test::Random random(3);
    for (int n = 0; n < 70; ++n) {
        test::Vector<T> src(n + 1, n % 5), largest(n + 1, n % 3), smallest(n + 1, n % 7);
        test::randomize(src, random);
        if constexpr (std::is_same_v<T, Nox32f>) {
            ownSiftFilterMaxRow03_32f_C1R(src.data(), largest.data(), n);
            ownSiftFilterMinRow03_32f_C1R(src.data(), smallest.data(), n);
        } else {
            ownSiftFilterMaxRow03_32s_C1R(src.data(), largest.data(), n);
            ownSiftFilterMinRow03_32s_C1R(src.data(), smallest.data(), n);
        }
        for (int i = 0; i < n - 2; ++i) {
            EXPECT_EQ(T(largest[i]), std::max({T(src[i]), T(src[i + 1]), T(src[i + 2])}));
            EXPECT_EQ(T(smallest[i]), std::min({T(src[i]), T(src[i + 1]), T(src[i + 2])}));
        }
        EXPECT_TRUE(largest.gapsIntact() && smallest.gapsIntact());
    }
}

} // namespace
