// Vectors of the processor tier that is being compiled. No include guard: noxveachtier.h includes this once per tier,
// inside that tier's namespace, with NOX_LANES_BYTES (16 or 32) and NOX_LANES_TARGET (the function attribute) defined;
// NOX_LANES marks helpers that become part of a kernel. Comparisons give lanes of all ones or all zeros; lanes are
// reinterpreted by a cast.

constexpr int vectorBytes = NOX_LANES_BYTES;
constexpr int rowsPerVector = vectorBytes / 16; ///< how many rows' four-lane sums one vector holds

using U8 [[gnu::vector_size(vectorBytes)]] = Nox8u;
using U16 [[gnu::vector_size(vectorBytes)]] = Nox16u;
using U32 [[gnu::vector_size(vectorBytes)]] = Nox32u;
using U64 [[gnu::vector_size(vectorBytes)]] = std::uint64_t;
using S32 [[gnu::vector_size(vectorBytes)]] = Nox32s;
using F32 [[gnu::vector_size(vectorBytes)]] = Nox32f;
using F64 [[gnu::vector_size(vectorBytes)]] = Nox64f;

/// The vector that elements of T are loaded into; signed bytes are handled as unsigned ones.
template <class T>
struct VectorOf;
template <>
struct VectorOf<Nox8u> {
    using Type = U8;
};
template <>
struct VectorOf<Nox8s> {
    using Type = U8;
};
template <>
struct VectorOf<Nox16u> {
    using Type = U16;
};
template <>
struct VectorOf<Nox32f> {
    using Type = F32;
};
template <class T>
constexpr int lanesOf = vectorBytes / static_cast<int>(sizeof(T));

template <class V>
NOX_LANES V load(const void *from) {
    V v;
    __builtin_memcpy(&v, from, sizeof(v));
    return v;
}

/// body(x) for vectors of `lanes` results that together are those from x to `count`; the last ones may overlap. On its
/// way the loop asks for what comes next.
template <int lanes, class Next, class Body>
NOX_LANES void forVectors(int x, int count, Next ahead, const Body &body) {
    for (; x <= count - lanes; x += lanes) {
        ahead.ask(lanes);
        body(x);
    }
    if (x < count)
        body(count - lanes);
}
/// The same for all results of a row. Stores that straddle cache lines cost more than a vector, so in long rows all but
/// the first and the last are stored where `to` is aligned.
template <int lanes, class T, class Next, class Body>
NOX_LANES void forAlignedVectors(const T *to, int count, Next ahead, const Body &body) {
    int x = 0;
    if (count >= 16 * lanesOf<T>) {
        body(0);
        x = static_cast<int>((-reinterpret_cast<std::uintptr_t>(to) & (vectorBytes - 1)) / sizeof(T));
    }
    forVectors<lanes>(x, count, ahead, body);
}

/// The larger lanes; a not-a-number in v is passed over.
template <class V>
NOX_LANES V larger(V v, V best) {
    return v > best ? v : best;
}
NOX_LANES F32 larger(F32 v, F32 best) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_max_ps((__m256)v, (__m256)best);
#else
    return (F32)_mm_max_ps((__m128)v, (__m128)best);
#endif
}

/// The smaller lanes; a not-a-number in v is passed over.
template <class V>
NOX_LANES V smaller(V v, V best) {
    return v < best ? v : best;
}
NOX_LANES F32 smaller(F32 v, F32 best) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_min_ps((__m256)v, (__m256)best);
#else
    return (F32)_mm_min_ps((__m128)v, (__m128)best);
#endif
}

/// Sums of the absolute differences of eight bytes each.
NOX_LANES U64 sumsOfDifferences(U8 a, U8 b) {
#if NOX_LANES_BYTES == 32
    return (U64)_mm256_sad_epu8((__m256i)a, (__m256i)b);
#else
    return (U64)_mm_sad_epu8((__m128i)a, (__m128i)b);
#endif
}

/// Sums of eight bytes each.
NOX_LANES U64 sumsOfBytes(U8 v) { return sumsOfDifferences(v, U8{}); }

/// Sums of two bytes each.
NOX_LANES U16 pairSums(U8 v) {
#if NOX_LANES_BYTES == 32
    return (U16)_mm256_maddubs_epi16((__m256i)v, _mm256_set1_epi8(1));
#else
    return ((U16)v & 0xFF) + ((U16)v >> 8);
#endif
}

/// The even byte of each pair minus the odd one.
NOX_LANES U16 pairDifferences(U8 v) {
#if NOX_LANES_BYTES == 32
    return (U16)_mm256_maddubs_epi16((__m256i)v, _mm256_set1_epi16(-0xFF)); // weights 1 and -1
#else
    return ((U16)v & 0xFF) - ((U16)v >> 8);
#endif
}

