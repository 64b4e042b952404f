#include "noxcv.h"
#include "reference/border.h"
#include "support/image.h"

using test::Image;

namespace {

template <class T>
struct Entry {
    NoxStatus (*copy)(const T *, int, NoxiSize, T *, int, NoxiSize, int, int);
    NoxStatus (*inPlace)(T *, int, NoxiSize, NoxiSize, int, int);
    int channels;
};

#define ENTRY(TAG, CHANNELS)                                                                                           \
    { noxiCopyReplicateBorder_##TAG##_C##CHANNELS##R, noxiCopyReplicateBorder_##TAG##_C##CHANNELS##IR, CHANNELS }
const Entry<Nox8u> bytes[] = {ENTRY(8u, 1), ENTRY(8u, 3), ENTRY(8u, 4)};
const Entry<Nox32s> words[] = {ENTRY(32s, 1), ENTRY(32s, 3), ENTRY(32s, 4)};
#undef ENTRY

struct Border {
    int top, left, bottom, right;
    NoxiSize around(NoxiSize size) const { return {left + size.width + right, top + size.height + bottom}; }
};

const Border borders[] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {2, 3, 1, 5}, {0, 7, 3, 0}, {4, 0, 0, 40}, {9, 33, 11, 17}};

template <class T>
void expectReplicated(const Entry<T> &entry) {
    test::Random random(1);
    const int c = entry.channels;
    for (const NoxiSize size : test::testSizes())
        for (const Border &border : borders)
            for (const int padding : {0, 1, 12}) {
                const NoxiSize whole = border.around(size);
                Image<T> src(size.width, size.height, c, padding), actual(whole.width, whole.height, c, 12 - padding),
                    expected(actual);
                test::randomize(src, random);
                reference::border::copyReplicated<T>(src.data(), src.step(), size, expected.data(), expected.step(),
                                                     whole, border.top, border.left, c);
                ASSERT_EQ(entry.copy(src.data(), src.step(), size, actual.data(), actual.step(), whole, border.top,
                                     border.left),
                          noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected));

                Image<T> inPlace(whole.width, whole.height, c, padding);
                T *first = inPlace.row(border.top) + border.left * c;
                reference::border::copy<T>(src.data(), src.step(), first, inPlace.step(), size, c);
                ASSERT_EQ(entry.inPlace(first, inPlace.step(), size, whole, border.top, border.left), noxStsNoError);
                ASSERT_TRUE(test::sameImage(inPlace, expected));
            }
}

TEST(ReplicateBorder, EqualsReferenceOnAllSizes8u) {
    for (const auto &entry : bytes)
        expectReplicated(entry);
}

TEST(ReplicateBorder, EqualsReferenceOnAllSizes32s) {
    for (const auto &entry : words)
        expectReplicated(entry);
}

TEST(ReplicateBorder, CarriesFloatsAsBitPatterns) {
    Image<Nox32u> src(5, 2), actual(8, 4), expected(8, 4);
    src.generate([](int x, int y, int) { return 0x7f800000U + x * 7 + y; });
    reference::border::copyReplicated<Nox32u>(src.data(), src.step(), src.roi(), expected.data(), expected.step(),
                                              actual.roi(), 1, 2, 1);
    noxiCopyReplicateBorder_32s_C1R(reinterpret_cast<const Nox32s *>(src.data()), src.step(), src.roi(),
                                    reinterpret_cast<Nox32s *>(actual.data()), actual.step(), actual.roi(), 1, 2);
    EXPECT_TRUE(test::sameImage(actual, expected));
}

TEST(ConstBorder, EqualsReferenceOnAllSizes) {
    test::Random random(2);
    for (const NoxiSize size : test::testSizes())
        for (const Border &border : borders)
            for (const int padding : test::testPaddings<Nox8u>()) {
                const NoxiSize whole = border.around(size);
                Image<Nox8u> src(size.width, size.height, 1, padding),
                    actual(whole.width, whole.height, 1, 13 - padding), expected(actual);
                test::randomize(src, random);
                reference::border::copyConstant<Nox8u>(src.data(), src.step(), size, expected.data(), expected.step(),
                                                       whole, border.top, border.left, 171);
                ASSERT_EQ(noxiCopyConstBorder_8u_C1R(src.data(), src.step(), size, actual.data(), actual.step(), whole,
                                                     border.top, border.left, 171),
                          noxStsNoError);
                ASSERT_TRUE(test::sameImage(actual, expected));
            }
}

