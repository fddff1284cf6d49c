// EraseSelectionView: the tool view of the erase selection tool.
#pragma once

#include "Classes/Selection/BrushSelectionView.h"

/// The brush tool with the host's eraser, "eraser_1.bru": strokes take coverage out of the
/// selection-mask layer. The eraser is made before the press is looked at, so a press over a
/// host control still makes it, and the next stroke uses it. Its cursor follows the eraser's
/// size curve and has a bar instead of a cross.
class EraseSelectionView final : public BrushSelectionView {
    KIT_MAKEABLE
public:
    void mouseDown(const kit::Event& event) override;
    BrushCursorFigure cursorFigure(float r, float k) const override;

protected:
    explicit EraseSelectionView(const kit::Rect& frame) : BrushSelectionView(frame) {}
};
