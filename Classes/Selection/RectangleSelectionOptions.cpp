// RectangleSelectionOptions: the marquee panel's controls, clamping setters and typed values.
#include "Classes/Selection/RectangleSelectionOptions.h"

#include "Classes/Selection/SelectionPanelControls.h"
#include "kit/PopUpButton.h"
#include "kit/StringValue.h"
#include "kit/TextView.h"

using Controls = SelectionPanelControls;

namespace {

constexpr int kWidthTag = 300;
constexpr int kHeightTag = 400;
constexpr float kMinPixels = 1;
constexpr float kMaxPixels = 3000;
constexpr double kMinRatio = 0.001;
constexpr double kMaxRatio = 999.999;

/// Where the controls of the width or height group stand.
struct SizeGroupLayout {
    float labelX;
    const char* label;
    float boxX;
    float boxWidth;
    float buttonX;
    float sliderX;
    int tag;
    const char* toolTip;
};

constexpr SizeGroupLayout kWidthGroup { 451, "Width :", 516, 68, 581, 411, kWidthTag,
    "Set the Width of Selected Area" };
constexpr SizeGroupLayout kHeightGroup { 611, "Height :", 676, 62, 731, 651, kHeightTag,
    "Set the Height of Selected Area" };

/// Label, box, field, slider buttons and slider of one size group; the field starts disabled
/// and empty, the slider hidden with no range of its own yet.
kit::TextField* addSizeGroup(RectangleSelectionOptions& panel, kit::Image* editBox, const SizeGroupLayout& g)
{
    const float h = panel.frame().height();
    Controls::addLabel(panel, { g.labelX, h * 0.5f - 13, 60, 24 }, Controls::localized(g.label), g.toolTip);
    Controls::addValueBox(panel, { g.boxX, h * 0.5f - 10, g.boxWidth, 24 }, editBox);
    kit::TextField* field
        = Controls::addValueField(panel, { g.boxX, h * 0.5f - 10, g.boxWidth, 20 }, g.tag, g.toolTip, &panel);
    field->setEnabled(false);
    field->setStringValue("");
    Controls::addSliderButtons(panel, { g.buttonX, h * 0.5f - 9, 25, 24 }, g.tag + 1, Controls::localized(g.toolTip),
        &RectangleSelectionOptions::showSilder, &RectangleSelectionOptions::hideSlider);
    Controls::addSlider(panel, { g.sliderX, 0, 200, 20 }, g.tag + 2, &RectangleSelectionOptions::changeSilderValue)
        ->setHidden(true);
    return field;
}

void setRange(kit::Slider& slider, double minimum, double maximum)
{
    slider.setMinValue(minimum);
    slider.setMaxValue(maximum);
}

int clampPixels(float value)
{
    if (value > kMaxPixels)
        return int(kMaxPixels);
    // NaN, which no comparison admits, lands at the minimum too.
    return value >= kMinPixels ? int(value) : int(kMinPixels);
}

float clampRatio(float value)
{
    const double v = value;
    if (v > kMaxRatio)
        return float(kMaxRatio);
    return v >= kMinRatio ? value : float(kMinRatio);
}

} // namespace

void RectangleSelectionOptions::initData()
{
    m_fFeather = 0;
    m_nSelectionType = kTypeNormal;
    m_fWidthRatio = 1;
    m_fHeightRatio = 2;
    m_nFixedWidth = 200;
    m_nFixedHeight = 200;
}

void RectangleSelectionOptions::initView()
{
    addModeButtons();
    const float h = frame().height();
    Controls::addSeparator(*this, 86, 12, h - 20);

    // One look-up of the host's box image serves all three boxes.
    const kit::RefPtr<kit::Image> editBox = Controls::hostEditBoxImage();
    m_featherText = Controls::addFeatherGroup(*this, editBox.get(), m_fFeather, &RectangleSelectionOptions::showSilder,
        &RectangleSelectionOptions::hideSlider, &RectangleSelectionOptions::changeSilderValue);
    m_featherText->setEditable(true);
    m_featherText->setSelectable(true);
    m_featherText->setWantsLayer(true);
    m_featherText->setAllowsEditingTextAttributes(false);

    Controls::addSeparator(*this, 276, 12, h - 20);
    addTypeGroup();
    m_widthText = addSizeGroup(*this, editBox.get(), kWidthGroup);
    m_heightText = addSizeGroup(*this, editBox.get(), kHeightGroup);
}

void RectangleSelectionOptions::addTypeGroup()
{
    const float h = frame().height();
    const char* toolTip = "Set the Drawing Style of Marquee Tool";
    Controls::addLabel(*this, { 271, h * 0.5f - 13, 60, 24 }, Controls::localized("Type :"), toolTip);
    auto popUp = kit::PopUpButton::create({ 339, h * 0.5f - 11, 110, 24 }, false);
    popUp->addItemsWithTitles(
        { Controls::localized("Normal"), Controls::localized("Fixed Ratio"), Controls::localized("Fixed Size") });
    popUp->setToolTip(toolTip);
    popUp->setTarget(this);
    popUp->setAction(&RectangleSelectionOptions::changeSelectionType);
    addSubview(popUp.get());
}

void RectangleSelectionOptions::getSelectionRatioHeightRatio(float& width, float& height) const
{
    width = m_fWidthRatio;
    height = m_fHeightRatio;
}

kit::Size RectangleSelectionOptions::getSelectionFixedSize() const
{
    return { float(m_nFixedWidth), float(m_nFixedHeight) };
}

