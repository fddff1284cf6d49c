// SelectionNumbers: the tool and selection-mode numbers that records, tags and panels carry.
#pragma once

/// The five tools by the number they are recorded, tagged and switched under.
enum SelectionTool : int {
    kToolRectangle = 0,
    kToolEllipse = 1,
    kToolPolygon = 2,
    kToolBrush = 3,
    kToolErase = 4,
};
inline constexpr int kSelectionToolCount = 5;

/// How a new selection meets the one there is, by the number a panel stores and the tool bar
/// carries from panel to panel. The panels build buttons for New and Add only.
enum SelectionMode : int {
    kModeNew = 0,
    kModeAdd = 1,
    kModeSubtract = 2,
    kModeIntersect = 3,
};
