// EllipseSelectionView: the ellipse rasteriser and outline in place of the rectangle's.
#include "Classes/Selection/EllipseSelectionView.h"

#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/SelectionAssert.h"
#include "kit/BezierPath.h"

int EllipseSelectionView::createImageBuffer(
    IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const
{
    return CreateImageBufferFromEllipse(buffer, origin, box, kOpaqueWhite, true, kOpaqueWhite, feather);
}

void EllipseSelectionView::drawOutline(const kit::Rect& rect) const
{
    strokeDashed(*kit::BezierPath::bezierPathWithOvalInRect(rect));
}

void EllipseSelectionView::assertRasterised(int nRet, const char* operation) const
{
    if (nRet != 0)
        selection::assertionFailed("nRet == 0", operation, __FILE__, __LINE__);
}
