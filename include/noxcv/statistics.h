/**
 * @file statistics.h
 * Image statistics: masked norms, means, deviations and extrema.
 */
#ifndef NOXCV_STATISTICS_H
#define NOXCV_STATISTICS_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
