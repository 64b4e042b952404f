#include "corners.h"

#include <algorithm>

namespace {

constexpr int sobel = 0, aperture = 3, window = 3, eightNeighbours = 0;

/// A response image whose rows have a multiple of four elements, which the search for peaks asks for.
struct Response {
    NoxiSize size;
    std::size_t pitch;
    std::vector<Nox32f> values;

    explicit Response(NoxiSize pictureSize)
        : size(pictureSize), pitch((std::size_t(size.width) + 3) / 4 * 4), values(pitch * size.height) {}
    int step() const { return int(pitch * sizeof(Nox32f)); }
    Nox32f at(int x, int y) const { return values[std::size_t(y) * pitch + x]; }
};

bool measure(const Picture &gray, Response &response) {
    int bytes = 0;
    if (failed("noxiMinEigenValGetBufferSize_8u32f_C1R",
               noxiMinEigenValGetBufferSize_8u32f_C1R(gray.size, aperture, window, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiMinEigenVal_8u32f_C1R",
                   noxiMinEigenVal_8u32f_C1R(gray.data(), gray.step(), response.values.data(), response.step(),
                                             gray.size, sobel, aperture, window, buffer.data()));
}

bool findPeaks(const Response &response, Nox32f threshold, int margin, std::vector<Nox32s> &peaks, int &count) {
    int bytes = 0;
    if (failed("noxiFindPeaks3x3GetBufferSize_32f_C1R",
               noxiFindPeaks3x3GetBufferSize_32f_C1R(response.size.width, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    // Of neighbouring pixels one at most is a peak, but for plateaus.
    peaks.resize(response.values.size());
    return !failed("noxiFindPeaks3x3_32f_C1R",
                   noxiFindPeaks3x3_32f_C1R(response.values.data(), response.step(), response.size, threshold,
                                            peaks.data(), int(peaks.size() / 2), &count, eightNeighbours, margin,
                                            buffer.data()));
}

} // namespace

bool findCorners(const Picture &gray, int margin, int most, std::vector<Corner> &corners) {
    Response response(gray.size);
    if (!measure(gray, response))
        return false;
    const Nox32f strongest = *std::max_element(response.values.begin(), response.values.end());
    std::vector<Nox32s> peaks;
    int count = 0;
    if (!findPeaks(response, strongest / 100, margin, peaks, count))
        return false;
    corners.clear();
    for (int i = 0; i < count; ++i)
        corners.push_back({peaks[2 * i], peaks[2 * i + 1], response.at(peaks[2 * i], peaks[2 * i + 1])});
    std::stable_sort(corners.begin(), corners.end(),
                     [](const Corner &a, const Corner &b) { return a.response > b.response; });
    corners.resize(std::min(corners.size(), std::size_t(most)));
    return true;
}
