// ColorFilters: the filters that map each pixel's colour: adjustments, effects and tones.
#include "kit/ColorMapRecipe.h"
#include "kit/FilterOutputs.h"

namespace kit::filteroutputs {

namespace {

RefPtr<CIImage> mapped(const CIFilter& filter, ColorMapRecipe::RowMap map)
{
    return CIImage::imageWithRecipe(adoptRef(new ColorMapRecipe(filter.imageForKey("inputImage"), std::move(map))));
}

} // namespace

RefPtr<CIImage> colorInvert(const CIFilter& filter)
{
    return mapped(filter, ColorMapRecipe::unpremultiplied([](float* rgb) {
        for (int c = 0; c < 3; ++c)
            rgb[c] = 1 - rgb[c];
    }));
}

} // namespace kit::filteroutputs
