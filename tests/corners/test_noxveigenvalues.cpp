#include <limits>

#include "corners/noxveigenvalues.h"
#include "noxcv.h"
#include "reference/corners.h"
#include "support/image.h"
#include "support/threads.h"

using test::Image;

namespace {

/// The filters that the definition names, each tested where it belongs.
NoxStatus derive(const Image<Nox8u> &src, Image<Nox16s> &d, bool vert, int type, int aperture, Nox8u *work) {
    const int mask = aperture * 11;
    if (type == 1)
        return (vert ? noxiFilterScharrVertBorder_8u16s_C1R : noxiFilterScharrHorizBorder_8u16s_C1R)(
            src.data(), src.step(), d.data(), d.step(), src.roi(), noxBorderReplicate, 0, work);
    return (vert ? noxiFilterSobelVertBorder_8u16s_C1R : noxiFilterSobelHorizBorder_8u16s_C1R)(
        src.data(), src.step(), d.data(), d.step(), src.roi(), mask, noxBorderReplicate, 0, work);
}
NoxStatus derive(const Image<Nox32f> &src, Image<Nox32f> &d, bool vert, int type, int aperture, Nox8u *work) {
    const int mask = aperture * 11;
    if (type == 1)
        return (vert ? noxiFilterScharrVertBorder_32f_C1R : noxiFilterScharrHorizBorder_32f_C1R)(
            src.data(), src.step(), d.data(), d.step(), src.roi(), noxBorderReplicate, 0, work);
    return (vert ? noxiFilterSobelVertBorder_32f_C1R : noxiFilterSobelHorizBorder_32f_C1R)(
        src.data(), src.step(), d.data(), d.step(), src.roi(), mask, noxBorderReplicate, 0, work);
}

template <class T>
struct Setup {
    int type, aperture, window;
    bool vectors;

    NoxStatus query(NoxiSize roi, int *size) const {
        if constexpr (std::is_same_v<T, Nox8u>)
            return (vectors ? noxiEigenValsVecsGetBufferSize_8u32f_C1R
                            : noxiMinEigenValGetBufferSize_8u32f_C1R)(roi, aperture, window, size);
        else
            return (vectors ? noxiEigenValsVecsGetBufferSize_32f_C1R
                            : noxiMinEigenValGetBufferSize_32f_C1R)(roi, aperture, window, size);
    }
    NoxStatus call(const T *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi, Nox8u *buffer) const {
        if constexpr (std::is_same_v<T, Nox8u>)
            return (vectors ? noxiEigenValsVecs_8u32f_C1R : noxiMinEigenVal_8u32f_C1R)(src, srcStep, dst, dstStep, roi,
                                                                                       type, aperture, window, buffer);
        else
            return (vectors ? noxiEigenValsVecs_32f_C1R : noxiMinEigenVal_32f_C1R)(src, srcStep, dst, dstStep, roi,
                                                                                   type, aperture, window, buffer);
    }
    int floats() const { return vectors ? 6 : 1; }

    void compare(const Image<T> &src, int misalignment) const {
        using D = std::conditional_t<std::is_same_v<T, Nox8u>, Nox16s, Nox32f>;
        const NoxiSize roi = src.roi();
        int size = 0;
        ASSERT_EQ(query(roi, &size), noxStsNoError);
        const test::ShiftedBuffer buffer(size, misalignment);
        Image<Nox32f> actual(roi.width, roi.height, floats(), 4), expected(roi.width, roi.height, floats(), 4);
        ASSERT_EQ(call(src.data(), src.step(), actual.data(), actual.step(), roi, buffer.data()), noxStsNoError);
        ASSERT_TRUE(buffer.intact());

        const test::Buffer work(2 * std::size_t(size) + 4096);
        Image<D> dx(roi.width, roi.height), dy(roi.width, roi.height);
        ASSERT_EQ(derive(src, dx, true, type, aperture, work.data()), noxStsNoError);
        ASSERT_EQ(derive(src, dy, false, type, aperture, work.data()), noxStsNoError);
        Image<Nox32f> product(roi.width, roi.height), a(roi.width, roi.height), b(roi.width, roi.height),
            c(roi.width, roi.height);
        const auto average = [&](Image<Nox32f> &to, const Image<D> &one, const Image<D> &other) {
            product.generate([&](int x, int y, int) {
                using Number = std::conditional_t<std::is_same_v<D, Nox16s>, int, Nox32f>;
                return Nox32f(Number(one.at(x, y)) * Number(other.at(x, y)));
            });
            ASSERT_EQ(noxiFilterLowpassBorder_32f_C1R(product.data(), product.step(), to.data(), to.step(), roi,
                                                      window * 11, noxBorderReplicate, 0, work.data()),
                      noxStsNoError);
        };
        average(a, dx, dx);
        average(b, dx, dy);
        average(c, dy, dy);
        const Nox32f scale = reference::corners::scaleOf(type, aperture);
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                Nox32f six[6] = {reference::corners::smallerValue(a.at(x, y), b.at(x, y), c.at(x, y), scale)};
                if (vectors)
                    reference::corners::valuesAndVectors(a.at(x, y), b.at(x, y), c.at(x, y), scale,
                                                         type == 1 ? 1.0F : -1.0F, six);
                for (int k = 0; k < floats(); ++k)
                    expected.at(x, y, k) = six[k];
            }
        ASSERT_TRUE(test::sameImage(actual, expected)) << type << aperture << window << vectors;
    }
};

