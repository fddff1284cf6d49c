// ColorSpace: device RGB.
#include "kit/ColorSpace.h"

namespace kit {

RefPtr<ColorSpace> ColorSpace::createDeviceRGB() { return adoptRef(new ColorSpace); }

} // namespace kit
