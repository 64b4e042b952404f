// A stage of weak classifiers at every position that is left.
#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "checks.h"
#include "frame/owncvomp.h"
#include "noxvhaar.h"
#include "rows.h"
#include "tiers.h"

using namespace nox;

namespace nox {
namespace {

/// How a member counts.
enum class Arithmetic {
    GroupedFloat, ///< single precision; pairs and triples of features have an order of their own
    Float,        ///< single precision in the order of the features
    Wrapped,      ///< 32-bit integers that wrap
    Shifted,      ///< 32-bit products, summed and shifted in 64 bits
};
constexpr bool isFloat(Arithmetic a) { return a == Arithmetic::GroupedFloat || a == Arithmetic::Float; }

template <Arithmetic arithmetic>
using HaarState = std::conditional_t<isFloat(arithmetic), NoxiHaarClassifier_32f, NoxiHaarClassifier_32s>;

/// A table as the features of some rows of positions see it. Coordinates may be anything, so addresses wrap.
template <class Table>
struct HaarTable {
    std::size_t base;    ///< the address of the first position's element
    std::size_t rowStep; ///< in bytes

    HaarTable(Rows<const Table> rows, int y, int x)
        : base(reinterpret_cast<std::size_t>(rows[y] + x)), rowStep(static_cast<std::size_t>(rows.step)) {}
    NOX_INLINE std::size_t at(Nox32s x, Nox32s y) const { return base + offset(x, y); }
    /// How far a position is from the first one.
    NOX_INLINE std::size_t offset(Nox32s x, Nox32s y) const {
        return static_cast<std::size_t>(y) * rowStep + static_cast<std::size_t>(x) * sizeof(Table);
    }
};

/// Some rows of positions, one below the other.
template <class Table, class Number>
struct HaarRows {
    HaarTable<Table> upright, tilted;
    Rows<const Number> norm;
    Rows<Nox8u> mask;
    NoxiSize size;
    bool mixed; ///< turned classifiers read the tilted table
};

} // namespace
} // namespace nox

// Vectors of 64-bit numbers are wider than a register; no function that is called takes or gives one.
#pragma GCC diagnostic ignored "-Wpsabi"
#define NOX_KERNELS "detection/noxvhaarapplykernels.inc"
#include "noxveachtier.h"

namespace {

/// The arguments that the members share; tilt is null in the plain ones.
template <class Table, class Number>
struct Arguments {
    const Table *src;
    int srcStep;
    const Table *tilt;
    int tiltStep;
    const Number *norm;
    int normStep;
    Nox8u *mask;
    int maskStep;
    NoxiSize roi;
    int *positive;
    Number threshold;
};

template <class Table, class Number, class State>
NoxStatus checkApply(const Arguments<Table, Number> &a, bool mixed, const State *state) {
    return firstFailure(checkPointers(a.src, a.norm, a.mask, a.positive, state),
                        mixed ? checkPointers(a.tilt) : noxStsNoError, checkSize(a.roi),
                        checkStep<Table>(a.srcStep, a.roi.width),
                        mixed ? checkStep<Table>(a.tiltStep, a.roi.width) : noxStsNoError,
                        checkStep<Number>(a.normStep, a.roi.width), checkStep<Nox8u>(a.maskStep, a.roi.width),
                        checkEvenSteps<Table>(a.srcStep, a.normStep, mixed ? a.tiltStep : 0));
}

/// Rows of the positions. A tilted table has one column before the first position, and one row more above it.
template <class Table, class Number>
HaarRows<Table, Number> rowsOf(const Arguments<Table, Number> &a, const Slice &slice) {
    const Rows<const Table> src{a.src, a.srcStep};
    const HaarTable<Table> upright(src, slice.first, 0);
    const bool mixed = a.tilt != nullptr;
    const HaarTable<Table> tilted =
        mixed ? HaarTable<Table>(Rows<const Table>{a.tilt, a.tiltStep}, slice.first + 1, 1) : upright;
    return {upright,
            tilted,
            Rows<const Number>{a.norm, a.normStep}.from(slice.first),
            Rows<Nox8u>{a.mask, a.maskStep}.from(slice.first),
            {a.roi.width, slice.count},
            mixed};
}

template <Arithmetic arithmetic, class Table, class Number>
int passedOfSlice(const Arguments<Table, Number> &a, const HaarState<arithmetic> &stage, int shift,
                  const Slice &slice) {
    const HaarRows<Table, Number> rows = rowsOf(a, slice);
    return NOX_ON_TIER(passedOfRows<arithmetic, Table>(rows, a.threshold, stage, shift));
}

constexpr int mostSlices = 32;

/// A thread for each 1024 positions, as many as there are; the area is a product of 32 bits.
int slicesOf(NoxiSize roi) {
    const int product = static_cast<int>(static_cast<unsigned>(roi.width) * static_cast<unsigned>(roi.height));
    return std::clamp(std::min(owncvGetMaxNumThreads(), product >> 10), 1, mostSlices);
}

/// The rows in shares of about as many positions that are left, one a thread. Late stages, which few positions reach,
/// have fewer shares: a thread that starts must have something to do.
class Shares {
public:
    Shares(Rows<const Nox8u> mask, NoxiSize roi, int classifiers, int most) {
        if (most > 1)
            divide(mask, roi, classifiers, most);
        bounds_[count_] = roi.height;
    }
    int count() const { return count_; }
    Slice at(int index) const { return {bounds_[index], bounds_[index + 1] - bounds_[index], index}; }

private:
    static constexpr int mostBlocks = 256, worthAThread = 1 << 12; ///< pairs of a position and a classifier

