// The overlay as a workspace: tool switching, canvas geometry, unresponsive areas, cursors,
// tracking-area mirroring and the pass-through of presses to the host.
#include "Classes/Selection/InUnresponsiveArea.h"
#include "Classes/Selection/SelectionBaseView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionOptionsView.h"
#include "engine/Document.h"
#include "kit/Application.h"
#include "kit/Cursor.h"
#include "kit/NotificationCenter.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"
#include "tests/selection/HostContentStandIn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using kit::Event;
using kit::EventType;
using kit::Point;
using kit::Rect;

class WorkspaceTest : public testing::Test {
protected:
    void SetUp() override
    {
        window->setContentView(host.get());
        kit::Application::shared().setMainWindow(window.get());
        overlay->setQMContext(document.context());
        overlay->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
        host->addSubview(overlay.get());
    }
    void TearDown() override
    {
        kit::Application::shared().setMainWindow(nullptr);
        kit::RunLoop::main().advance(10);
    }
    /// The zoom 0.5 geometry: the whole 1000 x 800 canvas in a 500-point-wide view.
    void halfZoom()
    {
        document.setViewRect({ 0, 0, 1000, 800 });
        document.setViewSize({ 500, 400 });
    }
    void addHostArea(Rect r, unsigned options = 0x23)
    {
        host->addTrackingArea(kit::TrackingArea::create(r, options, host.get()).get());
    }
    void send(EventType type, float x, float y) { window->sendEvent(Event::mouse(type, { x, y })); }

    engine::Document document;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<HostContent> host = kit::make<HostContent>(Rect { 0, 0, 1200, 900 });
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(Rect { 0, 0, 1200, 900 });
};

TEST_F(WorkspaceTest, ConversionsFollowTheEngineGeometry)
{
    halfZoom();
    EXPECT_EQ(overlay->convertPointNSViewToCavansView({ 600, 450 }), (Point { 500, 400 }));
    EXPECT_EQ(overlay->convertPointNSViewToCavansView({ 700, 350 }), (Point { 700, 600 }));
    EXPECT_EQ(overlay->convertPointCanvasViewToNSView({ 700, 600 }), (Point { 700, 350 }));
    EXPECT_EQ(overlay->convertPointCanvasViewToNSView({ 500, 400 }), (Point { 600, 450 }));

    // A pan or zoom by the host shows at the very next conversion.
    document.setViewRect({ 100, 50, 1000, 800 });
    EXPECT_EQ(overlay->convertPointNSViewToCavansView({ 600, 450 }), (Point { 600, 450 }));
    document.setViewSize({ 2000, 1600 }); // zoom 2
    EXPECT_EQ(overlay->convertPointNSViewToCavansView({ 700, 350 }), (Point { 650, 500 }));
}

TEST_F(WorkspaceTest, TheCentreTruncatesTowardZero)
{
    document.setViewSize({ 7, 5 });
    document.setViewRect({ 10, 20, 7, 5 }); // zoom 1, centre (13, 22)
    EXPECT_EQ(overlay->convertPointNSViewToCavansView({ 600, 450 }), (Point { 13, 22 }));
    // A host reporting a negative size gets the centre truncated toward zero, not floored.
    EXPECT_EQ(SelectionMainView::canvasCentre(10, 7), 13.0f);
    EXPECT_EQ(SelectionMainView::canvasCentre(10, -7), 7.0f);
    EXPECT_EQ(SelectionMainView::canvasCentre(-10, -5), -12.0f);
    EXPECT_EQ(SelectionMainView::canvasCentre(2147483647, 2147483647), 3221225470.0f);
}

TEST_F(WorkspaceTest, ConversionsRoundTripAtOddZooms)
{
    document.setViewRect({ 37, -12, 333, 271 });
    document.setViewSize({ 1000, 800 });
    for (Point p : { Point { 0, 0 }, Point { 1199, 899 }, Point { 613.25f, 37.5f } }) {
        const Point back = overlay->convertPointCanvasViewToNSView(overlay->convertPointNSViewToCavansView(p));
        EXPECT_NEAR(back.x, p.x, 1e-3);
        EXPECT_NEAR(back.y, p.y, 1e-3);
    }
}

TEST_F(WorkspaceTest, AZeroWidthGivesNonFiniteCoordinatesWithoutStopping)
{
    // The engine refuses a zero width, so the context's own geometry cannot give one; a null
    // context makes every geometry read come back as zeros.
    overlay->setQMContext(nullptr);
    const Point p = overlay->convertPointNSViewToCavansView({ 10, 10 });
    EXPECT_FALSE(std::isfinite(p.x));
    const Point q = overlay->convertPointCanvasViewToNSView({ 10, 10 });
    EXPECT_FALSE(std::isfinite(q.x));
}

