// CanvasView: the content view of the host's canvas window, with the host's own controls.
#pragma once

#include "engine/Document.h"
#include "hostapp/FilterControls.h"
#include "kit/View.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace hostapp {

/// The host draws the canvas in this view and keeps a few controls along its bottom-left
/// corner: zoom in, zoom out, fit, a pan pad, and the filter pop-up with its slider. Each control is watched by a
/// tracking area on this view, which is how the plug-in learns where the host's controls are. Presses that the overlay
/// passes on arrive here through the responder chain.
class CanvasView final : public kit::View {
    KIT_MAKEABLE
public:
    enum class Control {
        ZoomIn,
        ZoomOut,
        Fit,
        Pan,
        Filter,
        Area
    };
    struct HostControl {
        Control kind;
        kit::Rect rect;
    };
    /// The options of the host's tracking areas: entered and exited, moved, active in the key window.
    static constexpr unsigned kAreaOptions = 0x23;
    static constexpr const char* kTrackingAreaCursorUpdated = "TrackingAreaCursorUpdated";
    static constexpr const char* kKeyUp = "keyUp";

    void initView() override;
    void setDocument(engine::Document* document);
    /// The filter pop-up and slider; null before initView.
    FilterControls* filterControls() const { return m_filters.get(); }

    const std::vector<HostControl>& controls() const { return m_controls; }
    /// Adds a control area without an action of its own, and tells observers the areas changed.
    void addHostArea(const kit::Rect& rect);

    /// What reached the host: one line an event, e.g. "down 120,110" or "zoom-in".
    const std::vector<std::string>& hostLog() const { return m_log; }

    /// The canvas (paper, paint layer, the selection tinted and outlined with marching ants) at
    /// the document's pan and zoom, the host's controls and its status line. Only the part of
    /// the canvas within `dirty` is drawn.
    void drawRect(const kit::Rect& dirty) override;
    /// The view point of a canvas point at the document's current pan and zoom, and back.
    kit::Point viewPointOfCanvasPoint(kit::Point canvas) const;
    kit::Point canvasPointOfViewPoint(kit::Point view) const;

    /// Whether the selection has an outline on the canvas for the ants to march along.
    bool hasOutline();
    /// Moves the ants one step along the outline.
    void advanceAnts() { ++m_antPhase; }
    /// The view rectangles that hold the outline: what a step of the ants redraws.
    std::vector<kit::Rect> outlineArea();

    /// Zooms by `factor` keeping the canvas point under `viewPoint` where it is.
    void zoomAbout(double factor, kit::Point viewPoint);
    /// Shows the canvas at one point a canvas pixel, about the visible centre.
    void showActualSize();
    /// Shows the whole canvas.
    void fit();
    /// Moves the canvas with the pointer by a drag of (dx, dy) points.
    void panBy(float dx, float dy);

    /// Where the pointer is, for the status line; outside the view it shows no position.
    void setPointer(std::optional<kit::Point> viewPoint) { m_pointer = viewPoint; }
    /// Shows `message` in the status line for a few seconds instead of the status.
    void showMessage(const std::string& message);
    /// The status line's text: zoom, the pointer's canvas position, the selection's bounds and
    /// its selected pixel count (mask sum / 255).
    std::string statusText();
    /// Opens a PNG as the canvas picture and fits it, or says in the status line and on
    /// standard error why the file cannot be used.
    bool openPicture(const std::string& path);
    /// The picture last opened, empty while there is none.
    const std::string& picturePath() const { return m_picturePath; }
    /// Whether the window's first responder is the field editor of a text field being edited.
    bool editingText() const;

    bool acceptsFirstResponder() const override { return true; }
    void mouseDown(const kit::Event& event) override;
    void mouseDragged(const kit::Event& event) override;
    void mouseUp(const kit::Event& event) override;
    void mouseEntered(const kit::Event& event) override;
    void mouseExited(const kit::Event& event) override;
    /// A key release that no tool took: posted as "keyUp" with the event as its object, unless
    /// a text field being edited had it.
    void keyUp(const kit::Event& event) override;

    /// A dropped PNG file becomes the canvas picture.
    kit::DragOperation draggingEntered(const kit::DraggingInfo& info) override;
    kit::DragOperation draggingUpdated(const kit::DraggingInfo& info) override;
    bool performDragOperation(const kit::DraggingInfo& info) override;

private:
    explicit CanvasView(const kit::Rect& frame);

    void addControl(Control kind, const kit::Rect& rect);
    const HostControl* controlAt(kit::Point p) const;
    void act(Control kind);
    void zoomBy(double factor);
    void note(const std::string& line) { m_log.push_back(line); }
    /// The canvas at one pixel a canvas pixel without the ants (what the host shows before
    /// scaling), the outline and the selection's figures, made again when the document changed.
    void refreshCanvas();
    /// Points per canvas pixel and the canvas point shown at the view's centre.
    struct ViewMapping {
        float zoom, centreX, centreY;
    };
    ViewMapping viewMapping() const;
    kit::RefPtr<kit::Image> canvasPicture(const std::vector<std::uint8_t>& mask) const;
    void measureSelection(const std::vector<std::uint8_t>& mask);
    void drawAnts(const kit::Rect& dirty) const;
    void drawControls(const kit::Rect& dirty) const;
    void drawStatus(const kit::Rect& dirty);
    void clearMessage();

    engine::Document* m_document = nullptr;
    std::vector<HostControl> m_controls;
    std::vector<std::string> m_log;
    const HostControl* m_pressed = nullptr;
    std::unique_ptr<FilterControls> m_filters;
    /// The filter control that took the press, which its drag and release follow.
    kit::RefPtr<kit::View> m_pressedFilterControl;
    kit::Point m_lastDrag;

    /// One run of outline pixels along a canvas row.
    struct OutlineRun {
        int x, y, length;
    };
    kit::RefPtr<kit::Image> m_picture;
    std::uint64_t m_pictureRevision = 0;
    std::vector<OutlineRun> m_outline;
    int m_antPhase = 0;
    /// The selection's bounds in canvas pixels (left, top, right, bottom) and its pixel count.
    int m_selectionBounds[4] = {};
    double m_selectedPixels = 0;
    std::optional<kit::Point> m_pointer;
    std::string m_message;
    std::string m_picturePath;
};

} // namespace hostapp
