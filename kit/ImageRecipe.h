// ImageRecipe: what a filter image computes, as an extent and the rendering of an area of it.
#pragma once

#include "kit/Geometry.h"
#include "kit/Object.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kit {

/// A whole-pixel area of drawing space, y up.
struct PixelArea {
    long long x = 0, y = 0, width = 0, height = 0;

    long long maxX() const { return x + width; }
    long long maxY() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    long long count() const { return isEmpty() ? 0 : width * height; }
    bool operator==(const PixelArea&) const = default;

    PixelArea intersected(const PixelArea& other) const;
    PixelArea united(const PixelArea& other) const;
    PixelArea grown(long long dx, long long dy) const { return { x - dx, y - dy, width + 2 * dx, height + 2 * dy }; }
    /// The whole pixels a rectangle touches; edges beyond 2^40 (an infinite extent's) are held there.
    static PixelArea enclosing(const Rect& r);
};

/// Premultiplied RGBA floats of a pixel area: four a pixel, rows top (maxY) first, `stride`
/// floats from one row to the next.
struct FloatPixels {
    float* data = nullptr;
    std::ptrdiff_t stride = 0;
    float* row(long long r) const { return data + r * stride; }
};

/// The work behind a filter image. Rendering fills an area that lies within the enclosing
/// pixels of the extent (the image clears what lies outside), in the working space: linear
/// light, premultiplied, values free to leave 0 .. 1. It renders its inputs over only the
/// area the output needs.
class ImageRecipe : public Object {
public:
    virtual Rect extent() const = 0;
    /// What filters that place themselves on the image measure (see CIImage::placementExtent).
    virtual Rect placementExtent() const { return extent(); }
    /// True when rendering some rows costs only those rows (each pixel from the same pixel of
    /// the inputs, or an edge one): such an image is drawn a band of rows at a time, in cache.
    virtual bool rendersRowsAlone() const { return false; }
    /// Draws an area within the extent straight into 8-bit memory (sRGB-encoded or not),
    /// replacing it, where that gives the bytes the float path would: exactly for byte tables,
    /// within one 8-bit step for the band blurs and colour matrices. False, with nothing drawn,
    /// where it cannot.
    virtual bool drawBytes(const PixelArea&, std::uint8_t*, std::ptrdiff_t, bool) const { return false; }
    /// False, with the pixels undefined, when scratch memory cannot be had or the area is too
    /// large to render.
    virtual bool render(const PixelArea& area, const FloatPixels& out) const = 0;
};

} // namespace kit
