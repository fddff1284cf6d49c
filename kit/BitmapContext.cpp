// BitmapContext: path bookkeeping, the flip into memory rows and span painting.
#include "kit/BitmapContext.h"

#include "kit/Flip.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace kit {

namespace {

float unitComponent(float v) { return v >= 0 ? std::min(v, 1.0f) : 0.0f; }

std::uint8_t toByte(float v) { return std::uint8_t(std::clamp(v, 0.0f, 255.0f) + 0.5f); }

// Writes one pixel value over `count` pixels: a memset when its bytes agree (white, black,
// clear), otherwise by doubling copies.
void fillPixels(std::uint8_t* pixels, std::size_t count, const std::uint8_t value[4])
{
    if (count == 0)
        return;
    if (value[0] == value[1] && value[1] == value[2] && value[2] == value[3]) {
        std::memset(pixels, value[0], count * 4);
        return;
    }
    std::memcpy(pixels, value, 4);
    for (std::size_t done = 1; done < count;) {
        const std::size_t step = std::min(done, count - done);
        std::memcpy(pixels + done * 4, pixels, step * 4);
        done += step;
    }
}

// v / 255 rounded to nearest, exact for v up to 255 x 255.
unsigned divideBy255(unsigned v)
{
    v += 128;
    return (v + (v >> 8)) >> 8;
}

} // namespace

RefPtr<BitmapContext> BitmapContext::create(void* data, int width, int height, int bitsPerComponent,
                                            std::size_t bytesPerRow, const ColorSpace* space, std::uint32_t bitmapInfo)
{
    if (!data || width <= 0 || height <= 0 || bitsPerComponent != 8 || !space || space->numberOfComponents() != 3
        || bitmapInfo != ImageAlphaPremultipliedLast || bytesPerRow / 4 < std::size_t(width))
        return nullptr;
    return adoptRef(new BitmapContext(static_cast<std::uint8_t*>(data), width, height, bytesPerRow));
}

BitmapContext::BitmapContext(std::uint8_t* data, int width, int height, std::size_t bytesPerRow)
    : m_data(data), m_width(width), m_height(height), m_bytesPerRow(bytesPerRow), m_path(MutablePath::create())
{
}

void BitmapContext::setRGBFillColor(float red, float green, float blue, float alpha)
{
    const float a = unitComponent(alpha);
    m_fill[0] = unitComponent(red) * a * 255;
    m_fill[1] = unitComponent(green) * a * 255;
    m_fill[2] = unitComponent(blue) * a * 255;
    m_fill[3] = a * 255;
    const std::uint8_t bytes[4] = { toByte(m_fill[0]), toByte(m_fill[1]), toByte(m_fill[2]), toByte(m_fill[3]) };
    std::memcpy(&m_fillPixel, bytes, 4);
}

void BitmapContext::beginPath() { m_path = MutablePath::create(); }
void BitmapContext::moveToPoint(float x, float y) { m_path->moveToPoint(nullptr, x, y); }
void BitmapContext::addLineToPoint(float x, float y) { m_path->addLineToPoint(nullptr, x, y); }
void BitmapContext::closePath() { m_path->closeSubpath(); }
void BitmapContext::addRect(const Rect& rect) { m_path->addRect(nullptr, rect); }
void BitmapContext::addEllipseInRect(const Rect& rect) { m_path->addEllipseInRect(nullptr, rect); }
void BitmapContext::addPath(const MutablePath& path) { m_path->addPath(nullptr, path); }

void BitmapContext::fillPath()
{
    fill(*m_path, FillRule::NonZero, Paint::FillColor);
    beginPath();
}

void BitmapContext::eoFillPath()
{
    fill(*m_path, FillRule::EvenOdd, Paint::FillColor);
    beginPath();
}

void BitmapContext::fillRect(const Rect& rect)
{
    auto path = MutablePath::create();
    path->addRect(nullptr, rect);
    fill(*path, FillRule::NonZero, Paint::FillColor);
}

void BitmapContext::fillEllipseInRect(const Rect& rect)
{
    auto path = MutablePath::create();
    path->addEllipseInRect(nullptr, rect);
    fill(*path, FillRule::NonZero, Paint::FillColor);
}

void BitmapContext::clearRect(const Rect& rect)
{
    auto path = MutablePath::create();
    path->addRect(nullptr, rect);
    fill(*path, FillRule::NonZero, Paint::Clear);
}

