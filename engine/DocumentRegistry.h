// DocumentRegistry: the documents alive in this process, so a context pointer can be checked.
#pragma once

#include <cstdint>
#include <mutex>
#include <set>

namespace engine {

class Document;

/// Context pointers arrive as void* from plug-ins; they are compared by value against this set and
/// never dereferenced unless they name a live document.
class DocumentRegistry {
public:
    static DocumentRegistry& instance();

    void add(Document* document);
    void remove(Document* document);
    /// The live document the context names, or null.
    Document* find(const void* context) const;

private:
    mutable std::mutex m_mutex;
    std::set<std::uintptr_t> m_live;
};

} // namespace engine
