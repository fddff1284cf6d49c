// PopUpButton: the item list, the chosen item, and opening and answering the menu.
#include "kit/PopUpButton.h"

#include "kit/BezierPath.h"
#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/PopUpMenuView.h"
#include "kit/TextLayout.h"
#include "kit/Window.h"

#include <algorithm>

namespace kit {

namespace {

// The part at the right that holds the arrows.
constexpr float kArrowWidth = 18;

} // namespace

RefPtr<PopUpButton> PopUpButton::create(const Rect& frame, bool pullsDown)
{
    RefPtr<PopUpButton> button = make<PopUpButton>(frame);
    button->setPullsDown(pullsDown);
    return button;
}

PopUpButton::PopUpButton(const Rect& frame) : Control(frame) {}

PopUpButton::~PopUpButton()
{
    if (m_menu)
        m_menu->detachOwner();
}

void PopUpButton::setPullsDown(bool pullsDown)
{
    m_pullsDown = pullsDown;
    setNeedsDisplay();
}

void PopUpButton::addItemWithTitle(const std::string& title) { insertItemWithTitleAtIndex(title, numberOfItems()); }

void PopUpButton::addItemsWithTitles(const std::vector<std::string>& titles)
{
    for (const std::string& title : titles)
        addItemWithTitle(title);
}

void PopUpButton::insertItemWithTitleAtIndex(const std::string& title, int index)
{
    const std::string chosen = titleOfSelectedItem();
    const bool hadChoice = m_selected >= 0;
    removeItemWithTitle(title);
    index = std::clamp(index, 0, numberOfItems());
    m_items.insert(m_items.begin() + index, title);
    m_selected = hadChoice ? indexOfItemWithTitle(chosen) : (m_items.size() == 1 ? 0 : -1);
    setNeedsDisplay();
}

void PopUpButton::removeItemAtIndex(int index)
{
    if (index < 0 || index >= numberOfItems())
        return;
    m_items.erase(m_items.begin() + index);
    if (index < m_selected)
        --m_selected;
    else if (index == m_selected)
        m_selected = m_items.empty() ? -1 : 0;
    setNeedsDisplay();
}

void PopUpButton::removeItemWithTitle(const std::string& title) { removeItemAtIndex(indexOfItemWithTitle(title)); }

void PopUpButton::removeAllItems()
{
    m_items.clear();
    m_selected = -1;
    closeMenu();
    setNeedsDisplay();
}

std::string PopUpButton::itemTitleAtIndex(int index) const
{
    return index >= 0 && index < numberOfItems() ? m_items[std::size_t(index)] : std::string();
}

int PopUpButton::indexOfItemWithTitle(const std::string& title) const
{
    const auto it = std::find(m_items.begin(), m_items.end(), title);
    return it == m_items.end() ? -1 : int(it - m_items.begin());
}

void PopUpButton::selectItemAtIndex(int index)
{
    if (index < -1 || index >= numberOfItems())
        return;
    m_selected = index;
    setNeedsDisplay();
}

void PopUpButton::selectItemWithTitle(const std::string& title)
{
    const int index = indexOfItemWithTitle(title);
    if (index >= 0)
        selectItemAtIndex(index);
}

void PopUpButton::openMenu()
{
    Window* window = this->window();
    if (m_menu || !isEnabled() || m_items.empty() || !window || !window->contentView())
        return;
    m_menu = PopUpMenuView::showFor(this, window->contentView());
    setNeedsDisplay();
}

void PopUpButton::closeMenu()
{
    if (RefPtr<PopUpMenuView> menu = std::move(m_menu))
        menu->detachOwner();
    setNeedsDisplay();
}

void PopUpButton::menuDidPick(int index)
{
    RefPtr<PopUpButton> keep(this);
    closeMenu();
    if (index < 0 || index >= numberOfItems())
        return;
    selectItemAtIndex(index);
    sendAction();
}

void PopUpButton::mouseDown(const Event&)
{
    if (!isEnabled())
        return;
    m_pressOpenedMenu = !m_menu;
    m_movedOffButton = false;
    openMenu();
    if (!m_menu)
        m_pressOpenedMenu = false;
}

void PopUpButton::mouseDragged(const Event& event)
{
    if (!m_pressOpenedMenu || !m_menu)
        return;
    if (!boundsContain(localPoint(event)))
        m_movedOffButton = true;
    m_menu->trackMouse(event.locationInWindow());
}

void PopUpButton::mouseUp(const Event& event)
{
    if (!m_pressOpenedMenu || !m_menu)
        return;
    m_pressOpenedMenu = false;
    // A press-drag-release chooses where it ends; a plain click leaves the menu open for the
    // second click.
    if (m_movedOffButton)
        m_menu->pickAt(event.locationInWindow());
}

void PopUpButton::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect b = bounds();
    const Rect face { b.minX() + 0.5f, b.minY() + 1.5f, b.width() - 1, b.height() - 3 };
    context->setFillColor(m_menu ? Color::colorWithCalibratedWhiteAlpha(0.85f, 1) : Color::controlColor());
    context->fillRect(face);
    context->setStrokeColor(Color::controlBorderColor());
    context->strokeRect(face, 1);

    const float alpha = isEnabled() ? 1.0f : 0.5f;
    // Two small triangles, up and down, in the arrow part.
    const float cx = face.maxX() - kArrowWidth / 2;
    const float cy = face.minY() + face.height() / 2;
    RefPtr<BezierPath> arrows = BezierPath::bezierPath();
    arrows->moveToPoint({ cx - 3.5f, cy + 1.5f });
    arrows->lineToPoint({ cx + 3.5f, cy + 1.5f });
    arrows->lineToPoint({ cx, cy + 6 });
    arrows->closePath();
    arrows->moveToPoint({ cx - 3.5f, cy - 1.5f });
    arrows->lineToPoint({ cx + 3.5f, cy - 1.5f });
    arrows->lineToPoint({ cx, cy - 6 });
    arrows->closePath();
    context->setFillColor(Color::colorWithCalibratedWhiteAlpha(0.25f, alpha));
    context->fillPath(*arrows);

    const std::string title = m_pullsDown ? itemTitleAtIndex(0) : titleOfSelectedItem();
    const Rect titleBox { face.minX() + 6, face.minY(), std::max(0.0f, face.width() - kArrowWidth - 8), face.height() };
    const TextLayout layout(title, font(), titleBox.width(), LineBreakByTruncatingTail, true);
    layout.draw(*context, titleBox, TextAlignmentLeft,
        isEnabled() ? Color::controlTextColor() : Color::disabledControlTextColor(), true);
}

} // namespace kit
