/**
 * @file sampling.h
 * Sampling and geometry: sub-pixel copies, line samples, radial undistortion.
 */
#ifndef NOXCV_SAMPLING_H
#define NOXCV_SAMPLING_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
