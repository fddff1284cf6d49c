// TextField: the field's looks, and its side of editing with the window's field editor.
#include "kit/TextField.h"

#include "kit/GraphicsContext.h"
#include "kit/StringValue.h"
#include "kit/TextLayout.h"
#include "kit/TextView.h"
#include "kit/Window.h"

#include <sstream>
#include <utility>

namespace kit {

void TextField::setStringValue(std::string value)
{
    m_stringValue = std::move(value);
    if (TextView* editor = currentEditor())
        editor->setString(m_stringValue);
    setNeedsDisplay();
}

float TextField::floatValue() const { return kit::floatValue(m_stringValue); }
double TextField::doubleValue() const { return kit::doubleValue(m_stringValue); }
std::int32_t TextField::intValue() const { return kit::intValue(m_stringValue); }
std::int64_t TextField::integerValue() const { return kit::integerValue(m_stringValue); }

void TextField::setDoubleValue(double value)
{
    std::ostringstream text;
    text << value;
    setStringValue(text.str());
}

void TextField::setEditable(bool editable)
{
    m_editable = editable;
    if (!m_editable && !m_selectable)
        abortEditing();
    syncEditor();
}

void TextField::setSelectable(bool selectable)
{
    m_selectable = selectable;
    if (!m_editable && !m_selectable)
        abortEditing();
}

void TextField::setEnabled(bool enabled)
{
    if (!enabled)
        abortEditing();
    Control::setEnabled(enabled);
}

void TextField::setBordered(bool bordered)
{
    m_bordered = bordered;
    syncEditor();
}

void TextField::setDrawsBackground(bool draws)
{
    m_drawsBackground = draws;
    setNeedsDisplay();
}

void TextField::setBackgroundColor(const Color& color)
{
    m_backgroundColor = color;
    setNeedsDisplay();
}

void TextField::setTextColor(const Color& color)
{
    m_textColor = color;
    syncEditor();
}

void TextField::setAlignment(TextAlignment alignment)
{
    m_alignment = alignment;
    syncEditor();
}

void TextField::setLineBreakMode(LineBreakMode mode)
{
    m_lineBreakMode = mode;
    setNeedsDisplay();
}

void TextField::setUsesSingleLineMode(bool singleLine)
{
    m_singleLine = singleLine;
    setNeedsDisplay();
}

void TextField::setFocusRingType(FocusRingType type)
{
    m_focusRingType = type;
    setNeedsDisplay();
}

void TextField::syncEditor()
{
    setNeedsDisplay();
    TextView* editor = currentEditor();
    if (!editor)
        return;
    editor->setTextColor(m_textColor);
    editor->setAlignment(m_alignment);
    editor->setEditable(m_editable);
    editor->setFrame(textRect());
}

Rect TextField::textRect() const
{
    // A border takes a point on each side; the text keeps two points from the sides.
    const float dx = m_bordered ? 3 : 2;
    const float dy = m_bordered ? 2 : 1;
    const Rect b = bounds();
    return { b.minX() + dx, b.minY() + dy, std::max(0.0f, b.width() - 2 * dx), std::max(0.0f, b.height() - 2 * dy) };
}

TextView* TextField::currentEditor() const
{
    Window* window = this->window();
    TextView* editor = window ? window->fieldEditor(false, const_cast<TextField*>(this)) : nullptr;
    return editor && editor->client() == this ? editor : nullptr;
}

void TextField::selectText()
{
    Window* window = this->window();
    if (!window || !isEnabled() || !(m_editable || m_selectable) || currentEditor())
        return;
    TextView* editor = window->fieldEditor(true, this);
    // Another field still being edited has to let go first.
    if (editor->client() && (!window->makeFirstResponder(nullptr) || editor->client()))
        return;
    RefPtr<TextField> keep(this);
    editor->beginEditingFor(this);
    if (!window->makeFirstResponder(editor))
        editor->endEditing();
}

bool TextField::abortEditing()
{
    TextView* editor = currentEditor();
    if (!editor)
        return false;
    editor->endEditing();
    setNeedsDisplay();
    return true;
}

void TextField::validateEditing()
{
    if (TextView* editor = currentEditor())
        m_stringValue = editor->string();
}

bool TextField::textShouldBeginEditing(TextView* editor)
{
    return !m_delegate || m_delegate->controlTextShouldBeginEditing(this, editor);
}

void TextField::textDidBeginEditing(TextView*)
{
    if (m_delegate)
        m_delegate->controlTextDidBeginEditing(this);
}

void TextField::textDidChange(TextView*)
{
    if (m_delegate)
        m_delegate->controlTextDidChange(this);
}

bool TextField::textShouldEndEditing(TextView* editor)
{
    return !m_delegate || m_delegate->controlTextShouldEndEditing(this, editor);
}

void TextField::textDidEndEditing(TextView* editor)
{
    RefPtr<TextField> keep(this);
    m_stringValue = editor->string();
    editor->endEditing();
    setNeedsDisplay();
    if (m_delegate)
        m_delegate->controlTextDidEndEditing(this);
}

bool TextField::textViewDoCommandBySelector(TextView* editor, const std::string& selector)
{
    RefPtr<TextField> keep(this);
    if (m_delegate && m_delegate->controlTextViewDoCommandBySelector(this, editor, selector))
        return true;
    const bool newline = selector == "insertNewline:";
    if (!newline && selector != "insertTab:" && selector != "insertBacktab:")
        return false;
    if (Window* window = this->window())
        window->endEditingFor(editor);
    if (newline && !currentEditor())
        sendAction();
    return true;
}

bool TextField::acceptsFirstResponder() const
{
    // While it is edited the field editor holds the post, and a press on the field's margin
    // only moves the caret.
    return isEnabled() && (m_editable || m_selectable) && !currentEditor();
}

bool TextField::becomeFirstResponder()
{
    selectText();
    // The press that is making this the first responder began the editing: it leaves
    // everything selected rather than placing the caret.
    m_pressBeganEditing = currentEditor() != nullptr;
    return true;
}

void TextField::mouseDown(const Event& event)
{
    if (!isEnabled())
        return;
    if (!m_editable && !m_selectable) {
        Control::mouseDown(event);
        return;
    }
    m_ignoringPress = std::exchange(m_pressBeganEditing, false);
    if (TextView* editor = currentEditor()) {
        if (!m_ignoringPress)
            editor->mouseDown(event);
    } else {
        selectText();
    }
}

void TextField::mouseDragged(const Event& event)
{
    TextView* editor = currentEditor();
    if (editor && !m_ignoringPress)
        editor->mouseDragged(event);
    else
        Control::mouseDragged(event);
}

void TextField::drawRect(const Rect&)
{
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context)
        return;
    const Rect b = bounds();
    if (m_drawsBackground && m_backgroundColor.alphaComponent() > 0) {
        context->setFillColor(m_backgroundColor);
        context->fillRect(b);
    }
    if (m_bordered) {
        context->setStrokeColor(Color::controlBorderColor());
        context->strokeRect({ b.minX() + 0.5f, b.minY() + 0.5f, b.width() - 1, b.height() - 1 }, 1);
    }
    const bool editing = currentEditor() != nullptr;
    if (editing && m_focusRingType != FocusRingTypeNone) {
        context->setStrokeColor(Color::keyboardFocusIndicatorColor());
        context->strokeRect({ b.minX() + 1, b.minY() + 1, b.width() - 2, b.height() - 2 }, 2);
    }
    if (editing) // the field editor shows the text
        return;
    const TextLayout layout(m_stringValue, font(), textRect().width(), m_lineBreakMode, m_singleLine);
    layout.draw(*context, textRect(), m_alignment, isEnabled() ? m_textColor : Color::disabledControlTextColor());
}

} // namespace kit
