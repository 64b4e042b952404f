/**
 * @file frame.h
 * The library frame: what all functions have in common, and the version record.
 *
 * What holds for every function, unless its own comment says otherwise:
 *
 * **Images.** A function gets the address of the first pixel of a region, the row step in bytes and the region's size
 * in pixels. Channels are interleaved. Pixels and rows may lie at any address: no element needs to be aligned. Nothing
 * outside the region is read or written; the bytes between the rows belong to the caller. Names: `src` and `srcStep`
 * are the source and its step, `dst` and `dstStep` the destination, `srcDst` an image that is both, `roi` the size of
 * the region, `mask` an image of bytes that takes a pixel in where its byte is not 0, `coi` the channel (1 to 3) that a
 * `C3C` function looks at, `buffer` work memory that a query of the family sizes.
 *
 * **Names of functions** end in the element type (8u: Nox8u, 8u16s: Nox8u to Nox16s, and so on) and the layout: C1, C3
 * or C4 interleaved channels, I in place, M under a mask, R on a region; Sfs scales an integer result by
 * 2^-scaleFactor.
 *
 * **Checks.** Arguments are checked in a fixed order before anything is written: null pointers in argument order
 * (noxStsNullPointer), width or height below 1 (noxStsBadSize), each step against the bytes of one row (noxStsBadStep;
 * the comparison is signed), then steps of images with elements of 2 or 4 bytes that are not a multiple of the element
 * size (noxStsOddStep), then what is particular to the function. A query of a buffer's size checks its output pointer,
 * then the size, then the rest; a size that an int cannot hold is noxStsBadSize, and nothing is stored. After an error
 * nothing has been written; after a warning the result is complete. Nothing is printed.
 *
 * **Overlap.** Source and destination may be the same image only where the comment says so; otherwise they may not
 * overlap.
 *
 * **Buffers and states** may lie at any address and need no contents. A state belongs to one call at a time. Where a
 * size depends on the thread count, the buffer must have been sized under the count that the call runs under.
 *
 * **Threads.** Functions run on the calling thread unless they say otherwise. A parallel call divides its work by the
 * core library's thread count. Whatever team the OpenMP runtime delivers for that (a nested region, a limit), the work
 * is done whole. In a child of fork calls run on the calling thread. Any number of threads may call functions at the
 * same time on different outputs.
 *
 * **Floating-point state.** Results are those of round to nearest, with denormals kept, and 64-bit mantissas in the x87
 * unit: what a program starts with. Under another state results may differ, but not between one thread and several: a
 * call's team works under its caller's state, and no thread's state is changed. Ordinary numbers raise no flag of an
 * invalid operation, unless a function's comment says so.
 *
 * **Stack.** A call takes at most 16384 bytes of it, all its functions together.
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
