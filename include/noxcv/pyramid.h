/**
 * @file pyramid.h
 * Pyramids and tracking: Gaussian resampling, pyramid layers, pyramidal optical flow.
 */
#ifndef NOXCV_PYRAMID_H
#define NOXCV_PYRAMID_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
