// Finds what moves: both foreground models and the motion history over a sequence whose truth is known.
//
// usage: motion SCENE MOVER FOLDER [FRAMES]
//
// The sequence is made from two pictures: SCENE, with sensor noise and a slow change of light, and from frame 40 on an
// oval cut out of the middle of MOVER, which crosses it. FRAMES is 160 unless told, and at least 120. Precision and
// recall are counted over the frames in which the cut-out is in sight. FOLDER gets motion-sheet.png: some frames, the
// truth, the masks of the models and the motion history, one below the other.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "support/picture.h"

namespace {

constexpr NoxiSize frameSize = {320, 240};
constexpr int firstMoving = 40;

/// A part of the picture, from its middle, scaled down by a whole factor where it is larger.
Picture middleOf(const Picture &picture, NoxiSize size) {
    Picture part(size, 3);
    const int factor = std::max(1, std::min(picture.size.width / size.width, picture.size.height / size.height));
    const int left = (picture.size.width - size.width * factor) / 2;
    const int top = (picture.size.height - size.height * factor) / 2;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            std::memcpy(part.at(x, y), picture.at(left + x * factor, top + y * factor), 3);
    return part;
}

/// The sequence: frame t and its truth, 255 where the cut-out is.
class Sequence {
public:
    Sequence(const Picture &scene, const Picture &mover)
        : scene_(middleOf(scene, frameSize)), mover_(middleOf(mover, {96, 72})) {}

    void next(int t, Picture &frame, Picture &truth) {
        const double light = 1 + 0.04 * std::sin(t / 60.0);
        const int left = (t - firstMoving) * 4 - mover_.size.width;
        const int top = 80 + int(50 * std::sin(t / 15.0));
        std::normal_distribution<double> noise(0, 2.5);
        for (int y = 0; y < frameSize.height; ++y)
            for (int x = 0; x < frameSize.width; ++x) {
                const bool moving = t >= firstMoving && inOval(x - left, y - top);
                const Nox8u *source = moving ? mover_.at(x - left, y - top) : scene_.at(x, y);
                *truth.at(x, y) = moving ? 255 : 0;
                for (int c = 0; c < 3; ++c)
                    frame.at(x, y)[c] = Nox8u(std::clamp(source[c] * light + noise(random_), 0.0, 255.0));
            }
    }
    int frames(int asked) const {
        return asked > 0 ? asked : firstMoving + (frameSize.width + mover_.size.width) / 4 + 16;
    }

private:
    bool inOval(int x, int y) const {
        const double u = (2.0 * x + 1) / mover_.size.width - 1, v = (2.0 * y + 1) / mover_.size.height - 1;
        return u * u + v * v < 1;
    }
    Picture scene_, mover_;
    std::mt19937 random_{1};
};

/// How a mask compares with the truth, and what it costs.
struct Score {
    long right = 0, wrong = 0, missed = 0;
    double milliseconds = 0;

    void count(const Picture &mask, const Picture &truth) {
        for (std::size_t i = 0; i < mask.count(); ++i) {
            right += mask.pixels[i] != 0 && truth.pixels[i] != 0;
            wrong += mask.pixels[i] != 0 && truth.pixels[i] == 0;
            missed += mask.pixels[i] == 0 && truth.pixels[i] != 0;
        }
    }
    void print(const char *name, int frames) const {
        std::printf("  %-16s precision %.3f, recall %.3f, %.2f ms a frame\n", name,
                    double(right) / double(std::max(right + wrong, 1L)),
                    double(right) / double(std::max(right + missed, 1L)), milliseconds / frames);
    }
};

/// The models of one sequence.
class Models {
public:
    Models() = default;
    Models(const Models &) = delete;
    Models &operator=(const Models &) = delete;
    ~Models() {
        if (gaussian_ != nullptr)
            noxiForegroundGaussianFree_8u_C3R(gaussian_);
        if (histogram_ != nullptr)
            noxiForegroundHistogramFree_8u_C3R(histogram_);
    }

