// Argument checks. An entry lists its checks in the documented order inside firstFailure(), which returns the first
// status that is not noxStsNoError. Checks are cheap and touch no memory, so all of them are simply evaluated.
#pragma once

#include "noxtypes.h"

namespace nox {

/// The first failure in the order written.
template <class... Status>
constexpr NoxStatus firstFailure(Status... statuses) {
    NoxStatus result = noxStsNoError;
    (void)((statuses != noxStsNoError && (result = statuses, true)) || ...);
    return result;
}

/// status unless the condition holds.
constexpr NoxStatus require(bool condition, NoxStatus status) { return condition ? noxStsNoError : status; }

/// None of the pointers is null.
template <class... Pointer>
constexpr NoxStatus checkPointers(Pointer... pointers) {
    return require(((pointers != nullptr) && ...), noxStsNullPointer);
}

/// Width and height are at least 1.
constexpr NoxStatus checkSize(NoxiSize size) { return require(size.width >= 1 && size.height >= 1, noxStsBadSize); }

/// A length is at least 1.
constexpr NoxStatus checkLength(int length) { return require(length >= 1, noxStsBadSize); }

/// A step holds a row of `elements` elements of T (width times channels; the product is taken in 64 bits).
template <class T>
constexpr NoxStatus checkStep(int step, long long elements) {
    return require(step >= elements * static_cast<long long>(sizeof(T)), noxStsBadStep);
}

/// All steps are multiples of the element size of T.
template <class T, class... Step>
constexpr NoxStatus checkEvenSteps(Step... steps) {
    return require(((steps % static_cast<int>(sizeof(T)) == 0) && ...), noxStsOddStep);
}

/// All steps are at least 1: the weaker rule of the border copies and thresholds.
template <class... Step>
constexpr NoxStatus checkPositiveSteps(Step... steps) {
    return require(((steps >= 1) && ...), noxStsBadStep);
}

/// A channel of interest is 1, 2 or 3.
constexpr NoxStatus checkChannelOfInterest(int coi) {
    return require(coi >= 1 && coi <= 3, noxStsBadChannelOfInterest);
}

} // namespace nox
