// Foreground by tables of colours and changes (L. Li, W. Huang, I. Y. H. Gu, Q. Tian, 2003).
//
// An entry's p of 0 ends the live part of its table. What lies behind has no part in anything, ever: a new entry goes
// in front of it. So tables are moved no further than that.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "checks.h"
#include "noxcv/motion.h"
#include "noxcv/primitives.h"
#include "noxvchangemask.h"
#include "noxvmodelmemory.h"
#include "numerics.h"
#include "rows.h"

using namespace nox;

namespace {

constexpr Nox32f negligible = 1e-10F;

template <int bytes>
NOX_INLINE bool within(const Nox8u *a, const Nox8u *b, int tolerance) {
    for (int i = 0; i < bytes; ++i)
        if (absoluteDifference(a[i], b[i]) > tolerance)
            return false;
    return true;
}

/// What a table of one kind is handled with.
struct Rules {
    int size, used, tolerance;
    Nox32f slowRate, fastRate, threshold;
};

Rules colorRules(const NoxiForegroundHistogramState &state) {
    return {
        state.colorSize, state.colorUsed, truncateToInt(state.tolerance * 256 / static_cast<Nox32f>(state.colorLevels)),
        state.slowRate,  state.fastRate,  state.trustThreshold};
}
Rules changeRules(const NoxiForegroundHistogramState &state) {
    return {state.changeSize,
            state.changeUsed,
            truncateToInt(state.tolerance * 256 / static_cast<Nox32f>(state.changeLevels)),
            state.slowRate,
            state.fastRate,
            state.trustThreshold};
}

/// Whether the probable entries near this colour speak against background.
template <class Entry>
bool isForeground(const Entry *table, const Rules &rules, const Nox8u *color, Nox32f prior) {
    Nox32f p = 0, pb = 0;
    for (int i = 0; i < rules.used && table[i].p > rules.slowRate; ++i)
        if (within<3>(table[i].value, color, rules.tolerance)) {
            p += table[i].p;
            pb += table[i].pb;
        }
    return 2 * pb * prior <= p;
}

/// One table of one pixel, and what it learns.
template <class Entry, int keyBytes, bool nearest>
class Learner {
public:
    Learner(Entry *table, const Rules &rules) : table_(table), rules_(rules) {}

    /// Returns whether the probabilities given background were formed anew.
    bool learn(const Nox8u *key, bool background, Nox32f &prior, Nox8u &trusted) {
        const Nox32f rate = trusted != 0 ? rules_.slowRate : rules_.fastRate, keep = 1 - rate;
        prior *= keep;
        if (background)
            prior += rate;
        const int match = decay(key, keep);
        if (match >= 0) {
            table_[match].p += rate;
            if (background)
                table_[match].pb += rate;
            rise(match);
        } else {
            insert(key, rate);
        }
        return join(prior, trusted);
    }

private:
    /// Lets entries decay; returns the best match, or -1. Without matching the walk stops behind the first one that is
    /// far from the key.
    int decay(const Nox8u *key, Nox32f keep) {
        int best = -1, least = INT_MAX;
        for (int i = 0; i < rules_.size && table_[i].p != 0; ++i) {
            Entry &entry = table_[i];
            entry.p *= keep;
            entry.pb *= keep;
            if (!(entry.p > negligible)) {
                entry.p = entry.pb = 0;
                continue;
            }
            const bool near = within<keyBytes>(entry.value, key, rules_.tolerance);
            if (!nearest) {
                if (!near)
                    break;
            } else if (near) {
                int distance = 0;
                for (int c = 0; c < keyBytes; ++c)
                    distance += absoluteDifference(entry.value[c], key[c]);
                if (distance < least) {
                    least = distance;
                    best = i;
                }
            }
        }
        return best;
    }
    /// The first place whose p is not above this one.
    int placeOf(Nox32f p, int end) const {
        int place = 0;
        while (place < end && table_[place].p > p)
            ++place;
        return place;
    }
    void rise(int from) {
        const int place = placeOf(table_[from].p, from);
        const Entry entry = table_[from];
        std::memmove(table_ + place + 1, table_ + place, sizeof(Entry) * (from - place));
        table_[place] = entry;
    }
    /// A new entry takes the place of the last one and rises.
    void insert(const Nox8u *key, Nox32f rate) {
        const int last = rules_.size - 1, place = placeOf(rate, last);
        int end = place; // of the live part that moves
        while (end < last && table_[end].p != 0)
            ++end;
        std::memmove(table_ + place + 1, table_ + place, sizeof(Entry) * (end - place));
        if (end < last)
            table_[end + 1].p = 0;
        Entry entry{};
        entry.p = entry.pb = rate;
        std::memcpy(entry.value, key, keyBytes);
        table_[place] = entry;
    }
    bool join(Nox32f prior, Nox8u &trusted) {
        Nox32f p = 0, pb = 0;
        int count = 0;
        for (; count < rules_.used && table_[count].p != 0; ++count) {
            p += table_[count].p;
            pb += table_[count].pb;
        }
        if (p > rules_.threshold)
            trusted = 1;
        if (!(p - pb * prior > rules_.threshold))
            return false;
        for (int i = 0; i < count; ++i)
            table_[i].pb = (table_[i].p - table_[i].pb * prior) / (1 - prior);
        return true;
    }

