// Buttons: the pressed look of momentary-change buttons, the action on release inside, states
// and targets.
#include "kit/Button.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

namespace {

using kit::Button;
using kit::EventType;
using kit::Point;
using kit::RefPtr;
using uitest::ActionLog;
using uitest::Pixel;

RefPtr<kit::Image> solid(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 30 * 30; ++i)
        pixels.insert(pixels.end(), { r, g, b, 255 });
    return kit::Image::imageWithRGBA(30, 30, pixels.data());
}

// A window with one borderless momentary-change button at (80, 20, 30, 30), red normally
// and blue pressed, whose action goes to a log.
class MomentaryButton : public ::testing::Test {
protected:
    void SetUp() override
    {
        window = kit::Window::create({ 0, 0, 200, 100 });
        log = kit::make<ActionLog>(kit::Rect { 0, 0, 1, 1 });
        button = Button::create({ 80, 20, 30, 30 });
        button->setButtonType(kit::MomentaryChangeButton);
        button->setBordered(false);
        button->setImage(solid(255, 0, 0));
        button->setAlternateImage(solid(0, 0, 255));
        button->setTarget(log.get());
        button->setAction(&ActionLog::act);
        window->contentView()->addSubview(button.get());
    }
    Pixel centre() { return uitest::pixelAtPoint(*window->renderImage(), 95, 35); }

    RefPtr<kit::Window> window;
    RefPtr<ActionLog> log;
    RefPtr<Button> button;
};

TEST_F(MomentaryButton, ShowsTheAlternateImageOnlyWhilePressedOverIt)
{
    EXPECT_EQ(centre(), (Pixel { 255, 0, 0, 255 }));
    uitest::mouse(*window, EventType::LeftMouseDown, { 95, 35 });
    EXPECT_TRUE(button->isHighlighted());
    EXPECT_EQ(button->shownImage(), button->alternateImage());
    EXPECT_EQ(centre(), (Pixel { 0, 0, 255, 255 }));
    uitest::mouse(*window, EventType::LeftMouseDragged, { 150, 35 }); // off the button
    EXPECT_FALSE(button->isHighlighted());
    EXPECT_EQ(centre(), (Pixel { 255, 0, 0, 255 }));
    uitest::mouse(*window, EventType::LeftMouseDragged, { 85, 25 }); // back on
    EXPECT_EQ(centre(), (Pixel { 0, 0, 255, 255 }));
    uitest::mouse(*window, EventType::LeftMouseUp, { 85, 25 });
    EXPECT_FALSE(button->isHighlighted());
    EXPECT_EQ(centre(), (Pixel { 255, 0, 0, 255 }));
}

TEST_F(MomentaryButton, SendsItsActionOnReleaseInsideOnly)
{
    uitest::click(*window, { 95, 35 });
    EXPECT_EQ(log->count, 1);
    EXPECT_EQ(log->lastSender, button.get());

    uitest::mouse(*window, EventType::LeftMouseDown, { 95, 35 });
    EXPECT_EQ(log->count, 1); // nothing at the press
    uitest::mouse(*window, EventType::LeftMouseDragged, { 150, 35 });
    uitest::mouse(*window, EventType::LeftMouseUp, { 150, 35 });
    EXPECT_EQ(log->count, 1); // released elsewhere: no action

    uitest::mouse(*window, EventType::LeftMouseDown, { 150, 35 }); // pressed elsewhere
    uitest::mouse(*window, EventType::LeftMouseUp, { 95, 35 });
    EXPECT_EQ(log->count, 1);

    // Edges count as the platform counts them for an unflipped view: the top edge is in.
    uitest::click(*window, { 80, 50 });
    EXPECT_EQ(log->count, 2);
    uitest::click(*window, { 80, 20 });
    EXPECT_EQ(log->count, 2);
}

