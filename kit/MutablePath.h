// MutablePath: figures of straight lines, built point by point and filled by a bitmap context.
#pragma once

#include "kit/AffineTransform.h"
#include "kit/Geometry.h"
#include "kit/Object.h"

#include <vector>

namespace kit {

/// Subpaths of straight segments in drawing space. Each operation may map its points through a
/// transform first (null for none). Curves are not kept: an ellipse arrives already flattened.
class MutablePath final : public Object {
public:
    static RefPtr<MutablePath> create();

    struct Subpath {
        std::vector<Point> points;
        bool closed = false;
    };

    /// Starts a new subpath at the point.
    void moveToPoint(const AffineTransform* m, float x, float y);
    /// A line from the current point; starts a subpath when there is none.
    void addLineToPoint(const AffineTransform* m, float x, float y);
    /// Moves to the first point and draws lines through the others, as one new subpath.
    void addLines(const AffineTransform* m, const Point* points, int count);
    /// Closes the current subpath; the next line starts a new one at the same point.
    void closeSubpath();
    /// A closed rectangle, counter-clockwise from its origin.
    void addRect(const AffineTransform* m, const Rect& rect);
    /// The ellipse inscribed in the rectangle as one closed subpath of chords, none farther than
    /// 1/1000 of a pixel from the true curve.
    void addEllipseInRect(const AffineTransform* m, const Rect& rect);
    /// Appends another path's subpaths, mapped through the transform.
    void addPath(const AffineTransform* m, const MutablePath& other);

    bool isEmpty() const { return m_subpaths.empty(); }
    const std::vector<Subpath>& subpaths() const { return m_subpaths; }
    /// The smallest rectangle holding every point; an empty rectangle for an empty path.
    Rect boundingBox() const;
    /// True when the path is one subpath through the four corners of a rectangle with sides
    /// along the axes and positive width and height, starting at any corner and going either
    /// way (a point repeating the one before it, or the first, is allowed). `low` and `high` get
    /// the smallest and the largest corner, exactly as the path holds them.
    bool isAxisAlignedRectangle(Point& low, Point& high) const;

private:
    MutablePath() = default;
    Subpath& currentSubpath();

    std::vector<Subpath> m_subpaths;
};

} // namespace kit
