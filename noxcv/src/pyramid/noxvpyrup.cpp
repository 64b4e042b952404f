// The up layer: source samples are spread over the destination's places, and each place is divided by the weight that
// reached it.
//
// The definition scatters; this gathers. For a strip of columns a table lists, for every place, the samples that reach
// it and their weights; rows are spread through the table, and the few spread rows that a destination row needs are
// combined. Integer sums do not depend on their order, and float sums are taken sample by sample in ascending order.
#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "frame/noxvrowring.h"
#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"
#include "noxvpyrlayer.h"
#include "numerics.h"
#include "ownprimitives.h"

using namespace nox;

namespace {

/// Where sample i lies: at a place, or between two.
struct Sample {
    int whole;
    Nox32f fraction;

    Sample(int i, Nox32f rate) {
        const Nox32f p = static_cast<Nox32f>(i) * rate;
        whole = static_cast<int>(p + 100.0F) - 100;
        fraction = p - static_cast<Nox32f>(whole);
    }
    bool isBetween() const { return std::fabs(fraction) > FLT_MIN; }
};

/// The kernel as the spread sees it.
template <class Tap>
struct Kernel {
    const Tap *taps;
    int size;
    Nox32f rate;

    int half() const { return size / 2; }
    /// Samples before the first and behind the last one that are looked at.
    int reach() const { return static_cast<int>(0.5F + static_cast<Nox32f>(half()) / rate); }
    /// At most as many samples reach one place.
    int overlap() const { return static_cast<int>(static_cast<Nox32f>(2 * half()) / rate) + 2; }
    Tap tap(int t) const { return taps[t + half()]; }
    /// Whether a sample reaches the place t places behind it.
    bool reaches(const Sample &s, int t) const {
        const int cut = !s.isBetween() && taps[0] == Tap(0) ? 1 : 0;
        const int first = s.isBetween() ? -half() + 1 : -half() + cut;
        return t >= first && t <= half() - cut;
    }
    /// The weight there.
    Nox32f weight(const Sample &s, int t) const {
        if (!s.isBetween())
            return static_cast<Nox32f>(tap(t));
        return static_cast<Nox32f>(tap(t - 1)) * s.fraction + static_cast<Nox32f>(tap(t)) * (1.0F - s.fraction);
    }
    /// Samples around a place, some of which reach it.
    int firstNear(int place) const {
        return static_cast<int>(std::floor(static_cast<Nox64f>(place - half() - 1) / rate)) - 1;
    }
    int lastNear(int place) const {
        return static_cast<int>(std::ceil(static_cast<Nox64f>(place + half() + 1) / rate)) + 1;
    }
    /// Calls visit(sample number, sample, t) for each sample of a line of `length` that reaches a place, in ascending
    /// order.
    template <class Visit>
    void forEachSample(int place, int length, const Visit &visit) const {
        const int last = std::min(lastNear(place), length + reach());
        for (int i = std::max(firstNear(place), -reach()); i <= last; ++i) {
            const Sample s(i, rate);
            if (reaches(s, place - s.whole))
                visit(i, s, place - s.whole);
        }
    }
};

// ---- arithmetic of a type

template <class T>
struct Arithmetic;

/// Fixed-point scales of the integer types: rows keep 7 fractional bits of the pixel.
template <class T>
struct Scale;
template <>
struct Scale<Nox8u> {
    static constexpr Nox32f weight = 32768.0F;
    static constexpr int rowBits = 8, columnBits = 22;
};
template <>
struct Scale<Nox16u> {
    static constexpr Nox32f weight = 8192.0F;
    static constexpr int rowBits = 6, columnBits = 20;
};

/// Products of samples between places are rounded by truncation after adding a half, the others are exact.
NOX_INLINE Nox32s roundedProduct(Nox32f weight, Nox32f value) { return static_cast<Nox32s>(weight * value + 0.5F); }

/// Kernels without negative taps: row sums fit 32 bits, and of 8-bit pixels column sums too.
template <class T>
struct RowArithmetic {
    using Pixel = T;
    using Tap = Nox16s;
    using Row = Nox32s; ///< a value of a spread row, and its sum before scaling
    static constexpr Nox32f weightScale = Scale<T>::weight;
    NOX_INLINE static Row row(Row sum, Nox32f weight) {
        constexpr Nox32f half = 1 << (Scale<T>::rowBits - 1);
        return static_cast<Row>(static_cast<Nox32f>(sum) * weight + half) >> Scale<T>::rowBits;
    }
};

template <>
struct Arithmetic<Nox8u> : RowArithmetic<Nox8u> {
    using Column = Nox32s; ///< a sum over spread rows
    NOX_INLINE static Column between(Nox32f weight, Row value) {
        return roundedProduct(weight, static_cast<Nox32f>(value));
    }
    NOX_INLINE static Column whole(Tap tap, Row value) { return tap * value; }
    NOX_INLINE static Nox8u finish(Column sum, Nox32f weight) {
        return saturate<Nox8u>(static_cast<Nox32s>(static_cast<Nox32f>(sum) * weight + 2097152.0F) >> 22);
    }
};

/// Integers held in double precision, all exact. Value is any integer that a float was truncated to.
NOX_INLINE Nox64f roundedProductWide(Nox32f weight, Nox32f value) { return std::trunc(weight * value + 0.5F); }

/// The pixel of a column sum. Truncating the scaled sum first would change nothing: below zero the clamp takes it.
template <class T, class Column>
NOX_INLINE T finishWide(Column sum, Nox32f weight) {
    constexpr Nox64f half = 1 << (Scale<T>::columnBits - 1), unit = 1 << Scale<T>::columnBits;
    constexpr Nox64f highest = std::numeric_limits<T>::max();
    // The half is added in the precision of the definition: single for 8u, exactly for 16u.
    const Nox32f scaled = static_cast<Nox32f>(sum) * weight;
    const Nox64f rounded = std::is_same_v<T, Nox8u> ? static_cast<Nox64f>(scaled + static_cast<Nox32f>(half))
                                                    : static_cast<Nox64f>(scaled) + half;
    const Nox64f pixel = rounded / unit;
    return static_cast<T>(static_cast<int>(pixel < 0 ? 0 : pixel > highest ? highest : pixel));
}

/// Column sums of 16-bit pixels need more than 32 bits.
template <>
struct Arithmetic<Nox16u> : RowArithmetic<Nox16u> {
    using Column = Nox64f;
    NOX_INLINE static Column between(Nox32f weight, Row value) {
        return roundedProductWide(weight, static_cast<Nox32f>(value));
    }
    NOX_INLINE static Column whole(Tap tap, Row value) { return static_cast<Nox64f>(tap) * static_cast<Nox64f>(value); }
    NOX_INLINE static Nox16u finish(Column sum, Nox32f weight) { return finishWide<Nox16u>(sum, weight); }
};

/// Any taps: negative ones can leave little weight at a place, and so large scaled values.
template <class T>
struct Wide;
template <class T>
struct Arithmetic<Wide<T>> {
    using Pixel = T;
    using Tap = Nox16s;
    using Row = Nox64f;
    using Column = Nox64f;
    static constexpr Nox32f weightScale = Scale<T>::weight;
    NOX_INLINE static Row row(Row sum, Nox32f weight) {
        constexpr Nox32f half = 1 << (Scale<T>::rowBits - 1);
        return std::floor(std::trunc(static_cast<Nox32f>(sum) * weight + half) / (1 << Scale<T>::rowBits));
    }
    NOX_INLINE static Column between(Nox32f weight, Row value) {
        return roundedProductWide(weight, static_cast<Nox32f>(value));
    }
    NOX_INLINE static Column whole(Tap tap, Row value) { return tap * value; }
    NOX_INLINE static T finish(Column sum, Nox32f weight) { return finishWide<T>(sum, weight); }
};

template <>
struct Arithmetic<Nox32f> {
    using Pixel = Nox32f;
    using Tap = Nox32f;
    using Row = Nox32f;
    using Column = Nox32f;
    static constexpr Nox32f weightScale = 1.0F;
    NOX_INLINE static Row row(Row sum, Nox32f weight) { return sum * weight; }
    NOX_INLINE static Column between(Nox32f weight, Row value) { return weight * value; }
    NOX_INLINE static Column whole(Tap tap, Row value) { return tap * value; }
    NOX_INLINE static Nox32f finish(Column sum, Nox32f weight) { return sum * weight; }
};

// ---- kernels over a strip of columns

/// For each column of a strip, the samples that reach it: `depth` layers of `columns` entries. Entries without a sample
/// point to a zero behind the row's samples and have no weight.
struct Table {
    int columns, depth;
    int *sample;
    Nox32f *weight; ///< of samples between places; of all for floats
    Nox32s *tap;    ///< of samples at a place; none for floats
    bool anyBetween, anyWhole;
};

/// Sum over the table's layers of one channel's samples.
template <bool Between, bool Whole>
NOX_INLINE void spreadInteger(const Table &table, const Nox32f *samples, Nox32s *sums) {
    const int columns = table.columns;
    std::fill_n(sums, columns, 0);
    for (int layer = 0; layer < table.depth; ++layer) {
        const int *from = table.sample + layer * columns;
        const Nox32f *weight = table.weight + layer * columns;
        const Nox32s *tap = table.tap + layer * columns;
        for (int x = 0; x < columns; ++x) {
            const Nox32f value = samples[from[x]];
            Nox32u sum = static_cast<Nox32u>(sums[x]);
            if constexpr (Between)
                sum += static_cast<Nox32u>(roundedProduct(weight[x], value));
            if constexpr (Whole)
                sum += static_cast<Nox32u>(tap[x]) * static_cast<Nox32u>(static_cast<Nox32s>(value));
            sums[x] = static_cast<Nox32s>(sum);
        }
    }
}

NOX_TIERS void spread(const Table &table, const Nox32f *samples, Nox32s *sums) {
    if (!table.anyWhole)
        spreadInteger<true, false>(table, samples, sums);
    else if (!table.anyBetween)
        spreadInteger<false, true>(table, samples, sums);
    else
        spreadInteger<true, true>(table, samples, sums);
}

/// The same in double precision.
NOX_TIERS void spread(const Table &table, const Nox32f *samples, Nox64f *sums) {
    const int columns = table.columns;
    std::fill_n(sums, columns, 0.0);
    for (int layer = 0; layer < table.depth; ++layer)
        for (int x = 0; x < columns; ++x) {
            const int entry = layer * columns + x;
            const Nox32f value = samples[table.sample[entry]];
            sums[x] += roundedProductWide(table.weight[entry], value) + static_cast<Nox64f>(table.tap[entry]) * value;
        }
}

/// Floats: every sample has a weight.
NOX_TIERS void spread(const Table &table, const Nox32f *samples, Nox32f *sums) {
    const int columns = table.columns;
    std::fill_n(sums, columns, 0.0F);
    for (int layer = 0; layer < table.depth; ++layer) {
        const int *from = table.sample + layer * columns;
        const Nox32f *weight = table.weight + layer * columns;
        for (int x = 0; x < columns; ++x)
            sums[x] += weight[x] * samples[from[x]];
    }
}

template <class A>
NOX_TIERS void scaleRow(typename A::Row *row, const Nox32f *weights, int columns) {
    for (int x = 0; x < columns; ++x)
        row[x] = A::row(row[x], weights[x]);
}

template <class A>
NOX_TIERS void addBetween(typename A::Column *sums, const typename A::Row *row, Nox32f weight, int columns) {
    for (int x = 0; x < columns; ++x)
        sums[x] += A::between(weight, row[x]);
}

template <class A>
NOX_TIERS void addWhole(typename A::Column *sums, const typename A::Row *row, typename A::Tap tap, int columns) {
    for (int x = 0; x < columns; ++x)
        sums[x] += A::whole(tap, row[x]);
}

template <class A, int Channels>
NOX_TIERS void storeColumns(const typename A::Column *sums, Nox32f weight, typename A::Pixel *dst, int columns) {
    for (int x = 0; x < columns; ++x)
        elements(dst)[x * Channels] = A::finish(sums[x], weight);
}

template <class T, int Channels>
NOX_TIERS void loadSamples(const T *row, Nox32f *samples, int count) {
    for (int x = 0; x < count; ++x)
        samples[x] = static_cast<Nox32f>(row[x * Channels]);
}

// ---- a strip of columns, from top to bottom

/// The bordered copy of the source: sample (-half, -half) is its first pixel.
template <class T>
struct Bordered {
    Rows<const T> rows;
    NoxiSize size; ///< of the source, without the border
};

template <class A, int Channels>
class Strip {
    using T = typename A::Pixel;
    using Row = typename A::Row;
    using Column = typename A::Column;
    using Tap = typename A::Tap;

public:
    /// Words of scratch for a strip, and the columns that so many words allow.
    static long long words(const Kernel<Tap> &kernel, long long columns) {
        const long long depth = kernel.overlap();
        constexpr long long rowWords = sizeof(Row) / 4;
        const long long aColumn = 3 * depth + Channels * depth * rowWords + 2 + 1;
        return columns * aColumn + (kernel.size + 8LL) * Channels + depth + 16;
    }
    static int columnsFor(const Kernel<Tap> &kernel, long long available) {
        const long long fixed = words(kernel, 0), aColumn = words(kernel, 1) - fixed;
        return static_cast<int>(std::clamp<long long>((available - fixed) / aColumn, 1, widest));
    }

