// CellPool: cell memory carved from huge-page slabs, so that a gesture's thousands of cells fault in a few pages.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace engine {

inline constexpr int kCellSize = 64;
inline constexpr int kCellRowBytes = kCellSize * 4;
inline constexpr int kCellBytes = kCellSize * kCellRowBytes;

/// One cell's pixels: premultiplied R, G, B, A bytes, rows kCellRowBytes apart.
using CellPixels = std::array<std::uint8_t, kCellBytes>;

/// Gives a cell back to the pool it came from.
struct CellRelease {
    void operator()(CellPixels* cell) const;
};
using CellPtr = std::unique_ptr<CellPixels, CellRelease>;

/// Hands out cells from 2 MB slabs aligned for, and advised onto, huge pages: a fresh 3000-pixel
/// mask's 2,300 cells fault in 18 pages instead of 9,200. A slab whose cells are all back is
/// kept for reuse up to kKeptEmptySlabs and given back to the system beyond.
class CellPool {
public:
    static CellPool& shared();

    /// A cell of undefined bytes; throws std::bad_alloc when no memory can be had.
    CellPtr take();
    /// A transparent cell.
    CellPtr takeTransparent();
    /// A copy of `cell`.
    CellPtr takeCopy(const CellPixels& cell);
    void give(CellPixels* cell);

    static constexpr std::size_t kSlabBytes = std::size_t(2) << 20;
    static constexpr std::size_t kCellsPerSlab = kSlabBytes / sizeof(CellPixels);
    static constexpr std::size_t kKeptEmptySlabs = 16;

private:
    struct Slab {
        std::vector<CellPixels*> free;
        std::size_t used = 0;
    };
    std::map<std::uintptr_t, Slab>::iterator addSlab();
    void releaseEmptySlabs();

    std::mutex m_mutex;
    // By address, so that cells come from the fullest slabs first and empty ones stay empty.
    std::map<std::uintptr_t, Slab> m_slabs;
    std::size_t m_emptySlabs = 0;
};

} // namespace engine
