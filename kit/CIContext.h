// CIContext: renders filter images into a bitmap context.
#pragma once

#include "kit/BitmapContext.h"
#include "kit/CIImage.h"
#include "kit/Geometry.h"
#include "kit/Object.h"

namespace kit {

/// Draws filter images into a bitmap context, which it keeps alive. A context named with sRGB
/// gets sRGB-encoded pixels; a device RGB one the working values as they are.
class CIContext final : public Object {
public:
    /// A context over the bitmap context; no options are known, so `options` is not read.
    /// Null without a bitmap context.
    static RefPtr<CIContext> contextWithCGContextOptions(BitmapContext* context, const void* options);

    /// Draws the part `fromRect` of the image (its own space) into `inRect` of the bitmap context
    /// (drawing space, y up), source over. Outside its extent the image is transparent black.
    /// Equal sizes at whole-pixel positions copy pixels one for one; anything else samples
    /// bilinearly at pixel centres. False, with nothing drawn, when the image cannot be
    /// rendered (its scratch memory cannot be had or exceeds 2^28 pixels).
    bool drawImageInRectFromRect(const CIImage* image, const Rect& inRect, const Rect& fromRect);
    /// Clears the whole bitmap to transparent black, then draws as drawImageInRectFromRect. When
    /// the draw copies one for one over the whole bitmap, each pixel is written once and none is
    /// read. False, with nothing drawn (the bitmap may be cleared), as the draw fails.
    bool clearAndDrawImageInRectFromRect(const CIImage* image, const Rect& inRect, const Rect& fromRect);

private:
    explicit CIContext(BitmapContext* context);
    bool draw(const CIImage* image, const Rect& inRect, const Rect& fromRect, bool replace);
    bool drawScaled(const CIImage* image, const Rect& inRect, const Rect& fromRect);

    RefPtr<BitmapContext> m_context;
    RefPtr<ColorSpace> m_space; // the bitmap's
};

} // namespace kit
