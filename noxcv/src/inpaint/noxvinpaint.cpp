// Inpainting: pixels are filled in the order of their distances, each from the known pixels about it.
#include "noxvinpaint.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "checks.h"
#include "edges/noxvmaskedgradient.h"
#include "noxcv/primitives.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr std::uint64_t indexBits = (1ULL << 28) - 1;
constexpr Nox32f leastWeight = 1e-30F; ///< what sums of weights begin with
constexpr Nox32f fewWeights = 0.0001F; ///< below this sum of weights the direct neighbours decide

/// The routines of a number of channels.
template <int channels>
struct Member;
#define NOX_INPAINT_ROUTINES(CHANNELS)                                                                                 \
    template <>                                                                                                        \
    struct Member<CHANNELS> {                                                                                          \
        static constexpr auto copy = noxiCopy_8u_C##CHANNELS##R;                                                       \
        static constexpr auto gradient = owncvGradient_8u16s_C##CHANNELS##MR;                                          \
        static constexpr auto absGradient = owncvAbsGradient_8u16s_C##CHANNELS##MR;                                    \
        static constexpr auto modGradient = owncvModGradient_8u16s_C##CHANNELS##MR;                                    \
        static constexpr auto modAbsGradient = owncvModAbsGradient_8u16s_C##CHANNELS##MR;                              \
        static constexpr auto modGradientPoint = owncvModGradientPoint_8u16s_C##CHANNELS##MR;                          \
        static constexpr auto modAbsGradientPoint = owncvModAbsGradientPoint_8u16s_C##CHANNELS##MR;                    \
    };
NOX_INPAINT_ROUTINES(1)
NOX_INPAINT_ROUTINES(3)

/// One call's images, all seen from the work area's first pixel.
struct Canvas {
    Rows<Nox8u> image;   ///< the caller's destination
    Rows<Nox8u> unknown; ///< not 0 where no value is known yet
    Rows<const Nox32f> distance;
    Rows<Nox16s> gradient; ///< of the image
    Rows<const Nox16s> distanceGradient;
    int width, height;
};

/// x in the low half, y in the high one: as a pair of the gradient images lies in memory.
Nox32s packPair(int x, int y) {
    return static_cast<Nox32s>((static_cast<unsigned>(x) & 0xffffU) | static_cast<unsigned>(y) << 16);
}
Nox32s pairAt(const Nox16s *pair) {
    Nox32s both = 0;
    std::memcpy(&both, pair, sizeof(both));
    return both;
}

/// Known neighbours of a pixel, field by field, for vectors of four. What fills up the last vector has no weight.
template <int channels>
struct Samples {
    static constexpr int capacity = 64;

    alignas(16) Nox32s way[capacity];      ///< pair: from the neighbour to the pixel
    alignas(16) Nox32f nearness[capacity]; ///< the weight's part that depends on the way alone
    alignas(16) Nox32f squared[capacity];  ///< method 1: what the gradient's square is multiplied with
    alignas(16) Nox32f distance[capacity]; ///< method 0: the map's value
    alignas(16) Nox32s value[channels][capacity];
    alignas(16) Nox32s gradient[channels][capacity]; ///< pairs
    int count = 0;

    void push(int dx, int dy, Nox32f near, Nox32f factor, Nox32f mapped, const Nox8u *pixel, const Nox16s *pairs) {
        way[count] = packPair(dx, dy);
        nearness[count] = near;
        squared[count] = factor;
        distance[count] = mapped;
        for (int i = 0; i < channels; ++i) {
            value[i][count] = pixel[i];
            gradient[i][count] = pairAt(pairs + 2 * i);
        }
        ++count;
    }
    bool full() const { return count == capacity; }
    /// Repeats the last neighbour, without a weight, up to a multiple of four.
    void fillUp() {
        for (; count % 4 != 0; ++count) {
            way[count] = way[count - 1];
            nearness[count] = 0;
            squared[count] = squared[count - 1];
            distance[count] = distance[count - 1];
            for (int i = 0; i < channels; ++i) {
                value[i][count] = value[i][count - 1];
                gradient[i][count] = gradient[i][count - 1];
            }
        }
    }
};

__m128 absolute(__m128 v) { return _mm_andnot_ps(_mm_set1_ps(-0.0F), v); }
/// a where the mask is set, else b.
__m128 chosen(__m128 mask, __m128 a, __m128 b) { return _mm_or_ps(_mm_and_ps(mask, a), _mm_andnot_ps(mask, b)); }
__m128i loadFour(const Nox32s *from) { return _mm_load_si128(reinterpret_cast<const __m128i *>(from)); }
__m128 firstOf(__m128i pairs) { return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_slli_epi32(pairs, 16), 16)); }
__m128 secondOf(__m128i pairs) { return _mm_cvtepi32_ps(_mm_srai_epi32(pairs, 16)); }

