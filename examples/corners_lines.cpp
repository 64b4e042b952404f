// Corners and straight lines of a picture.
//
// usage: corners_lines PICTURE FOLDER
//
// PICTURE is a PNG or JPEG. FOLDER receives NAME-corners.png, with a dot on each corner (the strongest in yellow), and
// NAME-lines.png, where Canny's edges lie over the picture and the strongest lines of the Hough transform over both,
// stronger ones above weaker ones. examples/track follows the same corners.
//
// The program counts the edge pixels on each line anew, in double precision, and fails when a line has fewer than the
// threshold asks for.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "support/corners.h"
#include "support/drawing.h"
#include "support/edges.h"

namespace {

constexpr int mostLines = 24, mostCorners = 1000, strongCorners = 100, margin = 4;
const NoxiPoint32f resolution = {1.0F, float(std::acos(-1.0)) / 180.0F}; ///< a pixel and a degree

bool runCorners(const Picture &color, const std::string &output) {
    Stopwatch watch;
    std::vector<Corner> corners;
    if (!findCorners(toGray(color), margin, mostCorners, corners))
        return false;
    const double milliseconds = watch.lap();
    if (corners.empty())
        return std::fprintf(stderr, "no corners\n"), false;
    Picture drawing = color;
    for (std::size_t i = corners.size(); i-- > 0;)
        drawDot(drawing, {float(corners[i].x), float(corners[i].y)}, i < strongCorners ? yellow : green);
    std::printf("  %zu corners, responses %.5f to %.5f, in %.2f ms\n    %s\n", corners.size(),
                double(corners.front().response), double(corners.back().response), milliseconds, output.c_str());
    return writePicture(output, drawing);
}

bool findLines(const Picture &edges, int threshold, std::vector<NoxiPoint32f> &lines) {
    int bytes = 0, count = 0;
    if (failed("noxiHoughLineGetSize_8u_C1R", noxiHoughLineGetSize_8u_C1R(edges.size, resolution, mostLines, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    lines.resize(mostLines);
    if (failed("noxiHoughLine_8u32f_C1R",
               noxiHoughLine_8u32f_C1R(edges.data(), edges.step(), edges.size, resolution, threshold, lines.data(),
                                       mostLines, &count, buffer.data())))
        return false;
    lines.resize(count);
    return true;
}

/// Edge pixels whose distance from the line is less than half a step, or next to that.
int pixelsOn(const Picture &edges, NoxiPoint32f line) {
    const double c = std::cos(double(line.y)), s = std::sin(double(line.y));
    int count = 0;
    for (int y = 0; y < edges.size.height; ++y)
        for (int x = 0; x < edges.size.width; ++x)
            count += *edges.at(x, y) != 0 && std::fabs(x * c + y * s - double(line.x)) <= resolution.x / 2 + 1e-3;
    return count;
}

/// The whole line through the picture.
void drawLine(Picture &picture, NoxiPoint32f line, Color color) {
    const float c = std::cos(line.y), s = std::sin(line.y);
    const float reach = float(picture.size.width + picture.size.height);
    drawSegment(picture, {line.x * c - reach * s, line.x * s + reach * c},
                {line.x * c + reach * s, line.x * s - reach * c}, color);
}

/// From yellow, for the strongest, to dark red.
Color rankColor(std::size_t rank, std::size_t count) {
    const double share = double(rank) / double(std::max<std::size_t>(count, 1));
    return {Nox8u(250 - 110 * share), Nox8u(220 - 220 * share), 40};
}

bool runLines(const Picture &color, const std::string &output) {
    Stopwatch watch;
    Derivatives derivatives;
    Picture edges(color.size, 1);
    if (!differentiate(toGray(color), derivatives) || !detectEdges(derivatives, chosenThresholds(derivatives), edges))
        return false;
    const auto set = std::count(edges.pixels.begin(), edges.pixels.end(), Nox8u(255));
    // A quarter of the shorter side.
    const int threshold = std::max(std::min(color.size.width, color.size.height) / 4, 1);
    std::vector<NoxiPoint32f> lines;
    watch.lap();
    if (!findLines(edges, threshold, lines))
        return false;
    std::printf(
        "  %ld edge pixels (%.1f %%), %zu lines of more than %d pixels (at most %d are asked for), in %.2f ms\n",
        long(set), 100.0 * double(set) / double(edges.count()), lines.size(), threshold, mostLines, watch.lap());
    Picture drawing = color;
    for (int y = 0; y < edges.size.height; ++y)
        for (int x = 0; x < edges.size.width; ++x)
            if (*edges.at(x, y) != 0)
                plot(drawing, x, y, {255, 255, 255});
    bool good = !lines.empty();
    for (std::size_t i = lines.size(); i-- > 0;)
        drawLine(drawing, lines[i], rankColor(i, lines.size()));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const int pixels = pixelsOn(edges, lines[i]);
        good = good && pixels > threshold;
        if (i < 8)
            std::printf("    rho %6.1f, theta %5.1f degrees: %d pixels\n", double(lines[i].x),
                        double(lines[i].y) * 180 / std::acos(-1.0), pixels);
    }
    if (!good)
        std::fprintf(stderr, "no lines, or a line with too few pixels\n");
    std::printf("    %s\n", output.c_str());
    return writePicture(output, drawing) && good;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: corners_lines PICTURE FOLDER\n");
        return 2;
    }
    Picture color;
    if (!readPicture(argv[1], 3, color))
        return 1;
    const std::string stem = (std::filesystem::path(argv[2]) / std::filesystem::path(argv[1]).stem()).string();
    std::printf("%s: %d x %d\n", argv[1], color.size.width, color.size.height);
    return runCorners(color, stem + "-corners.png") && runLines(color, stem + "-lines.png") ? 0 : 1;
}
