// Processor tiers and the toolchain's promises.
#pragma once

#include <cfloat>

// The numbers are the contract: each float operation rounds once to its own type, and nothing is reassociated.
#if FLT_EVAL_METHOD != 0
#error "float arithmetic must round to its own type: build with -mfpmath=sse -msse2"
#endif
#if defined(__FAST_MATH__) || defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || __FINITE_MATH_ONLY__
#error "build without -ffast-math and its parts"
#endif
static_assert(LDBL_MANT_DIG == 64, "long double must be the 80-bit extended format");

/// Marks a hot kernel: compiled once per processor tier, chosen when the library is loaded, same bits in each.
/// Sanitizers run before such a choice can be made, so there the baseline alone is built; NOXCV_BASELINE does the
/// same for a build that tests the baseline, and clang, our linter, knows no such templates. Such a kernel is called,
/// never taken the address of: 32-bit code cannot form the address of a local function that is chosen at load. Tables
/// hold plain functions that call kernels.
#if defined(__SANITIZE_ADDRESS__) || defined(NOXCV_BASELINE) || defined(__clang__)
#define NOX_TIERS
#else
#define NOX_TIERS __attribute__((target_clones("avx2", "default")))
#endif

/// A kernel in explicit vectors that are wider than the baseline's: compiled for processors with AVX2 and fused
/// additions, and called where wideTier() is true. The compiler fuses nothing by itself. Defined where the tiers are.
#if !defined(__SANITIZE_ADDRESS__) && !defined(NOXCV_BASELINE)
#define NOX_WIDE_TIER __attribute__((target("avx2,fma")))
#endif

namespace nox {
/// True when this processor runs the wide tier; loading the library has asked it already.
[[gnu::always_inline]] inline bool wideTier() {
#ifdef NOX_WIDE_TIER
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
    return false;
#endif
}
} // namespace nox

/// A helper that must become part of its caller, so that it is compiled for the caller's tier.
#define NOX_INLINE [[gnu::always_inline]] inline

/// The same for a lambda; stands behind its parameters.
#define NOX_INLINE_LAMBDA __attribute__((always_inline))

/// An internal function that keeps a global symbol (extern "C" is written at its place).
#define NOX_GLOBAL __attribute__((visibility("default")))
