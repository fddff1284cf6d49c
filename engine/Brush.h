// Brush: one brush made from a package, with its numbered parameters and its dab shape.
#pragma once

#include "engine/BrushPackage.h"

#include <optional>

namespace engine {

/// A brush owned by a document. Parameter 3 is the logarithmic radius; the pixel radius is
/// e^(parameter 3 / radius_curve), kept between kMinPixelRadius and kMaxPixelRadius so that no
/// parameter value makes a dab vanish or cover an unbounded area.
class Brush {
public:
    static constexpr int kRadiusParameter = 3;
    static constexpr double kMinPixelRadius = 0.5;
    static constexpr double kMaxPixelRadius = 1000.0;

    Brush(int number, BrushSettings settings);

    /// The document's number for this brush, for messages and the call journal.
    int number() const;
    BrushMode mode() const;

    /// The parameter's value, or nothing for a parameter the brush does not have.
    std::optional<float> parameter(int index) const;
    /// False, changing nothing, for an unknown parameter or a value that is not finite.
    bool setParameter(int index, float value);

    double pixelRadius() const;
    /// The distance between dab centres along a stroke, at least one pixel.
    double dabSpacing() const;
    /// Within this distance of its centre a dab covers fully.
    double coreRadius() const;
    /// The dab's coverage, 1 in the hard core falling smoothly to 0 at the radius.
    double coverageAt(double distance) const;

private:
    int m_number;
    BrushSettings m_settings;
};

} // namespace engine
