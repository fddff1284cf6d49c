// Document: the host engine's document, with its paint layer, selection mask, undo and brushes.
#include "engine/Document.h"

#include "engine/BrushPackage.h"
#include "engine/DabPainter.h"
#include "engine/DocumentRegistry.h"
#include "engine/ImageImporter.h"

#include <cmath>
#include <cstring>
#include <system_error>

namespace engine {

namespace {

constexpr unsigned int kMaskColour = 0xffffff;

// Calls visit(cellRow, canvasX, canvasY, pixelCount) for each on-canvas run of a layer's pixels.
template <typename Visit> void forEachCanvasRow(const Layer& layer, const PixelRect& canvas, Visit visit)
{
    for (const auto& [key, cell] : layer.cells()) {
        PixelRect cellRect = layer.canvasRectOf(key);
        PixelRect part = cellRect.intersected(canvas);
        if (part.isEmpty())
            continue;
        for (std::int64_t y = part.top; y < part.bottom; ++y) {
            const std::uint8_t* row
                = cell->data() + (y - cellRect.top) * kCellRowBytes + (part.left - cellRect.left) * 4;
            visit(row, part.left, y, part.right - part.left);
        }
    }
}

// Visits the cells of the layer's grid that meet the canvas, made or not, with each cell's canvas
// rectangle and the part of it on the canvas.
template <typename Visit> void forEachCellOnCanvas(const Layer& layer, const PixelRect& canvas, Visit visit)
{
    const PixelRect cells = layer.cellRangeFor(canvas);
    for (std::int64_t row = cells.top; row < cells.bottom; ++row) {
        for (std::int64_t column = cells.left; column < cells.right; ++column) {
            const CellKey key { column, row };
            const PixelRect cellRect = layer.canvasRectOf(key);
            visit(key, cellRect, cellRect.intersected(canvas));
        }
    }
}

} // namespace

Document::Document() : m_brushDirectory(defaultBrushDirectory()) { DocumentRegistry::instance().add(this); }

Document::~Document() { DocumentRegistry::instance().remove(this); }

Document* Document::fromContext(const void* context) { return DocumentRegistry::instance().find(context); }

void* Document::context() { return this; }

int Document::canvasWidth() const { return m_canvasWidth; }

int Document::canvasHeight() const { return m_canvasHeight; }

bool Document::setCanvasSize(int width, int height)
{
    if (width < 1 || height < 1 || width > kMaxCanvasSide || height > kMaxCanvasSide
        || std::int64_t { width } * height > kMaxCanvasPixels) {
        refuse("a canvas of " + std::to_string(width) + " x " + std::to_string(height)
            + " pixels is refused: sides from 1 to " + std::to_string(kMaxCanvasSide) + " and at most "
            + std::to_string(kMaxCanvasPixels) + " pixels in all");
        return false;
    }
    m_canvasWidth = width;
    m_canvasHeight = height;
    changed();
    return true;
}

ViewRect Document::viewRect() const { return m_viewRect; }

bool Document::setViewRect(const ViewRect& rect)
{
    if (rect.width < 1 || rect.height < 1) {
        refuse("the visible rectangle needs a width and a height of at least 1 pixel");
        return false;
    }
    m_viewRect = rect;
    return true;
}

ViewSize Document::viewSize() const { return m_viewSize; }

bool Document::setViewSize(const ViewSize& size)
{
    if (size.width < 1 || size.height < 1) {
        refuse("the canvas view needs a width and a height of at least 1 point");
        return false;
    }
    m_viewSize = size;
    return true;
}

bool Document::layerOffset(int layer, int& x, int& y) const
{
    const Layer* found = layerById(layer);
    if (!found)
        return false;
    x = static_cast<int>(found->offsetX());
    y = static_cast<int>(found->offsetY());
    return true;
}

bool Document::setLayerOffset(int layer, int x, int y)
{
    Layer* found = layerById(layer);
    if (!found) {
        refuse("no layer " + std::to_string(layer));
        return false;
    }
    found->setOffset(x, y);
    changed();
    return true;
}

const std::filesystem::path& Document::brushDirectory() const { return m_brushDirectory; }

void Document::setBrushDirectory(const std::filesystem::path& directory) { m_brushDirectory = directory; }

std::filesystem::path Document::defaultBrushDirectory()
{
    std::error_code ec;
    std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec || executable.empty())
        return {};
    std::filesystem::path bundle = executable.parent_path().parent_path().parent_path();
    return bundle / "Contents" / "Resources" / "Brushes";
}

