// The rectangle and ellipse marquee tools driven with mouse events as a person would use them.
#include "Classes/Selection/RectangleSelectionOptions.h"
#include "Classes/Selection/RectangleSelectionView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "engine/Document.h"
#include "kit/Application.h"
#include "kit/RunLoop.h"
#include "kit/TextField.h"
#include "kit/Window.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using kit::Event;
using kit::EventType;
using kit::Rect;

class MarqueeTest : public testing::Test {
protected:
    void SetUp() override
    {
        window->contentView()->addSubview(overlay.get());
        kit::Application::shared().setMainWindow(window.get());
        overlay->setQMContext(document.context());
        showTool(0);
    }
    void TearDown() override
    {
        kit::Application::shared().setMainWindow(nullptr);
        kit::RunLoop::main().advance(10);
    }
    void showTool(int tool) { overlay->setSelectionViewWithSelectionOptionView(tool, panel.get()); }
    RectangleSelectionView& tool(int n = 0) { return *static_cast<RectangleSelectionView*>(overlay->toolView(n)); }
    void send(EventType type, float x, float y) { window->sendEvent(Event::mouse(type, { x, y })); }
    void drag(float x0, float y0, float x1, float y1)
    {
        send(EventType::LeftMouseDown, x0, y0);
        send(EventType::LeftMouseDragged, x1, y1);
    }
    void zoom(float factor) { document.setViewSize({ int(1000 * factor), int(800 * factor) }); }

    engine::Document document;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(Rect { 0, 0, 1200, 900 });
    kit::RefPtr<RectangleSelectionOptions> panel = kit::make<RectangleSelectionOptions>(Rect { 262, 0, 971, 53 });
};

TEST_F(MarqueeTest, NormalDragAtZoomOne)
{
    drag(100, 100, 160, 140);
    EXPECT_TRUE(tool().intermediate());
    EXPECT_EQ(tool().selectionLogicRect(), Rect(100, 100, 60, 40));
    send(EventType::LeftMouseUp, 160, 140);
    EXPECT_EQ(tool().selectionWidth(), 60);
    EXPECT_EQ(tool().selectionHeight(), 40);
    EXPECT_EQ(tool().selectionLogicRect(), Rect()); // the outline goes with the release
    // The top-left corner (100, 140) is canvas (0, 710) with the whole canvas at zoom 1.
    EXPECT_EQ(tool().selectionCanvasViewRect(), Rect(0, 710, 60, 40));
    EXPECT_TRUE(tool().showSizeView()->isHidden());
}

TEST_F(MarqueeTest, NormalDragAtZoomTwoCountsCanvasPixels)
{
    zoom(2);
    drag(100, 100, 160, 140);
    EXPECT_EQ(tool().selectionWidth(), 30);
    EXPECT_EQ(tool().selectionHeight(), 20);
    EXPECT_EQ(tool().selectionLogicRect(), Rect(100, 100, 60, 40));
}

TEST_F(MarqueeTest, TheLayerOffsetIsTakenOff)
{
    document.setLayerOffset(engine::Document::kSelectionMaskLayerId, 5, 7);
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    EXPECT_EQ(tool().selectionCanvasViewRect(), Rect(-5, 703, 60, 40));
}

TEST_F(MarqueeTest, AReversedDragGivesTheSameBoxWithTheReadOutLeftOfTheCursor)
{
    drag(160, 140, 100, 100);
    EXPECT_EQ(tool().selectionLogicRect(), Rect(100, 100, 60, 40));
    const Rect readOut = tool().showSizeView()->frame();
    EXPECT_FALSE(tool().showSizeView()->isHidden());
    EXPECT_EQ(readOut.width(), 48 + 6 * 2 + 6 * 6);
    EXPECT_EQ(readOut.x(), 100 - 20 - readOut.width());
    EXPECT_EQ(readOut.y(), 120); // y stays 20 above the cursor
    send(EventType::LeftMouseUp, 100, 100);
    EXPECT_EQ(tool().selectionCanvasViewRect(), Rect(0, 710, 60, 40));
}

