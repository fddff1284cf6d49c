// BrushSelectionOptions: the option panel shared by the brush and erase selection tools.
#pragma once

#include "kit/Button.h"
#include "kit/Slider.h"
#include "kit/View.h"

/// Selection mode and brush radius. The radius is the host brush's logarithmic size
/// parameter; the slider offers -2.0 to 5.0 and nothing else limits it. One panel serves
/// both brush tools for the whole life of the tool bar.
class BrushSelectionOptions final : public kit::View {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    float getRadius() const { return m_fRadius; }
    /// Stored as given, then shown on the slider (which keeps its own range).
    void setRadius(float radius);
    void setRadiusSliderUI();
    /// 0 New, 1 Add.
    int selectionMode() const { return m_mode; }
    /// Stored as given; the matching mode button shows pressed.
    void setSelectionMode(int mode);

    /// Actions of the mode buttons and the radius slider.
    void changeSelectionMode(kit::Object* sender);
    void changeRadius(kit::Object* sender);
    void setSelectionModeBtn();

    kit::Slider* radiusSlider() const { return m_sliderRadius; }

private:
    explicit BrushSelectionOptions(const kit::Rect& frame) : kit::View(frame) {}

    float m_fRadius = 0;
    int m_mode = 0;
    kit::Button* m_btnDefaultMode = nullptr;
    kit::Button* m_btnAddMode = nullptr;
    kit::Slider* m_sliderRadius = nullptr;
};
