/**
 * @file morphology.h
 * Morphology: minimum and maximum filters, erosion and dilation, compound and grey operations, reconstruction.
 */
#ifndef NOXCV_MORPHOLOGY_H
#define NOXCV_MORPHOLOGY_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Minimum and maximum over a rectangle
 * dst(x, y) = the minimum (maximum) of src over the window of maskSize pixels whose cell `anchor` lies on (x, y),
 * channel by channel. A pixel outside the image is the nearest edge pixel. Rows and columns are done one after the
 * other; long windows by running minima of blocks (M. van Herk, "A fast algorithm for local minimum and maximum filters
 * on rectangular and octagonal kernels", 1992), so the time does not grow with the window.
 *
 * Nox32f: the ordinary comparison. It does not tell zeros of different signs apart, and of a pair with a not-a-number
 * it takes the second; which that is depends on the window's size and place, so where a window holds a not-a-number the
 * result is that or one of the window's numbers.
 *
 * dst may be src itself (with the same step), and may not overlap it otherwise. Runs on the calling thread.
 *
 * @param buffer  of the size that the query below tells for this roi.width and maskSize; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, dst, buffer), noxStsBadSize, noxStsBadMaskSize when a side of maskSize
 * is below 1, noxStsBadAnchor when the anchor is no cell of the mask, noxStsBadStep (srcStep), noxStsOddStep (srcStep
 * of Nox32f), noxStsBadStep (dstStep), noxStsOddStep (dstStep of Nox32f).
 * @{
 */
/** Minima of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Minima of single-precision pixels, one channel. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Minima of single-precision pixels, three channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Minima of single-precision pixels, four channels. */
NOX_API NoxStatus noxiFilterMinBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep,
                                                      NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor, Nox8u *buffer);
/** Maxima of single-precision pixels, one channel. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of single-precision pixels, three channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** Maxima of single-precision pixels, four channels. */
NOX_API NoxStatus noxiFilterMaxBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                       NoxiSize roi, NoxiSize maskSize, NoxiPoint anchor,
                                                       Nox8u *buffer);
/** @} */

/**
 * @name Buffer of the minimum and maximum filters
 * Writes the bytes that a filter of the same type and layout needs for rows of up to roiWidth pixels and a window of
 * maskSize: 16 n + 2 n (L + 32) + 32, with n the window's height and L the bytes of a row (16 more for each n in a
 * 64-bit build, whose pointers are wider).
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize when roiWidth is below 1, noxStsBadMaskSize; noxStsBadSize,
 * and nothing stored, when the size exceeds the largest int.
 * @{
 */
/** Bytes for minima of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_8u_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision pixels, one channel. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision pixels, three channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for minima of single-precision pixels, four channels. */
NOX_API NoxStatus noxiFilterMinGetBufferSize_32f_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_8u_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision pixels, one channel. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C1R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision pixels, three channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C3R(int roiWidth, NoxiSize maskSize, int *size);
/** Bytes for maxima of single-precision pixels, four channels. */
NOX_API NoxStatus noxiFilterMaxGetBufferSize_32f_C4R(int roiWidth, NoxiSize maskSize, int *size);
/** @} */

/**
 * The state of erosion and dilation by one mask: a flat block in which all its pointers point. The caller owns it; it
 * serves one call at a time, since its scratch is inside, any number of calls, and erosion and dilation alike.
 *
 * The mask is classified once (kernelKind), and the state holds what its kind needs:
 * - 3, empty: no cell is set; the result is a copy.
 * - 1, rectangle: the set cells are one rectangle, wherever in the mask.
 * - 2, ellipse: each row's set cells are one run that holds the anchor's column, runs of the same length begin in the
 *   same column, and the anchor's row is not above the first or below the last of them. Empty rows may lie between.
 *   Discs, crosses and diamonds are of this kind.
 * - 0, general: all others, and all that are 256 rows high or higher. Small Nox8u masks too, which are faster cell by
 *   cell: those with fewer than 13 (rectangle) or 35 (ellipse) cells, set or not, on one channel, 35 or 90 on three and
 *   four.
 */
