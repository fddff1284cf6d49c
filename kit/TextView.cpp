// TextView: caret, selection, typing, commands and drawing of the field editor.
#include "kit/TextView.h"

#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/TextField.h"
#include "kit/TextLayout.h"
#include "kit/Utf8.h"
#include "kit/Window.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kit {

namespace {

// Text a person may type: no control characters and none of the platform's function-key
// characters (U+F700 to U+F8FF), which stand for keys, not text.
std::string typeable(std::string_view text)
{
    const std::string clean = sanitizedUtf8(text);
    std::string out;
    for (std::size_t i = 0; i < clean.size();) {
        const std::size_t next = nextCharacterOffset(clean, i);
        const auto c = static_cast<unsigned char>(clean[i]);
        const bool control = c < 0x20 || c == 0x7F;
        const bool functionKey = next - i == 3 && c == 0xEF && static_cast<unsigned char>(clean[i + 1]) >= 0x9C
            && static_cast<unsigned char>(clean[i + 1]) <= 0xA3;
        if (!control && !functionKey)
            out.append(clean, i, next - i);
        i = next;
    }
    return out;
}

bool isWordCharacter(std::string_view character)
{
    const auto c = static_cast<unsigned char>(character[0]);
    return c >= 0x80 || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'
        || c == '.' || c == '-';
}

} // namespace

void TextView::setString(std::string_view text)
{
    m_string = sanitizedUtf8(text);
    remeasure();
    m_selection = { m_string.size(), 0 };
    m_anchor = m_string.size();
    scrollToCaret();
    setNeedsDisplay();
}

void TextView::setSelectedRange(Range range)
{
    std::size_t start = std::min(range.location, m_string.size());
    std::size_t end = start + std::min(range.length, m_string.size() - start);
    while (start > 0 && (static_cast<unsigned char>(m_string[start]) & 0xC0) == 0x80)
        --start;
    while (end < m_string.size() && (static_cast<unsigned char>(m_string[end]) & 0xC0) == 0x80)
        ++end;
    m_selection = { start, end - start };
    m_anchor = start;
    scrollToCaret();
    setNeedsDisplay();
}

void TextView::selectAll() { setSelectedRange({ 0, m_string.size() }); }

Font& TextView::font() const
{
    if (!m_font)
        m_font = Font::systemFontOfSize(Font::kSystemFontSize);
    return *m_font;
}

void TextView::setFont(RefPtr<Font> font)
{
    m_font = std::move(font);
    remeasure();
    setNeedsDisplay();
}

void TextView::beginEditingFor(TextField* client)
{
    if (m_client && m_client != client)
        endEditing();
    m_client = client;
    m_began = false;
    m_fieldEditor = true;
    setFont(&client->font());
    m_textColor = client->textColor();
    m_alignment = client->alignment();
    m_editable = client->isEditable();
    m_selectable = true;
    m_scroll = 0;
    setFrame(client->textRect());
    client->addSubview(this);
    setString(client->stringValue());
    selectAll();
}

void TextView::endEditing()
{
    TextField* client = std::exchange(m_client, nullptr);
    if (!client)
        return;
    RefPtr<TextView> keep(this);
    removeFromSuperview();
    client->setNeedsDisplay();
}

bool TextView::mayChange()
{
    if (!m_editable)
        return false;
    if (m_client && !m_began) {
        RefPtr<TextField> client(m_client);
        if (!client->textShouldBeginEditing(this))
            return false;
        m_began = true;
        client->textDidBeginEditing(this);
    }
    return true;
}

void TextView::changed()
{
    scrollToCaret();
    setNeedsDisplay();
    if (m_client)
        RefPtr<TextField>(m_client)->textDidChange(this);
}

void TextView::replaceSelection(std::string_view text)
{
    std::string insert(text);
    const std::size_t room = kMaxLength - std::min(kMaxLength, m_string.size() - m_selection.length);
    if (insert.size() > room) {
        std::size_t cut = room;
        while (cut > 0 && (static_cast<unsigned char>(insert[cut]) & 0xC0) == 0x80)
            --cut;
        insert.resize(cut);
    }
    // Text before the selection keeps its width, so the walk position stays valid there.
    widthBefore(m_selection.location);
    m_textWidth -= widthOfRange(m_selection.location, m_selection.end());
    m_string.replace(m_selection.location, m_selection.length, insert);
    m_textWidth += widthOfRange(m_selection.location, m_selection.location + insert.size());
    m_selection = { m_selection.location + insert.size(), 0 };
    m_anchor = m_selection.location;
    changed();
}

void TextView::insertText(std::string_view text)
{
    const std::string clean = typeable(text);
    if (clean.empty() || !mayChange())
        return;
    replaceSelection(clean);
}

