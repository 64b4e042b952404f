// The version record.
#include "noxcv/frame.h"

namespace {

// __DATE__ has this very form, with a day below 10 padded by a blank.
// The compiler takes SOURCE_DATE_EPOCH for it where that is set.
const NoxLibraryVersion version = {NOXCV_VERSION_MAJOR,
                                   NOXCV_VERSION_MINOR,
                                   NOXCV_VERSION_MAJOR_BUILD,
                                   NOXCV_VERSION_BUILD,
                                   {'a', '6', 0, 0},
                                   "libnoxcva6.so." NOXCV_VERSION,
                                   NOXCV_VERSION,
                                   __DATE__};

} // namespace

const NoxLibraryVersion *noxcvGetLibVersion() { return &version; }