typedef struct {
    Nox8u *maskCopy;     /**< The mask's bytes, row by row; at a multiple of 16 in the general kind. */
    void *erodeTable;    /**< General kind: the mask for erosion, a vector of 8 Nox8u or 4 Nox32f for each cell. */
    void *dilateTable;   /**< General kind: the mask for dilation, in the same form. */
    Nox8u *workBuffer;   /**< Scratch. */
    void *kernelInfo;    /**< Rectangle and ellipse: the descriptor of the set cells; else null. */
    Nox32s maskWidth;    /**< General kind: the mask's width; rectangle and ellipse: that of the box about its cells. */
    Nox32s maskHeight;   /**< The same for the height. */
    Nox32s anchorX;      /**< General kind: the anchor; rectangle and ellipse: relative to the box, maybe outside. */
    Nox32s anchorY;      /**< The same for the row. */
    Nox32s rightExtent;  /**< General kind: maskWidth - anchorX - 1. */
    Nox32s bottomExtent; /**< General kind: maskHeight - anchorY - 1. */
    Nox32s rowStride;    /**< General kind: bytes from one row of the scratch to the next. */
    Nox32s stateSize;    /**< Bytes of the whole block. */
    Nox32s dataType;     /**< 1 for Nox8u, 13 for Nox32f. */
    Nox32s channels;     /**< 1, 3 or 4. */
    Nox32s roiWidth;     /**< The largest width that the state serves. */
    Nox32s reserved;     /**< -1. */
    Nox32s kernelKind;   /**< 0 general, 1 rectangle, 2 ellipse, 3 empty. */
} NoxiMorphState;

/**
 * @name Size of a morphology state
 * Writes the bytes of the state that the Init of the same type and layout builds for rows of up to roiWidth pixels and
 * this mask: maskSize.width * maskSize.height bytes, row by row, not 0 for a set cell. The mask is classified as if its
 * anchor were at (width >> 1, height >> 1). Another anchor may lie outside a run and turn an ellipse into a general
 * mask, which needs more: for such a mask let InitAlloc make the state, or look for the anchor that the query assumes.
 *
 * With a the mask's cells rounded up to a multiple of 16, in a build with 32-bit pointers: empty, a + 80; rectangle,
 * a + 112 and the buffer of noxiFilterMinBorderReplicate_8u_C1R and kin for the box; ellipse, a + 128, 8 for each
 * non-empty row and each distinct run length, and the buffer of the runs; general, 17 a (Nox32f: 33 a) + 96 and twice
 * the mask's height of scratch rows.
 *
 * Status, in this order: noxStsNullPointer (mask), noxStsBadSize when roiWidth or a side of maskSize is below 1,
 * noxStsNullPointer (size); noxStsBadSize, and nothing stored, when the size exceeds the largest int.
 * @{
 */
/** Bytes of a state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphologyGetSize_8u_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphologyGetSize_8u_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphologyGetSize_8u_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphologyGetSize_32f_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphologyGetSize_32f_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphologyGetSize_32f_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, int *size);
/** @} */

/**
 * @name Building a morphology state
 * Builds the state of a mask with this anchor in memory of the caller's, at any multiple of 4 bytes. It keeps no
 * reference to the mask. What is written never exceeds the queried size for a mask that the query classified alike.
 *
 * Status, in this order: noxStsNullPointer (mask), noxStsBadSize when roiWidth or a side of maskSize is below 1,
 * noxStsBadAnchor when the anchor is no cell of the mask, noxStsNullPointer (state), noxStsBadSize when the state would
 * exceed the largest int.
 * @{
 */
