// View: tree maintenance, autoresizing and coordinate conversion.
#include "kit/View.h"

#include "kit/GraphicsContext.h"
#include "kit/Image.h"
#include "kit/Window.h"

#include <algorithm>
#include <cmath>

namespace kit {

View::~View()
{
    for (auto& subview : m_subviews) {
        subview->m_superview = nullptr;
        subview->setWindow(nullptr);
    }
}

void View::setFrame(const Rect& frame)
{
    const Size oldSize = m_frame.size;
    m_frame = frame;
    setNeedsDisplay();
    if (!m_autoresizesSubviews || oldSize == frame.size)
        return;
    for (auto& subview : m_subviews)
        subview->resizeWithOldSuperviewSize(oldSize);
}

void View::setHidden(bool hidden)
{
    m_hidden = hidden;
    if (m_superview)
        m_superview->setNeedsDisplay();
    // A hidden view takes no keys: the window becomes first responder in its place.
    if (hidden && m_window) {
        auto* responder = dynamic_cast<View*>(m_window->firstResponder());
        if (responder && responder->isDescendantOf(this))
            m_window->makeFirstResponder(nullptr);
    }
}

bool View::isHiddenOrHasHiddenAncestor() const
{
    for (const View* view = this; view; view = view->m_superview) {
        if (view->m_hidden)
            return true;
    }
    return false;
}

Window* View::window() const { return m_window; }

void View::addSubview(View* view)
{
    if (!view || view == this || isDescendantOf(view))
        return;
    RefPtr<View> keep(view);
    view->removeFromSuperview();
    m_subviews.push_back(keep);
    view->m_superview = this;
    view->setWindow(m_window);
    setNeedsDisplay();
}

void View::removeFromSuperview()
{
    View* parent = m_superview;
    if (!parent)
        return;
    RefPtr<View> keep(this);
    auto& siblings = parent->m_subviews;
    siblings.erase(std::find(siblings.begin(), siblings.end(), this));
    m_superview = nullptr;
    setWindow(nullptr);
    parent->setNeedsDisplay();
}

bool View::isDescendantOf(const View* ancestor) const
{
    for (const View* view = this; view; view = view->m_superview) {
        if (view == ancestor)
            return true;
    }
    return false;
}

View* View::viewWithTag(int tag)
{
    if (this->tag() == tag)
        return this;
    for (auto& subview : m_subviews) {
        if (View* found = subview->viewWithTag(tag))
            return found;
    }
    return nullptr;
}

Point View::toSuperview(Point p) const
{
    const bool parentFlipped = m_superview && m_superview->isFlipped();
    const float y = isFlipped() == parentFlipped ? m_frame.origin.y + p.y : m_frame.maxY() - p.y;
    return { m_frame.origin.x + p.x, y };
}

Point View::fromSuperview(Point p) const
{
    const bool parentFlipped = m_superview && m_superview->isFlipped();
    const float y = isFlipped() == parentFlipped ? p.y - m_frame.origin.y : m_frame.maxY() - p.y;
    return { p.x - m_frame.origin.x, y };
}

Point View::convertPointFromView(Point point, const View* view) const
{
    Point inWindow = view ? view->convertPointToView(point, nullptr) : point;
    std::vector<const View*> chain;
    for (const View* v = this; v; v = v->m_superview)
        chain.push_back(v);
    for (auto it = chain.rbegin(); it != chain.rend(); ++it)
        inWindow = (*it)->fromSuperview(inWindow);
    return inWindow;
}

Point View::convertPointToView(Point point, const View* view) const
{
    Point p = point;
    for (const View* v = this; v; v = v->m_superview)
        p = v->toSuperview(p);
    return view ? view->convertPointFromView(p, nullptr) : p;
}

Responder* View::nextResponder() const
{
    if (m_superview)
        return m_superview;
    if (m_window && m_window->contentView() == this)
        return m_window;
    return nullptr;
}

void View::addTrackingArea(TrackingArea* area)
{
    if (area)
        m_trackingAreas.push_back(RefPtr<TrackingArea>(area));
}

void View::removeTrackingArea(TrackingArea* area)
{
    std::erase_if(m_trackingAreas, [area](const RefPtr<TrackingArea>& a) { return a.get() == area; });
}

View* View::hitTest(Point point)
{
    if (m_hidden)
        return nullptr;
    const bool parentFlipped = m_superview && m_superview->isFlipped();
    if (!MouseInRect(point, m_frame, parentFlipped))
        return nullptr;
    const Point local = fromSuperview(point);
    for (auto it = m_subviews.rbegin(); it != m_subviews.rend(); ++it) {
        if (View* hit = (*it)->hitTest(local))
            return hit;
    }
    return this;
}

void View::setWindow(Window* window)
{
    if (m_window && m_window != window)
        m_window->viewWillLeave(this);
    m_window = window;
    for (auto& subview : m_subviews)
        subview->setWindow(window);
}

void View::displayInContext(GraphicsContext& context)
{
    if (m_hidden)
        return;
    GraphicsContext::saveGraphicsState();
    GraphicsContext::setCurrentContext(&context);
    context.saveGState();
    if (isFlipped() != context.isFlipped())
        context.flipVertically(0, m_frame.size.height);
    drawTree(context);
    context.restoreGState();
    GraphicsContext::restoreGraphicsState();
}

void View::displayInSuperview(GraphicsContext& context)
{
    if (m_hidden)
        return;
    context.saveGState();
    context.translate(m_frame.origin.x, m_frame.origin.y);
    const bool parentFlipped = m_superview && m_superview->isFlipped();
    if (isFlipped() != parentFlipped)
        context.flipVertically(0, m_frame.size.height);
    drawTree(context);
    context.restoreGState();
}

void View::drawTree(GraphicsContext& context)
{
    context.clipToRect(bounds());
    const Rect dirty = intersection(bounds(), context.clipBoundingBox());
    m_needsDisplay = false;
    if (dirty.isEmpty())
        return;
    // A view that changes the tree while it draws must not pull views out from under the loop.
    RefPtr<View> keep(this);
    context.saveGState();
    drawRect(dirty);
    context.restoreGState();
    const std::vector<RefPtr<View>> subviews = m_subviews;
    for (const auto& subview : subviews)
        subview->displayInSuperview(context);
}

RefPtr<Image> View::renderImage()
{
    const Size size = m_frame.size;
    if (!(size.width >= 1 && size.width <= 32767 && size.height >= 1 && size.height <= 32767))
        return nullptr;
    RefPtr<GraphicsContext> context = GraphicsContext::create(int(std::ceil(size.width)), int(std::ceil(size.height)));
    if (!context)
        return nullptr;
    displayInContext(*context);
    return context->makeImage();
}

namespace {

/// Shares `delta` among the flexible parts of one axis in proportion to their current
/// lengths (evenly when those add up to nothing), as the original platform does.
void distribute(float delta, float parts[3], const bool flexible[3])
{
    float total = 0;
    int count = 0;
    for (int i = 0; i < 3; ++i) {
        if (flexible[i]) {
            total += parts[i];
            ++count;
        }
    }
    if (count == 0)
        return;
    for (int i = 0; i < 3; ++i) {
        if (flexible[i])
            parts[i] += total > 0 ? delta * parts[i] / total : delta / float(count);
    }
}

} // namespace

void View::resizeWithOldSuperviewSize(Size oldSize)
{
    if (!m_superview)
        return;
    const Size newSize = m_superview->m_frame.size;
    const unsigned mask = m_autoresizingMask;
    Rect frame = m_frame;

    float xs[3] = { frame.origin.x, frame.size.width, oldSize.width - frame.maxX() };
    const bool xFlex[3]
        = { (mask & ViewMinXMargin) != 0, (mask & ViewWidthSizable) != 0, (mask & ViewMaxXMargin) != 0 };
    distribute(newSize.width - oldSize.width, xs, xFlex);

    float ys[3] = { frame.origin.y, frame.size.height, oldSize.height - frame.maxY() };
    const bool yFlex[3]
        = { (mask & ViewMinYMargin) != 0, (mask & ViewHeightSizable) != 0, (mask & ViewMaxYMargin) != 0 };
    distribute(newSize.height - oldSize.height, ys, yFlex);

    setFrame({ xs[0], ys[0], std::max(0.0f, xs[1]), std::max(0.0f, ys[1]) });
}

} // namespace kit
