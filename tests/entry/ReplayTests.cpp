// Replay through the module table: each recorded shape reaches the engine as one commit and is
// recorded again; unknown tools and records the rasteriser cannot take change nothing.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "kit/RunLoop.h"
#include "module/PluginModule.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

class ReplayTest : public testing::Test {
protected:
    void SetUp() override
    {
        handle = table->create(document.context(), nullptr);
        table->run(handle);
        document.setJournalEnabled(true);
    }
    void TearDown() override
    {
        table->destroy(handle);
        DeletePlugin(table);
        kit::RunLoop::main().advance(10);
    }
    static SelectionEventRecord marquee(float tool, float x, float y, float w, float h, float feather)
    {
        SelectionEventRecord r;
        r.kind = 90;
        r.param0 = 2;
        r.param2 = tool;
        r.param3 = x;
        r.param4 = y;
        r.param5 = w;
        r.param6 = h;
        r.param8 = feather;
        r.name = "Selection";
        return r;
    }
    static SelectionEventRecord polygon(float count, std::string text, float feather)
    {
        SelectionEventRecord r;
        r.kind = 90;
        r.param2 = 2;
        r.param3 = count;
        r.param5 = feather;
        r.text = std::move(text);
        r.name = "Selection";
        return r;
    }
    std::vector<std::string> commitFor(const std::string& import) const
    {
        return { "IPD_EnableSeletionLayerOperation 1", "IPD_GetSelectionMaskID", import,
            "IPD_StartRefreshingActiveLayer", "IPD_EnableSeletionLayerOperation 0", "IPD_RecordEvent 90" };
    }
    int alphaAt(int x, int y) const { return document.maskAlpha()[std::size_t(y) * document.canvasWidth() + x]; }
    static bool sameBits(const SelectionEventRecord& a, const SelectionEventRecord& b)
    {
        // The thirteen words; the padding before the strings is not part of the record.
        constexpr std::size_t words = offsetof(SelectionEventRecord, param8) + sizeof(float);
        return std::memcmp(&a, &b, words) == 0 && a.text == b.text && a.name == b.name;
    }

    engine::Document document;
    PluginModule* table = GetPlugin();
    void* handle = nullptr;
};

TEST_F(ReplayTest, ARectangleIsOneCommitThenRecordedAgainUnchanged)
{
    SelectionEventRecord r = marquee(0, 10, 20, 30, 40, 0);
    r.param0 = 77; // a layer id from another document: replay neither reads nor fixes it
    EXPECT_EQ(table->play(handle, &r), 0);
    EXPECT_EQ(document.journal(), commitFor("IPD_LayerPaint_ImportImageData 2 33x43 at 9,19"));
    ASSERT_EQ(document.actionLog().size(), 1u);
    EXPECT_TRUE(sameBits(document.actionLog().records()[0], r));
    // Exactly the box's pixels: x 10 to 39, y 20 to 59.
    EXPECT_EQ(alphaAt(10, 20), 255);
    EXPECT_EQ(alphaAt(39, 59), 255);
    EXPECT_EQ(alphaAt(10, 19), 0);
    EXPECT_EQ(alphaAt(9, 40), 0);
    EXPECT_EQ(alphaAt(40, 40), 0);
    EXPECT_EQ(alphaAt(10, 60), 0);
    // One undo step: the replayed selection goes with one undo.
    table->undo(handle, nullptr);
    EXPECT_EQ(alphaAt(10, 20), 0);
}

TEST_F(ReplayTest, AnEllipseUsesTheEllipseRasteriser)
{
    SelectionEventRecord r = marquee(1, 10, 20, 30, 40, 0);
    table->play(handle, &r);
    ASSERT_EQ(document.journal().size(), 6u);
    EXPECT_EQ(document.journal()[2].rfind("IPD_LayerPaint_ImportImageData 2 ", 0), 0u);
    EXPECT_NE(document.journal()[2].find(" at 9,19"), std::string::npos);
    EXPECT_EQ(alphaAt(25, 40), 255); // the centre
    EXPECT_EQ(alphaAt(10, 20), 0); // the box's corner lies outside the ellipse
}

