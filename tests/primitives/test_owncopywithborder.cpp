#include "noxcv.h"
#include "ownprimitives.h"
#include "reference/border.h"
#include "support/allocator.h"
#include "support/image.h"

using test::Image;

namespace {

template <class T>
struct Entry {
    T *(*call)(const T *, int, int, int, int, T, int, int, int, int);
    int channels;
};

const Entry<Nox8u> bytes[] = {{ownCopyWithBorder_8u_C1R, 1}, {ownCopyWithBorder_8u_C3R, 3}};
const Entry<Nox16u> shorts[] = {{ownCopyWithBorder_16u_C1R, 1}, {ownCopyWithBorder_16u_C3R, 3}};
const Entry<Nox32f> floats[] = {{ownCopyWithBorder_32f_C1R, 1}, {ownCopyWithBorder_32f_C3R, 3}};

struct Border {
    int left, right, top, bottom;
};
const Border borders[] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {2, 5, 3, 4}, {0, 40, 7, 0}, {19, 3, 0, 23}};

/// Position in a copy with border, from the corner of the source.
template <class T>
T expectedElement(const Image<T> &src, int kind, T value, const Border &border, int x, int y, int channel) {
    const bool inside =
        x >= border.left && x < border.left + src.width() && y >= border.top && y < border.top + src.height();
    if (kind == 0 && !inside)
        return value;
    return src.at(reference::border::walk(x - border.left, src.width(), kind),
                  reference::border::borderRow(y, border.top, src.height(), kind), channel);
}

template <class T>
void expectBorders(const Entry<T> &entry, int kind) {
    test::Random random(kind);
    for (const NoxiSize size : {NoxiSize{1, 1}, {1, 5}, {6, 1}, {2, 2}, {3, 3}, {17, 4}, {64, 9}, {131, 3}})
        for (const Border &border : borders) {
            Image<T> src(size.width, size.height, entry.channels, 5);
            test::randomize(src, random);
            const T value = test::randomElement<T>(random);
            T *block = entry.call(src.data(), src.step(), size.width, size.height, kind, value, border.left,
                                  border.right, border.top, border.bottom);
            ASSERT_NE(block, nullptr);
            const int width = size.width + border.left + border.right,
                      height = size.height + border.top + border.bottom;
            for (int y = 0, i = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < entry.channels; ++c, ++i)
                        ASSERT_TRUE(test::sameElement(block[i], expectedElement(src, kind, value, border, x, y, c)))
                            << x << " " << y << " " << c << " of " << width << "x" << height << " kind " << kind;
            noxsFree(block);
        }
}

TEST(CopyWithBorder, EqualsReference) {
    for (int kind = 0; kind <= 5; ++kind) {
        for (const auto &entry : bytes)
            expectBorders(entry, kind);
        for (const auto &entry : shorts)
            expectBorders(entry, kind);
        for (const auto &entry : floats)
            expectBorders(entry, kind);
    }
}

/// Row or column order of a border around pixels 0, 1, 2, told by the values.
std::string bandOf(int kind, bool rows) {
    const Nox8u src[] = {0, 1, 2};
    Nox8u *block = rows ? ownCopyWithBorder_8u_C1R(src, 1, 1, 3, kind, 9, 0, 0, 5, 5)
                        : ownCopyWithBorder_8u_C1R(src, 3, 3, 1, kind, 9, 5, 5, 0, 0);
    std::string text;
    for (int i = 0; i < 13; ++i)
        text += static_cast<char>('0' + block[i]);
    noxsFree(block);
    return text;
}

TEST(CopyWithBorder, OrderOfTheKinds) {
    const std::pair<int, const char *> expected[] = {
        {0, "9999901299999"}, {1, "0000001222222"}, {3, "1012101210121"}, {4, "1221001221001"}, {5, "1012101221001"}};
    for (const auto &[kind, text] : expected) {
        EXPECT_EQ(bandOf(kind, true), text) << kind;
        EXPECT_EQ(bandOf(kind, false), text) << kind;
    }
    EXPECT_EQ(bandOf(2, false), "1201201201201");
    // The cyclic kind starts its top band with source row 0, and its bottom band with source row `top`.
    EXPECT_EQ(bandOf(2, true), "0120101220120");
}

TEST(CopyWithBorder, UnknownKindGivesTheMiddleAlone) {
    Image<Nox8u> src(5, 4);
    src.generate([](int x, int y, int) { return x + 10 * y; });
    for (const int kind : {-1, 6, 99}) {
        Nox8u *block = ownCopyWithBorder_8u_C1R(src.data(), src.step(), 5, 4, kind, 0, 2, 3, 1, 2);
        ASSERT_NE(block, nullptr);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x)
                ASSERT_EQ(block[(y + 1) * 10 + x + 2], src.at(x, y));
        noxsFree(block);
    }
}

TEST(CopyWithBorder, OnePackedBlockFromTheAllocator) {
    Image<Nox32f> src(5, 4, 3);
    const test::CountedAllocator counted;
    Nox32f *block = ownCopyWithBorder_32f_C3R(src.data(), src.step(), 5, 4, 1, 0.0F, 1, 2, 3, 4);
    EXPECT_EQ(test::CountedAllocator::allocations(), 1);
    EXPECT_EQ(test::CountedAllocator::lastSize(), 8U * 11 * 3 * sizeof(Nox32f) + 32 + sizeof(void *));
    noxsFree(block);
    EXPECT_EQ(test::CountedAllocator::live(), 0);
}

TEST(CopyWithBorder, NullWhenMemoryIsShort) {
    const Nox8u pixel = 1;
    const test::CountedAllocator counted(1);
    EXPECT_EQ(ownCopyWithBorder_8u_C1R(&pixel, 1, 1, 1, 3, 0, 1, 1, 1, 1), nullptr);
    EXPECT_EQ(test::CountedAllocator::allocations(), 1);
    EXPECT_EQ(ownCopyWithBorder_8u_C1R(&pixel, 1, 1, 1, 3, 0, 50000, 0, 50000, 0), nullptr);
    EXPECT_EQ(test::CountedAllocator::allocations(), 1);
}

} // namespace
