// Tracks points from one picture to another through two image pyramids, and back again as a check.
//
// The points are the first picture's strongest corners.
//
// usage: track FIRST SECOND FOLDER
//
// FIRST and SECOND are PNG or JPEG of one size. FOLDER receives NAME-tracks.png (green: tracked forth and back within
// half a pixel; red: lost or doubtful), NAME-pyramid.png (levels at a rate of 1.5) and NAME-undistorted.png. A second
// run tracks FIRST against itself, shifted by known sub-pixel amounts; the program fails when the median error of that
// is not below 0.05 pixel.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "support/corners.h"
#include "support/drawing.h"

namespace {

constexpr int levels = 4, window = 21, iterations = 20;
constexpr float stopBelow = 0.01F;

// ---- pyramids

/// A pyramid with its images; level 0 is the picture itself.
class Pyramid {
public:
    /// False when a call fails.
    bool build(const Picture &gray, float rate, int lastLevel) {
        NoxiPyramid *record = nullptr;
        if (failed("noxiPyramidInitAlloc", noxiPyramidInitAlloc(&record, lastLevel, gray.size, rate)))
            return false;
        record_.reset(record);
        images_.assign(1, gray);
        for (int level = 1; level <= record->level; ++level)
            images_.emplace_back(record->sizes[level], 1);
        for (int level = 0; level <= record->level; ++level) {
            record->images[level] = images_[level].data();
            record->steps[level] = images_[level].step();
        }
        return fill(rate);
    }
    const NoxiPyramid *record() const { return record_.get(); }
    const std::vector<Picture> &images() const { return images_; }

private:
    struct Release {
        void operator()(NoxiPyramid *record) const { noxiPyramidFree(record); }
    };

    bool fill(float rate) {
        const Nox16s kernel[] = {1, 4, 6, 4, 1};
        NoxiPyramidLayerState *state = nullptr;
        if (failed("noxiPyramidLayerDownInitAlloc_8u_C1R",
                   noxiPyramidLayerDownInitAlloc_8u_C1R(&state, images_[0].size, rate, kernel, 5, 2)))
            return false;
        bool good = true;
        for (std::size_t level = 1; good && level < images_.size(); ++level) {
            const Picture &from = images_[level - 1];
            Picture &to = images_[level];
            good = !failed(
                "noxiPyramidLayerDown_8u_C1R",
                noxiPyramidLayerDown_8u_C1R(from.data(), from.step(), from.size, to.data(), to.step(), to.size, state));
        }
        noxiPyramidLayerDownFree_8u_C1R(state);
        return good;
    }

    std::unique_ptr<NoxiPyramid, Release> record_;
    std::vector<Picture> images_;
};

/// All levels next to each other.
Picture montage(const Pyramid &pyramid) {
    NoxiSize size = {0, pyramid.images()[0].size.height};
    for (const Picture &image : pyramid.images())
        size.width += image.size.width;
    Picture all(size, 1);
    int left = 0;
    for (const Picture &image : pyramid.images()) {
        for (int y = 0; y < image.size.height; ++y)
            std::copy_n(image.at(0, y), image.size.width, all.at(left, y));
        left += image.size.width;
    }
    return all;
}

// ---- points

/// The places of the strongest corners.
bool strongPoints(const Picture &gray, std::vector<NoxiPoint32f> &points) {
    constexpr int margin = 12, most = 2500;
    std::vector<Corner> corners;
    if (!findCorners(gray, margin, most, corners))
        return false;
    for (const Corner &corner : corners)
        points.push_back({float(corner.x), float(corner.y)});
    return true;
}

struct Tracks {
    std::vector<NoxiPoint32f> points;
    std::vector<Nox8s> status;
    std::vector<Nox32f> error;
};

/// Follows points from one pyramid to the other, starting at their own places.
bool follow(const Pyramid &from, const Pyramid &to, const std::vector<NoxiPoint32f> &points, Tracks &tracks) {
    const NoxiSize coarse = {from.record()->sizes[0].width / 2 + 1, from.record()->sizes[0].height / 2 + 1};
    NoxiOptFlowPyrLKState *state = nullptr;
    if (failed("noxiOpticalFlowPyrLKInitAlloc_8u_C1R", noxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, coarse, window, 0)))
        return false;
    tracks.points = points;
    tracks.status.resize(points.size());
    tracks.error.resize(points.size());
    const NoxStatus status = noxiOpticalFlowPyrLK_8u_C1R(
        from.record(), to.record(), points.data(), tracks.points.data(), tracks.status.data(), tracks.error.data(),
        int(points.size()), window, from.record()->level, iterations, stopBelow, state);
    noxiOpticalFlowPyrLKFree_8u_C1R(state);
    return !failed("noxiOpticalFlowPyrLK_8u_C1R", status);
}

