// The version record.
#include "noxcv/frame.h"

namespace {

// __DATE__ has this very form, with a day below 10 padded by a blank.
const NoxLibraryVersion version = {5, 2, 108, 398, {'a', '6', 0, 0}, "libnoxcva6.so.5.2", "5.2", __DATE__};

} // namespace

const NoxLibraryVersion *noxcvGetLibVersion() { return &version; }
