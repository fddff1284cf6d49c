// The option bar as a screenshot shows it, with each of its three panels: pressed looks,
// hidden and shown sliders, and text in the value fields.
#include "tests/selection/OptionBarTestSupport.h"

#include "Classes/Selection/SelectionPanelControls.h"

#include <cstdlib>
#include <filesystem>

namespace {

using uitest::Pixel;

/// A window exactly the size of a 1200-point bar, holding only the bar.
class BarScreenshot : public testing::Test {
protected:
    void SetUp() override
    {
        window->contentView()->addSubview(bar.get());
        kit::RunLoop::main().advance(0.05);
    }
    void TearDown() override { kit::RunLoop::main().advance(10); }

    /// Renders the window; with QM_SCREENSHOT_DIR set, also keeps it there as `name`.
    void shoot(const char* name)
    {
        shot = window->renderImage();
        ASSERT_NE(shot, nullptr);
        if (const char* dir = std::getenv("QM_SCREENSHOT_DIR"))
            shot->writePNG((std::filesystem::path(dir) / name).string());
    }

    /// The bar's background at window height y: its right end shows nothing else.
    Pixel background(int y) const { return uitest::pixelAtPoint(*shot, 1199, y); }

    /// Whether the button shows `name` where the image has its pixel (4, 15): a spot where the
    /// tool and mode images are the same for several rows, so the buttons' half-point offset
    /// blends nothing there. Compared with the image's pixel laid over the background.
    testing::AssertionResult shows(const kit::Button* button, const char* name) const
    {
        const kit::Image* image = myLibraryImageNamed(name);
        if (!image || !button)
            return testing::AssertionFailure() << "no image " << name << " or no button";
        const kit::Point at = button->convertPointToView({ 4.5f, 30 - 15 - 0.5f }, nullptr);
        const Pixel seen = uitest::pixelAtPoint(*shot, int(at.x), int(at.y));
        const Pixel source = uitest::pixelAt(*image, 4, 15);
        const Pixel under = background(int(at.y));
        auto over = [&](int s, int b) { return s + b * (255 - source.a) / 255; };
        const Pixel expected { over(source.r, under.r), over(source.g, under.g), over(source.b, under.b), 255 };
        const bool close = std::abs(seen.r - expected.r) <= 2 && std::abs(seen.g - expected.g) <= 2
            && std::abs(seen.b - expected.b) <= 2;
        if (!close)
            return testing::AssertionFailure()
                << "shows (" << seen.r << ", " << seen.g << ", " << seen.b << ") where " << name << " gives ("
                << expected.r << ", " << expected.g << ", " << expected.b << ")";
        return testing::AssertionSuccess();
    }

    /// How many pixels of window row y, from x0 up to x1, differ from the background.
    int marksOnRow(int y, int x0, int x1) const
    {
        int marks = 0;
        for (int x = x0; x < x1; ++x)
            marks += uitest::pixelAtPoint(*shot, x, y) == background(y) ? 0 : 1;
        return marks;
    }

    /// How many dark (text) pixels a view's frame holds in the shot.
    int inkIn(const kit::View& view) const
    {
        const kit::Point origin = view.convertPointToView({}, nullptr);
        int ink = 0;
        for (int y = int(origin.y); y < int(origin.y + view.frame().height()); ++y)
            for (int x = int(origin.x); x < int(origin.x + view.frame().width()); ++x)
                ink += uitest::pixelAtPoint(*shot, x, y).r < 100 ? 1 : 0;
        return ink;
    }

    kit::Button* modeButton(kit::View* panel, int mode) const
    {
        return dynamic_cast<kit::Button*>(panel->viewWithTag(101 + mode));
    }

    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 53 });
    kit::RefPtr<SelectionOptionsView> bar = kit::make<SelectionOptionsView>(kit::Rect { 0, 0, 1200, 53 });
    kit::RefPtr<kit::Image> shot;
};

// The three sliders' spans in the window, on the row through their tracks.
constexpr int kSliderRow = 10;
constexpr int kFeatherSlider[] = { 262 + 91, 262 + 91 + 170 };
constexpr int kWidthSlider[] = { 262 + 411, 262 + 411 + 200 };
constexpr int kHeightSlider[] = { 262 + 651, 262 + 651 + 200 };

TEST_F(BarScreenshot, MarqueePanelWithRectanglePressedNewPressedAndNoSlider)
{
    RectangleSelectionOptions* panel = bar->rectangleSelectionOptions();
    shoot("option-bar-marquee.png");
    EXPECT_TRUE(shows(bar->toolButton(0), "rectangle2.png"));
    EXPECT_TRUE(shows(bar->toolButton(1), "ellipse.png"));
    EXPECT_TRUE(shows(modeButton(panel, 0), "selection_default2.png"));
    EXPECT_TRUE(shows(modeButton(panel, 1), "selection_add.png"));
    EXPECT_EQ(marksOnRow(kSliderRow, 262, 1200), 0);
    EXPECT_GT(inkIn(*panel->featherText()), 20);
    EXPECT_EQ(inkIn(*panel->widthText()), 0);
}

