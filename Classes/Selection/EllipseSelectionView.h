// EllipseSelectionView: the tool view of the ellipse marquee tool.
#pragma once

#include "Classes/Selection/RectangleSelectionView.h"

class EllipseSelectionView final : public RectangleSelectionView {
    KIT_MAKEABLE
protected:
    explicit EllipseSelectionView(const kit::Rect& frame) : RectangleSelectionView(frame) {}
};
