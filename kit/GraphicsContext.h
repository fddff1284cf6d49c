// GraphicsContext: cairo drawing over an RGBA surface in the kit's y-up coordinates, and the
// stack of current contexts that views draw into.
#pragma once

#include "kit/Color.h"
#include "kit/Geometry.h"
#include "kit/Object.h"

#include <cstdint>
#include <string_view>
#include <vector>

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace kit {

class BezierPath;
class Font;
class Image;

/// How a fill decides what is inside, with the original platform's values.
enum WindingRule : int {
    NonZeroWindingRule = 0,
    EvenOddWindingRule = 1,
};

/// How drawn pixels combine with those already there, with the original platform's values.
enum CompositingOperation : int {
    CompositeClear = 0,
    CompositeCopy = 1,
    CompositeSourceOver = 2,
};

/// A drawing surface of premultiplied RGBA pixels, one pixel per point, starting transparent.
/// User space starts y up with the origin at the bottom left, as in an unflipped view; the one
/// place that turns y around is `flipVertically`, which the context itself, flipped views,
/// images and text all go through.
class GraphicsContext final : public Object {
public:
    /// A transparent context; null when either side is not 1 to 32767 pixels or the area
    /// exceeds 2^28 pixels.
    static RefPtr<GraphicsContext> create(int pixelsWide, int pixelsHigh);

    /// The context that drawing calls without a context (colours, paths, views) go to; null
    /// when none is set. Kept per thread.
    static GraphicsContext* currentContext();
    static void setCurrentContext(GraphicsContext* context);
    /// Pushes the current context and saves its state; `restoreGraphicsState` pops it again,
    /// restoring both the context's state and which context is current.
    static void saveGraphicsState();
    static void restoreGraphicsState();

    int pixelsWide() const { return m_width; }
    int pixelsHigh() const { return m_height; }
    /// A copy of the pixels drawn so far.
    RefPtr<Image> makeImage() const;
    /// The pixels drawn so far, handed over as an image without a copy (a screenshot costs its
    /// image once); the context draws nothing afterwards.
    RefPtr<Image> takeImage();
    /// The pixels drawn so far, in place: native-endian premultiplied 32-bit ARGB words, rows
    /// top first, bytesPerRow() apart. Valid until the next drawing call; a screen takes them
    /// without the copy makeImage makes.
    const std::uint8_t* pixelData() const;
    int bytesPerRow() const;

    /// Saves and restores the transform, clip, colours and line settings.
    void saveGState();
    void restoreGState();

    /// Draws what follows, until the matching end, into a layer of its own that starts
    /// transparent and is then composited over what lay beneath: clearing inside the layer
    /// clears only what the layer holds. Saves the state at the begin and restores it at the end.
    void beginTransparencyLayer();
    void endTransparencyLayer();

    /// Moves the origin; non-finite offsets are ignored.
    void translate(float dx, float dy);
    /// Mirrors user space top to bottom within [minY, maxY]: y becomes minY + maxY - y.
    void flipVertically(float minY, float maxY);
    /// Whether y grows downwards in user space, as in a flipped view.
    bool isFlipped() const;

    /// Narrows the clip to a rectangle of user space.
    void clipToRect(const Rect& rect);
    /// The clip's bounding box in user space.
    Rect clipBoundingBox() const;

    void setFillColor(const Color& color) { state().fill = color; }
    void setStrokeColor(const Color& color) { state().stroke = color; }
    Color fillColor() const { return m_states.back().fill; }
    Color strokeColor() const { return m_states.back().stroke; }

    void fillRect(const Rect& rect);
    /// Strokes the rectangle's outline centred on its edges.
    void strokeRect(const Rect& rect, float lineWidth = 1);
    /// Makes a rectangle transparent.
    void clearRect(const Rect& rect);
    /// Fills or strokes with the fill or stroke colour; a path with a non-finite coordinate
    /// draws nothing.
    void fillPath(const BezierPath& path);
    void strokePath(const BezierPath& path);

    /// Draws `source` (in the image's points, origin bottom left; the whole image when empty)
    /// of `image` scaled into `destination`, upright whichever way user space points.
    void drawImage(const Image& image, const Rect& destination, const Rect& source = {},
        CompositingOperation operation = CompositeSourceOver, float fraction = 1);

    /// Draws one line of text with its baseline's left end at `baseline`, upright.
    void drawTextLine(std::string_view utf8, Point baseline, const Font& font, const Color& color);

    /// The cairo context behind this one, for kit drawing code.
    cairo_t* cairoContext() const { return m_cairo; }

protected:
    ~GraphicsContext() override;

private:
    struct State {
        Color fill = Color::blackColor();
        Color stroke = Color::blackColor();
    };
    GraphicsContext(std::vector<std::uint8_t> pixels, cairo_surface_t* surface, int width, int height);
    State& state() { return m_states.back(); }
    void setSource(const Color& color);
    bool addPath(const BezierPath& path);

    /// Native-endian premultiplied ARGB, the surface's memory.
    std::vector<std::uint8_t> m_pixels;
    cairo_surface_t* m_surface;
    cairo_t* m_cairo;
    int m_width;
    int m_height;
    std::vector<State> m_states;
};

} // namespace kit
