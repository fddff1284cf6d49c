// BrushSet: the brushes a document made, so that a handle is checked before it is used.
#pragma once

#include "engine/Brush.h"

#include <cstdint>
#include <map>
#include <memory>

namespace engine {

/// Handles given to callers are the brushes' addresses, but a handle is only ever looked up by
/// value here and never dereferenced unless it names a live brush of this set.
class BrushSet {
public:
    static constexpr std::size_t kMaxBrushes = 4096;

    /// The new brush, or null when the set is full.
    Brush* add(const BrushSettings& settings);
    /// False when the handle names no brush of this set.
    bool remove(const void* handle);
    /// The brush the handle names, or null.
    Brush* find(const void* handle) const;
    std::size_t size() const;

private:
    std::map<std::uintptr_t, std::unique_ptr<Brush>> m_brushes;
    int m_nextNumber = 1;
};

} // namespace engine
