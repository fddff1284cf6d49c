// Pop-up buttons: the item list, opening the menu, choosing with a second click or a drag,
// and closing without a choice.
#include "kit/PopUpButton.h"
#include "kit/PopUpMenuView.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

namespace {

using kit::EventType;
using kit::PopUpButton;
using kit::RefPtr;

TEST(PopUpItems, AddingSelectingAndRemovingFollowThePlatformsRules)
{
    auto popup = PopUpButton::create({ 0, 0, 110, 24 });
    EXPECT_EQ(popup->indexOfSelectedItem(), -1);
    EXPECT_EQ(popup->titleOfSelectedItem(), "");
    popup->addItemsWithTitles({ "Normal", "Fixed Ratio", "Fixed Size" });
    EXPECT_EQ(popup->numberOfItems(), 3);
    EXPECT_EQ(popup->indexOfSelectedItem(), 0); // the first item added is chosen
    popup->selectItemAtIndex(2);
    EXPECT_EQ(popup->titleOfSelectedItem(), "Fixed Size");
    popup->selectItemAtIndex(3); // out of range: ignored
    popup->selectItemAtIndex(-2);
    EXPECT_EQ(popup->indexOfSelectedItem(), 2);

    popup->addItemWithTitle("Normal"); // an existing title moves to the end
    EXPECT_EQ(popup->itemTitles(), (std::vector<std::string> { "Fixed Ratio", "Fixed Size", "Normal" }));
    EXPECT_EQ(popup->titleOfSelectedItem(), "Fixed Size"); // the choice follows its item

    popup->removeItemAtIndex(0);
    EXPECT_EQ(popup->indexOfSelectedItem(), 0);
    EXPECT_EQ(popup->titleOfSelectedItem(), "Fixed Size");
    popup->removeItemWithTitle("Fixed Size");
    EXPECT_EQ(popup->titleOfSelectedItem(), "Normal");
    popup->selectItemAtIndex(-1);
    EXPECT_EQ(popup->indexOfSelectedItem(), -1);
    popup->removeAllItems();
    EXPECT_EQ(popup->numberOfItems(), 0);
    EXPECT_EQ(popup->itemTitleAtIndex(0), "");
}

// The marquee panel's type pop-up, 110 x 24 at (339, 100) in a window, with its action.
class TypePopUp : public ::testing::Test {
protected:
    void SetUp() override
    {
        window = kit::Window::create({ 0, 0, 500, 200 });
        popup = PopUpButton::create({ 339, 100, 110, 24 });
        popup->addItemsWithTitles({ "Normal", "Fixed Ratio", "Fixed Size" });
        popup->setAction([this](kit::Object* sender) {
            ++actions;
            chosen.push_back(static_cast<PopUpButton*>(sender)->indexOfSelectedItem());
        });
        window->contentView()->addSubview(popup.get());
    }
    // The middle of an item's row in window coordinates.
    kit::Point itemCentre(int index)
    {
        const kit::Rect row = popup->menuView()->rectOfItem(index);
        return popup->menuView()->convertPointToView(
            { row.minX() + row.width() / 2, row.minY() + row.height() / 2 }, nullptr);
    }

