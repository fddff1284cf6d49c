// ColorSpace: device RGB and sRGB.
#include "kit/ColorSpace.h"

namespace kit {

RefPtr<ColorSpace> ColorSpace::createDeviceRGB() { return adoptRef(new ColorSpace(false)); }

RefPtr<ColorSpace> ColorSpace::createSRGB() { return adoptRef(new ColorSpace(true)); }

} // namespace kit
