// The marquee options panel as a person uses it: typing, sliders, the type pop-up and the
// mode buttons, and the values the marquee tools read back.
#include "tests/selection/OptionBarTestSupport.h"

#include <cmath>
#include <limits>

namespace {

using optionbar::showsImage;

class MarqueePanel : public optionbar::OptionBarTest {
protected:
    void SetUp() override
    {
        OptionBarTest::SetUp();
        settle();
        panel = marquee();
        ASSERT_NE(panel, nullptr);
    }
    kit::Size fixedSize() const { return panel->getSelectionFixedSize(); }
    void chooseType(int type) { choose(*typePopUp(*panel), type); }
    kit::Slider& sliderTagged(int tag) const { return *dynamic_cast<kit::Slider*>(panel->viewWithTag(tag)); }

    RectangleSelectionOptions* panel = nullptr;
};

TEST_F(MarqueePanel, AFreshPanelShowsItsDefaults)
{
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");
    EXPECT_EQ(panel->feather(), 0.0f);
    EXPECT_EQ(panel->SelectionType(), RectangleSelectionOptions::kTypeNormal);
    EXPECT_EQ(typePopUp(*panel)->titleOfSelectedItem(), "Normal");
    EXPECT_EQ(typePopUp(*panel)->itemTitles(), (std::vector<std::string> { "Normal", "Fixed Ratio", "Fixed Size" }));
    float width = 0, height = 0;
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(width, 1.0f);
    EXPECT_EQ(height, 2.0f);
    EXPECT_EQ(fixedSize(), (kit::Size { 200, 200 }));
    for (kit::TextField* field : { panel->widthText(), panel->heightText() }) {
        EXPECT_FALSE(field->isEnabled());
        EXPECT_EQ(field->stringValue(), "");
    }
    // Each close button sits on its slider button and, like the slider, starts hidden.
    for (int tag : { 201, 301, 401 }) {
        EXPECT_FALSE(panel->viewWithTag(tag)->isHidden()) << tag;
        EXPECT_TRUE(panel->viewWithTag(tag + 1)->isHidden()) << tag;
        EXPECT_TRUE(panel->viewWithTag(tag + 2)->isHidden()) << tag;
        EXPECT_EQ(panel->viewWithTag(tag + 2)->frame(), panel->viewWithTag(tag)->frame()) << tag;
    }
}

TEST_F(MarqueePanel, ATypedFeatherIsClampedAndWrittenBackInThePanelsFormat)
{
    typeInto(panel->featherText(), "250");
    EXPECT_EQ(panel->feather(), 100.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 100.0 Pixels");
    EXPECT_EQ(panel->featherText()->currentEditor(), nullptr); // Return ended the editing

    typeInto(panel->featherText(), "  12.25 px");
    EXPECT_EQ(panel->feather(), 12.25f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 12.2 Pixels");

    typeInto(panel->featherText(), "-3");
    EXPECT_EQ(panel->feather(), 0.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");
}

TEST_F(MarqueePanel, FixedSizeTextIsReadAsALeadingIntegerAndClamped)
{
    chooseType(RectangleSelectionOptions::kTypeFixedSize);
    ASSERT_EQ(panel->SelectionType(), RectangleSelectionOptions::kTypeFixedSize);
    EXPECT_TRUE(panel->widthText()->isEnabled());
    EXPECT_EQ(panel->widthText()->stringValue(), " 200 Pixels");

    typeInto(panel->widthText(), "abc");
    EXPECT_EQ(fixedSize(), (kit::Size { 1, 200 }));
    EXPECT_EQ(panel->widthText()->stringValue(), " 1 Pixels");

    typeInto(panel->heightText(), "12.9");
    EXPECT_EQ(fixedSize(), (kit::Size { 1, 12 }));
    EXPECT_EQ(panel->heightText()->stringValue(), " 12 Pixels");

    typeInto(panel->widthText(), "99999999999");
    EXPECT_EQ(fixedSize(), (kit::Size { 3000, 12 }));
    EXPECT_EQ(panel->widthText()->stringValue(), " 3000 Pixels");
}

TEST_F(MarqueePanel, RatioTextIsClampedToTheSmallestPart)
{
    chooseType(RectangleSelectionOptions::kTypeFixedRatio);
    EXPECT_EQ(panel->widthText()->stringValue(), " 1.000");
    EXPECT_EQ(panel->heightText()->stringValue(), " 2.000");

    typeInto(panel->widthText(), "0");
    float width = 0, height = 0;
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(width, 0.001f);
    EXPECT_EQ(height, 2.0f);
    EXPECT_EQ(panel->widthText()->stringValue(), " 0.001");

    typeInto(panel->heightText(), "1234.5");
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(height, 999.999f);
    EXPECT_EQ(panel->heightText()->stringValue(), " 999.999");
    EXPECT_EQ(fixedSize(), (kit::Size { 200, 200 })); // the other type's values stay
}

TEST_F(MarqueePanel, EscapeDropsWhatWasTypedAndKeepsTheValue)
{
    typeInto(panel->featherText(), "40");
    typeInto(panel->featherText(), "77", /*escape=*/true);
    EXPECT_EQ(panel->featherText()->currentEditor(), nullptr);
    EXPECT_EQ(panel->feather(), 40.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 40.0 Pixels");

    chooseType(RectangleSelectionOptions::kTypeFixedSize);
    typeInto(panel->heightText(), "5", /*escape=*/true);
    EXPECT_EQ(fixedSize(), (kit::Size { 200, 200 }));
    EXPECT_EQ(panel->heightText()->stringValue(), " 200 Pixels");
}

TEST_F(MarqueePanel, NormalEmptiesAndDisablesTheFieldsButKeepsTheValues)
{
    chooseType(RectangleSelectionOptions::kTypeFixedSize);
    typeInto(panel->widthText(), "640");
    chooseType(RectangleSelectionOptions::kTypeFixedRatio);
    typeInto(panel->heightText(), "3");

    chooseType(RectangleSelectionOptions::kTypeNormal);
    EXPECT_EQ(panel->SelectionType(), RectangleSelectionOptions::kTypeNormal);
    for (kit::TextField* field : { panel->widthText(), panel->heightText() }) {
        EXPECT_FALSE(field->isEnabled());
        EXPECT_EQ(field->stringValue(), "");
        click(field); // a disabled field does not start editing
        EXPECT_EQ(field->currentEditor(), nullptr);
    }
    EXPECT_EQ(fixedSize(), (kit::Size { 640, 200 }));

    chooseType(RectangleSelectionOptions::kTypeFixedSize);
    EXPECT_EQ(panel->widthText()->stringValue(), " 640 Pixels");
    EXPECT_EQ(panel->heightText()->stringValue(), " 200 Pixels");
    chooseType(RectangleSelectionOptions::kTypeFixedRatio);
    EXPECT_EQ(panel->heightText()->stringValue(), " 3.000");
}

TEST_F(MarqueePanel, TheWidthSliderInNormalOpensButChangesNothing)
{
    clickTag(*panel, 301);
    kit::Slider& slider = sliderTagged(302);
    EXPECT_FALSE(slider.isHidden());
    EXPECT_TRUE(panel->viewWithTag(301)->isHidden());
    EXPECT_FALSE(panel->viewWithTag(303)->isHidden());

    dragKnobPast(slider, true);
    EXPECT_EQ(fixedSize(), (kit::Size { 200, 200 }));
    float width = 0, height = 0;
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(width, 1.0f);
    EXPECT_EQ(panel->widthText()->stringValue(), "");

    clickTag(*panel, 303);
    EXPECT_TRUE(slider.isHidden());
    EXPECT_FALSE(panel->viewWithTag(301)->isHidden());
    EXPECT_TRUE(panel->viewWithTag(303)->isHidden());
}

TEST_F(MarqueePanel, TheFeatherSliderOpensAtTheFeatherAndItsRightEndIs100)
{
    typeInto(panel->featherText(), "40");
    clickTag(*panel, 201);
    kit::Slider& slider = sliderTagged(202);
    ASSERT_FALSE(slider.isHidden());
    EXPECT_EQ(slider.doubleValue(), 40.0);
    EXPECT_EQ(slider.minValue(), 0.0);
    EXPECT_EQ(slider.maxValue(), 100.0);

    dragKnobPast(slider, true);
    EXPECT_EQ(panel->feather(), 100.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 100.0 Pixels");
    // A typed value moves the open slider's knob too.
    typeInto(panel->featherText(), "25");
    EXPECT_EQ(slider.doubleValue(), 25.0);
}

TEST_F(MarqueePanel, SizeSlidersTakeTheRangeAndValueOfTheType)
{
    chooseType(RectangleSelectionOptions::kTypeFixedSize);
    clickTag(*panel, 301);
    kit::Slider& width = sliderTagged(302);
    EXPECT_EQ(width.minValue(), 1.0);
    EXPECT_EQ(width.maxValue(), 3000.0);
    EXPECT_EQ(width.doubleValue(), 200.0);
    dragKnobPast(width, false);
    EXPECT_EQ(fixedSize(), (kit::Size { 1, 200 }));
    EXPECT_EQ(panel->widthText()->stringValue(), " 1 Pixels");

    // Both groups open at once; switching the type re-ranges the open sliders.
    clickTag(*panel, 401);
    kit::Slider& height = sliderTagged(402);
    EXPECT_FALSE(width.isHidden());
    chooseType(RectangleSelectionOptions::kTypeFixedRatio);
    EXPECT_EQ(height.minValue(), 0.001);
    EXPECT_EQ(height.maxValue(), 999.999);
    EXPECT_NEAR(height.doubleValue(), 2.0, 1e-6);
    dragKnobPast(height, true);
    float w = 0, h = 0;
    panel->getSelectionRatioHeightRatio(w, h);
    EXPECT_EQ(w, 1.0f);
    EXPECT_EQ(h, 999.999f);
    EXPECT_EQ(panel->heightText()->stringValue(), " 999.999");
}

TEST_F(MarqueePanel, SettersClampEveryValueIntoItsRange)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    panel->setSelectionFixedSize({ 3000.9f, 0.5f });
    EXPECT_EQ(fixedSize(), (kit::Size { 3000, 1 }));
    panel->setSelectionFixedSize({ 12.99f, 2999.99f });
    EXPECT_EQ(fixedSize(), (kit::Size { 12, 2999 }));
    panel->setSelectionFixedSize({ nan, -inf });
    EXPECT_EQ(fixedSize(), (kit::Size { 1, 1 }));

    float width = 0, height = 0;
    panel->setSelectionRatioHeightRatio(1e30f, -4);
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(width, 999.999f);
    EXPECT_EQ(height, 0.001f);
    panel->setSelectionRatioHeightRatio(nan, 0.5f);
    panel->getSelectionRatioHeightRatio(width, height);
    EXPECT_EQ(width, 0.001f);
    EXPECT_EQ(height, 0.5f);

    panel->setFeather(inf);
    EXPECT_EQ(panel->feather(), 100.0f);
    panel->setFeather(nan);
    EXPECT_EQ(panel->feather(), 0.0f);
    EXPECT_EQ(panel->featherText()->stringValue(), " 0.0 Pixels");

    // A type beyond the three leaves the fields as they were.
    panel->setSelectionType(RectangleSelectionOptions::kTypeFixedSize);
    panel->setSelectionType(9);
    EXPECT_EQ(panel->SelectionType(), 9);
    EXPECT_EQ(panel->widthText()->stringValue(), " 1 Pixels");
    EXPECT_TRUE(panel->widthText()->isEnabled());
}

TEST_F(MarqueePanel, ModeButtonsShowWhichModeIsActive)
{
    kit::Button* newMode = dynamic_cast<kit::Button*>(panel->viewWithTag(101));
    kit::Button* addMode = dynamic_cast<kit::Button*>(panel->viewWithTag(102));
    EXPECT_TRUE(showsImage(newMode, "selection_default2.png"));
    EXPECT_TRUE(showsImage(addMode, "selection_add.png"));

    const kit::Image* before = newMode->image();
    click(newMode); // already New: nothing is redone
    EXPECT_EQ(newMode->image(), before);
    EXPECT_EQ(panel->selectionMode(), 0);

    click(addMode);
    EXPECT_EQ(panel->selectionMode(), 1);
    EXPECT_TRUE(showsImage(addMode, "selection_add2.png"));
    EXPECT_TRUE(showsImage(newMode, "selection_default.png"));

    // Subtract and Intersect have no buttons here: both plain.
    panel->setSelectionMode(2);
    EXPECT_TRUE(showsImage(addMode, "selection_add.png"));
    EXPECT_TRUE(showsImage(newMode, "selection_default.png"));
    panel->setSelectionMode(std::numeric_limits<int>::max());
    panel->setSelectionMode(std::numeric_limits<int>::min());
    EXPECT_TRUE(showsImage(newMode, "selection_default.png"));
}

TEST_F(MarqueePanel, ActionsFromTheWrongKindOfSenderAreIgnored)
{
    kit::RefPtr<kit::View> stranger = kit::View::create({});
    panel->changeSelectionMode(stranger.get());
    panel->showSilder(stranger.get());
    panel->hideSlider(stranger.get());
    panel->changeSilderValue(stranger.get());
    panel->changeSelectionType(stranger.get());
    EXPECT_EQ(panel->selectionMode(), 0);
    EXPECT_TRUE(panel->viewWithTag(202)->isHidden());
    EXPECT_EQ(panel->SelectionType(), 0);
    // A button with some other tag picks no mode a person could not pick.
    kit::RefPtr<kit::Button> odd = kit::Button::create({});
    odd->setTag(std::numeric_limits<int>::min());
    panel->changeSelectionMode(odd.get());
    EXPECT_EQ(panel->selectionMode(), 0);
}

TEST_F(MarqueePanel, OnlyReturnAndEscapeAreTakenFromTheFieldEditor)
{
    click(panel->featherText());
    kit::TextView* editor = panel->featherText()->currentEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_FALSE(panel->controlTextViewDoCommandBySelector(panel->featherText(), editor, "deleteBackward:"));
    EXPECT_FALSE(panel->controlTextViewDoCommandBySelector(panel->featherText(), editor, "insertTab:"));
    EXPECT_TRUE(panel->controlTextShouldBeginEditing(panel->featherText(), editor));
    EXPECT_TRUE(panel->controlTextViewDoCommandBySelector(panel->featherText(), editor, "cancelOperation:"));
    EXPECT_EQ(panel->featherText()->currentEditor(), nullptr);
}

} // namespace