void BitmapContext::fill(const MutablePath& path, FillRule rule, Paint paint)
{
    m_rasterizer.reset(m_width, m_height);
    std::vector<double> xy;
    for (const MutablePath::Subpath& subpath : path.subpaths()) {
        xy.clear();
        for (Point p : subpath.points) {
            xy.push_back(p.x);
            xy.push_back(flippedY(p.y, m_height));
        }
        m_rasterizer.addPolygon(xy.data(), subpath.points.size());
    }
    m_rasterizer.rasterize(rule, antialiasing(), [&](int row, int x0, int x1, float coverage, const float* perPixel) {
        if (perPixel)
            paintCoverage(row, x0, x1, perPixel, paint);
        else
            paintSpan(row, x0, x1, coverage, paint);
    });
}

void BitmapContext::paintSpan(int row, int x0, int x1, float coverage, Paint paint)
{
    std::uint8_t* pixel = m_data + std::size_t(row) * m_bytesPerRow + std::size_t(x0) * 4;
    const std::size_t count = std::size_t(x1 - x0);
    // Coverage is kept to the 8 bits the pixels can show: an interior that sums to 0.9999999
    // is whole, and takes the fast paths below.
    const unsigned cover = unsigned(coverage * 255 + 0.5f);
    if (cover == 0)
        return;
    if (paint == Paint::Clear) {
        if (cover >= 255) {
            std::memset(pixel, 0, count * 4);
            return;
        }
        for (std::size_t i = 0; i < count * 4; ++i)
            pixel[i] = std::uint8_t(divideBy255(pixel[i] * (255 - cover)));
        return;
    }
    std::uint8_t source[4];
    std::memcpy(source, &m_fillPixel, 4);
    if (cover >= 255 && source[3] == 255) {
        // Opaque and fully covered: the run becomes the colour, as fast as memory takes it.
        fillPixels(pixel, count, source);
        return;
    }
    // Source over: s = colour x coverage, d = s + d x (255 - s alpha) / 255, each rounded.
    unsigned covered[4];
    for (int c = 0; c < 4; ++c)
        covered[c] = divideBy255(source[c] * std::min(cover, 255u));
    const unsigned keep = 255 - covered[3];
    for (std::size_t i = 0; i < count; ++i, pixel += 4) {
        for (int c = 0; c < 4; ++c)
            pixel[c] = std::uint8_t(std::min(255u, covered[c] + divideBy255(pixel[c] * keep)));
    }
}

void BitmapContext::paintCoverage(int row, int x0, int x1, const float* coverage, Paint paint)
{
    std::uint8_t* pixel = m_data + std::size_t(row) * m_bytesPerRow + std::size_t(x0) * 4;
    std::uint8_t source[4];
    std::memcpy(source, &m_fillPixel, 4);
    if (paint == Paint::FillColor && m_fillPixel == 0xFFFFFFFFu) {
        // Opaque white, the colour of masks: every byte of a covered pixel is its coverage.
        for (int x = x0; x < x1; ++x, pixel += 4) {
            const unsigned cover = std::min(255u, unsigned(coverage[x - x0] * 255 + 0.5f));
            std::uint32_t existing;
            std::memcpy(&existing, pixel, 4);
            if (existing == 0) {
                const std::uint32_t word = cover * 0x01010101u;
                std::memcpy(pixel, &word, 4);
            } else if (cover) {
                for (int c = 0; c < 4; ++c)
                    pixel[c] = std::uint8_t(std::min(255u, cover + divideBy255(pixel[c] * (255 - cover))));
            }
        }
        return;
    }
    for (int x = x0; x < x1; ++x, pixel += 4) {
        const unsigned cover = unsigned(coverage[x - x0] * 255 + 0.5f);
        if (cover == 0)
            continue;
        if (paint == Paint::Clear) {
            for (int c = 0; c < 4; ++c)
                pixel[c] = std::uint8_t(divideBy255(pixel[c] * (255 - std::min(cover, 255u))));
            continue;
        }
        unsigned covered[4];
        for (int c = 0; c < 4; ++c)
            covered[c] = divideBy255(source[c] * std::min(cover, 255u));
        std::uint32_t existing;
        std::memcpy(&existing, pixel, 4);
        if (existing == 0) {
            // Over nothing the covered colour is the result: the usual case for a mask's edges.
            for (int c = 0; c < 4; ++c)
                pixel[c] = std::uint8_t(covered[c]);
            continue;
        }
        const unsigned keep = 255 - covered[3];
        for (int c = 0; c < 4; ++c)
            pixel[c] = std::uint8_t(std::min(255u, covered[c] + divideBy255(pixel[c] * keep)));
    }
}

} // namespace kit
