// RectangleSelectionView: the tool view of the rectangle marquee tool.
#pragma once

#include "Classes/Selection/GraphicsToBuffer.h"
#include "Classes/Selection/SelectionBaseView.h"
#include "Classes/Selection/SelectionNumbers.h"

namespace kit {
class BezierPath;
class ImageView;
class TextField;
} // namespace kit
class RectangleSelectionOptions;

/// Drag out a box: a dashed outline and a size read-out follow the mouse, and the release
/// turns the box into a selection, imported into the selection-mask layer and recorded. The
/// marquee options decide how the box follows the mouse (Normal, Fixed Ratio, Fixed Size)
/// and whether the selection starts afresh (New) or adds to what is there (Add).
class RectangleSelectionView : public SelectionBaseView {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    void mouseDown(const kit::Event& event) override;
    void mouseDragged(const kit::Event& event) override;
    void mouseUp(const kit::Event& event) override;
    void drawRect(const kit::Rect& dirty) override;

    /// The box's size in canvas pixels from the press, the latest point and the options.
    void setSelectionSize();
    /// The outline in view points and the box in selection-layer pixels.
    void calculateSelectionRect();
    /// Shows, places and fills the size read-out during a drag; hides it otherwise.
    void setShowSizeViewUI();

    /// Rasterises the recorded box with its feather, imports it and records the record again.
    void dealPlay(SelectionEventRecord* record) override;

    bool intermediate() const { return m_bIntermediate; }
    kit::Rect selectionLogicRect() const { return m_selectionLogicRect; }
    kit::Rect selectionCanvasViewRect() const { return m_selectionCanvasViewRect; }
    int selectionWidth() const { return m_nSelectionWidth; }
    int selectionHeight() const { return m_nSelectionHeight; }
    kit::View* showSizeView() const { return m_viewShowSize; }
    kit::TextField* widthValueLabel() const { return m_labelWidthValue; }
    kit::TextField* heightValueLabel() const { return m_labelHeightValue; }

protected:
    explicit RectangleSelectionView(const kit::Rect& frame) : SelectionBaseView(frame) {}

    /// The mask of the shape this tool selects inside `box` (selection-layer pixels).
    virtual int createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const;
    /// Stops the program, naming this tool's source and `operation`, when the rasteriser gave a
    /// positive result: it has no such result, so one would be a broken invariant.
    virtual void assertRasterised(int nRet, const char* operation) const;
    /// The tool number recorded with each selection.
    virtual int toolNumber() const { return kToolRectangle; }
    /// The dashed outline of the shape in `rect`.
    virtual void drawOutline(const kit::Rect& rect) const;
    /// Strokes the path black, dashed 4 on and 3 off.
    static void strokeDashed(kit::BezierPath& path);

private:
    /// The options as the panel holds them now; zeros without a panel.
    struct Options {
        int mode = 0;
        int type = 0;
        float feather = 0;
        float widthRatio = 0;
        float heightRatio = 0;
        kit::Size fixedSize;
    };
    Options readOptions() const;
    void makeLabel(kit::TextField*& field, const kit::Rect& frame, const char* title);
    void updateSelection();
    void commitSelection();

    bool m_bIntermediate = false;
    kit::Point m_prevPoint;
    kit::Point m_currentPoint;
    kit::Rect m_selectionLogicRect;
    kit::Rect m_selectionCanvasViewRect;
    kit::View* m_viewShowSize = nullptr;
    kit::ImageView* m_bgImageView = nullptr;
    kit::TextField* m_labelWidthValue = nullptr;
    kit::TextField* m_labelHeightValue = nullptr;
    int m_nShowValueLabelWidth = 100;
    int m_nSelectionWidth = 0;
    int m_nSelectionHeight = 0;
    bool m_bMoveSelection = false;
};
