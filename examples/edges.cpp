// Edges of a picture: Sobel derivatives, Canny's detector, the edge map as a PNG.
//
// usage: edges PICTURE FOLDER [LOW HIGH]
//
// PICTURE is any PNG or JPEG. The results go to FOLDER as NAME-edges.png and NAME-side-by-side.png. Without thresholds
// the high one is the gradient magnitude that nine of ten pixels stay below, and the low one 0.4 of it.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "support/edges.h"

namespace {

bool run(const std::string &path, const std::string &folder, EdgeThresholds thresholds) {
    Stopwatch watch;
    Picture color;
    if (!readPicture(path, 3, color))
        return false;
    const double reading = watch.lap();
    const Picture gray = toGray(color);
    const double conversion = watch.lap();
    Derivatives derivatives;
    if (!differentiate(gray, derivatives))
        return false;
    const double sobel = watch.lap();
    if (thresholds.high < 0)
        thresholds = chosenThresholds(derivatives);
    Picture edges(gray.size, 1);
    watch.lap();
    if (!detectEdges(derivatives, thresholds, edges))
        return false;
    const double canny = watch.lap();
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(path).stem()).string();
    if (!writePicture(stem + "-edges.png", edges) ||
        !writePicture(stem + "-side-by-side.png", sideBySide(color, toColor(edges))))
        return false;
    const auto count = std::count(edges.pixels.begin(), edges.pixels.end(), Nox8u(255));
    std::printf("%s: %d x %d, thresholds %.0f and %.0f, %ld edge pixels (%.1f %%)\n", path.c_str(), gray.size.width,
                gray.size.height, double(thresholds.low), double(thresholds.high), long(count),
                100.0 * double(count) / double(gray.count()));
    std::printf("  read %.2f ms, gray %.2f ms, Sobel x and y %.2f ms, Canny %.2f ms, write %.2f ms\n", reading,
                conversion, sobel, canny, watch.lap());
    std::printf("  %s-edges.png\n  %s-side-by-side.png\n", stem.c_str(), stem.c_str());
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 && argc != 5) {
        std::fprintf(stderr, "usage: edges PICTURE FOLDER [LOW HIGH]\n");
        return 2;
    }
    EdgeThresholds thresholds = {-1, -1};
    if (argc == 5) {
        thresholds = {std::strtof(argv[3], nullptr), std::strtof(argv[4], nullptr)};
        if (!(thresholds.low >= 0 && thresholds.high >= thresholds.low)) {
            std::fprintf(stderr, "thresholds must be numbers with 0 <= LOW <= HIGH\n");
            return 2;
        }
    }
    return run(argv[1], argv[2], thresholds) ? 0 : 1;
}