bool Document::selectionRouting() const { return m_selectionRouting; }

int Document::activeLayer() const { return m_selectionRouting ? kSelectionMaskLayerId : kPaintLayerId; }

std::vector<std::uint8_t> Document::maskAlpha() const
{
    std::vector<std::uint8_t> alpha(static_cast<std::size_t>(m_canvasWidth) * static_cast<std::size_t>(m_canvasHeight));
    forEachCanvasRow(
        m_mask, canvasRect(), [&](const std::uint8_t* row, std::int64_t x, std::int64_t y, std::int64_t count) {
            std::uint8_t* out = alpha.data() + y * m_canvasWidth + x;
            for (std::int64_t i = 0; i < count; ++i)
                out[i] = row[i * 4 + 3];
        });
    return alpha;
}

std::vector<std::uint8_t> Document::paintPixels() const
{
    std::vector<std::uint8_t> pixels(
        static_cast<std::size_t>(m_canvasWidth) * static_cast<std::size_t>(m_canvasHeight) * 4);
    forEachCanvasRow(
        m_paint, canvasRect(), [&](const std::uint8_t* row, std::int64_t x, std::int64_t y, std::int64_t count) {
            std::copy(row, row + count * 4, pixels.data() + (y * m_canvasWidth + x) * 4);
        });
    return pixels;
}

void Document::replacePaintPixels(const std::vector<std::uint8_t>& rgba)
{
    if (rgba.size() != std::size_t(m_canvasWidth) * std::size_t(m_canvasHeight) * 4)
        return;
    writePaintPixels(rgba.data());
    m_undo.closeStep();
}

bool Document::openPicture(int width, int height, const std::vector<std::uint8_t>& rgba)
{
    if (width < 1 || height < 1 || rgba.size() != std::size_t(width) * std::size_t(height) * 4)
        return false;
    // The canvas's size belongs to the step, so that undo gives back the old picture whole.
    // A refused size changes nothing, and the step that closes then is dropped.
    m_undo.closeStep();
    m_undo.recordValue(m_canvasWidth);
    m_undo.recordValue(m_canvasHeight);
    if (!setCanvasSize(width, height)) {
        m_undo.closeStep();
        return false;
    }
    // Nothing of the old picture may wait off the canvas to come back when it grows; its cells
    // move into the step rather than being copied there.
    m_undo.takeAllCells(m_paint);
    writePaintPixels(rgba.data());
    m_undo.closeStep();
    changed();
    return true;
}

void Document::writePaintPixels(const std::uint8_t* rgba)
{
    const std::size_t canvasRowBytes = std::size_t(m_canvasWidth) * 4;
    static const CellPixels kEmpty {};
    bool any = false;
    forEachCellOnCanvas(m_paint, canvasRect(), [&](CellKey key, const PixelRect& cellRect, const PixelRect& part) {
        const CellPixels* cell = m_paint.find(key);
        const std::size_t bytes = std::size_t(part.right - part.left) * 4;
        auto source = [&](std::int64_t y) { return rgba + y * canvasRowBytes + part.left * 4; };
        auto target = [&](auto& c, std::int64_t y) {
            return c.data() + (y - cellRect.top) * kCellRowBytes + (part.left - cellRect.left) * 4;
        };
        bool differs = false;
        for (std::int64_t y = part.top; y < part.bottom && !differs; ++y)
            differs = std::memcmp(source(y), target(cell ? *cell : kEmpty, y), bytes) != 0;
        if (!differs)
            return;
        m_undo.recordBefore(m_paint, key);
        CellPixels& written = m_paint.ensure(key);
        for (std::int64_t y = part.top; y < part.bottom; ++y)
            std::memcpy(target(written, y), source(y), bytes);
        any = true;
    });
    if (any)
        changed();
}

template <typename Map> void Document::mapMaskAlpha(Map map)
{
    m_undo.closeStep();
    bool any = false;
    forEachCellOnCanvas(m_mask, canvasRect(), [&](CellKey key, const PixelRect& cellRect, const PixelRect& part) {
        // A missing cell is transparent: it changes only when the map lifts alpha 0.
        if (!m_mask.find(key) && map(std::uint8_t { 0 }) == 0)
            return;
        m_undo.recordBefore(m_mask, key);
        CellPixels& cell = m_mask.ensure(key);
        for (std::int64_t y = part.top; y < part.bottom; ++y) {
            std::uint8_t* p = cell.data() + (y - cellRect.top) * kCellRowBytes + (part.left - cellRect.left) * 4;
            for (std::int64_t x = part.left; x < part.right; ++x, p += 4) {
                const std::uint8_t a = map(p[3]);
                p[0] = p[1] = p[2] = p[3] = a;
            }
        }
        any = true;
    });
    m_undo.closeStep();
    if (any)
        changed();
}

