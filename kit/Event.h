// Event: one mouse, key, tracking or cursor event as the window delivers it.
#pragma once

#include "kit/Forward.h"
#include "kit/Geometry.h"

#include <string>

namespace kit {

class TrackingArea;

enum class EventType {
    LeftMouseDown,
    LeftMouseUp,
    LeftMouseDragged,
    RightMouseDown,
    RightMouseUp,
    MouseMoved,
    MouseEntered,
    MouseExited,
    KeyDown,
    KeyUp,
    CursorUpdate,
};

/// Key codes of the keys that sessions and text editing name, with the original platform's values.
enum KeyCode : unsigned short {
    KeyCodeReturn = 36,
    KeyCodeTab = 48,
    KeyCodeDelete = 51,
    KeyCodeEscape = 53,
    KeyCodeHome = 115,
    KeyCodeForwardDelete = 117,
    KeyCodeEnd = 119,
    KeyCodeLeftArrow = 123,
    KeyCodeRightArrow = 124,
    KeyCodeDownArrow = 125,
    KeyCodeUpArrow = 126,
    KeyCodeNone = 0xFFFF,
};

/// Modifier-key bits of an event's flags, with the original platform's values.
enum ModifierFlags : unsigned {
    ShiftKeyMask = 1u << 17,
    ControlKeyMask = 1u << 18,
    AlternateKeyMask = 1u << 19,
    CommandKeyMask = 1u << 20,
};

class Event final {
public:
    static Event mouse(EventType type, Point location, int clickCount = 1, double timestamp = 0);
    static Event key(
        EventType type, std::string characters, unsigned short keyCode = KeyCodeNone, double timestamp = 0);
    /// An entered, exited, moved or cursor-update event that a tracking area sends its owner.
    static Event tracking(EventType type, Point location, TrackingArea* area, double timestamp = 0);

    EventType type() const { return m_type; }
    bool isMouseEvent() const;
    /// The location in the window's content area, y up.
    Point locationInWindow() const { return m_location; }
    int clickCount() const { return m_clickCount; }
    const std::string& characters() const { return m_characters; }
    unsigned short keyCode() const { return m_keyCode; }
    unsigned modifierFlags() const { return m_modifierFlags; }
    double timestamp() const { return m_timestamp; }
    /// The tracking area behind an entered, exited, moved or cursor-update event, or null.
    TrackingArea* trackingArea() const { return m_trackingArea; }
    Window* window() const { return m_window; }

    void setModifierFlags(unsigned flags) { m_modifierFlags = flags; }
    void setWindow(Window* window) { m_window = window; }

private:
    explicit Event(EventType type) : m_type(type) {}

    EventType m_type;
    Point m_location;
    int m_clickCount = 0;
    std::string m_characters;
    unsigned short m_keyCode = KeyCodeNone;
    unsigned m_modifierFlags = 0;
    double m_timestamp = 0;
    TrackingArea* m_trackingArea = nullptr;
    Window* m_window = nullptr;
};

} // namespace kit
