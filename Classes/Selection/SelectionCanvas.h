// SelectionCanvas: what a tool view asks of the overlay that shows it.
#pragma once

#include "kit/Geometry.h"

/// Maps a tool view's points (in the overlay's coordinates) onto the host's canvas.
class SelectionCanvas {
public:
    /// Overlay point to canvas point.
    virtual kit::Point convertPointNSViewToCavansView(kit::Point point) const = 0;

protected:
    ~SelectionCanvas() = default;
};
