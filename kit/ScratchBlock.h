// ScratchBlock: a recycled block of memory that goes back when the work is over.
#pragma once

#include "kit/MemoryRecycler.h"

#include <cstddef>
#include <cstdint>

namespace kit {

/// A block from MemoryRecycler::shared(), given back on destruction; empty when none could be had.
class ScratchBlock {
public:
    explicit ScratchBlock(std::size_t bytes) : m_memory(bytes ? MemoryRecycler::shared().allocate(bytes) : nullptr) {}
    ~ScratchBlock() { MemoryRecycler::shared().release(m_memory); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    template <typename T = std::uint8_t> T* as() const { return static_cast<T*>(m_memory); }
    std::uint8_t* bytes() const { return as<std::uint8_t>(); }
    explicit operator bool() const { return m_memory != nullptr; }
    /// Takes a block only when it turns out to be needed.
    bool allocate(std::size_t bytes)
    {
        if (!m_memory)
            m_memory = MemoryRecycler::shared().allocate(bytes);
        return m_memory != nullptr;
    }

private:
    void* m_memory;
};

} // namespace kit
