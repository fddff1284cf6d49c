// Responder: the pass-it-on defaults.
#include "kit/Responder.h"

namespace kit {

#define KIT_PASS_ON(handler)                                                                                           \
    void Responder::handler(const Event& event)                                                                        \
    {                                                                                                                  \
        if (Responder* next = nextResponder())                                                                         \
            next->handler(event);                                                                                      \
    }

KIT_PASS_ON(mouseDown)
KIT_PASS_ON(mouseDragged)
KIT_PASS_ON(mouseUp)
KIT_PASS_ON(rightMouseDown)
KIT_PASS_ON(rightMouseUp)
KIT_PASS_ON(mouseMoved)
KIT_PASS_ON(mouseEntered)
KIT_PASS_ON(mouseExited)
KIT_PASS_ON(keyDown)
KIT_PASS_ON(keyUp)
KIT_PASS_ON(cursorUpdate)

#undef KIT_PASS_ON

} // namespace kit