float distance(NoxiPoint32f a, NoxiPoint32f b) { return std::hypot(a.x - b.x, a.y - b.y); }

float median(std::vector<float> values) {
    if (values.empty())
        return 0;
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// ---- drawing

void drawTrack(Picture &picture, NoxiPoint32f from, NoxiPoint32f to, Color color) {
    drawSegment(picture, from, to, color);
    drawDot(picture, from, color);
}

// ---- the runs

void printLost(const Tracks &tracks, int lastLevel) {
    for (int level = lastLevel; level >= 0; --level) {
        const auto lost = std::count(tracks.status.begin(), tracks.status.end(), Nox8s(level + 1));
        std::printf("    lost at level %d: %ld\n", level, long(lost));
    }
}

/// Forth and back; draws the tracks into the first picture.
bool runForthAndBack(const Picture &firstColor, const Picture &secondColor, const std::string &output) {
    Stopwatch watch;
    const Picture first = toGray(firstColor), second = toGray(secondColor);
    const double gray = watch.lap();
    Pyramid one, two;
    if (!one.build(first, 2.0F, levels) || !two.build(second, 2.0F, levels))
        return false;
    const double pyramids = watch.lap();
    std::vector<NoxiPoint32f> points;
    if (!strongPoints(first, points))
        return false;
    const double choice = watch.lap();
    Tracks forth, back;
    if (!follow(one, two, points, forth))
        return false;
    const double forward = watch.lap();
    if (!follow(two, one, forth.points, back))
        return false;
    const double backward = watch.lap();

    constexpr float within = 0.5F;
    Picture drawing = firstColor;
    std::vector<float> errors;
    long survivors = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool both = forth.status[i] == 0 && back.status[i] == 0;
        const float error = distance(points[i], back.points[i]);
        const bool survives = both && error < within;
        survivors += survives;
        if (both)
            errors.push_back(error);
        if (survives)
            drawTrack(drawing, points[i], forth.points[i], green);
        else
            drawTrack(drawing, points[i], points[i], red);
    }
    std::printf("  %d x %d, %zu points, window %d, %d levels\n", first.size.width, first.size.height, points.size(),
                window, one.record()->level + 1);
    printLost(forth, one.record()->level);
    std::printf(
        "    tracked forth and back within %.1f pixel: %ld (%.1f %%), median forward-backward error %.4f pixel\n",
        double(within), survivors, 100.0 * double(survivors) / double(std::max<std::size_t>(points.size(), 1)),
        double(median(errors)));
    std::printf("    gray %.2f ms, both pyramids %.2f ms, choice of points %.2f ms, forth %.2f ms, back %.2f ms\n",
                gray, pyramids, choice, forward, backward);
    std::printf("    %s\n", output.c_str());
    return writePicture(output, drawing);
}

/// The part of a picture that lies `inset` pixels inside, moved by (dx, dy): pixel (x, y) of the result is the picture
/// at (x + inset + dx, y + inset + dy).
bool shifted(const Picture &gray, int inset, float dx, float dy, Picture &result) {
    const float wholeX = std::floor(dx), wholeY = std::floor(dy);
    result = Picture({gray.size.width - 2 * inset, gray.size.height - 2 * inset}, 1);
    return !failed("noxiCopySubpix_8u_C1R",
                   noxiCopySubpix_8u_C1R(gray.at(inset + int(wholeX), inset + int(wholeY)), gray.step(), result.data(),
                                         result.step(), result.size, dx - wholeX, dy - wholeY));
}

