// SelectionPanel: what the three option panels share: the selection mode and its buttons.
#pragma once

#include "Classes/Selection/SelectionNumbers.h"
#include "kit/Button.h"
#include "kit/View.h"

/// An option panel with the New and Add mode buttons at its left. The mode is stored as the
/// number it was given (see SelectionMode), unchecked; the button tagged 101 + mode shows pressed.
class SelectionPanel : public kit::View {
public:
    /// Tag of the New mode button; a mode button's tag is this plus its mode.
    static constexpr int kModeTagBase = 101;

    /// 0 New, 1 Add.
    int selectionMode() const { return m_mode; }
    /// Stored as given; the matching mode button shows pressed.
    void setSelectionMode(int mode);
    /// Action of the mode buttons: a button's mode unless it is the current one.
    void changeSelectionMode(kit::Object* sender);
    /// Every mode button plain, then the current mode's pressed.
    void setSelectionModeBtn();

protected:
    /// `lastMode` is the last mode whose button may show pressed.
    SelectionPanel(const kit::Rect& frame, SelectionMode lastMode) : kit::View(frame), m_lastMode(lastMode) {}

    /// The New and Add buttons at the panel's left, New showing its pressed image.
    void addModeButtons();

    int m_mode = kModeNew;
    kit::Button* m_btnDefaultMode = nullptr;
    kit::Button* m_btnAddMode = nullptr;
    /// No panel builds a Subtract or Intersect button: these stay empty.
    kit::Button* m_btnSubtractMode = nullptr;
    kit::Button* m_btnIntersectMode = nullptr;

private:
    SelectionMode m_lastMode;
};
