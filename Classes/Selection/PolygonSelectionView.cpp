// PolygonSelectionView: the lasso's clicks, rubber band, Delete key and right click, its
// outline, the commit after the closing double click, and replay.
#include "Classes/Selection/PolygonSelectionView.h"

#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/PolygonSelectionOptions.h"
#include "Classes/Selection/PolygonVertexText.h"
#include "Classes/Selection/SelectionAssert.h"
#include "Classes/Selection/SelectionNumbers.h"
#include "host/HostEngine.h"
#include "host/SelectionEventRecord.h"
#include "kit/BezierPath.h"
#include "kit/Color.h"
#include "kit/GraphicsContext.h"
#include "kit/NotificationCenter.h"
#include "kit/RunLoop.h"
#include "kit/Utf8.h"

#include <cmath>
#include <string_view>

namespace {

// Entered and exited, moved, active in the key window: the rubber band's moves while drawing.
constexpr unsigned kDrawingAreaOptions
    = kit::TrackingMouseEnteredAndExited | kit::TrackingMouseMoved | kit::TrackingActiveInKeyWindow;

} // namespace

PolygonSelectionView::PolygonSelectionView(const kit::Rect& frame) : SelectionBaseView(frame)
{
    kit::NotificationCenter::defaultCenter().addObserver(
        this, kKeyUpNotification, nullptr, [this](const kit::Notification& n) { dealKeyUp(n); });
}

PolygonSelectionView::~PolygonSelectionView()
{
    kit::NotificationCenter::defaultCenter().removeObserver(this, kKeyUpNotification);
}

void PolygonSelectionView::initData()
{
    SelectionBaseView::initData();
    m_bDoubleClick = false;
    m_arrPoints.clear();
    m_trackingArea.clear();
    m_bMoveSelection = false;
}

float PolygonSelectionView::feather() const
{
    auto* panel = dynamic_cast<PolygonSelectionOptions*>(m_options);
    return panel ? panel->feather() : 0;
}

int PolygonSelectionView::selectionMode() const
{
    auto* panel = dynamic_cast<PolygonSelectionOptions*>(m_options);
    return panel ? panel->selectionMode() : kModeNew;
}

void PolygonSelectionView::dropTrackingArea()
{
    if (!m_trackingArea)
        return;
    removeTrackingArea(m_trackingArea.get());
    m_trackingArea.clear();
}

void PolygonSelectionView::forgetPolygon()
{
    dropTrackingArea();
    m_arrPoints.clear();
    m_bDoubleClick = false; // a closed outline that was never shown has nothing left to show
    setNeedsDisplay(true);
}

void PolygonSelectionView::mouseDown(const kit::Event& event)
{
    // A polygon belongs to the host or to the tool as a whole, decided at its first press.
    if (!m_arrPoints.empty() || !beginPress(event))
        return;
    if (selectionMode() == kModeNew)
        IPD_Layer_Delete(m_QMContext, IPD_GetSelectionMaskID(m_QMContext), 0);
}

void PolygonSelectionView::mouseUp(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseUp(event);
        return;
    }
    const kit::Point location = event.locationInWindow();
    if (m_arrPoints.empty()) {
        m_trackingArea = kit::TrackingArea::create(bounds(), kDrawingAreaOptions, this);
        addTrackingArea(m_trackingArea.get());
        m_arrPoints.push_back(location);
    }
    // The new vertex, or on the first click the rubber band, which then follows the pointer.
    m_arrPoints.push_back(location);
    if (event.clickCount() != 2) {
        setNeedsDisplay(true);
        return;
    }
    // Both clicks of the double click placed the point: [..., C, C, C] closes as [..., C].
    m_bDoubleClick = true;
    m_arrPoints.resize(m_arrPoints.size() - 2);
    dropTrackingArea();
    setNeedsDisplay(true);
    kit::RunLoop::main().performAfterDelay(this, &PolygonSelectionView::dealDoubleClick, kCommitDelaySeconds);
}

void PolygonSelectionView::mouseMoved(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseMoved(event);
        return;
    }
    if (m_arrPoints.empty())
        return;
    m_arrPoints.back() = event.locationInWindow();
    setNeedsDisplay(true);
}

void PolygonSelectionView::rightMouseUp(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::rightMouseUp(event);
        return;
    }
    if (!m_arrPoints.empty())
        forgetPolygon();
}

