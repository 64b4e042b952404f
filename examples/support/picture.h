// Image files for the examples: pixels in memory, PNG and JPEG through stb.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include <noxcv.h>

/// An 8-bit picture with interleaved channels and packed rows.
struct Picture {
    NoxiSize size{};
    int channels = 1;
    std::vector<Nox8u> pixels;

    Picture() = default;
    Picture(NoxiSize pictureSize, int channelCount)
        : size(pictureSize), channels(channelCount),
          pixels(std::size_t(pictureSize.width) * pictureSize.height * channelCount) {}

    int step() const { return size.width * channels; }
    Nox8u *data() { return pixels.data(); }
    const Nox8u *data() const { return pixels.data(); }
    const Nox8u *at(int x, int y) const { return data() + (std::size_t(y) * size.width + x) * channels; }
    Nox8u *at(int x, int y) { return data() + (std::size_t(y) * size.width + x) * channels; }
    std::size_t count() const { return std::size_t(size.width) * size.height; }
};

/// Reads a PNG or JPEG as 1 (gray) or 3 (colour) channels; false with one line on stderr when that fails.
bool readPicture(const std::string &path, int channels, Picture &picture);

/// Writes a PNG; false with one line on stderr when that fails.
bool writePicture(const std::string &path, const Picture &picture);

/// Luma of a colour picture by the ITU-R BT.601 weights.
Picture toGray(const Picture &color);

/// Three equal channels.
Picture toColor(const Picture &gray);

/// Two pictures of the same height next to each other.
Picture sideBySide(const Picture &left, const Picture &right);

/// Prints a failed call's name and status; true when the status is an error.
inline bool failed(const char *call, NoxStatus status) {
    if (status < noxStsNoError)
        std::fprintf(stderr, "%s failed with status %d\n", call, int(status));
    return status < noxStsNoError;
}

/// Milliseconds since the last lap.
class Stopwatch {
public:
    double lap() {
        const auto now = std::chrono::steady_clock::now();
        const double milliseconds = std::chrono::duration<double, std::milli>(now - last_).count();
        last_ = now;
        return milliseconds;
    }

private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};
