// GaussianBlurRecipe: the Gaussian blur of any image in the float working space.
#pragma once

#include "kit/CIImage.h"
#include "kit/GaussianBlur.h"
#include "kit/ImageRecipe.h"

#include <functional>
#include <vector>

namespace kit {

/// The same recursive Gaussian as GaussianBlur (standard deviation `sigma`, within a tenth of
/// an 8-bit step of the exact kernel), on premultiplied float RGBA: time flat in sigma. The
/// extent grows by ceil(3 sigma) on every side. A drawn area reads the input over itself grown
/// by ceil(4 sigma) + 2, beyond which the kernel's weights sum to less than 1e-4.
class GaussianBlurRecipe final : public ImageRecipe {
public:
    GaussianBlurRecipe(RefPtr<CIImage> input, double sigma);

    Rect extent() const override { return m_extent; }
    Rect placementExtent() const override { return isInfinite(m_extent) ? m_input->placementExtent() : m_extent; }
    bool render(const PixelArea& area, const FloatPixels& out) const override;
    /// Up to sigma kMaxDirectSigma, an sRGB bitmap drawn into sRGB memory takes the sampled
    /// kernel out to ceil(4.5 sigma) directly, a band of rows at a time (BandBlur); above it
    /// the recursion's rows are encoded in place.
    bool drawBytes(const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride, bool srgb) const override;

    static constexpr double kMaxDirectSigma = 3;

private:
    // Blurs the input over the area and its reach and hands `take` the floats, with the row and
    // float where the area starts in them.
    bool blurred(
        const PixelArea& area, const std::function<void(const FloatPixels&, long long, long long)>& take) const;

    RefPtr<CIImage> m_input;
    GaussianBlur m_blur;
    std::vector<float> m_weights; // the direct kernel, empty above kMaxDirectSigma
    Rect m_extent;
};

} // namespace kit
