// ColorSpace: the RGB colour spaces that bitmap contexts and filter images name.
#pragma once

#include "kit/Object.h"

namespace kit {

/// An RGB colour space, three components and alpha. Device RGB takes 8-bit values as they are:
/// filters work on them directly, and the mask pipeline relies on that. sRGB marks 8-bit values
/// as sRGB-encoded: a filter image made from such data works in linear light, and a filter
/// image drawn into a bitmap context named with sRGB is encoded again.
class ColorSpace final : public Object {
public:
    static RefPtr<ColorSpace> createDeviceRGB();
    static RefPtr<ColorSpace> createSRGB();
    int numberOfComponents() const { return 3; }
    bool isSRGB() const { return m_srgb; }

private:
    explicit ColorSpace(bool srgb) : m_srgb(srgb) {}

    bool m_srgb;
};

} // namespace kit
