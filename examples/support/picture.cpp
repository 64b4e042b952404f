#include "picture.h"

#include <algorithm>
#include <cstring>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>
#pragma GCC diagnostic pop

bool readPicture(const std::string &path, int channels, Picture &picture) {
    int width = 0, height = 0, inFile = 0;
    stbi_uc *pixels = stbi_load(path.c_str(), &width, &height, &inFile, channels);
    if (pixels == nullptr) {
        std::fprintf(stderr, "%s: cannot be read as a PNG or JPEG picture\n", path.c_str());
        return false;
    }
    picture = Picture({width, height}, channels);
    std::copy_n(pixels, picture.pixels.size(), picture.data());
    stbi_image_free(pixels);
    return true;
}

bool writePicture(const std::string &path, const Picture &picture) {
    const int written = stbi_write_png(path.c_str(), picture.size.width, picture.size.height, picture.channels,
                                       picture.data(), picture.step());
    if (written == 0)
        std::fprintf(stderr, "%s: cannot write this picture\n", path.c_str());
    return written != 0;
}

Picture toGray(const Picture &color) {
    Picture gray(color.size, 1);
    for (std::size_t i = 0; i < gray.count(); ++i) {
        const Nox8u *p = color.data() + 3 * i;
        gray.data()[i] = static_cast<Nox8u>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
    }
    return gray;
}

Picture toColor(const Picture &gray) {
    Picture color(gray.size, 3);
    for (std::size_t i = 0; i < gray.count(); ++i)
        std::fill_n(color.data() + 3 * i, 3, gray.data()[i]);
    return color;
}

Picture sideBySide(const Picture &left, const Picture &right) {
    Picture both({left.size.width + right.size.width, left.size.height}, left.channels);
    for (int y = 0; y < both.size.height; ++y) {
        std::memcpy(both.at(0, y), left.at(0, y), left.step());
        std::memcpy(both.at(left.size.width, y), right.at(0, y), right.step());
    }
    return both;
}
