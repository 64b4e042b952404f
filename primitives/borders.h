// Which pixel stands for a position outside a row or column.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// value modulo length, never negative.
NOX_INLINE int floorModulo(int value, int length) {
    const int remainder = value % length;
    return remainder < 0 ? remainder + length : remainder;
}

/// The index of the pixel that stands for `position` in a line of `length` pixels, for every border kind but the
/// constant one. Reflections walk back and forth however far the position lies outside; in a line of one pixel all
/// positions are pixel 0.
NOX_INLINE int borderIndex(int position, int length, int kind) {
    if (position >= 0 && position < length)
        return position;
    switch (kind) {
    case noxBorderWrap:
        return floorModulo(position, length);
    case noxBorderMirror: {
        if (length == 1)
            return 0;
        const int folded = floorModulo(position, 2 * (length - 1));
        return folded < length ? folded : 2 * (length - 1) - folded;
    }
    case noxBorderMirrorEdge: {
        const int folded = floorModulo(position, 2 * length);
        return folded < length ? folded : 2 * length - 1 - folded;
    }
    default:
        return position < 0 ? 0 : length - 1;
    }
}

} // namespace nox
