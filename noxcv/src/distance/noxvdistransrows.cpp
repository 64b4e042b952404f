// The passes of the chamfer distance transforms, for each element type and processor tier.
#include "noxvdistrans.h"

namespace nox {
namespace {

NOX_TIERS void runRow(const ChamferRow<Nox8u> &step) { chamferRow(step); }
NOX_TIERS void runRow(const ChamferRow<Nox16u> &step) { chamferRow(step); }
NOX_TIERS void runRow(const ChamferRow<Nox32f> &step) { chamferRow(step); }

NOX_TIERS void runRows(const ChamferRow<Nox32f> *steps) { chamferRows(steps); }

} // namespace

template <class T>
void chamferPass(const ChamferCall<T> &call, const ChamferPass &pass) {
    const ChamferPlan<T> &plan = call.plan;
    const int height = call.roi.height, before = pass.down ? -1 : 1;
    const auto rowAt = [&](int y) -> const Element<T> * { return y >= 0 && y < height ? call.dst[y] : nullptr; };
    const auto step = [&](int i) {
        const int y = pass.down ? pass.first + i : pass.first - i;
        return ChamferRow<T>{pass.fromSource ? call.src[y] : nullptr,
                             rowAt(y + before),
                             rowAt(y + 2 * before),
                             call.dst[y],
                             call.roi.width,
                             plan.mask,
                             pass.backward,
                             plan.twoAlong,
                             plan.skipsAll || (plan.skipsInEnd && y == height - 1),
                             plan.weights};
    };
    int i = 0;
    if constexpr (std::is_same_v<T, Nox32f>)
        while (i + rowsTogether <= pass.count) {
            ChamferRow<T> steps[rowsTogether];
            bool skips = false;
            for (int r = 0; r < rowsTogether; ++r) {
                steps[r] = step(i + r);
                skips |= steps[r].skips;
            }
            if (skips)
                break;
            runRows(steps);
            i += rowsTogether;
        }
    for (; i < pass.count; ++i)
        runRow(step(i));
}

template void chamferPass(const ChamferCall<Nox8u> &, const ChamferPass &);
template void chamferPass(const ChamferCall<Nox16u> &, const ChamferPass &);
template void chamferPass(const ChamferCall<Nox32f> &, const ChamferPass &);

} // namespace nox
