// Inpainting: pixels are filled in the order of their distances, each from the known pixels about it.
#include "noxvinpaint.h"

#include <xmmintrin.h>

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

/// A neighbour as the sums see it.
struct Sample {
    int dx, dy; ///< the way from it to the pixel
    const Nox8u *value;
    const Nox16s *gradient;
    Nox32f distance;
};

/// The byte of a result: truncated, what lies outside a byte's range moved to its end, 0 for a not-a-number.
Nox8u byteOf(long double value) {
    if (value >= 255)
        return 255;
    return value > 0 ? static_cast<Nox8u>(static_cast<int>(value)) : Nox8u{0};
}

/// The direct neighbours of a pixel that are known.
template <int channels>
struct DirectNeighbours {
    const Nox8u *known[4];
    int count = 0;

    DirectNeighbours(const Canvas &canvas, int x, int y) {
        take(canvas, y > 0, x, y - 1);
        take(canvas, x > 0, x - 1, y);
        take(canvas, x < canvas.width - 1, x + 1, y);
        take(canvas, y < canvas.height - 1, x, y + 1);
    }

private:
    void take(const Canvas &canvas, bool exists, int x, int y) {
        if (exists && canvas.unknown[y][x] == 0)
            known[count++] = canvas.image[y] + static_cast<std::ptrdiff_t>(x) * channels;
    }
};

/// A weighted sum of values. Inside the work area known direct neighbours replace it, near its edges they join it.
struct Mean {
    Nox32f sum = 0, weights = 1e-30F;

    template <int channels>
    static void replaceOrJoin(const DirectNeighbours<channels> &direct, bool inside, int channel, Nox32f &sum) {
        if (inside) {
            int values = 0;
            for (int i = 0; i < direct.count; ++i)
                values += direct.known[i][channel];
            sum = static_cast<Nox32f>(255 * values);
        } else {
            for (int i = 0; i < direct.count; ++i)
                sum += static_cast<Nox32f>(direct.known[i][channel]);
        }
    }
    static Nox32f weightOf(int directCount, bool inside) {
        return static_cast<Nox32f>(inside ? 255 * directCount : directCount);
    }
};

/// Method 0: weights by the gradient of the distance, and a correction by the image's gradients.
template <int channels>
class AlongDistanceGradient {
public:
    static constexpr int method = alongDistanceGradient;

    AlongDistanceGradient(const Canvas &canvas, int x, int y)
        : gx_(canvas.distanceGradient[y][2 * x]), gy_(canvas.distanceGradient[y][2 * x + 1]),
          distance_(canvas.distance[y][x]) {}

    /// nearness as the function of that name gives it, in the table and near the edges alike.
    void add(const Sample &s, Nox32f nearness, Nox32f /*squared*/) {
        constexpr Nox32f least = 2.5e-25F, unit = 1.0F / 4096;
        Nox32f t = static_cast<Nox32f>(gx_ * s.dx + gy_ * s.dy);
        if (std::fabs(t) < least)
            t = least;
        const Nox32f c = std::fabs(unit / (std::fabs(s.distance - distance_) + 1.0F) * nearness * t);
        weights_ += c;
        for (int i = 0; i < channels; ++i) {
            sum_[i] += static_cast<Nox32f>(s.value[i]) * c;
            sx_[i] -= static_cast<Nox32f>(s.gradient[2 * i]) * c * static_cast<Nox32f>(s.dx);
            sy_[i] -= static_cast<Nox32f>(s.gradient[2 * i + 1]) * c * static_cast<Nox32f>(s.dy);
        }
    }
    void finish(const Canvas &canvas, int x, int y, bool inside, Nox8u *out) {
        if (weights_ < fewWeights) {
            const DirectNeighbours<channels> direct(canvas, x, y);
            weights_ += Mean::weightOf(direct.count, inside);
            for (int i = 0; i < channels; ++i) {
                Mean::replaceOrJoin(direct, inside, i, sum_[i]);
                sx_[i] = sy_[i] = 0;
            }
        }
        for (int i = 0; i < channels; ++i) {
            const long double sx = sx_[i], sy = sy_[i];
            out[i] = byteOf(static_cast<long double>(sum_[i]) / weights_ + 0.5L +
                            (sx + sy) / (std::sqrt(sy * sy + sx * sx) + 1e-20L));
        }
    }

private:
    int gx_, gy_;
    Nox32f distance_, weights_ = 1e-30F;
    Nox32f sum_[channels] = {}, sx_[channels] = {}, sy_[channels] = {};
};