    Strip(const Kernel<Tap> &kernel, const Bordered<T> &source, const Nox32f *weights, int columns, Nox8u *scratch)
        : kernel_(kernel), source_(source), weights_(weights), depth_(kernel.overlap()) {
        WorkBuffer work(scratch, sizeof(Nox64f));
        const long long entries = static_cast<long long>(depth_) * columns;
        sums_ = work.take<Column>(columns);
        rows_ = work.take<Row>(entries * Channels);
        table_.weight = work.take<Nox32f>(entries);
        table_.sample = work.take<int>(entries);
        table_.tap = work.take<Nox32s>(entries);
        held_ = work.take<int>(depth_);
        samples_ = work.take<Nox32f>(0); // the rest
    }

    /// Destination columns from `begin` on.
    void run(Rows<T> dst, int begin, int columns, int height) {
        makeTable(begin, columns);
        std::fill_n(held_, depth_, -kernel_.half() - 1);
        for (int y = 0; y < height; ++y) {
            const auto weight = weights_[y];
            for (int c = 0; c < Channels; ++c) {
                std::fill_n(sums_, columns, Column(0));
                kernel_.forEachSample(y, source_.size.height, [&](int i, const Sample &s, int t) {
                    const Row *row = spreadRow(i, begin) + c * columns;
                    if (s.isBetween())
                        addBetween<A>(sums_, row, kernel_.weight(s, t), columns);
                    else
                        addWhole<A>(sums_, row, kernel_.tap(t), columns);
                });
                storeColumns<A, Channels>(sums_, weight, dst[y] + begin * Channels + c, columns);
            }
        }
    }

private:
    static constexpr int widest = 256;

