// Small numeric helpers that the library offers beside its public functions; nothing inside it calls them.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
/// 2^-scaleFactor, scaleFactor first clamped to -128 (infinity) to 150 (zero); denormal where it must be.
NOX_GLOBAL Nox32f owncvGetScale_32s32f(int scaleFactor);
/// 2^-scaleFactor with -scaleFactor first clamped to -1087 to 1024 (infinity at the top).
NOX_GLOBAL Nox64f owncvGetScale_32s64f(int scaleFactor);
/// 1 when one of `count` row pointers is not 16-byte aligned, otherwise 0.
NOX_GLOBAL int owncvRowMatrAlErr(const void *const *rows, int count);
/// Element by element over width * height contiguous values: dx becomes dx^2, dxdy becomes dx * dy, dy becomes dy^2.
NOX_GLOBAL void owncvMulDBuffers_32f(int width, int height, Nox32f *dx, Nox32f *dxdy, Nox32f *dy);
/// The same with dx and dy holding rows of `width` Nox16s values at a distance of `width` 32-bit slots; widens in
/// place.
NOX_GLOBAL void owncvMulDBuffers_16s32f(int width, int height, Nox32f *dx, Nox32f *dxdy, Nox32f *dy);
}
