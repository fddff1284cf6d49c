// SelectionOptionsView: the bar's controls, tool buttons and the switching of option panels.
#include "Classes/Selection/SelectionOptionsView.h"

#include "Classes/Selection/BrushSelectionOptions.h"
#include "Classes/Selection/PolygonSelectionOptions.h"
#include "Classes/Selection/RectangleSelectionOptions.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionNumbers.h"
#include "Classes/Selection/SelectionPanelControls.h"
#include "entry/ResourceHelpers.h"
#include "kit/ImageView.h"
#include "kit/RunLoop.h"

#include <array>
#include <climits>

using Controls = SelectionPanelControls;

namespace {

constexpr std::array<const char*, kSelectionToolCount> kPlainToolImages
    = { "rectangle.png", "ellipse.png", "polygon.png", "brush.png", "eraser.png" };
constexpr std::array<const char*, kSelectionToolCount> kPressedToolImages
    = { "rectangle2.png", "ellipse2.png", "polygon2.png", "brush2.png", "eraser2.png" };
constexpr float kPanelX = 262;
// The panel reaches 33 points past the bar's right edge, where the bar clips it.
constexpr float kPanelWidthInset = 229;
constexpr double kFirstSwitchDelay = 0.05;

} // namespace

SelectionOptionsView::SelectionOptionsView(const kit::Rect& frame) : kit::View(frame) {}

SelectionOptionsView::~SelectionOptionsView()
{
    auto drop = [](auto& panel) {
        if (panel) {
            panel->removeFromSuperview();
            panel.clear();
        }
    };
    drop(m_rectangleSelectionOptions);
    drop(m_polygonSelectionOptions);
    drop(m_brushSeltionOptions);
}

void SelectionOptionsView::initData()
{
    m_nTool = kToolRectangle;
    m_nOldTool = kToolRectangle;
    m_view = nullptr;
    m_rectangleSelectionOptions.clear();
    m_polygonSelectionOptions.clear();
    m_brushSeltionOptions.clear();
}

kit::Rect SelectionOptionsView::panelFrame() const
{
    const kit::Size size = frame().size;
    return { kPanelX, 0, size.width - kPanelWidthInset, size.height };
}

kit::Button* SelectionOptionsView::addToolButton(float x, const char* image, const char* toolTip, int tool)
{
    const float y = frame().height() * 0.5f - 15 + 3;
    return Controls::addButton(*this, { x, y, 30, 30 }, image, true, Controls::localized(toolTip), kToolTagBase + tool,
        &SelectionOptionsView::changeSelectionTool);
}

void SelectionOptionsView::initView()
{
    const float w = frame().width();
    const float h = frame().height();
    auto background = kit::make<kit::ImageView>(kit::Rect { 0, 0, w, h });
    background->setImage(myLibraryImageNamed("property_bg.png"));
    background->setImageScaling(kit::ImageScaleAxesIndependently);
    background->setAutoresizingMask(kit::ViewWidthSizable);
    addSubview(background.get());

    kit::Image* iconImage = myLibraryImageNamed("tool_rectangle.png");
    const kit::Size iconSize = iconImage ? iconImage->size() : kit::Size {};
    auto icon = kit::make<kit::ImageView>(kit::Rect {
        30 - iconSize.width * 0.5f, h * 0.5f - iconSize.height * 0.5f + 3, iconSize.width, iconSize.height });
    icon->setImage(iconImage);
    addSubview(icon.get());

    Controls::addSeparator(*this, 60, 10, h - 15);
    m_btnRectangle = addToolButton(80, "rectangle2.png", "Select a Rectangle Area", kToolRectangle);
    m_btnEllipse = addToolButton(113, "ellipse.png", "Select a Ellicapse Area", kToolEllipse);
    m_btnPolygon = addToolButton(146, "polygon.png", "Select a Polygon Area", kToolPolygon);
    m_btnBrush = addToolButton(179, "brush.png", "Draw a Selection Area", kToolBrush);
    m_btnErase = addToolButton(212, "eraser.png", "Erase a Selection Area", kToolErase);
    Controls::addSeparator(*this, 257, 12, h - 20);

    if (!m_rectangleSelectionOptions) {
        m_rectangleSelectionOptions = kit::make<RectangleSelectionOptions>(panelFrame());
        m_rectangleSelectionOptions->setAutoresizingMask(kit::ViewWidthSizable);
    }
    addSubview(m_rectangleSelectionOptions.get());
    if (!m_brushSeltionOptions) {
        m_brushSeltionOptions = kit::make<BrushSelectionOptions>(panelFrame());
        m_brushSeltionOptions->setAutoresizingMask(kit::ViewWidthSizable);
    }
    kit::RunLoop::main().performAfterDelay(this, &SelectionOptionsView::setOptionType, kFirstSwitchDelay);
}

