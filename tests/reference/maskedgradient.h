// Masked gradients, straight from their definitions: one component of one pixel at a time.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "noxtypes.h"

namespace reference::maskedgradient {

/// Which difference a component is made of.
struct GradientForm {
    bool absolute;

    int oneSided(int first, int second) const { return absolute ? 2 * std::abs(second - first) : second - first; }
    int central(int before, int here, int after) const {
        return absolute ? std::abs(after - here) + std::abs(here - before) : 2 * (after - before);
    }
};

/// Component at position i of a line of n samples.
inline int gradientComponent(GradientForm form, const std::function<int(int)> &s, int i, int n) {
    if (n == 1)
        return 0;
    if (i == 0)
        return form.oneSided(s(0), s(1));
    if (i == n - 1)
        return form.oneSided(s(i - 1), s(i));
    return form.central(s(i - 1), s(i), s(i + 1));
}

/// Component after the repair; `edges` tells that the first and last position know only one neighbour (columns),
/// otherwise the position itself stands in for the missing one (rows).
inline int repairedComponent(GradientForm form, const std::function<int(int)> &s,
                             const std::function<bool(int)> &blocked, int i, int n, bool edges, int stored) {
    if (edges && i == 0)
        return n == 1 || blocked(1) ? 0 : form.oneSided(s(0), s(1));
    if (edges && i == n - 1)
        return blocked(i - 1) ? 0 : form.oneSided(s(i - 1), s(i));
    const int before = std::max(i - 1, 0), after = std::min(i + 1, n - 1);
    switch ((blocked(before) ? 1 : 0) + (blocked(after) ? 2 : 0)) {
    case 3:
        return 0;
    case 2:
        return form.oneSided(s(before), s(i));
    case 1:
        return form.oneSided(s(i), s(after));
    default:
        return stored;
    }
}

} // namespace reference::maskedgradient
