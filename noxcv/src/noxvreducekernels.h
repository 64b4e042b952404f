// Kernels of the reductions for the processor tier that is being compiled; no include guard, see noxveachtier.h.
//
// Integers and extrema do not depend on the order of pixels, so a walk feeds whole vectors of pixels to a kernel. A
// kernel has step(a, b, off), which takes in one vector of each image and the lanes that do not count, and
// widen(steps), called after at most `longestRun` steps, which moves narrow partial sums to 64 bits. Float sums do
// depend on the order: four single-precision lanes a row, pixel x in lane x modulo 4, which join the running sums in
// extended precision when the row ends; so several rows run side by side.

// --- pixels ---

/// Steps between two calls of widen(): sums of two bytes fit 16 bits in as many.
constexpr int longestRun = 128;
/// Pixels that are picked out of an interleaved image at a time.
constexpr int lineLength = 512;

template <class T, int channels>
struct Line {
    alignas(vectorBytes) T pixels[lineLength];
};
template <class T>
struct Line<T, 1> {};

/// Every third element. A function of its own, since its loop is long and serves every kernel.
template <class T>
[[gnu::noinline]] NOX_LANES_TARGET void pickThird(const T *from, int n, T *to) {
    for (int i = 0; i < n; ++i)
        to[i] = from[static_cast<std::ptrdiff_t>(i) * 3];
}

/// n pixels of one channel from pixel x on: in place, or picked out into a line.
template <class T, int channels>
NOX_LANES const T *pixelsOf(const T *row, int x, int n, int channel, Line<T, channels> &line) {
    if constexpr (channels == 1) {
        return row + x;
    } else {
        static_assert(channels == 3);
        pickThird(row + static_cast<std::ptrdiff_t>(x) * channels + channel, n, line.pixels);
        return line.pixels;
    }
}

/// Kernels that take turns in a walk: a comparison of floats takes some cycles, and the next need not wait for it.
template <class T>
constexpr int turns = std::is_same_v<T, Nox32f> ? 3 : 1;

/// One line of pixels through kernels that take turns.
template <class T, bool two, bool masked, class Kernel>
NOX_LANES void walkLine(const T *a, const T *b, const Nox8u *mask, int n, Kernel (&kernels)[turns<T>]) {
    using V = typename VectorOf<T>::Type;
    constexpr int lanes = lanesOf<T>, group = turns<T> * lanes;
    Kernel &kernel = kernels[0];
    int x = 0, steps = n / lanes;
    for (; x <= n - group; x += group)
        NOX_UNROLLED for (int i = 0; i < turns<T>; ++i) {
            const int at = x + i * lanes;
            const V v = load<V>(a + at);
            kernels[i].step(v, two ? load<V>(b + at) : v, masked ? offLanes<T>(mask + at) : U8{});
        }
    for (; turns < T >> 1 && x <= n - lanes; x += lanes) {
        const V v = load<V>(a + x);
        kernel.step(v, two ? load<V>(b + x) : v, masked ? offLanes<T>(mask + x) : U8{});
    }
    if (x < n) {
        const V v = load<V>(Tail<T>(a + x, n - x).pixels);
        kernel.step(v, two ? load<V>(Tail<T>(b + x, n - x).pixels) : v, offTail<T, masked>(mask + x, n - x));
        ++steps;
    }
    kernel.widen(steps);
}

/// True when the rows of a region follow each other without a gap and may be taken as one.
template <class T, int channels, bool two, bool masked>
NOX_LANES bool isPacked(const Region<T> &region) {
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(region.width) * channels * static_cast<int>(sizeof(T));
    return region.src1.step == row && (!two || region.src2.step == row) &&
           (!masked || region.mask.step == region.width) &&
           static_cast<long long>(region.width) * region.height * channels <= INT_MAX;
}

