// SelectionPanelControls: shared control set-up and reactions of the option panels.
#include "Classes/Selection/SelectionPanelControls.h"

#include "entry/ResourceHelpers.h"
#include "kit/Bundle.h"
#include "kit/Color.h"
#include "kit/TextView.h"
#include "kit/Window.h"

#include <charconv>
#include <climits>

namespace {

constexpr float kValueFontSize = 9.5f;

/// The value with a fixed number of decimals and a point as the decimal mark, whatever locale
/// the host process has set: typed values are read back with a point.
std::string fixedDecimals(double value, int decimals)
{
    char buffer[400];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    return result.ec == std::errc() ? std::string(buffer, result.ptr) : std::string();
}

} // namespace

std::string SelectionPanelControls::localized(const std::string& key)
{
    return kit::Bundle::mainBundle().localizedString(key, "", "");
}

std::string SelectionPanelControls::featherText(float feather)
{
    return " " + fixedDecimals(feather, 1) + " " + localized("Pixels");
}

std::string SelectionPanelControls::pixelsText(int pixels)
{
    return " " + std::to_string(pixels) + " " + localized("Pixels");
}

std::string SelectionPanelControls::ratioText(float ratio) { return " " + fixedDecimals(ratio, 3); }

kit::RefPtr<kit::Image> SelectionPanelControls::hostEditBoxImage()
{
    const auto path = kit::Bundle::mainBundle().pathForResource("text_editbox", "png");
    return path ? kit::Image::imageWithContentsOfFile(*path) : nullptr;
}

float SelectionPanelControls::clampFeather(float feather)
{
    if (feather > kMaxFeather)
        return kMaxFeather;
    // Written so that NaN, which no comparison admits, lands at the minimum too.
    return feather >= 0 ? feather : 0;
}

void SelectionPanelControls::showFeather(kit::View& panel, kit::TextField* field, float feather)
{
    if (field)
        field->setStringValue(featherText(feather));
    if (kit::Slider* slider = sliderWithTag(panel, kFeatherTag + 2))
        slider->setFloatValue(feather);
}

kit::Button* SelectionPanelControls::makeButton(
    kit::View& panel, const kit::Rect& frame, const char* image, bool alternate, const std::string& toolTip, int tag)
{
    auto button = kit::make<kit::Button>(frame);
    button->setButtonType(kit::MomentaryChangeButton);
    button->setBordered(false);
    button->setImage(myLibraryImageNamed(image));
    if (alternate)
        button->setAlternateImage(myLibraryImageNamed(image));
    button->setToolTip(toolTip);
    button->setTag(tag);
    button->setTarget(&panel);
    panel.addSubview(button.get());
    return button.get();
}

kit::ImageView* SelectionPanelControls::addSeparator(kit::View& panel, float x, float y, float height)
{
    kit::Image* image = myLibraryImageNamed("property_separator.png");
    const float width = image ? image->size().width : 0;
    auto separator = kit::make<kit::ImageView>(kit::Rect { x, y, width, height });
    separator->setImage(image);
    separator->setImageScaling(kit::ImageScaleAxesIndependently);
    panel.addSubview(separator.get());
    return separator.get();
}

kit::TextField* SelectionPanelControls::addLabel(
    kit::View& panel, const kit::Rect& frame, const std::string& text, const std::string& toolTip)
{
    auto label = kit::make<kit::TextField>(frame);
    label->setStringValue(text);
    label->setEditable(false);
    label->setTextColor(kit::Color::blackColor());
    label->setAlignment(kit::RightTextAlignment);
    label->setBackgroundColor(kit::Color::clearColor());
    label->setBordered(false);
    label->setToolTip(toolTip);
    panel.addSubview(label.get());
    return label.get();
}

kit::ImageView* SelectionPanelControls::addValueBox(kit::View& panel, const kit::Rect& frame, kit::Image* image)
{
    auto box = kit::make<kit::ImageView>(frame);
    box->setImage(image);
    box->setImageScaling(kit::ImageScaleAxesIndependently);
    panel.addSubview(box.get());
    return box.get();
}

kit::TextField* SelectionPanelControls::addValueField(
    kit::View& panel, const kit::Rect& frame, int tag, const std::string& toolTip, kit::TextFieldDelegate* delegate)
{
    auto field = kit::make<kit::TextField>(frame);
    field->setTag(tag);
    field->setToolTip(toolTip);
    field->setTextColor(kit::Color::blackColor());
    field->setAlignment(kit::LeftTextAlignment);
    field->setBackgroundColor(kit::Color::clearColor());
    field->setBordered(false);
    field->setDelegate(delegate);
    field->setUsesSingleLineMode(true);
    field->setLineBreakMode(kit::LineBreakByCharWrapping);
    field->setFocusRingType(kit::FocusRingTypeNone);
    // The narrowest field keeps 55 points clear of its slider button: a condensed face at this
    // size fits five digits and the unit (" 12345 Pixels") there.
    field->setFont(kit::Font::condensedSystemFontOfSize(kValueFontSize));
    panel.addSubview(field.get());
    return field.get();
}

kit::View* SelectionPanelControls::viewWithWideTag(kit::View& panel, long long tag)
{
    if (tag < INT_MIN || tag > INT_MAX)
        return nullptr;
    return panel.viewWithTag(int(tag));
}

bool SelectionPanelControls::numberOfButton(kit::Object* sender, int tagBase, int& number)
{
    auto* button = dynamic_cast<kit::Button*>(sender);
    if (!button)
        return false;
    const long long wide = (long long)button->tag() - tagBase;
    if (wide < INT_MIN)
        return false;
    number = int(wide);
    return true;
}

void SelectionPanelControls::setBothImages(kit::Button& button, const char* name)
{
    button.setImage(myLibraryImageNamed(name));
    button.setAlternateImage(myLibraryImageNamed(name));
}

kit::Slider* SelectionPanelControls::sliderWithTag(kit::View& panel, long long tag)
{
    return dynamic_cast<kit::Slider*>(viewWithWideTag(panel, tag));
}

bool SelectionPanelControls::openSlider(kit::View& panel, kit::Object* sender, kit::Slider*& slider, int& tag)
{
    auto* button = dynamic_cast<kit::Button*>(sender);
    if (!button)
        return false;
    tag = button->tag();
    button->setHidden(true);
    if (kit::View* close = viewWithWideTag(panel, (long long)tag + 2))
        close->setHidden(false);
    slider = sliderWithTag(panel, (long long)tag + 1);
    if (slider)
        slider->setHidden(false);
    return true;
}

void SelectionPanelControls::closeSlider(kit::View& panel, kit::Object* sender)
{
    auto* button = dynamic_cast<kit::Button*>(sender);
    if (!button)
        return;
    const long long tag = button->tag();
    button->setHidden(true);
    if (kit::View* open = viewWithWideTag(panel, tag - 2))
        open->setHidden(false);
    if (kit::Slider* slider = sliderWithTag(panel, tag - 1))
        slider->setHidden(true);
}

bool SelectionPanelControls::doCommandBySelector(
    kit::Control* control, kit::TextView* textView, const std::string& selector)
{
    if (selector == "insertNewline:") {
        if (kit::Window* window = textView ? textView->window() : nullptr)
            window->endEditingFor(textView);
        return true;
    }
    if (selector == "cancelOperation:") {
        if (auto* field = dynamic_cast<kit::TextField*>(control))
            field->abortEditing();
        return true;
    }
    return false;
}