    Entry *table_;
    const Rules &rules_;
};

/// The state's images as rows.
struct Images {
    Rows<Nox8u> background, frameChange, backgroundChange, previous;
    explicit Images(const NoxiForegroundHistogramState &state)
        : background{state.background, state.backgroundStep}, frameChange{state.frameChange, state.frameChangeStep},
          backgroundChange{state.backgroundChange, state.backgroundChangeStep}, previous{state.previous,
                                                                                         state.previousStep} {}
};

Rows<const Nox8u> constant(Rows<Nox8u> rows) { return {rows.base, rows.step}; }

/// The three bytes from a gray pixel on; those behind the last row are not read.
NOX_INLINE void grayAsColor(const Nox8u *row, int x, int readable, Nox8u (&color)[3]) {
    for (int c = 0; c < 3; ++c)
        color[c] = x + c < readable ? row[x + c] : 0;
}

template <int channels>
Nox8u decide(const NoxiForegroundPixel &pixel, bool changed, const Nox8u *color, const Rules &colors,
             const Rules &changes) {
    bool foreground = changed;
    if (changed && pixel.changeTrusted != 0)
        foreground = isForeground(pixel.changeTable, changes, color, pixel.changePrior);
    else if (!changed && pixel.colorTrusted != 0)
        foreground = isForeground(pixel.colorTable, colors, color, pixel.colorPrior);
    return foreground ? 255 : 0;
}

template <int channels>
void detectRows(Rows<const Nox8u> src, Rows<Nox8u> dst, NoxiSize roi, const NoxiForegroundHistogramState &state) {
    const Images images(state);
    markChanges<channels>(src, constant(images.previous), images.frameChange, roi);
    markChanges<channels>(src, constant(images.background), images.backgroundChange, roi);
    const Rules colors = colorRules(state), changes = changeRules(state);
    const NoxiForegroundPixel *pixel = state.pixels;
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *s = src[y], *frameChange = images.frameChange[y], *backgroundChange = images.backgroundChange[y];
        Nox8u *d = dst[y];
        std::memset(d, 0, roi.width);
        const int readable =
            static_cast<int>(std::min<long long>(roi.width + 2LL, (roi.height - 1LL - y) * src.step + roi.width));
        for (int x = 0; x < roi.width; ++x, ++pixel) {
            if ((frameChange[x] | backgroundChange[x]) == 0)
                continue;
            Nox8u color[3];
            if (channels == 1)
                grayAsColor(s, x, readable, color);
            else
                std::memcpy(color, s + std::ptrdiff_t(x) * channels, 3);
            d[x] = decide<channels>(*pixel, frameChange[x] != 0, color, colors, changes);
        }
    }
}