/** Builds a state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphologyInit_8u_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                            NoxiMorphState *state);
/** Builds a state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphologyInit_8u_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                            NoxiMorphState *state);
/** Builds a state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphologyInit_8u_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                            NoxiMorphState *state);
/** Builds a state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphologyInit_32f_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                             NoxiMorphState *state);
/** Builds a state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphologyInit_32f_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                             NoxiMorphState *state);
/** Builds a state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphologyInit_32f_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                             NoxiMorphState *state);
/** @} */

/**
 * @name Allocating a morphology state
 * Builds the state of a mask of maskSize cells with this anchor, for rows of up to roiWidth pixels, in a block from
 * noxsMalloc_8u, as large as this mask and anchor need. noxiMorphologyFree releases it.
 *
 * Status, in this order: noxStsNullPointer (mask), noxStsBadSize when roiWidth or a side of maskSize is below 1,
 * noxStsBadAnchor when the anchor is no cell of the mask, noxStsNullPointer (state), noxStsBadSize when the state would
 * exceed the largest int, noxStsNoMemory, with *state left as it was.
 * @{
 */
/** Allocates and builds a state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphologyInitAlloc_8u_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                 NoxiMorphState **state);
/** Allocates and builds a state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphologyInitAlloc_8u_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                 NoxiMorphState **state);
/** Allocates and builds a state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphologyInitAlloc_8u_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                 NoxiMorphState **state);
/** Allocates and builds a state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphologyInitAlloc_32f_C1R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                  NoxiMorphState **state);
/** Allocates and builds a state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphologyInitAlloc_32f_C3R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                  NoxiMorphState **state);
/** Allocates and builds a state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphologyInitAlloc_32f_C4R(int roiWidth, const Nox8u *mask, NoxiSize maskSize, NoxiPoint anchor,
                                                  NoxiMorphState **state);
/** @} */

/** Releases a state that InitAlloc has made. Status: noxStsNullPointer. */
NOX_API NoxStatus noxiMorphologyFree(NoxiMorphState *state);

/**
 * @name Erosion and dilation
 * dst(x, y) = the minimum (erosion) or maximum (dilation), over all set cells (c, r) of the state's mask, of
 * src(x + c - anchor.x, y + r - anchor.y), channel by channel. A pixel outside the image is the nearest edge pixel. The
 * mask is not reflected for dilation. An empty mask gives a copy.
 *
 * Nox32f with a general mask: the result is finite; minus infinity and a not-a-number count as the lowest finite number
 * in erosion, infinity and a not-a-number as the highest in dilation. With other masks the ordinary comparison, as in
 * noxiFilterMinBorderReplicate_32f_C1R and kin.
 *
 * src and dst may not overlap. Runs on the calling thread.
 *
 * @param borderType  noxBorderReplicate.
 * @param state       built for this type and layout. Its scratch is used, so one state serves one call at a time.
 *
 * Status, in this order: noxStsNullPointer (src, dst, state), noxStsBadSize, noxStsBadStep, noxStsOddStep (Nox32f),
 * noxStsBadArgument for another borderType, noxStsBadSize when roi.width exceeds the state's roiWidth.
 * @{
 */
/** Erodes 8-bit pixels, one channel. */
NOX_API NoxStatus noxiErodeBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                  int borderType, const NoxiMorphState *state);
/** Erodes 8-bit pixels, three channels. */
NOX_API NoxStatus noxiErodeBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                  int borderType, const NoxiMorphState *state);
/** Erodes 8-bit pixels, four channels. */
NOX_API NoxStatus noxiErodeBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                  int borderType, const NoxiMorphState *state);
/** Erodes single-precision pixels, one channel. */
NOX_API NoxStatus noxiErodeBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                   NoxiSize roi, int borderType, const NoxiMorphState *state);
/** Erodes single-precision pixels, three channels. */
NOX_API NoxStatus noxiErodeBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                   NoxiSize roi, int borderType, const NoxiMorphState *state);
/** Erodes single-precision pixels, four channels. */
NOX_API NoxStatus noxiErodeBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                   NoxiSize roi, int borderType, const NoxiMorphState *state);
/** Dilates 8-bit pixels, one channel. */
NOX_API NoxStatus noxiDilateBorderReplicate_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   int borderType, const NoxiMorphState *state);
/** Dilates 8-bit pixels, three channels. */
NOX_API NoxStatus noxiDilateBorderReplicate_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   int borderType, const NoxiMorphState *state);
/** Dilates 8-bit pixels, four channels. */
NOX_API NoxStatus noxiDilateBorderReplicate_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                   int borderType, const NoxiMorphState *state);
/** Dilates single-precision pixels, one channel. */
NOX_API NoxStatus noxiDilateBorderReplicate_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int borderType, const NoxiMorphState *state);
/** Dilates single-precision pixels, three channels. */
NOX_API NoxStatus noxiDilateBorderReplicate_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int borderType, const NoxiMorphState *state);
/** Dilates single-precision pixels, four channels. */
NOX_API NoxStatus noxiDilateBorderReplicate_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                    NoxiSize roi, int borderType, const NoxiMorphState *state);
/** @} */

