// Bilinear interpolation for the processor tier that is being compiled; no include guard, see noxveachtier.h.

// ---- integer results ----

/// As many pixels as there are 16-bit lanes.
NOX_LANES U16 wordsOf(const Nox8u *from) {
#if NOX_LANES_BYTES == 32
    return (U16)_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from)));
#else
    return (U16)_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from)), _mm_setzero_si128());
#endif
}
NOX_LANES U16 wordsOf(const Nox16u *from) {
    return load<U16>(from) ^ Nox16u { 0x8000 };
}

/// The pixels of a row from some place on, and those one pixel later.
template <class S>
struct PixelPairs {
    U16 even, odd;

    NOX_LANES explicit PixelPairs(const S *from) : even(wordsOf(from)), odd(wordsOf(from + 1)) {}
};

NOX_LANES void storeWords(Nox16u *to, U16 words) { __builtin_memcpy(to, &words, sizeof(words)); }
NOX_LANES void storeWords(Nox8u *to, U16 words) {
#if NOX_LANES_BYTES == 32
    const auto all = (__m256i)words;
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to),
                     _mm_packus_epi16(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1)));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_packus_epi16((__m128i)words, (__m128i)words));
#endif
}

/// The lanes of even and odd in turn, saturated to signed 16 bits.
NOX_LANES U16 saturatedInTurn(S32 even, S32 odd) {
#if NOX_LANES_BYTES == 32
    const __m256i parted = _mm256_packs_epi32((__m256i)even, (__m256i)odd);
    return (U16)_mm256_unpacklo_epi16(parted, _mm256_srli_si256(parted, 8));
#else
    const __m128i parted = _mm_packs_epi32((__m128i)even, (__m128i)odd);
    return (U16)_mm_unpacklo_epi16(parted, _mm_srli_si128(parted, 8));
#endif
}

/// A vector of results at a time. small: all results fit 15 bits.
template <class S, class D, bool small>
class FixedVector {
public:
    NOX_LANES explicit FixedVector(const FixedConstants &c)
        : upper_((U16)(U32{} + c.upper)), lower_((U16)(U32{} + c.lower)), rounding_(U32{} + c.rounding),
          flip_(U16{} + static_cast<Nox16u>(c.flip)), shift_(S32{} + c.shift) {}

    NOX_LANES void operator()(const PixelPairs<S> &p, const PixelPairs<S> &q, D *to) const {
        const S32 even = sums(p.even, q.even), odd = sums(p.odd, q.odd);
        if constexpr (small)
            storeWords(to, (U16)(even | (odd << 16)));
        else
            storeWords(to, saturatedInTurn(even, odd) ^ flip_);
    }

private:
    NOX_LANES S32 sums(U16 p, U16 q) const {
        const auto sum = (S32)(sumsOfProducts(p, upper_) + sumsOfProducts(q, lower_) + rounding_);
        if constexpr (std::is_same_v<S, D>)
            return sum >> weightBits<S>;
        else
#if NOX_LANES_BYTES == 32
            return sum >> shift_;
#else
            return sum >> shift_[0];
#endif
    }

    U16 upper_, lower_;
    U32 rounding_;
    U16 flip_;
    S32 shift_;
};

constexpr int fixedLanes = lanesOf<Nox16u>;

/// Row by row, as an image lies in memory.
template <bool small, class S, class D>
NOX_LANES void fixedRows(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedConstants &constants) {
    const FixedVector<S, D, small> vector(constants);
    const int last = size.width - fixedLanes;
    for (int y = 0; y < size.height; ++y) {
        const S *p = src[y], *q = src[y + 1];
        D *d = dst[y];
        for (int x = 0; x < last; x += fixedLanes)
            vector(PixelPairs<S>(p + x), PixelPairs<S>(q + x), d + x);
        vector(PixelPairs<S>(p + last), PixelPairs<S>(q + last), d + last); // some of them once more
    }
}

/// Down in columns of a vector, so that each row is read and widened once: for patches, whose rows are all at hand.
template <bool small, class S, class D>
NOX_LANES void fixedColumns(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedConstants &constants) {
    const FixedVector<S, D, small> vector(constants);
    const int last = size.width - fixedLanes;
    for (int next = 0; next < size.width; next += fixedLanes) {
        const int x = next < last ? next : last; // the last ones, some of them once more
        PixelPairs<S> upper(src[0] + x);
        for (int y = 0; y < size.height; ++y) {
            const PixelPairs<S> lower(src[y + 1] + x);
            vector(upper, lower, dst[y] + x);
            upper = lower;
        }
    }
}

template <Order order, bool small, class S, class D>
NOX_LANES_TARGET void fixedResults(Rows<const S> src, Rows<D> dst, NoxiSize size, const FixedConstants &constants) {
    if constexpr (order == Order::rows)
        fixedRows<small>(src, dst, size, constants);
    else
        fixedColumns<small>(src, dst, size, constants);
}

// ---- float results ----

constexpr int floatLanes = lanesOf<Nox32f>;

/// Down in columns of a vector, as fixedColumns.
template <class S>
NOX_LANES_TARGET void floatColumns(Rows<const S> src, Rows<Nox32f> dst, NoxiSize size, const FloatBilinear &weights) {
    const F32 w00 = splat(weights.w00), w10 = splat(weights.w10), w01 = splat(weights.w01), w11 = splat(weights.w11);
    const int last = size.width - floatLanes;
    for (int next = 0; next < size.width; next += floatLanes) {
        const int x = next < last ? next : last;
        F32 p0 = floatsOf(src[0] + x), p1 = floatsOf(src[0] + x + 1);
        for (int y = 0; y < size.height; ++y) {
            const F32 q0 = floatsOf(src[y + 1] + x), q1 = floatsOf(src[y + 1] + x + 1);
            const F32 result = p0 * w00 + p1 * w10 + q0 * w01 + q1 * w11;
            __builtin_memcpy(dst[y] + x, &result, sizeof(result));
            p0 = q0;
            p1 = q1;
        }
    }
}
