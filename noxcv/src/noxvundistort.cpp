// Correction of lens distortion: directly, or by coordinate maps.
//
// Images are corrected in runs of pixels, in three steps with small arrays between them: places and weights of all
// pixels of the run, in vectors; their four neighbours, read one pixel after the other; and the weighted sums, in
// vectors.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "checks.h"
#include "noxcv/sampling.h"
#include "rows.h"

using namespace nox;

namespace {

struct Lens {
    float fx, fy, cx, cy, k1, k2, p1, p2;
};

constexpr int stripWidth = 256; ///< columns whose terms fit the stack

/// Terms that depend on the column only, three for each.
struct Columns {
    float *first, *second, *xc;
};

/// Calls body(columns, left, width) for strips of the image: all of it with the terms in the buffer, or else narrow
/// ones with the terms on the stack.
template <class Body>
NOX_INLINE void forStrips(int width, Nox8u *buffer, const Body &body) {
    if (buffer != nullptr) {
        auto *table = reinterpret_cast<float *>(alignUp(buffer, 32));
        const std::ptrdiff_t plane = roundUp(static_cast<std::ptrdiff_t>(width), std::ptrdiff_t{4});
        body(Columns{table, table + plane, table + 2 * plane}, 0, width);
        return;
    }
    alignas(32) float table[3][stripWidth];
    for (int left = 0; left < width; left += stripWidth)
        body(Columns{table[0], table[1], table[2]}, left, std::min(stripWidth, width - left));
}

/// The radial model. A column has u = xc^2 / fx^2, u (k1 + k2 u) and xc; a row the same of v, and the factor of the
/// mixed term.
class Radial {
public:
    NOX_INLINE explicit Radial(const Lens &lens)
        : lens_(lens), perFx2_(1.0F / (lens.fx * lens.fx)), perFy2_(1.0F / (lens.fy * lens.fy)) {}

    NOX_INLINE void setColumns(const Columns &columns, int left, int width) const {
        for (int i = 0; i < width; ++i) {
            const float xc = static_cast<float>(left + i) - lens_.cx, u = xc * xc * perFx2_;
            columns.first[i] = u;
            columns.second[i] = u * (lens_.k1 + lens_.k2 * u);
            columns.xc[i] = xc;
        }
    }

    struct Row {
        float y, yc, own, mixed;

        NOX_INLINE void place(const Columns &columns, int left, int i, float &x, float &yPlace) const {
            const float s = columns.second[i] + own + columns.first[i] * mixed;
            x = static_cast<float>(left + i) + columns.xc[i] * s;
            yPlace = y + yc * s;
        }
    };
    NOX_INLINE Row row(int y) const {
        const float place = static_cast<float>(y), yc = place - lens_.cy, v = yc * yc * perFy2_;
        return {place, yc, v * (lens_.k1 + lens_.k2 * v), 2.0F * lens_.k2 * v};
    }

private:
    Lens lens_;
    float perFx2_, perFy2_;
};

/// The model with tangential terms. A column has x1 = xc / fx, x1^2 and xc.
class Tangential {
public:
    NOX_INLINE explicit Tangential(const Lens &lens) : lens_(lens), perFx_(1.0F / lens.fx), perFy_(1.0F / lens.fy) {}

    NOX_INLINE void setColumns(const Columns &columns, int left, int width) const {
        for (int i = 0; i < width; ++i) {
            const float xc = static_cast<float>(left + i) - lens_.cx, x1 = xc * perFx_;
            columns.first[i] = x1;
            columns.second[i] = x1 * x1;
            columns.xc[i] = xc;
        }
    }

    struct Row {
        float y, yc, square, own, k1, k2, p2, xScale, yScale;

        NOX_INLINE void place(const Columns &columns, int left, int i, float &x, float &yPlace) const {
            const float r2 = columns.second[i] + square;
            const float t = columns.first[i] * p2 + own + (k2 * r2 + k1) * r2;
            x = static_cast<float>(left + i) + xScale * r2 + columns.xc[i] * t;
            yPlace = r2 * yScale + y + t * yc;
        }
    };
    NOX_INLINE Row row(int y) const {
        const float place = static_cast<float>(y), yc = place - lens_.cy, y1 = yc * perFy_;
        return {place,
                yc,
                y1 * y1,
                y1 * (2.0F * lens_.p1),
                lens_.k1,
                lens_.k2,
                2.0F * lens_.p2,
                lens_.fx * lens_.p2,
                lens_.fy * lens_.p1};
    }

private:
    Lens lens_;
    float perFx_, perFy_;
};

// ---- maps ----

template <class Model>
NOX_TIERS void createMaps(Rows<float> xMap, Rows<float> yMap, NoxiSize roi, const Lens &lens, Nox8u *buffer) {
    const Model model(lens);
    forStrips(roi.width, buffer, [&](const Columns &columns, int left, int width) NOX_INLINE_LAMBDA {
        model.setColumns(columns, left, width);
        for (int y = 0; y < roi.height; ++y) {
            const auto row = model.row(y);
            float *xs = xMap[y] + left, *ys = yMap[y] + left;
#pragma GCC ivdep
            for (int i = 0; i < width; ++i)
                row.place(columns, left, i, xs[i], ys[i]);
        }
    });
}

// ---- images ----

constexpr int runLength = 64;

/// Places of a run of pixels: neighbours, weights, and whether there is a source at all (all bits or none). Places
/// without a source are at pixel 0.
struct Places {
    alignas(32) int x[runLength], y[runLength], valid[runLength];
    alignas(32) float a[runLength], b[runLength];

