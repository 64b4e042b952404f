/**
 * @file noxtypes.h
 * Element types, structures, status values and named constants shared by all functions of the library.
 *
 * Valid C99 and C++. An image is never passed as a whole: a function gets the address of the first (top left)
 * pixel of a rectangular region, the row step in bytes and the region's size in pixels. Pixel (x, y) with C
 * interleaved channels of e bytes lies y * step + x * C * e bytes behind the first pixel.
 */
#ifndef NOXTYPES_H
#define NOXTYPES_H

#ifdef __cplusplus
/** Opens the declarations of a header: in C++ they have the names that C gives them. */
#define NOX_BEGIN_DECLS extern "C" {
/** Closes them. */
#define NOX_END_DECLS }
#else
#define NOX_BEGIN_DECLS
#define NOX_END_DECLS
#endif

/**
 * @name Version of these headers
 * noxcvGetLibVersion() tells that of the library that is loaded.
 * @{
 */
#define NOXCV_VERSION_MAJOR 5         /**< Raised when programs must be compiled anew. */
#define NOXCV_VERSION_MINOR 2         /**< Raised when something is added. */
#define NOXCV_VERSION_MAJOR_BUILD 108 /**< Build number of the major version. */
#define NOXCV_VERSION_BUILD 398       /**< Build number. */
#define NOXCV_VERSION "5.2"           /**< As text. */
/** @} */

/** Marks what the shared library exports. */
#define NOX_API __attribute__((visibility("default")))

NOX_BEGIN_DECLS

typedef unsigned char Nox8u;   /**< 8-bit unsigned element. */
typedef signed char Nox8s;     /**< 8-bit signed element. */
typedef unsigned short Nox16u; /**< 16-bit unsigned element. */
typedef signed short Nox16s;   /**< 16-bit signed element. */
typedef unsigned int Nox32u;   /**< 32-bit unsigned element. */
typedef signed int Nox32s;     /**< 32-bit signed element. */
typedef float Nox32f;          /**< Single-precision element. */
typedef double Nox64f;         /**< Double-precision element. */

/** Size of a region, in pixels. */
typedef struct {
    int width;  /**< Columns. */
    int height; /**< Rows. */
} NoxiSize;

/** A pixel position, relative to the first pixel of the region. */
typedef struct {
    int x; /**< Column. */
    int y; /**< Row. */
} NoxiPoint;

/** A position with fraction. */
typedef struct {
    Nox32f x; /**< Along the row. */
    Nox32f y; /**< Down the column. */
} NoxiPoint32f;

/** A rectangle: top left pixel and size. */
typedef struct {
    int x;      /**< Column of the top left pixel. */
    int y;      /**< Row of the top left pixel. */
    int width;  /**< Columns. */
    int height; /**< Rows. */
} NoxiRect;

/**
 * Result of nearly every function: 0 success, negative an error (nothing was written), positive a warning
 * (the result is complete and holds a documented substitute).
 */
typedef enum {
    noxStsUnsupportedMode = -9999,    /**< A comparison operator that the function does not accept. */
    noxStsOddStep = -108,             /**< A row step is not a multiple of the element size. */
    noxStsBadMetric = -56,            /**< A metric is not positive. */
    noxStsBadChannelCount = -53,      /**< A channel count is neither 1 nor 3. */
    noxStsBadChannelOfInterest = -52, /**< A channel of interest is outside 1 to 3. */
    noxStsBadAnchor = -34,            /**< An anchor lies outside its mask or kernel. */
    noxStsBadMaskSize = -33,          /**< A kernel or mask size that the function does not take. */
    noxStsBadStep = -14,              /**< A row step is smaller than one row of the region. */
    noxStsBadDataType = -12,          /**< A data-type selector that the function does not accept. */
    noxStsOutOfRange = -11,           /**< A value or point lies outside its allowed range. */
    noxStsNoMemory = -9,              /**< An allocation failed. */
    noxStsNullPointer = -8,           /**< A pointer argument is null. */
    noxStsBadSize = -6,               /**< A width, height or length is below 1, or too small. */
    noxStsBadArgument = -5,           /**< An argument of its own kind is wrong. */
    noxStsBadLine = -2,               /**< A line has no points. */
    noxStsNoError = 0,                /**< Success. */
    noxStsSqrtOfNegative = 3,         /**< Warning: a negative element met a square root. */
    noxStsDivideByZero = 6,           /**< Warning: the denominator of a relative norm is zero. */
    noxStsBufferSizeWarning = 12,     /**< Warning: a computed size exceeds 2147483647. */
    noxStsLinesTruncated = 33,        /**< Warning: more lines were found than fit the list. */
    noxStsKernelNotSymmetric = 38     /**< Warning: the taps of a layer kernel are not symmetric. */
} NoxStatus;

/** What stands for a pixel outside the image; passed as int. */
enum {
    noxBorderConstant = 0,  /**< A constant. */
    noxBorderReplicate = 1, /**< The nearest edge pixel. */
    noxBorderWrap = 2,      /**< Cyclic: position -1 is the last pixel. */
    noxBorderMirror = 3,    /**< Reflection that does not repeat the edge: position -1 is pixel 1. */
    noxBorderMirrorEdge = 4 /**< Reflection that repeats the edge: position -1 is pixel 0. */
};

/** Mask sizes of the fixed filters; passed as int. */
enum {
    noxMskSize3x3 = 33, /**< 3 columns, 3 rows. */
    noxMskSize5x5 = 55  /**< 5 columns, 5 rows. */
};

/** Comparison operators of the threshold functions; passed as int. */
enum {
    noxCmpLess = 0,   /**< Pixels less than the threshold. */
    noxCmpGreater = 4 /**< Pixels greater than the threshold. */
};

/** Element types where a number tells them; passed as int. */
enum {
    noxType8u = 1,  /**< Nox8u. */
    noxType8s = 3,  /**< Nox8s. */
    noxType16u = 5, /**< Nox16u. */
    noxType32f = 13 /**< Nox32f. */
};

/** The library's version record. */
typedef struct {
    int major;             /**< 5 */
    int minor;             /**< 2 */
    int majorBuild;        /**< Build number of the major version. */
    int build;             /**< Build number. */
    char targetCpu[4];     /**< Processor tier, zero padded: "a6". */
    const char *name;      /**< File name of the library. */
    const char *version;   /**< Version as text. */
    const char *buildDate; /**< Three-letter month, day and year, separated by blanks. */
} NoxLibraryVersion;

NOX_END_DECLS

#endif
