// RectangleSelectionView: the tool view of the rectangle marquee tool.
#pragma once

#include "Classes/Selection/GraphicsToBuffer.h"
#include "Classes/Selection/SelectionBaseView.h"

class RectangleSelectionView : public SelectionBaseView {
    KIT_MAKEABLE
public:
    /// A press over a host control goes to the host; the tool's own gesture builds on this.
    void mouseDown(const kit::Event& event) override { beginPress(event); }

    /// Rasterises the recorded box with its feather, imports it and records the record again.
    void dealPlay(SelectionEventRecord* record) override;

protected:
    explicit RectangleSelectionView(const kit::Rect& frame) : SelectionBaseView(frame) {}

    /// The mask of the shape this tool selects inside `box` (selection-layer pixels).
    virtual int createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const;
};
