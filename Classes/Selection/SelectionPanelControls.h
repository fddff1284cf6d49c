// SelectionPanelControls: the controls, texts and reactions that the option panels and the tool bar share.
#pragma once

#include "kit/Button.h"
#include "kit/ImageView.h"
#include "kit/Slider.h"
#include "kit/TextField.h"

#include <string>

/// Builders and helpers for the option panels and the tool bar: buttons, separators, labels,
/// value boxes and fields, the slider buttons and sliders. Every control is added to the panel,
/// whose view tree owns it; the raw pointers handed back stay valid while the panel lives.
class SelectionPanelControls final {
public:
    /// The feather field's tag; its slider button, slider and close button follow it.
    static constexpr int kFeatherTag = 200;
    static constexpr float kMaxFeather = 100;

    /// `key` looked up in the host application's strings, the key itself when it has none.
    static std::string localized(const std::string& key);
    /// " %.1f Pixels" with the word localised: the feather field's text.
    static std::string featherText(float feather);
    /// " %d Pixels" with the word localised: a fixed width or height.
    static std::string pixelsText(int pixels);
    /// " %0.3f": one part of a fixed ratio.
    static std::string ratioText(float ratio);
    /// The host's "text_editbox.png" (from the application's own resources), or null.
    static kit::RefPtr<kit::Image> hostEditBoxImage();

    /// A borderless momentary-change button targeting `panel`; `image` is also the alternate
    /// image when `alternate` is set.
    template <typename Panel>
    static kit::Button* addButton(Panel& panel, const kit::Rect& frame, const char* image, bool alternate,
        const std::string& toolTip, int tag, void (Panel::*action)(kit::Object*))
    {
        kit::Button* button = makeButton(panel, frame, image, alternate, toolTip, tag);
        button->setAction(action);
        return button;
    }
    /// The button that opens a value's slider (tag `tag`) and, on top of it and hidden, the one
    /// that closes it again (tag `tag` + 2).
    template <typename Panel>
    static void addSliderButtons(Panel& panel, const kit::Rect& frame, int tag, const std::string& toolTip,
        void (Panel::*show)(kit::Object*), void (Panel::*hide)(kit::Object*))
    {
        addButton(panel, frame, "image_combox_btn.png", false, toolTip, tag, show);
        addButton(panel, frame, "image_combox_btn2.png", false, toolTip, tag + 2, hide)->setHidden(true);
    }
    /// A slider targeting `panel`.
    template <typename Panel>
    static kit::Slider* addSlider(Panel& panel, const kit::Rect& frame, int tag, void (Panel::*action)(kit::Object*))
    {
        auto slider = kit::make<kit::Slider>(frame);
        slider->setTag(tag);
        slider->setTarget(&panel);
        slider->setAction(action);
        panel.addSubview(slider.get());
        return slider.get();
    }

    /// The feather group right of the mode buttons: label, box, field (tag 200), the buttons that
    /// open and close the slider (201, 203) and the hidden slider from 0 to 100 (202). Gives
    /// the field, showing `feather`.
    template <typename Panel>
    static kit::TextField* addFeatherGroup(Panel& panel, kit::Image* editBox, float feather,
        void (Panel::*show)(kit::Object*), void (Panel::*hide)(kit::Object*), void (Panel::*change)(kit::Object*))
    {
        const float h = panel.frame().height();
        const std::string toolTip = localized("Obfuscated the Border of Selected Area");
        addLabel(panel, { 94, h * 0.5f - 13, 63, 24 }, localized("Feather :"), toolTip);
        addValueBox(panel, { 160, h * 0.5f - 10, 100, 24 }, editBox);
        kit::TextField* field = addValueField(panel, { 160, h * 0.5f - 10, 100, 20 }, kFeatherTag, toolTip, &panel);
        field->setStringValue(featherText(feather));
        addSliderButtons(panel, { 236, h * 0.5f - 9, 25, 24 }, kFeatherTag + 1, toolTip, show, hide);
        kit::Slider* slider = addSlider(panel, { 91, 0, 170, 20 }, kFeatherTag + 2, change);
        slider->setMinValue(0);
        slider->setMaxValue(kMaxFeather);
        slider->setHidden(true);
        return field;
    }
    /// A feather radius clamped to 0 to 100; NaN counts as below the range.
    static float clampFeather(float feather);
    /// Writes the feather into its field and onto its slider.
    static void showFeather(kit::View& panel, kit::TextField* field, float feather);

    /// "property_separator.png" at (x, y), its own width wide and `height` high, stretched.
    static kit::ImageView* addSeparator(kit::View& panel, float x, float y, float height);
    /// A right-aligned black label on a clear background, not editable, without border.
    static kit::TextField* addLabel(
        kit::View& panel, const kit::Rect& frame, const std::string& text, const std::string& toolTip);
    /// A value box background: `image` stretched over the frame.
    static kit::ImageView* addValueBox(kit::View& panel, const kit::Rect& frame, kit::Image* image);
    /// A left-aligned black value field on a clear background, without border or focus ring,
    /// single line with character wrapping, reporting to `delegate`.
    static kit::TextField* addValueField(kit::View& panel, const kit::Rect& frame, int tag, const std::string& toolTip,
        kit::TextFieldDelegate* delegate);

    /// `name` from the plug-in bundle as both image and alternate image.
    static void setBothImages(kit::Button& button, const char* name);
    /// viewWithTag for a tag computed in wider arithmetic: a tag no int can hold names no view.
    static kit::View* viewWithWideTag(kit::View& panel, long long tag);
    /// The number a button of a numbered row stands for (its tag less `tagBase`); false when
    /// the sender is not a button or the difference leaves the int range below.
    static bool numberOfButton(kit::Object* sender, int tagBase, int& number);

    /// Opens a value's slider for the slider button `sender`: hides it, shows its close button
    /// and the slider. Gives the slider (null when there is none) and the button's tag; false
    /// when the sender is not a button.
    static bool openSlider(kit::View& panel, kit::Object* sender, kit::Slider*& slider, int& tag);
    /// Closes a value's slider for the close button `sender`.
    static void closeSlider(kit::View& panel, kit::Object* sender);
    /// The view tagged `tag` among the panel's, if it is a slider.
    static kit::Slider* sliderWithTag(kit::View& panel, long long tag);

    /// Return ends the editing (committing through the delegate), Escape drops it; true when
    /// the command was one of the two.
    static bool doCommandBySelector(kit::Control* control, kit::TextView* textView, const std::string& selector);

private:
    static kit::Button* makeButton(kit::View& panel, const kit::Rect& frame, const char* image, bool alternate,
        const std::string& toolTip, int tag);
};