/// All pixels of a region through a kernel.
template <class T, int channels, bool two, bool masked, class Kernel>
NOX_LANES void walk(const Region<T> &region, Kernel &kernel) {
    constexpr int run = channels == 1 ? longestRun * lanesOf<T> : lineLength;
    static_assert(run <= longestRun * lanesOf<T>);
    const bool packed = isPacked<T, channels, two, masked>(region);
    const int width = packed ? region.width * region.height : region.width, height = packed ? 1 : region.height;
    Line<T, channels> line1, line2;
    Kernel kernels[turns<T>];
    for (auto &each : kernels)
        each = kernel;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width;) {
            const int n = std::min(run, width - x);
            const T *a = pixelsOf<T, channels>(region.src1[y], x, n, region.channel, line1);
            const T *b = two ? pixelsOf<T, channels>(region.src2[y], x, n, region.channel, line2) : a;
            walkLine<T, two, masked>(a, b, masked ? region.mask[y] + x : nullptr, n, kernels);
            x += n;
        }
    kernel = kernels[0];
    if constexpr (turns < T >> 1)
        for (int i = 1; i < turns<T>; ++i)
            kernel.join(kernels[i]);
}

/// All pixels of an unmasked interleaved region of bytes through a kernel, without picking them out: the lanes of the
/// other channels are off. Three vectors hold whole pixels.
template <class T, class Kernel>
NOX_LANES void walkInterleaved(const Region<T> &region, Kernel &kernel) {
    constexpr int run = longestRun / 3 * 3 * vectorBytes;
    U8 off[3];
    for (int i = 0; i < 3; ++i)
        off[i] = ~load<U8>(noxvCoiMaskA[region.channel] + i * vectorBytes % 3);
    const bool packed = isPacked<T, 3, false, false>(region);
    const int height = packed ? 1 : region.height;
    const long long bytes = 3LL * region.width * (packed ? region.height : 1);
    for (int y = 0; y < height; ++y)
        for (long long first = 0; first < bytes; first += run) {
            const T *from = region.src1[y] + static_cast<std::ptrdiff_t>(first);
            const int n = static_cast<int>(std::min<long long>(run, bytes - first));
            int x = 0, steps = n / (3 * vectorBytes) * 3;
            for (; x <= n - 3 * vectorBytes; x += 3 * vectorBytes)
                for (int i = 0; i < 3; ++i) {
                    const U8 v = load<U8>(from + x + i * vectorBytes);
                    kernel.step(v, v, off[i]);
                }
            for (int i = 0; x < n; x += vectorBytes, ++i, ++steps)
                if (n - x >= vectorBytes) {
                    const U8 v = load<U8>(from + x);
                    kernel.step(v, v, off[i]);
                } else {
                    const U8 v = load<U8>(Tail<T>(from + x, n - x).pixels);
                    kernel.step(v, v, off[i] | offTail<T, false>(nullptr, n - x));
                }
            kernel.widen(steps);
        }
}

/// The faster of the two walks over one image.
template <class T, int channels, bool masked, class Kernel>
NOX_LANES void walkOne(const Region<T> &region, Kernel &kernel) {
    if constexpr (sizeof(T) == 1 && channels == 3 && !masked)
        walkInterleaved(region, kernel);
    else
        walk<T, channels, false, masked>(region, kernel);
}

// --- what is measured of a pixel ---

/// |a| in unsigned lanes.
template <class T, class V>
NOX_LANES V magnitude(V a) {
    if constexpr (std::is_same_v<T, Nox8s>)
        return smaller<V>(a, -a); // 256 - a is the smaller one for negative a
    else if constexpr (std::is_same_v<T, Nox32f>)
        return (V)((U32)a & 0x7FFFFFFFU);
    else
        return a;
}

/// Pixels as unsigned lanes in the same order; signed bytes lie 128 higher.
template <class T, class V>
NOX_LANES V level(V a) {
    if constexpr (std::is_same_v<T, Nox8s>)
        return a ^ 0x80;
    else
        return a;
}

/// |a - b| in unsigned lanes.
template <class T, class V>
NOX_LANES V difference(V a, V b) {
    if constexpr (std::is_same_v<T, Nox32f>)
        return magnitude<T, V>(a - b);
    else
        return larger<V>(level<T, V>(a), level<T, V>(b)) - smaller<V>(level<T, V>(a), level<T, V>(b));
}

// --- integer and extremal accumulators ---

/// The largest lane.
template <class T>
struct Largest {
    typename VectorOf<T>::Type best = {};

