// CanvasView: the host's zoom and pan controls, key releases and dropped pictures.
#include "hostapp/CanvasView.h"

#include "kit/BezierPath.h"
#include "kit/Color.h"
#include "kit/Cursor.h"
#include "kit/Event.h"
#include "kit/Font.h"
#include "kit/GraphicsContext.h"
#include "kit/Image.h"
#include "kit/NotificationCenter.h"
#include "kit/TextView.h"
#include "kit/Window.h"

#include "hostapp/HostPicture.h"
#include "kit/RunLoop.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <set>

namespace hostapp {

namespace {

// The controls sit in a row along the bottom-left corner of the content area.
constexpr float kControlSize = 28;
constexpr float kControlGap = 4;
constexpr float kControlMargin = 10;
// Zoom stays between a sixteenth and sixteen points per canvas pixel.
constexpr double kMaxZoom = 16;
// A message stands in the status line this long.
constexpr double kMessageSeconds = 6;

const char* controlName(CanvasView::Control kind)
{
    switch (kind) {
    case CanvasView::Control::ZoomIn: return "zoom-in";
    case CanvasView::Control::ZoomOut: return "zoom-out";
    case CanvasView::Control::Fit: return "fit";
    case CanvasView::Control::Pan: return "pan";
    case CanvasView::Control::Filter: return "filter";
    case CanvasView::Control::Area: return "area";
    }
    return "area";
}

std::string at(const char* what, kit::Point p)
{
    return std::string(what) + " " + std::to_string(int(std::lround(p.x))) + ","
        + std::to_string(int(std::lround(p.y)));
}

} // namespace

CanvasView::CanvasView(const kit::Rect& frame) : kit::View(frame)
{
    registerForDraggedTypes({ kit::FilenamesPboardType });
}

void CanvasView::initView()
{
    float x = kControlMargin;
    for (Control kind : { Control::ZoomIn, Control::ZoomOut, Control::Fit, Control::Pan }) {
        addControl(kind, { x, kControlMargin, kControlSize, kControlSize });
        x += kControlSize + kControlGap;
    }
    m_filters = std::make_unique<FilterControls>(*this, kit::Point { x, kControlMargin }, kControlSize);
    m_filters->setDocument(m_document);
    for (const kit::Rect& frame : m_filters->frames())
        addControl(Control::Filter, frame);
}

void CanvasView::setDocument(engine::Document* document)
{
    m_document = document;
    if (m_filters)
        m_filters->setDocument(document);
}

void CanvasView::addControl(Control kind, const kit::Rect& rect)
{
    m_controls.push_back({ kind, rect });
    addTrackingArea(kit::TrackingArea::create(rect, kAreaOptions, this).get());
}

void CanvasView::addHostArea(const kit::Rect& rect)
{
    addControl(Control::Area, rect);
    kit::NotificationCenter::defaultCenter().post(kTrackingAreaCursorUpdated, this);
}

const CanvasView::HostControl* CanvasView::controlAt(kit::Point p) const
{
    // The same edge rule the plug-in uses for the host's areas.
    for (const HostControl& control : m_controls) {
        if (kit::MouseInRect(p, control.rect, false))
            return &control;
    }
    return nullptr;
}

void CanvasView::mouseDown(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    note(at("down", p));
    m_pressed = controlAt(p);
    m_lastDrag = p;
    // Presses on the filter controls reach them here when the plug-in's overlay passes them on.
    m_pressedFilterControl = m_filters ? m_filters->controlAt(p) : nullptr;
    if (m_pressedFilterControl)
        m_pressedFilterControl->mouseDown(event);
}

void CanvasView::mouseDragged(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    note(at("drag", p));
    if (m_pressedFilterControl)
        m_pressedFilterControl->mouseDragged(event);
    if (m_pressed && m_pressed->kind == Control::Pan)
        panBy(p.x - m_lastDrag.x, p.y - m_lastDrag.y);
    m_lastDrag = p;
}

void CanvasView::panBy(float dx, float dy)
{
    if (!m_document)
        return;
    // The canvas follows the pointer: dragging right shows what lies further left.
    const engine::ViewRect view = m_document->viewRect();
    const double zoom = double(m_document->viewSize().width) / view.width;
    const int x = int(std::lround(dx / zoom));
    const int y = int(std::lround(dy / zoom));
    m_document->setViewRect({ view.x - x, view.y + y, view.width, view.height });
}

void CanvasView::fit()
{
    if (!m_document)
        return;
    // The zoom that shows the whole canvas on both axes, the canvas centred on the other one.
    const engine::ViewSize points = m_document->viewSize();
    const int canvasWidth = m_document->canvasWidth(), canvasHeight = m_document->canvasHeight();
    const double zoom = std::min(double(points.width) / canvasWidth, double(points.height) / canvasHeight);
    const int width = std::max(1, int(std::lround(points.width / zoom)));
    const int height = std::max(1, int(std::lround(points.height / zoom)));
    m_document->setViewRect({ (canvasWidth - width) / 2, (canvasHeight - height) / 2, width, height });
}

void CanvasView::showActualSize()
{
    if (!m_document)
        return;
    const engine::ViewRect view = m_document->viewRect();
    zoomBy(double(view.width) / m_document->viewSize().width);
}

void CanvasView::zoomAbout(double factor, kit::Point viewPoint)
{
    if (!m_document)
        return;
    const kit::Point anchor = canvasPointOfViewPoint(viewPoint);
    const engine::ViewRect view = m_document->viewRect();
    const engine::ViewSize points = m_document->viewSize();
    const double zoom = std::clamp(double(points.width) / view.width * factor, 1 / kMaxZoom, kMaxZoom);
    const int width = std::max(1, int(std::lround(points.width / zoom)));
    const int height = std::max(1, int(std::lround(points.height / zoom)));
    // The centre that puts the anchor back under the pointer at the new zoom.
    const kit::Size size = bounds().size;
    const double centreX = anchor.x - (viewPoint.x - size.width * 0.5) / zoom;
    const double centreY = anchor.y + (viewPoint.y - size.height * 0.5) / zoom;
    m_document->setViewRect(
        { int(std::lround(centreX)) - width / 2, int(std::lround(centreY)) - height / 2, width, height });
}

void CanvasView::mouseUp(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    note(at("up", p));
    if (auto control = std::exchange(m_pressedFilterControl, nullptr))
        control->mouseUp(event);
    const HostControl* pressed = std::exchange(m_pressed, nullptr);
    if (pressed && pressed->kind != Control::Pan && controlAt(p) == pressed)
        act(pressed->kind);
}

void CanvasView::act(Control kind)
{
    note(controlName(kind));
    switch (kind) {
    case Control::ZoomIn: zoomBy(2); return;
    case Control::ZoomOut: zoomBy(0.5); return;
    case Control::Fit: fit(); return;
    case Control::Pan:
    case Control::Filter:
    case Control::Area: return;
    }
}

void CanvasView::zoomBy(double factor)
{
    if (!m_document)
        return;
    // Zooming keeps the canvas point at the centre of the view where it is.
    const engine::ViewRect view = m_document->viewRect();
    const engine::ViewSize points = m_document->viewSize();
    const double zoom = std::clamp(double(points.width) / view.width * factor, 1 / kMaxZoom, kMaxZoom);
    const int width = std::max(1, int(std::lround(points.width / zoom)));
    const int height = std::max(1, int(std::lround(points.height / zoom)));
    const int centreX = view.x + view.width / 2;
    const int centreY = view.y + view.height / 2;
    m_document->setViewRect({ centreX - width / 2, centreY - height / 2, width, height });
}

void CanvasView::mouseEntered(const kit::Event&) { kit::Cursor::arrowCursor()->set(); }

void CanvasView::mouseExited(const kit::Event&) {}

bool CanvasView::editingText() const
{
    kit::Window* window = this->window();
    auto* editor = window ? dynamic_cast<kit::TextView*>(window->firstResponder()) : nullptr;
    return editor && editor->isFieldEditor() && editor->client();
}

void CanvasView::keyUp(const kit::Event& event)
{
    note("keyup " + event.characters());
    // A release that rises from a field being edited ends a keystroke of the typing: a Delete
    // typed into the feather field must not take back a lasso vertex.
    if (editingText())
        return;
    kit::Notification notification { kKeyUp, &event, {} };
    kit::NotificationCenter::defaultCenter().post(notification);
}

kit::DragOperation CanvasView::draggingEntered(const kit::DraggingInfo& info)
{
    // Any file is taken, so that one that cannot be used is answered with the reason.
    return info.filenames.empty() ? kit::DragOperationNone : kit::DragOperationCopy;
}

kit::DragOperation CanvasView::draggingUpdated(const kit::DraggingInfo& info) { return draggingEntered(info); }

bool CanvasView::performDragOperation(const kit::DraggingInfo& info)
{
    return !info.filenames.empty() && openPicture(info.filenames.front());
}

bool CanvasView::openPicture(const std::string& path)
{
    if (!m_document)
        return false;
    std::string problem;
    if (!HostPicture(*m_document).open(path, problem)) {
        std::cerr << "quillmark-host: " << problem << "\n";
        showMessage(problem);
        return false;
    }
    note("picture " + path);
    m_picturePath = path;
    fit();
    showMessage("opened " + path);
    return true;
}

void CanvasView::showMessage(const std::string& message)
{
    m_message = message;
    kit::RunLoop::main().cancelPerforms(this);
    kit::RunLoop::main().performAfterDelay(this, &CanvasView::clearMessage, kMessageSeconds);
}

void CanvasView::clearMessage() { m_message.clear(); }

} // namespace hostapp

