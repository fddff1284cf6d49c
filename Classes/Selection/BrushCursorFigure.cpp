// BrushCursorFigure: the brush cursor's sizes and its drawing.
#include "Classes/Selection/BrushCursorFigure.h"

#include "kit/BezierPath.h"
#include "kit/Color.h"
#include "kit/GraphicsContext.h"

#include <cmath>

namespace {

// The circle and the bars share one dash: 4 points on, 4 off.
constexpr float kDash[] = { 4.0f, 4.0f };

void strokeDashed(kit::BezierPath& path, float phase)
{
    path.setLineWidth(1);
    path.setLineDashCountPhase(kDash, 2, phase);
    path.stroke();
}

void strokeLine(kit::Point from, kit::Point to, float phase)
{
    auto path = kit::BezierPath::bezierPath();
    path->moveToPoint(from);
    path->lineToPoint(to);
    strokeDashed(*path, phase);
}

} // namespace

BrushCursorFigure::BrushCursorFigure(float r, float k, double curve, bool cross) : m_cross(cross)
{
    // The exponent is narrowed before the exponential, the rest stays in single precision.
    const float exponent = float(double(r) / curve);
    m_d = 2.0f * k * std::exp(exponent);
    m_s = m_d + 2.0f;
    m_phase = 1.0f - 0.5f * std::fmod(float(double(m_d) * 3 / 5), 8.0f);
    m_barStart = m_d / 5;
    // The adding brush's cross ends in single precision, the eraser's bar end in double.
    m_barEnd = cross ? 4 * m_d / 5 : float(4 * double(m_d) / 5);
}

bool BrushCursorFigure::drawable() const { return std::isfinite(m_s) && m_s >= 1 && m_s <= kMaxImageSide; }

kit::RefPtr<kit::Cursor> BrushCursorFigure::makeCursor() const
{
    if (!drawable())
        return nullptr;
    const int pixels = int(std::ceil(m_s));
    auto context = kit::GraphicsContext::create(pixels, pixels);
    if (!context)
        return nullptr;
    kit::GraphicsContext::saveGraphicsState();
    kit::GraphicsContext::setCurrentContext(context.get());
    // User space runs up from the bottom; the figure hangs from the image's top-left corner.
    context->translate(0, float(pixels) - m_s);
    kit::Color::blackColor().setStroke();
    strokeDashed(*kit::BezierPath::bezierPathWithOvalInRect({ 1, 1, m_s - 2, m_s - 2 }), 0);
    const float middle = m_s / 2;
    strokeLine({ m_barStart, middle }, { m_barEnd, middle }, m_phase);
    if (m_cross)
        strokeLine({ middle, m_barStart }, { middle, m_barEnd }, m_phase);
    kit::GraphicsContext::restoreGraphicsState();
    return kit::Cursor::create(context->makeImage(), hotSpot());
}
