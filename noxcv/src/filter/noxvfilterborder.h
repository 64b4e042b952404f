// The fixed border filters: tables of taps, tables of row and column kernels, and the engine that runs a pair of them.
#pragma once

#include "ahead.h"
#include "borders.h"
#include "frame/owncvomp.h"
#include "noxtypes.h"
#include "noxvextendedsum.h"
#include "noxvquotient.h"
#include "noxvrowlook.h"
#include "tiers.h"

namespace nox {

/// What stands beyond the ends of the rows of an image: the same for all of them.
template <class Pixel>
struct RowEnds {
    int borderType;
    Pixel value;
    /// The pixels that stand for those before the row, then for those behind it, for windows of `taps`; -1 for `value`.
    int places[4];

    RowEnds(int width, int taps, int borderType, Pixel value) : borderType(borderType), value(value) {
        const int reach = taps / 2;
        for (int i = 0; i < reach; ++i) {
            places[i] = placeOf(i - reach, width);
            places[reach + i] = placeOf(width + i, width);
        }
    }

private:
    int placeOf(int position, int width) const {
        return borderType == noxBorderConstant ? -1 : borderIndex(position, width, borderType);
    }
};

} // namespace nox

/// Row kernels: one row of src under a border into one ring row, padded to ringRowLength(). Those of floats tell the
/// spread of the row that they wrote, and keep what they found for the next row. All kernels ask for what comes next.
using RowKernel8u16s = void (*)(const Nox8u *src, Nox16s *row, int width, const nox::RowEnds<Nox8u> &ends,
                                const nox::Ahead &ahead);
using RowKernel32f = nox::Spread (*)(const Nox32f *src, Nox32f *row, int width, const nox::RowEnds<Nox32f> &ends,
                                     nox::RowGuess &guess, const nox::Ahead &ahead);

/// Column kernels: the window's rows, from top to bottom, into one row of dst.
using ColumnKernel16s = void (*)(const Nox16s *const *rows, Nox16s *dst, int width, const nox::Ahead &ahead);
using ColumnKernel16s8s = void (*)(const Nox16s *const *rows, Nox8s *dst, int width, const nox::Quotient<Nox32f> &by,
                                   const nox::Ahead &ahead);
using ColumnKernel16s8u = void (*)(const Nox16s *const *rows, Nox8u *dst, int width, const nox::Ahead &ahead);
using ColumnKernel32f = void (*)(const Nox32f *const *rows, Nox32f *dst, int width, const nox::Spread &spread,
                                 const nox::Ahead &ahead);

extern "C" {

extern const Nox16s kerScharr_3_16s[3], kerDx_3_16s[3], kerDx_5_16s[5], kerDxNeg_3_16s[3], kerDxNeg_5_16s[5],
    kerD2x_3_16s[3], kerD2x_5_16s[5], kerSobel_3_16s[3], kerSobel_5_16s[5], kerAvr_3_16s[3], kerAvr_5_16s[5],
    kerLap_3_16s[3];
extern const Nox32f kerScharr_3_32f[3], kerDx_3_32f[3], kerDx_5_32f[5], kerDxNeg_3_32f[3], kerDxNeg_5_32f[5],
    kerD2x_3_32f[3], kerD2x_5_32f[5], kerSobel_3_32f[3], kerSobel_5_32f[5], kerAvr_3_32f[3], kerAvr_5_32f[5],
    kerLap_3_32f[3];

extern const RowKernel8u16s owntabRow_8u16s[11];
extern const RowKernel32f owntabRow_32f[11];
extern const ColumnKernel16s owntabColumn_8u16s[13];
extern const ColumnKernel16s8s owntabColumn_8u8s[13];
extern const ColumnKernel16s8u owntabColumn_8u[2];
extern const ColumnKernel32f owntabColumn_32f[13];
extern const int columnWeights_32f[13]; ///< their taps' magnitudes, added up

/// @name The engine: a whole image through one row and one column kernel of the tables. Steps are in bytes. rowTaps
/// serve the constant rows above and below the image; columnTaps stand beside them, and their count is the height of
/// the window.
/// @{
NOX_GLOBAL void ownFilterConvolution_8u16s_C1R(const Nox8u *src, int srcStep, Nox16s *dst, int dstStep, int width,
                                               int height, const Nox16s *rowTaps, int rowTapCount,
                                               const Nox16s *columnTaps, int columnTapCount, int borderType,
                                               Nox8u borderValue, Nox8u *buffer, int rowIndex, int columnIndex);
NOX_GLOBAL void ownFilterConvolution_8u8s_C1R(const Nox8u *src, int srcStep, Nox8s *dst, int dstStep, int width,
                                              int height, const Nox16s *rowTaps, int rowTapCount,
                                              const Nox16s *columnTaps, int columnTapCount, int borderType,
                                              Nox8u borderValue, Nox8u *buffer, int rowIndex, int columnIndex,
                                              int divisor);
NOX_GLOBAL void ownFilterConvolution_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, int width,
                                            int height, const Nox16s *rowTaps, int rowTapCount,
                                            const Nox16s *columnTaps, int columnTapCount, int borderType,
                                            Nox8u borderValue, Nox8u *buffer, int rowIndex, int columnIndex,
                                            int divisor);
NOX_GLOBAL void ownFilterConvolution_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width,
                                             int height, const Nox32f *rowTaps, int rowTapCount,
                                             const Nox32f *columnTaps, int columnTapCount, int borderType,
                                             Nox32f borderValue, Nox8u *buffer, int rowIndex, int columnIndex);
/// @}
}

namespace nox {

/// What the engine runs with, apart from the images. The taps are those of the row kernel.
template <class Pixel, class Tap>
struct FixedFilter {
    const Tap *rowTaps;
    int rowTapCount, columnTapCount; ///< 3 or 5
    int rowIndex, columnIndex;
    int borderType;
    Pixel borderValue;
};

/// The row kernel with two results a pixel.
constexpr int laplacianRow = 10;

/// Elements of one half of a ring row.
constexpr int ringRowLength(int width) { return roundUp(width, 16); }
} // namespace nox

/// @name The engine on one slice of an image's rows; the rows around the slice are read where the image has them. dst
/// begins with the first row of the slice.
/// @{
extern "C" {
void ownFilterConvolution_8u16s_C1R_omp(nox::Rows<const Nox8u> src, nox::Rows<Nox16s> dst, NoxiSize size,
                                        const nox::FixedFilter<Nox8u, Nox16s> &filter, Nox8u *buffer,
                                        const nox::Slice &slice);
void ownFilterConvolution_8u8s_C1R_omp(nox::Rows<const Nox8u> src, nox::Rows<Nox8s> dst, NoxiSize size,
                                       const nox::FixedFilter<Nox8u, Nox16s> &filter, int divisor, Nox8u *buffer,
                                       const nox::Slice &slice);
void ownFilterConvolution_8u_C1R_omp(nox::Rows<const Nox8u> src, nox::Rows<Nox8u> dst, NoxiSize size,
                                     const nox::FixedFilter<Nox8u, Nox16s> &filter, Nox8u *buffer,
                                     const nox::Slice &slice);
void ownFilterConvolution_32f_C1R_omp(nox::Rows<const Nox32f> src, nox::Rows<Nox32f> dst, NoxiSize size,
                                      const nox::FixedFilter<Nox32f, Nox32f> &filter, Nox8u *buffer,
                                      const nox::Slice &slice);
}
/// @}
