// Application: the process's one application object, last link of the responder chain.
#pragma once

#include "kit/Forward.h"
#include "kit/Object.h"
#include "kit/Responder.h"

namespace kit {

class Application final : public Responder {
public:
    /// The application object, made on first use so that a host that never touched the kit
    /// can still load code that asks for it.
    static Application& shared();

    /// The window that receives the user's commands, or null.
    Window* mainWindow() const { return m_mainWindow; }
    void setMainWindow(Window* window) { m_mainWindow = window; }

    /// Forgets a window that is going away.
    void windowWillClose(Window* window);

    /// The cursor last set; null until one is set.
    Cursor* currentCursor() const { return m_currentCursor.get(); }
    void setCurrentCursor(Cursor* cursor);

private:
    Application();
    ~Application() override;
    Window* m_mainWindow = nullptr;
    RefPtr<Cursor> m_currentCursor;
};

} // namespace kit
