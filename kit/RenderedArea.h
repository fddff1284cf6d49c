// RenderedArea: an image rendered over a pixel area into scratch memory, to be read by position.
#pragma once

#include "kit/CIImage.h"
#include "kit/ImageRecipe.h"
#include "kit/ScratchBlock.h"

#include <cstddef>

namespace kit {

/// The working-space pixels of an image over one area, held in recycled memory.
class RenderedArea {
public:
    RenderedArea() : m_block(0) {}

    /// Renders `image` over `area`; false when memory cannot be had or the area is too large.
    bool render(const CIImage& image, const PixelArea& area);

    const PixelArea& area() const { return m_area; }
    const FloatPixels& pixels() const { return m_pixels; }
    /// The pixel at (x, y) of drawing space, which must lie in the area.
    const float* pixel(long long x, long long y) const
    {
        return m_pixels.row(m_area.maxY() - 1 - y) + (x - m_area.x) * 4;
    }
    /// Bilinear between pixel centres at the point (x, y) of drawing space; transparent black
    /// beyond the area.
    void sample(double x, double y, float* rgba) const;

private:
    ScratchBlock m_block;
    PixelArea m_area;
    FloatPixels m_pixels;
};

} // namespace kit
