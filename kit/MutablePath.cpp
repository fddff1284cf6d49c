// MutablePath: subpath bookkeeping and the flattening of ellipses.
#include "kit/MutablePath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kit {

namespace {

Point mapped(const AffineTransform* m, Point p) { return m ? m->apply(p) : p; }

// Chords no farther than this from an ellipse: well below what 8-bit coverage can show.
constexpr double kFlatness = 0.001;

} // namespace

RefPtr<MutablePath> MutablePath::create() { return adoptRef(new MutablePath); }

MutablePath::Subpath& MutablePath::currentSubpath()
{
    if (m_subpaths.empty())
        m_subpaths.push_back({});
    return m_subpaths.back();
}

void MutablePath::moveToPoint(const AffineTransform* m, float x, float y)
{
    if (!m_subpaths.empty() && m_subpaths.back().points.size() == 1 && !m_subpaths.back().closed)
        m_subpaths.back().points[0] = mapped(m, { x, y });
    else
        m_subpaths.push_back({ { mapped(m, { x, y }) }, false });
}

void MutablePath::addLineToPoint(const AffineTransform* m, float x, float y)
{
    const Point p = mapped(m, { x, y });
    if (m_subpaths.empty()) {
        m_subpaths.push_back({ { p }, false });
        return;
    }
    Subpath& current = currentSubpath();
    if (current.closed) {
        const Point start = current.points.front();
        m_subpaths.push_back({ { start, p }, false });
        return;
    }
    current.points.push_back(p);
}

void MutablePath::addLines(const AffineTransform* m, const Point* points, int count)
{
    if (!points || count <= 0)
        return;
    Subpath subpath;
    subpath.points.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i)
        subpath.points.push_back(mapped(m, points[i]));
    m_subpaths.push_back(std::move(subpath));
}

void MutablePath::closeSubpath()
{
    if (!m_subpaths.empty())
        m_subpaths.back().closed = true;
}

void MutablePath::addRect(const AffineTransform* m, const Rect& r)
{
    const Point corners[4]
        = { { r.minX(), r.minY() }, { r.maxX(), r.minY() }, { r.maxX(), r.maxY() }, { r.minX(), r.maxY() } };
    addLines(m, corners, 4);
    closeSubpath();
}

void MutablePath::addEllipseInRect(const AffineTransform* m, const Rect& r)
{
    const double rx = std::fabs(double(r.width())) / 2;
    const double ry = std::fabs(double(r.height())) / 2;
    const double cx = double(r.x()) + double(r.width()) / 2;
    const double cy = double(r.y()) + double(r.height()) / 2;
    const double radius = std::max(rx, ry);
    // A chord of angle t lies radius (1 - cos(t / 2)) inside the circle at most.
    int count = 8;
    if (radius > kFlatness) {
        const double step = 2 * std::acos(1 - kFlatness / radius);
        count = std::max(8, int(std::ceil(2 * std::numbers::pi / step)));
    }
    Subpath subpath;
    subpath.points.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        const double t = 2 * std::numbers::pi * i / count;
        subpath.points.push_back(mapped(m, { float(cx + rx * std::cos(t)), float(cy + ry * std::sin(t)) }));
    }
    subpath.closed = true;
    m_subpaths.push_back(std::move(subpath));
}

void MutablePath::addPath(const AffineTransform* m, const MutablePath& other)
{
    for (const Subpath& source : other.m_subpaths) {
        Subpath copy = source;
        for (Point& p : copy.points)
            p = mapped(m, p);
        m_subpaths.push_back(std::move(copy));
    }
}

Rect MutablePath::boundingBox() const
{
    bool any = false;
    float minX = 0, minY = 0, maxX = 0, maxY = 0;
    for (const Subpath& subpath : m_subpaths) {
        for (Point p : subpath.points) {
            if (!any) {
                minX = maxX = p.x;
                minY = maxY = p.y;
                any = true;
            }
            minX = std::min(minX, p.x);
            maxX = std::max(maxX, p.x);
            minY = std::min(minY, p.y);
            maxY = std::max(maxY, p.y);
        }
    }
    return any ? Rect(minX, minY, maxX - minX, maxY - minY) : Rect();
}

bool MutablePath::isAxisAlignedRectangle(Point& low, Point& high) const
{
    if (m_subpaths.size() != 1)
        return false;
    // The corners in order, without the repeats a click twice on one spot or an explicit
    // return to the start leaves.
    const std::vector<Point>& points = m_subpaths.front().points;
    Point corners[5];
    std::size_t count = 0;
    for (Point p : points) {
        if (count > 0 && p == corners[count - 1])
            continue;
        if (count == 5)
            return false;
        corners[count++] = p;
    }
    if (count == 5 && corners[4] == corners[0])
        count = 4;
    if (count != 4)
        return false;
    low = high = corners[0];
    for (std::size_t i = 1; i < 4; ++i) {
        low = { std::min(low.x, corners[i].x), std::min(low.y, corners[i].y) };
        high = { std::max(high.x, corners[i].x), std::max(high.y, corners[i].y) };
    }
    if (!(low.x < high.x) || !(low.y < high.y))
        return false;
    // Four distinct corners, each sharing one coordinate with the next: they go round the
    // rectangle, not across it or back along a side.
    for (std::size_t i = 0; i < 4; ++i) {
        const Point p = corners[i], next = corners[(i + 1) % 4];
        if ((p.x != low.x && p.x != high.x) || (p.y != low.y && p.y != high.y))
            return false;
        if ((p.x == next.x) == (p.y == next.y) || p == corners[(i + 2) % 4])
            return false;
    }
    return true;
}

} // namespace kit
