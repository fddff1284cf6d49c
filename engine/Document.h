// Document: the host engine's document, with its paint layer, selection mask, undo and brushes.
#pragma once

#include "engine/ActionLog.h"
#include "engine/BrushSet.h"
#include "engine/DabPainter.h"
#include "engine/EngineExport.h"
#include "engine/Layer.h"
#include "engine/StrokePath.h"
#include "engine/UndoHistory.h"
#include "host/SelectionEventRecord.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace engine {

/// The visible part of the canvas, in canvas pixels.
struct ViewRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ViewRect&) const = default;
};

/// The canvas view's size on screen, in points.
struct ViewSize {
    int width = 0;
    int height = 0;

    bool operator==(const ViewSize&) const = default;
};

/// A document is also the context the IPD_ operations take (see context()). Operations return 0
/// when done and a negative value when refused, and a refused operation changes nothing; the
/// reason is kept in lastError(). Imports may target either layer and merge by larger alpha.
/// Strokes follow the routing flag: on, the pen paints white coverage into the selection mask
/// and the eraser removes it; off, both work on the paint layer with the stroke's colour. A
/// StrokeTo without BeginOneStroke starts a stroke. Pressure and time must be finite but do not
/// shape the dabs.
class ENGINE_API Document {
public:
    static constexpr int kPaintLayerId = 1;
    static constexpr int kSelectionMaskLayerId = 2;
    static constexpr int kMaxCanvasSide = 65536;
    static constexpr std::int64_t kMaxCanvasPixels = std::int64_t { 1 } << 28;
    static constexpr std::int64_t kMaxImportPixels = std::int64_t { 1 } << 28;

    Document();
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// The live document a context names, or null for anything else.
    static Document* fromContext(const void* context);
    /// This document as the context the IPD_ operations take.
    void* context();

    int canvasWidth() const;
    int canvasHeight() const;
    /// Sides from 1 to kMaxCanvasSide and at most kMaxCanvasPixels pixels. Cells outside the new
    /// canvas are kept.
    bool setCanvasSize(int width, int height);
    ViewRect viewRect() const;
    bool setViewRect(const ViewRect& rect);
    ViewSize viewSize() const;
    bool setViewSize(const ViewSize& size);
    bool layerOffset(int layer, int& x, int& y) const;
    bool setLayerOffset(int layer, int x, int y);
    const std::filesystem::path& brushDirectory() const;
    void setBrushDirectory(const std::filesystem::path& directory);
    /// <main bundle>/Contents/Resources/Brushes, the bundle being two levels above the folder of
    /// the running executable; empty when the executable cannot be found.
    static std::filesystem::path defaultBrushDirectory();

    bool selectionRouting() const;
    /// The layer strokes and refreshes go to.
    int activeLayer() const;
    /// The selection mask's alpha, canvas-sized, row by row, with the layer offset applied.
    std::vector<std::uint8_t> maskAlpha() const;
    /// The paint layer's RGBA, canvas-sized, row by row, with the layer offset applied.
    std::vector<std::uint8_t> paintPixels() const;
    /// Replaces the paint layer's canvas pixels with canvas-sized premultiplied RGBA (rows top
    /// first) as one undo step; cells that would not change are left alone.
    void replacePaintPixels(const std::vector<std::uint8_t>& rgba);
    /// Makes the picture the whole paint layer and the canvas its size, as one undo step (an
    /// open step is closed first); undo gives back the paint layer and the canvas's size. False,
    /// changing nothing, for a size setCanvasSize refuses or pixels that do not match it.
    bool openPicture(int width, int height, const std::vector<std::uint8_t>& rgba);
    /// The host's selection commands, each one undo step of its own (an open step is closed
    /// first): every canvas pixel of the selection mask selected, none, or each pixel's
    /// selection turned around (255 - alpha). Mask pixels off the canvas are left alone, except
    /// that selectNone empties the whole layer as IPD_Layer_Delete does.
    void selectAll();
    void selectNone();
    void invertSelection();
    /// Cells the layer holds, on or off the canvas; 0 for an unknown layer.
    std::size_t cellCount(int layer) const;
    std::size_t undoDepth() const;
    std::size_t redoDepth() const;
    bool hasOpenUndoStep() const;
    bool strokeActive() const;
    std::size_t brushCount() const;
    /// Counts changes to layer pixels, so a host knows when to redraw.
    std::uint64_t revision() const;
    std::uint64_t refreshCount() const;
    const std::string& lastError() const;
    ActionLog& actionLog();
    const ActionLog& actionLog() const;

