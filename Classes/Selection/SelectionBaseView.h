// SelectionBaseView: what every tool view shares: context, options and the host pass-through.
#pragma once

#include "Classes/Selection/DragsToContentView.h"
#include "Classes/Selection/SelectionCanvas.h"
#include "kit/Event.h"

struct SelectionEventRecord;

/// A tool view that does nothing of its own is an inert, transparent layer: presses over the
/// host's controls go through to the host, everything else is dropped.
class SelectionBaseView : public DragsToContentView<kit::View> {
    KIT_MAKEABLE
public:
    void initData() override;

    /// The tool's options panel; kept, not owned.
    void setOptions(kit::Object* options) { m_options = options; }
    kit::Object* options() const { return m_options; }
    void setQMContext(void* context) { m_QMContext = context; }
    void* qmContext() const { return m_QMContext; }
    bool unresponsiveArea() const { return m_bUnresposiveArea; }
    /// The overlay that shows this tool and maps its points onto the canvas; kept, not owned.
    template <typename Overlay> void setCanvas(const Overlay* overlay)
    {
        m_overlay = overlay;
        m_canvas = overlay;
    }

    /// Decides whether the press belongs to the host: sets the unresponsive-area flag from
    /// the press location and nothing else.
    void mouseDown(const kit::Event& event) override;
    /// Passed to the host when the press was the host's, dropped otherwise.
    void mouseDragged(const kit::Event& event) override;
    void mouseUp(const kit::Event& event) override;
    /// Always the host's.
    void mouseMoved(const kit::Event& event) override;
    void mouseEntered(const kit::Event& event) override;
    void mouseExited(const kit::Event& event) override;
    void cursorUpdate(const kit::Event& event) override;
    /// Sets this tool's cursor; the crosshair unless a tool has its own.
    virtual void setCursor(const kit::Event& event);

    /// Replays a recorded event; a tool without a replay of its own ignores it.
    virtual void dealPlay(SelectionEventRecord* record);

    bool acceptsFirstResponder() const override { return true; }
    bool mouseDownCanMoveWindow() const override { return false; }

protected:
    explicit SelectionBaseView(const kit::Rect& frame);
    ~SelectionBaseView() override;

    /// The first step of every tool's press: runs the base mouse-down and, when the press is
    /// the host's, hands it on. True when the tool is to handle the press itself.
    bool beginPress(const kit::Event& event);
    /// The canvas while this tool is shown in the overlay that handed it in; null otherwise.
    const SelectionCanvas* canvas() const { return m_overlay && superview() == m_overlay ? m_canvas : nullptr; }

    kit::Object* m_options = nullptr;
    void* m_QMContext = nullptr;
    bool m_bUnresposiveArea = false;

private:
    const kit::View* m_overlay = nullptr;
    const SelectionCanvas* m_canvas = nullptr;
};