/// The first picture against itself at known shifts; true when every median error is small.
bool runKnownTruth(const Picture &color) {
    constexpr int inset = 8;
    constexpr float allowed = 0.05F;
    const Picture gray = toGray(color);
    Picture still;
    Pyramid one;
    std::vector<NoxiPoint32f> points;
    if (!shifted(gray, inset, 0, 0, still) || !one.build(still, 2.0F, levels) || !strongPoints(still, points))
        return false;
    const NoxiPoint32f shifts[] = {{0.25F, 0.5F}, {-0.4F, 0.3F}, {1.75F, -2.35F}, {-5.5F, 4.125F}};
    bool small = true;
    for (const NoxiPoint32f shift : shifts) {
        Picture moved;
        Pyramid two;
        Tracks tracks;
        if (!shifted(gray, inset, shift.x, shift.y, moved) || !two.build(moved, 2.0F, levels) ||
            !follow(one, two, points, tracks))
            return false;
        std::vector<float> errors;
        for (std::size_t i = 0; i < points.size(); ++i)
            if (tracks.status[i] == 0)
                errors.push_back(distance(tracks.points[i], {points[i].x - shift.x, points[i].y - shift.y}));
        const float middle = median(errors);
        std::printf("    shift (%.3f, %.3f): %zu of %zu tracked, median error %.4f pixel\n", double(shift.x),
                    double(shift.y), errors.size(), points.size(), double(middle));
        small = small && !errors.empty() && middle < allowed;
    }
    if (!small)
        std::fprintf(stderr, "a median error is not below %.2f pixel\n", double(allowed));
    return small;
}

bool writePyramid(const Picture &color, const std::string &output) {
    Pyramid pyramid;
    if (!pyramid.build(toGray(color), 1.5F, 5))
        return false;
    std::printf("  pyramid of rate 1.5:");
    for (const Picture &image : pyramid.images())
        std::printf(" %dx%d", image.size.width, image.size.height);
    std::printf("\n    %s\n", output.c_str());
    return writePicture(output, montage(pyramid));
}

/// A lens with some barrel distortion, the focal length nine tenths of the width.
bool writeUndistorted(const Picture &color, const std::string &output) {
    const float focal = 0.9F * float(color.size.width), k1 = -0.18F, k2 = 0.03F;
    const float cx = float(color.size.width - 1) / 2, cy = float(color.size.height - 1) / 2;
    int bytes = 0;
    if (failed("noxiUndistortGetSize", noxiUndistortGetSize(color.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    Picture result(color.size, 3);
    if (failed("noxiUndistortRadial_8u_C3R",
               noxiUndistortRadial_8u_C3R(color.data(), color.step(), result.data(), result.step(), color.size, focal,
                                          focal, cx, cy, k1, k2, buffer.data())))
        return false;
    std::printf("  undistorted, focal length %.0f, k1 %.2f, k2 %.2f\n    %s\n", double(focal), double(k1), double(k2),
                output.c_str());
    return writePicture(output, result);
}

bool run(const std::string &firstPath, const std::string &secondPath, const std::string &folder) {
    Picture first, second;
    if (!readPicture(firstPath, 3, first) || !readPicture(secondPath, 3, second))
        return false;
    if (first.size.width != second.size.width || first.size.height != second.size.height) {
        std::fprintf(stderr, "the pictures have different sizes\n");
        return false;
    }
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(firstPath).stem()).string();
    std::printf("%s to %s\n", firstPath.c_str(), secondPath.c_str());
    if (!runForthAndBack(first, second, stem + "-tracks.png"))
        return false;
    std::printf("  known truth: %s against itself\n", firstPath.c_str());
    return runKnownTruth(first) && writePyramid(first, stem + "-pyramid.png") &&
           writeUndistorted(first, stem + "-undistorted.png");
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: track FIRST SECOND FOLDER\n");
        return 2;
    }
    return run(argv[1], argv[2], argv[3]) ? 0 : 1;
}
