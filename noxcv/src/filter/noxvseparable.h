// Kernels of the row and column pipelines. Both filters are one: the sum of taps[j] times line j of a window, element
// by element, where the lines of a row filter are the row itself, shifted by one pixel each.
//
// A block of sums goes to an array on the stack in the arithmetic that holds them exactly, then to the destination with
// the member's rounding.
#pragma once

#include <cstddef>

#include "ahead.h"
#include "noxtypes.h"
#include "noxvquotient.h"
#include "rows.h"

namespace nox {

/// The lines under the taps of a row filter.
template <class T>
struct RowWindow {
    const T *first;        ///< under the first tap of output 0
    std::ptrdiff_t stride; ///< elements from tap to tap: the channel count

    NOX_INLINE const Element<T> *operator[](int j) const { return first + j * stride; }
    NOX_INLINE RowWindow from(int x) const { return {first + x, stride}; }
};

/// The lines under the taps of a column filter.
template <class T>
struct ColumnWindow {
    const T *const *rows;  ///< the row under the first tap
    std::ptrdiff_t offset; ///< element of output 0 in each row

    NOX_INLINE const Element<T> *operator[](int j) const { return elements(rows)[j] + offset; }
    NOX_INLINE ColumnWindow from(int x) const { return {rows, offset + x}; }
};

/// Outputs a block, and the least count that the kernels of integers take.
constexpr int blockLength = 256, vectorLength = 8;

/// Sums of count >= vectorLength outputs in 32 bits, with wrap.
void sumTaps(RowWindow<Nox8u> window, const Nox16s *taps, int tapCount, Nox32s *sums, int count);
void sumTaps(RowWindow<Nox16s> window, const Nox16s *taps, int tapCount, Nox32s *sums, int count);
void sumTaps(ColumnWindow<Nox16s> window, const Nox16s *taps, int tapCount, Nox32s *sums, int count);

/// Sums in double or single precision, j ascending, from the first product on.
void sumTaps(RowWindow<Nox16s> window, const Nox16s *taps, int tapCount, Nox64f *sums, int count);
void sumTaps(ColumnWindow<Nox16s> window, const Nox16s *taps, int tapCount, Nox64f *sums, int count);
void sumTaps(RowWindow<Nox16s> window, const Nox32f *taps, int tapCount, Nox64f *sums, int count);
void sumTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Nox64f *sums, int count);
void sumTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Nox64f *sums, int count);
void sumTaps(RowWindow<Nox32f> window, const Nox32f *taps, int tapCount, Nox32f *sums, int count);
void sumTaps(ColumnWindow<Nox32f> window, const Nox32f *taps, int tapCount, Nox32f *sums, int count);

/// Two outputs of a column filter, of the rows from rows[0] and from rows[1] on, by 3 to mostPairTaps taps. Asks for
/// what comes next.
constexpr int mostPairTaps = 64;
void sumTapsTwice(const Nox32f *const *rows, const Nox32f *taps, int tapCount, Nox32f *first, Nox32f *second, int count,
                  const AheadRows<2> &ahead);

/// Quotients, clamped and truncated.
template <class T>
void storeQuotients(const Nox32s *sums, T *dst, int count, const Quotient<Nox32f> &by);
template <class T>
void storeQuotients(const Nox32s *sums, T *dst, int count, const Quotient<Nox64f> &by);
template <class T>
void storeQuotients(const Nox64f *sums, T *dst, int count, const Quotient<Nox64f> &by);

/// The low 16 bits of truncated quotients; the divisor is neither 1 nor -1.
void storeLowQuotients(const Nox32s *sums, Nox16s *dst, int count, const Quotient<Nox64f> &by);
/// The low 16 bits of products with a factor (in 32 bits, with wrap), shifted right.
void storeLowProducts(const Nox32s *sums, Nox16s *dst, int count, int factor, int shift);

/// Sums clamped to 16 bits and truncated. True when one of them is within `margin` of an integer.
bool storeTruncated(const Nox64f *sums, Nox16s *dst, int count, Nox64f margin);
/// Whether truncation of a sum is uncertain by `margin`.
NOX_INLINE bool truncatesDoubtfully(Nox64f sum, Nox64f margin) {
    // Far from 2^51, the addition rounds to an integer; sums beyond the clamp need none.
    constexpr Nox64f shift = 0x1.8p52;
    const Nox64f clamped = sum < -65536 ? -65536 : sum > 65536 ? 65536 : sum;
    const Nox64f distance = clamped - ((clamped + shift) - shift);
    return (distance < 0 ? -distance : distance) <= margin;
}

/// Sums rounded to single precision; true when roundsDoubtfully() holds for one of them.
bool storeRoundedTested(const Nox64f *sums, Nox32f *dst, int count, Nox32f certain);

} // namespace nox
