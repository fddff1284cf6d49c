// FilterControls: the catalogue in a pop-up, its range on a slider, and the filter applied at release.
#include "hostapp/FilterControls.h"

#include "Classes/Selection/AImageFilter.h"
#include "hostapp/HostPicture.h"

#include <iostream>

namespace hostapp {

namespace {

constexpr float kGap = 6;

const _AstructAlgorithmItem& entryAt(int entry)
{
    return CAImageFilterInfo::GetImageFilterInfoInstance()->m_arrAlgorithm[std::size_t(entry)];
}

bool hasNumber(int entry)
{
    const auto& params = entryAt(entry).vectorParam;
    return !params.empty() && params[0].nType == kUnivariableFloat;
}

} // namespace

FilterControls::FilterControls(kit::View& host, kit::Point origin, float height)
    : m_popUp(kit::PopUpButton::create({ origin.x, origin.y, kPopUpWidth, height }))
    , m_slider(kit::Slider::create({ origin.x + kPopUpWidth + kGap, origin.y, kSliderWidth, height }))
{
    for (int entry = 0; entry < GetFiltersCount(); ++entry)
        m_popUp->addItemWithTitle(GetFilterName(entry));
    m_popUp->setAction([this](kit::Object*) { chooseFilter(); });
    m_slider->setContinuous(false);
    m_slider->setAction([this](kit::Object*) { apply(); });
    host.addSubview(m_popUp.get());
    host.addSubview(m_slider.get());
    chooseFilter();
}

kit::View* FilterControls::controlAt(kit::Point p) const
{
    for (kit::View* control : { static_cast<kit::View*>(m_popUp.get()), static_cast<kit::View*>(m_slider.get()) }) {
        if (kit::MouseInRect(p, control->frame(), false))
            return control;
    }
    return nullptr;
}

void FilterControls::chooseFilter()
{
    const int entry = m_popUp->indexOfSelectedItem();
    const bool number = entry >= 0 && hasNumber(entry);
    m_slider->setEnabled(number);
    if (number) {
        m_slider->setMinValue(GetFilterParamMin(entry, 0));
        m_slider->setMaxValue(GetFilterParamMax(entry, 0));
        m_slider->setDoubleValue(GetFilterParamDefault(entry, 0));
    } else if (entry >= 0 && m_document) {
        apply();
    }
}

void FilterControls::apply()
{
    const int entry = m_popUp->indexOfSelectedItem();
    if (entry < 0 || !m_document)
        return;
    const _AstructAlgorithmItem& item
        = CAImageFilterInfo::GetImageFilterInfoInstance()->m_arrAlgorithm[std::size_t(entry)];
    auto filter = PictureFilter::named(item.strFilterName);
    if (!filter)
        return;
    if (hasNumber(entry))
        filter->setNumber(item.vectorParam[0].szKey, m_slider->doubleValue());
    std::string problem;
    if (!HostPicture(*m_document).applyFilter(*filter, problem))
        std::cerr << "quillmark-host: " << problem << "\n";
}

} // namespace hostapp
