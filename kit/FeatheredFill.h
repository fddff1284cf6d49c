// FeatheredFill: a filled shape's coverage blurred and written as premultiplied RGBA, in the pixels' own memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit {

/// Turns one plane of 8-bit coverage into `width` x `height` premultiplied RGBA pixels (rows
/// width x 4 bytes apart) blurred by a Gaussian of standard deviation `sigma` that reads zero
/// outside the pixels. The coverage plane and, for pixels of a useful size, all of the blur's
/// working memory live inside the pixels' own block, so a feathered shape costs its buffer and a
/// few rows more. Large sigmas blur a copy decimated by up to 16 and interpolate it back
/// bilinearly, the blur narrowed so that the whole adds up to sigma; within a fraction of an
/// 8-bit step of the exact Gaussian. Only tiles within the blur's reach of the shape's edge are
/// blurred (BlurTiles); the inside and the outside are filled.
class FeatheredFill {
public:
    FeatheredFill(std::uint8_t* pixels, int width, int height, double sigma);

    /// Where the caller writes the coverage: `width` bytes a row, `height` rows, no padding.
    std::uint8_t* coverage() const { return m_pixels + 3 * count(); }

    /// Blurs the coverage and writes every pixel as `colour` (premultiplied RGBA) times it.
    /// False when working memory cannot be had; the pixels then hold nothing of use.
    bool finish(const std::uint8_t colour[4]);

    /// The step between the samples the blur runs on: 1, or a power of two up to 16 for sigmas
    /// from 4 times that step up.
    static int decimationFor(double sigma);

private:
    std::size_t count() const { return std::size_t(m_width) * std::size_t(m_height); }
    bool expandCoverage(const std::uint8_t colour[4]);
    bool blurFullSize(const std::uint8_t colour[4]);
    bool blurDecimated(const std::uint8_t colour[4], int step);

    std::uint8_t* m_pixels;
    int m_width;
    int m_height;
    double m_sigma;
};

} // namespace kit
