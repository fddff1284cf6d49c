// FilterControls: the host's filter pop-up and the slider of the chosen filter's first number.
#pragma once

#include "engine/Document.h"
#include "kit/PopUpButton.h"
#include "kit/Slider.h"
#include "kit/View.h"

#include <vector>

namespace hostapp {

/// The pop-up lists the filter catalogue's display names; the slider takes the chosen filter's
/// first number input over the catalogue's range, starting at its default. Releasing the slider
/// filters the picture through the selection with that value (one undo step, one host record);
/// a filter without a number acts as soon as it is chosen, and its slider is disabled.
class FilterControls {
public:
    static constexpr float kPopUpWidth = 150;
    static constexpr float kSliderWidth = 140;

    /// Adds the pop-up and then the slider to `host`, in a row from `origin`, `height` high.
    FilterControls(kit::View& host, kit::Point origin, float height);
    FilterControls(const FilterControls&) = delete;
    FilterControls& operator=(const FilterControls&) = delete;

    void setDocument(engine::Document* document) { m_document = document; }
    kit::PopUpButton& popUp() const { return *m_popUp; }
    kit::Slider& slider() const { return *m_slider; }
    /// The pop-up's and the slider's frames, in the host view's coordinates.
    std::vector<kit::Rect> frames() const { return { m_popUp->frame(), m_slider->frame() }; }
    /// The control under a point of the host view, or null.
    kit::View* controlAt(kit::Point p) const;

private:
    void chooseFilter();
    void apply();

    engine::Document* m_document = nullptr;
    kit::RefPtr<kit::PopUpButton> m_popUp;
    kit::RefPtr<kit::Slider> m_slider;
};

} // namespace hostapp
