// BitmapContext: drawing into caller-owned RGBA memory, y up, with antialiased path fills.
#pragma once

#include "kit/AffineTransform.h"
#include "kit/ColorSpace.h"
#include "kit/Geometry.h"
#include "kit/MutablePath.h"
#include "kit/Object.h"
#include "kit/ScanlineRasterizer.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace kit {

/// Alpha placement of a bitmap's pixels, with the original platform's values.
enum ImageAlphaInfo : std::uint32_t {
    ImageAlphaNone = 0,
    ImageAlphaPremultipliedLast = 1,
    ImageAlphaPremultipliedFirst = 2,
    ImageAlphaLast = 3,
    ImageAlphaFirst = 4,
    ImageAlphaNoneSkipLast = 5,
    ImageAlphaNoneSkipFirst = 6,
    ImageAlphaOnly = 7,
};

/// A drawing context over pixel memory that stays the caller's: 8 bits per component, R, G, B, A
/// in memory order, colour premultiplied by alpha, the top row first. Drawing space has its
/// origin at the bottom-left corner of the bitmap, y going up, one unit per pixel.
class BitmapContext final : public Object {
public:
    /// A context over `data`, or null unless the layout is the one above (8 bits per component,
    /// ImageAlphaPremultipliedLast, an RGB colour space, width and height above 0, at least
    /// width x 4 bytes per row) and data is not null.
    static RefPtr<BitmapContext> create(void* data, int width, int height, int bitsPerComponent,
        std::size_t bytesPerRow, const ColorSpace* space, std::uint32_t bitmapInfo);

    int width() const { return m_width; }
    int height() const { return m_height; }
    std::size_t bytesPerRow() const { return m_bytesPerRow; }
    std::uint8_t* data() const { return m_data; }
    /// True when the context was made with an sRGB colour space: filter images drawn into it are
    /// encoded from linear light.
    bool isSRGB() const { return m_srgb; }

    /// Fills antialias only while the context both allows it and should do it (both start on).
    void setAllowsAntialiasing(bool allows) { m_allowsAntialiasing = allows; }
    void setShouldAntialias(bool should) { m_shouldAntialias = should; }
    bool antialiasing() const { return m_allowsAntialiasing && m_shouldAntialias; }

    /// Components from 0 to 1, not premultiplied; values outside are clamped, NaN reads as 0.
    void setRGBFillColor(float red, float green, float blue, float alpha);

    /// The current path, in drawing space.
    void beginPath();
    void moveToPoint(float x, float y);
    void addLineToPoint(float x, float y);
    void closePath();
    void addRect(const Rect& rect);
    void addEllipseInRect(const Rect& rect);
    void addPath(const MutablePath& path);
    bool isPathEmpty() const { return m_path->isEmpty(); }

    /// Fills the current path (every subpath closed) with the fill colour, source over, and
    /// empties the path.
    void fillPath();
    void eoFillPath();
    /// Clears the whole bitmap to transparent black and fills the current path (non-zero rule)
    /// in one pass: the same pixels as clearRect over everything followed by fillPath, each
    /// written once and none read. Empties the path.
    void clearAndFillPath();
    /// Clears the whole bitmap and fills the current path (non-zero rule) with the fill colour
    /// blurred by a Gaussian of standard deviation `sigma` that reads transparent black outside
    /// the bitmap: clearAndFillPath followed by that blur, within a fraction of an 8-bit step.
    /// It works in the bitmap's own memory, so the rows must be width x 4 bytes apart. False
    /// when they are not or working memory cannot be had; the pixels then hold nothing of use.
    /// Empties the path.
    bool clearAndFillPathBlurred(double sigma);
    void fillRect(const Rect& rect);
    void fillEllipseInRect(const Rect& rect);
    /// Makes the rectangle's pixels transparent black (partly, on antialiased edges).
    void clearRect(const Rect& rect);
    /// Replaces every pixel, whatever it held, by the fill colour times the coverage of the
    /// box from `low` to `high` (drawing space) blurred by a Gaussian of standard deviation
    /// `sigma` that reads transparent black outside the bitmap: what clearing the bitmap,
    /// filling the box and blurring would give, exactly up to the rounding to 8 bits, in one
    /// pass over memory (a blur that is the identity, as below sigma 0.16, leaves the sharp box).
    /// False, with nothing written, when its scratch memory cannot be had.
    bool replaceWithBlurredBox(Point low, Point high, double sigma);

private:
    BitmapContext(std::uint8_t* data, int width, int height, std::size_t bytesPerRow, bool srgb);
    enum class Paint {
        FillColor,
        Clear,
    };
    void fill(const MutablePath& path, FillRule rule, Paint paint);
    void addToRasterizer(const MutablePath& path);
    void writeCoverage(std::uint8_t* plane);
    void sweepPath(const std::function<void(int)>& clearRow, const ScanlineRasterizer::RowSink& writeRow);
    void paintSpan(int row, int x0, int x1, std::uint8_t cover, Paint paint);

    std::uint8_t* m_data;
    int m_width;
    int m_height;
    std::size_t m_bytesPerRow;
    bool m_srgb;
    bool m_allowsAntialiasing = true;
    bool m_shouldAntialias = true;
    float m_fill[4] = { 0, 0, 0, 1 }; // premultiplied, 0 to 255
    std::uint32_t m_fillPixel = 0xFF000000u;
    RefPtr<MutablePath> m_path;
    ScanlineRasterizer m_rasterizer;
};

} // namespace kit