TEST_F(MomentaryButton, ADisabledButtonNeitherHighlightsNorActsAndDrawsDimmed)
{
    button->setEnabled(false);
    uitest::mouse(*window, EventType::LeftMouseDown, { 95, 35 });
    EXPECT_FALSE(button->isHighlighted());
    uitest::mouse(*window, EventType::LeftMouseUp, { 95, 35 });
    button->performClick();
    EXPECT_EQ(log->count, 0);
    // Half the red image over the grey window: green comes halfway up from nothing.
    const Pixel dimmed = centre();
    EXPECT_GT(dimmed.g, 100);
    EXPECT_LT(dimmed.g, 140);
}

TEST_F(MomentaryButton, AnActionThatTearsDownTheButtonsOwnerIsSafe)
{
    button->setAction([this](kit::Object*) {
        button->removeFromSuperview();
        button = nullptr; // the last outside reference
    });
    uitest::click(*window, { 95, 35 });
    EXPECT_EQ(button, nullptr);
    EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST(ButtonTypes, OnOffButtonsFlipTheirStateBeforeTheActionMomentaryOnesDoNot)
{
    const struct {
        kit::ButtonType type;
        kit::CellStateValue afterOne;
        kit::CellStateValue afterTwo;
    } cases[] = {
        { kit::PushOnPushOffButton, kit::OnState, kit::OffState },
        { kit::ToggleButton, kit::OnState, kit::OffState },
        { kit::SwitchButton, kit::OnState, kit::OffState },
        { kit::RadioButton, kit::OnState, kit::OnState },
        { kit::MomentaryPushInButton, kit::OffState, kit::OffState },
        { kit::MomentaryChangeButton, kit::OffState, kit::OffState },
    };
    for (const auto& c : cases) {
        auto button = Button::create({ 0, 0, 40, 20 });
        button->setButtonType(c.type);
        std::vector<kit::CellStateValue> seen;
        button->setAction([&](kit::Object* sender) { seen.push_back(static_cast<Button*>(sender)->state()); });
        button->performClick();
        button->performClick();
        ASSERT_EQ(seen.size(), 2u);
        EXPECT_EQ(seen[0], c.afterOne) << c.type;
        EXPECT_EQ(seen[1], c.afterTwo) << c.type;
    }
}

TEST(ButtonTypes, AToggleButtonShowsItsAlternateImageWhileOn)
{
    auto button = Button::create({ 0, 0, 30, 30 });
    button->setButtonType(kit::ToggleButton);
    button->setImage(solid(255, 0, 0));
    button->setAlternateImage(solid(0, 255, 0));
    EXPECT_EQ(button->shownImage(), button->image());
    button->setState(kit::OnState);
    EXPECT_EQ(button->shownImage(), button->alternateImage());
}

TEST(ButtonTargets, WithoutATargetTheActionClimbsTheResponderChain)
{
    auto window = kit::Window::create({ 0, 0, 100, 100 });
    auto holder = kit::make<ActionLog>(kit::Rect { 0, 0, 100, 100 });
    auto plain = kit::View::create({ 0, 0, 100, 100 });
    auto button = Button::create({ 10, 10, 40, 20 });
    holder->addSubview(plain.get());
    plain->addSubview(button.get());
    window->contentView()->addSubview(holder.get());
    window->makeFirstResponder(plain.get());
    button->setAction(&ActionLog::act); // no target: the first responder's chain has it
    EXPECT_TRUE(button->sendAction());
    EXPECT_EQ(holder->count, 1);

    button->setTarget(plain.get()); // a target without the method takes nothing
    EXPECT_FALSE(button->sendAction());
    EXPECT_EQ(holder->count, 1);
}

TEST(ButtonDrawing, ABorderedButtonShowsABezelAndItsTitle)
{
    auto button = Button::create({ 0, 0, 80, 24 });
    button->setTitle("Push");
    auto image = button->renderImage();
    // A visible frame at the edges and dark text in the middle.
    const Pixel edge = uitest::pixelAtPoint(*image, 40, 0);
    EXPECT_GT(edge.a, 200);
    EXPECT_LT(edge.r, 200);
    const uitest::Box text = uitest::boxWhere(*image, [](Pixel p) { return p.a > 200 && p.r < 80; });
    ASSERT_FALSE(text.empty);
    EXPECT_GT(text.minX, 20);
    EXPECT_LT(text.maxX, 60);
}

} // namespace
