// PolygonSelectionOptions: the option panel of the polygon lasso tool.
#pragma once

#include "Classes/Selection/SelectionPanel.h"
#include "kit/TextField.h"

/// Selection mode and feather radius of the lasso: the marquee panel's mode buttons and
/// feather group, with the same looks and reactions, and nothing else.
class PolygonSelectionOptions final : public SelectionPanel, public kit::TextFieldDelegate {
    KIT_MAKEABLE
public:
    void initData() override;
    void initView() override;

    float feather() const { return m_fFeather; }
    /// Clamped to 0 to 100.
    void setFeather(float feather);

    /// Actions of the slider buttons and the feather slider.
    void showSilder(kit::Object* sender);
    void hideSlider(kit::Object* sender);
    void changeSilderValue(kit::Object* sender);

    void changeSelectionFeatherUI();

    bool controlTextShouldBeginEditing(kit::Control*, kit::TextView*) override { return true; }
    /// Commits a typed feather; always lets editing end.
    bool controlTextShouldEndEditing(kit::Control* control, kit::TextView* fieldEditor) override;
    /// Return commits, Escape abandons the typing.
    bool controlTextViewDoCommandBySelector(
        kit::Control* control, kit::TextView* textView, const std::string& command) override;

    kit::TextField* featherText() const { return m_featherText; }

private:
    explicit PolygonSelectionOptions(const kit::Rect& frame) : SelectionPanel(frame, kModeIntersect) {}

    float m_fFeather = 0;
    kit::TextField* m_featherText = nullptr;
};
