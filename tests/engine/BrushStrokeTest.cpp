// BrushStrokeTest: brush packages, the radius parameter, and what pen and eraser strokes do to the layers.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/DocumentSnapshot.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <fstream>
#include <utility>

using engine::Document;
using namespace enginetest;

namespace {

using Points = std::vector<std::pair<int, int>>;

class BrushStroke : public ::testing::Test {
protected:
    void SetUp() override
    {
        document.setBrushDirectory(shippedBrushDirectory());
        pen = IPD_CreateBrushFromPackage(context(), "pen_1.bru");
        eraser = IPD_CreateBrushFromPackage(context(), "eraser_1.bru");
        ASSERT_NE(pen, nullptr) << document.lastError();
        ASSERT_NE(eraser, nullptr) << document.lastError();
        ASSERT_EQ(IPD_EnableSeletionLayerOperation(context(), 1), 0);
    }

    void* context() { return document.context(); }

    // A whole gesture the way a tool sends it: 5.1 for the first point, -1 for the last.
    void stroke(void* brush, const Points& points, unsigned int colour = 0xffffff)
    {
        ASSERT_EQ(IPD_BeginOneStroke(context()), 0);
        for (std::size_t i = 0; i < points.size(); ++i) {
            float time = i == 0 ? 5.1f : i + 1 == points.size() ? -1.0f : 0.016f;
            ASSERT_EQ(IPD_StrokeTo(context(), brush, colour, points[i].first, points[i].second, 1.0f, time), 0);
        }
        ASSERT_EQ(IPD_EndOneStroke(context()), 0);
    }

    // Pixels of one canvas column whose mask alpha passes the test.
    template <typename Test> int columnCount(int x, Test test)
    {
        std::vector<std::uint8_t> mask = document.maskAlpha();
        int count = 0;
        for (int y = 0; y < document.canvasHeight(); ++y)
            count += test(mask[static_cast<std::size_t>(y) * document.canvasWidth() + x]) ? 1 : 0;
        return count;
    }

    Document document;
    void* pen = nullptr;
    void* eraser = nullptr;
};

double penRadius(float parameter) { return std::exp(parameter / 1.01); }
double eraserRadius(float parameter) { return std::exp(parameter / 0.85); }

} // namespace

TEST_F(BrushStroke, PenSelectsPixelsNearThePathAndNothingFar)
{
    stroke(pen, { { 100, 200 }, { 250, 200 }, { 400, 200 } });
    EXPECT_EQ(maskAt(document, 250, 200), 255);
    EXPECT_EQ(maskAt(document, 250, 205), 255);
    EXPECT_GT(maskAt(document, 250, 209), 0);
    EXPECT_EQ(maskAt(document, 250, 213), 0);
    EXPECT_EQ(maskAt(document, 85, 200), 0);
    EXPECT_EQ(maskAt(document, 415, 200), 0);
    EXPECT_EQ(maskAt(document, 600, 600), 0);
    std::vector<std::uint8_t> paint = document.paintPixels();
    EXPECT_TRUE(std::all_of(paint.begin(), paint.end(), [](std::uint8_t b) { return b == 0; }));
}

TEST_F(BrushStroke, EachStrokeUndoesAsOneStep)
{
    stroke(pen, { { 100, 100 }, { 300, 100 } });
    std::vector<std::uint8_t> afterFirst = document.maskAlpha();
    stroke(pen, { { 100, 400 }, { 200, 450 }, { 300, 400 } });
    std::vector<std::uint8_t> afterSecond = document.maskAlpha();
    ASSERT_EQ(document.undoDepth(), 2u);

    ASSERT_EQ(IPD_UndoStroke(context()), 0);
    EXPECT_EQ(document.maskAlpha(), afterFirst);
    ASSERT_EQ(IPD_UndoStroke(context()), 0);
    EXPECT_EQ(selectedCount(document), 0u);
    ASSERT_EQ(IPD_RedoStroke(context()), 0);
    ASSERT_EQ(IPD_RedoStroke(context()), 0);
    EXPECT_EQ(document.maskAlpha(), afterSecond);
}

TEST_F(BrushStroke, EraserClearsWhatThePenPainted)
{
    ASSERT_EQ(IPD_SetBrushParam(context(), pen, 3, 4.0f), 0); // about 52 px
    stroke(pen, { { 100, 300 }, { 500, 300 } });
    std::vector<std::uint8_t> painted = document.maskAlpha();
    stroke(eraser, { { 100, 300 }, { 500, 300 } }); // about 19 px
    EXPECT_EQ(maskAt(document, 300, 300), 0);
    EXPECT_EQ(maskAt(document, 300, 310), 0);
    EXPECT_EQ(maskAt(document, 300, 330), 255) << "outside the eraser, inside the pen's core";
    ASSERT_EQ(IPD_UndoStroke(context()), 0);
    EXPECT_EQ(document.maskAlpha(), painted);
}

