// The window of the second image, which moves by fractions of a pixel from step to step.
#pragma once

#include "noxvopticalflowlevel.h"
#include "noxvopticalflowsums.h"
#include "sampling/noxvbilinear.h"
#include "sampling/noxvsubpix.h"

namespace nox {

/// Scale of the patches of 8-bit images: 7 fractional bits.
inline constexpr int patchScale = -7;

/// The window at one place after the other.
template <class T>
class SecondWindow {
public:
    using Cell = FlowCell<T>;

    SecondWindow(const Patches<Cell> &patches, const FlowLevel<T> &level) : patches_(patches), level_(level) {}

    /// The cells at a place that lie in the image.
    Window place(NoxiPoint32f at) {
        x_ = placeAxis(at.x, patches_.size, level_.size.width);
        y_ = placeAxis(at.y, patches_.size, level_.size.height);
        return {{x_.min, y_.min}, {x_.max, y_.max}};
    }
    /// Reads what some of them need; there is at least one.
    void take(const Window &window) {
        const Rows<const T> image = {level_.image, level_.step};
        const Rows<Cell> to = {patches_.second, patches_.step};
        interpolatePatch(Rows<const T>{image[y_.sample(window.min.y)] + x_.sample(window.min.x), image.step},
                         Rows<Cell>{to[window.min.y] + window.min.x, to.step}, window.size(),
                         FloatBilinear(floatAxis(x_.fraction), floatAxis(y_.fraction)));
    }
    /// The sums of ix r and iy r over them.
    Projection weightedResiduals(const Window &window) const { return nox::weightedResiduals(patches_, window); }
    /// Sees to it that they are in the patch.
    void store(const Window & /*window*/) const {}

private:
    const Patches<Cell> &patches_;
    const FlowLevel<T> &level_;
    PatchAxis x_{}, y_{};
};

/// Bytes: the pixels are kept as 16-bit numbers as long as steps stay between the same ones, and cells are formed on
/// the way to the sums.
template <>
class SecondWindow<Nox8u> {
public:
    SecondWindow(const Patches<Nox16s> &patches, const FlowLevel<Nox8u> &level) : patches_(patches), level_(level) {}

    Window place(NoxiPoint32f at) {
        x_ = placeAxis(at.x, patches_.size, level_.size.width);
        y_ = placeAxis(at.y, patches_.size, level_.size.height);
        return {{x_.min, y_.min}, {x_.max, y_.max}};
    }
    void take(const Window &window) {
        const NoxiPoint from = {x_.sample(window.min.x), y_.sample(window.min.y)};
        const NoxiSize size = window.size();
        if (from.x != from_.x || from.y != from_.y || size.width != size_.width || size.height != size_.height) {
            keepSamples({Rows<const Nox8u>{level_.image, level_.step}[from.y] + from.x, level_.step}, patches_, size);
            from_ = from;
            size_ = size;
        }
    }
    Projection weightedResiduals(const Window &window) const {
        return nox::weightedResiduals(patches_, window, weights());
    }
    void store(const Window &window) const {
        if (!window.empty())
            storeSecond(patches_, window, weights());
    }

private:
    FixedConstants weights() const {
        return FixedConstants(FixedBilinear<Nox8u, Nox16u>(fixedAxis<Nox8u>(x_.fraction), fixedAxis<Nox8u>(y_.fraction),
                                                           scaleOf(patchScale)));
    }

    const Patches<Nox16s> &patches_;
    const FlowLevel<Nox8u> &level_;
    PatchAxis x_{}, y_{};
    NoxiPoint from_{};
    NoxiSize size_{}; ///< of what is kept; nothing is at first
};

} // namespace nox
