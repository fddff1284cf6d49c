// CellPool: slabs of cells on huge pages, handed out one cell at a time.
#include "engine/CellPool.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace engine {

void CellRelease::operator()(CellPixels* cell) const
{
    if (cell)
        CellPool::shared().give(cell);
}

CellPool& CellPool::shared()
{
    // Never destroyed: cells may be given back from other objects' destructors at exit.
    static CellPool* pool = new CellPool;
    return *pool;
}

CellPtr CellPool::take()
{
    std::lock_guard lock(m_mutex);
    auto slab = m_slabs.begin();
    while (slab != m_slabs.end() && slab->second.free.empty())
        ++slab;
    if (slab == m_slabs.end())
        slab = addSlab();
    if (slab->second.used == 0)
        --m_emptySlabs;
    CellPixels* cell = slab->second.free.back();
    slab->second.free.pop_back();
    ++slab->second.used;
    return CellPtr(cell);
}

CellPtr CellPool::takeTransparent()
{
    CellPtr cell = take();
    cell->fill(0);
    return cell;
}

CellPtr CellPool::takeCopy(const CellPixels& cell)
{
    CellPtr copy = take();
    *copy = cell;
    return copy;
}

void CellPool::give(CellPixels* cell)
{
    std::lock_guard lock(m_mutex);
    const auto base = reinterpret_cast<std::uintptr_t>(cell) & ~std::uintptr_t(kSlabBytes - 1);
    Slab& slab = m_slabs.at(base);
    slab.free.push_back(cell);
    if (--slab.used == 0 && ++m_emptySlabs > kKeptEmptySlabs)
        releaseEmptySlabs();
}

std::map<std::uintptr_t, CellPool::Slab>::iterator CellPool::addSlab()
{
    void* memory = std::aligned_alloc(kSlabBytes, kSlabBytes);
    if (!memory)
        throw std::bad_alloc();
    madvise(memory, kSlabBytes, MADV_HUGEPAGE);
    auto slab = m_slabs.try_emplace(reinterpret_cast<std::uintptr_t>(memory)).first;
    auto* cells = static_cast<CellPixels*>(memory);
    for (std::size_t i = kCellsPerSlab; i-- > 0;)
        slab->second.free.push_back(cells + i);
    ++m_emptySlabs;
    return slab;
}

// Keeps the lowest empty slabs, which are handed out first.
void CellPool::releaseEmptySlabs()
{
    std::size_t kept = 0;
    for (auto it = m_slabs.begin(); it != m_slabs.end();) {
        if (it->second.used != 0 || ++kept <= kKeptEmptySlabs) {
            ++it;
            continue;
        }
        std::free(reinterpret_cast<void*>(it->first));
        it = m_slabs.erase(it);
        --m_emptySlabs;
    }
}

} // namespace engine
