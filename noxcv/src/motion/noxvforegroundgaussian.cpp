// Foreground by mixtures of Gaussians (C. Stauffer, W. E. L. Grimson, 1999).
//
// Most pixels match their first Gaussian, which stays the first. Then only the live ones are touched: those of count 0
// and weight 0 are sorted behind all others and stay as they are. (One of count 0 has a weight when its first match
// came in the last frame of the window; it stays in front of the other empty ones.)
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "checks.h"
#include "noxcv/motion.h"
#include "noxcv/primitives.h"
#include "noxvmodelmemory.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr int modes = 5;
constexpr Nox64f firstVariance = 12.5;

template <int channels>
struct [[gnu::packed]] Gaussian {
    Nox32s count;
    Nox64f weight;
    Nox64f variance[channels];
    Nox64f mean[channels];

    bool live() const { return count > 0 || weight != 0; }
    NOX_INLINE Nox64f varianceSum() const {
        Nox64f sum = variance[0];
        for (int c = 1; c < channels; ++c)
            sum += variance[c];
        return sum;
    }
    NOX_INLINE Nox64f fitness() const { return count > 0 ? weight / std::sqrt(varianceSum()) : 0; }
};
static_assert(sizeof(Gaussian<1>) == 28 && sizeof(Gaussian<3>) == 60);

/// What a frame needs of the state.
struct Parameters {
    Nox64f sigmas, sigmasSquared, share, newVariance;
    int window;
    bool endOfWindow;

    explicit Parameters(const NoxiForegroundGaussianState &state)
        : sigmas(state.matchSigmas), sigmasSquared(sigmas * sigmas), share(state.backgroundShare),
          newVariance(state.newVariance), window(state.window), endOfWindow(state.frames == state.window) {}
};

/// The definition, in extended precision.
template <int channels>
bool matchesExactly(const Gaussian<channels> &gaussian, const Nox8u *x, Nox64f sigmas) {
    long double distance = 0, variance = 0;
    for (int c = 0; c < channels; ++c) {
        const long double d = static_cast<long double>(gaussian.mean[c]) - x[c];
        distance += d * d;
        variance += gaussian.variance[c];
    }
    return distance <= variance * (static_cast<long double>(sigmas) * sigmas);
}

/// Decides in double precision where its error, a few units of 2^-53 of either side, cannot matter. The difference of a
/// mean and a byte is exact to 2^-53 of itself, so both sides are.
template <int channels>
NOX_INLINE bool matches(const Gaussian<channels> &gaussian, const Nox8u *x, const Parameters &parameters) {
    constexpr Nox64f above = 1 + 0x1p-46, below = 1 - 0x1p-46;
    Nox64f distance = 0;
    for (int c = 0; c < channels; ++c) {
        const Nox64f d = gaussian.mean[c] - x[c];
        distance += d * d;
    }
    const Nox64f limit = gaussian.varianceSum() * parameters.sigmasSquared;
    if (distance < limit * below)
        return true;
    if (distance > limit * above)
        return false;
    return matchesExactly(gaussian, x, parameters.sigmas);
}

/// Mean and variance move toward a value.
template <int channels>
NOX_INLINE void learn(Gaussian<channels> &gaussian, const Nox8u *x, Nox64f rate) {
    for (int c = 0; c < channels; ++c) {
        const Nox64f d = x[c] - gaussian.mean[c];
        gaussian.mean[c] += d * rate;
        gaussian.variance[c] += rate * (d * d - gaussian.variance[c]);
    }
}

template <int channels>
void replaceLast(Gaussian<channels> *mixture, const Nox8u *x, Nox64f variance) {
    Gaussian<channels> &last = mixture[modes - 1];
    last.count = 1;
    for (int c = 0; c < channels; ++c) {
        last.variance[c] = variance;
        last.mean[c] = x[c];
    }
}

template <int channels>
int sumOfCounts(const Gaussian<channels> *mixture) {
    Nox32u sum = 0;
    for (int k = 0; k < modes; ++k)
        sum += static_cast<Nox32u>(mixture[k].count);
    return static_cast<int>(sum);
}

template <int channels>
void replaceUnmatched(Gaussian<channels> *mixture, const Nox8u *x, const Parameters &parameters) {
    if (parameters.endOfWindow) {
        const Nox64f rate = 1.0 / parameters.window;
        for (int k = 0; k < modes; ++k)
            mixture[k].weight += (0 - mixture[k].weight) * rate;
        replaceLast(mixture, x, parameters.newVariance);
        for (int k = 0; k < modes - 1; ++k)
            mixture[k].weight *= 1 - rate;
        mixture[modes - 1].weight = 1.0 / sumOfCounts(mixture);
        return;
    }
    replaceLast(mixture, x, parameters.newVariance);
    const Nox64f sum = sumOfCounts(mixture);
    for (int k = 0; k < modes; ++k)
        mixture[k].weight = mixture[k].count / sum;
}

