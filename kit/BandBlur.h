// BandBlur: box and small Gaussian blurs of sRGB bitmaps drawn straight into sRGB bytes.
#pragma once

#include "kit/CIImage.h"
#include "kit/ImageRecipe.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kit {

/// Separable blurs that read an image a row at a time, decode it, and keep only the rows the
/// window covers, so that nothing the size of the image is made between the source bytes and
/// the drawn ones. They read transparent black beyond the image's extent and draw, replacing,
/// the pixels of `area` (first row its top one) into sRGB memory; the image must render sRGB
/// bytes as they stand (CIImage::isBitmapEncoded(true)). False, with nothing drawn, when memory
/// cannot be had.
class BandBlur {
public:
    /// Widest box window the integer sums hold: 181 x 181 values of 16 bits stay below 2^31.
    static constexpr long long kMaxBoxWindow = 181;

    /// The mean over the (2 r + 1)^2 box, from linear light in units of 1 / 65535: exact sums,
    /// so within 0.06 of an 8-bit step of the mean of the decoded image before rounding. False
    /// also when the window is wider than kMaxBoxWindow.
    static bool drawBox(
        const CIImage& input, long long r, const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride);
    /// The separable kernel `weights` (an odd count, centred, symmetric) in float, along columns
    /// and then rows.
    static bool drawWeighted(const CIImage& input, const std::vector<float>& weights, const PixelArea& area,
        std::uint8_t* rgba, std::ptrdiff_t stride);

private:
    static bool drawBoxStripe(
        const CIImage& input, long long r, const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride);
    static bool drawWeightedStripe(const CIImage& input, const std::vector<float>& weights, const PixelArea& area,
        std::uint8_t* rgba, std::ptrdiff_t stride);
};

} // namespace kit
