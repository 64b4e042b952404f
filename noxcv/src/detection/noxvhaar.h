// The records of a stage of weak classifiers. A state is one block: the stage, its classifiers, their features.
#pragma once

#include "noxcv/detection.h"
#include "noxtypes.h"

namespace nox {

/// One rectangle and its weight. The sum under it is br - bl - tr + tl; for a rectangle turned by 45 degrees the four
/// names hold its bottom, left, right and top corners.
template <class T>
struct HaarFeature {
    Nox32s brX, brY, blX, blY, trX, trY, tlX, tlY;
    T weight;
};

template <class T>
struct HaarClassifier {
    Nox32s featuresInClassifier;
    HaarFeature<T> *features;
    T threshold; ///< compared with the feature sum after multiplication by the norm
    T lowValue;  ///< added to the stage sum when the feature sum is below
    T highValue; ///< added to the stage sum otherwise
    Nox32u id;   ///< bit 0: turned; bits 8 and up: the index in the caller's arrays
};

/// Bit 0 of a stage's flags and of a classifier's id.
constexpr Nox32u haarTilted = 1;
constexpr int haarIndexShift = 8;

} // namespace nox

/// A stage of single-precision numbers.
struct NoxiHaarClassifier_32f {
    using Number = Nox32f;

    Nox32s classifierCount, featureCount;
    nox::HaarClassifier<Nox32f> *classifiers;
    Nox32s boundsX, boundsY, boundsWidth, boundsHeight;
    Nox32u flags;
    Nox32s pairCount;       ///< classifiers of two features, which come first
    Nox32s pairTripleCount; ///< those of two or three features
    Nox32s evalFeatureCount;
    Nox32s firstWeightsMinusOne; ///< the first weight of every classifier is -1; of a stage created upright only
};

/// A stage of 32-bit integers.
struct NoxiHaarClassifier_32s {
    using Number = Nox32s;

    Nox32s classifierCount, featureCount;
    nox::HaarClassifier<Nox32s> *classifiers;
    Nox32s boundsX, boundsY, boundsWidth, boundsHeight;
    Nox32u flags;
    Nox32s evalFeatureCount;
    Nox32s pairCount, pairTripleCount;
    Nox32s unused;
};
