// GraphicsContext: the cairo side of the drawing layer.
#include "kit/GraphicsContext.h"

#include "kit/BezierPath.h"
#include "kit/Flip.h"
#include "kit/Font.h"
#include "kit/Image.h"
#include "kit/Utf8.h"

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace kit {

namespace {

// Surfaces larger than this are refused, as the image type refuses them.
constexpr std::int64_t kMaxPixels = std::int64_t(1) << 28;
// cairo's own limit on either side of an image surface.
constexpr int kMaxSide = 32767;

thread_local RefPtr<GraphicsContext> t_current;
thread_local std::vector<RefPtr<GraphicsContext>> t_stack;

bool finite(const Rect& r)
{
    return std::isfinite(r.x()) && std::isfinite(r.y()) && std::isfinite(r.width()) && std::isfinite(r.height());
}

// A cairo surface (native-endian premultiplied ARGB) holding a copy of the pixels of an
// image from column x0 and row y0 (rows top first), w x h of them. Copying only the part that
// is drawn keeps the scaling filter from reaching pixels outside it.
cairo_surface_t* surfaceFromImage(const Image& image, int x0, int y0, int w, int h)
{
    if (w < 1 || h < 1 || w > kMaxSide || h > kMaxSide)
        return nullptr;
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const std::uint8_t* rgba = image.rgba().data();
    const std::size_t imageWidth = std::size_t(image.pixelsWide());
    for (int y = 0; y < h; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(data + std::ptrdiff_t(y) * stride);
        for (int x = 0; x < w; ++x) {
            const std::uint8_t* p = rgba + (std::size_t(y0 + y) * imageWidth + std::size_t(x0 + x)) * 4;
            row[x] = std::uint32_t(p[3]) << 24 | std::uint32_t(p[0]) << 16 | std::uint32_t(p[1]) << 8 | p[2];
        }
    }
    cairo_surface_mark_dirty(surface);
    return surface;
}

cairo_operator_t cairoOperator(CompositingOperation operation)
{
    switch (operation) {
    case CompositeClear: return CAIRO_OPERATOR_CLEAR;
    case CompositeCopy: return CAIRO_OPERATOR_SOURCE;
    case CompositeSourceOver: return CAIRO_OPERATOR_OVER;
    }
    return CAIRO_OPERATOR_OVER;
}

} // namespace

RefPtr<GraphicsContext> GraphicsContext::create(int pixelsWide, int pixelsHigh)
{
    if (pixelsWide < 1 || pixelsHigh < 1 || pixelsWide > kMaxSide || pixelsHigh > kMaxSide
        || std::int64_t(pixelsWide) * pixelsHigh > kMaxPixels)
        return nullptr;
    // Rows of exactly 4 x width bytes, so the memory can become an image's as it stands.
    const int stride = pixelsWide * 4;
    if (cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, pixelsWide) != stride)
        return nullptr;
    std::vector<std::uint8_t> pixels(std::size_t(stride) * std::size_t(pixelsHigh));
    cairo_surface_t* surface
        = cairo_image_surface_create_for_data(pixels.data(), CAIRO_FORMAT_ARGB32, pixelsWide, pixelsHigh, stride);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    return adoptRef(new GraphicsContext(std::move(pixels), surface, pixelsWide, pixelsHigh));
}

GraphicsContext::GraphicsContext(std::vector<std::uint8_t> pixels, cairo_surface_t* surface, int width, int height)
    : m_pixels(std::move(pixels))
    , m_surface(surface)
    , m_cairo(cairo_create(surface))
    , m_width(width)
    , m_height(height)
    , m_states(1)
{
    // The image's rows run top down; the kit's user space runs bottom up.
    flipVertically(0, float(height));
}

GraphicsContext::~GraphicsContext()
{
    cairo_destroy(m_cairo);
    cairo_surface_destroy(m_surface);
}

GraphicsContext* GraphicsContext::currentContext() { return t_current.get(); }

void GraphicsContext::setCurrentContext(GraphicsContext* context) { t_current = context; }

void GraphicsContext::saveGraphicsState()
{
    t_stack.push_back(t_current);
    if (t_current)
        t_current->saveGState();
}

void GraphicsContext::restoreGraphicsState()
{
    if (t_stack.empty())
        return;
    t_current = t_stack.back();
    t_stack.pop_back();
    if (t_current)
        t_current->restoreGState();
}

namespace {

// Native-endian premultiplied ARGB words to RGBA bytes; `from` may be `to`.
void argbToRgba(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t p;
        std::memcpy(&p, from + 4 * i, 4);
        to[4 * i + 0] = std::uint8_t(p >> 16);
        to[4 * i + 1] = std::uint8_t(p >> 8);
        to[4 * i + 2] = std::uint8_t(p);
        to[4 * i + 3] = std::uint8_t(p >> 24);
    }
}

} // namespace

