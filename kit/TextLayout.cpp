// TextLayout: line breaking, truncation and placement.
#include "kit/TextLayout.h"

#include "kit/GraphicsContext.h"
#include "kit/Utf8.h"

#include <cmath>

namespace kit {

namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

bool isSpace(std::string_view character) { return character == " " || character == "\t"; }

} // namespace

TextLayout::TextLayout(std::string_view text, const Font& font, float width, LineBreakMode mode, bool singleLine)
    : m_font(&font), m_width(width)
{
    std::string clean = sanitizedUtf8(text);
    if (singleLine) {
        for (char& c : clean) {
            if (c == '\n' || c == '\r')
                c = ' ';
        }
        // One line cannot wrap: the wrapping modes clip instead.
        if (mode == LineBreakByWordWrapping || mode == LineBreakByCharWrapping)
            mode = LineBreakByClipping;
        breakParagraph(clean, mode);
        return;
    }
    std::size_t start = 0;
    while (true) {
        const std::size_t end = clean.find_first_of("\r\n", start);
        breakParagraph(clean.substr(start, end == std::string::npos ? std::string::npos : end - start), mode);
        if (end == std::string::npos)
            break;
        start = end + (clean.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
}

Size TextLayout::size() const
{
    float width = 0;
    for (const Line& line : m_lines)
        width = std::max(width, line.width);
    return { width, float(m_lines.size()) * m_font->lineHeight() };
}

void TextLayout::measureBoundaries(
    std::string_view text, const Font& font, std::vector<std::size_t>& offsets, std::vector<float>& xs)
{
    offsets.assign(1, 0);
    xs.assign(1, 0);
    double x = 0;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t next = nextCharacterOffset(text, i);
        x += font.advanceOfCharacter(text.substr(i, next - i));
        offsets.push_back(next);
        xs.push_back(float(x));
        i = next;
    }
}

void TextLayout::breakParagraph(const std::string& paragraph, LineBreakMode mode)
{
    const bool canBreak = m_width > 0 && std::isfinite(m_width);
    switch (mode) {
    case LineBreakByWordWrapping:
    case LineBreakByCharWrapping:
        if (canBreak) {
            wrap(paragraph, mode == LineBreakByWordWrapping);
            return;
        }
        break;
    case LineBreakByClipping:
    case LineBreakByTruncatingHead:
    case LineBreakByTruncatingTail:
    case LineBreakByTruncatingMiddle: break;
    }
    const std::string shown = canBreak ? truncated(paragraph, mode) : paragraph;
    m_lines.push_back({ shown, widthOf(shown) });
}

void TextLayout::wrap(const std::string& paragraph, bool atWords)
{
    std::vector<std::size_t> offsets;
    std::vector<float> xs;
    measureBoundaries(paragraph, *m_font, offsets, xs);
    const std::size_t n = offsets.size() - 1;
    const auto character
        = [&](std::size_t k) { return std::string_view(paragraph).substr(offsets[k], offsets[k + 1] - offsets[k]); };
    const auto addLine = [&](std::size_t from, std::size_t to) {
        while (to > from && isSpace(character(to - 1)))
            --to;
        m_lines.push_back({ paragraph.substr(offsets[from], offsets[to] - offsets[from]), xs[to] - xs[from] });
    };
    if (n == 0) {
        m_lines.push_back({ std::string(), 0 });
        return;
    }
    std::size_t i = 0;
    while (i < n) {
        // The longest run from i that fits, at least one character.
        std::size_t e = i + 1;
        while (e < n && xs[e + 1] - xs[i] <= m_width)
            ++e;
        if (e == n) {
            addLine(i, n);
            break;
        }
        std::size_t end = e;
        if (atWords && !isSpace(character(e))) {
            std::size_t k = e;
            while (k > i + 1 && !isSpace(character(k - 1)))
                --k;
            if (k > i + 1)
                end = k;
        }
        addLine(i, end);
        i = end;
        if (atWords) {
            while (i < n && isSpace(character(i)))
                ++i;
        }
    }
}

std::string TextLayout::truncated(const std::string& paragraph, LineBreakMode mode) const
{
    std::vector<std::size_t> offsets;
    std::vector<float> xs;
    measureBoundaries(paragraph, *m_font, offsets, xs);
    const float total = xs.back();
    if (total <= m_width || mode == LineBreakByClipping || mode == LineBreakByWordWrapping
        || mode == LineBreakByCharWrapping)
        return paragraph;
    const float budget = m_width - widthOf(kEllipsis);
    const std::size_t n = offsets.size() - 1;
    // Longest head that fits in `room`, and shortest start of a tail that fits in `room`.
    const auto headEnd = [&](float room) {
        std::size_t k = 0;
        while (k < n && xs[k + 1] <= room)
            ++k;
        return k;
    };
    const auto tailStart = [&](float room) {
        std::size_t k = n;
        while (k > 0 && total - xs[k - 1] <= room)
            --k;
        return k;
    };
    const std::string ellipsis(kEllipsis);
    switch (mode) {
    case LineBreakByTruncatingHead: return ellipsis + paragraph.substr(offsets[tailStart(budget)]);
    case LineBreakByTruncatingTail: return paragraph.substr(0, offsets[headEnd(budget)]) + ellipsis;
    case LineBreakByTruncatingMiddle: {
        const std::size_t head = headEnd(budget / 2);
        const std::size_t tail = tailStart(budget - xs[head]);
        return paragraph.substr(0, offsets[head]) + ellipsis + paragraph.substr(offsets[std::max(tail, head)]);
    }
    case LineBreakByWordWrapping:
    case LineBreakByCharWrapping:
    case LineBreakByClipping: break;
    }
    return paragraph;
}

float TextLayout::lineOrigin(const Rect& box, float lineWidth, TextAlignment alignment)
{
    if (lineWidth >= box.width())
        return box.minX();
    switch (alignment) {
    case TextAlignmentRight: return box.maxX() - lineWidth;
    case TextAlignmentCenter: return box.minX() + (box.width() - lineWidth) / 2;
    case TextAlignmentLeft:
    case TextAlignmentJustified:
    case TextAlignmentNatural: break;
    }
    return box.minX();
}

void TextLayout::draw(
    GraphicsContext& context, const Rect& box, TextAlignment alignment, const Color& color, bool centerVertically) const
{
    const float lineHeight = m_font->lineHeight();
    const float inset = centerVertically ? (box.height() - float(m_lines.size()) * lineHeight) / 2 : 0;
    const bool flipped = context.isFlipped();
    context.saveGState();
    context.clipToRect(box);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const float fromTop = inset + float(i) * lineHeight + m_font->ascender();
        if (fromTop - m_font->ascender() > box.height())
            break;
        const float y = flipped ? box.minY() + fromTop : box.maxY() - fromTop;
        const float x = lineOrigin(box, m_lines[i].width, alignment);
        // Whole pixels keep glyph edges as crisp as the font allows.
        context.drawTextLine(m_lines[i].text, { std::round(x), std::round(y) }, *m_font, color);
    }
    context.restoreGState();
}

} // namespace kit
