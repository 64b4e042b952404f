// The up layer: source samples are spread over the destination's places, and each place is divided by the weight that
// reached it.
//
// The definition scatters; this gathers. A list tells for every place which samples reach it and with what weight; rows
// and columns share it. For a strip of columns a table of vectors is made from it; source rows are spread through the
// table, and the few spread rows that reach a destination row are combined. Integer sums do not depend on their order,
// and float sums are taken sample by sample in ascending order. The channels of a pixel are columns next to each other.
#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

#include "frame/noxvworkbuffer.h"
#include "noxcv/primitives.h"
#include "noxvpyrlayer.h"
#include "noxvpyrreach.h"
#include "numerics.h"
#include "ownprimitives.h"

namespace nox {

/// Fixed-point scales of the integer types: rows keep 7 fractional bits of the pixel.
template <class T>
struct Scale {
    static constexpr Nox32f weight = 1.0F;
};
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

/// A value of a spread row.
template <class T>
using SpreadRow = std::conditional_t<std::is_same_v<T, Nox32f>, Nox32f, Nox32s>;

/// For the columns of a strip, in groups of a vector's lanes: the samples that reach them, layer by layer. Each lane of
/// a layer has at most one.
struct SpreadTable {
    /// How many layers a group has: of samples between places, and then of samples at a place, where the two differ.
    struct Group {
        int betweens, wholes;
    };
    Group *groups;
    Nox32f *scales;  ///< of each column
    int *bases;      ///< of each layer: the first of its samples
    Nox32s *places;  ///< of each lane of each layer: the sample behind the base, or noSample
    Nox32s *weights; ///< of each lane: the bits of a float, or a whole number for a sample at a place
    int groupCount, layerCount;
    static constexpr Nox32s noSample = INT_MIN;
};

NOX_INLINE Nox32f floatOf(Nox32s bits) { return std::bit_cast<Nox32f>(bits); }

/// The spread rows that reach a row of the destination: those between places, and then those at a place, where the two
/// differ. Weights as in the table.
template <class Row>
struct RowsThatReach {
    struct One {
        const Row *row;
        Nox32s weight;
    };
    One *all;
    int betweens, count;
};

} // namespace nox

#define NOX_KERNELS "pyramid/noxvpyrupkernels.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

// ---- arithmetic of a type

/// Floats, and integers under kernels whose sums fit: in explicit vectors.
template <class T>
struct Plain {
    using Pixel = T;
    using Row = SpreadRow<T>;
    static constexpr bool sorts = std::is_same_v<T, Nox16u>;     ///< the table tells samples at a place from others
    static constexpr bool rowSorts = !std::is_same_v<T, Nox32f>; ///< and so does the list of rows

    static int groupLanes() { return NOX_ON_TIER(groupLanes); }
    static int window() { return NOX_ON_TIER(groupWindow); }
    /// Spread rows are read in whole blocks.
    static int block() { return NOX_ON_TIER(ColumnSums<T>::block); }

    static void spread(const SpreadTable &table, const Nox32f *samples, Row *row) {
        NOX_ON_TIER(spreadRow<T>(table, samples, row));
    }
    static void combine(const RowsThatReach<Row> &rows, Nox32f scale, T *dst, int count) {
        NOX_ON_TIER(combineRows<T>(rows, scale, dst, count));
    }
};

/// Integers under any taps: negative ones can leave little weight at a place, and so large scaled values. All sums are
/// integers held in double precision, all exact.
template <class T>
struct Wide {
    using Pixel = T;
    using Row = Nox64f;
    static constexpr bool sorts = true, rowSorts = true;
    static constexpr int lanes = 8;

    static int groupLanes() { return lanes; }
    static int window() { return INT_MAX; }
    static int block() { return lanes; }

    static void spread(const SpreadTable &table, const Nox32f *samples, Row *row);
    static void combine(const RowsThatReach<Row> &rows, Nox32f scale, T *dst, int count);

