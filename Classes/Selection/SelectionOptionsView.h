// SelectionOptionsView: the option bar along the top of the overlay.
#pragma once

#include "kit/View.h"

class SelectionMainView;

class SelectionOptionsView final : public kit::View {
    KIT_MAKEABLE
public:
    void initData() override;

    /// The overlay whose tools the bar switches; kept, not owned.
    void setView(SelectionMainView* view) { m_view = view; }
    SelectionMainView* mainView() const { return m_view; }
    /// The tool number of the shown tool.
    int selectionTool() const { return m_nTool; }
    /// Stores the new and the previous tool number.
    void setSelectionToolFromTool(int tool, int oldTool);

private:
    explicit SelectionOptionsView(const kit::Rect& frame) : kit::View(frame) {}

    SelectionMainView* m_view = nullptr;
    int m_nTool = 0;
    int m_nOldTool = 0;
};
