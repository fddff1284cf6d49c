// MaskCommit: how a finished mask buffer reaches the host's selection-mask layer.
#pragma once

#include "Classes/Selection/GraphicsToBuffer.h"

struct SelectionEventRecord;

/// The colour every selection mask is drawn with.
inline constexpr COLOR_STRUCT kOpaqueWhite { 255, 255, 255, 255 };

/// Routes the host's writes to the selection-mask layer and imports the buffer with its first
/// pixel at the origin truncated toward zero.
void ImportSelectionMask(void* context, const IMAGE_BUFFER& buffer, kit::Point origin);
/// Asks the host to refresh the layer and ends the routing.
void FinishSelectionImport(void* context);
/// The whole import commit of the marquee tools and of every replay: import, refresh, end of
/// routing, and the buffer freed.
void CommitSelectionMask(void* context, IMAGE_BUFFER buffer, kit::Point origin);
/// Hands a selection record to the host's action recorder with the current layer id in param0,
/// kind 90 and the name "Selection" filled in.
void RecordSelectionEvent(void* context, SelectionEventRecord& record);
