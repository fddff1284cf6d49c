// Brush: one brush made from a package, with its numbered parameters and its dab shape.
#include "engine/Brush.h"

#include <algorithm>
#include <cmath>

namespace engine {

Brush::Brush(int number, BrushSettings settings) : m_number(number), m_settings(std::move(settings)) {}

int Brush::number() const { return m_number; }

BrushMode Brush::mode() const { return m_settings.mode; }

std::optional<float> Brush::parameter(int index) const
{
    if (index != kRadiusParameter)
        return std::nullopt;
    return m_settings.radius;
}

bool Brush::setParameter(int index, float value)
{
    if (index != kRadiusParameter || !std::isfinite(value))
        return false;
    m_settings.radius = value;
    return true;
}

double Brush::pixelRadius() const
{
    double radius = std::exp(static_cast<double>(m_settings.radius) / m_settings.radiusCurve);
    return std::clamp(radius, kMinPixelRadius, kMaxPixelRadius);
}

double Brush::dabSpacing() const { return std::max(1.0, pixelRadius() * m_settings.spacing); }

double Brush::coreRadius() const { return std::min<double>(m_settings.hardness, 0.99) * pixelRadius(); }

double Brush::coverageAt(double distance) const
{
    double radius = pixelRadius();
    if (!(distance < radius))
        return 0.0;
    double core = coreRadius();
    if (distance <= core)
        return 1.0;
    double u = (distance - core) / (radius - core);
    return 1.0 - u * u * (3.0 - 2.0 * u);
}

} // namespace engine
