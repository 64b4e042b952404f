// Compares two pictures channel by channel: norms of both, of their difference, relative norms, mean, deviation,
// extrema with positions, and the peak signal-to-noise ratio.
//
// usage: compare A B [MASK]
//
// All three are PNG or JPEG of one size; pixels count where MASK (read as gray) is not zero.
#include <cmath>
#include <limits>

#include "support/picture.h"

namespace {

struct Pair {
    Picture a, b, mask;
};

using Norm = NoxStatus (*)(const Nox8u *, int, const Nox8u *, int, NoxiSize, int, Nox64f *);
using PairNorm = NoxStatus (*)(const Nox8u *, int, const Nox8u *, int, const Nox8u *, int, NoxiSize, int, Nox64f *);

double normOf(Norm norm, const Picture &picture, const Picture &mask, int channel) {
    Nox64f value = 0;
    failed("norm", norm(picture.data(), picture.step(), mask.data(), mask.step(), picture.size, channel, &value));
    return value;
}

double pairNormOf(PairNorm norm, const Pair &p, int channel) {
    Nox64f value = 0;
    failed("norm of two pictures", norm(p.a.data(), p.a.step(), p.b.data(), p.b.step(), p.mask.data(), p.mask.step(),
                                        p.a.size, channel, &value));
    return value;
}

void printNorms(const char *name, Norm norm, PairNorm difference, PairNorm relative, const Pair &p, int channel) {
    std::printf("  %-12s %14.1f %14.1f %14.1f %14.6f\n", name, normOf(norm, p.a, p.mask, channel),
                normOf(norm, p.b, p.mask, channel), pairNormOf(difference, p, channel),
                pairNormOf(relative, p, channel));
}

void printStatistics(const char *name, const Picture &picture, const Picture &mask, int channel) {
    Nox64f mean = 0, deviation = 0;
    Nox32f low = 0, high = 0;
    NoxiPoint lowAt{}, highAt{};
    failed("noxiMean_StdDev_8u_C3CMR", noxiMean_StdDev_8u_C3CMR(picture.data(), picture.step(), mask.data(),
                                                                mask.step(), picture.size, channel, &mean, &deviation));
    failed("noxiMinMaxIndx_8u_C3CMR", noxiMinMaxIndx_8u_C3CMR(picture.data(), picture.step(), mask.data(), mask.step(),
                                                              picture.size, channel, &low, &high, &lowAt, &highAt));
    std::printf("  %s: mean %.3f, deviation %.3f, least %.0f at (%d, %d), greatest %.0f at (%d, %d)\n", name, mean,
                deviation, double(low), lowAt.x, lowAt.y, double(high), highAt.x, highAt.y);
}

long countOf(const Picture &mask) {
    long count = 0;
    for (const Nox8u byte : mask.pixels)
        count += byte != 0;
    return count;
}

void printChannel(const Pair &p, int channel) {
    static const char *const names[] = {"red", "green", "blue"};
    std::printf("%s\n  %-12s %14s %14s %14s %14s\n", names[channel - 1], "norm", "A", "B", "A - B", "relative to B");
    printNorms("maximum", noxiNorm_Inf_8u_C3CMR, noxiNormDiff_Inf_8u_C3CMR, noxiNormRel_Inf_8u_C3CMR, p, channel);
    printNorms("L1", noxiNorm_L1_8u_C3CMR, noxiNormDiff_L1_8u_C3CMR, noxiNormRel_L1_8u_C3CMR, p, channel);
    printNorms("L2", noxiNorm_L2_8u_C3CMR, noxiNormDiff_L2_8u_C3CMR, noxiNormRel_L2_8u_C3CMR, p, channel);
    printStatistics("A", p.a, p.mask, channel);
    printStatistics("B", p.b, p.mask, channel);
}

/// From the squared differences of all channels.
double peakSignalToNoise(const Pair &p, long count) {
    double squares = 0;
    for (int channel = 1; channel <= 3; ++channel)
        squares += std::pow(pairNormOf(noxiNormDiff_L2_8u_C3CMR, p, channel), 2);
    const double meanSquare = squares / (3.0 * double(count));
    return meanSquare == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(255.0 * 255.0 / meanSquare);
}

bool sameSize(const Picture &a, const Picture &b) {
    return a.size.width == b.size.width && a.size.height == b.size.height;
}

bool readAll(int argc, char **argv, Pair &p) {
    if (!readPicture(argv[1], 3, p.a) || !readPicture(argv[2], 3, p.b))
        return false;
    p.mask = Picture(p.a.size, 1);
    p.mask.pixels.assign(p.mask.pixels.size(), 255);
    if (argc == 4 && !readPicture(argv[3], 1, p.mask))
        return false;
    if (!sameSize(p.a, p.b) || !sameSize(p.a, p.mask)) {
        std::fprintf(stderr, "the pictures have different sizes\n");
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: compare A B [MASK]\n");
        return 2;
    }
    Pair pair;
    if (!readAll(argc, argv, pair))
        return 1;
    const long count = countOf(pair.mask);
    std::printf("A %s, B %s: %d x %d, %ld pixels\n", argv[1], argv[2], pair.a.size.width, pair.a.size.height, count);
    for (int channel = 1; channel <= 3; ++channel)
        printChannel(pair, channel);
    if (count > 0)
        std::printf("peak signal-to-noise ratio %.2f dB\n", peakSignalToNoise(pair, count));
    return 0;
}