TEST_F(ReplayTest, AToolNumberIsTruncatedTowardZero)
{
    SelectionEventRecord r = marquee(1.9f, 10, 20, 30, 40, 0);
    table->play(handle, &r);
    EXPECT_EQ(alphaAt(11, 22), 0); // an ellipse, not a rectangle
    EXPECT_EQ(alphaAt(25, 40), 255);
    ASSERT_EQ(document.actionLog().size(), 1u);
    EXPECT_EQ(document.actionLog().records()[0].param2, 1.9f);
    // Just above -1 still truncates to the rectangle.
    SelectionEventRecord box = marquee(-0.5f, 100, 100, 10, 10, 0);
    table->play(handle, &box);
    EXPECT_EQ(alphaAt(100, 100), 255);
}

TEST_F(ReplayTest, APolygonIsReadFromItsVertexText)
{
    SelectionEventRecord r = polygon(3, "10,#,20,#,110,#,20,#,60,#,90,#,", 0);
    table->play(handle, &r);
    EXPECT_EQ(document.journal(), commitFor("IPD_LayerPaint_ImportImageData 2 103x73 at 9,19"));
    ASSERT_EQ(document.actionLog().size(), 1u);
    EXPECT_TRUE(sameBits(document.actionLog().records()[0], r));
}

TEST_F(ReplayTest, BrushEraseAndUnknownToolsReachNothing)
{
    for (float tool : { 3.0f, 4.0f, 5.0f, -1.0f }) {
        SelectionEventRecord r = marquee(tool, 10, 20, 30, 40, 0);
        table->play(handle, &r);
    }
    EXPECT_TRUE(document.journal().empty());
    EXPECT_EQ(document.actionLog().size(), 0u);
}

TEST_F(ReplayTest, RecordsTheRasteriserCannotTakeChangeNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    std::vector<SelectionEventRecord> bad = {
        marquee(0, nan, 20, 30, 40, 0), marquee(0, 10, inf, 30, 40, 0), marquee(1, 10, 20, -30, 40, 0),
        marquee(0, 10, 20, 30, nan, 0), marquee(0, 10, 20, 30, 40, -20), // margins that leave no pixel
        marquee(1, 10, 20, 30, 40, nan), marquee(0, 10, 20, 30, 40, 1000.5f),
        marquee(0, 0, 0, 40000, 40000, 0), // 1.6e9 pixels
        marquee(0, 3e9f, 20, 30, 40, 0), // an origin beyond the int range
        marquee(1, -3e9f, 20, 30, 40, 0), polygon(2, "10,#,20,#,110,#,20,#,", 0),
        polygon(1000001, "10,#,20,#,110,#,20,#,60,#,90,#,", 0), polygon(nan, "10,#,20,#,110,#,20,#,60,#,90,#,", 0),
        polygon(-inf, "", 0), polygon(4, "10,#,20,#,110,#,20,#,60,#,90,#,", 0), // three vertices for a count of four
        polygon(3, "10,#,20,#,110,#,20,#,60,#,90,#,", nan),
        polygon(3, std::string("10,#,20,#,110,#,\0,#,20,#,60,#,90,#,", 35), 0), // ends at its NUL
        polygon(3, "10,#,20,#,110,#,20,#,60,#,90,#,\xff", 0), // not UTF-8
    };
    for (SelectionEventRecord& r : bad) {
        table->play(handle, &r);
        ASSERT_EQ(document.actionLog().size(), 0u) << "tool " << r.param2 << " count " << r.param3;
    }
    for (const std::string& line : document.journal())
        EXPECT_EQ(line.find("ImportImageData"), std::string::npos) << line;
    EXPECT_EQ(document.cellCount(engine::Document::kSelectionMaskLayerId), 0u);
}

TEST_F(ReplayTest, ReplayWorksWhileStoppedButNotBeforeTheFirstRun)
{
    table->stop(handle);
    SelectionEventRecord r = marquee(0, 10, 20, 30, 40, 0);
    table->play(handle, &r);
    EXPECT_EQ(document.actionLog().size(), 1u);

    void* fresh = table->create(document.context(), nullptr);
    table->play(fresh, &r);
    EXPECT_EQ(document.actionLog().size(), 1u);
    table->destroy(fresh);
}

} // namespace
