// EllipseSelectionView: the tool view of the ellipse marquee tool.
#pragma once

#include "Classes/Selection/RectangleSelectionView.h"

/// The rectangle marquee with the ellipse inscribed in its box.
class EllipseSelectionView final : public RectangleSelectionView {
    KIT_MAKEABLE
protected:
    explicit EllipseSelectionView(const kit::Rect& frame) : RectangleSelectionView(frame) {}

    int createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const override;
};