TEST_F(MarqueeTest, TheReadOutSizesItselfToTheDigits)
{
    drag(100, 100, 350, 199);
    EXPECT_EQ(tool().widthValueLabel()->stringValue(), "250 Pixels");
    EXPECT_EQ(tool().heightValueLabel()->stringValue(), "99 Pixels");
    EXPECT_EQ(tool().showSizeView()->frame(), Rect(370, 219, 102, 45));
    EXPECT_EQ(tool().widthValueLabel()->frame(), Rect(25, 22, 72, 17.5f));
    EXPECT_EQ(tool().heightValueLabel()->frame(), Rect(25, 5, 72, 17.5f));
}

TEST_F(MarqueeTest, FixedRatioShrinksTheBoxAlongOneSide)
{
    panel->setSelectionType(1);
    panel->setSelectionRatioHeightRatio(1, 2);
    drag(100, 100, 160, 140);
    EXPECT_EQ(tool().selectionWidth(), 20);
    EXPECT_EQ(tool().selectionHeight(), 40);
}

TEST_F(MarqueeTest, FixedSizeHangsFromTheCursorWithoutAReadOut)
{
    panel->setSelectionType(2);
    drag(50, 50, 300, 400);
    EXPECT_EQ(tool().selectionLogicRect(), Rect(300, 200, 200, 200));
    EXPECT_TRUE(tool().showSizeView()->isHidden());
}

TEST_F(MarqueeTest, FixedSizeShowsAtThePressInAddModeAndFromTheFirstDragInNew)
{
    panel->setSelectionType(2);
    panel->setSelectionMode(1);
    send(EventType::LeftMouseDown, 300, 400);
    EXPECT_EQ(tool().selectionLogicRect(), Rect(300, 200, 200, 200));
    send(EventType::LeftMouseUp, 300, 400);

    panel->setSelectionMode(0);
    send(EventType::LeftMouseDown, 300, 400);
    EXPECT_EQ(tool().selectionLogicRect(), Rect());
    send(EventType::LeftMouseDragged, 301, 400);
    EXPECT_EQ(tool().selectionLogicRect(), Rect(301, 200, 200, 200));
}

TEST_F(MarqueeTest, AReleaseCommitsAndRecordsTheBoxBitForBit)
{
    panel->setFeather(2.5f);
    document.setJournalEnabled(true);
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    const auto& journal = document.journal();
    ASSERT_GE(journal.size(), 7u);
    const std::vector<std::string> tail(journal.end() - 7, journal.end());
    EXPECT_EQ(tail[0], "IPD_EnableSeletionLayerOperation 1");
    EXPECT_EQ(tail[1], "IPD_GetSelectionMaskID");
    EXPECT_EQ(tail[2].rfind("IPD_LayerPaint_ImportImageData 2 ", 0), 0u);
    EXPECT_EQ(tail[3], "IPD_StartRefreshingActiveLayer");
    EXPECT_EQ(tail[4], "IPD_EnableSeletionLayerOperation 0");
    EXPECT_EQ(tail[5], "IPD_GetSelectionMaskID"); // the layer id goes into the record just before it is handed over
    EXPECT_EQ(tail[6], "IPD_RecordEvent 90");
    ASSERT_EQ(document.actionLog().size(), 1u);
    const SelectionEventRecord& r = document.actionLog().records()[0];
    SelectionEventRecord expected;
    expected.kind = 90;
    expected.param0 = 2;
    expected.param2 = 0;
    expected.param3 = 0;
    expected.param4 = 710;
    expected.param5 = 60;
    expected.param6 = 40;
    expected.param8 = 2.5f;
    constexpr std::size_t words = offsetof(SelectionEventRecord, param8) + sizeof(float);
    EXPECT_EQ(std::memcmp(&r, &expected, words), 0);
    EXPECT_EQ(r.text, "");
    EXPECT_EQ(r.name, "Selection");
    // The mask is there, as far as the feather reaches.
    EXPECT_GT(document.maskAlpha()[730 * 1000 + 30], 200);
}

