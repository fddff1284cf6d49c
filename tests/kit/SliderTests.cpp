// Sliders: track clicks, knob drags, continuous actions and clamping.
#include "kit/Slider.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using kit::EventType;
using kit::RefPtr;
using kit::Slider;

// The feather slider of the panels: 170 x 20 at (91, 0), 0 to 100, in a window; every
// action records the value it saw.
class FeatherSlider : public ::testing::Test {
protected:
    void SetUp() override
    {
        window = kit::Window::create({ 0, 0, 300, 60 });
        slider = Slider::create({ 91, 0, 170, 20 });
        slider->setMinValue(0);
        slider->setMaxValue(100);
        slider->setAction(
            [this](kit::Object* sender) { values.push_back(static_cast<Slider*>(sender)->doubleValue()); });
        window->contentView()->addSubview(slider.get());
    }
    // The window x at which the knob's centre stands for `value`.
    float xFor(double value) const
    {
        const kit::Rect knob = slider->knobRect();
        const float travel = 170 - knob.width();
        return 91 + knob.width() / 2 + float(value / 100) * travel;
    }
    double perPoint() const { return 100.0 / (170 - slider->knobRect().width()); }

    RefPtr<kit::Window> window;
    RefPtr<Slider> slider;
    std::vector<double> values;
};

TEST_F(FeatherSlider, AClickOnTheTrackMovesTheKnobThereAndActs)
{
    uitest::click(*window, { xFor(75), 10 });
    EXPECT_NEAR(slider->doubleValue(), 75, perPoint());
    ASSERT_EQ(values.size(), 1u);
    EXPECT_EQ(values[0], slider->doubleValue());
    const kit::Rect knob = slider->knobRect();
    EXPECT_NEAR(91 + knob.minX() + knob.width() / 2, xFor(75), 0.5);
}

TEST_F(FeatherSlider, ATakenKnobDoesNotJumpAndFollowsTheDrag)
{
    slider->setDoubleValue(40);
    const float grab = xFor(40) + 3; // off centre, still on the knob
    uitest::mouse(*window, EventType::LeftMouseDown, { grab, 10 });
    EXPECT_EQ(slider->doubleValue(), 40);
    EXPECT_TRUE(values.empty()); // nothing changed, nothing sent
    uitest::mouse(*window, EventType::LeftMouseDragged, { grab + 20, 10 });
    EXPECT_NEAR(slider->doubleValue(), 40 + 20 * perPoint(), 1e-3);
    uitest::mouse(*window, EventType::LeftMouseUp, { grab + 20, 10 });
    EXPECT_EQ(values.size(), 1u);
}

TEST_F(FeatherSlider, AContinuousSliderActsAtEveryChangeWhileDragged)
{
    uitest::mouse(*window, EventType::LeftMouseDown, { xFor(10), 10 });
    for (int step = 1; step <= 5; ++step)
        uitest::mouse(*window, EventType::LeftMouseDragged, { xFor(10) + 10.0f * float(step), 10 });
    uitest::mouse(*window, EventType::LeftMouseDragged, { xFor(10) + 50, 10 }); // no move, no action
    uitest::mouse(*window, EventType::LeftMouseUp, { xFor(10) + 50, 10 });
    ASSERT_EQ(values.size(), 6u); // the press moved it too
    for (std::size_t i = 1; i < values.size(); ++i)
        EXPECT_NEAR(values[i] - values[i - 1], 10 * perPoint(), 1e-3);
}

TEST_F(FeatherSlider, ANonContinuousSliderActsOnceAtTheRelease)
{
    slider->setContinuous(false);
    uitest::mouse(*window, EventType::LeftMouseDown, { xFor(10), 10 });
    uitest::mouse(*window, EventType::LeftMouseDragged, { xFor(30), 10 });
    uitest::mouse(*window, EventType::LeftMouseDragged, { xFor(60), 10 });
    EXPECT_TRUE(values.empty());
    uitest::mouse(*window, EventType::LeftMouseUp, { xFor(60), 10 });
    ASSERT_EQ(values.size(), 1u);
    EXPECT_NEAR(values[0], 60, perPoint());
}

