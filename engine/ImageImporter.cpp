// ImageImporter: merges an RGBA image into a layer, keeping per pixel the one with more alpha.
#include "engine/ImageImporter.h"

#include <algorithm>
#include <cstring>

namespace engine {

namespace {

// Bytes of a row the change does not reach: what the cell held, or transparent where it held nothing.
void keep(std::uint8_t* target, const std::uint8_t* previous, std::size_t bytes)
{
    if (previous)
        std::memcpy(target, previous, bytes);
    else
        std::memset(target, 0, bytes);
}

// Per pixel the one with the larger alpha, the previous one on a tie; nothing before reads as
// transparent. `target` may be `previous`.
void merge(std::uint8_t* target, const std::uint8_t* previous, const std::uint8_t* source, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t s, p = 0;
        std::memcpy(&s, source + 4 * i, 4);
        if (previous)
            std::memcpy(&p, previous + 4 * i, 4);
        const std::uint32_t kept = (s >> 24) > (p >> 24) ? s : p;
        std::memcpy(target + 4 * i, &kept, 4);
    }
}

} // namespace

ImageImporter::ImageImporter(Layer& layer, const PixelRect& clip, ReplaceCell replaceCell)
    : m_layer(layer), m_clip(clip), m_replaceCell(std::move(replaceCell))
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
    writeCell(image, m_replaceCell(key), cellRect, part);
    return true;
}

void ImageImporter::writeCell(
    const Image& image, const CellWrite& write, const PixelRect& cellRect, const PixelRect& part)
{
    const bool inPlace = write.cell == write.previous;
    const std::size_t left = std::size_t(part.left - cellRect.left) * 4,
                      right = std::size_t(part.right - cellRect.left) * 4;
    for (std::int64_t y = cellRect.top; y < cellRect.bottom; ++y) {
        std::uint8_t* target = write.cell->data() + (y - cellRect.top) * kCellRowBytes;
        const std::uint8_t* previous
            = write.previous ? write.previous->data() + (y - cellRect.top) * kCellRowBytes : nullptr;
        if (y < part.top || y >= part.bottom) {
            if (!inPlace)
                keep(target, previous, kCellRowBytes);
            continue;
        }
        if (!inPlace) {
            keep(target, previous, left);
            keep(target + right, previous ? previous + right : nullptr, kCellRowBytes - right);
        }
        merge(
            target + left, previous ? previous + left : nullptr, sourcePixel(image, part.left, y), (right - left) / 4);
    }
}

bool ImageImporter::wouldChange(
    const Image& image, const CellPixels* cell, const PixelRect& cellRect, const PixelRect& area)
{
    const std::size_t count = std::size_t(area.right - area.left);
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        const std::uint8_t* source = sourcePixel(image, area.left, y);
        const std::uint8_t* old
            = cell ? cell->data() + (y - cellRect.top) * kCellRowBytes + (area.left - cellRect.left) * 4 : nullptr;
        // A whole row at a time, without a branch a pixel.
        bool larger = false;
        for (std::size_t i = 0; i < count; ++i)
            larger |= source[4 * i + 3] > (old ? old[4 * i + 3] : 0);
        if (larger)
            return true;
    }
    return false;
}

const std::uint8_t* ImageImporter::sourcePixel(const Image& image, std::int64_t x, std::int64_t y)
{
    return image.data + (y - image.canvasRect.top) * image.rowBytes + (x - image.canvasRect.left) * 4;
}

} // namespace engine
