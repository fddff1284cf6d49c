// Layer: a sparse grid of 64 x 64 RGBA cells placed on the canvas by an offset.
#include "engine/Layer.h"

namespace engine {

namespace {

std::int64_t floorDiv(std::int64_t value, std::int64_t divisor)
{
    std::int64_t quotient = value / divisor;
    return (value % divisor != 0 && value < 0) ? quotient - 1 : quotient;
}

} // namespace

Layer::Layer(int id) : m_id(id) {}

int Layer::id() const { return m_id; }

std::int64_t Layer::offsetX() const { return m_offsetX; }

std::int64_t Layer::offsetY() const { return m_offsetY; }

void Layer::setOffset(int x, int y)
{
    m_offsetX = x;
    m_offsetY = y;
}

CellKey Layer::cellContaining(std::int64_t x, std::int64_t y)
{
    return { floorDiv(x, kCellSize), floorDiv(y, kCellSize) };
}

PixelRect Layer::canvasRectOf(CellKey key) const
{
    std::int64_t left = key.column * kCellSize + m_offsetX;
    std::int64_t top = key.row * kCellSize + m_offsetY;
    return { left, top, left + kCellSize, top + kCellSize };
}

PixelRect Layer::cellRangeFor(const PixelRect& canvasRect) const
{
    if (canvasRect.isEmpty())
        return {};
    CellKey first = cellContaining(canvasRect.left - m_offsetX, canvasRect.top - m_offsetY);
    CellKey last = cellContaining(canvasRect.right - 1 - m_offsetX, canvasRect.bottom - 1 - m_offsetY);
    return { first.column, first.row, last.column + 1, last.row + 1 };
}

CellPixels* Layer::find(CellKey key)
{
    auto it = m_cells.find(key);
    return it == m_cells.end() ? nullptr : it->second.get();
}

const CellPixels* Layer::find(CellKey key) const
{
    auto it = m_cells.find(key);
    return it == m_cells.end() ? nullptr : it->second.get();
}

CellPixels& Layer::ensure(CellKey key)
{
    CellPtr& cell = m_cells[key];
    if (!cell && !m_spare.empty()) {
        cell = std::move(m_spare.back());
        m_spare.pop_back();
        cell->fill(0);
    }
    if (!cell)
        cell = CellPool::shared().takeTransparent();
    return *cell;
}

CellPixels& Layer::install(CellKey key)
{
    CellPtr& cell = m_cells[key];
    if (!cell && !m_spare.empty()) {
        cell = std::move(m_spare.back());
        m_spare.pop_back();
    }
    if (!cell)
        cell = CellPool::shared().take();
    return *cell;
}

Layer::CellMap Layer::takeAll()
{
    CellMap taken;
    taken.swap(m_cells);
    return taken;
}

CellPtr Layer::copyOf(CellKey key) const
{
    const CellPixels* cell = find(key);
    return cell ? CellPool::shared().takeCopy(*cell) : nullptr;
}

CellPtr Layer::exchange(CellKey key, CellPtr state)
{
    auto found = m_cells.find(key);
    CellPtr taken = found != m_cells.end() ? std::move(found->second) : nullptr;
    if (state)
        m_cells[key] = std::move(state);
    else if (found != m_cells.end())
        m_cells.erase(found);
    return taken;
}

void Layer::clear() { m_cells.clear(); }

void Layer::recycle(CellPtr cell)
{
    if (cell && m_spare.size() < kMaxSpareCells)
        m_spare.push_back(std::move(cell));
}

std::size_t Layer::cellCount() const { return m_cells.size(); }

const Layer::CellMap& Layer::cells() const { return m_cells; }

} // namespace engine