TEST_F(BarScreenshot, OpenSlidersAndFixedSizeShowUnderTheirFields)
{
    RectangleSelectionOptions* panel = bar->rectangleSelectionOptions();
    panel->setSelectionType(RectangleSelectionOptions::kTypeFixedSize);
    for (int tag : { 201, 301, 401 })
        dynamic_cast<kit::Button*>(panel->viewWithTag(tag))->performClick();
    dynamic_cast<kit::Button*>(panel->viewWithTag(102))->performClick();
    shoot("option-bar-marquee-open.png");
    EXPECT_GT(marksOnRow(kSliderRow, kFeatherSlider[0], kFeatherSlider[1]), 100);
    EXPECT_GT(marksOnRow(kSliderRow, kWidthSlider[0], kWidthSlider[1]), 100);
    EXPECT_GT(marksOnRow(kSliderRow, kHeightSlider[0], kHeightSlider[1]), 100);
    EXPECT_TRUE(shows(modeButton(panel, 0), "selection_default.png"));
    EXPECT_TRUE(shows(modeButton(panel, 1), "selection_add2.png"));
    EXPECT_GT(inkIn(*panel->widthText()), 20);
    EXPECT_GT(inkIn(*panel->heightText()), 20);
}

TEST_F(BarScreenshot, LassoPanelWithPolygonPressed)
{
    bar->toolButton(2)->performClick();
    shoot("option-bar-lasso.png");
    EXPECT_TRUE(shows(bar->toolButton(0), "rectangle.png"));
    EXPECT_TRUE(shows(bar->toolButton(2), "polygon2.png"));
    EXPECT_TRUE(shows(modeButton(bar->polygonSelectionOptions(), 0), "selection_default2.png"));
    EXPECT_EQ(marksOnRow(kSliderRow, 262, 1200), 0);
    EXPECT_GT(inkIn(*bar->polygonSelectionOptions()->featherText()), 20);
    // Nothing of the marquee panel is left to the right of the feather group.
    EXPECT_EQ(marksOnRow(28, 262 + 300, 1200), 0);
}

TEST_F(BarScreenshot, BrushPanelWithItsKnobAtTheStartRadius)
{
    bar->toolButton(3)->performClick();
    shoot("option-bar-brush.png");
    EXPECT_TRUE(shows(bar->toolButton(3), "brush2.png"));
    BrushSelectionOptions* panel = bar->brushSelectionOptions();
    EXPECT_TRUE(shows(modeButton(panel, 0), "selection_default2.png"));
    const kit::Rect knob = panel->radiusSlider()->knobRect();
    const kit::Point centre = panel->radiusSlider()->convertPointToView(
        { knob.minX() + knob.width() / 2, knob.minY() + knob.height() / 2 }, nullptr);
    EXPECT_EQ(uitest::pixelAtPoint(*shot, int(centre.x), int(centre.y)), (Pixel { 255, 255, 255, 255 }));
    EXPECT_EQ(marksOnRow(kSliderRow, 262, 1200), 0);
}

/// The first column of `image` with any opaque pixel: where a button's face begins.
int firstOpaqueColumn(const kit::Image& image)
{
    for (int x = 0; x < image.pixelsWide(); ++x)
        for (int row = 0; row < image.pixelsHigh(); ++row)
            if (uitest::pixelAt(image, x, row).a > 0)
                return x;
    return image.pixelsWide();
}

// Each value field of each panel shows five digits and the unit whole: its text room ends at
// the field's text rectangle or at the face of the slider button laid over its right end.
TEST_F(BarScreenshot, ValueFieldsFitFiveDigitsAndTheUnitBeforeTheirSliderButtons)
{
    const std::string widest = " 12345 " + SelectionPanelControls::localized("Pixels");
    int fields = 0;
    for (int tool : { 0, 2, 3 }) {
        bar->toolButton(tool)->performClick();
        kit::View* panel = tool == 0 ? static_cast<kit::View*>(bar->rectangleSelectionOptions())
            : tool == 2              ? static_cast<kit::View*>(bar->polygonSelectionOptions())
                                     : static_cast<kit::View*>(bar->brushSelectionOptions());
        ASSERT_NE(panel, nullptr);
        for (const auto& view : panel->subviews()) {
            auto* field = dynamic_cast<kit::TextField*>(view.get());
            if (!field || !field->isEditable())
                continue;
            ++fields;
            const kit::Rect text = field->textRect();
            float room = text.maxX();
            for (const auto& other : panel->subviews()) {
                auto* button = dynamic_cast<kit::Button*>(other.get());
                if (!button || !button->image() || kit::intersection(button->frame(), field->frame()).size.width <= 0)
                    continue;
                const float face = button->frame().minX() + float(firstOpaqueColumn(*button->image()));
                room = std::min(room, face - field->frame().minX());
            }
            EXPECT_LE(field->font().widthOfString(widest), room - text.minX()) << "field tagged " << field->tag();
        }
    }
    EXPECT_EQ(fields, 4); // feather twice, width and height
}

} // namespace
