// Norms, means and extrema of one block of rows, compiled for each processor tier.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "noxvreducerows.h"

extern "C" {
/// Row k: the bytes of channel k in sixteen interleaved pixels of three channels are 0xFF, the others 0.
extern const Nox8u noxvCoiMaskA[3][48];
}

namespace nox {

enum class Form { Norm, NormDiff, NormRel };
enum class Norm { Inf, L1, L2 };

/// A relative norm has a numerator and a denominator.
template <Form form>
constexpr int resultsOf = form == Form::NormRel ? 2 : 1;

/// A measure of one block: exact for integers.
template <class T, Norm norm>
using NormValue = std::conditional_t<std::is_same_v<T, Nox32f>, Nox64f,
                                     std::conditional_t<norm == Norm::L2, std::uint64_t, std::int64_t>>;

template <class T, Form form, Norm norm>
using NormSlots = Slots<NormValue<T, norm>, resultsOf<form>>;

/// Sums of one block: exact for integers.
template <class T>
struct MeanSlots {
    std::conditional_t<std::is_same_v<T, Nox32f>, Nox64f, std::int64_t> sum;
    std::conditional_t<std::is_same_v<T, Nox32f>, Nox64f, std::uint64_t> squares;
    std::int64_t count;
};

/// Pixels in a form that vectors compare: signed bytes lie 128 higher, as unsigned ones.
template <class T>
using Level = std::conditional_t<sizeof(T) == 1, Nox8u, T>;

/// Extremes of one block; a row of -1 tells that no pixel was better than the value at the start.
template <class T>
struct Extrema {
    Level<T> low = std::numeric_limits<Level<T>>::max(), high = std::numeric_limits<Level<T>>::lowest();
    int lowRow = -1, highRow = -1;
};

} // namespace nox

#define NOX_KERNELS "statistics/noxvreduceblock.inc"
#include "noxveachtier.h"
