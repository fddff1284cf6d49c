// Marquee selections made in scripted sessions land on the expected canvas pixels at any zoom
// and layer offset, undo and redo step through them, and their logs replay to the same mask.
#include "hostapp/PluginHost.h"
#include "hostapp/SessionRunner.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"
#include "tests/support/BuiltPlugin.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

class MarqueeSessionTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string error;
        plugin = loadBuiltPlugin(error);
        ASSERT_TRUE(plugin) << error;
    }
    void TearDown() override { kit::RunLoop::main().advance(10); }

    /// Runs a session on a fresh document (plug-in on screen, bar ready) and returns its mask.
    std::vector<std::uint8_t> session(const std::string& text, const std::string& maskName = "mask.png")
    {
        std::ostringstream report;
        hostapp::SessionRunner runner(plugin->table(), dir.path(), report);
        std::string error;
        auto script
            = hostapp::SessionScript::parse("run\nwait 1.1\n" + text + "save-mask " + maskName + "\n", "t", error);
        EXPECT_TRUE(script && runner.run(*script, error)) << error;
        auto mask = kit::Image::imageWithContentsOfFile((dir.path() / maskName).string());
        std::vector<std::uint8_t> grey;
        if (mask) {
            for (std::size_t i = 0; i < mask->rgba().size(); i += 4)
                grey.push_back(mask->rgba()[i]);
        }
        return grey;
    }
    static int at(const std::vector<std::uint8_t>& mask, int x, int y) { return mask.at(std::size_t(y) * 1000 + x); }
    /// Every pixel of the canvas box (x0, y0)-(x1, y1) inclusive selected, and the ring around it not.
    static void expectBox(const std::vector<std::uint8_t>& mask, int x0, int y0, int x1, int y1)
    {
        for (int y = y0 - 1; y <= y1 + 1; ++y) {
            for (int x = x0 - 1; x <= x1 + 1; ++x) {
                const bool inside = x >= x0 && x <= x1 && y >= y0 && y <= y1;
                ASSERT_EQ(at(mask, x, y), inside ? 255 : 0) << x << "," << y;
            }
        }
    }

    TempDir dir;
    std::unique_ptr<hostapp::PluginHost> plugin;
};

// The window is 1200 x 900 and shows the whole 1000 x 800 canvas; a box covers exactly the
// canvas pixels under the drag.

TEST_F(MarqueeSessionTest, AtZoomOneTheBoxIsWhereTheDragWas)
{
    const auto mask = session("down 200 300\ndrag 300 400\nup 300 400\n");
    expectBox(mask, 100, 450, 199, 549);
}

TEST_F(MarqueeSessionTest, AtZoomTwoTheSameDragCoversHalfTheCanvasPixels)
{
    const auto mask = session("viewsize 2000 1600\ndown 200 300\ndrag 300 400\nup 300 400\n");
    expectBox(mask, 300, 425, 349, 474);
}

TEST_F(MarqueeSessionTest, AtZoomAHalfTheSameDragCoversTwiceAsMany)
{
    const auto mask = session("viewsize 500 400\ndown 550 350\ndrag 600 400\nup 600 400\n");
    expectBox(mask, 400, 500, 499, 599);
}

TEST_F(MarqueeSessionTest, ALayerOffsetDoesNotMoveTheSelectionOnTheCanvas)
{
    const auto mask = session("layer-offset 30 20\ndown 200 300\ndrag 300 400\nup 300 400\n");
    expectBox(mask, 100, 450, 199, 549);
}

TEST_F(MarqueeSessionTest, AHostZoomBetweenSelectionsIsFollowed)
{
    // Zoom in with the host's own control, then drag: the plug-in reads the new zoom.
    const auto mask = session("click 24 24\ndown 200 300\ndrag 300 400\nup 300 400\n");
    expectBox(mask, 300, 425, 349, 474);
}