template <class T>
std::vector<Setup<T>> setups() {
    std::vector<Setup<T>> all;
    for (const bool vectors : {false, true})
        for (const int window : {3, 5}) {
            all.push_back({0, 3, window, vectors});
            all.push_back({0, 5, window, vectors});
            all.push_back({1, 3, window, vectors});
        }
    return all;
}

template <class T>
class Eigen : public ::testing::Test {};
using Elements = ::testing::Types<Nox8u, Nox32f>;
TYPED_TEST_SUITE(Eigen, Elements);

TYPED_TEST(Eigen, ImagesOfSeveralBands) {
    // With one thread an image of this size goes in bands of some ninety rows; the comparison filters it as a whole.
    test::Random random(11);
    const test::ThreadCount one(1);
    Image<TypeParam> src(703, 199, 1, 3 * int(sizeof(TypeParam)));
    src.generate(
        [&](int, int, int) { return TypeParam(random() % 256) / TypeParam(std::is_same_v<TypeParam, Nox8u> ? 1 : 7); });
    for (const Setup<TypeParam> &setup : setups<TypeParam>())
        setup.compare(src, 5);
}

TYPED_TEST(Eigen, EqualsReference) {
    using T = TypeParam;
    test::Random random(1);
    for (const NoxiSize size : test::testSizes())
        for (const Setup<T> &setup : setups<T>()) {
            Image<T> src(size.width, size.height, 1, int(random() % 3) * int(sizeof(T)));
            if (random() % 2)
                test::randomize(src, random);
            else // flat patches and edges
                src.generate([&](int x, int y, int) { return ((x / 7 + y / 5) % 3) * 80; });
            setup.compare(src, int(random() % 40));
        }
}

TYPED_TEST(Eigen, ThreadCountsOfQueryAndCall) {
    using T = TypeParam;
    test::Random random(2);
    Image<T> src(301, 97);
    test::randomize(src, random);
    for (const int threads : test::threadCounts()) {
        const test::ThreadCount count(threads);
        for (const Setup<T> &setup : setups<T>())
            setup.compare(src, 1);
    }
}

TYPED_TEST(Eigen, FlatImagesGiveZero) {
    using T = TypeParam;
    Image<T> src(40, 9);
    src.fill(T(77));
    for (const Setup<T> &setup : setups<T>()) {
        setup.compare(src, 0);
        int size = 0;
        setup.query(src.roi(), &size);
        const test::Buffer buffer(size);
        Image<Nox32f> dst(40, 9, setup.floats());
        setup.call(src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data());
        for (int k = 0; k < setup.floats(); ++k)
            EXPECT_EQ(dst.at(20, 4, k), 0.0F);
    }
}