/// Sums of two products of signed 16-bit lanes each.
NOX_LANES U32 sumsOfProducts(U16 a, U16 b) {
#if NOX_LANES_BYTES == 32
    return (U32)_mm256_madd_epi16((__m256i)a, (__m256i)b);
#else
    return (U32)_mm_madd_epi16((__m128i)a, (__m128i)b);
#endif
}

/// True when a bit is set anywhere.
NOX_LANES bool any(U8 v) {
#if NOX_LANES_BYTES == 32
    return !_mm256_testz_si256((__m256i)v, (__m256i)v);
#else
    return _mm_movemask_epi8(_mm_cmpeq_epi8((__m128i)v, _mm_setzero_si128())) != 0xFFFF;
#endif
}

/// Adds both halves of each 64-bit lane to it.
NOX_LANES U64 addHalves(U64 total, U32 v) { return total + ((U64)v & 0xFFFFFFFFU) + ((U64)v >> 32); }

/// Sums of two unsigned 16-bit lanes each.
NOX_LANES U32 sumsOfPairs(U16 v) { return ((U32)v & 0xFFFFU) + ((U32)v >> 16); }

/// v with each byte `bytes` places lower; what moves in at the top has no meaning.
template <int bytes>
NOX_LANES U8 movedDown(U8 v) {
#if NOX_LANES_BYTES == 32
    if constexpr (bytes == 16)
        return (U8)_mm256_permute2x128_si256((__m256i)v, (__m256i)v, 1);
    else
        return (U8)_mm256_srli_si256((__m256i)v, bytes);
#else
    return (U8)_mm_srli_si128((__m128i)v, bytes);
#endif
}

/// The largest lane.
template <class V, int bytes = vectorBytes / 2>
NOX_LANES auto largestLane(V v) {
    if constexpr (bytes < static_cast<int>(sizeof(v[0])))
        return v[0];
    else
        return largestLane<V, bytes / 2>(larger<V>((V)movedDown<bytes>((U8)v), v));
}

/// The smallest lane.
template <class V, int bytes = vectorBytes / 2>
NOX_LANES auto smallestLane(V v) {
    if constexpr (bytes < static_cast<int>(sizeof(v[0])))
        return v[0];
    else
        return smallestLane<V, bytes / 2>(smaller<V>((V)movedDown<bytes>((U8)v), v));
}

NOX_LANES std::uint64_t sumOfLanes(U64 v) {
    std::uint64_t sum = 0;
    for (int i = 0; i < vectorBytes / 8; ++i)
        sum += v[i];
    return sum;
}

/// v with the lanes that are off set to zero.
template <class V>
NOX_LANES V clearOff(V v, U8 off) {
    return (V)((U8)v & ~off);
}

/// v with the lanes that are off set to all ones, the largest integer.
template <class V>
NOX_LANES V fillOff(V v, U8 off) {
    return (V)((U8)v | off);
}

/// All ones in each lane whose mask byte is zero, for as many lanes as a vector of T has.
template <class T>
NOX_LANES U8 offLanes(const Nox8u *mask) {
    if constexpr (sizeof(T) == 1) {
        return (U8)(load<U8>(mask) == 0);
    } else if constexpr (sizeof(T) == 2) {
#if NOX_LANES_BYTES == 32
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(mask));
        return (U8)_mm256_cvtepi8_epi16(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
#else
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(mask));
        const __m128i off = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
        return (U8)_mm_unpacklo_epi8(off, off);
#endif
    } else {
#if NOX_LANES_BYTES == 32
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(mask));
        return (U8)_mm256_cvtepi8_epi32(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
#else
        int four = 0;
        __builtin_memcpy(&four, mask, sizeof(four));
        const __m128i off = _mm_cmpeq_epi8(_mm_cvtsi32_si128(four), _mm_setzero_si128());
        const __m128i pairs = _mm_unpacklo_epi8(off, off);
        return (U8)_mm_unpacklo_epi16(pairs, pairs);
#endif
    }
}

/// Pixels as floats, as many as a vector of floats holds.
NOX_LANES F32 floatsOf(const Nox32f *from) { return load<F32>(from); }
#if NOX_LANES_BYTES == 32
NOX_LANES F32 floatsOf(const Nox8u *from) {
    return (F32)_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from))));
}
NOX_LANES F32 floatsOf(const Nox8s *from) {
    return (F32)_mm256_cvtepi32_ps(_mm256_cvtepi8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(from))));
}
NOX_LANES F32 floatsOf(const Nox16u *from) {
    return (F32)_mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from))));
}
#else
NOX_LANES __m128i fourBytes(const void *from) {
    int four = 0;
    __builtin_memcpy(&four, from, sizeof(four));
    return _mm_cvtsi32_si128(four);
}
NOX_LANES F32 floatsOf(const Nox8u *from) {
    const __m128i zero = _mm_setzero_si128();
    return (F32)_mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(fourBytes(from), zero), zero));
}
NOX_LANES F32 floatsOf(const Nox8s *from) {
    const __m128i bytes = fourBytes(from), pairs = _mm_unpacklo_epi8(bytes, bytes);
    return (F32)_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(pairs, pairs), 24));
}
NOX_LANES F32 floatsOf(const Nox16u *from) {
    const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(from));
    return (F32)_mm_cvtepi32_ps(_mm_unpacklo_epi16(words, _mm_setzero_si128()));
}
#endif

