// BezierPath: building paths and handing them to the current context.
#include "kit/BezierPath.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kit {

namespace {

// The control-point distance that makes a cubic curve the closest match to a quarter circle.
constexpr float kKappa = 0.5522847498f;

} // namespace

RefPtr<BezierPath> BezierPath::bezierPath() { return adoptRef(new BezierPath); }

RefPtr<BezierPath> BezierPath::bezierPathWithRect(const Rect& rect)
{
    RefPtr<BezierPath> path = bezierPath();
    path->appendBezierPathWithRect(rect);
    return path;
}

RefPtr<BezierPath> BezierPath::bezierPathWithOvalInRect(const Rect& rect)
{
    RefPtr<BezierPath> path = bezierPath();
    path->appendBezierPathWithOvalInRect(rect);
    return path;
}

void BezierPath::fillRect(const Rect& rect)
{
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->fillRect(rect);
}

void BezierPath::strokeRect(const Rect& rect) { bezierPathWithRect(rect)->stroke(); }

void BezierPath::strokeLineFromPointToPoint(Point from, Point to)
{
    RefPtr<BezierPath> path = bezierPath();
    path->moveToPoint(from);
    path->lineToPoint(to);
    path->stroke();
}

void BezierPath::moveToPoint(Point point)
{
    m_elements.push_back({ MoveToBezierPathElement, { point, {}, {} } });
    m_subpathStart = point;
    m_hasCurrentPoint = true;
}

void BezierPath::lineToPoint(Point point)
{
    if (!hasCurrentPoint()) {
        moveToPoint(point);
        return;
    }
    m_elements.push_back({ LineToBezierPathElement, { point, {}, {} } });
}

void BezierPath::curveToPointControlPoint1ControlPoint2(Point end, Point control1, Point control2)
{
    if (!hasCurrentPoint())
        moveToPoint(control1);
    m_elements.push_back({ CurveToBezierPathElement, { end, control1, control2 } });
}

void BezierPath::closePath()
{
    if (!hasCurrentPoint() || m_elements.back().type == ClosePathBezierPathElement)
        return;
    m_elements.push_back({ ClosePathBezierPathElement, { m_subpathStart, {}, {} } });
}

void BezierPath::appendBezierPathWithRect(const Rect& rect)
{
    moveToPoint({ rect.minX(), rect.minY() });
    lineToPoint({ rect.maxX(), rect.minY() });
    lineToPoint({ rect.maxX(), rect.maxY() });
    lineToPoint({ rect.minX(), rect.maxY() });
    closePath();
}

void BezierPath::appendBezierPathWithOvalInRect(const Rect& rect)
{
    const float cx = rect.minX() + rect.width() / 2;
    const float cy = rect.minY() + rect.height() / 2;
    const float rx = rect.width() / 2;
    const float ry = rect.height() / 2;
    const float kx = rx * kKappa;
    const float ky = ry * kKappa;
    moveToPoint({ cx + rx, cy });
    curveToPointControlPoint1ControlPoint2({ cx, cy + ry }, { cx + rx, cy + ky }, { cx + kx, cy + ry });
    curveToPointControlPoint1ControlPoint2({ cx - rx, cy }, { cx - kx, cy + ry }, { cx - rx, cy + ky });
    curveToPointControlPoint1ControlPoint2({ cx, cy - ry }, { cx - rx, cy - ky }, { cx - kx, cy - ry });
    curveToPointControlPoint1ControlPoint2({ cx + rx, cy }, { cx + kx, cy - ry }, { cx + rx, cy - ky });
    closePath();
}

void BezierPath::appendBezierPath(const BezierPath& other)
{
    if (&other == this) {
        const std::vector<Element> copy = m_elements;
        m_elements.insert(m_elements.end(), copy.begin(), copy.end());
    } else {
        m_elements.insert(m_elements.end(), other.m_elements.begin(), other.m_elements.end());
    }
    if (other.m_hasCurrentPoint) {
        m_hasCurrentPoint = true;
        m_subpathStart = other.m_subpathStart;
    }
}

void BezierPath::removeAllPoints()
{
    m_elements.clear();
    m_hasCurrentPoint = false;
}

Rect BezierPath::controlPointBounds() const
{
    if (m_elements.empty())
        return {};
    float x0 = std::numeric_limits<float>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
    for (const Element& e : m_elements) {
        const int count = e.type == CurveToBezierPathElement ? 3 : 1;
        for (int i = 0; i < count; ++i) {
            x0 = std::min(x0, e.points[i].x);
            y0 = std::min(y0, e.points[i].y);
            x1 = std::max(x1, e.points[i].x);
            y1 = std::max(y1, e.points[i].y);
        }
    }
    return { x0, y0, x1 - x0, y1 - y0 };
}

bool BezierPath::isFinite() const
{
    for (const Element& e : m_elements) {
        for (const Point& p : e.points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y))
                return false;
        }
    }
    return true;
}

void BezierPath::setLineWidth(float width) { m_lineWidth = width > 0 && std::isfinite(width) ? width : 1; }

void BezierPath::setLineDashCountPhase(const float* pattern, int count, float phase)
{
    m_dash.clear();
    m_dashPhase = 0;
    if (!pattern || count <= 0)
        return;
    double total = 0;
    for (int i = 0; i < count; ++i) {
        if (!(pattern[i] >= 0) || !std::isfinite(pattern[i]))
            return;
        total += pattern[i];
    }
    if (!(total > 0))
        return;
    m_dash.assign(pattern, pattern + count);
    m_dashPhase = std::isfinite(phase) ? phase : 0;
}

void BezierPath::fill() const
{
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->fillPath(*this);
}

void BezierPath::stroke() const
{
    if (GraphicsContext* context = GraphicsContext::currentContext())
        context->strokePath(*this);
}

} // namespace kit
