// Compiles the kernels of the file named by NOX_KERNELS (an .inc) once for each processor tier, in a namespace for
// each. Inside it they stand in an unnamed namespace: two families may use the same name, and neither replaces the
// other's kernel when the library is linked. No include guard: a source includes this once.
#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "ahead.h"
#include "noxtypes.h"
#include "tiers.h"

#define NOX_LANES [[gnu::always_inline]] NOX_LANES_TARGET inline
/// Stands before a short loop over an array of vectors: unrolled, the vectors stay in registers.
#define NOX_UNROLLED _Pragma("GCC unroll 8")

namespace nox::baseline {
namespace {
#define NOX_LANES_BYTES 16
#define NOX_LANES_TARGET
#include "noxvlanes.h"
#include NOX_KERNELS
#undef NOX_LANES_BYTES
#undef NOX_LANES_TARGET
} // namespace
} // namespace nox::baseline

#ifdef NOX_WIDE_TIER
namespace nox::wide {
namespace {
#define NOX_LANES_BYTES 32
#define NOX_LANES_TARGET NOX_WIDE_TIER
#include "noxvlanes.h"
#include NOX_KERNELS
#undef NOX_LANES_BYTES
#undef NOX_LANES_TARGET
} // namespace
} // namespace nox::wide
/// Calls a function of both tiers in the one that this processor runs.
#define NOX_ON_TIER(...) NOX_ON_TIER_FOR(32, __VA_ARGS__)
/// The same for rows of so many bytes: the wide tier if they fill one of its vectors.
#define NOX_ON_TIER_FOR(BYTES, ...)                                                                                    \
    (nox::wideTier() && (BYTES) >= 32 ? nox::wide::__VA_ARGS__ : nox::baseline::__VA_ARGS__)
#else
#define NOX_ON_TIER(...) nox::baseline::__VA_ARGS__
#define NOX_ON_TIER_FOR(BYTES, ...) nox::baseline::__VA_ARGS__
#endif

#undef NOX_LANES
#undef NOX_UNROLLED
#undef NOX_KERNELS
