// SelectionMainView: the transparent overlay holding the option bar and the shown tool view.
#pragma once

#include "Classes/Selection/DragsToContentView.h"
#include "Classes/Selection/MaskCellWriter.h"
#include "Classes/Selection/SelectionCanvas.h"
#include "kit/Event.h"
#include "kit/View.h"

struct SelectionEventRecord;

class SelectionBaseView;
class SelectionOptionsView;
class RectangleSelectionView;
class PolygonSelectionView;
class EllipseSelectionView;
class BrushSelectionView;
class EraseSelectionView;

/// Mouse events that reach the overlay itself go on to the host through the responder chain;
/// file drags go to the window's content view. It is the canvas its tool views map their points
/// onto, and hands itself to them as such when it makes them.
class SelectionMainView final : public DragsToContentView<kit::View>, public SelectionCanvas {
    KIT_MAKEABLE
public:
    /// The option bar reaches this far below the overlay's top edge (it is 53 points tall).
    static constexpr float kOptionBarInset = 50;
    static constexpr float kOptionBarHeight = 53;
    /// The notification the host posts when it changes its tracking areas.
    static constexpr const char* kTrackingAreaCursorUpdated = "TrackingAreaCursorUpdated";

    void initData() override;
    void initView() override;

    /// Keeps the context and hands it to the five tool views; the option bar does not get it.
    void setQMContext(void* context);
    void* qmContext() const { return m_QMContext; }

    /// Shows the tool view for `toolNumber` below the bar and hands it `options`; any other
    /// number leaves the tool area empty.
    void setSelectionViewWithSelectionOptionView(int toolNumber, kit::Object* options);
    void hideOptionView(bool hidden);

    /// Replays the record through the tool view that its tool number names.
    void dealPlay(SelectionEventRecord* record);
    void undo(void* argument);
    void redo(void* argument);

    /// Merges an RGBA mask into the selection-mask layer's cells (MergeSelectionMaskIntoCells
    /// with this overlay's context). Always 0.
    int setSelectionMaskRect(const unsigned char* mask, SelectionMaskRect rect);

    /// Overlay point to canvas point, from the engine's geometry read afresh.
    kit::Point convertPointNSViewToCavansView(kit::Point point) const override;
    /// Canvas point to overlay point: the inverse of the above, up to rounding.
    kit::Point convertPointCanvasViewToNSView(kit::Point point) const;

    /// Brings the overlay's own tracking areas in step with those of the host's content view.
    void setTrackingAreaCursor();
    /// The arrow over host controls, the shown tool's cursor over the tool area.
    void setCursor(const kit::Event& event);
    void cursorUpdate(const kit::Event& event) override;
    void mouseEntered(const kit::Event& event) override;
    void mouseExited(const kit::Event& event) override;
    bool mouseDownCanMoveWindow() const override { return false; }

    /// Overlay points per canvas pixel: the canvas view's width over the visible canvas width,
    /// read from the engine afresh.
    static float canvasZoom(void* context);

    /// The canvas coordinate shown at the overlay's centre along one axis: position plus half
    /// the visible size, the half truncated toward zero.
    static float canvasCentre(int position, int size);

    /// The tool view for a tool number (0 rectangle, 1 ellipse, 2 polygon, 3 brush, 4 erase),
    /// or null for any other number.
    SelectionBaseView* toolView(int toolNumber) const;
    SelectionOptionsView* optionView() const { return m_selectionOptionView.get(); }

private:
    explicit SelectionMainView(const kit::Rect& frame);
    ~SelectionMainView() override;

    /// The tool area below the option bar for an overlay of the given size.
    static kit::Rect toolFrame(kit::Size overlay);
    struct CanvasGeometry {
        float zoom;
        float centreX;
        float centreY;
        float width;
        float height;
    };
    CanvasGeometry canvasGeometry() const;
    bool trackingAreasMatchHost() const;

    void* m_QMContext = nullptr;
    kit::RefPtr<SelectionOptionsView> m_selectionOptionView;
    kit::RefPtr<RectangleSelectionView> m_rectangleSelectionView;
    kit::RefPtr<PolygonSelectionView> m_polygonSelectionView;
    kit::RefPtr<EllipseSelectionView> m_ellipseSelectionView;
    kit::RefPtr<BrushSelectionView> m_brushSelectionView;
    kit::RefPtr<EraseSelectionView> m_eraseSelectionView;
};
