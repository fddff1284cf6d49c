// BezierPath: a path of lines and cubic curves with its own line width, dash and winding rule.
#pragma once

#include "kit/Geometry.h"
#include "kit/GraphicsContext.h"
#include "kit/Object.h"

#include <vector>

namespace kit {

/// Path elements, with the original platform's values.
enum BezierPathElement : int {
    MoveToBezierPathElement = 0,
    LineToBezierPathElement = 1,
    CurveToBezierPathElement = 2,
    ClosePathBezierPathElement = 3,
};

enum LineCapStyle : int {
    ButtLineCapStyle = 0,
    RoundLineCapStyle = 1,
    SquareLineCapStyle = 2,
};

enum LineJoinStyle : int {
    MiterLineJoinStyle = 0,
    RoundLineJoinStyle = 1,
    BevelLineJoinStyle = 2,
};

/// A path in user-space points that fills and strokes itself into the current graphics
/// context. The line width starts at 1, the dash off, the winding rule non-zero.
class BezierPath final : public Object {
public:
    struct Element {
        BezierPathElement type;
        /// The end point first; for curves then the two control points.
        Point points[3];
    };

    static RefPtr<BezierPath> bezierPath();
    static RefPtr<BezierPath> bezierPathWithRect(const Rect& rect);
    /// An ellipse inscribed in `rect`, made of four cubic curves.
    static RefPtr<BezierPath> bezierPathWithOvalInRect(const Rect& rect);
    /// One-shot drawing in the current context with the current colours.
    static void fillRect(const Rect& rect);
    static void strokeRect(const Rect& rect);
    static void strokeLineFromPointToPoint(Point from, Point to);

    void moveToPoint(Point point);
    /// A line from the current point; with no current point it starts a subpath instead.
    void lineToPoint(Point point);
    void curveToPointControlPoint1ControlPoint2(Point end, Point control1, Point control2);
    /// Closes the current subpath; does nothing without one.
    void closePath();
    void appendBezierPathWithRect(const Rect& rect);
    void appendBezierPathWithOvalInRect(const Rect& rect);
    void appendBezierPath(const BezierPath& other);
    void removeAllPoints();

    bool isEmpty() const { return m_elements.empty(); }
    int elementCount() const { return int(m_elements.size()); }
    const std::vector<Element>& elements() const { return m_elements; }
    /// The smallest rectangle holding every point, control points included.
    Rect controlPointBounds() const;
    /// Whether every coordinate is finite, so the path can be drawn.
    bool isFinite() const;

    float lineWidth() const { return m_lineWidth; }
    /// Widths that are not positive numbers give the thinnest line, 1 point.
    void setLineWidth(float width);
    WindingRule windingRule() const { return m_windingRule; }
    void setWindingRule(WindingRule rule) { m_windingRule = rule; }
    LineCapStyle lineCapStyle() const { return m_lineCap; }
    void setLineCapStyle(LineCapStyle style) { m_lineCap = style; }
    LineJoinStyle lineJoinStyle() const { return m_lineJoin; }
    void setLineJoinStyle(LineJoinStyle style) { m_lineJoin = style; }

    /// Alternating on and off lengths starting `phase` into the pattern. A null or empty
    /// pattern, a negative or non-finite length or one that adds up to nothing turns the dash off.
    void setLineDashCountPhase(const float* pattern, int count, float phase);
    void setLineDash(const std::vector<float>& pattern, float phase)
    {
        setLineDashCountPhase(pattern.data(), int(pattern.size()), phase);
    }
    const std::vector<float>& lineDash() const { return m_dash; }
    float lineDashPhase() const { return m_dashPhase; }

    /// Fill or stroke into the current graphics context, if any.
    void fill() const;
    void stroke() const;

private:
    BezierPath() = default;
    bool hasCurrentPoint() const { return m_hasCurrentPoint; }

    std::vector<Element> m_elements;
    Point m_subpathStart;
    bool m_hasCurrentPoint = false;
    float m_lineWidth = 1;
    WindingRule m_windingRule = NonZeroWindingRule;
    LineCapStyle m_lineCap = ButtLineCapStyle;
    LineJoinStyle m_lineJoin = MiterLineJoinStyle;
    std::vector<float> m_dash;
    float m_dashPhase = 0;
};

} // namespace kit
