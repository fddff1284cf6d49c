// The polygon lasso driven with mouse and key events as a person would use it: vertices, the
// rubber band, Delete, the right click, the closing double click and its commit and record.
#include "Classes/Selection/GraphicsToBuffer.h"
#include "Classes/Selection/PolygonSelectionOptions.h"
#include "Classes/Selection/PolygonSelectionView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "engine/Document.h"
#include "kit/Application.h"
#include "kit/NotificationCenter.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"
#include "tests/selection/HostContentStandIn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using kit::Event;
using kit::EventType;
using kit::Point;
using kit::Rect;

// The whole 1000 x 800 canvas at zoom 1 in a 1200 x 900 overlay: layer pixel (x, y) is window
// point (x + 100, 850 - y).
Point windowPoint(Point layer) { return { layer.x + 100, 850 - layer.y }; }

class LassoTest : public testing::Test {
protected:
    void SetUp() override
    {
        window->setContentView(host.get());
        host->addSubview(overlay.get());
        kit::Application::shared().setMainWindow(window.get());
        overlay->setQMContext(document.context());
        kit::RunLoop::main().advance(0.1); // the bar's first switch, to the rectangle, is done
        overlay->setSelectionViewWithSelectionOptionView(2, panel.get());
    }
    void TearDown() override
    {
        kit::Application::shared().setMainWindow(nullptr);
        kit::RunLoop::main().advance(10);
    }
    PolygonSelectionView& lasso() { return *static_cast<PolygonSelectionView*>(overlay->toolView(2)); }
    void send(EventType type, Point layer, int clicks = 1)
    {
        window->sendEvent(Event::mouse(type, windowPoint(layer), clicks));
    }
    void move(Point layer) { send(EventType::MouseMoved, layer, 0); }
    void click(Point layer)
    {
        send(EventType::LeftMouseDown, layer);
        send(EventType::LeftMouseUp, layer);
    }
    void doubleClick(Point layer)
    {
        click(layer);
        send(EventType::LeftMouseDown, layer, 2);
        send(EventType::LeftMouseUp, layer, 2);
    }
    void rightClick(Point layer)
    {
        send(EventType::RightMouseDown, layer);
        send(EventType::RightMouseUp, layer);
    }
    /// A vertex where the pointer went, as a person places one.
    void vertex(Point layer)
    {
        move(layer);
        click(layer);
    }
    /// The pointer goes to the last vertex and double-clicks there; the commit has its time.
    void closeAt(Point layer, bool commit = true)
    {
        move(layer);
        doubleClick(layer);
        if (commit)
            kit::RunLoop::main().advance(0.05);
    }
    void key(const std::string& characters) { window->sendEvent(Event::key(EventType::KeyUp, characters)); }
    std::vector<Point> points() const
    {
        std::vector<Point> layer;
        for (Point p : const_cast<LassoTest*>(this)->lasso().points())
            layer.push_back({ p.x - 100, 850 - p.y });
        return layer;
    }
    int alphaAt(int x, int y) const { return document.maskAlpha()[std::size_t(y) * 1000 + std::size_t(x)]; }
    /// Selects the whole of (x, y, w, h) as a selection made before the lasso's.
    void preselect(int x, int y, int w, int h)
    {
        std::vector<unsigned char> block(std::size_t(w * h * 4), 255);
        document.importImageData(engine::Document::kSelectionMaskLayerId, block.data(), w, h, x, y);
    }

    engine::Document document;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<HostContent> host = kit::make<HostContent>(Rect { 0, 0, 1200, 900 });
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(Rect { 0, 0, 1200, 900 });
    kit::RefPtr<PolygonSelectionOptions> panel = kit::make<PolygonSelectionOptions>(Rect { 262, 0, 971, 53 });
};

