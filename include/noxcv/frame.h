/**
 * @file frame.h
 * The library frame: what all functions have in common, and the version record.
 *
 * Conventions of every image function:
 * - Arguments are checked in a fixed order before anything is written: null pointers in argument order
 *   (noxStsNullPointer), width or height below 1 (noxStsBadSize), each step against the bytes of one row
 *   (noxStsBadStep; the comparison is signed), then steps of images with 2-byte or wider elements that are not a
 *   multiple of the element size (noxStsOddStep), then what is particular to the function. Functions that depart
 *   from this order say so.
 * - Steps are in bytes. Pixels and steps need no alignment beyond the element rule.
 * - Functions run on the calling thread unless they say otherwise.
 */
#ifndef NOXCV_FRAME_H
#define NOXCV_FRAME_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

/**
 * Returns the library's version record: constant, owned by the library, never null.
 */
NOX_API const NoxLibraryVersion *noxcvGetLibVersion(void);

NOX_END_DECLS

#endif
