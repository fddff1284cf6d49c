// PopUpMenuView: the open menu of a pop-up button, laid over the whole window content.
#pragma once

#include "kit/View.h"

namespace kit {

class PopUpButton;

/// Covers the window's content view so that the next click, wherever it lands, reaches the
/// menu: on an item it chooses it (at the release), elsewhere it closes the menu. Only the
/// menu's box is drawn; the item under the pointer is highlighted.
class PopUpMenuView : public View {
    KIT_MAKEABLE
public:
    /// Space around the rows and the height of one row.
    static constexpr float kPadding = 4;
    static constexpr float kRowHeight = 20;

    /// A menu for `owner` covering `container`, added on top of it.
    static RefPtr<PopUpMenuView> showFor(PopUpButton* owner, View* container);

    PopUpButton* owner() const { return m_owner; }
    /// The pop-up is going away: the menu forgets it and leaves the view tree.
    void detachOwner();

    /// The menu's box, in this view's coordinates.
    Rect menuRect() const { return m_menuRect; }
    /// The row of an item (pull-downs do not list their first item); empty when not listed.
    Rect rectOfItem(int index) const;
    /// The item under a point of this view, or -1.
    int itemAtPoint(Point local) const;
    int highlightedIndex() const { return m_highlighted; }

    /// Highlights the item under a window location.
    void trackMouse(Point inWindow);
    /// Chooses the item under a window location; false when there is none.
    bool pickAt(Point inWindow);

    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event& event) override;
    void mouseMoved(const Event& event) override;
    void drawRect(const Rect& dirty) override;

protected:
    explicit PopUpMenuView(const Rect& frame) : View(frame) {}

private:
    int firstListed() const;
    void layOut();
    void setHighlighted(int index);

    PopUpButton* m_owner = nullptr;
    Rect m_menuRect;
    int m_highlighted = -1;
    bool m_pressInside = false;
};

} // namespace kit
