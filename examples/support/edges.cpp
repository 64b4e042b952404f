#include "edges.h"

#include <algorithm>
#include <cstdlib>

bool differentiate(const Picture &gray, Derivatives &d) {
    d.dx.resize(gray.count());
    d.dy.resize(gray.count());
    d.step = gray.size.width * int(sizeof(Nox16s));
    int dxBytes = 0, dyBytes = 0;
    if (failed("noxiFilterSobelNegVertGetBufferSize_8u16s_C1R",
               noxiFilterSobelNegVertGetBufferSize_8u16s_C1R(gray.size, noxMskSize3x3, &dxBytes)) ||
        failed("noxiFilterSobelHorizGetBufferSize_8u16s_C1R",
               noxiFilterSobelHorizGetBufferSize_8u16s_C1R(gray.size, noxMskSize3x3, &dyBytes)))
        return false;
    std::vector<Nox8u> buffer(std::max(dxBytes, dyBytes));
    return !failed("noxiFilterSobelNegVertBorder_8u16s_C1R",
                   noxiFilterSobelNegVertBorder_8u16s_C1R(gray.data(), gray.step(), d.dx.data(), d.step, gray.size,
                                                          noxMskSize3x3, noxBorderReplicate, 0, buffer.data())) &&
           !failed("noxiFilterSobelHorizBorder_8u16s_C1R",
                   noxiFilterSobelHorizBorder_8u16s_C1R(gray.data(), gray.step(), d.dy.data(), d.step, gray.size,
                                                        noxMskSize3x3, noxBorderReplicate, 0, buffer.data()));
}

EdgeThresholds chosenThresholds(const Derivatives &d) {
    std::vector<int> magnitudes(d.dx.size());
    for (std::size_t i = 0; i < magnitudes.size(); ++i)
        magnitudes[i] = std::abs(d.dx[i]) + std::abs(d.dy[i]);
    const auto ninth = magnitudes.begin() + std::ptrdiff_t(magnitudes.size() * 9 / 10);
    std::nth_element(magnitudes.begin(), ninth, magnitudes.end());
    const float high = float(std::max(*ninth, 1));
    return {0.4F * high, high};
}

bool detectEdges(const Derivatives &d, EdgeThresholds thresholds, Picture &edges) {
    int bytes = 0;
    if (failed("noxiCannyGetSize", noxiCannyGetSize(edges.size, &bytes)))
        return false;
    std::vector<Nox8u> buffer(bytes);
    return !failed("noxiCanny_16s8u_C1R",
                   noxiCanny_16s8u_C1R(d.dx.data(), d.step, d.dy.data(), d.step, edges.data(), edges.step(), edges.size,
                                       thresholds.low, thresholds.high, buffer.data()));
}
