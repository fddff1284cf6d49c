// HostEngine: the C operations of the host painting engine that the plug-in calls.
#pragma once

#include "SelectionEventRecord.h"

// Every operation takes the engine's document context first. Operations whose
// result the plug-in ignores still return a status (0 done, negative refused)
// so that a host and its tests can tell a refused call from a done one; a
// refused call changes nothing.
extern "C" {

/// Identifier of the selection-mask layer.
int IPD_GetSelectionMaskID(void* context);
/// 1 routes the following imports, strokes and refreshes to the selection-mask layer; 0 ends that.
int IPD_EnableSeletionLayerOperation(void* context, int flag);
/// Imports width x height RGBA pixels (premultiplied, top row first) with the top-left pixel at
/// layer pixel (x, y). The engine copies the data during the call.
int IPD_LayerPaint_ImportImageData(
    void* context, int layer, const unsigned char* data, int width, int height, int x, int y);
/// Closes the open undo step and asks the host to redraw the active layer.
int IPD_StartRefreshingActiveLayer(void* context);
/// Empties the layer. The last argument is reserved and always 0.
int IPD_Layer_Delete(void* context, int layer, int reserved);
/// Writes the layer's offset in canvas pixels.
int IPD_Layer_GetOffset(void* context, int layer, int* x, int* y);
/// The 64 x 64 RGBA pixels of one cell, writable in place, or null for a cell outside the canvas.
unsigned char* IPD_Layer_GetCellBuffer(void* context, int layer, int column, int row, int reserved);
/// Tells the engine that a cell's pixels changed.
int IPD_Layer_UpdateCell(void* context, int layer, int column, int row, int reserved);
/// Records a cell's new state in the open undo step.
int IPD_Layer_SaveCellInfo(void* context, int layer, int column, int row);
/// The visible canvas rectangle in canvas pixels.
int IPD_GetPos(void* context, int* x, int* y, int* width, int* height);
/// The canvas view's size in points.
int IPD_GetCanvasSize(void* context, int* width, int* height);
int IPD_UndoStroke(void* context);
int IPD_RedoStroke(void* context);
/// A brush made from a package file found by its bare name, or null.
void* IPD_CreateBrushFromPackage(void* context, const char* fileName);
int IPD_DestroyBursh(void* context, void* brush);
/// Parameter 3 is the logarithmic brush radius. An unknown brush or parameter gives 0.
float IPD_GetBrushParam(void* context, void* brush, int parameter);
int IPD_SetBrushParam(void* context, void* brush, int parameter, float value);
int IPD_BeginOneStroke(void* context);
/// Extends the open stroke to canvas pixel (x, y). time is 5.1 for the first point, the seconds
/// since the previous point after that, and -1 for the last point.
int IPD_StrokeTo(void* context, void* brush, unsigned int color, int x, int y, float pressure, float time);
int IPD_EndOneStroke(void* context);
/// Appends a deep copy of the record to the action log.
int IPD_RecordEvent(void* context, const SelectionEventRecord* record);
}
