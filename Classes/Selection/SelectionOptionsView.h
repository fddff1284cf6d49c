// SelectionOptionsView: the option bar along the top of the overlay.
#pragma once

#include "kit/Button.h"
#include "kit/View.h"

class SelectionMainView;
class RectangleSelectionOptions;
class PolygonSelectionOptions;
class BrushSelectionOptions;

/// Five tool buttons and, right of them, the options panel of the active tool: the marquee
/// panel for tools 0 and 1, the lasso panel for 2, the brush panel for 3 and 4. The only place
/// where the active tool changes; each change carries the selection mode over to the incoming
/// panel and tells the overlay which tool to show with which panel. Marquee and lasso panels
/// are made afresh at every switch; the brush panel lives as long as the bar.
class SelectionOptionsView final : public kit::View {
    KIT_MAKEABLE
public:
    /// A tool button's tag is its tool number plus this.
    static constexpr int kToolTagBase = 51;

    void initData() override;
    /// Builds the bar's controls and the marquee and brush panels, and schedules the first
    /// panel switch 0.05 seconds later (by when the owner has called setView).
    void initView() override;

    /// The overlay whose tools the bar switches; kept, not owned.
    void setView(SelectionMainView* view) { m_view = view; }
    SelectionMainView* mainView() const { return m_view; }
    /// The tool number of the shown tool.
    int selectionTool() const { return m_nTool; }
    /// Makes `tool` the active tool, `oldTool` the one whose panel gives its mode, and shows it.
    void setSelectionToolFromTool(int tool, int oldTool);

    /// Action of the five tool buttons; the active tool's button does nothing.
    void changeSelectionTool(kit::Object* sender);
    /// Shows the active tool's button pressed and the others plain.
    void setSelectionToolBtn();
    /// Puts the active tool's panel into the bar, with the mode of the previous tool's panel,
    /// and hands both to the overlay; a tool number outside 0 to 4 leaves the bar without panel.
    void setOptionType();

    /// A press on the bar or a panel's background stops here.
    void mouseDown(const kit::Event&) override {}

    /// The panels that exist at the moment (attached or, for the brush panel, not).
    RectangleSelectionOptions* rectangleSelectionOptions() const { return m_rectangleSelectionOptions.get(); }
    PolygonSelectionOptions* polygonSelectionOptions() const { return m_polygonSelectionOptions.get(); }
    BrushSelectionOptions* brushSelectionOptions() const { return m_brushSeltionOptions.get(); }
    /// The tool button for a tool number 0 to 4, or null.
    kit::Button* toolButton(int tool) const;

private:
    explicit SelectionOptionsView(const kit::Rect& frame);
    ~SelectionOptionsView() override;

    kit::Button* addToolButton(float x, const char* image, const char* toolTip, int tool);
    /// Where a panel goes: right of the tool buttons, 229 points narrower than the bar.
    kit::Rect panelFrame() const;
    /// The selection mode of the panel that served `m_nOldTool`; 0 when there is none.
    int outgoingMode() const;
    /// Takes every panel out of the bar; the marquee and lasso panels are freed.
    void detachPanels();
    /// The panel for `m_nTool`, made or taken from the kept brush panel; null for other numbers.
    kit::View* attachPanel(int mode);

    int m_nTool = 0;
    int m_nOldTool = 0;
    kit::Button* m_btnRectangle = nullptr;
    kit::Button* m_btnEllipse = nullptr;
    kit::Button* m_btnPolygon = nullptr;
    kit::Button* m_btnBrush = nullptr;
    kit::Button* m_btnErase = nullptr;
    SelectionMainView* m_view = nullptr;
    kit::RefPtr<RectangleSelectionOptions> m_rectangleSelectionOptions;
    kit::RefPtr<PolygonSelectionOptions> m_polygonSelectionOptions;
    kit::RefPtr<BrushSelectionOptions> m_brushSeltionOptions;
};