    NOX_INLINE void set(const Radial::Row &row, const Columns &columns, int left, int first, int n, NoxiSize roi) {
        const auto right = static_cast<float>(roi.width - 1), bottom = static_cast<float>(roi.height - 1);
        for (int i = 0; i < n; ++i) {
            float sx, sy;
            row.place(columns, left, first + i, sx, sy);
            const bool inside = (sx >= 0.0F) & (sy >= 0.0F) & (sx < right) & (sy < bottom);
            sx = inside ? sx : 0.0F;
            sy = inside ? sy : 0.0F;
            x[i] = static_cast<int>(sx);
            y[i] = static_cast<int>(sy);
            a[i] = sx - static_cast<float>(x[i]);
            b[i] = sy - static_cast<float>(y[i]);
            valid[i] = inside ? -1 : 0;
        }
    }
};

/// The two neighbours in each row of a run of pixels, as words of 32 bits that hold them one behind the other.
template <class T, int Channels>
struct Neighbours {
    static constexpr int pixelSize = Channels * static_cast<int>(sizeof(T)), pairSize = 2 * pixelSize,
                         words = (pairSize + 3) / 4;
    alignas(32) std::uint32_t upper[words][runLength], lower[words][runLength];

    NOX_INLINE void read(Rows<const T> src, const Places &places, int n) {
        const auto *base = reinterpret_cast<const Nox8u *>(src.base);
        for (int i = 0; i < n; ++i) {
            const Nox8u *pixel = base + places.y[i] * src.step + static_cast<std::ptrdiff_t>(places.x[i]) * pixelSize;
            readPair(pixel, upper, i);
            readPair(pixel + src.step, lower, i);
        }
    }