namespace hostapp {

namespace {

// How the canvas shows: white paper, the selection tinted with this colour and strength, and
// its edge in dashes four pixels long that march a step each time the window moves them.
constexpr std::uint8_t kTint[3] = { 40, 110, 230 };
constexpr float kTintStrength = 0.3f;
constexpr int kAntLength = 4;
constexpr std::uint8_t kSelected = 128;
// The outline's area is redrawn in tiles of this many canvas pixels a side.
constexpr int kOutlineTile = 32;
// The status line starts this far right of the last control.
constexpr float kStatusGap = 12;

void blendOver(std::uint8_t* dst, const std::uint8_t* src)
{
    const unsigned a = src[3];
    for (int c = 0; c < 4; ++c)
        dst[c] = std::uint8_t(src[c] + (dst[c] * (255 - a) + 127) / 255);
}

bool selectedAt(const std::vector<std::uint8_t>& mask, int w, int h, int x, int y)
{
    return x >= 0 && y >= 0 && x < w && y < h && mask[std::size_t(y) * w + x] >= kSelected;
}

bool onSelectionEdge(const std::vector<std::uint8_t>& mask, int w, int h, int x, int y)
{
    return selectedAt(mask, w, h, x, y)
        && !(selectedAt(mask, w, h, x - 1, y) && selectedAt(mask, w, h, x + 1, y) && selectedAt(mask, w, h, x, y - 1)
            && selectedAt(mask, w, h, x, y + 1));
}

bool antIsWhite(int x, int y, int phase) { return ((x + y + phase) / kAntLength) % 2 != 0; }

const char* controlGlyph(CanvasView::Control kind)
{
    switch (kind) {
    case CanvasView::Control::ZoomIn: return "+";
    case CanvasView::Control::ZoomOut: return "\u2212";
    case CanvasView::Control::Fit: return "\u25a1";
    case CanvasView::Control::Pan: return "\u2725";
    case CanvasView::Control::Filter:
    case CanvasView::Control::Area: return "";
    }
    return "";
}

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", value);
    return text;
}

} // namespace

