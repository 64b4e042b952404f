// Sweeps of reconstruction, and the tables that choose them.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

namespace nox {

/// One sweep over all rows: each is grown by the finished row before it, cut at the mask, and scanned both ways. src is
/// the mask, srcDst the marker, `before` a finished row before the first one or null, `line` scratch of a row.
template <class T>
using Sweep = void (*)(const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, const T *before, T *line);

/// One sweep over the rows that can still change; returns how many did. `flags` has a byte for each row, not 0 for one
/// that must be visited, and is brought up to date.
template <class T>
using CheckedSweep = int (*)(const T *src, int srcStep, T *srcDst, int srcDstStep, NoxiSize roi, Nox8u *flags, T *line);

} // namespace nox

extern "C" {

/// @name Sweeps by neighbourhood: entry 0 for four neighbours, entry 1 for eight
/// @{
extern NOX_GLOBAL const nox::Sweep<Nox8u> tabDilateDown_8u_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox8u> tabDilateDownCheck_8u_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox8u> tabDilateUp_8u_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox8u> tabDilateUpCheck_8u_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox32f> tabDilateDown_32f_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox32f> tabDilateDownCheck_32f_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox32f> tabDilateUp_32f_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox32f> tabDilateUpCheck_32f_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox8u> tabErodeDown_8u_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox8u> tabErodeDownCheck_8u_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox8u> tabErodeUp_8u_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox8u> tabErodeUpCheck_8u_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox32f> tabErodeDown_32f_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox32f> tabErodeDownCheck_32f_C1R[2];
extern NOX_GLOBAL const nox::Sweep<Nox32f> tabErodeUp_32f_C1R[2];
extern NOX_GLOBAL const nox::CheckedSweep<Nox32f> tabErodeUpCheck_32f_C1R[2];
/// @}
}
