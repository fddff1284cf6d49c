// PopUpMenuView: placing the menu by its pop-up, tracking the pointer, drawing the rows.
#include "kit/PopUpMenuView.h"

#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/PopUpButton.h"
#include "kit/TextLayout.h"
#include "kit/TrackingArea.h"

#include <algorithm>
#include <cmath>

namespace kit {

namespace {

// Room at the left of each row for the mark of the chosen item.
constexpr float kMarkWidth = 20;
constexpr std::string_view kCheckMark = "\xE2\x9C\x93";

} // namespace

RefPtr<PopUpMenuView> PopUpMenuView::showFor(PopUpButton* owner, View* container)
{
    RefPtr<PopUpMenuView> menu = make<PopUpMenuView>(container->bounds());
    menu->m_owner = owner;
    menu->setAutoresizingMask(ViewWidthSizable | ViewHeightSizable);
    container->addSubview(menu.get());
    menu->layOut();
    menu->addTrackingArea(
        TrackingArea::create({}, TrackingMouseMoved | TrackingActiveAlways | TrackingInVisibleRect, menu.get()).get());
    return menu;
}

void PopUpMenuView::detachOwner()
{
    m_owner = nullptr;
    RefPtr<PopUpMenuView> keep(this);
    removeFromSuperview();
}

int PopUpMenuView::firstListed() const { return m_owner && m_owner->pullsDown() ? 1 : 0; }

void PopUpMenuView::layOut()
{
    if (!m_owner)
        return;
    const Font& font = m_owner->font();
    const int first = firstListed();
    const int rows = std::max(0, m_owner->numberOfItems() - first);
    float widest = 0;
    for (int i = first; i < m_owner->numberOfItems(); ++i)
        widest = std::max(widest, font.widthOfString(m_owner->itemTitleAtIndex(i)));

    // The pop-up's rectangle in this view's coordinates.
    const Rect ob = m_owner->bounds();
    const Point a = convertPointFromView({ ob.minX(), ob.minY() }, m_owner);
    const Point b = convertPointFromView({ ob.maxX(), ob.maxY() }, m_owner);
    const Rect button { std::min(a.x, b.x), std::min(a.y, b.y), std::abs(b.x - a.x), std::abs(b.y - a.y) };

    const float width = std::max(button.width(), widest + kMarkWidth + 16);
    const float height = float(rows) * kRowHeight + 2 * kPadding;
    float top;
    if (m_owner->pullsDown()) {
        top = button.minY();
    } else {
        // The chosen item's row lies over the button, as the original platform places it.
        const int row = std::max(0, m_owner->indexOfSelectedItem() - first);
        top = button.minY() + button.height() / 2 + kPadding + (float(row) + 0.5f) * kRowHeight;
    }
    const Rect area = bounds();
    top = std::min(top, area.maxY());
    top = std::max(top, std::min(area.maxY(), area.minY() + height));
    const float left = std::clamp(button.minX(), area.minX(), std::max(area.minX(), area.maxX() - width));
    m_menuRect = { std::round(left), std::round(top - height), std::round(width), height };
}

Rect PopUpMenuView::rectOfItem(int index) const
{
    const int row = index - firstListed();
    if (!m_owner || row < 0 || index >= m_owner->numberOfItems())
        return {};
    const float top = m_menuRect.maxY() - kPadding - float(row) * kRowHeight;
    return { m_menuRect.minX(), top - kRowHeight, m_menuRect.width(), kRowHeight };
}

int PopUpMenuView::itemAtPoint(Point local) const
{
    if (!m_owner)
        return -1;
    for (int i = firstListed(); i < m_owner->numberOfItems(); ++i) {
        if (PointInRect(local, rectOfItem(i)))
            return i;
    }
    return -1;
}

void PopUpMenuView::setHighlighted(int index)
{
    if (m_highlighted == index)
        return;
    m_highlighted = index;
    setNeedsDisplay();
}

void PopUpMenuView::trackMouse(Point inWindow) { setHighlighted(itemAtPoint(convertPointFromView(inWindow, nullptr))); }

bool PopUpMenuView::pickAt(Point inWindow)
{
    const int index = itemAtPoint(convertPointFromView(inWindow, nullptr));
    if (index < 0 || !m_owner)
        return false;
    RefPtr<PopUpButton> owner(m_owner);
    owner->menuDidPick(index);
    return true;
}

void PopUpMenuView::mouseDown(const Event& event)
{
    RefPtr<PopUpMenuView> keep(this);
    const Point local = convertPointFromView(event.locationInWindow(), nullptr);
    m_pressInside = PointInRect(local, m_menuRect);
    if (!m_pressInside) {
        if (m_owner)
            RefPtr<PopUpButton>(m_owner)->closeMenu();
        else
            removeFromSuperview();
        return;
    }
    trackMouse(event.locationInWindow());
}

void PopUpMenuView::mouseDragged(const Event& event)
{
    if (m_pressInside)
        trackMouse(event.locationInWindow());
}

void PopUpMenuView::mouseUp(const Event& event)
{
    if (!m_pressInside)
        return;
    m_pressInside = false;
    pickAt(event.locationInWindow());
}

void PopUpMenuView::mouseMoved(const Event& event) { trackMouse(event.locationInWindow()); }

void PopUpMenuView::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context || !m_owner)
        return;
    const Rect box = m_menuRect;
    // A soft shadow below and to the right lifts the menu off the window.
    for (int i = 3; i >= 1; --i) {
        context->setFillColor(Color::colorWithCalibratedWhiteAlpha(0, 0.07f));
        context->fillRect({ box.minX() + float(i), box.minY() - float(i), box.width(), box.height() });
    }
    context->setFillColor(Color::whiteColor());
    context->fillRect(box);
    context->setStrokeColor(Color::controlBorderColor());
    context->strokeRect({ box.minX() + 0.5f, box.minY() + 0.5f, box.width() - 1, box.height() - 1 }, 1);

    const Font& font = m_owner->font();
    for (int i = firstListed(); i < m_owner->numberOfItems(); ++i) {
        const Rect row = rectOfItem(i);
        const bool lit = i == m_highlighted;
        if (lit) {
            context->setFillColor(Color::selectedMenuItemColor());
            context->fillRect({ row.minX() + 1, row.minY(), row.width() - 2, row.height() });
        }
        const Color color = lit ? Color::whiteColor() : Color::controlTextColor();
        if (i == m_owner->indexOfSelectedItem() && !m_owner->pullsDown()) {
            const TextLayout mark(kCheckMark, font, kMarkWidth, LineBreakByClipping, true);
            mark.draw(
                *context, { row.minX() + 4, row.minY(), kMarkWidth, row.height() }, TextAlignmentLeft, color, true);
        }
        const Rect titleBox { row.minX() + kMarkWidth + 4, row.minY(), row.width() - kMarkWidth - 8, row.height() };
        const TextLayout title(m_owner->itemTitleAtIndex(i), font, titleBox.width(), LineBreakByTruncatingTail, true);
        title.draw(*context, titleBox, TextAlignmentLeft, color, true);
    }
}

} // namespace kit
