/**
 * @file noxcore.h
 * The companion core library: thread count, core count, cache size and float constants.
 *
 * The image library takes these answers from whatever library provides them, so a program may bring its own with
 * the same symbols. The image library uses nothing else from it; noxSetNumThreads is there for callers.
 */
#ifndef NOXCORE_H
#define NOXCORE_H

#include "noxtypes.h"

NOX_BEGIN_DECLS

/**
 * Writes the number of threads that a parallel call divides its work into.
 * @param[out] count  the number; at first the number of logical processors this process may use.
 * @return noxStsNoError, or noxStsNullPointer.
 */
NOX_API NoxStatus noxGetNumThreads(int *count);

/**
 * Sets the number of threads for all calls that follow, and threads_omp_of_n_nox with it. Not to be called while
 * another thread is inside the library.
 * @param[in] count  at least 1.
 * @return noxStsNoError, or noxStsBadArgument with nothing changed when count is below 1.
 */
NOX_API NoxStatus noxSetNumThreads(int count);

/** Returns the number of physical cores that this process may use, at least 1. */
NOX_API int noxGetNumCoresOnDie(void);

/**
 * Writes the size in bytes of the processor's largest data or unified cache, as the processor reports it.
 * @return noxStsNoError, or noxStsNullPointer.
 */
NOX_API NoxStatus noxGetMaxCacheSizeB(int *bytes);

/** The team size asked of each parallel region. Set through noxSetNumThreads. */
NOX_API extern int threads_omp_of_n_nox;

NOX_API extern const Nox64f noxConstantOfNAN_64f;     /**< Quiet not-a-number. */
NOX_API extern const Nox64f noxConstantOfINF_64f;     /**< Positive infinity. */
NOX_API extern const Nox64f noxConstantOfINF_NEG_64f; /**< Negative infinity. */

NOX_END_DECLS

#endif
