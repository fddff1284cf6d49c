// The brush and erase selection tools driven with mouse events, and their cursors.
#include "Classes/Selection/BrushSelectionOptions.h"
#include "Classes/Selection/BrushSelectionView.h"
#include "Classes/Selection/EraseSelectionView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionOptionsView.h"
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "kit/Application.h"
#include "kit/Cursor.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using kit::Event;
using kit::EventType;
using kit::Rect;
using Lines = std::vector<std::string>;

constexpr int kBrush = 3;
constexpr int kErase = 4;

class BrushToolTest : public testing::Test {
protected:
    void SetUp() override
    {
        document.setBrushDirectory(SELECTION_TEST_BRUSH_DIR);
        window->contentView()->addSubview(overlay.get());
        kit::Application::shared().setMainWindow(window.get());
        overlay->setQMContext(document.context());
        kit::RunLoop::main().advance(0.05); // the bar's first switch
        show(kBrush);
    }
    void TearDown() override
    {
        kit::Application::shared().setMainWindow(nullptr);
        kit::RunLoop::main().advance(10);
    }
    void show(int tool)
    {
        overlay->optionView()->setSelectionToolFromTool(tool, overlay->optionView()->selectionTool());
    }
    BrushSelectionOptions& panel() { return *overlay->optionView()->brushSelectionOptions(); }
    BrushSelectionView& tool(int n) { return *static_cast<BrushSelectionView*>(overlay->toolView(n)); }
    void send(EventType type, float x, float y) { window->sendEvent(Event::mouse(type, { x, y })); }
    void stroke(float x0, float y0, float x1, float y1)
    {
        send(EventType::LeftMouseDown, x0, y0);
        send(EventType::LeftMouseDragged, (x0 + x1) / 2, (y0 + y1) / 2);
        send(EventType::LeftMouseUp, x1, y1);
    }
    /// What the tools asked of the engine, without the geometry reads of every conversion.
    Lines calls()
    {
        Lines out;
        for (const std::string& line : document.journal())
            if (line.rfind("IPD_GetPos", 0) != 0 && line.rfind("IPD_GetCanvasSize", 0) != 0)
                out.push_back(line);
        document.clearJournal();
        return out;
    }
    int maskAt(int x, int y) const { return document.maskAlpha()[std::size_t(y) * 1000 + std::size_t(x)]; }

    engine::Document document;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(Rect { 0, 0, 1200, 900 });
};

// With the whole 1000 x 800 canvas at zoom 1 and a 900-point-high overlay, window point
// (x, y) is canvas point (x - 100, 850 - y).
TEST_F(BrushToolTest, APressAndReleaseIsOneStrokeOfTwoPointsWithAFreshBrush)
{
    panel().setSelectionMode(1);
    document.setJournalEnabled(true);
    send(EventType::LeftMouseDown, 300, 400);
    send(EventType::LeftMouseUp, 300, 400);
    EXPECT_EQ(calls(),
        (Lines { "IPD_CreateBrushFromPackage pen_1.bru", "IPD_GetBrushParam brush1 3",
            "IPD_EnableSeletionLayerOperation 1", "IPD_BeginOneStroke", "IPD_StrokeTo brush1 ffffff 200,450 1 5.1",
            "IPD_StrokeTo brush1 ffffff 200,450 1 -1", "IPD_EndOneStroke", "IPD_EnableSeletionLayerOperation 0",
            "IPD_DestroyBursh brush1" }));
    EXPECT_EQ(tool(kBrush).brush(), nullptr);
    EXPECT_EQ(document.brushCount(), 0u);
    EXPECT_GT(maskAt(200, 450), 200);
    EXPECT_FALSE(document.selectionRouting());
}

TEST_F(BrushToolTest, DragsSendTheSecondsSinceThePreviousPoint)
{
    document.setJournalEnabled(true);
    send(EventType::LeftMouseDown, 300, 400);
    const double pressed = tool(kBrush).previousPointTime();
    send(EventType::LeftMouseDragged, 350, 400);
    send(EventType::LeftMouseDragged, 400, 400);
    EXPECT_GE(tool(kBrush).previousPointTime(), pressed);
    EXPECT_TRUE(document.selectionRouting()); // on from the press to the release
    send(EventType::LeftMouseUp, 400, 400);
    Lines strokes;
    for (const std::string& line : calls())
        if (line.rfind("IPD_StrokeTo", 0) == 0)
            strokes.push_back(line.substr(line.rfind(' ') + 1));
    ASSERT_EQ(strokes.size(), 4u);
    EXPECT_EQ(strokes.front(), "5.1");
    EXPECT_EQ(strokes.back(), "-1");
    for (int i : { 1, 2 }) {
        const double seconds = std::stod(strokes[std::size_t(i)]);
        EXPECT_GE(seconds, 0.0);
        EXPECT_LT(seconds, 5.0);
    }
    // A clean band from canvas x 200 to 300 along row 450.
    EXPECT_GT(maskAt(250, 450), 200);
    EXPECT_EQ(maskAt(250, 500), 0);
}

