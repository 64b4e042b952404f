/**
 * @file segmentation.h
 * Segmentation: flood fill, labels and boundaries, watersheds and growth along gradients.
 */
#ifndef NOXCV_SEGMENTATION_H
#define NOXCV_SEGMENTATION_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/** What a flood fill has filled. */
typedef struct {
    Nox64f area;     /**< Number of pixels. */
    Nox64f value[3]; /**< The new value of each channel; 0 in those that the image does not have. */
    NoxiRect rect;   /**< Bounding box. */
} NoxiConnectedRegion;

/**
 * @name Flood fill of pixels equal to the seed
 * Repaints, in place, the connected region of pixels equal to the seed's value in all channels, and reports it. A float
 * is equal when it is neither less nor greater, so a not-a-number is equal to everything.
 *
 * If the seed's value already is newValue (in all channels; floats: none less or greater) the call returns
 * noxStsNoError and neither paints nor writes region.
 *
 * @param newValue  the new value; an array of three for three channels.
 * @param region    receives area, new value and bounding box.
 * @param buffer    of the size that noxiFloodFillGetSize tells for this roi; any alignment. It suffices for every
 * image.
 *
 * Status, in this order: noxStsNullPointer (image, region, buffer, and the arrays of three channels), noxStsBadSize
 * (also for an image whose buffer size an int does not hold), noxStsBadStep (below width elements: a step too small for
 * three channels passes), noxStsOddStep (32f: a step that is not even), noxStsOutOfRange (seed outside the roi).
 * @{
 */
/** Bytes equal to the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_4Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed, Nox8u newValue,
                                             NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes equal to the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_8Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed, Nox8u newValue,
                                             NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels equal to the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_4Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                             const Nox8u *newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels equal to the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_8Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                             const Nox8u *newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats equal to the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_4Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                              Nox32f newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats equal to the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_8Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                              Nox32f newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels equal to the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_4Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                              const Nox32f *newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels equal to the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_8Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                              const Nox32f *newValue, NoxiConnectedRegion *region, Nox8u *buffer);
/**
 * Writes the bytes of the buffer for the fills above and for those in a range: width * height * 6 + 32. Beyond an int
 * the low 32 bits are written, and the fills refuse the image.
 *
 * Status: noxStsNullPointer, noxStsBadSize.
 */
NOX_API NoxStatus noxiFloodFillGetSize(NoxiSize roi, int *size);
/** @} */

/**
 * @name Flood fill of pixels in a range around the seed
 * As above, for the connected region of pixels whose channels all lie from the seed's value - minDelta to the seed's
 * value + maxDelta: clamped to 0 to 255 for bytes, formed in single precision for floats, where a pixel fails if it is
 * less than the lower end or greater than the upper one (a not-a-number joins; negative deltas are taken as they are).
 * The seed itself is always filled. newValue may lie in the range: each pixel is painted and counted once.
 *
 * @param buffer  of the size that noxiFloodFillGetSize tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (image, region, buffer, and the arrays of three channels), noxStsBadSize
 * (also for an image whose buffer size an int does not hold), noxStsBadStep (below width elements: a step too small for
 * three channels passes), noxStsOddStep (32f: a step that is not even), noxStsOutOfRange (seed outside the roi).
 * @{
 */
/** Bytes in a band around the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Range4Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  Nox8u newValue, Nox8u minDelta, Nox8u maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes in a band around the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Range8Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  Nox8u newValue, Nox8u minDelta, Nox8u maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels in a band around the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Range4Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  const Nox8u *newValue, const Nox8u *minDelta, const Nox8u *maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels in a band around the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Range8Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  const Nox8u *newValue, const Nox8u *minDelta, const Nox8u *maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats in a band around the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Range4Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                   Nox32f newValue, Nox32f minDelta, Nox32f maxDelta,
                                                   NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats in a band around the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Range8Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                   Nox32f newValue, Nox32f minDelta, Nox32f maxDelta,
                                                   NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels in a band around the seed, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Range4Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                   const Nox32f *newValue, const Nox32f *minDelta,
                                                   const Nox32f *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels in a band around the seed, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Range8Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                   const Nox32f *newValue, const Nox32f *minDelta,
                                                   const Nox32f *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer);
/** @} */

