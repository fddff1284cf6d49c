// ColorSpace: the device RGB colour space that bitmap contexts and filter images name.
#pragma once

#include "kit/Object.h"

namespace kit {

/// The only colour space the kit draws in: device RGB, three components and alpha.
class ColorSpace final : public Object {
public:
    static RefPtr<ColorSpace> createDeviceRGB();
    int numberOfComponents() const { return 3; }

private:
    ColorSpace() = default;
};

} // namespace kit