/** The state of the compound operations: two morphology states and a temporary image, all in one block. */
typedef struct {
    NoxiMorphState *forwardState;   /**< Of the caller's mask and anchor. */
    NoxiMorphState *reflectedState; /**< Of the mask turned about, with the anchor turned about likewise. */
    Nox8u *tempImage;               /**< The temporary image, at a multiple of 32. */
    Nox32s tempSize;                /**< Its bytes. */
    Nox32s tempFlags;               /**< 0. */
} NoxiMorphAdvState;

/**
 * @name Size of a compound state
 * Writes the bytes of the state for images of size roi and this mask: rowBytes * roi.height + 84 + twice the size of a
 * morphology state, with rowBytes the bytes of a row rounded up to a multiple of 32 (84 in a build with 32-bit
 * pointers). In a compound state every mask but a rectangle and an empty one is of the general kind, and the size is
 * large enough for that as well as for the kind that the morphology state would have by itself. It does not depend on
 * the anchor.
 *
 * Status, in this order: noxStsBadSize when roi.height is below 1, noxStsNullPointer (size), noxStsNullPointer (mask),
 * noxStsBadSize when roi.width or a side of maskSize is below 1; noxStsBadSize, and nothing stored, when the size
 * exceeds the largest int.
 * @{
 */
/** Bytes of a compound state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvGetSize_8u_C1R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a compound state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvGetSize_8u_C3R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a compound state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvGetSize_8u_C4R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a compound state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvGetSize_32f_C1R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a compound state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvGetSize_32f_C3R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** Bytes of a compound state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvGetSize_32f_C4R(NoxiSize roi, const Nox8u *mask, NoxiSize maskSize, int *size);
/** @} */

/**
 * @name Building a compound state
 * Builds the state in memory of the caller's of the queried size, at any multiple of 4 bytes. It keeps no reference to
 * the mask.
 *
 * Status, in this order: noxStsBadSize when roi.height is below 1, noxStsNullPointer (state), noxStsNullPointer (mask),
 * noxStsBadSize when roi.width or a side of maskSize is below 1, noxStsBadAnchor when the anchor is no cell of the
 * mask, noxStsBadSize when the state would exceed the largest int.
 * @{
 */
/** Builds a compound state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvInit_8u_C1R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                          NoxiPoint anchor);
/** Builds a compound state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvInit_8u_C3R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                          NoxiPoint anchor);
/** Builds a compound state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvInit_8u_C4R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                          NoxiPoint anchor);
/** Builds a compound state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvInit_32f_C1R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                           NoxiPoint anchor);
/** Builds a compound state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvInit_32f_C3R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                           NoxiPoint anchor);
/** Builds a compound state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvInit_32f_C4R(NoxiMorphAdvState *state, NoxiSize roi, const Nox8u *mask, NoxiSize maskSize,
                                           NoxiPoint anchor);
/** @} */