struct RadiusCase {
    float radius;
    bool set;
};

class BrushRadius : public BrushToolTest, public testing::WithParamInterface<RadiusCase> {};

TEST_P(BrushRadius, ParameterThreeIsSetOnlyWhenItDiffers)
{
    panel().setRadius(GetParam().radius);
    document.setJournalEnabled(true);
    send(EventType::LeftMouseDown, 300, 400);
    const Lines made = calls();
    const bool set = std::any_of(
        made.begin(), made.end(), [](const std::string& l) { return l.rfind("IPD_SetBrushParam brush1 3 ", 0) == 0; });
    EXPECT_EQ(set, GetParam().set);
    send(EventType::LeftMouseUp, 300, 400);
}

// The pen ships with parameter 3 at 2.5, the panel's default; a NaN never compares equal.
INSTANTIATE_TEST_SUITE_P(Values, BrushRadius,
    testing::Values(RadiusCase { 2.5f, false }, RadiusCase { 3.0f, true },
        RadiusCase { std::numeric_limits<float>::quiet_NaN(), true }));

TEST_F(BrushToolTest, NewModeClearsAtEveryPressAndAddAccumulates)
{
    for (int tool : { kBrush, kErase }) {
        SCOPED_TRACE(tool);
        IPD_Layer_Delete(document.context(), engine::Document::kSelectionMaskLayerId, 0);
        show(kBrush);
        panel().setSelectionMode(1);
        stroke(200, 600, 300, 600); // canvas row 250
        stroke(200, 300, 300, 300); // canvas row 550
        EXPECT_GT(maskAt(150, 250), 200);
        EXPECT_GT(maskAt(150, 550), 200);
        show(tool);
        panel().setSelectionMode(0);
        stroke(600, 600, 700, 600);
        EXPECT_EQ(maskAt(150, 250), 0);
        EXPECT_EQ(maskAt(150, 550), 0);
        EXPECT_EQ(maskAt(550, 250), tool == kBrush ? 255 : 0); // the eraser starts from nothing
    }
}

TEST_F(BrushToolTest, TheEraserTakesABandOutOfAnAddSelection)
{
    show(kBrush);
    panel().setSelectionMode(1);
    stroke(200, 600, 400, 600);
    show(kErase);
    document.setJournalEnabled(true);
    stroke(300, 700, 300, 500);
    const Lines made = calls();
    EXPECT_EQ(made.front(), "IPD_CreateBrushFromPackage eraser_1.bru");
    EXPECT_EQ(std::count_if(made.begin(), made.end(),
                  [](const std::string& l) { return l.rfind("IPD_CreateBrushFromPackage", 0) == 0; }),
        1);
    EXPECT_GT(maskAt(120, 250), 200);
    EXPECT_EQ(maskAt(200, 250), 0);
    EXPECT_GT(maskAt(280, 250), 200);
}

TEST_F(BrushToolTest, APressOverAHostControl)
{
    window->contentView()->addTrackingArea(
        kit::TrackingArea::create({ 10, 10, 40, 40 }, 0x23, window->contentView()).get());
    for (int n : { kBrush, kErase }) {
        show(n);
        document.setJournalEnabled(true);
        send(EventType::LeftMouseDown, 20, 20);
        send(EventType::LeftMouseUp, 20, 20);
        const bool made = n == kErase;
        EXPECT_EQ(calls(), made ? Lines { "IPD_CreateBrushFromPackage eraser_1.bru" } : Lines {});
        EXPECT_EQ(tool(n).brush() != nullptr, made);
    }
    // The eraser's brush serves its next stroke and goes with that stroke's release.
    void* kept = tool(kErase).brush();
    send(EventType::LeftMouseDown, 300, 400);
    EXPECT_EQ(tool(kErase).brush(), kept);
    EXPECT_EQ(document.brushCount(), 1u);
    send(EventType::LeftMouseUp, 300, 400);
    EXPECT_EQ(document.brushCount(), 0u);
}

TEST_F(BrushToolTest, RadiusAndModeAreSharedByBothTools)
{
    panel().setRadius(1.5f);
    panel().setSelectionMode(1);
    show(kErase);
    EXPECT_EQ(tool(kErase).options(), tool(kBrush).options());
    document.setJournalEnabled(true);
    send(EventType::LeftMouseDown, 300, 400);
    const Lines made = calls();
    EXPECT_TRUE(std::find(made.begin(), made.end(), "IPD_SetBrushParam brush1 3 1.5") != made.end());
    EXPECT_TRUE(std::none_of(
        made.begin(), made.end(), [](const std::string& l) { return l.rfind("IPD_Layer_Delete", 0) == 0; }));
    send(EventType::LeftMouseUp, 300, 400);
}

