// RectangleSelectionView: the tool view of the rectangle marquee tool.
#pragma once

#include "Classes/Selection/SelectionBaseView.h"

class RectangleSelectionView : public SelectionBaseView {
    KIT_MAKEABLE
public:
    /// A press over a host control goes to the host; the tool's own gesture builds on this.
    void mouseDown(const kit::Event& event) override { beginPress(event); }

protected:
    explicit RectangleSelectionView(const kit::Rect& frame) : SelectionBaseView(frame) {}
};
