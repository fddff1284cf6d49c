// ImageImporter: merges an RGBA image into a layer, keeping per pixel the one with more alpha.
#include "engine/ImageImporter.h"

#include <algorithm>

namespace engine {

namespace {

std::uint8_t* cellPixel(CellPixels& cell, const PixelRect& cellRect, std::int64_t x, std::int64_t y)
{
    return cell.data() + (y - cellRect.top) * kCellRowBytes + (x - cellRect.left) * 4;
}

} // namespace

ImageImporter::ImageImporter(Layer& layer, const PixelRect& clip, BeforeChange beforeChange)
    : m_layer(layer)
    , m_clip(clip)
    , m_beforeChange(std::move(beforeChange))
{
}

bool ImageImporter::import(const std::uint8_t* data, int width, int height, int x, int y)
{
    PixelRect placed { std::int64_t { x } + m_layer.offsetX(), std::int64_t { y } + m_layer.offsetY(), 0, 0 };
    placed.right = placed.left + width;
    placed.bottom = placed.top + height;
    Image image { data, std::int64_t { width } * 4, placed };
    PixelRect area = placed.intersected(m_clip);
    if (area.isEmpty())
        return false;
    bool changed = false;
    PixelRect cells = m_layer.cellRangeFor(area);
    for (std::int64_t row = cells.top; row < cells.bottom; ++row) {
        for (std::int64_t column = cells.left; column < cells.right; ++column)
            changed = importIntoCell(image, { column, row }, area) || changed;
    }
    return changed;
}

bool ImageImporter::importIntoCell(const Image& image, CellKey key, const PixelRect& area)
{
    PixelRect cellRect = m_layer.canvasRectOf(key);
    PixelRect part = cellRect.intersected(area);
    if (part.isEmpty() || !wouldChange(image, m_layer.find(key), cellRect, part))
        return false;
    m_beforeChange(key);
    CellPixels& cell = m_layer.ensure(key);
    for (std::int64_t y = part.top; y < part.bottom; ++y) {
        for (std::int64_t x = part.left; x < part.right; ++x) {
            const std::uint8_t* source = sourcePixel(image, x, y);
            std::uint8_t* target = cellPixel(cell, cellRect, x, y);
            if (source[3] > target[3])
                std::copy(source, source + 4, target);
        }
    }
    return true;
}

bool ImageImporter::wouldChange(
    const Image& image, const CellPixels* cell, const PixelRect& cellRect, const PixelRect& area)
{
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        for (std::int64_t x = area.left; x < area.right; ++x) {
            std::uint8_t oldAlpha = cell
                ? (*cell)[static_cast<std::size_t>((y - cellRect.top) * kCellRowBytes + (x - cellRect.left) * 4 + 3)]
                : 0;
            if (sourcePixel(image, x, y)[3] > oldAlpha)
                return true;
        }
    }
    return false;
}

const std::uint8_t* ImageImporter::sourcePixel(const Image& image, std::int64_t x, std::int64_t y)
{
    return image.data + (y - image.canvasRect.top) * image.rowBytes + (x - image.canvasRect.left) * 4;
}

} // namespace engine
