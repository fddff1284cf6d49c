// The lasso and brush options panels as a person uses them.
#include "tests/selection/OptionBarTestSupport.h"

namespace {

using optionbar::showsImage;

class LassoPanel : public optionbar::OptionBarTest {
protected:
    void SetUp() override
    {
        OptionBarTest::SetUp();
        settle();
        clickTool(2);
        panel = lasso();
        ASSERT_NE(panel, nullptr);
    }
    kit::Button* modeButton(int mode) const { return dynamic_cast<kit::Button*>(panel->viewWithTag(101 + mode)); }

    PolygonSelectionOptions* panel = nullptr;
};

TEST_F(LassoPanel, HasTheMarqueeFeatherGroupAndNothingMore)
{
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");
    EXPECT_EQ(panel->subviews().size(), 9u);
    EXPECT_EQ(panel->viewWithTag(300), nullptr);
    EXPECT_TRUE(showsImage(modeButton(0), "selection_default2.png"));
    EXPECT_TRUE(showsImage(modeButton(1), "selection_add.png"));
}

TEST_F(LassoPanel, TypedFeathersAreClampedAndShownWithOneDecimal)
{
    typeInto(panel->featherText(), "-5");
    EXPECT_EQ(panel->feather(), 0.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");

    typeInto(panel->featherText(), "99.96");
    EXPECT_EQ(panel->feather(), 99.96f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 100.0 Pixels");

    typeInto(panel->featherText(), "250");
    EXPECT_EQ(panel->feather(), 100.0f);

    typeInto(panel->featherText(), "12", /*escape=*/true);
    EXPECT_EQ(panel->feather(), 100.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 100.0 Pixels");
}

TEST_F(LassoPanel, TheSliderOpensAtTheFeatherAndClosesAgain)
{
    typeInto(panel->featherText(), "33");
    clickTag(*panel, 201);
    auto* slider = dynamic_cast<kit::Slider*>(panel->viewWithTag(202));
    ASSERT_NE(slider, nullptr);
    EXPECT_FALSE(slider->isHidden());
    EXPECT_EQ(slider->doubleValue(), 33.0);
    dragKnobPast(*slider, true);
    EXPECT_EQ(panel->feather(), 100.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 100.0 Pixels");
    clickTag(*panel, 203);
    EXPECT_TRUE(slider->isHidden());
    EXPECT_FALSE(panel->viewWithTag(201)->isHidden());
}

class BrushPanel : public optionbar::OptionBarTest {
protected:
    void SetUp() override
    {
        OptionBarTest::SetUp();
        settle();
        clickTool(3);
        panel = brush();
        ASSERT_NE(panel, nullptr);
    }
    kit::Button* modeButton(int mode) const { return dynamic_cast<kit::Button*>(panel->viewWithTag(101 + mode)); }

    BrushSelectionOptions* panel = nullptr;
};

TEST_F(BrushPanel, StartsAtRadius2Point5WithTheKnobThere)
{
    EXPECT_EQ(panel->getRadius(), 2.5f);
    kit::Slider* slider = panel->radiusSlider();
    EXPECT_FALSE(slider->isHidden());
    EXPECT_EQ(slider->doubleValue(), 2.5);
    EXPECT_EQ(slider->minValue(), -2.0);
    EXPECT_EQ(slider->maxValue(), 5.0);
    EXPECT_TRUE(showsImage(modeButton(0), "selection_default2.png"));
}

TEST_F(BrushPanel, TheKnobsEndsGiveTheSlidersLimitsUnchanged)
{
    dragKnobPast(*panel->radiusSlider(), false);
    EXPECT_EQ(panel->getRadius(), -2.0f);
    dragKnobPast(*panel->radiusSlider(), true);
    EXPECT_EQ(panel->getRadius(), 5.0f);
}

TEST_F(BrushPanel, SetRadiusStoresWhatItIsGivenAndTheKnobStaysOnTheTrack)
{
    panel->setRadius(9.5f);
    EXPECT_EQ(panel->getRadius(), 9.5f);
    EXPECT_EQ(panel->radiusSlider()->doubleValue(), 5.0);
}

TEST_F(BrushPanel, AddPressedTwiceIsDoneOnceAndServesTheEraseToolToo)
{
    click(modeButton(1));
    const kit::Image* pressed = modeButton(1)->image();
    click(modeButton(1));
    EXPECT_EQ(modeButton(1)->image(), pressed); // nothing redone
    EXPECT_EQ(panel->selectionMode(), 1);
    clickTool(4);
    EXPECT_TRUE(showsImage(modeButton(1), "selection_add2.png"));
    EXPECT_TRUE(showsImage(modeButton(0), "selection_default.png"));
}

} // namespace
