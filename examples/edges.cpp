// Edges of a picture: Sobel derivatives, Canny's detector, the edge map as a PNG.
//
// usage: edges PICTURE FOLDER [LOW HIGH]
//
// PICTURE is any PNG or JPEG. The results go to FOLDER as NAME-edges.png and NAME-side-by-side.png. Without thresholds
// the high one is the gradient magnitude that nine of ten pixels stay below, and the low one 0.4 of it.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "support/picture.h"

namespace {

struct Derivatives {
    std::vector<Nox16s> dx, dy;
    int step;
};

/// Horizontal and vertical Sobel derivatives with the edge pixels repeated outside.
bool differentiate(const Picture &gray, Derivatives &d) {
    d.dx.resize(gray.count());
    d.dy.resize(gray.count());
    d.step = gray.size.width * int(sizeof(Nox16s));
    int dxBytes = 0, dyBytes = 0;
    if (failed("noxiFilterSobelNegVertGetBufferSize_8u16s_C1R",
               noxiFilterSobelNegVertGetBufferSize_8u16s_C1R(gray.size, noxMskSize3x3, &dxBytes)) ||
        failed("noxiFilterSobelHorizGetBufferSize_8u16s_C1R",
               noxiFilterSobelHorizGetBufferSize_8u16s_C1R(gray.size, noxMskSize3x3, &dyBytes)))
        return false;
    std::vector<Nox8u> buffer(std::max(dxBytes, dyBytes));
    return !failed("noxiFilterSobelNegVertBorder_8u16s_C1R",
                   noxiFilterSobelNegVertBorder_8u16s_C1R(gray.data(), gray.step(), d.dx.data(), d.step, gray.size,
                                                          noxMskSize3x3, noxBorderReplicate, 0, buffer.data())) &&
           !failed("noxiFilterSobelHorizBorder_8u16s_C1R",
                   noxiFilterSobelHorizBorder_8u16s_C1R(gray.data(), gray.step(), d.dy.data(), d.step, gray.size,
                                                        noxMskSize3x3, noxBorderReplicate, 0, buffer.data()));
}

/// The magnitude that nine of ten pixels stay below.
float strongMagnitude(const Derivatives &d) {
    std::vector<int> magnitudes(d.dx.size());
    for (std::size_t i = 0; i < magnitudes.size(); ++i)
        magnitudes[i] = std::abs(d.dx[i]) + std::abs(d.dy[i]);
    const auto ninth = magnitudes.begin() + std::ptrdiff_t(magnitudes.size() * 9 / 10);
    std::nth_element(magnitudes.begin(), ninth, magnitudes.end());
    return float(std::max(*ninth, 1));
}

bool detect(const Derivatives &d, float low, float high, Picture &edges) {
    int bytes = 0;
    if (failed("noxiCannyGetSize", noxiCannyGetSize(edges.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiCanny_16s8u_C1R", noxiCanny_16s8u_C1R(d.dx.data(), d.step, d.dy.data(), d.step, edges.data(),
                                                              edges.step(), edges.size, low, high, buffer.data()));
}

bool run(const std::string &path, const std::string &folder, float low, float high) {
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
    if (high < 0) {
        high = strongMagnitude(derivatives);
        low = 0.4F * high;
    }
    Picture edges(gray.size, 1);
    watch.lap();
    if (!detect(derivatives, low, high, edges))
        return false;
    const double canny = watch.lap();
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(path).stem()).string();
    if (!writePicture(stem + "-edges.png", edges) ||
        !writePicture(stem + "-side-by-side.png", sideBySide(color, toColor(edges))))
        return false;
    const auto count = std::count(edges.pixels.begin(), edges.pixels.end(), Nox8u(255));
    std::printf("%s: %d x %d, thresholds %.0f and %.0f, %ld edge pixels (%.1f %%)\n", path.c_str(), gray.size.width,
                gray.size.height, double(low), double(high), long(count), 100.0 * double(count) / double(gray.count()));
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
    float low = -1, high = -1;
    if (argc == 5) {
        low = std::strtof(argv[3], nullptr);
        high = std::strtof(argv[4], nullptr);
        if (!(low >= 0 && high >= low)) {
            std::fprintf(stderr, "thresholds must be numbers with 0 <= LOW <= HIGH\n");
            return 2;
        }
    }
    return run(argv[1], argv[2], low, high) ? 0 : 1;
}
