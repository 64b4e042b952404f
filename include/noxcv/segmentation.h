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
 * Writes to size the bytes of the buffer for the fills above and for those in a range: width * height * 6 + 32. Of a
 * size beyond 2147483647 the low 32 bits are written, and the fills refuse the image with noxStsBadSize.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize (a side below 1).
 */
NOX_API NoxStatus noxiFloodFillGetSize(NoxiSize roi, int *size);
/** @} */

/**
 * @name Flood fill of pixels in a range around the seed
 * Repaints, in place, the connected region of pixels around the seed whose channels all lie from the seed's value -
 * minDelta to the seed's value + maxDelta: clamped to 0 to 255 for bytes, formed in single precision for floats, where
 * a pixel fails if it is less than the lower end or greater than the upper one (a not-a-number joins; negative deltas
 * are taken as they are). The seed itself is always filled. newValue may lie in the range: each pixel is painted and
 * counted once.
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
 * Writes to size the bytes of the buffer for the fills along gradients: (width + 2) * (height + 2) + width * height * 6
 * + 32. Of a size beyond 2147483647 the low 32 bits are written, and the fills refuse the image with noxStsBadSize.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize (a side below 1).
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
 * Labels the components of the image markers and writes their number to count.
 *
 * @param buffer  of the size that noxiLabelMarkersGetBufferSize_8u_C1R tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (markers, buffer, count), noxStsBadSize (also for an image whose buffer size
 * an int does not hold), noxStsBadStep, noxStsBadArgument unless 1 <= minLabel <= maxLabel < 255 and norm is 0 or 1.
 */
NOX_API NoxStatus noxiLabelMarkers_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, int minLabel, int maxLabel,
                                           int norm, int *count, Nox8u *buffer);
/**
 * Writes to size the bytes of the buffer, which are those of noxiFloodFillGetSize: width * height * 6 + 32. Of a size
 * beyond 2147483647 the low 32 bits are written, and noxiLabelMarkers_8u_C1IR refuses the image with noxStsBadSize.
 *
 * Status, in this order: noxStsNullPointer (size), noxStsBadSize (a side below 1).
 */
NOX_API NoxStatus noxiLabelMarkersGetBufferSize_8u_C1R(NoxiSize roi, int *size);
/** @} */

/**
 * Draws one-pixel boundaries between the labelled areas of markers, in place: in raster order, a pixel becomes value
 * when one of its neighbours that have been passed, as it is by then, is not value and differs from the pixel. Those
 * are the left one and the one above for norm 1, the left one and the three above for norm 0. So a boundary falls on
 * the later of two pixels that differ, and none is drawn beside what is value already.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep, noxStsBadArgument (norm is neither 0 nor 1).
 */
NOX_API NoxStatus noxiBoundSegments_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, Nox8u value, int norm);

/**
 * @name Watershed
 * Lets labels grow, in place, over the pixels of label 0 in the order of a relief of grey levels (S. Beucher, F. Meyer,
 * 1993). Labels are 1 to 254; 255 is a boundary, and one that the caller has drawn does not spread. Bits of flag: 1
 * asks for the form by queue, 2 for the one by cost (bit 1 goes first); 64 draws boundaries of 255 by the
 * 4-neighbourhood, 128 by the 8-neighbourhood (64 goes first).
 *
 * By queue: norm 1 grows over 4 neighbours, 0 over 8. Labelled pixels with an unlabelled neighbour wait, in raster
 * order, in a first-in first-out queue of their grey level. Queues are emptied from level 0 up. A pixel that is popped
 * labels its unlabelled neighbours, in the order left, right, up, down, up left, up right, down left, down right, and
 * puts each into the queue of the greater of its grey level and the current one. With boundaries, a labelled pixel
 * becomes 255 before the growth, in raster order, if a neighbour has another label then; and a pixel that is reached
 * becomes 255 if a neighbour has another label than the one it would get. What is reached from a boundary takes the
 * label of its neighbours if they have just one, otherwise 255.
 *
 * By cost: each pixel gets the label by which it is reached at the least cost: first the highest grey level on the way,
 * itself and the labelled pixel included, then the length of the way (the level times 2^23 plus the length; the level
 * starts a new length). Norms: 0, 8 neighbours at 1 each; 1, 4 neighbours at 1; 2, 8 neighbours at 11 straight and 15
 * diagonal; 3, fronts of the 4-neighbourhood with a unit of 64: behind the better of the horizontal neighbours' costs
 * and the better of the vertical ones', the smaller plus 64, less a table of what two fronts at a right angle save when
 * they differ by less than 64. The label comes from the neighbour of the cheapest way, the first in the order left, up
 * left, up, up right, right, down left, down, down right of equal ones; for norm 3 from that of the smallest cost, in
 * the order left, right, up, down. Boundaries are drawn afterwards: of two neighbours with different labels the one of
 * larger cost becomes 255, of equal costs the later one in raster order.
 *
 * Pixels that no label reaches keep 0.
 * @{
 */
