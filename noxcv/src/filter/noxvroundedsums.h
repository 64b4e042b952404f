// Sums of taps in double precision, rounded to single, and a quick look at floats.
//
// Taps that are the same from both ends of the kernel, or opposite, fold: what two such taps stand on is added, or
// subtracted, first, and half of the products are left. Where sums are exact the pairs' are, too: a pair's two products
// take more room than its sum. The one difference is the sign of a zero, since (a - a) times a negative tap is -0,
// while the products themselves add up to +0. Where sums are not exact, a folded one has no more roundings: one of each
// pair and one of its product, which are of the pair's own size, and fewer additions.
#pragma once

#include "noxtypes.h"
#include "noxvseparable.h"

namespace nox {

enum class Fold { none, sums, differences };
constexpr int mostFoldedTaps = 32;

/// How taps fold. A pair of zeros does not: it says nothing of how large the sum of what it stands on may be.
Fold foldOf(const Nox32f *taps, int tapCount);

/// Sums that are exact; true when a folded one is -0, which then has to be formed unfolded.
bool roundExactTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count);
bool roundExactTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count);
/// Others; true when roundsDoubtfully() holds for one of them.
bool roundTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count,
               Nox32f certain);
bool roundTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count,
               Nox32f certain);

/// Whether all floats are multiples of `quantum`, a power of two, and none is above `largest`, which is at most 2^22
/// quantum. There are as many as a vector holds, or more.
bool areMultiples(const Nox32f *elements, int count, Nox32f quantum, Nox32f largest);
/// Whether no float is above `largest`, or without a value.
bool areWithin(const Nox32f *elements, int count, Nox32f largest);

} // namespace nox