    /// Products of samples between places are rounded by truncation after adding a half. The value is any integer that
    /// a float was truncated to.
    NOX_INLINE static Nox64f roundedProduct(Nox32f weight, Nox32f value) { return std::trunc(weight * value + 0.5F); }
    NOX_INLINE static Row row(Nox64f sum, Nox32f scale) {
        constexpr Nox32f half = 1 << (Scale<T>::rowBits - 1);
        return std::floor(std::trunc(static_cast<Nox32f>(sum) * scale + half) / (1 << Scale<T>::rowBits));
    }
    /// The pixel of a column sum. Truncating the scaled sum first would change nothing: below zero the clamp takes it.
    NOX_INLINE static T finish(Nox64f sum, Nox32f scale) {
        constexpr Nox64f half = 1 << (Scale<T>::columnBits - 1), unit = 1 << Scale<T>::columnBits;
        constexpr Nox64f highest = std::numeric_limits<T>::max();
        // The half is added in the precision of the definition: single for 8u, exactly for 16u.
        const Nox32f scaled = static_cast<Nox32f>(sum) * scale;
        const Nox64f rounded = std::is_same_v<T, Nox8u> ? static_cast<Nox64f>(scaled + static_cast<Nox32f>(half))
                                                        : static_cast<Nox64f>(scaled) + half;
        const Nox64f pixel = rounded / unit;
        return static_cast<T>(static_cast<int>(pixel < 0 ? 0 : pixel > highest ? highest : pixel));
    }
};

template <class T>
NOX_TIERS void spreadWide(const SpreadTable &table, const Nox32f *samples, Nox64f *row) {
    constexpr int lanes = Wide<T>::lanes;
    int layer = 0;
    for (int group = 0; group < table.groupCount; ++group, row += lanes) {
        Nox64f sums[lanes] = {};
        const int betweensEnd = layer + table.groups[group].betweens, end = betweensEnd + table.groups[group].wholes;
        for (; layer < end; ++layer)
            for (int lane = 0; lane < lanes; ++lane) {
                const Nox32s weight = table.weights[layer * lanes + lane];
                const Nox32f value = samples[table.bases[layer] + (table.places[layer * lanes + lane] & INT_MAX)];
                sums[lane] += layer < betweensEnd ? Wide<T>::roundedProduct(floatOf(weight), value)
                                                  : static_cast<Nox64f>(weight) * value;
            }
        for (int lane = 0; lane < lanes; ++lane)
            row[lane] = Wide<T>::row(sums[lane], table.scales[group * lanes + lane]);
    }
}

template <class T>
NOX_TIERS void combineWide(const RowsThatReach<Nox64f> &rows, Nox32f scale, T *dst, int count) {
    constexpr int lanes = Wide<T>::lanes;
    for (int x = 0; x < count; x += lanes) {
        Nox64f sums[lanes] = {};
        for (int k = 0; k < rows.count; ++k)
            for (int lane = 0; lane < lanes; ++lane) {
                const Nox32s weight = rows.all[k].weight;
                const Nox64f value = rows.all[k].row[x + lane];
                sums[lane] += k < rows.betweens ? Wide<T>::roundedProduct(floatOf(weight), static_cast<Nox32f>(value))
                                                : weight * value;
            }
        for (int lane = 0; lane < std::min(lanes, count - x); ++lane)
            elements(dst)[x + lane] = Wide<T>::finish(sums[lane], scale);
    }
}

template <class T>
void Wide<T>::spread(const SpreadTable &table, const Nox32f *samples, Row *row) {
    spreadWide<T>(table, samples, row);
}

template <class T>
void Wide<T>::combine(const RowsThatReach<Row> &rows, Nox32f scale, T *dst, int count) {
    combineWide<T>(rows, scale, dst, count);
}

// ---- a strip of columns, from top to bottom

/// The bordered copy of the source: sample (-half, -half) is its first pixel.
template <class T>
struct Bordered {
    Rows<const T> rows;
    NoxiSize size; ///< of the source, without the border
};

/// How much of its scratch a call uses for what.
struct StripSizes {
    int columns;      ///< of a strip at most, channels counted
    int layers;       ///< of its table, besides those that any one group may need
    int listedPlaces; ///< in the list for columns
    int listedRows;   ///< in the list for rows
};