    NOX_LANES void add(typename VectorOf<T>::Type v) { best = larger(v, best); }
    NOX_LANES void widen(int) {}
    NOX_LANES auto result() const { return largestLane(best); }
};

/// The number of lanes that are on.
template <class T>
struct Count {
    U64 off = {};
    std::int64_t lanes = 0;

    NOX_LANES void add(U8 offMask) { off += sumsOfBytes(offMask); }
    NOX_LANES void widen(int steps) { lanes += static_cast<std::int64_t>(steps) * lanesOf<T>; }
    NOX_LANES std::int64_t result() const {
        return lanes - static_cast<std::int64_t>(sumOfLanes(off) / (255 * sizeof(T)));
    }
};

/// Sum and sum of squares of 8-bit lanes, from pairs: (a + b)^2 + (a - b)^2 = 2 (a^2 + b^2). An unused one of the two
/// costs nothing.
template <class T>
struct Sums {
    U16 levels16 = {};
    U32 squares32 = {};
    U64 levels64 = {}, squares64 = {};

    NOX_LANES void add(U8 v) {
        const U16 sums = pairSums(v), differences = pairDifferences(v);
        levels16 += sums;
        squares32 += sumsOfProducts(sums, sums);
        squares32 += sumsOfProducts(differences, differences);
    }
    NOX_LANES void widen(int) {
        levels64 = addHalves(levels64, sumsOfPairs(levels16));
        squares64 = addHalves(squares64, squares32);
        levels16 = U16{};
        squares32 = U32{};
    }
    NOX_LANES std::uint64_t sum() const { return sumOfLanes(levels64); }
    NOX_LANES std::uint64_t squares() const { return sumOfLanes(squares64) / 2; }
};

/// Of 16-bit lanes: with s = v - 32768, the sum of two s^2 fits 32 unsigned bits, and v^2 = s^2 + 65536 v - 2^30.
template <>
struct Sums<Nox16u> {
    U32 sum32 = {};
    U64 sum64 = {}, pairs = {}, highHalves = {};
    std::uint64_t lanes = 0;

    NOX_LANES void add(U16 v) {
        const U16 s = v ^ 0x8000;
        const U64 pair = (U64)sumsOfProducts(s, s);
        pairs += pair;
        highHalves += pair >> 32;
        sum32 += sumsOfProducts(s, U16{} + 1);
    }
    NOX_LANES void widen(int steps) {
        sum64 = addHalves(sum64, sum32 + 65536U * static_cast<Nox32u>(steps));
        sum32 = U32{};
        lanes += static_cast<std::uint64_t>(steps) * lanesOf<Nox16u>;
    }
    NOX_LANES std::uint64_t sum() const { return sumOfLanes(sum64); }
    NOX_LANES std::uint64_t squares() const {
        const std::uint64_t high = sumOfLanes(highHalves), low = sumOfLanes(pairs) - (high << 32);
        return low + high + (sum() << 16) - (lanes << 30);
    }
};

// --- float sums ---

/// |a|, |a - b|, or their squares; of the relative form also those of b.
template <Form form, Norm norm>
struct NormTerms {
    static constexpr int count = resultsOf<form>;

    NOX_LANES static F32 measure(F32 v) { return norm == Norm::L1 ? magnitude<Nox32f, F32>(v) : v * v; }
    NOX_LANES void apply(F32 a, F32 b, F32 *terms) const {
        terms[0] = measure(form == Form::Norm ? a : a - b);
        if constexpr (form == Form::NormRel)
            terms[1] = measure(b);
    }
};

template <bool squares>
struct MeanTerms {
    static constexpr int count = squares ? 2 : 1;

    NOX_LANES void apply(F32 a, F32, F32 *terms) const {
        terms[0] = a;
        if constexpr (squares)
            terms[1] = a * a;
    }
};

struct CentredTerms {
    static constexpr int count = 1;
    Nox32f mean;

    NOX_LANES void apply(F32 a, F32, F32 *terms) const { terms[0] = (a - mean) * (a - mean); }
};

/// Vectors of rows that run side by side, to hide the time of an addition.
constexpr int rowVectors = 2;
constexpr int rowsTogether = rowVectors * rowsPerVector;
template <class Terms>
using Lanes = F32[rowVectors][Terms::count];

