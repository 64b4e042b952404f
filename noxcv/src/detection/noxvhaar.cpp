// Stages of weak classifiers: their creation, size and turning.
#include "noxvhaar.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "checks.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"

using namespace nox;

namespace {

/// Element i of a caller's array, at any address.
template <class T>
T elementAt(const T *array, std::ptrdiff_t i) {
    T value;
    std::memcpy(&value, reinterpret_cast<const unsigned char *>(array) + i * static_cast<std::ptrdiff_t>(sizeof(T)),
                sizeof(T));
    return value;
}

// Coordinates come from the caller and may be anything: they wrap.
Nox32s plus(Nox32s a, Nox32s b) { return static_cast<Nox32s>(static_cast<Nox32u>(a) + static_cast<Nox32u>(b)); }
Nox32s minus(Nox32s a, Nox32s b) { return static_cast<Nox32s>(static_cast<Nox32u>(a) - static_cast<Nox32u>(b)); }

template <class T>
void setUpright(HaarFeature<T> &f, const NoxiRect &r) {
    const Nox32s right = plus(r.x, r.width), bottom = plus(r.y, r.height);
    f.brX = right, f.brY = bottom;
    f.blX = r.x, f.blY = bottom;
    f.trX = right, f.trY = r.y;
    f.tlX = r.x, f.tlY = r.y;
}

/// Turned about the top left corner.
template <class T>
void setTurned(HaarFeature<T> &f, const NoxiRect &r) {
    f.tlX = r.x, f.tlY = r.y;
    f.trX = plus(r.x, r.width), f.trY = plus(r.y, r.width);
    f.blX = minus(r.x, r.height), f.blY = plus(r.y, r.height);
    f.brX = minus(f.trX, r.height), f.brY = plus(f.trY, r.height);
}

/// Turned about the bottom left corner, the other way.
template <class T>
void setTurnedBack(HaarFeature<T> &f, const NoxiRect &r) {
    f.brX = r.x, f.brY = plus(r.y, r.height);
    f.trX = plus(r.x, r.width), f.trY = minus(f.brY, r.width);
    f.blX = minus(r.x, r.height), f.blY = r.y;
    f.tlX = minus(f.trX, r.height), f.tlY = minus(r.y, r.width);
}

template <class T>
NoxiRect uprightRect(const HaarFeature<T> &f) {
    return {f.tlX, f.tlY, minus(f.brX, f.tlX), minus(f.brY, f.tlY)};
}

/// What the caller gives for a stage.
template <class T>
struct Input {
    const NoxiRect *features;
    const T *weights, *thresholds, *lowValues, *highValues;
    const Nox32s *counts;
    int length;
};

/// The areas of a state's block.
template <class State>
struct Areas {
    using T = typename State::Number;

    State *stage;
    HaarClassifier<T> *classifiers;
    HaarFeature<T> *features;
    Areas(WorkBuffer &buffer, int length, long long featureCount)
        : stage(buffer.take<State>(1)), classifiers(buffer.aligned(8).take<HaarClassifier<T>>(length)),
          features(buffer.aligned(8).take<HaarFeature<T>>(featureCount)) {}
};

/// Fills a state's records from the input.
template <class State, bool tilted>
class Filler {
public:
    using T = typename State::Number;

