// Where a frame differs from another one by more than its noise.
#pragma once

#include "rows.h"

namespace nox {

/// The largest deviation of the differences above any level, from their counts, and at least 10: with n, m and q the
/// count, mean and mean square of the differences from k to 255, the largest sqrt(q - m^2) for k from 0 to 254, in
/// single precision. The sums are exact.
Nox32f changeThreshold(const Nox32u (&counts)[256]);

/// mask becomes 255 where a channel differs by more than its own threshold, 0 elsewhere.
template <int channels>
void markChanges(Rows<const Nox8u> frame, Rows<const Nox8u> other, Rows<Nox8u> mask, NoxiSize roi);

} // namespace nox
