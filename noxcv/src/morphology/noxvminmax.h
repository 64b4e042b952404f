// Minimum and maximum over windows: the row and column routines, and the tables that choose them.
#pragma once

#include <cstddef>

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// The two operators.
struct Smallest;
struct Largest;

/// The widest window that a row routine forms in one go; wider ones are joined from those.
constexpr int longestWindow = 255;
/// Bytes of the line on the stack in which windows grow.
constexpr int windowLineBytes = 8192;

/// One row: dst[x] = the winner of the window of `window` pixels around x, `anchor` of them before x, as far as they
/// lie in the row. src and dst do not overlap. Any width from 1 on, any 0 <= anchor < window.
template <class T>
using RowRoutine = void (*)(const T *src, T *dst, int width, int window, int anchor);

/// A whole image. Rows pass through windowHeight + 1 lines, the first entries of `rows`, each aligned to 32 bytes and a
/// multiple of 32 bytes long, one right behind the other. dst may be src.
template <class T>
using ColumnRoutine = void (*)(const T *src, int srcStep, T *dst, int dstStep, NoxiSize roi, int channels,
                               int windowWidth, int windowHeight, int anchorX, int anchorY, RowRoutine<T> row,
                               T **rows);

/// The bytes of a row, as far as they choose the processor tier.
template <class T>
constexpr int tierBytes(std::ptrdiff_t count) {
    return static_cast<int>((count < 64 ? count : 64) * static_cast<std::ptrdiff_t>(sizeof(T)));
}

/// A run per non-empty row of a structuring element, as the erosion by rows of runs reads it.
struct KernelInfo {
    Nox32s width, height;    ///< of the box about the runs
    Nox32s anchorX, anchorY; ///< relative to the box
    Nox32s runRows;          ///< non-empty rows
    Nox32s runClasses;       ///< distinct run lengths
    Nox32s *rowIndex;        ///< of each non-empty row: its number, counted from the first one
    Nox32s *rowClass;        ///< of each non-empty row: its run length's place in the next table
    Nox32s *classLength;     ///< distinct run lengths, longest first
    Nox32s *classAnchor;     ///< of each length: anchor minus first column of its runs
};

} // namespace nox

extern "C" {

#define NOX_ROW_ROUTINE(NAME, TYPE, CHANNELS, OP, WINDOW)                                                              \
    NOX_GLOBAL void NAME(const TYPE *src, TYPE *dst, int width, int window, int anchor);
#include "noxvminmaxrows.inc"
#undef NOX_ROW_ROUTINE

#define NOX_COLUMN_ROUTINE(NAME, TYPE)                                                                                 \
    NOX_GLOBAL void NAME(const TYPE *src, int srcStep, TYPE *dst, int dstStep, NoxiSize roi, int channels,             \
                         int windowWidth, int windowHeight, int anchorX, int anchorY, nox::RowRoutine<TYPE> row,       \
                         TYPE **rows);
NOX_COLUMN_ROUTINE(ownFilterMinColumn01_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMinColumn03_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMinColumn05_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMinColumnVH_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn01_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn03_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn05_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMaxColumnVH_8u_C1R, Nox8u)
NOX_COLUMN_ROUTINE(ownFilterMinColumn01_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMinColumn03_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMinColumn05_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMinColumnVH_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn01_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn03_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMaxColumn05_32f_C1R, Nox32f)
NOX_COLUMN_ROUTINE(ownFilterMaxColumnVH_32f_C1R, Nox32f)
#undef NOX_COLUMN_ROUTINE

/// @name Row routines by window width, 0 standing for any. The Small ones serve small images, whose rows do not repay
/// the setup of the routine for any width: a wider window than a routine is written for is joined from its own.
/// @{
extern NOX_GLOBAL const nox::RowRoutine<Nox8u> owntablFilterMinRow_8u_C1[16], owntablFilterMinRow_8u_C3[16],
    owntablFilterMinRow_8u_C4[16], owntablFilterMinRow_8u_C4_Small[16], owntablFilterMaxRow_8u_C1[16],
    owntablFilterMaxRow_8u_C3[16], owntablFilterMaxRow_8u_C4[16], owntablFilterMaxRow_8u_C4_Small[16];
extern NOX_GLOBAL const nox::RowRoutine<Nox32f> owntablFilterMinRow_32f_C1[16], owntablFilterMinRow_32f_C3[16],
    owntablFilterMinRow_32f_C4[16], owntablFilterMinRow_32f_C1_Small[16], owntablFilterMaxRow_32f_C1[16],
    owntablFilterMaxRow_32f_C3[16], owntablFilterMaxRow_32f_C4[16], owntablFilterMaxRow_32f_C1_Small[16];
/// @}

/// Column routines by window height, for every channel count.
extern NOX_GLOBAL const nox::ColumnRoutine<Nox8u> owntablFilterMinColumn_8u_C1[8], owntablFilterMaxColumn_8u_C1[8];
extern NOX_GLOBAL const nox::ColumnRoutine<Nox32f> owntablFilterMinColumn_32f_C1[8], owntablFilterMaxColumn_32f_C1[8];

/// @name Erosion and dilation by a stack of runs, one for each non-empty row of a mask
/// kernelInfo describes the runs; buffer has the size that ownMorphEllipseGetBufferSize tells for roi.width.
/// @{
NOX_GLOBAL void ownErodeEllipseBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownErodeEllipseBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownErodeEllipseBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownErodeEllipseBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownErodeEllipseBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownErodeEllipseBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                       NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                        NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                        NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
NOX_GLOBAL void ownDilateEllipseBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                        NoxiSize roi, const nox::KernelInfo *kernelInfo, Nox8u *buffer);
/// The buffer of the twelve above for rows of up to roiWidth pixels, a box of that size and classCount run lengths;
/// noxStsBadSize, and nothing stored, beyond the largest int.
NOX_GLOBAL NoxStatus ownMorphEllipseGetBufferSize(int roiWidth, int boxWidth, int boxHeight, int classCount,
                                                  int dataType, int channels, int *size);
/// @}
}
