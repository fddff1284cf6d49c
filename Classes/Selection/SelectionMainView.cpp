// SelectionMainView: construction, tool switching, replay routing, geometry and cursor tracking.
#include "Classes/Selection/SelectionMainView.h"

#include "Classes/Selection/BrushSelectionView.h"
#include "Classes/Selection/EllipseSelectionView.h"
#include "Classes/Selection/EraseSelectionView.h"
#include "Classes/Selection/FloatConversion.h"
#include "Classes/Selection/PolygonSelectionView.h"
#include "Classes/Selection/RectangleSelectionView.h"
#include "Classes/Selection/SelectionNumbers.h"
#include "Classes/Selection/SelectionOptionsView.h"
#include "host/HostEngine.h"
#include "kit/Cursor.h"
#include "kit/NotificationCenter.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

#include <cstdint>
#include <limits>

namespace {

// The host's tracking areas are mirrored this long after the overlay is made.
constexpr double kFirstTrackingSyncSeconds = 1.0;
constexpr unsigned kMirroredAreaOptions
    = kit::TrackingMouseEnteredAndExited | kit::TrackingActiveInActiveApp | kit::TrackingEnabledDuringMouseDrag;

} // namespace

SelectionMainView::SelectionMainView(const kit::Rect& frame) : DragsToContentView<kit::View>(frame)
{
    registerForDraggedTypes({ kit::FilenamesPboardType });
    kit::NotificationCenter::defaultCenter().addObserver(
        this, kTrackingAreaCursorUpdated, nullptr, [this](const kit::Notification&) { setTrackingAreaCursor(); });
    kit::RunLoop::main().performAfterDelay(this, &SelectionMainView::setTrackingAreaCursor, kFirstTrackingSyncSeconds);
}

SelectionMainView::~SelectionMainView()
{
    // Field order, as each child was made.
    auto drop = [](auto& field) {
        if (field) {
            field->removeFromSuperview();
            field.clear();
        }
    };
    drop(m_selectionOptionView);
    drop(m_rectangleSelectionView);
    drop(m_polygonSelectionView);
    drop(m_ellipseSelectionView);
    drop(m_brushSelectionView);
    drop(m_eraseSelectionView);
    kit::NotificationCenter::defaultCenter().removeObserver(this, kTrackingAreaCursorUpdated);
}

void SelectionMainView::initData()
{
    m_QMContext = nullptr;
    m_selectionOptionView.clear();
    m_rectangleSelectionView.clear();
    m_polygonSelectionView.clear();
    m_ellipseSelectionView.clear();
    m_brushSelectionView.clear();
    m_eraseSelectionView.clear();
}

kit::Rect SelectionMainView::toolFrame(kit::Size overlay)
{
    return { 0, 0, overlay.width, overlay.height - kOptionBarInset };
}

void SelectionMainView::initView()
{
    const kit::Size size = frame().size;
    if (!m_selectionOptionView) {
        m_selectionOptionView = kit::make<SelectionOptionsView>(
            kit::Rect { 0, size.height - kOptionBarInset, size.width, kOptionBarHeight });
        m_selectionOptionView->setView(this);
        m_selectionOptionView->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewMinYMargin);
    }
    addSubview(m_selectionOptionView.get());

    auto makeTool = [&](auto& field) {
        using ToolView = typename std::remove_reference_t<decltype(field)>::element_type;
        if (!field) {
            field = kit::make<ToolView>(toolFrame(size));
            field->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
        }
        field->setCanvas(this);
    };
    makeTool(m_rectangleSelectionView);
    addSubview(m_rectangleSelectionView.get());
    makeTool(m_polygonSelectionView);
    makeTool(m_ellipseSelectionView);
    makeTool(m_brushSelectionView);
    makeTool(m_eraseSelectionView);
}

void SelectionMainView::setQMContext(void* context)
{
    m_QMContext = context;
    for (SelectionBaseView* tool : { static_cast<SelectionBaseView*>(m_rectangleSelectionView.get()),
             static_cast<SelectionBaseView*>(m_polygonSelectionView.get()),
             static_cast<SelectionBaseView*>(m_ellipseSelectionView.get()),
             static_cast<SelectionBaseView*>(m_brushSelectionView.get()),
             static_cast<SelectionBaseView*>(m_eraseSelectionView.get()) }) {
        if (tool)
            tool->setQMContext(context);
    }
}

SelectionBaseView* SelectionMainView::toolView(int toolNumber) const
{
    switch (toolNumber) {
    case kToolRectangle: return m_rectangleSelectionView.get();
    case kToolEllipse: return m_ellipseSelectionView.get();
    case kToolPolygon: return m_polygonSelectionView.get();
    case kToolBrush: return m_brushSelectionView.get();
    case kToolErase: return m_eraseSelectionView.get();
    }
    return nullptr;
}

