// UiTestSupport: pixel reading, simple coloured views and event helpers for the UI tests.
#pragma once

#include "kit/Color.h"
#include "kit/Control.h"
#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/Image.h"
#include "kit/Window.h"

#include <cstdint>
#include <string>
#include <vector>

namespace uitest {

/// One premultiplied pixel.
struct Pixel {
    int r, g, b, a;
    bool operator==(const Pixel&) const = default;
};

/// The pixel in column x of image row `row` (rows top first, as stored).
inline Pixel pixelAt(const kit::Image& image, int x, int row)
{
    const std::uint8_t* p = &image.rgba()[(std::size_t(row) * std::size_t(image.pixelsWide()) + std::size_t(x)) * 4];
    return { p[0], p[1], p[2], p[3] };
}

/// The pixel that covers the unit square whose bottom-left corner is (x, y) in y-up points.
inline Pixel pixelAtPoint(const kit::Image& image, int x, int y)
{
    return pixelAt(image, x, image.pixelsHigh() - 1 - y);
}

/// The bounding box, in y-up points, of the pixels whose alpha (or, with `ink` set, whose
/// darkness against `ink`-free pixels) passes a threshold; empty when there are none.
struct Box {
    int minX = 0, minY = 0, maxX = 0, maxY = 0; // max exclusive
    bool empty = true;
};

template <typename Predicate> Box boxWhere(const kit::Image& image, Predicate inked)
{
    Box box;
    for (int y = 0; y < image.pixelsHigh(); ++y) {
        for (int x = 0; x < image.pixelsWide(); ++x) {
            if (!inked(pixelAtPoint(image, x, y)))
                continue;
            if (box.empty) {
                box = { x, y, x + 1, y + 1, false };
            } else {
                box.minX = std::min(box.minX, x);
                box.minY = std::min(box.minY, y);
                box.maxX = std::max(box.maxX, x + 1);
                box.maxY = std::max(box.maxY, y + 1);
            }
        }
    }
    return box;
}

/// A view that fills its bounds with one colour and remembers the dirty rectangles it got.
class ColorView : public kit::View {
    KIT_MAKEABLE
public:
    kit::Color color = kit::Color::redColor();
    bool flipped = false;
    std::vector<kit::Rect> dirtyRects;
    /// Drawn in the view's own coordinates on top of the fill.
    kit::Rect extraRect;
    kit::Color extraColor = kit::Color::blueColor();

    bool isFlipped() const override { return flipped; }
    void drawRect(const kit::Rect& dirty) override
    {
        dirtyRects.push_back(dirty);
        kit::GraphicsContext* context = kit::GraphicsContext::currentContext();
        context->setFillColor(color);
        context->fillRect({ -1000, -1000, 3000, 3000 }); // far past the bounds: the clip must hold
        if (!extraRect.isEmpty()) {
            context->setFillColor(extraColor);
            context->fillRect(extraRect);
        }
    }

private:
    using kit::View::View;
};

/// A target that counts the actions it receives and remembers the last sender.
class ActionLog : public kit::View {
    KIT_MAKEABLE
public:
    int count = 0;
    kit::Object* lastSender = nullptr;
    std::vector<double> values;
    void act(kit::Object* sender)
    {
        ++count;
        lastSender = sender;
    }

private:
    using kit::View::View;
};

inline void mouse(kit::Window& window, kit::EventType type, kit::Point at, int clicks = 1)
{
    window.sendEvent(kit::Event::mouse(type, at, clicks));
}

inline void click(kit::Window& window, kit::Point at, int clicks = 1)
{
    mouse(window, kit::EventType::LeftMouseDown, at, clicks);
    mouse(window, kit::EventType::LeftMouseUp, at, clicks);
}

inline void key(
    kit::Window& window, const std::string& characters, unsigned short code = kit::KeyCodeNone, unsigned flags = 0)
{
    kit::Event down = kit::Event::key(kit::EventType::KeyDown, characters, code);
    down.setModifierFlags(flags);
    window.sendEvent(down);
    kit::Event up = kit::Event::key(kit::EventType::KeyUp, characters, code);
    up.setModifierFlags(flags);
    window.sendEvent(up);
}

inline void type(kit::Window& window, const std::string& text)
{
    for (char c : text)
        key(window, std::string(1, c));
}

} // namespace uitest
