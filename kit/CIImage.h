// CIImage: a filter image: bitmap data, or a recipe of filters over one, rendered when drawn.
#pragma once

#include "kit/ColorSpace.h"
#include "kit/Data.h"
#include "kit/Geometry.h"
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
/// lazily: a filter's output image only describes the work, which runs when a context draws.
class CIImage final : public Object {
public:
    /// An image over bitmap data (top row first), extent (0, 0, width, height); the data object
    /// is kept, not copied. Null unless the size is whole and positive, the format known, the
    /// colour space RGB, bytesPerRow at least width x 4 and the data long enough.
    static RefPtr<CIImage> imageWithBitmapData(RefPtr<Data> data, std::size_t bytesPerRow, Size size,
                                               CIFormat format, const ColorSpace* colorSpace);
    /// The input blurred by a Gaussian of standard deviation `sigma`; its extent grows by
    /// ceil(3 sigma) on every side. Below sigma 0.16 the pixels pass unchanged (the kernel's side
    /// weights are below 1e-8); a sigma that is not above 0 gives the input itself.
    static RefPtr<CIImage> gaussianBlur(RefPtr<CIImage> input, double sigma);

    Rect extent() const { return m_extent; }

    /// Renders the pixels of the whole-pixel area (x, y, width, height) and draws them source over
    /// into RGBA memory whose first row is the area's top row. With `replace` the memory is
    /// taken as transparent black: every pixel of the area is written and none is read. False,
    /// with nothing drawn, when the memory for the work cannot be had.
    bool drawArea(
        int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace = false) const;

private:
    enum class Kind {
        Bitmap,
        GaussianBlur,
    };
    explicit CIImage(Kind kind) : m_kind(kind) {}
    bool drawBitmapArea(
        int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const;
    bool drawBlurArea(
        int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const;

    Kind m_kind;
    Rect m_extent;
    // Bitmap images.
    RefPtr<Data> m_data;
    std::size_t m_bytesPerRow = 0;
    CIFormat m_format = CIFormatRGBA8;
    // Filter images.
    RefPtr<CIImage> m_input;
    double m_sigma = 0;
};

} // namespace kit
