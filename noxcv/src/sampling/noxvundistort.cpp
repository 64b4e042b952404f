// Correction of lens distortion: directly, or by coordinate maps.
//
// Images are corrected in runs of pixels, in three steps with small arrays between them: places and weights of all
// pixels of the run, in vectors; their four neighbours, read one pixel after the other; and the weighted sums, in
// vectors.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include <emmintrin.h>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
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
            Element<float> *xs = xMap[y] + left, *ys = yMap[y] + left;
#pragma GCC ivdep
            for (int i = 0; i < width; ++i) {
                float x, yPlace;
                row.place(columns, left, i, x, yPlace);
                xs[i] = x;
                ys[i] = yPlace;
            }
        }
    });
}

// ---- images ----

constexpr int runLength = 64;

/// Places of a run of pixels: the first of four neighbours, the weights of all, and whether there is a source at all
/// (all bits or none). Places without a source are moved into the image.
struct Places {
    alignas(32) int x[runLength], y[runLength], valid[runLength];
    alignas(32) float w00[runLength], w10[runLength], w01[runLength], w11[runLength];

    NOX_INLINE void set(const Radial::Row &row, const Columns &columns, int left, int first, int n, NoxiSize roi) {
        const auto right = static_cast<float>(roi.width - 1), bottom = static_cast<float>(roi.height - 1);
        const float lastX = std::nextafter(right, 0.0F), lastY = std::nextafter(bottom, 0.0F);
        for (int i = 0; i < n; ++i) {
            float sx, sy;
            row.place(columns, left, first + i, sx, sy);
            const int inside = (sx >= 0.0F) & (sy >= 0.0F) & (sx < right) & (sy < bottom);
            valid[i] = -inside;
            sx = within(sx, lastX);
            sy = within(sy, lastY);
            x[i] = static_cast<int>(sx);
            y[i] = static_cast<int>(sy);
            const float a = sx - static_cast<float>(x[i]), b = sy - static_cast<float>(y[i]);
            w00[i] = (1.0F - a) * (1.0F - b);
            w10[i] = a * (1.0F - b);
            w01[i] = b * (1.0F - a);
            w11[i] = a * b;
        }
    }

private:
    /// Moved into 0 to last; 0 for what is not a number.
    NOX_INLINE static float within(float place, float last) {
        const float positive = place > 0.0F ? place : 0.0F;
        return positive < last ? positive : last;
    }
};

/// The first neighbour of pixel i of a run.
template <int channels, class T>
NOX_INLINE const T *neighbour(Rows<const T> src, const Places &places, int i) {
    return src[places.y[i]] + static_cast<std::ptrdiff_t>(places.x[i]) * channels;
}

// One channel: the neighbours of a run are gathered first, and weighted in vectors.

/// Two pixels in a word, the first of them in its low half.
template <class T>
struct Pair {
    using Word = std::conditional_t<sizeof(T) == 1, std::uint16_t, std::uint32_t>;
    static constexpr int bits = 8 * static_cast<int>(sizeof(T));
    alignas(32) std::uint32_t words[runLength];

    NOX_INLINE void read(int i, const T *pixels) {
        Word word;
        std::memcpy(&word, pixels, sizeof(word));
        words[i] = word;
    }
    NOX_INLINE float first(int i) const {
        return static_cast<float>(static_cast<int>(words[i] & std::numeric_limits<T>::max()));
    }
    NOX_INLINE float second(int i) const { return static_cast<float>(static_cast<int>(words[i] >> bits)); }
};

template <>
struct Pair<float> {
    alignas(32) float pixel[2][runLength];

    NOX_INLINE void read(int i, const float *pixels) {
        std::memcpy(&pixel[0][i], pixels, sizeof(float));
        std::memcpy(&pixel[1][i], pixels + 1, sizeof(float));
    }
    NOX_INLINE float first(int i) const { return pixel[0][i]; }
    NOX_INLINE float second(int i) const { return pixel[1][i]; }
};

