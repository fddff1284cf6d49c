// PolygonSelectionView: replay of recorded polygons.
#include "Classes/Selection/PolygonSelectionView.h"

#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/PolygonVertexText.h"
#include "Classes/Selection/SelectionAssert.h"
#include "host/HostEngine.h"

#include <cmath>
#include <vector>

void PolygonSelectionView::dealPlay(SelectionEventRecord* record)
{
    if (!record)
        return;
    // The count is checked before it is converted or used to size anything: a NaN or huge
    // float has no integer value, and the rasteriser takes at most a million vertices.
    const float count = record->param3;
    if (!(count >= 0.0f && count < float(kGraphicsToBufferMaxVertices + 1)))
        return;
    const int n = static_cast<int>(count);
    std::vector<kit::Point> vertices;
    if (n >= 3 && !ParsePolygonVertexText(record->text, n, vertices))
        return;
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const int nRet = CreateImageBufferFromPolygon(buffer, origin, vertices.data(), n, kOpaqueWhite, true, kOpaqueWhite,
                                                  record->param5);
    if (nRet < 0)
        return;
    SELECTION_ASSERT(nRet == 0);
    CommitSelectionMask(m_QMContext, buffer, origin);
    IPD_RecordEvent(m_QMContext, record);
}
