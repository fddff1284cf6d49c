// PolygonSelectionOptions: the option panel of the polygon lasso tool.
#pragma once

#include "kit/Button.h"
#include "kit/TextField.h"
#include "kit/View.h"

/// Selection mode and feather radius of the lasso: the marquee panel's mode buttons and
/// feather group, with the same looks and reactions, and nothing else.
class PolygonSelectionOptions final : public kit::View, public kit::TextFieldDelegate {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    float feather() const { return m_fFeather; }
    /// Clamped to 0 to 100.
    void setFeather(float feather);
    /// 0 New, 1 Add.
    int selectionMode() const { return m_mode; }
    /// Stored as given; the matching mode button shows pressed.
    void setSelectionMode(int mode);

    /// Actions of the mode buttons, the slider buttons and the feather slider.
    void changeSelectionMode(kit::Object* sender);
    void showSilder(kit::Object* sender);
    void hideSlider(kit::Object* sender);
    void changeSilderValue(kit::Object* sender);

    void setSelectionModeBtn();
    void changeSelectionFeatherUI();

    bool controlTextShouldBeginEditing(kit::Control*, kit::TextView*) override { return true; }
    /// Commits a typed feather; always lets editing end.
    bool controlTextShouldEndEditing(kit::Control* control, kit::TextView* fieldEditor) override;
    /// Return commits, Escape abandons the typing.
    bool controlTextViewDoCommandBySelector(kit::Control* control, kit::TextView* textView,
                                            const std::string& command) override;

    kit::TextField* featherText() const { return m_featherText; }

private:
    explicit PolygonSelectionOptions(const kit::Rect& frame) : kit::View(frame) {}

    float m_fFeather = 0;
    kit::TextField* m_featherText = nullptr;
    int m_mode = 0;
    kit::Button* m_btnDefaultMode = nullptr;
    kit::Button* m_btnAddMode = nullptr;
    kit::Button* m_btnSubtractMode = nullptr;
    kit::Button* m_btnIntersectMode = nullptr;
};
