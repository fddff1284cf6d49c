// HostEngineApi: the IPD_ C operations, each checking its context and forwarding to a Document.
#pragma GCC visibility push(default)
#include "host/HostEngine.h"
#pragma GCC visibility pop

#include "engine/Document.h"

#include <array>
#include <charconv>
#include <string>

using engine::Document;

namespace {

// No exception may cross into a C caller: any failure inside an operation is a refusal.
template <typename Result, typename Body> Result withDocument(void* context, Result refused, Body body) noexcept
{
    try {
        Document* document = Document::fromContext(context);
        return document ? body(*document) : refused;
    } catch (...) {
        return refused;
    }
}

// The line is only built when the journal is on, so a host that does not watch pays nothing.
template <typename MakeLine> void journal(Document& document, MakeLine makeLine)
{
    if (document.journalEnabled())
        document.appendJournal(makeLine());
}

std::string text(int value) { return std::to_string(value); }

std::string text(float value)
{
    std::array<char, 64> buffer {};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

std::string cellText(int layer, int column, int row) { return text(layer) + " " + text(column) + "," + text(row); }

std::string colourText(unsigned int colour)
{
    std::array<char, 16> buffer {};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), colour & 0xffffffu, 16);
    std::string hex(buffer.data(), result.ptr);
    return std::string(6 - hex.size(), '0') + hex;
}

} // namespace

extern "C" {

int IPD_GetSelectionMaskID(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_GetSelectionMaskID"); });
        return Document::kSelectionMaskLayerId;
    });
}

int IPD_EnableSeletionLayerOperation(void* context, int flag)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_EnableSeletionLayerOperation " + text(flag); });
        return document.setSelectionRouting(flag);
    });
}

int IPD_LayerPaint_ImportImageData(
    void* context, int layer, const unsigned char* data, int width, int height, int x, int y)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] {
            return "IPD_LayerPaint_ImportImageData " + text(layer) + " " + text(width) + "x" + text(height) + " at "
                + text(x) + "," + text(y);
        });
        return document.importImageData(layer, data, width, height, x, y);
    });
}

int IPD_StartRefreshingActiveLayer(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_StartRefreshingActiveLayer"); });
        return document.refreshActiveLayer();
    });
}

int IPD_Layer_Delete(void* context, int layer, int reserved)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_Layer_Delete " + text(layer) + " " + text(reserved); });
        return document.deleteLayer(layer, reserved);
    });
}

int IPD_Layer_GetOffset(void* context, int layer, int* x, int* y)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_Layer_GetOffset " + text(layer); });
        int offsetX = 0;
        int offsetY = 0;
        if (!x || !y || !document.layerOffset(layer, offsetX, offsetY))
            return -1;
        *x = offsetX;
        *y = offsetY;
        return 0;
    });
}

unsigned char* IPD_Layer_GetCellBuffer(void* context, int layer, int column, int row, int)
{
    return withDocument(context, static_cast<unsigned char*>(nullptr), [&](Document& document) {
        journal(document, [&] { return "IPD_Layer_GetCellBuffer " + cellText(layer, column, row); });
        return document.cellBuffer(layer, column, row);
    });
}

int IPD_Layer_UpdateCell(void* context, int layer, int column, int row, int)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_Layer_UpdateCell " + cellText(layer, column, row); });
        return document.updateCell(layer, column, row);
    });
}

int IPD_Layer_SaveCellInfo(void* context, int layer, int column, int row)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_Layer_SaveCellInfo " + cellText(layer, column, row); });
        return document.saveCellInfo(layer, column, row);
    });
}

int IPD_GetPos(void* context, int* x, int* y, int* width, int* height)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [] { return std::string("IPD_GetPos"); });
        if (!x || !y || !width || !height)
            return -1;
        engine::ViewRect rect = document.viewRect();
        *x = rect.x;
        *y = rect.y;
        *width = rect.width;
        *height = rect.height;
        return 0;
    });
}

int IPD_GetCanvasSize(void* context, int* width, int* height)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [] { return std::string("IPD_GetCanvasSize"); });
        if (!width || !height)
            return -1;
        engine::ViewSize size = document.viewSize();
        *width = size.width;
        *height = size.height;
        return 0;
    });
}

int IPD_UndoStroke(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_UndoStroke"); });
        return document.undo();
    });
}

int IPD_RedoStroke(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_RedoStroke"); });
        return document.redo();
    });
}

void* IPD_CreateBrushFromPackage(void* context, const char* fileName)
{
    return withDocument(context, static_cast<void*>(nullptr), [&](Document& document) {
        journal(document, [&] { return "IPD_CreateBrushFromPackage " + std::string(fileName ? fileName : "(null)"); });
        return document.createBrush(fileName);
    });
}

int IPD_DestroyBursh(void* context, void* brush)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_DestroyBursh " + document.brushLabel(brush); });
        return document.destroyBrush(brush);
    });
}

float IPD_GetBrushParam(void* context, void* brush, int parameter)
{
    return withDocument(context, 0.0f, [&](Document& document) {
        journal(document, [&] { return "IPD_GetBrushParam " + document.brushLabel(brush) + " " + text(parameter); });
        return document.brushParameter(brush, parameter);
    });
}

int IPD_SetBrushParam(void* context, void* brush, int parameter, float value)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] {
            return "IPD_SetBrushParam " + document.brushLabel(brush) + " " + text(parameter) + " " + text(value);
        });
        return document.setBrushParameter(brush, parameter, value);
    });
}

int IPD_BeginOneStroke(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_BeginOneStroke"); });
        return document.beginStroke();
    });
}

int IPD_StrokeTo(void* context, void* brush, unsigned int color, int x, int y, float pressure, float time)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] {
            return "IPD_StrokeTo " + document.brushLabel(brush) + " " + colourText(color) + " " + text(x) + ","
                + text(y) + " " + text(pressure) + " " + text(time);
        });
        return document.strokeTo(brush, color, x, y, pressure, time);
    });
}

int IPD_EndOneStroke(void* context)
{
    return withDocument(context, -1, [](Document& document) {
        journal(document, [] { return std::string("IPD_EndOneStroke"); });
        return document.endStroke();
    });
}

int IPD_RecordEvent(void* context, const SelectionEventRecord* record)
{
    return withDocument(context, -1, [&](Document& document) {
        journal(document, [&] { return "IPD_RecordEvent " + (record ? text(record->kind) : std::string("(null)")); });
        return document.recordEvent(record);
    });
}

} // extern "C"