/// value in every lane.
NOX_LANES F32 splat(Nox32f value) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_set1_ps(value);
#else
    return (F32)_mm_set1_ps(value);
#endif
}

NOX_LANES F64 splat(Nox64f value) {
#if NOX_LANES_BYTES == 32
    return (F64)_mm256_set1_pd(value);
#else
    return (F64)_mm_set1_pd(value);
#endif
}

/// The processor's estimates of 1 / v and of 1 / sqrt(v): the same in lanes of every width.
NOX_LANES F32 reciprocalEstimate(F32 v) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_rcp_ps((__m256)v);
#else
    return (F32)_mm_rcp_ps((__m128)v);
#endif
}
NOX_LANES F32 inverseRootEstimate(F32 v) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_rsqrt_ps((__m256)v);
#else
    return (F32)_mm_rsqrt_ps((__m128)v);
#endif
}

/// The square root, correctly rounded.
NOX_LANES F32 rootOf(F32 v) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_sqrt_ps((__m256)v);
#else
    return (F32)_mm_sqrt_ps((__m128)v);
#endif
}

/// The top bit of each lane.
NOX_LANES int topBits(S32 v) {
#if NOX_LANES_BYTES == 32
    return _mm256_movemask_ps((__m256)v);
#else
    return _mm_movemask_ps((__m128)v);
#endif
}

/// Lanes of a where the mask is set, of b elsewhere.
NOX_LANES F32 select(S32 mask, F32 a, F32 b) { return (F32)(((S32)a & mask) | ((S32)b & ~mask)); }

/// Copies n elements, fewer than `most`. Rows end with this all the time, so it calls nothing.
template <int most, class T>
NOX_LANES void copyFew(T *to, const T *from, int n) {
    if constexpr (most > 1) {
        constexpr int half = most / 2;
        if ((n & half) != 0) {
            __builtin_memcpy(to, from, half * sizeof(T));
            to += half;
            from += half;
        }
        copyFew<half>(to, from, n);
    }
}

/// Mask bytes for the end of a row.
constexpr auto onThenOff = [] {
    struct {
        Nox8u bytes[2 * lanesOf<Nox8u>] = {};
    } all;
    for (int i = 0; i < lanesOf<Nox8u>; ++i)
        all.bytes[i] = 1;
    return all;
}();

/// The last n pixels of a row, followed by zeros.
template <class T, int lanes = lanesOf<T>>
struct Tail {
    T pixels[lanes] = {};
    Tail() = default;
    NOX_LANES Tail(const T *from, int n) { copyFew<lanes>(pixels, from, n); }
};

/// Off lanes of a row's last n pixels: all behind them, and those that the mask turns off.
template <class T, bool masked>
NOX_LANES U8 offTail(const Nox8u *mask, int n) {
    if constexpr (masked)
        return offLanes<T>(Tail<Nox8u, lanesOf<T>>(mask, n).pixels);
    else
        return offLanes<T>(onThenOff.bytes + (lanesOf<Nox8u> - n));
}

/// Four floats from each of a vector's rows, from element x on.
NOX_LANES F32 loadRows(const Nox32f *const *rows, int x) {
#if NOX_LANES_BYTES == 32
    return (F32)_mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(rows[0] + x)), _mm_loadu_ps(rows[1] + x), 1);
#else
    return (F32)_mm_loadu_ps(rows[0] + x);
#endif
}

/// offLanes of four pixels from each of a vector's rows.
NOX_LANES U8 offRows(const Nox8u *const *masks, int x) {
    int four = 0;
    __builtin_memcpy(&four, masks[0] + x, sizeof(four));
#if NOX_LANES_BYTES == 32
    int next = 0;
    __builtin_memcpy(&next, masks[1] + x, sizeof(next));
    const __m128i bytes = _mm_unpacklo_epi32(_mm_cvtsi32_si128(four), _mm_cvtsi32_si128(next));
    return (U8)_mm256_cvtepi8_epi32(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
#else
    return offLanes<Nox32f>(reinterpret_cast<const Nox8u *>(&four));
#endif
}
