// Kernels of the absolute difference that have a name of their own.
#pragma once

#include "noxtypes.h"
#include "tiers.h"

extern "C" {
NOX_GLOBAL void ownAbsDiff_8u_C1R_A6(const Nox8u *src1, int src1Step, const Nox8u *src2, int src2Step, Nox8u *dst,
                                     int dstStep, int width, int height);
void ownAbsDiff_16u_C1R(const Nox16u *src1, int src1Step, const Nox16u *src2, int src2Step, Nox16u *dst, int dstStep,
                        int width, int height);
void ownAbsDiff_32f_C1R_A6(const Nox32f *src1, int src1Step, const Nox32f *src2, int src2Step, Nox32f *dst, int dstStep,
                           int width, int height);
void ownAbsDiffC_8u_C1R_A6(const Nox8u *src, int srcStep, Nox8u *dst, int dstStep, int width, int height, Nox8u value);
void ownAbsDiffC_16u_C1R(const Nox16u *src, int srcStep, Nox16u *dst, int dstStep, int width, int height, Nox16u value);
void ownAbsDiffC_32f_C1R_A6(const Nox32f *src, int srcStep, Nox32f *dst, int dstStep, int width, int height,
                            Nox32f value);
}