TEST_F(WorkspaceTest, UnresponsiveAreasAreTheHostsAreasWithTheTopEdgeInside)
{
    addHostArea({ 0, 0, 1200, 900 }); // as large as the content view: never counts
    addHostArea({ 100, 100, 50, 20 });
    EXPECT_FALSE(InUnresponsiveArea(600, 450));
    EXPECT_TRUE(InUnresponsiveArea(120, 110));
    EXPECT_TRUE(InUnresponsiveArea(120, 120)); // top edge
    EXPECT_FALSE(InUnresponsiveArea(120, 100)); // bottom edge
    EXPECT_TRUE(InUnresponsiveArea(100, 110));
    EXPECT_FALSE(InUnresponsiveArea(150, 110));
    kit::Application::shared().setMainWindow(nullptr);
    EXPECT_FALSE(InUnresponsiveArea(120, 110));
}

TEST_F(WorkspaceTest, MirroringRebuildsOnlyWhenARectangleChanged)
{
    addHostArea({ 100, 100, 50, 20 });
    addHostArea({ 300, 10, 40, 40 });
    EXPECT_TRUE(overlay->trackingAreas().empty());
    kit::RunLoop::main().advance(1.0); // the first sync, one second after creation
    ASSERT_EQ(overlay->trackingAreas().size(), 2u);
    kit::RefPtr<kit::TrackingArea> first = overlay->trackingAreas()[0]; // held, so a new one cannot reuse its address
    EXPECT_EQ(first->rect(), Rect(100, 100, 50, 20));
    EXPECT_EQ(first->options(), 0x441u);
    EXPECT_EQ(first->owner(), overlay.get());

    kit::NotificationCenter::defaultCenter().post(SelectionMainView::kTrackingAreaCursorUpdated);
    EXPECT_EQ(overlay->trackingAreas()[0], first); // nothing changed: nothing rebuilt

    host->removeTrackingArea(host->trackingAreas()[1].get());
    addHostArea({ 300, 20, 40, 40 });
    kit::NotificationCenter::defaultCenter().post(SelectionMainView::kTrackingAreaCursorUpdated);
    ASSERT_EQ(overlay->trackingAreas().size(), 2u);
    EXPECT_NE(overlay->trackingAreas()[0], first);
    EXPECT_EQ(overlay->trackingAreas()[1]->rect(), Rect(300, 20, 40, 40));
}

TEST_F(WorkspaceTest, CursorIsTheArrowOverHostAreasWithTheBottomEdgeInside)
{
    addHostArea({ 0, 0, 1200, 900 });
    addHostArea({ 100, 100, 50, 20 });
    overlay->setTrackingAreaCursor();
    auto cursorAt = [&](float x, float y) {
        kit::Cursor::create(nullptr, {})->set(); // a cursor nobody would choose
        overlay->setCursor(Event::mouse(EventType::MouseMoved, { x, y }));
        return kit::Cursor::currentCursor()->name();
    };
    EXPECT_EQ(cursorAt(120, 110), "arrow");
    EXPECT_EQ(cursorAt(120, 100), "arrow"); // bottom edge: inside for the cursor
    EXPECT_EQ(cursorAt(120, 120), "crosshair"); // top edge: outside
    EXPECT_EQ(cursorAt(600, 450), "crosshair"); // the full-size area does not count
    EXPECT_EQ(cursorAt(1300, 450), "arrow"); // off the overlay
    overlay->optionView()->setSelectionToolFromTool(7, 0);
    EXPECT_EQ(cursorAt(600, 450), "image"); // no tool: the cursor stays as it was
}

TEST_F(WorkspaceTest, EnteringAndLeavingHostAreasSwitchesTheCursor)
{
    addHostArea({ 100, 100, 50, 20 });
    kit::RunLoop::main().advance(1.0);
    send(EventType::MouseMoved, 600, 450);
    send(EventType::MouseMoved, 120, 110);
    EXPECT_EQ(kit::Cursor::currentCursor()->name(), "arrow");
    send(EventType::MouseMoved, 600, 450);
    EXPECT_EQ(kit::Cursor::currentCursor()->name(), "crosshair");
}

