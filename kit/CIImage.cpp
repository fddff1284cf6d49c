// CIImage: bitmap sources, clamps and crops, the mask pipeline's 8-bit blur, and rendering any
// image into float or 8-bit memory.
#include "kit/CIImage.h"

#include "kit/Flip.h"
#include "kit/GaussianBlur.h"
#include "kit/GaussianBlurRecipe.h"
#include "kit/LinearLight.h"
#include "kit/PixelKernels.h"
#include "kit/ScratchBlock.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace kit {

namespace {

using Area = PixelArea;
using Scratch = ScratchBlock;

// Clears the pixels of `area` outside `inside` (a part of it), in memory whose first row is the
// area's top row.
void clearAround(const Area& area, const Area& inside, std::uint8_t* rgba, std::ptrdiff_t rowStride)
{
    const std::size_t rowBytes = std::size_t(area.width) * 4;
    for (long long band = area.maxY(); band > area.y; --band) {
        std::uint8_t* row = rgba + (area.maxY() - band) * rowStride;
        if (inside.isEmpty() || band <= inside.y || band > inside.maxY()) {
            std::memset(row, 0, rowBytes);
            continue;
        }
        std::memset(row, 0, std::size_t(inside.x - area.x) * 4);
        std::memset(row + (inside.maxX() - area.x) * 4, 0, std::size_t(area.maxX() - inside.maxX()) * 4);
    }
}

// The same for float pixels.
void clearAround(const Area& area, const Area& inside, const FloatPixels& out)
{
    for (long long r = 0; r < area.height; ++r) {
        float* row = out.row(r);
        const long long band = area.maxY() - r;
        if (inside.isEmpty() || band <= inside.y || band > inside.maxY()) {
            std::fill(row, row + area.width * 4, 0.0f);
            continue;
        }
        std::fill(row, row + (inside.x - area.x) * 4, 0.0f);
        std::fill(row + (inside.maxX() - area.x) * 4, row + area.width * 4, 0.0f);
    }
}

// Images above this many pixels are not rendered: a bound on scratch memory.
constexpr long long kMaxRenderPixels = 1LL << 28;

// The clamp: edge pixels repeated outward. An output pixel reads the input pixel nearest to it.
class ClampRecipe final : public ImageRecipe {
public:
    explicit ClampRecipe(RefPtr<CIImage> input) : m_input(std::move(input)) {}
    Rect extent() const override { return infiniteRect(); }
    Rect placementExtent() const override { return m_input->placementExtent(); }
    bool rendersRowsAlone() const override { return m_input->rendersRowsAlone(); }
    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        const Area source = Area::enclosing(m_input->extent());
        if (source.isEmpty()) {
            clearAround(area, {}, out);
            return true;
        }
        auto nearest = [](long long v, long long lo, long long hi) { return std::clamp(v, lo, hi - 1); };
        const long long x0 = nearest(area.x, source.x, source.maxX());
        const long long x1 = nearest(area.maxX() - 1, source.x, source.maxX()) + 1;
        const long long y0 = nearest(area.y, source.y, source.maxY());
        const long long y1 = nearest(area.maxY() - 1, source.y, source.maxY()) + 1;
        const Area inner { x0, y0, x1 - x0, y1 - y0 };
        if (inner.count() > kMaxRenderPixels)
            return false;
        Scratch block(std::size_t(inner.count()) * 4 * sizeof(float));
        const FloatPixels pixels { block.as<float>(), std::ptrdiff_t(inner.width * 4) };
        if (!block || !m_input->renderArea(inner, pixels))
            return false;
        for (long long r = 0; r < area.height; ++r) {
            const long long band = nearest(area.maxY() - r, inner.y + 1, inner.maxY() + 1);
            const float* from = pixels.row(inner.maxY() - band);
            float* row = out.row(r);
            for (long long x = area.x; x < area.maxX(); ++x)
                std::memcpy(row + (x - area.x) * 4, from + (nearest(x, inner.x, inner.maxX()) - inner.x) * 4, 16);
        }
        return true;
    }

private:
    RefPtr<CIImage> m_input;
};

// The crop: the input itself within the kept pixels; the image clears the rest.
class CropRecipe final : public ImageRecipe {
public:
    CropRecipe(RefPtr<CIImage> input, Rect extent) : m_input(std::move(input)), m_extent(extent) {}
    Rect extent() const override { return m_extent; }
    Rect placementExtent() const override { return isInfinite(m_extent) ? m_input->placementExtent() : m_extent; }
    bool rendersRowsAlone() const override { return m_input->rendersRowsAlone(); }
    bool render(const PixelArea& area, const FloatPixels& out) const override { return m_input->renderArea(area, out); }

private:
    RefPtr<CIImage> m_input;
    Rect m_extent;
};

} // namespace

