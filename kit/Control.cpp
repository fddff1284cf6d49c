// Control: action delivery and the shared bits of the controls.
#include "kit/Control.h"

#include "kit/Event.h"
#include "kit/Window.h"

namespace kit {

void Control::setEnabled(bool enabled)
{
    if (m_enabled == enabled)
        return;
    m_enabled = enabled;
    setNeedsDisplay();
}

void Control::setAction(std::function<void(Object* sender)> action)
{
    if (!action) {
        m_action = nullptr;
        return;
    }
    m_action = [action = std::move(action)](Object*, Object* sender) {
        action(sender);
        return true;
    };
    m_actionNeedsReceiver = false;
}

bool Control::deliverAction(Object* receiver)
{
    // The action may release the control (a panel torn down by its own button); keep it
    // alive until the action has returned.
    // It may also replace the action, so run a copy.
    RefPtr<Control> keep(this);
    const auto action = m_action;
    return action(receiver, this);
}

bool Control::sendAction()
{
    if (!m_action)
        return false;
    if (m_target || !m_actionNeedsReceiver)
        return deliverAction(m_target);
    Window* window = this->window();
    if (!window)
        return false;
    for (Responder* responder = window->firstResponder(); responder; responder = responder->nextResponder()) {
        if (deliverAction(responder))
            return true;
    }
    return false;
}

Font& Control::font() const
{
    if (!m_font)
        m_font = Font::systemFontOfSize(Font::kSystemFontSize);
    return *m_font;
}

void Control::setFont(RefPtr<Font> font)
{
    m_font = std::move(font);
    setNeedsDisplay();
}

Point Control::localPoint(const Event& event) const { return convertPointFromView(event.locationInWindow(), nullptr); }

bool Control::boundsContain(Point local) const { return MouseInRect(local, bounds(), isFlipped()); }

} // namespace kit
