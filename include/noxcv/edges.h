/**
 * @file edges.h
 * Edges: Canny's edge detector and the colour gradient.
 */
#ifndef NOXCV_EDGES_H
#define NOXCV_EDGES_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
