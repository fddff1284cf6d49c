// FloatConversion: float division and truncation that stay defined for any value a host reports.
#pragma once

#include <climits>
#include <cmath>
#include <limits>

/// a / b as IEEE arithmetic gives it, without dividing by zero: a host that reports a zero
/// width gets non-finite coordinates, as it would on the original platform, and a checked
/// build does not stop on it.
inline float ieeeDivide(float a, float b)
{
    if (b != 0.0f)
        return a / b;
    if (a == 0.0f || std::isnan(a))
        return std::numeric_limits<float>::quiet_NaN();
    return (std::signbit(a) != std::signbit(b)) ? -std::numeric_limits<float>::infinity()
                                                : std::numeric_limits<float>::infinity();
}

/// Truncation toward zero to an int; NaN gives 0 and values beyond the range are held to it,
/// where a plain conversion would be undefined.
inline int truncateToInt(float v)
{
    if (std::isnan(v))
        return 0;
    if (v >= 2147483648.0f)
        return INT_MAX;
    if (v <= -2147483648.0f)
        return INT_MIN;
    return static_cast<int>(v);
}
