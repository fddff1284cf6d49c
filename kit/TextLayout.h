// TextLayout: breaks text into lines for a box and draws them, as labels and fields show text.
#pragma once

#include "kit/Color.h"
#include "kit/Font.h"
#include "kit/Geometry.h"
#include "kit/TextAttributes.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

class GraphicsContext;

/// Text laid out in lines for a box of a given width. Wrapping modes break lines at spaces
/// (word) or anywhere (character), single-line mode and the other modes keep one line per
/// paragraph, and the truncating modes put an ellipsis where text does not fit. Lines are
/// placed from the top of the box; a line wider than the box starts at its left edge whatever
/// the alignment, and the box clips it.
class TextLayout final {
public:
    struct Line {
        std::string text;
        float width;
    };

    TextLayout(std::string_view text, const Font& font, float width, LineBreakMode mode, bool singleLine);

    const std::vector<Line>& lines() const { return m_lines; }
    const Font& font() const { return *m_font; }
    /// The widest line and the height of all lines.
    Size size() const;

    /// The left end of a line `lineWidth` wide in `box` under `alignment`.
    static float lineOrigin(const Rect& box, float lineWidth, TextAlignment alignment);
    /// Draws the lines into `box` (clipped to it), from its top or centred vertically.
    void draw(GraphicsContext& context, const Rect& box, TextAlignment alignment, const Color& color,
        bool centerVertically = false) const;

    /// The character boundaries of one line: byte offsets and their x positions from the
    /// line's start (both start with 0 and end with the text's size and width).
    static void measureBoundaries(
        std::string_view text, const Font& font, std::vector<std::size_t>& offsets, std::vector<float>& xs);

private:
    void breakParagraph(const std::string& paragraph, LineBreakMode mode);
    void wrap(const std::string& paragraph, bool atWords);
    std::string truncated(const std::string& paragraph, LineBreakMode mode) const;
    float widthOf(std::string_view text) const { return m_font->widthOfString(text); }

    RefPtr<const Font> m_font;
    float m_width;
    std::vector<Line> m_lines;
};

} // namespace kit
