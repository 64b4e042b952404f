// Extrema of three neighbours along a row.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// dst[i] is the largest or smallest of src[i], src[i + 1] and src[i + 2], for n - 2 elements.
NOX_GLOBAL void ownSiftFilterMaxRow03_32f_C1R(const Nox32f *src, Nox32f *dst, int n);
NOX_GLOBAL void ownSiftFilterMinRow03_32f_C1R(const Nox32f *src, Nox32f *dst, int n);
NOX_GLOBAL void ownSiftFilterMaxRow03_32s_C1R(const Nox32s *src, Nox32s *dst, int n);
NOX_GLOBAL void ownSiftFilterMinRow03_32s_C1R(const Nox32s *src, Nox32s *dst, int n);
}