template <int channels>
void learnPixel(NoxiForegroundPixel &pixel, const Nox8u *current, const Nox8u *previous, bool changed, bool background,
                const Rules &colors, const Rules &changes) {
    constexpr bool nearest = channels == 3;
    if (changed || pixel.changeTrusted == 0) {
        Nox8u key[2 * channels];
        std::memcpy(key, previous, channels);
        std::memcpy(key + channels, current, channels);
        Learner<NoxiForegroundChange, 2 * channels, nearest>(pixel.changeTable, changes)
            .learn(key, background, pixel.changePrior, pixel.changeTrusted);
    }
    if (!changed && Learner<NoxiForegroundColor, channels, nearest>(pixel.colorTable, colors)
                        .learn(current, background, pixel.colorPrior, pixel.colorTrusted))
        pixel.colorPrior = 1 - pixel.colorPrior;
}

template <int channels>
void updateRows(Rows<const Nox8u> src, Rows<const Nox8u> foreground, NoxiSize roi,
                NoxiForegroundHistogramState &state) {
    const Images images(state);
    const Rules colors = colorRules(state), changes = changeRules(state);
    const Nox32f take = state.backgroundRate, keep = 1 - take;
    NoxiForegroundPixel *pixel = state.pixels;
    for (int y = 0; y < roi.height; ++y) {
        const Nox8u *current = src[y], *previous = images.previous[y], *mask = foreground[y];
        const Nox8u *frameChange = images.frameChange[y], *backgroundChange = images.backgroundChange[y];
        Nox8u *background = images.background[y];
        for (int x = 0; x < roi.width; ++x, ++pixel) {
            const bool changed = frameChange[x] != 0, atOnce = changed || backgroundChange[x] != 0;
            learnPixel<channels>(*pixel, current, previous, changed, mask[x] == 0, colors, changes);
            if (mask[x] == 0)
                for (int c = 0; c < channels; ++c) {
                    const Nox32f kept = static_cast<Nox32f>(background[c]) * keep;
                    background[c] =
                        atOnce ? current[c] : truncateSaturated<Nox8u>(kept + take * static_cast<Nox32f>(current[c]));
                }
            current += channels;
            previous += channels;
            background += channels;
        }
    }
}

void release(NoxiForegroundHistogramState *state) {
    if (state->pixels != nullptr) {
        noxsFree(state->pixels[0].colorTable);
        noxsFree(state->pixels[0].changeTable);
    }
    noxsFree(state->pixels);
    noxsFree(state->previous);
    noxsFree(state->backgroundChange);
    noxsFree(state->frameChange);
    noxsFree(state->background);
    noxsFree(state);
}

void setParameters(NoxiForegroundHistogramState &state) {
    state.colorLevels = 128;
    state.colorUsed = 15;
    state.colorSize = 25;
    state.changeLevels = 64;
    state.changeUsed = 25;
    state.changeSize = 40;
    state.flags[0] = state.flags[1] = 1;
    state.backgroundRate = 0.1F;
    state.slowRate = 0.005F;
    state.fastRate = 0.1F;
    state.tolerance = 2;
    state.trustThreshold = 0.9F;
}

/// All memory of a model, tables empty; null when any of it cannot be had.
NoxiForegroundHistogramState *allocate(NoxiSize roi, int channels) {
    auto *state = area(roi) > INT_MAX ? nullptr : allocateZeroed<NoxiForegroundHistogramState>(1);
    if (state == nullptr)
        return nullptr;
    setParameters(*state);
    state->background = allocateBytes(area(roi) * channels);
    state->frameChange = allocateZeroed<Nox8u>(area(roi));
    state->backgroundChange = allocateZeroed<Nox8u>(area(roi));
    state->previous = allocateBytes(area(roi) * channels);
    state->pixels = allocateZeroed<NoxiForegroundPixel>(area(roi));
    bool complete = state->background != nullptr && state->frameChange != nullptr &&
                    state->backgroundChange != nullptr && state->previous != nullptr && state->pixels != nullptr;
    if (complete) {
        auto *colors = allocateZeroed<NoxiForegroundColor>(area(roi) * state->colorSize);
        auto *changes = allocateZeroed<NoxiForegroundChange>(area(roi) * state->changeSize);
        complete = colors != nullptr && changes != nullptr;
        state->pixels[0].colorTable = colors;
        state->pixels[0].changeTable = changes;
        for (long long i = 1; complete && i < area(roi); ++i) {
            state->pixels[i].colorTable = colors + i * state->colorSize;
            state->pixels[i].changeTable = changes + i * state->changeSize;
        }
    }
    if (complete)
        return state;
    release(state);
    return nullptr;
}

