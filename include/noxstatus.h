/**
 * @file noxstatus.h
 * Names and sentences for status values. Nothing to link: both functions are in this header.
 */
#ifndef NOXSTATUS_H
#define NOXSTATUS_H

#include "noxtypes.h"

/** The name of a status value as it is spelled in noxtypes.h; "unknown status" for any other number. */
static inline const char *noxStatusName(NoxStatus status) {
    switch (status) {
    case noxStsUnsupportedMode:
        return "noxStsUnsupportedMode";
    case noxStsOddStep:
        return "noxStsOddStep";
    case noxStsBadMetric:
        return "noxStsBadMetric";
    case noxStsBadChannelCount:
        return "noxStsBadChannelCount";
    case noxStsBadChannelOfInterest:
        return "noxStsBadChannelOfInterest";
    case noxStsBadAnchor:
        return "noxStsBadAnchor";
    case noxStsBadMaskSize:
        return "noxStsBadMaskSize";
    case noxStsBadStep:
        return "noxStsBadStep";
    case noxStsBadDataType:
        return "noxStsBadDataType";
    case noxStsOutOfRange:
        return "noxStsOutOfRange";
    case noxStsNoMemory:
        return "noxStsNoMemory";
    case noxStsNullPointer:
        return "noxStsNullPointer";
    case noxStsBadSize:
        return "noxStsBadSize";
    case noxStsBadArgument:
        return "noxStsBadArgument";
    case noxStsBadLine:
        return "noxStsBadLine";
    case noxStsNoError:
        return "noxStsNoError";
    case noxStsSqrtOfNegative:
        return "noxStsSqrtOfNegative";
    case noxStsDivideByZero:
        return "noxStsDivideByZero";
    case noxStsBufferSizeWarning:
        return "noxStsBufferSizeWarning";
    case noxStsLinesTruncated:
        return "noxStsLinesTruncated";
    case noxStsKernelNotSymmetric:
        return "noxStsKernelNotSymmetric";
    }
    return "unknown status";
}

/** One sentence on a status value, in English. */
static inline const char *noxStatusText(NoxStatus status) {
    switch (status) {
    case noxStsUnsupportedMode:
        return "A comparison operator that the function does not accept.";
    case noxStsOddStep:
        return "A row step is not a multiple of the element size.";
    case noxStsBadMetric:
        return "A metric is not positive.";
    case noxStsBadChannelCount:
        return "A channel count is neither 1 nor 3.";
    case noxStsBadChannelOfInterest:
        return "A channel of interest is outside 1 to 3.";
    case noxStsBadAnchor:
        return "An anchor lies outside its mask or kernel.";
    case noxStsBadMaskSize:
        return "A kernel or mask size that the function does not take.";
    case noxStsBadStep:
        return "A row step is smaller than one row of the region.";
    case noxStsBadDataType:
        return "A data-type selector that the function does not accept.";
    case noxStsOutOfRange:
        return "A value or point lies outside its allowed range.";
    case noxStsNoMemory:
        return "An allocation failed.";
    case noxStsNullPointer:
        return "A pointer argument is null.";
    case noxStsBadSize:
        return "A width, height or length is below 1, or too small.";
    case noxStsBadArgument:
        return "An argument of its own kind is wrong.";
    case noxStsBadLine:
        return "A line has no points.";
    case noxStsNoError:
        return "Success.";
    case noxStsSqrtOfNegative:
        return "Warning: a negative element met a square root.";
    case noxStsDivideByZero:
        return "Warning: the denominator of a relative norm is zero.";
    case noxStsBufferSizeWarning:
        return "Warning: a computed size exceeds 2147483647.";
    case noxStsLinesTruncated:
        return "Warning: more lines were found than fit the list.";
    case noxStsKernelNotSymmetric:
        return "Warning: the taps of a layer kernel are not symmetric.";
    }
    return "No function of this version returns this status.";
}

#endif