    /// Element `element` of the pair, as a float.
    template <int element>
    NOX_INLINE static float get(const std::uint32_t (&row)[words][runLength], int i) {
        constexpr int byte = element * static_cast<int>(sizeof(T));
        const std::uint32_t word = row[byte / 4][i];
        if constexpr (std::is_floating_point_v<T>)
            return std::bit_cast<float>(word);
        else
            return static_cast<float>(static_cast<int>(word >> (byte % 4 * 8) & std::numeric_limits<T>::max()));
    }

private:
    NOX_INLINE static void readPair(const Nox8u *pixel, std::uint32_t (&row)[words][runLength], int i) {
        for (int word = 0; word < pairSize / 4; ++word)
            std::memcpy(&row[word][i], pixel + 4 * word, 4);
        if constexpr (pairSize % 4 != 0) {
            std::uint16_t last;
            std::memcpy(&last, pixel + pairSize - 2, 2);
            row[words - 1][i] = last;
        }
    }
};

/// Channel `channel` of pixel i of a run.
template <int channel, class T, int Channels>
NOX_INLINE T interpolate(const Neighbours<T, Channels> &neighbours, float a, float b, int i) {
    using N = Neighbours<T, Channels>;
    const float p00 = N::template get<channel>(neighbours.upper, i),
                p10 = N::template get<channel + Channels>(neighbours.upper, i),
                p01 = N::template get<channel>(neighbours.lower, i),
                p11 = N::template get<channel + Channels>(neighbours.lower, i);
    const float sum = a * b * p11 + b * (1.0F - a) * p01 + (1.0F - a) * (1.0F - b) * p00 + a * (1.0F - b) * p10;
    if constexpr (std::is_floating_point_v<T>)
        return sum;
    else
        return static_cast<T>(static_cast<int>(sum + 0.5F));
}

template <class T>
NOX_INLINE void writeRun(T *__restrict dst, const Neighbours<T, 1> &neighbours, const Places &places, int n) {
    for (int i = 0; i < n; ++i) {
        const T value = interpolate<0>(neighbours, places.a[i], places.b[i], i);
        dst[i] = places.valid[i] != 0 ? value : dst[i];
    }
}

template <class T>
NOX_INLINE void writeRun(T *__restrict dst, const Neighbours<T, 3> &neighbours, const Places &places, int n) {
    alignas(32) T values[3][runLength];
    for (int i = 0; i < n; ++i) {
        values[0][i] = interpolate<0>(neighbours, places.a[i], places.b[i], i);
        values[1][i] = interpolate<1>(neighbours, places.a[i], places.b[i], i);
        values[2][i] = interpolate<2>(neighbours, places.a[i], places.b[i], i);
    }
    for (int i = 0; i < n; ++i)
        if (places.valid[i] != 0)
            for (int channel = 0; channel < 3; ++channel)
                dst[3 * i + channel] = values[channel][i];
}

template <class T, int Channels>
NOX_TIERS void undistort(Rows<const T> src, Rows<T> dst, NoxiSize roi, const Lens &lens, Nox8u *buffer) {
    if (roi.width < 2 || roi.height < 2)
        return; // no pixel has four neighbours
    const Radial model(lens);
    Places places;
    Neighbours<T, Channels> neighbours;
    forStrips(roi.width, buffer, [&](const Columns &columns, int left, int width) NOX_INLINE_LAMBDA {
        model.setColumns(columns, left, width);
        for (int y = 0; y < roi.height; ++y) {
            const Radial::Row row = model.row(y);
            for (int first = 0; first < width; first += runLength) {
                const int n = std::min(runLength, width - first);
                places.set(row, columns, left, first, n, roi);
                neighbours.read(src, places, n);
                writeRun(dst[y] + static_cast<std::ptrdiff_t>(left + first) * Channels, neighbours, places, n);
            }
        }
    });
}

NoxStatus checkFocalLengths(float fx, float fy) {
    return require(fx != 0 && fy != 0 && fx == fx && fy == fy, noxStsBadArgument);
}

template <class T, int Channels>
NoxStatus undistortRadial(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, const Lens &lens,
                          Nox8u *buffer) {
    const long long elements = static_cast<long long>(roi.width) * Channels;
    const NoxStatus status = firstFailure(checkPointers(src, dst), checkSize(roi), checkStep<T>(srcStep, elements),
                                          checkStep<T>(dstStep, elements), checkEvenSteps<T>(srcStep, dstStep),
                                          checkFocalLengths(lens.fx, lens.fy));
    if (status == noxStsNoError)
        undistort<T, Channels>({src, srcStep}, {dst, dstStep}, roi, lens, buffer);
    return status;
}

} // namespace

#define NOX_UNDISTORT(TYPE, TAG, CHANNELS)                                                                             \
    NoxStatus noxiUndistortRadial_##TAG##_C##CHANNELS##R(const TYPE *src, int srcStep, TYPE *dst, int dstStep,         \
                                                         NoxiSize roi, Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy,     \
                                                         Nox32f k1, Nox32f k2, Nox8u *buffer) {                        \
        return undistortRadial<TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0, 0},        \
                                               buffer);                                                                \
    }

NOX_UNDISTORT(Nox8u, 8u, 1)
NOX_UNDISTORT(Nox16u, 16u, 1)
NOX_UNDISTORT(Nox32f, 32f, 1)
NOX_UNDISTORT(Nox8u, 8u, 3)
NOX_UNDISTORT(Nox16u, 16u, 3)
NOX_UNDISTORT(Nox32f, 32f, 3)

NoxStatus noxiCreateMapCameraUndistort_32f_C1R(Nox32f *xMap, int xMapStep, Nox32f *yMap, int yMapStep, NoxiSize roi,
                                               Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                               Nox32f p1, Nox32f p2, Nox8u *buffer) {
    const NoxStatus status = firstFailure(
        checkPointers(xMap, yMap), checkSize(roi), checkStep<Nox32f>(xMapStep, roi.width),
        checkStep<Nox32f>(yMapStep, roi.width), checkEvenSteps<Nox32f>(xMapStep, yMapStep), checkFocalLengths(fx, fy));
    if (status != noxStsNoError)
        return status;
    const Rows<float> xs{xMap, xMapStep}, ys{yMap, yMapStep};
    const Lens lens = {fx, fy, cx, cy, k1, k2, p1, p2};
    if (p1 == 0 && p2 == 0)
        createMaps<Radial>(xs, ys, roi, lens, buffer);
    else
        createMaps<Tangential>(xs, ys, roi, lens, buffer);
    return noxStsNoError;
}

NoxStatus noxiUndistortGetSize(NoxiSize roi, int *bufferSize) {
    const long long size = roundUp(static_cast<long long>(roi.width), 4LL) * 24 + 32;
    const NoxStatus status = firstFailure(checkPointers(bufferSize), checkSize(roi),
                                          require(size <= std::numeric_limits<int>::max(), noxStsBadSize));
    if (status == noxStsNoError)
        *bufferSize = static_cast<int>(size);
    return status;
}
