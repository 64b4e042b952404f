// The two halves of the Gaussian filter, in single precision with the products added in ascending order.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// Rows: src to dst with the edge pixels repeated. scratch holds width + K - 1 elements. Steps are in bytes.
NOX_GLOBAL void ownRowConvolution(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width, int height,
                                  const Nox32f *taps, int K, Nox32f *scratch);
/// Columns, in place. scratch holds height + K - 1 elements.
NOX_GLOBAL void ownColConvolution(Nox32f *dst, int dstStep, int width, int height, const Nox32f *taps, int K,
                                  Nox32f *scratch);
}
