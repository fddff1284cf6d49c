// TextView: the one-line text editor that a window lends to whichever text field is edited.
#pragma once

#include "kit/Color.h"
#include "kit/Font.h"
#include "kit/TextAttributes.h"
#include "kit/View.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kit {

class TextField;

/// A stretch of a string, in bytes; it always starts and ends between characters.
struct Range {
    std::size_t location = 0;
    std::size_t length = 0;
    std::size_t end() const { return location + length; }
    bool operator==(const Range&) const = default;
};

/// Edits one line of text: a caret, a selection, typing, deleting, moving, and the editing
/// commands of the original platform by their selector names ("deleteBackward:",
/// "insertNewline:", "cancelOperation:", ...). As a window's field editor it sits over the
/// text field being edited (its client), is the window's first responder while it does, and
/// hands every command to the client first; the client commits or drops the text.
class TextView : public View {
    KIT_MAKEABLE
public:
    /// Typing stops adding text at this many bytes.
    static constexpr std::size_t kMaxLength = 65536;

    static RefPtr<TextView> create(const Rect& frame) { return make<TextView>(frame); }

    const std::string& string() const { return m_string; }
    /// Replaces the text (invalid UTF-8 becomes U+FFFD) and puts the caret at its end.
    void setString(std::string_view text);
    Range selectedRange() const { return m_selection; }
    /// Selects a range, clamped to the text and widened to whole characters.
    void setSelectedRange(Range range);
    void selectAll();

    bool isEditable() const { return m_editable; }
    void setEditable(bool editable) { m_editable = editable; }
    bool isSelectable() const { return m_selectable; }
    void setSelectable(bool selectable) { m_selectable = selectable; }
    bool isFieldEditor() const { return m_fieldEditor; }
    void setFieldEditor(bool fieldEditor) { m_fieldEditor = fieldEditor; }

    Font& font() const;
    void setFont(RefPtr<Font> font);
    Color textColor() const { return m_textColor; }
    void setTextColor(const Color& color) { m_textColor = color; }
    TextAlignment alignment() const { return m_alignment; }
    void setAlignment(TextAlignment alignment) { m_alignment = alignment; }

    /// The text field being edited, or null.
    TextField* client() const { return m_client; }
    /// Takes over editing for `client`: its text, font and colours, placed over its text area,
    /// with all the text selected. (The text field calls this.)
    void beginEditingFor(TextField* client);
    /// Stops editing without asking anyone: leaves the client and the view tree.
    void endEditing();

    /// Types text over the selection: line breaks and other control characters are dropped,
    /// and nothing changes when the view is not editable or the client refuses the first change.
    void insertText(std::string_view text);
    /// Runs an editing command: the client (and so the field's delegate) may take it first.
    void doCommandBySelector(const std::string& selector);

    /// Where the caret is drawn, in this view's coordinates.
    Rect caretRect() const;

    bool acceptsFirstResponder() const override { return m_selectable || m_editable; }
    /// A field editor resigns only when its client agrees to end editing; it then commits.
    bool resignFirstResponder() override;
    void keyDown(const Event& event) override;
    void mouseDown(const Event& event) override;
    void mouseDragged(const Event& event) override;
    void mouseUp(const Event&) override {}
    void drawRect(const Rect& dirty) override;

protected:
    explicit TextView(const Rect& frame) : View(frame) {}

private:
    bool performCommand(const std::string& selector);
    /// The command a key event stands for, or "" for text.
    static std::string commandForKey(const Event& event);
    bool mayChange();
    void replaceSelection(std::string_view text);
    void moveCaret(std::size_t offset, bool extend);
    void selectWordAt(std::size_t offset);
    /// The left end of the text in view coordinates, after alignment and scrolling.
    float textOrigin() const;
    float xOfOffset(std::size_t offset) const;
    std::size_t offsetAtX(float x) const;
    float baselineY() const;
    void scrollToCaret();
    void changed();
    /// Sum of the advances of the characters in [from, to).
    double widthOfRange(std::size_t from, std::size_t to) const;
    /// Width of the text before `offset`, walked from the last offset asked for, so that typing
    /// and moving the caret cost what they change, not the length of the text.
    double widthBefore(std::size_t offset) const;
    void remeasure();

    std::string m_string;
    Range m_selection;
    std::size_t m_anchor = 0;
    float m_scroll = 0;
    double m_textWidth = 0;
    mutable std::size_t m_measuredOffset = 0;
    mutable double m_measuredWidth = 0;
    bool m_editable = true;
    bool m_selectable = true;
    bool m_fieldEditor = false;
    bool m_began = false;
    TextField* m_client = nullptr;
    mutable RefPtr<Font> m_font;
    Color m_textColor = Color::controlTextColor();
    TextAlignment m_alignment = TextAlignmentNatural;
};

} // namespace kit
