// Integer sums of the point tracker for the processor tier that is being compiled; no include guard, see
// noxveachtier.h.

/// Lanes that are all ones, as many as a vector has, and then zeros.
constexpr auto onesThenZeros = [] {
    struct {
        Nox16u words[2 * lanesOf<Nox16u>] = {};
    } all;
    for (int i = 0; i < lanesOf<Nox16u>; ++i)
        all.words[i] = 0xFFFF;
    return all;
}();

/// Adds the sums of the lanes of x and of y to two 64-bit totals. The lanes wrap as one 32-bit sum would.
NOX_LANES __m128i addRow(__m128i totals, U32 x, U32 y) {
#if NOX_LANES_BYTES == 32
    const auto first = (__m256i)x, second = (__m256i)y;
    const __m256i both = _mm256_add_epi32(_mm256_unpacklo_epi32(first, second), _mm256_unpackhi_epi32(first, second));
    const __m128i halves = _mm_add_epi32(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1));
#else
    const auto first = (__m128i)x, second = (__m128i)y;
    const __m128i halves = _mm_add_epi32(_mm_unpacklo_epi32(first, second), _mm_unpackhi_epi32(first, second));
#endif
    const __m128i row = _mm_add_epi32(halves, _mm_srli_si128(halves, 8));
    return _mm_add_epi64(totals, _mm_unpacklo_epi32(row, _mm_srai_epi32(row, 31)));
}

/// All ones in the lanes of the cells that a row still has.
NOX_LANES U16 cellsLeft(int count) {
    constexpr int lanes = lanesOf<Nox16u>;
    return load<U16>(onesThenZeros.words + (count < lanes ? lanes - count : 0));
}

/// Sums of ix ix, iy iy and ix iy.
NOX_LANES_TARGET inline void squaredGradients(const CellWindow<Nox16s> &w, std::int64_t (&sums)[3]) {
    __m128i squares = _mm_setzero_si128(), mixed = squares;
    for (int y = 0; y < w.rows; ++y) {
        U32 xx{}, yy{}, xy{};
        for (int x = 0; x < w.columns; x += lanesOf<Nox16u>) {
            const U16 keep = cellsLeft(w.columns - x);
            const U16 ix = load<U16>(w.ix[y] + x) & keep, iy = load<U16>(w.iy[y] + x) & keep;
            xx += sumsOfProducts(ix, ix);
            yy += sumsOfProducts(iy, iy);
            xy += sumsOfProducts(ix, iy);
        }
        squares = addRow(squares, xx, yy);
        mixed = addRow(mixed, xy, U32{});
    }
    __builtin_memcpy(sums, &squares, sizeof(squares));
    __builtin_memcpy(sums + 2, &mixed, sizeof(sums[2]));
}

NOX_LANES U16 residuals(const CellWindow<Nox16s> &w, int y, int x) {
    return (load<U16>(w.first[y] + x) - load<U16>(w.second[y] + x)) & cellsLeft(w.columns - x);
}

/// Sums of ix r and iy r with the residual r.
NOX_LANES_TARGET inline void weightedResiduals(const CellWindow<Nox16s> &w, std::int64_t (&sums)[2]) {
    __m128i totals = _mm_setzero_si128();
    for (int y = 0; y < w.rows; ++y) {
        U32 xr{}, yr{};
        for (int x = 0; x < w.columns; x += lanesOf<Nox16u>) {
            const U16 r = residuals(w, y, x);
            xr += sumsOfProducts(load<U16>(w.ix[y] + x), r);
            yr += sumsOfProducts(load<U16>(w.iy[y] + x), r);
        }
        totals = addRow(totals, xr, yr);
    }
    __builtin_memcpy(sums, &totals, sizeof(totals));
}

/// The sum of r r.
NOX_LANES_TARGET inline std::uint64_t squaredResiduals(const CellWindow<Nox16s> &w) {
    U64 total{};
    for (int y = 0; y < w.rows; ++y)
        for (int x = 0; x < w.columns; x += lanesOf<Nox16u>) {
            const U16 r = residuals(w, y, x);
            total = addHalves(total, sumsOfProducts(r, r));
        }
    return sumOfLanes(total);
}
