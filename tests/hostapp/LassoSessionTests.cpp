// Lasso selections made in scripted sessions: the triangle lands the way up it was drawn, on the
// canvas pixels under it, at any zoom and layer offset, and its log replays to the same mask.
#include "hostapp/SessionRunner.h"
#include "kit/Image.h"
#include "tests/hostapp/SessionFixture.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <array>

namespace {

struct CanvasPoint {
    double x, y;
};

// A triangle pointing down on the canvas (y runs down): its apex C is its lowest point.
constexpr std::array<CanvasPoint, 3> kTriangle { { { 420, 340 }, { 580, 340 }, { 500, 460 } } };

struct Setting {
    const char* name;
    const char* commands;
    double zoom;
};

class LassoSessionTest : public SessionFixture, public testing::WithParamInterface<Setting> {
protected:
    /// The window point over a canvas point, with the whole 1000 x 800 canvas centred in the
    /// 1200 x 900 window at `zoom`.
    static std::string at(CanvasPoint p, double zoom)
    {
        const double x = 600 + (p.x - 500) * zoom, y = 450 - (p.y - 400) * zoom;
        return std::to_string(int(x)) + " " + std::to_string(int(y));
    }
    std::vector<std::uint8_t> mask(const std::string& name)
    {
        auto image = kit::Image::imageWithContentsOfFile((dir.path() / name).string());
        std::vector<std::uint8_t> grey;
        for (std::size_t i = 0; image && i < image->rgba().size(); i += 4)
            grey.push_back(image->rgba()[i]);
        return grey;
    }
    bool runFresh(const std::string& text, std::string& error)
    {
        runner = std::make_unique<hostapp::SessionRunner>(plugin->table(), dir.path(), report);
        return run(text, error);
    }
};

// Which side of the directed edge from a to b the point lies on: positive inside the triangle,
// whose corners run clockwise on the y-down canvas.
double side(CanvasPoint a, CanvasPoint b, double x, double y)
{
    return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
}

TEST_P(LassoSessionTest, ATriangleLandsPointingDownOnThePixelsWhereItWasDrawnAndReplaysTheSame)
{
    const double zoom = GetParam().zoom;
    const auto [a, b, c] = kTriangle;
    // An abandoned polygon first; then A, B and a stray vertex taken back with Delete; then C.
    const std::string script = std::string("run\nwait 1.1\n") + GetParam().commands + "click 161 879\n" + "click "
        + at({ 300, 300 }, zoom) + "\nmove " + at({ 350, 300 }, zoom) + "\nrightdown " + at({ 350, 300 }, zoom)
        + "\nrightup " + at({ 350, 300 }, zoom) + "\nclick " + at(a, zoom) + "\nmove " + at(b, zoom) + "\nclick "
        + at(b, zoom) + "\nmove " + at({ 700, 600 }, zoom) + "\nclick " + at({ 700, 600 }, zoom) + "\nmove "
        + at(c, zoom) + "\nkey delete\ndoubleclick " + at(c, zoom)
        + "\nwait 0.1\nsave-mask mask.png\nsave-log log.jsonl\n";
    std::string error;
    ASSERT_TRUE(run(script, error)) << error;
    ASSERT_EQ(runner->document().actionLog().size(), 1u);
    EXPECT_EQ(runner->document().actionLog().records()[0].param3, 3.0f);

    // Every pixel wholly inside the triangle is selected and every one wholly outside an edge
    // is not; the pixels an edge crosses may be anything in between.
    const auto drawn = mask("mask.png");
    ASSERT_EQ(drawn.size(), 1000u * 800u);
    int inside = 0;
    for (int y = 300; y < 500; ++y) {
        for (int x = 380; x < 620; ++x) {
            bool within = true, beyond = false;
            for (auto [from, to] : { std::pair { a, b }, { b, c }, { c, a } }) {
                int in = 0, out = 0;
                for (auto [cx, cy] : { std::pair { x, y }, { x + 1, y }, { x, y + 1 }, { x + 1, y + 1 } }) {
                    in += side(from, to, cx, cy) >= 0;
                    out += side(from, to, cx, cy) <= 0;
                }
                within = within && in == 4;
                beyond = beyond || out == 4;
            }
            const int alpha = drawn[std::size_t(y) * 1000 + std::size_t(x)];
            if (within) {
                ++inside;
                ASSERT_EQ(alpha, 255) << x << "," << y;
            } else if (beyond) {
                ASSERT_EQ(alpha, 0) << x << "," << y;
            }
        }
    }
    EXPECT_GT(inside, 9000); // about half of 160 x 120

    // The log holds layer pixels: a document with the same layer offset gets the same mask.
    ASSERT_TRUE(
        runFresh(std::string(GetParam().commands) + "run\nwait 1.1\nreplay log.jsonl\nsave-mask replayed.png\n", error))
        << error;
    EXPECT_TRUE(mask("replayed.png") == drawn);
}

INSTANTIATE_TEST_SUITE_P(Views, LassoSessionTest,
    testing::Values(Setting { "ZoomOne", "", 1 }, Setting { "ZoomTwo", "viewsize 2000 1600\n", 2 },
        Setting { "LayerOffset", "layer-offset 30 -20\n", 1 }),
    [](const testing::TestParamInfo<Setting>& info) { return std::string(info.param.name); });

using LassoFieldTest = SessionFixture;

TEST_F(LassoFieldTest, ADeleteTypedIntoTheFeatherFieldLeavesTheLassoAlone)
{
    // The lasso panel's feather field lies at x 422 to 522 in the bar.
    std::string error;
    ASSERT_TRUE(run("run\nwait 1.1\nclick 161 879\nclick 300 300\nmove 500 300\nclick 500 300\nmove 400 200\n"
                    "click 470 876\nkey delete\ntype 4\nkey return\ndoubleclick 400 200\nwait 0.1\n",
        error))
        << error;
    ASSERT_EQ(runner->document().actionLog().size(), 1u);
    const SelectionEventRecord& r = runner->document().actionLog().records()[0];
    EXPECT_EQ(r.param3, 3.0f);
    EXPECT_EQ(r.param5, 4.0f); // the typing went to the field
}

// The first press of a New-mode lasso clears the selection; abandoned with a right click, that
// clear is a step of its own, so a later polygon undoes to the empty selection, then to the box.
TEST_F(LassoFieldTest, AnAbandonedPolygonsClearIsAnUndoStepOfItsOwn)
{
    auto selected = [&] {
        const auto alpha = runner->document().maskAlpha();
        return std::count_if(alpha.begin(), alpha.end(), [](std::uint8_t a) { return a != 0; });
    };
    std::string error;
    ASSERT_TRUE(run("run\nwait 1.1\ndown 200 300\ndrag 300 400\nup 300 400\nclick 161 879\nwait 0.1\nclick 500 500\n"
                    "rightdown 500 500\nrightup 500 500\n",
        error))
        << error;
    EXPECT_EQ(selected(), 0);
    ASSERT_TRUE(
        run("click 600 300\nmove 700 300\nclick 700 300\nmove 650 200\ndoubleclick 650 200\nwait 0.1\nundo\n", error))
        << error;
    EXPECT_EQ(selected(), 0);
    ASSERT_TRUE(run("undo\n", error)) << error;
    EXPECT_EQ(selected(), 100 * 100);
}

} // namespace
