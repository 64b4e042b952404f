// Sums of taps in single and double precision for the processor tier that is being compiled; no include guard, see
// noxveachtier.h. Some vectors of sums stay in registers while all taps pass by.

template <class Real>
using RealVector = std::conditional_t<std::is_same_v<Real, Nox32f>, F32, F64>;

/// As many elements as a vector of reals holds, converted.
template <class Real>
NOX_LANES RealVector<Real> realsOf(const Real *from) {
    return load<RealVector<Real>>(from);
}
template <class Real>
requires std::is_same_v<Real, Nox64f> NOX_LANES F64 realsOf(const Nox32f *from) {
#if NOX_LANES_BYTES == 32
    return (F64)_mm256_cvtps_pd(_mm_loadu_ps(from));
#else
    return (F64)_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from))));
#endif
}
template <class Real>
requires std::is_same_v<Real, Nox64f> NOX_LANES F64 realsOf(const Nox16s *from) {
#if NOX_LANES_BYTES == 32
    return (F64)_mm256_cvtepi32_pd(_mm_cvtepi16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from))));
#else
    int two = 0;
    __builtin_memcpy(&two, from, sizeof(two));
    const __m128i words = _mm_cvtsi32_si128(two);
    return (F64)_mm_cvtepi32_pd(_mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16));
#endif
}

/// Some vectors of sums, j ascending, from the first product on.
template <int vectors, class Real>
struct Sums {
    static constexpr int lanes = lanesOf<Real>, length = vectors * lanes;
    RealVector<Real> sum[vectors];

    template <class Window, class Tap>
    NOX_LANES Sums(const Window &window, const Tap *taps, int tapCount) {
        start(window[0], splat(static_cast<Real>(taps[0])));
        for (int j = 1; j < tapCount; ++j)
            add(window[j], splat(static_cast<Real>(taps[j])));
    }
    NOX_LANES void store(Real *to) const {
        NOX_UNROLLED for (int v = 0; v < vectors; ++v) __builtin_memcpy(to + v * lanes, &sum[v], sizeof(sum[v]));
    }

private:
    template <class T>
    NOX_LANES void start(const T *line, RealVector<Real> weight) {
        NOX_UNROLLED for (int v = 0; v < vectors; ++v) sum[v] = realsOf<Real>(line + v * lanes) * weight;
    }
    template <class T>
    NOX_LANES void add(const T *line, RealVector<Real> weight) {
        __asm__("" : "+r"(line)); // one address, and not a register for each vector's
        NOX_UNROLLED for (int v = 0; v < vectors; ++v) sum[v] += realsOf<Real>(line + v * lanes) * weight;
    }
};

/// One sum.
template <class Real, class Window, class Tap>
NOX_LANES Real sumOne(const Window &window, const Tap *taps, int tapCount) {
    // The linter does not see that the elements under the taps have been converted.
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
    Real sum = static_cast<Real>(window[0][0]) * static_cast<Real>(taps[0]);
    for (int j = 1; j < tapCount; ++j)
        sum += static_cast<Real>(window[j][0]) * static_cast<Real>(taps[j]);
    return sum;
}

template <class Real, class Window, class Tap>
NOX_LANES_TARGET void sumReals(const Window &window, const Tap *taps, int tapCount, Real *sums, int count) {
    using Six = Sums<6, Real>;
    using One = Sums<1, Real>;
    int x = 0;
    for (; x <= count - Six::length; x += Six::length)
        Six(window.from(x), taps, tapCount).store(sums + x);
    for (; x <= count - One::length; x += One::length)
        One(window.from(x), taps, tapCount).store(sums + x);
    for (; x < count; ++x)
        sums[x] = sumOne<Real>(window.from(x), taps, tapCount);
}

/// Stores a vector of sums in single precision, and tells it.
NOX_LANES __m128 storeRounded(Nox32f *to, F64 sum) {
#if NOX_LANES_BYTES == 32
    const __m128 rounded = _mm256_cvtpd_ps((__m256d)sum);
    _mm_storeu_ps(to, rounded);
#else
    const __m128 rounded = _mm_cvtpd_ps((__m128d)sum);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_castps_si128(rounded));
#endif
    return rounded;
}

/// Rounds sums to single precision and gathers whether one is doubtful, as roundsDoubtfully() tells. The low words of
/// the sums are tested in 32-bit lanes.
class Rounding {
public:
    NOX_LANES explicit Rounding(Nox32f certain) : certain_(_mm_castps_si128(_mm_set1_ps(certain))) {}