template <class A, class Tap, int Channels>
class Strips {
    using T = typename A::Pixel;
    using Row = typename A::Row;
    using Taken = RowsThatReach<Row>;

public:
    Strips(const Kernel<Tap> &kernel, const Bordered<T> &source, const Nox32f *scales, NoxiSize dst,
           const StripSizes &sizes, WorkBuffer &work)
        : kernel_(kernel), source_(source), scales_(scales), dst_(dst), sizes_(sizes), depth_(kernel.overlap()) {
        taken_.all = work.take<typename Taken::One>(depth_);
        ring_ = work.aligned(32).template take<Row>(std::ptrdiff_t{depth_} * sizes.columns);
        table_.scales = work.take<Nox32f>(sizes.columns);
        table_.groups = work.take<SpreadTable::Group>(sizes.columns / A::groupLanes());
        mostLayers_ = sizes.layers + layersOfAGroup();
        table_.places = work.take<Nox32s>(1LL * mostLayers_ * A::groupLanes());
        table_.weights = work.take<Nox32s>(1LL * mostLayers_ * A::groupLanes());
        table_.bases = work.take<int>(mostLayers_);
        samples_ =
            work.take<Nox32f>((sizes.columns + kernel.size + 2LL * kernel.margin() + 8) * Channels + A::groupLanes());
        held_ = work.take<int>(depth_);
        columnReaches_ = Reaches<Tap>(kernel, sizes.listedPlaces, source.size.width, work);
        rowReaches_ = Reaches<Tap>(kernel, sizes.listedRows, source.size.height, work);
    }

    void run(Rows<T> dst) {
        const int columns = dst_.width * Channels;
        // Blocks read on behind the strip's last group, and sums of anything could overflow.
        std::fill_n(ring_, std::ptrdiff_t{depth_} * sizes_.columns, Row(0));
        for (int begin = 0, count = 0; begin < columns; begin += count) {
            count = makeTable(begin, columns);
            std::fill_n(held_, depth_, INT_MIN);
            for (int y = 0; y < dst_.height; ++y) {
                takeRows(y);
                A::combine(taken_, scales_[y], dst[y] + begin, count);
            }
        }
    }

private:
    /// Every layer but a group's last one takes all samples of at least one lane that lie in its window; see
    /// `addLayers`.
    int layersOfAGroup() const {
        return (A::sorts ? 2 : 1) * (kernel_.size + 2 * kernel_.margin() + A::groupLanes() + 16);
    }

    /// Makes the table for columns from `begin` on, as many as there is room for; tells how many.
    int makeTable(int begin, int end) {
        const int lanes = A::groupLanes();
        firstSample_ = std::max(kernel_.firstNear(begin / Channels), -kernel_.half());
        table_.groupCount = table_.layerCount = 0;
        int column = begin;
        while (column < end && (table_.groupCount + 1) * lanes <= sizes_.columns &&
               table_.layerCount + layersOfAGroup() <= mostLayers_) {
            const int count = std::min(lanes, end - column);
            addGroup(column, count);
            column += count;
        }
        const int last = std::min(kernel_.lastNear((column - 1) / Channels), source_.size.width + kernel_.half() - 1);
        sampleCount_ = (last - firstSample_ + 1) * Channels;
        return column - begin;
    }

    void addGroup(int column, int count) {
        const int lanes = A::groupLanes(), group = table_.groupCount++;
        columnReaches_.require(column / Channels, (column + count - 1) / Channels, dst_.width);
        for (int lane = 0; lane < lanes; ++lane)
            table_.scales[group * lanes + lane] = lane < count ? scales_[(column + lane) / Channels] : 0.0F;
        if constexpr (A::sorts) {
            table_.groups[group].betweens = addLayers(
                column, count, [](const Reach &reach) { return reach.between; },
                [](const Reach &reach) { return std::bit_cast<Nox32s>(reach.weight); });
            table_.groups[group].wholes = addLayers(
                column, count, [](const Reach &reach) { return !reach.between; },
                [](const Reach &reach) { return static_cast<Nox32s>(reach.weight); });
        } else {
            table_.groups[group] = {addLayers(
                                        column, count, [](const Reach &) { return true; },
                                        [](const Reach &reach) { return std::bit_cast<Nox32s>(reach.weight); }),
                                    0};
        }
    }

