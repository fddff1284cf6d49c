// AutoreleasePool: keeps handed-out temporaries alive until the run loop's current pass ends.
#pragma once

#include "kit/Object.h"

#include <deque>
#include <string>
#include <vector>

namespace kit {

class AutoreleasePool {
public:
    /// The pool of the main thread, made on first use.
    static AutoreleasePool& current();

    /// Keeps one reference to the object until the next drain and returns it.
    template <typename T> T* autorelease(RefPtr<T> object)
    {
        T* raw = object.get();
        if (raw)
            m_objects.push_back(RefPtr<Object>(std::move(object)));
        return raw;
    }
    /// Keeps a copy of the text until the next drain and returns its characters.
    const char* autoreleaseString(std::string text);

    /// Releases everything kept so far; objects that a release frees may autorelease more,
    /// which this drain also releases.
    void drain();
    std::size_t count() const { return m_objects.size() + m_strings.size(); }

private:
    AutoreleasePool() = default;
    std::vector<RefPtr<Object>> m_objects;
    std::deque<std::string> m_strings;
};

} // namespace kit
