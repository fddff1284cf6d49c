// Application: the shared instance and its main window.
#include "kit/Application.h"

#include "kit/Cursor.h"

namespace kit {

Application& Application::shared()
{
    // Never destroyed: views and delayed calls may still refer to it while statics go away.
    static Application* application = new Application;
    return *application;
}

Application::Application() = default;
Application::~Application() = default;

void Application::setCurrentCursor(Cursor* cursor) { m_currentCursor = cursor; }

void Application::windowWillClose(Window* window)
{
    if (m_mainWindow == window)
        m_mainWindow = nullptr;
}

} // namespace kit