    /// Layers with the wanted samples of `count` columns. A layer starts at the first sample that is left, and takes
    /// the next one of every column if it lies in the window, so that each column's samples stay in ascending order.
    template <class Wanted, class Weight>
    int addLayers(int column, int count, const Wanted &wanted, const Weight &weight) {
        const int lanes = A::groupLanes(), window = A::window();
        struct {
            const Reach *next, *end;
            int channel;
            int sample() const { return next->sample * Channels + channel; }
        } left[8];
        for (int lane = 0; lane < count; ++lane) {
            const int place = (column + lane) / Channels;
            left[lane] = {columnReaches_.begin(place), columnReaches_.end(place), (column + lane) % Channels};
        }
        for (int layers = 0;; ++layers) {
            int base = INT_MAX;
            for (int lane = 0; lane < count; ++lane) {
                auto &one = left[lane];
                while (one.next != one.end && !wanted(*one.next))
                    ++one.next;
                if (one.next != one.end)
                    base = std::min(base, one.sample());
            }
            if (base == INT_MAX)
                return layers;
            const int layer = table_.layerCount++;
            table_.bases[layer] = base - firstSample_ * Channels;
            Nox32s *places = table_.places + layer * lanes, *weights = table_.weights + layer * lanes;
            for (int lane = 0; lane < lanes; ++lane) {
                const bool taken =
                    lane < count && left[lane].next != left[lane].end && left[lane].sample() - base < window;
                places[lane] = taken ? left[lane].sample() - base : SpreadTable::noSample;
                weights[lane] = taken ? weight(*left[lane].next++) : 0;
            }
        }
    }

    /// The spread rows for row y of the destination.
    void takeRows(int y) {
        rowReaches_.require(y, y, dst_.height);
        const Reach *const begin = rowReaches_.begin(y), *const end = rowReaches_.end(y);
        const auto take = [&](const Reach &reach, Nox32s weight) {
            taken_.all[taken_.count++] = {spreadRow(reach.sample), weight};
        };
        taken_.count = 0;
        for (const Reach *reach = begin; reach != end; ++reach)
            if (!A::rowSorts || reach->between)
                take(*reach, std::bit_cast<Nox32s>(reach->weight));
        taken_.betweens = taken_.count;
        for (const Reach *reach = begin; A::rowSorts && reach != end; ++reach)
            if (!reach->between)
                take(*reach, static_cast<Nox32s>(reach->weight));
    }

    /// Row i of the source, spread over the strip and scaled.
    const Row *spreadRow(int i) {
        const int above = kernel_.half(), slot = (i + above) % depth_;
        Row *row = ring_ + std::ptrdiff_t{slot} * sizes_.columns;
        if (held_[slot] == i)
            return row;
        held_[slot] = i;
        const T *source = source_.rows[i + above] + std::ptrdiff_t{firstSample_ + above} * Channels;
        NOX_ON_TIER(loadSamples<T>(source, samples_, sampleCount_));
        std::fill_n(samples_ + sampleCount_, A::groupLanes(), 0.0F);
        A::spread(table_, samples_, row);
        return row;
    }

    Kernel<Tap> kernel_;
    Bordered<T> source_;
    const Nox32f *scales_;
    NoxiSize dst_;
    StripSizes sizes_;
    int depth_, mostLayers_ = 0;
    Taken taken_{};
    Row *ring_;
    SpreadTable table_{};
    Nox32f *samples_;
    int *held_;
    Reaches<Tap> columnReaches_, rowReaches_;
    int firstSample_ = 0, sampleCount_ = 0;
};

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

/// The scratch that strips of given sizes take.
template <class A, int Channels, class Tap>
long long stripBytes(const Kernel<Tap> &kernel, const Bordered<typename A::Pixel> &source, NoxiSize dstRoi,
                     const StripSizes &sizes) {
    WorkBuffer measure;
    Strips<A, Tap, Channels>(kernel, source, nullptr, dstRoi, sizes, measure);
    return measure.bytes();
}

/// A group of columns at a time.
template <class A>
StripSizes leastSizes() {
    return {A::block(), 0, A::groupLanes(), 1};
}