PixelArea PixelArea::intersected(const PixelArea& other) const
{
    const long long x0 = std::max(x, other.x), y0 = std::max(y, other.y);
    const long long x1 = std::min(maxX(), other.maxX()), y1 = std::min(maxY(), other.maxY());
    return { x0, y0, std::max(0LL, x1 - x0), std::max(0LL, y1 - y0) };
}

PixelArea PixelArea::united(const PixelArea& other) const
{
    const long long x0 = std::min(x, other.x), y0 = std::min(y, other.y);
    return { x0, y0, std::max(maxX(), other.maxX()) - x0, std::max(maxY(), other.maxY()) - y0 };
}

PixelArea PixelArea::enclosing(const Rect& r)
{
    static constexpr double limit = double(1LL << 40);
    auto held = [](double v) { return std::clamp(v, -limit, limit); };
    const double x0 = held(std::floor(double(r.minX()))), y0 = held(std::floor(double(r.minY())));
    const double x1 = held(std::ceil(double(r.maxX()))), y1 = held(std::ceil(double(r.maxY())));
    if (!(x1 > x0) || !(y1 > y0))
        return {};
    return { (long long)x0, (long long)y0, (long long)(x1 - x0), (long long)(y1 - y0) };
}

RefPtr<CIImage> CIImage::imageWithBitmapData(
    RefPtr<Data> data, std::size_t bytesPerRow, Size size, CIFormat format, const ColorSpace* colorSpace)
{
    const float w = size.width, h = size.height;
    if (!data || !colorSpace || colorSpace->numberOfComponents() != 3)
        return nullptr;
    if (format != CIFormatARGB8 && format != CIFormatRGBA8)
        return nullptr;
    if (!(w >= 1 && h >= 1 && w <= 1 << 24 && h <= 1 << 24) || w != std::floor(w) || h != std::floor(h))
        return nullptr;
    const auto width = std::size_t(w), height = std::size_t(h);
    if (bytesPerRow / 4 < width || data->length() / bytesPerRow < height)
        return nullptr;
    auto image = adoptRef(new CIImage(Kind::Bitmap));
    image->m_extent = Rect(0, 0, w, h);
    image->m_data = std::move(data);
    image->m_bytesPerRow = bytesPerRow;
    image->m_format = format;
    image->m_srgb = colorSpace->isSRGB();
    return image;
}

RefPtr<CIImage> CIImage::gaussianBlur(RefPtr<CIImage> input, double sigma)
{
    if (!input || !(sigma > 0))
        return input;
    auto image = imageWithRecipe(adoptRef(new GaussianBlurRecipe(input, sigma)));
    image->m_input = std::move(input);
    image->m_sigma = sigma;
    return image;
}

RefPtr<CIImage> CIImage::imageWithRecipe(RefPtr<ImageRecipe> recipe)
{
    if (!recipe)
        return nullptr;
    auto image = adoptRef(new CIImage(Kind::Recipe));
    image->m_extent = recipe->extent();
    image->m_recipe = std::move(recipe);
    return image;
}

RefPtr<CIImage> CIImage::imageByClampingToExtent() const
{
    RefPtr<CIImage> self(const_cast<CIImage*>(this));
    if (isInfinite(m_extent))
        return self;
    return imageWithRecipe(adoptRef(new ClampRecipe(std::move(self))));
}

RefPtr<CIImage> CIImage::imageByCroppingToRect(Rect rect) const
{
    RefPtr<CIImage> self(const_cast<CIImage*>(this));
    return imageWithRecipe(adoptRef(new CropRecipe(std::move(self), intersection(m_extent, rect))));
}

const std::uint8_t* CIImage::bitmapPixel(long long x, long long y) const
{
    if (m_kind != Kind::Bitmap || m_format != CIFormatRGBA8)
        return nullptr;
    const auto width = (long long)m_extent.width(), height = (long long)m_extent.height();
    if (x < 0 || y < 0 || x >= width || y >= height)
        return nullptr;
    const auto memoryRow = (long long)flippedY(double(y + 1), double(height));
    return m_data->bytes() + std::size_t(memoryRow) * m_bytesPerRow + std::size_t(x) * 4;
}

bool CIImage::renderArea(const PixelArea& area, const FloatPixels& out) const
{
    if (area.isEmpty())
        return true;
    const Area inside = area.intersected(Area::enclosing(m_extent));
    clearAround(area, inside, out);
    if (inside.isEmpty())
        return true;
    if (inside.count() > kMaxRenderPixels)
        return false;
    const FloatPixels part { out.row(area.maxY() - inside.maxY()) + (inside.x - area.x) * 4, out.stride };
    if (m_kind == Kind::Bitmap)
        return renderBitmapArea(inside, part);
    return m_recipe && m_recipe->render(inside, part);
}

