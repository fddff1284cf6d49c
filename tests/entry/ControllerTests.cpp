// The controller and the overlay it owns: run, stop, the delayed add, destroy, undo and replay.
#include "Classes/Selection/EllipseSelectionView.h"
#include "Classes/Selection/RectangleSelectionView.h"
#include "Classes/Selection/SelectionBaseView.h"
#include "Classes/Selection/SelectionMainView.h"
#include "Classes/Selection/SelectionOptionsView.h"
#include "engine/Document.h"
#include "entry/QuillmarkPluginSelection.h"
#include "host/HostEngine.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using kit::Rect;

class ControllerTest : public testing::Test {
protected:
    void SetUp() override { document.setJournalEnabled(true); }
    void TearDown() override
    {
        controller.clear();
        loop.advance(10); // let pending delayed calls run and release what they hold
        EXPECT_EQ(loop.pendingCount(), 0u);
    }
    kit::RefPtr<QuillmarkPluginSelection> makeController(kit::Window* parent)
    {
        auto made = QuillmarkPluginSelection::create();
        made->setQMContext(document.context());
        made->setParentWindow(parent);
        return made;
    }

    kit::RunLoop& loop = kit::RunLoop::main();
    engine::Document document;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 1200, 900 });
    kit::RefPtr<QuillmarkPluginSelection> controller = makeController(window.get());
};

TEST_F(ControllerTest, ActiveFollowsRunAndStop)
{
    EXPECT_FALSE(controller->isActive());
    EXPECT_EQ(controller->pluginMainView(), nullptr);
    controller->stop(); // stop before any run only clears the flag
    EXPECT_FALSE(controller->isActive());
    controller->run();
    EXPECT_TRUE(controller->isActive());
    controller->stop();
    EXPECT_FALSE(controller->isActive());
}

TEST_F(ControllerTest, FirstRunBuildsTheOverlayAndAddsItHalfASecondLater)
{
    controller->run();
    SelectionMainView* overlay = controller->pluginMainView();
    ASSERT_NE(overlay, nullptr);
    EXPECT_EQ(overlay->frame(), Rect(0, 0, 1200, 900)); // the content rectangle, without the title bar
    EXPECT_EQ(overlay->autoresizingMask(), 18u);
    EXPECT_EQ(overlay->qmContext(), document.context());
    EXPECT_FALSE(overlay->isHidden());
    EXPECT_EQ(overlay->superview(), nullptr);
    EXPECT_EQ(loop.pendingCount(), 3u); // the add, the overlay's first tracking-area sync, the bar's first switch

    loop.advance(0.49);
    EXPECT_EQ(overlay->superview(), nullptr);
    loop.advance(0.01);
    EXPECT_EQ(overlay->superview(), window->contentView());
    EXPECT_EQ(window->contentView()->subviews().back().get(), overlay);
    EXPECT_TRUE(overlay->wantsLayer());
}

TEST_F(ControllerTest, RunTwiceMakesOneOverlayAndOneDelayedAdd)
{
    controller->run();
    SelectionMainView* first = controller->pluginMainView();
    controller->run();
    EXPECT_EQ(controller->pluginMainView(), first);
    EXPECT_EQ(loop.pendingCount(), 3u); // one add, one tracking-area sync, one first tool switch
}

TEST_F(ControllerTest, RunAfterStopShowsTheSameOverlayAndSchedulesNothing)
{
    controller->run();
    loop.advance(1.0);
    SelectionMainView* overlay = controller->pluginMainView();
    controller->stop();
    EXPECT_TRUE(overlay->isHidden());
    EXPECT_EQ(overlay->superview(), window->contentView()); // hidden, still in the tree
    controller->run();
    EXPECT_EQ(controller->pluginMainView(), overlay);
    EXPECT_FALSE(overlay->isHidden());
    EXPECT_EQ(loop.pendingCount(), 0u);
    EXPECT_EQ(window->contentView()->subviews().size(), 1u);
}

TEST_F(ControllerTest, StopBeforeTheDelayedAddStillAddsTheOverlayHidden)
{
    controller->run();
    controller->stop();
    loop.advance(0.5);
    SelectionMainView* overlay = controller->pluginMainView();
    EXPECT_EQ(overlay->superview(), window->contentView());
    EXPECT_TRUE(overlay->isHidden());
}

TEST_F(ControllerTest, WithoutAWindowTheOverlayIsHiddenAndNeverAdded)
{
    auto lonely = makeController(nullptr);
    lonely->run();
    EXPECT_TRUE(lonely->isActive());
    SelectionMainView* overlay = lonely->pluginMainView();
    ASSERT_NE(overlay, nullptr);
    EXPECT_TRUE(overlay->isHidden());
    EXPECT_EQ(overlay->frame(), Rect());
    loop.advance(1);
    EXPECT_EQ(overlay->superview(), nullptr);
    // Undo still reaches the engine.
    lonely->undo(nullptr);
    EXPECT_EQ(document.journal().back(), "IPD_UndoStroke");
}

TEST_F(ControllerTest, DestroyRemovesTheOverlayFromTheWindow)
{
    controller->run();
    loop.advance(1.0);
    kit::RefPtr<SelectionMainView> overlay = controller->pluginMainView();
    controller.clear();
    EXPECT_EQ(overlay->superview(), nullptr);
    EXPECT_TRUE(window->contentView()->subviews().empty());
    EXPECT_EQ(overlay->refCount(), 1); // ours alone
}

