// EraseSelectionView: the eraser's brush and cursor; the stroke is the brush tool's.
#include "Classes/Selection/EraseSelectionView.h"

namespace {

// The eraser's pixel radius is e^(r / 0.85).
constexpr double kEraserRadiusCurve = 0.85;

} // namespace

void EraseSelectionView::mouseDown(const kit::Event& event)
{
    createBrushIfNone("eraser_1.bru");
    BrushSelectionView::mouseDown(event);
}

BrushCursorFigure EraseSelectionView::cursorFigure(float r, float k) const
{
    return BrushCursorFigure(r, k, kEraserRadiusCurve, false);
}
