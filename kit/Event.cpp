// Event: the factories.
#include "kit/Event.h"

namespace kit {

Event Event::mouse(EventType type, Point location, int clickCount, double timestamp)
{
    Event e(type);
    e.m_location = location;
    e.m_clickCount = clickCount;
    e.m_timestamp = timestamp;
    return e;
}

Event Event::key(EventType type, std::string characters, unsigned short keyCode, double timestamp)
{
    Event e(type);
    e.m_characters = std::move(characters);
    e.m_keyCode = keyCode;
    e.m_timestamp = timestamp;
    return e;
}

Event Event::tracking(EventType type, Point location, TrackingArea* area, double timestamp)
{
    Event e(type);
    e.m_location = location;
    e.m_trackingArea = area;
    e.m_timestamp = timestamp;
    return e;
}

bool Event::isMouseEvent() const
{
    switch (m_type) {
    case EventType::LeftMouseDown:
    case EventType::LeftMouseUp:
    case EventType::LeftMouseDragged:
    case EventType::RightMouseDown:
    case EventType::RightMouseUp:
    case EventType::MouseMoved: return true;
    case EventType::MouseEntered:
    case EventType::MouseExited:
    case EventType::KeyDown:
    case EventType::KeyUp:
    case EventType::CursorUpdate: return false;
    }
    return false;
}

} // namespace kit