    /// While enabled, every IPD_ operation on this document adds one line: its name, then its
    /// arguments, e.g. "IPD_LayerPaint_ImportImageData 2 64x64 at 10,20".
    void setJournalEnabled(bool enabled);
    bool journalEnabled() const;
    const std::vector<std::string>& journal() const;
    void clearJournal();
    void appendJournal(std::string line);

    int setSelectionRouting(int flag);
    int importImageData(int layer, const unsigned char* data, int width, int height, int x, int y);
    int refreshActiveLayer();
    int deleteLayer(int layer, int reserved);
    /// The cell's pixels, created transparent on first use, or null for a cell off the canvas.
    /// The cell's state is saved into the open undo step first, as callers write in place.
    unsigned char* cellBuffer(int layer, int column, int row);
    int updateCell(int layer, int column, int row);
    int saveCellInfo(int layer, int column, int row);
    int undo();
    int redo();
    /// Ends the user's gesture: the open undo step, if any, becomes a step of its own, so that a
    /// change nothing else closes (a clearing click) cannot merge into the next gesture. A stroke
    /// still running keeps its step open. Returns whether a step was pushed.
    bool endGesture();
    void* createBrush(const char* fileName);
    int destroyBrush(const void* brush);
    /// The parameter's value; 0 for an unknown brush or parameter.
    float brushParameter(const void* brush, int index) const;
    int setBrushParameter(const void* brush, int index, float value);
    int beginStroke();
    int strokeTo(const void* brush, unsigned int colour, int x, int y, float pressure, float time);
    int endStroke();
    int recordEvent(const SelectionEventRecord* record);
    /// "brush3" for this document's third brush, "brush?" for a handle it does not know.
    std::string brushLabel(const void* brush) const;

private:
    Layer* layerById(int id);
    const Layer* layerById(int id) const;
    PixelRect canvasRect() const;
    bool cellOnCanvas(const Layer& layer, CellKey key) const;
    Layer* cellLayer(int layer, int column, int row);
    Layer& strokeLayer();
    void layStroke(Brush& brush, unsigned int colour, int x, int y);
    void writePaintPixels(const std::uint8_t* rgba);
    /// Gives every canvas pixel of the mask the alpha `map` makes of its own (as premultiplied
    /// white), recording the cells that change into one undo step.
    template <typename Map> void mapMaskAlpha(Map map);
    void changed();
    int refuse(std::string message);

    int m_canvasWidth = 1000;
    int m_canvasHeight = 800;
    ViewRect m_viewRect { 0, 0, 1000, 800 };
    ViewSize m_viewSize { 1000, 800 };
    Layer m_paint { kPaintLayerId };
    Layer m_mask { kSelectionMaskLayerId };
    bool m_selectionRouting = false;
    UndoHistory m_undo;
    BrushSet m_brushes;
    StrokePath m_stroke;
    DabPainter m_painter;
    // The revision the painter's stroke memory was last in step with: a change made by anything
    // else in between (a delete, an import, an undo) starts its memory afresh.
    std::uint64_t m_painterRevision = 0;
    ActionLog m_actionLog;
    std::filesystem::path m_brushDirectory;
    std::uint64_t m_revision = 0;
    std::uint64_t m_refreshCount = 0;
    std::string m_lastError;
    bool m_journalEnabled = false;
    std::vector<std::string> m_journal;
};

} // namespace engine