    bool start(const Picture &frame) {
        const int anyModel = 0; // must not be null; the models take their own parameters
        return !failed("noxiForegroundGaussianInitAlloc_8u_C3R",
                       noxiForegroundGaussianInitAlloc_8u_C3R(frame.data(), frame.step(), frame.size, &anyModel,
                                                              &gaussian_)) &&
               !failed("noxiForegroundHistogramInitAlloc_8u_C3R",
                       noxiForegroundHistogramInitAlloc_8u_C3R(frame.data(), frame.step(), frame.size, &anyModel,
                                                               &histogram_));
    }
    bool gaussian(const Picture &frame, Picture &mask) {
        return !failed("noxiForegroundGaussian_8u_C3R",
                       noxiForegroundGaussian_8u_C3R(frame.data(), frame.step(), frame.data(), frame.step(),
                                                     mask.data(), mask.step(), frame.size, gaussian_));
    }
    bool histogram(const Picture &frame, Picture &mask) {
        return !failed("noxiForegroundHistogram_8u_C3R",
                       noxiForegroundHistogram_8u_C3R(frame.data(), frame.step(), mask.data(), mask.step(), frame.size,
                                                      histogram_)) &&
               !failed("noxiForegroundHistogramUpdate_8u_C3R",
                       noxiForegroundHistogramUpdate_8u_C3R(frame.data(), frame.step(), mask.data(), mask.step(),
                                                            frame.data(), frame.step(), frame.size, histogram_));
    }

private:
    NoxiForegroundGaussianState *gaussian_ = nullptr;
    NoxiForegroundHistogramState *histogram_ = nullptr;
};

/// Brighter where something has moved more lately.
Picture picturedHistory(const std::vector<Nox32f> &history, float now, float duration) {
    Picture picture(frameSize, 1);
    for (std::size_t i = 0; i < history.size(); ++i)
        picture.pixels[i] = history[i] > 0 ? Nox8u(255 * (1 - 0.9F * (now - history[i]) / duration)) : Nox8u(0);
    return picture;
}

/// A column of the contact sheet: pictures one below the other, every second pixel of them.
void putColumn(Picture &sheet, int column, const std::vector<Picture> &pictures) {
    for (std::size_t row = 0; row < pictures.size(); ++row)
        for (int y = 0; y < frameSize.height / 2; ++y)
            for (int x = 0; x < frameSize.width / 2; ++x)
                std::memcpy(sheet.at(column * frameSize.width / 2 + x, int(row) * frameSize.height / 2 + y),
                            pictures[row].at(2 * x, 2 * y), 3);
}

bool run(const std::string &scenePath, const std::string &moverPath, const std::string &folder, int asked) {
    Picture scene, mover;
    if (!readPicture(scenePath, 3, scene) || !readPicture(moverPath, 3, mover))
        return false;
    if (scene.size.width < frameSize.width || scene.size.height < frameSize.height || mover.size.width < 96 ||
        mover.size.height < 72) {
        std::fprintf(stderr, "the scene must have 320 x 240 pixels or more, and the mover 96 x 72\n");
        return false;
    }
    Sequence sequence(scene, mover);
    const int frames = sequence.frames(asked);
    Picture frame(frameSize, 3), truth(frameSize, 1), byGaussians(frameSize, 1), byHistograms(frameSize, 1);
    Models models;
    sequence.next(0, frame, truth);
    if (!models.start(frame))
        return false;
    std::vector<Nox32f> history(frame.count(), 0.0F);
    constexpr float duration = 15;
    constexpr int columns = 6;
    Picture sheet({columns * frameSize.width / 2, 5 * frameSize.height / 2}, 3);
    Score gaussian, histogram;
    double historyMilliseconds = 0;
    int column = 0;
    for (int t = 1; t < frames; ++t) {
        sequence.next(t, frame, truth);
        Stopwatch watch;
        if (!models.gaussian(frame, byGaussians))
            return false;
        gaussian.milliseconds += watch.lap();
        if (!models.histogram(frame, byHistograms))
            return false;
        histogram.milliseconds += watch.lap();
        if (failed("noxiUpdateMotionHistory_8u32f_C1IR",
                   noxiUpdateMotionHistory_8u32f_C1IR(byGaussians.data(), byGaussians.step(), history.data(),
                                                      frameSize.width * int(sizeof(Nox32f)), frameSize, float(t),
                                                      duration)))
            return false;
        historyMilliseconds += watch.lap();
        if (std::count(truth.pixels.begin(), truth.pixels.end(), Nox8u(255)) > 0) {
            gaussian.count(byGaussians, truth);
            histogram.count(byHistograms, truth);
        }
        if (t >= firstMoving && (t - firstMoving) % ((frames - firstMoving + columns - 1) / columns) == 10 &&
            column < columns)
            putColumn(sheet, column++,
                      {frame, toColor(truth), toColor(byGaussians), toColor(byHistograms),
                       toColor(picturedHistory(history, float(t), duration))});
    }
    std::printf("%d frames of %d x %d made from %s and %s\n", frames, frameSize.width, frameSize.height,
                scenePath.c_str(), moverPath.c_str());
    gaussian.print("Gaussian model", frames - 1);
    histogram.print("histogram model", frames - 1);
    std::printf("  %-16s %.3f ms a frame\n", "motion history", historyMilliseconds / (frames - 1));
    const std::string result = folder + "/motion-sheet.png";
    if (!writePicture(result, sheet))
        return false;
    std::printf("  %s\n", result.c_str());
    return true;
}

} // namespace

int main(int argc, char **argv) {
    const int asked = argc == 5 ? std::atoi(argv[4]) : 0;
    if ((argc != 4 && argc != 5) || (argc == 5 && asked < 120)) {
        std::fprintf(stderr, "usage: motion SCENE MOVER FOLDER [FRAMES, 120 or more]\n");
        return 2;
    }
    return run(argv[1], argv[2], argv[3], asked) ? 0 : 1;
}
