// View: a rectangle in a window's view tree, with autoresizing, tags and subviews.
#pragma once

#include "kit/DraggingInfo.h"
#include "kit/Forward.h"
#include "kit/Geometry.h"
#include "kit/Responder.h"
#include "kit/TrackingArea.h"

#include <string>
#include <vector>

namespace kit {

/// Autoresizing bits, with the values of the original platform.
enum AutoresizingMask : unsigned {
    ViewNotSizable = 0,
    ViewMinXMargin = 1,
    ViewWidthSizable = 2,
    ViewMaxXMargin = 4,
    ViewMinYMargin = 8,
    ViewHeightSizable = 16,
    ViewMaxYMargin = 32,
};

/// The drag type of file names.
inline const std::string FilenamesPboardType = "NSFilenamesPboardType";

/// Constructs objects whose constructors are not public; a class lets it in with KIT_MAKEABLE.
struct Construct {
    template <typename T, typename... Args> static T* create(Args&&... args)
    {
        return new T(std::forward<Args>(args)...);
    }
};

#define KIT_MAKEABLE friend struct ::kit::Construct;

/// Makes a view (or any kit object built in three steps): constructs it, then runs the
/// virtual `initData` and `initView`, so that a subclass's overrides take part.
template <typename T, typename... Args> RefPtr<T> make(Args&&... args)
{
    RefPtr<T> object = adoptRef(Construct::create<T>(std::forward<Args>(args)...));
    object->initData();
    object->initView();
    return object;
}

class View : public Responder {
    KIT_MAKEABLE
public:
    static RefPtr<View> create(const Rect& frame) { return make<View>(frame); }

    /// Field start values; runs once, after construction.
    virtual void initData() {}
    /// Child views; runs once, after `initData`.
    virtual void initView() {}

    Rect frame() const { return m_frame; }
    /// Moves and resizes the view; the subviews follow their autoresizing masks.
    void setFrame(const Rect& frame);
    void setFrameSize(Size size) { setFrame({ m_frame.origin, size }); }
    void setFrameOrigin(Point origin) { setFrame({ origin, m_frame.size }); }
    /// The view's own coordinate system: its size at the origin.
    Rect bounds() const { return { Point {}, m_frame.size }; }

    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden);
    /// True when this view or an ancestor is hidden.
    bool isHiddenOrHasHiddenAncestor() const;

    virtual int tag() const { return m_tag; }
    void setTag(int tag) { m_tag = tag; }

    unsigned autoresizingMask() const { return m_autoresizingMask; }
    void setAutoresizingMask(unsigned mask) { m_autoresizingMask = mask; }
    bool autoresizesSubviews() const { return m_autoresizesSubviews; }
    void setAutoresizesSubviews(bool on) { m_autoresizesSubviews = on; }

    bool wantsLayer() const { return m_wantsLayer; }
    void setWantsLayer(bool on) { m_wantsLayer = on; }

    virtual bool isFlipped() const { return false; }

    /// Subviews back to front.
    const std::vector<RefPtr<View>>& subviews() const { return m_subviews; }
    View* superview() const { return m_superview; }
    Window* window() const;
    /// Adds the view on top of the others, taking it out of its old superview first.
    void addSubview(View* view);
    /// Does nothing for a view outside any tree.
    void removeFromSuperview();
    bool isDescendantOf(const View* ancestor) const;
    /// This view if it has the tag, otherwise the first match depth-first among the descendants.
    View* viewWithTag(int tag);

    /// Converts a point from `view`'s coordinates (the window's when null) into this view's.
    Point convertPointFromView(Point point, const View* view) const;
    /// Converts a point from this view's coordinates into `view`'s (the window's when null).
    Point convertPointToView(Point point, const View* view) const;

    void setNeedsDisplay(bool needed = true) { m_needsDisplay = needed; }
    bool needsDisplay() const { return m_needsDisplay; }
    /// Draws the view's own content into the current graphics context, in the view's
    /// coordinates, clipped to its bounds; `dirty` is the part that needs it.
    virtual void drawRect(const Rect&) {}
    /// Draws the view and its visible subviews, back to front, each clipped to its frame, into
    /// `context`, taking the context's user space as this view's bounds (flipped views are
    /// turned to match). The context is the current one while the views draw. Hidden views
    /// and their subviews are not drawn.
    void displayInContext(GraphicsContext& context);
    /// The view's tree drawn into a transparent image of its size, one pixel per point
    /// (rounded up); null when the view is empty or too large for an image.
    RefPtr<Image> renderImage();

    /// Help text for the pointer resting over the view; kept as data, never drawn.
    const std::string& toolTip() const { return m_toolTip; }
    void setToolTip(std::string toolTip) { m_toolTip = std::move(toolTip); }

    void registerForDraggedTypes(std::vector<std::string> types) { m_draggedTypes = std::move(types); }
    void unregisterDraggedTypes() { m_draggedTypes.clear(); }
    const std::vector<std::string>& registeredDraggedTypes() const { return m_draggedTypes; }

    /// Drag destination hooks; a view that takes no drags answers none and refuses the drop.
    virtual DragOperation draggingEntered(const DraggingInfo&) { return DragOperationNone; }
    virtual DragOperation draggingUpdated(const DraggingInfo&) { return DragOperationNone; }
    virtual void draggingExited(const DraggingInfo&) {}
    virtual void draggingEnded(const DraggingInfo&) {}
    virtual bool performDragOperation(const DraggingInfo&) { return false; }

    /// Tracking areas, in the order added; rectangles are in this view's coordinates.
    const std::vector<RefPtr<TrackingArea>>& trackingAreas() const { return m_trackingAreas; }
    void addTrackingArea(TrackingArea* area);
    void removeTrackingArea(TrackingArea* area);

    /// The deepest visible view under `point` (in the superview's coordinates), topmost first;
    /// null when the point is outside this view or the view is hidden.
    View* hitTest(Point point);
    /// Whether a press on the view may drag its window.
    virtual bool mouseDownCanMoveWindow() const { return true; }

    /// The superview, or the window for a content view.
    Responder* nextResponder() const override;

    /// Called when the superview changed its size; applies this view's autoresizing mask.
    void resizeWithOldSuperviewSize(Size oldSize);

protected:
    explicit View(const Rect& frame) : m_frame(frame) {}
    ~View() override;

private:
    friend class Window;
    void setWindow(Window* window);
    /// A point of this view's bounds in its superview's coordinates (the window's at the root).
    Point toSuperview(Point p) const;
    Point fromSuperview(Point p) const;
    /// Draws this tree with the context's user space set to the superview's bounds.
    void displayInSuperview(GraphicsContext& context);
    /// Draws this tree with the context's user space already set to this view's bounds.
    void drawTree(GraphicsContext& context);

    Rect m_frame;
    bool m_hidden = false;
    int m_tag = -1;
    unsigned m_autoresizingMask = ViewNotSizable;
    bool m_autoresizesSubviews = true;
    bool m_wantsLayer = false;
    bool m_needsDisplay = true;
    View* m_superview = nullptr;
    Window* m_window = nullptr;
    std::vector<RefPtr<View>> m_subviews;
    std::vector<std::string> m_draggedTypes;
    std::vector<RefPtr<TrackingArea>> m_trackingAreas;
    std::string m_toolTip;
};

} // namespace kit
