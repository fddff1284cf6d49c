// InUnresponsiveArea: the host's controls are known only by the tracking areas it installs.
#include "Classes/Selection/InUnresponsiveArea.h"

#include "kit/Application.h"
#include "kit/Window.h"

bool InUnresponsiveArea(float x, float y)
{
    kit::Window* window = kit::Application::shared().mainWindow();
    kit::View* content = window ? window->contentView() : nullptr;
    if (!content)
        return false;
    for (const auto& area : content->trackingAreas()) {
        if (area->rect() == content->frame())
            continue;
        if (kit::MouseInRect({ x, y }, area->rect(), false))
            return true;
    }
    return false;
}
