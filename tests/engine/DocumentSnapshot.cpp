// DocumentSnapshot: everything observable about a document, to show that a refused call changed nothing.
#include "tests/engine/DocumentSnapshot.h"

using engine::Document;

DocumentSnapshot::DocumentSnapshot(const Document& document)
    : mask(document.maskAlpha())
    , paint(document.paintPixels())
    , maskCells(document.cellCount(Document::kSelectionMaskLayerId))
    , paintCells(document.cellCount(Document::kPaintLayerId))
    , undoDepth(document.undoDepth())
    , redoDepth(document.redoDepth())
    , openStep(document.hasOpenUndoStep())
    , revision(document.revision())
    , logSize(document.actionLog().size())
    , brushes(document.brushCount())
    , routing(document.selectionRouting())
    , view(document.viewRect())
    , viewSize(document.viewSize())
{
    document.layerOffset(Document::kSelectionMaskLayerId, maskOffsetX, maskOffsetY);
}

// Pixel vectors are summarised; gtest would otherwise print megabytes on a mismatch.
std::ostream& operator<<(std::ostream& out, const DocumentSnapshot& s)
{
    std::size_t maskSum = 0;
    for (std::uint8_t value : s.mask)
        maskSum += value;
    return out << "{mask sum " << maskSum << ", cells " << s.maskCells << "/" << s.paintCells << ", undo "
               << s.undoDepth << ", redo " << s.redoDepth << ", open " << s.openStep << ", revision " << s.revision
               << ", log " << s.logSize << ", brushes " << s.brushes << "}";
}
