// ImageView: a control that shows an image, scaled and aligned in its bounds.
#pragma once

#include "kit/Control.h"
#include "kit/Image.h"

namespace kit {

/// Image scalings, with the original platform's values.
enum ImageScaling : int {
    ImageScaleProportionallyDown = 0,
    ImageScaleAxesIndependently = 1,
    ImageScaleNone = 2,
    ImageScaleProportionallyUpOrDown = 3,
};

/// Where an image that does not fill the bounds sits, with the original platform's values.
enum ImageAlignment : int {
    ImageAlignCenter = 0,
    ImageAlignTop = 1,
    ImageAlignTopLeft = 2,
    ImageAlignTopRight = 3,
    ImageAlignLeft = 4,
    ImageAlignBottom = 5,
    ImageAlignBottomLeft = 6,
    ImageAlignBottomRight = 7,
    ImageAlignRight = 8,
};

/// Shows an image; it takes no mouse events of its own, so a press passes to the view behind
/// it in the responder chain. The scaling starts proportionally down, the alignment centred.
class ImageView : public Control {
    KIT_MAKEABLE
public:
    static RefPtr<ImageView> create(const Rect& frame) { return make<ImageView>(frame); }

    Image* image() const { return m_image.get(); }
    void setImage(RefPtr<Image> image);
    ImageScaling imageScaling() const { return m_scaling; }
    void setImageScaling(ImageScaling scaling);
    ImageAlignment imageAlignment() const { return m_alignment; }
    void setImageAlignment(ImageAlignment alignment);

    /// Where an image of `imageSize` is drawn in `bounds` under a scaling and an alignment.
    static Rect drawingRectForImage(
        Size imageSize, const Rect& bounds, ImageScaling scaling, ImageAlignment alignment = ImageAlignCenter);

    void drawRect(const Rect& dirty) override;

protected:
    explicit ImageView(const Rect& frame) : Control(frame) {}

private:
    RefPtr<Image> m_image;
    ImageScaling m_scaling = ImageScaleProportionallyDown;
    ImageAlignment m_alignment = ImageAlignCenter;
};

} // namespace kit
