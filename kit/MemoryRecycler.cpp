// MemoryRecycler: a small best-fit cache of huge-page-backed blocks.
#include "kit/MemoryRecycler.h"

#include <sys/mman.h>

#include <cstdlib>

namespace kit {

namespace {

constexpr std::size_t kHugePage = std::size_t(2) << 20;
constexpr std::size_t kCacheLine = 64;
// A kept block serves a request when it wastes at most a quarter of itself.
bool fits(std::size_t capacity, std::size_t bytes) { return capacity >= bytes && capacity - bytes <= capacity / 4; }

} // namespace

MemoryRecycler& MemoryRecycler::shared()
{
    static MemoryRecycler* recycler = new MemoryRecycler; // never destroyed: blocks may outlive statics
    return *recycler;
}

void* MemoryRecycler::freshBlock(std::size_t bytes, std::size_t* capacity)
{
    if (bytes < kHugePage) {
        // Vector loads and stores want whole cache lines.
        *capacity = (bytes + kCacheLine) / kCacheLine * kCacheLine;
        return std::aligned_alloc(kCacheLine, *capacity);
    }
    *capacity = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* memory = std::aligned_alloc(kHugePage, *capacity);
    if (memory)
        madvise(memory, *capacity, MADV_HUGEPAGE);
    return memory;
}

void* MemoryRecycler::allocate(std::size_t bytes)
{
    std::lock_guard lock(m_mutex);
    std::size_t best = m_kept.size();
    for (std::size_t i = 0; i < m_kept.size(); ++i) {
        if (fits(m_kept[i].capacity, bytes) && (best == m_kept.size() || m_kept[i].capacity < m_kept[best].capacity))
            best = i;
    }
    if (best != m_kept.size()) {
        Block block = m_kept[best];
        m_kept.erase(m_kept.begin() + std::ptrdiff_t(best));
        m_keptBytes -= block.capacity;
        m_handedOut[block.memory] = block.capacity;
        return block.memory;
    }
    std::size_t capacity = 0;
    void* memory = freshBlock(bytes, &capacity);
    if (memory)
        m_handedOut[memory] = capacity;
    return memory;
}

void MemoryRecycler::release(void* block)
{
    if (!block)
        return;
    std::lock_guard lock(m_mutex);
    auto it = m_handedOut.find(block);
    if (it == m_handedOut.end()) {
        std::free(block);
        return;
    }
    const std::size_t capacity = it->second;
    m_handedOut.erase(it);
    if (capacity < kHugePage || capacity > kMaxKeptBytes) {
        std::free(block);
        return;
    }
    // The newest block is the likeliest to be asked for again: make room by dropping the oldest.
    while (!m_kept.empty() && m_keptBytes + capacity > kMaxKeptBytes) {
        std::free(m_kept.front().memory);
        m_keptBytes -= m_kept.front().capacity;
        m_kept.erase(m_kept.begin());
    }
    m_kept.push_back({ block, capacity });
    m_keptBytes += capacity;
}

void MemoryRecycler::trim()
{
    std::lock_guard lock(m_mutex);
    for (const Block& block : m_kept)
        std::free(block.memory);
    m_kept.clear();
    m_keptBytes = 0;
}

std::size_t MemoryRecycler::keptBytes() const
{
    std::lock_guard lock(m_mutex);
    return m_keptBytes;
}

} // namespace kit