TEST_F(WorkspaceTest, APressOverAHostControlGoesToTheHostInFull)
{
    addHostArea({ 100, 100, 50, 20 });
    send(EventType::LeftMouseDown, 120, 110);
    send(EventType::LeftMouseDragged, 400, 400);
    send(EventType::LeftMouseUp, 600, 450);
    overlay->toolView(0)->mouseMoved(Event::mouse(EventType::MouseMoved, { 130, 115 }));
    EXPECT_EQ(host->log, (std::vector<std::string> { "down 120,110", "drag 400,400", "up 600,450", "moved 130,115" }));
    EXPECT_TRUE(overlay->toolView(0)->unresponsiveArea());
}

TEST_F(WorkspaceTest, APressOverTheCanvasStaysWithTheToolAcrossHostControls)
{
    addHostArea({ 100, 100, 50, 20 });
    send(EventType::LeftMouseDown, 600, 450);
    send(EventType::LeftMouseDragged, 120, 110);
    send(EventType::LeftMouseUp, 120, 110);
    EXPECT_TRUE(host->log.empty());
    EXPECT_FALSE(overlay->toolView(0)->unresponsiveArea());
    EXPECT_EQ(window->firstResponder(), overlay->toolView(0));
}

TEST_F(WorkspaceTest, MovesPassThroughAToolWithoutItsOwnHandling)
{
    overlay->toolView(0)->mouseMoved(Event::mouse(EventType::MouseMoved, { 5, 6 }));
    EXPECT_EQ(host->log, (std::vector<std::string> { "moved 5,6" }));
}

TEST_F(WorkspaceTest, FileDropsOnTheOverlayReachTheHostContentView)
{
    const kit::DraggingInfo info { { "/tmp/picture.png" }, { 600, 450 }, kit::DragOperationEvery };
    EXPECT_TRUE(window->dragDropped(info));
    EXPECT_EQ(host->log, (std::vector<std::string> { "drop /tmp/picture.png" }));
}

TEST_F(WorkspaceTest, SwitchingToolsKeepsTheBarAndOneToolBelowIt)
{
    auto panel = kit::View::create({});
    kit::Object* options = panel.get();
    overlay->setSelectionViewWithSelectionOptionView(2, options);
    ASSERT_EQ(overlay->subviews().size(), 2u);
    EXPECT_EQ(overlay->subviews()[1].get(), overlay->toolView(2));
    EXPECT_EQ(overlay->toolView(2)->options(), options);

    overlay->setSelectionViewWithSelectionOptionView(0, nullptr);
    ASSERT_EQ(overlay->subviews().size(), 2u);
    EXPECT_EQ(overlay->subviews()[0].get(), overlay->optionView());
    EXPECT_EQ(overlay->subviews()[1].get(), overlay->toolView(0));

    overlay->setSelectionViewWithSelectionOptionView(7, options);
    ASSERT_EQ(overlay->subviews().size(), 1u);
    EXPECT_EQ(overlay->subviews()[0].get(), overlay->optionView());
    overlay->setSelectionViewWithSelectionOptionView(-1, options);
    EXPECT_EQ(overlay->subviews().size(), 1u);
}

TEST_F(WorkspaceTest, AShownToolIsLaidOutForTheOverlaysCurrentSize)
{
    window->setFrame(window->frameRectForContentRect({ 0, 0, 800, 600 }));
    EXPECT_EQ(overlay->toolView(0)->frame(), Rect(0, 0, 800, 550));
    EXPECT_EQ(overlay->optionView()->frame(), Rect(0, 550, 800, 53));
    EXPECT_EQ(overlay->toolView(1)->frame(), Rect(0, 0, 1200, 850)); // not in the tree: untouched
    overlay->setSelectionViewWithSelectionOptionView(1, nullptr);
    EXPECT_EQ(overlay->toolView(1)->frame(), Rect(0, 0, 800, 550));
}

TEST_F(WorkspaceTest, HidingTheBarLeavesTheToolArea)
{
    overlay->hideOptionView(true);
    EXPECT_TRUE(overlay->optionView()->isHidden());
    EXPECT_EQ(overlay->toolView(0)->frame(), Rect(0, 0, 1200, 850));
    overlay->hideOptionView(false);
    EXPECT_FALSE(overlay->optionView()->isHidden());
}

TEST_F(WorkspaceTest, TeardownStopsListeningForTrackingChanges)
{
    kit::RunLoop::main().advance(1.0);
    const std::size_t observers = kit::NotificationCenter::defaultCenter().observerCount();
    overlay->removeFromSuperview();
    overlay.clear();
    // The overlay, and with it the lasso, which listens for the host's key releases.
    EXPECT_EQ(kit::NotificationCenter::defaultCenter().observerCount(), observers - 2);
    kit::NotificationCenter::defaultCenter().post(SelectionMainView::kTrackingAreaCursorUpdated);
}

} // namespace
