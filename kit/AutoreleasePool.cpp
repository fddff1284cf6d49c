// AutoreleasePool: the main thread's pool.
#include "kit/AutoreleasePool.h"

namespace kit {

AutoreleasePool& AutoreleasePool::current()
{
    static AutoreleasePool* pool = new AutoreleasePool;
    return *pool;
}

const char* AutoreleasePool::autoreleaseString(std::string text)
{
    m_strings.push_back(std::move(text));
    return m_strings.back().c_str();
}

void AutoreleasePool::drain()
{
    while (!m_objects.empty() || !m_strings.empty()) {
        std::vector<RefPtr<Object>> objects;
        objects.swap(m_objects);
        m_strings.clear();
        objects.clear();
    }
}

} // namespace kit
