// CanvasView: the content view of the host's canvas window, with the host's own controls.
#pragma once

#include "engine/Document.h"
#include "hostapp/FilterControls.h"
#include "kit/View.h"

#include <memory>
#include <string>
#include <vector>

namespace hostapp {

/// The host draws the canvas in this view and keeps a few controls along its bottom-left
/// corner: zoom in, zoom out, fit, a pan pad, and the filter pop-up with its slider. Each control is watched by a tracking area
/// on this view, which is how the plug-in learns where the host's controls are. Presses that
/// the overlay passes on arrive here through the responder chain.
class CanvasView final : public kit::View {
    KIT_MAKEABLE
public:
    enum class Control { ZoomIn, ZoomOut, Fit, Pan, Filter, Area };
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
    /// the document's pan and zoom, and the host's controls.
    void drawRect(const kit::Rect& dirty) override;
    /// The view point of a canvas point at the document's current pan and zoom.
    kit::Point viewPointOfCanvasPoint(kit::Point canvas) const;

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
    /// Whether the window's first responder is the field editor of a text field being edited.
    bool editingText() const;
    /// The canvas at one pixel a canvas pixel: what the host shows before scaling.
    kit::RefPtr<kit::Image> canvasPicture() const;
    void drawControls() const;

    engine::Document* m_document = nullptr;
    std::vector<HostControl> m_controls;
    std::vector<std::string> m_log;
    const HostControl* m_pressed = nullptr;
    std::unique_ptr<FilterControls> m_filters;
    /// The filter control that took the press, which its drag and release follow.
    kit::RefPtr<kit::View> m_pressedFilterControl;
    kit::Point m_lastDrag;
};

} // namespace hostapp