CanvasView::ViewMapping CanvasView::viewMapping() const
{
    const engine::ViewRect view = m_document->viewRect();
    return { float(m_document->viewSize().width) / float(view.width), float(view.x + view.width / 2),
        float(view.y + view.height / 2) };
}

kit::Point CanvasView::viewPointOfCanvasPoint(kit::Point canvas) const
{
    const ViewMapping m = viewMapping();
    const kit::Size size = bounds().size;
    return { size.width * 0.5f + (canvas.x - m.centreX) * m.zoom,
        size.height * 0.5f - (canvas.y - m.centreY) * m.zoom };
}

kit::Point CanvasView::canvasPointOfViewPoint(kit::Point point) const
{
    const ViewMapping m = viewMapping();
    const kit::Size size = bounds().size;
    return { m.centreX + (point.x - size.width * 0.5f) / m.zoom, m.centreY - (point.y - size.height * 0.5f) / m.zoom };
}

void CanvasView::refreshCanvas()
{
    if (m_picture && m_pictureRevision == m_document->revision() && m_picture->pixelsWide() == m_document->canvasWidth()
        && m_picture->pixelsHigh() == m_document->canvasHeight())
        return;
    const std::vector<std::uint8_t> mask = m_document->maskAlpha();
    m_picture = canvasPicture(mask);
    m_pictureRevision = m_document->revision();
    measureSelection(mask);
}

kit::RefPtr<kit::Image> CanvasView::canvasPicture(const std::vector<std::uint8_t>& mask) const
{
    const int w = m_document->canvasWidth();
    const int h = m_document->canvasHeight();
    std::vector<std::uint8_t> pixels(std::size_t(w) * h * 4, 255);
    const std::vector<std::uint8_t> paint = m_document->paintPixels();
    for (std::size_t i = 0; i < std::size_t(w) * h; ++i) {
        std::uint8_t* p = &pixels[i * 4];
        blendOver(p, &paint[i * 4]);
        const float a = kTintStrength * float(mask[i]) / 255.0f;
        for (int c = 0; c < 3; ++c)
            p[c] = std::uint8_t(std::lround(p[c] * (1 - a) + kTint[c] * a));
    }
    return kit::Image::imageWithRGBA(w, h, pixels.data());
}

