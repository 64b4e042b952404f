// Morphology on pictures: coins cut out, cleaned and filled, and a page freed from its uneven background.
//
// usage: morphology COINS PAGE FOLDER
//
// COINS is a picture of bright things on a dark ground, PAGE one of dark print on bright paper. Each step goes to
// FOLDER as a PNG of its own, and all of them to morphology-sheet.png, two rows of four.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

#include "support/picture.h"

namespace {

/// The set cells of a disc, as the library takes a mask.
struct Disc {
    NoxiSize size;
    NoxiPoint anchor;
    std::vector<Nox8u> cells;

    explicit Disc(int diameter) : size{diameter, diameter}, anchor{diameter / 2, diameter / 2} {
        for (int y = 0; y < diameter; ++y)
            for (int x = 0; x < diameter; ++x) {
                const int dx = x - anchor.x, dy = y - anchor.y;
                cells.push_back(4 * (dx * dx + dy * dy) <= diameter * diameter);
            }
    }
};

using Operation = NoxStatus (*)(const Nox8u *, int, Nox8u *, int, NoxiSize, int, const NoxiMorphAdvState *);

/// Opening, closing, top hat, black hat or gradient by a disc; an empty picture when a call fails.
Picture apply(const char *name, Operation operation, const Picture &source, int diameter) {
    const Disc disc(diameter);
    NoxiMorphAdvState *state = nullptr;
    if (failed("noxiMorphAdvInitAlloc_8u_C1R",
               noxiMorphAdvInitAlloc_8u_C1R(&state, source.size, disc.cells.data(), disc.size, disc.anchor)))
        return {};
    const std::unique_ptr<NoxiMorphAdvState, decltype(&noxiMorphAdvFree)> owned(state, noxiMorphAdvFree);
    Picture result(source.size, 1);
    if (failed(name, operation(source.data(), source.step(), result.data(), result.step(), source.size,
                               noxBorderReplicate, state)))
        return {};
    return result;
}

/// The level that parts a picture's pixels best into dark and bright ones (N. Otsu, 1979).
int partingLevel(const Picture &gray) {
    double counts[256] = {}, all = 0, dark = 0, darkSum = 0, best = -1;
    for (const Nox8u pixel : gray.pixels)
        ++counts[pixel];
    for (int i = 0; i < 256; ++i)
        all += i * counts[i];
    int level = 0;
    const double count = double(gray.count());
    for (int i = 0; i < 255; ++i) {
        dark += counts[i];
        darkSum += i * counts[i];
        if (dark == 0 || dark == count)
            continue;
        const double difference = darkSum / dark - (all - darkSum) / (count - dark);
        const double spread = dark * (count - dark) * difference * difference;
        if (spread > best) {
            best = spread;
            level = i;
        }
    }
    return level;
}

Picture cutOut(const Picture &gray, int level) {
    Picture result(gray.size, 1);
    for (std::size_t i = 0; i < gray.count(); ++i)
        result.pixels[i] = gray.pixels[i] > level ? 255 : 0;
    return result;
}

/// Dark places that have no way to the picture's edge become bright: a marker that is bright inside the edge shrinks
/// above the picture.
Picture fillHoles(const Picture &source) {
    Picture filled(source);
    for (int y = 1; y + 1 < source.size.height; ++y)
        std::memset(filled.at(1, y), 255, std::max(source.size.width - 2, 0));
    int bytes = 0;
    if (failed("noxiMorphReconstructGetBufferSize_8u_C1", noxiMorphReconstructGetBufferSize_8u_C1(source.size, &bytes)))
        return {};
    std::vector<Nox8u> buffer(bytes);
    constexpr int fourNeighbours = 1;
    if (failed("noxiMorphReconstructErode_8u_C1IR",
               noxiMorphReconstructErode_8u_C1IR(source.data(), source.step(), filled.data(), filled.step(),
                                                 source.size, buffer.data(), fourNeighbours)))
        return {};
    return filled;
}

Picture inverted(Picture picture) {
    for (Nox8u &pixel : picture.pixels)
        pixel = Nox8u(255 - pixel);
    return picture;
}

/// Pictures in rows of four, on gray.
Picture contactSheet(const std::vector<Picture> &pictures) {
    constexpr int columns = 4, gap = 8;
    NoxiSize tile{1, 1};
    for (const Picture &picture : pictures) {
        tile.width = std::max(tile.width, picture.size.width);
        tile.height = std::max(tile.height, picture.size.height);
    }
    const int rows = (int(pictures.size()) + columns - 1) / columns;
    Picture sheet({columns * (tile.width + gap) + gap, rows * (tile.height + gap) + gap}, 1);
    std::fill(sheet.pixels.begin(), sheet.pixels.end(), Nox8u(128));
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const int left = gap + int(i % columns) * (tile.width + gap),
                  top = gap + int(i / columns) * (tile.height + gap);
        noxiCopy_8u_C1R(pictures[i].data(), pictures[i].step(), sheet.at(left, top), sheet.step(), pictures[i].size);
    }
    return sheet;
}

bool run(const std::string &coinsPath, const std::string &pagePath, const std::string &folder) {
    Picture coins, page;
    if (!readPicture(coinsPath, 1, coins) || !readPicture(pagePath, 1, page))
        return false;
    Stopwatch watch;
    const int level = partingLevel(coins);
    const Picture cut = cutOut(coins, level);
    const Picture opened = apply("noxiMorphOpenBorder_8u_C1R", noxiMorphOpenBorder_8u_C1R, cut, 5);
    const Picture closed = apply("noxiMorphCloseBorder_8u_C1R", noxiMorphCloseBorder_8u_C1R, opened, 7);
    const Picture filled = fillHoles(closed);
    const Picture tophat = apply("noxiMorphTophatBorder_8u_C1R", noxiMorphTophatBorder_8u_C1R, coins, 65);
    const Picture gradient = apply("noxiMorphGradientBorder_8u_C1R", noxiMorphGradientBorder_8u_C1R, coins, 3);
    const Picture print = apply("noxiMorphBlackhatBorder_8u_C1R", noxiMorphBlackhatBorder_8u_C1R, page, 21);
    const double time = watch.lap();
    const std::vector<Picture> pictures = {coins, cut, closed, filled, tophat, gradient, page, inverted(print)};
    const char *names[] = {"coins", "cut-out", "cleaned", "filled", "tophat", "gradient", "page", "print"};
    for (const Picture &picture : pictures)
        if (picture.pixels.empty())
            return false;
    const std::string stem = (std::filesystem::path(folder) / "morphology-").string();
    for (std::size_t i = 0; i < pictures.size(); ++i)
        if (!writePicture(stem + names[i] + ".png", pictures[i]))
            return false;
    if (!writePicture(stem + "sheet.png", contactSheet(pictures)))
        return false;
    const auto bright = [](const Picture &picture) {
        return 100.0 * double(std::count(picture.pixels.begin(), picture.pixels.end(), Nox8u(255))) /
               double(picture.count());
    };
    std::printf("%s: %d x %d, cut at %d: %.1f %% bright, cleaned %.1f %%, holes filled %.1f %%\n", coinsPath.c_str(),
                coins.size.width, coins.size.height, level, bright(cut), bright(closed), bright(filled));
    std::printf("  seven operations %.2f ms\n  %ssheet.png\n", time, stem.c_str());
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: morphology COINS PAGE FOLDER\n");
        return 2;
    }
    return run(argv[1], argv[2], argv[3]) ? 0 : 1;
}