TEST_F(BrushStroke, WithRoutingOffStrokesWorkOnThePaintLayerInColour)
{
    ASSERT_EQ(IPD_EnableSeletionLayerOperation(context(), 0), 0);
    stroke(pen, { { 100, 100 }, { 200, 100 } }, 0x336699);
    std::vector<std::uint8_t> paint = document.paintPixels();
    std::size_t at = (100 * 1000 + 150) * 4;
    EXPECT_EQ(std::vector<std::uint8_t>(paint.begin() + at, paint.begin() + at + 4),
        (std::vector<std::uint8_t> { 0x33, 0x66, 0x99, 0xff }));
    EXPECT_EQ(selectedCount(document), 0u);

    stroke(eraser, { { 150, 100 }, { 151, 100 } });
    EXPECT_EQ(document.paintPixels()[at + 3], 0);
}

TEST_F(BrushStroke, RadiusParameterReadsAndWrites)
{
    EXPECT_FLOAT_EQ(IPD_GetBrushParam(context(), pen, 3), 2.5f) << "the package's default";
    ASSERT_EQ(IPD_SetBrushParam(context(), pen, 3, 3.25f), 0);
    EXPECT_EQ(IPD_GetBrushParam(context(), pen, 3), 3.25f);
    EXPECT_LT(IPD_SetBrushParam(context(), pen, 3, NAN), 0);
    EXPECT_LT(IPD_SetBrushParam(context(), pen, 3, INFINITY), 0);
    EXPECT_EQ(IPD_GetBrushParam(context(), pen, 3), 3.25f);
    for (int unknown : { -1, 0, 4, INT_MAX }) {
        EXPECT_EQ(IPD_GetBrushParam(context(), pen, unknown), 0.0f);
        EXPECT_LT(IPD_SetBrushParam(context(), pen, unknown, 1.0f), 0);
    }
}

TEST_F(BrushStroke, ALargerRadiusParameterSelectsAWiderBand)
{
    int previous = 0;
    for (float parameter : { 1.5f, 2.5f, 3.5f }) {
        ASSERT_EQ(IPD_SetBrushParam(context(), pen, 3, parameter), 0);
        stroke(pen, { { 100, 400 }, { 500, 400 } });
        int band = columnCount(300, [](int a) { return a > 0; });
        EXPECT_NEAR(band, 2 * penRadius(parameter), 2.0) << parameter;
        EXPECT_GT(band, previous);
        previous = band;
        ASSERT_EQ(IPD_UndoStroke(context()), 0);
    }
}

TEST_F(BrushStroke, TheEraserFollowsItsOwnRadiusCurve)
{
    ASSERT_EQ(IPD_SetBrushParam(context(), pen, 3, 5.0f), 0); // a core far wider than the eraser
    stroke(pen, { { 0, 400 }, { 999, 400 } });
    std::vector<std::uint8_t> painted = document.maskAlpha();
    stroke(eraser, { { 100, 400 }, { 500, 400 } });
    std::vector<std::uint8_t> erased = document.maskAlpha();
    int band = 0;
    for (int y = 0; y < 800; ++y) {
        std::size_t at = static_cast<std::size_t>(y) * 1000 + 300;
        band += painted[at] == 255 && erased[at] < 255 ? 1 : 0;
    }
    EXPECT_NEAR(band, 2 * eraserRadius(2.5f), 3.0);
    EXPECT_GT(band, 2 * penRadius(2.5f) + 4) << "same parameter, wider than the pen";
}

TEST_F(BrushStroke, AStrokeSentInSmallSegmentsMatchesOneSentWhole)
{
    for (float parameter : { 0.5f, 2.5f }) {
        ASSERT_EQ(IPD_SetBrushParam(context(), pen, 3, parameter), 0);
        stroke(pen, { { 100, 300 }, { 400, 300 } });
        std::vector<std::uint8_t> whole = document.maskAlpha();
        ASSERT_EQ(IPD_UndoStroke(context()), 0);
        Points steps;
        for (int x = 100; x <= 400; x += 7)
            steps.emplace_back(x, 300);
        steps.emplace_back(400, 300);
        stroke(pen, steps);
        std::vector<std::uint8_t> pieces = document.maskAlpha();
        ASSERT_EQ(IPD_UndoStroke(context()), 0);
        int worst = 0;
        for (std::size_t i = 0; i < whole.size(); ++i)
            worst = std::max(worst, std::abs(int(whole[i]) - int(pieces[i])));
        EXPECT_LE(worst, 1) << parameter;
        for (int x = 100; x <= 400; ++x)
            ASSERT_EQ(whole[300 * 1000 + x], 255) << "gap at x " << x;
    }
}

TEST_F(BrushStroke, StrokeToWithoutBeginStartsAStroke)
{
    ASSERT_EQ(IPD_StrokeTo(context(), pen, 0xffffff, 50, 50, 1.0f, 5.1f), 0);
    ASSERT_EQ(IPD_StrokeTo(context(), pen, 0xffffff, 90, 50, 1.0f, -1.0f), 0);
    EXPECT_TRUE(document.strokeActive());
    ASSERT_EQ(IPD_EndOneStroke(context()), 0);
    EXPECT_EQ(maskAt(document, 70, 50), 255);
    EXPECT_EQ(document.undoDepth(), 1u);
}