template <class T>
NOX_INLINE void writeRun(std::integral_constant<int, 1>, Rows<const T> src, Element<T> *__restrict dst,
                         const Places &places, int n) {
    Pair<T> upper, lower;
    for (int i = 0; i < n; ++i) {
        const T *pixels = neighbour<1>(src, places, i);
        upper.read(i, pixels);
        lower.read(i, Rows<const T>{pixels, src.step}[1]);
    }
    for (int i = 0; i < n; ++i) {
        const float sum = places.w11[i] * lower.second(i) + places.w01[i] * lower.first(i) +
                          places.w00[i] * upper.first(i) + places.w10[i] * upper.second(i);
        const T before = dst[i];
        if constexpr (std::is_floating_point_v<T>)
            dst[i] = places.valid[i] != 0 ? sum : before;
        else
            dst[i] = places.valid[i] != 0 ? static_cast<T>(static_cast<int>(sum + 0.5F)) : before;
    }
}

// Three channels: a pixel is a vector. The fourth lane of a load belongs to a neighbour, never to what is beyond the
// two pixels.

/// The pixel at p, and the one behind it.
NOX_INLINE void loadPixels(const float *p, __m128 &first, __m128 &second) {
    first = _mm_loadu_ps(p);
    const __m128 tail = _mm_loadu_ps(p + 2);
    second = _mm_shuffle_ps(tail, tail, _MM_SHUFFLE(3, 3, 2, 1));
}
NOX_INLINE __m128 floatsOfWords(__m128i words) {
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, _mm_setzero_si128()));
}
NOX_INLINE void loadPixels(const Nox16u *p, __m128 &first, __m128 &second) {
    first = floatsOfWords(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(p)));
    second = floatsOfWords(_mm_srli_si128(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(p + 2)), 2));
}
NOX_INLINE void loadPixels(const Nox8u *p, __m128 &first, __m128 &second) {
    std::uint32_t head, tail;
    std::memcpy(&head, p, sizeof(head));
    std::memcpy(&tail, p + 2, sizeof(tail));
    const auto words = [](std::uint32_t bytes) NOX_INLINE_LAMBDA {
        return _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(bytes)), _mm_setzero_si128());
    };
    first = floatsOfWords(words(head));
    second = floatsOfWords(words(tail >> 8));
}

/// Writes three lanes, integers with rounding.
NOX_INLINE void storePixel(float *d, __m128 sum) {
    _mm_storel_pi(reinterpret_cast<__m64 *>(d), sum);
    *elements(d + 2) = _mm_cvtss_f32(_mm_movehl_ps(sum, sum));
}
NOX_INLINE __m128i rounded(__m128 sum) { return _mm_cvttps_epi32(_mm_add_ps(sum, _mm_set1_ps(0.5F))); }
NOX_INLINE void storePixel(Nox16u *d, __m128 sum) {
    const __m128i values = _mm_srai_epi32(_mm_slli_epi32(rounded(sum), 16), 16); // signed: packing keeps the low bits
    const __m128i words = _mm_packs_epi32(values, values);
    const int head = _mm_cvtsi128_si32(words);
    std::memcpy(d, &head, sizeof(head));
    elements(d)[2] = static_cast<Nox16u>(_mm_extract_epi16(words, 2));
}
NOX_INLINE void storePixel(Nox8u *d, __m128 sum) {
    const __m128i words = _mm_packs_epi32(rounded(sum), _mm_setzero_si128());
    const int bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(d, &bytes, 3);
}