TEST_F(MarqueeTest, TheEllipseRecordDiffersOnlyInItsToolNumber)
{
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    showTool(1);
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    ASSERT_EQ(document.actionLog().size(), 2u);
    SelectionEventRecord rectangle = document.actionLog().records()[0];
    const SelectionEventRecord& ellipse = document.actionLog().records()[1];
    EXPECT_EQ(ellipse.param2, 1.0f);
    rectangle.param2 = 1.0f;
    constexpr std::size_t words = offsetof(SelectionEventRecord, param8) + sizeof(float);
    EXPECT_EQ(std::memcmp(&rectangle, &ellipse, words), 0);
}

TEST_F(MarqueeTest, AZeroWidthReleaseRecordsNothingAndNewModeHasClearedTheSelection)
{
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    ASSERT_EQ(document.actionLog().size(), 1u);
    drag(300, 300, 300, 360);
    send(EventType::LeftMouseUp, 300, 360);
    EXPECT_EQ(document.actionLog().size(), 1u);
    EXPECT_EQ(document.maskAlpha()[730 * 1000 + 30], 0); // New mode emptied the layer at the press
}

TEST_F(MarqueeTest, AddModeKeepsTheSelectionAndUndoStepsBack)
{
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    panel->setSelectionMode(1);
    drag(400, 400, 450, 450);
    send(EventType::LeftMouseUp, 450, 450);
    const auto mask = document.maskAlpha();
    EXPECT_EQ(mask[730 * 1000 + 30], 255);
    EXPECT_EQ(mask[425 * 1000 + 325], 255);
    overlay->undo(nullptr);
    EXPECT_EQ(document.maskAlpha()[730 * 1000 + 30], 255);
    EXPECT_EQ(document.maskAlpha()[425 * 1000 + 325], 0);
}

TEST_F(MarqueeTest, AnEllipseAtFixedRatioOneToOneIsACircleAndAFlatOneRecordsNothing)
{
    showTool(1);
    panel->setSelectionType(1);
    panel->setSelectionRatioHeightRatio(1, 1);
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    ASSERT_EQ(document.actionLog().size(), 1u);
    const SelectionEventRecord& circle = document.actionLog().records()[0];
    EXPECT_EQ(circle.param5, 40.0f);
    EXPECT_EQ(circle.param6, 40.0f);
    // A circle is its own mirror across the diagonal through its centre.
    const auto mask = document.maskAlpha();
    const int cx = int(circle.param3 + 20), cy = int(circle.param4 + 20);
    EXPECT_EQ(mask[std::size_t(cy * 1000 + cx)], 255);
    for (int dy = -22; dy < 22; ++dy)
        for (int dx = -22; dx < 22; ++dx)
            ASSERT_EQ(mask[std::size_t((cy + dy) * 1000 + cx + dx)], mask[std::size_t((cy + dx) * 1000 + cx + dy)])
                << dx << "," << dy;

    panel->setSelectionType(0);
    drag(300, 300, 360, 300);
    send(EventType::LeftMouseUp, 360, 300);
    EXPECT_EQ(document.actionLog().size(), 1u);
}

TEST_F(MarqueeTest, UndoAndRedoReachTheHostWhateverToolIsShown)
{
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    for (int other : { 2, 3, 4 }) {
        showTool(other);
        overlay->undo(nullptr);
        EXPECT_EQ(document.maskAlpha()[730 * 1000 + 30], 0) << "tool " << other;
        overlay->redo(nullptr);
        EXPECT_EQ(document.maskAlpha()[730 * 1000 + 30], 255) << "tool " << other;
    }
}

TEST_F(MarqueeTest, WithoutAPanelEveryOptionReadsZero)
{
    overlay->setSelectionViewWithSelectionOptionView(0, nullptr);
    drag(100, 100, 160, 140);
    send(EventType::LeftMouseUp, 160, 140);
    ASSERT_EQ(document.actionLog().size(), 1u);
    EXPECT_EQ(document.actionLog().records()[0].param8, 0.0f);
}

} // namespace
