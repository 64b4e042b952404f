// Sums of taps in double precision, rounded to single.
#include "noxvroundedsums.h"

#include <cmath>
#include <type_traits>

#include "noxvextendedsum.h"
#include "tiers.h"

#define NOX_KERNELS "filter/noxvroundedsums.inc"
#include "noxveachtier.h"

namespace nox {
namespace {

/// Sums along a row: where they have room, its elements are converted once and not once for each tap, of which there
/// are more than three.
template <class Round>
auto overConverted(RowWindow<Nox32f> window, int tapCount, int count, const Round &round) {
    constexpr int room = blockLength + 192;
    alignas(32) Nox64f line[room];
    const std::ptrdiff_t under = count + window.stride * (tapCount - 1);
    if (under > room || tapCount < 4)
        return round(window);
    NOX_ON_TIER(convertFloats(window.first, line, static_cast<int>(under)));
    return round(RowWindow<Nox64f>{line, window.stride});
}

} // namespace

Fold foldOf(const Nox32f *taps, int tapCount) {
    bool sums = tapCount >= 2 && tapCount <= mostFoldedTaps, differences = sums;
    for (int j = 0; j < tapCount / 2; ++j) {
        const Nox32f first = elements(taps)[j], second = elements(taps)[tapCount - 1 - j];
        const bool good = first != 0 && std::isfinite(first);
        sums = sums && good && first == second;
        differences = differences && good && first == -second;
    }
    // A difference has no middle.
    differences = differences && (tapCount % 2 == 0 || elements(taps)[tapCount / 2] == 0);
    return sums ? Fold::sums : differences ? Fold::differences : Fold::none;
}

bool roundExactTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count) {
    return overConverted(window, tapCount, count, [&](const auto &lines) {
        return NOX_ON_TIER(roundExactSums(lines, taps, tapCount, fold, dst, count));
    });
}
bool roundExactTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count) {
    return NOX_ON_TIER(roundExactSums(window, taps, tapCount, fold, dst, count));
}
bool roundTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count,
               Nox32f certain) {
    return overConverted(window, tapCount, count, [&](const auto &lines) {
        return NOX_ON_TIER(roundSums(lines, taps, tapCount, fold, dst, count, certain));
    });
}
bool roundTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Fold fold, Nox32f *dst, int count,
               Nox32f certain) {
    return NOX_ON_TIER(roundSums(window, taps, tapCount, fold, dst, count, certain));
}

bool areMultiples(const Nox32f *elements, int count, Nox32f quantum, Nox32f largest) {
    return NOX_ON_TIER(areMultiples(elements, count, quantum, largest));
}
bool areWithin(const Nox32f *elements, int count, Nox32f largest) {
    return NOX_ON_TIER(areWithin(elements, count, largest));
}

} // namespace nox