/**
 * @name Allocating a compound state
 * Builds the state for images of size roi and a mask of maskSize cells with this anchor, in a block from noxsMalloc_8u.
 * noxiMorphAdvFree releases it.
 *
 * Status: noxStsNullPointer (state), noxStsNoMemory, then as for building. *state is written only on success.
 * @{
 */
/** Allocates and builds a compound state for 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_8u_C1R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                               NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a compound state for 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_8u_C3R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                               NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a compound state for 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_8u_C4R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                               NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a compound state for single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_32f_C1R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                                NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a compound state for single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_32f_C3R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                                NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a compound state for single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphAdvInitAlloc_32f_C4R(NoxiMorphAdvState **state, NoxiSize roi, const Nox8u *mask,
                                                NoxiSize maskSize, NoxiPoint anchor);
/** @} */

/** Releases a compound state that InitAlloc has made. Status: noxStsNullPointer. */
NOX_API NoxStatus noxiMorphAdvFree(NoxiMorphAdvState *state);

/**
 * @name Opening, closing, top hat, black hat and gradient
 * With F the mask and R the mask turned about (which makes dilation the partner of erosion):
 * - open: dilation by R of the erosion by F;
 * - close: erosion by R of the dilation by F;
 * - top hat: src minus its opening; black hat: its closing minus src;
 * - gradient: dilation by F minus erosion by F.
 *
 * Differences below 0 are 0. Borders, and floats that are not numbers, are as in erosion and dilation. src and dst may
 * not overlap. Runs on the calling thread.
 *
 * @param borderType  noxBorderReplicate.
 * @param state       built for this type and layout, and for images of this size. Its temporary image is used, so one
 *                    state serves one call at a time.
 *
 * Status, in this order: noxStsNullPointer (src, dst, state), noxStsBadSize, noxStsBadStep, noxStsOddStep (Nox32f),
 * noxStsBadArgument for another borderType, noxStsBadSize when roi.width exceeds that of the state or when roi, with
 * its rows rounded up to 32 bytes, has fewer bytes than the temporary image. A roi that is higher than the state's is
 * not noticed and writes past the temporary image: keep to the size of the state.
 * @{
 */
/** Opening of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphOpenBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             int borderType, const NoxiMorphAdvState *state);
/** Opening of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphOpenBorder_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             int borderType, const NoxiMorphAdvState *state);
/** Opening of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphOpenBorder_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             int borderType, const NoxiMorphAdvState *state);
/** Opening of single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphOpenBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Opening of single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphOpenBorder_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Opening of single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphOpenBorder_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Closing of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphCloseBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Closing of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphCloseBorder_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Closing of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphCloseBorder_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphAdvState *state);
/** Closing of single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphCloseBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Closing of single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphCloseBorder_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Closing of single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphCloseBorder_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Top hat of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphTophatBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Top hat of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphTophatBorder_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Top hat of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphTophatBorder_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphAdvState *state);
/** Top hat of single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphTophatBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                                int borderType, const NoxiMorphAdvState *state);
/** Top hat of single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphTophatBorder_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                                int borderType, const NoxiMorphAdvState *state);
/** Top hat of single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphTophatBorder_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                                int borderType, const NoxiMorphAdvState *state);
/** Black hat of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphBlackhatBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Black hat of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphBlackhatBorder_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Black hat of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphBlackhatBorder_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Black hat of single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphBlackhatBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** Black hat of single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphBlackhatBorder_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** Black hat of single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphBlackhatBorder_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of 8-bit pixels, one channel. */
NOX_API NoxStatus noxiMorphGradientBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of 8-bit pixels, three channels. */
NOX_API NoxStatus noxiMorphGradientBorder_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of 8-bit pixels, four channels. */
NOX_API NoxStatus noxiMorphGradientBorder_8u_C4R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of single-precision pixels, one channel. */
NOX_API NoxStatus noxiMorphGradientBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of single-precision pixels, three channels. */
NOX_API NoxStatus noxiMorphGradientBorder_32f_C3R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** Morphological gradient of single-precision pixels, four channels. */
NOX_API NoxStatus noxiMorphGradientBorder_32f_C4R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep,
                                                  NoxiSize roi, int borderType, const NoxiMorphAdvState *state);