TEST_F(FeatherSlider, DraggingPastTheEndsGivesExactlyTheLimits)
{
    uitest::mouse(*window, EventType::LeftMouseDown, { xFor(50), 10 });
    uitest::mouse(*window, EventType::LeftMouseDragged, { 290, 10 });
    EXPECT_EQ(slider->doubleValue(), 100);
    EXPECT_EQ(slider->floatValue(), 100.0f);
    uitest::mouse(*window, EventType::LeftMouseDragged, { 5, 10 });
    EXPECT_EQ(slider->doubleValue(), 0);
    uitest::mouse(*window, EventType::LeftMouseUp, { 5, 10 });
    EXPECT_EQ(values.back(), 0);
}

TEST_F(FeatherSlider, AHiddenOrDisabledSliderTakesNoClicks)
{
    slider->setHidden(true);
    uitest::click(*window, { xFor(80), 10 });
    EXPECT_EQ(slider->doubleValue(), 0);
    slider->setHidden(false);
    slider->setEnabled(false);
    uitest::click(*window, { xFor(80), 10 });
    EXPECT_EQ(slider->doubleValue(), 0);
    EXPECT_TRUE(values.empty());
}

TEST(SliderValues, AreClampedIntoTheRangeAndReadAsIntegersTowardZero)
{
    auto slider = Slider::create({ 0, 0, 150, 24 });
    EXPECT_EQ(slider->minValue(), 0);
    EXPECT_EQ(slider->maxValue(), 1);
    slider->setMinValue(-2);
    slider->setMaxValue(5);
    slider->setDoubleValue(2.5);
    EXPECT_EQ(slider->floatValue(), 2.5f);
    slider->setDoubleValue(9);
    EXPECT_EQ(slider->doubleValue(), 5);
    slider->setDoubleValue(-1.9);
    EXPECT_EQ(slider->intValue(), -1);
    slider->setDoubleValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(slider->doubleValue(), -2);
    slider->setMaxValue(std::numeric_limits<double>::infinity()); // ignored
    EXPECT_EQ(slider->maxValue(), 5);

    slider->setMinValue(1);
    slider->setMaxValue(3000);
    slider->setIntValue(200);
    EXPECT_EQ(slider->intValue(), 200);
    slider->setDoubleValue(1234.9);
    EXPECT_EQ(slider->intValue(), 1234);
    slider->setMinValue(2000); // the value follows a range that moves past it
    EXPECT_EQ(slider->doubleValue(), 2000);
}

TEST(SliderValues, AVerticalSliderRunsBottomToTop)
{
    auto window = kit::Window::create({ 0, 0, 100, 200 });
    auto slider = Slider::create({ 10, 10, 20, 150 });
    window->contentView()->addSubview(slider.get());
    EXPECT_TRUE(slider->isVertical());
    uitest::click(*window, { 20, 155 });
    EXPECT_GT(slider->doubleValue(), 0.95);
    uitest::click(*window, { 20, 15 });
    EXPECT_LT(slider->doubleValue(), 0.05);
}

TEST(SliderDrawing, TheKnobIsDrawnWhereTheValueIs)
{
    auto slider = Slider::create({ 0, 0, 170, 20 });
    slider->setMaxValue(100);
    for (double value : { 0.0, 50.0, 100.0 }) {
        slider->setDoubleValue(value);
        auto image = slider->renderImage();
        const kit::Rect knob = slider->knobRect();
        // The knob keeps four points clear of the slider's edges (the lower one may lie on a
        // bar's border line); its face is white and stands out of the track.
        EXPECT_GE(knob.minY(), 4) << value;
        EXPECT_LE(knob.maxY(), 16) << value;
        const uitest::Pixel face
            = uitest::pixelAtPoint(*image, int(knob.minX() + knob.width() / 2), int(knob.minY() + knob.height() / 2));
        EXPECT_EQ(face.a, 255) << value;
        EXPECT_GT(face.r, 200) << value;
    }
}

} // namespace
