// The state of the point tracker.
#pragma once

#include "noxcv/opticalflow.h"
#include "noxtypes.h"

/// Two allocations: this record and the buffer.
struct NoxiOptFlowPyrLKState {
    int maxWidth; ///< levels smaller than this in both directions get derivatives of the whole level
    int maxHeight;
    int numThreads; ///< as many slices of points the buffer holds patches for
    int dataType;   ///< 1 for 8u, 5 for 16u, 13 for 32f
    int hint;       ///< as given, not looked at
    int winSize;
    Nox8u *buffer;
};

extern "C" {
NoxStatus ownOpticalFlowPyrLKInitAlloc(NoxiOptFlowPyrLKState **state, NoxiSize roi, int winSize, int hint,
                                       int dataType);
}
