// Window: a titled window whose content view fills the area below the title bar, and the
// dispatcher of its events.
#pragma once

#include "kit/Color.h"
#include "kit/DraggingInfo.h"
#include "kit/Event.h"
#include "kit/Geometry.h"
#include "kit/Image.h"
#include "kit/TextView.h"
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
    /// Makes `responder` (null or the window: the window itself) the first responder. The
    /// current one is asked to resign and the new one to become it; when either refuses, the
    /// answer is false. A field editor resigns by committing its text, so this is also how
    /// editing ends when a person clicks elsewhere.
    bool makeFirstResponder(Responder* responder);

    /// The window's field editor: the one text view that edits whichever text field is being
    /// edited. Made on the first request with `create`; `object` is the object asking.
    TextView* fieldEditor(bool create, Object* object);
    /// Ends the editing that `object` (the field editor or the text field it edits) is doing:
    /// the editor resigns, which commits through the field and its delegate. A delegate that
    /// refuses in `controlTextShouldEndEditing` keeps the editing going.
    void endEditingFor(Object* object);

    /// The colour behind the content view.
    Color backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const Color& color) { m_backgroundColor = color; }
    /// The content area as a person sees it: the background and the content view's tree,
    /// back to front, one pixel per point (rounded up). Tool tips are not drawn. Null when
    /// the content area is empty or larger than an image may be.
    RefPtr<Image> renderImage();
    /// Draws the background and the content view's tree into `context` (window points, y up,
    /// one pixel per point), only within `dirty`: a screen redraws just what changed.
    void displayRect(GraphicsContext& context, const Rect& dirty);

    /// Delivers an event: a press to the deepest visible view under it (which becomes first
    /// responder if it accepts; when the current one will not resign, the press is dropped),
    /// drags and the release to the view that took the press, key events to the first
    /// responder, and entered, exited and moved events from the tracking areas of the visible
    /// views to their owners.
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
    bool m_mouseTargetIsLeft = true;
    RefPtr<View> m_dragTarget;
    RefPtr<TextView> m_fieldEditor;
    Color m_backgroundColor = Color::windowBackgroundColor();
};

} // namespace kit
