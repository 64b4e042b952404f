#include "picture.h"

#include <cstddef>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <stb/stb_image.h>

namespace bench {

Image<Nox8u> photograph(const char *path, NoxiSize size) {
    Image<Nox8u> image(size);
    int width = 0, height = 0, channels = 0;
    stbi_uc *pixels = stbi_load(path, &width, &height, &channels, 1);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double sx = double(x) * (width - 1) / size.width, sy = double(y) * (height - 1) / size.height;
            const int ix = int(sx), iy = int(sy);
            const stbi_uc *p = pixels + std::ptrdiff_t(iy) * width + ix;
            const double top = p[0] + (p[1] - p[0]) * (sx - ix);
            const double bottom = p[width] + (p[width + 1] - p[width]) * (sx - ix);
            image.data()[std::size_t(y) * size.width + x] = Nox8u(top + (bottom - top) * (sy - iy));
        }
    stbi_image_free(pixels);
    return image;
}

} // namespace bench
