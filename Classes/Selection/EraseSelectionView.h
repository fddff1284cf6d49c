// EraseSelectionView: the tool view of the erase selection tool.
#pragma once

#include "Classes/Selection/BrushSelectionView.h"

class EraseSelectionView final : public BrushSelectionView {
    KIT_MAKEABLE
protected:
    explicit EraseSelectionView(const kit::Rect& frame) : BrushSelectionView(frame) {}
};
