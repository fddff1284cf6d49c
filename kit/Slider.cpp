// Slider: the mapping between knob position and value, tracking and drawing.
#include "kit/Slider.h"

#include "kit/BezierPath.h"
#include "kit/Event.h"
#include "kit/GraphicsContext.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kit {

namespace {

template <typename Int> Int truncated(double value)
{
    if (!(value == value))
        return 0;
    if (value >= double(std::numeric_limits<Int>::max()))
        return std::numeric_limits<Int>::max();
    if (value <= double(std::numeric_limits<Int>::min()))
        return std::numeric_limits<Int>::min();
    return Int(value);
}

} // namespace

void Slider::setMinValue(double value)
{
    if (!std::isfinite(value))
        return;
    m_min = value;
    setDoubleValue(m_value);
}

void Slider::setMaxValue(double value)
{
    if (!std::isfinite(value))
        return;
    m_max = value;
    setDoubleValue(m_value);
}

void Slider::setDoubleValue(double value)
{
    const double lo = std::min(m_min, m_max);
    const double hi = std::max(m_min, m_max);
    m_value = std::isnan(value) ? lo : std::clamp(value, lo, hi);
    setNeedsDisplay();
}

std::int32_t Slider::intValue() const { return truncated<std::int32_t>(m_value); }
std::int64_t Slider::integerValue() const { return truncated<std::int64_t>(m_value); }

float Slider::knobThickness() const
{
    const Rect b = bounds();
    const float across = isVertical() ? b.width() : b.height();
    // Four points clear on either side: a slider laid along the lower edge of a bar keeps its
    // knob off the bar's border line.
    return std::clamp(across - 8, 8.0f, 18.0f);
}

float Slider::travelStart() const { return knobThickness() / 2; }

float Slider::travelLength() const
{
    const Rect b = bounds();
    return std::max(0.0f, (isVertical() ? b.height() : b.width()) - knobThickness());
}

float Slider::positionOf(double value) const
{
    const double span = m_max - m_min;
    const double fraction = span != 0 ? (value - m_min) / span : 0;
    return travelStart() + float(fraction) * travelLength();
}

double Slider::valueAt(float position) const
{
    const float length = travelLength();
    const double fraction = length > 0 ? std::clamp(double(position - travelStart()) / length, 0.0, 1.0) : 0;
    // The ends give the limits exactly, whatever the rounding in between.
    if (fraction >= 1)
        return m_max;
    return m_min + fraction * (m_max - m_min);
}

Rect Slider::knobRect() const
{
    const Rect b = bounds();
    const float k = knobThickness();
    const float centre = positionOf(m_value);
    if (isVertical())
        return { b.minX() + (b.width() - k) / 2, centre - k / 2, k, k };
    return { centre - k / 2, b.minY() + (b.height() - k) / 2, k, k };
}

void Slider::trackTo(const Event& event)
{
    const double before = m_value;
    setDoubleValue(valueAt(along(localPoint(event)) - m_grabOffset));
    if (m_value != before && isContinuous())
        sendAction();
}

void Slider::mouseDown(const Event& event)
{
    if (!isEnabled())
        return;
    m_tracking = true;
    const Point local = localPoint(event);
    const Rect knob = knobRect();
    // Taken on the knob, it keeps its place under the pointer; elsewhere it jumps there.
    if (PointInRect(local, knob)) {
        m_grabOffset = along(local) - positionOf(m_value);
        return;
    }
    m_grabOffset = 0;
    trackTo(event);
}

void Slider::mouseDragged(const Event& event)
{
    if (m_tracking && isEnabled())
        trackTo(event);
}

void Slider::mouseUp(const Event& event)
{
    if (!m_tracking)
        return;
    m_tracking = false;
    if (!isEnabled())
        return;
    if (isContinuous()) {
        trackTo(event);
        return;
    }
    setDoubleValue(valueAt(along(localPoint(event)) - m_grabOffset));
    sendAction();
}

void Slider::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect b = bounds();
    const bool vertical = isVertical();
    const float thick = 4;
    const float start = travelStart();
    const float end = start + travelLength();
    const float knobAt = positionOf(m_value);
    const float alpha = isEnabled() ? 1.0f : 0.5f;
    const auto bar = [&](float from, float to) {
        return vertical ? Rect { b.minX() + (b.width() - thick) / 2, from, thick, to - from }
                        : Rect { from, b.minY() + (b.height() - thick) / 2, to - from, thick };
    };
    context->setFillColor(Color::colorWithCalibratedWhiteAlpha(0.72f, alpha));
    context->fillPath(*BezierPath::bezierPathWithRect(bar(start, end)));
    context->setFillColor(Color::selectedMenuItemColor().colorWithAlphaComponent(alpha));
    context->fillPath(*BezierPath::bezierPathWithRect(bar(start, knobAt)));

    const Rect knob = knobRect();
    RefPtr<BezierPath> disc = BezierPath::bezierPathWithOvalInRect(
        { knob.minX() + 0.5f, knob.minY() + 0.5f, knob.width() - 1, knob.height() - 1 });
    context->setFillColor(m_tracking ? Color::colorWithCalibratedWhiteAlpha(0.86f, 1) : Color::whiteColor());
    context->fillPath(*disc);
    context->setStrokeColor(Color::colorWithCalibratedWhiteAlpha(0.45f, alpha));
    context->strokePath(*disc);
}

} // namespace kit
