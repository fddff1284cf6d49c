// AffineTransform: the 2 x 3 matrix that maps path points as they are added.
#pragma once

#include "kit/Geometry.h"

namespace kit {

/// x' = a x + c y + tx, y' = b x + d y + ty, in double precision as points are mapped.
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    Point apply(Point p) const { return { float(a * p.x + c * p.y + tx), float(b * p.x + d * p.y + ty) }; }
    bool operator==(const AffineTransform&) const = default;
};

inline constexpr AffineTransform AffineTransformIdentity {};

inline AffineTransform AffineTransformMakeTranslation(double tx, double ty) { return { 1, 0, 0, 1, tx, ty }; }
inline AffineTransform AffineTransformMakeScale(double sx, double sy) { return { sx, 0, 0, sy, 0, 0 }; }

} // namespace kit