/// Adds the four terms of each of four sums one after the other: lane i of `sums` takes the lanes of argument i.
__m128 addInOrder(__m128 sums, __m128 a, __m128 b, __m128 c, __m128 d) {
    _MM_TRANSPOSE4_PS(a, b, c, d);
    return _mm_add_ps(_mm_add_ps(_mm_add_ps(_mm_add_ps(sums, a), b), c), d);
}

/// The byte of a result: truncated, what lies outside a byte's range moved to its end, 0 for a not-a-number.
Nox8u byteOf(long double value) {
    if (value >= 255)
        return 255;
    return value > 0 ? static_cast<Nox8u>(static_cast<int>(value)) : Nox8u{0};
}

/// Where weights are missing: the known direct neighbours. Inside the work area they replace the sum, near its edges
/// they join it.
template <int channels>
void addDirect(const Canvas &canvas, int x, int y, int channel, bool inside, Nox32f &sum, Nox32f &weights) {
    int values = 0, known = 0;
    Nox32f joined = sum;
    const auto take = [&](bool exists, int nx, int ny) {
        if (!exists || canvas.unknown[ny][nx] != 0)
            return;
        const Nox8u value = canvas.image[ny][static_cast<std::ptrdiff_t>(nx) * channels + channel];
        values += value;
        joined += static_cast<Nox32f>(value);
        ++known;
    };
    take(y > 0, x, y - 1);
    take(x > 0, x - 1, y);
    take(x < canvas.width - 1, x + 1, y);
    take(y < canvas.height - 1, x, y + 1);
    sum = inside ? static_cast<Nox32f>(255 * values) : joined;
    weights += static_cast<Nox32f>(inside ? 255 * known : known);
}

/// Method 0: weights by the gradient of the distance, and a correction by the image's gradients.
template <int channels>
class AlongDistanceGradient {
public:
    static constexpr int method = alongDistanceGradient;

    AlongDistanceGradient(const Canvas &canvas, int x, int y)
        : gx_(canvas.distanceGradient[y][2 * x]), gy_(canvas.distanceGradient[y][2 * x + 1]),
          distance_(canvas.distance[y][x]) {
        std::fill_n(sums_, channels, _mm_setr_ps(0, leastWeight, 0, 0));
    }

    /// Adds all samples and empties them.
    void add(Samples<channels> &samples) {
        const __m128 least = _mm_set1_ps(2.5e-25F), unit = _mm_set1_ps(1.0F / 4096), one = _mm_set1_ps(1);
        const __m128i towards = _mm_set1_epi32(packPair(gx_, gy_));
        samples.fillUp();
        for (int k = 0; k < samples.count; k += 4) {
            const __m128i way = loadFour(samples.way + k);
            __m128 t = _mm_cvtepi32_ps(_mm_madd_epi16(way, towards));
            const __m128 small = _mm_cmplt_ps(absolute(t), least);
            t = _mm_or_ps(_mm_and_ps(small, least), _mm_andnot_ps(small, t));
            const __m128 apart = absolute(_mm_sub_ps(_mm_load_ps(samples.distance + k), _mm_set1_ps(distance_)));
            const __m128 share = _mm_div_ps(unit, _mm_add_ps(apart, one));
            const __m128 c = absolute(_mm_mul_ps(_mm_mul_ps(share, _mm_load_ps(samples.nearness + k)), t));
            const __m128 minusX = _mm_sub_ps(_mm_setzero_ps(), firstOf(way));
            const __m128 minusY = _mm_sub_ps(_mm_setzero_ps(), secondOf(way));
            for (int i = 0; i < channels; ++i) {
                const __m128i gradient = loadFour(samples.gradient[i] + k);
                sums_[i] = addInOrder(sums_[i], _mm_mul_ps(_mm_cvtepi32_ps(loadFour(samples.value[i] + k)), c), c,
                                      _mm_mul_ps(_mm_mul_ps(firstOf(gradient), c), minusX),
                                      _mm_mul_ps(_mm_mul_ps(secondOf(gradient), c), minusY));
            }
        }
        samples.count = 0;
    }
    void finish(const Canvas &canvas, int x, int y, bool inside, Nox8u *out) const {
        for (int i = 0; i < channels; ++i) {
            alignas(16) Nox32f sums[4]; // of values, weights, and the correction's components
            _mm_store_ps(sums, sums_[i]);
            if (sums[1] < fewWeights) {
                addDirect<channels>(canvas, x, y, i, inside, sums[0], sums[1]);
                sums[2] = sums[3] = 0;
            }
            const long double sx = sums[2], sy = sums[3];
            out[i] = byteOf(static_cast<long double>(sums[0]) / sums[1] + 0.5L +
                            (sx + sy) / (std::sqrt(sy * sy + sx * sx) + 1e-20L));
        }
    }

private:
    int gx_, gy_;
    Nox32f distance_;
    __m128 sums_[channels];
};