struct RowPointers {
    const Nox32f *a[rowsTogether], *b[rowsTogether];
    const Nox8u *mask[rowsTogether];
};

/// Adds the terms of pixels x to x + 3 of all rows to the lanes.
template <class Terms, bool two, bool masked>
NOX_LANES void addTerms(const Terms &terms, const RowPointers &rows, int x, Lanes<Terms> &lanes) {
    for (int i = 0; i < rowVectors; ++i) {
        const int first = i * rowsPerVector;
        const F32 a = loadRows(rows.a + first, x);
        F32 term[Terms::count];
        terms.apply(a, two ? loadRows(rows.b + first, x) : a, term);
        for (int t = 0; t < Terms::count; ++t)
            lanes[i][t] += masked ? clearOff(term[t], offRows(rows.mask + first, x)) : term[t];
    }
}

/// Adds the terms of the last n pixels, 1 to 3, of all rows.
template <class Terms, bool two, bool masked>
NOX_LANES void addLastTerms(const Terms &terms, const RowPointers &rows, int x, int n, Lanes<Terms> &lanes) {
    Nox32f a[rowsTogether][4] = {}, b[rowsTogether][4] = {};
    Nox8u mask[rowsTogether][4] = {};
    RowPointers last;
    for (int row = 0; row < rowsTogether; ++row) {
        copyFew<4>(a[row], rows.a[row] + x, n);
        if (two)
            copyFew<4>(b[row], rows.b[row] + x, n);
        copyFew<4>(mask[row], masked ? rows.mask[row] + x : onThenOff.bytes, n);
        last.a[row] = a[row];
        last.b[row] = b[row];
        last.mask[row] = mask[row];
    }
    addTerms<Terms, two, true>(terms, last, 0, lanes);
}

/// Sums of the terms of all pixels. Terms::apply gives Terms::count vectors of terms for the pixels of both images.
template <class Terms, int channels, bool two, bool masked>
NOX_LANES Slots<Nox64f, Terms::count> sumFloats(const Region<Nox32f> &region, const Terms &terms) {
    constexpr int run = channels == 1 ? INT_MAX : lineLength / 4;
    long double totals[Terms::count] = {};
    Line<Nox32f, channels> line1[rowsTogether], line2[rowsTogether];
    for (int y = 0; y < region.height; y += rowsTogether) {
        Lanes<Terms> lanes = {};
        for (int first = 0; first < region.width;) {
            const int n = std::min(run, region.width - first);
            RowPointers rows;
            for (int row = 0; row < rowsTogether; ++row) {
                const int from = std::min(y + row, region.height - 1); // a missing row is read again and not counted
                rows.a[row] = pixelsOf<Nox32f, channels>(region.src1[from], first, n, region.channel, line1[row]);
                rows.b[row] = two ? pixelsOf<Nox32f, channels>(region.src2[from], first, n, region.channel, line2[row])
                                  : rows.a[row];
                rows.mask[row] = masked ? region.mask[from] + first : nullptr;
            }
            int x = 0;
            for (; x <= n - 4; x += 4)
                addTerms<Terms, two, masked>(terms, rows, x, lanes);
            if (x < n)
                addLastTerms<Terms, two, masked>(terms, rows, x, n - x, lanes);
            first += n;
        }
        for (int row = 0; row < std::min(rowsTogether, region.height - y); ++row)
            for (int t = 0; t < Terms::count; ++t) {
                const F32 &four = lanes[row / rowsPerVector][t];
                const int lane = row % rowsPerVector * 4;
                totals[t] += (static_cast<long double>(four[lane]) + four[lane + 1]) +
                             (static_cast<long double>(four[lane + 2]) + four[lane + 3]);
            }
    }
    Slots<Nox64f, Terms::count> sums;
    for (int t = 0; t < Terms::count; ++t)
        sums.value[t] = static_cast<Nox64f>(totals[t]);
    return sums;
}

// --- norms ---

