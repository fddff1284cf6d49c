// BrushSelectionOptions: the brush panel's controls and its radius and mode reactions.
#include "Classes/Selection/BrushSelectionOptions.h"

#include "Classes/Selection/SelectionPanelControls.h"

using Controls = SelectionPanelControls;

namespace {

constexpr float kStartRadius = 2.5f;

} // namespace

void BrushSelectionOptions::initData() { m_fRadius = kStartRadius; }

void BrushSelectionOptions::initView()
{
    addModeButtons();
    const float h = frame().height();
    Controls::addSeparator(*this, 86, 12, h - 20);
    const std::string toolTip = Controls::localized("Set Brush Radius");
    Controls::addLabel(*this, { 94, h * 0.5f - 13, 63, 24 }, Controls::localized("Radius :"), toolTip);
    m_sliderRadius
        = Controls::addSlider(*this, { 156, h * 0.5f - 12, 150, 24 }, -1, &BrushSelectionOptions::changeRadius);
    m_sliderRadius->setMinValue(-2.0);
    m_sliderRadius->setMaxValue(5.0);
    m_sliderRadius->setFloatValue(kStartRadius);
    m_sliderRadius->setToolTip(toolTip);
}

void BrushSelectionOptions::setRadius(float radius)
{
    m_fRadius = radius;
    setRadiusSliderUI();
}

void BrushSelectionOptions::setRadiusSliderUI()
{
    if (m_sliderRadius)
        m_sliderRadius->setFloatValue(m_fRadius);
}

void BrushSelectionOptions::changeRadius(kit::Object* sender)
{
    if (auto* slider = dynamic_cast<kit::Slider*>(sender))
        setRadius(slider->floatValue());
}