void Document::selectAll()
{
    mapMaskAlpha([](std::uint8_t) { return std::uint8_t { 255 }; });
}

void Document::selectNone()
{
    m_undo.closeStep();
    deleteLayer(kSelectionMaskLayerId, 0);
    m_undo.closeStep();
}

void Document::invertSelection()
{
    mapMaskAlpha([](std::uint8_t a) { return std::uint8_t(255 - a); });
}

std::size_t Document::cellCount(int layer) const
{
    const Layer* found = layerById(layer);
    return found ? found->cellCount() : 0;
}

std::size_t Document::undoDepth() const { return m_undo.undoDepth(); }

std::size_t Document::redoDepth() const { return m_undo.redoDepth(); }

bool Document::hasOpenUndoStep() const { return m_undo.hasOpenStep(); }

bool Document::strokeActive() const { return m_stroke.isActive(); }

std::size_t Document::brushCount() const { return m_brushes.size(); }

std::uint64_t Document::revision() const { return m_revision; }

std::uint64_t Document::refreshCount() const { return m_refreshCount; }

const std::string& Document::lastError() const { return m_lastError; }

ActionLog& Document::actionLog() { return m_actionLog; }

const ActionLog& Document::actionLog() const { return m_actionLog; }

void Document::setJournalEnabled(bool enabled) { m_journalEnabled = enabled; }

bool Document::journalEnabled() const { return m_journalEnabled; }

const std::vector<std::string>& Document::journal() const { return m_journal; }

void Document::clearJournal() { m_journal.clear(); }

void Document::appendJournal(std::string line)
{
    if (m_journalEnabled)
        m_journal.push_back(std::move(line));
}

int Document::setSelectionRouting(int flag)
{
    if (flag != 0 && flag != 1)
        return refuse("selection routing flag must be 0 or 1");
    m_selectionRouting = flag == 1;
    return 0;
}

int Document::importImageData(int layer, const unsigned char* data, int width, int height, int x, int y)
{
    Layer* target = layerById(layer);
    if (!target)
        return refuse("unknown layer " + std::to_string(layer));
    if (!data)
        return refuse("null image data");
    if (width < 1 || height < 1)
        return refuse("image width and height must be positive");
    if (std::int64_t { width } * height > kMaxImportPixels)
        return refuse("image has more than " + std::to_string(kMaxImportPixels) + " pixels");
    ImageImporter importer(
        *target, canvasRect(), [this, target](CellKey key) { return m_undo.replaceCell(*target, key); });
    if (importer.import(data, width, height, x, y))
        changed();
    return 0;
}

int Document::refreshActiveLayer()
{
    m_undo.closeStep();
    ++m_refreshCount;
    return 0;
}

int Document::deleteLayer(int layer, int reserved)
{
    Layer* target = layerById(layer);
    if (!target)
        return refuse("unknown layer " + std::to_string(layer));
    if (reserved != 0)
        return refuse("reserved argument must be 0");
    if (target->cellCount() == 0)
        return 0;
    m_undo.takeAllCells(*target);
    changed();
    return 0;
}

unsigned char* Document::cellBuffer(int layer, int column, int row)
{
    Layer* target = cellLayer(layer, column, row);
    if (!target)
        return nullptr;
    CellKey key { column, row };
    m_undo.recordBefore(*target, key);
    return target->ensure(key).data();
}

int Document::updateCell(int layer, int column, int row)
{
    Layer* target = cellLayer(layer, column, row);
    if (!target)
        return -1;
    if (!target->find({ column, row }))
        return refuse("no such cell");
    changed();
    return 0;
}

int Document::saveCellInfo(int layer, int column, int row)
{
    Layer* target = cellLayer(layer, column, row);
    if (!target)
        return -1;
    m_undo.recordBefore(*target, { column, row });
    return 0;
}

int Document::undo()
{
    if (!m_undo.undo())
        return refuse("nothing to undo");
    m_stroke.end();
    changed();
    return 0;
}

int Document::redo()
{
    if (!m_undo.redo())
        return refuse("nothing to redo");
    m_stroke.end();
    changed();
    return 0;
}

bool Document::endGesture()
{
    if (strokeActive())
        return false;
    return m_undo.closeStep();
}

