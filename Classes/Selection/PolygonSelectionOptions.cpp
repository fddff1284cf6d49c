// PolygonSelectionOptions: the lasso panel's controls and its feather and mode reactions.
#include "Classes/Selection/PolygonSelectionOptions.h"

#include "Classes/Selection/SelectionPanelControls.h"
#include "kit/StringValue.h"
#include "kit/TextView.h"

using Controls = SelectionPanelControls;

void PolygonSelectionOptions::initData() { m_fFeather = 0; }

void PolygonSelectionOptions::initView()
{
    addModeButtons();
    Controls::addSeparator(*this, 86, 12, frame().height() - 20);
    m_featherText = Controls::addFeatherGroup(*this, Controls::hostEditBoxImage().get(), m_fFeather,
        &PolygonSelectionOptions::showSilder, &PolygonSelectionOptions::hideSlider,
        &PolygonSelectionOptions::changeSilderValue);
}

void PolygonSelectionOptions::setFeather(float feather)
{
    m_fFeather = Controls::clampFeather(feather);
    changeSelectionFeatherUI();
}

void PolygonSelectionOptions::showSilder(kit::Object* sender)
{
    kit::Slider* slider = nullptr;
    int tag = 0;
    if (Controls::openSlider(*this, sender, slider, tag) && slider && tag == Controls::kFeatherTag + 1)
        slider->setFloatValue(m_fFeather);
}

void PolygonSelectionOptions::hideSlider(kit::Object* sender) { Controls::closeSlider(*this, sender); }

void PolygonSelectionOptions::changeSilderValue(kit::Object* sender)
{
    auto* slider = dynamic_cast<kit::Slider*>(sender);
    if (slider && slider->tag() == Controls::kFeatherTag + 2)
        setFeather(slider->floatValue());
}

void PolygonSelectionOptions::changeSelectionFeatherUI() { Controls::showFeather(*this, m_featherText, m_fFeather); }

bool PolygonSelectionOptions::controlTextShouldEndEditing(kit::Control* control, kit::TextView* fieldEditor)
{
    if (control && control->tag() == Controls::kFeatherTag)
        setFeather(kit::floatValue(fieldEditor ? fieldEditor->string() : std::string()));
    return true;
}

bool PolygonSelectionOptions::controlTextViewDoCommandBySelector(
    kit::Control* control, kit::TextView* textView, const std::string& command)
{
    return Controls::doCommandBySelector(control, textView, command);
}
