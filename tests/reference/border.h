// Plain copies and borders of images.
#pragma once

#include "noxtypes.h"
#include "support/element.h"

namespace reference::border {

/// Element i of row y of an image with a byte step.
template <class T>
auto element(T *image, int step, int y, int i) {
    return test::rowAt(image, step, y)[i];
}

template <class T>
void copy(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels) {
    for (int y = 0; y < roi.height; ++y)
        for (int i = 0; i < roi.width * channels; ++i)
            element(dst, dstStep, y, i) = element(src, srcStep, y, i);
}

template <class T>
void set(T value, T *dst, int dstStep, NoxiSize roi) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            element(dst, dstStep, y, x) = value;
            __asm__ volatile("" : : : "memory"); // a plain loop, not the library call that compilers make of it
        }
}

/// Walks from the first or last pixel of a line outward, one pixel at a time, turning where the line ends.
/// Kinds: 1 nearest, 2 cyclic, 3 and 4 reflections without and with the edge repeated, 5 before the start as 3, past
/// the end as 4.
inline int walk(int position, int length, int kind) {
    if (position >= 0 && position < length)
        return position;
    const bool before = position < 0;
    if (kind == 5)
        kind = before ? 3 : 4;
    int index = before ? 0 : length - 1, direction = before ? 1 : -1;
    for (int steps = before ? -position : position - length + 1; steps > 0; --steps) {
        const bool first = before ? steps == -position : steps == position - length + 1;
        if (kind == 1)
            continue;
        if (kind == 2) {
            index = (index + (before ? length - 1 : 1)) % length;
            continue;
        }
        if (kind == 4 && first)
            continue;
        index += direction;
        if (index < 0 || index >= length) {
            index -= direction;
            direction = -direction;
            if (kind == 3 && length > 1)
                index += direction;
        }
    }
    return index;
}

template <class T>
void copyReplicated(const T *src, int srcStep, NoxiSize srcRoi, T *dst, int dstStep, NoxiSize dstRoi, int top, int left,
                    int channels) {
    for (int y = 0; y < dstRoi.height; ++y)
        for (int x = 0; x < dstRoi.width; ++x)
            for (int c = 0; c < channels; ++c)
                element(dst, dstStep, y, x * channels + c) = element(src, srcStep, walk(y - top, srcRoi.height, 1),
                                                                     walk(x - left, srcRoi.width, 1) * channels + c);
}

template <class T>
void copyConstant(const T *src, int srcStep, NoxiSize srcRoi, T *dst, int dstStep, NoxiSize dstRoi, int top, int left,
                  T value) {
    for (int y = 0; y < dstRoi.height; ++y)
        for (int x = 0; x < dstRoi.width; ++x) {
            const bool inside = y >= top && y < top + srcRoi.height && x >= left && x < left + srcRoi.width;
            element(dst, dstStep, y, x) = inside ? T(element(src, srcStep, y - top, x - left)) : value;
        }
}

/// The source row behind row y of a copy with border, y counted from the top of the copy.
inline int borderRow(int y, int top, int height, int kind) {
    if (kind != 2 || (y >= top && y < top + height))
        return walk(y - top, height, kind);
    return (y < top ? y : y - height) % height;
}

} // namespace reference::border