template <class T, Norm norm>
struct Measure {
    Sums<T> sums;
    NOX_LANES void add(typename VectorOf<T>::Type v) { sums.add(v); }
    NOX_LANES void widen(int steps) { sums.widen(steps); }
    NOX_LANES NormValue<T, norm> result() const {
        if constexpr (norm == Norm::L2)
            return sums.squares();
        else if constexpr (sizeof(T) == 1) // a sum of bytes is a signed 32-bit number that wraps
            return static_cast<Nox32s>(static_cast<Nox32u>(sums.sum()));
        else
            return static_cast<std::int64_t>(sums.sum());
    }
};
template <class T>
struct Measure<T, Norm::Inf> {
    Largest<T> largest;
    NOX_LANES void add(typename VectorOf<T>::Type v) { largest.add(v); }
    NOX_LANES void widen(int) {}
    NOX_LANES void join(const Measure &other) { largest.add(other.largest.best); }
    NOX_LANES NormValue<T, Norm::Inf> result() const { return largest.result(); }
};

template <class T, Form form, Norm norm>
struct NormKernel {
    Measure<T, norm> measures[resultsOf<form>];

    template <class V>
    NOX_LANES void step(V a, V b, U8 off) {
        measures[0].add(clearOff(form == Form::Norm ? magnitude<T, V>(a) : difference<T, V>(a, b), off));
        if constexpr (form == Form::NormRel)
            measures[1].add(clearOff(magnitude<T, V>(b), off));
    }
    NOX_LANES void widen(int steps) {
        for (auto &measure : measures)
            measure.widen(steps);
    }
    NOX_LANES void join(const NormKernel &other) {
        for (int i = 0; i < resultsOf<form>; ++i)
            measures[i].join(other.measures[i]);
    }
};

/// The measures of one block of rows.
template <class T, Form form, Norm norm, int channels>
NOX_LANES_TARGET NormSlots<T, form, norm> normBlock(const Region<T> &region) {
    constexpr bool two = form != Form::Norm;
    NormSlots<T, form, norm> slots;
    if constexpr (std::is_same_v<T, Nox32f> && norm != Norm::Inf) {
        return sumFloats<NormTerms<form, norm>, channels, two, true>(region, {});
    } else {
        NormKernel<T, form, norm> kernel;
        walk<T, channels, two, true>(region, kernel);
        for (int i = 0; i < resultsOf<form>; ++i)
            slots.value[i] = kernel.measures[i].result();
    }
    return slots;
}

// --- means ---

/// Counts alone.
struct OnKernel {
    Count<Nox8u> count;

    NOX_LANES void step(U8, U8, U8 off) { count.add(off); }
    NOX_LANES void widen(int steps) { count.widen(steps); }
};

template <class T>
struct MeanKernel {
    Sums<T> sums;
    Count<T> count;

    template <class V>
    NOX_LANES void step(V a, V, U8 off) {
        sums.add(clearOff(level<T, V>(a), off));
        count.add(off);
    }
    NOX_LANES void widen(int steps) {
        sums.widen(steps);
        count.widen(steps);
    }
};

/// Number of pixels under the mask; all of them where there is none.
template <bool masked, class T>
NOX_LANES_TARGET std::int64_t countPixels(const Region<T> &region) {
    if constexpr (!masked)
        return static_cast<std::int64_t>(region.width) * region.height;
    const Rows<const Nox8u> none = {nullptr, 0};
    const Region<Nox8u> bytes = {region.mask, none, region.mask, region.width, region.height, 0};
    OnKernel kernel;
    walk<Nox8u, 1, false, true>(bytes, kernel);
    return kernel.count.result();
}

/// Sum, sum of squares (where asked for) and number of the pixels of one block of rows.
template <class T, int channels, bool masked, bool squares>
NOX_LANES_TARGET MeanSlots<T> meanBlock(const Region<T> &region) {
    if constexpr (std::is_same_v<T, Nox32f>) {
        const auto sums = sumFloats<MeanTerms<squares>, channels, false, masked>(region, {});
        return {sums.value[0], sums.value[squares ? 1 : 0], countPixels<masked>(region)};
    } else {
        MeanKernel<T> kernel;
        walkOne<T, channels, masked>(region, kernel);
        const std::int64_t count = masked ? kernel.count.result() : countPixels<false>(region);
        const auto sum = static_cast<std::int64_t>(kernel.sums.sum());
        const std::uint64_t squareSum = squares ? kernel.sums.squares() : 0;
        if constexpr (std::is_same_v<T, Nox8s>) // levels lie 128 above the pixels
            return {sum - 128 * count, squareSum - static_cast<std::uint64_t>(256 * sum - 16384 * count), count};
        else
            return {sum, squareSum, count};
    }
}