/**
 * Labels grown over a relief, by queue or by cost.
 *
 * @param src     the relief; not written.
 * @param markers the labels.
 * @param buffer  of the size that noxiSegmentWatershedGetBufferSize_8u_C1R tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, markers, buffer), noxStsBadSize, noxStsBadStep, noxStsBadArgument (by
 * queue: norm is neither 0 nor 1; by cost: norm outside 0 to 3; neither form asked for), noxStsBadSize for an image
 * whose buffer size an int does not hold.
 */
NOX_API NoxStatus noxiSegmentWatershed_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep,
                                               NoxiSize roi, int norm, int flag, Nox8u *buffer);
/**
 * Writes to size the bytes of the watershed's buffer: with S the width rounded up to a multiple of 32, the larger of
 * (2 * height + 2) * S + 4 * S * height + height + 66 and 12 * width * height + 36 + (width + 2) * (height + 2).
 *
 * Status: noxStsNullPointer, noxStsBadSize (also beyond an int).
 */
NOX_API NoxStatus noxiSegmentWatershedGetBufferSize_8u_C1R(NoxiSize roi, int *size);
/** @} */

/**
 * @name Growth along gradients
 * Lets labels grow, in place, in the order of the smallest difference between neighbouring pixels; with three channels
 * the largest of the channels' differences. The outer rows and columns of the image become 255, over labels too, and
 * take no part. Labels are 1 to 254, or 1 to 253 where boundaries are drawn (as 254); 255 takes no part. Norm 1 grows
 * over 4 neighbours, 0 over 8. Bits of flag: 64 draws boundaries by the 4-neighbourhood, 128 by the 8-neighbourhood (64
 * goes first).
 *
 * Unlabelled pixels wait in first-in first-out queues, one for each difference: at first, in raster order, those with
 * labelled neighbours, at the smallest difference to one. A pixel is popped from the lowest queue that is not empty. It
 * takes the label of the labelled neighbour of the smallest difference; of equal ones, in the order left, right, up,
 * down, up left, up right, down left, down right, the last one whose label is below 254, or else the first. With
 * boundaries it becomes 254 if a neighbour has another label from 1 to 253. Then its unlabelled neighbours wait, in the
 * same order, at their difference from it.
 * @{
 */
/**
 * Labels grown over a picture of grey levels.
 *
 * @param src     the picture; not written.
 * @param markers the labels.
 * @param buffer  of the size that noxiSegmentGradientGetBufferSize_8u_C1R tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, markers, buffer), noxStsBadSize, noxStsBadStep, noxStsBadArgument
 * (norm is neither 0 nor 1), noxStsBadSize for an image whose buffer size an int does not hold.
 */
NOX_API NoxStatus noxiSegmentGradient_8u_C1IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep,
                                              NoxiSize roi, int norm, int flag, Nox8u *buffer);
/**
 * Labels grown over a picture of three channels.
 *
 * @param src     the picture; not written.
 * @param markers the labels, one channel.
 * @param buffer  of the size that noxiSegmentGradientGetBufferSize_8u_C3R tells for this roi; any alignment.
 *
 * Status, in this order: noxStsNullPointer (src, markers, buffer), noxStsBadSize, noxStsBadStep, noxStsBadArgument
 * (norm is neither 0 nor 1), noxStsBadSize for an image whose buffer size an int does not hold.
 */
NOX_API NoxStatus noxiSegmentGradient_8u_C3IR(const Nox8u *src, int srcStep, Nox8u *markers, int markerStep,
                                              NoxiSize roi, int norm, int flag, Nox8u *buffer);
/**
 * Writes to size the bytes of the buffer for pictures of one channel: 13 * width * height + 103.
 *
 * Status: noxStsNullPointer, noxStsBadSize (also beyond an int).
 */
NOX_API NoxStatus noxiSegmentGradientGetBufferSize_8u_C1R(NoxiSize roi, int *size);
/**
 * Writes to size the bytes of the buffer for pictures of three channels: 13 * width * height + 103.
 *
 * Status: noxStsNullPointer, noxStsBadSize (also beyond an int).
 */
NOX_API NoxStatus noxiSegmentGradientGetBufferSize_8u_C3R(NoxiSize roi, int *size);
/** @} */

NOX_END_DECLS

#endif
