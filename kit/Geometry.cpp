// Geometry: rectangle helpers.
#include "kit/Geometry.h"

#include <algorithm>
#include <limits>

namespace kit {

Rect infiniteRect()
{
    constexpr float big = std::numeric_limits<float>::max();
    return { -big / 2, -big / 2, big, big };
}

bool isInfinite(const Rect& r)
{
    return r.width() >= std::numeric_limits<float>::max() || r.height() >= std::numeric_limits<float>::max();
}

Rect intersection(const Rect& a, const Rect& b)
{
    const float x0 = std::max(a.minX(), b.minX());
    const float y0 = std::max(a.minY(), b.minY());
    const float x1 = std::min(a.maxX(), b.maxX());
    const float y1 = std::min(a.maxY(), b.maxY());
    if (!(x1 > x0) || !(y1 > y0))
        return {};
    return { x0, y0, x1 - x0, y1 - y0 };
}

bool PointInRect(Point p, const Rect& r)
{
    return p.x >= r.minX() && p.x < r.maxX() && p.y >= r.minY() && p.y < r.maxY();
}

bool MouseInRect(Point p, const Rect& r, bool flipped)
{
    if (!(p.x >= r.minX() && p.x < r.maxX()))
        return false;
    return flipped ? (p.y >= r.minY() && p.y < r.maxY()) : (p.y > r.minY() && p.y <= r.maxY());
}

} // namespace kit