TEST_F(BrushToolTest, RecordsOfTheBrushToolsChangeNothing)
{
    stroke(200, 600, 300, 600);
    const std::vector<std::uint8_t> before = document.maskAlpha();
    document.setJournalEnabled(true);
    for (float number : { 3.0f, 4.0f }) {
        SelectionEventRecord record;
        record.param2 = number;
        record.param3 = 10;
        record.param5 = 100;
        record.param6 = 100;
        overlay->dealPlay(&record);
    }
    EXPECT_EQ(calls(), Lines {});
    EXPECT_EQ(document.maskAlpha(), before);
    EXPECT_TRUE(document.actionLog().records().empty());
}

struct FigureCase {
    int tool;
    float r;
    float d;
    float barEnd;
    float phase;
};

class BrushCursor : public BrushToolTest, public testing::WithParamInterface<FigureCase> {};

TEST_P(BrushCursor, FigureAtZoomOne)
{
    const FigureCase c = GetParam();
    const BrushCursorFigure f = tool(c.tool).cursorFigure(c.r, 1);
    EXPECT_NEAR(f.diameter(), c.d, 0.005);
    EXPECT_NEAR(f.side(), c.d + 2, 0.005);
    EXPECT_NEAR(f.barStart(), c.d / 5, 0.005);
    EXPECT_NEAR(f.barEnd(), c.barEnd, 0.005);
    EXPECT_NEAR(f.barPhase(), c.phase, 0.005);
    EXPECT_EQ(f.hotSpot(), (kit::Point { f.diameter() / 2, f.diameter() / 2 }));
    EXPECT_EQ(f.hasCross(), c.tool == kBrush);

    panel().setRadius(c.r);
    show(c.tool);
    overlay->setCursor(Event::mouse(EventType::MouseMoved, { 600, 450 }));
    kit::Cursor* shown = kit::Cursor::currentCursor();
    ASSERT_EQ(shown->name(), "image");
    EXPECT_EQ(shown->hotSpot(), f.hotSpot());
    EXPECT_EQ(shown->image()->pixelsWide(), int(std::ceil(f.side())));
}

INSTANTIATE_TEST_SUITE_P(Values, BrushCursor,
    testing::Values(FigureCase { kBrush, 2.5f, 23.77f, 19.02f, -2.13f }, FigureCase { kBrush, 0.0f, 2.0f, 1.6f, 0.4f },
        FigureCase { kErase, 2.5f, 37.88f, 30.30f, -2.36f }, FigureCase { kErase, 0.0f, 2.0f, 1.6f, 0.4f }));

TEST_F(BrushToolTest, TheBrushCursorHasACrossAndTheEraserCursorABar)
{
    auto darkIn = [](const kit::Image& image, int x0, int y0, int x1, int y1) {
        int dark = 0;
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x)
                dark += image.rgba()[(std::size_t(y) * std::size_t(image.pixelsWide()) + std::size_t(x)) * 4 + 3] > 100;
        return dark;
    };
    for (int n : { kBrush, kErase }) {
        const kit::RefPtr<kit::Cursor> cursor = tool(n).cursorFigure(2.5f, 1).makeCursor();
        ASSERT_TRUE(cursor);
        const kit::Image& image = *cursor->image();
        const int centre = image.pixelsWide() / 2;
        // The horizontal bar crosses the middle row; the vertical one only the brush's.
        EXPECT_GT(darkIn(image, centre - 6, centre - 1, centre + 6, centre + 1), 4) << n;
        EXPECT_EQ(darkIn(image, centre - 1, centre - 8, centre + 1, centre - 3) > 2, n == kBrush) << n;
    }
}

TEST_F(BrushToolTest, TheCursorFollowsTheZoomAndTheRadius)
{
    auto shownSide = [&] {
        overlay->setCursor(Event::mouse(EventType::MouseMoved, { 600, 450 }));
        return kit::Cursor::currentCursor()->image()->pixelsWide();
    };
    EXPECT_EQ(shownSide(), 26);
    kit::Cursor* first = kit::Cursor::currentCursor();
    EXPECT_EQ((shownSide(), kit::Cursor::currentCursor()), first); // nothing changed: the same cursor
    document.setViewSize({ 2000, 1600 });
    EXPECT_EQ(shownSide(), 50); // d = 47.54
    panel().setRadius(5); // d = 2 * 2 * 141.1: still an image
    EXPECT_EQ(shownSide(), 567);
    panel().setRadius(std::numeric_limits<float>::infinity());
    overlay->setCursor(Event::mouse(EventType::MouseMoved, { 600, 450 }));
    EXPECT_EQ(kit::Cursor::currentCursor()->name(), "crosshair");
}

} // namespace
