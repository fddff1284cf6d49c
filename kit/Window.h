// Window: a titled window whose content view fills the area below the title bar, and the
// dispatcher of its events.
#pragma once

#include "kit/DraggingInfo.h"
#include "kit/Event.h"
#include "kit/Geometry.h"
#include "kit/View.h"

#include <string>

namespace kit {

class Window : public Responder {
    KIT_MAKEABLE
public:
    /// The height of the title bar that the frame includes above the content area.
    static constexpr float kTitleBarHeight = 22;

    /// A window whose content area is `contentRect` (screen coordinates, y up).
    static RefPtr<Window> create(const Rect& contentRect);

    Rect frame() const { return m_frame; }
    /// Moves and resizes the window; the content view follows the new content area.
    void setFrame(const Rect& frame);
    Rect contentRectForFrameRect(const Rect& frame) const;
    Rect frameRectForContentRect(const Rect& content) const;

    View* contentView() const { return m_contentView.get(); }
    void setContentView(View* view);

    const std::string& title() const { return m_title; }
    void setTitle(std::string title) { m_title = std::move(title); }

    /// The responder that gets key events; the window itself when none was made.
    Responder* firstResponder() const { return m_firstResponder ? m_firstResponder : const_cast<Window*>(this); }
    /// Makes `responder` (null: the window) the first responder.
    void makeFirstResponder(Responder* responder) { m_firstResponder = responder; }

    /// Delivers an event: a press to the deepest visible view under it (which becomes first
    /// responder if it accepts), drags and the release to the view that took the press, key
    /// events to the first responder, and entered, exited and moved events from the tracking
    /// areas of the visible views to their owners.
    void sendEvent(Event event);

    /// Drag destinations: the deepest visible view under the drag that registered the
    /// file-names type gets entered, updated and exited as the drag moves, then the drop.
    DragOperation dragMoved(const DraggingInfo& info);
    bool dragDropped(const DraggingInfo& info);
    void dragCancelled(const DraggingInfo& info);

    /// The application.
    Responder* nextResponder() const override;

protected:
    explicit Window(const Rect& frame);
    ~Window() override;

private:
    friend class View;
    /// A view is leaving this window: it can no longer be first responder or mouse target.
    void viewWillLeave(View* view);
    void updateTrackingAreas(const Event& event, bool dragging);
    void trackView(View* view, const Event& event, bool dragging);
    View* dragDestinationAt(Point location) const;

    Rect m_frame;
    RefPtr<View> m_contentView;
    std::string m_title;
    Responder* m_firstResponder = nullptr;
    RefPtr<View> m_mouseTarget;
    RefPtr<View> m_dragTarget;
};

} // namespace kit