void TextView::moveCaret(std::size_t offset, bool extend)
{
    offset = std::min(offset, m_string.size());
    if (extend) {
        const std::size_t a = std::min(m_anchor, offset);
        const std::size_t b = std::max(m_anchor, offset);
        m_selection = { a, b - a };
    } else {
        m_selection = { offset, 0 };
        m_anchor = offset;
    }
    scrollToCaret();
    setNeedsDisplay();
}

void TextView::selectWordAt(std::size_t offset)
{
    const std::string_view text(m_string);
    const auto wordAt = [&](std::size_t i) {
        return i < text.size() && isWordCharacter(text.substr(i, nextCharacterOffset(text, i) - i));
    };
    std::size_t start = std::min(offset, text.size());
    std::size_t end = start;
    while (start > 0 && wordAt(previousCharacterOffset(text, start)))
        start = previousCharacterOffset(text, start);
    while (wordAt(end))
        end = nextCharacterOffset(text, end);
    m_selection = { start, end - start };
    m_anchor = start;
    setNeedsDisplay();
}

void TextView::doCommandBySelector(const std::string& selector)
{
    RefPtr<TextView> keep(this);
    if (m_client && RefPtr<TextField>(m_client)->textViewDoCommandBySelector(this, selector))
        return;
    performCommand(selector);
}

bool TextView::performCommand(const std::string& selector)
{
    const std::size_t caret = m_selection.location;
    const std::size_t end = m_selection.end();
    const bool empty = m_selection.length == 0;
    if (selector == "deleteBackward:" || selector == "deleteForward:") {
        if (!mayChange())
            return true;
        if (empty) {
            const bool back = selector == "deleteBackward:";
            const std::size_t from = back ? previousCharacterOffset(m_string, caret) : caret;
            const std::size_t to = back ? caret : nextCharacterOffset(m_string, caret);
            if (from == to)
                return true;
            m_selection = { from, to - from };
        }
        replaceSelection({});
    } else if (selector == "moveLeft:") {
        moveCaret(empty ? previousCharacterOffset(m_string, caret) : caret, false);
    } else if (selector == "moveRight:") {
        moveCaret(empty ? nextCharacterOffset(m_string, caret) : end, false);
    } else if (selector == "moveLeftAndModifySelection:") {
        const std::size_t moving = m_anchor == caret ? end : caret;
        moveCaret(previousCharacterOffset(m_string, moving), true);
    } else if (selector == "moveRightAndModifySelection:") {
        const std::size_t moving = m_anchor == caret ? end : caret;
        moveCaret(nextCharacterOffset(m_string, moving), true);
    } else if (selector == "moveToBeginningOfLine:" || selector == "moveUp:") {
        moveCaret(0, false);
    } else if (selector == "moveToEndOfLine:" || selector == "moveDown:") {
        moveCaret(m_string.size(), false);
    } else if (selector == "selectAll:") {
        selectAll();
    } else {
        // "insertNewline:", "insertTab:", "cancelOperation:" and the rest: one line has no
        // use for them; a field editor's client acts on them before they get here.
        return false;
    }
    return true;
}

std::string TextView::commandForKey(const Event& event)
{
    const std::string& c = event.characters();
    const bool shift = (event.modifierFlags() & ShiftKeyMask) != 0;
    switch (event.keyCode()) {
    case KeyCodeReturn: return "insertNewline:";
    case KeyCodeTab: return shift ? "insertBacktab:" : "insertTab:";
    case KeyCodeDelete: return "deleteBackward:";
    case KeyCodeEscape: return "cancelOperation:";
    case KeyCodeForwardDelete: return "deleteForward:";
    case KeyCodeLeftArrow: return shift ? "moveLeftAndModifySelection:" : "moveLeft:";
    case KeyCodeRightArrow: return shift ? "moveRightAndModifySelection:" : "moveRight:";
    case KeyCodeUpArrow: return "moveUp:";
    case KeyCodeDownArrow: return "moveDown:";
    case KeyCodeHome: return "moveToBeginningOfLine:";
    case KeyCodeEnd: return "moveToEndOfLine:";
    case KeyCodeNone: break;
    }
    if (c == "\r" || c == "\n" || c == "\x03")
        return "insertNewline:";
    if (c == "\t")
        return "insertTab:";
    if (c == "\x19")
        return "insertBacktab:";
    if (c == "\x7f" || c == "\b")
        return "deleteBackward:";
    if (c == "\x1b")
        return "cancelOperation:";
    if (c == "\xEF\x9C\xA8") // U+F728, the forward-delete key
        return "deleteForward:";
    if (c == "\xEF\x9C\x82") // U+F702, left arrow
        return shift ? "moveLeftAndModifySelection:" : "moveLeft:";
    if (c == "\xEF\x9C\x83") // U+F703, right arrow
        return shift ? "moveRightAndModifySelection:" : "moveRight:";
    if ((event.modifierFlags() & CommandKeyMask) && (c == "a" || c == "A"))
        return "selectAll:";
    return {};
}