/// 1 / sqrt(x): the processor's estimate and one step of Newton's method.
Nox32f reciprocalRoot(Nox32f x) {
    const Nox32f e = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
    return e * (x * e * e - 3.0F) * -0.5F;
}

/// Method 1: weights by how well the line of equal brightness through the neighbour meets the pixel.
template <int channels>
class AlongIsophote {
public:
    static constexpr int method = alongIsophote;

    AlongIsophote(const Canvas & /*canvas*/, int /*x*/, int /*y*/) { std::fill_n(weights_, channels, 1e-30F); }

    /// squared: what the gradient's square is multiplied with before the root: 1 with a table whose weights hold the
    /// distance's part.
    void add(const Sample &s, Nox32f nearness, Nox32f squared) {
        for (int i = 0; i < channels; ++i) {
            const int px = -s.gradient[2 * i + 1], py = s.gradient[2 * i];
            const int u = std::abs(s.dx * px + s.dy * py);
            const Nox32f t =
                u == 0 ? 1e-6F
                       : static_cast<Nox32f>(u) * reciprocalRoot(squared * static_cast<Nox32f>(px * px + py * py));
            const Nox32f c = nearness * t;
            sum_[i] += static_cast<Nox32f>(s.value[i]) * c;
            weights_[i] += c;
        }
    }
    void finish(const Canvas &canvas, int x, int y, bool inside, Nox8u *out) {
        for (int i = 0; i < channels; ++i) {
            if (weights_[i] < fewWeights) {
                const DirectNeighbours<channels> direct(canvas, x, y);
                weights_[i] += Mean::weightOf(direct.count, inside);
                Mean::replaceOrJoin(direct, inside, i, sum_[i]);
            }
            out[i] = byteOf(static_cast<long double>(sum_[i]) / weights_[i] + 0.5L);
        }
    }

private:
    Nox32f sum_[channels] = {}, weights_[channels];
};

/// Adds all neighbours of a pixel whose disc lies inside the work area.
template <int channels, class Sums>
void addTable(const Canvas &canvas, const NoxiInpaintState &state, int x, int y, Sums &sums) {
    const Nox8u *unknown = canvas.unknown[y] + x, *value = canvas.image[y] + static_cast<std::ptrdiff_t>(x) * channels;
    const Nox32f *distance = canvas.distance[y] + x;
    const Nox16s *gradient = canvas.gradient[y] + static_cast<std::ptrdiff_t>(x) * 2 * channels;
    const auto *neighbour = static_cast<const InpaintNeighbour *>(state.neighbours);
    for (const auto *end = neighbour + state.neighbourCount; neighbour < end; ++neighbour)
        if (unknown[neighbour->maskOffset] == 0)
            sums.add({neighbour->dx, neighbour->dy, value + neighbour->dstOffset, gradient + neighbour->gradientOffset,
                      distance[neighbour->distanceOffset]},
                     neighbour->weight, 1);
}

/// Adds the neighbours inside the work area of a pixel near its edges.
template <int channels, class Sums>
void addClipped(const Canvas &canvas, int r, int x, int y, Sums &sums) {
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
            sums.add({dx, dy, canvas.image[ny] + at, canvas.gradient[ny] + 2 * at, canvas.distance[ny][nx]}, near, d2);
        }
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