    Filler(const Areas<State> &areas, const Input<T> &input)
        : input_(input), stage_(*areas.stage), record_(areas.classifiers), feature_(areas.features) {
        if (input.length > 0) {
            const NoxiRect first = elementAt(input.features, 0);
            stage_.boundsX = first.x;
            stage_.boundsY = first.y;
            stage_.boundsWidth = tilted ? minus(first.width, first.height) : first.width;
            stage_.boundsHeight = tilted ? plus(first.width, first.height) : first.height;
        }
    }
    /// The classifiers whose count is taken, in the order of the input; the count of records up to now.
    template <class Takes>
    int fill(const Takes &takes) {
        std::ptrdiff_t first = 0;
        for (int i = 0; i < input_.length; ++i) {
            const Nox32s count = elementAt(input_.counts, i);
            if (takes(count))
                addClassifier(i, first, count);
            first += count;
        }
        return records_;
    }
    /// False when a rectangle was none.
    bool finish() {
        stage_.boundsWidth = minus(stage_.boundsWidth, stage_.boundsX);
        stage_.boundsHeight = minus(stage_.boundsHeight, stage_.boundsY);
        return good_;
    }

private:
    void addClassifier(int index, std::ptrdiff_t first, Nox32s count) {
        *record_++ = {count,
                      feature_,
                      elementAt(input_.thresholds, index),
                      elementAt(input_.lowValues, index),
                      elementAt(input_.highValues, index),
                      (static_cast<Nox32u>(index) << haarIndexShift) | (tilted ? haarTilted : 0U)};
        ++records_;
        for (Nox32s i = 0; i < count; ++i)
            addFeature(elementAt(input_.features, first + i), elementAt(input_.weights, first + i));
    }
    void addFeature(const NoxiRect &r, T weight) {
        good_ = good_ && r.x >= 0 && r.y >= 0 && r.width >= 1 && r.height >= 1;
        if constexpr (tilted) {
            good_ = good_ && r.x + 1LL >= r.height;
            setTurned(*feature_, r);
        } else {
            setUpright(*feature_, r);
        }
        feature_->weight = weight;
        takeIntoBounds(r, *feature_++);
    }
    /// The width and height hold the right and bottom edges until the end.
    void takeIntoBounds(const NoxiRect &r, const HaarFeature<T> &f) {
        stage_.boundsX = std::min(stage_.boundsX, r.x);
        stage_.boundsY = std::min(stage_.boundsY, r.y);
        if (f.brX > plus(stage_.boundsWidth, stage_.boundsX))
            stage_.boundsWidth = f.brX;
        if (f.brY > plus(stage_.boundsHeight, stage_.boundsY))
            stage_.boundsHeight = f.brY;
    }

    const Input<T> input_;
    State &stage_;
    HaarClassifier<T> *record_;
    HaarFeature<T> *feature_;
    int records_ = 0;
    bool good_ = true;
};

template <class T>
bool firstWeightsAreMinusOne(const HaarClassifier<T> *classifiers, int length) {
    return std::all_of(classifiers, classifiers + length,
                       [](const HaarClassifier<T> &c) { return c.features[0].weight == T(-1); });
}

/// Fills the stage in the block; false when a rectangle was none.
template <class State, bool tilted>
bool fillStage(const Areas<State> &areas, const Input<typename State::Number> &input, Nox32s featureCount) {
    State &stage = *areas.stage;
    stage = {};
    stage.classifierCount = input.length;
    stage.featureCount = stage.evalFeatureCount = featureCount;
    stage.classifiers = areas.classifiers;
    Filler<State, tilted> filler(areas, input);
    if constexpr (tilted) {
        stage.flags = haarTilted;
        filler.fill([](Nox32s) { return true; });
    } else {
        stage.pairCount = filler.fill([](Nox32s count) { return count == 2; });
        stage.pairTripleCount = filler.fill([](Nox32s count) { return count == 3; });
        filler.fill([](Nox32s count) { return count != 2 && count != 3; });
        if constexpr (std::is_same_v<State, NoxiHaarClassifier_32f>)
            stage.firstWeightsMinusOne = firstWeightsAreMinusOne(areas.classifiers, input.length) ? 1 : 0;
    }
    return filler.finish();
}

/// The sum of the counts; -1 when one is below 1.
long long sumOfCounts(const Nox32s *counts, int length) {
    long long sum = 0;
    for (int i = 0; i < length; ++i) {
        const Nox32s count = elementAt(counts, i);
        if (count < 1)
            return -1;
        sum += count;
    }
    return sum;
}

template <class State, bool tilted>
NoxStatus createStage(State **state, const Input<typename State::Number> &in) {
    const NoxStatus status = firstFailure(
        checkPointers(state, in.features, in.weights, in.thresholds, in.lowValues, in.highValues, in.counts),
        require(in.length >= 0, noxStsBadSize));
    if (status != noxStsNoError)
        return status;
    const long long featureCount = sumOfCounts(in.counts, in.length);
    if (featureCount < 0)
        return noxStsBadSize;
    WorkBuffer measure;
    Areas<State>(measure, in.length, featureCount);
    if (checkBufferBytes(measure.bytes()) != noxStsNoError)
        return noxStsNoMemory;
    Nox8u *block = noxsMalloc_8u(static_cast<int>(measure.bytes()));
    if (block == nullptr)
        return noxStsNoMemory;
    WorkBuffer memory(block, 1);
    const Areas<State> areas(memory, in.length, featureCount);
    const bool good = fillStage<State, tilted>(areas, in, static_cast<Nox32s>(featureCount));
    if (!good)
        noxsFree(block);
    *state = good ? areas.stage : nullptr;
    return good ? noxStsNoError : noxStsBadArgument;
}

template <class State>
NoxStatus freeStage(State *state) {
    if (state == nullptr)
        return noxStsNullPointer;
    noxsFree(state);
    return noxStsNoError;
}

template <class State>
NoxStatus stageSize(const State *state, NoxiSize *size) {
    const NoxStatus status = checkPointers(state, size);
    if (status != noxStsNoError)
        return status;
    NoxiSize largest = {0, 0};
    for (int i = 0; i < state->classifierCount; ++i) {
        const auto &c = state->classifiers[i];
        for (int k = 0; k < c.featuresInClassifier; ++k) {
            largest.width = std::max(largest.width, c.features[k].trX);
            largest.height = std::max(largest.height, c.features[k].brY);
        }
    }
    *size = largest;
    return noxStsNoError;
}

template <class T>
void turnClassifier(HaarClassifier<T> &classifier, bool aboutTop) {
    classifier.id = haarTilted; // its index is forgotten
    for (int k = 0; k < classifier.featuresInClassifier; ++k) {
        HaarFeature<T> &f = classifier.features[k];
        const NoxiRect r = uprightRect(f);
        aboutTop ? setTurned(f, r) : setTurnedBack(f, r);
    }
}

/// Finds the records of an upright stage by rising input index: each of its three groups keeps the input's order.
template <class State>
class RecordsByIndex {
public:
    using Record = HaarClassifier<typename State::Number>;

