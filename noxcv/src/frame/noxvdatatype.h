// The numbers by which callers and states name the type of an image's elements.
#pragma once

#include <type_traits>

#include "noxtypes.h"

namespace nox {

inline constexpr int dataType8u = noxType8u, dataType8s = noxType8s, dataType16u = noxType16u, dataType32f = noxType32f;

/// The number of a type.
template <class T>
inline constexpr int dataTypeOf = std::is_same_v<T, Nox8u>    ? dataType8u
                                  : std::is_same_v<T, Nox8s>  ? dataType8s
                                  : std::is_same_v<T, Nox16u> ? dataType16u
                                                              : dataType32f;

} // namespace nox
