// Numbers for the connected components of a two-level image.
#include <cstring>

#include "checks.h"
#include "noxcv/primitives.h"
#include "noxvfloodfill.h"

using namespace nox;

NoxStatus noxiLabelMarkersGetBufferSize_8u_C1R(NoxiSize roi, int *size) { return noxiFloodFillGetSize(roi, size); }

NoxStatus noxiLabelMarkers_8u_C1IR(Nox8u *markers, int markerStep, NoxiSize roi, int minLabel, int maxLabel, int norm,
                                   int *count, Nox8u *buffer) {
    const NoxStatus status =
        firstFailure(checkPointers(markers, buffer, count), checkSize(roi),
                     require(stackBytes(roi) <= INT_MAX, noxStsBadSize), checkStep<Nox8u>(markerStep, roi.width),
                     require(minLabel >= 1 && maxLabel < 255 && minLabel <= maxLabel, noxStsBadArgument),
                     require(norm == 0 || norm == 1, noxStsBadArgument));
    if (status != noxStsNoError)
        return status;
    constexpr Nox8u unlabelled = 255;
    noxiThreshold_GTVal_8u_C1IR(markers, markerStep, roi, 0, unlabelled);
    const auto fill = norm == 0 ? noxiFloodFill_8Con_8u_C1IR : noxiFloodFill_4Con_8u_C1IR;
    const Rows<Nox8u> rows{markers, markerStep};
    int label = minLabel, number = 0;
    for (int y = 0; y < roi.height; ++y) {
        Nox8u *row = rows[y], *const end = row + roi.width, *pixel = row;
        while ((pixel = static_cast<Nox8u *>(std::memchr(pixel, unlabelled, end - pixel))) != nullptr) {
            NoxiConnectedRegion region;
            // Labels are below 255, so a filled component is not met again.
            fill(markers, markerStep, roi, {static_cast<int>(pixel - row), y}, static_cast<Nox8u>(label), &region,
                 buffer);
            ++number;
            label = label < maxLabel ? label + 1 : minLabel;
        }
    }
    *count = number;
    return noxStsNoError;
}