void PolygonSelectionView::keyUp(const kit::Event& event)
{
    const std::string& characters = event.characters();
    if (characters.empty() || characters.front() != kDeleteCharacter || m_arrPoints.size() < 2)
        return;
    // The newest vertex goes; the rubber band stays where the pointer is.
    const kit::Point rubberBand = m_arrPoints.back();
    m_arrPoints.resize(m_arrPoints.size() - 2);
    if (m_arrPoints.empty())
        dropTrackingArea(); // the next first click installs its own
    else
        m_arrPoints.push_back(rubberBand);
    setNeedsDisplay(true);
}

void PolygonSelectionView::dealKeyUp(const kit::Notification& notification)
{
    if (const auto* event = static_cast<const kit::Event*>(notification.sender))
        keyUp(*event);
}

std::vector<kit::Point> PolygonSelectionView::layerVertices(const SelectionCanvas& overlay) const
{
    std::vector<kit::Point> vertices;
    vertices.reserve(m_arrPoints.size());
    for (const kit::Point& p : m_arrPoints) {
        const kit::Point onCanvas = overlay.convertPointNSViewToCavansView(p);
        int offsetX = 0, offsetY = 0;
        IPD_Layer_GetOffset(m_QMContext, IPD_GetSelectionMaskID(m_QMContext), &offsetX, &offsetY);
        vertices.push_back({ onCanvas.x - float(offsetX), onCanvas.y - float(offsetY) });
    }
    return vertices;
}

void PolygonSelectionView::dealDoubleClick()
{
    // Without the overlay the points have no place on the canvas: they wait for the next try.
    const SelectionCanvas* overlay = canvas();
    if (!overlay)
        return;
    IPD_EnableSeletionLayerOperation(m_QMContext, 0);
    const std::vector<kit::Point> vertices = layerVertices(*overlay);
    const float f = feather();
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const int nRet = CreateImageBufferFromPolygon(
        buffer, origin, vertices.data(), int(vertices.size()), kOpaqueWhite, true, kOpaqueWhite, f);
    if (nRet < 0)
        return;
    SELECTION_ASSERT(nRet == 0);
    ImportSelectionMask(m_QMContext, buffer, origin);
    // Recorded right after the import, before the refresh closes the host's undo step.
    SelectionEventRecord record;
    record.param2 = float(kToolPolygon);
    record.param3 = float(vertices.size());
    record.param5 = f;
    record.text = FormatPolygonVertexText(vertices);
    RecordSelectionEvent(m_QMContext, record);
    FinishSelectionImport(m_QMContext);
    DestroyImageBuffer(buffer);
    forgetPolygon();
}

void PolygonSelectionView::drawRect(const kit::Rect& dirty)
{
    SelectionBaseView::drawRect(dirty);
    kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
    if (!context)
        return;
    // The outline lives in a layer of its own, as in a layer-backed view: clearing it wipes the
    // last outline and never the canvas beneath.
    context->beginTransparencyLayer();
    context->clearRect(frame());
    auto path = kit::BezierPath::bezierPath();
    if (!m_arrPoints.empty()) {
        path->moveToPoint(m_arrPoints.front());
        for (std::size_t i = 1; i < m_arrPoints.size(); ++i)
            path->lineToPoint(m_arrPoints[i]);
    }
    if (m_bDoubleClick && !m_arrPoints.empty()) {
        path->closePath(); // the closed form shows once, until the commit empties the list
        m_bDoubleClick = false;
    }
    static const float fLengths[] = { 4.0f, 3.0f };
    path->setLineDashCountPhase(fLengths, 2, 0);
    kit::Color::blackColor().setStroke();
    path->stroke();
    context->endTransparencyLayer();
}

void PolygonSelectionView::dealPlay(SelectionEventRecord* record)
{
    if (!record)
        return;
    // The count is checked before it is converted or used to size anything: a NaN or huge
    // float has no integer value, and the rasteriser takes at most a million vertices.
    const float count = record->param3;
    if (!(count >= 0.0f && count < float(kGraphicsToBufferMaxVertices + 1)))
        return;
    const int n = static_cast<int>(count);
    // The text is a C string of UTF-8: it ends at its first NUL, and one that is not valid
    // UTF-8 was not written by a tool, so the record is skipped.
    const std::string_view text(record->text.c_str());
    if (kit::sanitizedUtf8(text) != text)
        return;
    std::vector<kit::Point> vertices;
    if (n >= 3 && !ParsePolygonVertexText(text, n, vertices))
        return;
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const int nRet = CreateImageBufferFromPolygon(
        buffer, origin, vertices.data(), n, kOpaqueWhite, true, kOpaqueWhite, record->param5);
    if (nRet < 0)
        return;
    SELECTION_ASSERT(nRet == 0);
    CommitSelectionMask(m_QMContext, buffer, origin);
    IPD_RecordEvent(m_QMContext, record);
}
