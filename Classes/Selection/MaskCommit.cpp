// MaskCommit: the five engine calls of a commit, in the order the host relies on.
#include "Classes/Selection/MaskCommit.h"

#include "host/HostEngine.h"

void ImportSelectionMask(void* context, const IMAGE_BUFFER& buffer, kit::Point origin)
{
    IPD_EnableSeletionLayerOperation(context, 1);
    const int layer = IPD_GetSelectionMaskID(context);
    // The rasteriser refuses any origin that does not fit an int, so the truncation is defined.
    IPD_LayerPaint_ImportImageData(context, layer, buffer.pData, buffer.nWidth, buffer.nHeight,
        static_cast<int>(origin.x), static_cast<int>(origin.y));
}

void FinishSelectionImport(void* context)
{
    IPD_StartRefreshingActiveLayer(context);
    IPD_EnableSeletionLayerOperation(context, 0);
}

void CommitSelectionMask(void* context, IMAGE_BUFFER buffer, kit::Point origin)
{
    ImportSelectionMask(context, buffer, origin);
    FinishSelectionImport(context);
    DestroyImageBuffer(buffer);
}

void RecordSelectionEvent(void* context, SelectionEventRecord& record)
{
    record.kind = kSelectionEventKind;
    record.param0 = static_cast<float>(IPD_GetSelectionMaskID(context));
    record.name = "Selection";
    IPD_RecordEvent(context, &record);
}
