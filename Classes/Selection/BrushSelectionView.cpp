// BrushSelectionView: one host stroke per press, drag and release, and the brush cursor.
#include "Classes/Selection/BrushSelectionView.h"

#include "Classes/Selection/BrushSelectionOptions.h"
#include "Classes/Selection/FloatConversion.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionNumbers.h"
#include "host/HostEngine.h"

#include <chrono>

namespace {

// The pen's pixel radius is e^(r / 1.01).
constexpr double kPenRadiusCurve = 1.01;
constexpr float kPressure = 1.0f;

} // namespace

void BrushSelectionView::initData()
{
    SelectionBaseView::initData();
    m_hBrush = nullptr;
    m_currentRect = {};
    m_dPreTime = -1.0;
    m_nColor = 0x00FFFFFF;
}

float BrushSelectionView::radius() const
{
    auto* panel = dynamic_cast<BrushSelectionOptions*>(m_options);
    return panel ? panel->getRadius() : 0.0f;
}

int BrushSelectionView::mode() const
{
    auto* panel = dynamic_cast<BrushSelectionOptions*>(m_options);
    return panel ? panel->selectionMode() : kModeNew;
}

double BrushSelectionView::now()
{
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

void BrushSelectionView::createBrushIfNone(const char* package)
{
    if (!m_hBrush)
        m_hBrush = IPD_CreateBrushFromPackage(m_QMContext, package);
}

void BrushSelectionView::strokeTo(const kit::Event& event, float time)
{
    kit::Point p = event.locationInWindow();
    if (const SelectionCanvas* overlay = canvas())
        p = overlay->convertPointNSViewToCavansView(p);
    IPD_StrokeTo(m_QMContext, m_hBrush, m_nColor, truncateToInt(p.x), truncateToInt(p.y), kPressure, time);
}

void BrushSelectionView::mouseDown(const kit::Event& event)
{
    if (!beginPress(event))
        return;
    if (mode() == kModeNew)
        IPD_Layer_Delete(m_QMContext, IPD_GetSelectionMaskID(m_QMContext), 0);
    createBrushIfNone("pen_1.bru");
    const float r = radius();
    // A NaN on either side counts as a difference, so the brush is set rather than trusted.
    if (!(IPD_GetBrushParam(m_QMContext, m_hBrush, kRadiusParameter) == r))
        IPD_SetBrushParam(m_QMContext, m_hBrush, kRadiusParameter, r);
    IPD_EnableSeletionLayerOperation(m_QMContext, 1);
    IPD_BeginOneStroke(m_QMContext);
    strokeTo(event, kFirstPointTime);
    m_dPreTime = now();
}

void BrushSelectionView::mouseDragged(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseDragged(event);
        return;
    }
    const double t = now();
    strokeTo(event, float(t - m_dPreTime));
    m_dPreTime = t;
}

void BrushSelectionView::mouseUp(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseUp(event);
        return;
    }
    strokeTo(event, kLastPointTime);
    IPD_EndOneStroke(m_QMContext);
    IPD_EnableSeletionLayerOperation(m_QMContext, 0);
    if (m_hBrush && m_QMContext)
        IPD_DestroyBursh(m_QMContext, m_hBrush);
    m_hBrush = nullptr;
}

BrushCursorFigure BrushSelectionView::cursorFigure(float r, float k) const
{
    return BrushCursorFigure(r, k, kPenRadiusCurve, true);
}

void BrushSelectionView::setCursor(const kit::Event&)
{
    const BrushCursorFigure figure = cursorFigure(radius(), SelectionMainView::canvasZoom(m_QMContext));
    if (!m_cursor || !(figure.diameter() == m_cursorDiameter)) {
        m_cursor = figure.makeCursor();
        m_cursorDiameter = figure.diameter();
    }
    if (m_cursor)
        m_cursor->set();
    else
        kit::Cursor::crosshairCursor()->set(); // a footprint too large or too small to draw
}

void BrushSelectionView::dealPlay(SelectionEventRecord*) {}
