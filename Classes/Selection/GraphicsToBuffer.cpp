// GraphicsToBuffer: mask buffers sized by truncated bounds, filled by the kit, feathered by its blur.
#include "Classes/Selection/GraphicsToBuffer.h"

#include "Classes/Selection/GraphicsToBufferInternals.h"
#include "Classes/Selection/SelectionAssert.h"
#include "kit/AffineTransform.h"
#include "kit/ColorSpace.h"
#include "kit/Flip.h"
#include "kit/MemoryRecycler.h"
#include "kit/MutablePath.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

// Feathers at or below this, compared in double precision, blur nothing.
constexpr double kFeatherThreshold = 0.0001;

bool isFeathered(float feather) { return double(feather) > kFeatherThreshold; }

// A negative feather only narrows the margins (the buffer must still have a pixel) and blurs
// nothing; the bound on either side keeps every size computation finite.
bool validFeather(float feather) { return std::fabs(feather) <= kGraphicsToBufferMaxFeather; }

bool fitsInt(double v) { return v >= double(INT_MIN) && v <= double(INT_MAX); }

// The blur pads each side to a multiple of 16 pixels; its scratch follows that padded area.
long long blurArea(long long width, long long height) { return (width + 15) / 16 * 16 * ((height + 15) / 16 * 16); }

// The buffer's size from float sizes as the rules compute them, or false when it is refused.
bool bufferSize(float width, float height, float feather, int& outWidth, int& outHeight)
{
    if (!std::isfinite(width) || !std::isfinite(height) || !(width >= 1) || !(height >= 1))
        return false;
    if (double(width) * double(height) > double(kGraphicsToBufferMaxPixels))
        return false;
    const long long w = (long long)width, h = (long long)height;
    if (w * h > kGraphicsToBufferMaxPixels)
        return false;
    // The blur's scratch grows with its padded area and with its longer side.
    if (isFeathered(feather)
        && (blurArea(w, h) > kGraphicsToBufferMaxPixels || std::max(w, h) > kGraphicsToBufferMaxBlurSide))
        return false;
    outWidth = int(w);
    outHeight = int(h);
    return true;
}

struct Layout {
    kit::Point origin;
    int width = 0;
    int height = 0;
};

std::size_t blockBytes(const Layout& layout) { return std::size_t(layout.width) * std::size_t(layout.height) * 4; }

unsigned char* block(const Layout& layout)
{
    return static_cast<unsigned char*>(kit::MemoryRecycler::shared().allocate(blockBytes(layout)));
}

int handOver(IMAGE_BUFFER& buffer, kit::Point& origin, const Layout& layout, unsigned char* data)
{
    buffer.nWidth = layout.width;
    buffer.nHeight = layout.height;
    buffer.pData = data;
    origin = layout.origin;
    return kGraphicsToBufferDone;
}

kit::RefPtr<kit::BitmapContext> antialiasedContext(const Layout& layout, unsigned char* data)
{
    auto context = MyCreateBitmapContext(layout.width, layout.height, data, 0);
    context->setAllowsAntialiasing(true);
    context->setShouldAntialias(true);
    return context;
}

void setFillColor(kit::BitmapContext& context, COLOR_STRUCT color)
{
    context.setRGBFillColor(color.r / 255.0f, color.g / 255.0f, color.b / 255.0f, color.a / 255.0f);
}

// Fills a fresh buffer with the current path of the context `draw` prepares, feathered by the
// kit in the buffer's own memory; hands it over only when all went well.
template <typename Draw>
int rasterize(IMAGE_BUFFER& buffer, kit::Point& origin, const Layout& layout, float feather, Draw&& draw)
{
    unsigned char* data = block(layout);
    if (!data)
        return kGraphicsToBufferNoContext;
    auto context = antialiasedContext(layout, data);
    draw(*context);
    if (!isFeathered(feather))
        context->clearAndFillPath();
    else if (!context->clearAndFillPathBlurred(double(feather))) {
        kit::MemoryRecycler::shared().release(data);
        return kGraphicsToBufferNoContext;
    }
    return handOver(buffer, origin, layout, data);
}

// A box along the axes covers each pixel by the product of its coverage along x and along y,
// and the separable blur of that product is the product of the two lines' blurs. So the
// clear, the fill and the feather step collapse into one write of every pixel, with the same
// result up to the rounding to 8 bits.
int rasterizeBox(IMAGE_BUFFER& buffer, kit::Point& origin, const Layout& layout, COLOR_STRUCT fillColor, float feather,
    kit::Point low, kit::Point high)
{
    unsigned char* data = block(layout);
    if (!data)
        return kGraphicsToBufferNoContext;
    auto context = antialiasedContext(layout, data);
    setFillColor(*context, fillColor);
    if (!context->replaceWithBlurredBox(low, high, isFeathered(feather) ? double(feather) : 0.0)) {
        kit::MemoryRecycler::shared().release(data);
        return kGraphicsToBufferNoContext;
    }
    return handOver(buffer, origin, layout, data);
}

