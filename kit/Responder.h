// Responder: the link of the responder chain that every view, window and the application share.
#pragma once

#include "kit/Forward.h"
#include "kit/Object.h"

namespace kit {

/// An object that can take events. Every handler's default passes the event to the next
/// responder, so what nobody takes runs up to the application, which drops it.
class Responder : public Object {
public:
    /// The responder that gets what this one passes on, or null at the end of the chain.
    virtual Responder* nextResponder() const { return nullptr; }
    virtual bool acceptsFirstResponder() const { return false; }
    /// Asked when the window makes this the first responder; false refuses.
    virtual bool becomeFirstResponder() { return true; }
    /// Asked when the window wants another first responder; false keeps this one.
    virtual bool resignFirstResponder() { return true; }

    virtual void mouseDown(const Event& event);
    virtual void mouseDragged(const Event& event);
    virtual void mouseUp(const Event& event);
    virtual void rightMouseDown(const Event& event);
    virtual void rightMouseUp(const Event& event);
    virtual void mouseMoved(const Event& event);
    virtual void mouseEntered(const Event& event);
    virtual void mouseExited(const Event& event);
    virtual void keyDown(const Event& event);
    virtual void keyUp(const Event& event);
    virtual void cursorUpdate(const Event& event);
};

} // namespace kit
