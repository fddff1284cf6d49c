// Object: the intrusive reference count shared by every kit object, and RefPtr.
#pragma once

#include <cassert>
#include <cstddef>
#include <utility>

namespace kit {

/// Base of every reference-counted kit object. A new object starts with one
/// reference, which `adoptRef` (or `make`) takes over.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void retain() const { ++m_refCount; }
    void release() const
    {
        assert(m_refCount > 0);
        if (--m_refCount == 0)
            delete this;
    }
    int refCount() const { return m_refCount; }

protected:
    virtual ~Object() = default;

private:
    mutable int m_refCount = 1;
};

struct AdoptTag {};

/// An owning pointer to a reference-counted object; null is allowed.
template <typename T> class RefPtr {
public:
    using element_type = T;

    RefPtr() = default;
    RefPtr(std::nullptr_t) {}
    RefPtr(T* object) : m_ptr(object)
    {
        if (m_ptr)
            m_ptr->retain();
    }
    RefPtr(T* object, AdoptTag) : m_ptr(object) {}
    RefPtr(const RefPtr& other) : RefPtr(other.m_ptr) {}
    RefPtr(RefPtr&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    template <typename U> RefPtr(const RefPtr<U>& other) : RefPtr(other.get()) {}
    template <typename U> RefPtr(RefPtr<U>&& other) noexcept : m_ptr(other.leakRef()) {}
    ~RefPtr() { clear(); }

    RefPtr& operator=(RefPtr other) noexcept
    {
        std::swap(m_ptr, other.m_ptr);
        return *this;
    }

    T* get() const { return m_ptr; }
    T* operator->() const { return m_ptr; }
    T& operator*() const { return *m_ptr; }
    explicit operator bool() const { return m_ptr != nullptr; }
    bool operator==(const RefPtr& other) const { return m_ptr == other.m_ptr; }
    bool operator==(const T* other) const { return m_ptr == other; }

    /// Gives up ownership without releasing.
    T* leakRef() { return std::exchange(m_ptr, nullptr); }
    void clear()
    {
        if (T* old = std::exchange(m_ptr, nullptr))
            old->release();
    }

private:
    T* m_ptr = nullptr;
};

/// Takes over the creation reference of a freshly made object.
template <typename T> RefPtr<T> adoptRef(T* object) { return RefPtr<T>(object, AdoptTag {}); }

} // namespace kit