RefPtr<Image> GraphicsContext::makeImage() const
{
    cairo_surface_flush(m_surface);
    std::vector<std::uint8_t> rgba(m_pixels.size());
    argbToRgba(m_pixels.data(), rgba.data(), rgba.size() / 4);
    return Image::imageWithRGBA(m_width, m_height, std::move(rgba));
}

RefPtr<Image> GraphicsContext::takeImage()
{
    cairo_surface_flush(m_surface);
    cairo_surface_finish(m_surface);
    argbToRgba(m_pixels.data(), m_pixels.data(), m_pixels.size() / 4);
    return Image::imageWithRGBA(m_width, m_height, std::move(m_pixels));
}

const std::uint8_t* GraphicsContext::pixelData() const
{
    cairo_surface_flush(m_surface);
    return cairo_image_surface_get_data(m_surface);
}

int GraphicsContext::bytesPerRow() const { return cairo_image_surface_get_stride(m_surface); }

void GraphicsContext::saveGState()
{
    cairo_save(m_cairo);
    m_states.push_back(m_states.back());
}

void GraphicsContext::restoreGState()
{
    // The first state belongs to the context itself and is never popped.
    if (m_states.size() <= 1)
        return;
    cairo_restore(m_cairo);
    m_states.pop_back();
}

void GraphicsContext::translate(float dx, float dy)
{
    if (std::isfinite(dx) && std::isfinite(dy))
        cairo_translate(m_cairo, dx, dy);
}

void GraphicsContext::flipVertically(float minY, float maxY)
{
    if (!std::isfinite(minY) || !std::isfinite(maxY))
        return;
    // The mirror image of y within [minY, maxY] is flippedY(y, minY + maxY): the same flip the
    // bitmap contexts use between drawing space and memory rows.
    cairo_matrix_t flip;
    cairo_matrix_init(&flip, 1, 0, 0, -1, 0, flippedY(0, double(minY) + double(maxY)));
    cairo_transform(m_cairo, &flip);
}

bool GraphicsContext::isFlipped() const
{
    cairo_matrix_t m;
    cairo_get_matrix(m_cairo, &m);
    return m.yy > 0;
}

void GraphicsContext::clipToRect(const Rect& rect)
{
    cairo_new_path(m_cairo);
    if (finite(rect) && !rect.isEmpty())
        cairo_rectangle(m_cairo, rect.x(), rect.y(), rect.width(), rect.height());
    else
        cairo_rectangle(m_cairo, 0, 0, 0, 0);
    cairo_clip(m_cairo);
}

Rect GraphicsContext::clipBoundingBox() const
{
    double x0, y0, x1, y1;
    cairo_clip_extents(m_cairo, &x0, &y0, &x1, &y1);
    return { float(x0), float(y0), float(x1 - x0), float(y1 - y0) };
}

void GraphicsContext::setSource(const Color& color)
{
    cairo_set_source_rgba(
        m_cairo, color.redComponent(), color.greenComponent(), color.blueComponent(), color.alphaComponent());
}

void GraphicsContext::fillRect(const Rect& rect)
{
    if (!finite(rect) || rect.isEmpty())
        return;
    cairo_new_path(m_cairo);
    cairo_rectangle(m_cairo, rect.x(), rect.y(), rect.width(), rect.height());
    setSource(fillColor());
    cairo_fill(m_cairo);
}

void GraphicsContext::strokeRect(const Rect& rect, float lineWidth)
{
    RefPtr<BezierPath> path = BezierPath::bezierPathWithRect(rect);
    path->setLineWidth(lineWidth);
    strokePath(*path);
}

void GraphicsContext::beginTransparencyLayer()
{
    saveGState();
    cairo_push_group(m_cairo);
}

void GraphicsContext::endTransparencyLayer()
{
    cairo_pop_group_to_source(m_cairo);
    cairo_paint(m_cairo);
    restoreGState();
}

void GraphicsContext::clearRect(const Rect& rect)
{
    if (!finite(rect) || rect.isEmpty())
        return;
    cairo_save(m_cairo);
    cairo_set_operator(m_cairo, CAIRO_OPERATOR_CLEAR);
    cairo_new_path(m_cairo);
    cairo_rectangle(m_cairo, rect.x(), rect.y(), rect.width(), rect.height());
    cairo_fill(m_cairo);
    cairo_restore(m_cairo);
}

