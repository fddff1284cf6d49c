// CanvasView: the host's zoom and pan controls, key releases and dropped pictures.
#include "hostapp/CanvasView.h"

#include "host/HostEngine.h"
#include "kit/Cursor.h"
#include "kit/Event.h"
#include "kit/Image.h"
#include "kit/NotificationCenter.h"

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
}

void CanvasView::mouseDragged(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    note(at("drag", p));
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

void CanvasView::keyUp(const kit::Event& event)
{
    note("keyup " + event.characters());
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
