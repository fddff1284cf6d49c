// BrushSet: the brushes a document made, so that a handle is checked before it is used.
#include "engine/BrushSet.h"

namespace engine {

namespace {

std::uintptr_t keyOf(const void* handle) { return reinterpret_cast<std::uintptr_t>(handle); }

} // namespace

Brush* BrushSet::add(const BrushSettings& settings)
{
    if (m_brushes.size() >= kMaxBrushes)
        return nullptr;
    auto brush = std::make_unique<Brush>(m_nextNumber++, settings);
    Brush* handle = brush.get();
    m_brushes.emplace(keyOf(handle), std::move(brush));
    return handle;
}

bool BrushSet::remove(const void* handle) { return m_brushes.erase(keyOf(handle)) == 1; }

Brush* BrushSet::find(const void* handle) const
{
    auto it = m_brushes.find(keyOf(handle));
    return it == m_brushes.end() ? nullptr : it->second.get();
}

std::size_t BrushSet::size() const { return m_brushes.size(); }

} // namespace engine
