// NotificationCenter: registration and synchronous posting.
#include "kit/NotificationCenter.h"

#include <algorithm>

namespace kit {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter* center = new NotificationCenter;
    return *center;
}

void NotificationCenter::addObserver(const void* observer, std::string name, const void* sender, Callback callback)
{
    if (!observer || !callback)
        return;
    m_entries.push_back({ m_nextId++, observer, std::move(name), sender, std::move(callback) });
}

void NotificationCenter::removeObserver(const void* observer, const std::string& name, const void* sender)
{
    std::erase_if(m_entries, [&](const Entry& e) {
        return e.observer == observer && (name.empty() || e.name == name) && (!sender || e.sender == sender);
    });
}

void NotificationCenter::post(const Notification& notification)
{
    // Observers may add or remove registrations from their callbacks, so walk a list of ids
    // taken before the first call and look each one up again before calling it.
    std::vector<std::uint64_t> ids;
    for (const Entry& e : m_entries) {
        if ((e.name.empty() || e.name == notification.name) && (!e.sender || e.sender == notification.sender))
            ids.push_back(e.id);
    }
    for (std::uint64_t id : ids) {
        auto it = std::find_if(m_entries.begin(), m_entries.end(), [id](const Entry& e) { return e.id == id; });
        if (it == m_entries.end())
            continue;
        Callback callback = it->callback; // the entry may go away during the call
        callback(notification);
    }
}

} // namespace kit
