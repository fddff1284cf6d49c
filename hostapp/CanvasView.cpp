// CanvasView: the host's zoom and pan controls, key releases and dropped pictures.
#include "hostapp/CanvasView.h"

#include "host/HostEngine.h"
#include "kit/Color.h"
#include "kit/Cursor.h"
#include "kit/Font.h"
#include "kit/GraphicsContext.h"
#include "kit/Event.h"
#include "kit/Image.h"
#include "kit/NotificationCenter.h"
#include "kit/TextView.h"
#include "kit/Window.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace hostapp {

namespace {

// The controls sit in a row along the bottom-left corner of the content area.
constexpr float kControlSize = 28;
constexpr float kControlGap = 4;
constexpr float kControlMargin = 10;
// Zoom stays between a sixteenth and sixteen points per canvas pixel.
constexpr double kMaxZoom = 16;

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
    return std::string(what) + " " + std::to_string(int(std::lround(p.x))) + "," + std::to_string(int(std::lround(p.y)));
}

bool isPng(const std::string& path)
{
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext == ".png";
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
    if (m_pressed && m_pressed->kind == Control::Pan && m_document) {
        // The canvas follows the pointer: dragging right shows what lies further left.
        const engine::ViewRect view = m_document->viewRect();
        const double zoom = double(m_document->viewSize().width) / view.width;
        const int dx = int(std::lround((p.x - m_lastDrag.x) / zoom));
        const int dy = int(std::lround((p.y - m_lastDrag.y) / zoom));
        m_document->setViewRect({ view.x - dx, view.y + dy, view.width, view.height });
    }
    m_lastDrag = p;
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
    case Control::Fit:
        if (m_document)
            m_document->setViewRect({ 0, 0, m_document->canvasWidth(), m_document->canvasHeight() });
        return;
    case Control::Pan:
    case Control::Filter:
    case Control::Area:
        return;
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
    const bool picture = std::any_of(info.filenames.begin(), info.filenames.end(), isPng);
    return picture ? kit::DragOperationCopy : kit::DragOperationNone;
}

kit::DragOperation CanvasView::draggingUpdated(const kit::DraggingInfo& info) { return draggingEntered(info); }

bool CanvasView::performDragOperation(const kit::DraggingInfo& info)
{
    auto file = std::find_if(info.filenames.begin(), info.filenames.end(), isPng);
    if (file == info.filenames.end() || !m_document)
        return false;
    auto image = kit::Image::imageWithContentsOfFile(*file);
    if (!image)
        return false;
    note("picture " + *file);
    IPD_LayerPaint_ImportImageData(m_document->context(), engine::Document::kPaintLayerId, image->rgba().data(),
                                   image->pixelsWide(), image->pixelsHigh(), 0, 0);
    IPD_StartRefreshingActiveLayer(m_document->context()); // one undo step
    return true;
}

} // namespace hostapp

namespace hostapp {

namespace {

// How the canvas shows: white paper, the selection tinted with this colour and strength, and
// its edge in dashes four pixels long.
constexpr std::uint8_t kTint[3] = { 40, 110, 230 };
constexpr float kTintStrength = 0.3f;
constexpr int kAntLength = 4;
constexpr std::uint8_t kSelected = 128;

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
    return selectedAt(mask, w, h, x, y) && !(selectedAt(mask, w, h, x - 1, y) && selectedAt(mask, w, h, x + 1, y) &&
                                             selectedAt(mask, w, h, x, y - 1) && selectedAt(mask, w, h, x, y + 1));
}

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

} // namespace

kit::Point CanvasView::viewPointOfCanvasPoint(kit::Point canvas) const
{
    const engine::ViewRect view = m_document->viewRect();
    const float zoom = float(m_document->viewSize().width) / float(view.width);
    const float centreX = float(view.x + view.width / 2);
    const float centreY = float(view.y + view.height / 2);
    const kit::Size size = bounds().size;
    return { size.width * 0.5f + (canvas.x - centreX) * zoom, size.height * 0.5f - (canvas.y - centreY) * zoom };
}

kit::RefPtr<kit::Image> CanvasView::canvasPicture() const
{
    const int w = m_document->canvasWidth();
    const int h = m_document->canvasHeight();
    std::vector<std::uint8_t> pixels(std::size_t(w) * h * 4, 255);
    const std::vector<std::uint8_t> paint = m_document->paintPixels();
    const std::vector<std::uint8_t> mask = m_document->maskAlpha();
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const std::size_t i = std::size_t(y) * w + x;
            std::uint8_t* p = &pixels[i * 4];
            blendOver(p, &paint[i * 4]);
            const float a = kTintStrength * float(mask[i]) / 255.0f;
            for (int c = 0; c < 3; ++c)
                p[c] = std::uint8_t(std::lround(p[c] * (1 - a) + kTint[c] * a));
            if (onSelectionEdge(mask, w, h, x, y)) {
                const std::uint8_t ant = ((x + y) / kAntLength) % 2 ? 255 : 0;
                p[0] = p[1] = p[2] = ant;
            }
        }
    }
    return kit::Image::imageWithRGBA(w, h, pixels.data());
}

void CanvasView::drawRect(const kit::Rect&)
{
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    if (!context)
        return;
    context->setFillColor(kit::Color::colorWithCalibratedWhiteAlpha(0.45f, 1));
    context->fillRect(bounds());
    if (m_document) {
        const kit::Point topLeft = viewPointOfCanvasPoint({ 0, 0 });
        const kit::Point bottomRight =
            viewPointOfCanvasPoint({ float(m_document->canvasWidth()), float(m_document->canvasHeight()) });
        const kit::Rect canvas { topLeft.x, bottomRight.y, bottomRight.x - topLeft.x, topLeft.y - bottomRight.y };
        if (auto picture = canvasPicture())
            context->drawImage(*picture, canvas);
    }
    drawControls();
}

void CanvasView::drawControls() const
{
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    auto font = kit::Font::systemFontOfSize(16);
    for (const HostControl& control : m_controls) {
        if (control.kind == Control::Filter)
            continue; // the pop-up and the slider draw themselves
        const kit::Rect r = control.rect;
        context->setFillColor(kit::Color::colorWithCalibratedWhiteAlpha(0.96f, control.kind == Control::Area ? 0.35f : 0.95f));
        context->fillRect(r);
        context->setStrokeColor(kit::Color::controlBorderColor());
        context->strokeRect(r);
        const char* glyph = controlGlyph(control.kind);
        const float width = font->widthOfString(glyph);
        const kit::Point baseline { r.x() + (r.width() - width) * 0.5f, r.y() + (r.height() - font->lineHeight()) * 0.5f - font->descender() };
        context->drawTextLine(glyph, baseline, *font, kit::Color::darkGrayColor());
    }
}

} // namespace hostapp
