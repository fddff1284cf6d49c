// Geometry: points, sizes and rectangles in 32-bit floats, as events and views carry them.
#pragma once

namespace kit {

struct Point {
    float x = 0;
    float y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    float width = 0;
    float height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    Point origin;
    Size size;

    Rect() = default;
    Rect(float x, float y, float width, float height) : origin { x, y }, size { width, height } {}
    Rect(Point o, Size s) : origin(o), size(s) {}
    bool operator==(const Rect&) const = default;

    float x() const { return origin.x; }
    float y() const { return origin.y; }
    float width() const { return size.width; }
    float height() const { return size.height; }
    float minX() const { return origin.x; }
    float minY() const { return origin.y; }
    float maxX() const { return origin.x + size.width; }
    float maxY() const { return origin.y + size.height; }
    bool isEmpty() const { return !(size.width > 0) || !(size.height > 0); }
};

/// The extent of an image without bounds: finite float edges far beyond any pixel, so that
/// maxX and maxY stay finite too.
Rect infiniteRect();
bool isInfinite(const Rect& r);
/// The rectangle's intersection with another; an empty rectangle at the origin when they are apart.
Rect intersection(const Rect& a, const Rect& b);
/// The point-in-rectangle test of the original platform: minX <= x < maxX and minY <= y < maxY.
bool PointInRect(Point p, const Rect& r);
/// The mouse-in-rectangle test of the original platform. For an unflipped view the top edge
/// counts and the bottom one does not (minY < y <= maxY); for a flipped view it is the other way.
bool MouseInRect(Point p, const Rect& r, bool flipped);

} // namespace kit