/// 1 / sqrt(x): the processor's estimate and one step of Newton's method.
__m128 reciprocalRoot(__m128 x) {
    const __m128 e = _mm_rsqrt_ps(x);
    const __m128 rest = _mm_sub_ps(_mm_mul_ps(_mm_mul_ps(x, e), e), _mm_set1_ps(3));
    return _mm_mul_ps(_mm_mul_ps(e, rest), _mm_set1_ps(-0.5F));
}

/// Method 1: weights by how well the line of equal brightness through the neighbour meets the pixel.
template <int channels>
class AlongIsophote {
public:
    static constexpr int method = alongIsophote;

    AlongIsophote(const Canvas & /*canvas*/, int /*x*/, int /*y*/) {
        std::fill_n(sums_, channels, _mm_setr_ps(0, leastWeight, 0, 0));
    }

    /// Adds all samples and empties them.
    void add(Samples<channels> &samples) {
        const __m128i lowHalves = _mm_set1_epi32(0xffff), zero = _mm_setzero_si128();
        const __m128 across = _mm_set1_ps(1e-6F), one = _mm_set1_ps(1);
        samples.fillUp();
        for (int k = 0; k < samples.count; k += 4) {
            const __m128i way = loadFour(samples.way + k);
            // (dy, -dx): its product with the gradient is that of the way with the gradient turned.
            const __m128i minusX = _mm_and_si128(_mm_sub_epi16(zero, way), lowHalves);
            const __m128i turned = _mm_or_si128(_mm_srli_epi32(way, 16), _mm_slli_epi32(minusX, 16));
            const __m128 nearness = _mm_load_ps(samples.nearness + k), squared = _mm_load_ps(samples.squared + k);
            for (int i = 0; i < channels; ++i) {
                const __m128i gradient = loadFour(samples.gradient[i] + k);
                const __m128 u = absolute(_mm_cvtepi32_ps(_mm_madd_epi16(gradient, turned)));
                const __m128 square = _mm_cvtepi32_ps(_mm_madd_epi16(gradient, gradient));
                const __m128 none = _mm_cmpeq_ps(u, _mm_setzero_ps());
                // A root of 0 would be an invalid operation.
                const __m128 lengths = chosen(none, one, _mm_mul_ps(squared, square));
                const __m128 t = chosen(none, across, _mm_mul_ps(u, reciprocalRoot(lengths)));
                const __m128 c = _mm_mul_ps(nearness, t);
                const __m128 product = _mm_mul_ps(_mm_cvtepi32_ps(loadFour(samples.value[i] + k)), c);
                const __m128 low = _mm_unpacklo_ps(product, c), high = _mm_unpackhi_ps(product, c);
                sums_[i] = _mm_add_ps(_mm_add_ps(sums_[i], low), _mm_movehl_ps(low, low));
                sums_[i] = _mm_add_ps(_mm_add_ps(sums_[i], high), _mm_movehl_ps(high, high));
            }
        }
        samples.count = 0;
    }
    void finish(const Canvas &canvas, int x, int y, bool inside, Nox8u *out) const {
        for (int i = 0; i < channels; ++i) {
            alignas(16) Nox32f sums[4]; // of values and weights; the others mean nothing
            _mm_store_ps(sums, sums_[i]);
            if (sums[1] < fewWeights)
                addDirect<channels>(canvas, x, y, i, inside, sums[0], sums[1]);
            out[i] = byteOf(static_cast<long double>(sums[0]) / sums[1] + 0.5L);
        }
    }

private:
    __m128 sums_[channels];
};

