// Text fields: click to edit, typing through the field editor, the delegate's commands, and
// committing or dropping what was typed.
#include "kit/TextField.h"
#include "kit/TextView.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using kit::Control;
using kit::EventType;
using kit::RefPtr;
using kit::TextField;
using kit::TextView;

// A delegate that writes down every question and lets a test decide the answers.
class Delegate : public kit::TextFieldDelegate {
public:
    std::vector<std::string> log;
    std::vector<std::string> endTexts;
    bool allowEnd = true;
    bool allowBegin = true;
    std::function<bool(Control*, TextView*, const std::string&)> onCommand;
    std::function<void(TextView*)> onShouldEnd;

    bool controlTextShouldBeginEditing(Control*, TextView*) override
    {
        log.push_back("shouldBegin");
        return allowBegin;
    }
    bool controlTextShouldEndEditing(Control*, TextView* editor) override
    {
        log.push_back("shouldEnd");
        endTexts.push_back(editor->string());
        if (onShouldEnd)
            onShouldEnd(editor);
        return allowEnd;
    }
    bool controlTextViewDoCommandBySelector(Control* control, TextView* view, const std::string& selector) override
    {
        log.push_back(selector);
        return onCommand ? onCommand(control, view, selector) : false;
    }
    void controlTextDidEndEditing(Control*) override { log.push_back("didEnd"); }
};

// The panels' value field: borderless, clear, single line, character wrapping, no focus
// ring, " 0.0 Pixels" at (160, 16.5, 100, 20), with a delegate; and a view beside it that
// takes first responder, as the tool views do.
class ValueField : public ::testing::Test {
protected:
    void SetUp() override
    {
        window = kit::Window::create({ 0, 0, 400, 60 });
        field = TextField::create({ 160, 16.5f, 100, 20 });
        field->setStringValue(" 0.0 Pixels");
        field->setBordered(false);
        field->setDrawsBackground(false);
        field->setUsesSingleLineMode(true);
        field->setLineBreakMode(kit::LineBreakByCharWrapping);
        field->setFocusRingType(kit::FocusRingTypeNone);
        field->setDelegate(&delegate);
        field->setTag(200);
        other = kit::make<Taker>(kit::Rect { 0, 0, 100, 60 });
        window->contentView()->addSubview(other.get());
        window->contentView()->addSubview(field.get());
    }
    TextView* editor() const { return field->currentEditor(); }
    void clickField() { uitest::click(*window, { 200, 26 }); }

    // A view that takes first responder and counts its presses.
    class Taker : public kit::View {
        KIT_MAKEABLE
    public:
        int presses = 0;
        bool acceptsFirstResponder() const override { return true; }
        void mouseDown(const kit::Event&) override { ++presses; }

    private:
        using kit::View::View;
    };

    Delegate delegate;
    RefPtr<kit::Window> window;
    RefPtr<TextField> field;
    RefPtr<Taker> other;
};

TEST_F(ValueField, AClickStartsEditingWithEverythingSelected)
{
    EXPECT_EQ(editor(), nullptr);
    clickField();
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(window->firstResponder(), editor());
    EXPECT_EQ(editor()->superview(), field.get());
    EXPECT_EQ(editor()->string(), " 0.0 Pixels");
    EXPECT_EQ(editor()->selectedRange(), (kit::Range { 0, 11 }));
    EXPECT_EQ(editor(), window->fieldEditor(false, field.get()));
}

TEST_F(ValueField, TypingReplacesTheSelectionAndGoesOnlyToTheEditor)
{
    clickField();
    uitest::type(*window, "250");
    EXPECT_EQ(editor()->string(), "250");
    EXPECT_EQ(field->stringValue(), " 0.0 Pixels"); // not committed yet
    EXPECT_EQ(delegate.log.front(), "shouldBegin"); // asked once, at the first change
    EXPECT_EQ(std::count(delegate.log.begin(), delegate.log.end(), "shouldBegin"), 1);
}

