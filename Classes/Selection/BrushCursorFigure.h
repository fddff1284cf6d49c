// BrushCursorFigure: the dashed circle a brush tool shows as its cursor, sized from the radius value.
#pragma once

#include "kit/Cursor.h"
#include "kit/Geometry.h"

/// The brush's footprint at the current zoom, drawn black and dashed: a circle inscribed one
/// point inside an s x s image, and a dashed bar across its middle (with a second, vertical one
/// for a brush that adds). The bar's dash starts at a phase that depends on the size, so that
/// the bar's dashes look centred whatever the brush.
class BrushCursorFigure {
public:
    /// The largest image side a cursor is made with; bigger figures (or ones that are not
    /// finite) fall back to the crosshair rather than allocate without bound.
    static constexpr float kMaxImageSide = 2048;

    /// The figure for radius value r at zoom k (points per canvas pixel) on a brush whose pixel
    /// radius is e^(r / curve); cross draws the vertical bar too.
    BrushCursorFigure(float r, float k, double curve, bool cross);

    /// The brush's diameter in points.
    float diameter() const { return m_d; }
    /// The side of the image, in points: the diameter and a point on each side.
    float side() const { return m_s; }
    /// The dash phase of the bars.
    float barPhase() const { return m_phase; }
    /// Where each bar starts and ends along its axis, in image points.
    float barStart() const { return m_barStart; }
    float barEnd() const { return m_barEnd; }
    bool hasCross() const { return m_cross; }
    /// The click point, top-left origin: a point short of the circle's centre each way.
    kit::Point hotSpot() const { return { m_d / 2, m_d / 2 }; }
    /// Whether the figure fits an image at all (finite, 1 to kMaxImageSide points).
    bool drawable() const;

    /// The figure as a cursor, its image ceil(side) pixels square with the figure in its
    /// top-left side x side points; null when the figure is not drawable.
    kit::RefPtr<kit::Cursor> makeCursor() const;

private:
    float m_d;
    float m_s;
    float m_phase;
    float m_barStart;
    float m_barEnd;
    bool m_cross;
};