void SelectionMainView::setSelectionViewWithSelectionOptionView(int toolNumber, kit::Object* options)
{
    for (int n = 0; n < kSelectionToolCount; ++n) {
        if (SelectionBaseView* tool = toolView(n))
            tool->removeFromSuperview();
    }
    const kit::Size size = frame().size;
    SelectionBaseView* tool = toolView(toolNumber);
    if (!tool)
        return;
    tool->setFrame(toolFrame(size));
    addSubview(tool);
    tool->setOptions(options);
}

void SelectionMainView::hideOptionView(bool hidden)
{
    if (m_selectionOptionView)
        m_selectionOptionView->setHidden(hidden);
}

void SelectionMainView::dealPlay(SelectionEventRecord* record)
{
    if (!record)
        return;
    // Truncation toward zero, so anything in (-1, tool count) names a tool; checked first
    // because converting a NaN or a huge float to an integer is undefined.
    const float number = record->param2;
    if (!(number > -1.0f && number < float(kSelectionToolCount)))
        return;
    if (SelectionBaseView* tool = toolView(static_cast<int>(number)))
        tool->dealPlay(record);
}

void SelectionMainView::undo(void*) { IPD_UndoStroke(m_QMContext); }

void SelectionMainView::redo(void*) { IPD_RedoStroke(m_QMContext); }

int SelectionMainView::setSelectionMaskRect(const unsigned char* mask, SelectionMaskRect rect)
{
    MergeSelectionMaskIntoCells(m_QMContext, mask, rect);
    return 0;
}

namespace {

/// The engine's view of the canvas: the visible rectangle and the view's width in points.
struct EngineGeometry {
    int posX = 0, posY = 0, posW = 0, posH = 0, canW = 0, canH = 0;

    explicit EngineGeometry(void* context)
    {
        IPD_GetPos(context, &posX, &posY, &posW, &posH);
        IPD_GetCanvasSize(context, &canW, &canH);
    }
    float zoom() const { return ieeeDivide(float(canW), float(posW)); }
};

} // namespace

SelectionMainView::CanvasGeometry SelectionMainView::canvasGeometry() const
{
    const EngineGeometry e(m_QMContext);
    return { e.zoom(), canvasCentre(e.posX, e.posW), canvasCentre(e.posY, e.posH), frame().width(), frame().height() };
}

float SelectionMainView::canvasZoom(void* context) { return EngineGeometry(context).zoom(); }

float SelectionMainView::canvasCentre(int position, int size)
{
    // Integer division truncates toward zero; 64 bits so that no host value can overflow.
    return float(std::int64_t(position) + size / 2);
}

kit::Point SelectionMainView::convertPointNSViewToCavansView(kit::Point p) const
{
    const CanvasGeometry g = canvasGeometry();
    const float cx = g.centreX + ieeeDivide(p.x - g.width * 0.5f, g.zoom);
    const float cy = g.centreY + ieeeDivide((g.height - p.y) - g.height * 0.5f, g.zoom);
    return { cx, cy };
}

kit::Point SelectionMainView::convertPointCanvasViewToNSView(kit::Point c) const
{
    const CanvasGeometry g = canvasGeometry();
    const float scaledX = (c.x - g.centreX) * g.zoom;
    const float scaledY = (c.y - g.centreY) * g.zoom;
    const float vx = float(double(scaledX) + double(g.width) * 0.5);
    const float vy = g.height - float(double(scaledY) + double(g.height) * 0.5);
    return { vx, vy };
}

bool SelectionMainView::trackingAreasMatchHost() const
{
    static const std::vector<kit::RefPtr<kit::TrackingArea>> none;
    kit::View* content = window() ? window()->contentView() : nullptr;
    const auto& host = content ? content->trackingAreas() : none;
    const auto& mine = trackingAreas();
    if (host.size() != mine.size())
        return false;
    for (std::size_t i = 0; i < host.size(); ++i) {
        if (!(host[i]->rect() == mine[i]->rect()))
            return false;
    }
    return true;
}

void SelectionMainView::setTrackingAreaCursor()
{
    if (trackingAreasMatchHost())
        return;
    while (!trackingAreas().empty())
        removeTrackingArea(trackingAreas().back().get());
    kit::View* content = window() ? window()->contentView() : nullptr;
    if (!content)
        return;
    for (const auto& area : content->trackingAreas())
        addTrackingArea(kit::TrackingArea::create(area->rect(), kMirroredAreaOptions, this).get());
}

void SelectionMainView::setCursor(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    for (const auto& area : trackingAreas()) {
        if (kit::PointInRect(p, area->rect()) && !(area->rect() == frame())) {
            kit::Cursor::arrowCursor()->set();
            return;
        }
    }
    if (kit::PointInRect(p, frame())) {
        const int tool = m_selectionOptionView ? m_selectionOptionView->selectionTool() : -1;
        if (SelectionBaseView* view = toolView(tool))
            view->setCursor(event);
        return;
    }
    kit::Cursor::arrowCursor()->set();
}

void SelectionMainView::cursorUpdate(const kit::Event&) {}

void SelectionMainView::mouseEntered(const kit::Event& event) { setCursor(event); }

void SelectionMainView::mouseExited(const kit::Event& event) { setCursor(event); }
