// OptionBarTestSupport: an overlay in a window, driven by mouse and key events as a person would.
#pragma once

#include "Classes/Selection/BrushSelectionOptions.h"
#include "Classes/Selection/PolygonSelectionOptions.h"
#include "Classes/Selection/RectangleSelectionOptions.h"
#include "Classes/Selection/SelectionBaseView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionOptionsView.h"
#include "entry/ResourceHelpers.h"
#include "kit/PopUpButton.h"
#include "kit/PopUpMenuView.h"
#include "kit/RunLoop.h"
#include "kit/Slider.h"
#include "kit/TextView.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace optionbar {

/// Stands in for the host's content view: notes the presses that reach it.
class HostContent final : public kit::View {
    KIT_MAKEABLE
public:
    int presses = 0;
    void mouseDown(const kit::Event&) override { ++presses; }

private:
    using kit::View::View;
};

/// Whether a button shows the image file `name` of the plug-in bundle as image and as
/// alternate image: same size and same pixels as a fresh read of that file.
inline testing::AssertionResult showsImage(const kit::Button* button, const char* name)
{
    const kit::Image* expected = myLibraryImageNamed(name);
    if (!expected)
        return testing::AssertionFailure() << name << " does not load";
    auto same = [&](const kit::Image* image) {
        return image && image->pixelsWide() == expected->pixelsWide() && image->pixelsHigh() == expected->pixelsHigh()
            && image->rgba() == expected->rgba();
    };
    if (!button)
        return testing::AssertionFailure() << "no button";
    if (!same(button->image()) || !same(button->alternateImage()))
        return testing::AssertionFailure() << "the button does not show " << name;
    return testing::AssertionSuccess();
}

/// A 1200 x 900 window whose content view (the host's) holds the overlay, as the controller
/// puts it there; the bar is the overlay's, 53 points high along the top.
class OptionBarTest : public testing::Test {
protected:
    void SetUp() override
    {
        window->setContentView(host.get());
        overlay->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
        host->addSubview(overlay.get());
    }
    void TearDown() override { kit::RunLoop::main().advance(10); }

    /// Lets the bar's deferred first switch run.
    void settle() { kit::RunLoop::main().advance(0.05); }

    SelectionOptionsView& bar() const { return *overlay->optionView(); }
    RectangleSelectionOptions* marquee() const { return bar().rectangleSelectionOptions(); }
    PolygonSelectionOptions* lasso() const { return bar().polygonSelectionOptions(); }
    BrushSelectionOptions* brush() const { return bar().brushSelectionOptions(); }
    /// The panel that the overlay handed to the tool view shown for `tool`.
    kit::Object* optionsOfTool(int tool) const { return overlay->toolView(tool)->options(); }
    /// The tool view under the bar, or null.
    kit::View* shownTool() const { return overlay->subviews().size() > 1 ? overlay->subviews()[1].get() : nullptr; }

    kit::Point inWindow(const kit::View& view, kit::Point local) const
    {
        return view.convertPointToView(local, nullptr);
    }
    kit::Point centreOf(const kit::View& view) const
    {
        return inWindow(view, { view.bounds().width() * 0.5f, view.bounds().height() * 0.5f });
    }
    void click(const kit::View* view) { uitest::click(*window, centreOf(*view)); }
    void clickTool(int tool) { click(bar().toolButton(tool)); }
    void clickTag(kit::View& panel, int tag) { click(panel.viewWithTag(tag)); }

    /// Clicks into a field, types `text` and ends with Return (or Escape).
    void typeInto(kit::TextField* field, const std::string& text, bool escape = false)
    {
        click(field);
        ASSERT_NE(field->currentEditor(), nullptr) << "the click did not start editing";
        uitest::type(*window, text);
        if (escape)
            uitest::key(*window, "\x1b", kit::KeyCodeEscape);
        else
            uitest::key(*window, "\r", kit::KeyCodeReturn);
    }

    /// Takes the slider's knob and drags it far past one end of the track.
    void dragKnobPast(kit::Slider& slider, bool rightEnd)
    {
        const kit::Rect knob = slider.knobRect();
        const kit::Point grab
            = inWindow(slider, { knob.minX() + knob.width() * 0.5f, knob.minY() + knob.height() * 0.5f });
        uitest::mouse(*window, kit::EventType::LeftMouseDown, grab);
        const kit::Point past { rightEnd ? grab.x + 2000 : grab.x - 2000, grab.y };
        uitest::mouse(*window, kit::EventType::LeftMouseDragged, past);
        uitest::mouse(*window, kit::EventType::LeftMouseUp, past);
    }

    /// Opens the pop-up's menu with a click and clicks the item `index` in it.
    void choose(kit::PopUpButton& popUp, int index)
    {
        click(&popUp);
        kit::PopUpMenuView* menu = popUp.menuView();
        ASSERT_NE(menu, nullptr) << "the click did not open the menu";
        const kit::Rect row = menu->rectOfItem(index);
        uitest::click(*window, inWindow(*menu, { row.minX() + row.width() * 0.5f, row.minY() + row.height() * 0.5f }));
    }

    static kit::PopUpButton* typePopUp(kit::View& panel)
    {
        for (const auto& child : panel.subviews()) {
            if (auto* popUp = dynamic_cast<kit::PopUpButton*>(child.get()))
                return popUp;
        }
        return nullptr;
    }

    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<HostContent> host = kit::make<HostContent>(kit::Rect { 0, 0, 1200, 900 });
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(kit::Rect { 0, 0, 1200, 900 });
};

} // namespace optionbar