kit::Button* SelectionOptionsView::toolButton(int tool) const
{
    switch (tool) {
    case kToolRectangle: return m_btnRectangle;
    case kToolEllipse: return m_btnEllipse;
    case kToolPolygon: return m_btnPolygon;
    case kToolBrush: return m_btnBrush;
    case kToolErase: return m_btnErase;
    }
    return nullptr;
}

void SelectionOptionsView::setSelectionToolFromTool(int tool, int oldTool)
{
    m_nTool = tool;
    m_nOldTool = oldTool;
    setSelectionToolBtn();
    setOptionType();
}

void SelectionOptionsView::changeSelectionTool(kit::Object* sender)
{
    int tool = kToolRectangle;
    if (Controls::numberOfButton(sender, kToolTagBase, tool) && tool != m_nTool)
        setSelectionToolFromTool(tool, m_nTool);
}

void SelectionOptionsView::setSelectionToolBtn()
{
    for (int tool = 0; tool < kSelectionToolCount; ++tool) {
        if (kit::Button* button = toolButton(tool))
            Controls::setBothImages(*button, kPlainToolImages[std::size_t(tool)]);
    }
    const long long tag = (long long)m_nTool + kToolTagBase;
    if (tag > INT_MAX)
        return;
    auto* pressed = dynamic_cast<kit::Button*>(viewWithTag(int(tag)));
    if (!pressed || pressed->tag() < kToolTagBase || pressed->tag() >= kToolTagBase + kSelectionToolCount)
        return;
    Controls::setBothImages(*pressed, kPressedToolImages[std::size_t(pressed->tag() - kToolTagBase)]);
}

int SelectionOptionsView::outgoingMode() const
{
    switch (m_nOldTool) {
    case kToolRectangle:
    case kToolEllipse: return m_rectangleSelectionOptions ? m_rectangleSelectionOptions->selectionMode() : kModeNew;
    case kToolPolygon: return m_polygonSelectionOptions ? m_polygonSelectionOptions->selectionMode() : kModeNew;
    case kToolBrush:
    case kToolErase: return m_brushSeltionOptions ? m_brushSeltionOptions->selectionMode() : kModeNew;
    }
    return kModeNew;
}

void SelectionOptionsView::detachPanels()
{
    if (m_rectangleSelectionOptions) {
        m_rectangleSelectionOptions->removeFromSuperview();
        m_rectangleSelectionOptions.clear();
    }
    if (m_brushSeltionOptions)
        m_brushSeltionOptions->removeFromSuperview();
    if (m_polygonSelectionOptions) {
        m_polygonSelectionOptions->removeFromSuperview();
        m_polygonSelectionOptions.clear();
    }
}

kit::View* SelectionOptionsView::attachPanel(int mode)
{
    auto attach = [&](auto& panel) -> kit::View* {
        using Panel = typename std::remove_reference_t<decltype(panel)>::element_type;
        if (!panel) {
            panel = kit::make<Panel>(panelFrame());
            panel->setAutoresizingMask(kit::ViewWidthSizable);
        }
        addSubview(panel.get());
        panel->setSelectionMode(mode);
        return panel.get();
    };
    switch (m_nTool) {
    case kToolRectangle:
    case kToolEllipse: return attach(m_rectangleSelectionOptions);
    case kToolPolygon: return attach(m_polygonSelectionOptions);
    case kToolBrush:
    case kToolErase: return attach(m_brushSeltionOptions);
    }
    return nullptr;
}

void SelectionOptionsView::setOptionType()
{
    const int mode = outgoingMode();
    detachPanels();
    kit::View* panel = attachPanel(mode);
    // The overlay is told only while the bar is still in it: the deferred first switch keeps
    // the bar alive, and may run after the overlay that owned the bar has gone.
    if (panel && m_view && superview() == m_view)
        m_view->setSelectionViewWithSelectionOptionView(m_nTool, panel);
}