bool GraphicsContext::addPath(const BezierPath& path)
{
    cairo_new_path(m_cairo);
    if (path.isEmpty() || !path.isFinite())
        return false;
    for (const BezierPath::Element& e : path.elements()) {
        switch (e.type) {
        case MoveToBezierPathElement: cairo_move_to(m_cairo, e.points[0].x, e.points[0].y); break;
        case LineToBezierPathElement: cairo_line_to(m_cairo, e.points[0].x, e.points[0].y); break;
        case CurveToBezierPathElement:
            cairo_curve_to(
                m_cairo, e.points[1].x, e.points[1].y, e.points[2].x, e.points[2].y, e.points[0].x, e.points[0].y);
            break;
        case ClosePathBezierPathElement: cairo_close_path(m_cairo); break;
        }
    }
    return true;
}

void GraphicsContext::fillPath(const BezierPath& path)
{
    if (!addPath(path))
        return;
    cairo_set_fill_rule(
        m_cairo, path.windingRule() == EvenOddWindingRule ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    setSource(fillColor());
    cairo_fill(m_cairo);
}

void GraphicsContext::strokePath(const BezierPath& path)
{
    if (!addPath(path))
        return;
    cairo_save(m_cairo);
    cairo_set_line_width(m_cairo, path.lineWidth());
    switch (path.lineCapStyle()) {
    case ButtLineCapStyle: cairo_set_line_cap(m_cairo, CAIRO_LINE_CAP_BUTT); break;
    case RoundLineCapStyle: cairo_set_line_cap(m_cairo, CAIRO_LINE_CAP_ROUND); break;
    case SquareLineCapStyle: cairo_set_line_cap(m_cairo, CAIRO_LINE_CAP_SQUARE); break;
    }
    switch (path.lineJoinStyle()) {
    case MiterLineJoinStyle: cairo_set_line_join(m_cairo, CAIRO_LINE_JOIN_MITER); break;
    case RoundLineJoinStyle: cairo_set_line_join(m_cairo, CAIRO_LINE_JOIN_ROUND); break;
    case BevelLineJoinStyle: cairo_set_line_join(m_cairo, CAIRO_LINE_JOIN_BEVEL); break;
    }
    const std::vector<float>& dash = path.lineDash();
    if (!dash.empty()) {
        std::vector<double> lengths(dash.begin(), dash.end());
        cairo_set_dash(m_cairo, lengths.data(), int(lengths.size()), path.lineDashPhase());
    }
    setSource(strokeColor());
    cairo_stroke(m_cairo);
    cairo_restore(m_cairo);
}

void GraphicsContext::drawImage(
    const Image& image, const Rect& destination, const Rect& source, CompositingOperation operation, float fraction)
{
    const Size size = image.size();
    const Rect from = source.isEmpty() ? Rect { {}, size } : intersection(source, { {}, size });
    if (!finite(destination) || destination.isEmpty() || from.isEmpty() || !(fraction > 0))
        return;
    // The source rectangle in the image's rows (top first), widened to whole pixels.
    const double top = size.height - from.maxY();
    const int x0 = int(std::floor(from.x()));
    const int y0 = int(std::floor(top));
    const int x1 = int(std::ceil(from.maxX()));
    const int y1 = int(std::ceil(top + from.height()));
    cairo_surface_t* surface = surfaceFromImage(image, x0, y0, x1 - x0, y1 - y0);
    if (!surface)
        return;
    cairo_save(m_cairo);
    cairo_translate(m_cairo, destination.x(), destination.y());
    // From here the destination's rectangle runs from 0 to its size; the image's rows run down.
    if (!isFlipped())
        flipVertically(0, destination.height());
    cairo_rectangle(m_cairo, 0, 0, destination.width(), destination.height());
    cairo_clip(m_cairo);
    cairo_scale(m_cairo, destination.width() / from.width(), destination.height() / from.height());
    cairo_set_source_surface(m_cairo, surface, x0 - from.x(), y0 - top);
    cairo_pattern_set_extend(cairo_get_source(m_cairo), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(m_cairo), CAIRO_FILTER_GOOD);
    cairo_set_operator(m_cairo, cairoOperator(operation));
    if (fraction >= 1)
        cairo_paint(m_cairo);
    else
        cairo_paint_with_alpha(m_cairo, fraction);
    cairo_restore(m_cairo);
    cairo_surface_destroy(surface);
}

void GraphicsContext::drawTextLine(std::string_view utf8, Point baseline, const Font& font, const Color& color)
{
    if (utf8.empty() || !std::isfinite(baseline.x) || !std::isfinite(baseline.y))
        return;
    const std::string text = sanitizedUtf8(utf8);
    cairo_save(m_cairo);
    cairo_translate(m_cairo, baseline.x, baseline.y);
    // Glyphs are designed y down; turn them upright where user space runs y up.
    if (!isFlipped())
        flipVertically(0, 0);
    font.applyTo(m_cairo);
    setSource(color);
    cairo_new_path(m_cairo);
    cairo_move_to(m_cairo, 0, 0);
    cairo_show_text(m_cairo, text.c_str());
    cairo_restore(m_cairo);
}

} // namespace kit
