// The rule of the float pipelines: sums in extended precision, rounded once to single.
#pragma once

#include <algorithm>
#include <limits>

#include "noxvextendedsum.h"
#include "noxvroundedsums.h"
#include "noxvseparable.h"
#include "noxvseparablesums.h"

namespace nox {

/// How the sums of a block are formed.
enum class FloatPath {
    single,      ///< exact in single precision
    exactDouble, ///< exact in double
    tested,      ///< in double; doubtful ones by the definition
};

class FloatRule {
public:
    using Output = Nox32f;

    FloatRule(const Nox32f *taps, int tapCount)
        : taps_(taps), tapCount_(tapCount), spread_(TapSpread::of(taps, tapCount)), fold_(foldOf(taps, tapCount)) {}

    int tapCount() const { return tapCount_; }

    template <class Window>
    Nox32f one(Window window) const {
        return static_cast<Nox32f>(extendedSumOf(window, taps_, tapCount_));
    }

    /// (A single product needs no more than single precision whatever the elements are: it is exact in double, so the
    /// format's own multiplication rounds it once.)
    FloatPath path(const Spread &elements) const {
        if (tapCount_ == 1 || exactInFloat(elements, spread_.weight, spread_.quantum))
            return FloatPath::single;
        return exactInDouble(elements, spread_.weight, spread_.quantum) ? FloatPath::exactDouble : FloatPath::tested;
    }

    /// elements: the spread of all elements under the taps.
    template <class Window>
    void block(Window window, Nox32f *dst, int count, const Spread &elements) const {
        const FloatPath path = this->path(elements);
        if (path == FloatPath::single)
            return sumTaps(window, taps_, tapCount_, dst, count);
        const Fold fold = elements.largest <= std::numeric_limits<Nox32f>::max() ? fold_ : Fold::none;
        if (path == FloatPath::exactDouble) {
            if (roundExactTaps(window, taps_, tapCount_, fold, dst, count))
                roundExactTaps(window, taps_, tapCount_, Fold::none, dst, count);
            return;
        }
        const Nox32f certain = certainFrom(tapCount_, elements.largest * spread_.weight);
        if (roundTaps(window, taps_, tapCount_, fold, dst, count, certain))
            mendDoubtful(window, dst, count, certain);
    }

private:
    /// Forms a block's sums by their order, and the doubtful ones by the definition.
    template <class Window>
    void mendDoubtful(Window window, Nox32f *dst, int count, Nox32f certain) const {
        Nox64f sums[blockLength];
        sumTaps(window, taps_, tapCount_, sums, count);
        for (int x = 0; x < count; ++x) {
            const auto rounded = static_cast<Nox32f>(sums[x]);
            elements(dst)[x] = roundsDoubtfully(sums[x], rounded, certain) ? one(window.from(x)) : rounded;
        }
    }

    const Nox32f *taps_;
    int tapCount_;
    TapSpread spread_;
    Fold fold_;
};

/// Looks at elements one line after the other. What was found of one line is tried on the next: that needs but a part
/// of the work of finding it.
class FloatLook {
public:
    explicit FloatLook(const FloatRule &rule) : rule_(rule) {}

    Spread at(const Nox32f *elements, int count) {
        const bool fresh = ++lines_ % mostTries == 0;
        if (!fresh && count >= fewestTried && isKnown(elements, count))
            return known_;
        const Spread found = spreadOf(elements, count);
        remember(found, fresh);
        return found;
    }

private:
    /// What is known may be too much for a faster path that the next lines would have, so it does not last.
    static constexpr unsigned mostTries = 16;
    /// A lone line that needs the test of its sums says nothing of the next: its one tiny element may be an exception.
    static constexpr int testedAlike = 3;
    static constexpr int fewestTried = 32;
    enum class Trial { none, multiples, magnitudes };

    bool isKnown(const Nox32f *elements, int count) const {
        const auto largest = static_cast<Nox32f>(known_.largest);
        return trial_ == Trial::multiples ? areMultiples(elements, count, static_cast<Nox32f>(known_.quantum), largest)
               : trial_ == Trial::magnitudes ? areWithin(elements, count, largest)
                                             : false;
    }
    /// Together with what is known already, unless that would cost the faster path.
    void remember(const Spread &found, bool fresh) {
        if (!(found.largest > 0 && found.largest <= 0x1p100)) {
            trial_ = Trial::none;
            return;
        }
        const Spread some = {powerAbove(found.largest), found.quantum};
        const Spread both = fresh || trial_ == Trial::none ? some : join(known_, some);
        const FloatPath path = rule_.path(found);
        tested_ = path == FloatPath::tested ? std::min(tested_ + 1, testedAlike) : 0;
        if (path == FloatPath::tested) { // which asks for no more than the largest magnitude
            trial_ = tested_ == testedAlike ? Trial::magnitudes : Trial::none;
            known_ = {both.largest, 0};
            return;
        }
        known_ = areTried(both) && rule_.path(both) == path ? both : found;
        trial_ = areTried(known_) ? Trial::multiples : Trial::none;
    }
    /// Whether areMultiples() can tell such floats.
    static bool areTried(const Spread &spread) {
        return spread.quantum >= 0x1p-100 && spread.largest <= spread.quantum * 0x1p22;
    }
    /// The next power of two, so that lines which differ by a little are known alike.
    static double powerAbove(double value) {
        const auto bits = __builtin_bit_cast(Nox32u, static_cast<Nox32f>(value));
        return __builtin_bit_cast(Nox32f, (bits + 0x7fffffU) & 0x7f800000U);
    }

    const FloatRule &rule_;
    Trial trial_ = Trial::none;
    Spread known_;
    int tested_ = 0; ///< lines that needed the test, one after the other
    unsigned lines_ = 0;
};

} // namespace nox
