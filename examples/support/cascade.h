// Cascades of boosted stages from XML files, as Debian's opencv-data installs them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <noxcv.h>

/// The arrays of one stage as the library takes them, and the stage made from them.
struct CascadeStage {
    std::vector<NoxiRect> rectangles; ///< classifier after classifier
    std::vector<Nox32f> weights;      ///< one a rectangle
    std::vector<Nox32s> counts;       ///< rectangles of each classifier
    std::vector<Nox8u> turned;        ///< for each classifier whether its rectangles are turned by 45 degrees
    std::vector<Nox32f> thresholds, lowValues, highValues;
    Nox32f threshold = 0; ///< a position passes from this sum on

    struct Release {
        void operator()(NoxiHaarClassifier_32f *state) const { noxiHaarClassifierFree_32f(state); }
    };
    std::unique_ptr<NoxiHaarClassifier_32f, Release> state;
};

struct Cascade {
    NoxiSize window{};        ///< size of what it finds
    NoxiRect normRectangle{}; ///< the deviation under it is the norm of a position
    bool turned = false;      ///< some rectangles are turned
    std::size_t classifiers = 0;
    std::vector<CascadeStage> stages;
};

/// Reads a cascade of stumps and makes its stages; false with one line on stderr when that fails.
bool readCascade(const std::string &path, Cascade &cascade);
