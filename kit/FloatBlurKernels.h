// FloatBlurKernels: the recursive Gaussian's passes over float RGBA, one build per SIMD target.
#pragma once

#include "kit/GaussianBlur.h"
#include "kit/ImageRecipe.h"

namespace kit::floatblurkernels {

/// Floats of the column strips the vertical pass runs down side by side.
constexpr long long kStrip = 32;

/// Blurs every row of `width` x `height` RGBA pixels in place with the recursion `c`;
/// `scratch` holds width x 4 floats.
void blurRows(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch);
/// The same down the columns; `scratch` holds height x kStrip floats.
void blurColumns(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch);

} // namespace kit::floatblurkernels
