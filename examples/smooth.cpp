// Writes the low-pass version of a picture: each channel is filtered with the 5 x 5 mean.
//
// usage: smooth PICTURE RESULT.png
#include "support/picture.h"

namespace {

bool lowpass(const Picture &plane, Picture &result) {
    int bytes = 0;
    if (failed("noxiFilterLowpassGetBufferSize_8u_C1R",
               noxiFilterLowpassGetBufferSize_8u_C1R(plane.size, noxMskSize5x5, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiFilterLowpassBorder_8u_C1R",
                   noxiFilterLowpassBorder_8u_C1R(plane.data(), plane.step(), result.data(), result.step(), plane.size,
                                                  noxMskSize5x5, noxBorderReplicate, 0, buffer.data()));
}

bool smooth(const Picture &color, Picture &result) {
    Picture plane(color.size, 1), filtered(color.size, 1);
    for (int channel = 0; channel < 3; ++channel) {
        for (std::size_t i = 0; i < plane.count(); ++i)
            plane.data()[i] = color.data()[3 * i + channel];
        if (!lowpass(plane, filtered))
            return false;
        for (std::size_t i = 0; i < plane.count(); ++i)
            result.data()[3 * i + channel] = filtered.data()[i];
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: smooth PICTURE RESULT.png\n");
        return 2;
    }
    Picture color;
    if (!readPicture(argv[1], 3, color))
        return 1;
    Picture result(color.size, 3);
    return smooth(color, result) && writePicture(argv[2], result) ? 0 : 1;
}