void CanvasView::measureSelection(const std::vector<std::uint8_t>& mask)
{
    const int w = m_document->canvasWidth();
    const int h = m_document->canvasHeight();
    m_outline.clear();
    std::uint64_t sum = 0;
    int left = w, top = h, right = 0, bottom = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const std::uint8_t a = mask[std::size_t(y) * w + x];
            sum += a;
            if (a) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
            if (!onSelectionEdge(mask, w, h, x, y))
                continue;
            if (!m_outline.empty() && m_outline.back().y == y && m_outline.back().x + m_outline.back().length == x)
                ++m_outline.back().length;
            else
                m_outline.push_back({ x, y, 1 });
        }
    }
    m_selectedPixels = double(sum) / 255;
    const bool any = right > left;
    m_selectionBounds[0] = any ? left : 0;
    m_selectionBounds[1] = any ? top : 0;
    m_selectionBounds[2] = any ? right : 0;
    m_selectionBounds[3] = any ? bottom : 0;
}

bool CanvasView::hasOutline()
{
    if (!m_document)
        return false;
    refreshCanvas();
    return !m_outline.empty();
}

std::vector<kit::Rect> CanvasView::outlineArea()
{
    std::vector<kit::Rect> area;
    if (!hasOutline())
        return area;
    std::set<std::pair<int, int>> tiles;
    for (const OutlineRun& run : m_outline) {
        for (int x = run.x / kOutlineTile; x <= (run.x + run.length - 1) / kOutlineTile; ++x)
            tiles.insert({ run.y / kOutlineTile, x });
    }
    const kit::Rect visible = bounds();
    for (auto it = tiles.begin(); it != tiles.end();) {
        // Neighbours along a row make one rectangle: each costs a pass through the views.
        const auto [row, column] = *it;
        int last = column;
        while (++it != tiles.end() && it->first == row && it->second == last + 1)
            ++last;
        const kit::Point a = viewPointOfCanvasPoint({ float(column * kOutlineTile), float(row * kOutlineTile) });
        const kit::Point b
            = viewPointOfCanvasPoint({ float((last + 1) * kOutlineTile), float((row + 1) * kOutlineTile) });
        // Widened to whole points, as the scaled picture's edge pixels reach into the next.
        const float x0 = std::floor(a.x) - 1, y0 = std::floor(b.y) - 1;
        const kit::Rect tile = kit::intersection({ x0, y0, std::ceil(b.x) + 1 - x0, std::ceil(a.y) + 1 - y0 }, visible);
        if (!tile.isEmpty())
            area.push_back(tile);
    }
    return area;
}

void CanvasView::drawRect(const kit::Rect& dirty)
{
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    if (!context)
        return;
    context->setFillColor(kit::Color::colorWithCalibratedWhiteAlpha(0.45f, 1));
    context->fillRect(dirty);
    if (m_document) {
        refreshCanvas();
        const float w = float(m_document->canvasWidth()), h = float(m_document->canvasHeight());
        // Only the canvas pixels under the dirty rectangle (and one beyond, for the scaling
        // filter) are handed to the drawing: a step of the ants costs what the outline covers.
        const kit::Point from = canvasPointOfViewPoint({ dirty.minX(), dirty.maxY() });
        const kit::Point to = canvasPointOfViewPoint({ dirty.maxX(), dirty.minY() });
        const float left = std::clamp(std::floor(from.x) - 1, 0.0f, w),
                    right = std::clamp(std::ceil(to.x) + 1, 0.0f, w);
        const float top = std::clamp(std::floor(from.y) - 1, 0.0f, h),
                    bottom = std::clamp(std::ceil(to.y) + 1, 0.0f, h);
        if (m_picture && right > left && bottom > top) {
            const kit::Point a = viewPointOfCanvasPoint({ left, top });
            const kit::Point b = viewPointOfCanvasPoint({ right, bottom });
            // The image's points run up from its bottom row.
            context->drawImage(
                *m_picture, { a.x, b.y, b.x - a.x, a.y - b.y }, { left, h - bottom, right - left, bottom - top });
        }
        drawAnts(dirty);
    }
    drawControls(dirty);
    drawStatus(dirty);
}