    RefPtr<kit::Window> window;
    RefPtr<PopUpButton> popup;
    int actions = 0;
    std::vector<int> chosen;
};

TEST_F(TypePopUp, AClickOpensAMenuThatASecondClickChoosesFrom)
{
    uitest::click(*window, { 380, 112 });
    ASSERT_TRUE(popup->isMenuOpen());
    EXPECT_EQ(window->contentView()->subviews().back().get(), popup->menuView()); // on top
    EXPECT_EQ(actions, 0);
    // The chosen item's row lies over the button.
    const kit::Point current = itemCentre(0);
    EXPECT_NEAR(current.y, 100 + 12, 1);

    uitest::click(*window, itemCentre(2));
    EXPECT_FALSE(popup->isMenuOpen());
    EXPECT_EQ(popup->indexOfSelectedItem(), 2);
    EXPECT_EQ(popup->titleOfSelectedItem(), "Fixed Size");
    EXPECT_EQ(chosen, (std::vector<int> { 2 }));
    EXPECT_EQ(window->contentView()->subviews().back().get(), popup.get());
}

TEST_F(TypePopUp, AClickOutsideTheMenuClosesItWithoutAChoice)
{
    popup->selectItemAtIndex(1);
    uitest::click(*window, { 380, 112 });
    ASSERT_TRUE(popup->isMenuOpen());
    uitest::click(*window, { 20, 180 });
    EXPECT_FALSE(popup->isMenuOpen());
    EXPECT_EQ(popup->indexOfSelectedItem(), 1);
    EXPECT_EQ(actions, 0);
}

TEST_F(TypePopUp, PressDragAndReleaseChoosesInOneGesture)
{
    uitest::mouse(*window, EventType::LeftMouseDown, { 380, 112 });
    ASSERT_TRUE(popup->isMenuOpen());
    const kit::Point target = itemCentre(1);
    uitest::mouse(*window, EventType::LeftMouseDragged, target);
    EXPECT_EQ(popup->menuView()->highlightedIndex(), 1);
    uitest::mouse(*window, EventType::LeftMouseUp, target);
    EXPECT_FALSE(popup->isMenuOpen());
    EXPECT_EQ(chosen, (std::vector<int> { 1 }));
}

TEST_F(TypePopUp, TheOpenMenuIsVisibleInAScreenshotWithTheItemUnderThePointerLit)
{
    const uitest::Pixel background = uitest::pixelAtPoint(*window->renderImage(), 380, 60);
    uitest::click(*window, { 380, 112 });
    const kit::Point second = itemCentre(1);
    window->sendEvent(kit::Event::mouse(EventType::MouseMoved, second));
    EXPECT_EQ(popup->menuView()->highlightedIndex(), 1);
    auto image = window->renderImage();
    // Right of the titles, an unlit row is the menu's white and the lit row the selection
    // colour; both differ from the window behind.
    const auto rowEnd = [&](int index) {
        const kit::Rect row = popup->menuView()->rectOfItem(index);
        const kit::Point p = popup->menuView()->convertPointToView({ row.maxX() - 4, row.minY() + 10 }, nullptr);
        return uitest::pixelAtPoint(*image, int(p.x), int(p.y));
    };
    EXPECT_EQ(rowEnd(2), (uitest::Pixel { 255, 255, 255, 255 }));
    EXPECT_GT(rowEnd(1).b, rowEnd(1).r + 80);
    EXPECT_NE(rowEnd(2), background);
    // The titles are drawn: dark ink inside the unlit row.
    const kit::Rect row = popup->menuView()->rectOfItem(2);
    int dark = 0;
    for (int x = int(row.minX()); x < int(row.maxX()); ++x)
        for (int y = int(row.minY()); y < int(row.maxY()); ++y)
            dark += uitest::pixelAtPoint(*image, x, y).r < 100;
    EXPECT_GT(dark, 20);
}

TEST_F(TypePopUp, ADisabledOrEmptyPopUpDoesNotOpen)
{
    popup->setEnabled(false);
    uitest::click(*window, { 380, 112 });
    EXPECT_FALSE(popup->isMenuOpen());
    popup->setEnabled(true);
    popup->removeAllItems();
    uitest::click(*window, { 380, 112 });
    EXPECT_FALSE(popup->isMenuOpen());
}

TEST_F(TypePopUp, APopUpThatGoesAwayTakesItsMenuWithIt)
{
    uitest::click(*window, { 380, 112 });
    ASSERT_TRUE(popup->isMenuOpen());
    popup->removeFromSuperview();
    popup = nullptr;
    for (const auto& view : window->contentView()->subviews())
        EXPECT_EQ(dynamic_cast<kit::PopUpMenuView*>(view.get()), nullptr);
    uitest::click(*window, { 380, 60 }); // nothing left to answer it
}

TEST_F(TypePopUp, TheMenuStaysInsideTheWindow)
{
    popup->setFrameOrigin({ 440, 2 });
    popup->selectItemAtIndex(0); // would hang the menu below the window's bottom edge
    uitest::click(*window, { 450, 10 });
    ASSERT_TRUE(popup->isMenuOpen());
    const kit::Rect menu = popup->menuView()->menuRect();
    EXPECT_GE(menu.minX(), 0);
    EXPECT_LE(menu.maxX(), 500);
    EXPECT_GE(menu.minY(), 0);
    EXPECT_LE(menu.maxY(), 200);
}

} // namespace
