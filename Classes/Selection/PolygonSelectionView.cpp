// PolygonSelectionView: replay of recorded polygons.
#include "Classes/Selection/PolygonSelectionView.h"

#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/PolygonVertexText.h"
#include "Classes/Selection/SelectionAssert.h"
#include "host/HostEngine.h"
#include "kit/Utf8.h"

#include <cmath>
#include <string_view>
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
    // The text is a C string of UTF-8: it ends at its first NUL, and one that is not valid
    // UTF-8 was not written by a tool, so the record is skipped.
    const std::string_view text(record->text.c_str());
    if (kit::sanitizedUtf8(text) != text)
        return;
    std::vector<kit::Point> vertices;
    if (n >= 3 && !ParsePolygonVertexText(text, n, vertices))
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