void CanvasView::drawAnts(const kit::Rect& dirty) const
{
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    const float zoom = float(m_document->viewSize().width) / float(m_document->viewRect().width);
    const kit::Point from = canvasPointOfViewPoint({ dirty.minX(), dirty.maxY() });
    const kit::Point to = canvasPointOfViewPoint({ dirty.maxX(), dirty.minY() });
    for (const bool white : { false, true }) {
        auto path = kit::BezierPath::bezierPath();
        for (const OutlineRun& run : m_outline) {
            if (run.y + 1 < from.y || run.y > to.y + 1 || run.x + run.length < from.x || run.x > to.x + 1)
                continue;
            for (int x = run.x; x < run.x + run.length;) {
                // A dash's share of the run: the pixels of one colour in a row.
                int end = x + 1;
                while (
                    end < run.x + run.length && antIsWhite(end, run.y, m_antPhase) == antIsWhite(x, run.y, m_antPhase))
                    ++end;
                if (antIsWhite(x, run.y, m_antPhase) == white) {
                    const kit::Point p = viewPointOfCanvasPoint({ float(x), float(run.y + 1) });
                    path->appendBezierPathWithRect({ p.x, p.y, float(end - x) * zoom, zoom });
                }
                x = end;
            }
        }
        context->setFillColor(white ? kit::Color::whiteColor() : kit::Color::blackColor());
        context->fillPath(*path);
    }
}

void CanvasView::drawControls(const kit::Rect& dirty) const
{
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    auto font = kit::Font::systemFontOfSize(16);
    for (const HostControl& control : m_controls) {
        if (control.kind == Control::Filter || kit::intersection(control.rect, dirty).isEmpty())
            continue; // the pop-up and the slider draw themselves
        const kit::Rect r = control.rect;
        context->setFillColor(
            kit::Color::colorWithCalibratedWhiteAlpha(0.96f, control.kind == Control::Area ? 0.35f : 0.95f));
        context->fillRect(r);
        context->setStrokeColor(kit::Color::controlBorderColor());
        context->strokeRect(r);
        const char* glyph = controlGlyph(control.kind);
        const float width = font->widthOfString(glyph);
        const kit::Point baseline { r.x() + (r.width() - width) * 0.5f,
            r.y() + (r.height() - font->lineHeight()) * 0.5f - font->descender() };
        context->drawTextLine(glyph, baseline, *font, kit::Color::darkGrayColor());
    }
}

std::string CanvasView::statusText()
{
    if (!m_document)
        return {};
    refreshCanvas();
    const engine::ViewRect view = m_document->viewRect();
    std::string text = number(100.0 * m_document->viewSize().width / view.width) + " %";
    if (m_pointer) {
        const kit::Point p = canvasPointOfViewPoint(*m_pointer);
        text += "   x " + number(std::floor(p.x)) + "  y " + number(std::floor(p.y));
    }
    const int* b = m_selectionBounds;
    if (b[2] > b[0]) {
        text += "   selection " + std::to_string(b[0]) + "," + std::to_string(b[1]) + "  " + std::to_string(b[2] - b[0])
            + " x " + std::to_string(b[3] - b[1]) + "   " + number(m_selectedPixels) + " px";
    } else {
        text += "   no selection";
    }
    return text;
}

void CanvasView::drawStatus(const kit::Rect& dirty)
{
    float x = 0, y = kControlMargin, height = kControlSize;
    for (const HostControl& control : m_controls) {
        if (control.kind != Control::Area && control.rect.maxX() > x) {
            x = control.rect.maxX();
            y = control.rect.minY();
            height = control.rect.height();
        }
    }
    if (kit::intersection({ x, y, bounds().width() - x, height }, dirty).isEmpty())
        return;
    auto font = kit::Font::systemFontOfSize(12);
    const std::string text = m_message.empty() ? statusText() : m_message;
    const kit::Point baseline { x + kStatusGap, y + (height - font->lineHeight()) * 0.5f - font->descender() };
    // A backing of the window's grey keeps the line readable over a zoomed-in canvas.
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    context->setFillColor(kit::Color::colorWithCalibratedWhiteAlpha(0.3f, 0.85f));
    context->fillRect({ x + kStatusGap / 2, y, font->widthOfString(text) + kStatusGap, height });
    const kit::Color colour = m_message.empty() ? kit::Color::whiteColor()
                                                : kit::Color::colorWithCalibratedRedGreenBlueAlpha(1, 0.85f, 0.4f, 1);
    context->drawTextLine(text, baseline, *font, colour);
}

} // namespace hostapp
