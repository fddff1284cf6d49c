// BitmapContext: path bookkeeping, the flip into memory rows and span painting.
#include "kit/BitmapContext.h"

#include "kit/FeatheredFill.h"
#include "kit/Flip.h"
#include "kit/GaussianBlur.h"
#include "kit/MemoryRecycler.h"
#include "kit/PixelKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
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
    return adoptRef(new BitmapContext(static_cast<std::uint8_t*>(data), width, height, bytesPerRow, space->isSRGB()));
}

BitmapContext::BitmapContext(std::uint8_t* data, int width, int height, std::size_t bytesPerRow, bool srgb)
    : m_data(data)
    , m_width(width)
    , m_height(height)
    , m_bytesPerRow(bytesPerRow)
    , m_srgb(srgb)
    , m_path(MutablePath::create())
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

bool BitmapContext::replaceWithBlurredBox(Point low, Point high, double sigma)
{
    // Along x drawing space and memory agree; memory rows run down from the top edge.
    double x0 = low.x, x1 = high.x;
    double y0 = flippedY(high.y, m_height), y1 = flippedY(low.y, m_height);
    if (!antialiasing()) {
        // Without antialiasing a pixel is in by its centre: the box snaps to whole pixels.
        for (double* v : { &x0, &x1, &y0, &y1 })
            *v = std::ceil(*v - 0.5);
    }
    auto& recycler = MemoryRecycler::shared();
    auto* profiles
        = static_cast<float*>(recycler.allocate((std::size_t(m_width) + std::size_t(m_height)) * sizeof(float)));
    if (!profiles)
        return false;
    float* columns = profiles;
    float* rows = profiles + m_width;
    const GaussianBlur blur(sigma > 0 ? sigma : 0);
    blur.blurSpan(x0, x1, m_width, columns);
    blur.blurSpan(y0, y1, m_height, rows);
    std::uint8_t colour[4];
    std::memcpy(colour, &m_fillPixel, 4);
    for (int row = 0; row < m_height; ++row)
        pixelkernels::writeScaledColour(
            columns, rows[row], colour, m_data + std::size_t(row) * m_bytesPerRow, std::size_t(m_width));
    recycler.release(profiles);
    return true;
}

void BitmapContext::clearAndFillPath()
{
    std::uint8_t colour[4];
    std::memcpy(colour, &m_fillPixel, 4);
    const std::size_t rowBytes = std::size_t(m_width) * 4;
    sweepPath([&](int row) { std::memset(m_data + std::size_t(row) * m_bytesPerRow, 0, rowBytes); },
        [&](int row, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest) {
            std::uint8_t* line = m_data + std::size_t(row) * m_bytesPerRow;
            std::memset(line, 0, std::size_t(x0) * 4);
            pixelkernels::writeCoverage(coverage, colour, line + std::size_t(x0) * 4, std::size_t(x1 - x0));
            std::uint8_t restPixel[4];
            for (int c = 0; c < 4; ++c)
                restPixel[c] = std::uint8_t(divideBy255(colour[c] * unsigned(rest)));
            fillPixels(line + std::size_t(x1) * 4, std::size_t(m_width - x1), restPixel);
        });
}

// Rasterises the current path (non-zero rule) and empties it. Rows come top to bottom; those no
// edge reaches go to `clearRow` as they are passed over.
void BitmapContext::sweepPath(const std::function<void(int)>& clearRow, const ScanlineRasterizer::RowSink& writeRow)
{
    addToRasterizer(*m_path);
    beginPath();
    int nextRow = 0;
    m_rasterizer.rasterize(FillRule::NonZero, antialiasing(),
        [&](int row, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest) {
            for (; nextRow < row; ++nextRow)
                clearRow(nextRow);
            writeRow(row, x0, x1, coverage, rest);
            nextRow = row + 1;
        });
    for (; nextRow < m_height; ++nextRow)
        clearRow(nextRow);
}

bool BitmapContext::clearAndFillPathBlurred(double sigma)
{
    if (m_bytesPerRow != std::size_t(m_width) * 4) {
        beginPath();
        return false;
    }
    FeatheredFill feathered(m_data, m_width, m_height, sigma);
    writeCoverage(feathered.coverage());
    std::uint8_t colour[4];
    std::memcpy(colour, &m_fillPixel, 4);
    return feathered.finish(colour);
}

// The current path's coverage, one byte a pixel, rows width bytes apart; empties the path.
void BitmapContext::writeCoverage(std::uint8_t* plane)
{
    const std::size_t width = std::size_t(m_width);
    sweepPath([&](int row) { std::memset(plane + std::size_t(row) * width, 0, width); },
        [&](int row, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest) {
            std::uint8_t* line = plane + std::size_t(row) * width;
            std::memset(line, 0, std::size_t(x0));
            std::memcpy(line + x0, coverage, std::size_t(x1 - x0));
            std::memset(line + x1, rest, std::size_t(m_width - x1));
        });
}

void BitmapContext::addToRasterizer(const MutablePath& path)
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
}

void BitmapContext::fill(const MutablePath& path, FillRule rule, Paint paint)
{
    addToRasterizer(path);
    std::uint8_t colour[4];
    std::memcpy(colour, &m_fillPixel, 4);
    m_rasterizer.rasterize(
        rule, antialiasing(), [&](int row, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest) {
            std::uint8_t* line = m_data + std::size_t(row) * m_bytesPerRow;
            pixelkernels::paintCoverage(
                coverage, colour, paint == Paint::Clear, line + std::size_t(x0) * 4, std::size_t(x1 - x0));
            if (rest)
                paintSpan(row, x1, m_width, rest, paint);
        });
}

void BitmapContext::paintSpan(int row, int x0, int x1, std::uint8_t cover, Paint paint)
{
    std::uint8_t* pixel = m_data + std::size_t(row) * m_bytesPerRow + std::size_t(x0) * 4;
    const std::size_t count = std::size_t(x1 - x0);
    if (paint == Paint::Clear) {
        if (cover == 255) {
            std::memset(pixel, 0, count * 4);
            return;
        }
        for (std::size_t i = 0; i < count * 4; ++i)
            pixel[i] = std::uint8_t(divideBy255(pixel[i] * (255u - cover)));
        return;
    }
    std::uint8_t source[4];
    std::memcpy(source, &m_fillPixel, 4);
    if (cover == 255 && source[3] == 255) {
        // Opaque and fully covered: the run becomes the colour, as fast as memory takes it.
        fillPixels(pixel, count, source);
        return;
    }
    // Source over: s = colour x coverage, d = s + d x (255 - s alpha) / 255, each rounded.
    unsigned covered[4];
    for (int c = 0; c < 4; ++c)
        covered[c] = divideBy255(source[c] * unsigned(cover));
    const unsigned keep = 255 - covered[3];
    for (std::size_t i = 0; i < count; ++i, pixel += 4) {
        for (int c = 0; c < 4; ++c)
            pixel[c] = std::uint8_t(std::min(255u, covered[c] + divideBy255(pixel[c] * keep)));
    }
}

} // namespace kit