void RectangleSelectionOptions::setFeather(float feather)
{
    m_fFeather = Controls::clampFeather(feather);
    changeSelectionFeatherUI();
}

void RectangleSelectionOptions::setSelectionType(int type)
{
    m_nSelectionType = type;
    changeSelectionSizeUI();
}

void RectangleSelectionOptions::setSelectionRatioHeightRatio(float width, float height)
{
    m_fWidthRatio = clampRatio(width);
    m_fHeightRatio = clampRatio(height);
    changeSelectionSizeUI();
}

void RectangleSelectionOptions::setSelectionFixedSize(kit::Size size)
{
    m_nFixedWidth = clampPixels(size.width);
    m_nFixedHeight = clampPixels(size.height);
    changeSelectionSizeUI();
}

void RectangleSelectionOptions::changeSelectionType(kit::Object* sender)
{
    if (auto* popUp = dynamic_cast<kit::PopUpButton*>(sender))
        setSelectionType(popUp->indexOfSelectedItem());
}

void RectangleSelectionOptions::showSizeOnSlider(int sliderTag, int pixels, float ratio)
{
    kit::Slider* slider = Controls::sliderWithTag(*this, sliderTag);
    if (!slider)
        return;
    switch (m_nSelectionType) {
    case kTypeFixedSize:
        setRange(*slider, kMinPixels, kMaxPixels);
        slider->setIntValue(pixels);
        break;
    case kTypeFixedRatio:
        setRange(*slider, kMinRatio, kMaxRatio);
        slider->setFloatValue(ratio);
        break;
    }
}

void RectangleSelectionOptions::showSilder(kit::Object* sender)
{
    kit::Slider* slider = nullptr;
    int tag = 0;
    if (!Controls::openSlider(*this, sender, slider, tag) || !slider)
        return;
    switch (tag) {
    case Controls::kFeatherTag + 1: slider->setFloatValue(m_fFeather); break;
    case kWidthTag + 1: showSizeOnSlider(kWidthTag + 2, m_nFixedWidth, m_fWidthRatio); break;
    case kHeightTag + 1: showSizeOnSlider(kHeightTag + 2, m_nFixedHeight, m_fHeightRatio); break;
    }
}

void RectangleSelectionOptions::hideSlider(kit::Object* sender) { Controls::closeSlider(*this, sender); }

void RectangleSelectionOptions::takeSizeValue(bool isWidth, long long pixels, float ratio)
{
    switch (m_nSelectionType) {
    case kTypeFixedSize:
        setSelectionFixedSize(isWidth ? kit::Size { float(pixels), float(m_nFixedHeight) }
                                      : kit::Size { float(m_nFixedWidth), float(pixels) });
        break;
    case kTypeFixedRatio:
        setSelectionRatioHeightRatio(isWidth ? ratio : m_fWidthRatio, isWidth ? m_fHeightRatio : ratio);
        break;
    }
}

void RectangleSelectionOptions::changeSilderValue(kit::Object* sender)
{
    auto* slider = dynamic_cast<kit::Slider*>(sender);
    if (!slider)
        return;
    switch (slider->tag()) {
    case Controls::kFeatherTag + 2: setFeather(slider->floatValue()); break;
    case kWidthTag + 2: takeSizeValue(true, slider->integerValue(), slider->floatValue()); break;
    case kHeightTag + 2: takeSizeValue(false, slider->integerValue(), slider->floatValue()); break;
    }
}

void RectangleSelectionOptions::changeSelectionFeatherUI() { Controls::showFeather(*this, m_featherText, m_fFeather); }

void RectangleSelectionOptions::changeSelectionSizeUI()
{
    switch (m_nSelectionType) {
    case kTypeFixedSize:
    case kTypeFixedRatio: {
        const bool pixels = m_nSelectionType == kTypeFixedSize;
        m_widthText->setEnabled(true);
        m_heightText->setEnabled(true);
        m_widthText->setStringValue(pixels ? Controls::pixelsText(m_nFixedWidth) : Controls::ratioText(m_fWidthRatio));
        m_heightText->setStringValue(
            pixels ? Controls::pixelsText(m_nFixedHeight) : Controls::ratioText(m_fHeightRatio));
        showSizeOnSlider(kWidthTag + 2, m_nFixedWidth, m_fWidthRatio);
        showSizeOnSlider(kHeightTag + 2, m_nFixedHeight, m_fHeightRatio);
        break;
    }
    case kTypeNormal:
        m_widthText->setEnabled(false);
        m_heightText->setEnabled(false);
        m_widthText->setStringValue("");
        m_heightText->setStringValue("");
        break;
    }
}

bool RectangleSelectionOptions::controlTextShouldEndEditing(kit::Control* control, kit::TextView* fieldEditor)
{
    const std::string text = fieldEditor ? fieldEditor->string() : std::string();
    switch (control ? control->tag() : 0) {
    case Controls::kFeatherTag: setFeather(kit::floatValue(text)); break;
    case kWidthTag: takeSizeValue(true, kit::integerValue(text), kit::floatValue(text)); break;
    case kHeightTag: takeSizeValue(false, kit::integerValue(text), kit::floatValue(text)); break;
    }
    return true;
}

bool RectangleSelectionOptions::controlTextViewDoCommandBySelector(
    kit::Control* control, kit::TextView* textView, const std::string& command)
{
    return Controls::doCommandBySelector(control, textView, command);
}