/// call(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left), where the in-place forms take src or dst alone.
template <class T, class Call>
void expectCopyStatuses(const Call &call, int channels) {
    const NoxiSize size = {4, 3}, whole = {7, 6};
    Image<T> src(4, 3, channels), dst(7, 6, channels);
    const Image<T> before(dst);
    T *s = src.data(), *d = dst.data();
    const int step = dst.step();
    EXPECT_EQ(call(nullptr, 0, NoxiSize{0, 0}, d, step, whole, 1, 1), noxStsNullPointer);
    EXPECT_EQ(call(s, 0, NoxiSize{0, 0}, nullptr, step, whole, 1, 1), noxStsNullPointer);
    // Steps come before sizes, and only need to be positive.
    EXPECT_EQ(call(s, 0, NoxiSize{0, 0}, d, step, whole, 1, 1), noxStsBadStep);
    EXPECT_EQ(call(s, -step, size, d, step, whole, 1, 1), noxStsBadStep);
    EXPECT_EQ(call(s, step, size, d, 0, NoxiSize{1, 1}, 1, 1), noxStsBadStep);
    EXPECT_EQ(call(s, step, size, d, -1, whole, 1, 1), noxStsBadStep);
    for (const NoxiSize bad : {NoxiSize{0, 3}, NoxiSize{4, 0}, NoxiSize{-1, 3}}) {
        EXPECT_EQ(call(s, step, bad, d, step, whole, 0, 0), noxStsBadSize);
        EXPECT_EQ(call(s, step, size, d, step, bad, 0, 0), noxStsBadSize);
    }
    EXPECT_EQ(call(s, step, size, d, step, whole, -1, 1), noxStsBadSize);
    EXPECT_EQ(call(s, step, size, d, step, whole, 1, -1), noxStsBadSize);
    EXPECT_EQ(call(s, step, size, d, step, whole, 4, 1), noxStsBadSize);
    EXPECT_EQ(call(s, step, size, d, step, whole, 1, 4), noxStsBadSize);
    EXPECT_EQ(call(s, step, size, d, step, NoxiSize{6, 6}, 1, 3), noxStsBadSize);
    EXPECT_EQ(call(s, step, NoxiSize{0x7fffffff, 3}, d, step, whole, 1, 0x7fffffff), noxStsBadSize);
    EXPECT_TRUE(test::sameImage(dst, before));
    // A step of 1 is fine: one pixel in one column.
    EXPECT_EQ(call(s, 1, NoxiSize{1, 1}, d, 1, NoxiSize{1, 1}, 0, 0), noxStsNoError);
}

template <class T>
void expectInPlaceStatuses(NoxStatus (*call)(T *, int, NoxiSize, NoxiSize, int, int), int channels) {
    Image<T> image(7, 6, channels);
    const Image<T> before(image);
    T *first = image.row(1) + channels;
    const int step = image.step();
    const NoxiSize size = {4, 3}, whole = {7, 6};
    EXPECT_EQ(call(nullptr, 0, {0, 0}, whole, 1, 1), noxStsNullPointer);
    EXPECT_EQ(call(first, 0, {0, 0}, whole, 1, 1), noxStsBadStep);
    EXPECT_EQ(call(first, -step, size, {6, 6}, 1, 3), noxStsBadStep);
    EXPECT_EQ(call(first, step, {0, 3}, whole, 1, 1), noxStsBadSize);
    EXPECT_EQ(call(first, step, size, {7, 0}, 1, 1), noxStsBadSize);
    EXPECT_EQ(call(first, step, size, whole, -1, 1), noxStsBadSize);
    EXPECT_EQ(call(first, step, size, whole, 1, -1), noxStsBadSize);
    EXPECT_EQ(call(first, step, size, {6, 6}, 1, 3), noxStsBadSize);
    EXPECT_EQ(call(first, step, size, {7, 5}, 3, 1), noxStsBadSize);
    EXPECT_TRUE(test::sameImage(image, before));
}

TEST(ReplicateBorder, StatusesInOrder) {
    for (const auto &entry : bytes) {
        expectCopyStatuses<Nox8u>(entry.copy, entry.channels);
        expectInPlaceStatuses<Nox8u>(entry.inPlace, entry.channels);
    }
    for (const auto &entry : words) {
        expectCopyStatuses<Nox32s>(entry.copy, entry.channels);
        expectInPlaceStatuses<Nox32s>(entry.inPlace, entry.channels);
    }
}

TEST(ConstBorder, StatusesInOrder) {
    expectCopyStatuses<Nox8u>(
        [](const Nox8u *src, int srcStep, NoxiSize srcRoi, Nox8u *dst, int dstStep, NoxiSize dstRoi, int top,
           int left) { return noxiCopyConstBorder_8u_C1R(src, srcStep, srcRoi, dst, dstStep, dstRoi, top, left, 3); },
        1);
}

} // namespace