/// Strips as wide as the scratch allows, with lists as long as the rest of it allows.
template <class A, int Channels, class Tap>
void runStrips(const Kernel<Tap> &kernel, const Bordered<typename A::Pixel> &source, const Nox32f *scales,
               Rows<typename A::Pixel> dst, NoxiSize dstRoi, Nox8u *scratch, long long bytes) {
    constexpr int widest = 1024, places = 64;
    const auto bytesFor = [&](const StripSizes &sizes) {
        return stripBytes<A, Channels>(kernel, source, dstRoi, sizes);
    };
    const int block = A::block(), depth = kernel.overlap();
    const auto sizesFor = [&](int columns) {
        return StripSizes{columns, columns / A::groupLanes() * (depth + 1), places, 1};
    };
    const auto most = static_cast<int>(std::min(1LL * dstRoi.width * Channels, 1LL * widest));
    StripSizes sizes = sizesFor((most + block - 1) / block * block);
    while (sizes.columns > block && bytesFor(sizes) > bytes)
        sizes = sizesFor(sizes.columns - block);
    if (bytesFor(sizes) > bytes)
        sizes = leastSizes<A>();
    const long long rest = (bytes - bytesFor(sizes)) / Reaches<Tap>::bytesOfPlace(kernel);
    sizes.listedRows += static_cast<int>(std::clamp(rest, 0LL, dstRoi.height - 1LL));
    WorkBuffer work(scratch, 1);
    Strips<A, Tap, Channels>(kernel, source, scales, dstRoi, sizes, work).run(dst);
}

/// Sums of a row's samples fit 32 bits, and spread bytes 15 bits: no negative taps, no more of them than a normalised
/// kernel has, and no place with so little weight that the roundings of its samples count.
template <class T>
bool sumsAreNarrow(const NoxiPyramidLayerState &state, Nox32f leastWeight, int overlap) {
    if constexpr (std::is_integral_v<T>) {
        constexpr long long most = 8400;
        const auto *taps = static_cast<const Nox16s *>(state.kernel);
        long long sum = 0;
        for (int i = 0; i <= state.kernelSize; ++i) {
            if (taps[i] < 0)
                return false;
            sum += taps[i];
        }
        return sum <= most && leastWeight >= static_cast<Nox32f>(overlap);
    }
    return true;
}

/// What runStrips() needs at least.
template <class T, int Channels, class Tap>
long long leastBytes(const Kernel<Tap> &kernel, const Bordered<T> &source, NoxiSize dstRoi) {
    const long long plain = stripBytes<Plain<T>, Channels>(kernel, source, dstRoi, leastSizes<Plain<T>>());
    if constexpr (std::is_integral_v<T>)
        return std::max(plain, stripBytes<Wide<T>, Channels>(kernel, source, dstRoi, leastSizes<Wide<T>>()));
    return plain;
}

template <class T, int Channels>
NoxStatus layerUp(const Bordered<T> &source, Rows<T> dst, NoxiSize dstRoi, const NoxiPyramidLayerState &state) {
    using Tap = std::conditional_t<std::is_integral_v<T>, Nox16s, Nox32f>;
    const int places = std::max(dstRoi.width, dstRoi.height);
    const Kernel<Tap> kernel(static_cast<const Tap *>(state.kernel), state.kernelSize, state.rate, places);
    auto *const scales = reinterpret_cast<Nox32f *>(state.work);
    Nox8u *scratch = reinterpret_cast<Nox8u *>(scales + roundUp(places, 8)), *own = nullptr;
    long long bytes = (upLayerScratchWords(state, Channels) - roundUp(places, 8)) * static_cast<int>(sizeof(Nox32f));
    // Small images have little scratch in their state: too little for long kernels.
    constexpr int localBytes = 8192;
    alignas(32) Nox8u local[localBytes];
    if (bytes < localBytes) {
        scratch = local;
        bytes = localBytes;
    }
    const long long least = leastBytes<T, Channels>(kernel, source, dstRoi);
    if (bytes < least) {
        if (least > INT_MAX || (own = noxsMalloc_8u(static_cast<int>(least))) == nullptr)
            return noxStsNoMemory;
        scratch = own;
        bytes = least;
    }
    const Nox32f leastWeight = placeScales(kernel, scales, places, Scale<T>::weight, scratch, bytes);
    if (sumsAreNarrow<T>(state, leastWeight, kernel.overlap()))
        runStrips<Plain<T>, Channels>(kernel, source, scales, dst, dstRoi, scratch, bytes);
    else if constexpr (std::is_integral_v<T>)
        runStrips<Wide<T>, Channels>(kernel, source, scales, dst, dstRoi, scratch, bytes);
    noxsFree(own);
    return noxStsNoError;
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
    status = layerUp<T, Channels>(bordered, {dst, dstStep}, dstRoi, *state);
    noxsFree(copy);
    return status;
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
