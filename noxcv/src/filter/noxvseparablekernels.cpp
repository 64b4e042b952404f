// Sums of taps over a window of lines, and the roundings of the sums.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "noxvextendedsum.h"
#include "noxvseparable.h"
#include "numerics.h"

#define NOX_KERNELS "filter/noxvseparablereals.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

NOX_INLINE __m128i loadWords(const Nox16s *p) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)); }
NOX_INLINE __m128i loadWords(const Nox8u *p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(p)), _mm_setzero_si128());
}

/// Adds a pair of taps to Groups times 8 sums.
template <int Groups, class T>
NOX_INLINE void addPair(const T *first, const T *second, __m128i pair, __m128i (&low)[Groups],
                        __m128i (&high)[Groups]) {
    for (int g = 0; g < Groups; ++g) {
        const __m128i a = loadWords(first + 8 * g), b = loadWords(second + 8 * g);
        low[g] = _mm_add_epi32(low[g], _mm_madd_epi16(_mm_unpacklo_epi16(a, b), pair));
        high[g] = _mm_add_epi32(high[g], _mm_madd_epi16(_mm_unpackhi_epi16(a, b), pair));
    }
}

template <int Groups, class Window>
NOX_INLINE void sumGroups(Window window, const Nox16s *taps, int tapCount, Nox32s *sums) {
    __m128i low[Groups] = {}, high[Groups] = {};
    int j = 0;
    for (; j + 2 <= tapCount; j += 2) {
        int pair;
        std::memcpy(&pair, taps + j, sizeof pair);
        addPair<Groups>(window[j], window[j + 1], _mm_set1_epi32(pair), low, high);
    }
    if (j < tapCount) // a lone tap: the other half of the pair is 0
        addPair<Groups>(window[j], window[j], _mm_set1_epi32(static_cast<Nox16u>(elements(taps)[j])), low, high);
    for (int g = 0; g < Groups; ++g) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(sums + 8 * g), low[g]);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(sums + 8 * g + 4), high[g]);
    }
}

/// The last group overlaps the one before it when count is not a multiple of 8.
template <class Window>
NOX_INLINE void sumIntegers(Window window, const Nox16s *taps, int tapCount, Nox32s *sums, int count) {
    int x = 0;
    for (; x + 16 <= count; x += 16)
        sumGroups<2>(window.from(x), taps, tapCount, sums + x);
    for (; x < count; x += 8) {
        x = std::min(x, count - 8);
        sumGroups<1>(window.from(x), taps, tapCount, sums + x);
    }
}

/// Sums in double of integers along a row: where they have room, its elements are converted once and not once for each
/// tap.
template <class T, class Tap>
void sumConverted(RowWindow<T> window, const Tap *taps, int tapCount, Nox64f *sums, int count) {
    constexpr int room = blockLength + 192;
    alignas(32) Nox64f line[room];
    const std::ptrdiff_t under = count + window.stride * (tapCount - 1);
    if (under > room)
        return NOX_ON_TIER(sumReals(window, taps, tapCount, sums, count));
    NOX_ON_TIER(convertLine(window.first, line, static_cast<int>(under)));
    NOX_ON_TIER(sumReals(RowWindow<Nox64f>{line, window.stride}, taps, tapCount, sums, count));
}

template <class Sum, class T, class Real>
NOX_INLINE void divideSums(const Sum *sums, T *quotients, int count, const Quotient<Real> &by) {
    Element<T> *dst = quotients;
    const Quotient<Real> local = by;
    if (local.falls) {
        for (int x = 0; x < count; ++x)
            dst[x] = truncatedQuotient<T, true>(static_cast<Real>(sums[x]), local);
    } else {
        for (int x = 0; x < count; ++x)
            dst[x] = truncatedQuotient<T, false>(static_cast<Real>(sums[x]), local);
    }
}

/// Divisors of 1 and -1: the one quotient that does not fit 32 bits, of -2^31, is avoided.
template <class T>
NOX_INLINE void storeSums(const Nox32s *sums, T *quotients, int count, bool negative) {
    Element<T> *dst = quotients;
    constexpr Nox32s highest = std::numeric_limits<Nox32s>::max();
    if (negative) {
        for (int x = 0; x < count; ++x)
            dst[x] = saturate<T>(sums[x] < -highest ? highest : -sums[x]);
    } else {
        for (int x = 0; x < count; ++x)
            dst[x] = saturate<T>(sums[x]);
    }
}

/// Clamps well beyond 16 bits. Sums are clamped in a loop of their own: in one with the conversion to integers the
/// compiler converts all three cases and selects last.
constexpr Nox64f beyond16Bits = 65536;
NOX_INLINE void clampSums(const Nox64f *sums, Nox64f *clamped, int count, Nox64f bound) {
    for (int x = 0; x < count; ++x) {
        const Nox64f raised = sums[x] < -bound ? -bound : sums[x];
        clamped[x] = raised > bound ? bound : raised;
    }
}

} // namespace