bool CIImage::renderBitmapArea(const PixelArea& area, const FloatPixels& out) const
{
    const auto imageHeight = (long long)m_extent.height();
    for (long long r = 0; r < area.height; ++r) {
        const auto memoryRow = (long long)flippedY(double(area.maxY() - r), double(imageHeight));
        const std::uint8_t* source = m_data->bytes() + std::size_t(memoryRow) * m_bytesPerRow + std::size_t(area.x) * 4;
        linearlight::decodeRow(source, m_format == CIFormatARGB8, m_srgb, std::size_t(area.width), out.row(r));
    }
    return true;
}

bool CIImage::drawArea(int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace,
    const ColorSpace* space) const
{
    if (width <= 0 || height <= 0 || !rgba)
        return true;
    const bool srgb = space && space->isSRGB();
    bool drawn = false;
    // Bitmaps go straight into memory of their own colour space, and the mask pipeline's blurs
    // of device RGB bitmaps stay in 8 bits; everything else renders in floats.
    if (m_kind == Kind::Bitmap && m_srgb == srgb)
        drawn = drawBitmapArea(x, y, width, height, rgba, rowStride, replace);
    else if (m_input && m_input->isDeviceBitmap() && !srgb)
        drawn = drawBlurArea(x, y, width, height, rgba, rowStride, replace);
    else
        drawn = drawRenderedArea(x, y, width, height, rgba, rowStride, replace, srgb);
    // Outside its extent an image is transparent black: replacing writes that too.
    const Area area { x, y, width, height };
    if (drawn && replace)
        clearAround(area, area.intersected(Area::enclosing(m_extent)), rgba, rowStride);
    return drawn;
}

bool CIImage::drawRenderedArea(
    int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace, bool srgb) const
{
    const Area area { x, y, width, height };
    const Area wanted = area.intersected(Area::enclosing(m_extent));
    if (wanted.isEmpty())
        return true;
    if (wanted.count() > kMaxRenderPixels)
        return false;
    std::uint8_t* out = rgba + (area.maxY() - wanted.maxY()) * rowStride + (wanted.x - area.x) * 4;
    if (m_recipe && drawBytes(wanted, out, rowStride, replace, srgb))
        return true;
    // Images whose rows render alone go a few rows at a time, so the floats stay in cache;
    // anything with a neighbourhood renders at once.
    const long long bandRows = rendersRowsAlone() ? std::min(wanted.height, 8LL) : wanted.height;
    Scratch floats(std::size_t(bandRows * wanted.width) * 4 * sizeof(float));
    std::vector<std::uint8_t> line(replace ? 0 : std::size_t(wanted.width) * 4);
    const FloatPixels pixels { floats.as<float>(), std::ptrdiff_t(wanted.width * 4) };
    if (!floats)
        return false;
    for (long long first = 0; first < wanted.height; first += bandRows) {
        const long long rows = std::min(bandRows, wanted.height - first);
        if (!renderArea({ wanted.x, wanted.maxY() - first - rows, wanted.width, rows }, pixels))
            return false;
        for (long long r = 0; r < rows; ++r) {
            std::uint8_t* target = out + (first + r) * rowStride;
            linearlight::encodeRow(pixels.row(r), srgb, std::size_t(wanted.width), replace ? target : line.data());
            if (!replace)
                pixelkernels::compositeOver(line.data(), target, std::size_t(wanted.width));
        }
    }
    return true;
}

bool CIImage::drawBytes(
    const PixelArea& area, std::uint8_t* out, std::ptrdiff_t rowStride, bool replace, bool srgb) const
{
    if (replace)
        return m_recipe->drawBytes(area, out, rowStride, srgb);
    std::vector<std::uint8_t> bytes(std::size_t(area.count()) * 4);
    if (!m_recipe->drawBytes(area, bytes.data(), std::ptrdiff_t(area.width * 4), srgb))
        return false;
    for (long long r = 0; r < area.height; ++r)
        pixelkernels::compositeOver(bytes.data() + r * area.width * 4, out + r * rowStride, std::size_t(area.width));
    return true;
}

