// TrackingArea: a rectangle of a view that reports the mouse entering, leaving and moving in it.
#pragma once

#include "kit/Geometry.h"
#include "kit/Object.h"

#include <string>

namespace kit {

class Responder;

/// Tracking options, with the original platform's values.
enum TrackingOptions : unsigned {
    TrackingMouseEnteredAndExited = 0x01,
    TrackingMouseMoved = 0x02,
    TrackingCursorUpdate = 0x04,
    TrackingActiveWhenFirstResponder = 0x10,
    TrackingActiveInKeyWindow = 0x20,
    TrackingActiveInActiveApp = 0x40,
    TrackingActiveAlways = 0x80,
    TrackingAssumeInside = 0x100,
    TrackingInVisibleRect = 0x200,
    TrackingEnabledDuringMouseDrag = 0x400,
};

class TrackingArea final : public Object {
public:
    /// `rect` is in the coordinates of the view the area is added to; the owner is not retained.
    static RefPtr<TrackingArea> create(const Rect& rect, unsigned options, Responder* owner, std::string userInfo = {});

    Rect rect() const { return m_rect; }
    unsigned options() const { return m_options; }
    Responder* owner() const { return m_owner; }
    const std::string& userInfo() const { return m_userInfo; }

    /// Whether the mouse was inside at the last update; the window keeps it.
    bool mouseInside() const { return m_inside; }
    void setMouseInside(bool inside) { m_inside = inside; }

private:
    TrackingArea(const Rect& rect, unsigned options, Responder* owner, std::string userInfo)
        : m_rect(rect)
        , m_options(options)
        , m_owner(owner)
        , m_userInfo(std::move(userInfo))
        , m_inside((options & TrackingAssumeInside) != 0)
    {
    }

    Rect m_rect;
    unsigned m_options;
    Responder* m_owner;
    std::string m_userInfo;
    bool m_inside;
};

} // namespace kit