TEST_F(BrushStroke, SegmentsFarOffTheCanvasAreClipped)
{
    stroke(pen, { { INT_MIN, INT_MIN }, { INT_MAX, INT_MAX } });
    EXPECT_EQ(maskAt(document, 400, 400), 255) << "the diagonal crosses the canvas";
    EXPECT_EQ(maskAt(document, 900, 100), 0);
    EXPECT_LE(document.cellCount(kMask), 16u * 13u);

    DocumentSnapshot before(document);
    stroke(pen, { { INT_MIN, 0 }, { INT_MIN, INT_MAX }, { INT_MAX, INT_MAX } });
    EXPECT_EQ(DocumentSnapshot(document), before);
}

TEST_F(BrushStroke, ADestroyedOrForeignBrushIsRefused)
{
    Document other;
    other.setBrushDirectory(shippedBrushDirectory());
    void* foreign = IPD_CreateBrushFromPackage(other.context(), "pen_1.bru");
    ASSERT_NE(foreign, nullptr);
    ASSERT_EQ(IPD_DestroyBursh(context(), pen), 0);
    DocumentSnapshot before(document);
    for (void* brush : { pen, foreign }) {
        EXPECT_LT(IPD_DestroyBursh(context(), brush), 0);
        EXPECT_LT(IPD_StrokeTo(context(), brush, 0xffffff, 10, 10, 1.0f, 5.1f), 0);
        EXPECT_LT(IPD_SetBrushParam(context(), brush, 3, 1.0f), 0);
        EXPECT_EQ(IPD_GetBrushParam(context(), brush, 3), 0.0f);
    }
    EXPECT_EQ(DocumentSnapshot(document), before);
    EXPECT_EQ(IPD_GetBrushParam(other.context(), foreign, 3), 2.5f);
}

class BrushPackages : public ::testing::Test {
protected:
    void write(const char* name, const std::string& text) { std::ofstream(directory / name) << text; }

    std::filesystem::path directory = scratchDirectory("packages");
    Document document;
};

TEST_F(BrushPackages, ReadsKeysCommentsAndIgnoresUnknownKeys)
{
    write("soft.bru",
        "# a test brush\n\n  mode = erase \nradius=1.75\r\nradius_curve = 2\n"
        "texture = paper\nhardness = 0\nspacing = 0.1\n");
    document.setBrushDirectory(directory);
    void* brush = IPD_CreateBrushFromPackage(document.context(), "soft.bru");
    ASSERT_NE(brush, nullptr) << document.lastError();
    EXPECT_EQ(IPD_GetBrushParam(document.context(), brush, 3), 1.75f);
}

TEST_F(BrushPackages, RefusesBrokenPackagesSayingWhy)
{
    const std::vector<std::pair<std::string, std::string>> cases {
        { "radius = 2\n", "missing mode" },
        { "mode = smudge\n", "line 1: mode must be paint or erase" },
        { "mode = paint\nradius = big\n", "line 2: radius is not a finite number" },
        { "mode = paint\nradius = inf\n", "line 2: radius is not a finite number" },
        { "mode = paint\nradius 2\n", "line 2: expected key = value" },
        { "mode = paint\n = 2\n", "line 2: missing key" },
        { "mode = paint\nradius_curve = 0\n", "radius_curve must be above" },
        { "mode = paint\nhardness = 2\n", "hardness must be between 0 and 1" },
        { "mode = paint\nspacing = 0\n", "spacing must be between" },
        { "mode = paint\nname = " + std::string(70000, 'n') + "\n", "too large" },
    };
    document.setBrushDirectory(directory);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        std::string name = "broken" + std::to_string(i) + ".bru";
        write(name.c_str(), cases[i].first);
        EXPECT_EQ(IPD_CreateBrushFromPackage(document.context(), name.c_str()), nullptr) << name;
        EXPECT_NE(document.lastError().find(cases[i].second), std::string::npos) << document.lastError();
    }
    EXPECT_EQ(document.brushCount(), 0u);
}

TEST_F(BrushPackages, RefusesNamesThatAreNotPlainFileNames)
{
    write("pen.bru", "mode = paint\n");
    std::filesystem::create_directories(directory / "sub");
    write("sub/inner.bru", "mode = paint\n");
    document.setBrushDirectory(directory / "sub");
    for (const char* name : { "../pen.bru", "..", "sub/inner.bru", "/etc/passwd", "", "missing.bru", "." })
        EXPECT_EQ(IPD_CreateBrushFromPackage(document.context(), name), nullptr) << name;
    EXPECT_EQ(IPD_CreateBrushFromPackage(document.context(), nullptr), nullptr);
    EXPECT_NE(IPD_CreateBrushFromPackage(document.context(), "inner.bru"), nullptr);
    EXPECT_EQ(document.brushCount(), 1u);
}
