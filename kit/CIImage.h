// CIImage: a filter image: bitmap data, or a recipe of filters over one, rendered when drawn.
#pragma once

#include "kit/ColorSpace.h"
#include "kit/Data.h"
#include "kit/Geometry.h"
#include "kit/ImageRecipe.h"
#include "kit/Object.h"

#include <cstddef>
#include <cstdint>

namespace kit {

/// Pixel layouts of filter-image bitmap data: 8 bits per component, premultiplied, in memory
/// order A, R, G, B and R, G, B, A. (The values are the kit's own.)
enum CIFormat : int {
    CIFormatARGB8 = 1,
    CIFormatRGBA8 = 2,
};

/// An image of the filter framework. Coordinates have the origin at the bottom left, y up;
/// outside its extent an image is transparent black. Images are immutable and evaluated
/// lazily: a filter's output image only describes the work, which runs when a context draws,
/// over only the input pixels the drawn area needs. Inside the chain pixels are premultiplied
/// floats in linear light (see ColorSpace).
class CIImage final : public Object {
public:
    /// An image over bitmap data (top row first), extent (0, 0, width, height); the data object
    /// is kept, not copied. Null unless the size is whole and positive, the format known, the
    /// colour space RGB, bytesPerRow at least width x 4 and the data long enough. Data named
    /// with sRGB is decoded to linear light as the chain reads it.
    static RefPtr<CIImage> imageWithBitmapData(
        RefPtr<Data> data, std::size_t bytesPerRow, Size size, CIFormat format, const ColorSpace* colorSpace);
    /// The input blurred by a Gaussian of standard deviation `sigma`; its extent grows by
    /// ceil(3 sigma) on every side. Below sigma 0.16 the pixels pass unchanged (the kernel's side
    /// weights are below 1e-8); a sigma that is not above 0 gives the input itself.
    static RefPtr<CIImage> gaussianBlur(RefPtr<CIImage> input, double sigma);
    /// The image a recipe describes; null without one.
    static RefPtr<CIImage> imageWithRecipe(RefPtr<ImageRecipe> recipe);

    Rect extent() const { return m_extent; }
    /// The rectangle that filters placing themselves on the image (the vignette's centre and
    /// size, the zoom's length) measure: the extent, but for an image clamped to its extent,
    /// and filters over one, the extent it was clamped from.
    Rect placementExtent() const { return m_recipe ? m_recipe->placementExtent() : m_extent; }
    /// True for bitmap data that draws into memory of the given encoding byte for byte.
    bool isBitmapEncoded(bool srgb) const { return m_kind == Kind::Bitmap && m_srgb == srgb; }
    /// For R, G, B, A bitmap data, its pixel (x, y) of drawing space, the first of the row's
    /// pixels from there on; null for other images and pixels outside the extent.
    const std::uint8_t* bitmapPixel(long long x, long long y) const;
    /// See ImageRecipe::rendersRowsAlone; bitmaps do.
    bool rendersRowsAlone() const { return m_recipe ? m_recipe->rendersRowsAlone() : m_kind == Kind::Bitmap; }

    /// This image with its edge pixels repeated outward without end: an infinite extent. An
    /// image whose extent is already infinite is itself.
    RefPtr<CIImage> imageByClampingToExtent() const;
    /// This image cut to the whole pixels `rect` touches; its extent is the intersection.
    RefPtr<CIImage> imageByCroppingToRect(Rect rect) const;

    /// Renders the whole-pixel area in the working space (premultiplied linear floats), transparent
    /// black outside the extent. False when scratch memory cannot be had or an area to render
    /// exceeds 2^28 pixels.
    bool renderArea(const PixelArea& area, const FloatPixels& out) const;

    /// Renders the pixels of the whole-pixel area (x, y, width, height) and draws them source over
    /// into RGBA memory whose first row is the area's top row. With `replace` the memory is
    /// taken as transparent black: every pixel of the area is written and none is read. The
    /// memory is in `space` (null: device RGB); an sRGB memory gets encoded values. False,
    /// with nothing drawn, when the memory for the work cannot be had.
    bool drawArea(int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride,
        bool replace = false, const ColorSpace* space = nullptr) const;

private:
    enum class Kind {
        Bitmap,
        Recipe,
    };
    explicit CIImage(Kind kind) : m_kind(kind) {}
    bool isDeviceBitmap() const { return m_kind == Kind::Bitmap && !m_srgb; }
    bool renderBitmapArea(const PixelArea& area, const FloatPixels& out) const;
    bool drawBitmapArea(
        int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const;
    bool drawBlurArea(
        int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const;
    bool drawBytes(const PixelArea& area, std::uint8_t* out, std::ptrdiff_t rowStride, bool replace, bool srgb) const;
    bool drawRenderedArea(int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride,
        bool replace, bool srgb) const;

    Kind m_kind;
    Rect m_extent;
    // Bitmap images.
    RefPtr<Data> m_data;
    std::size_t m_bytesPerRow = 0;
    CIFormat m_format = CIFormatRGBA8;
    bool m_srgb = false;
    // Filter images. A Gaussian blur of a device RGB bitmap keeps its input and sigma for the
    // mask pipeline's 8-bit blur.
    RefPtr<ImageRecipe> m_recipe;
    RefPtr<CIImage> m_input;
    double m_sigma = 0;
};

} // namespace kit
