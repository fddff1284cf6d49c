// Cursor: the system arrow and crosshair, and cursors made from an image with a hot spot.
#pragma once

#include "kit/Geometry.h"
#include "kit/Image.h"
#include "kit/Object.h"

#include <string>

namespace kit {

class Cursor final : public Object {
public:
    static Cursor* arrowCursor();
    static Cursor* crosshairCursor();
    /// A cursor showing `image` whose hot spot (top-left origin, y down) is the click point.
    static RefPtr<Cursor> create(RefPtr<Image> image, Point hotSpot);
    /// The cursor last set, the arrow at first.
    static Cursor* currentCursor();

    /// Makes this the current cursor.
    void set();

    /// "arrow", "crosshair" or "image".
    const std::string& name() const { return m_name; }
    Image* image() const { return m_image.get(); }
    Point hotSpot() const { return m_hotSpot; }

private:
    Cursor(std::string name, RefPtr<Image> image, Point hotSpot)
        : m_name(std::move(name)), m_image(std::move(image)), m_hotSpot(hotSpot)
    {
    }

    std::string m_name;
    RefPtr<Image> m_image;
    Point m_hotSpot;
};

} // namespace kit
