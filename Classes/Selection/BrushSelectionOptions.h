// BrushSelectionOptions: the option panel shared by the brush and erase selection tools.
#pragma once

#include "Classes/Selection/SelectionPanel.h"
#include "kit/Slider.h"

/// Selection mode and brush radius. The radius is the host brush's logarithmic size
/// parameter; the slider offers -2.0 to 5.0 and nothing else limits it. One panel serves
/// both brush tools for the whole life of the tool bar.
class BrushSelectionOptions final : public SelectionPanel {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    float getRadius() const { return m_fRadius; }
    /// Stored as given, then shown on the slider (which keeps its own range).
    void setRadius(float radius);
    void setRadiusSliderUI();

    /// Action of the radius slider.
    void changeRadius(kit::Object* sender);

    kit::Slider* radiusSlider() const { return m_sliderRadius; }

private:
    explicit BrushSelectionOptions(const kit::Rect& frame) : SelectionPanel(frame, kModeAdd) {}

    float m_fRadius = 0;
    kit::Slider* m_sliderRadius = nullptr;
};