// The polygon's buffer placement: integer bounds truncated toward zero, then the margins.
bool polygonLayout(const kit::Point* vertices, int count, float feather, Layout& layout)
{
    if (!vertices || count > kGraphicsToBufferMaxVertices || !validFeather(feather))
        return false;
    long long minX = 0, maxX = 0, minY = 0, maxY = 0;
    for (int i = 0; i < count; ++i) {
        const kit::Point p = vertices[i];
        // Every coordinate must truncate to an int.
        if (!(std::fabs(p.x) < 2147483648.0f) || !(std::fabs(p.y) < 2147483648.0f))
            return false;
        const long long x = (long long)p.x, y = (long long)p.y;
        minX = i == 0 ? x : std::min(minX, x);
        maxX = i == 0 ? x : std::max(maxX, x);
        minY = i == 0 ? y : std::min(minY, y);
        maxY = i == 0 ? y : std::max(maxY, y);
    }
    const double originX = double(minX - 1) - double(feather), originY = double(minY - 1) - double(feather);
    if (!fitsInt(originX) || !fitsInt(originY) || !fitsInt(double(maxX - minX + 3) + 2.0 * double(feather)))
        return false;
    if (!fitsInt(double(maxY - minY + 3) + 2.0 * double(feather)))
        return false;
    layout.origin = { float(minX - 1) - feather, float(minY - 1) - feather };
    const float width = float(maxX + 3 - minX) + 2 * feather;
    const float height = float(maxY + 3 - minY) + 2 * feather;
    return bufferSize(width, height, feather, layout.width, layout.height) && fitsInt(double(layout.origin.x))
        && fitsInt(double(layout.origin.y));
}

// The bitmap's drawing space runs y up, but the layer runs y down and takes memory row j onto
// its row origin.y + j. So a shape is drawn mirrored within its buffer (layer y goes to
// flippedY(y - origin.y, height)) and lands on exactly the layer pixels it was given in.
kit::AffineTransform layerToDrawing(const Layout& layout)
{
    return { 1, 0, 0, -1, -double(layout.origin.x), kit::flippedY(-double(layout.origin.y), layout.height) };
}

kit::Rect layerRectToDrawing(const Layout& layout, const kit::Rect& rect)
{
    const kit::Point lowLeft = layerToDrawing(layout).apply({ rect.x(), rect.y() + rect.height() });
    return { lowLeft.x, lowLeft.y, rect.width(), rect.height() };
}

bool ellipseLayout(const kit::Rect& rect, float feather, Layout& layout)
{
    if (!validFeather(feather))
        return false;
    for (float v : { rect.x(), rect.y(), rect.width(), rect.height() }) {
        if (!std::isfinite(v))
            return false;
    }
    layout.origin = { rect.x() - 1 - feather, rect.y() - 1 - feather };
    if (!fitsInt(double(layout.origin.x)) || !fitsInt(double(layout.origin.y)))
        return false;
    return bufferSize(
        rect.width() + 3 + 2 * feather, rect.height() + 3 + 2 * feather, feather, layout.width, layout.height);
}

} // namespace

kit::RefPtr<kit::BitmapContext> MyCreateBitmapContext(int width, int height, unsigned char* memory, int)
{
    auto colorSpace = kit::ColorSpace::createDeviceRGB();
    if (!memory)
        SELECTION_ASSERT(false);
    auto context = kit::BitmapContext::create(
        memory, width, height, 8, std::size_t(width) * 4, colorSpace.get(), kit::ImageAlphaPremultipliedLast);
    if (!context)
        SELECTION_ASSERT(false);
    return context;
}

int CreateImageBufferFromPolygon(IMAGE_BUFFER& buffer, kit::Point& origin, const kit::Point* vertices, int count,
    COLOR_STRUCT, bool, COLOR_STRUCT fillColor, float feather)
{
    if (count < 3)
        return kGraphicsToBufferTooFewVertices;
    Layout layout;
    if (!polygonLayout(vertices, count, feather, layout))
        return kGraphicsToBufferRefused;
    // The vertices as given, moved into the buffer; the fill closes the figure.
    auto path = kit::MutablePath::create();
    const kit::AffineTransform move = layerToDrawing(layout);
    path->addLines(&move, vertices, count);
    kit::Point low, high;
    if (path->isAxisAlignedRectangle(low, high))
        return rasterizeBox(buffer, origin, layout, fillColor, feather, low, high);
    return rasterize(buffer, origin, layout, feather, [&](kit::BitmapContext& context) {
        context.beginPath();
        context.addPath(*path);
        setFillColor(context, fillColor);
    });
}

int CreateImageBufferFromRect(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect rect, COLOR_STRUCT firstColor,
    bool flag, COLOR_STRUCT fillColor, float feather)
{
    // A negative width or height is still four corners of an ordinary polygon: drawn from the
    // other side, it covers the same pixels as its mirror.
    if (!std::isfinite(rect.width()) || !std::isfinite(rect.height()))
        return kGraphicsToBufferRefused;
    const float x = rect.x(), y = rect.y(), w = rect.width(), h = rect.height();
    const kit::Point corners[4] = { { x, y }, { x, y + h }, { x + w, y + h }, { x + w, y } };
    return CreateImageBufferFromPolygon(buffer, origin, corners, 4, firstColor, flag, fillColor, feather);
}

int CreateImageBufferFromEllipse(
    IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect rect, COLOR_STRUCT, bool, COLOR_STRUCT fillColor, float feather)
{
    Layout layout;
    if (!ellipseLayout(rect, feather, layout))
        return kGraphicsToBufferRefused;
    return rasterize(buffer, origin, layout, feather, [&](kit::BitmapContext& context) {
        setFillColor(context, fillColor);
        context.beginPath();
        context.addEllipseInRect(layerRectToDrawing(layout, rect));
    });
}

void DestroyImageBuffer(IMAGE_BUFFER buffer)
{
    if (buffer.pData)
        kit::MemoryRecycler::shared().release(buffer.pData);
}
