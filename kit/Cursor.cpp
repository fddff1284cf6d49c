// Cursor: the two system cursors and the application's current one.
#include "kit/Cursor.h"

#include "kit/Application.h"

namespace kit {

Cursor* Cursor::arrowCursor()
{
    static Cursor* arrow = new Cursor("arrow", nullptr, { 0, 0 });
    return arrow;
}

Cursor* Cursor::crosshairCursor()
{
    static Cursor* crosshair = new Cursor("crosshair", nullptr, { 8, 8 });
    return crosshair;
}

RefPtr<Cursor> Cursor::create(RefPtr<Image> image, Point hotSpot)
{
    return adoptRef(new Cursor("image", std::move(image), hotSpot));
}

Cursor* Cursor::currentCursor()
{
    Cursor* current = Application::shared().currentCursor();
    return current ? current : arrowCursor();
}

void Cursor::set() { Application::shared().setCurrentCursor(this); }

} // namespace kit
