// PopUpButton: a button that shows the chosen one of several items and a menu to choose from.
#pragma once

#include "kit/Control.h"

#include <string>
#include <vector>

namespace kit {

class PopUpMenuView;

/// A pop-up button. A click opens its menu over the window's content (the chosen item
/// under the pointer); a second click on an item chooses it, sends the action and closes the
/// menu, and a click outside the menu closes it and chooses nothing. Pressing, dragging to an
/// item and releasing there chooses in one gesture. A pull-down button always shows its first
/// item as its title and lists the others.
class PopUpButton : public Control {
    KIT_MAKEABLE
public:
    static RefPtr<PopUpButton> create(const Rect& frame, bool pullsDown = false);

    bool pullsDown() const { return m_pullsDown; }
    void setPullsDown(bool pullsDown);

    /// Adds an item at the end; an item with the same title is taken out first. The first
    /// item added to an empty pop-up becomes the chosen one.
    void addItemWithTitle(const std::string& title);
    void addItemsWithTitles(const std::vector<std::string>& titles);
    /// Inserts at `index` (clamped to the ends); an item with the same title is taken out first.
    void insertItemWithTitleAtIndex(const std::string& title, int index);
    /// Out-of-range indexes and unknown titles are ignored.
    void removeItemAtIndex(int index);
    void removeItemWithTitle(const std::string& title);
    void removeAllItems();

    int numberOfItems() const { return int(m_items.size()); }
    const std::vector<std::string>& itemTitles() const { return m_items; }
    /// "" for an index out of range.
    std::string itemTitleAtIndex(int index) const;
    /// -1 when there is none.
    int indexOfItemWithTitle(const std::string& title) const;

    /// -1 chooses nothing; other indexes out of range are ignored. Sends no action.
    void selectItemAtIndex(int index);
    void selectItemWithTitle(const std::string& title);
    int indexOfSelectedItem() const { return m_selected; }
    /// "" when nothing is chosen.
    std::string titleOfSelectedItem() const { return itemTitleAtIndex(m_selected); }

    bool isMenuOpen() const { return m_menu.get() != nullptr; }
    PopUpMenuView* menuView() const { return m_menu.get(); }
    /// Opens the menu over the window's content; nothing when disabled, empty or not in a window.
    void openMenu();
    void closeMenu();
    /// A person chose `index` in the menu: choose it, close the menu, send the action.
    void menuDidPick(int index);

    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event& event) override;
    void drawRect(const Rect& dirty) override;

protected:
    explicit PopUpButton(const Rect& frame);
    ~PopUpButton() override;

private:
    std::vector<std::string> m_items;
    int m_selected = -1;
    bool m_pullsDown = false;
    RefPtr<PopUpMenuView> m_menu;
    bool m_pressOpenedMenu = false;
    bool m_movedOffButton = false;
};

} // namespace kit
