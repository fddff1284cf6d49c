// DabPainter: lays one round soft dab into a layer, painting a colour or erasing.
#include "engine/DabPainter.h"

#include <algorithm>
#include <cmath>

namespace engine {

DabPainter::DabPainter(Layer& layer, const PixelRect& clip, const BeforeChange& beforeChange)
    : m_layer(layer)
    , m_clip(clip)
    , m_beforeChange(beforeChange)
{
}

void DabPainter::lay(const Brush& brush, double x, double y, std::uint32_t colour)
{
    double radius = brush.pixelRadius();
    PixelRect box { static_cast<std::int64_t>(std::floor(x - radius)),
        static_cast<std::int64_t>(std::floor(y - radius)), static_cast<std::int64_t>(std::ceil(x + radius)) + 1,
        static_cast<std::int64_t>(std::ceil(y + radius)) + 1 };
    box = box.intersected(m_clip);
    if (box.isEmpty())
        return;
    Dab dab { &brush, x, y,
        { static_cast<double>((colour >> 16) & 0xff), static_cast<double>((colour >> 8) & 0xff),
            static_cast<double>(colour & 0xff), 255.0 },
        brush.mode() == BrushMode::erase };
    PixelRect cells = m_layer.cellRangeFor(box);
    for (std::int64_t row = cells.top; row < cells.bottom; ++row) {
        for (std::int64_t column = cells.left; column < cells.right; ++column)
            layInCell(dab, { column, row }, box);
    }
}

void DabPainter::layInCell(const Dab& dab, CellKey key, const PixelRect& canvasArea)
{
    PixelRect cellRect = m_layer.canvasRectOf(key);
    PixelRect area = cellRect.intersected(canvasArea);
    if (area.isEmpty() || !reaches(dab, area) || (dab.erase && !m_layer.find(key)))
        return;
    m_beforeChange(key);
    CellPixels& cell = m_layer.ensure(key);
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        std::uint8_t* row = cell.data() + (y - cellRect.top) * kCellRowBytes;
        double dy = static_cast<double>(y) + 0.5 - dab.y;
        for (std::int64_t x = area.left; x < area.right; ++x) {
            double dx = static_cast<double>(x) + 0.5 - dab.x;
            double coverage = dab.brush->coverageAt(std::hypot(dx, dy));
            if (coverage > 0)
                blend(row + (x - cellRect.left) * 4, dab, coverage);
        }
    }
}

// The dab's square box overlaps cells its round footprint misses; those are left uncreated.
bool DabPainter::reaches(const Dab& dab, const PixelRect& area)
{
    double nearestX = std::clamp(dab.x, static_cast<double>(area.left) + 0.5, static_cast<double>(area.right) - 0.5);
    double nearestY = std::clamp(dab.y, static_cast<double>(area.top) + 0.5, static_cast<double>(area.bottom) - 0.5);
    return dab.brush->coverageAt(std::hypot(nearestX - dab.x, nearestY - dab.y)) > 0;
}

void DabPainter::blend(std::uint8_t* pixel, const Dab& dab, double coverage)
{
    for (int channel = 0; channel < 4; ++channel) {
        double value = pixel[channel];
        double target = dab.erase ? 0.0 : dab.source[channel];
        pixel[channel] = static_cast<std::uint8_t>(std::lround(value + (target - value) * coverage));
    }
}

} // namespace engine