    explicit RecordsByIndex(const State &stage)
        : at_{stage.classifiers, stage.classifiers + stage.pairCount, stage.classifiers + stage.pairTripleCount},
          end_{at_[1], at_[2], stage.classifiers + stage.classifierCount} {}
    /// The record of the next index, which is `index`; null when there is none.
    Record *next(int index) {
        for (int group = 0; group < 3; ++group)
            if (at_[group] < end_[group] && at_[group]->id >> haarIndexShift == static_cast<Nox32u>(index))
                return at_[group]++;
        return nullptr;
    }

private:
    Record *at_[3], *end_[3];
};

template <class State>
NoxStatus turnFeatures(const Nox8u *tiltMask, int tiltFlag, State *state) {
    if (tiltMask == nullptr || state == nullptr)
        return noxStsNullPointer;
    if ((state->flags & haarTilted) != 0)
        return noxStsBadArgument;
    RecordsByIndex<State> records(*state);
    for (int i = 0; i < state->classifierCount; ++i) {
        auto *record = records.next(i);
        if (tiltMask[i] == 0 || record == nullptr)
            continue;
        turnClassifier(*record, tiltFlag != 0);
        state->flags |= haarTilted;
    }
    return noxStsNoError;
}

} // namespace

// One line per member.
#define NOX_HAARCREATE(FUNCTION, STATE, TYPE, TILTED)                                                                  \
    NoxStatus FUNCTION(STATE **state, const NoxiRect *features, const TYPE *weights, const TYPE *thresholds,           \
                       const TYPE *lowValues, const TYPE *highValues, const Nox32s *counts, int length) {              \
        return createStage<STATE, TILTED>(state,                                                                       \
                                          {features, weights, thresholds, lowValues, highValues, counts, length});     \
    }

NOX_HAARCREATE(noxiHaarClassifierInitAlloc_32f, NoxiHaarClassifier_32f, Nox32f, false)
NOX_HAARCREATE(noxiHaarClassifierInitAlloc_32s, NoxiHaarClassifier_32s, Nox32s, false)
NOX_HAARCREATE(noxiTiltedHaarClassifierInitAlloc_32f, NoxiHaarClassifier_32f, Nox32f, true)
NOX_HAARCREATE(noxiTiltedHaarClassifierInitAlloc_32s, NoxiHaarClassifier_32s, Nox32s, true)

NoxStatus noxiHaarClassifierFree_32f(NoxiHaarClassifier_32f *state) { return freeStage(state); }
NoxStatus noxiHaarClassifierFree_32s(NoxiHaarClassifier_32s *state) { return freeStage(state); }

NoxStatus noxiGetHaarClassifierSize_32f(const NoxiHaarClassifier_32f *state, NoxiSize *size) {
    return stageSize(state, size);
}
NoxStatus noxiGetHaarClassifierSize_32s(const NoxiHaarClassifier_32s *state, NoxiSize *size) {
    return stageSize(state, size);
}

NoxStatus noxiTiltHaarFeatures_32f(const Nox8u *tiltMask, int tiltFlag, NoxiHaarClassifier_32f *state) {
    return turnFeatures(tiltMask, tiltFlag, state);
}
NoxStatus noxiTiltHaarFeatures_32s(const Nox8u *tiltMask, int tiltFlag, NoxiHaarClassifier_32s *state) {
    return turnFeatures(tiltMask, tiltFlag, state);
}
