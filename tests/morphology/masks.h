// Structuring elements for tests.
#pragma once

#include <string>
#include <vector>

#include "support/image.h"

namespace test::morphology {

struct Mask {
    std::string name;
    NoxiSize size;
    NoxiPoint anchor;
    std::vector<Nox8u> cells;

    /// Cells for which set(x, y) holds, with different bytes; the anchor in the middle.
    template <class Set>
    static Mask of(const char *name, NoxiSize size, Set set) {
        Mask mask{name, size, {size.width >> 1, size.height >> 1}, {}};
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                mask.cells.push_back(set(x, y) ? Nox8u(1 + (x * 7 + y * 50) % 255) : Nox8u(0));
        return mask;
    }
};

/// A mask of every kind, each with some anchors.
inline std::vector<Mask> someMasks(Random &random) {
    const std::vector<Mask> shapes = {
        Mask::of("empty", {7, 5}, [](int, int) { return false; }),
        Mask::of("one cell", {1, 1}, [](int, int) { return true; }),
        Mask::of("single set cell", {9, 6}, [](int x, int y) { return x == 1 && y == 4; }),
        Mask::of("3x3", {3, 3}, [](int, int) { return true; }),
        Mask::of("8x6", {8, 6}, [](int, int) { return true; }),
        Mask::of("box with margins", {12, 11}, [](int x, int y) { return x > 3 && x < 8 && y > 5 && y < 9; }),
        Mask::of("column", {1, 40}, [](int, int) { return true; }),
        Mask::of("row", {40, 1}, [](int, int) { return true; }),
        Mask::of("cross", {11, 9}, [](int x, int y) { return x == 5 || y == 4; }),
        Mask::of("small cross", {3, 3}, [](int x, int y) { return x == 1 || y == 1; }),
        Mask::of("diamond", {13, 13}, [](int x, int y) { return std::abs(x - 6) + std::abs(y - 6) <= 6; }),
        Mask::of("disc", {15, 15}, [](int x, int y) { return (x - 7) * (x - 7) + (y - 7) * (y - 7) <= 52; }),
        Mask::of("wide disc", {51, 21},
                 [](int x, int y) { return (x - 25) * (x - 25) + 5 * (y - 10) * (y - 10) < 600; }),
        Mask::of("disc with gaps", {15, 15},
                 [](int x, int y) { return y % 4 != 3 && (x - 7) * (x - 7) + (y - 7) * (y - 7) <= 52; }),
        Mask::of("margins about a cross", {17, 14},
                 [](int x, int y) { return y > 2 && y < 9 && (x == 6 || y == 6) && x > 1; }),
        Mask::of("chequered", {6, 5}, [](int x, int y) { return (x + y) % 2 == 0; }),
        Mask::of("ring", {12, 12}, [](int x, int y) { return x == 0 || y == 0 || x == 11 || y == 11; }),
        Mask::of("two columns", {9, 1}, [](int x, int) { return x == 0 || x == 8; }),
        Mask::of("slope", {9, 9}, [](int x, int y) { return x == y; }),
    };
    std::vector<Mask> masks;
    for (const Mask &shape : shapes)
        for (int i = 0; i < 4; ++i) {
            masks.push_back(shape);
            if (i > 0)
                masks.back().anchor = {int(random() % shape.size.width), int(random() % shape.size.height)};
        }
    return masks;
}

/// A small mask with some set cells, sometimes of full runs.
inline Mask randomMask(Random &random) {
    const NoxiSize size{1 + int(random() % 12), 1 + int(random() % 12)};
    const int kind = int(random() % 3), density = 1 + int(random() % 5);
    Mask mask = Mask::of("random", size, [&](int, int) { return random() % density == 0; });
    if (kind == 0)
        for (int y = 0; y < size.height; ++y) {
            const int first = int(random() % size.width), end = first + int(random() % (size.width - first + 1));
            for (int x = 0; x < size.width; ++x)
                mask.cells[std::size_t(y) * size.width + x] = x >= first && x < end;
        }
    mask.anchor = {int(random() % size.width), int(random() % size.height)};
    return mask;
}

} // namespace test::morphology