TEST_F(ControllerTest, DestroyWithinHalfASecondWaitsForTheDelayedAddThenRemoves)
{
    controller->run();
    kit::RefPtr<SelectionMainView> overlay = controller->pluginMainView();
    QuillmarkPluginSelection* raw = controller.get();
    controller.clear(); // the host's reference goes; the delayed call still holds one
    EXPECT_EQ(raw->refCount(), 1);
    EXPECT_EQ(raw->pluginMainView(), overlay.get());
    loop.advance(0.5);
    EXPECT_EQ(overlay->superview(), nullptr);
    EXPECT_TRUE(window->contentView()->subviews().empty());
    loop.advance(0.5); // the overlay's own first tracking-area sync holds it until then
    EXPECT_EQ(overlay->refCount(), 1);
}

TEST_F(ControllerTest, UndoRedoAndPlayBeforeTheFirstRunReachNothing)
{
    SelectionEventRecord record;
    controller->undo(nullptr);
    controller->redo(nullptr);
    controller->play(&record);
    EXPECT_TRUE(document.journal().empty());
}

TEST_F(ControllerTest, UndoAndRedoAfterStopReachTheEngineWithTheContext)
{
    // A selection made in the engine, then undone and redone through the controller.
    const std::vector<unsigned char> white(4 * 4 * 4, 255);
    IPD_LayerPaint_ImportImageData(
        document.context(), IPD_GetSelectionMaskID(document.context()), white.data(), 4, 4, 0, 0);
    IPD_StartRefreshingActiveLayer(document.context());
    controller->run();
    controller->stop();
    document.clearJournal();

    controller->undo(nullptr);
    EXPECT_EQ(document.maskAlpha()[0], 0);
    controller->redo(nullptr);
    EXPECT_EQ(document.maskAlpha()[0], 255);
    EXPECT_EQ(document.journal(), (std::vector<std::string> { "IPD_UndoStroke", "IPD_RedoStroke" }));
}

class OverlayTest : public testing::Test {
protected:
    void TearDown() override { kit::RunLoop::main().advance(10); }
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(Rect { 0, 0, 1200, 900 });
};

TEST_F(OverlayTest, StartsWithTheBarOnTopAndTheRectangleToolBelowIt)
{
    ASSERT_EQ(overlay->subviews().size(), 2u);
    kit::View* bar = overlay->subviews()[0].get();
    kit::View* tool = overlay->subviews()[1].get();
    EXPECT_EQ(bar, overlay->optionView());
    EXPECT_EQ(bar->frame(), Rect(0, 850, 1200, 53));
    EXPECT_EQ(bar->autoresizingMask(), 10u);
    EXPECT_EQ(overlay->optionView()->mainView(), overlay.get());
    EXPECT_EQ(tool, overlay->toolView(0));
    EXPECT_EQ(tool->frame(), Rect(0, 0, 1200, 850));
    EXPECT_EQ(tool->autoresizingMask(), 18u);
    for (int n = 1; n <= 4; ++n) {
        ASSERT_NE(overlay->toolView(n), nullptr);
        EXPECT_EQ(overlay->toolView(n)->superview(), nullptr);
        EXPECT_EQ(overlay->toolView(n)->frame(), Rect(0, 0, 1200, 850));
        EXPECT_EQ(overlay->toolView(n)->options(), nullptr);
    }
    EXPECT_EQ(overlay->registeredDraggedTypes(), std::vector<std::string> { kit::FilenamesPboardType });
}

TEST_F(OverlayTest, ToolNumbersNameTheToolViewsAndNothingElse)
{
    EXPECT_NE(dynamic_cast<EllipseSelectionView*>(overlay->toolView(1)), nullptr);
    EXPECT_EQ(dynamic_cast<EllipseSelectionView*>(overlay->toolView(0)), nullptr);
    for (int a = 0; a <= 4; ++a)
        for (int b = a + 1; b <= 4; ++b)
            EXPECT_NE(overlay->toolView(a), overlay->toolView(b));
    EXPECT_EQ(overlay->toolView(-1), nullptr);
    EXPECT_EQ(overlay->toolView(5), nullptr);
}

TEST_F(OverlayTest, ReplayOfAnyToolNumberIsSafe)
{
    // Numbers that name no tool, including those whose conversion to an integer would be
    // undefined, and the brush tools' numbers, which replay nothing.
    engine::Document document;
    document.setJournalEnabled(true);
    overlay->setQMContext(document.context());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (float number : { 3.0f, 4.99f, 5.0f, -1.0f, nan, inf, -inf, 3e38f, -3e38f }) {
        SelectionEventRecord record;
        record.param2 = number;
        overlay->dealPlay(&record);
    }
    overlay->dealPlay(nullptr);
    EXPECT_TRUE(document.journal().empty());
    EXPECT_EQ(document.actionLog().size(), 0u);
}

TEST_F(OverlayTest, UndoAndRedoGoToTheEngineWhateverTheTool)
{
    engine::Document document;
    document.setJournalEnabled(true);
    overlay->setQMContext(document.context());
    overlay->undo(nullptr);
    overlay->redo(nullptr);
    EXPECT_EQ(document.journal(), (std::vector<std::string> { "IPD_UndoStroke", "IPD_RedoStroke" }));
}

TEST_F(OverlayTest, TeardownTakesTheChildrenOutOfTheTree)
{
    kit::RunLoop::main().advance(1.0);
    kit::RefPtr<kit::View> bar = overlay->optionView();
    kit::RefPtr<kit::View> tool = overlay->toolView(0);
    overlay.clear();
    EXPECT_EQ(bar->superview(), nullptr);
    EXPECT_EQ(tool->superview(), nullptr);
    EXPECT_EQ(bar->refCount(), 1);
    EXPECT_EQ(tool->refCount(), 1);
}

} // namespace
