// Separates bright things from a dark ground: a relief of gradients, two watersheds, labels, and a picture of them.
//
// usage: segment PICTURE FOLDER [DARK BRIGHT]
//
// Pixels below DARK (30) are ground for sure, those above BRIGHT (150) things for sure. A first watershed decides on
// the others; what it takes as things is closed and numbered, and pieces of less than 0.2 % of the picture are dropped.
// The numbered things then are the labels of a second watershed, by queue and by cost, with boundaries. The results go
// to FOLDER as NAME-segments-queue.png and NAME-segments-cost.png, next to the picture.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "support/picture.h"

namespace {

constexpr int byQueue = 1, byCost = 2, drawBoundaries = 64;
constexpr Nox8u ground = 1, thing = 2, boundary = 255;

/// A byte for the sum of the absolute Sobel derivatives, an eighth of it.
bool gradientRelief(const Picture &gray, Picture &relief) {
    const NoxiSize size = gray.size;
    int dxBytes = 0, dyBytes = 0;
    if (failed("noxiFilterSobelVertGetBufferSize_8u16s_C1R",
               noxiFilterSobelVertGetBufferSize_8u16s_C1R(size, noxMskSize3x3, &dxBytes)) ||
        failed("noxiFilterSobelHorizGetBufferSize_8u16s_C1R",
               noxiFilterSobelHorizGetBufferSize_8u16s_C1R(size, noxMskSize3x3, &dyBytes)))
        return false;
    std::vector<Nox8u> buffer(std::max(dxBytes, dyBytes));
    std::vector<Nox16s> dx(gray.count()), dy(gray.count());
    const int step = size.width * int(sizeof(Nox16s));
    if (failed("noxiFilterSobelVertBorder_8u16s_C1R",
               noxiFilterSobelVertBorder_8u16s_C1R(gray.data(), gray.step(), dx.data(), step, size, noxMskSize3x3,
                                                   noxBorderReplicate, 0, buffer.data())) ||
        failed("noxiFilterSobelHorizBorder_8u16s_C1R",
               noxiFilterSobelHorizBorder_8u16s_C1R(gray.data(), gray.step(), dy.data(), step, size, noxMskSize3x3,
                                                    noxBorderReplicate, 0, buffer.data())))
        return false;
    relief = Picture(size, 1);
    for (std::size_t i = 0; i < gray.count(); ++i)
        relief.pixels[i] = Nox8u(std::min((std::abs(dx[i]) + std::abs(dy[i])) / 8, 255));
    return true;
}

bool watershed(const Picture &relief, Picture &labels, int norm, int flag) {
    int bytes = 0;
    if (failed("noxiSegmentWatershedGetBufferSize_8u_C1R",
               noxiSegmentWatershedGetBufferSize_8u_C1R(relief.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiSegmentWatershed_8u_C1IR",
                   noxiSegmentWatershed_8u_C1IR(relief.data(), relief.step(), labels.data(), labels.step(), relief.size,
                                                norm, flag, buffer.data()));
}

/// Work memory of the fills of a picture.
bool fillBuffer(NoxiSize size, std::vector<Nox8u> &buffer) {
    int bytes = 0;
    if (failed("noxiFloodFillGetSize", noxiFloodFillGetSize(size, &bytes)))
        return false;
    buffer.resize(bytes);
    return true;
}

/// The mask of things without holes: ground that the edge of the picture does not reach becomes a thing, and pieces
/// that are too small become ground.
bool closeAndClean(Picture &mask, std::vector<Nox8u> &buffer) {
    constexpr Nox8u outside = 3, kept = 4, dropped = 5;
    const NoxiSize size = mask.size;
    const double smallest = 0.002 * double(mask.count());
    const auto fill = [&](int x, int y, Nox8u value, NoxiConnectedRegion &region) {
        return !failed("noxiFloodFill_4Con_8u_C1IR", noxiFloodFill_4Con_8u_C1IR(mask.data(), mask.step(), size, {x, y},
                                                                                value, &region, buffer.data()));
    };
    NoxiConnectedRegion region;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const bool edge = x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1;
            if (edge && *mask.at(x, y) == ground && !fill(x, y, outside, region))
                return false;
        }
    for (Nox8u &pixel : mask.pixels)
        pixel = pixel == outside ? 0 : thing;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            if (*mask.at(x, y) != thing)
                continue;
            if (!fill(x, y, kept, region) || (region.area < smallest && !fill(x, y, dropped, region)))
                return false;
        }
    for (Nox8u &pixel : mask.pixels)
        pixel = pixel == kept ? 255 : 0;
    return true;
}

/// Finds the things and numbers them from 1.
bool findThings(const Picture &gray, const Picture &relief, int dark, int bright, Picture &labels, int &count) {
    labels = Picture(gray.size, 1);
    for (std::size_t i = 0; i < gray.count(); ++i)
        labels.pixels[i] = gray.pixels[i] < dark ? ground : gray.pixels[i] > bright ? thing : Nox8u(0);
    std::vector<Nox8u> buffer;
    return watershed(relief, labels, 1, byQueue) && fillBuffer(gray.size, buffer) && closeAndClean(labels, buffer) &&
           !failed("noxiLabelMarkers_8u_C1IR",
                   noxiLabelMarkers_8u_C1IR(labels.data(), labels.step(), gray.size, 1, 253, 1, &count, buffer.data()));
}

/// Labels for the second watershed: the things without the pixels next to something else, and the sure ground.
Picture seedsOf(const Picture &things, const Picture &gray, int dark) {
    Picture seeds(things.size, 1);
    constexpr Nox8u groundLabel = 254;
    for (int y = 0; y < things.size.height; ++y)
        for (int x = 0; x < things.size.width; ++x) {
            const Nox8u label = *things.at(x, y);
            bool inner = label != 0;
            for (int ny = std::max(y - 2, 0); ny <= std::min(y + 2, things.size.height - 1); ++ny)
                for (int nx = std::max(x - 2, 0); nx <= std::min(x + 2, things.size.width - 1); ++nx)
                    inner = inner && *things.at(nx, ny) == label;
            *seeds.at(x, y) = inner ? label : label == 0 && *gray.at(x, y) < dark ? groundLabel : Nox8u(0);
        }
    return seeds;
}

/// The picture in the colours of its labels, with white boundaries.
Picture inColors(const Picture &gray, const Picture &labels) {
    Picture colors(gray.size, 3);
    for (std::size_t i = 0; i < gray.count(); ++i) {
        const unsigned label = labels.pixels[i];
        for (unsigned c = 0; c < 3; ++c) {
            const unsigned tint = label == 254 ? 64 : (label * (c * 64 + 97) + c * 80) % 192 + 64;
            colors.pixels[3 * i + c] = label == boundary ? 255 : Nox8u(gray.pixels[i] * tint / 255);
        }
    }
    return colors;
}

bool run(const std::string &path, const std::string &folder, int dark, int bright) {
    Picture gray, relief, things;
    int count = 0;
    if (!readPicture(path, 1, gray) || !gradientRelief(gray, relief))
        return false;
    Stopwatch watch;
    if (!findThings(gray, relief, dark, bright, things, count))
        return false;
    std::printf("%s: %d x %d, %d things found in %.2f ms\n", path.c_str(), gray.size.width, gray.size.height, count,
                watch.lap());
    const Picture seeds = seedsOf(things, gray, dark);
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(path).stem()).string();
    for (const auto &[name, flag] : {std::pair{"queue", byQueue}, std::pair{"cost", byCost}}) {
        Picture labels = seeds;
        watch.lap();
        if (!watershed(relief, labels, 1, flag | drawBoundaries))
            return false;
        const double milliseconds = watch.lap();
        bool seen[256] = {};
        for (const Nox8u label : labels.pixels)
            seen[label] = true;
        const std::string result = stem + "-segments-" + name + ".png";
        if (!writePicture(result, sideBySide(toColor(gray), inColors(gray, labels))))
            return false;
        std::printf("  watershed by %s: %ld areas and the ground, %.2f ms\n  %s\n", name,
                    long(std::count(seen + 1, seen + 254, true)), milliseconds, result.c_str());
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 && argc != 5) {
        std::fprintf(stderr, "usage: segment PICTURE FOLDER [DARK BRIGHT]\n");
        return 2;
    }
    const int dark = argc == 5 ? std::atoi(argv[3]) : 30, bright = argc == 5 ? std::atoi(argv[4]) : 150;
    if (dark < 0 || bright < dark || bright > 255) {
        std::fprintf(stderr, "the levels must be 0 <= DARK <= BRIGHT <= 255\n");
        return 2;
    }
    return run(argv[1], argv[2], dark, bright) ? 0 : 1;
}
