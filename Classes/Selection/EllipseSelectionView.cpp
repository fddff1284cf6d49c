// EllipseSelectionView: the ellipse rasteriser in place of the rectangle's.
#include "Classes/Selection/EllipseSelectionView.h"

#include "Classes/Selection/MaskCommit.h"

int EllipseSelectionView::createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const
{
    return CreateImageBufferFromEllipse(buffer, origin, box, kOpaqueWhite, true, kOpaqueWhite, feather);
}
