// Window: geometry, the content view's place in the chain, and event dispatch.
#include "kit/Window.h"

#include "kit/Application.h"
#include "kit/GraphicsContext.h"
#include "kit/TextField.h"

#include <algorithm>
#include <cmath>

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

bool Window::makeFirstResponder(Responder* responder)
{
    if (responder == this)
        responder = nullptr;
    if (responder == m_firstResponder)
        return true;
    if (m_firstResponder) {
        RefPtr<Responder> old(m_firstResponder);
        if (!old->resignFirstResponder())
            return false;
    }
    m_firstResponder = responder;
    // A responder may hand the post on while it becomes it (a text field passes it to the
    // field editor), so only a refusal undoes the change.
    if (responder && !responder->becomeFirstResponder()) {
        if (m_firstResponder == responder)
            m_firstResponder = nullptr;
        return false;
    }
    return true;
}

TextView* Window::fieldEditor(bool create, Object*)
{
    if (!m_fieldEditor && create) {
        m_fieldEditor = TextView::create({});
        m_fieldEditor->setFieldEditor(true);
    }
    return m_fieldEditor.get();
}

void Window::endEditingFor(Object* object)
{
    RefPtr<TextView> editor = m_fieldEditor;
    if (!editor || !editor->client() || !object)
        return;
    if (object != editor.get() && object != static_cast<Object*>(editor->client()))
        return;
    if (m_firstResponder == editor.get())
        makeFirstResponder(nullptr);
    else
        editor->resignFirstResponder();
}

RefPtr<Image> Window::renderImage()
{
    const Size size = contentRectForFrameRect(m_frame).size;
    if (!(size.width >= 1 && size.width <= 32767 && size.height >= 1 && size.height <= 32767))
        return nullptr;
    RefPtr<GraphicsContext> context = GraphicsContext::create(int(std::ceil(size.width)), int(std::ceil(size.height)));
    if (!context)
        return nullptr;
    displayRect(*context, { 0, 0, float(context->pixelsWide()), float(context->pixelsHigh()) });
    return context->takeImage();
}

void Window::displayRect(GraphicsContext& context, const Rect& dirty)
{
    context.saveGState();
    context.clipToRect(dirty);
    context.setFillColor(m_backgroundColor);
    context.fillRect(dirty);
    if (m_contentView) {
        // The content view sits at the window's origin, whatever its frame says.
        m_contentView->displayInContext(context);
    }
    context.restoreGState();
}

void Window::viewWillLeave(View* view)
{
    if (m_firstResponder == view)
        m_firstResponder = nullptr;
    // Editing ends quietly with the field or the editor leaving: its delegate may be going away.
    if (m_fieldEditor && m_fieldEditor->client()
        && (view == m_fieldEditor.get() || view == static_cast<View*>(m_fieldEditor->client())))
        m_fieldEditor->endEditing();
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
        // Held here: making it first responder may end an edit whose delegate changes the tree.
        RefPtr<View> hit = m_contentView ? m_contentView->hitTest(event.locationInWindow()) : nullptr;
        m_mouseTarget = hit;
        m_mouseTargetIsLeft = event.type() == EventType::LeftMouseDown;
        if (!hit)
            return;
        if (hit->acceptsFirstResponder() && !makeFirstResponder(hit.get())) {
            m_mouseTarget.clear();
            return;
        }
        if (m_mouseTargetIsLeft)
            hit->mouseDown(event);
        else
            hit->rightMouseDown(event);
        return;
    }
    case EventType::LeftMouseDragged:
        // Drags and the release belong to the view that took a press of the same button.
        if (RefPtr<View> target = m_mouseTargetIsLeft ? m_mouseTarget : nullptr)
            target->mouseDragged(event);
        updateTrackingAreas(event, true);
        return;
    case EventType::LeftMouseUp:
    case EventType::RightMouseUp: {
        const bool left = event.type() == EventType::LeftMouseUp;
        if (left != m_mouseTargetIsLeft)
            return;
        RefPtr<View> target = std::move(m_mouseTarget);
        if (target && left)
            target->mouseUp(event);
        else if (target)
            target->rightMouseUp(event);
        return;
    }
    case EventType::MouseMoved: updateTrackingAreas(event, false); return;
    case EventType::KeyDown: firstResponder()->keyDown(event); return;
    case EventType::KeyUp: firstResponder()->keyUp(event); return;
    case EventType::MouseEntered:
    case EventType::MouseExited:
    case EventType::CursorUpdate: return; // these come from tracking areas, never from outside
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
