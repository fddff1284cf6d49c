// TextFieldDelegate: what a text field asks and tells the object that watches its editing.
#pragma once

#include "kit/Forward.h"

#include <string>

namespace kit {

class Control;
class TextView;

/// The delegate of a text field. Every answer has a default, so a delegate overrides only
/// what it cares about. `fieldEditor` and `textView` are the window's field editor, whose
/// `string()` is the text being typed.
class TextFieldDelegate {
public:
    /// Asked before the first change a person makes; false refuses the change.
    virtual bool controlTextShouldBeginEditing(Control*, TextView*) { return true; }
    /// Asked when editing is to end (Return, a click elsewhere, `endEditingFor`); false keeps
    /// the editing going. The field takes the editor's text after a true answer, so a delegate
    /// that sets the field's string here decides what the field shows.
    virtual bool controlTextShouldEndEditing(Control*, TextView*) { return true; }
    /// Every editing command ("insertNewline:" for Return, "cancelOperation:" for Escape,
    /// "deleteBackward:" for Backspace, ...); true when the delegate handled it, false to let
    /// the field and its editor do their default.
    virtual bool controlTextViewDoCommandBySelector(Control*, TextView*, const std::string&) { return false; }
    virtual void controlTextDidBeginEditing(Control*) {}
    virtual void controlTextDidChange(Control*) {}
    virtual void controlTextDidEndEditing(Control*) {}

protected:
    virtual ~TextFieldDelegate() = default;
};

} // namespace kit
