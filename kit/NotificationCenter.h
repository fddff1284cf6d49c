// NotificationCenter: named notifications delivered synchronously to their observers.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kit {

struct Notification {
    std::string name;
    const void* sender = nullptr;
    std::map<std::string, std::string> userInfo;
};

/// Observers are not retained: an observer removes itself before it goes away.
class NotificationCenter {
public:
    /// The process's default centre, made on first use.
    static NotificationCenter& defaultCenter();

    using Callback = std::function<void(const Notification&)>;
    /// Calls `callback` for every notification named `name` (every name when empty) from
    /// `sender` (any sender when null).
    void addObserver(const void* observer, std::string name, const void* sender, Callback callback);
    /// Removes the observer's registrations that match the name (all when empty) and sender
    /// (all when null). A registration removed while a notification is being posted gets no
    /// more of it.
    void removeObserver(const void* observer, const std::string& name = {}, const void* sender = nullptr);

    /// Delivers the notification to the matching observers, in the order they registered.
    void post(const Notification& notification);
    void post(const std::string& name, const void* sender = nullptr) { post(Notification { name, sender, {} }); }

    std::size_t observerCount() const { return m_entries.size(); }

private:
    NotificationCenter() = default;
    struct Entry {
        std::uint64_t id;
        const void* observer;
        std::string name;
        const void* sender;
        Callback callback;
    };
    std::uint64_t m_nextId = 1;
    std::vector<Entry> m_entries;
};

} // namespace kit
