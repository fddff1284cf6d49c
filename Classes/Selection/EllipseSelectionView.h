// EllipseSelectionView: the tool view of the ellipse marquee tool.
#pragma once

#include "Classes/Selection/RectangleSelectionView.h"

/// The rectangle marquee selecting the ellipse inscribed in its box: only the outline, the
/// rasteriser and the recorded tool number differ.
class EllipseSelectionView final : public RectangleSelectionView {
    KIT_MAKEABLE
protected:
    explicit EllipseSelectionView(const kit::Rect& frame) : RectangleSelectionView(frame) {}

    int createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const override;
    int toolNumber() const override { return kToolEllipse; }
    void assertRasterised(int nRet, const char* operation) const override;
    void drawOutline(const kit::Rect& rect) const override;
};
