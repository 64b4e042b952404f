/**
 * @file motion.h
 * Motion: history images and foreground models.
 */
#ifndef NOXCV_MOTION_H
#define NOXCV_MOTION_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * @name Motion history
 * Keeps in each pixel of mhi the last time at which it moved (A. F. Bobick, J. W. Davis, "The recognition of human
 * movement using temporal templates", 2001), in place. Where silhouette is not zero, mhi becomes timestamp, bit for
 * bit. Elsewhere an entry below timestamp - duration (one single-precision subtraction) becomes 0, and the others stay;
 * one that equals the limit stays. One channel.
 *
 * What is below: the members with an integer silhouette compare bit patterns in the order of floats, in which minus
 * zero lies below zero and not-a-numbers lie beyond the infinity of their sign. noxiUpdateMotionHistory_32f_C1IR
 * compares in single precision: an entry that is not a number, and every entry when the limit is not a number, becomes
 * 0, and minus zero equals zero. Its silhouette counts as zero where it is neither below nor above zero.
 *
 * Status, in this order: noxStsNullPointer (silhouette, mhi), noxStsBadSize, noxStsBadStep, noxStsOddStep (mhi, and
 * silhouette in 16u and 32f), noxStsOutOfRange unless duration >= 0 (a not-a-number fails too).
 * @{
 */
/** History from a silhouette of bytes. */
NOX_API NoxStatus noxiUpdateMotionHistory_8u32f_C1IR(const Nox8u *silhouette, int silhouetteStep, Nox32f *mhi,
                                                     int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** History from a silhouette of 16-bit elements. */
NOX_API NoxStatus noxiUpdateMotionHistory_16u32f_C1IR(const Nox16u *silhouette, int silhouetteStep, Nox32f *mhi,
                                                      int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** History from a silhouette of floats. */
NOX_API NoxStatus noxiUpdateMotionHistory_32f_C1IR(const Nox32f *silhouette, int silhouetteStep, Nox32f *mhi,
                                                   int mhiStep, NoxiSize roi, Nox32f timestamp, Nox32f duration);
/** @} */

/** One Gaussian of a pixel's mixture lies packed in memory: count (Nox32s), weight (Nox64f), then for each channel the
 * variances and then the means (Nox64f): 28 bytes with one channel, 60 with three. */

/**
 * State of the Gaussian model, made by noxiForegroundGaussianInitAlloc. A caller may read it between calls.
 */
typedef struct {
    Nox8u *background;      /**< Background image, as many channels as the frames. */
    int backgroundStep;     /**< Bytes: width times channels. */
    Nox8u *mask;            /**< Last foreground mask. */
    int maskStep;           /**< Bytes: width. */
    int window;             /**< Learning window in frames: 200. */
    int modes;              /**< Gaussians of a pixel: 5. */
    Nox64f backgroundShare; /**< Share of the weight that counts as background: 0.7. */
    Nox64f matchSigmas;     /**< A match lies within so many standard deviations: 2.5. */
    Nox64f initialSigma;    /**< 15; not used. */
    Nox64f initialWeight;   /**< 0.05; not used. */
    Nox64f newVariance;     /**< Variance of a new Gaussian: 900. */
    void **mixtures;        /**< The address of each pixel's Gaussians, in raster order; they lie in one block. */
    int frames;             /**< Frames seen. */
} NoxiForegroundGaussianState;

/** A colour that a pixel has had. */
typedef struct {
    Nox32f p;       /**< Probability of the colour; 0 ends the table. */
    Nox32f pb;      /**< Probability of the colour given background. */
    Nox8u value[3]; /**< The colour; with one channel the first byte, the others are 0. */
    Nox8u pad;      /**< Not used. */
} NoxiForegroundColor;

/** A change from one colour to the next that a pixel has had. */
typedef struct {
    Nox32f p;       /**< Probability of the change; 0 ends the table. */
    Nox32f pb;      /**< Probability of the change given background. */
    Nox8u value[8]; /**< Previous and current colour: bytes 0 and 1 with one channel, 0 to 2 and 3 to 5 with three. */
} NoxiForegroundChange;

/** What the histogram model knows of a pixel. Tables are kept from the most to the least probable entry. */
typedef struct {
    Nox32f colorPrior;                 /**< Probability that the pixel is background, by its colours. */
    Nox32f changePrior;                /**< The same, by its changes. */
    NoxiForegroundColor *colorTable;   /**< Colours. */
    NoxiForegroundChange *changeTable; /**< Changes. */
    Nox8u colorTrusted;                /**< Not 0: the colours have been learned. */
    Nox8u changeTrusted;               /**< Not 0: the changes have been learned. */
} NoxiForegroundPixel;

/**
 * State of the histogram model, made by noxiForegroundHistogramInitAlloc. A caller may read it between calls.
 */
typedef struct {
    Nox8u *background;           /**< Background image, as many channels as the frames. */
    int backgroundStep;          /**< Bytes: width times channels. */
    Nox8u *frameChange;          /**< Mask of changes against the previous frame. */
    int frameChangeStep;         /**< Bytes: width. */
    Nox8u *backgroundChange;     /**< Mask of changes against the background. */
    int backgroundChangeStep;    /**< Bytes: width. */
    Nox8u *previous;             /**< The previous frame. */
    int previousStep;            /**< Bytes: width times channels. */
    int reserved[2];             /**< 0. */
    NoxiForegroundPixel *pixels; /**< One a pixel, in raster order. */
    int colorLevels;             /**< Levels of the colour tolerance: 128. */
    int colorUsed;               /**< Colours used in decisions: 15. */
    int colorSize;               /**< Colours kept: 25. */
    int changeLevels;            /**< Levels of the tolerance of changes: 64. */
    int changeUsed;              /**< Changes used in decisions: 25. */
    int changeSize;              /**< Changes kept: 40. */
    int flags[2];                /**< 1, 1; not used. */
    Nox32f backgroundRate;       /**< Share of a frame in the background image: 0.1. */
    Nox32f slowRate;             /**< Learning rate of trusted tables, and the lowest probability that counts: 0.005. */
    Nox32f fastRate;             /**< Learning rate until then: 0.1. */
    Nox32f tolerance;            /**< A match lies within so many levels: 2. */
    Nox32f trustThreshold;       /**< Sum of probabilities from which a table is trusted: 0.9. */
    Nox32f minArea;              /**< 0; not used. */
} NoxiForegroundHistogramState;

/**
 * @name Foreground by mixtures of Gaussians
 * Splits video frames into foreground and background with a few Gaussians a pixel (C. Stauffer, W. E. L. Grimson,
 * "Adaptive background mixture models for real-time tracking", 1999). A call takes the next frame: it updates the
 * model, and writes the mask to dst, 255 for foreground and 0 for background, one channel. C1 takes gray frames, C3
 * frames of three channels.
 *
 * At first a pixel has one Gaussian of count 1, weight 1, variance 12.5 and the first frame's value as mean, and empty
 * ones of variance 12.5 and mean 0, which take part in matching. Each frame, with x the pixel's value (sums over the
 * channels in C3):
 * - the first Gaussian with (mean - x)^2 <= variance * matchSigmas^2, compared in extended precision, matches;
 * - with lr = 1 / (sum of counts + 1) the matching one's count rises by 1, every weight by (match - weight) * lr, and
 *   with d = x - mean the matching one's mean by d / count and its variance by (d^2 - variance) / count. If none
 *   matches, the last one gets count 1, variance newVariance and mean x, and every weight becomes count / sum of
 * counts;
 * - only in the frame whose number is window: lr = 1 / window, counts stay, mean and variance move by
 *   1 / (window * weight). If none matches, the last one gets count 1, variance newVariance, mean x and
 *   1 / (sum of counts) as weight, and the other weights are multiplied by 1 - 1 / window;
 * - the Gaussians are sorted by weight / sqrt(variance), largest first, stable, 0 for those of count 0;
 * - the background image gets the first one's mean + 0.5, truncated;
 * - the weights are summed up to backgroundShare in the new order; the pixel is background if the place (before the
 * sort) of the match is among those that were needed.
 *
 * The state is for frames of one size. Init reads the first frame. model and reserved must not be null and are not
 * read; the step of dst is not tested.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (srcStep); init: noxStsNoMemory, with nothing
 * allocated then and state unchanged.
 * @{
 */
/** Makes a model for gray frames from the first one. */
NOX_API NoxStatus noxiForegroundGaussianInitAlloc_8u_C1R(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,
                                                         NoxiForegroundGaussianState **state);
/** Makes a model for frames of three channels from the first one. */
NOX_API NoxStatus noxiForegroundGaussianInitAlloc_8u_C3R(const Nox8u *src, int srcStep, NoxiSize roi, const void *model,
                                                         NoxiForegroundGaussianState **state);
/** Updates the model with a gray frame and writes its foreground. */
NOX_API NoxStatus noxiForegroundGaussian_8u_C1R(const Nox8u *src, int srcStep, const Nox8u *reserved, int reservedStep,
                                                Nox8u *dst, int dstStep, NoxiSize roi,
                                                NoxiForegroundGaussianState *state);
/** Updates the model with a frame of three channels and writes its foreground. */
NOX_API NoxStatus noxiForegroundGaussian_8u_C3R(const Nox8u *src, int srcStep, const Nox8u *reserved, int reservedStep,
                                                Nox8u *dst, int dstStep, NoxiSize roi,
                                                NoxiForegroundGaussianState *state);
/** Releases all that init has allocated for gray frames; null gives noxStsNullPointer. */
NOX_API NoxStatus noxiForegroundGaussianFree_8u_C1R(NoxiForegroundGaussianState *state);
/** Releases all that init has allocated for three channels; null gives noxStsNullPointer. */
NOX_API NoxStatus noxiForegroundGaussianFree_8u_C3R(NoxiForegroundGaussianState *state);
/** @} */

/**
 * @name Foreground by histograms
 * Splits video frames into foreground and background with tables of the colours and of the changes that each pixel has
 * had (L. Li, W. Huang, I. Y. H. Gu, Q. Tian, "Foreground object detection from videos containing complex background",
 * 2003). A frame takes two calls: detection writes the mask to dst, 255 for foreground and 0 for background, one
 * channel; update learns the frame with that mask, or a better one, as foreground. C1 takes gray frames, C3 frames of
 * three channels. docs/motion.md tells the arithmetic.
 *
 * Detection of gray frames compares three bytes of an entry with three bytes of the row from the pixel on: the last two
 * pixels of a row read up to two bytes behind it. Those behind the last row are not read and count as 0.
 *
 * The state is for frames of one size. Init reads the first frame. model and reserved must not be null and are not
 * read; the steps of dst, foreground and reserved are not tested.
 *
 * Status, in this order: noxStsNullPointer, noxStsBadSize, noxStsBadStep (srcStep); init: noxStsNoMemory, with nothing
 * allocated then and state unchanged.
 * @{
 */
/** Makes a model for gray frames from the first one. */
NOX_API NoxStatus noxiForegroundHistogramInitAlloc_8u_C1R(const Nox8u *src, int srcStep, NoxiSize roi,
                                                          const void *model, NoxiForegroundHistogramState **state);
/** Makes a model for frames of three channels from the first one. */
NOX_API NoxStatus noxiForegroundHistogramInitAlloc_8u_C3R(const Nox8u *src, int srcStep, NoxiSize roi,
                                                          const void *model, NoxiForegroundHistogramState **state);
/** Writes the foreground of a gray frame. */
NOX_API NoxStatus noxiForegroundHistogram_8u_C1R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 NoxiForegroundHistogramState *state);
/** Writes the foreground of a frame of three channels. */
NOX_API NoxStatus noxiForegroundHistogram_8u_C3R(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, NoxiSize roi,
                                                 NoxiForegroundHistogramState *state);
/** Learns a gray frame whose foreground is known. */
NOX_API NoxStatus noxiForegroundHistogramUpdate_8u_C1R(const Nox8u *src, int srcStep, const Nox8u *foreground,
                                                       int foregroundStep, const Nox8u *reserved, int reservedStep,
                                                       NoxiSize roi, NoxiForegroundHistogramState *state);
/** Learns a frame of three channels whose foreground is known. */
NOX_API NoxStatus noxiForegroundHistogramUpdate_8u_C3R(const Nox8u *src, int srcStep, const Nox8u *foreground,
                                                       int foregroundStep, const Nox8u *reserved, int reservedStep,
                                                       NoxiSize roi, NoxiForegroundHistogramState *state);
/** Releases all that init has allocated for gray frames; null gives noxStsNullPointer. */
NOX_API NoxStatus noxiForegroundHistogramFree_8u_C1R(NoxiForegroundHistogramState *state);
/** Releases all that init has allocated for three channels; null gives noxStsNullPointer. */
NOX_API NoxStatus noxiForegroundHistogramFree_8u_C3R(NoxiForegroundHistogramState *state);
/** @} */

NOX_END_DECLS

#endif
