// BlurFilters: the filters that average neighbourhoods: Gaussian, box, disc, motion and zoom.
#include "kit/FilterOutputs.h"

namespace kit::filteroutputs {

RefPtr<CIImage> gaussianBlur(const CIFilter& filter)
{
    const double radius = filter.numberForKey("inputRadius");
    // The radius has no meaning below 0: such a blur, and a NaN one, blurs nothing.
    return CIImage::gaussianBlur(filter.imageForKey("inputImage"), radius >= 0 ? radius : 0);
}

} // namespace kit::filteroutputs
