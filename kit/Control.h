// Control: a view that a person operates, with an enabled state, a font and a target and action.
#pragma once

#include "kit/Font.h"
#include "kit/View.h"

#include <functional>

namespace kit {

/// The base of buttons, sliders, text fields, pop-up buttons and image views. A control sends
/// its action to its target when a person operates it; without a target the action goes to
/// the first object up the responder chain, from the window's first responder, that has the
/// action's member function.
class Control : public View {
    KIT_MAKEABLE
public:
    /// A disabled control takes no part in mouse or keyboard use and draws dimmed.
    bool isEnabled() const { return m_enabled; }
    virtual void setEnabled(bool enabled);

    /// The object the action goes to; not retained (it normally owns the control).
    Object* target() const { return m_target; }
    void setTarget(Object* target) { m_target = target; }

    /// The action as a member function of the target's class that takes the sender.
    template <typename T> void setAction(void (T::*method)(Object* sender))
    {
        m_action = [method](Object* receiver, Object* sender) {
            T* typed = dynamic_cast<T*>(receiver);
            if (!typed)
                return false;
            (typed->*method)(sender);
            return true;
        };
        m_actionNeedsReceiver = true;
    }
    /// An action that needs no receiver: it runs whatever the target.
    void setAction(std::function<void(Object* sender)> action);
    bool hasAction() const { return static_cast<bool>(m_action); }
    /// Sends the action with this control as the sender; false when there is no action or
    /// nobody to take it.
    bool sendAction();

    /// Whether a slider sends its action while it is dragged rather than only at the release.
    bool isContinuous() const { return m_continuous; }
    void setContinuous(bool continuous) { m_continuous = continuous; }

    /// The font of the control's text; DejaVu Sans at 13 points unless set.
    Font& font() const;
    void setFont(RefPtr<Font> font);

protected:
    explicit Control(const Rect& frame) : View(frame) {}
    /// The point of an event in this view's coordinates.
    Point localPoint(const Event& event) const;
    /// Whether a point of this view's coordinates lies in its bounds.
    bool boundsContain(Point local) const;

private:
    bool deliverAction(Object* receiver);

    bool m_enabled = true;
    Object* m_target = nullptr;
    std::function<bool(Object* receiver, Object* sender)> m_action;
    bool m_actionNeedsReceiver = false;
    bool m_continuous = true;
    mutable RefPtr<Font> m_font;
};

} // namespace kit
