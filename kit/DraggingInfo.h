// DraggingInfo: what a drag destination learns about a drag over it.
#pragma once

#include "kit/Geometry.h"

#include <string>
#include <vector>

namespace kit {

/// Drag operations, with the original platform's values.
enum DragOperation : unsigned {
    DragOperationNone = 0,
    DragOperationCopy = 1,
    DragOperationLink = 2,
    DragOperationGeneric = 4,
    DragOperationPrivate = 8,
    DragOperationMove = 16,
    DragOperationDelete = 32,
    DragOperationEvery = 0xFFFFFFFFu,
};

struct DraggingInfo {
    /// The dragged files' paths (the file-names drag type).
    std::vector<std::string> filenames;
    /// The location in the window's content area, y up.
    Point location;
    /// What the drag source allows.
    unsigned sourceOperationMask = DragOperationEvery;
};

} // namespace kit
