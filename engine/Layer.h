// Layer: a sparse grid of 64 x 64 RGBA cells placed on the canvas by an offset.
#pragma once

#include "engine/CellPool.h"
#include "engine/PixelRect.h"

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace engine {

/// A cell's position in its layer's grid; cell (c, r) covers layer pixels 64c..64c+63, 64r..64r+63.
struct CellKey {
    std::int64_t column = 0;
    std::int64_t row = 0;

    auto operator<=>(const CellKey&) const = default;
};

/// A cell about to be written and what it held before the change: null for nothing, the cell
/// itself when it is changed in place.
struct CellWrite {
    CellPixels* cell = nullptr;
    const CellPixels* previous = nullptr;
};

/// A layer's pixels, stored only where cells were created.
class Layer {
public:
    using CellMap = std::map<CellKey, CellPtr>;

    explicit Layer(int id);

    int id() const;
    std::int64_t offsetX() const;
    std::int64_t offsetY() const;
    void setOffset(int x, int y);

    /// The cell holding layer pixel (x, y).
    static CellKey cellContaining(std::int64_t x, std::int64_t y);
    /// The canvas pixels a cell covers.
    PixelRect canvasRectOf(CellKey key) const;
    /// The cells whose canvas rectangles meet the given canvas rectangle, as columns
    /// [left, right) and rows [top, bottom).
    PixelRect cellRangeFor(const PixelRect& canvasRect) const;

    CellPixels* find(CellKey key);
    const CellPixels* find(CellKey key) const;
    /// The cell, created transparent if it did not exist. Its address stays put while it exists.
    CellPixels& ensure(CellKey key);
    /// A cell for the caller to write whole where the layer has none: a spare one or fresh memory,
    /// its bytes undefined, so that no pixel is written twice.
    CellPixels& install(CellKey key);
    /// Takes every cell out of the layer, which is left empty.
    CellMap takeAll();
    /// A copy of the cell, or null when the cell does not exist.
    CellPtr copyOf(CellKey key) const;
    /// Takes the cell out of the layer (null when there is none), then puts `state` in its place
    /// (removing the cell when it is null): a saved state goes back without a copy.
    CellPtr exchange(CellKey key, CellPtr state);
    void clear();

    /// Keeps a cell's memory for the next cell this layer makes (up to kMaxSpareCells), so that
    /// strokes after an undo reuse memory instead of faulting fresh pages in.
    void recycle(CellPtr cell);
    static constexpr std::size_t kMaxSpareCells = 2048;

    std::size_t cellCount() const;
    const CellMap& cells() const;

private:
    int m_id;
    std::int64_t m_offsetX = 0;
    std::int64_t m_offsetY = 0;
    CellMap m_cells;
    std::vector<CellPtr> m_spare;
};

} // namespace engine