    /// Samples outside the bordered copy reach no place.
    void makeTable(int begin, int columns) {
        const int half = kernel_.half(), width = source_.size.width;
        firstSample_ = std::max(kernel_.firstNear(begin), -half);
        sampleCount_ = std::min(kernel_.lastNear(begin + columns - 1), width + half - 1) - firstSample_ + 1;
        table_.columns = columns;
        table_.depth = 0;
        table_.anyBetween = table_.anyWhole = false;
        std::fill_n(table_.sample, depth_ * columns, sampleCount_);
        std::fill_n(table_.weight, depth_ * columns, 0.0F);
        std::fill_n(table_.tap, depth_ * columns, 0);
        for (int x = 0; x < columns; ++x) {
            int layer = 0;
            kernel_.forEachSample(begin + x, width, [&](int i, const Sample &s, int t) {
                const int entry = layer++ * columns + x;
                table_.depth = std::max(table_.depth, layer);
                table_.sample[entry] = i - firstSample_;
                if (std::is_same_v<T, Nox32f> || s.isBetween()) {
                    table_.weight[entry] = kernel_.weight(s, t);
                    table_.anyBetween = true;
                } else {
                    table_.tap[entry] = static_cast<Nox32s>(kernel_.tap(t));
                    table_.anyWhole = true;
                }
            });
        }
    }

