/**
 * @file filter.h
 * Separable filtering: row and column pipelines, border derivative and smoothing filters.
 */
#ifndef NOXCV_FILTER_H
#define NOXCV_FILTER_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
