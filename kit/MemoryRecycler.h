// MemoryRecycler: large pixel blocks from the C heap, kept for reuse after they are given back.
#pragma once

#include <cstddef>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace kit {

/// Hands out large blocks of the C heap and keeps a few given-back ones for the next request.
/// A fresh 40 MB block costs several times its own memcpy in page faults; a recycled one costs
/// nothing. Blocks are aligned to 64 bytes; those of 2 MB and more are aligned for, and advised
/// to use, huge pages.
class MemoryRecycler {
public:
    /// The process-wide recycler.
    static MemoryRecycler& shared();

    /// A block of at least `bytes` bytes (contents undefined), or null when none can be had.
    void* allocate(std::size_t bytes);
    /// Takes back a block from `allocate` (kept or freed); anything else is passed to free().
    void release(void* block);
    /// Frees every kept block.
    void trim();

    /// Kept blocks never add up to more than this.
    static constexpr std::size_t kMaxKeptBytes = std::size_t(160) << 20;
    /// Bytes currently kept for reuse.
    std::size_t keptBytes() const;

private:
    struct Block {
        void* memory;
        std::size_t capacity;
    };
    void* freshBlock(std::size_t bytes, std::size_t* capacity);

    mutable std::mutex m_mutex;
    std::unordered_map<void*, std::size_t> m_handedOut;
    std::vector<Block> m_kept;
    std::size_t m_keptBytes = 0;
};

} // namespace kit
