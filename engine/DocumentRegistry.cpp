// DocumentRegistry: the documents alive in this process, so a context pointer can be checked.
#include "engine/DocumentRegistry.h"

namespace engine {

namespace {

std::uintptr_t keyOf(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

} // namespace

DocumentRegistry& DocumentRegistry::instance()
{
    static DocumentRegistry registry;
    return registry;
}

void DocumentRegistry::add(Document* document)
{
    std::lock_guard lock(m_mutex);
    m_live.insert(keyOf(document));
}

void DocumentRegistry::remove(Document* document)
{
    std::lock_guard lock(m_mutex);
    m_live.erase(keyOf(document));
}

Document* DocumentRegistry::find(const void* context) const
{
    std::lock_guard lock(m_mutex);
    if (context == nullptr || m_live.count(keyOf(context)) == 0)
        return nullptr;
    return static_cast<Document*>(const_cast<void*>(context));
}

} // namespace engine
