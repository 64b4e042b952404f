// Photographs for members whose speed depends on the picture.
#pragma once

#include "bench.h"

namespace bench {

/// A photograph that the demo fetches, as gray, enlarged bilinearly.
Image<Nox8u> photograph(const char *path, NoxiSize size);

} // namespace bench