/// Sum of (pixel - mean)^2 of one block of rows.
template <int channels, bool masked>
NOX_LANES_TARGET Slots<Nox64f, 1> centredSquares(const Region<Nox32f> &region, Nox32f mean) {
    return sumFloats<CentredTerms, channels, false, masked>(region, {mean});
}

// --- extrema ---

template <class T>
struct ExtremaKernel {
    using V = typename VectorOf<T>::Type;
    V low = {}, high = {};

    ExtremaKernel() = default;
    NOX_LANES explicit ExtremaKernel(const Extrema<T> &best) : low(V{} + best.low), high(V{} + best.high) {}
    NOX_LANES void step(V a, V, U8 off) {
        const V v = level<T, V>(a);
        low = smaller(fillOff(v, off), low);
        high = larger(std::is_same_v<T, Nox32f> ? fillOff(v, off) : clearOff(v, off), high);
    }
    NOX_LANES void widen(int) {}
    NOX_LANES void join(const ExtremaKernel &other) {
        low = smaller(other.low, low);
        high = larger(other.high, high);
    }
};

/// Smallest and largest level of a block of rows with, for each, the first of the rows in which it was looked for and
/// found better than all before. Short rows are taken some together: enough of them to fill a few thousand bytes, but
/// no more than a quarter of the block, since the position is searched for in them afterwards.
template <class T, int channels, bool masked>
NOX_LANES_TARGET Extrema<T> extremaBlock(const Region<T> &region) {
    constexpr int bytesTogether = 8192;
    const long long rowBytes = static_cast<long long>(region.width) * channels * static_cast<int>(sizeof(T));
    const int together =
        static_cast<int>(std::clamp(bytesTogether / rowBytes, 1LL, std::max(1LL, region.height / 4LL)));
    Extrema<T> best;
    for (int y = 0; y < region.height; y += together) {
        ExtremaKernel<T> kernel(best);
        walkOne<T, channels, masked>(region.rows(y, std::min(together, region.height - y)), kernel);
        if (any((U8)(kernel.low < best.low))) {
            best.low = smallestLane(kernel.low);
            best.lowRow = y;
        }
        if (any((U8)(kernel.high > best.high))) {
            best.high = largestLane(kernel.high);
            best.highRow = y;
        }
    }
    return best;
}

/// The first of n pixels that is under the mask and equals value, or n.
template <class T, bool masked>
NOX_LANES int firstInLine(const T *a, const Nox8u *mask, int n, T value) {
    using V = typename VectorOf<T>::Type;
    const V wanted = V{} + static_cast<Level<T>>(value);
    int x = 0;
    for (; x <= n - lanesOf<T>; x += lanesOf<T>)
        if (any(clearOff((U8)(load<V>(a + x) == wanted), masked ? offLanes<T>(mask + x) : U8{})))
            break;
    while (x < n && ((masked && mask[x] == 0) || a[x] != value))
        ++x;
    return x;
}

/// The first pixel in raster order, from row `row` on, that is under the mask and equals value; x is -1 when there is
/// none.
template <class T, int channels, bool masked>
NOX_LANES_TARGET NoxiPoint firstEqual(const Region<T> &region, int row, T value) {
    constexpr int run = channels == 1 ? INT_MAX : lineLength;
    Line<T, channels> line;
    for (int y = row; y < region.height; ++y)
        for (int x = 0; x < region.width;) {
            const int n = std::min(run, region.width - x);
            const T *a = pixelsOf<T, channels>(region.src1[y], x, n, region.channel, line);
            const int found = firstInLine<T, masked>(a, masked ? region.mask[y] + x : nullptr, n, value);
            if (found < n)
                return {x + found, y};
            x += n;
        }
    return {-1, -1};
}
