// StrokePath: places dab centres along a stroke's segments at a fixed spacing.
#include "engine/StrokePath.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace engine {

namespace {

bool contains(const PixelRect& bounds, double x, double y)
{
    return x >= static_cast<double>(bounds.left) && x <= static_cast<double>(bounds.right)
        && y >= static_cast<double>(bounds.top) && y <= static_cast<double>(bounds.bottom);
}

// Narrows [t0, t1] to where p + t*d stays on the inner side of one boundary, Liang-Barsky style.
bool clipAxis(double p, double d, double low, double high, double& t0, double& t1)
{
    if (d == 0)
        return p >= low && p <= high;
    double a = (low - p) / d;
    double b = (high - p) / d;
    if (a > b)
        std::swap(a, b);
    t0 = std::max(t0, a);
    t1 = std::min(t1, b);
    return t0 <= t1;
}

// The part of the segment, as distances from its start, that lies inside the bounds.
std::optional<std::pair<double, double>> clippedSpan(
    double x0, double y0, double x1, double y1, double length, const PixelRect& bounds)
{
    double t0 = 0;
    double t1 = 1;
    if (!clipAxis(x0, x1 - x0, static_cast<double>(bounds.left), static_cast<double>(bounds.right), t0, t1)
        || !clipAxis(y0, y1 - y0, static_cast<double>(bounds.top), static_cast<double>(bounds.bottom), t0, t1))
        return std::nullopt;
    return std::make_pair(t0 * length, t1 * length);
}

} // namespace

bool StrokePath::isActive() const { return m_active; }

void StrokePath::begin()
{
    m_active = true;
    m_hasPoint = false;
    m_sinceLastDab = 0;
}

void StrokePath::end()
{
    m_active = false;
    m_hasPoint = false;
}

void StrokePath::extendTo(double x, double y, double spacing, const PixelRect& bounds, const DabSink& lay)
{
    if (!m_hasPoint) {
        m_hasPoint = true;
        m_sinceLastDab = 0;
        if (contains(bounds, x, y))
            lay(x, y);
    } else {
        layAlongSegment(x, y, spacing, bounds, lay);
    }
    m_lastX = x;
    m_lastY = y;
}

void StrokePath::layAlongSegment(double x, double y, double spacing, const PixelRect& bounds, const DabSink& lay)
{
    double dx = x - m_lastX;
    double dy = y - m_lastY;
    double length = std::hypot(dx, dy);
    double first = std::max(0.0, spacing - m_sinceLastDab);
    if (length <= 0 || first > length) {
        m_sinceLastDab += length;
        return;
    }
    // Dab k sits at distance first + k * spacing; only those inside the bounds are visited, so a
    // segment running far off the canvas costs no more than its visible part.
    double total = std::floor((length - first) / spacing);
    if (auto span = clippedSpan(m_lastX, m_lastY, x, y, length, bounds)) {
        double fromK = std::max(0.0, std::ceil((span->first - first) / spacing));
        double toK = std::min(total, std::floor((span->second - first) / spacing));
        toK = std::min(toK, fromK + static_cast<double>(kMaxDabsPerSegment - 1));
        for (double k = fromK; k <= toK; k += 1) {
            double t = (first + k * spacing) / length;
            lay(m_lastX + dx * t, m_lastY + dy * t);
        }
    }
    m_sinceLastDab = length - (first + total * spacing);
}

} // namespace engine