bool CIImage::drawBitmapArea(
    int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const
{
    const Area area { x, y, width, height };
    const Area inside = area.intersected(Area::enclosing(m_extent));
    if (inside.isEmpty())
        return true;
    const long long imageHeight = (long long)m_extent.height();
    std::vector<std::uint32_t> row(std::size_t(inside.width));
    for (long long band = inside.maxY(); band > inside.y; --band) {
        const auto memoryRow = (long long)flippedY(double(band), double(imageHeight));
        const auto outRow = (long long)flippedY(double(band), double(area.maxY()));
        const std::uint8_t* source
            = m_data->bytes() + std::size_t(memoryRow) * m_bytesPerRow + std::size_t(inside.x) * 4;
        std::memcpy(row.data(), source, row.size() * 4);
        if (m_format == CIFormatARGB8) {
            // A, R, G, B in memory is the little-endian word A | R << 8 | ...: a byte's rotation
            // makes it R, G, B, A.
            for (std::uint32_t& word : row)
                word = std::rotr(word, 8);
        }
        std::uint8_t* out = rgba + outRow * rowStride + (inside.x - area.x) * 4;
        if (replace)
            std::memcpy(out, row.data(), row.size() * 4);
        else
            pixelkernels::compositeOver(reinterpret_cast<const std::uint8_t*>(row.data()), out, row.size());
    }
    return true;
}

bool CIImage::drawBlurArea(
    int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const
{
    const Area area { x, y, width, height };
    const Area wanted = area.intersected(Area::enclosing(m_extent));
    if (wanted.isEmpty())
        return true;
    if (GaussianBlur(m_sigma).isIdentity())
        return m_input->drawArea(x, y, width, height, rgba, rowStride, replace);
    const Area inputArea = Area::enclosing(m_input->extent());
    // The recursion runs over everything the input covers and the wanted pixels; outside the
    // input it reads transparent black.
    const Area domain = wanted.united(inputArea);
    if (domain.width * domain.height > kMaxRenderPixels || inputArea.width * inputArea.height > kMaxRenderPixels)
        return false;

    // Only device RGB bitmaps come here: the blur reads their bytes in place.
    BlurSource source;
    source.pixels = m_input->m_data->bytes();
    source.rowStride = std::ptrdiff_t(m_input->m_bytesPerRow);
    const int argbShifts[4] = { 8, 16, 24, 0 }, rgbaShifts[4] = { 0, 8, 16, 24 };
    const int* shifts = m_input->m_format == CIFormatARGB8 ? argbShifts : rgbaShifts;
    source.width = int(inputArea.width);
    source.height = int(inputArea.height);
    source.x = int(inputArea.x - domain.x);
    source.y = int(domain.maxY() - inputArea.maxY());

    // Where the wanted pixels sit in the domain's rows (top first) and in the caller's memory.
    const long long firstColumn = wanted.x - domain.x;
    const long long firstRow = domain.maxY() - wanted.maxY();
    std::uint8_t* out = rgba + (area.maxY() - wanted.maxY()) * rowStride + (wanted.x - area.x) * 4;

    const GaussianBlur blur(m_sigma);
    BlurSourceFacts facts;
    source.shift = shifts[3];
    // Grey and black images write alpha straight out; only coloured ones need a place for it.
    Scratch colour(0);
    bool general = false, colourHad = true;
    auto alphaSink = [&](int, int, const std::uint8_t* plane, std::ptrdiff_t stride) {
        general = !facts.othersEqualChannel && !facts.othersZero;
        if (general && !colour.allocate(std::size_t(wanted.width * wanted.height * 4))) {
            colourHad = false;
            return;
        }
        for (long long r = 0; r < wanted.height; ++r) {
            const std::uint8_t* values = plane + (firstRow + r) * stride + firstColumn;
            if (!general) {
                if (replace)
                    pixelkernels::writeValues(
                        values, facts.othersEqualChannel, out + r * rowStride, std::size_t(wanted.width));
                else
                    pixelkernels::compositeValuesOver(
                        values, facts.othersEqualChannel, out + r * rowStride, std::size_t(wanted.width));
                continue;
            }
            std::uint8_t* pixels = colour.bytes() + r * wanted.width * 4;
            for (long long c = 0; c < wanted.width; ++c)
                pixels[4 * c + 3] = values[c];
        }
    };
    if (!blur.blurChannel(source, int(domain.width), int(domain.height), alphaSink, &facts) || !colourHad)
        return false;
    if (!general)
        return true;
    // Colour that is not simply grey or black: each channel takes its own run.
    for (int channel = 0; channel < 3; ++channel) {
        source.shift = shifts[channel];
        auto colourSink = [&](int, int, const std::uint8_t* plane, std::ptrdiff_t stride) {
            for (long long r = 0; r < wanted.height; ++r) {
                const std::uint8_t* values = plane + (firstRow + r) * stride + firstColumn;
                std::uint8_t* pixels = colour.bytes() + r * wanted.width * 4;
                for (long long c = 0; c < wanted.width; ++c)
                    pixels[4 * c + channel] = std::min(values[c], pixels[4 * c + 3]);
            }
        };
        if (!blur.blurChannel(source, int(domain.width), int(domain.height), colourSink))
            return false;
    }
    for (long long r = 0; r < wanted.height; ++r) {
        const std::uint8_t* pixels = colour.bytes() + r * wanted.width * 4;
        if (replace)
            std::memcpy(out + r * rowStride, pixels, std::size_t(wanted.width) * 4);
        else
            pixelkernels::compositeOver(pixels, out + r * rowStride, std::size_t(wanted.width));
    }
    return true;
}

} // namespace kit