/** @} */

/** The state of grey dilation and erosion: a record, followed by the kernel values. */
typedef struct {
    void *kernel;      /**< The first kernel value: Nox32s for Nox8u images, Nox32f for Nox32f. */
    Nox32s maskWidth;  /**< The kernel's width. */
    Nox32s maskHeight; /**< The kernel's height. */
    Nox32s anchorX;    /**< The anchor's column. */
    Nox32s anchorY;    /**< The anchor's row. */
    Nox32s roiWidth;   /**< The largest width that the state serves. */
    Nox32s roiHeight;  /**< The largest height that the state serves. */
} NoxiMorphGrayState;

/**
 * @name States of grey morphology
 * GetSize writes the bytes of the state for a kernel of maskSize values: 4 for each value, and 28 (in a build with
 * 32-bit pointers). Init builds it in memory of the caller's, InitAlloc in a block from noxsMalloc_8u, which Free
 * releases. A state keeps no reference to the caller's values, and calls only read it.
 *
 * Status, in this order: noxStsNullPointer (mask; size or state), noxStsBadSize when a side of roi or of maskSize is
 * below 1, noxStsBadAnchor when the anchor is no cell of the mask, noxStsBadSize, and nothing stored, when the size
 * exceeds the largest int, noxStsNoMemory. Free: noxStsNullPointer.
 * @{
 */
/** Bytes of a state for 8-bit images. */
NOX_API NoxStatus noxiMorphGrayGetSize_8u_C1R(NoxiSize roi, const Nox32s *mask, NoxiSize maskSize, int *size);
/** Builds a state for 8-bit images. */
NOX_API NoxStatus noxiMorphGrayInit_8u_C1R(NoxiMorphGrayState *state, NoxiSize roi, const Nox32s *mask,
                                           NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a state for 8-bit images. */
NOX_API NoxStatus noxiMorphGrayInitAlloc_8u_C1R(NoxiMorphGrayState **state, NoxiSize roi, const Nox32s *mask,
                                                NoxiSize maskSize, NoxiPoint anchor);
/** Releases an allocated state for 8-bit images. */
NOX_API NoxStatus noxiMorphGrayFree_8u_C1R(NoxiMorphGrayState *state);
/** Bytes of a state for single-precision images. */
NOX_API NoxStatus noxiMorphGrayGetSize_32f_C1R(NoxiSize roi, const Nox32f *mask, NoxiSize maskSize, int *size);
/** Builds a state for single-precision images. */
NOX_API NoxStatus noxiMorphGrayInit_32f_C1R(NoxiMorphGrayState *state, NoxiSize roi, const Nox32f *mask,
                                            NoxiSize maskSize, NoxiPoint anchor);
/** Allocates and builds a state for single-precision images. */
NOX_API NoxStatus noxiMorphGrayInitAlloc_32f_C1R(NoxiMorphGrayState **state, NoxiSize roi, const Nox32f *mask,
                                                 NoxiSize maskSize, NoxiPoint anchor);
/** Releases an allocated state for single-precision images. */
NOX_API NoxStatus noxiMorphGrayFree_32f_C1R(NoxiMorphGrayState *state);
/** @} */

/**
 * @name Grey dilation and erosion
 * dst(x, y) = the maximum (dilation) or minimum (erosion), over all cells (c, r) of the kernel k, of
 * k(c, r) + src(x + c - anchor.x, y + r - anchor.y). A pixel outside the image is the nearest edge pixel. The kernel is
 * added in erosion too: for the classical form give it negated values. All cells take part. One channel.
 *
 * Nox8u: the result is limited to 0 to 255. Kernel values above 255 act as 255, those below -255 as -255. Nox32f: the
 * exact sum of the winner, rounded once; a result beyond the largest finite number on the losing side, and sums that
 * are not numbers, give way to that number.
 *
 * src and dst may not overlap. Runs on the calling thread. The time grows with the number of cells.
 *
 * @param borderType  noxBorderReplicate.
 *
 * Status, in this order: noxStsNullPointer (src, dst, state), noxStsBadSize, noxStsBadStep, noxStsOddStep (Nox32f),
 * noxStsBadArgument for another borderType, noxStsBadSize when a side of roi exceeds that of the state.
 * @{
 */
/** Grey dilation of 8-bit pixels. */
NOX_API NoxStatus noxiGrayDilateBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphGrayState *state);
/** Grey dilation of single-precision pixels. */
NOX_API NoxStatus noxiGrayDilateBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                               int borderType, const NoxiMorphGrayState *state);
/** Grey erosion of 8-bit pixels. */
NOX_API NoxStatus noxiGrayErodeBorder_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                             int borderType, const NoxiMorphGrayState *state);
/** Grey erosion of single-precision pixels. */
NOX_API NoxStatus noxiGrayErodeBorder_32f_C1R(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, NoxiSize roi,
                                              int borderType, const NoxiMorphGrayState *state);