void TextView::keyDown(const Event& event)
{
    const std::string command = commandForKey(event);
    if (!command.empty()) {
        doCommandBySelector(command);
        return;
    }
    // Command and control chords that name no command are shortcuts, not text.
    if (event.modifierFlags() & (CommandKeyMask | ControlKeyMask))
        return;
    insertText(event.characters());
}

bool TextView::resignFirstResponder()
{
    if (!m_client)
        return true;
    RefPtr<TextView> keep(this);
    RefPtr<TextField> client(m_client);
    if (!client->textShouldEndEditing(this))
        return false;
    // The delegate may have dropped the editing itself while it was asked.
    if (m_client == client.get())
        client->textDidEndEditing(this);
    return true;
}

double TextView::widthOfRange(std::size_t from, std::size_t to) const
{
    const std::string_view text(m_string);
    double width = 0;
    for (std::size_t i = from; i < to;) {
        const std::size_t next = nextCharacterOffset(text, i);
        width += font().advanceOfCharacter(text.substr(i, next - i));
        i = next;
    }
    return width;
}

double TextView::widthBefore(std::size_t offset) const
{
    offset = std::min(offset, m_string.size());
    if (offset >= m_measuredOffset)
        m_measuredWidth += widthOfRange(m_measuredOffset, offset);
    else
        m_measuredWidth -= widthOfRange(offset, m_measuredOffset);
    m_measuredOffset = offset;
    return m_measuredWidth;
}

void TextView::remeasure()
{
    m_measuredOffset = 0;
    m_measuredWidth = 0;
    m_textWidth = widthOfRange(0, m_string.size());
}

float TextView::textOrigin() const
{
    const auto width = float(m_textWidth);
    const Rect box = bounds();
    if (width <= box.width())
        return TextLayout::lineOrigin(box, width, m_alignment);
    return box.minX() - m_scroll;
}

float TextView::xOfOffset(std::size_t offset) const { return textOrigin() + float(widthBefore(offset)); }

std::size_t TextView::offsetAtX(float x) const
{
    std::vector<std::size_t> offsets;
    std::vector<float> xs;
    TextLayout::measureBoundaries(m_string, font(), offsets, xs);
    const float local = x - textOrigin();
    std::size_t best = 0;
    for (std::size_t i = 1; i < xs.size(); ++i) {
        if (std::fabs(xs[i] - local) < std::fabs(xs[best] - local))
            best = i;
    }
    return offsets[best];
}

float TextView::baselineY() const
{
    // The same place TextLayout puts a field's first line, so text does not jump on editing.
    const float fromTop = font().ascender();
    return std::round(isFlipped() ? fromTop : bounds().height() - fromTop);
}

void TextView::scrollToCaret()
{
    const auto width = float(m_textWidth);
    const float room = bounds().width() - 1;
    if (width <= bounds().width() || !(room > 0)) {
        m_scroll = 0;
        return;
    }
    const auto caretX = float(widthBefore(m_selection.location));
    if (caretX - m_scroll > room)
        m_scroll = caretX - room;
    if (caretX < m_scroll)
        m_scroll = caretX;
    m_scroll = std::clamp(m_scroll, 0.0f, width - room);
}

Rect TextView::caretRect() const
{
    const float x = std::round(xOfOffset(m_selection.location));
    const float top = font().ascender();
    const float bottom = -font().descender();
    const float y = baselineY();
    return isFlipped() ? Rect { x, y - top, 1, top + bottom } : Rect { x, y - bottom, 1, top + bottom };
}

void TextView::mouseDown(const Event& event)
{
    if (!m_selectable && !m_editable)
        return;
    const Point local = convertPointFromView(event.locationInWindow(), nullptr);
    const std::size_t offset = offsetAtX(local.x);
    if (event.clickCount() >= 3)
        selectAll();
    else if (event.clickCount() == 2)
        selectWordAt(offset);
    else
        moveCaret(offset, (event.modifierFlags() & ShiftKeyMask) != 0);
}

void TextView::mouseDragged(const Event& event)
{
    if (!m_selectable && !m_editable)
        return;
    const Point local = convertPointFromView(event.locationInWindow(), nullptr);
    moveCaret(offsetAtX(local.x), true);
}

void TextView::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect box = bounds();
    const Rect caret = caretRect();
    if (m_selection.length > 0) {
        const float x0 = xOfOffset(m_selection.location);
        const float x1 = xOfOffset(m_selection.end());
        context->setFillColor(Color::selectedTextBackgroundColor());
        context->fillRect({ std::round(x0), caret.y(), std::round(x1) - std::round(x0), caret.height() });
    }
    context->saveGState();
    context->clipToRect(box);
    context->drawTextLine(m_string, { std::round(textOrigin()), baselineY() }, font(), m_textColor);
    context->restoreGState();
    Window* window = this->window();
    if (m_selection.length == 0 && m_editable && window && window->firstResponder() == this) {
        context->setFillColor(m_textColor);
        context->fillRect(caret);
    }
}

} // namespace kit
