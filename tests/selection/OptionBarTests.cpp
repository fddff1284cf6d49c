// The option bar: its tool buttons, the deferred first switch, and which panel each switch
// builds, keeps or carries the selection mode into.
#include "tests/selection/OptionBarTestSupport.h"

#include <array>

namespace {

using optionbar::showsImage;

constexpr std::array<const char*, 5> kPlain
    = { "rectangle.png", "ellipse.png", "polygon.png", "brush.png", "eraser.png" };
constexpr std::array<const char*, 5> kPressed
    = { "rectangle2.png", "ellipse2.png", "polygon2.png", "brush2.png", "eraser2.png" };

class OptionBar : public optionbar::OptionBarTest {
protected:
    /// Whether exactly the tool `tool`'s button shows pressed.
    testing::AssertionResult pressedTool(int tool) const
    {
        for (int n = 0; n < 5; ++n) {
            auto shown = showsImage(bar().toolButton(n), n == tool ? kPressed[n] : kPlain[n]);
            if (!shown)
                return shown << " (tool " << n << ")";
        }
        return testing::AssertionSuccess();
    }
    /// The panels that are subviews of the bar.
    std::vector<kit::View*> attachedPanels() const
    {
        std::vector<kit::View*> panels;
        for (const auto& child : bar().subviews()) {
            kit::View* v = child.get();
            if (dynamic_cast<RectangleSelectionOptions*>(v) || dynamic_cast<PolygonSelectionOptions*>(v)
                || dynamic_cast<BrushSelectionOptions*>(v))
                panels.push_back(v);
        }
        return panels;
    }
};

TEST_F(OptionBar, ImagesResolveFromTheApplicationTreeAndPressedDiffersFromPlain)
{
    for (std::size_t n = 0; n < kPlain.size(); ++n) {
        const kit::Image* plain = myLibraryImageNamed(kPlain[n]);
        const kit::Image* pressed = myLibraryImageNamed(kPressed[n]);
        ASSERT_NE(plain, nullptr) << kPlain[n];
        ASSERT_NE(pressed, nullptr) << kPressed[n];
        EXPECT_NE(plain->rgba(), pressed->rgba()) << kPlain[n];
    }
}

TEST_F(OptionBar, RightAfterConstructionTheRectangleIsPressedAndTheMarqueePanelShown)
{
    EXPECT_TRUE(pressedTool(0));
    EXPECT_EQ(bar().selectionTool(), 0);
    EXPECT_EQ(attachedPanels(), std::vector<kit::View*> { marquee() });
    EXPECT_EQ(marquee()->frame(), kit::Rect(262, 0, 1200 - 229, 53));
    ASSERT_NE(brush(), nullptr);
    EXPECT_EQ(brush()->superview(), nullptr); // made, but not attached
    EXPECT_EQ(brush()->frame(), kit::Rect(262, 0, 1200 - 229, 53));
    EXPECT_EQ(lasso(), nullptr);
    EXPECT_EQ(optionsOfTool(0), nullptr); // the overlay hears of it only at the deferred switch
}

TEST_F(OptionBar, TheDeferredFirstSwitchHandsTheRectangleToolAFreshMarqueePanel)
{
    kit::RefPtr<RectangleSelectionOptions> first = marquee();
    kit::RunLoop::main().advance(0.049);
    EXPECT_EQ(optionsOfTool(0), nullptr);
    kit::RunLoop::main().advance(0.001);
    ASSERT_NE(marquee(), nullptr);
    EXPECT_NE(marquee(), first.get());
    EXPECT_EQ(optionsOfTool(0), marquee());
    EXPECT_EQ(shownTool(), overlay->toolView(0));
    EXPECT_EQ(first->superview(), nullptr);
    EXPECT_EQ(first->refCount(), 1); // only this test still holds it
    EXPECT_EQ(attachedPanels(), std::vector<kit::View*> { marquee() });
}

TEST_F(OptionBar, TheDeferredSwitchOutlivingItsOverlayTellsNobody)
{
    // The overlay's own delayed call keeps it for a second; without it the overlay goes before
    // the bar's first switch, which must then leave the freed overlay alone.
    kit::RefPtr<SelectionOptionsView> keep = overlay->optionView();
    kit::RunLoop::main().cancelPerforms(overlay.get());
    overlay->removeFromSuperview();
    overlay.clear();
    kit::RunLoop::main().advance(0.05);
    EXPECT_EQ(keep->superview(), nullptr);
    EXPECT_NE(keep->rectangleSelectionOptions(), nullptr);
}

TEST_F(OptionBar, PressingTheActiveToolsButtonSendsNothing)
{
    settle();
    RectangleSelectionOptions* panel = marquee();
    overlay->toolView(0)->setOptions(nullptr);
    clickTool(0);
    EXPECT_EQ(optionsOfTool(0), nullptr);
    EXPECT_EQ(marquee(), panel);
    EXPECT_TRUE(pressedTool(0));
}

TEST_F(OptionBar, EachToolButtonShowsItsToolWithItsPanel)
{
    settle();
    for (int tool : { 1, 2, 3, 4, 0 }) {
        clickTool(tool);
        EXPECT_EQ(bar().selectionTool(), tool);
        EXPECT_TRUE(pressedTool(tool)) << tool;
        EXPECT_EQ(shownTool(), overlay->toolView(tool)) << tool;
        ASSERT_EQ(attachedPanels().size(), 1u) << tool;
        EXPECT_EQ(optionsOfTool(tool), attachedPanels()[0]) << tool;
    }
    clickTool(2);
    EXPECT_NE(dynamic_cast<PolygonSelectionOptions*>(attachedPanels()[0]), nullptr);
    EXPECT_EQ(marquee(), nullptr); // released at the switch
}

TEST_F(OptionBar, RectangleToEllipseResetsTheMarqueeValuesButKeepsTheMode)
{
    settle();
    marquee()->setFeather(30);
    marquee()->setSelectionType(RectangleSelectionOptions::kTypeFixedSize);
    click(marquee()->viewWithTag(102)); // Add
    clickTool(1);
    RectangleSelectionOptions* panel = marquee();
    EXPECT_EQ(optionsOfTool(1), panel);
    EXPECT_EQ(panel->feather(), 0.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");
    EXPECT_EQ(panel->SelectionType(), RectangleSelectionOptions::kTypeNormal);
    EXPECT_EQ(panel->selectionMode(), 1);
    EXPECT_TRUE(showsImage(dynamic_cast<kit::Button*>(panel->viewWithTag(102)), "selection_add2.png"));
    EXPECT_TRUE(showsImage(dynamic_cast<kit::Button*>(panel->viewWithTag(101)), "selection_default.png"));
}

TEST_F(OptionBar, AddIsCarriedIntoAFreshLassoPanel)
{
    settle();
    click(marquee()->viewWithTag(102));
    clickTool(2);
    ASSERT_NE(lasso(), nullptr);
    EXPECT_EQ(lasso()->selectionMode(), 1);
    EXPECT_TRUE(showsImage(dynamic_cast<kit::Button*>(lasso()->viewWithTag(102)), "selection_add2.png"));
    EXPECT_EQ(lasso()->feather(), 0.0f);
    EXPECT_EQ(optionsOfTool(2), lasso());

    // And out of the lasso into the brush panel, which had New.
    clickTool(3);
    EXPECT_EQ(lasso(), nullptr);
    EXPECT_EQ(brush()->selectionMode(), 1);
}

TEST_F(OptionBar, BrushToEraseKeepsTheSamePanelAndRadius)
{
    settle();
    clickTool(3);
    BrushSelectionOptions* panel = brush();
    EXPECT_EQ(optionsOfTool(3), panel);
    panel->setRadius(4.25f);
    click(panel->viewWithTag(102));
    clickTool(4);
    EXPECT_EQ(brush(), panel);
    EXPECT_EQ(optionsOfTool(4), panel);
    EXPECT_EQ(attachedPanels(), std::vector<kit::View*> { panel });
    EXPECT_EQ(panel->getRadius(), 4.25f);
    EXPECT_EQ(panel->selectionMode(), 1);
    EXPECT_TRUE(showsImage(dynamic_cast<kit::Button*>(panel->viewWithTag(102)), "selection_add2.png"));
}

TEST_F(OptionBar, BrushRectangleBrushKeepsTheRadius)
{
    settle();
    clickTool(3);
    dragKnobPast(*brush()->radiusSlider(), false);
    const float radius = brush()->getRadius();
    ASSERT_EQ(radius, -2.0f);
    clickTool(0);
    EXPECT_EQ(brush()->superview(), nullptr);
    clickTool(3);
    EXPECT_EQ(brush()->getRadius(), radius);
    EXPECT_EQ(brush()->radiusSlider()->floatValue(), radius);
}

TEST_F(OptionBar, AWidenedBarBuildsTheNextPanelFromItsNewWidth)
{
    settle();
    window->setFrame(window->frameRectForContentRect({ 0, 0, 1500, 900 }));
    ASSERT_EQ(bar().frame().width(), 1500);
    EXPECT_EQ(marquee()->frame().width(), 1500 - 229); // attached panels follow the bar
    clickTool(2);
    EXPECT_EQ(lasso()->frame(), kit::Rect(262, 0, 1500 - 229, 53));
    clickTool(1);
    EXPECT_EQ(marquee()->frame(), kit::Rect(262, 0, 1500 - 229, 53));
}

TEST_F(OptionBar, AToolNumberOutsideTheFiveLeavesTheBarWithoutPanel)
{
    settle();
    clickTool(3);
    bar().setSelectionToolFromTool(7, 3);
    EXPECT_TRUE(attachedPanels().empty());
    EXPECT_TRUE(pressedTool(-1));
    EXPECT_EQ(shownTool(), overlay->toolView(3)); // the overlay was not told
    EXPECT_NE(brush(), nullptr); // kept for later

    bar().setSelectionToolFromTool(2, 7); // nothing to carry from: New
    EXPECT_EQ(lasso()->selectionMode(), 0);
    kit::RefPtr<kit::View> stranger = kit::View::create({});
    bar().changeSelectionTool(stranger.get());
    EXPECT_EQ(bar().selectionTool(), 2);
}

TEST_F(OptionBar, PressesOnTheBarStopThere)
{
    settle();
    uitest::click(*window, { 250, 860 }); // bar background, between the buttons and the panel
    uitest::click(*window, { 1150, 860 }); // the marquee panel's empty right part
    uitest::click(*window, { 30, 876 }); // the tool-family icon
    EXPECT_EQ(host->presses, 0);
    overlay->hideOptionView(true); // without the bar the same press goes through to the host
    uitest::click(*window, { 250, 860 });
    EXPECT_EQ(host->presses, 1);
}

TEST_F(OptionBar, TeardownReleasesEveryPanel)
{
    kit::RunLoop::main().advance(1.0); // past every delayed call that holds the overlay or the bar
    clickTool(3);
    clickTool(2);
    kit::RefPtr<BrushSelectionOptions> kept = brush();
    kit::RefPtr<PolygonSelectionOptions> shown = lasso();
    overlay->removeFromSuperview();
    overlay.clear();
    EXPECT_EQ(kept->refCount(), 1);
    EXPECT_EQ(shown->refCount(), 1);
    EXPECT_EQ(shown->superview(), nullptr);
}

} // namespace
