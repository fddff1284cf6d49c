// SelectionPanel: the mode buttons, their action and their pressed look.
#include "Classes/Selection/SelectionPanel.h"

#include "Classes/Selection/SelectionPanelControls.h"

#include <array>

using Controls = SelectionPanelControls;

namespace {

constexpr std::array<const char*, 4> kPlainModeImages
    = { "selection_default.png", "selection_add.png", "selection_subtract.png", "selection_intersect.png" };
constexpr std::array<const char*, 4> kPressedModeImages
    = { "selection_default2.png", "selection_add2.png", "selection_subtract2.png", "selection_intersect2.png" };

} // namespace

void SelectionPanel::addModeButtons()
{
    const float y = frame().height() * 0.5f - 12;
    m_btnDefaultMode = Controls::addButton(*this, { 10, y, 30, 30 }, "selection_default2.png", true,
        Controls::localized("New Shape Area"), kModeTagBase + kModeNew, &SelectionPanel::changeSelectionMode);
    m_btnAddMode = Controls::addButton(*this, { 43, y, 30, 30 }, "selection_add.png", true,
        Controls::localized("Add to Shape Area"), kModeTagBase + kModeAdd, &SelectionPanel::changeSelectionMode);
}

void SelectionPanel::setSelectionMode(int mode)
{
    m_mode = mode;
    setSelectionModeBtn();
}

void SelectionPanel::changeSelectionMode(kit::Object* sender)
{
    int mode = kModeNew;
    if (Controls::numberOfButton(sender, kModeTagBase, mode) && mode != m_mode)
        setSelectionMode(mode);
}

void SelectionPanel::setSelectionModeBtn()
{
    const std::array<kit::Button*, 4> buttons
        = { m_btnDefaultMode, m_btnAddMode, m_btnSubtractMode, m_btnIntersectMode };
    for (std::size_t n = 0; n < buttons.size(); ++n) {
        if (buttons[n])
            Controls::setBothImages(*buttons[n], kPlainModeImages[n]);
    }
    auto* pressed = dynamic_cast<kit::Button*>(Controls::viewWithWideTag(*this, (long long)m_mode + kModeTagBase));
    if (!pressed || pressed->tag() < kModeTagBase || pressed->tag() > kModeTagBase + m_lastMode)
        return;
    Controls::setBothImages(*pressed, kPressedModeImages[std::size_t(pressed->tag() - kModeTagBase)]);
}