TEST_F(ValueField, BackspaceAndDeleteRemoveWholeCharacters)
{
    clickField();
    uitest::type(*window, "ab");
    uitest::key(*window, "\xC3\xA9"); // é, two bytes
    uitest::key(*window, "\x7f", kit::KeyCodeDelete);
    EXPECT_EQ(editor()->string(), "ab");
    uitest::key(*window, "", kit::KeyCodeLeftArrow);
    uitest::key(*window, "", kit::KeyCodeLeftArrow);
    uitest::key(*window, "", kit::KeyCodeForwardDelete);
    EXPECT_EQ(editor()->string(), "b");
    uitest::key(*window, "\x7f", kit::KeyCodeDelete); // nothing before the caret
    EXPECT_EQ(editor()->string(), "b");
    EXPECT_EQ(std::count(delegate.log.begin(), delegate.log.end(), "deleteBackward:"), 2);
    EXPECT_EQ(std::count(delegate.log.begin(), delegate.log.end(), "deleteForward:"), 1);
}

TEST_F(ValueField, ControlCharactersAndBrokenTextAreNotTyped)
{
    clickField();
    uitest::key(*window, "a\x01\tb");
    uitest::key(*window, "\xff");
    uitest::key(*window, "\xEF\x9C\x80"); // a function-key character, not text
    EXPECT_EQ(editor()->string(), "ab\xEF\xBF\xBD");
}

TEST_F(ValueField, ReturnAndEscapeReachTheDelegateWithTheirSelectors)
{
    delegate.onCommand = [](Control*, TextView*, const std::string&) { return true; }; // takes all
    clickField();
    uitest::key(*window, "\r", kit::KeyCodeReturn);
    uitest::key(*window, "\x1b", kit::KeyCodeEscape);
    uitest::key(*window, "\r"); // the characters alone say it too
    EXPECT_EQ(delegate.log, (std::vector<std::string> { "insertNewline:", "cancelOperation:", "insertNewline:" }));
    EXPECT_NE(editor(), nullptr); // handled by the delegate, which did nothing: still editing
}

TEST_F(ValueField, ReturnCommitsThroughShouldEndEditingWhereTheDelegateRewritesTheValue)
{
    // What the panels do: Return ends editing for the text view; the commit reads the typed
    // text and writes the clamped value back in the panel's format.
    delegate.onCommand = [this](Control* control, TextView* view, const std::string& selector) {
        EXPECT_EQ(control, field.get());
        EXPECT_EQ(view, editor());
        if (selector != "insertNewline:")
            return false;
        view->window()->endEditingFor(view);
        return true;
    };
    delegate.onShouldEnd = [this](TextView*) { field->setStringValue(" 100.0 Pixels"); };
    clickField();
    uitest::type(*window, "250");
    uitest::key(*window, "\r", kit::KeyCodeReturn);
    EXPECT_EQ(delegate.endTexts, (std::vector<std::string> { "250" }));
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(field->stringValue(), " 100.0 Pixels");
    EXPECT_EQ(window->firstResponder(), window.get());
    EXPECT_EQ(delegate.log.back(), "didEnd");
}