    /// Row i of the source, spread over the strip and scaled, its channels apart.
    const Row *spreadRow(int i, int begin) {
        const int columns = table_.columns, slot = (i + kernel_.half()) % depth_;
        Row *row = RowRing<Row>(rows_, depth_, std::ptrdiff_t{Channels} * columns)[i + kernel_.half()];
        if (held_[slot] == i)
            return row;
        held_[slot] = i;
        const T *source = source_.rows[i + kernel_.half()] + (firstSample_ + kernel_.half()) * Channels;
        for (int c = 0; c < Channels; ++c) {
            loadSamples<T, Channels>(source + c, samples_, sampleCount_);
            samples_[sampleCount_] = 0.0F;
            spread(table_, samples_, row + c * columns);
            scaleRow<A>(row + c * columns, weights_ + begin, columns);
        }
        return row;
    }

    Kernel<Tap> kernel_;
    Bordered<T> source_;
    const Nox32f *weights_;
    int depth_;
    Column *sums_;
    Table table_{};
    Row *rows_;
    int *held_;
    Nox32f *samples_;
    int firstSample_ = 0, sampleCount_ = 0;
};

/// Scale over the sum of weights, for every place.
template <class Tap>
void placeWeights(const Kernel<Tap> &kernel, Nox32f *weights, int places, Nox32f scale) {
    for (int place = 0; place < places; ++place) {
        Nox32f sum = 0;
        kernel.forEachSample(place, places, [&](int, const Sample &s, int t) { sum += kernel.weight(s, t); });
        weights[place] = std::fabs(sum) > FLT_MIN ? scale / sum : sum;
    }
}

Nox8u *copyWithBorder(const Nox8u *src, int step, NoxiSize roi, int half, std::integral_constant<int, 1>) {
    return ownCopyWithBorder_8u_C1R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}
Nox8u *copyWithBorder(const Nox8u *src, int step, NoxiSize roi, int half, std::integral_constant<int, 3>) {
    return ownCopyWithBorder_8u_C3R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}
Nox16u *copyWithBorder(const Nox16u *src, int step, NoxiSize roi, int half, std::integral_constant<int, 1>) {
    return ownCopyWithBorder_16u_C1R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}
Nox16u *copyWithBorder(const Nox16u *src, int step, NoxiSize roi, int half, std::integral_constant<int, 3>) {
    return ownCopyWithBorder_16u_C3R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}
Nox32f *copyWithBorder(const Nox32f *src, int step, NoxiSize roi, int half, std::integral_constant<int, 1>) {
    return ownCopyWithBorder_32f_C1R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}
Nox32f *copyWithBorder(const Nox32f *src, int step, NoxiSize roi, int half, std::integral_constant<int, 3>) {
    return ownCopyWithBorder_32f_C3R(src, step, roi.width, roi.height, noxBorderMirror, 0, half, half, half, half);
}

template <class A, int Channels>
void layerUp(const Bordered<typename A::Pixel> &source, Rows<typename A::Pixel> dst, NoxiSize dstRoi,
             const NoxiPyramidLayerState &state) {
    using S = Strip<A, Channels>;
    const Kernel<typename A::Tap> kernel{static_cast<const typename A::Tap *>(state.kernel), state.kernelSize,
                                         state.rate};
    const int places = std::max(dstRoi.width, dstRoi.height);
    auto *const weights = reinterpret_cast<Nox32f *>(state.work);
    placeWeights(kernel, weights, places, A::weightScale);

    // Small images with small kernels have little scratch in their state.
    constexpr int localWords = 3072;
    alignas(Nox64f) Nox8u local[localWords * sizeof(Nox32f)];
    const long long stateWords = upLayerScratchWords(state, Channels) - places;
    const bool useState = stateWords > localWords;
    const int strip = S::columnsFor(kernel, useState ? stateWords : localWords);
    S columns(kernel, source, weights, strip, useState ? reinterpret_cast<Nox8u *>(weights + places) : local);
    for (int x = 0; x < dstRoi.width; x += strip)
        columns.run(dst, x, std::min(strip, dstRoi.width - x), dstRoi.height);
}

template <class T>
using WideArithmetic = Arithmetic<std::conditional_t<std::is_integral_v<T>, Wide<T>, T>>;

/// Whether sums may leave 32 bits: negative taps, or more of them than a normalised kernel has.
template <class T>
bool hasWideTaps(const NoxiPyramidLayerState &state) {
    if constexpr (std::is_integral_v<T>) {
        constexpr long long most = 8400;
        const auto *taps = static_cast<const Nox16s *>(state.kernel);
        long long sum = 0;
        for (int i = 0; i <= state.kernelSize; ++i) {
            if (taps[i] < 0)
                return true;
            sum += taps[i];
        }
        return sum > most;
    }
    return false;
}

bool isWithin(NoxiSize size, NoxiSize low, NoxiSize high) {
    return size.width >= low.width && size.width <= high.width && size.height >= low.height &&
           size.height <= high.height;
}

template <class T, int Channels>
NoxStatus up(const T *src, int srcStep, NoxiSize srcRoi, T *dst, int dstStep, NoxiSize dstRoi,
             const NoxiPyramidLayerState *state) {
    NoxStatus status = checkLayer(src, srcStep, srcRoi, dst, dstStep, dstRoi, state, Channels);
    if (status == noxStsNoError)
        status = checkRate(state->rate);
    if (status != noxStsNoError)
        return status;
    NoxiSize smallest, largest;
    noxiGetPyramidUpROI(srcRoi, &smallest, &largest, state->rate);
    if (!isWithin(dstRoi, smallest, largest) || dstRoi.width > state->width || dstRoi.height > state->height)
        return noxStsBadSize;

    const int half = state->kernelSize / 2;
    T *copy = copyWithBorder(src, srcStep, srcRoi, half, std::integral_constant<int, Channels>());
    if (copy == nullptr)
        return noxStsNoMemory;
    const std::ptrdiff_t copyStep = (srcRoi.width + 2 * static_cast<std::ptrdiff_t>(half)) * Channels * sizeof(T);
    const Bordered<T> bordered{{copy, copyStep}, srcRoi};
    if (hasWideTaps<T>(*state))
        layerUp<WideArithmetic<T>, Channels>(bordered, {dst, dstStep}, dstRoi, *state);
    else
        layerUp<Arithmetic<T>, Channels>(bordered, {dst, dstStep}, dstRoi, *state);
    noxsFree(copy);
    return noxStsNoError;
}

} // namespace

#define NOX_LAYER_UP(FUNCTION, TYPE, CHANNELS)                                                                         \
    NoxStatus FUNCTION(const TYPE *src, int srcStep, NoxiSize srcRoi, TYPE *dst, int dstStep, NoxiSize dstRoi,         \
                       NoxiPyramidLayerState *state) {                                                                 \
        return up<TYPE, CHANNELS>(src, srcStep, srcRoi, dst, dstStep, dstRoi, state);                                  \
    }
NOX_LAYER_UP(noxiPyramidLayerUp_8u_C1R, Nox8u, 1)
NOX_LAYER_UP(noxiPyramidLayerUp_8u_C3R, Nox8u, 3)
NOX_LAYER_UP(noxiPyramidLayerUp_16u_C1R, Nox16u, 1)
NOX_LAYER_UP(noxiPyramidLayerUp_16u_C3R, Nox16u, 3)
NOX_LAYER_UP(noxiPyramidLayerUp_32f_C1R, Nox32f, 1)
NOX_LAYER_UP(noxiPyramidLayerUp_32f_C3R, Nox32f, 3)
