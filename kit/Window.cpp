// Window: geometry, the content view's place in the chain, and event dispatch.
#include "kit/Window.h"

#include "kit/Application.h"

#include <algorithm>

namespace kit {

RefPtr<Window> Window::create(const Rect& contentRect)
{
    Rect frame = contentRect;
    frame.size.height += kTitleBarHeight;
    RefPtr<Window> window = adoptRef(Construct::create<Window>(frame));
    window->setContentView(View::create({ 0, 0, contentRect.width(), contentRect.height() }).get());
    return window;
}

Window::Window(const Rect& frame) : m_frame(frame) {}

Window::~Window()
{
    Application::shared().windowWillClose(this);
    m_mouseTarget.clear();
    m_dragTarget.clear();
    if (m_contentView)
        m_contentView->setWindow(nullptr);
}

Rect Window::contentRectForFrameRect(const Rect& frame) const
{
    return { frame.origin.x, frame.origin.y, frame.size.width, frame.size.height - kTitleBarHeight };
}

Rect Window::frameRectForContentRect(const Rect& content) const
{
    return { content.origin.x, content.origin.y, content.size.width, content.size.height + kTitleBarHeight };
}

void Window::setFrame(const Rect& frame)
{
    m_frame = frame;
    if (m_contentView) {
        const Rect content = contentRectForFrameRect(frame);
        m_contentView->setFrame({ 0, 0, content.width(), content.height() });
    }
}

void Window::setContentView(View* view)
{
    if (m_contentView)
        m_contentView->setWindow(nullptr);
    m_contentView = view;
    if (view) {
        view->removeFromSuperview();
        view->setWindow(this);
    }
}

Responder* Window::nextResponder() const { return &Application::shared(); }

void Window::viewWillLeave(View* view)
{
    if (m_firstResponder == view)
        m_firstResponder = nullptr;
    if (m_mouseTarget.get() == view)
        m_mouseTarget.clear();
    if (m_dragTarget.get() == view)
        m_dragTarget.clear();
}

void Window::sendEvent(Event event)
{
    event.setWindow(this);
    switch (event.type()) {
    case EventType::LeftMouseDown:
    case EventType::RightMouseDown: {
        View* hit = m_contentView ? m_contentView->hitTest(event.locationInWindow()) : nullptr;
        m_mouseTarget = hit;
        if (!hit)
            return;
        if (hit->acceptsFirstResponder())
            makeFirstResponder(hit);
        if (event.type() == EventType::LeftMouseDown)
            hit->mouseDown(event);
        else
            hit->rightMouseDown(event);
        return;
    }
    case EventType::LeftMouseDragged:
        if (RefPtr<View> target = m_mouseTarget)
            target->mouseDragged(event);
        updateTrackingAreas(event, true);
        return;
    case EventType::LeftMouseUp:
    case EventType::RightMouseUp: {
        RefPtr<View> target = std::move(m_mouseTarget);
        if (target && event.type() == EventType::LeftMouseUp)
            target->mouseUp(event);
        else if (target)
            target->rightMouseUp(event);
        return;
    }
    case EventType::MouseMoved:
        updateTrackingAreas(event, false);
        return;
    case EventType::KeyDown:
        firstResponder()->keyDown(event);
        return;
    case EventType::KeyUp:
        firstResponder()->keyUp(event);
        return;
    case EventType::MouseEntered:
    case EventType::MouseExited:
    case EventType::CursorUpdate:
        return; // these come from tracking areas, never from outside
    }
}

namespace {

/// Whether an area's activity options hold now: the window counts as key and the
/// application as active, since the host has one window.
bool areaActive(const TrackingArea& area, const Window& window)
{
    const unsigned o = area.options();
    if (o & (TrackingActiveAlways | TrackingActiveInActiveApp | TrackingActiveInKeyWindow))
        return true;
    if (o & TrackingActiveWhenFirstResponder)
        return window.firstResponder() == area.owner();
    return false;
}

void collectVisible(View* view, std::vector<RefPtr<View>>& out)
{
    if (view->isHidden())
        return;
    out.push_back(view);
    for (auto& subview : view->subviews())
        collectVisible(subview.get(), out);
}

} // namespace

void Window::updateTrackingAreas(const Event& event, bool dragging)
{
    if (!m_contentView)
        return;
    // Owners may change the view tree while handling these, so work from a snapshot.
    std::vector<RefPtr<View>> views;
    collectVisible(m_contentView.get(), views);
    for (auto& view : views)
        trackView(view.get(), event, dragging);
}

void Window::trackView(View* view, const Event& event, bool dragging)
{
    const std::vector<RefPtr<TrackingArea>> areas = view->trackingAreas();
    const Point local = view->convertPointFromView(event.locationInWindow(), nullptr);
    for (const auto& area : areas) {
        if (!areaActive(*area, *this) || (dragging && !(area->options() & TrackingEnabledDuringMouseDrag)))
            continue;
        const Rect rect = (area->options() & TrackingInVisibleRect) ? view->bounds() : area->rect();
        const bool inside = MouseInRect(local, rect, view->isFlipped());
        const bool was = area->mouseInside();
        area->setMouseInside(inside);
        Responder* owner = area->owner();
        if (!owner)
            continue;
        const Point at = event.locationInWindow();
        if ((area->options() & TrackingMouseEnteredAndExited) && inside != was) {
            if (inside)
                owner->mouseEntered(Event::tracking(EventType::MouseEntered, at, area.get(), event.timestamp()));
            else
                owner->mouseExited(Event::tracking(EventType::MouseExited, at, area.get(), event.timestamp()));
        }
        if ((area->options() & TrackingCursorUpdate) && inside && !was)
            owner->cursorUpdate(Event::tracking(EventType::CursorUpdate, at, area.get(), event.timestamp()));
        if ((area->options() & TrackingMouseMoved) && inside && !dragging)
            owner->mouseMoved(Event::tracking(EventType::MouseMoved, at, area.get(), event.timestamp()));
    }
}

View* Window::dragDestinationAt(Point location) const
{
    View* view = m_contentView ? m_contentView->hitTest(location) : nullptr;
    for (; view; view = view->superview()) {
        const auto& types = view->registeredDraggedTypes();
        if (std::find(types.begin(), types.end(), FilenamesPboardType) != types.end())
            return view;
    }
    return nullptr;
}

DragOperation Window::dragMoved(const DraggingInfo& info)
{
    RefPtr<View> destination = dragDestinationAt(info.location);
    if (destination != m_dragTarget) {
        if (RefPtr<View> old = std::move(m_dragTarget))
            old->draggingExited(info);
        m_dragTarget = destination;
        return destination ? destination->draggingEntered(info) : DragOperationNone;
    }
    return destination ? destination->draggingUpdated(info) : DragOperationNone;
}

bool Window::dragDropped(const DraggingInfo& info)
{
    dragMoved(info);
    RefPtr<View> destination = std::move(m_dragTarget);
    if (!destination)
        return false;
    const bool done = destination->performDragOperation(info);
    destination->draggingEnded(info);
    return done;
}

void Window::dragCancelled(const DraggingInfo& info)
{
    if (RefPtr<View> old = std::move(m_dragTarget))
        old->draggingExited(info);
}

} // namespace kit
