// Distance maps of a picture's dark and bright parts: every chamfer mask beside the true distance.
//
// usage: distance PICTURE FOLDER
//
// The picture (PNG or JPEG) is cut at its mean; pixels above it get their distance to the others. Prints the largest
// and the mean error of each mask against the true distance, and writes NAME-distance.png: the picture, the map of the
// 5x5 mask, and the true distance, with a line at every eighth pixel of distance.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "support/picture.h"

namespace {

using Map = std::vector<Nox32f>;

/// 255 above the mean, 0 elsewhere.
bool cutAtMean(const Picture &gray, Picture &mask) {
    Nox64f mean = 0, deviation = 0;
    if (failed("noxiMean_StdDev_8u_C1R",
               noxiMean_StdDev_8u_C1R(gray.data(), gray.step(), gray.size, &mean, &deviation)))
        return false;
    mask = Picture(gray.size, 1);
    for (std::size_t i = 0; i < mask.count(); ++i)
        mask.pixels[i] = gray.pixels[i] > mean ? 255 : 0;
    return true;
}

bool chamfer(const Picture &mask, int kernelSize, int norm, Map &map) {
    Nox32f metrics[3] = {};
    map.resize(mask.count());
    const int step = mask.size.width * int(sizeof(Nox32f));
    const auto transform = kernelSize == 3 ? noxiDistanceTransform_3x3_8u32f_C1R : noxiDistanceTransform_5x5_8u32f_C1R;
    return !failed("noxiGetDistanceTransformMask_32f", noxiGetDistanceTransformMask_32f(kernelSize, norm, metrics)) &&
           !failed("noxiDistanceTransform_8u32f_C1R",
                   transform(mask.data(), mask.step(), map.data(), step, mask.size, metrics));
}

bool trueDistance(const Picture &mask, Map &map) {
    int bytes = 0;
    map.resize(mask.count());
    if (failed("noxiTrueDistanceTransformGetBufferSize_8u32f_C1R",
               noxiTrueDistanceTransformGetBufferSize_8u32f_C1R(mask.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiTrueDistanceTransform_8u32f_C1R",
                   noxiTrueDistanceTransform_8u32f_C1R(mask.data(), mask.step(), map.data(),
                                                       mask.size.width * int(sizeof(Nox32f)), mask.size,
                                                       buffer.data()));
}

void printErrors(int kernelSize, int norm, const Map &map, const Map &exact, double milliseconds) {
    constexpr const char *norms[] = {"chessboard", "city block", "Euclidean"};
    double largest = 0, sum = 0;
    for (std::size_t i = 0; i < map.size(); ++i) {
        const double error = std::fabs(double(map[i]) - exact[i]);
        largest = std::max(largest, error);
        sum += error;
    }
    std::printf("  %dx%d %-10s  largest error %6.2f  mean %6.3f  %6.2f ms\n", kernelSize, kernelSize, norms[norm],
                largest, sum / double(map.size()), milliseconds);
}

/// Brightness by distance, dark at every eighth pixel.
Picture drawn(const Map &map, NoxiSize size) {
    Picture picture(size, 1);
    for (std::size_t i = 0; i < map.size(); ++i) {
        const float d = map[i];
        const bool line = d > 0 && std::fmod(d, 8.0F) >= 7;
        picture.pixels[i] = line ? 0 : Nox8u(std::min(255.0F, d * 6));
    }
    return picture;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: distance PICTURE FOLDER\n");
        return 2;
    }
    Picture gray, mask;
    Map exact, map;
    Stopwatch watch;
    if (!readPicture(argv[1], 1, gray) || !cutAtMean(gray, mask))
        return 1;
    watch.lap();
    if (!trueDistance(mask, exact))
        return 1;
    std::printf("%s: %d x %d, true distance up to %.1f in %.2f ms\n", argv[1], gray.size.width, gray.size.height,
                double(*std::max_element(exact.begin(), exact.end())), watch.lap());
    for (const int kernelSize : {3, 5})
        for (int norm = 0; norm < 3; ++norm) {
            watch.lap();
            if (!chamfer(mask, kernelSize, norm, map))
                return 1;
            printErrors(kernelSize, norm, map, exact, watch.lap());
        }
    const std::string name = std::filesystem::path(argv[1]).stem().string();
    const std::string file = std::string(argv[2]) + "/" + name + "-distance.png";
    if (!writePicture(file, sideBySide(sideBySide(gray, drawn(map, gray.size)), drawn(exact, gray.size))))
        return 1;
    std::printf("  %s\n", file.c_str());
    return 0;
}