template <class T>
NOX_INLINE void writeRun(std::integral_constant<int, 3>, Rows<const T> src, T *dst, const Places &places, int n) {
    for (int i = 0; i < n; ++i) {
        if (places.valid[i] == 0)
            continue;
        const T *pixels = neighbour<3>(src, places, i);
        __m128 p00, p10, p01, p11;
        loadPixels(pixels, p00, p10);
        loadPixels(Rows<const T>{pixels, src.step}[1], p01, p11);
        const __m128 lower =
            _mm_add_ps(_mm_mul_ps(_mm_set1_ps(places.w11[i]), p11), _mm_mul_ps(_mm_set1_ps(places.w01[i]), p01));
        storePixel(dst + static_cast<std::ptrdiff_t>(3) * i,
                   _mm_add_ps(_mm_add_ps(lower, _mm_mul_ps(_mm_set1_ps(places.w00[i]), p00)),
                              _mm_mul_ps(_mm_set1_ps(places.w10[i]), p10)));
    }
}

template <class T, int channels>
NOX_TIERS void undistort(Rows<const T> src, Rows<T> dst, NoxiSize roi, const Lens &lens, Nox8u *buffer) {
    if (roi.width < 2 || roi.height < 2)
        return; // no place has four neighbours
    const Radial model(lens);
    Places places;
    forStrips(roi.width, buffer, [&](const Columns &columns, int left, int width) NOX_INLINE_LAMBDA {
        model.setColumns(columns, left, width);
        for (int y = 0; y < roi.height; ++y) {
            const Radial::Row row = model.row(y);
            for (int first = 0; first < width; first += runLength) {
                const int n = std::min(runLength, width - first);
                places.set(row, columns, left, first, n, roi);
                writeRun(std::integral_constant<int, channels>{}, src,
                         dst[y] + static_cast<std::ptrdiff_t>(left + first) * channels, places, n);
            }
        }
    });
}

long long bufferBytes(NoxiSize roi) { return roundUp(static_cast<long long>(roi.width), 4LL) * 24 + 32; }

/// Only a buffer that is used must have a size that an int tells.
NoxStatus checkBuffer(const Nox8u *buffer, NoxiSize roi) {
    return buffer == nullptr ? noxStsNoError : checkBufferBytes(bufferBytes(roi));
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
                                          checkFocalLengths(lens.fx, lens.fy), checkBuffer(buffer, roi));
    if (status == noxStsNoError)
        undistort<T, Channels>({src, srcStep}, {dst, dstStep}, roi, lens, buffer);
    return status;
}

} // namespace

#define NOX_UNDISTORT(FUNCTION, TYPE, CHANNELS)                                                                        \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, Nox32f fx, Nox32f fy,       \
                       Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2, Nox8u *buffer) {                                    \
        return undistortRadial<TYPE, CHANNELS>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0, 0},        \
                                               buffer);                                                                \
    }

NOX_UNDISTORT(noxiUndistortRadial_8u_C1R, Nox8u, 1)
NOX_UNDISTORT(noxiUndistortRadial_16u_C1R, Nox16u, 1)
NOX_UNDISTORT(noxiUndistortRadial_32f_C1R, Nox32f, 1)
NOX_UNDISTORT(noxiUndistortRadial_8u_C3R, Nox8u, 3)
NOX_UNDISTORT(noxiUndistortRadial_16u_C3R, Nox16u, 3)
NOX_UNDISTORT(noxiUndistortRadial_32f_C3R, Nox32f, 3)

NoxStatus noxiCreateMapCameraUndistort_32f_C1R(Nox32f *xMap, int xMapStep, Nox32f *yMap, int yMapStep, NoxiSize roi,
                                               Nox32f fx, Nox32f fy, Nox32f cx, Nox32f cy, Nox32f k1, Nox32f k2,
                                               Nox32f p1, Nox32f p2, Nox8u *buffer) {
    const NoxStatus status =
        firstFailure(checkPointers(xMap, yMap), checkSize(roi), checkStep<Nox32f>(xMapStep, roi.width),
                     checkStep<Nox32f>(yMapStep, roi.width), checkEvenSteps<Nox32f>(xMapStep, yMapStep),
                     checkFocalLengths(fx, fy), checkBuffer(buffer, roi));
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
    const NoxStatus status = firstFailure(checkPointers(bufferSize), checkSize(roi));
    return status != noxStsNoError ? status : storeSize(bufferBytes(roi), bufferSize);
}