namespace nox {

#define NOX_SUM_INTEGERS(WINDOW)                                                                                       \
    NOX_TIERS void sumTaps(WINDOW window, const Nox16s *taps, int tapCount, Nox32s *sums, int count) {                 \
        if (tapCount == 3)                                                                                             \
            sumIntegers(window, taps, 3, sums, count);                                                                 \
        else if (tapCount == 5)                                                                                        \
            sumIntegers(window, taps, 5, sums, count);                                                                 \
        else                                                                                                           \
            sumIntegers(window, taps, tapCount, sums, count);                                                          \
    }
NOX_SUM_INTEGERS(RowWindow<Nox8u>)
NOX_SUM_INTEGERS(RowWindow<Nox16s>)
NOX_SUM_INTEGERS(ColumnWindow<Nox16s>)

#define NOX_SUM_REALS(WINDOW, TAP, REAL)                                                                               \
    void sumTaps(WINDOW window, const TAP *taps, int tapCount, REAL *sums, int count) {                                \
        NOX_ON_TIER(sumReals(window, taps, tapCount, sums, count));                                                    \
    }
NOX_SUM_REALS(ColumnWindow<Nox16s>, Nox16s, Nox64f)
NOX_SUM_REALS(RowWindow<Nox32f>, Nox32f, Nox64f)
NOX_SUM_REALS(ColumnWindow<Nox32f>, Nox32f, Nox64f)
NOX_SUM_REALS(RowWindow<Nox32f>, Nox32f, Nox32f)
NOX_SUM_REALS(ColumnWindow<Nox32f>, Nox32f, Nox32f)

#define NOX_SUM_CONVERTED(ELEMENT, TAP)                                                                                \
    void sumTaps(RowWindow<ELEMENT> window, const TAP *taps, int tapCount, Nox64f *sums, int count) {                  \
        sumConverted(window, taps, tapCount, sums, count);                                                             \
    }
NOX_SUM_CONVERTED(Nox16s, Nox16s)
NOX_SUM_CONVERTED(Nox16s, Nox32f)

void sumTapsTwice(const Nox32f *const *rows, const Nox32f *taps, int tapCount, Nox32f *first, Nox32f *second, int count,
                  const AheadRows<2> &ahead) {
    asking(ahead, [&](const auto &next) { NOX_ON_TIER(sumRowPair(rows, taps, tapCount, first, second, count, next)); });
}

#define NOX_STORE_QUOTIENTS(TYPE)                                                                                      \
    template <>                                                                                                        \
    NOX_TIERS void storeQuotients(const Nox32s *sums, TYPE *dst, int count, const Quotient<Nox32f> &by) {              \
        divideSums(sums, dst, count, by);                                                                              \
    }                                                                                                                  \
    template <>                                                                                                        \
    NOX_TIERS void storeQuotients(const Nox32s *sums, TYPE *dst, int count, const Quotient<Nox64f> &by) {              \
        if (by.divisor == 1 || by.divisor == -1)                                                                       \
            storeSums(sums, dst, count, by.divisor < 0);                                                               \
        else                                                                                                           \
            divideSums(sums, dst, count, by);                                                                          \
    }                                                                                                                  \
    template <>                                                                                                        \
    NOX_TIERS void storeQuotients(const Nox64f *sums, TYPE *dst, int count, const Quotient<Nox64f> &by) {              \
        alignas(32) Nox64f clamped[blockLength];                                                                       \
        clampSums(sums, clamped, count, std::fabs(by.divisor) * beyond16Bits);                                         \
        divideSums(clamped, dst, count, by);                                                                           \
    }
NOX_STORE_QUOTIENTS(Nox16s)
NOX_STORE_QUOTIENTS(Nox8u)
NOX_STORE_QUOTIENTS(Nox8s)

NOX_TIERS void storeLowQuotients(const Nox32s *sums, Nox16s *quotients, int count, const Quotient<Nox64f> &by) {
    Element<Nox16s> *dst = quotients;
    const Quotient<Nox64f> local = by;
    if (local.falls) {
        for (int x = 0; x < count; ++x)
            dst[x] = wrap<Nox16s>(truncatedQuotient<Nox32s, true>(static_cast<Nox64f>(sums[x]), local));
    } else {
        for (int x = 0; x < count; ++x)
            dst[x] = wrap<Nox16s>(truncatedQuotient<Nox32s, false>(static_cast<Nox64f>(sums[x]), local));
    }
}

NOX_TIERS void storeLowProducts(const Nox32s *sums, Nox16s *products, int count, int factor, int shift) {
    Element<Nox16s> *dst = products;
    for (int x = 0; x < count; ++x) {
        const Nox32u product = static_cast<Nox32u>(sums[x]) * static_cast<Nox32u>(factor);
        dst[x] = wrap<Nox16s>(static_cast<Nox32s>(product) >> shift);
    }
}

NOX_TIERS bool storeTruncated(const Nox64f *sums, Nox16s *truncated, int count, Nox64f margin) {
    Element<Nox16s> *dst = truncated;
    alignas(32) Nox64f clamped[blockLength];
    clampSums(sums, clamped, count, beyond16Bits);
    for (int x = 0; x < count; ++x)
        dst[x] = saturate<Nox16s>(static_cast<int>(clamped[x]));
    bool doubtful = false;
    if (margin > 0)
        for (int x = 0; x < count; ++x)
            doubtful |= truncatesDoubtfully(clamped[x], margin);
    return doubtful;
}

NOX_TIERS bool storeRoundedTested(const Nox64f *sums, Nox32f *dst, int count, Nox32f certain) {
    alignas(32) Nox32f rounded[blockLength];
    for (int x = 0; x < count; ++x)
        rounded[x] = static_cast<Nox32f>(sums[x]);
    int doubtful = 0;
    for (int x = 0; x < count; ++x) {
        elements(dst)[x] = rounded[x];
        doubtful |= roundsDoubtfully(sums[x], rounded[x], certain) ? 1 : 0;
    }
    return doubtful != 0;
}

} // namespace nox