    void divide(Rows<const Nox8u> mask, NoxiSize roi, int classifiers, int most) {
        const int rows = (roi.height - 1) / mostBlocks + 1, blocks = (roi.height - 1) / rows + 1;
        long long left[mostBlocks], total = 0;
        for (int i = 0; i < blocks; ++i) {
            const NoxiSize size = {roi.width, std::min(rows, roi.height - i * rows)};
            left[i] = NOX_ON_TIER(positionsLeft(mask.from(i * rows), size));
            total += left[i];
        }
        const int positions = std::max(worthAThread / std::max(classifiers, 1), 1);
        count_ = static_cast<int>(std::clamp(total / positions, 1LL, static_cast<long long>(most)));
        long long sum = 0;
        for (int i = 0, share = 1; i < blocks; ++i) {
            sum += left[i];
            for (; share < count_ && sum * count_ >= total * share; ++share)
                bounds_[share] = i + 1 < blocks ? (i + 1) * rows : roi.height;
        }
    }

    int count_ = 1;
    int bounds_[mostSlices + 1] = {};
};

template <Arithmetic arithmetic, class Table, class Number>
void applyStage(const Arguments<Table, Number> &a, const HaarState<arithmetic> &stage, int slices, int shift) {
    const Shares shares(Rows<const Nox8u>{a.mask, a.maskStep}, a.roi, stage.classifierCount, slices);
    int passed[mostSlices];
    parallelSlices(shares.count(), shares.count(), [&](const Slice &slice) {
        passed[slice.index] = passedOfSlice<arithmetic>(a, stage, shift, shares.at(slice.index));
    });
    int total = 0;
    for (int i = 0; i < shares.count(); ++i)
        total += passed[i];
    *a.positive = total;
}

} // namespace

// One line per member. Only the plain one on float tables goes parallel.
#define NOX_HAARAPPLY(FUNCTION, TABLE, NUMBER, ARITHMETIC, STATE, SLICES)                                              \
    NoxStatus FUNCTION(const TABLE *src, int srcStep, const NUMBER *norm, int normStep, Nox8u *mask, int maskStep,     \
                       NoxiSize roi, int *positive, NUMBER threshold, const STATE *state) {                            \
        const Arguments<TABLE, NUMBER> a = {src,  srcStep,  nullptr, 0,        norm,     normStep,                     \
                                            mask, maskStep, roi,     positive, threshold};                             \
        const NoxStatus status = checkApply(a, false, state);                                                          \
        if (status == noxStsNoError)                                                                                   \
            applyStage<ARITHMETIC>(a, *state, SLICES, 0);                                                              \
        return status;                                                                                                 \
    }
#define NOX_HAARMIXED(FUNCTION, TABLE, STATE)                                                                          \
    NoxStatus FUNCTION(const TABLE *src, int srcStep, const TABLE *tilt, int tiltStep, const Nox32f *norm,             \
                       int normStep, Nox8u *mask, int maskStep, NoxiSize roi, int *positive, Nox32f threshold,         \
                       const STATE *state) {                                                                           \
        const Arguments<TABLE, Nox32f> a = {src,  srcStep,  tilt, tiltStep, norm,     normStep,                        \
                                            mask, maskStep, roi,  positive, threshold};                                \
        const NoxStatus status = checkApply(a, true, state);                                                           \
        if (status == noxStsNoError)                                                                                   \
            applyStage<Arithmetic::Float>(a, *state, 1, 0);                                                            \
        return status;                                                                                                 \
    }

NOX_HAARAPPLY(noxiApplyHaarClassifier_32f_C1R, Nox32f, Nox32f, Arithmetic::GroupedFloat, NoxiHaarClassifier_32f,
              slicesOf(roi))
NOX_HAARAPPLY(noxiApplyHaarClassifier_32s32f_C1R, Nox32s, Nox32f, Arithmetic::Float, NoxiHaarClassifier_32f, 1)
NOX_HAARAPPLY(noxiApplyHaarClassifier_32s_C1RSfs, Nox32s, Nox32s, Arithmetic::Wrapped, NoxiHaarClassifier_32s, 1)
NOX_HAARMIXED(noxiApplyMixedHaarClassifier_32f_C1R, Nox32f, NoxiHaarClassifier_32f)
NOX_HAARMIXED(noxiApplyMixedHaarClassifier_32s32f_C1R, Nox32s, NoxiHaarClassifier_32f)

NoxStatus noxiApplyMixedHaarClassifier_32s_C1RSfs(const Nox32s *src, int srcStep, const Nox32s *tilt, int tiltStep,
                                                  const Nox32s *norm, int normStep, Nox8u *mask, int maskStep,
                                                  NoxiSize roi, int *positive, Nox32s threshold,
                                                  const NoxiHaarClassifier_32s *state, int scaleFactor) {
    const Arguments<Nox32s, Nox32s> a = {src,  srcStep,  tilt, tiltStep, norm,     normStep,
                                         mask, maskStep, roi,  positive, threshold};
    const NoxStatus status = firstFailure(checkApply(a, true, state), require(scaleFactor <= 0, noxStsBadArgument));
    if (status == noxStsNoError)
        applyStage<Arithmetic::Shifted>(a, *state, 1,
                                        static_cast<int>(std::min(-static_cast<long long>(scaleFactor), 64LL)));
    return status;
}
