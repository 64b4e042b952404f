// A newly allocated copy of an image with a border of any kind.
#include <algorithm>
#include <climits>
#include <cstring>

#include "borders.h"
#include "noxcv/primitives.h"
#include "owncopybytes.h"
#include "ownprimitives.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr int mixedBorder = 5;

template <class T, int channels>
struct Pixel {
    Element<T> channel[channels];
};

template <class T, int channels>
Pixel<T, channels> pixelOf(T value) {
    Pixel<T, channels> pixel;
    for (int c = 0; c < channels; ++c)
        pixel.channel[c] = value;
    return pixel;
}

/// The pixel of a line that stands for a position outside it.
int outsideIndex(int position, int length, int kind) {
    if (kind == mixedBorder)
        kind = position < 0 ? noxBorderMirror : noxBorderMirrorEdge;
    return borderIndex(position, length, kind);
}

/// The source row for row y (from 0) of the result, y outside the source's rows.
int outsideRow(int y, int top, int height, int kind) {
    if (kind == noxBorderWrap)
        return (y < top ? y : y - height) % height;
    return outsideIndex(y - top, height, kind);
}

/// The four bands around the source's pixels: above and below over the source's width, then left and right over the
/// full height.
template <class P>
struct Frame {
    Rows<const P> src;
    Rows<P> dst;
    int width, height, left, right, top, bottom;

    template <class FillRow>
    void fillAboveAndBelow(const FillRow &fillRow) const {
        for (int y = 0; y < top; ++y)
            fillRow(dst[y] + left, y);
        for (int y = top + height; y < top + height + bottom; ++y)
            fillRow(dst[y] + left, y);
    }

    template <class PixelAt>
    void fillLeftAndRight(const PixelAt &pixelAt) const {
        for (int y = 0; y < top + height + bottom; ++y) {
            P *row = dst[y] + left;
            for (int x = -1; x >= -left; --x)
                row[x] = pixelAt(row, x);
            for (int x = width; x < width + right; ++x)
                row[x] = pixelAt(row, x);
        }
    }

    void copySource() const {
        for (int y = 0; y < height; ++y)
            copyBytes(dst[top + y] + left, src[y], sizeof(P) * width);
    }

    void fillWith(const P &value) const {
        fillAboveAndBelow([&](P *row, int) { std::fill_n(row, width, value); });
        fillLeftAndRight([&](const P *, int) { return value; });
    }

    void fillFromSource(int kind) const {
        fillAboveAndBelow(
            [&](P *row, int y) { copyBytes(row, src[outsideRow(y, top, height, kind)], sizeof(P) * width); });
        fillLeftAndRight([&](const P *row, int x) { return row[outsideIndex(x, width, kind)]; });
    }
};

template <class T, int channels>
T *copyWithBorder(const T *src, int srcStep, int width, int height, int kind, T value, int left, int right, int top,
                  int bottom) {
    using P = Pixel<T, channels>;
    const long long step = (static_cast<long long>(width) + left + right) * sizeof(P);
    const long long rows = static_cast<long long>(height) + top + bottom;
    if (step > INT_MAX || rows > INT_MAX || step * rows > INT_MAX)
        return nullptr;
    Nox8u *block = noxsMalloc_8u(static_cast<int>(step * rows));
    if (block == nullptr)
        return nullptr;
    const Frame<P> frame = {{reinterpret_cast<const P *>(src), srcStep},
                            {reinterpret_cast<P *>(block), static_cast<std::ptrdiff_t>(step)},
                            width,
                            height,
                            left,
                            right,
                            top,
                            bottom};
    frame.copySource();
    if (kind == noxBorderConstant)
        frame.fillWith(pixelOf<T, channels>(value));
    else if (kind >= noxBorderReplicate && kind <= mixedBorder)
        frame.fillFromSource(kind);
    return reinterpret_cast<T *>(block);
}

} // namespace

#define NOX_COPY_WITH_BORDER(TYPE, TAG, CHANNELS)                                                                      \
    TYPE *ownCopyWithBorder_##TAG##_C##CHANNELS##R(const TYPE *src, int srcStep, int width, int height, int kind,      \
                                                   TYPE value, int left, int right, int top, int bottom) {             \
        return copyWithBorder<TYPE, CHANNELS>(src, srcStep, width, height, kind, value, left, right, top, bottom);     \
    }
NOX_COPY_WITH_BORDER(Nox8u, 8u, 1)
NOX_COPY_WITH_BORDER(Nox8u, 8u, 3)
NOX_COPY_WITH_BORDER(Nox16u, 16u, 1)
NOX_COPY_WITH_BORDER(Nox16u, 16u, 3)
NOX_COPY_WITH_BORDER(Nox32f, 32f, 1)
NOX_COPY_WITH_BORDER(Nox32f, 32f, 3)
