// CIImage: bitmap sources, the Gaussian blur recipe, and rendering them into RGBA memory.
#include "kit/CIImage.h"

#include "kit/Flip.h"
#include "kit/GaussianBlur.h"
#include "kit/MemoryRecycler.h"
#include "kit/PixelKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace kit {

namespace {

struct Area {
    long long x, y, width, height; // drawing space, whole pixels
    long long maxX() const { return x + width; }
    long long maxY() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
};

Area intersect(const Area& a, const Area& b)
{
    const long long x0 = std::max(a.x, b.x), y0 = std::max(a.y, b.y);
    const long long x1 = std::min(a.maxX(), b.maxX()), y1 = std::min(a.maxY(), b.maxY());
    return { x0, y0, std::max(0LL, x1 - x0), std::max(0LL, y1 - y0) };
}

Area unite(const Area& a, const Area& b)
{
    const long long x0 = std::min(a.x, b.x), y0 = std::min(a.y, b.y);
    return { x0, y0, std::max(a.maxX(), b.maxX()) - x0, std::max(a.maxY(), b.maxY()) - y0 };
}

// The whole pixels that a rectangle touches.
Area enclosing(const Rect& r)
{
    const double x0 = std::floor(double(r.minX())), y0 = std::floor(double(r.minY()));
    const double x1 = std::ceil(double(r.maxX())), y1 = std::ceil(double(r.maxY()));
    return { (long long)x0, (long long)y0, (long long)(x1 - x0), (long long)(y1 - y0) };
}

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

// Images above this many pixels are not rendered: a bound on scratch memory.
constexpr long long kMaxRenderPixels = 1LL << 28;

// RAII for a recycled scratch block.
class Scratch {
public:
    explicit Scratch(std::size_t bytes)
        : m_memory(bytes ? MemoryRecycler::shared().allocate(bytes) : nullptr)
    {
    }
    ~Scratch() { MemoryRecycler::shared().release(m_memory); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    std::uint8_t* bytes() const { return static_cast<std::uint8_t*>(m_memory); }
    explicit operator bool() const { return m_memory != nullptr; }
    /// Takes a block only when it turns out to be needed.
    bool allocate(std::size_t bytes)
    {
        if (!m_memory)
            m_memory = MemoryRecycler::shared().allocate(bytes);
        return m_memory != nullptr;
    }

private:
    void* m_memory;
};

} // namespace

RefPtr<CIImage> CIImage::imageWithBitmapData(RefPtr<Data> data, std::size_t bytesPerRow, Size size, CIFormat format,
                                             const ColorSpace* colorSpace)
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
    return image;
}

RefPtr<CIImage> CIImage::gaussianBlur(RefPtr<CIImage> input, double sigma)
{
    if (!input || !(sigma > 0))
        return input;
    auto image = adoptRef(new CIImage(Kind::GaussianBlur));
    const float grow = float(std::ceil(3 * sigma));
    const Rect in = input->extent();
    image->m_extent = Rect(in.minX() - grow, in.minY() - grow, in.width() + 2 * grow, in.height() + 2 * grow);
    image->m_input = std::move(input);
    image->m_sigma = sigma;
    return image;
}

bool CIImage::drawArea(
    int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const
{
    if (width <= 0 || height <= 0 || !rgba)
        return true;
    bool drawn = false;
    switch (m_kind) {
    case Kind::Bitmap: drawn = drawBitmapArea(x, y, width, height, rgba, rowStride, replace); break;
    case Kind::GaussianBlur: drawn = drawBlurArea(x, y, width, height, rgba, rowStride, replace); break;
    }
    // Outside its extent an image is transparent black: replacing writes that too.
    if (drawn && replace)
        clearAround({ x, y, width, height }, intersect({ x, y, width, height }, enclosing(m_extent)), rgba, rowStride);
    return drawn;
}

bool CIImage::drawBitmapArea(
    int x, int y, int width, int height, std::uint8_t* rgba, std::ptrdiff_t rowStride, bool replace) const
{
    const Area area { x, y, width, height };
    const Area inside = intersect(area, enclosing(m_extent));
    if (inside.isEmpty())
        return true;
    const long long imageHeight = (long long)m_extent.height();
    std::vector<std::uint32_t> row(std::size_t(inside.width));
    for (long long band = inside.maxY(); band > inside.y; --band) {
        const auto memoryRow = (long long)flippedY(double(band), double(imageHeight));
        const auto outRow = (long long)flippedY(double(band), double(area.maxY()));
        const std::uint8_t* source = m_data->bytes() + std::size_t(memoryRow) * m_bytesPerRow + std::size_t(inside.x) * 4;
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
    const Area wanted = intersect(area, enclosing(m_extent));
    if (wanted.isEmpty())
        return true;
    if (GaussianBlur(m_sigma).isIdentity())
        return m_input->drawArea(x, y, width, height, rgba, rowStride, replace);
    const Area inputArea = enclosing(m_input->extent());
    // The recursion runs over everything the input covers and the wanted pixels; outside the
    // input it reads transparent black.
    const Area domain = unite(wanted, inputArea);
    if (domain.width * domain.height > kMaxRenderPixels || inputArea.width * inputArea.height > kMaxRenderPixels)
        return false;

    BlurSource source;
    int shifts[4]; // bit positions of R, G, B, A in the source's little-endian words
    Scratch rendered(m_input->m_kind == Kind::Bitmap ? 0 : std::size_t(inputArea.width * inputArea.height * 4));
    if (m_input->m_kind == Kind::Bitmap) {
        source.pixels = m_input->m_data->bytes();
        source.rowStride = std::ptrdiff_t(m_input->m_bytesPerRow);
        const bool argb = m_input->m_format == CIFormatARGB8;
        const int argbShifts[4] = { 8, 16, 24, 0 }, rgbaShifts[4] = { 0, 8, 16, 24 };
        std::copy_n(argb ? argbShifts : rgbaShifts, 4, shifts);
    } else {
        if (!rendered)
            return false;
        if (!m_input->drawArea(int(inputArea.x), int(inputArea.y), int(inputArea.width), int(inputArea.height),
                rendered.bytes(), std::ptrdiff_t(inputArea.width * 4), true))
            return false;
        source.pixels = rendered.bytes();
        source.rowStride = std::ptrdiff_t(inputArea.width * 4);
        const int rgbaShifts[4] = { 0, 8, 16, 24 };
        std::copy_n(rgbaShifts, 4, shifts);
    }
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