/// Adds all neighbours of a pixel whose disc lies inside the work area.
template <int channels, class Sums>
void addTable(const Canvas &canvas, const NoxiInpaintState &state, int x, int y, Sums &sums) {
    const Nox8u *unknown = canvas.unknown[y] + x, *value = canvas.image[y] + static_cast<std::ptrdiff_t>(x) * channels;
    const Nox32f *distance = canvas.distance[y] + x;
    const Nox16s *gradient = canvas.gradient[y] + static_cast<std::ptrdiff_t>(x) * 2 * channels;
    const auto *table = static_cast<const InpaintNeighbour *>(state.neighbours);
    Samples<channels> samples;
    for (int first = 0; first < state.neighbourCount; first += samples.capacity, table += samples.capacity) {
        // The known ones are listed without branches, which could not be foreseen.
        Nox8u known[Samples<channels>::capacity];
        const int records = std::min(state.neighbourCount - first, samples.capacity);
        int count = 0;
        for (int i = 0; i < records; ++i) {
            known[count] = static_cast<Nox8u>(i);
            count += unknown[table[i].maskOffset] == 0 ? 1 : 0;
        }
        for (int i = 0; i < count; ++i) {
            const InpaintNeighbour &n = table[known[i]];
            samples.push(n.dx, n.dy, n.weight, 1, distance[n.distanceOffset], value + n.dstOffset,
                         gradient + n.gradientOffset);
        }
        sums.add(samples);
    }
}

/// Adds the neighbours inside the work area of a pixel near its edges.
template <int channels, class Sums>
void addClipped(const Canvas &canvas, int r, int x, int y, Sums &sums) {
    Samples<channels> samples;
    const int top = std::max(y - r, 0), bottom = std::min(y + r, canvas.height - 1);
    const int left = std::max(x - r, 0), right = std::min(x + r, canvas.width - 1);
    for (int ny = top; ny <= bottom; ++ny)
        for (int nx = left; nx <= right; ++nx) {
            const int dx = x - nx, dy = y - ny, squared = dx * dx + dy * dy;
            if (squared == 0 || squared > r * r || canvas.unknown[ny][nx] != 0)
                continue;
            const auto d2 = static_cast<Nox32f>(squared);
            // Method 1 has the distance itself under the root.
            const Nox32f near = Sums::method == alongIsophote ? 1.0F / (d2 * d2 + 1.0F) : nearness(Sums::method, d2);
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(nx) * channels;
            samples.push(dx, dy, near, d2, canvas.distance[ny][nx], canvas.image[ny] + at,
                         canvas.gradient[ny] + 2 * at);
            if (samples.full())
                sums.add(samples);
        }
    sums.add(samples);
}

/// Fills the pixels in their order.
template <int channels, class Sums, class Update>
void fill(const Canvas &canvas, const NoxiInpaintState &state, Update *update) {
    const int r = static_cast<int>(state.radius);
    for (int i = 0; i < state.count; ++i) {
        const auto entry = std::bit_cast<std::uint64_t>(state.order[i]);
        if (entry == 0)
            continue;
        const int index = static_cast<int>(entry & indexBits), y = index / canvas.width, x = index % canvas.width;
        const bool inside = x >= r && y >= r && x + r < canvas.width && y + r < canvas.height;
        Sums sums(canvas, x, y);
        if (inside)
            addTable<channels>(canvas, state, x, y, sums);
        else
            addClipped<channels>(canvas, r, x, y, sums);
        sums.finish(canvas, x, y, inside, canvas.image[y] + static_cast<std::ptrdiff_t>(x) * channels);
        canvas.unknown[y][x] = 0;
        update(canvas.image.base, static_cast<int>(canvas.image.step), canvas.gradient.base,
               static_cast<int>(canvas.gradient.step), canvas.unknown.base, static_cast<int>(canvas.unknown.step),
               canvas.width, canvas.height, y, x);
    }
}

/// The known pixels that a dilation of the holes reaches, into workMask.
void ringAbout(const NoxiInpaintState &state, NoxiSize work, const NoxiMorphState *element) {
    noxiDilateBorderReplicate_8u_C1R(state.holeMask, state.maskStep, state.workMask, state.maskStep, work,
                                     noxBorderReplicate, element);
    noxiSub_8u_C1IRSfs(state.holeMask, state.maskStep, state.workMask, state.maskStep, work, 0);
}

/// The gradients of all known pixels that the first fills look at. `src` is the source, seen from the work area.
template <int channels>
void prepareGradients(const Canvas &canvas, const NoxiInpaintState &state, const Nox8u *src, int srcStep) {
    using Routines = Member<channels>;
    const NoxiSize work{canvas.width, canvas.height};
    const int gradientStep = static_cast<int>(canvas.gradient.step);
    const bool signedForm = state.method == alongDistanceGradient;
    std::memset(canvas.gradient.base, 0, static_cast<std::size_t>(gradientStep) * work.height);
    ringAbout(state, work, state.morphBig);
    (signedForm ? Routines::gradient : Routines::absGradient)(src, srcStep, canvas.gradient.base, gradientStep,
                                                              state.workMask, state.maskStep, work.width, work.height);
    ringAbout(state, work, state.morphCross);
    (signedForm ? Routines::modGradient : Routines::modAbsGradient)(src, srcStep, canvas.gradient.base, gradientStep,
                                                                    state.workMask, state.maskStep, state.holeMask,
                                                                    state.maskStep, work.width, work.height);
    if (!signedForm)
        return;
    std::memset(state.distanceGradient, 0, static_cast<std::size_t>(state.distanceGradientStep) * work.height);
    owncvGradient_32f16s_C1MR_Sfs(state.distance, state.distanceStep, state.distanceGradient,
                                  state.distanceGradientStep, state.holeMask, state.maskStep, work.width, work.height,
                                  -12);
}