/**
 * @name Flood fill along gradients
 * Repaints, in place, what is reached from the seed by steps from a pixel to a neighbour in a band around that pixel's
 * value, as it was before the call: all channels from value - minDelta to value + maxDelta. For floats the comparison
 * is |n + m - c| <= h in single precision, from left to right, for the neighbour n of a pixel c, with m = (minDelta -
 * maxDelta) * 0.5 and h = (minDelta + maxDelta) * 0.5. A seed that equals newValue is filled like any other.
 *
 * @param buffer  of the size that noxiFloodFillGetSize_Grad tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (image, region, buffer, and the arrays of three channels), noxStsBadSize
 * (also for an image whose buffer size an int does not hold), noxStsBadStep (below width elements: a step too small for
 * three channels passes), noxStsOddStep (32f: a step that is no multiple of 4), noxStsOutOfRange (seed outside the roi;
 * 32f: a delta that is not >= 0, not-a-numbers included).
 * @{
 */
/** Bytes in a band around a joined neighbour, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Grad4Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                 Nox8u newValue, Nox8u minDelta, Nox8u maxDelta,
                                                 NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes in a band around a joined neighbour, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Grad8Con_8u_C1IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                 Nox8u newValue, Nox8u minDelta, Nox8u maxDelta,
                                                 NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels in a band around a joined neighbour, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Grad4Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                 const Nox8u *newValue, const Nox8u *minDelta, const Nox8u *maxDelta,
                                                 NoxiConnectedRegion *region, Nox8u *buffer);
/** Bytes of three channels in a band around a joined neighbour, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Grad8Con_8u_C3IR(Nox8u *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                 const Nox8u *newValue, const Nox8u *minDelta, const Nox8u *maxDelta,
                                                 NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats in a band around a joined neighbour, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Grad4Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  Nox32f newValue, Nox32f minDelta, Nox32f maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats in a band around a joined neighbour, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Grad8Con_32f_C1IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  Nox32f newValue, Nox32f minDelta, Nox32f maxDelta,
                                                  NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels in a band around a joined neighbour, 4-connected. */
NOX_API NoxStatus noxiFloodFill_Grad4Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  const Nox32f *newValue, const Nox32f *minDelta,
                                                  const Nox32f *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer);
/** Floats of three channels in a band around a joined neighbour, 8-connected. */
NOX_API NoxStatus noxiFloodFill_Grad8Con_32f_C3IR(Nox32f *image, int imageStep, NoxiSize roi, NoxiPoint seed,
                                                  const Nox32f *newValue, const Nox32f *minDelta,
                                                  const Nox32f *maxDelta, NoxiConnectedRegion *region, Nox8u *buffer);
/**
 * Writes the bytes of the buffer for the fills along gradients: (width + 2) * (height + 2) + width * height * 6 + 32.
 * Beyond an int the low 32 bits are written, and the fills refuse the image.
 *
 * Status: noxStsNullPointer, noxStsBadSize.
 */
NOX_API NoxStatus noxiFloodFillGetSize_Grad(NoxiSize roi, int *size);
/** @} */

/**
 * @name Labels of connected components
 * Numbers, in place, the connected components of the pixels that are not zero, in the raster order of their first
 * pixels: minLabel, minLabel + 1 and so on to maxLabel, then from minLabel again. Norm 1 takes 4 neighbours as
 * connected, norm 0 takes 8.
 * @{
 */
/**
 * Labels the components and writes their number to count.
 *
 * @param buffer  of the size that noxiLabelMarkersGetBufferSize_8u_C1R tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (markers, buffer, count), noxStsBadSize (also for an image whose buffer size
 * an int does not hold), noxStsBadStep, noxStsBadArgument unless 1 <= minLabel <= maxLabel < 255 and norm is 0 or 1.
 */
NOX_API NoxStatus noxiLabelMarkers_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, int minLabel, int maxLabel,
                                           int norm, int *count, Nox8u *buffer);
/**
 * Writes the bytes of the buffer, which are those of noxiFloodFillGetSize.
 *
 * Status: noxStsNullPointer, noxStsBadSize.
 */
NOX_API NoxStatus noxiLabelMarkersGetBufferSize_8u_C1R(NoxiSize roi, int *size);
/** @} */

/**
 * Draws one-pixel boundaries between labelled areas, in place: in raster order, a pixel becomes value when one of its
 * neighbours that have been passed, as it is by then, is not value and differs from the pixel. Those are the left one
 * and the one above for norm 1, the left one and the three above for norm 0. So a boundary falls on the later of two
 * pixels that differ, and none is drawn beside what is value already.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsBadArgument (norm is neither 0 nor 1).
 */
NOX_API NoxStatus noxiBoundSegments_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, Nox8u value, int norm);

NOX_END_DECLS

#endif
