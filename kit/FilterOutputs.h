// FilterOutputs: the output image of each filter the kit knows, from the filter's inputs.
#pragma once

#include "kit/CIFilter.h"
#include "kit/CIImage.h"

namespace kit::filteroutputs {

// Each takes a filter whose image input is set and describes its output image.

RefPtr<CIImage> gaussianBlur(const CIFilter& filter);
RefPtr<CIImage> boxBlur(const CIFilter& filter);
RefPtr<CIImage> discBlur(const CIFilter& filter);
RefPtr<CIImage> motionBlur(const CIFilter& filter);
RefPtr<CIImage> zoomBlur(const CIFilter& filter);

RefPtr<CIImage> colorControls(const CIFilter& filter);
RefPtr<CIImage> exposureAdjust(const CIFilter& filter);
RefPtr<CIImage> gammaAdjust(const CIFilter& filter);
RefPtr<CIImage> hueAdjust(const CIFilter& filter);
RefPtr<CIImage> vibrance(const CIFilter& filter);
RefPtr<CIImage> colorInvert(const CIFilter& filter);
RefPtr<CIImage> colorPosterize(const CIFilter& filter);
RefPtr<CIImage> photoEffectChrome(const CIFilter& filter);
RefPtr<CIImage> photoEffectFade(const CIFilter& filter);
RefPtr<CIImage> photoEffectInstant(const CIFilter& filter);
RefPtr<CIImage> photoEffectMono(const CIFilter& filter);
RefPtr<CIImage> photoEffectProcess(const CIFilter& filter);
RefPtr<CIImage> photoEffectTransfer(const CIFilter& filter);
RefPtr<CIImage> sepiaTone(const CIFilter& filter);

RefPtr<CIImage> vignette(const CIFilter& filter);
RefPtr<CIImage> vignetteEffect(const CIFilter& filter);
RefPtr<CIImage> bumpDistortion(const CIFilter& filter);

} // namespace kit::filteroutputs