    NOX_LANES void operator()(F64 sum, Nox32f *to) {
        const U32 added = (U32)(U64{} + midpointBias), kept = (U32)(U64{} + midpointMask);
        atMidpoint_ |= (U32)((((U32)sum + added) & kept) == 0);
        const __m128 rounded = storeRounded(to, sum);
        const __m128i magnitude = _mm_and_si128(_mm_castps_si128(rounded), _mm_set1_epi32(0x7fffffff));
        small_ = _mm_or_si128(small_, _mm_cmplt_epi32(magnitude, certain_));
    }
    NOX_LANES bool doubtful() const {
        const U64 low = (U64)atMidpoint_ & 0xFFFFFFFFU;
        // The upper half of a short vector's floats are zeros, which are no sums.
        constexpr int floats = (1 << lanesOf<Nox64f>)-1;
        return any((U8)low) || (_mm_movemask_ps(_mm_castsi128_ps(small_)) & floats) != 0;
    }

private:
    U32 atMidpoint_{};
    __m128i small_ = _mm_setzero_si128(), certain_;
};

/// Sums that are exact, rounded to single precision.
template <class Window>
NOX_LANES_TARGET void roundExactSums(const Window &window, const Nox32f *taps, int tapCount, Nox32f *dst, int count) {
    using Four = Sums<4, Nox64f>;
    int x = 0;
    for (; x <= count - Four::length; x += Four::length) {
        const Four four(window.from(x), taps, tapCount);
        NOX_UNROLLED for (int v = 0; v < 4; ++v) storeRounded(dst + x + v * Four::lanes, four.sum[v]);
    }
    for (; x < count; ++x)
        dst[x] = static_cast<Nox32f>(sumOne<Nox64f>(window.from(x), taps, tapCount));
}

/// Sums rounded to single precision; true when one of them is doubtful.
template <class Window>
NOX_LANES_TARGET bool roundSums(const Window &window, const Nox32f *taps, int tapCount, Nox32f *dst, int count,
                                Nox32f certain) {
    using Four = Sums<4, Nox64f>;
    using One = Sums<1, Nox64f>;
    Rounding rounding(certain);
    int x = 0;
    for (; x <= count - Four::length; x += Four::length) {
        const Four four(window.from(x), taps, tapCount);
        NOX_UNROLLED for (int v = 0; v < 4; ++v) rounding(four.sum[v], dst + x + v * Four::lanes);
    }
    for (; x <= count - One::length; x += One::length)
        rounding(One(window.from(x), taps, tapCount).sum[0], dst + x);
    bool doubtful = rounding.doubtful();
    for (; x < count; ++x) {
        const Nox64f sum = sumOne<Nox64f>(window.from(x), taps, tapCount);
        dst[x] = static_cast<Nox32f>(sum);
        doubtful |= roundsDoubtfully(sum, dst[x], certain);
    }
    return doubtful;
}

/// Two rows of single-precision sums, one line apart: the lines that they share are read once. There are tapCount + 1
/// lines and, in weights, each tap in all lanes of a vector.
template <int vectors>
NOX_LANES void sumTwoRows(const Nox32f *const *lines, int x, const F32 *weights, int tapCount, Nox32f *first,
                          Nox32f *second) {
    constexpr int lanes = lanesOf<Nox32f>;
    F32 upper[vectors], lower[vectors];
    NOX_UNROLLED for (int v = 0; v < vectors; ++v) {
        upper[v] = load<F32>(lines[0] + x + v * lanes) * weights[0];
        const F32 next = load<F32>(lines[1] + x + v * lanes);
        upper[v] += next * weights[1];
        lower[v] = next * weights[0];
    }
    int j = 2;
    do {
        const Nox32f *line = lines[j] + x;
        __asm__("" : "+r"(line));
        NOX_UNROLLED for (int v = 0; v < vectors; ++v) {
            const F32 next = load<F32>(line + v * lanes);
            upper[v] += next * weights[j];
            lower[v] += next * weights[j - 1];
        }
    } while (++j < tapCount);
    NOX_UNROLLED for (int v = 0; v < vectors; ++v) {
        lower[v] += load<F32>(lines[tapCount] + x + v * lanes) * weights[tapCount - 1];
        __builtin_memcpy(first + x + v * lanes, &upper[v], sizeof(F32));
        __builtin_memcpy(second + x + v * lanes, &lower[v], sizeof(F32));
    }
}

/// For 3 to mostPairTaps taps.
NOX_LANES_TARGET inline void sumRowPair(const Nox32f *const *lines, const Nox32f *taps, int tapCount, Nox32f *first,
                                        Nox32f *second, int count) {
    constexpr int lanes = lanesOf<Nox32f>, vectors = 2;
    F32 weights[mostPairTaps];
    for (int j = 0; j < tapCount; ++j)
        weights[j] = splat(taps[j]);
    int x = 0;
    for (; x <= count - vectors * lanes; x += vectors * lanes)
        sumTwoRows<vectors>(lines, x, weights, tapCount, first, second);
    for (; x < count; ++x) {
        first[x] = sumOne<Nox32f>(ColumnWindow<Nox32f>{lines, x}, taps, tapCount);
        second[x] = sumOne<Nox32f>(ColumnWindow<Nox32f>{lines + 1, x}, taps, tapCount);
    }
}

template <class T>
NOX_LANES_TARGET void convertLine(const T *from, Nox64f *__restrict to, int count) {
    for (int x = 0; x < count; ++x)
        to[x] = from[x];
}