/** @} */

/**
 * @name Buffer of reconstruction
 * Writes the bytes of the buffer for an image of size roi: 4 w + h + 130 for Nox8u, 16 w + h + 130 for Nox32f.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize; noxStsBadSize, and nothing stored, when the size exceeds the
 * largest int.
 * @{
 */
/** Bytes of the buffer of reconstruction for 8-bit images. */
NOX_API NoxStatus noxiMorphReconstructGetBufferSize_8u_C1(NoxiSize roi, int *size);
/** Bytes of the buffer of reconstruction for single-precision images. */
NOX_API NoxStatus noxiMorphReconstructGetBufferSize_32f_C1(NoxiSize roi, int *size);
/** @} */

/**
 * @name Reconstruction by dilation and erosion
 * Grows the marker srcDst under the mask src (dilation): srcDst is cut at src, then each pixel takes the maximum of
 * itself and its neighbours, cut at src, again and again until nothing changes. Erosion is the mirror image: the marker
 * shrinks above the mask, with minimum and maximum exchanged. The result is that fixed point exactly, for every thread
 * count (L. Vincent, "Morphological grayscale reconstruction in image analysis: applications and efficient algorithms",
 * 1993).
 *
 * Nox32f images may hold infinities; a zero may come out with either sign. Not-a-numbers spread in no defined way, but
 * the call ends.
 *
 * src and srcDst may not overlap. Two threads share images of at least 11 by 11 pixels.
 *
 * @param buffer  of the size that the query tells for this roi; any alignment.
 * @param norm    1: a pixel has 4 neighbours; 0: it has 8.
 *
 * Status, in this order: noxStsNullPointer (src, srcDst, buffer), noxStsBadSize, noxStsBadStep, noxStsOddStep (Nox32f),
 * noxStsBadArgument for another norm.
 * @{
 */
/** Reconstruction by dilation of 8-bit pixels. */
NOX_API NoxStatus noxiMorphReconstructDilate_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep,
                                                     NoxiSize roi, Nox8u *buffer, int norm);
/** Reconstruction by dilation of single-precision pixels. */
NOX_API NoxStatus noxiMorphReconstructDilate_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                                      NoxiSize roi, Nox8u *buffer, int norm);
/** Reconstruction by erosion of 8-bit pixels. */
NOX_API NoxStatus noxiMorphReconstructErode_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *srcDst, int srcDstStep,
                                                    NoxiSize roi, Nox8u *buffer, int norm);
/** Reconstruction by erosion of single-precision pixels. */
NOX_API NoxStatus noxiMorphReconstructErode_32f_C1IR(const Nox32f *src, int srcStep, Nox32f *srcDst, int srcDstStep,
                                                     NoxiSize roi, Nox8u *buffer, int norm);
/** @} */

NOX_END_DECLS

#endif
