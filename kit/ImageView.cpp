// ImageView: fitting the image into the bounds.
#include "kit/ImageView.h"

#include "kit/GraphicsContext.h"

#include <algorithm>

namespace kit {

void ImageView::setImage(RefPtr<Image> image)
{
    m_image = std::move(image);
    setNeedsDisplay();
}

void ImageView::setImageScaling(ImageScaling scaling)
{
    m_scaling = scaling;
    setNeedsDisplay();
}

void ImageView::setImageAlignment(ImageAlignment alignment)
{
    m_alignment = alignment;
    setNeedsDisplay();
}

Rect ImageView::drawingRectForImage(Size imageSize, const Rect& bounds, ImageScaling scaling, ImageAlignment alignment)
{
    if (!(imageSize.width > 0) || !(imageSize.height > 0))
        return {};
    Size size = imageSize;
    switch (scaling) {
    case ImageScaleAxesIndependently: return bounds;
    case ImageScaleNone: break;
    case ImageScaleProportionallyDown:
    case ImageScaleProportionallyUpOrDown: {
        float factor = std::min(bounds.width() / imageSize.width, bounds.height() / imageSize.height);
        if (scaling == ImageScaleProportionallyDown)
            factor = std::min(factor, 1.0f);
        size = { imageSize.width * factor, imageSize.height * factor };
        break;
    }
    }
    // y up: "top" is the bounds' maximum y.
    float x = bounds.minX() + (bounds.width() - size.width) / 2;
    float y = bounds.minY() + (bounds.height() - size.height) / 2;
    switch (alignment) {
    case ImageAlignCenter: break;
    case ImageAlignTop: y = bounds.maxY() - size.height; break;
    case ImageAlignTopLeft:
        y = bounds.maxY() - size.height;
        x = bounds.minX();
        break;
    case ImageAlignTopRight:
        y = bounds.maxY() - size.height;
        x = bounds.maxX() - size.width;
        break;
    case ImageAlignLeft: x = bounds.minX(); break;
    case ImageAlignBottom: y = bounds.minY(); break;
    case ImageAlignBottomLeft:
        y = bounds.minY();
        x = bounds.minX();
        break;
    case ImageAlignBottomRight:
        y = bounds.minY();
        x = bounds.maxX() - size.width;
        break;
    case ImageAlignRight: x = bounds.maxX() - size.width; break;
    }
    return { x, y, size.width, size.height };
}

void ImageView::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context || !m_image)
        return;
    Rect where = drawingRectForImage(m_image->size(), bounds(), m_scaling, m_alignment);
    if (isFlipped() && m_alignment != ImageAlignCenter) // "top" is the minimum y of a flipped view
        where.origin.y = bounds().height() - where.maxY();
    context->drawImage(*m_image, where, {}, CompositeSourceOver, isEnabled() ? 1.0f : 0.5f);
}

} // namespace kit