/// The first `live` Gaussians are live.
template <int channels>
NOX_INLINE void updateMatched(Gaussian<channels> *mixture, int live, int match, const Nox8u *x,
                              const Parameters &parameters) {
    if (parameters.endOfWindow) {
        const Nox64f rate = 1.0 / parameters.window;
        for (int k = 0; k < modes; ++k)
            mixture[k].weight += ((k == match ? 1 : 0) - mixture[k].weight) * rate;
        learn(mixture[match], x, 1.0 / (parameters.window * mixture[match].weight));
        return;
    }
    Nox32u sum = 0;
    for (int k = 0; k < live; ++k)
        sum += static_cast<Nox32u>(mixture[k].count);
    const Nox64f rate = 1.0 / (static_cast<Nox64f>(static_cast<Nox32s>(sum)) + 1);
    ++mixture[match].count;
    for (int k = 0; k < std::max(live, match + 1); ++k)
        mixture[k].weight += ((k == match ? 1 : 0) - mixture[k].weight) * rate;
    if (mixture[match].count >= 1)
        learn(mixture[match], x, 1.0 / mixture[match].count);
}

/// Whether each Gaussian is clearly fitter than the next, told without roots: by more than the error of the fitness.
template <int channels>
NOX_INLINE bool clearlySorted(const Gaussian<channels> *mixture, int live) {
    for (int k = 0; k + 1 < live; ++k) {
        const Gaussian<channels> &a = mixture[k], &b = mixture[k + 1];
        const Nox64f left = a.weight * a.weight * b.varianceSum(), right = b.weight * b.weight * a.varianceSum();
        if (!(left > right * (1 + 0x1p-40)))
            return false;
    }
    return true;
}

template <int channels>
void sortByFitness(Gaussian<channels> *mixture) {
    Nox64f fitness[modes];
    for (int k = 0; k < modes; ++k) {
        const Gaussian<channels> gaussian = mixture[k];
        const Nox64f own = gaussian.fitness();
        int place = k;
        for (; place > 0 && fitness[place - 1] < own; --place) {
            fitness[place] = fitness[place - 1];
            mixture[place] = mixture[place - 1];
        }
        fitness[place] = own;
        mixture[place] = gaussian;
    }
}

template <int channels>
NOX_INLINE Nox8u maskOf(const Gaussian<channels> *mixture, int match, Nox64f share) {
    Nox64f sum = 0;
    for (int k = 0; k < modes; ++k) {
        if (k == match)
            return 0;
        sum += mixture[k].weight;
        if (sum >= share)
            break;
    }
    return 255;
}

/// One pixel's step; returns its mask.
template <int channels>
NOX_INLINE Nox8u step(Gaussian<channels> *mixture, const Nox8u *x, const Parameters &parameters) {
    int live = 0, match = 0;
    while (live < modes && mixture[live].live())
        ++live;
    while (match < modes && !matches(mixture[match], x, parameters))
        ++match;
    if (match == modes) {
        replaceUnmatched(mixture, x, parameters);
        sortByFitness(mixture);
    } else {
        updateMatched(mixture, live, match, x, parameters);
        if (match >= live || !clearlySorted(mixture, live))
            sortByFitness(mixture);
    }
    return maskOf(mixture, match, parameters.share);
}

template <int channels>
void stepRows(Rows<const Nox8u> src, NoxiSize roi, NoxiForegroundGaussianState &state) {
    const Parameters parameters(state);
    const Rows<Nox8u> backgrounds{state.background, state.backgroundStep}, masks{state.mask, state.maskStep};
    // Mixtures lie one behind the other, and only the first lines of each are touched.
    constexpr int ahead = 12 * modes * static_cast<int>(sizeof(Gaussian<channels>));
    void *const *mixture = state.mixtures;
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *x = src[y];
        Nox8u *background = backgrounds[y], *mask = masks[y];
        for (int i = 0; i < roi.width; ++i, ++mixture, x += channels) {
            auto *const gaussians = static_cast<Gaussian<channels> *>(*mixture);
            __builtin_prefetch(reinterpret_cast<const char *>(gaussians) + ahead, 1);
            __builtin_prefetch(reinterpret_cast<const char *>(gaussians) + ahead + sizeof(*gaussians), 1);
            *mask++ = step(gaussians, x, parameters);
            for (int c = 0; c < channels; ++c)
                *background++ = truncateSaturated<Nox8u>(gaussians[0].mean[c] + 0.5);
        }
    }
}

void release(NoxiForegroundGaussianState *state) {
    if (state->mixtures != nullptr)
        noxsFree(state->mixtures[0]);
    noxsFree(state->mixtures);
    noxsFree(state->background);
    noxsFree(state->mask);
    noxsFree(state);
}

