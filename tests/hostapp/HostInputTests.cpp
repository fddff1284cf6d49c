// The host's own controls under the overlay, and the mouse and key commands of sessions.
#include "hostapp/PluginHost.h"
#include "hostapp/SessionRunner.h"
#include "kit/Event.h"
#include "kit/NotificationCenter.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"
#include "tests/hostapp/SessionFixture.h"
#include "tests/support/BuiltPlugin.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace fs = std::filesystem;

namespace {

class HostInputTest : public SessionFixture {
protected:
    void SetUp() override
    {
        SessionFixture::SetUp();
        // The plug-in on screen, with its tracking areas mirrored.
        ASSERT_TRUE(run("run\nwait 1.0\n"));
    }
    bool run(const std::string& text)
    {
        std::string error;
        const bool ok = SessionFixture::run(text, error);
        EXPECT_TRUE(ok) << error;
        return ok;
    }
    engine::ViewRect view() { return runner->document().viewRect(); }
    const std::vector<std::string>& hostLog() { return runner->canvas().canvasView().hostLog(); }
    kit::View* overlay() { return runner->canvas().window().contentView()->subviews().back().get(); }
};

TEST_F(HostInputTest, AClickOnAHostControlThroughTheOverlayZooms)
{
    // Zoom in is the first control of the row in the bottom-left corner.
    ASSERT_TRUE(run("click 24 24\n"));
    EXPECT_EQ(view(), (engine::ViewRect { 250, 200, 500, 400 }));
    EXPECT_EQ(hostLog(), (std::vector<std::string> { "down 24,24", "up 24,24", "zoom-in" }));
    ASSERT_TRUE(run("click 56 24\nclick 56 24\n")); // zoom out twice
    EXPECT_EQ(view(), (engine::ViewRect { -500, -400, 2000, 1600 }));
    ASSERT_TRUE(run("click 88 24\n")); // fit
    EXPECT_EQ(view(), (engine::ViewRect { 0, 0, 1000, 800 }));
    // A canvas taller than the view's proportions fits by its height, centred across.
    ASSERT_TRUE(run("canvas 1000 4000\nclick 88 24\n"));
    EXPECT_EQ(view(), (engine::ViewRect { -2000, 0, 5000, 4000 }));
}

TEST_F(HostInputTest, AControlActsOnlyWhenReleasedOverIt)
{
    ASSERT_TRUE(run("down 24 24\ndrag 600 450\nup 600 450\n"));
    EXPECT_EQ(view(), (engine::ViewRect { 0, 0, 1000, 800 }));
    // The whole press went to the host, though it ended over the canvas.
    EXPECT_EQ(hostLog(), (std::vector<std::string> { "down 24,24", "drag 600,450", "up 600,450" }));
}

TEST_F(HostInputTest, ThePanPadDragsTheCanvasWithThePointer)
{
    ASSERT_TRUE(run("down 120 24\ndrag 220 24\ndrag 220 74\nup 220 74\n"));
    EXPECT_EQ(view(), (engine::ViewRect { -100, 50, 1000, 800 }));
}

TEST_F(HostInputTest, PressesOverTheCanvasStayWithThePlugIn)
{
    ASSERT_TRUE(run("down 600 450\ndrag 24 24\nup 24 24\nrightdown 600 450\nrightup 600 450\n"));
    EXPECT_TRUE(hostLog().empty());
    EXPECT_EQ(view(), (engine::ViewRect { 0, 0, 1000, 800 }));
}

TEST_F(HostInputTest, HostAreasAreMirroredByTheOverlayWhenPosted)
{
    const std::size_t before = overlay()->trackingAreas().size();
    EXPECT_EQ(before, runner->canvas().canvasView().controls().size());
    ASSERT_TRUE(run("host-area 300 300 50 40\n"));
    ASSERT_EQ(overlay()->trackingAreas().size(), before + 1);
    EXPECT_EQ(overlay()->trackingAreas().back()->rect(), kit::Rect(300, 300, 50, 40));
    // A press on the new area now belongs to the host.
    ASSERT_TRUE(run("click 320 320\n"));
    EXPECT_EQ(hostLog(), (std::vector<std::string> { "down 320,320", "up 320,320", "area" }));
}

TEST_F(HostInputTest, KeyReleasesThatNoToolTakesArePostedAsKeyUp)
{
    std::vector<std::string> seen;
    int observer = 0;
    kit::NotificationCenter::defaultCenter().addObserver(&observer, "keyUp", nullptr,
        [&](const kit::Notification& n) { seen.push_back(static_cast<const kit::Event*>(n.sender)->characters()); });
    ASSERT_TRUE(run("key delete\nkey return\nkey x\ntype a\xC3\xA9\n"));
    kit::NotificationCenter::defaultCenter().removeObserver(&observer);
    EXPECT_EQ(seen, (std::vector<std::string> { "\x7f", "\r", "x", "a", "\xC3\xA9" }));
}

TEST_F(HostInputTest, ADoubleClickSendsCountsOneThenTwo)
{
    struct Counter final : kit::View {
        KIT_MAKEABLE
        std::vector<int> counts;
        void mouseDown(const kit::Event& e) override { counts.push_back(e.clickCount()); }

    private:
        using kit::View::View;
    };
    auto counter = kit::make<Counter>(kit::Rect { 0, 0, 1200, 900 });
    runner->canvas().window().contentView()->addSubview(counter.get());
    ASSERT_TRUE(run("doubleclick 600 450\ndown 600 450 3\nup 600 450\n"));
    EXPECT_EQ(counter->counts, (std::vector<int> { 1, 2, 3 }));
}

} // namespace
