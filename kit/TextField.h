// TextField: a label or an editable field of text, edited through its window's field editor.
#pragma once

#include "kit/Color.h"
#include "kit/Control.h"
#include "kit/TextAttributes.h"
#include "kit/TextFieldDelegate.h"

#include <cstdint>
#include <string>

namespace kit {

class TextView;

/// Focus ring types, with the original platform's values.
enum FocusRingType : int {
    FocusRingTypeDefault = 0,
    FocusRingTypeNone = 1,
    FocusRingTypeExterior = 2,
};

/// Shows a string and, when editable, lets a person change it. A click on an enabled
/// editable (or selectable) field makes it first responder: the window's field editor then
/// covers the field's text area with all its text selected, takes the keys, and commits
/// through the delegate when editing ends. A new field is editable, selectable, bordered and
/// draws a white background, like the original platform's; a label turns those off.
class TextField : public Control {
    KIT_MAKEABLE
public:
    static RefPtr<TextField> create(const Rect& frame) { return make<TextField>(frame); }

    /// The committed text: while editing, what was there before the editing began.
    const std::string& stringValue() const { return m_stringValue; }
    /// Sets the text; while editing, the field editor's text too, so that the value set wins
    /// when the editing is committed.
    void setStringValue(std::string value);
    /// The cell's title, which is the string value.
    const std::string& title() const { return m_stringValue; }
    void setTitle(std::string title) { setStringValue(std::move(title)); }
    /// The leading number of the string value (see StringValue.h).
    float floatValue() const;
    double doubleValue() const;
    std::int32_t intValue() const;
    std::int64_t integerValue() const;
    void setFloatValue(float value) { setDoubleValue(value); }
    void setDoubleValue(double value);
    void setIntValue(std::int32_t value) { setStringValue(std::to_string(value)); }

    bool isEditable() const { return m_editable; }
    void setEditable(bool editable);
    bool isSelectable() const { return m_selectable; }
    void setSelectable(bool selectable);
    bool isBordered() const { return m_bordered; }
    void setBordered(bool bordered);
    bool drawsBackground() const { return m_drawsBackground; }
    void setDrawsBackground(bool draws);
    Color backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const Color& color);
    Color textColor() const { return m_textColor; }
    void setTextColor(const Color& color);
    TextAlignment alignment() const { return m_alignment; }
    void setAlignment(TextAlignment alignment);
    LineBreakMode lineBreakMode() const { return m_lineBreakMode; }
    void setLineBreakMode(LineBreakMode mode);
    bool usesSingleLineMode() const { return m_singleLine; }
    void setUsesSingleLineMode(bool singleLine);
    FocusRingType focusRingType() const { return m_focusRingType; }
    void setFocusRingType(FocusRingType type);
    /// Kept as data: the fields hold plain text only.
    bool allowsEditingTextAttributes() const { return m_allowsEditingTextAttributes; }
    void setAllowsEditingTextAttributes(bool allows) { m_allowsEditingTextAttributes = allows; }

    /// Not retained.
    TextFieldDelegate* delegate() const { return m_delegate; }
    void setDelegate(TextFieldDelegate* delegate) { m_delegate = delegate; }

    /// The field editor while this field is being edited, else null.
    TextView* currentEditor() const;
    /// Starts editing with all the text selected, if the field can be edited or selected.
    void selectText();
    /// Drops the editing and the text typed in it, asking nobody; false when there was none.
    bool abortEditing();
    /// Takes the editor's current text as the string value without ending the editing.
    void validateEditing();
    /// Where the text goes: the bounds less the border's and the text's margins.
    Rect textRect() const;

    /// The field editor's questions and news (the editor calls these).
    bool textShouldBeginEditing(TextView* editor);
    void textDidBeginEditing(TextView* editor);
    void textDidChange(TextView* editor);
    bool textShouldEndEditing(TextView* editor);
    void textDidEndEditing(TextView* editor);
    /// The delegate first; then Return commits and sends the action, Tab commits; anything
    /// else is left to the editor.
    bool textViewDoCommandBySelector(TextView* editor, const std::string& selector);

    void setEnabled(bool enabled) override;
    bool acceptsFirstResponder() const override;
    bool becomeFirstResponder() override;
    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void drawRect(const Rect& dirty) override;

protected:
    explicit TextField(const Rect& frame) : Control(frame) {}

private:
    /// Hands changed looks to the editor while editing.
    void syncEditor();

    std::string m_stringValue;
    bool m_editable = true;
    bool m_selectable = true;
    bool m_bordered = true;
    bool m_drawsBackground = true;
    Color m_backgroundColor = Color::textBackgroundColor();
    Color m_textColor = Color::controlTextColor();
    TextAlignment m_alignment = TextAlignmentNatural;
    LineBreakMode m_lineBreakMode = LineBreakByClipping;
    bool m_singleLine = false;
    FocusRingType m_focusRingType = FocusRingTypeDefault;
    bool m_allowsEditingTextAttributes = false;
    TextFieldDelegate* m_delegate = nullptr;
    bool m_pressBeganEditing = false;
    bool m_ignoringPress = false;
};

} // namespace kit
