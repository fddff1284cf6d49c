// RectangleSelectionView: replay of recorded rectangles.
#include "Classes/Selection/RectangleSelectionView.h"

#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/SelectionAssert.h"
#include "host/HostEngine.h"

int RectangleSelectionView::createImageBuffer(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const
{
    return CreateImageBufferFromRect(buffer, origin, box, kOpaqueWhite, true, kOpaqueWhite, feather);
}

void RectangleSelectionView::dealPlay(SelectionEventRecord* record)
{
    if (!record)
        return;
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const kit::Rect box { record->param3, record->param4, record->param5, record->param6 };
    const int nRet = createImageBuffer(buffer, origin, box, record->param8);
    if (nRet < 0)
        return; // nothing to commit: refused or empty
    SELECTION_ASSERT(nRet == 0);
    CommitSelectionMask(m_QMContext, buffer, origin);
    IPD_RecordEvent(m_QMContext, record);
}
