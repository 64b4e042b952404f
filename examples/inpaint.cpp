// Scratches and lettering on a picture, and the picture repaired by both methods of inpainting.
//
// usage: inpaint PICTURE FOLDER
//
// PICTURE is a PNG or JPEG. FOLDER receives NAME-damaged.png, NAME-inpainted-front.png (method 0, along the gradient of
// the distance) and NAME-inpainted-isophote.png (method 1, along lines of equal brightness). Prints the PSNR of the
// damaged pixels, before and after. The program fails when a method changes a pixel that is not damaged, or does not
// gain 8 decibels.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>

#include "support/picture.h"

namespace {

constexpr float radius = 5;

// ---- damage

/// A disc of the given diameter, clipped to the mask.
void blot(Picture &mask, float x, float y, float diameter) {
    const float r = diameter / 2;
    for (int row = int(y - r); row <= int(y + r) + 1; ++row)
        for (int column = int(x - r); column <= int(x + r) + 1; ++column)
            if (row >= 0 && column >= 0 && row < mask.size.height && column < mask.size.width &&
                std::hypot(float(column) - x, float(row) - y) <= r)
                *mask.at(column, row) = 255;
}

/// A slightly bent scratch from edge to edge: a tenth of the picture out of the straight in the middle.
void scratch(Picture &mask, float topX, float bottomX, float width) {
    const int steps = 2 * mask.size.height;
    for (int i = 0; i <= steps; ++i) {
        const float share = float(i) / float(steps);
        const float bend = 0.1F * share * (1 - share) * 4;
        blot(mask, (topX + (bottomX - topX) * share + bend) * float(mask.size.width), share * float(mask.size.height),
             width);
    }
}

/// Letters of five by seven dots, a row each byte.
using Glyph = std::array<Nox8u, 7>;
constexpr Glyph word[] = {
    {0x0E, 0x11, 0x10, 0x0E, 0x01, 0x11, 0x0E}, // S
    {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}, // A
    {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11}, // M
    {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10}, // P
    {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}, // L
    {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}, // E
};

bool dotSet(const Glyph &glyph, int column, int row) {
    return row < 7 && column >= 0 && column < 5 && (glyph[row] >> (4 - column) & 1) != 0;
}

/// The strokes from one dot of a letter to its neighbours to the right and below.
void stroke(Picture &mask, const Glyph &glyph, int column, int row, NoxiPoint32f at, float dot) {
    constexpr int parts = 8;
    constexpr NoxiPoint ways[] = {{1, 0}, {-1, 1}, {0, 1}, {1, 1}};
    for (const NoxiPoint way : ways)
        for (int i = 0; i <= parts && dotSet(glyph, column + way.x, row + way.y); ++i)
            blot(mask, at.x + float(way.x * i) / parts * dot, at.y + float(way.y * i) / parts * dot, dot / 3);
}

/// The word across the picture at a height.
void letter(Picture &mask, float height) {
    constexpr int glyphs = int(std::size(word)), pitch = 6;
    const float dot = float(mask.size.width) * 0.8F / float(glyphs * pitch);
    for (int g = 0; g < glyphs; ++g)
        for (int row = 0; row < 7; ++row)
            for (int column = 0; column < 5; ++column)
                if (dotSet(word[g], column, row))
                    stroke(mask, word[g], column, row,
                           {float(mask.size.width) * 0.1F + float(g * pitch + column) * dot,
                            float(mask.size.height) * height + float(row) * dot},
                           dot);
}

Picture damage(NoxiSize size) {
    Picture mask(size, 1);
    scratch(mask, 0.05F, 0.35F, 2);
    scratch(mask, 0.9F, 0.4F, 3);
    scratch(mask, 0.55F, 0.6F, 4);
    scratch(mask, 0.3F, 0.95F, 2);
    letter(mask, 0.1F);
    letter(mask, 0.7F);
    return mask;
}

// ---- repair

using Map = std::vector<Nox32f>;

bool distances(const Picture &mask, Map &map) {
    int bytes = 0;
    map.resize(mask.count());
    if (failed("noxiFastMarchingGetBufferSize_8u32f_C1R", noxiFastMarchingGetBufferSize_8u32f_C1R(mask.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiFastMarching_8u32f_C1R",
                   noxiFastMarching_8u32f_C1R(mask.data(), mask.step(), map.data(),
                                              mask.size.width * int(sizeof(Nox32f)), mask.size, 0, buffer.data()));
}

bool repair(const Picture &damaged, const Picture &mask, const Map &map, int method, Picture &repaired) {
    NoxiInpaintState *state = nullptr;
    if (failed("noxiInpaintInitAlloc_8u_C3R",
               noxiInpaintInitAlloc_8u_C3R(&state, map.data(), mask.size.width * int(sizeof(Nox32f)), mask.data(),
                                           mask.step(), mask.size, radius, method)))
        return false;
    repaired = Picture(damaged.size, 3);
    const NoxStatus status =
        noxiInpaint_8u_C3R(damaged.data(), damaged.step(), repaired.data(), repaired.step(), damaged.size, state);
    noxiInpaintFree_8u_C3R(state);
    return !failed("noxiInpaint_8u_C3R", status);
}

// ---- judgement

/// Over the masked pixels, in decibels.
double psnr(const Picture &one, const Picture &other, const Picture &mask) {
    double squares = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < one.pixels.size(); ++i)
        if (mask.pixels[i / 3] != 0) {
            squares += std::pow(double(one.pixels[i]) - other.pixels[i], 2);
            ++count;
        }
    return 10 * std::log10(255.0 * 255.0 * double(count) / std::max(squares, 1e-9));
}

bool sameElsewhere(const Picture &one, const Picture &other, const Picture &mask) {
    for (std::size_t i = 0; i < one.pixels.size(); ++i)
        if (mask.pixels[i / 3] == 0 && one.pixels[i] != other.pixels[i])
            return false;
    return true;
}

bool run(const std::string &path, const std::string &folder) {
    Picture picture;
    if (!readPicture(path, 3, picture))
        return false;
    const Picture mask = damage(picture.size);
    Picture damaged = picture;
    for (std::size_t i = 0; i < damaged.pixels.size(); ++i)
        if (mask.pixels[i / 3] != 0)
            damaged.pixels[i] = 255;
    const std::string stem = (std::filesystem::path(folder) / std::filesystem::path(path).stem()).string();
    const auto lost = std::count(mask.pixels.begin(), mask.pixels.end(), Nox8u(255));
    const double before = psnr(picture, damaged, mask);
    std::printf("%s: %d x %d, %ld pixels damaged (%.1f %%), PSNR there %.2f dB\n    %s-damaged.png\n", path.c_str(),
                picture.size.width, picture.size.height, long(lost), 100.0 * double(lost) / double(mask.count()),
                before, stem.c_str());
    if (!writePicture(stem + "-damaged.png", damaged))
        return false;
    Stopwatch watch;
    Map map;
    if (!distances(mask, map))
        return false;
    std::printf("  fast marching %.2f ms\n", watch.lap());
    bool good = true;
    for (const int method : {0, 1}) {
        const std::string output = stem + "-inpainted-" + (method == 0 ? "front" : "isophote") + ".png";
        Picture repaired;
        watch.lap();
        if (!repair(damaged, mask, map, method, repaired))
            return false;
        const double milliseconds = watch.lap(), after = psnr(picture, repaired, mask);
        std::printf("  method %d: PSNR of the repaired pixels %.2f dB, %.2f ms\n    %s\n", method, after, milliseconds,
                    output.c_str());
        if (!writePicture(output, repaired))
            return false;
        good = good && after > before + 8 && sameElsewhere(picture, repaired, mask);
    }
    if (!good)
        std::fprintf(stderr, "the repair gains less than 8 dB or changes pixels that are not damaged\n");
    return good;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: inpaint PICTURE FOLDER\n");
        return 2;
    }
    return run(argv[1], argv[2]) ? 0 : 1;
}