/// All memory of a model; null when any of it cannot be had.
template <int channels>
NoxiForegroundGaussianState *allocate(NoxiSize roi) {
    constexpr long long mixtureBytes = modes * static_cast<long long>(sizeof(Gaussian<channels>)), spare = 128;
    auto *state = area(roi) > INT_MAX ? nullptr : allocateZeroed<NoxiForegroundGaussianState>(1);
    if (state == nullptr)
        return nullptr;
    state->background = allocateBytes(area(roi) * channels);
    state->mask = allocateZeroed<Nox8u>(area(roi));
    state->mixtures = allocateZeroed<void *>(area(roi) + 2 * spare);
    Nox8u *block = state->mixtures == nullptr ? nullptr : allocateBytes((area(roi) + spare) * mixtureBytes);
    if (block != nullptr)
        for (long long i = 0; i < area(roi); ++i)
            state->mixtures[i] = block + i * mixtureBytes;
    if (state->background == nullptr || state->mask == nullptr || block == nullptr) {
        release(state);
        return nullptr;
    }
    return state;
}

template <int channels>
void start(Rows<const Nox8u> src, NoxiSize roi, NoxiForegroundGaussianState &state) {
    state.backgroundStep = roi.width * channels;
    state.maskStep = roi.width;
    state.window = 200;
    state.modes = modes;
    state.backgroundShare = 0.7;
    state.matchSigmas = 2.5;
    state.initialSigma = 15;
    state.initialWeight = 0.05;
    state.newVariance = 900;
    void *const *mixture = state.mixtures;
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *x = src[y];
        std::memcpy(state.background + static_cast<std::ptrdiff_t>(y) * state.backgroundStep, x, state.backgroundStep);
        for (int i = 0; i < roi.width; ++i, ++mixture, x += channels) {
            auto *gaussians = static_cast<Gaussian<channels> *>(*mixture);
            for (int k = 0; k < modes; ++k) {
                gaussians[k].count = k == 0 ? 1 : 0;
                gaussians[k].weight = k == 0 ? 1 : 0;
                for (int c = 0; c < channels; ++c) {
                    gaussians[k].variance[c] = firstVariance;
                    gaussians[k].mean[c] = k == 0 ? x[c] : 0;
                }
            }
        }
    }
}

template <int channels>
NoxStatus initAlloc(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,
                    NoxiForegroundGaussianState **state) {
    const NoxStatus status = firstFailure(checkPointers(src, model, state), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, static_cast<long long>(roi.width) * channels));
    if (status != noxStsNoError)
        return status;
    NoxiForegroundGaussianState *made = allocate<channels>(roi);
    if (made == nullptr)
        return noxStsNoMemory;
    start<channels>({src, srcStep}, roi, *made);
    *state = made;
    return noxStsNoError;
}

template <int channels>
NoxStatus detect(const Nox8u *src, int srcStep, const Nox8u *reserved, Nox8u *dst, int dstStep, NoxiSize roi,
                 NoxiForegroundGaussianState *state) {
    const NoxStatus status = firstFailure(checkPointers(src, reserved, dst, state), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, static_cast<long long>(roi.width) * channels));
    if (status != noxStsNoError)
        return status;
    state->frames = static_cast<int>(static_cast<unsigned>(state->frames) + 1U);
    stepRows<channels>({src, srcStep}, roi, *state);
    return noxiCopy_8u_C1R(state->mask, state->maskStep, dst, dstStep, roi);
}

NoxStatus freeModel(NoxiForegroundGaussianState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    release(state);
    return noxStsNoError;
}

} // namespace

// One group of lines per member.
#define NOX_FOREGROUND_GAUSSIAN(INIT, DETECT, FREE, CHANNELS)                                                          \
    NoxStatus INIT(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,                                     \
                   NoxiForegroundGaussianState **state) {                                                              \
        return initAlloc<CHANNELS>(src, srcStep, roi, model, state);                                                   \
    }                                                                                                                  \
    NoxStatus DETECT(const Nox8u *src, int srcStep, const Nox8u *reserved, int, Nox8u *dst, int dstStep, NoxiSize roi, \
                     NoxiForegroundGaussianState *state) {                                                             \
        return detect<CHANNELS>(src, srcStep, reserved, dst, dstStep, roi, state);                                     \
    }                                                                                                                  \
    NoxStatus FREE(NoxiForegroundGaussianState *state) { return freeModel(state); }

NOX_FOREGROUND_GAUSSIAN(noxiForegroundGaussianInitAlloc_8u_C1R, noxiForegroundGaussian_8u_C1R,
                        noxiForegroundGaussianFree_8u_C1R, 1)
NOX_FOREGROUND_GAUSSIAN(noxiForegroundGaussianInitAlloc_8u_C3R, noxiForegroundGaussian_8u_C3R,
                        noxiForegroundGaussianFree_8u_C3R, 3)
