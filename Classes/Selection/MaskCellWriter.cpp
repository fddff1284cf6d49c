// MaskCellWriter: the cell range a mask covers and the per-pixel merge rule.
#include "Classes/Selection/MaskCellWriter.h"

#include "host/HostEngine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr int kCellSide = 64;
// The largest mask the writer merges, the rasteriser's bound.
constexpr std::int64_t kMaxMaskPixels = std::int64_t(1) << 28;

void mergeMaskPixel(const unsigned char* s, unsigned char* d)
{
    if (s[3] == 0)
        return;
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
    if (d[3] == 0 || d[3] >= s[3])
        d[3] = s[3];
}

/// Merges the part of the mask that falls in cell (column, row).
void mergeIntoCell(unsigned char* cell, const unsigned char* mask, const SelectionMaskRect& r, int column, int row)
{
    const std::int64_t cellX = std::int64_t(column) * kCellSide;
    const std::int64_t cellY = std::int64_t(row) * kCellSide;
    const std::int64_t firstX = std::max<std::int64_t>(0, r.x - cellX);
    const std::int64_t endX = std::min<std::int64_t>(kCellSide, std::int64_t(r.x) + r.width - cellX);
    for (int cy = 0; cy < kCellSide; ++cy) {
        const std::int64_t my = cellY + cy - r.y;
        if (my < 0 || my >= r.height)
            continue;
        for (std::int64_t cx = firstX; cx < endX; ++cx) {
            const std::int64_t mx = cellX + cx - r.x;
            mergeMaskPixel(mask + (my * r.width + mx) * 4, cell + (std::int64_t(cy) * kCellSide + cx) * 4);
        }
    }
}

// The cell range is v / 64 rounded down or up, computed as the single-precision product by 1/64.
int cellFloor(std::int64_t v) { return int(std::floor(float(v) * 0.015625f)); }
int cellCeil(std::int64_t v) { return int(std::ceil(float(v) * 0.015625f)); }

} // namespace

void MergeSelectionMaskIntoCells(void* context, const unsigned char* mask, SelectionMaskRect rect)
{
    // Without pixels, or with more than any mask block can hold, there is nothing to merge, and
    // a rectangle that large would otherwise mean billions of cell visits.
    if (!mask || std::int64_t(rect.width) * rect.height > kMaxMaskPixels)
        return;
    const int layer = IPD_GetSelectionMaskID(context);
    const int c0 = cellFloor(rect.x);
    const int r0 = cellFloor(rect.y);
    const int c1 = cellCeil(std::int64_t(rect.x) + rect.width);
    const int r1 = cellCeil(std::int64_t(rect.y) + rect.height);
    if (r0 >= r1)
        return;
    for (int row = r0; row < r1; ++row) {
        for (int column = c0; column < c1; ++column) {
            unsigned char* cell = IPD_Layer_GetCellBuffer(context, layer, column, row, 0);
            if (cell)
                mergeIntoCell(cell, mask, rect, column, row);
            IPD_Layer_UpdateCell(context, layer, column, row, 0);
            IPD_Layer_SaveCellInfo(context, layer, column, row);
        }
    }
}