TEST_F(LassoTest, ClicksAndADoubleClickCommitTheTriangleAndRecordItBeforeTheRefresh)
{
    panel->setFeather(2.5f);
    vertex({ 10, 20 });
    EXPECT_EQ(points(), (std::vector<Point> { { 10, 20 }, { 10, 20 } }));
    ASSERT_TRUE(lasso().trackingArea());
    EXPECT_EQ(lasso().trackingArea()->options(), 0x23u);
    EXPECT_EQ(lasso().trackingArea()->rect(), lasso().bounds());
    move({ 80, 40 });
    EXPECT_EQ(points(), (std::vector<Point> { { 10, 20 }, { 80, 40 } })); // the rubber band follows
    vertex({ 110, 20 });
    move({ 60, 90 });
    document.setJournalEnabled(true);
    doubleClick({ 60, 90 });
    // Closed as [A, B, C]: the rubber band and the double click's extra points are gone, and
    // nothing is committed until the closed outline has had its moment on screen.
    EXPECT_EQ(points(), (std::vector<Point> { { 10, 20 }, { 110, 20 }, { 60, 90 } }));
    EXPECT_FALSE(lasso().trackingArea());
    EXPECT_EQ(document.actionLog().size(), 0u);
    kit::RunLoop::main().advance(0.05);

    ASSERT_EQ(document.actionLog().size(), 1u);
    const SelectionEventRecord& r = document.actionLog().records()[0];
    EXPECT_EQ(r.kind, 90);
    EXPECT_EQ(r.param0, float(engine::Document::kSelectionMaskLayerId));
    EXPECT_EQ(r.param2, 2.0f);
    EXPECT_EQ(r.param3, 3.0f);
    EXPECT_EQ(r.param5, 2.5f);
    EXPECT_EQ(r.param8, 0.0f);
    EXPECT_EQ(r.text, "10,#,20,#,110,#,20,#,60,#,90,#,");
    EXPECT_EQ(r.name, "Selection");
    EXPECT_TRUE(points().empty());

    const auto& journal = document.journal();
    auto at = [&](const std::string& prefix) {
        return std::find_if(
            journal.begin(), journal.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
    };
    ASSERT_NE(at("IPD_RecordEvent"), journal.end());
    EXPECT_LT(at("IPD_LayerPaint_ImportImageData 2 "), at("IPD_RecordEvent"));
    EXPECT_LT(at("IPD_RecordEvent"), at("IPD_StartRefreshingActiveLayer"));
    EXPECT_EQ(journal.back(), "IPD_EnableSeletionLayerOperation 0");

    // The triangle points down, as drawn: its apex row is selected, not its mirror image.
    EXPECT_GT(alphaAt(60, 80), 200);
    EXPECT_GT(alphaAt(20, 24), 200);
    EXPECT_EQ(alphaAt(20, 86), 0);
}

TEST_F(LassoTest, ADoubleClickBeforeThreeVerticesCommitsNothingAndKeepsThem)
{
    doubleClick({ 40, 40 });
    kit::RunLoop::main().advance(0.05);
    EXPECT_EQ(points(), (std::vector<Point> { { 40, 40 } }));
    EXPECT_FALSE(lasso().trackingArea());
    rightClick({ 40, 40 });
    vertex({ 40, 40 });
    closeAt({ 90, 40 });
    EXPECT_EQ(points(), (std::vector<Point> { { 40, 40 }, { 90, 40 } }));
    EXPECT_EQ(document.actionLog().size(), 0u);
    EXPECT_EQ(document.cellCount(engine::Document::kSelectionMaskLayerId), 0u);
}

TEST_F(LassoTest, DeleteTakesBackTheNewestVertexAndWithTheFirstTheTrackingArea)
{
    vertex({ 10, 10 });
    vertex({ 50, 10 });
    move({ 30, 40 });
    key(""); // no characters: nothing to read
    key("a");
    EXPECT_EQ(points().size(), 3u);
    key("\x7f");
    EXPECT_EQ(points(), (std::vector<Point> { { 10, 10 }, { 30, 40 } }));
    // The host passes on releases that reach no tool view.
    const Event release = Event::key(EventType::KeyUp, "\x7f");
    kit::NotificationCenter::defaultCenter().post({ "keyUp", &release, {} });
    EXPECT_TRUE(points().empty());
    EXPECT_FALSE(lasso().trackingArea());
    EXPECT_TRUE(lasso().trackingAreas().empty());
    key("\x7f");
    vertex({ 10, 10 });
    EXPECT_EQ(lasso().trackingAreas().size(), 1u);
}

TEST_F(LassoTest, ARightClickAbandonsThePolygonAndWhileIdleIsNotPassedOn)
{
    rightClick({ 10, 10 });
    EXPECT_EQ(host->log, (std::vector<std::string> { "rightdown 110,840" }));
    vertex({ 10, 10 });
    vertex({ 50, 10 });
    rightClick({ 30, 40 });
    EXPECT_TRUE(points().empty());
    EXPECT_FALSE(lasso().trackingArea());
    EXPECT_EQ(host->log, (std::vector<std::string> { "rightdown 110,840", "rightdown 130,810" }));
}

TEST_F(LassoTest, NewModeClearsAtTheFirstPressOnlyAndAddModeNever)
{
    for (int mode : { 0, 1 }) {
        preselect(500, 500, 10, 10);
        panel->setSelectionMode(mode);
        document.setJournalEnabled(true);
        document.clearJournal();
        vertex({ 10, 10 });
        vertex({ 50, 10 });
        const auto deletes = std::count(document.journal().begin(), document.journal().end(), "IPD_Layer_Delete 2 0");
        EXPECT_EQ(deletes, mode == 0 ? 1 : 0);
        EXPECT_EQ(alphaAt(505, 505), mode == 0 ? 0 : 255);
        closeAt({ 30, 40 });
        EXPECT_GT(alphaAt(30, 20), 200);
    }
}

TEST_F(LassoTest, FractionsAreRasterisedButRecordedTruncated)
{
    const std::vector<Point> triangle = { { -0.5f, 20.25f }, { 110, 20.25f }, { 60.75f, 90.5f } };
    vertex(triangle[0]);
    vertex(triangle[1]);
    closeAt(triangle[2]);
    ASSERT_EQ(document.actionLog().size(), 1u);
    EXPECT_EQ(document.actionLog().records()[0].text, "0,#,20,#,110,#,20,#,60,#,90,#,");

    IMAGE_BUFFER buffer {};
    Point origin;
    const COLOR_STRUCT white { 255, 255, 255, 255 };
    ASSERT_EQ(CreateImageBufferFromPolygon(buffer, origin, triangle.data(), 3, white, true, white, 0), 0);
    // Column 0 lies left of the canvas.
    const std::vector<std::uint8_t> mask = document.maskAlpha();
    for (int row = 0; row < buffer.nHeight; ++row)
        for (int column = 1; column < buffer.nWidth; ++column)
            ASSERT_EQ(mask[std::size_t(int(origin.y) + row) * 1000 + std::size_t(int(origin.x) + column)],
                buffer.pData[(row * buffer.nWidth + column) * 4 + 3])
                << column << "," << row;
    DestroyImageBuffer(buffer);
}

TEST_F(LassoTest, WithoutTheOverlayTheCommitWaitsAndKeepsThePoints)
{
    vertex({ 10, 10 });
    vertex({ 50, 10 });
    closeAt({ 30, 40 }, false);
    lasso().removeFromSuperview();
    kit::RunLoop::main().advance(0.05);
    EXPECT_EQ(document.actionLog().size(), 0u);
    EXPECT_EQ(points().size(), 3u);
}

} // namespace
