// Copies of rows.
#include "owncopybytes.h"

#include <cstring>

#include "elementwise.h"

#define NOX_KERNELS "owncopybytes.inc"
#include "noxveachtier.h"

using namespace nox;

namespace {

/// Lengths that the kernel copies: it wants a whole vector of any tier.
constexpr bool isForLanes(std::size_t bytes) { return bytes >= 32 && bytes <= 32 * 1024; }

} // namespace

void nox::copyBytes(void *to, const void *from, std::size_t bytes) {
    if (isForLanes(bytes))
        NOX_ON_TIER(copyLanes({static_cast<const Nox8u *>(from), 0}, {static_cast<Nox8u *>(to), 0}, bytes, 1));
    else
        std::memmove(to, from, bytes);
}

void nox::copyRows(Rows<const Nox8u> src, Rows<Nox8u> dst, std::ptrdiff_t rowBytes, int height) {
    const Runs runs = joinedRows(rowBytes, height, isPacked(src, rowBytes) && isPacked(dst, rowBytes));
    const auto bytes = static_cast<std::size_t>(runs.length);
    if (isForLanes(bytes)) {
        NOX_ON_TIER(copyLanes(src, dst, bytes, runs.count));
        return;
    }
    for (int y = 0; y < runs.count; ++y)
        std::memmove(dst[y], src[y], bytes);
}
