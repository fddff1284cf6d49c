// Slider: a knob on a track that picks a value between a minimum and a maximum.
#pragma once

#include "kit/Control.h"

#include <cstdint>

namespace kit {

/// A horizontal slider (vertical when taller than wide). A press on the knob drags it from
/// where it was taken; a press elsewhere on the track moves the knob there first. The value
/// is always within [minimum, maximum]. A continuous slider (the default) sends its action
/// at every change while the mouse is down; otherwise once, at the release. A new slider
/// runs from 0 to 1 with value 0.
class Slider : public Control {
    KIT_MAKEABLE
public:
    static RefPtr<Slider> create(const Rect& frame) { return make<Slider>(frame); }

    double minValue() const { return m_min; }
    /// Non-finite limits are ignored; the value is clamped into the new range.
    void setMinValue(double value);
    double maxValue() const { return m_max; }
    void setMaxValue(double value);

    double doubleValue() const { return m_value; }
    /// Clamped into the range; NaN is taken as the minimum.
    void setDoubleValue(double value);
    float floatValue() const { return float(m_value); }
    void setFloatValue(float value) { setDoubleValue(value); }
    /// The value truncated toward zero.
    std::int32_t intValue() const;
    std::int64_t integerValue() const;
    void setIntValue(std::int32_t value) { setDoubleValue(value); }

    bool isVertical() const { return frame().height() > frame().width(); }
    /// The knob's rectangle in this view's coordinates.
    Rect knobRect() const;

    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event& event) override;
    void drawRect(const Rect& dirty) override;

protected:
    explicit Slider(const Rect& frame) : Control(frame) {}

private:
    float knobThickness() const;
    /// The knob centre's travel along the slider's axis.
    float travelStart() const;
    float travelLength() const;
    float positionOf(double value) const;
    double valueAt(float position) const;
    float along(Point local) const { return isVertical() ? local.y : local.x; }
    void trackTo(const Event& event);

    double m_min = 0;
    double m_max = 1;
    double m_value = 0;
    bool m_tracking = false;
    float m_grabOffset = 0;
};

} // namespace kit
