// BrushSelectionView: the tool view of the brush selection tool.
#pragma once

#include "Classes/Selection/BrushCursorFigure.h"
#include "Classes/Selection/SelectionBaseView.h"

/// Paint a selection freehand: each press, drag and release is one stroke of a host brush
/// made from "pen_1.bru", landing in the selection-mask layer. The brush is made at the press
/// and destroyed at the release, with the options panel's radius value as its parameter 3. New
/// mode empties the selection at every press, Add keeps it. Strokes are the host's own undo
/// steps and are not recorded as selection events. The cursor is the brush's footprint.
class BrushSelectionView : public SelectionBaseView {
    KIT_MAKEABLE
public:
    /// Brush parameter 3: the logarithmic radius.
    static constexpr int kRadiusParameter = 3;
    /// The time value of a stroke's first and last points.
    static constexpr float kFirstPointTime = 5.1f;
    static constexpr float kLastPointTime = -1.0f;

    void initData() override;

    void mouseDown(const kit::Event& event) override;
    void mouseDragged(const kit::Event& event) override;
    void mouseUp(const kit::Event& event) override;
    /// Shows the brush's footprint at the panel's radius and the host's current zoom.
    void setCursor(const kit::Event& event) override;
    /// Strokes are not recorded, so there is nothing to replay.
    void dealPlay(SelectionEventRecord* record) override;

    /// The cursor figure for radius value r at zoom k.
    virtual BrushCursorFigure cursorFigure(float r, float k) const;

    void* brush() const { return m_hBrush; }
    double previousPointTime() const { return m_dPreTime; }
    unsigned int strokeColor() const { return m_nColor; }

protected:
    explicit BrushSelectionView(const kit::Rect& frame) : SelectionBaseView(frame) {}

    /// Makes the brush from the package unless one is held already.
    void createBrushIfNone(const char* package);

private:
    /// The panel's radius and mode; 0 for both without a brush panel.
    float radius() const;
    int mode() const;
    void strokeTo(const kit::Event& event, float time);
    static double now();

    void* m_hBrush = nullptr;
    kit::Rect m_currentRect;
    double m_dPreTime = -1.0;
    unsigned int m_nColor = 0x00FFFFFF;
    // The cursor last made and the diameter it was made for: moving the mouse about does not
    // redraw the same figure.
    kit::RefPtr<kit::Cursor> m_cursor;
    float m_cursorDiameter = 0;
};
