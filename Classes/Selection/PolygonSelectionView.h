// PolygonSelectionView: the tool view of the polygon lasso tool.
#pragma once

#include "Classes/Selection/SelectionBaseView.h"

class PolygonSelectionView final : public SelectionBaseView {
    KIT_MAKEABLE
public:
    /// A press over a host control goes to the host; the tool's own gesture builds on this.
    void mouseDown(const kit::Event& event) override { beginPress(event); }

    /// Rasterises the recorded vertices (selection-layer pixels, as recorded) with the recorded
    /// feather, imports the mask and records the record again. A record whose vertex text holds
    /// fewer vertices than its count is skipped whole.
    void dealPlay(SelectionEventRecord* record) override;

private:
    explicit PolygonSelectionView(const kit::Rect& frame) : SelectionBaseView(frame) {}
};