TEST_F(ValueField, UnhandledReturnCommitsTheTypedTextAndSendsTheAction)
{
    int actions = 0;
    field->setAction([&](kit::Object*) { ++actions; });
    clickField();
    uitest::type(*window, "42");
    uitest::key(*window, "\r", kit::KeyCodeReturn);
    EXPECT_EQ(field->stringValue(), "42");
    EXPECT_EQ(field->intValue(), 42);
    EXPECT_EQ(actions, 1);
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(ValueField, EscapeWithAbortEditingDropsTheTypedText)
{
    delegate.onCommand = [this](Control* control, TextView*, const std::string& selector) {
        if (selector != "cancelOperation:")
            return false;
        EXPECT_TRUE(static_cast<TextField*>(control)->abortEditing());
        return true;
    };
    clickField();
    uitest::type(*window, "999");
    uitest::key(*window, "\x1b", kit::KeyCodeEscape);
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(field->stringValue(), " 0.0 Pixels");
    EXPECT_EQ(std::count(delegate.log.begin(), delegate.log.end(), "shouldEnd"), 0);
    EXPECT_EQ(window->firstResponder(), window.get());
    EXPECT_FALSE(field->abortEditing()); // nothing left to drop
}

TEST_F(ValueField, EndEditingForStaysWhileTheDelegateRefusesThenCommits)
{
    clickField();
    uitest::type(*window, "12.9");
    delegate.allowEnd = false;
    window->endEditingFor(field.get());
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(window->firstResponder(), editor());
    EXPECT_EQ(editor()->string(), "12.9");
    EXPECT_EQ(field->stringValue(), " 0.0 Pixels");
    uitest::type(*window, "5"); // still typing into it
    delegate.allowEnd = true;
    window->endEditingFor(editor());
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(field->stringValue(), "12.95");
    EXPECT_EQ(delegate.endTexts, (std::vector<std::string> { "12.9", "12.95" }));
}

TEST_F(ValueField, AClickOnAnotherResponderCommitsOrIsRefused)
{
    clickField();
    uitest::type(*window, "7");
    delegate.allowEnd = false;
    uitest::click(*window, { 50, 30 });
    EXPECT_NE(editor(), nullptr); // refused: still editing
    EXPECT_EQ(other->presses, 0); // and the press was dropped
    delegate.allowEnd = true;
    uitest::click(*window, { 50, 30 });
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(field->stringValue(), "7");
    EXPECT_EQ(other->presses, 1);
    EXPECT_EQ(window->firstResponder(), other.get());
}

TEST_F(ValueField, DisabledAndNonEditableFieldsRefuseEditing)
{
    field->setEnabled(false);
    clickField();
    EXPECT_EQ(editor(), nullptr);
    uitest::type(*window, "x");
    EXPECT_EQ(field->stringValue(), " 0.0 Pixels");

    field->setEnabled(true);
    field->setEditable(false); // selectable still: the editor comes, typing does not change it
    clickField();
    ASSERT_NE(editor(), nullptr);
    uitest::type(*window, "x");
    uitest::key(*window, "\x7f", kit::KeyCodeDelete);
    EXPECT_EQ(editor()->string(), " 0.0 Pixels");

    field->setSelectable(false); // a label now: editing stops, presses pass on
    EXPECT_EQ(editor(), nullptr);
    auto watcher = kit::make<Taker>(kit::Rect { 150, 10, 120, 40 });
    window->contentView()->addSubview(watcher.get());
    watcher->addSubview(field.get());
    field->setFrameOrigin({ 10, 6.5f });
    clickField();
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(watcher->presses, 1);
}

TEST_F(ValueField, DisablingOrRemovingTheFieldEndsEditingQuietly)
{
    clickField();
    uitest::type(*window, "3");
    field->setEnabled(false);
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(field->stringValue(), " 0.0 Pixels");

    field->setEnabled(true);
    clickField();
    uitest::type(*window, "4");
    const std::size_t asked = delegate.log.size();
    field->removeFromSuperview();
    EXPECT_EQ(delegate.log.size(), asked); // nobody is asked: the delegate may be going away
    EXPECT_EQ(window->fieldEditor(false, nullptr)->client(), nullptr);
    EXPECT_EQ(window->fieldEditor(false, nullptr)->superview(), nullptr);
    EXPECT_EQ(window->firstResponder(), window.get());
}

TEST_F(ValueField, ClickingASecondFieldCommitsTheFirst)
{
    auto second = TextField::create({ 280, 16.5f, 60, 20 });
    window->contentView()->addSubview(second.get());
    clickField();
    uitest::type(*window, "5");
    uitest::click(*window, { 300, 26 });
    EXPECT_EQ(field->stringValue(), "5");
    EXPECT_EQ(second->currentEditor(), window->fieldEditor(false, nullptr));
    EXPECT_EQ(field->currentEditor(), nullptr);
    uitest::type(*window, "6");
    EXPECT_EQ(second->currentEditor()->string(), "6");
}

TEST_F(ValueField, ASecondClickPlacesTheCaretAndADoubleClickSelectsAWord)
{
    clickField();
    uitest::click(*window, { 161, 26 }); // at the far left of the text
    EXPECT_EQ(editor()->selectedRange(), (kit::Range { 0, 0 }));
    uitest::type(*window, "9");
    EXPECT_EQ(editor()->string(), "9 0.0 Pixels");
    uitest::click(*window, { 250, 26 }, 2); // on "Pixels"
    EXPECT_EQ(editor()->selectedRange(), (kit::Range { 6, 6 }));
}

TEST_F(ValueField, SettingTheValueWhileEditingReplacesTheEditorsText)
{
    clickField();
    uitest::type(*window, "1");
    field->setStringValue(" 1.0 Pixels");
    EXPECT_EQ(editor()->string(), " 1.0 Pixels");
    window->endEditingFor(field.get());
    EXPECT_EQ(field->stringValue(), " 1.0 Pixels");
}

TEST_F(ValueField, TypingStopsAtTheLengthLimit)
{
    clickField();
    const std::string chunk(TextView::kMaxLength - 1, 'x');
    editor()->insertText(chunk);
    editor()->insertText("\xC3\xA9\xC3\xA9"); // only whole characters fit
    EXPECT_EQ(editor()->string().size(), TextView::kMaxLength - 1);
    editor()->insertText("y");
    EXPECT_EQ(editor()->string().size(), TextView::kMaxLength);
}

TEST_F(ValueField, EditingLongTextCostsWhatChangesAndKeepsTheCaretExact)
{
    clickField();
    const kit::Font& font = editor()->font();
    const std::uint64_t before = font.bytesMeasured();
    constexpr int kTyped = 20000;
    for (int i = 0; i < kTyped; ++i)
        editor()->insertText(std::string(1, char('0' + i % 10)));
    // Each key measures a few characters, not the whole text again.
    EXPECT_LT(font.bytesMeasured() - before, std::uint64_t { kTyped } * 8);

    // Edits in the middle, then the caret to the end: where a fresh editor puts it.
    editor()->setSelectedRange({ 100, 50 });
    editor()->insertText("\xC3\xA9W");
    uitest::key(*window, "\x7f", kit::KeyCodeDelete);
    uitest::key(*window, "", kit::KeyCodeForwardDelete);
    uitest::key(*window, "", kit::KeyCodeEnd);
    const kit::Rect edited = editor()->caretRect();
    editor()->setString(std::string(editor()->string()));
    EXPECT_EQ(editor()->string().size(), std::size_t { kTyped } - 50 + 2 - 1);
    EXPECT_NEAR(editor()->caretRect().minX(), edited.minX(), 0.01);
}

TEST_F(ValueField, TheEditorShowsACaretAndTheTextWithoutMovingIt)
{
    const auto dark = [](uitest::Pixel p) { return p.a > 200 && p.r < 90; };
    auto before = window->renderImage();
    const uitest::Box text = uitest::boxWhere(*before, dark);
    clickField();
    uitest::key(*window, "", kit::KeyCodeEnd); // caret at the end, no selection
    auto after = window->renderImage();
    const kit::Rect caret = editor()->caretRect();
    const kit::Point atCaret = editor()->convertPointToView({ caret.minX(), caret.minY() + 3 }, nullptr);
    EXPECT_TRUE(dark(uitest::pixelAtPoint(*after, int(atCaret.x), int(atCaret.y))));
    EXPECT_GE(atCaret.x, text.maxX - 1); // after the last letter
    EXPECT_LE(atCaret.x, text.maxX + 2);
    // Left of the caret nothing changed: the editor draws the text where the field did.
    for (int y = 10; y < 45; ++y)
        for (int x = 150; x < int(atCaret.x) - 1; ++x)
            ASSERT_EQ(uitest::pixelAtPoint(*before, x, y), uitest::pixelAtPoint(*after, x, y)) << x << "," << y;
}

TEST_F(ValueField, AFocusRingShowsUnlessTurnedOff)
{
    const auto blue = [](uitest::Pixel p) { return p.b > p.r + 100; };
    clickField();
    uitest::key(*window, "", kit::KeyCodeEnd); // no selection highlight
    EXPECT_TRUE(uitest::boxWhere(*window->renderImage(), blue).empty);
    field->setFocusRingType(kit::FocusRingTypeDefault);
    const uitest::Box ring = uitest::boxWhere(*window->renderImage(), blue);
    ASSERT_FALSE(ring.empty);
    EXPECT_EQ(ring.minX, 160);
    EXPECT_EQ(ring.maxX, 260);
}

TEST(TextFieldValues, NumbersReadTheLeadingNumberOfTheText)
{
    auto field = TextField::create({ 0, 0, 100, 20 });
    field->setStringValue(" 3.5x");
    EXPECT_EQ(field->floatValue(), 3.5f);
    EXPECT_EQ(field->intValue(), 3);
    field->setTitle("W:"); // the cell's title is the value
    EXPECT_EQ(field->stringValue(), "W:");
    EXPECT_EQ(field->floatValue(), 0);
    field->setIntValue(-12);
    EXPECT_EQ(field->stringValue(), "-12");
    field->setDoubleValue(0.25);
    EXPECT_EQ(field->stringValue(), "0.25");
}

} // namespace