TEST_F(MarqueeSessionTest, NewReplacesAndAddKeepsTheSelection)
{
    const std::string first = "down 200 300\ndrag 300 400\nup 300 400\n";
    const std::string second = "down 600 300\ndrag 700 400\nup 700 400\n";
    const auto replaced = session(first + second, "new.png");
    EXPECT_EQ(at(replaced, 150, 500), 0);
    EXPECT_EQ(at(replaced, 550, 500), 255);
    // The panel's Add button lies at (320, 879) in the bar.
    const auto added = session(first + "click 320 879\n" + second, "add.png");
    EXPECT_EQ(at(added, 150, 500), 255);
    EXPECT_EQ(at(added, 550, 500), 255);
}

TEST_F(MarqueeSessionTest, UndoAndRedoStepThroughTheSelections)
{
    const std::string two
        = "click 320 879\ndown 200 300\ndrag 300 400\nup 300 400\ndown 600 300\ndrag 700 400\nup 700 400\n";
    const auto undone = session(two + "undo\n", "undone.png");
    EXPECT_EQ(at(undone, 150, 500), 255);
    EXPECT_EQ(at(undone, 550, 500), 0);
    const auto both = session(two + "undo\nundo\nredo\nredo\n", "redone.png");
    EXPECT_EQ(at(both, 150, 500), 255);
    EXPECT_EQ(at(both, 550, 500), 255);
}

// A New-mode drag (clear, then shape) is one undo step; a deselecting click is one of its own,
// though nothing in the plug-in closes it.
TEST_F(MarqueeSessionTest, EveryGestureIsOneUndoStep)
{
    const std::string a = "down 200 300\ndrag 300 400\nup 300 400\n";
    const std::string b = "down 600 300\ndrag 700 400\nup 700 400\n";
    const auto replacedThenUndone = session(a + b + "undo\n", "ab.png");
    EXPECT_EQ(at(replacedThenUndone, 150, 500), 255);
    EXPECT_EQ(at(replacedThenUndone, 550, 500), 0);
    const std::string deselect = "click 500 500\n";
    const auto deselected = session(a + deselect + b + "undo\n", "deselected.png");
    EXPECT_EQ(std::count(deselected.begin(), deselected.end(), 0), std::ptrdiff_t(deselected.size()));
    const auto back = session(a + deselect + b + "undo\nundo\n", "back.png");
    EXPECT_EQ(at(back, 150, 500), 255);
    EXPECT_EQ(at(back, 550, 500), 0);
}

TEST_F(MarqueeSessionTest, TheEllipseButtonSelectsAnEllipse)
{
    const auto mask = session("click 128 879\ndown 200 300\ndrag 300 400\nup 300 400\n");
    EXPECT_EQ(at(mask, 150, 500), 255); // the centre
    EXPECT_EQ(at(mask, 101, 452), 0); // a corner of the box
}

TEST_F(MarqueeSessionTest, ALogHoldsOneRecordPerSelectionAndReplaysToTheSameMask)
{
    const std::string feathered = "click 470 876\ntype 7.5\nkey return\n";
    const auto original = session("click 320 879\n" + feathered + "down 200 300\ndrag 300 400\nup 300 400\n"
            + "click 128 879\n" + feathered + "down 600 300\ndrag 760 420\nup 760 420\n"
            + "down 500 500\ndrag 500 520\nup 500 520\nsave-log log.jsonl\n",
        "original.png");
    std::ifstream log(dir.path() / "log.jsonl");
    std::string line;
    int records = 0;
    while (std::getline(log, line))
        ++records;
    EXPECT_EQ(records, 2); // the zero-width third drag records nothing
    const auto replayed = session("replay log.jsonl\n", "replayed.png");
    EXPECT_EQ(replayed, original);
    EXPECT_GT(at(original, 150, 500), 200);
    EXPECT_GT(at(original, 585, 500), 0); // feathered edges
}

} // namespace