void* Document::createBrush(const char* fileName)
{
    if (!fileName) {
        refuse("null brush package name");
        return nullptr;
    }
    std::string error;
    std::optional<BrushSettings> settings = BrushPackage::load(m_brushDirectory, fileName, error);
    if (!settings) {
        refuse(error);
        return nullptr;
    }
    Brush* brush = m_brushes.add(*settings);
    if (!brush)
        refuse("too many brushes");
    return brush;
}

int Document::destroyBrush(const void* brush) { return m_brushes.remove(brush) ? 0 : refuse("unknown brush"); }

float Document::brushParameter(const void* brush, int index) const
{
    const Brush* found = m_brushes.find(brush);
    return found ? found->parameter(index).value_or(0.0f) : 0.0f;
}

int Document::setBrushParameter(const void* brush, int index, float value)
{
    Brush* found = m_brushes.find(brush);
    if (!found)
        return refuse("unknown brush");
    if (!found->setParameter(index, value))
        return refuse("unknown brush parameter or value not finite");
    return 0;
}

int Document::beginStroke()
{
    m_stroke.begin();
    m_painter.reset();
    return 0;
}

int Document::strokeTo(const void* brush, unsigned int colour, int x, int y, float pressure, float time)
{
    Brush* found = m_brushes.find(brush);
    if (!found)
        return refuse("unknown brush");
    if (!std::isfinite(pressure) || !std::isfinite(time))
        return refuse("pressure and time must be finite");
    if (!m_stroke.isActive()) {
        m_stroke.begin();
        m_painter.reset();
    }
    layStroke(*found, colour, x, y);
    return 0;
}

int Document::endStroke()
{
    m_stroke.end();
    m_painter.reset();
    m_undo.closeStep();
    return 0;
}

int Document::recordEvent(const SelectionEventRecord* record)
{
    if (!record)
        return refuse("null event record");
    if (!m_actionLog.append(*record))
        return refuse("event record string too long");
    return 0;
}

std::string Document::brushLabel(const void* brush) const
{
    const Brush* found = m_brushes.find(brush);
    return found ? "brush" + std::to_string(found->number()) : "brush?";
}

Layer* Document::layerById(int id)
{
    return id == kPaintLayerId ? &m_paint : id == kSelectionMaskLayerId ? &m_mask : nullptr;
}

const Layer* Document::layerById(int id) const
{
    return id == kPaintLayerId ? &m_paint : id == kSelectionMaskLayerId ? &m_mask : nullptr;
}

PixelRect Document::canvasRect() const { return { 0, 0, m_canvasWidth, m_canvasHeight }; }

bool Document::cellOnCanvas(const Layer& layer, CellKey key) const
{
    return !layer.canvasRectOf(key).intersected(canvasRect()).isEmpty();
}

Layer* Document::cellLayer(int layer, int column, int row)
{
    Layer* target = layerById(layer);
    if (!target) {
        refuse("unknown layer " + std::to_string(layer));
        return nullptr;
    }
    if (!cellOnCanvas(*target, { column, row })) {
        refuse("cell " + std::to_string(column) + "," + std::to_string(row) + " is off the canvas");
        return nullptr;
    }
    return target;
}

Layer& Document::strokeLayer() { return m_selectionRouting ? m_mask : m_paint; }

void Document::layStroke(Brush& brush, unsigned int colour, int x, int y)
{
    Layer& layer = strokeLayer();
    PixelRect canvas = canvasRect();
    auto margin = static_cast<std::int64_t>(std::ceil(brush.pixelRadius())) + 1;
    PixelRect reach { canvas.left - margin, canvas.top - margin, canvas.right + margin, canvas.bottom + margin };
    if (m_painterRevision != m_revision)
        m_painter.reset();
    const DabPainter::BeforeChange before = [this, &layer](CellKey key) { m_undo.recordBefore(layer, key); };
    unsigned int dabColour = m_selectionRouting ? kMaskColour : colour & 0xffffffu;
    bool laid = false;
    m_stroke.extendTo(x + 0.5, y + 0.5, brush.dabSpacing(), reach,
        [&](double dabX, double dabY) { laid |= m_painter.lay(layer, canvas, brush, dabX, dabY, dabColour, before); });
    if (laid)
        changed();
    m_painterRevision = m_revision;
}

void Document::changed() { ++m_revision; }

int Document::refuse(std::string message)
{
    m_lastError = std::move(message);
    return -1;
}

} // namespace engine