template <int channels>
NoxStatus copyFrame(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi) {
    const auto copy = channels == 1 ? noxiCopy_8u_C1R : noxiCopy_8u_C3R;
    return copy(src, srcStep, dst, dstStep, roi);
}

template <int channels>
NoxStatus initAlloc(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,
                    NoxiForegroundHistogramState **state) {
    const NoxStatus status = firstFailure(checkPointers(src, model, state), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, static_cast<long long>(roi.width) * channels));
    if (status != noxStsNoError)
        return status;
    NoxiForegroundHistogramState *made = allocate(roi, channels);
    if (made == nullptr)
        return noxStsNoMemory;
    made->backgroundStep = made->previousStep = roi.width * channels;
    made->frameChangeStep = made->backgroundChangeStep = roi.width;
    copyFrame<channels>(src, srcStep, made->background, made->backgroundStep, roi);
    copyFrame<channels>(src, srcStep, made->previous, made->previousStep, roi);
    *state = made;
    return noxStsNoError;
}

template <int channels>
NoxStatus detect(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                 NoxiForegroundHistogramState *state) {
    const NoxStatus status = firstFailure(checkPointers(src, dst, state), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, static_cast<long long>(roi.width) * channels));
    if (status == noxStsNoError)
        detectRows<channels>({src, srcStep}, {dst, dstStep}, roi, *state);
    return status;
}

template <int channels>
NoxStatus update(const Nox8u *src, int srcStep, const Nox8u *foreground, int foregroundStep, const Nox8u *reserved,
                 NoxiSize roi, NoxiForegroundHistogramState *state) {
    const NoxStatus status = firstFailure(checkPointers(src, foreground, reserved, state), checkSize(roi),
                                          checkStep<Nox8u>(srcStep, static_cast<long long>(roi.width) * channels));
    if (status != noxStsNoError)
        return status;
    updateRows<channels>({src, srcStep}, {foreground, foregroundStep}, roi, *state);
    return copyFrame<channels>(src, srcStep, state->previous, state->previousStep, roi);
}

NoxStatus freeModel(NoxiForegroundHistogramState *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    release(state);
    return noxStsNoError;
}

} // namespace

// One group of lines per member.
#define NOX_FOREGROUND_HISTOGRAM(INIT, DETECT, UPDATE, FREE, CHANNELS)                                                 \
    NoxStatus INIT(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,                                     \
                   NoxiForegroundHistogramState **state) {                                                             \
        return initAlloc<CHANNELS>(src, srcStep, roi, model, state);                                                   \
    }                                                                                                                  \
    NoxStatus DETECT(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,                             \
                     NoxiForegroundHistogramState *state) {                                                            \
        return detect<CHANNELS>(src, srcStep, dst, dstStep, roi, state);                                               \
    }                                                                                                                  \
    NoxStatus UPDATE(const Nox8u *src, int srcStep, const Nox8u *foreground, int foregroundStep,                       \
                     const Nox8u *reserved, int, NoxiSize roi, NoxiForegroundHistogramState *state) {                  \
        return update<CHANNELS>(src, srcStep, foreground, foregroundStep, reserved, roi, state);                       \
    }                                                                                                                  \
    NoxStatus FREE(NoxiForegroundHistogramState *state) { return freeModel(state); }

NOX_FOREGROUND_HISTOGRAM(noxiForegroundHistogramInitAlloc_8u_C1R, noxiForegroundHistogram_8u_C1R,
                         noxiForegroundHistogramUpdate_8u_C1R, noxiForegroundHistogramFree_8u_C1R, 1)
NOX_FOREGROUND_HISTOGRAM(noxiForegroundHistogramInitAlloc_8u_C3R, noxiForegroundHistogram_8u_C3R,
                         noxiForegroundHistogramUpdate_8u_C3R, noxiForegroundHistogramFree_8u_C3R, 3)
