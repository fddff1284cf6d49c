// PolygonSelectionView: the tool view of the polygon lasso tool.
#pragma once

#include "Classes/Selection/SelectionBaseView.h"

#include <vector>

namespace kit {
struct Notification;
} // namespace kit

/// Click the corners of a polygon, double-click to close it: a dashed line follows the pointer
/// from the last corner, the closed polygon becomes a selection imported into the
/// selection-mask layer and recorded, Delete takes back the last corner and a right click
/// abandons the polygon. The lasso options give the feather and whether the first click of a
/// polygon empties the selection (New) or keeps it (Add).
class PolygonSelectionView final : public SelectionBaseView {
    KIT_MAKEABLE
public:
    /// The notification the host posts for key releases that reach no tool view.
    static constexpr const char* kKeyUpNotification = "keyUp";
    /// The character of the Delete key.
    static constexpr char kDeleteCharacter = 127;
    /// The closed outline shows this long before the commit starts.
    static constexpr double kCommitDelaySeconds = 0.05;

    void initData() override;

    /// Only the first press of a polygon: the host's, when it lies over a host control;
    /// otherwise the New mode's clearing of the selection. Later presses do nothing.
    void mouseDown(const kit::Event& event) override;
    /// Places a vertex where the button goes up; the second click of a double click closes
    /// the polygon and schedules the commit.
    void mouseUp(const kit::Event& event) override;
    /// Moves the rubber band, the list's last point, to the pointer.
    void mouseMoved(const kit::Event& event) override;
    /// Abandons the polygon; the selection stays as it is.
    void rightMouseUp(const kit::Event& event) override;
    /// Delete takes back the newest vertex; every other key is ignored.
    void keyUp(const kit::Event& event) override;
    /// A key release the host passed on: handled as keyUp with the notification's event.
    void dealKeyUp(const kit::Notification& notification);
    /// Rasterises, imports and records the closed polygon, then empties the list.
    void dealDoubleClick();
    /// The dashed polygon: open to the rubber band while drawing, closed once after the
    /// closing double click.
    void drawRect(const kit::Rect& dirty) override;

    /// Rasterises the recorded vertices (selection-layer pixels, as recorded) with the recorded
    /// feather, imports the mask and records the record again. A record whose vertex text holds
    /// fewer vertices than its count is skipped whole.
    void dealPlay(SelectionEventRecord* record) override;

    /// The vertices placed so far and, while drawing, the rubber band after them (window points).
    const std::vector<kit::Point>& points() const { return m_arrPoints; }
    kit::TrackingArea* trackingArea() const { return m_trackingArea.get(); }

private:
    explicit PolygonSelectionView(const kit::Rect& frame);
    ~PolygonSelectionView() override;

    float feather() const;
    int selectionMode() const;
    void dropTrackingArea();
    /// Back to idle: no vertices, no tracking area, nothing to draw.
    void forgetPolygon();
    /// The points in selection-layer pixels, through the overlay's conversion and the layer's offset.
    std::vector<kit::Point> layerVertices(const SelectionCanvas& overlay) const;

    bool m_bDoubleClick = false;
    std::vector<kit::Point> m_arrPoints;
    kit::RefPtr<kit::TrackingArea> m_trackingArea;
    bool m_bMoveSelection = false; // kept for the other tools' layout; the lasso never moves a selection
};
