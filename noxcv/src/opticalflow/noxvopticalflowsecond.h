// The window of the second image, which moves by fractions of a pixel from step to step.
#pragma once

#include "noxvopticalflowlevel.h"
#include "noxvopticalflowsums.h"
#include "sampling/noxvbilinear.h"
#include "sampling/noxvsubpix.h"

namespace nox {

/// Scale of the patches of 8-bit images: 7 fractional bits.
inline constexpr int patchScale = -7;

/// A window of the patches' size, somewhere in the second image.
template <class T>
class PlacedWindow {
public:
    using Cell = FlowCell<T>;

    PlacedWindow(const Patches<Cell> &patches, const FlowLevel<T> &level) : patches_(patches), level_(level) {}

    /// The cells at a place that lie in the image.
    Window place(NoxiPoint32f at) {
        x_ = placeAxis(at.x, patches_.size, level_.size.width);
        y_ = placeAxis(at.y, patches_.size, level_.size.height);
        return {{x_.min, y_.min}, {x_.max, y_.max}};
    }

protected:
    /// The pixel that the first cell of a window begins in.
    NoxiPoint firstSample(const Window &window) const { return {x_.sample(window.min.x), y_.sample(window.min.y)}; }
    /// The image from a pixel on.
    Rows<const T> imageFrom(NoxiPoint at) const {
        return {Rows<const T>{level_.image, level_.step}[at.y] + at.x, level_.step};
    }

    const Patches<Cell> &patches_;
    const FlowLevel<T> &level_;
    PatchAxis x_{}, y_{};
};

/// The window at one place after the other.
template <class T>
class SecondWindow : public PlacedWindow<T> {
    using Base = PlacedWindow<T>;

public:
    using Base::Base;
    using typename Base::Cell;

    /// Reads what some of the cells need; there is at least one.
    void take(const Window &window) {
        const Rows<Cell> to = {this->patches_.second, this->patches_.step};
        interpolatePatch(this->imageFrom(this->firstSample(window)),
                         Rows<Cell>{to[window.min.y] + window.min.x, to.step}, window.size(),
                         FloatBilinear(floatAxis(this->x_.fraction), floatAxis(this->y_.fraction)));
    }
    /// The sums of ix r and iy r over them.
    Projection weightedResiduals(const Window &window) const { return nox::weightedResiduals(this->patches_, window); }
    /// Sees to it that they are in the patch.
    void store(const Window & /*window*/) const {}
};

/// Bytes: the pixels are kept as 16-bit numbers as long as steps stay between the same ones, and cells are formed on
/// the way to the sums.
template <>
class SecondWindow<Nox8u> : public PlacedWindow<Nox8u> {
public:
    using PlacedWindow::PlacedWindow;

    void take(const Window &window) {
        const NoxiPoint from = firstSample(window);
        const NoxiSize size = window.size();
        if (from.x != from_.x || from.y != from_.y || size.width != size_.width || size.height != size_.height) {
            keepSamples(imageFrom(from), patches_, size);
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

    NoxiPoint from_{};
    NoxiSize size_{}; ///< of what is kept; nothing is at first
};

} // namespace nox