TYPED_TEST(Eigen, StatusesInOrder) {
    using T = TypeParam;
    constexpr int e = int(sizeof(T));
    Image<T> src(8, 6, 1, e);
    src.fill(0);
    for (const bool vectors : {false, true}) {
        Image<Nox32f> dst(8, 6, vectors ? 6 : 1, 4);
        dst.fill(5);
        const Image<Nox32f> before(dst);
        const Setup<T> good = {0, 3, 3, vectors};
        const NoxiSize roi = {8, 6};
        int size = 0;
        ASSERT_EQ(good.query(roi, &size), noxStsNoError);
        const test::Buffer buffer(size);
        const int s = 8 * e, d = 32 * (vectors ? 6 : 1);
        EXPECT_EQ(good.call(nullptr, 0, dst.data(), 0, {0, 0}, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(good.call(src.data(), s, nullptr, d, roi, buffer.data()), noxStsNullPointer);
        EXPECT_EQ(good.call(src.data(), s, dst.data(), d, {0, 1}, nullptr), noxStsNullPointer);
        EXPECT_EQ(good.call(src.data(), 0, dst.data(), d, {0, 6}, buffer.data()), noxStsBadSize);
        EXPECT_EQ(good.call(src.data(), 0, dst.data(), d, {8, 0}, buffer.data()), noxStsBadSize);
        EXPECT_EQ(good.call(src.data(), s - 1, dst.data(), d + 1, roi, buffer.data()), noxStsBadStep);
        EXPECT_EQ(good.call(src.data(), s, dst.data(), d - 1, roi, buffer.data()), noxStsBadStep);
        const Setup<T> badKernel = {2, 7, 7, vectors}, badAperture = {0, 7, 3, vectors}, badScharr = {1, 5, 3, vectors},
                       badWindow = {0, 3, 4, vectors};
        EXPECT_EQ(badKernel.call(src.data(), s, dst.data(), d + 2, roi, buffer.data()), noxStsOddStep);
        if (e > 1) {
            EXPECT_EQ(badKernel.call(src.data(), s + 2, dst.data(), d, roi, buffer.data()), noxStsOddStep);
        }
        EXPECT_EQ(badKernel.call(src.data(), s, dst.data(), d, roi, buffer.data()), noxStsBadArgument);
        for (const Setup<T> &bad : {badAperture, badScharr, badWindow})
            EXPECT_EQ(bad.call(src.data(), s, dst.data(), d, roi, buffer.data()), noxStsBadSize);
        EXPECT_TRUE(test::sameImage(dst, before));

        size = 3;
        EXPECT_EQ(badWindow.query({0, 0}, nullptr), noxStsNullPointer);
        EXPECT_EQ(good.query({0, 4}, &size), noxStsBadSize);
        EXPECT_EQ(good.query({4, 0}, &size), noxStsBadSize);
        EXPECT_EQ(badAperture.query(roi, &size), noxStsBadSize);
        EXPECT_EQ(badWindow.query(roi, &size), noxStsBadSize);
        EXPECT_EQ(good.query({65536, 65536}, &size), noxStsBadSize);
        EXPECT_EQ(good.query({2147483647, 2147483647}, &size), noxStsBadSize);
        EXPECT_EQ(size, 3);
    }
}

TEST(EigenBuffers, Formula) {
    const NoxiSize roi = {50, 20};
    for (const int threads : {1, 4}) {
        const test::ThreadCount count(threads);
        int filters = 0, size = 0, work = 0;
        noxiFilterSobelVertGetBufferSize_8u16s_C1R(roi, 33, &filters);
        noxiFilterSobelHorizGetBufferSize_8u16s_C1R(roi, 33, &work);
        filters = std::max(filters, work);
        noxiFilterLowpassGetBufferSize_32f_C1R(roi, 55, &work);
        filters = std::max(filters, work);
        EXPECT_EQ(noxiMinEigenValGetBufferSize_8u32f_C1R(roi, 3, 5, &size), noxStsNoError);
        EXPECT_EQ(size, (64 * 20 * 4 + 32) * (threads == 1 ? 3 : 6) + 50 * 20 * 4 + filters + 64);
        noxiFilterSobelVertGetBufferSize_32f_C1R(roi, 33, &filters);
        noxiFilterSobelHorizGetBufferSize_32f_C1R(roi, 33, &work);
        filters = std::max(filters, work);
        noxiFilterLowpassGetBufferSize_32f_C1R(roi, 55, &work);
        filters = std::max(filters, work);
        EXPECT_EQ(noxiEigenValsVecsGetBufferSize_32f_C1R(roi, 3, 5, &size), noxStsNoError);
        EXPECT_EQ(size, (64 * 20 * 4 + 32) * (threads == 1 ? 5 : 8) + filters + 64);
    }
}

TEST(EigenSolve, AnyCovariance) {
    test::Random random(3);
    const Nox32f values[] = {0.0F,
                             -0.0F,
                             1.0F,
                             4080.0F,
                             408000.0F,
                             -408000.0F,
                             1e-40F,
                             1e38F,
                             std::numeric_limits<Nox32f>::infinity(),
                             std::numeric_limits<Nox32f>::quiet_NaN()};
    Image<Nox32f> planes[3] = {{150, 40, 1, 8, 4}, {150, 40, 1, 8, 4}, {150, 40, 1, 8, 4}};
    for (Image<Nox32f> &plane : planes)
        plane.generate([&](int, int, int) {
            return random() % 3 == 0 ? values[random() % std::size(values)] : Nox32f(random() % 1000000);
        });
    Image<Nox32f> least(150, 40), six(150, 40, 6);
    for (const int sign : {-1, 1}) {
        const Nox32f scale = reference::corners::scaleOf(0, 3);
        calcMinValues(planes[0].data(), planes[1].data(), planes[2].data(), planes[0].step(), least.data(),
                      least.step(), 150, 40, scale);
        calcValues(planes[0].data(), planes[1].data(), planes[2].data(), planes[0].step(), six.data(), six.step(), 150,
                   40, scale, sign);
        Image<Nox32f> expectedLeast(150, 40), expectedSix(150, 40, 6);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 150; ++x) {
                const Nox32f a = planes[0].at(x, y), c = planes[1].at(x, y), b = planes[2].at(x, y);
                expectedLeast.at(x, y) = reference::corners::smallerValue(a, b, c, scale);
                Nox32f numbers[6];
                reference::corners::valuesAndVectors(a, b, c, scale, Nox32f(sign), numbers);
                for (int k = 0; k < 6; ++k)
                    expectedSix.at(x, y, k) = numbers[k];
            }
        ASSERT_TRUE(test::sameImage(least, expectedLeast));
        ASSERT_TRUE(test::sameImage(six, expectedSix));
    }
}

} // namespace