/// Sets what in the neighbours' records depends on the call's image and channels.
template <int channels>
void setOffsets(const NoxiInpaintState &state, std::ptrdiff_t dstStep, std::ptrdiff_t gradientStep) {
    auto *const first = static_cast<InpaintNeighbour *>(state.neighbours);
    // Unsigned, since a row offset may wrap where the image is too low for the disc.
    const auto offset = [](std::size_t step, const InpaintNeighbour &n, int pixel) {
        return static_cast<std::size_t>(-n.dy) * step + static_cast<std::size_t>(-n.dx) * pixel;
    };
    std::for_each(first, first + state.neighbourCount, [&](InpaintNeighbour &n) {
        n.dstOffset = static_cast<std::ptrdiff_t>(offset(dstStep, n, channels));
        n.gradientOffset = static_cast<Nox32s>(offset(gradientStep / 2, n, 2 * channels));
    });
}

template <int channels>
NoxStatus paint(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, const NoxiInpaintState &state, Nox16s *gradient,
                int gradientStep) {
    using Routines = Member<channels>;
    const NoxiSize work{state.workWidth, state.workHeight};
    const std::ptrdiff_t left = static_cast<std::ptrdiff_t>(state.workX) * channels;
    const Canvas canvas = {{Rows<Nox8u>{dst, dstStep}[state.workY] + left, dstStep},
                           {state.workMask, state.maskStep},
                           {state.distance, state.distanceStep},
                           {gradient, gradientStep},
                           {state.distanceGradient, state.distanceGradientStep},
                           work.width,
                           work.height};
    setOffsets<channels>(state, dstStep, gradientStep);
    prepareGradients<channels>(canvas, state, Rows<const Nox8u>{src, srcStep}[state.workY] + left, srcStep);
    const NoxStatus status = noxiCopy_8u_C1R(state.holeMask, state.maskStep, state.workMask, state.maskStep, work);
    if (state.method == alongDistanceGradient)
        fill<channels, AlongDistanceGradient<channels>>(canvas, state, Routines::modGradientPoint);
    else
        fill<channels, AlongIsophote<channels>>(canvas, state, Routines::modAbsGradientPoint);
    return status;
}

template <int channels>
NoxStatus inpaint(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi, NoxiInpaintState *state) {
    const long long elements = static_cast<long long>(roi.width) * channels;
    NoxStatus status = firstFailure(checkPointers(src, dst, state), checkSize(roi));
    if (status == noxStsNoError)
        status = firstFailure(require(roi.width == state->width && roi.height == state->height, noxStsBadSize),
                              checkStep<Nox8u>(srcStep, elements), checkStep<Nox8u>(dstStep, elements));
    if (status != noxStsNoError)
        return status;
    Nox16s *gradient = state->imageGradient;
    int gradientStep = state->gradientStep;
    Nox8u *own = nullptr;
    if (state->count > 0 && state->channels < channels) { // a state for fewer channels has no room for the gradients
        const long long step = 4LL * state->workWidth * channels, bytes = step * state->workHeight;
        own = bytes > INT32_MAX ? nullptr : noxsMalloc_8u(static_cast<int>(bytes));
        if (own == nullptr)
            return noxStsNoMemory;
        gradient = reinterpret_cast<Nox16s *>(own);
        gradientStep = static_cast<int>(step);
    }
    Member<channels>::copy(src, srcStep, dst, dstStep, roi);
    if (state->count > 0)
        status = paint<channels>(src, srcStep, dst, dstStep, *state, gradient, gradientStep);
    noxsFree(own);
    return status;
}

} // namespace

NoxStatus noxiInpaint_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                             NoxiInpaintState *state) {
    return inpaint<1>(src, srcStep, dst, dstStep, roi, state);
}

NoxStatus noxiInpaint_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                             NoxiInpaintState *state) {
    return inpaint<3>(src, srcStep, dst, dstStep, roi, state);
}
