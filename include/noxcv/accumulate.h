/**
 * @file accumulate.h
 * Running sums over frames, plain and under a mask, and the fast arctangent.
 */
#ifndef NOXCV_ACCUMULATE_H
#define NOXCV_ACCUMULATE_H

#include "../noxtypes.h"

NOX_BEGIN_DECLS

NOX_END_DECLS

#endif
