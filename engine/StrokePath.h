// StrokePath: places dab centres along a stroke's segments at a fixed spacing.
#pragma once

#include "engine/PixelRect.h"

#include <functional>

namespace engine {

/// Dab centres are in canvas pixels; pixel (x, y) has its centre at (x + 0.5, y + 0.5). Only dabs
/// whose centres fall inside the given bounds are laid, and the spacing carries over from one
/// segment to the next, so a stroke sent in many short segments looks like one sent in a few.
class StrokePath {
public:
    /// No segment lays more dabs than this, whatever its length.
    static constexpr long long kMaxDabsPerSegment = 65536;

    using DabSink = std::function<void(double x, double y)>;

    bool isActive() const;
    void begin();
    void end();
    /// Extends the path to (x, y). The first point lays a dab; later points lay dabs along the
    /// segment from the previous point.
    void extendTo(double x, double y, double spacing, const PixelRect& bounds, const DabSink& lay);

private:
    void layAlongSegment(double x, double y, double spacing, const PixelRect& bounds, const DabSink& lay);

    bool m_active = false;
    bool m_hasPoint = false;
    double m_lastX = 0;
    double m_lastY = 0;
    double m_sinceLastDab = 0;
};

} // namespace engine
