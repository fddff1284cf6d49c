// SelectionOptionsView: the bar's tool state.
#include "Classes/Selection/SelectionOptionsView.h"

void SelectionOptionsView::initData()
{
    m_nTool = 0;
    m_nOldTool = 0;
    m_view = nullptr;
}

void SelectionOptionsView::setSelectionToolFromTool(int tool, int oldTool)
{
    m_nTool = tool;
    m_nOldTool = oldTool;
}
